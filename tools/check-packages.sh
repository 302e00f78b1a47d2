#!/usr/bin/env bash
# Makes the Debian packages of a built tree (cpack -G DEB), installs them on
# this machine with apt-get, and checks them as a user would: the programs
# from the system's PATH, their man pages, `import quarl` from Debian's
# Python with no PYTHONPATH, and a host built against the -dev package with
# pkg-config and with CMake's find_package. The packages are removed again at
# the end, whatever happened, so that nothing later finds them.
#   tools/check-packages.sh BUILD_DIR      (as root, on Debian 12)
set -euo pipefail
build="$(cd "${1:?usage: tools/check-packages.sh BUILD_DIR}" && pwd)"
source="$(cd "$(dirname "$0")/.." && pwd)"
version="$(cat "$source/VERSION")"
sample="$source/examples/data/sample_las20.las"
work="$(mktemp -d /tmp/quarl-packages.XXXXXX)"

rm -f "$build"/*.deb
(cd "$build" && cpack -G DEB)
mapfile -t debs < <(ls "$build"/*.deb)
names=()
for deb in "${debs[@]}"; do
  names+=("$(dpkg-deb -f "$deb" Package)")
  echo "$(basename "$deb"): depends on $(dpkg-deb -f "$deb" Depends)"
  if ! dpkg-deb -c "$deb" | grep "/usr/share/doc/${names[-1]}/copyright" >/dev/null; then
    echo "check-packages.sh: ${names[-1]} has no copyright file" >&2
    exit 1
  fi
done
# Debian's checker, where it is installed: no errors allowed.
if command -v lintian >/dev/null; then
  lintian --fail-on error --tag-display-limit 0 "${debs[@]}"
fi
printf '%s\n' "${names[@]}" | sort > "$work/names"
# the runtime package is named after the soname: libquarl.so.0.2 in libquarl0.2
soversion="$(readelf -d "$build/libquarl.so" | sed -n 's/.*soname: \[libquarl\.so\.\(.*\)\]/\1/p')"
printf '%s\n' libquarl-dev "libquarl$soversion" python3-quarl quarl-tools | sort > "$work/expected"
diff -u "$work/expected" "$work/names"

remove() {
  DEBIAN_FRONTEND=noninteractive apt-get purge -y -q "${names[@]}" >/dev/null || true
  rm -rf "$work"
}
trap remove EXIT
DEBIAN_FRONTEND=noninteractive apt-get install -y -q "${debs[@]}"

cd "$work"
unset PYTHONPATH LD_LIBRARY_PATH PKG_CONFIG_PATH CMAKE_PREFIX_PATH
for program in quarl-info quarl-convert quarl-plot quarl-check quarl-catalog; do
  [ "$(command -v "$program")" = "/usr/bin/$program" ]
  [ "$("$program" --version | head -n 1)" = "$program (quarl) $version" ]
  gzip -dc "/usr/share/man/man1/$program.1.gz" | grep "^\.TH ${program^^} \"1\"" >/dev/null
done
quarl-info "$sample" | grep "Stepping: LASFILE_OK" >/dev/null
quarl-convert "$sample" "$work/out.las" --las 3
quarl-check "$work/out.las"

/usr/bin/python3 -c "import sys, quarl, importlib.metadata as m; \
assert quarl.__file__.startswith('/usr/lib/'), quarl.__file__; \
assert quarl.__version__ == m.version('quarl') == sys.argv[2], (quarl.__version__, m.version('quarl')); \
print('python3-quarl', quarl.__version__, quarl.read(sys.argv[1]).df().shape)" "$sample" "$version"

# A host, and the README's first example, built against the installed -dev
# package.
[ "$(pkg-config --modversion quarl)" = "$version" ]
# pkg-config's flags are split into words on purpose
read -r -a flags <<<"$(pkg-config --cflags --libs quarl)"
g++ -std=c++17 "$source/tests/consumer/main.cpp" "${flags[@]}" -o consumer_pc
./consumer_pc "$sample" | grep "consumer ok: .*, quarl $version"
g++ -std=c++17 "$source/examples/read_las.cpp" "${flags[@]}" -o read_las
./read_las "$sample" | grep "depths follow STEP: yes"
cmake -S "$source/tests/consumer" -B consumer_cmake -G Ninja >/dev/null
cmake --build consumer_cmake >/dev/null
consumer_cmake/consumer "$sample" | grep "consumer ok: .*, quarl $version"
grep -q "/usr/lib/.*cmake/quarl" consumer_cmake/CMakeCache.txt
echo "check-packages.sh: ${names[*]} installed, used and removed"
