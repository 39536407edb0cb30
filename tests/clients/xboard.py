"""Plays a match of two engines in xboard, on a display and in a home directory of its own.

xboard is the referee: it keeps the clocks, checks every move and, unless told to end games itself, checks every result
that an engine claims. A match leaves in its folder games.pgn, debug.log (the whole conversation with both engines, with
milliseconds) and xboard.err (xboard's own messages and what the engines write on standard error).

Nothing of the user is read or written, and nothing outlives a match: this process adopts every orphan below it, so that
engines whose xboard has died are found and ended too.
"""

import contextlib
import ctypes
import os
import pathlib
import shutil
import signal
import subprocess
import sys
import tempfile
import time

SKIPPED = 77  # exit status by which CTest knows a test that could not run
PR_SET_PDEATHSIG, PR_SET_CHILD_SUBREAPER = 1, 36
SCREEN = "1024x768x24"
# Debian installs xboard and the engines where the PATH of a service often does not look.
SEARCH_PATH = os.environ.get("PATH", os.defpath) + os.pathsep + "/usr/games"
LONG_GAME = 300  # moves
SILENCE = 45  # seconds without a word from either engine, beyond their clocks, that mean an end


class Trouble(Exception):
    """The match could not be played to its end."""


def missing_programs(*programs):
    return [program for program in programs if not shutil.which(program, path=SEARCH_PATH)]


def descendants(process):
    # A process may end while it is looked at.
    with contextlib.suppress(OSError):
        children = pathlib.Path(f"/proc/{process}/task/{process}/children").read_text().split()
        return children + [below for child in children for below in descendants(child)]
    return []


def end_descendants():
    """Ends every process below this one, first politely."""
    for sign, patience in ((signal.SIGTERM, 2.0), (signal.SIGKILL, 5.0)):
        for process in descendants(os.getpid()):
            with contextlib.suppress(ProcessLookupError):
                os.kill(int(process), sign)
        deadline = time.monotonic() + patience
        while time.monotonic() < deadline and descendants(os.getpid()):
            with contextlib.suppress(ChildProcessError):
                while os.waitpid(-1, os.WNOHANG)[0]:
                    pass
            time.sleep(0.02)


def start(command, environment, messages=subprocess.DEVNULL, **options):
    """Starts a child that ends (and xboard with its engines) even when this process is killed."""
    return subprocess.Popen(
        command, env=environment, stdin=subprocess.DEVNULL, stdout=messages, stderr=messages,
        preexec_fn=lambda: ctypes.CDLL(None).prctl(PR_SET_PDEATHSIG, signal.SIGKILL, 0, 0, 0), **options)


@contextlib.contextmanager
def display(home):
    """An environment with a virtual screen and `home`; at its end all processes below this one end."""
    ctypes.CDLL(None).prctl(PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0)
    signal.signal(signal.SIGTERM, lambda *_: sys.exit("terminated"))  # so that the children are ended first
    # No accessibility bus, no virtual file systems.
    environment = {"PATH": SEARCH_PATH, "HOME": str(home), "XDG_CONFIG_HOME": f"{home}/.config", "LC_ALL": "C",
                   "XDG_RUNTIME_DIR": str(home), "NO_AT_BRIDGE": "1", "GIO_USE_VFS": "local"}
    read_end, write_end = os.pipe()
    try:
        start(["Xvfb", "-displayfd", str(write_end), "-screen", "0", SCREEN, "-nolisten", "tcp"], environment,
              pass_fds=[write_end])
        os.close(write_end)
        with os.fdopen(read_end) as pipe:
            number = pipe.readline().strip()  # the end of the file, if Xvfb gives up
        if not number:
            raise Trouble("Xvfb does not start")
        yield environment | {"DISPLAY": ":" + number}
    finally:
        end_descendants()


def options_of(match, folder, engine_folder):
    """What xboard is told; `match` holds the options of match.py."""
    texts = {
        "matchGames": match.games, "matchPause": 100, "variant": match.variant, "fcp": match.first, "scp": match.second,
        "fd": engine_folder, "sd": engine_folder, "saveGameFile": folder / "games.pgn",
        "nameOfDebugFile": folder / "debug.log", "soundMove": "",
        "timeControl": f"{match.seconds // 60}:{match.seconds % 60:02}",
        "timeIncrement": -1 if match.moves else match.increment,
        "repeatsToDraw": 3 if match.adjudicate else 0, "ruleMoves": 50 if match.adjudicate else 0,
    }
    switches = {
        "debugMode": True, "testClaims": True, "showThinking": True, "autoCallFlag": not match.no_flags,
        "checkMates": match.adjudicate, "materialDraws": match.adjudicate, "ponderNextMove": match.ponder,
        "firstIsUCI": match.first_uci, "secondIsUCI": match.second_uci,
        "saveSettingsOnExit": False, "popupExitMessage": False, "popupMoveErrors": False,
    }
    if match.moves:
        texts["movesPerSession"] = match.moves
    if match.starts:
        (folder / "starts.fen").write_text("".join(fen + "\n" for fen in match.starts))
        texts |= {"loadPositionFile": folder / "starts.fen", "loadPositionIndex": -1}  # the next one for every game
    if match.opening:
        texts |= {"loadGameFile": match.opening.absolute(), "loadGameIndex": 1, "timeDelay": 0}
    texts |= {name: str(value).lower() for name, value in switches.items()}
    # Drawing takes tens of milliseconds per move, off the clock of the side to move.
    return ["-noGUI", *(word for name, value in texts.items() for word in ("-" + name, str(value))), *match.xboard]


def wait_for_end(xboard, match, log):
    """Even a match of very long games ends in time, and clocks allow only so much silence."""
    spans = 1 + LONG_GAME / match.moves if match.moves else 1
    longest = 60 + match.games * (2 * (match.seconds * spans + max(match.increment, 0.1) * LONG_GAME) + 10)
    silence = SILENCE + match.seconds + match.increment
    started = heard = time.monotonic()
    size = 0
    while xboard.poll() is None:
        time.sleep(0.1)
        now = time.monotonic()
        if log.exists() and log.stat().st_size != size:
            size, heard = log.stat().st_size, now
        if now - heard > silence:
            raise Trouble(f"no word from either engine for {silence:.0f} seconds")
        if now - started > longest:
            raise Trouble(f"not ended within {longest:.0f} seconds")


def play(match, folder):
    """Plays the match and leaves its records in `folder`, which must exist and hold no older ones. Raises Trouble when
    it did not come to its end; the records are then what there is."""
    with tempfile.TemporaryDirectory(prefix="quelmar-match-") as scratch, display(scratch) as environment:
        engine_folder = pathlib.Path(scratch, "engines")
        engine_folder.mkdir()
        (engine_folder / "quelmar.ini").write_text("".join(line + "\n" for line in match.setting))
        with open(folder / "xboard.err", "w") as messages:
            command = ["xboard", *options_of(match, folder, engine_folder)]
            wait_for_end(start(command, environment, messages, cwd=scratch), match, folder / "debug.log")
