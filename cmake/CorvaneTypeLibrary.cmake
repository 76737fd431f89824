# corvane_add_type_library(<target> <idl file> [<imported idl file>...])
# Compiles an IDL file with the toolchain's widl, for the bitness that is being built. <target> is a library that holds
# the GUIDs and brings the include folder of <name>_h.h; its property TYPE_LIBRARY is the path of <name>.tlb.
function(corvane_add_type_library target idl)
    find_program(CORVANE_WIDL_PROGRAM NAMES ${CORVANE_WIDL} widl REQUIRED)
    get_filename_component(name ${idl} NAME_WE)
    set(folder ${CMAKE_BINARY_DIR}/generated/idl)
    file(MAKE_DIRECTORY ${folder})

    set(header ${folder}/${name}_h.h)
    set(guids ${folder}/${name}_i.c)
    set(library ${folder}/${name}.tlb)
    # widl takes one kind of output per run when they are named.
    # The type library refers to automation's own one, which comes with Windows, or with Wine on other systems.
    find_path(CORVANE_AUTOMATION_FOLDER stdole2.tlb
        PATHS
            $ENV{SystemRoot}/System32
            /usr/lib/x86_64-linux-gnu/wine/x86_64-windows
            /usr/lib/wine/x86_64-windows
            /usr/lib64/wine/x86_64-windows
        NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH REQUIRED
    )
    get_filename_component(idl_folder ${idl} DIRECTORY)
    set(widl ${CORVANE_WIDL_PROGRAM}
        -I${CMAKE_BINARY_DIR}/generated -I${idl_folder} -L${CORVANE_AUTOMATION_FOLDER}
    )
    add_custom_command(
        OUTPUT ${header} ${guids} ${library}
        COMMAND ${widl} -h -o ${header} ${idl}
        COMMAND ${widl} -u -o ${guids} ${idl}
        COMMAND ${widl} -t -o ${library} ${idl}
        DEPENDS ${idl} ${ARGN} ${CMAKE_BINARY_DIR}/generated/core/version.h
        COMMENT "Compiling the type library ${name}.tlb"
        VERBATIM
    )

    # Generated code: not held to our warnings, and a system header for those who include it.
    add_library(${target} STATIC ${guids} ${header} ${library})
    target_include_directories(${target} SYSTEM INTERFACE ${folder})
    set_target_properties(${target} PROPERTIES TYPE_LIBRARY ${library})
endfunction()
