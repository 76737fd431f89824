# The machine itself, with clang for its sanitizers and libFuzzer; for the parts that need no Windows header.
set(CMAKE_C_COMPILER clang)
set(CMAKE_CXX_COMPILER clang++)

get_filename_component(corvane_root ${CMAKE_CURRENT_LIST_DIR} DIRECTORY)
set(CORVANE_DEPS ${corvane_root}/build/deps CACHE PATH "Where tools/setup puts the libraries it builds")
set(CORVANE_DEPS_PREFIX ${CORVANE_DEPS}/native)

# Our own builds come first: their versions are the pinned ones.
list(PREPEND CMAKE_PREFIX_PATH ${CORVANE_DEPS_PREFIX})
