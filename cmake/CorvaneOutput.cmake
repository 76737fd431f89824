# What is handed out of a build lies beside the build folder, whatever that is called: build/x64-release puts it into
# build/x64.
if(WIN32)
    get_filename_component(CORVANE_OUTPUT ${CMAKE_BINARY_DIR}/../${CORVANE_ARCH} ABSOLUTE)
endif()

# All of it: what the demonstration and whoever only wants to use the component need.
add_custom_target(corvane_handed_out)

# corvane_hand_out(<target> [<folder>])
# Makes the target a part of corvane_handed_out, and copies the program or DLL of a release, stripped, to CORVANE_OUTPUT or
# to a folder in it.
function(corvane_hand_out target)
    add_dependencies(corvane_handed_out ${target})
    set(folder ${CORVANE_OUTPUT}/${ARGV1})
    if(NOT CMAKE_BUILD_TYPE STREQUAL "Release")
        return()
    endif()
    get_target_property(type ${target} TYPE)
    if(type STREQUAL "EXECUTABLE")
        set(output ${folder}/${target}.exe)
    else()
        set(output ${folder}/${target}.dll)
    endif()
    add_custom_command(TARGET ${target} POST_BUILD
        BYPRODUCTS ${output}
        COMMAND ${CMAKE_COMMAND} -E make_directory ${folder}
        # strip stamps what it writes with the time, unless it is told another one.
        COMMAND ${CMAKE_COMMAND} -E env SOURCE_DATE_EPOCH=0 ${CMAKE_STRIP} --strip-all -o ${output} $<TARGET_FILE:${target}>
        VERBATIM
    )
endfunction()

# corvane_hand_out_file(<target> <file>)
# Copies the file to CORVANE_OUTPUT whenever a release of the target is made, which depends on it.
function(corvane_hand_out_file target file)
    if(CMAKE_BUILD_TYPE STREQUAL "Release")
        add_custom_command(TARGET ${target} POST_BUILD
            COMMAND ${CMAKE_COMMAND} -E copy ${file} ${CORVANE_OUTPUT}
            VERBATIM
        )
    endif()
endfunction()
