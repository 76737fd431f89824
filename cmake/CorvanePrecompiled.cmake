# Most of a file's compilation is reading the headers of the standard library and of the system; they are read once for
# many files. Only for Windows: the native build and the linter, which do without, see an include that a file forgot.

# corvane_add_precompiled(<name> OPTIONS <option>... LIBRARIES <library>... HEADERS <header>...)
# Precompiles the headers with the options, to be used by targets with the same ones.
function(corvane_add_precompiled name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "OPTIONS;LIBRARIES;HEADERS")
    if(NOT WIN32)
        return()
    endif()
    set(placeholder ${CMAKE_BINARY_DIR}/generated/precompiled_${name}.cpp)
    file(CONFIGURE OUTPUT ${placeholder} CONTENT "// Only its precompiled headers are used.\n")
    add_library(corvane_precompiled_${name} OBJECT ${placeholder})
    target_link_libraries(corvane_precompiled_${name} PRIVATE corvane_flags ${arg_LIBRARIES})
    target_compile_options(corvane_precompiled_${name} PRIVATE ${arg_OPTIONS})
    list(TRANSFORM arg_HEADERS REPLACE "(.+)" "<\\1>")
    target_precompile_headers(corvane_precompiled_${name} PRIVATE ${arg_HEADERS})
endfunction()

# corvane_precompile(<target> <name>)
function(corvane_precompile target name)
    if(WIN32)
        target_precompile_headers(${target} REUSE_FROM corvane_precompiled_${name})
    endif()
endfunction()

# corvane_compile_alone(<file>...)
# For files of the calling folder whose speed matters, in a target that is else compiled without optimizing for it.
function(corvane_compile_alone)
    set_source_files_properties(${ARGV} PROPERTIES SKIP_PRECOMPILE_HEADERS ON COMPILE_OPTIONS "-O2;-finline")
endfunction()

set(standard_headers
    algorithm array atomic bit cstdint cstring exception functional iterator limits map memory mutex new optional span sstream
    stdexcept string string_view utility vector
)
set(system_headers windows.h oleauto.h)
# The component's layers, one for each optimization that cmake/CorvaneLayer.cmake chooses.
foreach(optimization IN ITEMS O2 Os)
    corvane_add_precompiled(layers_${optimization}
        OPTIONS $<$<CONFIG:Release>:-${optimization}>
        LIBRARIES corvane::jsoncpp
        HEADERS ${standard_headers} ${system_headers} wincrypt.h json/value.h
    )
endforeach()
# Tests, see cmake/CorvaneTest.cmake.
corvane_add_precompiled(tests
    OPTIONS -O1 -fno-inline
    LIBRARIES GTest::gmock_main
    HEADERS ${standard_headers} ${system_headers} wincrypt.h gmock/gmock.h gtest/gtest.h
)
# Stand-ins, which define for themselves how much of the system's headers they see.
corvane_add_precompiled(stand_ins OPTIONS -O1 -fno-inline HEADERS ${standard_headers} ${system_headers})
