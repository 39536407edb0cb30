"""The 960 start positions by their usual numbers (518 is the start position of ordinary chess)."""

COUNT = 960
STRIDE = 97  # shares no factor with COUNT: steps of it meet every start once before any comes again
# The two squares of the knights among the five that bishops and queen leave free.
KNIGHT_PAIRS = [(a, b) for a in range(5) for b in range(a + 1, 5)]


def back_rank(number: int) -> str:
    """The white men from a to h, for a number from 0 to 959."""
    squares = [""] * 8
    number, light = divmod(number, 4)
    squares[2 * light + 1] = "B"
    number, dark = divmod(number, 4)
    squares[2 * dark] = "B"
    knights, queen = divmod(number, 6)

    def free() -> list[int]:
        return [square for square, man in enumerate(squares) if not man]

    squares[free()[queen]] = "Q"
    first, second = (free()[place] for place in KNIGHT_PAIRS[knights])
    squares[first] = squares[second] = "N"
    for square, man in zip(free(), "RKR"):
        squares[square] = man
    return "".join(squares)


def start_fens(count: int, first: int = 0) -> list[str]:
    """FENs of `count` starts, spread over all of them; different ones as long as there are."""
    ranks = [back_rank((first + place * STRIDE) % COUNT) for place in range(count)]
    return [f"{rank.lower()}/pppppppp/8/8/8/8/PPPPPPPP/{rank} w KQkq - 0 1" for rank in ranks]
