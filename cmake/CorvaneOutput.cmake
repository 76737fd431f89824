# What is handed out of a build lies beside the build folder, whatever that is called: build/x64-release puts it into
# build/x64.
if(WIN32)
    get_filename_component(CORVANE_OUTPUT ${CMAKE_BINARY_DIR}/../${CORVANE_ARCH} ABSOLUTE)
endif()

# corvane_hand_out(<target>)
# Copies the program or DLL of a release, stripped, to CORVANE_OUTPUT.
function(corvane_hand_out target)
    if(NOT CMAKE_BUILD_TYPE STREQUAL "Release")
        return()
    endif()
    get_target_property(type ${target} TYPE)
    if(type STREQUAL "EXECUTABLE")
        set(output ${CORVANE_OUTPUT}/${target}.exe)
    else()
        set(output ${CORVANE_OUTPUT}/${target}.dll)
    endif()
    add_custom_command(TARGET ${target} POST_BUILD
        BYPRODUCTS ${output}
        COMMAND ${CMAKE_COMMAND} -E make_directory ${CORVANE_OUTPUT}
        COMMAND ${CMAKE_STRIP} --strip-all -o ${output} $<TARGET_FILE:${target}>
        VERBATIM
    )
endfunction()
