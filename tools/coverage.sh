#!/usr/bin/env bash
# Line and branch coverage of the library's own sources (foundation, reader,
# writer, tessel and the public headers) by the test suite, fuzzing aside.
#
#   tools/coverage.sh [BUILD_DIR]        (build-coverage by default)
#
# Needs gcc and gcovr (Debian: apt-get install -y gcovr); installs nothing.
# Branches that only exist for thrown exceptions, and those the compiler
# marks unreachable, are not counted. Prints the figures of each file and
# the totals, and fails below 95% of lines or 90% of branches.
set -euo pipefail
cd "$(dirname "$0")/.."
if ! command -v gcovr >/dev/null; then
  echo "coverage: gcovr is missing; install it with: apt-get install -y gcovr" >&2
  exit 2
fi
build=${1:-build-coverage}

cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Debug -DQUARL_COVERAGE=ON \
  -DQUARL_BUILD_EXAMPLES=OFF -DQUARL_INSTALL=OFF >/dev/null
# Counts from an earlier build, or from the test discovery that runs the
# test programs while building, are dropped.
find "$build" -name '*.gcda' -delete
cmake --build "$build"
find "$build" -name '*.gcda' -delete
# The packaging tests build other projects and run none of the library.
ctest --test-dir "$build" --output-on-failure -E 'add_subdirectory_consume|exported_symbols' -LE 'web|browser'
gcovr -r . "$build" --filter 'foundation/' --filter 'reader/' --filter 'writer/' \
  --filter 'tessel/' --filter 'include/' --exclude-throw-branches --exclude-unreachable-branches \
  --branches --print-summary --fail-under-line 95 --fail-under-branch 90
