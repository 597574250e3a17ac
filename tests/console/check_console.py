#!/usr/bin/env python3
"""Checks what the runner writes to the console, byte for byte.

Each case is NAME.bas beside this script with the exact expected stderr in
NAME.stderr and, optionally, the expected stdout in NAME.stdout, the command
line in NAME.args (shell words; {script} stands for the script's name, which
is otherwise given after --on-error=continue) and standard input in
NAME.stdin. The expected exit status is the number in NAME.exit, else 1 when
NAME.stderr is not empty and 0 when it is. Cases run in a temporary copy of
this folder, so paths in the output are bare names.

usage: check_console.py RUNNER [NAME ...]
"""

import glob
import os
import shlex
import shutil
import subprocess
import sys
import tempfile

HERE = os.path.dirname(os.path.abspath(__file__))


def read(path, default=None):
    if not os.path.exists(path):
        return default
    with open(path, "rb") as f:
        return f.read()


def run_case(runner, work, name):
    """The differences between what the case expects and what ran."""
    base = os.path.join(HERE, name)
    args = read(base + ".args")
    script = name + ".bas"
    if args is None:
        argv = ["--on-error=continue", script]
    else:
        argv = [a.replace("{script}", script) for a in shlex.split(args.decode())]
    result = subprocess.run([runner] + argv, cwd=work, input=read(base + ".stdin", b""),
                            capture_output=True, timeout=30)
    want_err = read(base + ".stderr", b"")
    want_out = read(base + ".stdout")
    exit_text = read(base + ".exit")
    want_exit = int(exit_text) if exit_text else (1 if want_err else 0)
    problems = []
    for what, want, got in (("stderr", want_err, result.stderr), ("stdout", want_out, result.stdout)):
        if want is not None and got != want:
            problems.append("%s differs:\n--- expected\n%s--- actual\n%s" %
                            (what, want.decode(errors="replace"), got.decode(errors="replace")))
    if result.returncode != want_exit:
        problems.append("exit status: expected %d, got %d" % (want_exit, result.returncode))
    return problems


def main():
    runner = os.path.abspath(sys.argv[1])
    names = sys.argv[2:] or sorted(os.path.basename(p)[:-4] for p in glob.glob(os.path.join(HERE, "*.bas")))
    failed = 0
    with tempfile.TemporaryDirectory(prefix="ob-console-") as tmp:
        work = os.path.join(tmp, "work")
        shutil.copytree(HERE, work)
        for name in names:
            problems = run_case(runner, work, name)
            print(("FAIL " if problems else "PASS ") + name)
            for problem in problems:
                print("  " + problem.replace("\n", "\n  "))
            failed += bool(problems)
    print("%d passed, %d failed" % (len(names) - failed, failed))
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
