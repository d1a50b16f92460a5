# cmake --install: the programs, the transport library in a folder of its own, and what a desktop wants to know.
include(GNUInstallDirs)

install(TARGETS corvane corvane-cli corvane-bench RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(TARGETS VellIO LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/corvane)
install(TARGETS VellIO_bench LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/corvane/bench)

# udev writes vendor IDs with four lower-case digits; the option takes any number that the compiler does.
math(EXPR vendor "${CORVANE_MAKER_VENDOR_ID}" OUTPUT_FORMAT HEXADECIMAL)
string(REGEX REPLACE "^0x" "000" vendor "${vendor}")
string(REGEX MATCH "....$" CORVANE_UDEV_VENDOR "${vendor}")

set(made ${PROJECT_BINARY_DIR}/packaging)
configure_file(packaging/60-corvane.rules.in ${made}/60-corvane.rules @ONLY)
foreach(program corvane corvane-cli corvane-bench)
  configure_file(packaging/man/${program}.1.in ${made}/${program}.1 @ONLY)
  install(FILES ${made}/${program}.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
endforeach()

# udev and systemd look for rules in lib, whatever the library folder is called.
install(FILES ${made}/60-corvane.rules DESTINATION lib/udev/rules.d)
install(FILES packaging/corvane.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
install(FILES packaging/corvane.svg DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps)
install(FILES packaging/example.corvane.corvane.metainfo.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo)
install(FILES packaging/completions/corvane-cli packaging/completions/corvane-bench
  DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)

install(FILES packaging/debian/copyright DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(FILES docs/device-bench.md docs/firmware-inf.md docs/hid-transport.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY docs/example-site DESTINATION ${CMAKE_INSTALL_DOCDIR})
