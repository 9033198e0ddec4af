# Shared by the end-to-end scripts: a private X display, the simulator and the console started
# as a user would, and the windows driven with xdotool. Sourced, not run.
#   e2e_start DIR      Xvfb on a free display, HOME=DIR, the simulated gating library installed
#   e2e_fresh_start DIR  the same, without the settings, patients and gating calls of a run before
#   e2e_sim SCRIPT     the simulator, headless, running SCRIPT (a file), with its wire log
#   e2e_console        the console; its output goes to DIR/console-N.log
#   wait_window TITLE  waits for a visible window with that title, prints its id
#   wait_gone ID       waits until the window is gone
#   sim_line TEXT      one more line for the running simulator's script
#   balloon_state      the balloon state of the last good data frame on the wire
#   first_start FOLDER the first start's messages answered, FOLDER chosen for the patients,
#                      the defaults saved; prints the main window's id
#   create_patient MAIN LAST FIRST ID manual|automated SECONDS LITRES yes|no [STORED]
#                      the new-patient dialog filled and saved, recording started or not;
#                      STORED is the last name as the dialog keeps it (default LAST)
#   exit_console MAIN yes|no   File, Exit, the session saved or not; waits for the end

# The programs under test: the build's, or others named here (an installed package's).
E2E_CONSOLE_PROGRAM=${ZEL_CONSOLE:-build/app/zelmoor}
E2E_SIM_PROGRAM=${ZEL_SIM:-build/sim/zelmoor-sim}
E2E_TARROW_LIBRARY=${ZEL_TARROW:-build/sim/libtarrow-sim.so}

e2e_fail() {
    echo "e2e: FAILED: $*" >&2
    [ -n "${E2E_DIR:-}" ] && import -window root "$E2E_DIR/failure.png" 2>/dev/null &&
        echo "e2e: the screen at the failure: $E2E_DIR/failure.png" >&2
    exit 1
}

e2e_log() { echo "e2e: $*" >&2; }

e2e_start() {
    E2E_DIR=$(realpath -m "$1")
    mkdir -p "$E2E_DIR"
    export HOME=$E2E_DIR
    E2E_APP_DATA=$HOME/.local/share/zelmoor
    mkdir -p "$E2E_APP_DATA/lib" "$E2E_APP_DATA/sim"
    cp -f "$E2E_TARROW_LIBRARY" "$E2E_APP_DATA/lib/libtarrow.so"
    touch "$E2E_APP_DATA/sim/libtarrow-is-simulated"
    # Xvfb takes a free display itself and says which: runs side by side never share one.
    rm -f "$E2E_DIR/display"
    Xvfb -displayfd 3 -screen 0 1280x900x24 -nolisten tcp 3>"$E2E_DIR/display" \
        >"$E2E_DIR/xvfb.log" 2>&1 &
    E2E_XVFB=$!
    for _ in $(seq 50); do [ -s "$E2E_DIR/display" ] && break; sleep 0.1; done
    [ -s "$E2E_DIR/display" ] || e2e_fail "Xvfb did not start (see $E2E_DIR/xvfb.log)"
    export DISPLAY=:$(tr -d '[:space:]' <"$E2E_DIR/display")
    for _ in $(seq 50); do xdpyinfo >/dev/null 2>&1 && break; sleep 0.1; done
    xdpyinfo >/dev/null 2>&1 || e2e_fail "Xvfb did not start on $DISPLAY"
    E2E_CONSOLE_RUNS=0
    trap e2e_stop EXIT
}

# e2e_start, then no settings, no patients and no gating calls from an earlier run: the first
# start's questions come again, and DIR/patients is empty (E2E_PATIENTS).
e2e_fresh_start() {
    e2e_start "$1"
    rm -rf "$E2E_DIR/patients" "$E2E_APP_DATA/zel.ini" "$E2E_APP_DATA/datapath.ini" \
        "$E2E_APP_DATA/sim/tarrow-calls.log"
    E2E_PATIENTS=$E2E_DIR/patients
    mkdir -p "$E2E_PATIENTS"
}

e2e_stop() {
    [ -n "${E2E_CONSOLE:-}" ] && kill "$E2E_CONSOLE" 2>/dev/null
    [ -n "${E2E_SIM:-}" ] && kill "$E2E_SIM" 2>/dev/null
    exec {E2E_SIM_IN}>&- 2>/dev/null
    sleep 0.3
    [ -n "${E2E_XVFB:-}" ] && kill "$E2E_XVFB" 2>/dev/null
    wait 2>/dev/null
}

# The simulator reads its script from a pipe, so that more lines can follow while it runs.
e2e_sim() {
    local script=$1
    local fifo=$E2E_DIR/sim-input
    rm -f "$fifo"
    mkfifo "$fifo"
    QT_QPA_PLATFORM=offscreen "$E2E_SIM_PROGRAM" --headless --app-data "$E2E_APP_DATA" \
        --script - --wire-log "$E2E_DIR/wire.log" <"$fifo" >"$E2E_DIR/sim.log" 2>&1 &
    E2E_SIM=$!
    exec {E2E_SIM_IN}>"$fifo"
    cat "$script" >&"$E2E_SIM_IN"
    for _ in $(seq 50); do
        [ -L "$E2E_APP_DATA/ports/sim0" ] && return 0
        sleep 0.1
    done
    e2e_fail "the simulator did not start (see $E2E_DIR/sim.log)"
}

