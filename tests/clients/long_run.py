#!/usr/bin/env python3
"""Plays the long matches one after the other: long_run.py QUELMAR FOLDER [NAME ...].

Each leaves its records in FOLDER/NAME, with what match.py printed in summary.txt ("picture" leaves a screenshot).
Without names all are played, which takes some hours; nothing else should keep the machine busy meanwhile. Matches whose
opponents (phalanx, gnuchess, toga2; polyglot for UCI engines) are not installed are skipped. Exit status 1 if one
failed.
"""

import pathlib
import shlex
import subprocess
import sys

import xboard

HERE = pathlib.Path(__file__).resolve().parent
RANDOM_MOVER = "{python} {here}/random_mover.py {quelmar}"
MATCHES = {
    "picture": "--games 1 --seconds 10 --increment 0.5 --second phalanx --screenshot 20",
    "self_play": "--games 100 --seconds 1 --increment 0.05",
    "chess960": "--games 100 --seconds 1 --increment 0.05 --variant fischerandom",
    "ponder": "--games 20 --seconds 2 --increment 0.05 --ponder",
    "forty_moves": "--games 4 --seconds 10 --moves 40",
    "tenths": "--games 10 --seconds 3 --increment 0.1 --variant fischerandom --start 7",
    # xboard itself takes no more than 500 moves.
    "long_games": "--games 6 --seconds 2 --increment 0.05 --opening-moves 380",
    "phalanx": "--games 20 --seconds 1 --increment 0.05 --second phalanx",
    "phalanx_forty_moves": "--games 4 --seconds 10 --moves 40 --second phalanx",
    "phalanx_ponder": "--games 10 --seconds 2 --increment 0.05 --ponder --second phalanx",
    # UCI engines, which play through polyglot; gnuchess is more dependable so than under its own protocol.
    "gnuchess": "--games 10 --seconds 1 --increment 0.05 --second gnuchessu --second-uci",
    "toga2": "--games 10 --seconds 1 --increment 0.05 --second toga2 --second-uci",
    "resigning": "--games 10 --seconds 1 --increment 0.05 --setting 'resign yes' --second toga2 --second-uci",
    # quelmar-uci needs polyglot between itself and xboard.
    "uci": "--games 10 --seconds 2 --increment 0.05 --first {quelmar}-uci --first-uci --second phalanx",
    "uci_chess960": "--games 20 --seconds 2 --increment 0.05 --variant fischerandom --start 3 "
                    "--first {quelmar}-uci --first-uci --second {quelmar}",
    # Every kind of move and of ending, in long games: xboard has to agree with each move and each claimed result.
    "random_games": f"--games 100 --seconds 60 --first '{RANDOM_MOVER} 1' --second '{RANDOM_MOVER} 2'",
    "random_games_chess960": f"--games 100 --seconds 60 --variant fischerandom --first '{RANDOM_MOVER} 3' "
                             f"--second '{RANDOM_MOVER} 4'",
    "random_mover": f"--games 20 --seconds 1 --increment 0.05 --first-must-win --second '{RANDOM_MOVER}'",
    "random_mover_chess960": "--games 20 --seconds 1 --increment 0.05 --first-must-win --variant fischerandom "
                             f"--start 11 --second '{RANDOM_MOVER}'",
}


def run(name: str, quelmar: pathlib.Path, folder: pathlib.Path) -> str:
    """"passed", "failed" or "skipped"."""
    options = MATCHES[name].format(python=sys.executable, here=HERE, quelmar=quelmar)
    records = folder / name
    records.mkdir(parents=True, exist_ok=True)
    command = [sys.executable, "-B", str(HERE / "match.py"), "--first", str(quelmar), "--keep", str(records)]
    done = subprocess.run(command + shlex.split(options), stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
    (records / "summary.txt").write_text(done.stdout)
    print(f"== {name}: {options}\n{done.stdout}", flush=True)
    return {0: "passed", xboard.SKIPPED: "skipped"}.get(done.returncode, "failed")


def main() -> int:
    quelmar, folder = (pathlib.Path(text).absolute() for text in sys.argv[1:3])
    names = sys.argv[3:] or list(MATCHES)
    outcomes = {name: run(name, quelmar, folder) for name in names}
    for name, outcome in outcomes.items():
        print(f"{outcome:8} {name}")
    return 1 if "failed" in outcomes.values() else 0


if __name__ == "__main__":
    sys.exit(main())
