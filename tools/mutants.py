#!/usr/bin/env python3
"""Mutation run: how many small faults planted in src/ the tests catch.

    tools/mutants.sh [N] [SEED]        N places (default 150), chosen at random with SEED (default 1)

Each mutant is one change at one place of one file under src/: a comparison turned, && and ||
swapped, a condition negated, an integer constant off by one, + turned into -, or a call
statement removed. The mutants are made in a copy of the tree kept in build-mutants/tree (the
tracked files as they stand in the working tree, copied anew at each run), never in the working
tree itself; the test binaries are rebuilt incrementally in build-mutants/out, run without the
tests over a live line, and the file is put back (with a new time, so that the next build takes
it). The test binary of the file's own area runs first; a mutant that it catches is not built
into the others. Per mutant: file, line, the change, and killed (with the test binary and the
first test that failed) / survived / did not build / timed out. Last: "mutation score K/M", the
killed among the mutants that built; time-outs are counted apart, as neither killed nor survived
(a test that hangs says nothing about which check would have caught the fault).

Environment: MUTANT_BUILD (build folder), MUTANT_TIMEOUT (seconds a test binary may run, 120),
MUTANT_ONLY (a path prefix under src/ to draw the places from, e.g. src/gating),
MUTANT_AT (a commit: draw the places from src/ as it stood there, so that a later run puts the
same mutants to a changed suite; each is planted on the line of today's file that still reads
as that line did, the nearest one, or counted "gone" when no line does),
MUTANT_PICK (numbers among the drawn mutants to run, e.g. 3,17,40; the others are skipped),
MUTANT_LIVE=1 (the tests over a live line run too).
"""
import os
import random
import re
import shutil
import signal
import subprocess
import sys
import time

SOURCE = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
WORK = os.environ.get("MUTANT_BUILD", os.path.join(SOURCE, "build-mutants"))
ROOT = os.path.join(WORK, "tree")
BUILD = os.path.join(WORK, "out")
TIMEOUT = int(os.environ.get("MUTANT_TIMEOUT", "120"))
ONLY = os.environ.get("MUTANT_ONLY", "src/")
BACKUP = os.path.join(WORK, "mutant-backup")
LIVE = os.environ.get("MUTANT_LIVE") == "1"

# The tests over a live line (a pseudo-terminal and the simulator, timed) stay out.
LIVE_SUITES = ["BreathHoldEndToEnd", "FailSafe", "SimulatorOnPseudoTerminal", "ReplayRoundTrip",
               "AboutLive", "SettingsDialogsLive"]


def test_binaries():
    return sorted(n for n in os.listdir(os.path.join(ROOT, "tests"))
                  if os.path.isdir(os.path.join(ROOT, "tests", n)) and n != "fakes")


def masked(line):
    """The line with string and character literals and a trailing comment blanked out."""
    out = list(line)
    i, quote = 0, None
    while i < len(line):
        c = line[i]
        if quote:
            out[i] = " "
            if c == "\\":
                if i + 1 < len(line):
                    out[i + 1] = " "
                i += 2
                continue
            if c == quote:
                quote = None
        elif c in "\"'":
            quote = c
            out[i] = " "
        elif line.startswith("//", i):
            return "".join(out[:i]) + " " * (len(line) - i)
        i += 1
    return "".join(out)


OPERATORS = [(" < ", " <= "), (" <= ", " < "), (" > ", " >= "), (" >= ", " > "),
             (" == ", " != "), (" != ", " == "), (" && ", " || "), (" || ", " && "),
             (" + ", " - ")]
CALL_STATEMENT = re.compile(r"^(\s*)([A-Za-z_][\w:]*(?:(?:\.|->)[A-Za-z_]\w*)*)\(.*\);\s*$")
INTEGER = re.compile(r"(?<![\w.])(\d+)(?![\w.])")


def matching_paren(text, open_at):
    depth = 0
    for k in range(open_at, len(text)):
        if text[k] == "(":
            depth += 1
        elif text[k] == ")":
            depth -= 1
            if depth == 0:
                return k
    return -1


def candidates_of(path):
    with open(path, encoding="utf-8") as f:
        return candidates_in(os.path.relpath(path, ROOT), f.read().split("\n"))


