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
E2E_PATIENTS=$E2E_DIR/patients
mkdir -p "$E2E_PATIENTS"
patient=$E2E_PATIENTS/Doe_Jane_A1

echo "# quiet breathing" >"$E2E_DIR/sim-script.txt"
e2e_sim "$E2E_DIR/sim-script.txt"

# ---- First start ---------------------------------------------------------------------------
e2e_console
main=$(first_start "$E2E_PATIENTS")
create_patient "$main" Doe Jane A1 manual 15 1.5 no
breath_hold "$main"
breath_hold "$main"
exit_console "$main" yes
e2e_log "the console ended after the first session"

# ---- Second start: the patient loaded --------------------------------------------------------
e2e_console
main=$(load_patient "$patient/Doe.zel" "$E2E_DIR/new-session.png")

breath_hold "$main"
exit_console "$main" yes

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
