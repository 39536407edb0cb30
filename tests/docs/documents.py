#!/usr/bin/env python3
"""Compares the documents with the programs: what is missing or no longer true in them is a failure.

    documents.py SOURCE_FOLDER quelmar quelmar-uci tbmake
"""

import pathlib
import re
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "sessions"))
from engine import Engine  # noqa: E402

LONGEST_INI_LINE = 79  # characters that the engine reads at once


def read(path):
    return path.read_text(encoding="utf-8")


def described(page):
    """What the page's lists have a paragraph for."""
    items = set()
    for line in re.findall(r"^\.It (?:Ic|Cm|Fl) (.*)", page, re.MULTILINE):
        for part in line.replace("\\&", "").split(" , "):
            name = re.sub(r"^(?:Ic|Cm) | (?:Ar|Op|Pq|Po|Ns|Cm|Oo)\b.*", "", part)
            items.add(re.sub(r"^-", "--", name))
    return items


def mentioned(page):
    """The words of commands in running text."""
    return {word.strip() for line in re.findall(r"^\.(?:Ic|Cm) (.*)", page, re.MULTILINE) for word in line.split(" , ")}


def table_words(source, table):
    """First strings of the rows of a table in the code."""
    body = re.search(rf"\b{table}\[\] = \{{(.*?)\n\}};", read(source), re.DOTALL)
    return re.findall(r'^\s*\{"([^"]+)"', body[1], re.MULTILINE) if body else []


def said_by(program, text=""):
    with Engine(program) as engine:
        engine.send(text)
        engine.exit_status()
        return "\n".join(engine.seen) + engine.complaints()


def option_names(program):
    return re.findall(r"^option name (.*?) type ", said_by(program, "uci\nquit\n"), re.MULTILINE)


def check_manuals(root, programs):
    protocol = root / "src/protocol"
    keys = table_words(protocol / "settings.cpp", "KEYS")
    first, second, third = (read(root / f"man/{name}.6") for name in ("quelmar", "quelmar-uci", "tbmake"))
    usage = said_by(programs["tbmake"])
    settings = read(root / "packaging/quelmar.ini")
    shown = re.findall(r"^;(\S+)", settings, re.MULTILINE)
    wanted = (  # what, where, the names in the program, the words there
        ("key", "quelmar.6", keys, described(first)),
        ("option", "quelmar.6", option_names(programs["quelmar"]), described(first)),
        ("option", "quelmar.6", [re.sub(r" value.*", "", text) for text in
                                 table_words(protocol / "uci_options.cpp", "ACCEPTED")], described(first)),
        # "nopo" is what "nopost" begins with.
        ("xboard command", "quelmar.6", [re.sub("^nopo$", "nopost", word) for word in
                                         table_words(protocol / "xboard.cpp", "COMMANDS")], described(first)),
        ("UCI command", "quelmar.6", table_words(protocol / "uci.cpp", "COMMANDS"), mentioned(first)),
        ("option", "quelmar-uci.6", option_names(programs["quelmar-uci"]), described(second)),
        ("command", "quelmar-uci.6", table_words(protocol / "standard_uci.cpp", "COMMANDS"),
         {name.split()[0] for name in described(second)}),
        ("limit", "quelmar-uci.6", table_words(protocol / "standard_go.cpp", "KEYWORDS"), mentioned(second)),
        ("command", "tbmake.6", re.findall(r"tbmake ([a-z-]+)", usage), described(third)),
        ("option", "tbmake.6", re.findall(r"--[a-z]+", usage), described(third)),
        ("key", "quelmar.ini", keys, shown),
    )
    faults = [f"{page}: {what} '{name}' is missing" for what, page, names, words in wanted for name in names
              if name not in words]
    faults += [f"{page}: no {what} found in the program, the check is blind" for what, page, names, _ in wanted
               if not names]
    faults += [f"quelmar.ini: too long: {line}" for line in settings.splitlines() if len(line) > LONGEST_INI_LINE]
    return faults + [f"quelmar.ini: key '{key}' is shown twice" for key in keys if shown.count(key) > 1]


def check_paths(root):
    """Paths that documents name exist, those with * match something, and so do links."""
    faults = []
    for page in [*root.glob("*.md"), *root.glob("docs/*.md")]:
        paths = re.findall(r"(?:src|tests|tools|docs|man|packaging|cmake|fuzz|\.ci)/[\w./*-]*[\w/]", read(page))
        paths += [page.parent.relative_to(root) / link for link in re.findall(r"\]\(([^):#]+)\)", read(page))]
        faults += [f"{page.name}: there is no {path}" for path in sorted({str(path) for path in paths})
                   if not list(root.glob(path.rstrip("/")))]
    return faults


def check_order(page, heading, source, function):
    """The functions that open the points of a numbered list are called in that order."""
    section = read(page).split(f"## {heading}", 1)[-1].split("\n## ", 1)[0]
    body = re.search(rf"\b{function}\([^;{{]*\) \{{\n(.*?)\n\}}\n", read(source), re.DOTALL)
    calls = iter(re.findall(r"\b([a-z_]\w+)(?:<\w+>)?\(", body[1]) if body else ())
    named = re.findall(r"^\d+\. `(\w+)`", section, re.MULTILINE)
    if not named:
        return [f"{page.name}: no list under '{heading}'"]
    # Looking for a name uses up the calls before it.
    return [f"{page.name}: {function} does not call {name} there" for name in named if name not in calls][:1]


def check_orders(root):
    search, evaluation = root / "docs/search.md", root / "docs/evaluation.md"
    return (check_order(search, "The rules of a node", root / "src/search/node.cpp", "Score search") +
            check_order(search, "Quiescence", root / "src/search/quiescence.cpp", "Score qsearch") +
            check_order(evaluation, "The driver", root / "src/eval/evaluate.cpp", "int evaluate_with"))


def without_time(line):
    """A thinking line without its third column, the seconds."""
    return re.sub(r"^( *\d+ +\S+ +)\S+( +\d+ )", r"\1-\2", line.strip())


def check_session(root, program):
    """What the README's first session shows is what the engine answers."""
    session = re.search(r"## A first session.*?\n {4}\$ \./start\n(.*?)\n\n(?! )", read(root / "README.md"), re.DOTALL)
    commands = table_words(root / "src/protocol/xboard.cpp", "COMMANDS")
    with Engine(program) as engine:
        for line in session[1].splitlines() if session else ["no session"]:
            if line.strip().split(" ")[0] in commands:
                engine.say(line.strip())
            elif without_time(said := engine.line() or "") != without_time(line):
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


def main():
    root = pathlib.Path(sys.argv[1]).resolve()
    programs = {pathlib.Path(path).name: str(pathlib.Path(path).resolve()) for path in sys.argv[2:]}
    faults = (check_manuals(root, programs) + check_paths(root) + check_orders(root) + check_names(root) +
              check_session(root, programs["quelmar"]))
    print("\n".join(faults) or "documents: agree with the programs")
    return 1 if faults else 0


sys.exit(main())
