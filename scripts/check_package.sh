#!/usr/bin/env bash
# Installs the built tree into a fresh prefix and proves the package works from there alone:
# the export list of the installed module, pkg-config, and examples/minimal-host built with
# find_package(Tolvane) and run against the installed simulator.
# usage: scripts/check_package.sh [build-dir]
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build/default}
work=$(mktemp -d)
sim_pid=
cleanup() {
    [ -n "$sim_pid" ] && kill "$sim_pid" 2>/dev/null && wait "$sim_pid" 2>/dev/null
    rm -rf "$work"
}
trap cleanup EXIT

prefix=$work/prefix
echo "package: installing into $prefix"
cmake --install "$build" --prefix "$prefix" >/dev/null
library=$(find "$prefix" -name 'libtolvane.so.*.*.*' | head -n 1)
cmake -DLIBRARY="$library" -P tests/check_exports.cmake

# Every installed header compiles on its own, from the prefix alone.
for header in "$prefix"/include/tolvane/*.h; do
    # shellcheck disable=SC2046
    echo "#include <tolvane/$(basename "$header")>" |
        c++ -std=c++17 -fPIC -fsyntax-only -Wall -Wextra -Werror -x c++ - -I"$prefix/include" \
            $(pkg-config --cflags Qt5Core) ||
        { echo "package: $header does not compile on its own"; exit 1; }
done
echo "package: $(ls "$prefix"/include/tolvane/*.h | wc -l) public headers compile on their own"

# A host built from tolvane.pc alone links the module by its SONAME.
export PKG_CONFIG_PATH=$(dirname "$library")/pkgconfig
echo "package: linking the example with pkg-config tolvane $(pkg-config --modversion tolvane)"
# shellcheck disable=SC2046 # the flags are meant to split
c++ -std=c++17 -fPIC examples/minimal-host/main.cpp $(pkg-config --cflags --libs tolvane) \
    -o "$work/minimal-host-pc"
readelf -d "$work/minimal-host-pc" | grep -q 'NEEDED.*\[libtolvane\.so\.0\]' ||
    { echo "package: the pkg-config build does not need libtolvane.so.0"; exit 1; }

echo "package: building examples/minimal-host against it"
cmake -S examples/minimal-host -B "$work/example" -G Ninja -DCMAKE_PREFIX_PATH="$prefix" \
    -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build "$work/example"

echo "package: running minimal-host against $prefix/bin/tolvane-sim"
"$prefix/bin/tolvane-sim" --data-dir "$work/sim" >"$work/sim.out" &
sim_pid=$!
for _ in $(seq 100); do
    grep -q '^default.data: ' "$work/sim.out" 2>/dev/null && break
    sleep 0.1
done
data=$(sed -n 's/^default.data: //p' "$work/sim.out")
[ -n "$data" ] || { echo "package: tolvane-sim did not start"; exit 1; }
TOLVANE_DEFAULT_DATA=$data timeout 60 "$work/example/minimal-host"

# The guide quotes the example; every line it quotes must still be in the example.
guide_lines=$(awk '/^```cpp/{on=1; next} /^```/{on=0} on && NF' docs/host-guide.md)
missing=$(grep -vxF -f <(sed 's/^[[:space:]]*//' examples/minimal-host/main.cpp) \
    <(sed 's/^[[:space:]]*//' <<<"$guide_lines") || true)
if [ -n "$missing" ]; then
    echo "package: docs/host-guide.md quotes lines that examples/minimal-host/main.cpp lacks:"
    echo "$missing"
    exit 1
fi
echo "package: ok"