sim_line() { echo "$1" >&"$E2E_SIM_IN"; }

e2e_console() {
    E2E_CONSOLE_RUNS=$((E2E_CONSOLE_RUNS + 1))
    "$E2E_CONSOLE_PROGRAM" >"$E2E_DIR/console-$E2E_CONSOLE_RUNS.log" 2>&1 &
    E2E_CONSOLE=$!
}

console_running() { kill -0 "$E2E_CONSOLE" 2>/dev/null; }

# Waits until the console has ended by itself; fails if it does not within the time.
wait_console_end() {
    local timeout=${1:-15}
    for _ in $(seq $((timeout * 10))); do
        console_running || { wait "$E2E_CONSOLE" 2>/dev/null || true; E2E_CONSOLE=; return 0; }
        sleep 0.1
    done
    e2e_fail "the console did not end"
}

wait_window() {
    local title=$1 timeout=${2:-20} id
    for _ in $(seq $((timeout * 10))); do
        console_running || e2e_fail "the console ended while waiting for \"$title\""
        id=$(xdotool search --onlyvisible --name "^$title\$" 2>/dev/null | tail -1)
        if [ -n "$id" ]; then
            # A moment for the window to take the keyboard.
            sleep 0.3
            echo "$id"
            return 0
        fi
        sleep 0.1
    done
    e2e_fail "no window \"$title\" within $timeout s"
}

wait_gone() {
    local id=$1 timeout=${2:-10}
    for _ in $(seq $((timeout * 10))); do
        xdotool getwindowname "$id" >/dev/null 2>&1 || return 0
        xwininfo -id "$id" 2>/dev/null | grep -q "IsViewable" || return 0
        sleep 0.1
    done
    e2e_fail "window $id did not close"
}

# Keys to one window: it gets the focus first.
keys_to() {
    local id=$1
    shift
    xdotool windowfocus --sync "$id" 2>/dev/null || true
    xdotool key --delay 40 "$@"
}

type_to() {
    local id=$1
    shift
    xdotool windowfocus --sync "$id" 2>/dev/null || true
    xdotool type --delay 30 "$*"
}

# The balloon state of the last good data frame on the wire, 0 before any.
balloon_state() {
    python3 - "$E2E_DIR/wire.log" <<'EOF'
import sys
state = 0
try:
    for line in open(sys.argv[1]):
        w = line.split()
        if len(w) >= 10 and w[1] == "data" and not (len(w) > 10 and w[10] == "corrupt"):
            state = int(w[4], 16)
except FileNotFoundError:
    pass
print(state)
EOF
}

wait_balloon() {
    local wanted=$1 timeout=${2:-30}
    for _ in $(seq $((timeout * 5))); do
        [ "$(balloon_state)" = "$wanted" ] && return 0
        sleep 0.2
    done
    e2e_fail "the balloon never reached state $wanted"
}

# The commands the module received, one letter a line.
sim_commands() {
    awk '!/^#/ && NF >= 2 {print $2}' "$E2E_APP_DATA/sim/module-commands.log" 2>/dev/null || true
}

# How many times the module was armed ("A").
armed_count() { sim_commands | awk '$0 == "A" {n++} END {print n + 0}'; }

# The spacebar until the balloon is armed once the volume is out of the hold's region ("A"
# reaches the module).
arm_hold() {
    local main=$1 armed_before
    armed_before=$(armed_count)
    for _ in $(seq 40); do
        keys_to "$main" space
        sleep 0.4
        [ "$(armed_count)" -gt "$armed_before" ] && return 0
        # Not taken (the volume stood in the hold's region): the prompt comes back; try again.
    done
    e2e_fail "the console never armed"
}

# One breath hold as the operator works it: the balloon armed, the module closes at the
# threshold and counts down, the balloon lets go.
breath_hold() {
    arm_hold "$1"
    wait_balloon 4 30
    wait_balloon 1 60
    e2e_log "a breath hold ran"
}

# A menu entry by its keys: the menu's letter with Alt, then, once its popup is up, the entry's
# letter. A popup that takes longer to open than a key takes to follow would swallow the letter,
# so the popup is waited for, and the whole tried again when the window TITLE does not follow.
#   menu_entry MAIN MENU-LETTER ENTRY-LETTER TITLE   prints the id of the window TITLE
menu_entry() {
    local main=$1 menu=$2 entry=$3 title=$4 id
    for _ in 1 2 3; do
        keys_to "$main" "alt+$menu"
        for _ in $(seq 20); do
            xdotool search --onlyvisible --class zelmoor 2>/dev/null | grep -qv "^$main\$" && break
            sleep 0.1
        done
        sleep 0.2
        xdotool key "$entry"
        for _ in $(seq 80); do
            console_running || e2e_fail "the console ended while waiting for \"$title\""
            id=$(xdotool search --onlyvisible --name "^$title\$" 2>/dev/null | tail -1)
            [ -n "$id" ] && { sleep 0.3; echo "$id"; return 0; }
            sleep 0.1
        done
        e2e_log "menu $menu, entry $entry: no \"$title\" yet; again"
        xdotool key Escape Escape
        sleep 0.3
    done
    e2e_fail "menu $menu, entry $entry never opened \"$title\""
}

