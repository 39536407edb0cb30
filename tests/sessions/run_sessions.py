#!/usr/bin/env python3
"""Plays scripted sessions against the engine.

    run_sessions.py QUELMAR FILE.session ...

A file holds sessions, each in a fresh process and an empty folder:

    = name             a new session begins
    $ bench            the command line's arguments
    ini hash 8         a line of quelmar.ini
    epd 8/8/... w      a line of the file suite.epd
    > go               types a line               (\\r, \\t and \\\\ as in C)
    >+ usermove        types without a line end, and waits a moment
    >> go\\n?\\n         types as it stands, in one write
    < bestmove e2e4    the next line is this, thinking lines aside
    ~ ^Pond \\((?P<p>.*)\\)   a later line matches; (?P<p>...) is kept for ${p} in typed and expected lines;
                       ${version} is the one of CMakeLists.txt
    ! ^Pond            from here on no line may match
    ok ^Pond           takes such a ban back
    end                closes standard input
    exit 0             the engine ends with this status; what it still says is passed over

Lines that begin with "#" and empty lines are nothing. A session that does not say how the engine ends closes
its input and wants exit status 0.
"""

import pathlib
import re
import sys
import time

from engine import Engine, Failure

ROOT = pathlib.Path(__file__).resolve().parents[2]
VERSION = re.search(r'QUELMAR_VERSION "(.*)"', (ROOT / "CMakeLists.txt").read_text(encoding="utf-8"))[1]
HALF_LINE_PAUSE = 0.05  # seconds for a half line to arrive alone; the test holds also when it does not


def read_sessions(path):
    sessions = []
    with open(path, encoding="utf-8") as file:
        for number, raw in enumerate(file, 1):
            line = raw.rstrip("\n")
            if line.startswith("= "):
                sessions.append((line[2:], []))
            elif line and not line.startswith("#"):
                word, _, rest = line.partition(" ")
                sessions[-1][1].append((number, word, rest))
    return sessions


class Session:
    def __init__(self, program, steps):
        setup = {"$": [], "ini": [], "epd": []}
        for _, word, rest in steps:
            if word in setup:
                setup[word].append(unescape(rest) if word == "epd" else rest)
        self.steps = [step for step in steps if step[1] not in setup]
        self.kept = {"version": VERSION}
        self.engine = Engine(
            program,
            arguments=" ".join(setup["$"]).split(),
            ini="\n".join(setup["ini"]) + "\n" if setup["ini"] else None,
            files={"suite.epd": "\n".join(setup["epd"]) + "\n"} if setup["epd"] else None,
        )

    def fill(self, text):
        return re.sub(r"\$\{(\w+)\}", lambda m: self.kept[m.group(1)], text)

    def run(self):
        actions = {
            ">": lambda rest: self.engine.send(unescape(self.fill(rest)) + "\n"),
            ">+": self.half_line,
            ">>": lambda rest: self.engine.send(unescape(self.fill(rest))),
            "<": lambda rest: self.engine.expect(self.fill(rest)),
            "~": lambda rest: self.kept.update(self.engine.await_match(self.fill(rest)).groupdict()),
            "!": self.engine.forbidden.append,
            "ok": self.engine.forbidden.remove,
            "end": lambda _: self.engine.end_input(),
            "exit": self.exit,
        }
        steps = list(self.steps)
        if not any(word == "exit" for _, word, _ in steps):
            steps += [(0, "end", ""), (0, "exit", "0")]
        for number, word, rest in steps:
            try:
                actions[word](rest)
            except Failure as failure:
                raise Failure("line %d, %s %s: %s" % (number, word, rest, failure)) from None

    def half_line(self, rest):
        self.engine.send(unescape(self.fill(rest)))
        time.sleep(HALF_LINE_PAUSE)

    def exit(self, status):
        while self.engine.line() is not None:
            pass
        found = self.engine.exit_status()
        if found != int(status):
            raise Failure("exit status %d" % found)


def unescape(text):
    return re.sub(r"\\(.)", lambda m: {"n": "\n", "r": "\r", "t": "\t"}.get(m.group(1), m.group(1)), text)


def main():
    program, *paths = sys.argv[1:]
    failures = 0
    for path in paths:
        for name, steps in read_sessions(path):
            session = Session(program, steps)
            with session.engine as engine:
                try:
                    session.run()
                except Failure as failure:
                    failures += 1
                    print("FAILED %s: %s\n  %s\n%s" % (path, name, failure, engine.report()))
                else:
                    print("passed", name)
    sys.exit(1 if failures else 0)


if __name__ == "__main__":
    main()
