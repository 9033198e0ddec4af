#!/usr/bin/env bash
# Sets up, builds and starts the console.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/build.sh
exec build/app/zelmoor
