# Helpers for tests. Files are listed in tests/CMakeLists.txt; a new one is one line there.

# corvane_add_tests(<target> LIBRARIES <library>... SOURCES <file>...)
# One GoogleTest program, run by ctest as one test: under Wine for Windows, directly for the native build.
function(corvane_add_tests target)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "LIBRARIES;SOURCES")
    add_executable(${target} ${arg_SOURCES})
    target_link_libraries(${target} PRIVATE ${arg_LIBRARIES} corvane_flags GTest::gmock_main)
    # Tests run once after they were compiled: time spent on making them fast is lost. And GCC 12, which does not know what
    # it inlines from precompiled headers for the system's, has false warnings of it.
    target_compile_options(${target} PRIVATE -O1 -fno-inline)
    corvane_precompile(${target} tests)
    # Where tests find their data; programs for Windows see this machine's root as drive Z.
    target_compile_definitions(${target} PRIVATE
        CORVANE_TEST_DATA="$<$<BOOL:${CMAKE_CROSSCOMPILING}>:Z:>${PROJECT_SOURCE_DIR}/tests/data"
    )
    add_test(NAME ${target} COMMAND ${target})
    set_tests_properties(${target} PROPERTIES TIMEOUT 300)
endfunction()

# corvane_add_fuzzer(<name> <library>...)
# A libFuzzer program from tests/fuzz/<name>.cpp, whose seeds tools/fuzz names.
# Needs clang; the native build only.
function(corvane_add_fuzzer name)
    set(target fuzz_${name})
    add_executable(${target} fuzz/${name}.cpp)
    target_link_libraries(${target} PRIVATE ${ARGN} corvane_flags)
    target_compile_options(${target} PRIVATE -fsanitize=fuzzer)
    target_link_options(${target} PRIVATE -fsanitize=fuzzer)
    set_target_properties(${target} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/fuzz)
endfunction()
