# corvane_add_delayed_library(<name>)
# Adds corvane_<name>, to link with the system's <name>.dll so that it is loaded at the first call of one of its
# functions, which cmake/import/<name>-<arch>.def lists.
function(corvane_add_delayed_library name)
    set(definition ${PROJECT_SOURCE_DIR}/cmake/import/${name}-${CORVANE_ARCH}.def)
    set(library ${CMAKE_BINARY_DIR}/generated/import/libdelayed_${name}.a)
    file(MAKE_DIRECTORY ${CMAKE_BINARY_DIR}/generated/import)
    add_custom_command(
        OUTPUT ${library}
        # The DLL's own names are without the decoration that the compiler's symbols have.
        COMMAND ${CMAKE_DLLTOOL} --kill-at --input-def ${definition} --output-delaylib ${library}
        DEPENDS ${definition}
        VERBATIM
    )
    add_custom_target(corvane_import_${name} DEPENDS ${library})
    add_library(corvane_${name} INTERFACE)
    add_dependencies(corvane_${name} corvane_import_${name})
    target_link_libraries(corvane_${name} INTERFACE ${library} delayimp)
endfunction()
