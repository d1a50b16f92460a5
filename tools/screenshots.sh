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

# Every state on a small screen, on one of 1280x720 at 200 %, and on a large one.
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
every_state() {  # NAME SCALE WIDTH HEIGHT
    for palette in "" dark; do
        QT_SCALE_FACTOR=$2 "$programs/corvane-screenshots" "$work" "$3" "$4" $palette
        mv "$work/all.png" "docs/images/all-$1${palette:+-$palette}.png"
    done
}
every_state 640x360 1 640 360
every_state 1280x720 2 640 360
every_state 1920x1080 1 1920 1080
