"""Writes the first several hundred moves of a game, for engines that shall play on from there.

Both sides jump about with their knights on their own half of the board, where they cannot give check, and White pushes
a pawn whenever the fifty-move rule asks for it. No position occurs twice.
"""

import random

PUSH_EVERY = 45  # moves
JUMPS = ((1, 2), (2, 1), (2, -1), (1, -2), (-1, -2), (-2, -1), (-2, 1), (-1, 2))
Square = tuple[int, int]  # file and rank from 0


def text(square: Square) -> str:
    return "abcdefgh"[square[0]] + str(square[1] + 1)


class Walk:
    def __init__(self) -> None:
        self.dice = random.Random(1)
        back = [(file, 0) for file in range(8)]
        self.knights = [[(1, 0), (6, 0)], [(1, 7), (6, 7)]]
        self.pawns = [(file, 1) for file in range(8)]
        others = [square for square in back if square[0] not in (1, 6)]
        self.fixed = set(others) | {(file, 7 - rank) for file, rank in others} | {(file, 6) for file in range(8)}
        self.seen: set = set()

    def occupied(self) -> set[Square]:
        return self.fixed | set(self.pawns) | set(self.knights[0]) | set(self.knights[1])

    def is_new(self, side: int) -> bool:
        position = (side, *(frozenset(squares) for squares in (*self.knights, self.pawns)))
        if position in self.seen:
            return False
        self.seen.add(position)
        return True

    def jump(self, side: int) -> str:
        home = range(0, 4) if side == 0 else range(4, 8)
        taken = self.occupied()
        choices = [(origin, (origin[0] + x, origin[1] + y)) for origin in self.knights[side] for x, y in JUMPS]
        self.dice.shuffle(choices)
        for origin, target in choices:
            if target in taken or target[0] not in range(8) or target[1] not in home:
                continue
            before = list(self.knights[side])
            self.knights[side] = [target if square == origin else square for square in before]
            if self.is_new(side):
                return "N" + text(origin) + text(target)
            self.knights[side] = before
        raise RuntimeError("the knights are stuck")

    def push(self) -> str:
        taken = self.occupied()
        for file, rank in self.pawns:
            target = (file, rank + 1)
            if rank < 3 and target not in taken:
                self.pawns[file] = target
                self.is_new(0)
                return text(target)
        raise RuntimeError("no pawn can move")


def pgn(moves: int) -> str:
    """A game of so many moves (some 450 at most), without a result."""
    walk = Walk()
    words = []
    for number in range(1, moves + 1):
        white = walk.push() if number % PUSH_EVERY == 0 else walk.jump(0)
        words += [f"{number}.", white, walk.jump(1)]
    lines = [" ".join(words[place:place + 12]) for place in range(0, len(words), 12)]
    return '[Event "Long opening"]\n[Result "*"]\n\n' + "\n".join(lines) + " *\n"
