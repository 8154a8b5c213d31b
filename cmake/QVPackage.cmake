# The installed CMake package `qvstats` and the pkg-config file of the same name.
include(CMakePackageConfigHelpers)

set(QVSTATS_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/qvstats)
install(EXPORT qvstatsTargets NAMESPACE qvstats:: DESTINATION ${QVSTATS_PACKAGE_DIR}
  COMPONENT Development)
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/qvstatsConfig.cmake.in
  ${PROJECT_BINARY_DIR}/qvstatsConfig.cmake INSTALL_DESTINATION ${QVSTATS_PACKAGE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/qvstatsConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/qvstatsConfig.cmake
  ${PROJECT_BINARY_DIR}/qvstatsConfigVersion.cmake
  DESTINATION ${QVSTATS_PACKAGE_DIR} COMPONENT Development)

configure_file(${PROJECT_SOURCE_DIR}/cmake/qvstats.pc.in ${PROJECT_BINARY_DIR}/qvstats.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/qvstats.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT Development)

if(NOT PROJECT_IS_TOP_LEVEL)
  return()
endif()
# Debian packages, made by `cpack` in the build folder: the libraries, what programs build with, and
# the command line.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME qvstats)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY ${PROJECT_DESCRIPTION})
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL Runtime Development Program)
set(CPACK_COMPONENT_PROGRAM_DEPENDS Runtime)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "The libqvstats developers <libqvstats@example.org>")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PROGRAM_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/stats)
foreach(layer system math opt chem depict likeness)
  list(APPEND CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/platform/${layer})
endforeach()
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libqvstats${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_RECOMMENDS fonts-dejavu-core)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libqvstats-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS
  "libqvstats${PROJECT_VERSION_MAJOR} (= ${PROJECT_VERSION}), libeigen3-dev (>= 3.4)")
set(CPACK_DEBIAN_PROGRAM_PACKAGE_NAME qvstats)
set(CPACK_DEBIAN_PROGRAM_PACKAGE_SECTION science)
include(CPack)
