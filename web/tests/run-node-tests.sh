#!/bin/sh
# CTest's web_node test: builds the site with tools/build-web.sh into
# BUILD/web-site, then runs quarl.mjs's tests under node's test runner.
# Exits 77 (skipped) with the reason when emscripten, fast_float or node is
# missing. QUARL_CONVERT, when set, names the native quarl-convert.
set -eu
root=$(cd "$(dirname "$0")/../.." && pwd)
build=$1
for tool in emcc node; do
  if ! command -v $tool >/dev/null 2>&1; then
    echo "skipped: $tool is missing (tools/install-deps.sh --web)"
    exit 77
  fi
done
if [ ! -f /usr/include/fast_float/fast_float.h ]; then
  echo "skipped: fast_float is missing (tools/install-deps.sh --web)"
  exit 77
fi
QUARL_WEB_BUILD="$build/web-build" "$root/tools/build-web.sh" "$build/web-site"
QUARL_SITE="$build/web-site" node --test "$root/web/tests/"
