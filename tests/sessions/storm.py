#!/usr/bin/env python3
"""Commands in random order with random arguments, in bursts and in pieces, whatever the engine is doing.

    storm.py QUELMAR [SECONDS] [SEED]

A program called quelmar-uci is spoken to in UCI only. Each round is a fresh process that must still play (or search) at the end, and quit when its input ends. A failure
names the seed of its round; the same seed says the same again, though not at the same moment of a search.
"""

import random
import sys
import time

from bad_input import ARGUMENTS, UCI_WORDS, XBOARD_WORDS
from engine import Engine, Failure

BURSTS = 150  # in a round

POSITIONS = (
    "r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq -",
    "bqnbrkrn/pppppppp/8/8/8/8/PPPPPPPP/BQNBRKRN w KQkq - 0 1",
    "8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 w - -",
    "7k/5Q2/6K1/8/8/8/8/8 b - -",  # stalemate
    "4k3/8/8/8/4Q3/8/8/4K3 w - -",  # the king can be taken
    "kK6/8/8/8/8/8/8/8 w - -",
    "QQQQQQQQ/QQQQQQQQ/QQQQQQQQ/k6K/8/8/8/8 w - -",
    "PPPPPPPP/8/8/Kk6/8/8/8/pppppppp w - -",
    "8/8/8/8/8/8/8/8 w - -",
)
MOVES = ("O-O", "e2e4", "e7e5", "d2d4", "a7a6", "g1f3", "g8f6")
XBOARD_TURNS = ("go", "new", "undo", "remove", "analyze", "force", "?", "eval", "diagram", ".", "hint", "computer")
UCI_TURNS = ("go infinite", "go movetime 20", "go ponder", "go depth 5", "go", "stop", "ponderhit", "isready")


def some_move(rng):
    return rng.choice(MOVES) if rng.random() < 0.5 else "".join(rng.choice(s) for s in ("abcdefgh", "12345678") * 2)


def xboard_line(rng):
    kind = rng.random()
    if kind < 0.1:
        return b"setboard " + rng.choice(POSITIONS).encode()
    if kind < 0.3:
        return b"usermove " + some_move(rng).encode()
    if kind < 0.5:
        return rng.choice(XBOARD_TURNS).encode()
    return rng.choice(XBOARD_WORDS) + rng.choice(ARGUMENTS)


def uci_line(rng):
    kind = rng.random()
    if kind < 0.2:
        return b"position fen " + rng.choice(POSITIONS).encode()
    if kind < 0.3:
        return b"position startpos moves " + b" ".join(some_move(rng).encode() for _ in range(3))
    if kind < 0.6:
        return rng.choice(UCI_TURNS).encode()
    line = rng.choice(UCI_WORDS) + rng.choice(ARGUMENTS)
    # Sizes are tried elsewhere; here they would only cost the machine's memory.
    return b"isready" if b"Hash" in line or b"Cache" in line else line


def send_burst(engine, rng, some_line):
    lines = [some_line(rng) + rng.choice((b"\n", b"\n", b"\r\n")) for _ in range(rng.choice((1, 1, 2, 5)))]
    burst = b"".join(lines)
    cut = rng.randrange(len(burst) + 1)
    engine.send(burst[:cut])
    if rng.random() < 0.1:
        time.sleep(0.02 * rng.random())
    engine.send(burst[cut:])


def play_round(engine, rng, only_uci):
    uci = only_uci or rng.random() < 0.4
    if uci:
        engine.say("uci")
    else:
        engine.say("xboard", rng.choice(("easy", "hard")), rng.choice(("st 0", "level 0 0:01 0", "st 1", "ics a")))
    for _ in range(BURSTS):
        send_burst(engine, rng, uci_line if uci else xboard_line)
    if uci:
        engine.say(*["stop"] * 5 * BURSTS, "isready")  # each ends one search at most
        engine.await_match("^readyok$")
    else:
        engine.say("force", "?", "new", "easy", "st 0")
        engine.sync(4242)
        engine.say("usermove e2e4")
        engine.await_match("^move ")
    engine.end_input()
    while engine.line() is not None:
        pass
    if engine.exit_status() != 0:
        raise Failure("exit status %d" % engine.exit_status())


def main():
    program = sys.argv[1]
    seconds = float(sys.argv[2]) if len(sys.argv) > 2 else 5
    seed = int(sys.argv[3]) if len(sys.argv) > 3 else random.randrange(1 << 30)
    end = time.monotonic() + seconds
    rounds = 0
    while rounds == 0 or time.monotonic() < end:
        with Engine(program) as engine:
            try:
                play_round(engine, random.Random(seed), program.endswith("-uci"))
            except Failure as failure:
                sys.exit("seed %d: %s\n%s" % (seed, failure, engine.report()))
        rounds += 1
        seed += 1
    print("%d rounds of %d bursts" % (rounds, BURSTS))


if __name__ == "__main__":
    main()
