#!/usr/bin/env bash
# Sets up, builds and runs every test. No display is needed.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/build.sh
export QT_QPA_PLATFORM=offscreen
ctest --test-dir build --output-on-failure --parallel "$(nproc)" --timeout 300
