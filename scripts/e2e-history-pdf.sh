#!/usr/bin/env bash
# The session history printed to a PDF file through the real windows under Xvfb:
#   the patient run of scripts/e2e-patient.sh DIR (Doe, Jane, A1, two sessions saved);
#   the console started again, the patient loaded through the file chooser, no recording;
#   View, Session History; Print; in the print dialog "Print to File (PDF)" chosen with the
#   output file DIR/history.pdf; Print; Done; Exit without saving the session.
# DIR/history-dialog.png shows the window, DIR/print-dialog.png the print dialog filled in,
# DIR/history-1.png the printed page at 80 dpi. Needs a build (scripts/build.sh). Exits 0
# only when DIR/history.pdf is a one-page PDF that holds the heading and both sessions.
#   scripts/e2e-history-pdf.sh DIR
set -euo pipefail
cd "$(dirname "$0")/.."
[ $# -ge 1 ] || { echo "usage: $0 DIR" >&2; exit 2; }

scripts/e2e-patient.sh "$1"

. scripts/e2e-lib.sh
e2e_start "$1"
patient=$E2E_DIR/patients/Doe_Jane_A1
pdf=$E2E_DIR/history.pdf
rm -f "$pdf" "$E2E_DIR"/history-*.png

echo "# quiet breathing" >"$E2E_DIR/sim-script.txt"
e2e_sim "$E2E_DIR/sim-script.txt"

# ---- The patient loaded -----------------------------------------------------------------------
e2e_console
main=$(load_patient "$patient/Doe.zel")

# ---- View, Session History, Print ---------------------------------------------------------------
keys_to "$main" alt+v
sleep 0.5  # the menu opens before it takes its letter
xdotool key s
history=$(wait_window "Session History")
import -window root "$E2E_DIR/history-dialog.png"
click_at "$history" 726 388  # Print
printing=$(wait_window "Print")
# The printer's name, its last entry (the PDF file), then the file's name in place of the
# suggested one.
keys_to "$printing" alt+n End alt+f ctrl+a
type_to "$printing" "$pdf"
import -window root "$E2E_DIR/print-dialog.png"
keys_to "$printing" Return
wait_gone "$printing"
for _ in $(seq 50); do [ -s "$pdf" ] && break; sleep 0.1; done
e2e_log "printed"
click_at "$history" 850 388  # Done
wait_gone "$history"
exit_console "$main" no

# ---- The page ------------------------------------------------------------------------------------
[ -s "$pdf" ] || e2e_fail "no $pdf"
info=$(pdfinfo "$pdf" 2>&1) || e2e_fail "$pdf is not a PDF: $info"
grep -q "^Pages: *1$" <<<"$info" || e2e_fail "the history is not one page: $info"
pdftoppm -png -r 80 "$pdf" "$E2E_DIR/history"
text=$(pdftotext -layout "$pdf" -)
for wanted in "ZEL Patient Session History (" "Name: Doe, Jane" "Medical ID: A1" "Gating Mode" \
    "Manual"; do
    grep -qF "$wanted" <<<"$text" || e2e_fail "the page lacks \"$wanted\": $text"
done
rows=$(grep -cE "^ *[12] +[^ ].* at " <<<"$text" || true)
[ "$rows" = 2 ] || e2e_fail "the page has $rows sessions, not 2: $text"
e2e_log "PASSED: $pdf ($(grep "^Page size" <<<"$info" | tr -s ' '))"
