# corvane_add_delayed_library(<name>)
# Adds corvane_<name>, to link with the system's <name>.dll so that it is loaded at the first call of one of its
# functions. Their names, which have the size of the arguments in 32 bits, are those of the toolchain's own import library,
# or stand in cmake/import/<name>-<arch>.def where that library is of no use.
function(corvane_add_delayed_library name)
    set(folder ${CMAKE_BINARY_DIR}/generated/import)
    set(library ${folder}/libdelayed_${name}.a)
    set(definition ${PROJECT_SOURCE_DIR}/cmake/import/${name}-${CORVANE_ARCH}.def)
    file(MAKE_DIRECTORY ${folder})
    if(NOT EXISTS ${definition})
        set(definition ${folder}/${name}.def)
        execute_process(
            COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=lib${name}.a
            OUTPUT_VARIABLE import_library OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY
        )
        execute_process(
            COMMAND ${CMAKE_NM} --defined-only ${import_library}
            OUTPUT_VARIABLE symbols ERROR_QUIET COMMAND_ERROR_IS_FATAL ANY
        )
        string(REGEX MATCHALL " T [^\n]+" functions "${symbols}")
        # Symbols of 32 bits begin with an underscore.
        if(CMAKE_SIZEOF_VOID_P EQUAL 4)
            list(TRANSFORM functions REPLACE "^ T _" "    ")
        else()
            list(TRANSFORM functions REPLACE "^ T " "    ")
        endif()
        list(JOIN functions "\n" functions)
        file(CONFIGURE OUTPUT ${definition} CONTENT "LIBRARY ${name}.dll\nEXPORTS\n${functions}\n" @ONLY)
    endif()
    foreach(part 4 5 6 7)
        list(APPEND renamed "--rename-section=.idata$${part}=.didat$${part},alloc,load,data,contents")
    endforeach()
    add_custom_command(
        OUTPUT ${library}
        # The DLL's own names are without the decoration that the compiler's symbols have.
        COMMAND ${CMAKE_DLLTOOL} --kill-at --input-def ${definition} --output-delaylib ${library}
        # delayed.ld tells why they are not left where they are.
        COMMAND ${CMAKE_OBJCOPY} ${renamed} ${library}
        DEPENDS ${definition}
        VERBATIM
    )
    add_custom_target(corvane_import_${name} DEPENDS ${library})
    add_library(corvane_${name} INTERFACE)
    add_dependencies(corvane_${name} corvane_import_${name})
    target_link_libraries(corvane_${name} INTERFACE ${library} delayimp)
    set(script ${PROJECT_SOURCE_DIR}/cmake/import/delayed.ld)
    target_link_options(corvane_${name} INTERFACE -Wl,-T,${script})
    set_property(TARGET corvane_${name} PROPERTY INTERFACE_LINK_DEPENDS ${script})
endfunction()
