#!/usr/bin/env python3
"""A storm of commands: every command in any order, with arguments nobody would send, however they are cut.

    storm.py QUELMAR [--rounds N] [--seconds N] [--seed N]

A round is one process. It is led into a state (idle, thinking, pondering, analysing, under either protocol), is sent
bursts of commands with hostile arguments, in pieces that end anywhere, with LF or CR LF, with bytes of every value and
with lines of a megabyte, and then has to answer a question and to find a move. At last its input ends, its output is
closed, or it is told to quit, in whatever state it is; it has to be gone within a second with exit status 0 (by the
signal when it wrote to a pipe that nobody reads). A seed always says the same, though not at the same moment of a
search. A program called quelmar-uci is spoken to in UCI only.
"""

import argparse
import random
import sys
import time

from confined import BROKEN_PIPE, Failure, Watched

SOON = 1.0  # seconds

XBOARD_WORDS = (
    "xboard ics protover rejected accepted diagram eval bench new post nopost random force analyze . easy hard go time "
    "otim level st undo remove usermove ping draw result computer setboard hint ? stop isready unknown"
).split()
UCI_WORDS = (
    "debug|debug on|debug off|isready|position|position startpos|position startpos moves|position fen|ucinewgame|go|"
    "go infinite|go ponder|go depth|go movetime|go wtime|go btime|go movestogo|setoption|setoption name|stop|ponderhit|"
    "uci|unknown|setoption name Hash value|setoption name Style value|setoption name Selectivity value|"
    "setoption name Checks in qsearch value|setoption name Nullmove reduction factor value|"
    "setoption name NalimovPath value|setoption name NalimovCache value|setoption name UCI_ShowCurrLine value true|"
    "setoption name UCI_ShowRefutations value true|setoption name Internal iterative deepening value"
).split("|")

POSITIONS = (
    "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1",
    "bqnbrkrn/pppppppp/8/8/8/8/PPPPPPPP/BQNBRKRN w KQkq - 0 1",
    "qqqqkqqq/qqqqqqqq/8/8/8/8/QQQQQQQQ/QQQQKQQQ w - -", "7k/8/6K1/8/8/8/8/R7 w - -", "8/8/8/3Kk3/8/8/8/8 b - -",
    "PPPPkPPP/PPPPPPPP/8/8/8/8/pppppppp/ppppKppp b - -", "r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 0 1", "k7/8/K7/8/8/8/8/8 b - -",
    "8/8/8/8/8/8/8/8 w", "kkkkkkkk/8/8/8/8/8/8/K7 w - -", "99999999/9/9/9/9/9/9/9 w", "4k3/8/8/8/8/8/8/4K3 x",
)
MOVES = ("e2e4", "e7e5", "g1f3", "d7d5", "O-O", "O-O-O", "e7e8q", "a9z0", "0000", "-", "e2", "e2e4e2e4", "h1g1", "e1g1")
NUMBERS = ("0", "-1", "1", "7", "99999999999999999999", "-99999999999999999999", "2147483647", "-2147483648", "4294967296",
           "1.5", "1e9", "0x10", "+3", "NaN", "")

STATES = {
    "xboard idle": b"xboard\nforce\n",
    "xboard thinking": b"xboard\nst 1000\ngo\n",
    "xboard pondering": b"xboard\nst 0\nusermove e2e4\n",
    "xboard analysing": b"xboard\nanalyze\n",
    "console playing": b"usermove d2d4\n",
    "UCI idle": b"uci\n",
    "UCI infinite": b"uci\nposition startpos moves e2e4\ngo infinite\n",
    "UCI pondering": b"uci\ngo ponder wtime 1000 btime 1000\n",
    "UCI playing": b"uci\ngo wtime 60000 btime 60000\n",
}


