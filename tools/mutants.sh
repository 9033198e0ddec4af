#!/usr/bin/env bash
# Mutation run over src/: tools/mutants.sh [N] [SEED]. See tools/mutants.py.
set -euo pipefail
cd "$(dirname "$0")/.."
exec python3 tools/mutants.py "$@"
