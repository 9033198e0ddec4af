#!/usr/bin/env bash
# A recorded, gated session through the real windows under Xvfb, against zelmoor-sim with 1%
# of its frames corrupted and the simulated gating library:
#   first start, the patient Roe, Ann, B2 created with automated gating and recording on;
#   breath holds for more than two minutes of recording; one cut of the link; Pause, then
#   Record again into the same file; a gated hold during which the gating system is lost: the
#   hold is aborted, the override question opens, frames go on under it, Manual continues the
#   treatment; Exit, saving the session.
# Then the curve file is held against the simulator's wire log (DIR/wire.log, only what reached
# the line): its sample lines must be the good data frames that reached the console while it
# recorded, in order, none missing; none twice but the frame that opened a gating dialog, which
# the frame handler's second pass under the dialog writes once more. Needs a build (scripts/build.sh).
#   scripts/e2e-recording.sh DIR
set -euo pipefail
cd "$(dirname "$0")/.."
[ $# -ge 1 ] || { echo "usage: $0 DIR" >&2; exit 2; }
. scripts/e2e-lib.sh

e2e_start "$1"
rm -rf "$E2E_DIR/patients" "$E2E_APP_DATA/zel.ini" "$E2E_APP_DATA/datapath.ini" \
    "$E2E_APP_DATA/sim/tarrow-calls.log"
E2E_PATIENTS=$E2E_DIR/patients
mkdir -p "$E2E_PATIENTS"
patient=$E2E_PATIENTS/Roe_Ann_B2

printf '%s\n' "corrupt 0.01" "gating connected yes" >"$E2E_DIR/sim-script.txt"
e2e_sim "$E2E_DIR/sim-script.txt"

e2e_console
main=$(first_start "$E2E_PATIENTS")
create_patient "$main" Roe Ann B2 automated 8 1.2 yes
curve=$patient/Roe_1.dat
[ -f "$curve" ] || e2e_fail "recording did not start: no $curve"
started=$(date +%s)

size() { stat -c %s "$1"; }
# The curve file grows (or not) over a second.
grows() { local a; a=$(size "$curve"); sleep 1.2; [ "$(size "$curve")" -gt "$a" ]; }
wire_frames() { grep -c ' data ' "$E2E_DIR/wire.log" || true; }

breath_hold "$main"

# ---- One cut of the link ------------------------------------------------------------------------
sim_line "cut 3"
e2e_log "the link is cut for 3 s"
sleep 4
for _ in $(seq 100); do grows && break; done
grows || e2e_fail "recording did not go on after the cut"
e2e_log "the link came back and recording went on"
breath_hold "$main"

# ---- Pause, then Record again -------------------------------------------------------------------
click_at "$main" 902 605  # Pause
sleep 0.5
grows && e2e_fail "the curve file still grows after Pause"
sleep 3
click_at "$main" 902 665  # Record
grows || e2e_fail "Record after Pause did not go on recording"
e2e_log "paused, then recorded again"

# ---- A gated hold that loses the gating system --------------------------------------------------
aborts_before=$(sim_commands | awk '$0 == "X" {n++} END {print n + 0}')
armed_before=$(armed_count)
for _ in $(seq 40); do
    keys_to "$main" space
    sleep 0.4
    [ "$(armed_count)" -gt "$armed_before" ] && break
done
wait_balloon 4 30
sim_line "gating connected no"
e2e_log "the gating system is lost during the hold"
warning=$(wait_window "WARNING" 20)
import -window root "$E2E_DIR/override-question.png"
aborts=$(sim_commands | awk '$0 == "X" {n++} END {print n + 0}')
[ "$aborts" -gt "$aborts_before" ] || e2e_fail "the hold was not aborted"
wait_balloon 1 10
frames=$(wire_frames)
grows || e2e_fail "the curve stopped under the override question"
sleep 2
[ "$(wire_frames)" -gt $((frames + 100)) ] || e2e_fail "frames stopped under the override question"
keys_to "$warning" Tab Return  # Manual
wait_gone "$warning"
import -window root "$E2E_DIR/after-override.png"
e2e_log "the hold was aborted, frames went on under the question, Manual chosen"
breath_hold "$main"
e2e_log "the treatment went on in manual mode"
sim_line "gating connected yes"
back=$(wait_window "Zelmoor  " 20)  # the system is back: automated gating again?
import -window root "$E2E_DIR/gating-back.png"
keys_to "$back" Return  # OK
wait_gone "$back"
e2e_log "the gating system came back; automated gating again"

# ---- Holds until more than two minutes were recorded ------------------------------------------------
while [ $(($(date +%s) - started)) -lt 135 ]; do
    breath_hold "$main"
done
exit_console "$main" yes
e2e_log "the console ended; checking the curve against the wire"

python3 - "$curve" "$E2E_DIR/wire.log" "$E2E_APP_DATA/sim/module-commands.log" 2 <<'EOF' ||
import sys
curve_path, wire_path, commands_path = sys.argv[1:4]  # and the gating dialogs opened

raw = open(curve_path, "rb").read().decode("latin-1").split("\r\n")
assert raw[-1] == "", "the curve file does not end with a line end"
assert sum(1 for l in raw if l.startswith("Count Frequency:")) == 1, "not one header"
samples = []
for line in raw[26:-1]:
    f = line.split(";")
    assert len(f) == 7, "not a sample line: %r" % line
    samples.append((float(f[0]), round(float(f[1]) / 0.004), int(f[2])))
assert samples, "no samples"

frames = []  # good data frames on the wire: time, volume units, balloon state
for line in open(wire_path):
    w = line.split()
    if len(w) >= 10 and w[1] == "data" and not (len(w) > 10 and w[10] == "corrupt"):
        units = int(w[5] + w[6], 16)
        frames.append((float(w[0]), units - 65536 if units >= 32768 else units, int(w[4], 16)))

# The link's cut: a long silence of the wire. Until the console, searching again, has found the
# module, what reaches the line may find no reader: the search opens and closes the port as it
# tries each one. It has found the module when it starts the stream ("E"): an upload ("L") may
# come earlier, from the first data frame after the cut, and the next search tick without a
# status frame still closes and reopens the port, losing what was in flight.
streams = [float(l.split()[0]) for l in open(commands_path)
           if not l.startswith("#") and len(l.split()) >= 2 and l.split()[1] == "E"]
gaps = [(a[0], b[0]) for a, b in zip(frames, frames[1:]) if b[0] - a[0] > 1.0]

# Each sample is matched to the next wire frame with its volume and balloon state. A gating
# dialog opened from a frame's handling lets the handler run again under it, on the same
# frame: that frame is written twice, once by each pass.
key = [(u, b) for _, u, b in samples]
wire = [(u, b) for _, u, b in frames]
# The recording's first frame: where the first 50 samples stand on the wire one after another.
k = next((j for j in range(len(wire)) if wire[j:j + 50] == key[:50]), None)
assert k is not None, "the start of the recording is not on the wire"
matched, repeats = [], 0
for i, (t, units, balloon) in enumerate(samples):
    if k < len(wire) and wire[k] == key[i]:
        matched.append(k)
        k += 1
        continue
    if matched and wire[matched[-1]] == key[i]:
        matched.append(matched[-1])
        repeats += 1
        continue
    # Frames were passed over: the samples go on where the next ones stand in a row.
    run = key[i:i + 20]
    j = next((j for j in range(k, len(wire)) if wire[j:j + len(run)] == run), None)
    assert j is not None, "sample at %.2f s (%d, %d) is not on the wire in order" % (
        t, units, balloon)
    matched.append(j)
    k = j + 1

pauses, unseen = 0, 0
for i in range(1, len(samples)):
    skipped = matched[i] - matched[i - 1] - 1
    counted = round((samples[i][0] - samples[i - 1][0]) * 50)
    if (skipped == 0 or skipped == -1) and counted == 1:
        continue
    at = frames[matched[i - 1]][0]
    if skipped > 0 and counted == skipped + 1 and skipped >= 50:
        pauses += 1  # frames the console took in and did not record: the pause
    elif skipped > 0 and counted == 1 and any(g0 <= at <= g1 + 0.05 for g0, g1 in gaps):
        # Frames that reached the line while the console had no link: not taken in.
        unseen += skipped
        found = next((c for c in streams if c > at), None)
        assert found is not None, "the module was not found again after the cut"
        late = [f for f in frames[matched[i - 1] + 1:matched[i]] if f[0] >= found]
        assert not late, "%d frames lost after the module was found again at %.3f s, from %.3f s" % (
            len(late), found, late[0][0])
    else:
        raise AssertionError("at %.2f s: %d frames skipped, time moved %d frames" % (
            samples[i - 1][0], skipped, counted))
dialogs = int(sys.argv[4])
assert repeats == dialogs, "%d frames written twice, %d gating dialogs opened" % (repeats, dialogs)
assert pauses == 1, "%d pauses found in the file, 1 expected" % pauses
assert len(gaps) >= 1, "no cut of the link on the wire"
duration = (frames[matched[-1]][0] - frames[matched[0]][0])
assert duration >= 120, "only %.0f s recorded" % duration
print("e2e: curve: %d sample lines = the good data frames while recording, over %.0f s of wire "
      "time; one pause; %d frames reached the line during the link's loss before the module was "
      "found again; %d corrupt frames on the wire; %d frames written twice, each by the handler's "
      "second pass under a gating dialog that its first pass opened" % (
          len(samples), duration, unseen,
          sum(1 for l in open(wire_path) if " data " in l and l.rstrip().endswith("corrupt")),
          repeats),
      file=sys.stderr)
EOF
    e2e_fail "the curve file does not match the wire"
e2e_log "PASSED: $curve"
