# The libraries. A folder of src/ that is named after one belongs to it; all others are foundation and
# families of ky::image. Every .cpp in them is found.
set(ky_siblings base color)
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
