#!/usr/bin/env python3
"""Runs golden script tests through the orvobasic command-line runner.

A golden test is a .bas script whose expectations live in its own comments:

    print "hello"   # expect: hello        one line of stdout, in order
    goto nowhere    # expect error 7       error 7 reported on this line
    x = y + z       # expect error 37, 30  several errors on one line
    # expect error 37 in parts/a.inc:3     an error reported in another file
                                           (path relative to the script's folder)
    # args: --flag value                   extra runner arguments (shell-split)
    # exit: 1                              exit status (default: 1 if an error
                                           is expected, else 0)
    # stdin: some text                     one line fed to stdin (repeatable)
    # expect-file NAME: TEXT               one line of the text file NAME that
                                           the script wrote, in order

Each script runs as `orvobasic --on-error=continue [args] [extra] /abs/script.bas`
in a fresh temporary directory holding a copy of the fixtures directory and,
when the script has one beside it, its action file NAME.actions (so that
"# args: --ui-actions NAME.actions" finds it). The test passes when stdout,
the reported errors, the exit status and the expected files all match.

Standard library only. Exit status 0 when every script passes, else 1.
"""

import argparse
import codecs
import collections
import difflib
import os
import re
import shlex
import shutil
import signal
import subprocess
import sys
import tempfile

TIMEOUT_SECONDS = 30
STDERR_LINES_SHOWN = 40

# An error report on stderr: "SCRIPT:LINE: error N: MESSAGE". The message may
# be empty (error 0), so the blank after the last colon is optional.
ERROR_LINE = re.compile(r"^(.*):(\d+): error (-?\d+):(?: (.*))?$")

# The first line of an AddressSanitizer/LeakSanitizer or UBSan report. Such a
# report fails the test even when the exit status happens to match (ASan exits
# with 1, the same status as a script that reported an error).
SANITIZER_LINE = re.compile(r"^==\d+==ERROR: \w*Sanitizer|: runtime error: ")

# Directives, matched at the start of a comment ("#" outside a string literal).
EXPECT_OUTPUT = re.compile(r"^#\s*expect:(.*)$")
EXPECT_ERROR = re.compile(r"^#\s*expect\s+error\s+(-?\d+(?:\s*,\s*-?\d+)*)\s*$")
EXPECT_ERROR_IN = re.compile(r"^#\s*expect\s+error\s+(-?\d+)\s+in\s+(\S+):(\d+)\s*$")
ARGS = re.compile(r"^#\s*args:(.*)$")
EXIT = re.compile(r"^#\s*exit:\s*(-?\d+)\s*$")
STDIN = re.compile(r"^#\s*stdin:(.*)$")
EXPECT_FILE = re.compile(r"^#\s*expect-file\s+([^\s:]+):(.*)$")
# A comment that looks like a directive but matches none of the forms above is
# a typo in the test ("# exit: one", "# expect eror 7"), reported instead of
# silently ignored. Ordinary prose ("# expect the loop to stop") is left alone.
DIRECTIVE_LIKE = re.compile(r"^#\s*(?:(?:expects?|args|exit|stdin)\s*:|expect\s+\S+\s+-?\d)")


def _undefined_byte_as_control(error):
    """Decodes the five bytes Windows-1252 leaves unassigned as U+0081 etc."""
    bad = error.object[error.start:error.end]
    return "".join(chr(b) for b in bad), error.end


codecs.register_error("ob-cp1252", _undefined_byte_as_control)


class Expectations:
    """What one script expects: stdout lines, errors, exit status, input."""

    def __init__(self):
        self.stdout = []        # expected stdout lines, in order
        self.errors = []        # (line, number) pairs
        self.file_errors = []   # (path relative to the script's folder, line, number)
        self.args = []          # extra runner arguments
        self.stdin = []         # lines fed to stdin
        self.exit = None        # explicit "# exit:" value, if any
        self.problems = []      # malformed directives (the test itself is wrong)
        self.source = []        # the script's lines, for the failure report
        self.files = collections.OrderedDict()  # file name -> expected lines

    def exit_status(self):
        """The status the runner must return: explicit, else 1 if errors expected."""
        if self.exit is not None:
            return self.exit
        return 1 if self.errors or self.file_errors else 0


