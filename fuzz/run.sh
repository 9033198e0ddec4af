#!/usr/bin/env bash
# Builds the fuzz harnesses with clang and runs each for the given seconds (default 600), two
# at a time at the lowest priority, each on a working corpus seeded from fuzz/seeds. A harness
# that stops at a finding starts again on its corpus until its time is up. Then one line per
# harness: executions, coverage (libFuzzer's cov: and ft: at the end) and findings.
#   fuzz/run.sh [SECONDS] [HARNESS...]     e.g. fuzz/run.sh 900 curve_file patient_file
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-600}
[ $# -gt 0 ] && shift
all=(frames frame_payloads profile_file system_settings patient_file session_history curve_file
     language_file)
if [ $# -gt 0 ]; then harnesses=("$@"); else harnesses=("${all[@]}"); fi

bash scripts/install-deps.sh --fuzz
cmake -S fuzz -B build-fuzz -G Ninja -DCMAKE_CXX_COMPILER=clang++ >/dev/null
ninja -C build-fuzz $(printf 'fuzz_%s ' "${harnesses[@]}")
# The harnesses write their files in the temporary folder: memory, where there is some.
if [ -d /dev/shm ] && [ -w /dev/shm ]; then export TMPDIR=/dev/shm; fi

stamp=$(date +%Y%m%d-%H%M%S)
run() {
    local h=$1 end=$((SECONDS + seconds)) part=0
    mkdir -p "build-fuzz/corpus/$h" "build-fuzz/findings/$h" build-fuzz/logs
    while [ $((end - SECONDS)) -gt 0 ]; do
        part=$((part + 1))
        nice -n 19 "build-fuzz/fuzz_$h" "build-fuzz/corpus/$h" "fuzz/seeds/$h" \
            -max_total_time=$((end - SECONDS)) -timeout=10 -rss_limit_mb=2048 -max_len=65536 \
            -print_final_stats=1 -artifact_prefix="build-fuzz/findings/$h/$stamp-" \
            >"build-fuzz/logs/$h-$stamp-$part.log" 2>&1 || true
    done
}
for ((k = 0; k < ${#harnesses[@]}; k += 2)); do
    run "${harnesses[k]}" &
    if [ $((k + 1)) -lt ${#harnesses[@]} ]; then run "${harnesses[k + 1]}" & fi
    wait
done

# A time-out is measured wall-clock: on a loaded machine a quick input can miss it. Each one
# is run again alone, with the processor time it takes.
cpu_seconds() {
    local TIMEFORMAT=%U
    { time "build-fuzz/fuzz_$1" "$2" -timeout=60 >/dev/null 2>&1; } 2>&1 | tail -1
}
printf '%-16s %7s %12s %6s %7s  %s\n' harness seconds executions cov ft findings
for h in "${harnesses[@]}"; do
    logs=(build-fuzz/logs/$h-$stamp-*.log)
    execs=$(cat "${logs[@]}" | grep -o 'stat::number_of_executed_units: [0-9]*' |
            awk '{ n += $2 } END { print n + 0 }' || true)
    # A harness stopped before its first status line has no coverage to show.
    last=$(cat "${logs[@]}" | grep -E '#[0-9]+.*cov: ' | tail -1 || true)
    cov=$(grep -o 'cov: [0-9]*' <<<"$last" | grep -o '[0-9]*$' || true)
    ft=$(grep -o 'ft: [0-9]*' <<<"$last" | grep -o '[0-9]*$' || true)
    found=""
    for f in $(find "build-fuzz/findings/$h" -name "$stamp-*" | sort); do
        case $f in
            *timeout-*) found+="$f (again alone: $(cpu_seconds "$h" "$f") s) " ;;
            *) found+="$f " ;;
        esac
    done
    printf '%-16s %7s %12s %6s %7s  %s\n' "$h" "$seconds" "$execs" "${cov:-?}" "${ft:-?}" \
        "${found:-none}"
done
echo "logs: build-fuzz/logs/*-$stamp-*.log"
