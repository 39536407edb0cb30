"""Plays a match of two engines in xboard, on a display and in a home directory of its own.

xboard is the referee: it keeps the clocks, checks every move and, unless told to end games itself, checks every result
that an engine claims. A match leaves in its folder games.pgn, debug.log (the whole conversation with both engines, with
milliseconds) and xboard.err (xboard's own messages and what the engines write on standard error).

Nothing of the user is read or written, and nothing outlives a match: this process adopts every orphan below it, so that
engines whose xboard has died are found and ended too.
"""

import ctypes
import os
import pathlib
import shutil
import signal
import subprocess
import sys
import tempfile
import time
from dataclasses import dataclass, field

SKIPPED = 77  # exit status by which CTest knows a test that could not run
PR_SET_PDEATHSIG, PR_SET_CHILD_SUBREAPER = 1, 36
SCREEN = "1024x768x24"
# Debian installs xboard and the engines where the PATH of a service often does not look.
SEARCH_PATH = os.environ.get("PATH", os.defpath) + os.pathsep + "/usr/games"


class Trouble(Exception):
    """The match could not be played to its end."""


@dataclass
class Engine:
    command: str
    is_uci: bool = False


@dataclass
class Match:
    first: Engine
    second: Engine
    games: int
    seconds: int = 1  # xboard's clocks start at whole seconds
    increment: float = 0.0  # seconds per move; not used with moves_per_control
    moves_per_control: int = 0  # the seconds are for so many moves each time; 0: for the game
    variant: str = "normal"
    starts: list[str] = field(default_factory=list)  # FENs, one per game; empty: the usual start position
    opening: str = ""  # a game in PGN; every game goes on from its end
    adjudicate: bool = False  # xboard ends games at mate and draws; otherwise the engines have to claim
    ponder: bool = False
    flags: bool = True  # a side that oversteps its time loses
    screenshot_after: float = 0.0  # seconds into the match; 0: none
    settings: str = ""  # lines of the "quelmar.ini" in the engines' working directory
    xboard_options: list[str] = field(default_factory=list)

    def time_limit(self) -> float:
        """Seconds after which even a match of very long games has ended."""
        long_game = 300  # moves
        spans = 1 + long_game / self.moves_per_control if self.moves_per_control else 1
        per_side = self.seconds * spans + max(self.increment, 0.1) * long_game
        return 60 + self.games * (2 * per_side + 10)

    def silence_limit(self) -> float:
        """Seconds without a word from either engine that no clock allows."""
        return 45 + self.seconds + self.increment


def missing_programs(match: Match) -> list[str]:
    programs = ["xboard", "Xvfb", match.second.command.split()[0]]
    if match.first.is_uci or match.second.is_uci:
        programs.append("polyglot")  # by which xboard speaks to UCI engines
    return [program for program in programs if not shutil.which(program, path=SEARCH_PATH)]


def descendants(process: int) -> list[int]:
    children: dict[int, list[int]] = {}
    for entry in pathlib.Path("/proc").iterdir():
        if entry.name.isdigit():
            try:
                # The name in parentheses may hold blanks; the parent is the second field behind it.
                parent = int((entry / "stat").read_text().rpartition(")")[2].split()[1])
            except (OSError, ValueError, IndexError):
                continue
            children.setdefault(parent, []).append(int(entry.name))
    found = list(children.get(process, []))
    for child in found:
        found.extend(children.get(child, []))
    return found


def adopt_orphans() -> None:
    ctypes.CDLL(None).prctl(PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0)


def die_with_parent() -> None:
    """Runs in a new child: even when this process is killed, the child ends (and with xboard its engines)."""
    ctypes.CDLL(None).prctl(PR_SET_PDEATHSIG, signal.SIGKILL, 0, 0, 0)


def end_descendants() -> None:
    """Ends every process below this one, first politely."""
    for sign, patience in ((signal.SIGTERM, 2.0), (signal.SIGKILL, 5.0)):
        for process in descendants(os.getpid()):
            try:
                os.kill(process, sign)
            except ProcessLookupError:
                pass
        deadline = time.monotonic() + patience
        while time.monotonic() < deadline and descendants(os.getpid()):
            try:
                while os.waitpid(-1, os.WNOHANG)[0]:
                    pass
            except ChildProcessError:
                return
            time.sleep(0.02)


def private_environment(home: pathlib.Path) -> dict[str, str]:
    return {
        "PATH": SEARCH_PATH,
        "HOME": str(home),
        "XDG_CONFIG_HOME": str(home / ".config"),
        "XDG_RUNTIME_DIR": str(home),
        "LC_ALL": "C",
        "NO_AT_BRIDGE": "1",  # no accessibility bus
        "GIO_USE_VFS": "local",
    }


