"""The engine as a child process behind two pipes, for tests that talk to it as an interface does."""

import os
import re
import select
import shutil
import subprocess
import tempfile
import time

PATIENCE = float(os.environ.get("QUELMAR_PATIENCE", 20))  # seconds; longer than anything a test waits for, shorter than a hang

# Lines that say how the search goes; their number and content depend on the machine.
THINKING = re.compile(
    r"\s*\d+ +(-?\d+ \d+ \d+|[<>=]*\s*-?[#\d.]+ +[\d.:]+ +\d+) .*"  # xboard and console
    r"| {35}.*"  # a console line that was wrapped
    r"|info (?!string ).*"
)


class Failure(Exception):
    """The engine did not do what the test expects."""


class Engine:
    def __init__(self, program, arguments=(), ini=None, files=None, close_input=False):
        self.folder = tempfile.mkdtemp(prefix="quelmar-session-")
        for name, content in dict(files or {}).items():
            self._write(name, content)
        if ini is not None:
            self._write("quelmar.ini", ini)
        self.errors = open(os.path.join(self.folder, "stderr"), "w+b")
        command = [os.path.abspath(program), *arguments]
        if close_input:
            command = ["/bin/sh", "-c", 'exec "$0" "$@" <&-', *command]
        self.process = subprocess.Popen(
            command,
            cwd=self.folder,
            stdin=subprocess.PIPE,
            stdout=subprocess.PIPE,
            stderr=self.errors,
            bufsize=0,
            # A sanitizer shall let an absurd allocation fail as the system does.
            env=os.environ | {"ASAN_OPTIONS": "allocator_may_return_null=1"},
        )
        self.unread = b""
        self.seen = []  # every line so far, for reports
        self.forbidden = []

    def _write(self, name, content):
        with open(os.path.join(self.folder, name), "wb") as file:
            file.write(content if isinstance(content, bytes) else content.encode())

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

    def send(self, text):
        """Writes as it stands, line ends included, in one go."""
        data = text if isinstance(text, bytes) else text.encode()
        deadline = time.monotonic() + PATIENCE
        output = self.process.stdout
        while data:
            # Both pipes may be full: taking the output in keeps the engine going.
            sources = [] if output.closed else [output]
            patience = max(0, deadline - time.monotonic())
            readable, writable, _ = select.select(sources, [self.process.stdin], [], patience)
            if not readable and not writable:
                raise Failure("the engine does not read its input")
            if readable:
                chunk = os.read(output.fileno(), 65536)
                self.unread += chunk
                if not chunk:
                    raise Failure("the engine is gone")
            if writable:
                try:
                    data = data[os.write(self.process.stdin.fileno(), data[:4096]) :]
                except BrokenPipeError:
                    raise Failure("the engine is gone") from None

    def say(self, *lines):
        self.send("".join(line + "\n" for line in lines))

    def line(self, patience=PATIENCE):
        """The next line of output without its line end; None at the end of the output."""
        deadline = time.monotonic() + patience
        while b"\n" not in self.unread:
            ready, _, _ = select.select([self.process.stdout], [], [], max(0, deadline - time.monotonic()))
            if not ready:
                raise Failure("no output for %g seconds" % patience)
            chunk = os.read(self.process.stdout.fileno(), 65536)
            if not chunk:
                return None
            self.unread += chunk
        raw, self.unread = self.unread.split(b"\n", 1)
        text = raw.decode(errors="replace")
        self.seen.append(text)
        for pattern in self.forbidden:
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
        while True:
            text = self.line()
            if text is None:
                raise Failure("the output ended before " + pattern)
            match = re.search(pattern, text)
            if match:
                return match

    def sync(self, number=99):
        """Waits until everything said so far has been read."""
        self.say("ping %d" % number)
        self.await_match("^pong %d$" % number)

    def end_input(self):
        self.process.stdin.close()

    def exit_status(self, patience=PATIENCE):
        try:
            return self.process.wait(patience)
        except subprocess.TimeoutExpired:
            raise Failure("the engine does not end") from None

    def report(self):
        self.errors.seek(0)
        tail = "\n".join("    " + line for line in self.seen[-30:])
        complaints = self.errors.read().decode(errors="replace")
        return "last lines of output:\n%s\nstandard error:\n%s" % (tail, complaints[-4000:])
