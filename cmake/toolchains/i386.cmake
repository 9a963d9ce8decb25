# 32 bits of x86, which those of 64 bits run by themselves.

set(CMAKE_SYSTEM_PROCESSOR i686)
include(${CMAKE_CURRENT_LIST_DIR}/linux.cmake)
set(libraries /usr/${triplet}/lib)
set(CMAKE_CROSSCOMPILING_EMULATOR ${libraries}/ld-linux.so.2 --library-path ${libraries})
