#!/usr/bin/env bash
# A second console started beside a running one, under Xvfb: the running console's main window,
# covered by another window, is brought to the front; the second `zelmoor` and a second
# `zelmoor-demo` each say so on standard error and end with status 1, the second demo without
# starting a simulator of its own. Then the running console is killed and a new start takes
# its stale lock over. Needs a build (scripts/build.sh); about 1 minute.
#   scripts/e2e-second-console.sh DIR
set -euo pipefail
cd "$(dirname "$0")/.."
[ $# -ge 1 ] || { echo "usage: $0 DIR" >&2; exit 2; }
. scripts/e2e-lib.sh

e2e_fresh_start "$1"
echo "# quiet breathing" >"$E2E_DIR/sim-script.txt"
e2e_sim "$E2E_DIR/sim-script.txt"

e2e_console
main=$(first_start "$E2E_PATIENTS")
first=$E2E_CONSOLE

# Of the console's main window and the other program's, the one higher in the stack of the
# screen's windows (listed from the top down).
higher_of() {
    xwininfo -root -children | awk '/^ +0x/ {print $1}' | while read -r w; do
        printf '%d\n' "$w"
    done | grep -x -e "$1" -e "$2" | head -1
}
# Another program's window over the console's.
xmessage -geometry 1200x850+0+0 -title "another program" "another program" &
cover=$!
other=$(xdotool search --sync --onlyvisible --name "^another program\$" | tail -1)
[ "$(higher_of "$main" "$other")" = "$other" ] || e2e_fail "the other window did not cover the console"

second_start() {
    local what=$1 status=0
    shift
    timeout 20 "$@" >"$E2E_DIR/$what.out" 2>"$E2E_DIR/$what.err" || status=$?
    [ "$status" -eq 1 ] || e2e_fail "$what ended with status $status, not 1: $(cat "$E2E_DIR/$what.err")"
    grep -q "a console is already running (process $first): its window was brought to the front" \
        "$E2E_DIR/$what.err" || e2e_fail "$what did not say so: $(cat "$E2E_DIR/$what.err")"
    console_running || e2e_fail "the running console ended"
    e2e_log "$what: status 1: $(cat "$E2E_DIR/$what.err")"
}
second_start "second zelmoor" "$E2E_CONSOLE_PROGRAM"
for _ in $(seq 30); do [ "$(higher_of "$main" "$other")" = "$main" ] && break; sleep 0.1; done
[ "$(higher_of "$main" "$other")" = "$main" ] ||
    e2e_fail "the running console's window was not brought to the front"
import -window root "$E2E_DIR/raised.png"
grep -q "another start asked for the console" "$E2E_DIR/console-1.log" ||
    e2e_fail "the running console did not hear of the second start"
e2e_log "the running console's window came to the front"

sims_before=$(pgrep -c -f "$(basename "$E2E_SIM_PROGRAM")" || true)
second_start "second zelmoor-demo" env ZEL_CONSOLE="$E2E_CONSOLE_PROGRAM" ZEL_SIM="$E2E_SIM_PROGRAM" \
    ZEL_TARROW="$E2E_TARROW_LIBRARY" bash scripts/zelmoor-demo --headless
[ "$(pgrep -c -f "$(basename "$E2E_SIM_PROGRAM")" || true)" = "$sims_before" ] ||
    e2e_fail "the second demo started a simulator"
kill "$cover" 2>/dev/null || true

# A console killed leaves its lock behind; the next start takes it over.
kill -KILL "$first"
wait "$first" 2>/dev/null || true
E2E_CONSOLE=
[ -f "$E2E_APP_DATA/console.lock" ] || e2e_fail "no lock file was left by the killed console"
e2e_console
again=$(wait_window "Zelmoor  3.00.01" 60)
e2e_log "a new start took over the lock of the killed console (window $again)"
e2e_log "PASSED"
