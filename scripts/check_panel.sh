#!/usr/bin/env bash
# Installs the built tree into a fresh prefix, builds examples/broadcaster-panel against it and
# runs the panel's road test headless against the installed simulator. A module built with
# AddressSanitizer gets a panel built the same way, since the sanitizer's runtime must come with
# the executable. The screenshots of each stage are kept in <build-dir>/panel-screenshots.
# usage: scripts/check_panel.sh [build-dir]
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build/default}
work=$(mktemp -d)
shots=$build/panel-screenshots
cleanup() {
    rm -rf "$shots" && mkdir -p "$shots"
    cp "$work"/panel/screenshots/*.png "$shots"/ 2>/dev/null || true
    rm -rf "$work"
}
trap cleanup EXIT

prefix=$work/prefix
echo "panel: installing into $prefix"
cmake --install "$build" --prefix "$prefix" >/dev/null
library=$(find "$prefix" -name 'libtolvane.so.*.*.*' | head -n 1)

options=(-G Ninja -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_BUILD_TYPE=RelWithDebInfo)
# Paths relative to the scratch folder, so that the next run's fresh folder hits the cache.
command -v ccache >/dev/null &&
    options+=("-DCMAKE_CXX_COMPILER_LAUNCHER=cmake;-E;env;CCACHE_BASEDIR=$work;CCACHE_NOHASHDIR=1;ccache")
if readelf -d "$library" | grep 'NEEDED.*libasan' >/dev/null; then
    sanitize="-fsanitize=address,undefined -fno-sanitize-recover=all"
    options+=("-DCMAKE_CXX_FLAGS=$sanitize -fno-omit-frame-pointer"
        "-DCMAKE_EXE_LINKER_FLAGS=$sanitize")
    export ASAN_OPTIONS=${ASAN_OPTIONS:-detect_leaks=1:abort_on_error=1}
    export UBSAN_OPTIONS=${UBSAN_OPTIONS:-print_stacktrace=1:halt_on_error=1}
fi

echo "panel: building examples/broadcaster-panel against it"
cmake -S examples/broadcaster-panel -B "$work/panel" "${options[@]}" >/dev/null
cmake --build "$work/panel"

echo "panel: the road test, headless"
QT_QPA_PLATFORM=offscreen timeout 300 "$work/panel/panel_road_test"
echo "panel: ok (screenshots in $shots)"
