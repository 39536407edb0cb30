#!/usr/bin/env python3
"""Both faces are one engine: the same searches, whatever is written differently.

    faces.py QUELMAR QUELMAR-UCI
"""

import re
import sys

from engine import Engine, Failure

HASH_MB = 16

# For both faces: no en-passant field, and the rooks beside the king are the outermost.
SEARCHES = (
    (9, "startpos"),
    (7, "fen r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq"),
    (8, "startpos moves e2e4 e7e5 g1f3 b8c6 f1b5 a7a6 b5a4 g8f6"),
    (8, "fen r3r1k1/ppqb1ppp/8/4p1NQ/8/2P5/PP3PPP/R3R1K1 b -"),
    (8, "fen nrbkqbrn/pppppppp/8/8/8/8/PPPPPPPP/NRBKQBRN w KQkq"),
    (8, "fen rkbqnbnr/pppp1ppp/8/4p3/2P5/8/PP1PPPPP/RKBQNBNR w KQkq moves c1b1 b7b6"),
    (13, "fen 8/k7/3p4/p2P1p2/P2P1P2/8/8/K7 w -"),
    (9, "fen 7k/8/8/8/8/8/R7/1R5K w -"),
)

RESULT = re.compile(r"^info (depth \d+ seldepth \d+) time \d+ (nodes \d+ score .*?) (?:currmove.*)?nps \d+ pv (.*)$")

# White's men from a to h; both sides castle soon.
STARTS = ("QRKNBBRN", "BBQRNKRN", "RNBKQRNB", "RBKNNRBQ", "BNRBKRNQ", "RKNRBBNQ")
PLIES = 60


def results(engine, position, limits):
    """Depths, node counts, scores and variations of a search."""
    engine.seen.clear()
    engine.say("position " + position, "go " + limits)
    engine.await_match("^bestmove ")
    return [match.groups() for line in engine.seen if (match := RESULT.match(line))]


def compare(first, second):
    for (depth, nodes, line), (other_depth, other_nodes, other_line) in zip(first, second, strict=True):
        if (depth, nodes) != (other_depth, other_nodes):
            raise Failure("%s %s is not %s %s" % (depth, nodes, other_depth, other_nodes))
        if "O-O" not in line and line != other_line:
            raise Failure("%s is not %s" % (line, other_line))


def check_searches(programs):
    """The first face starts afresh for every search, the second is told that a new game begins."""
    with Engine(programs[1]) as standard:
        standard.say("uci", "setoption name Hash value %d" % HASH_MB)
        standard.await_match("^uciok$")
        for depth, position in SEARCHES:
            standard.say("ucinewgame")
            with Engine(programs[0]) as own:
                own.say("uci", "setoption name Hash value %d" % HASH_MB)
                own.await_match("^uciok$")
                limits = "depth %d" % depth
                compare(results(own, position, limits), results(standard, position, limits))


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
            count = int(runs[0][-1][1].split()[1])  # when the last line was printed
            if nodes >= 1000 and not nodes / 10 < count < nodes + 1000:
                raise Failure("%d nodes instead of %d" % (count, nodes))


class Board:
    """Where the men stand, for a client that knows how castling is written but trusts the rest."""

    def __init__(self, rank):
        self.men = {file + "1": man for file, man in zip("abcdefgh", rank)}
        self.men.update({file + "8": man.lower() for file, man in zip("abcdefgh", rank)})
        self.men.update({file + "2": "P" for file in "abcdefgh"})
        self.men.update({file + "7": "p" for file in "abcdefgh"})
        self.castlings = []

    def play(self, move, white):
        origin, target = move[:2], move[2:4]
        man = self.men.pop(origin, "-")
        if man == "-" or man.isupper() != white:
            raise Failure(move + " moves no own man")
        own_target = target in self.men and self.men[target].isupper() == white
        long_way = abs(ord(origin[0]) - ord(target[0])) > 1
        if man in "Kk" and (own_target or long_way):
            self.castle(origin, target, man, "king takes rook" if own_target else "king's way")
            return
        if own_target:
            raise Failure(move + " takes an own man")
        if man in "Pp" and origin[0] != target[0] and target not in self.men:
            del self.men[target[0] + origin[1]]
        self.men[target] = move[4:] or man
        if move[4:] and white:
            self.men[target] = move[4:].upper()

    def castle(self, king, target, man, notation):
        rank, rook_man = king[1], "R" if man == "K" else "r"
        short = target > king
        if notation == "king takes rook":
            rook = target
        else:
            rooks = [s for s in self.men if s[1] == rank and self.men[s] == rook_man and (s > king) == short]
            rook = (max if short else min)(rooks)
        if self.men.pop(rook) != rook_man:
            raise Failure("no rook on " + rook)
        self.men[("g" if short else "c") + rank] = man
        self.men[("f" if short else "d") + rank] = rook_man
        self.castlings.append(notation)


def check_chess960_game(program, rank):
    """One side writes castling in one way, the other in the other; both read the whole game."""
    board, moves = Board(rank), []
    fen = "%s/pppppppp/8/8/8/8/PPPPPPPP/%s w KQkq - 0 1" % (rank.lower(), rank)
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
            board.play(move, ply % 2 == 0)
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
    except Failure as failure:
        sys.exit(str(failure))


if __name__ == "__main__":
    main()
