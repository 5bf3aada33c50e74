# Finds libdeflate and defines libdeflate::libdeflate, for versions that bring no package
# configuration of their own.
find_path(libdeflate_INCLUDE_DIR libdeflate.h)
find_library(libdeflate_LIBRARY deflate)
mark_as_advanced(libdeflate_INCLUDE_DIR libdeflate_LIBRARY)

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(libdeflate REQUIRED_VARS libdeflate_LIBRARY libdeflate_INCLUDE_DIR)

if(libdeflate_FOUND AND NOT TARGET libdeflate::libdeflate)
  add_library(libdeflate::libdeflate UNKNOWN IMPORTED)
  set_target_properties(libdeflate::libdeflate PROPERTIES
    IMPORTED_LOCATION "${libdeflate_LIBRARY}"
    INTERFACE_INCLUDE_DIRECTORIES "${libdeflate_INCLUDE_DIR}")
endif()
