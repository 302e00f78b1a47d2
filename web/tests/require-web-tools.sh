# Sourced by the web test scripts: exits 77 (skipped) with the reason when
# one of the tools named in $@, or fast_float, is missing.
for tool in "$@"; do
  if ! command -v "$tool" >/dev/null 2>&1; then
    echo "skipped: $tool is missing (tools/install-deps.sh --web)"
    exit 77
  fi
done
if [ ! -f /usr/include/fast_float/fast_float.h ]; then
  echo "skipped: fast_float is missing (tools/install-deps.sh --web)"
  exit 77
fi