class Weather:
    def __init__(self, seed):
        self.chance = random.Random(seed)
        self.searches = 1  # that UCI may have to stop

    def argument(self):
        chance = self.chance
        kind = chance.randrange(12)
        if kind < 3:
            return b" " + chance.choice(NUMBERS).encode()
        if kind == 3:
            return b" " + b" ".join(chance.choice(NUMBERS).encode() for _ in range(chance.randrange(8)))
        if kind == 4:
            return b" " + b":".join(chance.choice(NUMBERS).encode() for _ in range(4))
        if kind < 7:
            return b" " + chance.choice(MOVES).encode()
        if kind == 7:
            moves = b" ".join(chance.choice(MOVES).encode() for _ in range(chance.randrange(300)))
            return b" " + chance.choice(POSITIONS).encode() + b" moves " + moves
        if kind == 8:
            return b" " + chance.choice(POSITIONS).encode()
        if kind == 9:
            return bytes(chance.randrange(256) for _ in range(chance.randrange(60)))
        if kind == 10 and chance.randrange(40) == 0:
            return b" " + chance.choice((b"9", b"e2e4 ", b"K", b"/", b"\0", b" ", b"\xff")) * (1 << 20)
        return b""

    def line(self, words):
        chance = self.chance
        word = chance.choice(words).encode()
        if chance.randrange(20) == 0:
            word = word[: chance.randrange(len(word) + 1)]
        line = word + self.argument() + (b"\r\n" if chance.randrange(5) == 0 else b"\n")
        # The end of the process has its own place.
        return b"\n" if line.startswith(b"quit") else line

    def burst(self, words):
        lines = [self.line(words) for _ in range(self.chance.randrange(1, 40))]
        self.searches += sum(line.startswith(b"go") for line in lines)
        return b"".join(lines)

    def pieces(self, data):
        """Cuts anywhere, mostly between lines."""
        chance = self.chance
        while data:
            if chance.randrange(3):
                size = len(data)
            else:
                size = chance.randrange(1, len(data) + 1)
            yield data[:size]
            data = data[size:]


def ask(engine):
    """Whatever the state and the protocol, one of these has to be answered."""
    if not engine.send(b"\nping 271828\nisready\n"):
        raise Failure("the engine is gone")
    engine.await_text(b"pong 271828", b"readyok")


def play(engine, weather):
    """Ends whatever goes on and wants a move."""
    uci = b"readyok" in engine.tail
    engine.forget()
    if uci:
        engine.send(b"stop\n" * (weather.searches + 1))
        engine.send(b"setoption name Hash value 2\nucinewgame\nposition startpos\ngo depth 1\n")
        engine.await_text(b"bestmove e2e", b"bestmove d2d", b"bestmove b1c", b"bestmove g1f")
    else:
        engine.send(b"force\n?\nlevel 40 5 0\nnew\neasy\nst 0\nusermove e2e4\n")
        engine.await_text(b"\nmove ")


def one_round(program, seed):
    """Returns the seconds that the end took, and how it came."""
    weather = Weather(seed)
    chance = weather.chance
    only_uci = program.endswith("-uci")
    state = chance.choice([name for name in STATES if name.startswith("UCI") or not only_uci])
    engine = Watched(program)
    try:
        engine.send(STATES[state])
        for _ in range(chance.randrange(1, 5)):
            words = UCI_WORDS if state.startswith("UCI") else XBOARD_WORDS + ["uci"] * (chance.randrange(8) == 0)
            for piece in weather.pieces(weather.burst(words)):
                if not engine.send(piece):
                    raise Failure("the engine is gone")
                if chance.randrange(4) == 0:
                    time.sleep(chance.random() * 0.05)
        ask(engine)
        play(engine, weather)
        ending = chance.choice(("input ends", "half a line", "quit", "output closed"))
        # "new" and "stop" would bring it into another state; it has to end in this one.
        if chance.randrange(2):
            engine.send(b"analyze\n" if not state.startswith("UCI") else b"go infinite\n")
        if ending == "quit":
            engine.send(b"quit\n")
        elif ending == "output closed":
            engine.stop_listening()
            engine.send(b"\nping 1\nisready\n")
        elif ending == "half a line":
            engine.send(b"usermove e2")
        if ending in ("input ends", "half a line"):
            engine.process.stdin.close()
        return engine.end(BROKEN_PIPE), "seed %d, %s while %s" % (seed, ending, state)
    except Failure as failure:
        sys.exit("storm: seed %d, %s: %s\n%s" % (seed, state, failure, engine.report()))
    finally:
        engine.kill()


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("program")
    parser.add_argument("--rounds", type=int, default=12)
    parser.add_argument("--seconds", type=float, default=0, help="go on for so long")
    parser.add_argument("--seed", type=int, default=1)
    options = parser.parse_args()
    start, rounds, slowest = time.monotonic(), 0, (0.0, "")
    while rounds < options.rounds or time.monotonic() - start < options.seconds:
        slowest = max(slowest, one_round(options.program, options.seed + rounds))
        rounds += 1
    print("storm: %d rounds, the slowest end took %.2f s (%s)" % (rounds, *slowest))
    if slowest[0] > SOON and rounds > options.rounds:
        print("storm: more than %g s; is the machine busy?" % SOON)


if __name__ == "__main__":
    main()
