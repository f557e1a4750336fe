# Builds the sources that this port is part of:
#   vcpkg install optrella --overlay-ports=Packaging/vcpkg
# Only the syntax of the port has been checked: vcpkg has never built it.
get_filename_component(SOURCE_PATH "${CURRENT_PORT_DIR}/../../.." ABSOLUTE)

vcpkg_cmake_configure(
  SOURCE_PATH "${SOURCE_PATH}"
  OPTIONS -DOPTRELLA_BUILD_TESTS=OFF -DOPTRELLA_BUILD_EXAMPLES=OFF)
vcpkg_cmake_install()
vcpkg_cmake_config_fixup(PACKAGE_NAME Optrella CONFIG_PATH lib/cmake/Optrella)
vcpkg_fixup_pkgconfig()
file(REMOVE_RECURSE
  "${CURRENT_PACKAGES_DIR}/debug/include" "${CURRENT_PACKAGES_DIR}/debug/share")
file(INSTALL "${CURRENT_PORT_DIR}/usage" DESTINATION "${CURRENT_PACKAGES_DIR}/share/${PORT}")
# No licence has been chosen yet; the file says so.
vcpkg_install_copyright(FILE_LIST "${SOURCE_PATH}/Packaging/Debian/copyright")
