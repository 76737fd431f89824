# Finds minizip, which brings no package configuration of its own: target minizip::minizip
find_package(ZLIB REQUIRED)
find_path(MINIZIP_INCLUDE_DIR minizip/unzip.h)
find_library(MINIZIP_LIBRARY NAMES libminizip.a minizip)
mark_as_advanced(MINIZIP_INCLUDE_DIR MINIZIP_LIBRARY)

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(Minizip REQUIRED_VARS MINIZIP_LIBRARY MINIZIP_INCLUDE_DIR)

if(Minizip_FOUND AND NOT TARGET minizip::minizip)
    add_library(minizip::minizip UNKNOWN IMPORTED)
    set_target_properties(minizip::minizip PROPERTIES
        IMPORTED_LOCATION ${MINIZIP_LIBRARY}
        INTERFACE_INCLUDE_DIRECTORIES ${MINIZIP_INCLUDE_DIR}
        INTERFACE_LINK_LIBRARIES ZLIB::ZLIB
    )
endif()