def candidates_in(rel, lines):
    found = []
    in_block_comment = False
    for n, line in enumerate(lines):
        stripped = line.strip()
        if in_block_comment:
            in_block_comment = "*/" not in stripped
            continue
        if stripped.startswith("/*"):
            in_block_comment = "*/" not in stripped
            continue
        if not stripped or stripped.startswith(("#", "//", "namespace", "}", "static_assert")):
            continue
        m = masked(line)
        for old, new in OPERATORS:
            for hit in re.finditer(re.escape(old), m):
                found.append((rel, n, hit.start(), old, new, "%s -> %s" % (old.strip(), new.strip())))
        for hit in re.finditer(r"\b(if|while) \(", m):
            open_at = hit.end() - 1
            close = matching_paren(m, open_at)
            if close > 0:
                cond = line[open_at + 1:close]
                found.append((rel, n, open_at, "(" + cond + ")", "(!(" + cond + "))",
                              "%s (...) negated" % hit.group(1)))
        if "[" not in m:  # array sizes and subscripts make dull, unbuildable mutants
            for hit in INTEGER.finditer(m):
                value = int(hit.group(1))
                found.append((rel, n, hit.start(), hit.group(1), str(value + 1),
                              "%d -> %d" % (value, value + 1)))
        call = CALL_STATEMENT.match(m)
        if call and not re.match(r"\s*(return|delete|throw|case|else|do)\b", m) and "=" not in m:
            found.append((rel, n, 0, line, call.group(1) + ";", "call removed: " + stripped))
    return lines, found


def sources_at(commit):
    """{path: lines} of src/*.cpp as they stood at the commit."""
    listed = subprocess.run(["git", "ls-tree", "-r", "--name-only", commit, "src"], cwd=SOURCE,
                            check=True, capture_output=True, text=True).stdout.split()
    return {rel: subprocess.run(["git", "show", "%s:%s" % (commit, rel)], cwd=SOURCE, check=True,
                                capture_output=True, text=True).stdout.split("\n")
            for rel in listed if rel.endswith(".cpp")}


def replanted(candidate, then, now):
    """The candidate moved to the line of today's file that reads as its line did then."""
    rel, n = candidate[0], candidate[1]
    same = [k for k, line in enumerate(now) if line == then[n]]
    if not same:
        return None
    return (rel, min(same, key=lambda k: abs(k - n))) + candidate[2:]


def apply(lines, candidate):
    _, n, col, old, new, _ = candidate
    changed = list(lines)
    line = changed[n]
    assert line[col:col + len(old)] == old, (candidate, line)
    changed[n] = line[:col] + new + line[col + len(old):]
    return "\n".join(changed)


def run(cmd, timeout=None, output=subprocess.DEVNULL):
    proc = subprocess.Popen(cmd, cwd=ROOT, stdout=output, stderr=subprocess.STDOUT,
                            start_new_session=True)
    try:
        return proc.wait(timeout=timeout)
    except subprocess.TimeoutExpired:
        os.killpg(proc.pid, signal.SIGKILL)
        proc.wait()
        return None


def first_failed(log_path):
    """The first test the run reported failed, from GoogleTest's output."""
    with open(log_path, errors="replace") as f:
        for line in f:
            m = re.match(r"\[  FAILED  \] (\S+)", line)
            if m:
                return m.group(1)
    return "the program's own end"


def run_tests(areas):
    """('killed', by whom), ('survived', ''), ('timed out', binary) or ('did not build', ''),
    building and running the areas' binaries in order."""
    log_path = os.path.join(WORK, "test-output.log")
    for area in areas:
        if run(["cmake", "--build", BUILD, "--target", "test_" + area]) != 0:
            return "did not build", ""
        cmd = [os.path.join(BUILD, "tests", "test_" + area)]
        if area == "sim" and not LIVE:
            cmd.append("--gtest_filter=-" + ":".join(s + ".*" for s in LIVE_SUITES))
        with open(log_path, "w") as log:
            status = run(cmd, TIMEOUT, log)
        if status is None:
            return "timed out", "test_" + area
        if status != 0:
            return "killed", "test_%s %s" % (area, first_failed(log_path))
    return "survived", ""


def copy_tree():
    """The tracked files into ROOT, and nothing else; a file whose bytes are unchanged keeps its
    time, so that the build there stays incremental, and a changed one takes the present time."""
    listed = subprocess.run(["git", "ls-files", "-z"], cwd=SOURCE, check=True,
                            capture_output=True).stdout.decode().split("\0")
    for rel in filter(None, listed):
        src, dst = os.path.join(SOURCE, rel), os.path.join(ROOT, rel)
        if not os.path.isfile(src):
            continue
        with open(src, "rb") as f:
            data = f.read()
        if os.path.isfile(dst):
            with open(dst, "rb") as f:
                if f.read() == data:
                    continue
        os.makedirs(os.path.dirname(dst), exist_ok=True)
        shutil.copy2(src, dst)
        # Newer than anything built from what stood there before (a mutant an interrupted run
        # left, say): the source's own time may be older.
        os.utime(dst)
    # A file the tree no longer tracks would still be built (the tests are globbed by folder).
    kept = {os.path.normpath(rel) for rel in listed if rel}
    for folder, _, names in os.walk(ROOT):
        for name in names:
            path = os.path.join(folder, name)
            if os.path.relpath(path, ROOT) not in kept:
                os.remove(path)


