#!/usr/bin/env python3
"""Plays a match in xboard and judges it. Exit status: 0 all games ended by the rules, 1 not, 77 a program is missing.

    match.py --first build/release/quelmar --games 20 --seconds 1 --increment 0.05
    match.py --first build/release/quelmar --second phalanx --games 10 --seconds 10 --moves 40
    match.py --first build/release/quelmar --variant fischerandom --games 100 --keep out/chess960
"""

import argparse
import os
import pathlib
import shlex
import shutil
import sys
import tempfile

import records
import xboard

# The white men of the 960 start positions by their usual numbers (518 is the one of ordinary chess).
CHESS960 = pathlib.Path(__file__).with_name("chess960.txt")
STRIDE = 97  # shares no factor with 960: steps of it meet every start once before any comes again


def read_arguments():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    add = parser.add_argument
    add("--first", required=True, help="command of the first engine")
    add("--second", help="command of the second engine (default: the first one)")
    add("--games", type=int, default=2)
    add("--seconds", type=int, default=1, help="on each clock at the start, whole ones")
    add("--increment", type=float, default=0.0, help="seconds per move")
    add("--moves", type=int, default=0, help="the seconds are for so many moves each time, without increment")
    add("--variant", choices=("normal", "fischerandom"), default="normal")
    add("--start", type=int, default=0, help="number of the first Chess960 start")
    add("--opening", type=pathlib.Path, help="game (PGN) from whose end on the engines play")
    add("--adjudicate", action="store_true", help="xboard ends games; engines need not claim results")
    add("--ponder", action="store_true")
    add("--no-flags", action="store_true", help="nobody loses on time (for slow builds)")
    add("--first-uci", action="store_true")
    add("--second-uci", action="store_true")
    add("--first-must-win", action="store_true", help="any other result is a failure")
    add("--must-castle", action="store_true", help="both sides, in every game")
    add("--keep", type=pathlib.Path, help="folder for the records (default: kept only on failure)")
    add("--setting", action="append", default=[], help='line of quelmar.ini, such as "resign yes"')
    add("--xboard", type=shlex.split, default=[], help="more options for xboard")
    return parser.parse_args()


def command_of(engine):
    """With the whole path: engines run in a folder of their own."""
    program, *rest = shlex.split(engine)
    found = shutil.which(program, path=xboard.SEARCH_PATH)
    return " ".join([os.path.abspath(found) if found else program, *rest])


def chess960_starts(count, first):
    """FENs of `count` starts, spread over all of them; different ones as long as there are."""
    ranks = CHESS960.read_text().split()
    chosen = [ranks[(first + place * STRIDE) % len(ranks)] for place in range(count)]
    return [f"{rank.lower()}/pppppppp/8/8/8/8/PPPPPPPP/{rank} w KQkq - 0 1" for rank in chosen]


def unfit_games(given, games):
    """What was wanted of the games beyond their end by the rules."""
    for number, game in enumerate(games, 1):
        # xboard alternates colours and lets the first engine begin with White.
        if given.first_must_win and game.result != ("0-1", "1-0")[number % 2]:
            yield f"game {number}: {game.result}, not won by the first engine"
        for begin, side in enumerate(("White", "Black") if given.must_castle else ()):
            if not any(move.startswith("O-O") for move in game.moves[begin::2]):
                yield f"game {number}: {side} has not castled"


def play(given, folder):
    """Plays, prints the summary and returns the failures."""
    failures = []
    try:
        xboard.play(given, folder)
    except xboard.Trouble as reason:
        failures.append(str(reason))
    games, faults = records.judge(folder, given.games, given.first == given.second)
    failures += [*faults, *unfit_games(given, games)]
    print(records.summary(games))
    for failure in failures:
        print("FAILURE", failure)
    return failures


def main():
    given = read_arguments()
    given.first, given.second = command_of(given.first), command_of(given.second or given.first)
    given.starts = chess960_starts(given.games, given.start) if given.variant == "fischerandom" else []
    by_uci = ["polyglot"] if given.first_uci or given.second_uci else []  # by which xboard speaks to UCI engines
    if xboard.missing_programs(given.first.split()[0]):
        sys.exit(f"{given.first}: no such program")
    if missing := xboard.missing_programs("xboard", "Xvfb", *by_uci, given.second.split()[0]):
        print("skipped: not installed:", ", ".join(missing))
        return xboard.SKIPPED

    folder = (given.keep or pathlib.Path(tempfile.mkdtemp(prefix="quelmar-records-"))).absolute()
    folder.mkdir(parents=True, exist_ok=True)
    for old in ("games.pgn", "debug.log", "xboard.err"):
        (folder / old).unlink(missing_ok=True)
    load_before = os.getloadavg()[0]
    failures = play(given, folder)
    print(f"load average {load_before:.1f} before, {os.getloadavg()[0]:.1f} after, {os.cpu_count()} processors")
    if failures or given.keep:
        print("records in", folder)
    else:
        shutil.rmtree(folder)
    print("match failed" if failures else f"match passed: {given.games} games ended by the rules")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
