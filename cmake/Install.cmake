include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

install(TARGETS tollan EXPORT TollanTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
if(TARGET tollan-monitor)
  install(TARGETS tollan-monitor RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/tollan DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(EXPORT TollanTargets NAMESPACE Tollan:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/Tollan)

configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/TollanConfig.cmake.in
  ${PROJECT_BINARY_DIR}/TollanConfig.cmake
  INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/Tollan)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/TollanConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/TollanConfig.cmake ${PROJECT_BINARY_DIR}/TollanConfigVersion.cmake
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/Tollan)

file(RELATIVE_PATH TOLLAN_PC_TO_PREFIX /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
configure_file(${PROJECT_SOURCE_DIR}/cmake/tollan.pc.in ${PROJECT_BINARY_DIR}/tollan.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/tollan.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
