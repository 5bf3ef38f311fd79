#!/usr/bin/env bash
# Bootstraps, builds and runs the host's demo: the broadcast road against the embedded
# platform simulator.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/bootstrap.sh
cmake --preset default >/dev/null
cmake --build --preset default -j "$(nproc)" >/dev/null
exec ./build/default/bin/tolvane-host demo "$@"
