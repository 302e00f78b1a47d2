#!/bin/sh
# tools/build-web.sh OUTDIR: builds the viewer site into OUTDIR with
# Debian's emscripten (tools/install-deps.sh --web): index.html, its
# scripts and styles, quarl.mjs and the WebAssembly module it loads.
# Nothing is fetched from outside, at build time or when the page runs.
set -eu
if [ $# -ne 1 ]; then
  echo "usage: tools/build-web.sh OUTDIR" >&2
  exit 2
fi
root=$(cd "$(dirname "$0")/.." && pwd)
out=$1
build=${QUARL_WEB_BUILD:-$root/build-web}
for tool in emcmake emcc node; do
  if ! command -v $tool >/dev/null 2>&1; then
    echo "build-web.sh: $tool is missing; run tools/install-deps.sh --web" >&2
    exit 1
  fi
done
if [ ! -f /usr/include/fast_float/fast_float.h ]; then
  echo "build-web.sh: fast_float is missing (libfast-float-dev); run tools/install-deps.sh --web" >&2
  exit 1
fi
# emscripten's JavaScript optimizer wants acorn, which Debian installs here.
export NODE_PATH=${NODE_PATH:+$NODE_PATH:}/usr/share/nodejs
# Only fast_float's folder is shown to the compiler, not the host's C headers.
mkdir -p "$build/include"
ln -sfn /usr/include/fast_float "$build/include/fast_float"
emcmake cmake -S "$root/web" -B "$build" -G Ninja -DQUARL_FAST_FLOAT_INCLUDE="$build/include" >/dev/null
cmake --build "$build"
mkdir -p "$out"
cp "$build/quarl_core.mjs" "$build/quarl_core.wasm" "$out/"
# The module for cross-origin isolated pages, with its workers.
for file in quarl_core_threads.mjs quarl_core_threads.wasm quarl_core_threads.worker.js; do
  if [ -f "$build/$file" ]; then cp "$build/$file" "$out/"; fi
done
cp "$root"/web/site/* "$out/"
echo "build-web.sh: the site is in $out (serve it with: python3 -m http.server -d $out)"