def start_display(folder: pathlib.Path, environment: dict[str, str]) -> str:
    """Starts a virtual screen whose picture is kept in a file of `folder`; returns the display's name."""
    read_end, write_end = os.pipe()
    subprocess.Popen(
        ["Xvfb", "-displayfd", str(write_end), "-screen", "0", SCREEN, "-nolisten", "tcp", "-fbdir", str(folder)],
        pass_fds=[write_end], env=environment, preexec_fn=die_with_parent, stdin=subprocess.DEVNULL,
        stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    os.close(write_end)
    with os.fdopen(read_end) as pipe:
        number = pipe.readline().strip()  # the end of the file, if Xvfb gives up
    if not number:
        raise Trouble("Xvfb does not start")
    return ":" + number


def xboard_command(match: Match, folder: pathlib.Path, engine_folder: pathlib.Path) -> list[str]:
    minutes, seconds = divmod(match.seconds, 60)
    flag = lambda value: "true" if value else "false"
    command = [
        "xboard", "-matchGames", str(match.games), "-matchPause", "100",
        "-fcp", match.first.command, "-fd", str(engine_folder), "-scp", match.second.command, "-sd", str(engine_folder),
        "-variant", match.variant, "-timeControl", f"{minutes}:{seconds:02}",
        "-saveGameFile", str(folder / "games.pgn"),
        "-debugMode", "true", "-nameOfDebugFile", str(folder / "debug.log"),
        "-autoCallFlag", flag(match.flags), "-testClaims", "true",
        "-checkMates", flag(match.adjudicate), "-materialDraws", flag(match.adjudicate),
        "-repeatsToDraw", "3" if match.adjudicate else "0", "-ruleMoves", "50" if match.adjudicate else "0",
        "-ponderNextMove", flag(match.ponder), "-showThinking", "true",
        "-saveSettingsOnExit", "false", "-popupExitMessage", "false", "-popupMoveErrors", "false", "-soundMove", "",
    ]
    if match.screenshot_after:
        command += ["-animateMoving", "false"]
    else:
        command += ["-noGUI"]  # drawing takes tens of milliseconds per move, off the clock of the side to move
    if match.moves_per_control:
        command += ["-movesPerSession", str(match.moves_per_control), "-timeIncrement", "-1"]
    else:
        command += ["-timeIncrement", str(match.increment)]
    if match.starts:
        starts = folder / "starts.fen"
        starts.write_text("".join(fen + "\n" for fen in match.starts))
        command += ["-loadPositionFile", str(starts), "-loadPositionIndex", "-1"]  # the next one for every game
    if match.opening:
        opening = folder / "opening.pgn"
        opening.write_text(match.opening)
        command += ["-loadGameFile", str(opening), "-loadGameIndex", "1", "-timeDelay", "0"]
    for prefix, engine in (("first", match.first), ("second", match.second)):
        if engine.is_uci:
            command += [f"-{prefix}IsUCI", "true"]
    return command + match.xboard_options


def wait_for_end(xboard: subprocess.Popen, match: Match, folder: pathlib.Path, screen: pathlib.Path) -> None:
    log = folder / "debug.log"
    started = heard = time.monotonic()
    size = 0
    pictured = match.screenshot_after == 0
    while xboard.poll() is None:
        time.sleep(0.1)
        now = time.monotonic()
        if log.exists() and log.stat().st_size != size:
            size, heard = log.stat().st_size, now
        if not pictured and now - started > match.screenshot_after:
            shutil.copyfile(screen, folder / "screen.xwd")
            pictured = True
        if now - heard > match.silence_limit():
            raise Trouble(f"no word from either engine for {match.silence_limit():.0f} seconds")
        if now - started > match.time_limit():
            raise Trouble(f"not ended within {match.time_limit():.0f} seconds")


def play(match: Match, folder: pathlib.Path) -> None:
    """Plays the match and leaves its records in `folder`, which must exist and hold no older ones. Raises Trouble when
    it did not come to its end; the records are then what there is."""
    adopt_orphans()
    signal.signal(signal.SIGTERM, lambda *_: sys.exit("terminated"))  # so that the children are ended first
    with tempfile.TemporaryDirectory(prefix="quelmar-match-") as scratch:
        home = pathlib.Path(scratch) / "home"
        engine_folder = pathlib.Path(scratch) / "engines"
        home.mkdir(mode=0o700)
        engine_folder.mkdir()
        (engine_folder / "quelmar.ini").write_text(match.settings)
        environment = private_environment(home)
        try:
            environment["DISPLAY"] = start_display(pathlib.Path(scratch), environment)
            with open(folder / "xboard.err", "w") as messages:
                xboard = subprocess.Popen(xboard_command(match, folder, engine_folder), env=environment, cwd=scratch,
                                          preexec_fn=die_with_parent, stdin=subprocess.DEVNULL, stdout=messages,
                                          stderr=messages)
                wait_for_end(xboard, match, folder, pathlib.Path(scratch) / "Xvfb_screen0")
        finally:
            end_descendants()
