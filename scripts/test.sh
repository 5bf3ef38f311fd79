#!/usr/bin/env bash
# Bootstraps, builds and runs the whole test suite: the plain build, then under
# ASan+UBSan and under TSan. Pass preset names to run only those.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/bootstrap.sh

presets=("$@")
[ ${#presets[@]} -eq 0 ] && presets=(default asan tsan)

for preset in "${presets[@]}"; do
    echo "== ${preset}: configure and build"
    cmake --preset "$preset" >/dev/null
    cmake --build --preset "$preset" -j "$(nproc)"
    echo "== ${preset}: test"
    ctest --preset "$preset"
done
