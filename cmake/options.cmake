# How every target of the project is compiled.
option(CARROVAN_SANITIZE "Build with the address and undefined-behaviour sanitizers" OFF)
option(CARROVAN_FUZZ "Build the fuzz targets, with clang" OFF)

add_library(carrovan_options INTERFACE)
target_compile_features(carrovan_options INTERFACE cxx_std_20)
target_include_directories(carrovan_options INTERFACE "${PROJECT_SOURCE_DIR}")
target_compile_options(carrovan_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wnon-virtual-dtor -Wold-style-cast)

if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # GCC 12 takes ordinary string concatenation at -O3 for overlapping copies.
  target_compile_options(carrovan_options INTERFACE -Wno-restrict)
endif()

if(CARROVAN_SANITIZE)
  # The checks cost half of their time with the little optimisation that keeps a stack readable.
  target_compile_options(carrovan_options INTERFACE -O1
    -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_compile_definitions(carrovan_options INTERFACE _GLIBCXX_ASSERTIONS)
  target_link_options(carrovan_options INTERFACE -fsanitize=address,undefined)
endif()

if(WIN32)
  # One self-contained program: the compiler's runtime goes into the executable.
  target_link_options(carrovan_options INTERFACE -static -municode)
  # The same sources give the same bytes, whenever and in whatever folder they are built.
  target_compile_options(carrovan_options INTERFACE
    $<$<COMPILE_LANGUAGE:C,CXX>:-ffile-prefix-map=${PROJECT_SOURCE_DIR}=.>)
  target_link_options(carrovan_options INTERFACE -Wl,--no-insert-timestamp)
  target_compile_definitions(carrovan_options INTERFACE UNICODE _UNICODE NOMINMAX WIN32_LEAN_AND_MEAN
    _WIN32_WINNT=0x0601)
endif()

if(CARROVAN_FUZZ)
  # Every part that a target calls reports its branches to the fuzzer.
  target_compile_options(carrovan_options INTERFACE -fsanitize=fuzzer-no-link)
  target_link_options(carrovan_options INTERFACE -fsanitize=fuzzer-no-link)
endif()
