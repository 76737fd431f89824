# MinGW-w64 toolchain for Windows, x86
set(CORVANE_ARCH x86)
set(CMAKE_SYSTEM_PROCESSOR i686)
set(CORVANE_TRIPLET i686-w64-mingw32)
include(${CMAKE_CURRENT_LIST_DIR}/toolchain-mingw.cmake)
