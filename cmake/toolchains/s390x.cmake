# 64 bits, big-endian.

set(CMAKE_SYSTEM_PROCESSOR s390x)
include(${CMAKE_CURRENT_LIST_DIR}/linux.cmake)
