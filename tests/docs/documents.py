#!/usr/bin/env python3
"""Compares the documents with the programs: what is missing or no longer true in them is a failure.

    documents.py SOURCE_FOLDER quelmar quelmar-uci tbmake
"""

import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

LONGEST_INI_LINE = 79  # characters that the engine reads at once


def read(path):
    return path.read_text(encoding="utf-8")


def described(page):
    """What the page's lists have a paragraph for."""
    items = set()
    for line in re.findall(r"^\.It (?:Ic|Cm|Fl) (.*)", read(page), re.MULTILINE):
        for part in line.replace("\\&", "").split(" , "):
            name = re.sub(r"^(?:Ic|Cm) | (?:Ar|Op|Pq|Po|Ns|Cm|Oo)\b.*", "", part)
            items.add(re.sub(r"^-", "--", name))
    return items


def mentioned(page):
    """The words of commands in running text."""
    lines = re.findall(r"^(?:\.(?:Ic|Cm)) (.*)", read(page), re.MULTILINE)
    return {word.strip() for line in lines for word in line.split(" , ")}


def table_words(source, table):
    """First strings of the rows of a table in the code."""
    body = re.search(rf"\b{table}\[\] = \{{(.*?)\n\}};", read(source), re.DOTALL)
    return re.findall(r'^\s*\{"([^"]+)"', body[1], re.MULTILINE) if body else []


def said_by(program, text=""):
    with tempfile.TemporaryDirectory() as folder:
        ran = subprocess.run([program], input=text, capture_output=True, text=True, timeout=60, cwd=folder,
                             check=False)
    return ran.stdout + ran.stderr


def option_names(program):
    return re.findall(r"^option name (.*?) type ", said_by(program, "uci\nquit\n"), re.MULTILINE)


def missing(page, names, words, what):
    if not names:
        return [f"{page.name}: no {what} found in the program, the check is blind"]
    return [f"{page.name}: {what} '{name}' is missing" for name in names if name not in words]


def check_manuals(root, programs):
    protocol, first = root / "src/protocol", root / "man/quelmar.6"
    keys = table_words(protocol / "config_file.cpp", "KEYS")
    accepted = [re.sub(r" value.*", "", text) for text in table_words(protocol / "uci_options.cpp", "ACCEPTED")]
    faults = missing(first, keys, described(first), "key")
    faults += missing(first, option_names(programs["quelmar"]) + accepted, described(first), "option")
    # "nopo" is what "nopost" begins with.
    commands = [word + "st" if word == "nopo" else word for word in table_words(protocol / "xboard.cpp", "COMMANDS")]
    faults += missing(first, commands, described(first), "xboard command")
    faults += missing(first, table_words(protocol / "uci.cpp", "COMMANDS"), mentioned(first), "UCI command")

    second, third = root / "man/quelmar-uci.6", root / "man/tbmake.6"
    faults += missing(second, option_names(programs["quelmar-uci"]), described(second), "option")
    faults += missing(second, table_words(protocol / "standard_uci.cpp", "COMMANDS"),
                      {name.split()[0] for name in described(second)}, "command")
    faults += missing(second, table_words(protocol / "standard_go.cpp", "KEYWORDS"), mentioned(second), "limit")
    usage = said_by(programs["tbmake"])
    faults += missing(third, re.findall(r"tbmake ([a-z-]+)", usage), described(third), "command")
    faults += missing(third, re.findall(r"--[a-z]+", usage), described(third), "option")
    return faults + check_example_settings(root / "packaging/quelmar.ini", keys)


def check_example_settings(example, keys):
    lines = read(example).splitlines()
    shown = [line[1:].split()[0] for line in lines if re.match(r";\S", line)]
    faults = [f"{example.name}: line {number} is too long" for number, line in enumerate(lines, 1)
              if len(line) > LONGEST_INI_LINE]
    return faults + [f"{example.name}: key '{key}' is not shown once" for key in keys if shown.count(key) != 1]


