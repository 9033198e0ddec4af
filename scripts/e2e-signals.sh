#!/usr/bin/env bash
# The console ended from outside in a gated, recorded hold, through the real program under Xvfb
# with the simulated module and gating library, three times:
#   SIGTERM (a shutdown, a logout, systemctl stop): exit status 143;
#   SIGHUP (the session closed): exit status 129;
#   the display server killed (the window system's library ends the program).
# Each time, once the gating library's call log shows the relay closed for the hold, the console
# is ended; it must have opened the relay as its last relay call, and after a signal also told
# the module to let go ("X"), closed the curve file read-only and let the library go. Needs a
# build (scripts/build.sh); about 2 minutes.
#   scripts/e2e-signals.sh DIR
set -euo pipefail
cd "$(dirname "$0")/.."
[ $# -ge 1 ] || { echo "usage: $0 DIR" >&2; exit 2; }
. scripts/e2e-lib.sh

e2e_fresh_start "$1"
patient=$E2E_PATIENTS/Poe_Max_C3
calls=$E2E_APP_DATA/sim/tarrow-calls.log

printf '%s\n' "gating connected yes" "breathing period 3" >"$E2E_DIR/sim-script.txt"
e2e_sim "$E2E_DIR/sim-script.txt"

relay_calls() { grep -o 'Tarrow_SetRelayState([01])\|Tarrow_Close()' "$calls" 2>/dev/null || true; }
last_relay_call() { relay_calls | grep SetRelayState | tail -1; }

# The balloon armed, then the hold until the relay is closed for it.
gated_hold_closes_relay() {
    arm_hold "$1"
    for _ in $(seq 300); do
        [ "$(last_relay_call)" = "Tarrow_SetRelayState(1)" ] && return 0
        sleep 0.1
    done
    e2e_fail "the gated hold never closed the relay"
}

# Ends the console in a gated hold with COMMAND (run with the console's process number) and
# checks the exit status (STATUS, or "any" for any failure status) and the relay.
end_in_hold() {
    local main=$1 what=$2 status=$3 got=0 x_before
    gated_hold_closes_relay "$main"
    x_before=$(sim_commands | awk '$0 == "X" {n++} END {print n + 0}')
    e2e_log "$what in a gated hold (the relay closed)"
    case $what in
        SIGTERM) kill -TERM "$E2E_CONSOLE" ;;
        SIGHUP) kill -HUP "$E2E_CONSOLE" ;;
        display) kill -KILL "$E2E_XVFB" ;;
    esac
    for _ in $(seq 100); do console_running || break; sleep 0.1; done
    console_running && e2e_fail "the console did not end after $what"
    wait "$E2E_CONSOLE" || got=$?
    E2E_CONSOLE=
    if [ "$status" = any ]; then
        [ "$got" -ne 0 ] || e2e_fail "$what: the console ended with status 0"
    else
        [ "$got" -eq "$status" ] || e2e_fail "$what: exit status $got, not $status"
    fi
    [ "$(last_relay_call)" = "Tarrow_SetRelayState(0)" ] ||
        e2e_fail "$what: the last relay call is $(last_relay_call): the beam was left enabled"
    e2e_log "$what: status $got, relay calls at the end: $(relay_calls | tail -3 | tr '\n' ' ')"
    [ "$what" = display ] && return 0
    [ "$(relay_calls | tail -1)" = "Tarrow_Close()" ] || e2e_fail "$what: the library was not let go"
    sleep 0.5
    [ "$(sim_commands | awk '$0 == "X" {n++} END {print n + 0}')" -gt "$x_before" ] ||
        e2e_fail "$what: the module was not told to let the balloon go"
    local curve
    curve=$(ls -t "$patient"/*.dat | head -1)
    [ -w "$curve" ] && [ "$(id -u)" -ne 0 ] && e2e_fail "$what: $curve is still writable"
    [ "$(stat -c %A "$curve" | cut -c3)" = "-" ] || e2e_fail "$what: $curve is not read-only"
    return 0
}

# ---- SIGTERM --------------------------------------------------------------------------------
e2e_console
main=$(first_start "$E2E_PATIENTS")
create_patient "$main" Poe Max C3 automated 20 1.2 yes
end_in_hold "$main" SIGTERM 143

# ---- SIGHUP ---------------------------------------------------------------------------------
e2e_console
main=$(load_patient "$patient/Poe.zel" "" yes)
end_in_hold "$main" SIGHUP 129

# ---- The display server lost ----------------------------------------------------------------
e2e_console
main=$(load_patient "$patient/Poe.zel")
end_in_hold "$main" display any
E2E_XVFB=
e2e_log "PASSED: every end left the relay open"
