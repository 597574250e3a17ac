#!/usr/bin/env python3
"""Runs every dialog script that has an action file on the headless desktop
and on the Qt desktop (--ui=gui) and fails when stdout, stderr or the exit
status differ. Run it under a display (xvfb-run): without one, the gui run
would fall back to headless and prove nothing, so that is a failure too.

usage: compare_desktops.py --runner PATH --fixtures DIR SCRIPT_OR_DIR...
"""
import argparse
import difflib
import glob
import os
import sys

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


def compare(runner, fixtures, script):
    exp = run_golden.parse_script(script)
    headless = run_golden.run_runner(runner, fixtures, script, exp, ["--ui=headless"])
    gui = run_golden.run_runner(runner, fixtures, script, exp, ["--ui=gui"])
    problems = []
    if FALLBACK_NOTE in gui.stderr:
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
    parser.add_argument("paths", nargs="+")
    args = parser.parse_args()
    scripts = scripts_of(args.paths)
    if not scripts:
        print("no dialog scripts with action files found")
        return 1
    failed = 0
    for script in scripts:
        problems = compare(args.runner, args.fixtures, script)
        print(("FAIL " if problems else "ok   ") + os.path.relpath(script))
        for line in problems:
            print("    " + line)
        failed += bool(problems)
    print(f"{len(scripts) - failed} of {len(scripts)} scripts behave the same on both desktops")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
