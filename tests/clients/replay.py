"""Follows legal moves on a board, to know which men are left in the end."""

START_FEN = "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1"
CASTLED = {"O-O": ("g", "f"), "O-O-O": ("c", "d")}  # files of king and rook
FILES = "abcdefgh"


def board_of(fen: str) -> dict[str, str]:
    board = {}
    for rank, row in zip("87654321", fen.split()[0].split("/")):
        file = 0
        for letter in row:
            if letter.isdigit():
                file += int(letter)
            else:
                board[FILES[file] + rank] = letter
                file += 1
    return board


def castle(board: dict[str, str], text: str, white: bool) -> None:
    king, rook = ("K", "R") if white else ("k", "r")
    home = next(square for square, man in board.items() if man == king)
    # The castling rook is the nearest one on its side of the king.
    place = FILES.index(home[0])
    files = FILES[place + 1:] if text == "O-O" else FILES[:place][::-1]
    rook_home = next(file + home[1] for file in files if board.get(file + home[1]) == rook)
    del board[home], board[rook_home]
    king_file, rook_file = CASTLED[text]
    board[king_file + home[1]], board[rook_file + home[1]] = king, rook


def play(board: dict[str, str], text: str, white: bool) -> None:
    if text in CASTLED:
        castle(board, text, white)
        return
    origin, target = text[:2], text[2:4]
    man = board[origin]
    if man in "Kk" and abs(ord(origin[0]) - ord(target[0])) > 1:  # castling as some engines write it
        castle(board, "O-O" if target[0] == "g" else "O-O-O", white)
        return
    if man in "Pp" and origin[0] != target[0] and target not in board:
        del board[target[0] + origin[1]]  # taken in passing
    del board[origin]
    promoted = text[4:5]
    board[target] = man if not promoted else promoted.upper() if white else promoted.lower()


def men_left(start_fen: str, moves: list[str]) -> str:
    board = board_of(start_fen)
    white = start_fen.split()[1] == "w"
    for text in moves:
        play(board, text, white)
        white = not white
    return "".join(sorted(board.values()))
