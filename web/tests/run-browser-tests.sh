#!/bin/sh
# CTest's web_browser test: builds the site with tools/build-web.sh into
# BUILD/web-site, then drives the viewer in headless chromium with Selenium
# (browser_test.py). Exits 77 (skipped) with the reason when emscripten,
# fast_float, chromium, chromium-driver or python3-selenium is missing.
# QUARL_SCREENSHOTS=DIR saves the README's screenshots into DIR.
set -eu
root=$(cd "$(dirname "$0")/../.." && pwd)
build=$1
set -- emcc node /usr/bin/chromium /usr/bin/chromedriver
. "$root/web/tests/require-web-tools.sh"
if ! /usr/bin/python3 -c "import selenium" 2>/dev/null; then
  echo "skipped: python3-selenium is missing (tools/install-deps.sh --web)"
  exit 77
fi
QUARL_WEB_BUILD="$build/web-build" "$root/tools/build-web.sh" "$build/web-site"
QUARL_SITE="$build/web-site" /usr/bin/python3 "$root/web/tests/browser_test.py"
