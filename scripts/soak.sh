#!/usr/bin/env bash
# Soak under faults, not part of CI: the barrage road at 5,000 messages a second for MINUTES
# (default 10), the connected barrage server killed every 30 seconds. Builds the default
# preset's soak program first; its report ends with SOAK PASSED or SOAK FAILED (exit 1).
#
#   bash scripts/soak.sh 10
#   SOAK_RATE=2000 SOAK_KILL_SECONDS=20 bash scripts/soak.sh 3
set -euo pipefail
cd "$(dirname "$0")/.."
minutes="${1:-10}"
cmake --preset default >/dev/null
cmake --build --preset default -j2 --target barrage_soak
exec build/default/bin/barrage_soak "$minutes" "${SOAK_RATE:-5000}" "${SOAK_KILL_SECONDS:-30}"
