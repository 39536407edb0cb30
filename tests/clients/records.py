"""Judges the records that a match in xboard leaves: were all games played, and did each end by the rules of chess?"""

import pathlib
import re
import sys
from collections import Counter
from dataclasses import dataclass, field

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "sessions"))
from board import START_FEN, Board  # noqa: E402

# The comments in front of a result that tell of an end by the rules (claimed by an engine and checked by xboard, or
# found by xboard), or of a side that gave up. All others (lost on time, an illegal move, a false claim, an engine that
# is gone, the match broken off) are failures.
RULES = re.compile(
    r"""^(
        Mate | Stalemate | Repetition | Material | 50\ moves | (White|Black|computer)\ resigns? |
        (White|Black)\ mates | Draw\ by\ repetition | (Drawn|Draw)\ by\ .* | .*checkmate.* | .*stalemate.* |
        Xboard\ adjudication:\ (Checkmate|Stalemate|Insufficient\ mating\ material|50-move\ rule|repetition.*) |
        XBoard\ adjudication:\ repetition\ draw |
        Draw\ claim:\ .*
    )$""", re.VERBOSE | re.IGNORECASE)
LAST_WORDS = 12
RESULTS = ("1-0", "0-1", "1/2-1/2")
# What no engine may say and xboard may not have to say about one. Some engines take "computer" for a move.
ALARMS = re.compile(r"Illegal move(?!: computer)|Forfeit|exited unexpectedly|Sanitizer|runtime error:|\*\*\* "
                    r"|Error in EPD|not supported by|rejected by")
SPOKEN = re.compile(r"\d+ [<>](first |second): ?")
MOVE_MADE = re.compile(r"^\d+ <(?:first |second): ?(?:move|My move is :) (\S+)", re.MULTILINE)


@dataclass
class Game:
    tags: dict[str, str]
    plies: int
    reason: str  # the comment in front of the result
    result: str
    moves: list[str] = field(default_factory=list)  # in coordinates, as the engines wrote them
    last_words: list[str] = field(default_factory=list)  # of the debug log, before the game was ended

    def ended_by_rules(self) -> bool:
        return self.result in RESULTS and bool(RULES.match(self.reason) or self.is_minor_pieces_draw())

    def is_minor_pieces_draw(self) -> bool:
        """Quelmar claims a draw when neither side has more than one minor piece. xboard knows that a mate is possible
        even then and scores the claim as a loss."""
        if self.reason != "False draw claim: 'Material'":
            return False
        board = Board(self.tags.get("FEN", START_FEN))
        for move in self.moves:
            board.play(move)
        men = "".join(board.men.values())
        return (not re.search("[PRQprq]", men) and len(re.findall("[NB]", men)) <= 1
                and len(re.findall("[nb]", men)) <= 1)


def parse_games(text: str) -> list[Game]:
    games = []
    for part in re.split(r"\n(?=\[Event )", text):
        tags = dict(re.findall(r'^\[(\w+) "(.*)"\]$', part, re.MULTILINE))
        if not tags:
            continue
        moves = re.sub(r"^\[.*\]$", "", part, flags=re.MULTILINE)
        comments = re.findall(r"\{([^}]*)\}", moves)
        words = re.sub(r"\{[^}]*\}", " ", moves).split()
        result = words[-1] if words else "*"
        reason = " ".join(comments[-1].split()) if comments else ""
        plies = sum(1 for word in words[:-1] if not re.fullmatch(r"\d+\.+", word))
        games.append(Game(tags, plies, reason, result))
    return games


def note_conversations(games, log):
    for game, part in zip(games, re.split(r"^New game \(\d+\): ", log, flags=re.MULTILINE)[1:]):
        spoken = part.partition("\nGameEnds(")[0].splitlines()
        game.last_words = [line for line in spoken if SPOKEN.match(line)][-LAST_WORDS:]
        game.moves = MOVE_MADE.findall(part)


def alarms(name, text, limit=10):
    """Lines that must not occur, each with the line before it. The thinking of an engine never matches."""
    lines = ["", *text.splitlines()]
    return [f"{name}:{number}: {lines[number - 1]} | {line}" for number, line in enumerate(lines)
            if ALARMS.search(line)][:limit]


def opponent_lost_on_time(number, game):
    """Whether the second engine overstepped its time: that is its own affair, or the machine's."""
    # xboard alternates colours and lets the first engine begin with White.
    return game.reason.startswith(("Black", "White")[number % 2] + " wins on time")


def judge(folder, expected_games, against_itself):
    """The games, and what is wrong with them."""
    texts = {path.name: path.read_text(errors="replace") for path in folder.iterdir() if path.is_file()}
    games = parse_games(texts.get("games.pgn", ""))
    note_conversations(games, texts.get("debug.log", ""))
    failures = [] if len(games) == expected_games else [f"{len(games)} games instead of {expected_games}"]
    for number, game in enumerate(games, 1):
        if not game.ended_by_rules() and (against_itself or not opponent_lost_on_time(number, game)):
            failures.append(f"game {number} (White: {game.tags.get('White')}): {game.result} {{{game.reason}}}")
            failures += ["    " + line for line in game.last_words]
    for name in ("debug.log", "xboard.err"):
        failures += alarms(name, texts.get(name, ""))
    return games, failures


def summary(games):
    reasons = Counter(f"{game.result} {{{game.reason}}}" for game in games)
    plies = sorted(game.plies for game in games) or [0]
    lines = [f"{count:6}  {reason}" for reason, count in sorted(reasons.items())]
    lines.append(f"{plies[0]:6}  plies in the shortest game, {plies[-1]} in the longest")
    return "\n".join(lines)
