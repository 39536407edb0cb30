#!/usr/bin/env python3
"""Plays scripted sessions against the engine.

    run_sessions.py QUELMAR FILE.session ... [NAME=TEXT ...] [--memcheck]

docs/testing.md tells what a file of sessions holds. With --memcheck the engine runs under valgrind, which ends it with
a status of its own on the first wrong access; exit status 77 where that cannot be.
"""

import itertools
import pathlib
import re
import shutil
import sys
import time

from engine import MEMORY_MB, Engine, Failure, is_sanitized

ROOT = pathlib.Path(__file__).resolve().parents[2]
NOT_HERE = 77  # exit status that ctest takes for "skipped"
HALF_LINE_PAUSE = 0.05  # seconds for a half line to arrive alone; the test holds also when it does not
MEMCHECK = ("valgrind", "--quiet", "--error-exitcode=99", "--leak-check=full", "--errors-for-leak-kinds=definite")
SETUP = ("$", "ini", "home", "epd", "memory", "no", "not", "terminal", "each", "|", "rows")


def fill(text, kept):
    while (filled := re.sub(r"\$\{(\w+)\}", lambda m: kept[m[1]], text)) != text:
        text = filled
    return text


def unescape(text):
    text = re.sub(r"\\\{(\d+):([^}]*)\}", lambda m: int(m[1]) * m[2], text)

    def char(match):
        if match[2]:
            return bytes.fromhex(match[2]).decode(errors="surrogateescape")
        return {"n": "\n", "r": "\r", "t": "\t"}.get(match[1], match[1])

    return re.sub(r"\\(x(..)|.)", char, text, flags=re.DOTALL)


def read_lines(path):
    """Number, first word and rest of each line that is something."""
    for number, raw in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
        if raw.endswith((" ", "\t")):
            raise SystemExit(f"{path}:{number} ends in a blank that nobody sees; write it as ·")
        if raw and not raw.startswith("#"):
            word, _, rest = raw.partition(" ")
            yield number, word, rest[:-1] + " " if rest.endswith("·") else rest


def read_sessions(path, told):
    """What the file's names stand for, and its sessions: name, setup and steps."""
    cmake = (ROOT / "CMakeLists.txt").read_text(encoding="utf-8")
    kept, sessions = {"version": re.search(r'QUELMAR_VERSION "(.*)"', cmake)[1]}, []
    for number, word, rest in read_lines(path):
        if word == "let":
            name, _, kept[name] = rest.partition(" ")
        elif word == "=":
            sessions.append((rest, [], []))
        else:
            sessions[-1][1 if word in SETUP else 2].append((number, word, rest))
    return kept | told, sessions


def variants(path, setup, kept):
    """What the names stand for in every combination of the tables' rows."""
    tables = []
    for _, word, rest in setup:
        if word == "each":
            tables.append((rest.split(), []))
        elif word in ("|", "rows"):
            rows = [rest] if word == "|" else [row for _, _, row in read_lines(path.with_name(fill(rest, kept)))]
            names = tables[-1][0]
            tables[-1][1].extend(dict(zip(names, row.split(" | ", len(names) - 1), strict=True)) for row in rows)
    for combination in itertools.product(*(rows for _, rows in tables)):
        yield dict(kept, **{name: text for row in combination for name, text in row.items()})


