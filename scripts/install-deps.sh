#!/usr/bin/env bash
# Installs every Debian package that building, testing and running the console needs.
set -euo pipefail
packages=(
    build-essential cmake ninja-build pkg-config
    qt6-base-dev qt6-serialport-dev libqcustomplot-dev
    libgtest-dev libgmock-dev libbenchmark-dev zlib1g-dev
    xvfb xauth fonts-liberation2 fontconfig poppler-utils imagemagick xdotool
)
# What the longer runs need besides (one option at most):
case "${1:-}" in
    --fuzz) packages+=(clang libclang-rt-14-dev) ;;           # fuzz/: clang, sanitizers, libFuzzer
    --kst) packages+=(kst) ;;                                  # bench/compare-review.sh
    --wine) packages+=(wine64 gcc-mingw-w64-x86-64 python3) ;; # scripts/profile-vs-wine.sh
esac
missing=()
for p in "${packages[@]}"; do
    dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
    sudo=""
    [ "$(id -u)" -ne 0 ] && sudo="sudo"
    export DEBIAN_FRONTEND=noninteractive
    $sudo apt-get update
    $sudo apt-get install -y --no-install-recommends "${missing[@]}"
fi
