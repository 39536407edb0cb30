#!/usr/bin/env python3
"""With endgame tables the engine mates in the number of moves it announces, and loses as late as it can.

    perfect_play.py QUELMAR TBPROBE TBMAKE [TABLES | pawns]

Without TABLES, a directory, the three-men tables are made and played; with it, ten endings of up to four men, twenty
positions each. Every move is held against the tables' own numbers. With "pawns", which takes half a minute of an
optimised tbmake, pawn against pawn is made too and played where the capture en passant decides.
"""

import os
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
# quelmar-uci does so itself, and follows the tables to the mate.
LOOKS_ROOT_UP = "uci" in sys.argv[1]
# Plies; enough that the answers to every root move are looked up, even where lopsided material costs depth.
DEPTH = 1 if LOOKS_ROOT_UP else 8


def told(tables, fen, moves=()):
    """What tbprobe says for the side to move: "win", "loss" or another, and the plies to mate."""
    tables.say(fen + (" moves " + " ".join(moves) if moves else ""))
    words = tables.line().split()
    return (words[0], int(words[1])) if words[0] in ("win", "loss") else (words[0], 0)


def random_positions(dice, tables, ending, count):
    """Legal positions of the ending in which somebody wins."""
    white, black = ending.split("v")
    men = white + black.lower()
    found = []
    while len(found) < count:
        board = ["1"] * 64
        for square, man in zip(dice.sample(range(64), len(men)), men):
            board[square] = man
        ranks = ["".join(board[first:first + 8]) for first in range(0, 64, 8)]
        fen = "/".join(ranks) + dice.choice((" w -", " b -"))
        if not set("Pp") & set(ranks[0] + ranks[7]) and told(tables, fen)[0] in ("win", "loss"):
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
            if LOOKS_ROOT_UP and len(words[words.index("pv") + 1:]) != 2 * abs(announced) - (announced > 0):
                raise Failure("%s: a variation that does not end in mate" % fen)
    engine.say("stop")
    return engine.await_match(r"^bestmove (\S+)").group(1), announced


def play_out(engine, tables, fen):
    moves = []
    verdict, plies = told(tables, fen)
    while plies > 0:
        best, announced = think(engine, fen, moves)
        where = "%s %s: %s in %d plies" % (fen, " ".join(moves), verdict, plies)
        wanted = (plies + 1) // 2 if verdict == "win" else -(plies // 2)
        if announced != wanted:
            raise Failure("%s, but mate %s is announced" % (where, announced))
        moves.append(best)
        after = told(tables, fen, moves)
        if after != ("loss" if verdict == "win" else "win", plies - 1) and after[0] != "none":
            raise Failure("%s, but %s leads to %s in %d" % (where, best, *after))
        if after[0] == "none":
            return  # the last man was taken, or mated men are no longer an ending
        verdict, plies = after


def main(quelmar, tbprobe, tbmake, what=None):
    dice = random.Random(20)
    pawns = what == "pawns"
    path = None if pawns else what
    with tempfile.TemporaryDirectory() as made:
        if path is None:
            subprocess.run([tbmake, "make-all", "3", "--dir", made, "--quiet"], check=True)
        if pawns:
            subprocess.run([tbmake, "make", "kpkp", "--dir", made, "--quiet"], check=True)
        folder = os.path.abspath(path or made)
        with Engine(quelmar) as engine, Engine(tbprobe, [folder]) as tables:
            engine.say("uci", "setoption name NalimovCache value 16", "setoption name NalimovPath value " + folder)
            if LOOKS_ROOT_UP:  # mate in 15, but the fifty-move rule comes first
                engine.say("position fen 8/8/8/3k4/8/8/8/KR6 w - - 80 90", "go depth 1")
                engine.await_match("^info .* score cp 0 pv .*")
                engine.await_match("^bestmove")
            positions = [fen for ending in (LONG if path else SHORT)
                         for fen in random_positions(dice, tables, ending, 20 if path else 4)]
            positions += DOUBLE_STEPS if pawns else ()
            for fen in positions:
                play_out(engine, tables, fen)
    print("%d games played as the tables say" % len(positions))


try:
    main(*sys.argv[1:])
except Failure as failure:
    sys.exit(str(failure))
