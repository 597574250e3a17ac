#!/usr/bin/env python3
"""Runs every dialog script that has an action file on the headless desktop
and on the Qt desktop (--ui=gui) and fails when stdout, stderr or the exit
status differ. Run it under a display (xvfb-run): without one, the gui run
would fall back to headless and prove nothing, so that is a failure too.

With --no-display, checks instead that --ui=gui with no display falls back
to headless with one note on stderr and otherwise behaves as headless.

usage: compare_desktops.py --runner PATH [--fixtures DIR] [--no-display] SCRIPT_OR_DIR...
"""
import argparse
import difflib
import glob
import os
import sys
import tempfile

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "golden"))
import run_golden  # noqa: E402  (the golden runner's parser and process handling)

FALLBACK_NOTE = "dialogs stay headless"


def scripts_of(paths):
    """The .bas files named or found in the directories, with an action file."""
    found = []
    for path in paths:
        names = sorted(glob.glob(os.path.join(path, "*.bas"))) if os.path.isdir(path) else [path]
        found += [n for n in names if os.path.isfile(os.path.splitext(n)[0] + ".actions")]
    return found


def differences(label, left, right):
    if left == right:
        return []
    diff = difflib.unified_diff(left.splitlines(), right.splitlines(), "headless", "gui", lineterm="", n=2)
    return [f"{label} differs:"] + ["  " + line for line in diff]


def compare(runner, fixtures, script, no_display):
    exp = run_golden.parse_script(script)
    headless = run_golden.run_runner(runner, fixtures, script, exp, ["--ui=headless"])
    gui = run_golden.run_runner(runner, fixtures, script, exp, ["--ui=gui"])
    problems = []
    notes = [line for line in gui.stderr.splitlines(keepends=True) if FALLBACK_NOTE in line]
    if no_display:
        if len(notes) != 1:
            problems.append("expected one fallback note, got: " + "".join(notes).strip())
        gui.stderr = "".join(line for line in gui.stderr.splitlines(keepends=True) if line not in notes)
    elif notes:
        problems.append("the gui run fell back to headless: " + gui.stderr.strip())
    if headless.timed_out or gui.timed_out:
        problems.append("timed out: " + ("headless" if headless.timed_out else "gui"))
    problems += differences("stdout", headless.stdout, gui.stdout)
    problems += differences("stderr", headless.stderr, gui.stderr)
    if headless.status != gui.status:
        problems.append(f"exit status: headless {headless.status}, gui {gui.status}")
    return problems


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--runner", required=True)
    parser.add_argument("--fixtures", default=None)
    parser.add_argument("--no-display", action="store_true")
    parser.add_argument("paths", nargs="+")
    args = parser.parse_args()
    if args.no_display:
        for name in ("DISPLAY", "WAYLAND_DISPLAY"):
            os.environ.pop(name, None)
    # Qt wants a private runtime directory and says so on stderr without one.
    runtime = tempfile.TemporaryDirectory(prefix="ob-qt-runtime-")
    os.environ.setdefault("XDG_RUNTIME_DIR", runtime.name)
    scripts = scripts_of(args.paths)
    if not scripts:
        print("no dialog scripts with action files found")
        return 1
    failed = 0
    for script in scripts:
        problems = compare(args.runner, args.fixtures, script, args.no_display)
        print(("FAIL " if problems else "ok   ") + os.path.relpath(script))
        for line in problems:
            print("    " + line)
        failed += bool(problems)
    print(f"{len(scripts) - failed} of {len(scripts)} scripts behave the same on both desktops")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