class Session:
    def __init__(self, program, setup, steps, kept, under=()):
        given = {word: [fill(rest, kept) for _, one, rest in setup if one == word] for word in SETUP}
        self.kept = kept
        self.lines_of_log = None
        self.steps = list(steps)
        if not any(word in ("exit", "kill") for _, word, _ in steps):
            self.steps += [(0, "end", ""), (0, "exit", "0")]
        files = {"quelmar.ini": given["ini"], "quelmar/quelmar.ini": given["home"],
                 "suite.epd": [unescape(line) for line in given["epd"]]}
        self.engine = Engine(
            program,
            arguments=" ".join(given["$"]).split(),
            files={name: "\n".join(lines) + "\n" for name, lines in files.items() if lines},
            close_input=bool(given["no"]),
            terminal=bool(given["terminal"]),
            memory_mb=int(given["memory"][0]) if given["memory"] else MEMORY_MB,
            under=under,
        )

    def run(self):
        engine = self.engine
        actions = {
            ">": lambda rest: engine.send(unescape(rest) + "\n"),
            ">+": self.half_line,
            ">>": lambda rest: engine.send(unescape(rest)),
            ">?": self.type_to_the_dead,
            "<": engine.expect,
            "~": lambda rest: self.kept.update(engine.await_match(rest).groupdict()),
            "list": self.list_words,
            "!": engine.forbidden.append,
            "ok": engine.forbidden.remove,
            "log": self.log,
            "end": lambda _: engine.end_input(),
            "deaf": lambda _: engine.end_output(),
            "exit": self.exit,
            "quiet": self.quiet,
            "kill": lambda _: None,
        }
        for number, word, rest in self.steps:
            try:
                actions[word](fill(rest, self.kept))
            except Failure as failure:
                raise Failure("line %d, %s %s: %s" % (number, word, rest, failure)) from None

    def log(self, pattern):
        if self.lines_of_log is None:
            self.lines_of_log = iter(pathlib.Path(self.engine.folder, "out.log").read_text("utf-8").splitlines())
        if not any(re.search(pattern, line) for line in self.lines_of_log):
            raise Failure("no such line in the log file")

    def half_line(self, rest):
        self.engine.send(unescape(rest))
        time.sleep(HALF_LINE_PAUSE)

    def type_to_the_dead(self, rest):
        try:
            self.engine.send(unescape(rest) + "\n")
        except Failure as failure:
            if "gone" not in str(failure):
                raise

    def list_words(self, rest):
        name, _, pattern = rest.partition(" ")
        self.engine.await_match(pattern)
        words = list(itertools.takewhile(re.compile(r"\S{2,5}").fullmatch, iter(self.engine.line, None)))
        self.kept[name] = "|".join(words) or "0000"  # what UCI says without a move

    def exit(self, endings):
        found = self.engine.exit_status()
        said = "\n".join(self.engine.seen) + self.engine.complaints()
        for ending in endings.split(" | "):
            status, _, pattern = ending.partition(" ")
            if found == int(status) and re.search(pattern, said, re.MULTILINE):
                return
        raise Failure("exit status %d" % found)

    def quiet(self, _):
        if self.engine.complaints():
            raise Failure("something on standard error")


def play(path, program, told, under):
    """The number of sessions that failed."""
    kept, sessions = read_sessions(path, told)
    failures = 0
    for name, setup, steps in sessions:
        if is_sanitized(program) and any(word == "not" for _, word, _ in setup):
            continue
        for chosen in variants(path, setup, kept):
            session = Session(program, setup, steps, chosen, under)
            with session.engine as engine:
                try:
                    session.run()
                except Failure as failure:
                    failures += 1
                    print("FAILED %s: %s\n  %s\n%s" % (path, fill(name, chosen), failure, engine.report()))
                else:
                    print("passed", fill(name, chosen))
    return failures


def main():
    options = [word for word in sys.argv[1:] if word.startswith("--")]
    program, *words = [word for word in sys.argv[1:] if word not in options]
    told = dict(word.split("=", 1) for word in words if "=" in word) | {"program": pathlib.Path(program).name}
    if options and (not shutil.which(MEMCHECK[0]) or is_sanitized(program)):
        print("no valgrind, or a program that watches itself")
        return NOT_HERE
    paths = [pathlib.Path(word) for word in words if "=" not in word]
    return 1 if sum(play(path, program, told, MEMCHECK if options else ()) for path in paths) else 0


if __name__ == "__main__":
    sys.exit(main())