def directive_text(captured):
    """Text after "directive:": one separating blank dropped, the rest kept as is."""
    return captured[1:] if captured.startswith(" ") else captured


def comment_start(line):
    """Index of the "#" that starts the line's comment, or -1.

    A "#" inside a double-quoted string literal is text, not a comment; the
    language has no escapes, so quotes simply toggle. An unclosed literal runs
    to the end of the line here (it would run on in the interpreter, but then
    the line holds no comment of ours anyway).
    """
    in_string = False
    for index, char in enumerate(line):
        if char == '"':
            in_string = not in_string
        elif char == "#" and not in_string:
            return index
    return -1


def parse_directive(comment, line_number, exp):
    """Records the directive in one comment (if any) into exp."""
    match = EXPECT_OUTPUT.match(comment)
    if match:
        exp.stdout.append(directive_text(match.group(1)))
        return
    match = EXPECT_ERROR.match(comment)
    if match:
        for number in match.group(1).split(","):
            exp.errors.append((line_number, int(number)))
        return
    match = EXPECT_ERROR_IN.match(comment)
    if match:
        exp.file_errors.append((match.group(2), int(match.group(3)), int(match.group(1))))
        return
    match = ARGS.match(comment)
    if match:
        try:
            exp.args.extend(shlex.split(match.group(1)))
        except ValueError as error:  # an unbalanced quote
            exp.problems.append(f"line {line_number}: bad args ({error}): {comment}")
        return
    match = EXIT.match(comment)
    if match:
        exp.exit = int(match.group(1))
        return
    match = STDIN.match(comment)
    if match:
        exp.stdin.append(directive_text(match.group(1)))
        return
    match = EXPECT_FILE.match(comment)
    if match:
        exp.files.setdefault(match.group(1), []).append(directive_text(match.group(2)))
        return
    if DIRECTIVE_LIKE.match(comment):
        exp.problems.append(f"line {line_number}: malformed directive: {comment}")


def decode_script(data):
    """Decodes a script as the interpreter does: with the UTF-8 mark, or valid
    UTF-8 holding a non-ASCII character, as UTF-8; anything else as Windows-1252."""
    if data.startswith(codecs.BOM_UTF8):
        return data[len(codecs.BOM_UTF8):].decode("utf-8", errors="replace")
    try:
        text = data.decode("utf-8")
        if not text.isascii():
            return text
    except UnicodeDecodeError:
        pass
    return data.decode("cp1252", errors="ob-cp1252")


def parse_script(path):
    """Reads a script (UTF-8 or Windows-1252 text, as the interpreter does) and its expectations."""
    with open(path, "rb") as handle:
        text = decode_script(handle.read())
    exp = Expectations()
    for number, line in enumerate(text.split("\n"), start=1):
        line = line.rstrip("\r")
        exp.source.append(line)
        start = comment_start(line)
        if start >= 0:
            parse_directive(line[start:], number, exp)
    return exp


def split_output(text):
    """Stdout lines: split on LF, the empty piece after a final LF dropped."""
    lines = text.split("\n")
    if lines and lines[-1] == "":
        lines.pop()
    return lines


def parse_errors(stderr, script):
    """Error reports for this script on stderr: {(line, N): [(message, source line)]}.

    The source line is the following stderr line when it is indented by four
    blanks. Other stderr lines (diagnostics, the resource-string fallback
    notice) are ignored.
    """
    found = collections.defaultdict(list)
    lines = stderr.split("\n")
    for index, line in enumerate(lines):
        match = ERROR_LINE.match(line)
        if not match or match.group(1) != script:
            continue
        following = lines[index + 1] if index + 1 < len(lines) else ""
        source = following[4:] if following.startswith("    ") else ""
        key = (int(match.group(2)), int(match.group(3)))
        found[key].append((match.group(4) or "", source))
    return found


def parse_file_errors(stderr, script):
    """Error reports for files other than the script: {(relative path, line, N): count}."""
    found = collections.Counter()
    folder = os.path.dirname(script)
    for line in stderr.split("\n"):
        match = ERROR_LINE.match(line)
        if match and match.group(1) != script:
            path = os.path.relpath(match.group(1), folder)
            found[(path, int(match.group(2)), int(match.group(3)))] += 1
    return found


