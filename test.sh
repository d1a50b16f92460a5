#!/usr/bin/env bash
# Builds everything under build/test with clang++ and the address and undefined-behaviour sanitizers, and runs every test.
# build/bin stays as it is.
#
#   ./test.sh              all tests
#   ./test.sh NAME...      only those whose names match one of these expressions
#   ./test.sh --coverage   all tests, built with counters instead; prints line and branch coverage of the core folders
#   ./test.sh --record     makes the recordings of tests/recordings anew, for a change of the dialogue that is meant
#   ./test.sh --tidy       clang-tidy over the sources
set -eu
cd "$(dirname "$0")"
. tools/packages.sh
# shellcheck disable=SC2086
need $BUILD_PACKAGES $RUN_PACKAGES $TEST_PACKAGES
export QT_QPA_PLATFORM=offscreen

case ${1:-} in
--coverage)
    need gcovr
    cmake --preset coverage >/dev/null
    cmake --build --preset coverage
    ctest --preset coverage -j "$(nproc)"
    gcovr --root . --print-summary --exclude-throw-branches --exclude-unreachable-branches \
        --filter 'src/(ports|protocol|hid|ftp|app)/' build/coverage
    ;;
--record)
    cmake --preset test >/dev/null
    cmake --build --preset test --target test_record
    CORVANE_RECORD=1 build/test/bin/test_record --gtest_brief=1 --gtest_filter='Replay.TheKept*'
    git --no-pager diff --stat tests/recordings
    ;;
--tidy)
    need clang-tidy
    cmake --preset test >/dev/null
    # The window's files, which take the longest, come first, so that no processor waits at the end.
    find src -name '*.cpp' | sort -r | xargs -P "$(nproc)" -n 1 clang-tidy -p build/test --quiet 2> >(
        grep -v ' warnings\? generated\.$' >&2)
    ;;
*)
    cmake --preset test >/dev/null
    cmake --build --preset test
    pattern=$(IFS='|'; echo "$*")
    ctest --preset test -j "$(nproc)" ${pattern:+-R "$pattern"}
    ;;
esac
