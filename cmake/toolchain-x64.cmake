# MinGW-w64 toolchain for Windows, x64
set(CORVANE_ARCH x64)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CORVANE_TRIPLET x86_64-w64-mingw32)
include(${CMAKE_CURRENT_LIST_DIR}/toolchain-mingw.cmake)
