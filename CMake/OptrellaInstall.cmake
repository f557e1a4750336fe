# What is installed: the component Runtime is what a tool needs that is linked with the shared
# library, Development is everything else.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)
set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME Development)
set(packageDirectory ${CMAKE_INSTALL_LIBDIR}/cmake/Optrella)

# The archive and the shared library may be installed into one prefix, one after the other.
if(BUILD_SHARED_LIBS)
  set(linkage Shared)
else()
  set(linkage Static)
endif()
install(TARGETS Optrella EXPORT OptrellaTargets
  LIBRARY COMPONENT Runtime NAMELINK_COMPONENT Development
  FILE_SET HEADERS)
install(EXPORT OptrellaTargets
  NAMESPACE Optrella:: FILE Optrella${linkage}.cmake DESTINATION ${packageDirectory})
configure_package_config_file(
  ${PROJECT_SOURCE_DIR}/CMake/OptrellaConfig.cmake.in
  ${CMAKE_CURRENT_BINARY_DIR}/OptrellaConfig.cmake
  INSTALL_DESTINATION ${packageDirectory})
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/OptrellaConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES
  ${CMAKE_CURRENT_BINARY_DIR}/OptrellaConfig.cmake
  ${CMAKE_CURRENT_BINARY_DIR}/OptrellaConfigVersion.cmake
  ${PROJECT_SOURCE_DIR}/CMake/FindUtf8proc.cmake
  ${PROJECT_SOURCE_DIR}/CMake/OptrellaTool.cmake
  ${PROJECT_SOURCE_DIR}/CMake/OptrellaToolFiles.cmake
  DESTINATION ${packageDirectory})

# A prefix may be moved, or chosen when installing, so the file finds it by its own place. Not so the
# system's own prefix: pkg-config leaves out its directories when it recognises them.
if(CMAKE_INSTALL_PREFIX STREQUAL "/usr")
  set(prefix /usr)
else()
  file(RELATIVE_PATH prefix /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
  string(REGEX REPLACE "/$" "" prefix "\${pcfiledir}/${prefix}")
endif()
# What an archive needs must be linked with it; a shared library brings it along.
if(BUILD_SHARED_LIBS)
  set(private .private)
  set(privateLibraries ${systemLibraries})
else()
  set(publicLibraries ${systemLibraries})
endif()
configure_file(${PROJECT_SOURCE_DIR}/CMake/optrella.pc.in optrella.pc @ONLY)
# Installing compares times alone: the other library's file of the same second would stay.
set(pkgConfigDirectory ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
install(CODE
  "file(REMOVE \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${pkgConfigDirectory}/optrella.pc\")")
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/optrella.pc DESTINATION ${pkgConfigDirectory})

install(FILES ${PROJECT_SOURCE_DIR}/docs/man/optrella.3 DESTINATION ${CMAKE_INSTALL_MANDIR}/man3
  OPTIONAL)
install(FILES ${PROJECT_SOURCE_DIR}/docs/man/optrella.7 DESTINATION ${CMAKE_INSTALL_MANDIR}/man7
  OPTIONAL)

if(PROJECT_IS_TOP_LEVEL)
  add_custom_target(uninstall
    COMMAND ${CMAKE_COMMAND} -P ${PROJECT_SOURCE_DIR}/CMake/Uninstall.cmake
    WORKING_DIRECTORY ${PROJECT_BINARY_DIR}
    COMMENT "Removing what this directory installed last")
endif()
