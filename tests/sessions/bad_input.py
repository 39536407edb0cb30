#!/usr/bin/env python3
"""Every command with missing, huge, negative and meaningless arguments, in every state of the engine.

    bad_input.py QUELMAR QUELMAR-UCI

Whatever is said, the engine has to go on: it still answers, and a new game begins with the start position.
"""

import sys

from engine import Engine, Failure

ARGUMENTS = (
    b"", b" ", b" x", b" 0", b" -1", b" 99999999999999999999", b" -99999999999999999999", b" 2147483647",
    b" 1 2 3 4 5", b" :", b" -1:-1 -1", b" 1:99999999999 99999999999", b" %s%n%d", b" e2e4e2e4", b" O-O-O-O",
    b" a9i0", b" 8/8/8/8/8/8/8/8 w", b" 99999999/8/8/8/8/8/8/8 w KQkq -", b" K7/8/8/8/8/8/8/k7 x",
    b" \xff\xfe\x00\x80\x1b", b" " + b"9" * 3000, b"\t\t\t", b"=",
)

# Each of these is a search of its own until the next line ends it.
SEARCHES = (b"bench", b"analyze", b"go", b"new", b"force", b"remove")
ARGUMENTS_OF_SEARCHES = ARGUMENTS[:6]


def lines_with(word):
    few = word.split(b" ")[0] in SEARCHES
    return [word + argument + b"\n" for argument in (ARGUMENTS_OF_SEARCHES if few else ARGUMENTS)]


XBOARD_WORDS = (
    b"xboard", b"ics", b"protover", b"rejected", b"accepted", b"diagram", b"eval", b"bench", b"new", b"post",
    b"nopost", b"random", b"force", b"analyze", b".", b"easy", b"hard", b"go", b"time", b"otim", b"level",
    b"st", b"undo", b"usermove", b"ping", b"draw", b"result", b"computer", b"setboard", b"hint", b"remove",
    b"?", b"", b"unknown",
)

START_RANK = r"^\| R \| N \| B \| Q \| K \| B \| N \| R \|$"

LONG_GAME = 6000  # plies

# How the engine gets into each state from a new game, and the line that shows it is there.
XBOARD_STATES = {
    "idle": (["force", "usermove e2e4", "usermove e7e5"], "^made move e7e5"),
    "thinking": (["easy", "st 1000", "go"], "^2 "),
    "pondering": (["hard", "st 0", "usermove e2e4"], r"^Pondering \("),
    "analysing": (["force", "usermove d2d4", "analyze"], "^2 "),
    "unusable": (["setboard 8/8/8/8/8/8/8/8 w"], "^Error in EPD line2"),
}

UCI_WORDS = (
    b"position", b"position startpos", b"position startpos moves", b"position fen", b"position fen 8/8 moves",
    b"go", b"go depth", b"go movetime", b"go wtime", b"go winc", b"go movestogo", b"go ponder infinite",
    b"setoption", b"setoption name", b"setoption name Hash value", b"setoption name Selectivity value",
    b"setoption name Nullmove reduction factor value", b"setoption name NalimovCache value",
    b"setoption name Style value", b"setoption name NalimovPath value", b"ucinewgame", b"isready", b"debug",
    b"go nodes", b"go mate", b"go depth 3 searchmoves", b"setoption name Clear Hash",
    b"setoption name Move Overhead value", b"setoption name UCI_Chess960 value", b"ponderhit", b"uci", b"", b"unknown",
)


def try_xboard(engine, state, word):
    commands, sign = XBOARD_STATES[state]
    engine.say("new", "xboard", *commands)
    engine.await_match(sign)
    engine.send(b"".join(lines_with(word)))
    # "level 0 5 0" also ends what an absurd level began.
    engine.say("force", "?", "new", "level 0 5 0", "diagram")
    engine.sync()


def check_xboard(program):
    with Engine(program) as engine:
        try:
            for state in XBOARD_STATES:
                for word in XBOARD_WORDS:
                    try_xboard(engine, state, word)
            engine.say("new", "diagram")
            engine.await_match(START_RANK)
            engine.say("easy", "st 0", "usermove e2e4")
            engine.await_match("^move ")
        except Failure as failure:
            sys.exit("%s after %r while %s\n%s" % (failure, word, state, engine.report()))


def try_uci(engine, searching, word):
    engine.say("position startpos")
    if searching:
        engine.say("go infinite")
        engine.await_match("^info depth 2 ")
    lines = lines_with(word)
    engine.send(b"".join(lines))
    # As many searches as there may have been, each of them perhaps without end.
    engine.say(*["stop"] * (len(lines) + 1))
    engine.say("debug off", "setoption name Hash value 2", "isready")
    engine.await_match("^readyok$")


def check_uci(program):
    with Engine(program) as engine:
        try:
            word, searching = b"uci", False
            engine.say("uci")
            engine.await_match("^uciok$")
            for searching in (False, True):
                for word in UCI_WORDS:
                    try_uci(engine, searching, word)
            engine.say("position startpos moves e2e4", "setoption name Selectivity value 6", "go depth 3", "isready")
            engine.await_match("^bestmove [a-h]")
            engine.say("quit")
            if engine.exit_status() != 0:
                raise Failure("exit status %d" % engine.exit_status())
        except Failure as failure:
            sys.exit("%s after %r, searching: %s\n%s" % (failure, word, searching, engine.report()))


def check_long_game(program):
    """A game longer than the position stack, there and back; a line longer than any buffer."""
    shuffle = ["g1f3", "g8f6", "f3g1", "f6g8"] * (LONG_GAME // 4)
    with Engine(program) as engine:
        try:
            engine.say("force", *("usermove " + move for move in shuffle), "diagram")
            engine.sync()
            engine.say("st 0", "easy", "go", "force")  # the repetition has ended the game: nobody moves
            engine.say(*["undo"] * LONG_GAME, "setboard 7k/8/8/8/8/8/8/K6R w", "usermove h1g1")
            engine.await_match("^made move h1g1$")
            engine.say("uci", "position startpos moves " + " ".join(shuffle + ["e2e4"]), "go depth 3")
            engine.await_match("^bestmove [a-h][78]|^bestmove [bg]8")
            engine.say("position startpos moves " + "x" * (3 << 20), "isready")
            engine.await_match("^Engine received illegal move!$")
            engine.await_match("^readyok$")
        except Failure as failure:
            sys.exit("%s in a long game\n%s" % (failure, engine.report()))


if __name__ == "__main__":
    check_xboard(sys.argv[1])
    check_uci(sys.argv[1])
    check_uci(sys.argv[2])
    check_long_game(sys.argv[1])
