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
