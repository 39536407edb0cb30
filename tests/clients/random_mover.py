#!/usr/bin/env python3
"""An xboard engine that plays random legal moves: random_mover.py QUELMAR [SEED].

It knows no chess. A Quelmar process in force mode keeps its game, lists the legal moves (its answer to a move that it
does not know) and claims the results, which are passed on.
"""

import random
import subprocess
import sys

FEATURES = ("ping=1", "setboard=1", "san=0", "usermove=1", "time=1", "sigint=0", "sigterm=0", "reuse=1", "colors=0",
            'myname="Random mover"', "done=1")
KEEPS_THE_GAME = ("new", "setboard", "usermove", "undo", "remove")
NO_MOVE = "usermove ----"


class Keeper:
    """The process that knows the rules."""

    def __init__(self, program: str) -> None:
        self.process = subprocess.Popen([program], stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True, bufsize=1)
        self.tell("xboard")
        self.tell("force")

    def tell(self, command: str) -> list[str]:
        """Sends a command; returns all lines that answer it, after passing on what claims a result."""
        self.process.stdin.write(command + "\nping 1\n")
        lines = []
        for line in self.process.stdout:
            if line.startswith("pong"):
                return lines
            lines.append(line.rstrip("\n"))
            if line.startswith(("1-0", "0-1", "1/2-1/2")):
                print(line, end="", flush=True)
        sys.exit("random mover: its Quelmar has ended")

    def legal_moves(self) -> list[str]:
        lines = self.tell(NO_MOVE)
        begin = lines.index("Legal moves:") + 1
        end = next(place for place in range(begin, len(lines)) if lines[place].startswith("+---"))
        return lines[begin:end]


def main() -> None:
    keeper = Keeper(sys.argv[1])
    dice = random.Random(sys.argv[2] if len(sys.argv) > 2 else None)
    playing = False  # it answers every move of the opponent
    for line in sys.stdin:
        command = line.rstrip("\n")
        word = command.partition(" ")[0]
        if word == "quit":
            break
        if word == "protover":
            print("feature", " ".join(FEATURES), flush=True)
        elif word == "ping":
            print("pong", command[5:], flush=True)
        elif word in KEEPS_THE_GAME:
            keeper.tell(command)
            keeper.tell("force")
        if word in ("new", "force", "setboard"):
            playing = word == "new"
        if word == "go":
            playing = True
        # A command "new" waits for White's first move; a taken back move is answered by nobody.
        if word == "go" or (word == "usermove" and playing):
            if moves := keeper.legal_moves():
                move = dice.choice(moves)
                print("move", move, flush=True)
                keeper.tell("usermove " + move)


if __name__ == "__main__":
    main()
