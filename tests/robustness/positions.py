#!/usr/bin/env python3
"""Positions that no game reaches, under both protocols (quelmar-uci knows one).

    positions.py PROGRAM [--random N] [--seed N]

Each is set up, shown, evaluated, searched and analysed; the engine's moves have to be among those it calls legal, and
every answer has to come in time. What is no position has to be refused, and the next command has to work. --random
adds boards that chance fills.
"""

import argparse
import random
import re
import sys
import time

from confined import Failure, Watched, is_sanitized

IN_TIME = 10.0  # seconds for a search of a tenth or of one ply; machines of tests are slow
UNDER_SANITIZERS = 6  # times longer

POSSIBLE = (
    ("nine queens", "QQQQQQQQ/8/8/2k5/8/8/8/Q3K3 w - -"),
    ("fifty queens against a king", "kQQQQQQQ/1QQQQQQQ/QQQQQQQQ/QQQQQQQQ/QQQQQQQQ/QQQQQQQQ/QQQQQQQQ/QQQ4K b - -"),
    ("fifty queens, the king can be taken", "k1QQQQQQ/2QQQQQQ/QQQQQQQQ/QQQQQQQQ/QQQQQQQQ/QQQQQQQQ/QQQQQQQQ/QQQ4K w - -"),
    ("sixteen queens each", "qqqqkqqq/qqqqqqqq/8/8/8/8/QQQQQQQQ/QQQQKQQQ w - -"),
    ("queens everywhere", "QqQqQqQq/qQqQqQqQ/QqQqQqQq/qQqkqQqQ/QqQqKqQq/qQqQqQqQ/QqQqQqQq/qQqQqQqQ w - -"),
    ("queens everywhere but at the kings", "QqQqQqQq/qQqQqQqQ/Qq3qQq/q2k1QqQ/Q5qQ/q2QK1qQ/Qq4Qq/qQqQqQqQ w - -"),
    ("thirty knights each", "nnnnknnn/nnnnnnnn/nnnnnnnn/nnnnnnnn/NNNNNNNN/NNNNNNNN/NNNNNNNN/NNNNKNNN w - -"),
    ("pawns on the first and last ranks", "PPPPkPPP/PPPPPPPP/pppppppp/8/8/PPPPPPPP/pppppppp/ppppKppp b - -"),
    ("pawns where they promote backwards", "pppp4/4k3/8/8/8/8/4K3/4PPPP w - -"),
    ("forty pawns", "4k3/pppppppp/pppppppp/pppp4/4PPPP/PPPPPPPP/PPPPPPPP/4K3 w - -"),
    ("kings side by side", "8/8/8/3Kk3/8/8/8/8 w - -"),
    ("kings side by side, with rooks", "r7/8/8/3Kk3/8/8/8/7R b - -"),
    ("the side that waits is in check", "4k2R/8/8/8/8/8/8/4K3 w - -"),
    ("both are in check", "r3k2R/8/8/8/8/8/8/R3K2r w KQkq -"),
    ("check from nine men", "4r2k/8/8/b3r2b/8/3n1n2/3p1p2/q3K2q w - -"),
    ("castling letters for men that are elsewhere", "4k3/8/8/8/3K4/8/8/R6R w KQkq -"),
    ("kings alone", "8/8/8/8/8/8/8/K6k w - -"),
    ("a board so full that nobody moves", "bnbnbnbk/pppppppp/pppppppp/PPPPPPPP/PPPPPPPP/PPPPPPPP/PPPPPPPP/BNBNBNBK w - -"),
)
REFUSED = (
    ("no king", "8/8/8/8/8/8/8/8 w - -"), ("one king", "4k3/8/8/8/8/8/8/8 w - -"),
    ("two kings", "kk6/8/8/8/8/8/8/K7 w - -"), ("64 kings", "/".join(["KKKKkkkk"] * 8) + " w - -"),
    ("nine files", "ppppppppp/8/8/8/8/8/8/Kk6 w - -"), ("a wide digit", "9/8/8/8/8/8/8/Kk6 w - -"),
    ("seven ranks", "Kk6/8/8/8/8/8/8"), ("nobody to move", "Kk6/8/8/8/8/8/8/8 -"), ("nothing", ""),
    ("letters", "hello world"), ("bytes", "\udcff\udc80\x01/8 w"),
)


def random_position(chance):
    board = ["."] * 64
    men = chance.choice(("PNBRQ", "Q", "QR", "P", "N", "BNP"))
    for square in range(64):
        if chance.randrange(100) < chance.choice((10, 50, 95)):
            man = chance.choice(men)
            board[square] = man if chance.randrange(2) else man.lower()
    for square, king in zip(chance.sample(range(64), 2), "Kk"):
        board[square] = king
    ranks = ["".join(board[8 * r:8 * r + 8]) for r in range(8)]
    text = "/".join(re.sub(r"\.+", lambda m: str(len(m.group())), rank) for rank in ranks)
    return text + chance.choice((" w ", " b ")) + chance.choice(("-", "KQkq", "Kq")) + " -"
