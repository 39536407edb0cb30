#!/usr/bin/env python3
"""An xboard driven by its keys, as a player drives it: by_hand.py QUELMAR.

Each line of input is a key that is pressed with Control, or "<" for Alt and Left. Output is what xboard and the engine
say to each other. xboard begins with the position of by_hand.fen.
"""

import ctypes
import ctypes.util
import pathlib
import re
import sys
import tempfile
import threading
import time

import xboard


class Keyboard:
    """Types into the window that stands alone on the display at first, whatever opens over it later."""

    def __init__(self, display):
        self.x11, self.test = (ctypes.CDLL(ctypes.util.find_library(name)) for name in ("X11", "Xtst"))
        self.x11.XOpenDisplay.restype = ctypes.c_void_p
        self.display = ctypes.c_void_p(self.x11.XOpenDisplay(display.encode()))
        self.window = 0

    def press(self, key):
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


def tell(log):
    """Copies the conversation, without its times, as it comes."""
    while not log.exists():
        time.sleep(0.1)
    with open(log, errors="replace") as conversation:
        while True:
            print(re.sub(r"^\d+ (?=[<>])", "", conversation.read(), flags=re.MULTILINE), end="", flush=True)
            time.sleep(0.1)


def main():
    if xboard.missing_programs("xboard", "Xvfb") or not ctypes.util.find_library("Xtst"):
        sys.exit("skipped: needs xboard, Xvfb and libXtst")
    with tempfile.TemporaryDirectory(prefix="quelmar-keys-") as scratch, xboard.display(scratch) as environment:
        log = pathlib.Path(scratch, "debug.log")
        xboard.start(["xboard", "-fcp", sys.argv[1], "-debugMode", "true", "-nameOfDebugFile", log, "-loadPositionFile",
                      pathlib.Path(__file__).with_suffix(".fen"), "-popupMoveErrors", "false", "-popupExitMessage",
                      "false", "-saveSettingsOnExit", "false"], environment, cwd=scratch)
        threading.Thread(target=tell, args=(log,), daemon=True).start()
        keyboard = Keyboard(environment["DISPLAY"])
        for line in sys.stdin:
            time.sleep(0.5)  # until the window takes keys again
            keyboard.press(line.strip())


main()