def restore_left_behind():
    """A run that was cut off may have left a mutated file: put it back first."""
    if not os.path.isdir(BACKUP):
        return
    for folder, _, files in os.walk(BACKUP):
        for name in files:
            saved = os.path.join(folder, name)
            restored = os.path.join(ROOT, os.path.relpath(saved, BACKUP))
            shutil.copy2(saved, restored)
            # The old time would leave the mutant's objects standing as up to date.
            os.utime(restored)
            os.remove(saved)


def main():
    n = int(sys.argv[1]) if len(sys.argv) > 1 else 150
    seed = int(sys.argv[2]) if len(sys.argv) > 2 else 1
    os.environ.setdefault("QT_QPA_PLATFORM", "offscreen")
    restore_left_behind()
    copy_tree()
    if not os.path.exists(os.path.join(BUILD, "build.ninja")):
        launcher = ["-DCMAKE_CXX_COMPILER_LAUNCHER=ccache"] if shutil.which("ccache") else []
        subprocess.check_call(["cmake", "-S", ROOT, "-B", BUILD, "-G", "Ninja",
                               "-DCMAKE_BUILD_TYPE=RelWithDebInfo", "-DZEL_BUILD_BENCH=OFF"]
                              + launcher, stdout=subprocess.DEVNULL)
    areas = test_binaries()
    print("mutants: building the tests unchanged in %s" % BUILD, flush=True)
    baseline, by = run_tests(areas)
    if baseline != "survived":
        sys.exit("mutants: the unchanged tests do not pass (%s %s); nothing to measure" %
                 (baseline, by))

    files = sorted(os.path.join(folder, f)
                   for folder, _, names in os.walk(os.path.join(ROOT, "src"))
                   for f in names if f.endswith(".cpp"))
    files = [f for f in files if os.path.relpath(f, ROOT).startswith(ONLY)]
    every = []
    originals = {}
    for f in files:
        lines, found = candidates_of(f)
        originals[os.path.relpath(f, ROOT)] = lines
        every.extend(found)
    at = os.environ.get("MUTANT_AT")
    if at:
        then = {rel: lines for rel, lines in sources_at(at).items() if rel.startswith(ONLY)}
        every = [c for rel in sorted(then) for c in candidates_in(rel, then[rel])[1]]
    chosen = random.Random(seed).sample(every, min(n, len(every)))
    print("mutants: %d of %d places, seed %d%s" % (len(chosen), len(every), seed,
                                                   ", drawn at " + at if at else ""), flush=True)
    pick = {int(k) for k in os.environ.get("MUTANT_PICK", "").split(",") if k.strip()}

    tally = {"killed": 0, "survived": 0, "did not build": 0, "timed out": 0, "gone": 0}
    started = time.monotonic()
    for k, candidate in enumerate(chosen, 1):
        if pick and k not in pick:
            continue
        if at:
            moved = replanted(candidate, then[candidate[0]], originals.get(candidate[0], []))
            if moved is None:
                tally["gone"] += 1
                print("%3d %s:%d  %s  gone" % (k, candidate[0], candidate[1] + 1,
                                               candidate[5][:80]), flush=True)
                continue
            candidate = moved
        rel, line_no = candidate[0], candidate[1]
        path = os.path.join(ROOT, rel)
        saved = os.path.join(BACKUP, rel)
        os.makedirs(os.path.dirname(saved), exist_ok=True)
        shutil.copy2(path, saved)
        try:
            with open(path, "w", encoding="utf-8") as f:
                f.write(apply(originals[rel], candidate))
            area = rel.split("/")[1]
            order = ([area] if area in areas else []) + [a for a in areas if a != area]
            verdict, by = run_tests(order)
        finally:
            shutil.copy2(saved, path)
            os.remove(saved)
            os.utime(path)  # rebuilt unchanged with the next mutant
        tally[verdict] += 1
        print("%3d %s:%d  %s  %s%s" % (k, rel, line_no + 1, candidate[5][:80], verdict,
                                       " by " + by if by else ""), flush=True)
    built = tally["killed"] + tally["survived"]
    print("mutants: %s in %.0f min" % (", ".join("%d %s" % (v, k) for k, v in tally.items()),
                                      (time.monotonic() - started) / 60))
    print("mutation score %d/%d (time-outs apart: %d)" % (tally["killed"], built,
                                                         tally["timed out"]))


if __name__ == "__main__":
    main()
