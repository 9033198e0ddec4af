#!/usr/bin/env bash
# Sets up, builds and starts the console with the simulated control module and gating library.
# Arguments go to the simulator, e.g.: scripts/run-console.sh --headless --script sim/scripts/demo.txt
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/build.sh

app_data="$HOME/.local/share/zelmoor"
lib="$app_data/lib/libtarrow.so"
marker="$app_data/sim/libtarrow-is-simulated"
mkdir -p "$app_data/lib" "$app_data/sim"
# The simulated gating library goes where the console looks for the real one, but never over
# a real one that someone installed there.
if [ -e "$lib" ] && [ ! -e "$marker" ]; then
    echo "run-console: keeping the gating library already in $lib" >&2
else
    cp -f build/sim/libtarrow-sim.so "$lib"
    touch "$marker"
fi

build/sim/zelmoor-sim --app-data "$app_data" "$@" &
sim=$!
trap 'kill "$sim" 2>/dev/null || true; wait "$sim" 2>/dev/null || true' EXIT
for _ in $(seq 50); do
    [ -L "$app_data/ports/sim0" ] && break
    kill -0 "$sim" 2>/dev/null || { echo "run-console: the simulator did not start" >&2; exit 1; }
    sleep 0.1
done
build/app/zelmoor
