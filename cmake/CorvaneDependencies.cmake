# The libraries the product is linked with, all of them static, found by find_package alone: tools/setup builds them for
# the cross compilers, and a package manager on Windows brings them too.
#
#   corvane::jsoncpp  fmt::fmt  ZLIB::ZLIB  minizip::minizip  uchardet::uchardet  GTest::gtest_main
# Looked for by each configuration: an earlier one may have found the host's zlib, from before ours was built.
foreach(found ZLIB_INCLUDE_DIR ZLIB_LIBRARY_RELEASE MINIZIP_INCLUDE_DIR MINIZIP_LIBRARY)
    unset(${found} CACHE)
endforeach()
set(ZLIB_USE_STATIC_LIBS ON)
find_package(jsoncpp CONFIG REQUIRED)
find_package(fmt CONFIG REQUIRED)
find_package(ZLIB REQUIRED)
find_package(Minizip REQUIRED)
find_package(Uchardet REQUIRED)
find_package(GTest CONFIG REQUIRED)

# The name of jsoncpp's target tells how it was built; ours does not.
add_library(corvane_jsoncpp INTERFACE)
add_library(corvane::jsoncpp ALIAS corvane_jsoncpp)
if(TARGET jsoncpp_static)
    target_link_libraries(corvane_jsoncpp INTERFACE jsoncpp_static)
else()
    target_link_libraries(corvane_jsoncpp INTERFACE jsoncpp_lib)
endif()
