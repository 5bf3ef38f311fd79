#!/usr/bin/env bash
# Builds the fuzz preset and runs every libFuzzer target for SECONDS each (default 60), one
# after the other, starting from the seeds in fuzz/corpus/<target>/. New inputs go to a
# scratch corpus under build/fuzz/, never into the repository. Prints executions and rate
# per target; exits non-zero when any target found a crash, leak or sanitizer report, whose
# input is then in build/fuzz/artifacts/<target>/.
#
#   bash scripts/fuzz.sh 600            # ten minutes per target
#   FUZZ_TARGETS="data_parser_fuzz" bash scripts/fuzz.sh 60
set -euo pipefail
cd "$(dirname "$0")/.."
seconds="${1:-60}"

cmake --preset fuzz >/dev/null
cmake --build --preset fuzz -j2

bin=build/fuzz/bin
# Leaks that happen inside Qt itself are reported by fuzz/lsan.supp's reason, not here.
export LSAN_OPTIONS="suppressions=$PWD/fuzz/lsan.supp:print_suppressions=0"
targets="${FUZZ_TARGETS:-$(cd fuzz && ls *_fuzz.cpp | sed 's/\.cpp$//')}"
status=0
summary=()
for target in $targets; do
    seeds="fuzz/corpus/${target%_fuzz}"
    work="build/fuzz/corpus/${target}"
    artifacts="build/fuzz/artifacts/${target}"
    mkdir -p "$work" "$artifacts"
    log="build/fuzz/${target}.log"
    echo "== ${target}: ${seconds}s"
    set +e
    # Leaks are looked for at exit and on every input that allocated more than it freed.
    "$bin/$target" "$work" "$seeds" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 \
        -max_len=65536 -print_final_stats=1 -detect_leaks=1 -artifact_prefix="$artifacts/" \
        >"$log" 2>&1
    rc=$?
    set -e
    runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log" | tail -1)
    rate=$(sed -n 's/^stat::average_exec_per_sec: *//p' "$log" | tail -1)
    cov=$(grep -o 'cov: [0-9]*' "$log" | tail -1 | cut -d' ' -f2)
    verdict=ok
    if [ "$rc" -ne 0 ]; then
        verdict="FAILED (rc $rc, see $log and $artifacts)"
        status=1
    fi
    summary+=("$(printf '%-24s %12s runs %8s exec/s  cov %6s  %s' "$target" "${runs:-?}" \
        "${rate:-?}" "${cov:-?}" "$verdict")")
done
echo
printf '%s\n' "${summary[@]}"
exit "$status"
