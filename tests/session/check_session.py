#!/usr/bin/env python3
"""Copy-data between processes through the session registry.

Usage: check_session.py RUNNER

1. A runner shows a dialog that waits for a message; a second runner finds
   it by title, sends code and text, and gets the handler's answer.
2. A receiver that never answers: copydata yields 0 after --copydata-timeout.
3. A sandboxed script cannot reach the registry.
Every process is bounded by a time-out; the session directory is a fresh
temporary one and must be empty of windows afterwards.
"""
import os
import socket
import struct
import subprocess
import sys
import tempfile
import threading
import time

HERE = os.path.dirname(os.path.abspath(__file__))
failures = []


def check(condition, what):
    if not condition:
        failures.append(what)
        print("FAIL: " + what)


def run(runner, args, env, timeout=20):
    return subprocess.run([runner] + args, env=env, capture_output=True, text=True, timeout=timeout)


def wait_for_socket(directory, deadline):
    while time.monotonic() < deadline:
        if os.path.isdir(directory) and any(n.endswith(".sock") for n in os.listdir(directory)):
            return True
        time.sleep(0.05)
    return False


def two_processes(runner, env, session, work):
    actions = os.path.join(work, "wait.actions")
    with open(actions, "w") as f:
        f.write("wait-ms 15000\n")
    receiver = subprocess.Popen([runner, "--ui-actions", actions, os.path.join(HERE, "receiver.bas")],
                                env=env, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
    try:
        check(wait_for_socket(session, time.monotonic() + 10), "the receiver's dialog is published")
        sender = run(runner, [os.path.join(HERE, "sender.bas")], env)
        check(sender.stdout == "found\nnone 0.000000\nanswer 7005.000000\n",
              "the sender's output: " + repr(sender.stdout + sender.stderr))
        out, err = receiver.communicate(timeout=20)
    finally:
        if receiver.poll() is None:
            receiver.kill()
            receiver.communicate()
    check(out == "code 7.000000\ntext h\u00e9llo\nclosed\n", "the receiver's output: " + repr(out + err))
    check(receiver.returncode == 0, "the receiver's exit status %r" % receiver.returncode)
    check(not [n for n in os.listdir(session) if n.endswith(".sock")], "the dialog's socket is gone")


def silent_receiver(runner, env, session):
    """A window that accepts the message and never answers."""
    handle = (os.getpid() << 20) | 1
    path = os.path.join(session, "%d.sock" % handle)
    listener = socket.socket(socket.AF_UNIX, socket.SOCK_STREAM)
    listener.bind(path)
    listener.listen(4)
    with open(os.path.join(session, "%d.info" % handle), "w") as f:
        f.write("OBWINDOW 1\n%d\nSilent listener" % time.time_ns())
    received = []

    def serve():
        listener.settimeout(15)
        try:
            while True:
                connection, _ = listener.accept()
                connection.settimeout(5)
                data = connection.recv(4096)
                if data:   # the title lookup probes with empty connections
                    received.append((data, connection))
                    return
                connection.close()
        except OSError:
            pass

    thread = threading.Thread(target=serve)
    thread.start()
    start = time.monotonic()
    result = run(runner, ["--copydata-timeout=0.4", "-e", 'print copydata(getwindowhandle("Silent"), 3, "ab")'],
                 env)
    elapsed = time.monotonic() - start
    thread.join(20)
    check(result.stdout == "0.000000\n", "a silent receiver yields 0: " + repr(result.stdout + result.stderr))
    check(0.4 <= elapsed < 5, "the wait is the time-out (%.2f s)" % elapsed)
    if received:
        data, connection = received[0]
        version, kind, _, sender, code, length = struct.unpack("<BBHqII", data[:20])
        check((version, kind, sender, code, length) == (1, 1, 0, 3, 2), "the request frame %r" % (data,))
        check(data[20:] == "ab".encode("utf-16-le"), "the text in UTF-16")
        connection.close()
    else:
        check(False, "the silent receiver got the message")
    listener.close()
    os.unlink(path)
    os.unlink(os.path.join(session, "%d.info" % handle))


def sandboxed(runner, env):
    result = run(runner, ["--sandbox", "--on-error=continue", "-e", 'h = getwindowhandle("x")',
                          "-e", 'c = copydata(1, 2, "x")'], env)
    errors = [line for line in result.stderr.splitlines() if ": error " in line]
    check(len(errors) == 2 and all("error 21:" in e for e in errors), "sandboxed: " + repr(result.stderr))


def main():
    runner = sys.argv[1]
    with tempfile.TemporaryDirectory() as work:
        runtime = os.path.join(work, "runtime")
        os.mkdir(runtime, 0o700)
        env = dict(os.environ, XDG_RUNTIME_DIR=runtime)
        session = os.path.join(runtime, "orvobasic")
        two_processes(runner, env, session, work)
        silent_receiver(runner, env, session)
        sandboxed(runner, env)
    if failures:
        sys.exit(1)
    print("session: all passed")


if __name__ == "__main__":
    main()
