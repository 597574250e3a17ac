#!/usr/bin/env python3
"""Times the same five programs under our runner, lua5.4, yabasic and brandy.

Every program of bench/compare/<interpreter>/ is run at the same N (its
"n = ..." line is rewritten), round-robin, REPS times; the table gives the
median wall seconds, our peak resident memory, the ratio to the fastest BASIC
peer and to Lua, and whether our checksum (the last line printed) equals
Lua's. Exit status 0 when every checksum agrees and ours is faster than every
BASIC peer on every program (--limit changes that bar).

Usage: compare.py RUNNER [--reps N] [--limit X] [--scale F] [--only NAME,...]
An interpreter that is not installed is shown as "-" (install them with
scripts/install-deps.sh --bench).
"""
import argparse
import os
import re
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

HERE = os.path.join(os.path.dirname(os.path.abspath(__file__)), 'compare')

# N per program: large enough that start-up is noise for the fast peers.
SIZES = {'loop': 8000000, 'fib': 3, 'strings': 2000, 'arrays': 500, 'branches': 1500000}

# Per interpreter: its folder, file extension, the line that sets N, the command.
PEERS = {
    'ours': ('orvobasic', 'bas', r'^n = \d+$', None),
    'lua5.4': ('lua', 'lua', r'^local N = \d+$', ['lua5.4']),
    'yabasic': ('yabasic', 'yab', r'^n = \d+$', ['yabasic']),
    'brandy': ('brandy', 'bbc', r'^N%=\d+$', ['brandy']),
}
BASIC_PEERS = ('yabasic', 'brandy')


def write_program(peer, bench, n, tmp):
    folder, ext, pattern, _ = PEERS[peer]
    with open(os.path.join(HERE, folder, f'{bench}.{ext}')) as f:
        lines = f.read().split('\n')
    for i, line in enumerate(lines):
        if re.match(pattern, line):
            lines[i] = re.sub(r'\d+$', str(n), line)
            break
    path = os.path.join(tmp, f'{peer}_{bench}.{ext}')
    with open(path, 'w') as f:
        f.write('\n'.join(lines))
    return path


def run_once(command, cwd, env):
    """Wall seconds, peak resident kB and stdout of one run."""
    start = time.monotonic()
    proc = subprocess.Popen(command, cwd=cwd, env=env, stdin=subprocess.DEVNULL,
                            stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
    out = proc.stdout.read()
    _, status, usage = os.wait4(proc.pid, 0)
    proc.returncode = os.waitstatus_to_exitcode(status)
    return time.monotonic() - start, usage.ru_maxrss, out.decode('utf-8', 'replace'), proc.returncode


def checksum(out):
    lines = [l.strip() for l in out.replace('\r', '').split('\n') if l.strip()]
    try:
        return float(lines[-1]) if lines else None
    except ValueError:
        return None


def main():
    ap = argparse.ArgumentParser()
    ap.add_argument('runner')
    ap.add_argument('--reps', type=int, default=3)
    ap.add_argument('--limit', type=float, default=1.0)
    ap.add_argument('--scale', type=float, default=1.0)
    ap.add_argument('--only', default='')
    opts = ap.parse_args()
    commands = {p: (entry[3] or [os.path.abspath(opts.runner)]) for p, entry in PEERS.items()}
    present = [p for p in PEERS if shutil.which(commands[p][0])]
    benches = [b for b in SIZES if not opts.only or b in opts.only.split(',')]
    tmp = tempfile.mkdtemp(prefix='ob-bench-')
    env = dict(os.environ, SDL_VIDEODRIVER='dummy')   # brandy draws with SDL
    ok, worst = True, 0.0
    print(f"{'bench':9s} {'N':>9s} {'ours':>7s} {'lua5.4':>7s} {'yabasic':>7s} {'brandy':>7s}"
          f" {'ours/bestBASIC':>14s} {'ours/lua':>8s} {'ours MB':>7s}  checksum")
    try:
        for bench in benches:
            n = max(1, int(SIZES[bench] * opts.scale))
            files = {p: write_program(p, bench, n, tmp) for p in present}
            times = {p: [] for p in present}
            sums, peak = {}, 0
            for _ in range(opts.reps):
                for p in present:
                    seconds, rss, out, status = run_once(commands[p] + [files[p]], tmp, env)
                    times[p].append(seconds)
                    sums[p] = checksum(out) if status == 0 or p == 'brandy' else None
                    if p == 'ours':
                        peak = max(peak, rss)
            med = {p: statistics.median(times[p]) for p in present}
            cell = lambda p: f"{med[p]:7.2f}" if p in med else f"{'-':>7s}"
            basics = [med[p] for p in BASIC_PEERS if p in med]
            ratio = med['ours'] / min(basics) if basics else float('nan')
            lua_ratio = med['ours'] / med['lua5.4'] if 'lua5.4' in med else float('nan')
            reference = sums.get('lua5.4')
            good = sums.get('ours') is not None and (
                reference is None or abs(sums['ours'] - reference) <= 1e-6 * max(1.0, abs(reference)))
            ok = ok and good
            if basics:
                worst = max(worst, ratio)
            print(f"{bench:9s} {n:9d} {cell('ours')} {cell('lua5.4')} {cell('yabasic')} {cell('brandy')}"
                  f" {ratio:14.2f} {lua_ratio:8.1f} {peak / 1024:7.1f}  {'ok' if good else 'WRONG'}")
    finally:
        shutil.rmtree(tmp, ignore_errors=True)
    print(f"worst ours/bestBASIC {worst:.2f} (bar: below {opts.limit})")
    return 0 if ok and worst < opts.limit else 1


if __name__ == '__main__':
    sys.exit(main())
