# What `cmake --install` and the Debian packages contain. The core libraries are the components
# runtime and development; an optional library has components of its own, NAME_runtime and
# NAME_development. The development components hold the headers and what find_package(ky COMPONENTS
# NAME) and pkg-config need.
include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/ky)
set(pkgconfig_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
# Up from the package file's folder, so that an installed copy may be moved.
file(RELATIVE_PATH prefix_from_pkgconfig /prefix/${pkgconfig_dir} /prefix)

# LIBRARIES are those of ours that `name` is linked with, MODULES the names by which pkg-config knows
# others that its header needs; PREFIX stands before the names of the components.
function(ky_install name)
  cmake_parse_arguments(arg "" "DESCRIPTION;PREFIX" "LIBRARIES;MODULES" ${ARGN})
  # Siblings are found beside the library, wherever that is.
  set_target_properties(ky_${name} PROPERTIES INSTALL_RPATH $ORIGIN)
  install(TARGETS ky_${name} EXPORT ky-${name}
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT ${arg_PREFIX}runtime
            NAMELINK_COMPONENT ${arg_PREFIX}development)
  install(EXPORT ky-${name} NAMESPACE ky:: DESTINATION ${package_dir}
    COMPONENT ${arg_PREFIX}development)

  list(TRANSFORM arg_LIBRARIES PREPEND ky- OUTPUT_VARIABLE required)
  list(APPEND required ${arg_MODULES})
  list(JOIN required ", " required)
  configure_file(cmake/pkgconfig.pc.in pkgconfig/ky-${name}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/pkgconfig/ky-${name}.pc
    DESTINATION ${pkgconfig_dir} COMPONENT ${arg_PREFIX}development)
endfunction()

function(ky_install_optional name)
  if(TARGET ky_${name})
    ky_install(${name} PREFIX ${name}_ ${ARGN})
    install(FILES include/ky/${name}.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/ky
      COMPONENT ${name}_development)
  endif()
endfunction()

set(frequency_description "The frequency domain of images, on FFTW")
set(drawing_description "Pictures, paths, profiles and histograms on Cairo")
set(files_description "Pictures in PNG, PGM and PPM files")

ky_install(base DESCRIPTION "Pixels, regions of interest, images and status")
ky_install(color DESCRIPTION "Components and lookups of colour images" LIBRARIES base)
ky_install(image DESCRIPTION "Image processing for machine vision" LIBRARIES base color)
ky_install_optional(frequency DESCRIPTION ${frequency_description} LIBRARIES base)
ky_install_optional(drawing DESCRIPTION ${drawing_description} LIBRARIES image MODULES cairo)
ky_install_optional(files DESCRIPTION ${files_description} LIBRARIES image)

set(others)
foreach(name IN LISTS ky_optional)
  list(APPEND others PATTERN ${name}.h EXCLUDE)
endforeach()
install(DIRECTORY include/ky DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development
  FILES_MATCHING PATTERN *.h ${others})
configure_file(cmake/ky-config.cmake ky-config.cmake COPYONLY)
write_basic_package_version_file(ky-config-version.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/ky-config.cmake ${PROJECT_BINARY_DIR}/ky-config-version.cmake
  DESTINATION ${package_dir} COMPONENT development)

# The Debian packages libkyN, named after the version that its users are linked with, and libky-dev;
# likewise libkyNAMEN and libkyNAME-dev of each optional library.
if(PROJECT_IS_TOP_LEVEL)
  set(CPACK_GENERATOR DEB)
  set(CPACK_VERBATIM_VARIABLES ON)
  set(CPACK_COMPONENTS_ALL runtime development)
  set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
  set(CPACK_PACKAGE_CONTACT "The ky developers <ky@localhost>")
  set(CPACK_STRIP_FILES ON)
  set(CPACK_DEB_COMPONENT_INSTALL ON)
  set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
  set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR})
  set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libky${PROJECT_VERSION_MAJOR})
  set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
  set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
  set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libky-dev)
  set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
  set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "The shared libraries.")
  set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "What programs are compiled and linked with.")
  set(CPACK_COMPONENT_DEVELOPMENT_DEPENDS runtime)

  set(frequency_license "FFTW, which it is linked with, is under the GNU General Public License: so is \
a program that is distributed with this library, unless FFTW is licensed otherwise.")
  set(drawing_development_depends libcairo2-dev)
  foreach(name IN LISTS ky_optional)
    if(NOT TARGET ky_${name})
      continue()
    endif()
    list(APPEND CPACK_COMPONENTS_ALL ${name}_runtime ${name}_development)
    string(TOUPPER ${name} upper)
    set(CPACK_DEBIAN_${upper}_RUNTIME_PACKAGE_NAME libky${name}${PROJECT_VERSION_MAJOR})
    set(CPACK_DEBIAN_${upper}_RUNTIME_PACKAGE_SECTION libs)
    set(CPACK_DEBIAN_${upper}_RUNTIME_PACKAGE_SHLIBDEPS ON)
    set(CPACK_DEBIAN_${upper}_DEVELOPMENT_PACKAGE_NAME libky${name}-dev)
    set(CPACK_DEBIAN_${upper}_DEVELOPMENT_PACKAGE_SECTION libdevel)
    set(CPACK_DEBIAN_${upper}_DEVELOPMENT_PACKAGE_DEPENDS "${${name}_development_depends}")
    string(JOIN " " CPACK_COMPONENT_${upper}_RUNTIME_DESCRIPTION
      "${${name}_description}: the shared library." ${${name}_license})
    string(JOIN " " CPACK_COMPONENT_${upper}_DEVELOPMENT_DESCRIPTION
      "${${name}_description}: what programs are compiled and linked with." ${${name}_license})
    set(CPACK_COMPONENT_${upper}_RUNTIME_DEPENDS runtime)
    set(CPACK_COMPONENT_${upper}_DEVELOPMENT_DEPENDS ${name}_runtime development)
  endforeach()
  # python3-ky, and python3-ky-NAME of each optional library.
  function(ky_python_package component name depends description)
    string(TOUPPER ${component} upper)
    set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${name} PARENT_SCOPE)
    set(CPACK_DEBIAN_${upper}_PACKAGE_SECTION python PARENT_SCOPE)
    set(CPACK_DEBIAN_${upper}_PACKAGE_SHLIBDEPS ON PARENT_SCOPE)
    set(CPACK_DEBIAN_${upper}_PACKAGE_DEPENDS "python3 (>= 3.11), python3 (<< 3.12), python3-numpy" PARENT_SCOPE)
    set(CPACK_COMPONENT_${upper}_DESCRIPTION "${description}" PARENT_SCOPE)
    set(CPACK_COMPONENT_${upper}_DEPENDS ${depends} PARENT_SCOPE)
  endfunction()
  if(KY_PYTHON)
    list(APPEND CPACK_COMPONENTS_ALL python)
    ky_python_package(python python3-ky runtime "The Python package ky: images are NumPy arrays.")
    foreach(name IN LISTS ky_optional)
      if(TARGET ky_${name})
        list(APPEND CPACK_COMPONENTS_ALL ${name}_python)
        ky_python_package(${name}_python python3-ky-${name} "python;${name}_runtime"
          "${${name}_description}: the Python module ky.${name}. ${${name}_license}")
        if(name STREQUAL drawing)
          string(APPEND CPACK_DEBIAN_DRAWING_PYTHON_PACKAGE_DEPENDS ", python3-cairo")
        endif()
      endif()
    endforeach()
  endif()
  include(CPack)
endif()
