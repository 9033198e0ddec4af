#!/usr/bin/env bash
# Runs the console's first start on a bare machine against the simulated module under Xvfb and
# takes a screenshot at each step: the missing settings file, the data folder question, the
# folder chooser, the banner, the system check, the patient question and the main window.
#   scripts/screenshots.sh [output folder]     (default /tmp/zelmoor-screens); needs a build
set -u
cd "$(dirname "$0")/.."
out=${1:-/tmp/zelmoor-screens}
work=$(mktemp -d)
mkdir -p "$out" "$work/home/patients"
export HOME=$work/home
app_data=$HOME/.local/share/zelmoor
display=:$((90 + RANDOM % 9))
Xvfb "$display" -screen 0 1280x900x24 >/dev/null 2>&1 &
xvfb=$!
export DISPLAY=$display
printf 'wait 86400\nquit\n' >"$work/hold.txt"
QT_QPA_PLATFORM=offscreen build/sim/zelmoor-sim --headless --app-data "$app_data" \
    --script "$work/hold.txt" >"$work/sim.log" 2>&1 &
sim=$!
mkdir -p "$app_data/lib"
cp build/sim/libtarrow-sim.so "$app_data/lib/libtarrow.so"
sleep 1
build/app/zelmoor >"$work/console.log" 2>&1 &
console=$!
trap 'kill $console $sim 2>/dev/null; sleep 0.5; kill $xvfb 2>/dev/null; rm -rf "$work"' EXIT
shot() { sleep "$2"; import -window root "$out/$1.png"; }
shot 1-missing-settings 2; xdotool key Return
shot 2-no-data-folder 1; xdotool key Return
shot 3-folder-chooser 1.5
xdotool type --delay 20 "$HOME/patients"; xdotool key Return; sleep 0.5; xdotool key Return
shot 4-banner 0.2
shot 5-system-check 2.5
shot 6-patient-question 3
xdotool key Escape
shot 7-main-window 6
echo "screenshots in $out"
