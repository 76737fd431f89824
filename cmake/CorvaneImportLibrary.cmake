# corvane_add_import_library(<name>)
# Adds corvane_<name>, to link with the system's <name>.dll: MinGW's own import library where it has one, otherwise one
# made from cmake/import/<name>-<arch>.def. (MinGW-w64 has none of cryptui.dll for 32 bits.)
function(corvane_add_import_library name)
    add_library(corvane_${name} INTERFACE)
    find_library(CORVANE_IMPORT_${name} ${name})
    mark_as_advanced(CORVANE_IMPORT_${name})
    if(CORVANE_IMPORT_${name})
        target_link_libraries(corvane_${name} INTERFACE ${name})
        return()
    endif()

    set(definition ${PROJECT_SOURCE_DIR}/cmake/import/${name}-${CORVANE_ARCH}.def)
    set(library ${CMAKE_BINARY_DIR}/generated/import/lib${name}.a)
    file(MAKE_DIRECTORY ${CMAKE_BINARY_DIR}/generated/import)
    add_custom_command(
        OUTPUT ${library}
        # The DLL's own names are without the decoration that the compiler's symbols have.
        COMMAND ${CMAKE_DLLTOOL} --kill-at --input-def ${definition} --output-lib ${library}
        DEPENDS ${definition}
        VERBATIM
    )
    add_custom_target(corvane_import_${name} DEPENDS ${library})
    add_dependencies(corvane_${name} corvane_import_${name})
    target_link_libraries(corvane_${name} INTERFACE ${library})
endfunction()
