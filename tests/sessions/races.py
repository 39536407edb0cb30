#!/usr/bin/env python3
"""What match runners and interfaces hold against quelmar-uci: races.py QUELMAR-UCI [RACES GAMES].

Random commands at random moments, then games: one best move for every "go", lines in order, the first beginning with
that move, and every variation legal and none behind a draw."""

import random
import re
import sys
import time

from board import START_FEN, Board
from engine import Engine, Failure

LINE = re.compile(r"info depth (\d+) seldepth (\d+) time \d+ nodes \d+ nps \d+ hashfull \d+ tbhits \d+ multipv (\d+) "
                  r"score (cp|mate) (-?\d+)( \w+bound)?(?: pv (\S.*\S))?")
POSITIONS = ("startpos", "startpos moves e2e4 e7e5", "fen 8/8/8/8/8/4k3/8/4q2K w", "fen 7k/8/8/8/8/8/1r6/K7 w",
             "fen 7k/5Q2/6K1/8/8/8/8/8 b", "fen 6k1/5ppp/8/8/8/8/5PPP/3R2K1 w")
GO = ("", "depth 4", "nodes 2000", "movetime 15", "wtime 300 btime 300", "infinite", "ponder wtime 300 btime 300",
      "mate 2 depth 5", "depth 3 searchmoves g1f3 g1h1 e2e4", "depth x", "movestogo 1 wtime 60 btime 60", "ponder")
MEANWHILE = ("isready", "stop", "ponderhit", "position startpos", "ucinewgame", "setoption name Hash value 1")
STARTS = (START_FEN, "8/5k2/8/8/3r4/6p1/5KP1/3R4 w - - 60 100", "4k3/8/8/8/7q/8/6PP/6QK b - - 0 1")  # two soon drawn


def judge_lines(engine):
    """Judges what is printed up to the best move; returns that and the variations."""
    best = engine.await_match(r"^bestmove (\S+)")[1]
    found = [match.groups() for match in map(LINE.fullmatch, engine.seen) if match]
    if any(line.endswith(" ") for line in engine.seen) or len(found) < sum(" time " in line for line in engine.seen):
        raise Failure("malformed lines: %s" % list(engine.seen))
    last = found[max((place for place, line in enumerate(found) if line[2] == "1"), default=len(found)):]
    if not last or any(int(line[0]) > int(line[1]) for line in last) or (last[0][6] or "0000").split()[0] != best:
        raise Failure("bestmove %s, but the last lines are %s" % (best, last))
    worth = [int(line[4]) if line[3] == "cp" else 1e5 / int(line[4]) for line in last if line[4] != "0"]
    if last[0][0] == last[-1][0] and not last[0][5] and worth != sorted(worth, reverse=True):
        raise Failure("lines out of order: %s" % worth)
    return best, [line[6].split() for line in found if line[6]]


def race(engine, dice):
    engine.seen.clear()
    engine.say("position " + dice.choice(POSITIONS), ("go " + dice.choice(GO)).strip())
    for command in [*dice.sample(MEANWHILE, dice.randrange(3)), "stop"]:
        time.sleep(dice.random() / 200)
        engine.say(command)
    judge_lines(engine)
    if "bestmove" in engine.ask("stop"):
        raise Failure("two best moves for one go")


class Game(Board):
    """Knows draws; squares that kings and rooks have left stand for the castling rights."""

    def __init__(self, fen, moves=()):
        super().__init__(fen)
        self.clock, touched, self.stood = int(fen.split()[4]), set(), []
        for move in moves:
            men, is_pawn = len(self.men), self.men[move[:2]] in "Pp"
            self.play(move)
            touched |= {move[:2], move[2:4]} & {"e1", "a1", "h1", "e8", "a8", "h8"}
            self.clock = 0 if is_pawn or len(self.men) < men else self.clock + 1
            self.stood.append((self.men.copy(), touched.copy(), self.white))

    def is_drawn(self):
        is_bare = len(self.men) < 4 and not set("PRQprq") & set(self.men.values())
        return is_bare or self.clock >= 100 or self.stood.count(self.stood[-1]) >= 3


def play_game(engine, judge, dice, fen):
    opening, moves = 6, []  # plies
    engine.say("ucinewgame", "setoption name MultiPV value %d" % dice.choice((1, 3)))
    while len(moves) < 240 and not (moves and Game(fen, moves).is_drawn()):
        engine.seen.clear()
        limit = "nodes %d" % dice.choice((200, 2000)) if len(moves) > opening else "depth 1"
        engine.say("position fen %s moves %s" % (fen, " ".join(moves)), "go " + limit)
        best, variations = judge_lines(engine)
        if best == "0000":
            return
        for variation in variations:
            illegal = "illegal" in judge.ask(" ".join(["position fen", fen, "moves", *moves, *variation]))
            if illegal or any(Game(fen, moves + variation[:end]).is_drawn() for end in range(1, len(variation))):
                raise Failure("%s %s: illegal or behind a draw: %s" % (fen, moves, variation))
        moves.append(best if len(moves) > opening else dice.choice(variations)[0])


def use_time(engine, limits, pause=0.0):
    engine.say("setoption name MultiPV value 3", "position startpos", "go " + limits)
    time.sleep(pause)
    start = time.monotonic()
    engine.say("ponderhit")
    engine.await_match("^bestmove")
    if time.monotonic() - start < 0.15:
        raise Failure("go %s is answered at once" % limits)


def main(program, races=400, games=3):
    dice = random.Random(11)
    with Engine(program) as engine, Engine(program) as judge:
        use_time(engine, "ponder movetime 230", 0.3)
        use_time(engine, "movestogo 1 wtime 230 btime 230")
        for _ in range(int(races)):
            race(engine, dice)
        for number in range(int(games)):
            play_game(engine, judge, dice, STARTS[number % len(STARTS)])


try:
    main(*sys.argv[1:])
except Failure as failure:
    sys.exit(str(failure))
