# Sourced by the scripts. need PACKAGE... installs the Debian packages that are missing, with sudo when not root, and asks
# for nothing when all is there. On another system it names them and ends.

need() {
    missing=
    if command -v dpkg-query >/dev/null 2>&1; then
        for package in "$@"; do
            [ "$(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null)" = installed ] || missing="$missing $package"
        done
        [ -n "$missing" ] || return 0
    else
        [ -e build/.packages-are-there ] && return 0
        echo "This is no Debian system. Install what corresponds to these packages:" >&2
        echo "  $*" >&2
        echo "and create the file build/.packages-are-there to skip this check." >&2
        exit 1
    fi
    as_root=
    if [ "$(id -u)" != 0 ]; then
        if ! command -v sudo >/dev/null 2>&1; then
            echo "These packages are missing, and there is no sudo to install them:$missing" >&2
            exit 1
        fi
        as_root=sudo
    fi
    echo "Installing:$missing"
    export DEBIAN_FRONTEND=noninteractive
    $as_root apt-get update -qq
    # shellcheck disable=SC2086  # one word each
    $as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends $missing >/dev/null
}

BUILD_PACKAGES="g++ cmake ninja-build pkgconf qt6-base-dev libcurl4-openssl-dev libhidapi-dev libudev-dev libzip-dev libsodium-dev libsecret-1-dev"
PACK_PACKAGES="dpkg-dev file"
RUN_PACKAGES="python3 python3-pyftpdlib fonts-dejavu-core"
TEST_PACKAGES="clang python3-openssl libclang-rt-14-dev clang-format libgtest-dev libssl-dev libumockdev-dev umockdev dbus-daemon curl gnome-keyring minisign xvfb xdotool $PACK_PACKAGES lintian appstream desktop-file-utils"