# A click at a place of a window; a click in a field gives it the focus.
click_at() {
    xdotool mousemove --window "$1" "$2" "$3" click 1
    sleep 0.2
}

# The field's text replaced and entered: window x y text.
replace_field() {
    click_at "$1" "$2" "$3"
    xdotool key ctrl+a
    xdotool type --delay 30 "$4"
    xdotool key Return
}

first_start() {
    set -e  # run inside $(...): a failed step ends it, and with it the run
    local folder=$1 box chooser main question
    box=$(wait_window "Zelmoor")  # no settings file yet: save the defaults from the File menu
    keys_to "$box" Return
    wait_gone "$box"
    box=$(wait_window "Zelmoor")  # no patient folder chosen yet
    keys_to "$box" Return
    wait_gone "$box"
    chooser=$(wait_window "Select Patient Data Path")
    type_to "$chooser" "$folder"
    keys_to "$chooser" Return
    wait_gone "$chooser"
    e2e_log "the patient folder was chosen"
    main=$(wait_window "Zelmoor  3.00.01" 60)
    question=$(wait_window "Zelmoor  ")  # load, create or cancel
    keys_to "$question" Tab Tab Return   # Cancel
    wait_gone "$question"
    keys_to "$main" alt+f s  # Save System Setting as Default
    question=$(wait_window "Zelmoor  ")
    keys_to "$question" Return  # Yes
    wait_gone "$question"
    # The file is written once the question has closed, and synchronised with the disk.
    for _ in $(seq 50); do [ -f "$E2E_APP_DATA/zel.ini" ] && break; sleep 0.1; done
    [ -f "$E2E_APP_DATA/zel.ini" ] || e2e_fail "the defaults were not saved"
    e2e_log "the defaults were saved"
    echo "$main"
}

# A later start: Load Existing, the patient's file through the file dialog, Done with the
# session suggested, recording if RECORD is yes (default no). Prints the main window. With
# SHOT, a screenshot of the patient dialog in session mode goes there.
#   load_patient FILE [SHOT] [RECORD]
load_patient() {
    set -e  # run inside $(...): a failed step ends it, and with it the run
    local file=$1 shot=${2:-} record=${3:-no} main question chooser dialog
    main=$(wait_window "Zelmoor  3.00.01" 60)
    question=$(wait_window "Zelmoor  ")
    keys_to "$question" Return  # Load Existing
    chooser=$(wait_window "Open")
    type_to "$chooser" "$file"
    keys_to "$chooser" Return
    wait_gone "$chooser"
    dialog=$(wait_window "ZEL Patient Settings")
    if [ -n "$shot" ]; then import -window root "$shot"; fi
    click_at "$dialog" 350 510  # Done, with the session suggested
    wait_gone "$dialog"
    question=$(wait_window "Zelmoor  ")  # start recording?
    if [ "$record" = yes ]; then keys_to "$question" Return; else keys_to "$question" Tab Return; fi
    wait_gone "$question"
    e2e_log "the patient was loaded (recording: $record)"
    echo "$main"
}

# The new-patient dialog places its controls at fixed pixels.
create_patient() {
    local main=$1 last=$2 first=$3 id=$4 gating=$5 seconds=$6 litres=$7 record=$8
    local stored=${9:-$2} dialog question
    dialog=$(menu_entry "$main" f c "ZEL Patient Settings")  # Create New Patient
    replace_field "$dialog" 263 48 "$last"
    replace_field "$dialog" 263 82 "$first"
    replace_field "$dialog" 263 116 "$id"
    if [ "$gating" = automated ]; then click_at "$dialog" 28 255; else click_at "$dialog" 194 255; fi
    replace_field "$dialog" 218 348 "$seconds"
    replace_field "$dialog" 218 390 "$litres"
    import -window root "$E2E_DIR/new-patient.png"
    click_at "$dialog" 350 510  # Save
    wait_gone "$dialog"
    question=$(wait_window "Zelmoor  ")  # start recording?
    if [ "$record" = yes ]; then keys_to "$question" Return; else keys_to "$question" Tab Return; fi
    wait_gone "$question"
    [ -f "$E2E_PATIENTS/${stored}_${first}_${id}/$stored.zel" ] ||
        e2e_fail "the patient file was not written"
    e2e_log "the patient $stored was created ($gating, recording: $record)"
}

exit_console() {
    local main=$1 save=$2 question
    keys_to "$main" alt+f e  # Exit
    question=$(wait_window "Zelmoor  ")  # save the session history?
    if [ "$save" = yes ]; then keys_to "$question" Return; else keys_to "$question" Tab Return; fi
    wait_console_end 20
}
