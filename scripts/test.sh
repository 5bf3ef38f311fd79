#!/usr/bin/env bash
# Bootstraps, builds and runs the whole test suite: the plain build with the installed
# package and the Windows compile check, then under ASan+UBSan and under TSan. Pass preset
# names to run only those.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/bootstrap.sh

presets=("$@")
[ ${#presets[@]} -eq 0 ] && presets=(default asan tsan)

for preset in "${presets[@]}"; do
    bash scripts/build.sh "$preset"
    echo "== ${preset}: test"
    ctest --preset "$preset"
    if [ "$preset" = default ]; then
        echo "== installed package and examples/minimal-host"
        bash scripts/check_package.sh build/default
        echo "== Windows compile check"
        bash scripts/check_windows.sh
    fi
    case $preset in default | asan) bash scripts/check_panel.sh "build/$preset" ;; esac
done