def check_paths(root):
    """Paths that documents name exist, those with * match something, and so do links."""
    faults = []
    for page in [*root.glob("*.md"), *root.glob("docs/*.md")]:
        text = read(page)
        paths = re.findall(r"(?:src|tests|tools|docs|man|packaging|cmake|bench|fuzz|\.ci)/[\w./*-]*[\w/]", text)
        links = [(page.parent / link).relative_to(root) for link in re.findall(r"\]\(([^):#]+)\)", text)]
        for path in {str(path) for path in [*paths, *links]}:
            if not list(root.glob(path.rstrip("/"))):
                faults.append(f"{page.relative_to(root)}: there is no {path}")
    return faults


def called_in(source, function):
    body = re.search(rf"\b{function}\([^;{{]*\) \{{\n(.*?)\n\}}\n", read(source), re.DOTALL)
    return re.findall(r"\b([a-z_]\w+)(?:<\w+>)?\(", body[1]) if body else []


def check_order(page, heading, source, function):
    """The functions that open the points of a numbered list are called in that order."""
    section = read(page).split(f"## {heading}", 1)[-1].split("\n## ", 1)[0]
    named = re.findall(r"^\d+\. `(\w+)`", section, re.MULTILINE)
    called = called_in(source, function)
    at, faults = 0, []
    for name in named:
        if name in called[at:]:
            at = called.index(name, at) + 1
        else:
            faults.append(f"{page.name}: {function} does not call {name} there")
    return faults if named else [f"{page.name}: no list under '{heading}'"]


def check_orders(root):
    search, evaluation = root / "docs/search.md", root / "docs/evaluation.md"
    node, quiescence = root / "src/search/node.cpp", root / "src/search/quiescence.cpp"
    return (check_order(search, "The rules of a node", node, "Score search") +
            check_order(search, "Quiescence", quiescence, "Score qsearch") +
            check_order(evaluation, "The driver", root / "src/eval/evaluate.cpp", "int evaluate_with"))


def without_time(line):
    """A thinking line without its third column, the seconds."""
    return re.sub(r"^( *\d+ +\S+ +)\S+( +\d+ )", r"\1-\2", line.strip())


def check_session(root, program):
    """What the README's first session shows is what the engine answers."""
    session = re.search(r"## A first session.*?\n {4}\$ \./start\n(.*?)\n\n(?! )", read(root / "README.md"), re.DOTALL)
    commands = table_words(root / "src/protocol/xboard.cpp", "COMMANDS")
    with tempfile.TemporaryDirectory() as folder, subprocess.Popen(
            [program], stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True, bufsize=1, cwd=folder) as engine:
        for line in session[1].splitlines() if session else ["no session"]:
            if line.strip().split(" ")[0] in commands:
                engine.stdin.write(line.strip() + "\n")
                continue
            said = engine.stdout.readline()
            if without_time(said) != without_time(line):
                engine.kill()
                return [f"README.md: the session shows '{line.strip()}', the engine says '{said.strip()}'"]
    return []


def check_names(root):
    """Names in backticks that look like functions or records of ours occur in the code."""
    files = [*root.glob("src/**/*.*"), *root.glob("tools/*.cpp"), root / "CMakeLists.txt"]
    code = "\n".join(read(path) for path in files)
    faults = []
    for page in root.glob("docs/*.md"):
        names = set(re.findall(r"`([a-z]+(?:_[a-z0-9]+)+|[A-Z][a-z]+[A-Z]\w+)`", read(page)))
        faults += [f"{page.name}: the code has no {name}" for name in sorted(names)
                   if not re.search(rf"\b{name}\b", code)]
    return faults


def check_formatting(root):
    faults = []
    for command in (["mandoc", "-T", "lint", "-W", "warning"], ["groff", "-mandoc", "-ww", "-z"]):
        if not shutil.which(command[0]):
            print(f"documents: {command[0]} is not installed, pages are not checked with it")
            continue
        for page in sorted(root.glob("man/*.6")):
            ran = subprocess.run([*command, str(page)], capture_output=True, text=True, check=False)
            faults += (ran.stdout + ran.stderr).splitlines()
    return faults


def main():
    root = pathlib.Path(sys.argv[1]).resolve()
    programs = {pathlib.Path(path).name: str(pathlib.Path(path).resolve()) for path in sys.argv[2:]}
    faults = (check_manuals(root, programs) + check_paths(root) + check_orders(root) + check_names(root) +
              check_session(root, programs["quelmar"]) + check_formatting(root))
    print("\n".join(faults) or "documents: agree with the programs")
    return 1 if faults else 0


sys.exit(main())
