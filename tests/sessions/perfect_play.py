#!/usr/bin/env python3
"""With endgame tables the engine mates in the number of moves it announces, and loses as late as it can.

    perfect_play.py QUELMAR TBPROBE TBMAKE [TABLES | pawns]

Without TABLES, a directory, the three-men tables are made and played; with it, ten endings of up to four men, twenty
positions each. Every move is held against the tables' own numbers. With "pawns", which takes half a minute of an
optimised tbmake, pawn against pawn is made too and played where the capture en passant decides.
"""

import random
import subprocess
import sys
import tempfile

from engine import Engine, Failure

SHORT = ("KQvK", "KRvK", "KPvK")
LONG = ("KRvK", "KPvK", "KBBvK", "KBNvK", "KQvKR", "KRvKN", "KRvKB", "KQvKP", "KRvKP", "KPPvK", "KQvKQ", "KBPvK")
# Won, but not by the double step: the answer en passant draws.
DOUBLE_STEPS = (
    "8/8/8/8/p7/8/1P3k2/2K5 w - -",
    "8/8/8/8/p6k/8/1P6/3K4 w - -",
    "8/8/8/8/2p1K3/8/1P4k1/8 w - -",
    "8/8/8/8/5p2/8/6P1/2k3K1 w - -",
    "8/8/8/8/1p6/8/K1P4k/8 w - -",
)
DEPTH = 8  # plies; enough that the answers to every root move are looked up, even where lopsided material costs depth


class Tables:
    """What the tables say, from a process of its own."""

    def __init__(self, program, path):
        self.process = subprocess.Popen(
            [program, path], stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True, bufsize=1
        )

    def ask(self, fen, moves=()):
        """The verdict for the side to move, "win", "loss" or another, and the plies to mate."""
        self.process.stdin.write(fen + (" moves " + " ".join(moves) if moves else "") + "\n")
        words = self.process.stdout.readline().split()
        if words[0] in ("win", "loss"):
            return words[0], int(words[1])
        return words[0], 0


def random_fen(dice, ending):
    white, black = ending.split("v")
    squares = dice.sample(range(64), len(white) + len(black))
    board = dict(zip(squares, white + black.lower()))
    if any(man in "Pp" and not 8 <= square < 56 for square, man in board.items()):
        return None
    ranks = []
    for rank in range(7, -1, -1):
        text = "".join(board.get(8 * rank + file, "1") for file in range(8))
        ranks.append(text)
    return "/".join(ranks) + dice.choice((" w -", " b -"))


def random_positions(dice, tables, ending, count):
    """Legal positions of the ending in which somebody wins."""
    found = []
    while len(found) < count:
        fen = random_fen(dice, ending)
        if fen and tables.ask(fen)[0] in ("win", "loss"):
            found.append(fen)
    return found


def think(engine, fen, moves):
    """The move and the announced mate of a search that does not stop at the first mate it finds."""
    engine.say("position fen " + fen + (" moves " + " ".join(moves) if moves else ""), "go infinite")
    announced, iteration = None, 0
    while iteration < DEPTH:
        words = engine.await_match(r"^info depth \d+ seldepth \d+ time .*").group().split()
        if "upperbound" not in words and "lowerbound" not in words:
            iteration = int(words[2])
            announced = int(words[words.index("mate") + 1]) if "mate" in words else None
    engine.say("stop")
    return engine.await_match(r"^bestmove (\S+)").group(1), announced


def play_out(engine, tables, fen):
    moves = []
    verdict, plies = tables.ask(fen)
    while plies > 0:
        best, announced = think(engine, fen, moves)
        where = "%s %s: %s in %d plies" % (fen, " ".join(moves), verdict, plies)
        wanted = (plies + 1) // 2 if verdict == "win" else -(plies // 2)
        if announced != wanted:
            raise Failure("%s, but mate %s is announced" % (where, announced))
        moves.append(best)
        after = tables.ask(fen, moves)
        if after != ("loss" if verdict == "win" else "win", plies - 1) and after[0] != "none":
            raise Failure("%s, but %s leads to %s in %d" % (where, best, *after))
        if after[0] == "none":
            return  # the last man was taken, or mated men are no longer an ending
        verdict, plies = after


def main(quelmar, tbprobe, tbmake, path=None):
    dice = random.Random(20)
    pawns = path is not None
    path = None if path == "pawns" else path
    with tempfile.TemporaryDirectory() as made:
        if path is None:
            subprocess.run([tbmake, "make-all", "3", "--dir", made, "--quiet"], check=True)
            if pawns:
                subprocess.run([tbmake, "make", "kpkp", "--dir", made, "--quiet"], check=True)
        tables = Tables(tbprobe, path or made)
        games = 0
        with Engine(quelmar) as engine:
            engine.say("uci", "setoption name NalimovCache value 16")
            engine.say("setoption name NalimovPath value " + (path or made))
            for ending in LONG if path else SHORT:
                for fen in random_positions(dice, tables, ending, 20 if path else 4):
                    play_out(engine, tables, fen)
                    games += 1
            for fen in DOUBLE_STEPS if pawns else ():
                play_out(engine, tables, fen)
                games += 1
        tables.process.stdin.close()
        tables.process.wait()
    print("%d games played as the tables say" % games)


try:
    main(*sys.argv[1:])
except Failure as failure:
    print(failure)
    sys.exit(1)
