#!/usr/bin/env python3
"""The other side goes away: its writing end, its reading end, or it never was there. Or it is a person.

    ends.py QUELMAR [OTHER PROGRAM ...]
"""

import os
import pty
import signal
import subprocess
import sys

from engine import Engine, Failure

SOON = 5.0  # seconds; it takes milliseconds unless the machine is very busy

# name: what is said, the line to wait for, a question that makes the engine write
STATES = {
    "idle": (["force"], None, "ping 1"),
    "thinking": (["easy", "st 1000", "go"], "^2 ", "ping 1"),
    "pondering": (["st 0", "usermove e2e4"], r"^Pondering \(", "ping 1"),
    "analysing": (["analyze"], "^2 ", "ping 1"),
    "analysing a solved position": (["setboard 7k/8/6K1/8/8/8/8/R7 w", "analyze"], "^2 ", "ping 1"),
    "benchmark": (["bench"], "^2 ", "ping 1"),
    "UCI idle": (["uci"], "^uciok$", "isready"),
    "UCI infinite": (["uci", "go infinite"], "^info depth 2 ", "isready"),
    "UCI pondering": (["uci", "go ponder wtime 1000 btime 1000"], "^info depth 2 ", "isready"),
}

SUITE = "7k/8/6K1/8/8/8/8/R7 w - - first\n7k/8/6K1/8/8/8/8/Q7 w - - second\n"


def enter(engine, state):
    commands, sign, _ = STATES[state]
    engine.say("xboard", *commands)
    if sign:
        engine.await_match(sign)


def input_ends(program, state):
    with Engine(program) as engine:
        enter(engine, state)
        engine.end_input()
        while engine.line() is not None:
            pass
        status = engine.exit_status(SOON)
        if status != 0:
            raise Failure("exit status %d\n%s" % (status, engine.report()))


def output_ends(program, state):
    with Engine(program) as engine:
        enter(engine, state)
        engine.process.stdout.close()
        try:
            engine.say(STATES[state][2])
        except Failure:
            pass  # gone already
        status = engine.exit_status(SOON)
        if status not in (0, -signal.SIGPIPE):
            raise Failure("exit status %d" % status)


def batch_without_input(program, close_input):
    with Engine(program, ["test", "suite.epd", "0"], files={"suite.epd": SUITE}, close_input=close_input) as engine:
        engine.end_input()
        for pattern in (" first$", " second$", "nodes searched", "nodes per second"):
            engine.await_match(pattern)
        if engine.exit_status(SOON) != 0:
            raise Failure("exit status %d" % engine.exit_status())
    with Engine(program, ["bench"], close_input=close_input) as engine:
        engine.end_input()
        engine.await_match("^ *3 ")


def command_line(program):
    """Questions are answered on standard output, unknown options refused, and a terminal is told what it looks at."""
    def run(*arguments, terminal=False):
        master, slave = pty.openpty()
        os.write(master, b"quit\n\x04")
        ran = subprocess.run([program, *arguments], stdin=slave if terminal else subprocess.DEVNULL, text=True,
                             capture_output=True, timeout=60, check=False)
        os.close(master)
        os.close(slave)
        return ran.returncode, ran.stdout, ran.stderr

    name = os.path.basename(program)
    for option, begin in (("-h", "usage: " + name), ("--help", "usage: " + name), ("-V", name), ("--version", name)):
        status, said, errors = run(option)
        if status or errors or not said.startswith(begin):
            sys.exit("%s %s: %s" % (name, option, (status, said, errors)))
    if run("--nonsense")[0] != (0 if name == "quelmar" else 2):
        sys.exit(name + ": wrong status for an unknown option")
    if name.startswith("quelmar") and (run()[2] or "--help" not in run(terminal=True)[2]):
        sys.exit(name + ": no word to a terminal, or one to a pipe")


def main():
    program = sys.argv[1]
    for other in sys.argv[1:]:
        command_line(other)
    for state in STATES:
        for check in (input_ends, output_ends):
            try:
                check(program, state)
            except Failure as failure:
                sys.exit("%s while %s: %s" % (check.__name__, state, failure))
    for close_input in (False, True):
        batch_without_input(program, close_input)


if __name__ == "__main__":
    main()
