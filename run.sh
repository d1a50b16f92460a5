#!/usr/bin/env bash
# Builds Corvane and carries a simulated device through a whole online update: a real FTP server on loopback, a device on a
# pseudo-terminal. With a display the window does it, without one the console, and a screenshot of the window is written.
#
#   ./run.sh           the whole job; its last line says whether the device's memory equals the image
#   ./run.sh --hid     the same with a simulated HID reader
#   ./run.sh --real    the window on this machine's own ports
#   ./run.sh --build   only installs what is missing and builds
#   ./run.sh --package builds and makes a Debian package
set -eu
cd "$(dirname "$0")"
. tools/packages.sh
mode=${1:---demo}
case $mode in --demo|--hid|--real|--build|--package) ;; *) sed -n '2,9p' "$0" | cut -c3-; exit 2 ;; esac

# shellcheck disable=SC2086
need $BUILD_PACKAGES $RUN_PACKAGES
cmake --preset release >/dev/null
cmake --build --preset release

case $mode in
--build) ;;
--package)
    # shellcheck disable=SC2086
    need $PACK_PACKAGES
    cpack --preset release
    echo "Install it with: sudo apt install ./$(ls -t build/corvane_*.deb | head -1)"
    ;;
--real) exec build/bin/corvane ;;
--hid) exec /usr/bin/python3 tools/demo.py --hid ;;
--demo) exec /usr/bin/python3 tools/demo.py ;;
esac
