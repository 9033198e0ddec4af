#!/usr/bin/env bash
# A newcomer's patient run, driven through the real windows under Xvfb:
#   first start: the two messages, the patient folder DIR/patients chosen, the system check;
#   the defaults saved from the File menu; the patient Doe, Jane, A1 created with a threshold
#   of 1.5 L and a hold of 15 s; two breath holds; Exit, saving the session;
#   a second start: the patient loaded through the file chooser, session 2, one breath hold;
#   Exit, saving the session.
# Then the patient's files are checked; DIR/new-patient.png and DIR/new-session.png show the
# dialog in its two modes. Needs a build (scripts/build.sh). Exits 0 only when all
# of it happened.
#   scripts/e2e-patient.sh DIR
set -euo pipefail
cd "$(dirname "$0")/.."
[ $# -ge 1 ] || { echo "usage: $0 DIR" >&2; exit 2; }
. scripts/e2e-lib.sh

e2e_start "$1"
rm -rf "$E2E_DIR/patients" "$E2E_APP_DATA/zel.ini" "$E2E_APP_DATA/datapath.ini"
mkdir -p "$E2E_DIR/patients"
patient=$E2E_DIR/patients/Doe_Jane_A1

echo "# quiet breathing" >"$E2E_DIR/sim-script.txt"
e2e_sim "$E2E_DIR/sim-script.txt"

# ---- First start ---------------------------------------------------------------------------
e2e_console
box=$(wait_window "Zelmoor")  # no settings file yet: save the defaults from the File menu
keys_to "$box" Return
wait_gone "$box"
box=$(wait_window "Zelmoor")  # no patient folder chosen yet
keys_to "$box" Return
wait_gone "$box"
chooser=$(wait_window "Select Patient Data Path")
type_to "$chooser" "$E2E_DIR/patients"
keys_to "$chooser" Return
wait_gone "$chooser"
e2e_log "the patient folder was chosen"

main=$(wait_window "Zelmoor  3.00.01" 60)
question=$(wait_window "Zelmoor  ")  # load, create or cancel
keys_to "$question" Tab Tab Return  # Cancel
wait_gone "$question"

keys_to "$main" alt+f s  # Save System Setting as Default
question=$(wait_window "Zelmoor  ")
keys_to "$question" Return  # Yes
wait_gone "$question"
[ -f "$E2E_APP_DATA/zel.ini" ] || e2e_fail "the defaults were not saved"
e2e_log "the defaults were saved"

# Form5 places its controls at fixed pixels; a click puts the focus in a field.
click_at() { xdotool mousemove --window "$1" "$2" "$3" click 1; sleep 0.2; }
replace_field() {  # window x y text: the field's text replaced and entered
    click_at "$1" "$2" "$3"
    xdotool key ctrl+a
    xdotool type --delay 30 "$4"
    xdotool key Return
}

keys_to "$main" alt+f c  # Create New Patient
dialog=$(wait_window "ZEL Patient Settings")  # the new-patient dialog
replace_field "$dialog" 263 48 Doe
replace_field "$dialog" 263 82 Jane
replace_field "$dialog" 263 116 A1
click_at "$dialog" 194 255  # Manual gating, on its box
replace_field "$dialog" 218 348 15
replace_field "$dialog" 218 390 1.5
import -window root "$E2E_DIR/new-patient.png"
click_at "$dialog" 350 510  # Save
wait_gone "$dialog"
question=$(wait_window "Zelmoor  ")  # start recording?
keys_to "$question" Tab Return  # No
wait_gone "$question"
[ -f "$patient/Doe.zel" ] || e2e_fail "the patient file was not written"
e2e_log "the patient was created"

breath_hold "$main"
breath_hold "$main"

keys_to "$main" alt+f e  # Exit
question=$(wait_window "Zelmoor  ")  # save the session history?
keys_to "$question" Return  # Yes
wait_console_end 20
e2e_log "the console ended after the first session"

# ---- Second start: the patient loaded --------------------------------------------------------
e2e_console
main=$(wait_window "Zelmoor  3.00.01" 60)
question=$(wait_window "Zelmoor  ")
keys_to "$question" Return  # Load Existing
chooser=$(wait_window "Open")
type_to "$chooser" "$patient/Doe.zel"
keys_to "$chooser" Return
wait_gone "$chooser"
dialog=$(wait_window "ZEL Patient Settings")
import -window root "$E2E_DIR/new-session.png"
click_at "$dialog" 350 510  # Done, with the session suggested
wait_gone "$dialog"
question=$(wait_window "Zelmoor  ")
keys_to "$question" Tab Return  # No recording
wait_gone "$question"
e2e_log "the patient was loaded"

breath_hold "$main"

keys_to "$main" alt+f e
question=$(wait_window "Zelmoor  ")
keys_to "$question" Return
wait_console_end 20

# ---- What the patient's folder holds ---------------------------------------------------------
python3 - "$patient" <<'EOF' || e2e_fail "the patient's files are not as they should be"
import configparser, sys, zlib
folder = sys.argv[1]
zel = open(folder + "/Doe.zel", "rb").read()
lines = zel.split(b"\r\n")
assert lines[0] == b"ZEL Patient Parameter File", lines[0]
assert lines[2] == b"Patient Last Name:Doe" and lines[4] == b"Patient Medical ID:A1", lines[2:5]
assert lines[6] == b"Threshold:1.50", lines[6]
assert lines[7] == b"Breath Hold Duration: 15 ", lines[7]
assert lines[12] == b"Gated:False", lines[12]
assert len(lines) == 15 and lines[14] == b"", len(lines)
crc = open(folder + "/Doe.sfv", "rb").read()
assert crc == b"CRC:%X\r\n" % zlib.crc32(zel), (crc, "%X" % zlib.crc32(zel))
history = configparser.ConfigParser(interpolation=None, strict=False)
history.optionxform = str
history.read(folder + "/session.ini", encoding="latin-1")
star = "*" * 20 + "SESSION" + "*" * 20
assert history["HEADER"]["TOTAL_SESSIONS"].strip() == "2", dict(history["HEADER"])
first, second = history[star + "1"], history[star + "2"]
assert first["ID"].strip() == "1" and second["ID"].strip() == "2", (first["ID"], second["ID"])
assert first["Number_of_breath_holds"].strip() == "2", first["Number_of_breath_holds"]
assert second["Number_of_breath_holds"].strip() == "1", second["Number_of_breath_holds"]
assert first["Threshold"] == "1.5" and first["Breath_Hold_Duration"].strip() == "15"
assert first["Gating Mode"] == "Manual", first["Gating Mode"]
print("e2e: patient files: Doe.zel with its CRC, session.ini with 2 sessions (2 and 1 holds)",
      file=sys.stderr)
EOF
e2e_log "PASSED: $patient"
