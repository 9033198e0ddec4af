#!/usr/bin/env bash
# The patients' folder on a small disk of its own (a tmpfs), filled or taken away while the
# console works, through the real windows under Xvfb against zelmoor-sim and the simulated
# gating library. Needs root (for the mounts) and a build (scripts/build.sh).
#   (a) a gated hold recorded until the disk is full: one report (61, the system's words),
#       the relay opened before it, nothing sent to the module after it, whole lines in the file;
#   (c) a full disk at the Save of Patient Settings: message 142, the .zel and .sfv byte for
#       byte as they were;
#   (b) then Exit with Yes: message 101, and no history file or temporary file left behind
#       (the test table of tests/faults holds an earlier history byte for byte);
#   (d) the share taken away (unmounted) while recording: one report (76); and at a save at
#       Exit: message 101.
#   scripts/e2e-disk-full.sh DIR
set -euo pipefail
cd "$(dirname "$0")/.."
[ $# -ge 1 ] || { echo "usage: $0 DIR" >&2; exit 2; }
[ "$(id -u)" -eq 0 ] || { echo "$0: needs root for its mounts" >&2; exit 2; }
. scripts/e2e-lib.sh

e2e_start "$1"
E2E_PATIENTS=$E2E_DIR/patients
mount_share() {
    mkdir -p "$E2E_PATIENTS"
    mount -t tmpfs -o size=4m zelmoor-e2e "$E2E_PATIENTS"
}
unmount_share() { mountpoint -q "$E2E_PATIENTS" && umount -l "$E2E_PATIENTS" || true; }
stop_all() { e2e_stop || true; unmount_share; }
trap stop_all EXIT
unmount_share
rm -rf "$E2E_PATIENTS" "$E2E_APP_DATA/zel.ini" "$E2E_APP_DATA/datapath.ini" \
    "$E2E_APP_DATA/sim/tarrow-calls.log" "$E2E_APP_DATA/sim/module-commands.log"
mount_share

fill_disk() { dd if=/dev/zero of="$E2E_PATIENTS/filler" bs=4k status=none 2>/dev/null || true; }
free_disk() { rm -f "$E2E_PATIENTS/filler"; }
console_log() { cat "$E2E_DIR/console-$E2E_CONSOLE_RUNS.log"; }
said() { console_log | grep -F -- "$1" >/dev/null; }
wait_said() {
    for _ in $(seq 100); do said "$1" && return 0; sleep 0.1; done
    e2e_fail "the console never said \"$1\" (see $E2E_DIR/console-$E2E_CONSOLE_RUNS.log)"
}
commands_sent() { wc -l <"$E2E_APP_DATA/sim/module-commands.log"; }
# Every line of a curve file whole: the header, then samples of four or seven fields.
whole_curve() {
    python3 - "$1" <<'EOF'
import sys
data = open(sys.argv[1], "rb").read()
assert data.endswith(b"\r\n"), "the file ends inside a line"
lines = data.split(b"\r\n")[:-1]
samples = lines[lines.index(b"HeaderEnd") + 1:]
bad = [l for l in samples if len(l.split(b";")) not in (4, 7)]
assert not bad, bad[:3]
print("e2e: %s: %d whole sample lines" % (sys.argv[1], len(samples)), file=sys.stderr)
EOF
}
# The report of a failure is up: answered, then the console must end by itself.
acknowledge_report() {
    local box
    box=$(wait_window "Zelmoor")
    keys_to "$box" Return
    wait_console_end 20
}

printf '%s\n' "gating connected yes" >"$E2E_DIR/sim-script.txt"
e2e_sim "$E2E_DIR/sim-script.txt"

start_without_patient() {
    local question
    main=$(wait_window "Zelmoor  3.00.01" 60)
    question=$(wait_window "Zelmoor  ")
    keys_to "$question" Tab Tab Return  # Cancel: no patient yet
    wait_gone "$question"
}

# (c) then (b): a patient made on a healthy disk; the disk fills; the Save of Patient Settings,
# then Exit with Yes.
e2e_console
main=$(first_start "$E2E_PATIENTS")
create_patient "$main" Moe Cy D4 manual 15 1.2 no
patient=$E2E_PATIENTS/Moe_Cy_D4
zel=$(sha256sum <"$patient/Moe.zel"); sfv=$(sha256sum <"$patient/Moe.sfv")
fill_disk
dialog=$(menu_entry "$main" s p "ZEL Patient Settings")
replace_field "$dialog" 218 262 "1.4"
click_at "$dialog" 350 412  # Save
wait_said "File not saved. Error writing file to disk."
box=$(wait_window "Zelmoor")
keys_to "$box" Return
wait_gone "$box"
[ "$(sha256sum <"$patient/Moe.zel")" = "$zel" ] || e2e_fail "(c) the patient file changed"
[ "$(sha256sum <"$patient/Moe.sfv")" = "$sfv" ] || e2e_fail "(c) the companion changed"
e2e_log "(c) message 142; the .zel and .sfv are as they were"
keys_to "$main" alt+f e  # Exit
question=$(wait_window "Zelmoor  ")
keys_to "$question" Return  # Yes, save the session
wait_said "Error in saving session history."
box=$(wait_window "Zelmoor")
keys_to "$box" Return
wait_console_end 20
[ ! -e "$patient/session.ini" ] || e2e_fail "(b) a session history was left on the full disk"
ls "$patient" | grep -q '\.new-' && e2e_fail "(b) a temporary file stayed behind"
e2e_log "(b) message 101; no half history on the full disk"
free_disk

# (a) A gated, recorded hold; the disk fills during it.
e2e_console
start_without_patient
create_patient "$main" Roe Ann B2 automated 20 1.2 yes
curve=$E2E_PATIENTS/Roe_Ann_B2/Roe_1.dat
[ -f "$curve" ] || e2e_fail "recording did not start"
# Armed with the spacebar (a press while the volume stands in the hold's region is not taken);
# the simulator's logs come a moment late, so a press is given time before the next.
armed=$(armed_count)
for _ in $(seq 20); do
    keys_to "$main" space
    for _ in $(seq 15); do [ "$(armed_count)" -gt "$armed" ] && break 2; sleep 0.2; done
done
wait_balloon 4 30
grep -q "SetRelayState(1)" "$E2E_APP_DATA/sim/tarrow-calls.log" || e2e_fail "the relay never closed"
fill_disk
e2e_log "(a) the disk is full during a gated hold"
wait_said "Run-time error 61"
said "No space left on device" || e2e_fail "(a) the report lacks the system's words"
sent=$(commands_sent)
last_relay=$(grep -o "SetRelayState([01])" "$E2E_APP_DATA/sim/tarrow-calls.log" | tail -1)
[ "$last_relay" = "SetRelayState(0)" ] || e2e_fail "(a) the relay was not opened before the report"
sleep 1
acknowledge_report
[ "$(commands_sent)" -eq "$sent" ] || e2e_fail "(a) commands went to the module after the report"
[ "$(console_log | grep -c 'Run-time error')" -eq 1 ] || e2e_fail "(a) more than one report"
whole_curve "$curve" || e2e_fail "(a) the curve file holds a broken line"
e2e_log "(a) one report, relay opened first, nothing sent after it, whole lines"
free_disk
# The module goes on with the hold that the ended console armed; until it lets go, the next
# console finds a hold under way and keeps its File menu shut.
wait_balloon 1 60

# (d) The share is taken away while recording, then at a save.
e2e_console
start_without_patient
create_patient "$main" Poe Bo C3 manual 15 1.2 yes
sleep 1
umount -l "$E2E_PATIENTS"
e2e_log "(d) the share is gone while recording"
wait_said "Run-time error 76"
acknowledge_report
mount_share

e2e_console
start_without_patient
create_patient "$main" Noe Di E5 manual 15 1.2 no
umount -l "$E2E_PATIENTS"
e2e_log "(d) the share is gone before a save"
keys_to "$main" alt+f e
question=$(wait_window "Zelmoor  ")
keys_to "$question" Return
wait_said "Error in saving session history."
box=$(wait_window "Zelmoor")
keys_to "$box" Return
wait_console_end 20
e2e_log "(d) report 76 while recording; message 101 at the save"
e2e_log "PASSED"
