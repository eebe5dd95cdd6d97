# The three libraries. A family is a folder: every .cpp in it belongs to the library.
function(ky_library name)
  cmake_parse_arguments(arg "" "" "FOLDERS;LINKS;PRIVATE_LINKS" ${ARGN})
  set(sources)
  foreach(folder IN LISTS arg_FOLDERS)
    file(GLOB found CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/${folder}/*.cpp)
    list(APPEND sources ${found})
  endforeach()

  # The objects stand alone so that tests of internals can link them.
  add_library(ky_${name}_objects OBJECT ${sources})
  target_include_directories(ky_${name}_objects
    PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include> PRIVATE ${PROJECT_SOURCE_DIR})
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
    LINK_DEPENDS ${PROJECT_SOURCE_DIR}/cmake/exports.map)
  target_link_options(ky_${name} PRIVATE
    "LINKER:--version-script=${PROJECT_SOURCE_DIR}/cmake/exports.map")
  if(NOT KY_SANITIZE)  # the program brings the sanitizer's symbols
    target_link_options(ky_${name} PRIVATE LINKER:--no-undefined)
  endif()
endfunction()

ky_library(base FOLDERS base)
ky_library(color FOLDERS color LINKS ky_base)
ky_library(image
  FOLDERS foundation point convolution morphology geometry histogram temporal vectors contour gradient
  LINKS ky_base ky_color PRIVATE_LINKS hwy)
