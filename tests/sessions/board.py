"""Where the men stand, for readers that know how castling is written but trust the rest of a move."""

FILES = "abcdefgh"
START_FEN = "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1"


class Board:
    """Men by square. A move that moves no own man or takes one is a ValueError."""

    def __init__(self, fen=START_FEN):
        placement, side = fen.split()[:2]
        rows = ["".join("-" * int(c) if c.isdigit() else c for c in row) for row in placement.split("/")]
        self.men = {file + rank: man for rank, row in zip("87654321", rows) for file, man in zip(FILES, row) if man != "-"}
        self.white = side == "w"
        self.castlings = []  # how each was written

    def is_own(self, square):
        return square in self.men and self.men[square].isupper() == self.white

    def play(self, move):
        if move.startswith("O-O"):
            king = next(square for square in self.men if self.is_own(square) and self.men[square] in "Kk")
            self.castle(king, move == "O-O", None, "letters")
        else:
            self.play_squares(move[:2], move[2:4], move[4:])
        self.white = not self.white

    def play_squares(self, origin, target, promoted):
        if not self.is_own(origin):
            raise ValueError(f"{origin}{target} moves no own man")
        man, way = self.men[origin], ord(target[0]) - ord(origin[0])
        if man in "Kk" and self.is_own(target):
            return self.castle(origin, way > 0, target, "king takes rook")
        if man in "Kk" and abs(way) > 1:
            return self.castle(origin, way > 0, None, "king's way")
        if self.is_own(target):
            raise ValueError(f"{origin}{target} takes an own man")
        if man in "Pp" and way != 0 and target not in self.men:
            del self.men[target[0] + origin[1]]  # taken in passing
        del self.men[origin]
        self.men[target] = (promoted.upper() if self.white else promoted.lower()) or man
        return None

    def castle(self, king, short, rook, notation):
        rank, man = king[1], self.men.pop(king)
        place = FILES.index(king[0])
        # Unless it is named, the rook is the nearest one on its side of the king.
        files = FILES[place + 1:] if short else FILES[:place][::-1]
        rooks = [file + rank for file in files if self.men.get(file + rank) == ("R" if self.white else "r")]
        if not rooks or (rook or rooks[0]) not in rooks:
            raise ValueError(f"no rook to castle with {king}")
        rook_man = self.men.pop(rook or rooks[0])
        self.men[("g" if short else "c") + rank], self.men[("f" if short else "d") + rank] = man, rook_man
        self.castlings.append(notation)
