#!/usr/bin/env python3
"""Both programs are one engine: the same searches, whatever is written differently.

    both_programs.py QUELMAR QUELMAR-UCI
"""

import pathlib
import re
import sys

from board import Board
from engine import Engine, Failure
from run_sessions import read_lines

HASH_MB = 16

SEARCHES = pathlib.Path(__file__).with_name("both_programs.rows")
RESULT = re.compile(r"^info depth (\d+) seldepth \d+ time \d+ nodes (\d+) .*?score (cp -?\d+|mate -?\d+)\b"
                    r"(?! \w+bound).* pv (\S+)")

# White's men from a to h; both sides castle soon.
STARTS = ("QRKNBBRN", "BBQRNKRN", "RNBKQRNB", "RBKNNRBQ", "BNRBKRNQ", "RKNRBBNQ")
PLIES = 60


def results(engine, position, limits):
    """Depths, node counts, scores and first moves of a search's iterations."""
    engine.seen.clear()
    engine.say("position " + position, "go " + limits)
    engine.await_match("^bestmove ")
    found = [match.groups() for line in engine.seen if (match := RESULT.match(line))]
    return list({depth: (depth, *rest) for depth, *rest in reversed(found)}.values())[::-1]  # the first line of each


def compare(first, second):
    for own, standard in zip(first, second, strict=True):
        if own[:3] != standard[:3] or "O-O" not in own[3] and own[3] != standard[3]:
            raise Failure("%s is not %s" % (own, standard))


def check_searches(programs):
    """quelmar starts afresh for every search, quelmar-uci is told that a new game begins."""
    with Engine(programs[1]) as standard:
        standard.say("uci", "setoption name Hash value %d" % HASH_MB)
        standard.await_match("^uciok$")
        for _, _, row in read_lines(SEARCHES):
            depth, position = row.split(" | ")
            standard.say("ucinewgame")
            with Engine(programs[0]) as own:
                own.say("uci", "setoption name Hash value %d" % HASH_MB)
                own.await_match("^uciok$")
                compare(*(results(engine, position, "depth " + depth) for engine in (own, standard)))


def check_node_limit(program):
    """A search by nodes ends where it shall, and ends there again."""
    with Engine(program) as engine:
        for nodes in (1, 1000, 20000, 100000):
            runs = []
            for _ in range(2):
                engine.say("ucinewgame")
                runs.append(results(engine, "startpos moves d2d4", "nodes %d" % nodes))
            if runs[0] != runs[1]:
                raise Failure("two searches of %d nodes differ" % nodes)
            count = int(runs[0][-1][1])  # when the last line was printed
            if nodes >= 1000 and not nodes / 10 < count < nodes + 1000:
                raise Failure("%d nodes instead of %d" % (count, nodes))


def check_chess960_game(program, rank):
    """One side writes castling in one way, the other in the other; both read the whole game."""
    fen = "%s/pppppppp/8/8/8/8/PPPPPPPP/%s w KQkq - 0 1" % (rank.lower(), rank)
    board, moves = Board(fen), []
    with Engine(program) as by_rook, Engine(program) as by_king:
        by_rook.say("setoption name UCI_Chess960 value true")
        for engine in (by_rook, by_king):
            engine.forbidden.append("^info string")
        for ply in range(PLIES):
            engine = (by_rook, by_king)[ply % 2]
            engine.say("position fen %s moves %s" % (fen, " ".join(moves)), "go depth 4")
            move = engine.await_match(r"^bestmove (\S+)")[1]
            if move == "0000":
                break
            board.play(move)
            moves.append(move)
    return board.castlings


def main():
    programs = sys.argv[1:]
    try:
        check_searches(programs)
        check_node_limit(programs[1])
        castlings = [c for rank in STARTS for c in check_chess960_game(programs[1], rank)]
        if {"king takes rook", "king's way"} - set(castlings):
            raise Failure("castled only so: %s" % castlings)
    except (Failure, ValueError) as failure:
        sys.exit(str(failure))


if __name__ == "__main__":
    main()
