#!/usr/bin/env python3
"""Absurd sizes and little memory.

    limits.py QUELMAR [--tables FOLDER]

Hash tables of nothing, less than nothing, a terabyte and more, from the settings file and by UCI: the engine falls
back to what it can have, says so on a line that its interface ignores, and plays. Under shrinking address space it
plays or ends with a message and exit status 1; it is never killed by a signal. With a folder of endgame tables, absurd
cache sizes too.
"""

import argparse
import pathlib
import subprocess
import sys
import tempfile

from confined import COMPLAINTS, confine, environment, is_sanitized

SIZES = (0, -5, 1, 3, 100, 1 << 20, 2147483647, -2147483648, 1 << 40)
# xboard's and UCI's words for "find any move".
XBOARD = b"xboard\neasy\nst 0\ngo\nping 1\n"
UCI = b"uci\nposition startpos\ngo depth 2\nucinewgame\nposition fen 8/8/8/8/8/2k5/8/K6Q w - -\ngo depth 3\nisready\n"
LONG_LINES = b"ping " + b"7" * 3000000 + b"\n" + UCI.replace(b"startpos", b"startpos moves " + b"e2e4 " * 200000, 1)
SHRINKING = [megabytes << 20 for megabytes in (512, 128, 64, 48, 32, 24, 20, 16, 14, 13, 12, 11, 10, 9, 8, 7)]


def run(program, said, ini=b"", memory=2 << 30):
    """Returns exit status and output of a run in a folder of its own."""
    with tempfile.TemporaryDirectory(prefix="quelmar-limits-") as folder:
        (pathlib.Path(folder) / "quelmar.ini").write_bytes(ini)
        done = subprocess.run([program], input=said, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, cwd=folder,
                              timeout=120, preexec_fn=confine(program, memory), env=environment(2048))
        return done.returncode, done.stdout


def require(holds, what, output):
    if not holds or any(complaint in output for complaint in COMPLAINTS):
        sys.exit("limits: %s\n%s" % (what, output[-4000:].decode(errors="replace")))


def faces(program):
    """Fitting words, and how the answer begins."""
    return {UCI: b"bestmove "} if program.endswith("-uci") else {XBOARD: b"move ", UCI: b"bestmove "}


def check_hash(program):
    for size in SIZES:
        setting = b"hash %d\nfritz-hash %d\n" % (size, size)
        for said, answer in faces(program).items():
            status, output = run(program, said, setting)
            require(status == 0 and b"\n" + answer in output, "hash %d in the settings" % size, output)
        said = UCI.replace(b"position", b"setoption name Hash value %d\nposition" % size, 1)
        status, output = run(program, said, setting)
        require(status == 0 and output.count(b"bestmove ") == 2, "Hash %d by UCI" % size, output)
        if size >= 1 << 20:
            require(b"info string hash of" in output or b"# hash of" in output, "nothing said about hash %d" % size,
                    output)


def check_little_memory(program):
    """Returns the smallest space in which it played."""
    least = None
    for memory in SHRINKING:
        for said in (*faces(program), LONG_LINES):
            status, output = run(program, said, b"hash 64\n", memory)
            played = b"move " in output and status == 0
            refused = status == 1 and b"***" in output or status == 127  # 127: not even loaded
            require(played or refused, "status %d in %d MB" % (status, memory >> 20), output)
            least = memory if played else least
    return least


def check_tables(program, folder):
    for size in SIZES:
        status, output = run(program, UCI, b"tbpath %s\ntbcache %d\n" % (folder.encode(), size))
        require(status == 0, "tbcache %d, status %d" % (size, status), output)
        require(size in (1, 3, 100) or b" tbcache of " in output, "nothing said about tbcache %d" % size, output)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("program", type=lambda path: str(pathlib.Path(path).resolve()))
    parser.add_argument("--tables")
    options = parser.parse_args()
    check_hash(options.program)
    if options.tables:
        check_tables(options.program, options.tables)
    if is_sanitized(options.program):
        print("limits: address space is not limited under a sanitizer")
    else:
        print("limits: plays from %d MB of address space on" % (check_little_memory(options.program) >> 20))


if __name__ == "__main__":
    main()
