#!/usr/bin/env bash
# Builds the release programs and prints a table of what they cost, each figure beside its budget. Takes some minutes; exit
# status 1 when a budget is missed. Other work on the machine shows in the figures, most in those of fast lines.
#
#   ./bench.sh            everything
#   ./bench.sh GROUP...   some of it: start wait ftp hid files peer program
set -eu
cd "$(dirname "$0")"
. tools/packages.sh
# shellcheck disable=SC2086
need $BUILD_PACKAGES $RUN_PACKAGES libgtest-dev libumockdev-dev curl python3-openssl
cmake --preset release -DBUILD_TESTING=ON >/dev/null
cmake --build --preset release --target corvane corvane-cli corvane-bench VellIO VellIO_bench corvane-windowrun \
    bench_ftp_rate bench_line_floor
exec /usr/bin/python3 -B benchmarks/bench.py build/bin "$@"
