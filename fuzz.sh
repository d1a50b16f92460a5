#!/usr/bin/env bash
# Builds the fuzz targets under build/fuzz and runs each for so many minutes, as many at a time as there are processors.
# What a target has learned stays in build/fuzz/corpus; an input that breaks something, in build/fuzz/findings.
#
#   ./fuzz.sh MINUTES             all targets
#   ./fuzz.sh MINUTES TARGET...   some of them; tests/fuzz/Targets.h names them
#
# Exit status 1 when something was found.
set -eu
cd "$(dirname "$0")"
case ${1:-} in ''|*[!0-9]*) sed -n '2,8p' "$0" | cut -c3-; exit 2 ;; esac
minutes=$1
shift
. tools/packages.sh
# shellcheck disable=SC2086
need $BUILD_PACKAGES $TEST_PACKAGES
cmake --preset fuzz >/dev/null
cmake --build --preset fuzz
[ $# -gt 0 ] || set -- $(ls tests/fuzz/seeds)
mkdir -p build/fuzz/findings build/fuzz/logs

# One target: its seeds and what it has learned before, and a line about how it went.
fuzz_one() {
    target=$1 seconds=$2
    log=build/fuzz/logs/$target
    mkdir -p "build/fuzz/corpus/$target"
    status=0
    ASAN_OPTIONS=detect_leaks=1 "build/fuzz/bin/fuzz_$target" -max_total_time="$seconds" -timeout=20 -rss_limit_mb=2048 \
        -max_len=4096 -print_final_stats=1 -artifact_prefix="build/fuzz/findings/$target-" \
        "build/fuzz/corpus/$target" "tests/fuzz/seeds/$target" >"$log" 2>&1 || status=$?
    awk -v target="$target" -v status="$status" '
        match($0, /cov: [0-9]+/) { cov = substr($0, RSTART + 5, RLENGTH - 5); if (/INITED/) first = cov }
        match($0, /ft: [0-9]+/) { ft = substr($0, RSTART + 4, RLENGTH - 4); if (/INITED/) features = ft }
        /number_of_executed_units/ { runs = $2 }
        END { printf "%-14s %9s runs, coverage %5s -> %5s, features %6s -> %6s  %s\n", target, runs, first, cov, features, ft,
              status ? "FOUND SOMETHING: see build/fuzz/logs/" target : "nothing found" }' "$log"
    return "$status"
}
export -f fuzz_one
printf '%s\n' "$@" | xargs -P "$(nproc)" -I{} bash -c 'fuzz_one "$1" "$2" || exit 1' fuzz {} $((minutes * 60))
