#!/usr/bin/env bash
# Runs every libFuzzer target for a bounded time, one after the other, and
# fails on the first finding (crash, leak, timeout, sanitizer report).
#
#   CXX=clang++ cmake -S . -B build-fuzz -G Ninja -DQUARL_FUZZ=ON \
#     -DQUARL_BUILD_TESTS=OFF -DQUARL_BUILD_APPS=OFF -DQUARL_BUILD_EXAMPLES=OFF -DQUARL_INSTALL=OFF
#   cmake --build build-fuzz
#   tools/fuzz.sh [SECONDS_PER_TARGET] [BUILD_DIR]
#
# The corpora live in a scratch folder outside the project. Each target
# starts from its regression inputs in fuzz/regression/<name>/; the files of
# ../shared/corpus (when present) and files the writer target produced also
# seed the reader and the line reader. All use fuzz/dict/las.dict. A finding
# leaves the scratch folder in place and prints the input; the input then
# goes into fuzz/regression/<name>/, which the test suite replays.
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-60}
build=${2:-build-fuzz}
work=$(mktemp -d /tmp/quarl-fuzz-run-XXXXXX)
mkdir -p "$work"/{writer,reader,text_file,written,findings}
for name in writer reader text_file; do cp fuzz/regression/$name/* "$work/$name/"; done
if [ -d ../shared/corpus ]; then
  cp ../shared/corpus/* "$work/reader/"
  cp ../shared/corpus/* "$work/text_file/"
fi

run() {
  local target=$1 corpus=$2 maxlen=$3
  echo "-- $target, $seconds s"
  if ! "$build/fuzz/$target" "$work/$corpus" -dict=fuzz/dict/las.dict -max_total_time="$seconds" \
      -timeout=10 -max_len="$maxlen" -print_final_stats=1 -artifact_prefix="$work/findings/$target-" \
      >"$work/$target.log" 2>&1; then
    tail -n 60 "$work/$target.log"
    for finding in "$work"/findings/*; do
      echo "finding $finding:"
      od -An -c "$finding" | head -n 40
    done
    echo "fuzz: $target found a fault; inputs and logs in $work" >&2
    exit 1
  fi
  grep -E '^Done|stat::(number_of_executed_units|peak_rss_mb)' "$work/$target.log" || true
}

QUARL_FUZZ_SAVE_DIR="$work/written" run fuzz_writer writer 4096
cp "$work"/written/* "$work/reader/" 2>/dev/null || true
cp "$work"/written/* "$work/text_file/" 2>/dev/null || true
run fuzz_reader reader 65536
run fuzz_text_file text_file 65536
rm -rf "$work"
echo "fuzz: no finding"
