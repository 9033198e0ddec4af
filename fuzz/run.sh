#!/usr/bin/env bash
# Builds the fuzz harnesses with clang and runs each for the given seconds (default 600),
# one after the other, each on a working corpus seeded from fuzz/seeds.
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-600}
bash scripts/install-deps.sh --fuzz
cmake -S fuzz -B build-fuzz -G Ninja -DCMAKE_CXX_COMPILER=clang++ >/dev/null
ninja -C build-fuzz
for reader in profile_file system_settings language_file frames; do
    corpus=build-fuzz/corpus/$reader
    mkdir -p "$corpus"
    build-fuzz/fuzz_$reader "$corpus" fuzz/seeds/$reader -max_total_time="$seconds" \
        -max_len=65536 -artifact_prefix=build-fuzz/crash-$reader-
done
