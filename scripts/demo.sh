#!/usr/bin/env bash
# Bootstraps, builds and runs the host's demo: the broadcast road against the embedded
# platform simulator.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/bootstrap.sh
bash scripts/build.sh default
echo "== demo"
exec ./build/default/bin/tolvane-host demo "$@"
