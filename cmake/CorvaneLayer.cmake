# corvane_add_layers(<file>)
# Adds a static library for each line "folder | subject | layers it may use" of the file, bottom first. A layer "a/b" is
# the library corvane_a_b, made of the folder src/a/b, whose CMakeLists.txt lists the files:
#
#   target_sources(corvane_binary PRIVATE base64.cpp hex.cpp)       # pure: compiled natively too
#   if(WIN32)
#       target_sources(corvane_binary PRIVATE code_page.cpp)        # needs Windows headers
#   endif()
function(corvane_add_layers file)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${file})
    file(STRINGS ${file} lines REGEX "^[^#]")
    foreach(line IN LISTS lines)
        if(NOT line MATCHES "^([a-z0-9/]+) \\|[^|]*\\|([a-z0-9/ ]*)$")
            message(FATAL_ERROR "${file}: not \"folder | subject | layers\": ${line}")
        endif()
        set(folder ${CMAKE_MATCH_1})
        string(REPLACE "/" "_" target corvane_${folder})
        string(STRIP "${CMAKE_MATCH_2}" lower_layers)
        string(REPLACE " " ";" lower_layers "${lower_layers}")

        add_library(${target} STATIC)
        target_link_libraries(${target} PUBLIC corvane_flags)
        # The codecs and digests gain from CMake's own choice, -O3. Objects, certificates and dialogs wait for the system or
        # for users: there it counts how large the DLL is.
        if(folder MATCHES "^(com/component|com/diagnose|com/objects/|crypto/|gui)")
            target_compile_options(${target} PRIVATE $<$<CONFIG:Release>:-Os>)
            corvane_precompile(${target} layers_Os)
        elseif(NOT folder STREQUAL "binary")
            target_compile_options(${target} PRIVATE $<$<CONFIG:Release>:-O2>)
            corvane_precompile(${target} layers_O2)
        endif()
        foreach(lower IN LISTS lower_layers)
            string(REPLACE "/" "_" lower corvane_${lower})
            if(NOT TARGET ${lower})
                message(FATAL_ERROR "${file}: ${folder} uses what does not stand above it: ${lower}")
            endif()
            target_link_libraries(${target} PUBLIC ${lower})
        endforeach()
        add_subdirectory(${folder})

        # A layer without pure sources is empty in the native build.
        get_target_property(sources ${target} SOURCES)
        if(NOT sources)
            set(placeholder ${CMAKE_BINARY_DIR}/generated/empty.cpp)
            file(CONFIGURE OUTPUT ${placeholder} CONTENT "// No source of this layer belongs to this build.\n")
            target_sources(${target} PRIVATE ${placeholder})
        endif()
    endforeach()
endfunction()
