"""The engine as a child process behind two pipes, for tests that talk to it as an interface does.

It cannot hurt the machine: its address space is limited, so that absurd sizes have to fall back. Sanitizers reserve
terabytes of addresses; there the allocator keeps the limit.
"""

import collections
import functools
import os
import pathlib
import pty
import re
import resource
import select
import shutil
import subprocess
import tempfile
import time

MEMORY_MB = 2048
PATIENCE = 20.0  # seconds; longer than anything a test waits for, shorter than a hang
SLOWER = 10  # times, under a sanitizer or memcheck
LINES_KEPT = 10000

# Lines that say how the search goes; their number and content depend on the machine.
THINKING = re.compile(
    r"\s*\d+ +(-?\d+ \d+ \d+|[<>=]*\s*-?[#\d.]+ +[\d.:]+ +\d+) .*"  # xboard and console
    r"| {35}.*"  # a console line that was wrapped
    r"|info (?!string ).*"
)
COMPLAINTS = re.compile(r"Illegal piece|Sanitizer: |runtime error|Assertion|terminate called")


class Failure(Exception):
    """The engine did not do what the test expects."""


@functools.cache
def is_sanitized(program):
    return b"__asan_init" in pathlib.Path(program).read_bytes()


class Engine:
    """`files` are written into the empty folder it runs in; `under` is a command to run it with, such as memcheck.
    It reads a pipe, a terminal, or nothing at all."""

    def __init__(self, program, arguments=(), files=None, close_input=False, terminal=False, memory_mb=MEMORY_MB,
                 under=()):
        self.folder = tempfile.mkdtemp(prefix="quelmar-session-")
        for name, content in (files or {}).items():
            path = pathlib.Path(self.folder, name)
            path.parent.mkdir(exist_ok=True)
            path.write_text(content)
        self.errors = open(os.path.join(self.folder, "stderr"), "w+b")
        command = [*under, os.path.abspath(program), *arguments]
        if close_input:
            command = ["/bin/sh", "-c", 'exec "$0" "$@" <&-', *command]
        watched = bool(under) or is_sanitized(program)
        self.patience = PATIENCE * SLOWER if watched else PATIENCE

        def confine():
            resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
            if not watched:
                resource.setrlimit(resource.RLIMIT_AS, (memory_mb << 20, memory_mb << 20))

        options = "allocator_may_return_null=1:max_allocation_size_mb=%d" % MEMORY_MB
        ours, its = pty.openpty() if terminal else (None, subprocess.PIPE)
        self.process = subprocess.Popen(
            command, cwd=self.folder, stdin=its, stdout=subprocess.PIPE, stderr=self.errors, bufsize=0,
            preexec_fn=confine, env=os.environ | {"ASAN_OPTIONS": options, "XDG_CONFIG_HOME": self.folder})
        if terminal:
            os.close(its)
            self.process.stdin = open(ours, "wb", buffering=0)
        self.unfinished = b""
        self.unread = collections.deque()  # whole lines
        self.at_end = False
        self.seen = collections.deque(maxlen=LINES_KEPT)  # lines so far
        self.forbidden = []

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.process.kill()
        self.process.wait()
        for stream in (self.process.stdin, self.process.stdout, self.errors):
            try:
                stream.close()
            except BrokenPipeError:
                pass
        shutil.rmtree(self.folder, ignore_errors=True)

    def _take_in(self):
        chunk = os.read(self.process.stdout.fileno(), 1 << 16)
        self.at_end = not chunk
        *lines, self.unfinished = (self.unfinished + chunk).split(b"\n")
        self.unread.extend(lines)

    def send(self, text):
        """Writes as it stands, line ends included, in one go."""
        data = text if isinstance(text, bytes) else text.encode(errors="surrogateescape")
        deadline = time.monotonic() + self.patience
        output = self.process.stdout
        while data:
            # Both pipes may be full: taking the output in keeps the engine going.
            sources = [] if output.closed or self.at_end else [output]
            patience = max(0, deadline - time.monotonic())
            readable, writable, _ = select.select(sources, [self.process.stdin], [], patience)
            if not readable and not writable:
                raise Failure("the engine does not read its input")
            if readable:
                self._take_in()
            if writable:
                try:
                    data = data[os.write(self.process.stdin.fileno(), data[:4096]):]
                except BrokenPipeError:
                    raise Failure("the engine is gone") from None

    def say(self, *lines):
        self.send("".join(line + "\n" for line in lines))

    def line(self, patience=None):
        """The next line of output without its line end; None at the end of the output."""
        patience = self.patience if patience is None else patience
        deadline = time.monotonic() + patience
        while not self.unread:
            if self.at_end:
                return None
            if not select.select([self.process.stdout], [], [], max(0, deadline - time.monotonic()))[0]:
                raise Failure("no output for %g seconds" % patience)
            self._take_in()
        text = self.unread.popleft().decode(errors="replace")
        self.seen.append(text)
        for pattern in (COMPLAINTS, *self.forbidden):
            if re.search(pattern, text):
                raise Failure("a line that must not come: " + text)
        return text

    def answer(self):
        """The next line that is no thinking line."""
        while True:
            text = self.line()
            if text is None or not THINKING.fullmatch(text):
                return text

    def expect(self, wanted):
        """The next line, thinking lines aside, is exactly this."""
        text = self.answer()
        if text != wanted:
            raise Failure("wanted %r, got %r" % (wanted, text))

    def await_match(self, pattern):
        """Passes over lines until one matches; returns the match."""
        deadline = time.monotonic() + self.patience
        while (text := self.line(max(0, deadline - time.monotonic()))) is not None:
            match = re.search(pattern, text)
            if match:
                return match
        raise Failure("the output ended before " + pattern)

    def ask(self, *lines):
        """Says the lines and waits until all has been read, under either protocol; returns what was printed."""
        self.seen.clear()
        self.say(*lines, "ping 271828", "isready")
        self.await_match("^(pong 271828|readyok)$")
        return "\n".join(self.seen)

    def end_input(self):
        self.process.stdin.close()

    def end_output(self):
        """Closes our end of it."""
        self.process.stdout.close()
        self.at_end = True

    def exit_status(self):
        """Passes over what it still says and waits for its end."""
        deadline = time.monotonic() + self.patience
        while self.line(max(0, deadline - time.monotonic())) is not None:
            pass
        try:
            status = self.process.wait(max(0, deadline - time.monotonic()))
        except subprocess.TimeoutExpired:
            raise Failure("the engine does not end") from None
        if COMPLAINTS.search(self.complaints()):
            raise Failure("complaints on standard error")
        return status

    def complaints(self):
        self.errors.seek(0)
        return self.errors.read().decode(errors="replace")

    def report(self):
        tail = "\n".join("    " + line[:200] for line in list(self.seen)[-30:])
        return "last lines of output:\n%s\nstandard error:\n%s" % (tail, self.complaints()[-4000:])
