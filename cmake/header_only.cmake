# Finds a header-only library: by its own package where there is one for the target system, otherwise
# by its header in the include folder that the cross build has of its own.
function(carrovan_find_headers package target header)
  find_package(${package} QUIET)
  if(TARGET ${target})
    return()
  endif()
  find_path(${package}_HEADERS ${header} REQUIRED)
  add_library(${target} INTERFACE IMPORTED GLOBAL)
  target_include_directories(${target} SYSTEM INTERFACE "${${package}_HEADERS}")
endfunction()
