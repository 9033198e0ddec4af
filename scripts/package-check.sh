#!/usr/bin/env bash
# Builds the Debian package and installs it with apt into a clean, minimal Debian 12 made with
# debootstrap (kept in build/debian12 for later runs), then, inside it: the review window on a
# recorded curve and the simulator start and stay up, offscreen. Needs root and the Debian mirror.
#   scripts/package-check.sh
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/build.sh >/dev/null
(cd build && rm -f zelmoor_*.deb && cpack -G DEB >/dev/null)
deb=$(ls build/zelmoor_*.deb)
dpkg-query -W -f='${Status}' debootstrap 2>/dev/null | grep -q "install ok installed" ||
    { apt-get update && apt-get install -y debootstrap; }

root=build/debian12
if [ ! -x "$root/usr/bin/apt-get" ]; then
    rm -rf "$root"
    debootstrap --variant=minbase bookworm "$root" http://deb.debian.org/debian
fi
mounted=()
cleanup() { for m in "${mounted[@]}"; do umount "$m" 2>/dev/null || true; done; }
trap cleanup EXIT
for m in proc sys dev dev/pts; do
    mount --bind "/$m" "$root/$m"
    mounted=("$root/$m" "${mounted[@]}")
done
cp /etc/resolv.conf "$root/etc/resolv.conf"
cp "$deb" "$root/tmp/"
build/bench/zel_make_curves "$root/tmp/curves" 1 >/dev/null

chroot "$root" /bin/bash -euo pipefail -c '
    export DEBIAN_FRONTEND=noninteractive
    apt-get update >/dev/null
    # The root is made once; the package goes in anew on each run.
    apt-get purge -y zelmoor >/dev/null 2>&1 || true
    apt-get install -y /tmp/'"$(basename "$deb")"' >/tmp/apt.log 2>&1 || { tail -20 /tmp/apt.log; exit 1; }
    echo "package-check: installed $(dpkg-query -W zelmoor)"
    export QT_QPA_PLATFORM=offscreen HOME=/tmp/home
    mkdir -p $HOME
    for p in zelmoor zelmoor-sim zelmoor-demo /usr/lib/zelmoor/libtarrow-sim.so; do
        ls -l "$(command -v "$p" || echo "$p")"
    done
    # The manual pages are in place (no man program in a minimal root: their first line is
    # enough here), and the programs answer their options without starting.
    for page in zelmoor zelmoor-sim zelmoor-demo; do
        zcat /usr/share/man/man1/$page.1.gz | head -n 1 | grep -q "^\.TH" ||
            { echo "package-check: no manual page for $page"; exit 1; }
        $page --help | head -n 1 | grep -q "^Usage: $page" ||
            { echo "package-check: $page --help"; exit 1; }
        $page --version | head -n 1
        set +e; $page --no-such-option 2>/dev/null; status=$?; set -e
        [ $status -eq 2 ] || { echo "package-check: $page took a wrong option ($status)"; exit 1; }
    done
    # The review must still be running after three seconds: timeout ends it with 124.
    set +e
    timeout 3 zelmoor --review /tmp/curves/Curve1.dat; review=$?
    set -e
    [ $review -eq 124 ] || { echo "package-check: the review ended with $review"; exit 1; }
    zelmoor-sim --headless --app-data $HOME/sim & sim=$!
    sleep 2
    [ -L $HOME/sim/ports/sim0 ] || { echo "package-check: the simulator linked no port"; exit 1; }
    kill -0 $sim || { echo "package-check: the simulator ended"; exit 1; }
    kill $sim
    echo "package-check: the review window and the simulator ran"
'
echo "package-check: PASSED ($deb on a clean Debian 12)"
