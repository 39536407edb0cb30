#!/usr/bin/env python3
"""A storm of commands: every command in any order, with arguments nobody would send, however they are cut.

    storm.py QUELMAR [--rounds N] [--seconds N] [--seed N]

A round is one process. It is led into a state, is sent bursts of commands with hostile arguments, in pieces that end
anywhere, with LF or CR LF, with bytes of every value and with lines of a megabyte, and then has to answer a question
and to find a move. At last its input ends, its output is closed, or it is told to quit, in whatever state it is; it
has to be gone with exit status 0 (by the signal when it wrote to a pipe that nobody reads). Commands, arguments and
states are in storm.ini. A seed always says the same, though not at the same moment of a search. A program called
quelmar-uci is spoken to in UCI only.
"""

import argparse
import configparser
import pathlib
import random
import signal
import sys
import time

HERE = pathlib.Path(__file__).resolve().parent
sys.path.insert(0, str(HERE.parent / "sessions"))
from engine import Engine, Failure  # noqa: E402

read = configparser.ConfigParser(interpolation=None, delimiters="=")
read.optionxform = str
read.read(HERE / "storm.ini")
WORDS, STATES = ({name: text.replace("\n", "").split("|") for name, text in read[part].items()}
                 for part in ("storm", "states"))
POSITIONS, MOVES, NUMBERS = WORDS["positions"], WORDS["moves"], WORDS["numbers"]
ENDINGS = {"input ends": "", "half a line": "usermove e2", "quit": "quit\n", "output closed": "\nping 1\nisready\n"}


def argument(chance):
    def some(texts, most, between=" "):
        return between.join(chance.choice(texts) for _ in range(chance.randrange(most)))

    kinds = (
        lambda: chance.choice(NUMBERS),
        lambda: some(NUMBERS, 8),
        lambda: some(NUMBERS, 5, ":"),
        lambda: chance.choice(MOVES),
        lambda: chance.choice(POSITIONS),
        lambda: chance.choice(POSITIONS) + " moves " + some(MOVES, 300),
        lambda: chance.randbytes(chance.randrange(60)),
        lambda: chance.choice(("9", "e2e4 ", "K", "/", "\0", " ", b"\xff")) * (1 << 20),
        lambda: "",
    )
    text = chance.choices(kinds, (120, 40, 40, 80, 40, 40, 40, 1, 79))[0]()
    return b" " + (text if isinstance(text, bytes) else text.encode())


def line(chance, words):
    word = chance.choice(words).encode()
    if chance.randrange(20) == 0:
        word = word[:chance.randrange(len(word) + 1)]
    text = word + argument(chance) + (b"\r\n" if chance.randrange(5) == 0 else b"\n")
    # The end of the process has its own place.
    return b"\n" if text.startswith(b"quit") else text


def blow(engine, chance, words):
    """Sends lines in pieces, cut anywhere, mostly between bursts; returns how many searches UCI may have to stop."""
    lines = [line(chance, words) for _ in range(chance.randrange(1, 40))]
    data = b"".join(lines)
    while data:
        size = len(data) if chance.randrange(3) else chance.randrange(1, len(data) + 1)
        engine.send(data[:size])
        data = data[size:]
        if chance.randrange(4) == 0:
            time.sleep(chance.random() * 0.05)
    return sum(text.startswith(b"go") for text in lines)


def play(engine, searches):
    """Ends whatever goes on and wants a move."""
    if "readyok" in engine.ask():
        engine.ask(*["stop"] * (searches + 1))
        engine.say("setoption name Hash value 2", "ucinewgame", "position startpos", "go depth 1")
        engine.await_match("^bestmove (e2e|d2d|b1c|g1f)")
    else:
        engine.say("force", "?", "level 40 5 0", "new", "easy", "st 0", "usermove e2e4")
        engine.await_match("^move ")


def end(engine, ending):
    if ending == "output closed":
        engine.end_output()
    engine.send(ENDINGS[ending])
    if ending in ("input ends", "half a line"):
        engine.end_input()
    status = engine.exit_status()
    if status not in (0, -signal.SIGPIPE):
        raise Failure("exit status %d" % status)


def one_round(program, seed):
    chance = random.Random(seed)
    state = chance.choice([name for name in STATES if name.startswith("UCI") or not program.endswith("-uci")])
    in_uci = state.startswith("UCI")
    ending = chance.choice(list(ENDINGS))
    with Engine(program) as engine:
        try:
            engine.say(*STATES[state])
            words = WORDS["uci"] if in_uci else WORDS["xboard"] + ["uci"] * (chance.randrange(8) == 0)
            searches = 1 + sum(blow(engine, chance, words) for _ in range(chance.randrange(1, 5)))
            engine.say("")
            play(engine, searches)
            # "new" and "stop" would bring it into another state; it has to end in this one.
            if chance.randrange(2):
                engine.say("go infinite" if in_uci else "analyze")
            end(engine, ending)
        except Failure as failure:
            sys.exit("storm: seed %d, %s while %s: %s\n%s" % (seed, ending, state, failure, engine.report()))


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("program")
    parser.add_argument("--rounds", type=int, default=12)
    parser.add_argument("--seconds", type=float, default=0, help="go on for so long")
    parser.add_argument("--seed", type=int, default=1)
    options = parser.parse_args()
    start, rounds = time.monotonic(), 0
    while rounds < options.rounds or time.monotonic() - start < options.seconds:
        one_round(options.program, options.seed + rounds)
        rounds += 1
    print("storm: %d rounds" % rounds)


if __name__ == "__main__":
    main()
