#!/bin/sh
# Installs from Debian 12 (bookworm) what quarl needs to be built and its
# tests run: the compiler, CMake, Ninja, GoogleTest, pkg-config, SQLite and
# OpenSSL's libcrypto for quarl-catalog, and Debian's Python 3 with numpy,
# pandas, pybind11, pytest, distributed, fsspec and charset-normalizer for
# the Python package (pip, setuptools and venv for `pip install .` into a
# virtual environment, as the README shows), help2man for the programs' man
# pages. With --all also what the rest of CI uses: clang 14 with libFuzzer,
# clang-format, gcovr, valgrind, Doxygen for the API reference, dpkg-dev and file
# for the Debian packages, and two
# host locales (de_DE.UTF-8 with a decimal comma, tr_TR.ISO-8859-9) for the
# tests that prove the library ignores the host's locale. With --web what
# tools/build-web.sh and the browser tests need: emscripten (with node),
# fast_float, chromium, chromium-driver and Selenium. Runs as root, or
# through sudo.
set -eu

packages="cmake ninja-build g++ libgtest-dev pkg-config
  python3-dev python3-numpy python3-pandas pybind11-dev python3-pybind11 python3-pytest python3-distributed
  python3-fsspec python3-charset-normalizer python3-pip python3-setuptools python3-venv python3-mypy
  libsqlite3-dev sqlite3 libssl-dev help2man"
all=no
for option in "$@"; do
  case $option in
    --all)
      all=yes
      packages="$packages clang-14 libclang-rt-14-dev clang-format gcovr valgrind locales doxygen dpkg-dev file" ;;
    --web)
      packages="$packages emscripten libfast-float-dev chromium chromium-driver python3-selenium" ;;
    *)
      echo "usage: tools/install-deps.sh [--all] [--web]" >&2
      exit 2 ;;
  esac
done

if [ "$(id -u)" = 0 ]; then
  as_root=""
elif command -v sudo >/dev/null 2>&1; then
  as_root="sudo"
else
  echo "install-deps.sh: run this as root (sudo is not installed)" >&2
  exit 1
fi

$as_root apt-get update
# shellcheck disable=SC2086  # the package list is split on purpose
$as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends $packages
if [ "$all" = yes ]; then
  $as_root localedef -i de_DE -f UTF-8 de_DE.UTF-8 || echo "install-deps.sh: de_DE.UTF-8 not generated"
  $as_root localedef -i tr_TR -f ISO-8859-9 tr_TR.ISO-8859-9 || echo "install-deps.sh: tr_TR.ISO-8859-9 not generated"
fi
