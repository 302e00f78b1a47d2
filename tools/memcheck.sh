#!/usr/bin/env bash
# Runs every test program, and every fuzz replay program over its regression
# inputs, under valgrind's memcheck and fails on any error or leak.
#
#   tools/memcheck.sh [BUILD_DIR]        (build by default; built if needed)
#
# Needs valgrind (Debian: apt-get install -y valgrind); installs nothing.
set -euo pipefail
cd "$(dirname "$0")/.."
if ! command -v valgrind >/dev/null; then
  echo "memcheck: valgrind is missing; install it with: apt-get install -y valgrind" >&2
  exit 2
fi
build=${1:-build}
[ -f "$build/build.ninja" ] || cmake -S . -B "$build" -G Ninja >/dev/null
cmake --build "$build"
failed=0
for test in "$build"/tests/test_* "$build"/apps/tests/test_* "$build"/fuzz/fuzz_*_replay; do
  [ -x "$test" ] || continue
  start=$(date +%s)
  args=(--gtest_brief=1)
  case $test in
    *_replay) name=$(basename "$test" _replay); args=("fuzz/regression/${name#fuzz_}") ;;
  esac
  # The limit tests measure a child's peak memory, which valgrind's own
  # memory would swell: they leave that check out when told.
  if QUARL_UNDER_VALGRIND=1 valgrind --quiet --error-exitcode=99 --leak-check=full \
      --errors-for-leak-kinds=definite,indirect,possible --track-origins=yes \
      "$test" "${args[@]}" >"$test.memcheck.log" 2>&1; then
    echo "clean  $(basename "$test") ($(( $(date +%s) - start )) s)"
  else
    echo "FAILED $(basename "$test"): see $test.memcheck.log"
    failed=1
  fi
done
exit $failed
