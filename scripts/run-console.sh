#!/usr/bin/env bash
# Sets up, builds and starts the console with the simulated control module and gating library.
# Arguments go to the simulator, e.g.: scripts/run-console.sh --headless --script sim/scripts/demo.txt
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/build.sh
ZEL_CONSOLE=build/app/zelmoor ZEL_SIM=build/sim/zelmoor-sim ZEL_TARROW=build/sim/libtarrow-sim.so \
    exec bash scripts/zelmoor-demo "$@"
