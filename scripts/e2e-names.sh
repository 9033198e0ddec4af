#!/usr/bin/env bash
# Names the patient files can't hold, typed into the real windows under Xvfb:
#   first start: the patient "Dvořák", Ann, N1 typed key by key; the "ř" is taken out as it is
#   typed (the files are 8-bit), and the patient is created as "Dvoák"; Exit, saving the session;
#   a second start: the patient ".Doe", Lead, N2; the leading "." is taken out as it is typed,
#   and the patient is created as "Doe"; Exit, saving the session;
#   two more starts: each patient loaded through the file chooser for a second session; Exit.
# Then every folder under the patient folder holds its patient file with a matching CRC and a
# history of two sessions, and nothing else stands there. Needs a build (scripts/build.sh).
# Exits 0 only when all of it happened.
#   scripts/e2e-names.sh DIR
set -euo pipefail
cd "$(dirname "$0")/.."
[ $# -ge 1 ] || { echo "usage: $0 DIR" >&2; exit 2; }
. scripts/e2e-lib.sh

e2e_start "$1"
rm -rf "$E2E_DIR/patients" "$E2E_APP_DATA/zel.ini" "$E2E_APP_DATA/datapath.ini"
E2E_PATIENTS=$E2E_DIR/patients
mkdir -p "$E2E_PATIENTS"

echo "# quiet breathing" >"$E2E_DIR/sim-script.txt"
e2e_sim "$E2E_DIR/sim-script.txt"

# No folder without its patient file, at any moment the console has left behind.
every_folder_has_its_file() {
    local folder last
    for folder in "$E2E_PATIENTS"/* "$E2E_PATIENTS"/.[!.]*; do
        [ -e "$folder" ] || continue
        last=$(basename "$folder")
        last=${last%%_*}
        [ -f "$folder/$last.zel" ] || e2e_fail "the folder $folder has no patient file"
    done
}

# ---- First start: a character outside the files' set ---------------------------------------
e2e_console
main=$(first_start "$E2E_PATIENTS")
create_patient "$main" "Dvořák" Ann N1 manual 15 1.5 no "Dvoák"
every_folder_has_its_file
exit_console "$main" yes

# ---- Second start: a leading "." ------------------------------------------------------------
e2e_console
main=$(wait_window "Zelmoor  3.00.01" 60)
question=$(wait_window "Zelmoor  ")  # load, create or cancel
keys_to "$question" Tab Tab Return   # Cancel
wait_gone "$question"
create_patient "$main" ".Doe" Lead N2 manual 15 1.5 no "Doe"
every_folder_has_its_file
exit_console "$main" yes

# ---- Both patients loaded back --------------------------------------------------------------
for file in "$E2E_PATIENTS/Dvoák_Ann_N1/Dvoák.zel" "$E2E_PATIENTS/Doe_Lead_N2/Doe.zel"; do
    e2e_console
    main=$(load_patient "$file")
    exit_console "$main" yes
done

# ---- What the patient folder holds ----------------------------------------------------------
python3 - "$E2E_PATIENTS" <<'EOF' || e2e_fail "the patients' files are not as they should be"
import configparser, os, sys, zlib
root = sys.argv[1]
names = sorted(os.listdir(root))
assert names == ["Doe_Lead_N2", "Dvoák_Ann_N1"], names
for name in names:
    folder = os.path.join(root, name)
    last = name.split("_")[0]
    zel = open(os.path.join(folder, last + ".zel"), "rb").read()
    lines = zel.split(b"\r\n")
    assert lines[2] == b"Patient Last Name:" + last.encode("latin-1"), lines[2]
    crc = open(os.path.join(folder, last + ".sfv"), "rb").read()
    assert crc == b"CRC:%X\r\n" % zlib.crc32(zel), (name, crc)
    history = configparser.ConfigParser(interpolation=None, strict=False)
    history.optionxform = str
    history.read(os.path.join(folder, "session.ini"), encoding="latin-1")
    assert history["HEADER"]["TOTAL_SESSIONS"].strip() == "2", (name, dict(history["HEADER"]))
    print("e2e: %s: %s.zel with its CRC, session.ini with 2 sessions" % (name, last),
          file=sys.stderr)
EOF
e2e_log "PASSED: $E2E_PATIENTS"
