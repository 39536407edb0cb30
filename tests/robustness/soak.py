#!/usr/bin/env python3
"""Two engines play game after game, and neither their memory nor their descriptors may grow.

    soak.py QUELMAR [--games N] [--rounds N] [--seed N]

Two processes play all games against each other under the xboard protocol, from a few random moves on, at no time per
move and every tenth game with a clock of a second. Each must find every move of the other legal, and both must claim
the same result. Then a process each for xboard and UCI begins new games, with a search, other hash sizes and a refused
position in between. The first quarter of a run may still take memory (the pages of a table come as they are touched);
from then on nothing may grow.
"""

import argparse
import collections
import os
import pathlib
import random
import re
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "sessions"))
from engine import Engine, Failure, is_sanitized  # noqa: E402

LONGEST_GAME = 400  # plies
SLACK = 2048  # kB, for the allocator's own ways
SMALL = {"quelmar.ini": "hash 1\nfritz-hash 1\n"}
XBOARD_ROUND = ("new", "setboard 8/8/8/8/8/8/8/8 w", "eval", "new", "easy", "st 0", "usermove e2e4", "undo", "remove")
UCI_ROUND = ("setoption name NalimovPath value /nowhere", "ucinewgame", "position fen 8/8/8/8/8/8/8/8 w", "go depth 2",
             "position startpos moves e2e4 e7e5", "go depth 3", "position startpos moves e2e5")


def resources(engine):
    process = pathlib.Path("/proc", str(engine.process.pid))
    return int(re.search(r"VmRSS:\s+(\d+)", (process / "status").read_text())[1]), len(os.listdir(process / "fd"))


def decide(engine, *lines):
    """Says the lines and returns the move it plays, if any, and the result it claims, if any."""
    engine.ask()  # what has been said up to now is no answer
    engine.seen.clear()
    engine.say(*lines)
    engine.await_match(r"^move |\}$")
    text = "\n".join(engine.seen) + "\n" + engine.ask()
    if "Illegal move" in text:
        raise Failure(text)
    move = re.search(r"^move (\S+)$", text, re.MULTILINE)
    claim = re.search(r"^(1-0|0-1|1/2-1/2) \{.*\}$", text, re.MULTILINE)
    return move and move[1], claim and claim[0]


def random_moves(engine, chance):
    moves = []
    for _ in range(chance.randrange(2, 9)):
        legal = re.search(r"Legal moves:\n((?:[a-hO][-\w]+\n)*)", engine.ask("usermove a1a1"))[1].split()
        if not legal:
            break
        moves.append(chance.choice(legal))
        engine.ask("usermove " + moves[-1])
    return moves


def play_game(engines, number, chance):
    """The number of plies and what was claimed."""
    for engine in engines:
        engine.ask("new", "easy", "force", "level 0 0:01 0" if number % 10 == 9 else "st 0")
    moves = random_moves(engines[0], chance)
    engines[1].ask(*("usermove " + move for move in moves))
    on_move, other = engines if len(moves) % 2 == 0 else engines[::-1]
    said, claimed_before = ["go"], None
    for ply in range(len(moves), LONGEST_GAME):
        move, claim = decide(on_move, *said)
        if move is None or claimed_before:
            if claim != claimed_before:
                raise Failure("one claims %s, the other %s" % (claimed_before, claim))
            return {"plies": ply, claim: 1}
        # In its first turn the other side still has to be told to play.
        said = ["usermove " + move] + (["go"] if ply == len(moves) else [])
        claimed_before = claim
        on_move, other = other, on_move
    return {"plies": LONGEST_GAME, "undecided": 1}


def play_round(engines, number, _):
    if number == 0:
        engines[1].say("uci")
    engines[0].ask(*XBOARD_ROUND)
    engines[1].ask("setoption name Hash value %d" % (2 + number % 3), *UCI_ROUND)
    return {"rounds": 1}


def soak(program, play, total, seed):
    """Plays so many times with a pair of processes; what they need is settled after a quarter."""
    with Engine(program, files=SMALL) as first, Engine(program, files=SMALL) as second:
        engines, told, settled = (first, second), collections.Counter(), None
        try:
            for engine in engines:
                engine.say("xboard")
            for number in range(total):
                told.update(play(engines, number, random.Random(seed + number)))
                now = [resources(engine) for engine in engines]
                settled = now if number <= total // 4 else settled
                if any(has[1] != had[1] or (has[0] > had[0] + SLACK and not is_sanitized(program))
                       for has, had in zip(now, settled)):
                    raise Failure("grew from %s kB and descriptors to %s" % (settled, now))
            for engine in engines:
                engine.say("quit")
                if engine.exit_status() != 0:
                    raise Failure("exit status not 0")
        except Failure as failure:
            sys.exit("%s: %s\n%s\n%s" % (play.__name__, failure, first.report(), second.report()))
    print("soak: %s; %s kB and descriptors" % (dict(told), now))


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("program")
    parser.add_argument("--games", type=int, default=12)
    parser.add_argument("--rounds", type=int, default=60)
    parser.add_argument("--seed", type=int, default=1)
    options = parser.parse_args()
    soak(options.program, play_round, options.rounds, options.seed)
    soak(options.program, play_game, options.games, options.seed)


if __name__ == "__main__":
    main()
