#!/usr/bin/env python3
"""Drives the runner's interactive session through a pseudo-terminal, as a
person at a terminal would, and checks what the session shows.

usage: check_session.py RUNNER
"""

import os
import pty
import select
import sys
import tempfile
import time

TIMEOUT = 10.0


class Session:
    def __init__(self, runner, cwd):
        self.pid, self.fd = pty.fork()
        if self.pid == 0:
            os.chdir(cwd)
            os.environ["TERM"] = "dumb"
            os.execv(runner, [runner])
        self.seen = ""

    def read_until(self, text):
        """Reads output until `text` has appeared; returns all seen so far."""
        deadline = time.time() + TIMEOUT
        while text not in self.seen:
            left = deadline - time.time()
            if left <= 0:
                raise AssertionError("timed out waiting for %r; the session showed:\n%s" % (text, self.seen))
            ready, _, _ = select.select([self.fd], [], [], left)
            if ready:
                try:
                    chunk = os.read(self.fd, 4096)
                except OSError:
                    break
                if not chunk:
                    break
                self.seen += chunk.decode("utf-8", "replace").replace("\r\n", "\n")
        if text not in self.seen:
            raise AssertionError("the session ended before %r; it showed:\n%s" % (text, self.seen))
        return self.seen

    def type(self, line):
        os.write(self.fd, (line + "\n").encode())

    def finish(self):
        _, status = os.waitpid(self.pid, 0)
        return os.waitstatus_to_exitcode(status)


def expect(condition, message, session):
    if not condition:
        raise AssertionError(message + "\nthe session showed:\n" + session.seen)


def main():
    runner = os.path.abspath(sys.argv[1])
    with tempfile.TemporaryDirectory(prefix="ob-session-") as tmp:
        with open(os.path.join(tmp, "lib.bas"), "w") as f:
            f.write("loaded = 41 + 1\n")
        s = Session(runner, tmp)
        s.read_until("ob> ")
        # A for loop over three lines runs once, when it is complete.
        s.type("for i = 1 to 3")
        s.read_until("... ")
        s.type('  print "n"; i')
        s.read_until("... ")
        expect("n1" not in s.seen, "the loop ran before it was complete", s)
        s.type("next")
        s.read_until("n3.000000")
        expect(s.seen.count("n1.000000") == 1, "the loop did not run exactly once", s)
        # An error is shown and the session goes on with its variables.
        s.type("y = nosuch")
        s.read_until("error 37: Undefined variable")
        s.type('print "still here "; i')
        s.read_until("still here 4.000000")
        # Functions defined in the session are callable later.
        s.type("function twice(n)")
        s.type("  twice = n * 2")
        s.type("endfunction")
        s.type("print twice(21)")
        s.read_until("42.000000")
        # :load runs a file in the session; :vars lists what is defined.
        s.type(":load lib.bas")
        s.type(":vars")
        s.read_until("loaded = 42")
        s.type(":quit")
        status = s.finish()
        expect(status == 0, "the session ended with status %d" % status, s)
    print("interactive session: ok")
    return 0


if __name__ == "__main__":
    try:
        sys.exit(main())
    except AssertionError as failure:
        print("FAIL", failure)
        sys.exit(1)
