"""Engines that cannot hurt the machine, and that are watched more closely than in the sessions."""

import os
import pathlib
import resource
import select
import signal
import subprocess
import sys
import tempfile
import threading
import time

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "sessions"))
from engine import Engine, Failure  # noqa: E402,F401  (for those who import this module)

MEMORY = 2 << 30  # bytes of address space; absurd hash sizes must fall back
PATIENCE = 60.0  # seconds, for a machine that is busy with other things
COMPLAINTS = (b"Illegal piece", b"Sanitizer: ", b"runtime error", b"Assertion", b"terminate called")


def is_sanitized(program):
    return b"__asan_init" in pathlib.Path(program).read_bytes()


def environment(most_megabytes=512):
    """Sanitizers reserve terabytes of addresses, so there the allocator keeps the limit."""
    options = "allocator_may_return_null=1:detect_leaks=0:max_allocation_size_mb=%d" % most_megabytes
    return dict(os.environ, ASAN_OPTIONS=options)


def confine(program, memory=MEMORY):
    """What a new process has to do before it becomes the engine."""
    sanitized = is_sanitized(program)

    def prepare():
        resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
        if not sanitized:
            resource.setrlimit(resource.RLIMIT_AS, (memory, memory))

    return prepare


class Watched:
    """An engine whose output is read all the time, as by an interface with a thread of its own."""

    def __init__(self, program, folder=None):
        self.folder = folder or tempfile.TemporaryDirectory(prefix="quelmar-robust-")
        self.errors = open(os.path.join(self.folder.name, "stderr"), "w+b")
        self.process = subprocess.Popen(
            [os.path.abspath(program)], cwd=self.folder.name, stdin=subprocess.PIPE, stdout=subprocess.PIPE,
            stderr=self.errors, bufsize=0, preexec_fn=confine(program), env=environment())
        self.news = threading.Condition()
        self.tail = b""  # of the output
        self.found = set()  # complaints
        self.listening = True
        self.reader = threading.Thread(target=self._read, daemon=True)
        self.reader.start()

    def _read(self):
        stream = self.process.stdout.fileno()
        while self.listening:
            if not select.select([stream], [], [], 0.1)[0]:
                continue
            chunk = os.read(stream, 1 << 16)
            if not chunk:
                return
            with self.news:
                self.tail = (self.tail + chunk)[-(1 << 18):]
                self.found.update(c for c in COMPLAINTS if c in self.tail)
                self.news.notify_all()

    def send(self, data):
        """False when the engine is gone."""
        try:
            while data:
                data = data[os.write(self.process.stdin.fileno(), data):]
        except BrokenPipeError:
            return False
        return True

    def stop_listening(self):
        """Closes our end of its output."""
        self.listening = False
        self.reader.join(PATIENCE)
        self.process.stdout.close()

    def forget(self):
        """What has been printed up to now answers no later question."""
        with self.news:
            self.tail = b""

    def await_text(self, *wanted):
        with self.news:
            if not self.news.wait_for(lambda: any(text in self.tail for text in wanted), PATIENCE):
                raise Failure("no answer for %g seconds" % PATIENCE)

    def end(self, expected=(0,)):
        """Waits for the end of the process; returns the seconds it took."""
        start = time.monotonic()
        try:
            status = self.process.wait(PATIENCE)
        except subprocess.TimeoutExpired:
            raise Failure("the engine does not end") from None
        seconds = time.monotonic() - start
        self.reader.join(PATIENCE)
        self.check()
        if status not in expected:
            raise Failure("exit status %d" % status)
        return seconds

    def check(self):
        self.errors.seek(0)
        complaints = self.errors.read()
        if self.found or any(c in complaints for c in COMPLAINTS):
            raise Failure("complaints: %s" % self.found)

    def kill(self):
        self.process.kill()
        self.process.wait()
        self.reader.join(PATIENCE)
        for stream in (self.process.stdin, self.process.stdout):
            try:
                stream.close()
            except BrokenPipeError:
                pass

    def report(self):
        self.errors.seek(0)
        return "last output:\n%s\nstandard error:\n%s" % (
            self.tail[-3000:].decode(errors="replace"), self.errors.read().decode(errors="replace")[-6000:])


BROKEN_PIPE = (0, -signal.SIGPIPE)
