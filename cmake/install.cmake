# What `cmake --install` and the Debian packages contain: the components runtime and development,
# and in the latter what find_package(ky COMPONENTS image) and pkg-config need.
include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/ky)
set(pkgconfig_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
# Up from the package file's folder, so that an installed copy may be moved.
file(RELATIVE_PATH prefix_from_pkgconfig /prefix/${pkgconfig_dir} /prefix)

# LIBRARIES are those of ours that `name` is linked with.
function(ky_install name)
  cmake_parse_arguments(arg "" "DESCRIPTION" "LIBRARIES" ${ARGN})
  # Siblings are found beside the library, wherever that is.
  set_target_properties(ky_${name} PROPERTIES INSTALL_RPATH $ORIGIN)
  install(TARGETS ky_${name} EXPORT ky-${name}
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development)
  install(EXPORT ky-${name} NAMESPACE ky:: DESTINATION ${package_dir} COMPONENT development)

  list(TRANSFORM arg_LIBRARIES PREPEND ky- OUTPUT_VARIABLE required)
  list(JOIN required ", " required)
  configure_file(cmake/pkgconfig.pc.in pkgconfig/ky-${name}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/pkgconfig/ky-${name}.pc
    DESTINATION ${pkgconfig_dir} COMPONENT development)
endfunction()

ky_install(base DESCRIPTION "Pixels, regions of interest, images and status")
ky_install(color DESCRIPTION "Components and lookups of colour images" LIBRARIES base)
ky_install(image DESCRIPTION "Image processing for machine vision" LIBRARIES base color)

install(DIRECTORY include/ky DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development
  FILES_MATCHING PATTERN *.h)
configure_file(cmake/ky-config.cmake ky-config.cmake COPYONLY)
write_basic_package_version_file(ky-config-version.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/ky-config.cmake ${PROJECT_BINARY_DIR}/ky-config-version.cmake
  DESTINATION ${package_dir} COMPONENT development)

# The Debian packages libkyN, named after the version that its users are linked with, and libky-dev.
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
  if(KY_PYTHON)
    list(APPEND CPACK_COMPONENTS_ALL python)
    set(CPACK_DEBIAN_PYTHON_PACKAGE_NAME python3-ky)
    set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
    set(CPACK_DEBIAN_PYTHON_PACKAGE_SHLIBDEPS ON)
    set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS "python3 (>= 3.11), python3 (<< 3.12), python3-numpy")
    set(CPACK_COMPONENT_PYTHON_DESCRIPTION "The Python package ky: images are NumPy arrays.")
    set(CPACK_COMPONENT_PYTHON_DEPENDS runtime)
  endif()
  include(CPack)
endif()