REFUSALS = ("Error in EPD line", "info string bad FEN")


class Face:
    """One protocol: what is said, and how the answers look."""

    def __init__(self, engine, sanitized):
        self.engine = engine
        self.questions = 0
        self.in_time = IN_TIME * (UNDER_SANITIZERS if sanitized else 1)
        self.limits = ("movetime 100", "wtime 1000 btime 1000", "infinite", "ponder")
        if not sanitized:  # a ply of a board full of knights has more than a million nodes
            self.limits += ("depth 1",)

    def ask(self, *lines):
        """Says the lines and returns what was printed until the question behind them was answered."""
        self.questions += 1
        question, answer = self.question()
        self.engine.forget()
        if not self.engine.send("".join(line + "\n" for line in (*lines, question)).encode(errors="surrogateescape")):
            raise Failure("the engine is gone")
        self.engine.await_text(answer.encode())
        return self.engine.tail.decode(errors="replace")

    def await_line(self, start):
        began = time.monotonic()
        self.engine.await_text(start.encode() + b" ")
        seconds = time.monotonic() - began
        if seconds > self.in_time:
            raise Failure("%r took %.1f s" % (start, seconds))
        time.sleep(0.01)
        return re.search(r"^%s *(\S*)" % start, self.engine.tail.decode(errors="replace"), re.MULTILINE).group(1)

    def legal_moves(self, wrong_move):
        listing = self.ask(wrong_move)
        moves = re.search(r"Legal moves:\n((?:\S{2,5}\n)*)", listing)
        return moves and moves.group(1).split()  # quelmar-uci does not tell


class Xboard(Face):
    def question(self):
        return "ping %d" % self.questions, "pong %d\n" % self.questions

    def start(self):
        self.ask("xboard", "easy", "new", "force", "st 0")

    def set_up(self, fen):
        return self.ask("force", "setboard " + fen)

    def examine(self):
        legal = self.legal_moves("usermove a1a1")
        self.ask("diagram", "eval")
        self.engine.forget()
        if legal and not self.over:
            self.engine.send(b"\ngo\n")
            move = self.await_line("move")
            if move not in legal:
                raise Failure("%s is none of %s" % (move, legal))
            self.ask("force", "diagram", "eval", "undo")
        self.ask("analyze", "diagram", "eval", ".")
        time.sleep(0.1)
        self.ask(".", "eval", "force", "new", "force")

    def examine_refused(self):
        self.ask("eval", "diagram", "go", "undo", "remove", "hint", "usermove e2e4", "analyze", ".", "force", "bench",
                 "new", "force")


class Uci(Face):
    def question(self):
        return "isready", "readyok\n"

    def start(self):
        self.ask("uci")

    def set_up(self, fen):
        return self.ask("position fen " + fen)

    def examine(self):
        fen = self.fen
        legal = self.legal_moves("position fen %s moves a1a1" % fen)
        for limit in self.limits:
            self.engine.forget()
            self.engine.send(("\ngo %s\n" % limit).encode())
            if limit in ("infinite", "ponder"):
                time.sleep(0.1)
                self.engine.send(b"stop\n")
            move = self.await_line("bestmove")
            if legal is None and re.fullmatch("([a-h][1-8]){2}[qrbn]?|0000", move):
                continue
            if move not in (legal or ["0000"]):
                raise Failure("go %s: %s is none of %s" % (limit, move, legal))
        for move in legal[:3] if legal else ():
            self.ask("position fen %s moves %s" % (fen, move))

    def examine_refused(self):
        self.engine.forget()
        self.engine.send(b"\ngo depth 3\n")
        if self.await_line("bestmove") != "0000":
            raise Failure("a move without a position")
        self.ask("position startpos")


def check(program, face_of, possible):
    engine = Watched(program)
    face = face_of(engine, is_sanitized(program))
    name = "start"
    try:
        face.start()
        for name, fen in REFUSED:
            if not any(words in face.set_up(fen) for words in REFUSALS):
                raise Failure("not refused")
            face.examine_refused()
        for name, fen in possible:
            face.fen = fen
            reply = face.set_up(fen)
            if any(words in reply for words in REFUSALS):
                raise Failure("refused")
            face.over = "{" in reply  # the result was claimed: nobody moves any more
            face.examine()
        engine.send(b"quit\n")
        engine.end()
    except Failure as failure:
        sys.exit("positions: %s, %s: %s\n%s" % (face_of.__name__, name, failure, engine.report()))
    finally:
        engine.kill()


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("program")
    parser.add_argument("--random", type=int, default=5)
    parser.add_argument("--seed", type=int, default=1)
    options = parser.parse_args()
    chance = random.Random(options.seed)
    made = [random_position(chance) for _ in range(options.random)]
    for face in (Uci,) if options.program.endswith("-uci") else (Xboard, Uci):
        check(options.program, face, POSSIBLE + tuple((fen, fen) for fen in made))
    print("positions: %d possible, %d refused" % (len(POSSIBLE) + len(made), len(REFUSED)))


if __name__ == "__main__":
    main()
