#!/usr/bin/env bash
# The review window against kst, side by side, on the same five 30-minute curve files that the
# console's own recording code writes: each program is timed from its start to its first
# complete picture on the screen (zel_first_render: the screen grabbed until it settles), under
# one Xvfb, a warm-up run each and then RUNS runs each, taking turns. Prints every run, both
# medians and, last, "ratio R" with R = console median / kst median.
#   bench/compare-review.sh [RUNS]        (7 if not given; installs kst if missing)
set -euo pipefail
cd "$(dirname "$0")/.."
runs=${1:-7}
bash scripts/install-deps.sh --kst
bash scripts/build.sh >/dev/null

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
build/bench/zel_make_curves "$work/curves" 5 >/dev/null
files=("$work"/curves/Curve*.dat)

# kst takes the column separator and the header's length only from its configuration; a
# separator not in quotes is read as the start of a comment and the plot stays empty.
mkdir -p "$work/config/kst"
cat >"$work/config/kst/data.conf" <<'CONF'
[ASCII%20file]
Column%20Type=2
Column%20Delimiter=";"
Data%20Start=26
CONF
kst_args=()
for f in "${files[@]}"; do kst_args+=("$f" -P P1 -x 1 -y 2); done

cat >"$work/measure.sh" <<'INNER'
set -euo pipefail
work=$1 runs=$2; shift 2
console=(build/app/zelmoor --review "$work"/curves/Curve*.dat)
kst=(kst2 "$@")
measure() {  # name, command...
    local name=$1; shift
    local line
    line=$(build/bench/zel_first_render --settle 2000 --timeout 60 "$@" 2>/dev/null | grep first_render_ms) ||
        { echo "$name: no settled picture" >&2; exit 1; }
    echo "$name $(echo "$line" | awk '{print $2}')"
}
measure warmup-console "${console[@]}" >/dev/null
measure warmup-kst "${kst[@]}" >/dev/null
for i in $(seq "$runs"); do
    measure console "${console[@]}"
    measure kst "${kst[@]}"
done
INNER

export XDG_CONFIG_HOME="$work/config"
xvfb-run -a -s "-screen 0 1280x1024x24" bash "$work/measure.sh" "$work" "$runs" "${kst_args[@]}" |
    tee "$work/runs.txt"
median() { grep "^$1 " "$work/runs.txt" | awk '{print $2}' | sort -n |
           awk '{v[NR]=$1} END {print (NR%2 ? v[(NR+1)/2] : (v[NR/2]+v[NR/2+1])/2)}'; }
console=$(median console)
kst=$(median kst)
echo "median console ${console} ms"
echo "median kst ${kst} ms"
awk -v c="$console" -v k="$kst" 'BEGIN {printf "ratio %.2f\n", c/k}'
