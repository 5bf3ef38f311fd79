#!/usr/bin/env bash
# Installs the built tree into a fresh prefix and proves the package works from there alone:
# the export list of the installed module, every public header on its own, a pkg-config build,
# examples/minimal-host built with find_package(Tolvane) and tested against the package's own
# simulator, and the host guide's C++ blocks compiled as one file.
# usage: scripts/check_package.sh [build-dir]
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build/default}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

prefix=$work/prefix
echo "package: installing into $prefix"
cmake --install "$build" --prefix "$prefix" >/dev/null
library=$(find "$prefix" -name 'libtolvane.so.*.*.*' | head -n 1)
cmake -DLIBRARY="$library" -P tests/check_exports.cmake

# Debian's Qt is built with reduce-relocations: code that includes its headers must be
# position-independent (-fPIC, not the compiler's default -fPIE), or qglobal.h stops the build.
cxx=(c++ -std=c++17 -fPIC -Wall -Wextra -Werror)

# Every installed header compiles on its own, from the prefix alone.
for header in "$prefix"/include/tolvane/*.h; do
    # shellcheck disable=SC2046
    echo "#include <tolvane/$(basename "$header")>" |
        "${cxx[@]}" -fsyntax-only -x c++ - -I"$prefix/include" $(pkg-config --cflags Qt5Core) ||
        { echo "package: $header does not compile on its own"; exit 1; }
done
echo "package: $(ls "$prefix"/include/tolvane/*.h | wc -l) public headers compile on their own"

# A host built from tolvane.pc alone links the module by its SONAME and finds it through the
# run path it was given, as the prefix is not one the loader searches.
export PKG_CONFIG_PATH=$(dirname "$library")/pkgconfig
libdir=$(realpath "$(pkg-config --variable=libdir tolvane)")
echo "package: linking the example with pkg-config tolvane $(pkg-config --modversion tolvane)"
# shellcheck disable=SC2046 # the flags are meant to split
"${cxx[@]}" examples/minimal-host/main.cpp $(pkg-config --cflags --libs tolvane) \
    -Wl,-rpath,"$libdir" -o "$work/minimal-host-pc"
# grep reads the whole output: with pipefail, an early exit would fail the producer on SIGPIPE.
readelf -d "$work/minimal-host-pc" | grep 'NEEDED.*\[libtolvane\.so\.0\]' >/dev/null ||
    { echo "package: the pkg-config build does not need libtolvane.so.0"; exit 1; }
ldd "$work/minimal-host-pc" | grep "libtolvane\.so\.0 => $libdir/" >/dev/null ||
    { echo "package: the pkg-config build does not load libtolvane.so.0 from $libdir"; exit 1; }

# The guide's C++ blocks, read in order, are one source file; #line points errors at the guide.
awk '/^```(cpp|c\+\+)$/ { on = 1; printf "#line %d \"docs/host-guide.md\"\n", NR + 1; next }
     /^```/ { on = 0 }
     on' docs/host-guide.md >"$work/guide.cpp"
blocks=$(grep -c '^#line' "$work/guide.cpp" || true)
echo "package: compiling the $blocks C++ blocks of docs/host-guide.md as one file"
# shellcheck disable=SC2046
"${cxx[@]}" -x c++ "$work/guide.cpp" $(pkg-config --cflags --libs tolvane) -o "$work/guide-host" ||
    { echo "package: docs/host-guide.md's code does not compile as shown"; exit 1; }

echo "package: building examples/minimal-host against it"
cmake -S examples/minimal-host -B "$work/example" -G Ninja -DCMAKE_PREFIX_PATH="$prefix" \
    -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build "$work/example"

echo "package: testing minimal-host against Tolvane::tolvane-sim"
ctest --test-dir "$work/example" --verbose >"$work/ctest.out" ||
    { cat "$work/ctest.out"; echo "package: minimal-host failed"; exit 1; }
sed -n 's/^[0-9]*: //p' "$work/ctest.out" |
    grep -Ev '^(Test command|Working Directory|Environment variables|Test timeout| TMPDIR)' || true
echo "package: ok"
