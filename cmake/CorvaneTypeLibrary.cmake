# corvane_add_type_library(<target> <idl file> [<imported idl file>...])
# Compiles an IDL file with the toolchain's widl, for the bitness that is being built. <target> is a library that holds
# the GUIDs and brings the include folder of <name>_h.h, of methods/<interface>.h, the declarations of an interface's
# methods for the body of a class, and of methods/members.h, tables of all members for late binding; its property
# TYPE_LIBRARY is the path of <name>.tlb.
#
# Its property MANIFEST is the path of <name>.manifest, which names the coclasses to programs that use the DLL <name>
# without its being registered.
function(corvane_add_type_library target idl)
    find_program(CORVANE_WIDL_PROGRAM NAMES ${CORVANE_WIDL} widl REQUIRED)
    find_package(Python3 REQUIRED COMPONENTS Interpreter)
    set(timeless ${PROJECT_SOURCE_DIR}/cmake/timeless_type_library.py)
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
        COMMAND ${Python3_EXECUTABLE} ${timeless} ${library}
        DEPENDS ${idl} ${ARGN} ${timeless} ${CMAKE_BINARY_DIR}/generated/core/version.h
        COMMENT "Compiling the type library ${name}.tlb"
        VERBATIM
    )

    find_package(Python3 REQUIRED COMPONENTS Interpreter)
    set(make_declarations ${PROJECT_SOURCE_DIR}/tools/lib/make-declarations)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${idl})
    file(STRINGS ${idl} interfaces REGEX "^interface I[A-Za-z0-9]+ :")
    list(TRANSFORM interfaces REPLACE "^interface (I[A-Za-z0-9]+) :.*$" "${folder}/methods/\\1.h")
    list(APPEND interfaces ${folder}/methods/members.h)
    add_custom_command(
        OUTPUT ${interfaces}
        COMMAND Python3::Interpreter ${make_declarations} ${idl} ${folder}/methods
        DEPENDS ${idl} ${make_declarations} ${PROJECT_SOURCE_DIR}/tools/lib/idl.py
        COMMENT "Declaring the methods of ${name}.idl"
        VERBATIM
    )

    set(manifest ${folder}/${name}.manifest)
    set(make_manifest ${PROJECT_SOURCE_DIR}/tools/lib/make-manifest)
    add_custom_command(
        OUTPUT ${manifest}
        COMMAND Python3::Interpreter ${make_manifest} ${idl} ${PROJECT_VERSION} ${CORVANE_ARCH} ${manifest}
        DEPENDS ${idl} ${make_manifest} ${PROJECT_SOURCE_DIR}/tools/lib/idl.py
        COMMENT "Making the manifest of ${name}.idl"
        VERBATIM
    )

    # Generated code: not held to our warnings, and a system header for those who include it.
    add_library(${target} STATIC ${guids} ${header} ${library} ${interfaces} ${manifest})
    target_include_directories(${target} SYSTEM INTERFACE ${folder})
    set_target_properties(${target} PROPERTIES TYPE_LIBRARY ${library} MANIFEST ${manifest})
endfunction()
