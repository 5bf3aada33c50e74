# Finds libzip and defines libzip::zip. The distribution's own package configuration is of no use: it
# refuses to load unless libzip's command line tools are installed too.
find_path(libzip_INCLUDE_DIR zip.h)
find_library(libzip_LIBRARY zip)
mark_as_advanced(libzip_INCLUDE_DIR libzip_LIBRARY)

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(libzip REQUIRED_VARS libzip_LIBRARY libzip_INCLUDE_DIR)

if(libzip_FOUND AND NOT TARGET libzip::zip)
  find_package(ZLIB REQUIRED)
  add_library(libzip::zip UNKNOWN IMPORTED)
  set_target_properties(libzip::zip PROPERTIES
    IMPORTED_LOCATION "${libzip_LIBRARY}"
    INTERFACE_INCLUDE_DIRECTORIES "${libzip_INCLUDE_DIR}"
    INTERFACE_LINK_LIBRARIES ZLIB::ZLIB)
endif()
