# WebAssembly, by Debian's emscripten, for Node.js: programs see the files of the machine.

set(CMAKE_CXX_FLAGS_INIT -fexceptions)
set(CMAKE_EXE_LINKER_FLAGS_INIT
    "-fexceptions -sNODERAWFS=1 -sEXIT_RUNTIME=1 -sALLOW_MEMORY_GROWTH=1")
set(BUILD_SHARED_LIBS OFF)
set(CMAKE_CROSSCOMPILING_EMULATOR node --no-experimental-fetch)  # which reads no local files
include(/usr/share/emscripten/cmake/Modules/Platform/Emscripten.cmake)
