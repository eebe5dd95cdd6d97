# The libraries. A folder of src/ that is named after one belongs to it; all others are foundation and
# families of ky::image. Every .cpp in them is found.
set(ky_siblings base color frequency drawing files)
configure_file(cmake/exports.map.in exports.map @ONLY)

function(ky_library name)
  cmake_parse_arguments(arg "" "" "LINKS;PRIVATE_LINKS" ${ARGN})
  if(name IN_LIST ky_siblings)
    file(GLOB sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/src/${name}/*.cpp)
  else()
    file(GLOB_RECURSE sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/src/*.cpp)
    list(JOIN ky_siblings "|" siblings)
    list(FILTER sources EXCLUDE REGEX "^${PROJECT_SOURCE_DIR}/src/(${siblings})/")
  endif()

  # Files that are compiled for each instruction set consist of intrinsics, whose vectors are members
  # of structures: checks of each access to them would triple what compilers have to do, and
  # AddressSanitizer sees what they could find.
  if(KY_SANITIZE)
    foreach(source IN LISTS sources)
      file(STRINGS ${source} has_targets REGEX "hwy/foreach_target.h" LIMIT_COUNT 1)
      if(has_targets)
        set_source_files_properties(${source} PROPERTIES
          COMPILE_OPTIONS "-fno-sanitize=null,alignment,object-size,pointer-overflow")
      endif()
    endforeach()
  endif()

  # The objects stand alone so that tests of internals can link them.
  add_library(ky_${name}_objects OBJECT ${sources})
  target_include_directories(ky_${name}_objects
    PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include> PRIVATE ${PROJECT_SOURCE_DIR}/src)
  target_link_libraries(ky_${name}_objects PUBLIC ${arg_LINKS}
                                           PRIVATE ky_build_options ${arg_PRIVATE_LINKS})

  add_library(ky_${name} SHARED)
  add_library(ky::${name} ALIAS ky_${name})
  target_link_libraries(ky_${name} PUBLIC ${arg_LINKS}
                                   PRIVATE ky_${name}_objects $<BUILD_INTERFACE:ky_build_options> ${arg_PRIVATE_LINKS})
  target_include_directories(ky_${name}
    PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>
           $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
  target_compile_features(ky_${name} PUBLIC cxx_std_20)
  set_target_properties(ky_${name} PROPERTIES
    OUTPUT_NAME ky${name} EXPORT_NAME ${name} VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR}
    LINK_DEPENDS ${PROJECT_BINARY_DIR}/exports.map)
  # Addresses of functions are found when a program starts, and cannot be overwritten later.
  target_link_options(ky_${name} PRIVATE
    "LINKER:--version-script=${PROJECT_BINARY_DIR}/exports.map,-z,relro,-z,now")
  if(NOT KY_SANITIZE)  # the program brings the sanitizer's symbols
    target_link_options(ky_${name} PRIVATE LINKER:--no-undefined)
  endif()
endfunction()

ky_library(base)
ky_library(color LINKS ky_base)
ky_library(image LINKS ky_base ky_color PRIVATE_LINKS hwy)

# Optional libraries. Each needs an outside library, which pkg-config finds as MODULE and Debian has
# in PACKAGE. Where that is missing, the optional library is left out, with the tests, examples and
# benchmarks that need it. The outside library is the target PkgConfig::ky_MODULE; BESIDE is another
# library of PACKAGE, which pkg-config does not list.
set(ky_optional frequency drawing files)

function(ky_optional_library name)
  cmake_parse_arguments(arg "" "MODULE;PACKAGE;BESIDE" "LINKS;PRIVATE_LINKS" ${ARGN})
  file(GLOB sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/src/${name}/*.cpp)
  if(NOT sources)
    return()
  endif()
  string(TOUPPER KY_${name} switch)
  if(NOT ${switch})
    message(STATUS "ky::${name} is left out: ${switch} is off")
    return()
  endif()
  find_package(PkgConfig QUIET)
  if(NOT PkgConfig_FOUND)
    message(STATUS "ky::${name} is left out: pkg-config, which finds ${arg_MODULE}, is missing")
    return()
  endif()
  pkg_check_modules(ky_${arg_MODULE} QUIET IMPORTED_TARGET GLOBAL ${arg_MODULE})
  if(arg_BESIDE)
    find_library(${switch}_${arg_BESIDE} ${arg_BESIDE} HINTS ${ky_${arg_MODULE}_LIBRARY_DIRS})
    list(APPEND arg_PRIVATE_LINKS ${${switch}_${arg_BESIDE}})
  endif()
  if(NOT ky_${arg_MODULE}_FOUND OR (arg_BESIDE AND NOT ${switch}_${arg_BESIDE}))
    message(STATUS "ky::${name} is left out: ${arg_MODULE} ${arg_BESIDE} (${arg_PACKAGE}) is missing")
    return()
  endif()
  ky_library(${name} LINKS ${arg_LINKS} PRIVATE_LINKS ${arg_PRIVATE_LINKS})
endfunction()

# Links the target with the optional libraries that there are, and defines KY_HAS_NAME for each.
function(ky_link_optional target scope)
  foreach(name IN LISTS ky_optional)
    if(TARGET ky::${name})
      string(TOUPPER KY_HAS_${name} has)
      target_link_libraries(${target} ${scope} ky::${name})
      target_compile_definitions(${target} ${scope} ${has}=1)
    endif()
  endforeach()
endfunction()

# Takes from the list the sources that include the header of an optional library that is left out.
function(ky_remove_left_out list)
  set(kept)
  foreach(source IN LISTS ${list})
    set(keep TRUE)
    foreach(name IN LISTS ky_optional)
      file(STRINGS ${source} included REGEX "^#include \"ky/${name}\\.h\"" LIMIT_COUNT 1)
      if(included AND NOT TARGET ky::${name})
        set(keep FALSE)
      endif()
    endforeach()
    if(keep)
      list(APPEND kept ${source})
    endif()
  endforeach()
  set(${list} ${kept} PARENT_SCOPE)
endfunction()

ky_optional_library(frequency MODULE fftw3f BESIDE fftw3f_threads PACKAGE libfftw3-dev
                    LINKS ky_base PRIVATE_LINKS hwy PkgConfig::ky_fftw3f)
ky_optional_library(drawing MODULE cairo PACKAGE libcairo2-dev LINKS ky_image PkgConfig::ky_cairo)
ky_optional_library(files MODULE libpng PACKAGE libpng-dev LINKS ky_image PRIVATE_LINKS PkgConfig::ky_libpng)
