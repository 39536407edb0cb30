#!/usr/bin/env python3
"""A tour of everything the program does, under valgrind's memcheck.

    tour.py QUELMAR [--all]

Runs the scripted sessions with the program under memcheck, which ends with exit status 99 on the first read of
uninitialised or foreign memory and on memory that nobody can reach any more. Short form: one session that walks
through both protocols; --all: every scripted session. Exit status 77 where memcheck
cannot run.
"""

import os
import pathlib
import shutil
import subprocess
import sys
import tempfile

from confined import is_sanitized

HERE = pathlib.Path(__file__).resolve().parent
SESSIONS = HERE.parent / "sessions"
NOT_HERE = 77  # exit status that ctest takes for "skipped"
SLOWER = "300"  # seconds that one answer may take

MEMCHECK = """#!/bin/sh
exec valgrind --quiet --error-exitcode=99 --leak-check=full --errors-for-leak-kinds=definite "%s" "$@"
"""


def main():
    program, *options = sys.argv[1:]
    if not shutil.which("valgrind") or is_sanitized(program):
        print("tour: no valgrind, or a program that watches itself")
        return NOT_HERE
    sessions = sorted(SESSIONS.glob("*.session")) if "--all" in options else [HERE / "tour.session"]
    sessions = [path for path in sessions if path.name != "standard_uci.session" or program.endswith("-uci")]
    with tempfile.TemporaryDirectory() as folder:
        # The name tells the sessions which program it is.
        wrapper = pathlib.Path(folder) / os.path.basename(program)
        wrapper.write_text(MEMCHECK % os.path.abspath(program))
        wrapper.chmod(0o755)
        return subprocess.run([sys.executable, SESSIONS / "run_sessions.py", wrapper, *sessions],
                              env=dict(os.environ, QUELMAR_PATIENCE=SLOWER)).returncode


if __name__ == "__main__":
    sys.exit(main())
