"""Judges the records that a match in xboard leaves: were all games played, and did each end by the rules of chess?"""

import pathlib
import re
from collections import Counter
from dataclasses import dataclass, field

import replay

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
SPOKEN = re.compile(r"(\d+) ([<>])(first |second): ?")
MOVE_MADE = re.compile(r"(?:move|My move is :) (\S+)")
MOVE_SENT = re.compile(r"usermove|go$|[a-h][1-8][a-h][1-8]|O-O")


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
        men = replay.men_left(self.tags.get("FEN", replay.START_FEN), self.moves)
        return (not re.search("[PRQprq]", men) and len(re.findall("[NB]", men)) <= 1
                and len(re.findall("[nb]", men)) <= 1)


@dataclass
class Clock:
    """What an engine did with its time, in milliseconds; the machine's delays are in it."""
    longest_think: int = 0
    least_left: int | None = None
    moves: int = 0


@dataclass
class Verdict:
    games: list[Game]
    failures: list[str] = field(default_factory=list)


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


def spoken_lines(log: str):
    """(milliseconds, "first" or "second", whether the engine said it, text) for all that was said in the debug log."""
    for line in log.splitlines():
        # A command that xboard writes in two pieces stands in one line of the log with two time stamps.
        pieces = list(SPOKEN.finditer(line))
        if pieces and pieces[0].start() == 0:
            text = SPOKEN.sub("", line)
            yield int(pieces[-1][1]), pieces[0][3].strip(), pieces[0][2] == "<", text


def note_conversations(games: list[Game], log: str) -> None:
    parts = re.split(r"^New game \(\d+\): ", log, flags=re.MULTILINE)[1:]
    for game, part in zip(games, parts):
        spoken = part.partition("\nGameEnds(")[0].splitlines()
        game.last_words = [line for line in spoken if SPOKEN.match(line)][-LAST_WORDS:]
        made = (MOVE_MADE.match(text) for _, _, from_engine, text in spoken_lines(part) if from_engine)
        game.moves = [found[1] for found in made if found]


def use_of_clocks(log: str) -> dict[str, Clock]:
    clocks = {"first": Clock(), "second": Clock()}
    left: dict[str, int] = {}
    since: dict[str, int] = {}
    for stamp, name, from_engine, text in spoken_lines(log):
        if not from_engine and text.startswith("time "):
            left[name] = int(text[5:]) * 10
        elif not from_engine and MOVE_SENT.match(text):
            since[name] = stamp
        elif from_engine and MOVE_MADE.match(text) and name in since and name in left:
            clock, thought = clocks[name], stamp - since.pop(name)
            clock.moves += 1
            clock.longest_think = max(clock.longest_think, thought)
            remaining = left[name] - thought
            clock.least_left = remaining if clock.least_left is None else min(clock.least_left, remaining)
    return clocks


def alarms(log: str, limit: int = 10) -> list[str]:
    """Lines that must not occur, each with the line before it. The thinking of an engine never matches."""
    lines = log.splitlines()
    found = []
    for number, line in enumerate(lines):
        if ALARMS.search(line):
            before = lines[number - 1] if number else ""
            found.append(f"debug.log:{number + 1}: {before} | {line}")
    return found[:limit]


def opponent_lost_on_time(number: int, game: Game) -> bool:
    """Whether the second engine overstepped its time: that is its own affair, or the machine's."""
    winner = re.match(r"(White|Black) wins on time", game.reason)
    # xboard alternates colours and lets the first engine begin with White.
    return bool(winner) and winner[1] == ("White" if number % 2 else "Black")


def judge(folder: pathlib.Path, expected_games: int, against_itself: bool) -> Verdict:
    pgn, log, messages = (folder / name for name in ("games.pgn", "debug.log", "xboard.err"))
    games = parse_games(pgn.read_text(errors="replace")) if pgn.exists() else []
    note_conversations(games, log.read_text(errors="replace") if log.exists() else "")
    verdict = Verdict(games)
    if len(games) != expected_games:
        verdict.failures.append(f"{len(games)} games instead of {expected_games}")
    for number, game in enumerate(games, 1):
        if not game.ended_by_rules() and (against_itself or not opponent_lost_on_time(number, game)):
            verdict.failures.append(f"game {number} (White: {game.tags.get('White')}): {game.result} {{{game.reason}}}")
            verdict.failures += ["    " + line for line in game.last_words]
    if log.exists():
        verdict.failures += alarms(log.read_text(errors="replace"))
    if messages.exists():
        verdict.failures += ["xboard.err: " + line for line in messages.read_text(errors="replace").splitlines()
                             if ALARMS.search(line)]
    return verdict


def summary(folder: pathlib.Path, games: list[Game]) -> str:
    log = folder / "debug.log"
    clocks = use_of_clocks(log.read_text(errors="replace")) if log.exists() else {}
    reasons = Counter(f"{game.result} {{{game.reason}}}" for game in games)
    plies = sorted(game.plies for game in games) or [0]
    lines = [f"{count:6}  {reason}" for reason, count in sorted(reasons.items())]
    lines.append(f"{sum(game.result == '1-0' for game in games):6}  White wins, "
                 f"{sum(game.result == '0-1' for game in games)} Black wins, "
                 f"{sum(game.result == '1/2-1/2' for game in games)} draws")
    lines.append(f"{plies[0]:6}  plies in the shortest game, {plies[len(plies) // 2]} in the middle one, "
                 f"{plies[-1]} in the longest")
    for name, clock in clocks.items():
        lines.append(f"{clock.moves:6}  moves of the {name} engine, longest thought {clock.longest_think} ms, "
                     f"least time left {clock.least_left} ms")
    return "\n".join(lines)
