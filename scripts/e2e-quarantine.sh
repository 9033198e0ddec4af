#!/usr/bin/env bash
# Patients that fail their load, chosen through the real windows under Xvfb; the patients'
# folder is DIR/site.zel.dat/patients, a path that holds ".zel" and ".dat":
#   first start: the patient Doe, Jane, A1 created; Exit;
#   a second start, Load Existing:
#   (a) a patient file of another release with its companion in DIR/Downloads, among other
#       files and a folder: the message of another release; only the two files move, into
#       Downloads/"Quarantine - NOT FOR CLINICAL USE"/Stray_Old_S9;
#   (b) a corrupt patient file lying in the patients' folder itself (File, Load Patient): the
#       corrupt message; only the file and its companion move, into the quarantine there;
#   (c) a corrupt patient in its own folder: the corrupt message; the folder moves whole;
#   then Doe loaded for a second session, as healthy as before; Exit, saving the session.
# After each, every other file is where it was, byte for byte, and the message was shown.
# Needs a build (scripts/build.sh). Exits 0 only when all of it happened.
#   scripts/e2e-quarantine.sh DIR
set -euo pipefail
cd "$(dirname "$0")/.."
[ $# -ge 1 ] || { echo "usage: $0 DIR" >&2; exit 2; }
. scripts/e2e-lib.sh

e2e_start "$1"
rm -rf "$E2E_DIR/site.zel.dat" "$E2E_DIR/Downloads" "$E2E_APP_DATA/zel.ini" \
    "$E2E_APP_DATA/datapath.ini"
E2E_PATIENTS=$E2E_DIR/site.zel.dat/patients
mkdir -p "$E2E_PATIENTS"
quarantine="Quarantine - NOT FOR CLINICAL USE"

echo "# quiet breathing" >"$E2E_DIR/sim-script.txt"
e2e_sim "$E2E_DIR/sim-script.txt"

# ---- First start: one healthy patient -------------------------------------------------------
e2e_console
main=$(first_start "$E2E_PATIENTS")
create_patient "$main" Doe Jane A1 manual 15 1.5 no
exit_console "$main" yes

# ---- The patients that fail, made as other consoles or a broken disk would leave them ---------
python3 - "$E2E_DIR" "$E2E_PATIENTS" <<'EOF'
import os, sys, zlib
home, patients = sys.argv[1:]
def patient(path, last, first, pid, version, crc_right):
    os.makedirs(os.path.dirname(path), exist_ok=True)
    lines = ["ZEL Patient Parameter File", version, "Patient Last Name:" + last,
             "Patient First Name:" + first, "Patient Medical ID:" + pid, "Date:1/2/2020",
             "Threshold:1.20", "Breath Hold Duration: 12 ", "Y-Scale Range: 2 ",
             "Trigger on Inhale:True", "X-Axis Scale: 1 ", "X-Axis length: 1000 ",
             "Gated:False", "Number Format:dot"]
    data = "".join(line + "\r\n" for line in lines).encode("latin-1")
    open(path, "wb").write(data)
    os.chmod(path, 0o444)
    crc = zlib.crc32(data) ^ (0 if crc_right else 1)
    open(path[:-4] + ".sfv", "wb").write(b"CRC:%X\r\n" % crc)
def other(path, size):
    os.makedirs(os.path.dirname(path), exist_ok=True)
    open(path, "wb").write(os.urandom(size))
downloads = os.path.join(home, "Downloads")
patient(os.path.join(downloads, "Stray.zel"), "Stray", "Old", "S9", "2.01.07", True)
for name, size in [("letter.pdf", 30000), ("photo.jpg", 200000), ("notes.txt", 900),
                   ("old/scan.png", 50000), ("old/Stray.sfv.txt", 20)]:
    other(os.path.join(downloads, name), size)
patient(os.path.join(patients, "Lost.zel"), "Lost", "Case", "L1", "3.00.01", False)
other(os.path.join(patients, "readme.txt"), 400)
roe = os.path.join(patients, "Roe_Ann_R1")
patient(os.path.join(roe, "Roe.zel"), "Roe", "Ann", "R1", "3.00.01", False)
other(os.path.join(roe, "session.ini"), 300)
other(os.path.join(roe, "Roe_1.dat"), 120000)
EOF

# Every file under Downloads and the patients' folder with its checksum, by its path under DIR.
snapshot() {
    python3 - "$E2E_DIR" <<'EOF'
import hashlib, json, os, sys
home = sys.argv[1]
files = {}
for top in ("Downloads", "site.zel.dat"):
    for folder, _, names in os.walk(os.path.join(home, top)):
        for name in names:
            path = os.path.join(folder, name)
            files[os.path.relpath(path, home)] = hashlib.sha256(open(path, "rb").read()).hexdigest()
print(json.dumps(files, sort_keys=True))
EOF
}

# The files now are those of BEFORE, with each FROM (a file, or a folder ending in "/") moved
# to its TO, byte for byte; nothing else changed, nothing more, nothing less.
#   only_moved BEFORE FROM=TO...
only_moved() {
    local before=$1
    shift
    snapshot >"$E2E_DIR/after.json"
    python3 - "$before" "$E2E_DIR/after.json" "$@" <<'EOF'
import json, sys
before = json.load(open(sys.argv[1]))
after = json.load(open(sys.argv[2]))
moves = [arg.split("=", 1) for arg in sys.argv[3:]]
expected = {}
for path, digest in before.items():
    for source, target in moves:
        if path == source or (source.endswith("/") and path.startswith(source)):
            path = target + path[len(source):]
            break
    expected[path] = digest
gone = sorted(set(expected) - set(after))
new = sorted(set(after) - set(expected))
changed = sorted(p for p in set(expected) & set(after) if expected[p] != after[p])
if gone or new or changed:
    sys.exit("missing %s, unexpected %s, changed %s" % (gone, new, changed))
print("e2e: %d files, %d moved, every other one where it was" %
      (len(after), sum(1 for p in before if any(p == s or (s.endswith("/") and p.startswith(s))
                                                for s, _ in moves))), file=sys.stderr)
EOF
}

# The load message: its window came up with TEXT, written to the console's output too; OK.
expect_message() {
    local text=$1 window
    window=$(wait_window "Zelmoor  ")
    import -window root "$E2E_DIR/message-$2.png"
    keys_to "$window" Return  # OK
    wait_gone "$window"
    grep -qF "zelmoor: message: $text" "$E2E_DIR/console-$E2E_CONSOLE_RUNS.log" ||
        e2e_fail "the message \"$text\" was not shown"
}

# The chooser of Load Patient, the file typed into it.
choose_file() {
    local chooser
    chooser=$(wait_window "Open")
    type_to "$chooser" "$1"
    keys_to "$chooser" Return
    wait_gone "$chooser"
}

corrupt="This patient has data files that are corrupt and cannot be used. Please recreate patient."
other_release="ZEL patient parameter file from an older software release."
q="site.zel.dat/patients/$quarantine"

# ---- (a) a stray patient file of another release among a downloads folder's files -------------
snapshot >"$E2E_DIR/before.json"
e2e_console
main=$(wait_window "Zelmoor  3.00.01" 60)
question=$(wait_window "Zelmoor  ")
keys_to "$question" Return  # Load Existing
choose_file "$E2E_DIR/Downloads/Stray.zel"
expect_message "$other_release" a
only_moved "$E2E_DIR/before.json" \
    "Downloads/Stray.zel=Downloads/$quarantine/Stray_Old_S9/Stray.zel" \
    "Downloads/Stray.sfv=Downloads/$quarantine/Stray_Old_S9/Stray.sfv" ||
    e2e_fail "(a): more than the stray patient's two files moved"
e2e_log "(a) the stray patient file and its companion alone went into Downloads/$quarantine"

# ---- (b) a corrupt patient file lying in the patients' folder itself --------------------------
mv "$E2E_DIR/after.json" "$E2E_DIR/before.json"
menu_entry "$main" f l "Open" >/dev/null  # Load Patient
choose_file "$E2E_PATIENTS/Lost.zel"
expect_message "$corrupt" b
only_moved "$E2E_DIR/before.json" \
    "site.zel.dat/patients/Lost.zel=$q/Lost_Case_L1/Lost.zel" \
    "site.zel.dat/patients/Lost.sfv=$q/Lost_Case_L1/Lost.sfv" ||
    e2e_fail "(b): more than the corrupt patient's two files moved"
e2e_log "(b) the corrupt file and its companion alone went into the patients' quarantine"

# ---- (c) a corrupt patient in its own folder --------------------------------------------------
mv "$E2E_DIR/after.json" "$E2E_DIR/before.json"
menu_entry "$main" f l "Open" >/dev/null
choose_file "$E2E_PATIENTS/Roe_Ann_R1/Roe.zel"
expect_message "$corrupt" c
only_moved "$E2E_DIR/before.json" \
    "site.zel.dat/patients/Roe_Ann_R1/=$q/Roe_Ann_R1/" ||
    e2e_fail "(c): the corrupt patient's folder did not move whole, or more moved"
[ -d "$E2E_PATIENTS/Roe_Ann_R1" ] && e2e_fail "(c): the corrupt patient's folder is still there"
e2e_log "(c) the corrupt patient's folder went whole into the patients' quarantine"

# ---- The healthy patient loads for a second session -------------------------------------------
mv "$E2E_DIR/after.json" "$E2E_DIR/before.json"
menu_entry "$main" f l "Open" >/dev/null
choose_file "$E2E_PATIENTS/Doe_Jane_A1/Doe.zel"
dialog=$(wait_window "ZEL Patient Settings")
click_at "$dialog" 350 510  # Done, with the session suggested
wait_gone "$dialog"
question=$(wait_window "Zelmoor  ")
keys_to "$question" Tab Return  # No recording
wait_gone "$question"
only_moved "$E2E_DIR/before.json" || e2e_fail "loading the healthy patient moved files"
exit_console "$main" yes
grep -q "TOTAL_SESSIONS *= *2" "$E2E_PATIENTS/Doe_Jane_A1/session.ini" ||
    e2e_fail "the healthy patient's second session was not saved"
e2e_log "the healthy patient Doe loaded and saved its second session"
e2e_log "PASSED: $E2E_DIR"
