# cpack: a Debian package of what cmake --install installs.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME corvane)
set(CPACK_PACKAGE_VENDOR "The Corvane authors")
set(CPACK_PACKAGE_CONTACT "The Corvane authors <authors@corvane.example>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "firmware updater for devices on serial ports and USB readers")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
"Corvane finds the device that is attached to a serial port or to a USB HID
reader, offers the firmware images for it that lie on the maker's FTP site or
in a local folder, and installs the chosen one through the device's boot
loader. A device that was left without firmware is brought back the same way.
.
The package contains the window (corvane), the same update for scripts
(corvane-cli), and simulated devices to try both on (corvane-bench).")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION electronics)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
# Those that the programs link; behind them what they load by name: a window needs a Qt platform, the icon a reader of
# SVG, and links a browser.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS "qt6-qpa-plugins")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "hicolor-icon-theme, libqt6svg6, qt6-wayland, xdg-utils")
set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA
  ${PROJECT_SOURCE_DIR}/packaging/debian/postinst ${PROJECT_SOURCE_DIR}/packaging/debian/postrm)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

configure_file(cmake/DebianDocs.cmake.in ${PROJECT_BINARY_DIR}/DebianDocs.cmake @ONLY)
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_BINARY_DIR}/DebianDocs.cmake)
include(CPack)