def file_errors_report(exp, actual):
    """Missing and unexpected errors in other files, only when the script expects some."""
    if not exp.file_errors:
        return []
    expected = collections.Counter(exp.file_errors)
    lines = []
    for (path, line, number), count in sorted((expected - actual).items()):
        lines += [f"  missing:    {path}:{line}: error {number}"] * count
    for (path, line, number), count in sorted((actual - expected).items()):
        lines += [f"  unexpected: {path}:{line}: error {number}"] * count
    return ["errors in other files differ:"] + lines if lines else []


class Run:
    """The outcome of one runner process."""

    def __init__(self, status, stdout, stderr, timed_out, files=None):
        self.status = status
        self.stdout = stdout
        self.stderr = stderr
        self.timed_out = timed_out
        self.files = files or {}     # expected file name -> its lines, None when missing


def copy_fixtures(fixtures, workdir):
    """Copies the contents of the fixtures directory (if any) into workdir."""
    if fixtures and os.path.isdir(fixtures):
        shutil.copytree(fixtures, workdir, dirs_exist_ok=True)


def copy_actions(script, workdir):
    """Copies the script's action file NAME.actions (if any) into workdir."""
    actions = os.path.splitext(script)[0] + ".actions"
    if os.path.isfile(actions):
        shutil.copy(actions, workdir)


def read_text_file(path):
    """The lines of a text file the script wrote: UTF-16LE after FF FE, else
    8-bit Windows-1252; lines end at CR LF or LF. None when it is missing."""
    try:
        with open(path, "rb") as handle:
            data = handle.read()
    except OSError:
        return None
    if data.startswith(b"\xff\xfe"):
        text = data[2:].decode("utf-16-le", errors="replace")
    else:
        text = data.decode("cp1252", errors="ob-cp1252")
    return split_output(text.replace("\r\n", "\n"))


def run_runner(runner, fixtures, script, exp, extra_args):
    """Runs the script in a fresh directory; kills the whole process group on timeout."""
    command = [runner, "--on-error=continue", *exp.args, *extra_args, script]
    env = dict(os.environ, LC_ALL="C.UTF-8")
    stdin_bytes = "".join(line + "\n" for line in exp.stdin).encode("utf-8")
    with tempfile.TemporaryDirectory(prefix="ob-golden-") as workdir:
        copy_fixtures(fixtures, workdir)
        copy_actions(script, workdir)
        process = subprocess.Popen(
            command, cwd=workdir, env=env,
            stdin=subprocess.PIPE if exp.stdin else subprocess.DEVNULL,
            stdout=subprocess.PIPE, stderr=subprocess.PIPE,
            start_new_session=True)
        timed_out = False
        try:
            out, err = process.communicate(
                stdin_bytes if exp.stdin else None, timeout=TIMEOUT_SECONDS)
        except subprocess.TimeoutExpired:
            timed_out = True
            try:
                os.killpg(process.pid, signal.SIGKILL)
            except ProcessLookupError:  # it ended on its own meanwhile
                pass
            out, err = process.communicate()
        files = {name: read_text_file(os.path.join(workdir, name)) for name in exp.files}
    return Run(process.returncode,
               out.decode("utf-8", errors="backslashreplace"),
               err.decode("utf-8", errors="backslashreplace"),
               timed_out, files)


def describe_status(status):
    """Exit status in words; a negative status is a signal."""
    if status is not None and status < 0:
        try:
            return f"killed by {signal.Signals(-status).name}"
        except ValueError:
            return f"killed by signal {-status}"
    return str(status)


def stdout_report(expected, actual):
    """A unified diff of expected vs actual stdout lines, or nothing when equal."""
    if expected == actual:
        return []
    diff = difflib.unified_diff(expected, actual, "expected stdout", "actual stdout",
                                lineterm="", n=3)
    return ["stdout differs:"] + ["  " + line for line in diff]


