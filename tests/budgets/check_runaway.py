#!/usr/bin/env python3
"""Runaway scripts against the runner's budgets, measured from outside.

Scripts that grow their data without end (a string doubled in a loop, a map
given a megabyte value per entry) or that spend long in single statements
must end with the budget's error: within a short margin of --timeout, and
within --max-memory, with and without an address-space limit (ulimit -v)
on the process. Each case prints what it measured:

    check_runaway.py RUNNER [--sanitized]

--sanitized: the runner is built with a sanitizer, whose shadow memory
neither fits an address-space limit nor lets resident memory be compared
with the budget; those checks are left out and the time margin is wider.
"""
import os
import resource
import subprocess
import sys
import tempfile
import time

DOUBLING = 's = "x"\ndo while 1 = 1\n  s = s + s\nloop\n'
MAP_GROWTH = ('map create "m"\nbig = repeat("x", 524288)\ni = 0\ndo while 1 = 1\n'
              '  call mapset("m", str(i), big)\n  i = i + 1\nloop\n')
# Statements of tens of milliseconds each on a few megabytes that stay put.
SLOW_STATEMENTS = ('s = repeat("ab", 4000000)\ndo while 1 = 1\n'
                   '  t = replace(s, "a", "xyz")\n  n = instr(t + s, "q")\nloop\n')
SCRIPTS = {"doubling": DOUBLING, "map-growth": MAP_GROWTH, "slow-statements": SLOW_STATEMENTS}

TIMEOUT_S = 1.0
MEMORY_BUDGET = 64_000_000
# What the process holds besides the script's data: code, libraries, stacks.
PROCESS_BASE = 24_000_000
# An address-space limit the runs stay far below when they keep their budgets.
ADDRESS_LIMIT = 3 << 30

failures = []


def run(runner, path, args, address_limit):
    def limit():
        if address_limit:
            resource.setrlimit(resource.RLIMIT_AS, (address_limit, address_limit))

    start = time.monotonic()
    proc = subprocess.Popen([runner, *args, path], stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                            stderr=subprocess.PIPE, preexec_fn=limit)
    # A run the budgets do not end is killed after a minute and fails.
    try:
        err = proc.communicate(timeout=60)[1].decode("utf-8", "replace")
    except subprocess.TimeoutExpired:
        proc.kill()
        err = proc.communicate()[1].decode("utf-8", "replace") + "\n(killed after 60 s)"
    seconds = time.monotonic() - start
    return proc.returncode, seconds, err


def peak_rss_bytes(runner, path, args, address_limit):
    """Runs once more to read the peak resident memory of that process alone."""
    def limit():
        if address_limit:
            resource.setrlimit(resource.RLIMIT_AS, (address_limit, address_limit))

    pid = os.fork()
    if pid == 0:
        try:
            limit()
            null = os.open(os.devnull, os.O_RDWR)
            for fd in (0, 1, 2):
                os.dup2(null, fd)
            os.execv(runner, [runner, *args, path])
        finally:
            os._exit(127)
    deadline = time.monotonic() + 60
    while True:
        done, status, usage = os.wait4(pid, os.WNOHANG)
        if done:
            return usage.ru_maxrss * 1024
        if time.monotonic() > deadline:
            os.kill(pid, 9)
        time.sleep(0.01)


def check(condition, what):
    if not condition:
        failures.append(what)
        print("FAIL: " + what)


def main():
    runner = sys.argv[1]
    sanitized = "--sanitized" in sys.argv[2:]
    margin = 1.0 if sanitized else 0.3
    limits = [0] if sanitized else [0, ADDRESS_LIMIT]
    with tempfile.TemporaryDirectory() as tmp:
        # Starting and ending the process costs the same whatever the script
        # does (a good part of 100 ms on a loaded machine): it is not overrun.
        trivial = os.path.join(tmp, "trivial.bas")
        with open(trivial, "w") as f:
            f.write("x = 1\n")
        base = min(run(runner, trivial, [], 0)[1] for _ in range(3))
        print(f"process start and end: {base * 1000:.0f} ms")
        for name, text in SCRIPTS.items():
            path = os.path.join(tmp, name + ".bas")
            with open(path, "w") as f:
                f.write(text)
            for address_limit in limits:
                where = f"{name}, ulimit -v {address_limit >> 20} MB" if address_limit else f"{name}, no ulimit"

                # The deadline. The memory budget is far above what the slow
                # statements hold; the growing scripts may reach it (or the
                # address-space limit) before the deadline: any of the three
                # errors is a bounded end, and the time is checked either way.
                args = [f"--timeout={TIMEOUT_S:g}", f"--max-memory={2 << 30}"]
                code, seconds, err = run(runner, path, args, address_limit)
                ended = ("error 103: Time limit reached" in err or "error 106: Memory limit reached" in err
                         or "error 107: Out of memory" in err)
                print(f"{where}: --timeout=1 ended after {seconds:.3f} s "
                      f"(overrun {max(seconds - base - TIMEOUT_S, 0) * 1000:.0f} ms), exit {code}: "
                      f"{err.strip().splitlines()[0] if err.strip() else '(nothing on stderr)'}")
                check(code == 1 and ended, f"{where}: --timeout=1 gave exit {code}, stderr {err!r}")
                check(seconds - base < TIMEOUT_S + margin, f"{where}: --timeout=1 took {seconds:.3f} s")

                if name == "slow-statements":
                    continue   # its few megabytes fit any budget: only the deadline ends it

                # The memory budget, with a deadline it does not need.
                args = ["--timeout=60", f"--max-memory={MEMORY_BUDGET}"]
                code, seconds, err = run(runner, path, args, address_limit)
                print(f"{where}: --max-memory={MEMORY_BUDGET} ended after {seconds:.3f} s, exit {code}: "
                      f"{err.strip().splitlines()[0] if err.strip() else '(nothing on stderr)'}")
                check(code == 1 and "error 106: Memory limit reached" in err,
                      f"{where}: --max-memory gave exit {code}, stderr {err!r}")
                check(seconds < 5, f"{where}: --max-memory took {seconds:.3f} s")
                if not sanitized:
                    rss = peak_rss_bytes(runner, path, args, address_limit)
                    print(f"{where}: --max-memory={MEMORY_BUDGET} peak resident {rss / 1e6:.1f} MB")
                    check(rss < MEMORY_BUDGET + PROCESS_BASE, f"{where}: peak resident {rss} bytes")
    if failures:
        print(f"{len(failures)} check(s) failed")
        return 1
    print("all runaway scripts ended within their budgets")
    return 0


if __name__ == "__main__":
    sys.exit(main())
