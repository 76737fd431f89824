# Finds uchardet, whose older releases bring no package configuration: target uchardet::uchardet
find_path(UCHARDET_INCLUDE_DIR uchardet/uchardet.h)
find_library(UCHARDET_LIBRARY NAMES libuchardet.a uchardet)
mark_as_advanced(UCHARDET_INCLUDE_DIR UCHARDET_LIBRARY)

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(Uchardet REQUIRED_VARS UCHARDET_LIBRARY UCHARDET_INCLUDE_DIR)

if(Uchardet_FOUND AND NOT TARGET uchardet::uchardet)
    add_library(uchardet::uchardet UNKNOWN IMPORTED)
    set_target_properties(uchardet::uchardet PROPERTIES
        IMPORTED_LOCATION ${UCHARDET_LIBRARY}
        INTERFACE_INCLUDE_DIRECTORIES ${UCHARDET_INCLUDE_DIR}
    )
endif()
