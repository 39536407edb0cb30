#!/usr/bin/env python3
"""Drives xboard by its keys, as a player does: by_hand.py QUELMAR. Exit status 77 when a program or library is missing.

The engine analyses, leaves the analysis and plays on to mate, takes the mate back, mates again, and analyses the
position before the mate. A match does none of this.
"""

import ctypes
import ctypes.util
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import time

import xboard

POSITION = "6k1/5ppp/8/8/8/8/8/R6K w - - 0 1"
MATES = r"<first : move a1a8\n(?s:.*?)<first : 1-0 {Mate}"
# A key with Control (none: the start; "<": Alt and Left), and what has to be said then.
STEPS = (
    ("", r">first : ping"),
    ("a", r">first : analyze\n(?s:.*?)<first : 9 "),
    ("e", r">first : exit\n>first : force"),
    ("w", r">first : go\n(?s:.*?)" + MATES),
    ("e", ""),
    ("<", r">first : undo"),
    ("w", r">first : go\n(?s:.*?)" + MATES),
    ("e", ""),
    ("<", r">first : undo"),
    ("a", r">first : analyze\n(?s:.*?)<first : 9 "),
    ("e", r">first : exit\n"),
)
PATIENCE = 30  # seconds for a step


class Keyboard:
    """Types into the window that stands alone on the display at first, whatever opens over it later."""

    def __init__(self, display: str) -> None:
        self.x11, self.test = (ctypes.CDLL(ctypes.util.find_library(name)) for name in ("X11", "Xtst"))
        self.x11.XOpenDisplay.restype = ctypes.c_void_p
        self.display = ctypes.c_void_p(self.x11.XOpenDisplay(display.encode()))
        self.window = 0

    def press(self, key: str) -> None:
        if not self.window:
            self.test.XTestFakeMotionEvent(self.display, -1, 100, 100, 0)
            root, child, unused = (ctypes.c_ulong(), ctypes.c_ulong(), ctypes.byref(ctypes.c_int()))
            self.x11.XQueryPointer(self.display, ctypes.c_ulong(self.x11.XDefaultRootWindow(self.display)),
                                   ctypes.byref(root), ctypes.byref(child), *[unused] * 5)
            self.window = child.value
        self.x11.XSetInputFocus(self.display, ctypes.c_ulong(self.window), 1, 0)
        symbols = (0xFFE9, 0xFF51) if key == "<" else (0xFFE3, ord(key))
        codes = [self.x11.XKeysymToKeycode(self.display, ctypes.c_ulong(symbol)) for symbol in symbols]
        for code, is_down in ((codes[0], 1), (codes[1], 1), (codes[1], 0), (codes[0], 0)):
            self.test.XTestFakeKeyEvent(self.display, code, is_down, 0)
        self.x11.XFlush(self.display)


def conversation(log: pathlib.Path) -> str:
    return re.sub(r"^\d+ (?=[<>])", "", log.read_text(errors="replace"), flags=re.M) if log.exists() else ""


def drive(keyboard: Keyboard, log: pathlib.Path) -> None:
    begin = 0
    for number, (key, wanted) in enumerate(STEPS):
        if key:
            time.sleep(0.5)  # until the window takes keys again
            keyboard.press(key)
        deadline = time.monotonic() + PATIENCE
        while not (found := re.compile(wanted).search(conversation(log), begin)):
            if time.monotonic() > deadline:
                raise xboard.Trouble(f"step {number}: no {wanted!r} in\n{conversation(log)[begin:][-1500:]}")
            time.sleep(0.1)
        begin = found.end()
    if "Illegal" in conversation(log):
        raise xboard.Trouble(conversation(log))


def main() -> int:
    if (not all(shutil.which(program, path=xboard.SEARCH_PATH) for program in ("xboard", "Xvfb"))
            or not ctypes.util.find_library("Xtst")):
        print("skipped: needs xboard, Xvfb and libXtst")
        return xboard.SKIPPED
    xboard.adopt_orphans()
    with tempfile.TemporaryDirectory(prefix="quelmar-keys-") as scratch:
        home = pathlib.Path(scratch)
        (home / "start.fen").write_text(POSITION + "\n")
        environment = xboard.private_environment(home)
        try:
            environment["DISPLAY"] = xboard.start_display(home, environment)
            subprocess.Popen(
                ["xboard", "-fcp", pathlib.Path(sys.argv[1]).absolute(), "-debugMode", "true", "-nameOfDebugFile",
                 home / "debug.log", "-loadPositionFile", home / "start.fen", "-popupMoveErrors", "false",
                 "-popupExitMessage", "false", "-saveSettingsOnExit", "false"],
                env=environment, cwd=scratch, preexec_fn=xboard.die_with_parent, stdin=subprocess.DEVNULL,
                stderr=subprocess.DEVNULL)
            drive(Keyboard(environment["DISPLAY"]), home / "debug.log")
        except xboard.Trouble as reason:
            print(reason)
            return 1
        finally:
            xboard.end_descendants()
    print("xboard was driven through all steps")
    return 0


if __name__ == "__main__":
    sys.exit(main())
