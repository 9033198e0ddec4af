#!/usr/bin/env bash
# Random operator input to every window of the console: tools/monkey.sh [EVENTS] [SEED].
# Builds the test first where needed (in build/, or MONKEY_BUILD), then sends EVENTS events
# (3000) from SEED (1); a failure prints its seed and its last 50 events.
set -euo pipefail
cd "$(dirname "$0")/.."
build=${MONKEY_BUILD:-build}
if [ ! -f "$build/CMakeCache.txt" ]; then
    launcher=()
    if command -v ccache >/dev/null; then launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache); fi
    cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo "${launcher[@]}" >/dev/null
fi
cmake --build "$build" --target test_monkey
export QT_QPA_PLATFORM=${QT_QPA_PLATFORM:-offscreen}
ZEL_MONKEY_EVENTS=${1:-3000} ZEL_MONKEY_SEED=${2:-1} exec "$build/tests/test_monkey"
