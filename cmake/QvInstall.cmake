include(CMakePackageConfigHelpers)

install(TARGETS qvsysbase EXPORT qvsysbaseTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/qvsysbase
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

set(QVSYSBASE_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/qvsysbase)
install(EXPORT qvsysbaseTargets
  NAMESPACE qvsysbase::
  DESTINATION ${QVSYSBASE_CMAKE_DIR})
configure_package_config_file(
  ${PROJECT_SOURCE_DIR}/cmake/qvsysbaseConfig.cmake.in
  ${PROJECT_BINARY_DIR}/qvsysbaseConfig.cmake
  INSTALL_DESTINATION ${QVSYSBASE_CMAKE_DIR})
write_basic_package_version_file(
  ${PROJECT_BINARY_DIR}/qvsysbaseConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES
  ${PROJECT_BINARY_DIR}/qvsysbaseConfig.cmake
  ${PROJECT_BINARY_DIR}/qvsysbaseConfigVersion.cmake
  DESTINATION ${QVSYSBASE_CMAKE_DIR})

configure_file(${PROJECT_SOURCE_DIR}/cmake/qvsysbase.pc.in
  ${PROJECT_BINARY_DIR}/qvsysbase.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/qvsysbase.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
