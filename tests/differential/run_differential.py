#!/usr/bin/env python3
"""Runs scripts with the compiled engine on and off and compares the runs.

Every script runs twice through the runner, once as it is and once with
OB_ENGINE=text (every statement on the text path), each in a fresh copy of
the fixtures; stdout, stderr and the exit status must be identical. A script
whose text-path runs differ from each other (it prints the time, a random
number, ...) is reported as unstable and not counted as a failure.

  run_differential.py --runner R [--host-runner H] [--fixtures DIR] SCRIPT...
  run_differential.py --runner R --random N [--seed S]   generated programs

Standard library only. Exit status 0 when no script differs.
"""

import argparse
import concurrent.futures
import os
import random
import subprocess
import sys
import tempfile

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "golden"))
import run_golden  # noqa: E402
import program_generator  # noqa: E402

TIMEOUT_SECONDS = 30


def run_once(runner, fixtures, script, exp, text_engine):
    """(status, stdout, stderr) of one run, the working directory masked."""
    env = dict(os.environ, LC_ALL="C.UTF-8")
    env.pop("OB_ENGINE", None)
    if text_engine:
        env["OB_ENGINE"] = "text"
    command = [runner, "--on-error=continue", *exp.args, script]
    with tempfile.TemporaryDirectory(prefix="ob-diff-") as workdir:
        run_golden.copy_fixtures(fixtures, workdir)
        run_golden.copy_actions(script, workdir)
        stdin = "".join(line + "\n" for line in exp.stdin).encode("utf-8")
        try:
            done = subprocess.run(command, cwd=workdir, env=env, input=stdin, capture_output=True,
                                  timeout=TIMEOUT_SECONDS)
        except subprocess.TimeoutExpired:
            return ("timeout", "", "", {})
        out = done.stdout.decode("utf-8", "backslashreplace").replace(workdir, "<dir>")
        err = done.stderr.decode("utf-8", "backslashreplace").replace(workdir, "<dir>")
        files = {}
        for name in sorted(os.listdir(workdir)):
            path = os.path.join(workdir, name)
            if os.path.isfile(path):
                with open(path, "rb") as handle:
                    files[name] = handle.read()
        return (done.returncode, out, err, files)


def compare(runner, fixtures, script):
    """None when both engines agree, 'unstable' when the text path disagrees
    with itself, else a short report."""
    exp = run_golden.parse_script(script)
    compiled = run_once(runner, fixtures, script, exp, False)
    text = run_once(runner, fixtures, script, exp, True)
    for name, run in (("compiled", compiled), ("text", text)):
        if any(run_golden.SANITIZER_LINE.search(line) for line in run[2].split("\n")):
            return f"a sanitizer reported a problem on the {name} engine:\n{run[2][:3000]}"
    if compiled == text:
        return None
    again = run_once(runner, fixtures, script, exp, True)
    if again != text:
        return "unstable"
    names = ("exit status", "stdout", "stderr", "files")
    lines = [f"{names[i]} differs:\n  compiled: {compiled[i]!r:.600}\n  text:     {text[i]!r:.600}"
             for i in range(len(names)) if compiled[i] != text[i]]
    return "\n".join(lines)


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("--runner", required=True)
    parser.add_argument("--host-runner", help="runner for scripts under an automation/ folder")
    parser.add_argument("--fixtures")
    parser.add_argument("--random", type=int, default=0, help="generated programs to compare")
    parser.add_argument("--seed", type=int, default=None)
    parser.add_argument("--jobs", type=int, default=2)
    parser.add_argument("scripts", nargs="*")
    args = parser.parse_args()
    args.runner = os.path.abspath(args.runner)
    if args.host_runner:
        args.host_runner = os.path.abspath(args.host_runner)

    jobs = []
    keep = tempfile.TemporaryDirectory(prefix="ob-diff-gen-")
    for path in args.scripts:
        script = os.path.abspath(path)
        runner = args.runner
        if args.host_runner and os.sep + "automation" + os.sep in script:
            runner = args.host_runner
        jobs.append((runner, args.fixtures, script))
    seed = args.seed if args.seed is not None else random.randrange(1 << 30)
    if args.random:
        print(f"generated programs: {args.random}, seed {seed}")
    rng = random.Random(seed)
    for number in range(args.random):
        script = os.path.join(keep.name, f"generated_{number}.bas")
        with open(script, "w") as handle:
            handle.write(program_generator.generate(rng))
        jobs.append((args.runner, None, script))

    failed = unstable = 0
    with concurrent.futures.ThreadPoolExecutor(max_workers=args.jobs) as pool:
        results = pool.map(lambda job: (job[2], compare(*job)), jobs)
        for script, report in results:
            if report == "unstable":
                unstable += 1
                print(f"UNSTABLE {script} (the text path differs from itself)")
            elif report:
                failed += 1
                print(f"DIFFERS {script}\n{report}")
                if script.startswith(keep.name):
                    with open(script) as handle:
                        print("  program:\n" + "".join("    " + line for line in handle))
    print(f"{len(jobs) - failed - unstable} agree, {failed} differ, {unstable} unstable")
    keep.cleanup()
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
