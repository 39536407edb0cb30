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

import chess960
import long_opening
import records
import screenshot
import xboard


def read_arguments() -> argparse.Namespace:
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--first", required=True, help="command of the first engine")
    parser.add_argument("--second", help="command of the second engine (default: the first one)")
    parser.add_argument("--games", type=int, default=2)
    parser.add_argument("--seconds", type=int, default=1, help="on each clock at the start")
    parser.add_argument("--increment", type=float, default=0.0, help="seconds per move")
    parser.add_argument("--moves", type=int, default=0, help="the seconds are for so many moves each time")
    parser.add_argument("--variant", choices=("normal", "fischerandom"), default="normal")
    parser.add_argument("--start", type=int, default=0, help="number of the first Chess960 start")
    parser.add_argument("--opening-moves", type=int, default=0, help="begin with so many moves played for the engines")
    parser.add_argument("--adjudicate", action="store_true", help="xboard ends games; engines need not claim results")
    parser.add_argument("--ponder", action="store_true")
    parser.add_argument("--no-flags", action="store_true", help="nobody loses on time (for slow builds)")
    parser.add_argument("--first-uci", action="store_true")
    parser.add_argument("--second-uci", action="store_true")
    parser.add_argument("--first-must-win", action="store_true", help="any other result is a failure")
    parser.add_argument("--must-castle", action="store_true", help="both sides, in every game")
    parser.add_argument("--screenshot", type=float, default=0.0, help="seconds until a picture of the screen is taken")
    parser.add_argument("--keep", type=pathlib.Path, help="folder for the records (default: kept only on failure)")
    parser.add_argument("--setting", action="append", default=[], help='line of quelmar.ini, such as "resign yes"')
    parser.add_argument("--xboard", default="", help="more options for xboard")
    return parser.parse_args()


def engine(command: str, is_uci: bool, must_exist: bool) -> xboard.Engine:
    program, *rest = shlex.split(command)
    found = shutil.which(program, path=xboard.SEARCH_PATH)
    if not found and must_exist:
        sys.exit(f"{program}: no such program")
    return xboard.Engine(" ".join([os.path.abspath(found) if found else program, *rest]), is_uci)


def games_not_won_by_first(games: list[records.Game]) -> list[str]:
    # xboard alternates colours and lets the first engine begin with White.
    wanted = ("1-0", "0-1")
    return [f"game {number + 1}: {game.result}, not won by the first engine" for number, game in enumerate(games)
            if game.result != wanted[number % 2]]


def games_without_castling(games: list[records.Game]) -> list[str]:
    return [f"game {number}: {side} has not castled" for number, game in enumerate(games, 1)
            for begin, side in enumerate(("White", "Black"))
            if not any(move.startswith("O-O") for move in game.moves[begin::2])]


def run(match: xboard.Match, folder: pathlib.Path, given: argparse.Namespace) -> list[str]:
    """Plays, prints the summary and returns the failures."""
    trouble = []
    try:
        xboard.play(match, folder)
    except xboard.Trouble as reason:
        trouble.append(str(reason))
    verdict = records.judge(folder, match.games, match.first == match.second)
    failures = trouble + verdict.failures
    if given.first_must_win:
        failures += games_not_won_by_first(verdict.games)
    if given.must_castle:
        failures += games_without_castling(verdict.games)
    if (folder / "screen.xwd").exists():
        screenshot.convert(folder / "screen.xwd", folder / "screen.png")
        (folder / "screen.xwd").unlink()
    print(records.summary(folder, verdict.games))
    for failure in failures:
        print("FAILURE", failure)
    return failures


def main() -> int:
    given = read_arguments()
    match = xboard.Match(
        first=engine(given.first, given.first_uci, True),
        second=engine(given.second or given.first, given.second_uci, False),
        games=given.games, seconds=given.seconds, increment=given.increment, moves_per_control=given.moves,
        variant=given.variant, adjudicate=given.adjudicate, ponder=given.ponder, flags=not given.no_flags,
        screenshot_after=given.screenshot,
        settings="".join(line + "\n" for line in given.setting), xboard_options=shlex.split(given.xboard))
    if given.opening_moves:
        match.opening = long_opening.pgn(given.opening_moves)
    if given.variant == "fischerandom":
        match.starts = chess960.start_fens(given.games, given.start)
    if missing := xboard.missing_programs(match):
        print("skipped: not installed:", ", ".join(missing))
        return xboard.SKIPPED

    folder = (given.keep or pathlib.Path(tempfile.mkdtemp(prefix="quelmar-records-"))).absolute()
    folder.mkdir(parents=True, exist_ok=True)
    for old in ("games.pgn", "debug.log", "xboard.err", "screen.png"):
        (folder / old).unlink(missing_ok=True)
    load_before = os.getloadavg()[0]
    failures = run(match, folder, given)
    print(f"load average {load_before:.1f} before, {os.getloadavg()[0]:.1f} after, {os.cpu_count()} processors")
    if failures or given.keep:
        print("records in", folder)
    else:
        shutil.rmtree(folder)
    print("match failed" if failures else f"match passed: {given.games} games ended by the rules")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
