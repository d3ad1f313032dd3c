# Headers, libraries, a CMake package (find_package(OrvUpdate)) and a pkg-config file.
include(CMakePackageConfigHelpers)

install(TARGETS OrvUpdate OrvPlatform OrvPlatformHeaders EXPORT OrvUpdateTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
if(NOT WIN32)
  set_target_properties(OrvUpdate OrvPlatform PROPERTIES INSTALL_RPATH "$ORIGIN")
endif()

# The installer and its launcher lie together, as they must beside a host.
install(TARGETS orvinstaller RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
file(RELATIVE_PATH ORV_LIB_FROM_BIN ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
set_target_properties(orvinstaller PROPERTIES INSTALL_RPATH "$ORIGIN;$ORIGIN/${ORV_LIB_FROM_BIN}")
if(NOT WIN32)
  install(PROGRAMS ${CMAKE_BINARY_DIR}/programs/orvinstaller/orvInstaller.exe DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()

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

# It finds the tree by its own place, so that the tree may lie anywhere.
file(RELATIVE_PATH ORV_PREFIX_FROM_PC ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" ORV_PREFIX_FROM_PC ${ORV_PREFIX_FROM_PC})
if(WIN32)
  set(ORV_PC_LIBRARIES "-lOrvUpdate")
else()
  set(ORV_PC_LIBRARIES "-lOrvUpdate -lOrvPlatform")
endif()
configure_file(cmake/OrvUpdate.pc.in OrvUpdate.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/OrvUpdate.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