def errors_report(exp, actual):
    """Missing and unexpected (line, N) errors, each with its source line."""
    expected = collections.Counter(exp.errors)
    got = collections.Counter({key: len(reports) for key, reports in actual.items()})
    missing = expected - got
    extra = got - expected
    if not missing and not extra:
        return []
    report = ["errors differ:"]
    for (line, number), count in sorted(missing.items()):
        source = exp.source[line - 1] if 0 < line <= len(exp.source) else ""
        for _ in range(count):
            report.append(f"  missing:    line {line}: error {number}")
            report.append(f"      {source.strip()}")
    for (line, number), count in sorted(extra.items()):
        for message, source in actual[(line, number)][-count:]:
            report.append(f"  unexpected: line {line}: error {number}: {message}")
            report.append(f"      {source.strip()}")
    return report


def files_report(expected, actual):
    """Differences between the expected and the written text files."""
    report = []
    for name, lines in expected.items():
        got = actual.get(name)
        if got is None:
            report.append(f"file {name} was not written")
        elif got != lines:
            diff = difflib.unified_diff(lines, got, f"expected {name}", f"actual {name}",
                                        lineterm="", n=3)
            report += [f"file {name} differs:"] + ["  " + line for line in diff]
    return report


def sanitizer_start(lines):
    """Index of the first line of a sanitizer report on stderr, or -1."""
    return next((i for i, line in enumerate(lines) if SANITIZER_LINE.search(line)), -1)


def excerpt(title, lines, start):
    """Up to STDERR_LINES_SHOWN lines from start, marked so that blank lines stay visible."""
    shown = lines[start:start + STDERR_LINES_SHOWN]
    return [f"{title} (lines {start + 1}-{start + len(shown)} of {len(lines)}):"] + \
        ["  | " + line for line in shown]


def stderr_report(lines):
    """The first lines of stderr, plus the sanitizer report when it starts further down."""
    if not lines:
        return ["stderr: (empty)"]
    report = excerpt("stderr", lines, 0)
    start = sanitizer_start(lines)
    if start >= STDERR_LINES_SHOWN:
        report += excerpt("sanitizer report", lines, start)
    return report


def check(runner, fixtures, path, extra_args=()):
    """Runs one script; returns the list of report lines (empty when it passed)."""
    script = os.path.abspath(path)
    exp = parse_script(script)
    if exp.problems:
        return ["the test itself is malformed:"] + ["  " + p for p in exp.problems]
    try:
        run = run_runner(runner, fixtures, script, exp, list(extra_args))
    except OSError as error:
        return [f"cannot start the runner {runner}: {error}"]
    report = []
    if run.timed_out:
        report.append(f"timed out after {TIMEOUT_SECONDS} s (process killed)")
    report += stdout_report(exp.stdout, split_output(run.stdout))
    report += errors_report(exp, parse_errors(run.stderr, script))
    report += files_report(exp.files, run.files)
    report += file_errors_report(exp, parse_file_errors(run.stderr, script))
    stderr_lines = split_output(run.stderr)
    if sanitizer_start(stderr_lines) >= 0:
        report.append("a sanitizer reported a problem (see stderr)")
    if run.timed_out or run.status != exp.exit_status():
        report.append(f"exit status: expected {exp.exit_status()}, "
                      f"got {describe_status(run.status)}")
    if report:
        report += stderr_report(stderr_lines)
    return report


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("--runner", required=True, help="path of the orvobasic executable")
    parser.add_argument("--fixtures", help="directory whose contents are copied into "
                                           "each test's working directory")
    parser.add_argument("--extra-args", default="",
                        help="runner arguments (shell-split) appended after each script's "
                             "own \"# args:\"; give it as --extra-args=\"--flag ...\"")
    parser.add_argument("scripts", nargs="+", help=".bas scripts to run")
    args = parser.parse_args()
    try:
        extra_args = shlex.split(args.extra_args)
    except ValueError as error:
        parser.error(f"--extra-args: {error}")

    failed = 0
    for path in args.scripts:
        report = check(args.runner, args.fixtures, path, extra_args)
        if report:
            failed += 1
            print(f"FAIL {path}")
            print("\n".join("  " + line for line in report))
        else:
            print(f"PASS {path}")
    if len(args.scripts) > 1:
        print(f"{len(args.scripts) - failed} passed, {failed} failed")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
