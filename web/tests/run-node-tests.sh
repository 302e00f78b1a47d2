#!/bin/sh
# CTest's web_node test: builds the site with tools/build-web.sh into
# BUILD/web-site, then runs quarl.mjs's tests under node's test runner.
# Exits 77 (skipped) with the reason when emscripten, fast_float or node is
# missing. QUARL_CONVERT, when set, names the native quarl-convert.
set -eu
root=$(cd "$(dirname "$0")/../.." && pwd)
build=$1
set -- emcc node
. "$root/web/tests/require-web-tools.sh"
QUARL_WEB_BUILD="$build/web-build" "$root/tools/build-web.sh" "$build/web-site"
QUARL_SITE="$build/web-site" node --test "$root/web/tests/"
