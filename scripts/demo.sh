#!/usr/bin/env bash
# Bootstraps, builds and runs the host's demo: the broadcast road against the embedded
# platform simulator.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/bootstrap.sh
# Only what the demo runs: the module, the host that loads it and the simulator.
bash scripts/build.sh default tolvane tolvane-host tolvane-sim
echo "== demo"
exec ./build/default/bin/tolvane-host demo "$@"
