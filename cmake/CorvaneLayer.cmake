# A layer is a static library made of one folder of src/. Its folder's CMakeLists.txt lists the files:
#
#   target_sources(corvane_binary PRIVATE base64.cpp hex.cpp)       # pure: compiled natively too
#   if(WIN32)
#       target_sources(corvane_binary PRIVATE code_page.cpp)        # needs Windows headers
#   endif()

# corvane_add_layer(<name> [<lower layer or library>...])
# Adds src/<name> as the library corvane_<name>, using what stands below it. Names of layers are given without prefix.
function(corvane_add_layer name)
    set(target corvane_${name})
    add_library(${target} STATIC)
    target_link_libraries(${target} PUBLIC corvane_flags)
    foreach(lower IN LISTS ARGN)
        if(TARGET corvane_${lower})
            target_link_libraries(${target} PUBLIC corvane_${lower})
        else()
            target_link_libraries(${target} PUBLIC ${lower})
        endif()
    endforeach()
    add_subdirectory(${name})

    # A layer without pure sources is empty in the native build.
    get_target_property(sources ${target} SOURCES)
    if(NOT sources)
        set(placeholder ${CMAKE_BINARY_DIR}/generated/empty.cpp)
        file(CONFIGURE OUTPUT ${placeholder} CONTENT "// No source of this layer belongs to this build.\n")
        target_sources(${target} PRIVATE ${placeholder})
    endif()
endfunction()
