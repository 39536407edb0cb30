#!/usr/bin/env python3
"""Has Quelmar solve mates through UCI and play them out: mates.py QUELMAR [FILE].

Each line of the file (default: mates.epd beside this script) holds a position, the length of its shortest mate (dm) and
all moves that begin one (bm); both were established by a search of all moves. The engine must announce just that mate
("score mate"), begin it with one of the moves, and mate its own best defence in no more moves. Every move is checked in
a second process, which claims the mate in the end.

Mates by zugzwang do not belong in the file: the search lets the defender pass, so it finds them a move late.
"""

import pathlib
import queue
import re
import subprocess
import sys
import threading
import time
from dataclasses import dataclass

PATIENCE = 60.0  # seconds for one search; the hardest takes a few on a busy machine
DEFENCE_MS = 100
EXACT_MATE = re.compile(r"info .*score mate (-?\d+) (?!upperbound|lowerbound).*\bpv (.*)")


class Failure(Exception):
    pass


class Engine:
    def __init__(self, program: str) -> None:
        self.process = subprocess.Popen([program], stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True, bufsize=1)
        self.lines: queue.Queue[str | None] = queue.Queue()
        threading.Thread(target=self._read, daemon=True).start()

    def _read(self) -> None:
        for line in self.process.stdout:
            self.lines.put(line.rstrip("\n"))
        self.lines.put(None)

    def send(self, *commands: str) -> None:
        for command in commands:
            self.process.stdin.write(command + "\n")

    def until(self, beginning: str, deadline: float) -> list[str]:
        """The lines up to the one with this beginning."""
        found = []
        while not (found and found[-1].startswith(beginning)):
            try:
                line = self.lines.get(timeout=max(0.0, deadline - time.monotonic()))
            except queue.Empty:
                raise Failure(f'no "{beginning}" in time') from None
            if line is None:
                raise Failure("the engine has ended")
            found.append(line)
        return found

    def stop(self) -> None:
        self.process.kill()
        self.process.wait()


@dataclass
class Problem:
    fen: str
    moves_to_mate: int
    keys: list[str]


def read_problems(path: pathlib.Path) -> list[Problem]:
    problems = []
    for line in path.read_text().splitlines():
        found = re.fullmatch(r"(.*) dm (\d+); bm ([^;]*);", line)
        problems.append(Problem(found[1], int(found[2]), found[3].split()))
    return problems


def announced_mate(solver: Engine, position: str, at_most: int) -> tuple[int, str, list[str]]:
    """Searches until a mate in at most so many moves is announced; its length, the best move and the line."""
    deadline = time.monotonic() + PATIENCE
    solver.send(position, "go infinite")
    while True:
        info = EXACT_MATE.match(solver.until("info", deadline)[-1])
        if info and 0 < int(info[1]) <= at_most:
            break
    solver.send("stop")
    best = solver.until("bestmove", deadline)[-1].split()[1]
    return int(info[1]), best, info[2].split()


def replay(referee: Engine, fen: str, moves: list[str]) -> str:
    """Plays the moves; the result claimed at the end, or nothing. An illegal move is a failure."""
    referee.send("setboard " + fen, *("usermove " + move for move in moves), "ping 1")
    lines = referee.until("pong", time.monotonic() + PATIENCE)
    for line in lines:
        if line.startswith("Illegal move"):
            raise Failure(f"{line} in {' '.join(moves)}")
    return next((line for line in lines if line.endswith("}")), "")


def play_out(solver: Engine, referee: Engine, problem: Problem, first_move: str) -> None:
    played = [first_move]
    remaining = problem.moves_to_mate - 1
    while not (claim := replay(referee, problem.fen, played)):
        if remaining == 0:
            raise Failure(f"no mate after {' '.join(played)}")
        solver.send(f"position fen {problem.fen} moves {' '.join(played)}", f"go movetime {DEFENCE_MS}")
        played.append(solver.until("bestmove", time.monotonic() + PATIENCE)[-1].split()[1])
        replay(referee, problem.fen, played)
        _, best, _ = announced_mate(solver, f"position fen {problem.fen} moves {' '.join(played)}", remaining)
        played.append(best)
        remaining -= 1
    if not claim.endswith("{Mate}"):
        raise Failure(f"{claim} after {' '.join(played)}")


def solve(solver: Engine, referee: Engine, problem: Problem) -> str:
    """What to report of a solved problem."""
    solver.send("ucinewgame")
    started = time.monotonic()
    length, best, line = announced_mate(solver, f"position fen {problem.fen}", problem.moves_to_mate)
    seconds = time.monotonic() - started
    if length < problem.moves_to_mate:
        raise Failure(f"announces a mate in {length}")
    if best not in problem.keys:
        raise Failure(f"begins with {best}")
    claim = replay(referee, problem.fen, line)
    whole = len(line) == 2 * length - 1
    if whole and not claim.endswith("{Mate}"):
        raise Failure(f"the line {' '.join(line)} does not mate")
    play_out(solver, referee, problem, best)
    return f"{best} in {seconds:.2f} s, {'whole' if whole else 'shortened'} line"


def main() -> int:
    program = sys.argv[1]
    path = pathlib.Path(sys.argv[2]) if len(sys.argv) > 2 else pathlib.Path(__file__).with_name("mates.epd")
    problems = read_problems(path)
    solver, referee = Engine(program), Engine(program)
    failures = 0
    try:
        solver.send("uci")
        solver.until("uciok", time.monotonic() + PATIENCE)
        referee.send("xboard", "force")
        for problem in problems:
            report = f"mate in {problem.moves_to_mate}: {problem.fen}: "
            try:
                print(report + solve(solver, referee, problem), flush=True)
            except Failure as failure:
                failures += 1
                print("FAILURE", report + str(failure), flush=True)
                if failure.args[0].startswith("no "):
                    break  # it may be hanging
    finally:
        solver.stop()
        referee.stop()
    print(f"{len(problems) - failures} of {len(problems)} mates solved and played out")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
