#!/bin/sh
# Runs a command against a fresh simulator: starts it, points TOLVANE_DEFAULT_DATA at the
# default.data it prints, and stops it when the command ends, whose exit status it returns.
# usage: with-simulator.sh TOLVANE-SIM COMMAND [ARGUMENT...]
set -u
simulator=$1
shift
folder=$(mktemp -d)
"$simulator" --data-dir "$folder/sim" >"$folder/sim.out" 2>&1 &
pid=$!
trap 'kill "$pid" 2>/dev/null; wait "$pid" 2>/dev/null; rm -rf "$folder"' EXIT

data=
tries=0
while [ -z "$data" ]; do
    if ! kill -0 "$pid" 2>/dev/null || [ "$tries" -ge 100 ]; then
        echo "with-simulator: tolvane-sim exited or printed no default.data within 10 s:" >&2
        cat "$folder/sim.out" >&2
        exit 1
    fi
    sleep 0.1
    tries=$((tries + 1))
    data=$(sed -n 's/^default.data: //p' "$folder/sim.out")
done

TOLVANE_DEFAULT_DATA=$data "$@"
status=$?
exit "$status"
