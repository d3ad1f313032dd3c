# Headers, libraries, a CMake package (find_package(OrvUpdate)) and a pkg-config file.
include(CMakePackageConfigHelpers)

install(TARGETS OrvUpdate OrvPlatform OrvPlatformHeaders EXPORT OrvUpdateTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
set_target_properties(OrvUpdate OrvPlatform PROPERTIES INSTALL_RPATH "$ORIGIN")

install(DIRECTORY OrvUpdate/Include/ platform/Include/ Include/
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/OrvUpdate
  FILES_MATCHING PATTERN "*.h" PATTERN "*.proto")

set(config_dir ${CMAKE_INSTALL_LIBDIR}/cmake/OrvUpdate)
install(EXPORT OrvUpdateTargets NAMESPACE OrvUpdate:: DESTINATION ${config_dir})
configure_package_config_file(cmake/OrvUpdateConfig.cmake.in ${CMAKE_CURRENT_BINARY_DIR}/OrvUpdateConfig.cmake
  INSTALL_DESTINATION ${config_dir})
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/OrvUpdateConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/OrvUpdateConfig.cmake ${CMAKE_CURRENT_BINARY_DIR}/OrvUpdateConfigVersion.cmake
  DESTINATION ${config_dir})

configure_file(cmake/OrvUpdate.pc.in OrvUpdate.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/OrvUpdate.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
