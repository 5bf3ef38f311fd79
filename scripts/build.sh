#!/usr/bin/env bash
# Configures (only when the build folder is new or the presets changed) and builds one preset, showing Ninja's
# "[N/M]" progress. A built tree comes back in seconds: Ninja re-runs CMake itself when a
# CMakeLists.txt changed.
# usage: scripts/build.sh PRESET [TARGET...]   (no target: everything)
set -euo pipefail
cd "$(dirname "$0")/.."
preset=$1
shift
folder=build/$preset
if [ ! -f "$folder/build.ninja" ] || [ CMakePresets.json -nt "$folder/build.ninja" ]; then
    echo "== $preset: configure ($folder)"
    cmake --preset "$preset" >/dev/null
fi
echo "== $preset: build"
cmake --build --preset "$preset" -j "$(nproc)" ${1:+--target "$@"}
