#!/usr/bin/env python3
"""Has Quelmar solve mates through UCI and play them out: mates.py QUELMAR [FILE].

Each line of the file (default: mates.epd beside this script) holds a position, the length of its shortest mate (dm) and
all moves that begin one (bm); both were established by a search of all moves. The engine must announce just that mate
("score mate"), begin it with one of the moves, and mate its own best defence in no more moves. Every move is checked in
a second process, which claims the mate in the end.

Mates by zugzwang do not belong in the file: the search lets the defender pass, so it finds them a move late.
"""

import pathlib
import re
import sys

from engine import Engine, Failure

PATIENCE = 60.0  # seconds for one search; the hardest takes a few on a busy machine
DEFENCE_MS = 100
EXACT_MATE = r"^info .*score mate (\d+) (?!upperbound|lowerbound).*\bpv (.*)"


def announced_mate(solver, position, at_most):
    """Searches until a mate in at most so many moves is announced; its length, the best move and the line."""
    solver.say(position, "go infinite")
    while int((info := solver.await_match(EXACT_MATE))[1]) not in range(1, at_most + 1):
        pass
    solver.say("stop")
    return int(info[1]), solver.await_match(r"^bestmove (\S+)")[1], info[2].split()


def replay(referee, fen, moves):
    """Plays the moves; the result claimed at the end, or nothing. An illegal move is a failure."""
    said = referee.ask("setboard " + fen, *("usermove " + move for move in moves))
    if illegal := re.search("^Illegal move.*", said, re.MULTILINE):
        raise Failure(f"{illegal[0]} in {' '.join(moves)}")
    claims = re.findall(r".*\}$", said, re.MULTILINE)
    return claims[0] if claims else ""


def play_out(solver, referee, fen, played, remaining):
    while not (claim := replay(referee, fen, played)):
        if remaining == 0:
            raise Failure(f"no mate after {' '.join(played)}")
        solver.say(f"position fen {fen} moves {' '.join(played)}", f"go movetime {DEFENCE_MS}")
        played.append(solver.await_match(r"^bestmove (\S+)")[1])
        replay(referee, fen, played)
        played.append(announced_mate(solver, f"position fen {fen} moves {' '.join(played)}", remaining)[1])
        remaining -= 1
    if not claim.endswith("{Mate}"):
        raise Failure(f"{claim} after {' '.join(played)}")


def solve(solver, referee, problem):
    found = re.fullmatch(r"(.*) dm (\d+); bm ([^;]*);", problem)
    fen, moves_to_mate, keys = found[1], int(found[2]), found[3].split()
    solver.say("ucinewgame")
    length, best, line = announced_mate(solver, f"position fen {fen}", moves_to_mate)
    if length < moves_to_mate:
        raise Failure(f"announces a mate in {length}")
    if best not in keys:
        raise Failure(f"begins with {best}")
    claim = replay(referee, fen, line)
    if len(line) == 2 * length - 1 and not claim.endswith("{Mate}"):  # others are shortened
        raise Failure(f"the line {' '.join(line)} does not mate")
    play_out(solver, referee, fen, [best], moves_to_mate - 1)


def main():
    program = sys.argv[1]
    path = pathlib.Path(sys.argv[2]) if len(sys.argv) > 2 else pathlib.Path(__file__).with_name("mates.epd")
    failures = 0
    for problem in path.read_text().splitlines():
        with Engine(program) as solver, Engine(program) as referee:
            solver.patience = max(solver.patience, PATIENCE)
            solver.say("uci")
            referee.say("xboard", "force")
            try:
                solve(solver, referee, problem)
                print("solved", problem, flush=True)
            except Failure as failure:
                failures += 1
                print(f"FAILURE {problem}: {failure}", flush=True)
    sys.exit(1 if failures else 0)


if __name__ == "__main__":
    main()
