#!/usr/bin/env python3
"""Installs a build into a folder of its own and looks whether all is there and found.

    install.py files BUILD_FOLDER      every program runs and has its page, every plugin file names a program; all
                                       of it goes again, and nothing else
    install.py xboard BUILD_FOLDER     xboard adds both engines to its list by itself; needs root, xboard and Xvfb
"""

import gzip
import os
import pathlib
import pwd
import re
import shutil
import subprocess
import sys
import tempfile
import time

SKIPPED = 77
PROGRAMS = {"quelmar": "quit\n", "quelmar-uci": "quit\n", "tbmake": None}  # what ends them; None: a usage message
PLUGINS = {"xboard": "quelmar", "uci": "quelmar-uci"}
SEARCH_PATH = "/usr/local/games:/usr/games:/usr/bin:/bin"
XBOARD_READS_PLUGINS = 15  # seconds at most
UNINSTALL = pathlib.Path(__file__).resolve().parents[2] / "cmake/uninstall.cmake"
IN_LIST = {"quelmar", "quelmar-uci -fUCI"}


def install(build, prefix):
    subprocess.run(["cmake", "--install", build, "--prefix", prefix], stdout=subprocess.DEVNULL, check=True)


def check_program(prefix, name, ending):
    path = prefix / "games" / name
    ran = subprocess.run([path], input=ending or "", capture_output=True, text=True, timeout=60, cwd=prefix,
                         check=False)
    good = ran.returncode == 0 if ending else "usage: " + name in ran.stderr
    return [] if good else [f"{name}: does not run: status {ran.returncode}, {ran.stderr}"]


def check_page(prefix, name):
    folder = prefix / "share/man/man6"
    packed = folder / f"{name}.6.gz"
    text = gzip.decompress(packed.read_bytes()).decode() if packed.exists() else (folder / f"{name}.6").read_text()
    good = f".Nm {name}\n" in text and re.search(r'^\.Os "Quelmar \d.*"$', text, re.MULTILINE)
    return [] if good else [f"{name}: has no page in section 6, or one without a version"]


def check_plugin(prefix, kind, program):
    lines = (prefix / "share/games/plugins" / kind / f"{program}.eng").read_text().splitlines()
    wanted = ["plugin spec 0.0", program, "chess,chess960"]
    return [] if lines == wanted else [f"{program}.eng: {lines}"]


def check_files(build):
    faults = []
    with tempfile.TemporaryDirectory() as folder:
        prefix = pathlib.Path(folder)
        install(build, prefix)
        for name, ending in PROGRAMS.items():
            faults += check_program(prefix, name, ending) + check_page(prefix, name)
        for kind, program in PLUGINS.items():
            faults += check_plugin(prefix, kind, program)
        documents = prefix / "share/doc/quelmar"
        faults += [f"{name} is not installed" for name in ("README.md", "docs/search.md", "examples/quelmar.ini", "copyright")
                   if not (documents / name).exists()]
        (documents / "mine").touch()
        subprocess.run(["cmake", f"-DBUILD={build}", f"-DPREFIX={prefix}", "-P", UNINSTALL], stderr=subprocess.DEVNULL,
                       check=True)
        left = {path for path in prefix.rglob("*") if not path.is_dir() or path.parent in (documents, prefix)}
        wanted = {documents / "mine", prefix / "games", prefix / "share"}
    return faults + ([] if left == wanted else [f"after uninstalling there is {left}"])


def listed_engines(settings):
    found = re.search(r"^-firstChessProgramNames \{(.*?)^\}", settings, re.MULTILINE | re.DOTALL)
    return set(found[1].splitlines()) if found else set()


def ask_xboard(prefix, scratch):
    """Runs as root in a mount namespace of its own, with the installation in place of /usr/local and an empty home."""
    home = scratch / "home"
    home.mkdir()
    for source, target in ((prefix, "/usr/local"), (home, pwd.getpwuid(os.getuid()).pw_dir)):
        subprocess.run(["mount", "--bind", source, target], check=True)
    environment = {"PATH": SEARCH_PATH, "LC_ALL": "C"}
    read_end, write_end = os.pipe()
    with subprocess.Popen(["Xvfb", "-displayfd", str(write_end), "-nolisten", "tcp"], pass_fds=[write_end],
                          stderr=subprocess.DEVNULL) as display:
        os.close(write_end)
        with os.fdopen(read_end) as pipe:
            environment["DISPLAY"] = ":" + pipe.readline().strip()
        with subprocess.Popen(["/usr/bin/env", "xboard", "-ncp"], env=environment, cwd=scratch, stderr=subprocess.DEVNULL) as xboard:
            time.sleep(XBOARD_READS_PLUGINS)
            xboard.terminate()  # on its way out it saves its settings
        display.terminate()
    settings = home / ".xboardrc"
    return listed_engines(settings.read_text()) if settings.exists() else set()


def check_xboard(build):
    if os.getuid() != 0 or not all(shutil.which(program, path=SEARCH_PATH) for program in ("xboard", "Xvfb")):
        print("skipped: needs root, xboard and Xvfb")
        sys.exit(SKIPPED)
    with tempfile.TemporaryDirectory() as folder:
        prefix, scratch = pathlib.Path(folder) / "usr", pathlib.Path(folder) / "scratch"
        scratch.mkdir()
        install(build, prefix)
        missing = IN_LIST - ask_xboard(prefix, scratch)
    return [f"xboard has not added '{line}' to its list" for line in sorted(missing)]


def main():
    what, build = sys.argv[1:3]
    if what == "xboard" and "QUELMAR_OWN_MOUNTS" not in os.environ and shutil.which("unshare"):
        os.environ["QUELMAR_OWN_MOUNTS"] = "1"
        if subprocess.run(["unshare", "-m", "true"], stderr=subprocess.DEVNULL, check=False).returncode == 0:
            os.execvp("unshare", ["unshare", "-m", sys.executable, *sys.argv])
        print("skipped: no mount namespace can be had here")
        sys.exit(SKIPPED)
    faults = {"files": check_files, "xboard": check_xboard}[what](build)
    print("\n".join(faults) or "install: all is there")
    return 1 if faults else 0


sys.exit(main())
