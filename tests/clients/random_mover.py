#!/usr/bin/env python3
"""An xboard engine that plays random legal moves: random_mover.py QUELMAR [SEED].

It knows no chess. A Quelmar process in force mode keeps its game, lists the legal moves (its answer to a move that it
does not know) and claims the results, which are passed on.
"""

import pathlib
import random
import re
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "sessions"))
from engine import Engine  # noqa: E402

FEATURES = ('feature ping=1 setboard=1 san=0 usermove=1 time=1 sigint=0 sigterm=0 reuse=1 colors=0 '
            'myname="Random mover" done=1')
KEEPS_THE_GAME = ("new", "setboard", "usermove", "undo", "remove")
RESULT = re.compile(r"^(?:1-0|0-1|1/2-1/2) .*", re.MULTILINE)


def tell(keeper: Engine, *commands: str) -> str:
    """What answers the commands, after passing on a claimed result."""
    said = keeper.ask(*commands)
    for claim in RESULT.findall(said):
        print(claim, flush=True)
    return said


def play_for(keeper: Engine, dice: random.Random) -> None:
    playing = False  # it answers every move of the opponent
    for line in sys.stdin:
        command = line.rstrip("\n")
        word = command.partition(" ")[0]
        if word == "quit":
            break
        if word == "protover":
            print(FEATURES, flush=True)
        elif word == "ping":
            print("pong", command[5:], flush=True)
        elif word in KEEPS_THE_GAME:
            tell(keeper, command, "force")
        if word in ("new", "force", "setboard", "go"):
            playing = word in ("new", "go")
        # A command "new" waits for White's first move; a taken back move is answered by nobody.
        if word == "go" or (word == "usermove" and playing):
            moves = re.search(r"^Legal moves:\n((?:[^+].*\n)*)", tell(keeper, "usermove ----"), re.MULTILINE)[1].split()
            if moves:
                move = dice.choice(moves)
                print("move", move, flush=True)
                tell(keeper, "usermove " + move)


if __name__ == "__main__":
    with Engine(sys.argv[1]) as kept:
        kept.say("xboard", "force")
        play_for(kept, random.Random(sys.argv[2] if len(sys.argv) > 2 else None))
