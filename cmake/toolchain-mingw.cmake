# Common part of the two MinGW-w64 toolchains; included with CORVANE_TRIPLET (compiler prefix) and CORVANE_ARCH
# (x86 or x64) set. The posix threads variant is named, since std::thread and std::mutex are missing in the other.
set(CMAKE_SYSTEM_NAME Windows)

set(CMAKE_C_COMPILER ${CORVANE_TRIPLET}-gcc-posix)
set(CMAKE_CXX_COMPILER ${CORVANE_TRIPLET}-g++-posix)
set(CMAKE_RC_COMPILER ${CORVANE_TRIPLET}-windres)
set(CORVANE_WIDL ${CORVANE_TRIPLET}-widl)

get_filename_component(corvane_root ${CMAKE_CURRENT_LIST_DIR} DIRECTORY)
set(CORVANE_DEPS ${corvane_root}/build/deps CACHE PATH "Where tools/setup puts the libraries it builds")
set(CORVANE_DEPS_PREFIX ${CORVANE_DEPS}/${CORVANE_ARCH})

# Headers and libraries come from our own libraries, whose versions are the pinned ones, and from the cross compiler
# only, never from this machine; programs only from this machine.
set(CMAKE_FIND_ROOT_PATH ${CORVANE_DEPS_PREFIX} /usr/${CORVANE_TRIPLET})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

set(CMAKE_CROSSCOMPILING_EMULATOR ${corvane_root}/tools/wine-run;${CORVANE_ARCH})
