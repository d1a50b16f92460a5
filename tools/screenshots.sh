#!/usr/bin/env bash
# Writes the pictures of the documentation anew: docs/images/*.png, from the real window over simulated devices.
#
#   tools/screenshots.sh [BUILD FOLDER]    a build with tests (default: build/test, made when missing)
set -eu
cd "$(dirname "$0")/.."
build=${1:-build/test}
[ $# -gt 0 ] || cmake --preset test >/dev/null
cmake --build "$build" --target corvane-screenshots
programs=$(sed -n 's/^CORVANE_BIN_DIR:[A-Z]*=//p' "$build/CMakeCache.txt")
mkdir -p docs/images
"$programs/corvane-screenshots" docs/images
