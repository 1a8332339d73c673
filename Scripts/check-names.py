#!/usr/bin/env python3
"""Checks the texts in the sources that name something declared elsewhere.

- Commands: what the windows run must be in the table of commands, its arguments must be among those of the table. The
  table is read from docs/automation.md, which a test compares with it.
- Settings: a key is written in its declaration alone; everybody else names the declaration.
"""
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
SOURCES = ROOT / "Sources"
DECLARATIONS = SOURCES / "OrvaneSyncCore/Models/Settings.h"
WINDOWS = [SOURCES / "OrvaneSyncApp/Views", SOURCES / "OrvaneSyncApp/ViewModels"]
# Functions of the windows that take the identifier of a command, some of them behind one other argument.
RUNS = re.compile(
    r"\b(?:run|runFromField|runForClips|runForTrack|runWithPath|of|isEnabled|applies|command|commandButton|commandBox)"
    r'\(\s*(?:[\w.()]+,\s*)?"([^"]*)"')
GIVES = re.compile(r'\.set\(\s*"([^"]*)"')
WORD = re.compile(r'"([a-z]+[A-Z][A-Za-z]*)"')
# Texts that look like an identifier and name nothing of the core: what Qt keeps by a name, and a unit.
OWN_WORD = re.compile(
    r'(?:QStringLiteral|QLatin1String|property|setProperty)\("\w+"|constexpr const char\* \w+ = "\w+"|"dB"')
COMMENT = re.compile(r"//.*")


def sources(folder):
    return sorted(file for file in folder.rglob("*") if file.suffix in (".h", ".cpp"))


def text_of(file):
    return COMMENT.sub("", file.read_text())


def commands():
    """Identifier of each command -> names of its arguments."""
    guide = (ROOT / "docs/automation.md").read_text()
    table = guide[guide.index("| group | methods |"):]
    table = table[:table.index("\n\n")]
    found = re.findall(r"`(\w+)(?: \{([^}]*)\})?`", table)
    return {name: {argument.strip(" ?") for argument in given.split(",")} for name, given in found}


def line(text, place):
    return text.count("\n", 0, place) + 1


def problems():
    table = commands()
    arguments = set().union(*table.values())
    files = {file: text_of(file) for file in sources(SOURCES)}
    windows = [file for file in files if any(folder in file.parents for folder in WINDOWS)]
    # Members of answers are written where the commands are.
    members = {word for file in files if file not in windows for word in WORD.findall(files[file])}
    for file in windows:
        text = files[file]
        own = [range(*found.span()) for found in OWN_WORD.finditer(text)]
        for found in RUNS.finditer(text):
            if found[1] not in table:
                yield file, line(text, found.start()), f"no command is called '{found[1]}'"
        for found in GIVES.finditer(text):
            if found[1] not in arguments:
                yield file, line(text, found.start()), f"no command takes an argument '{found[1]}'"
        for found in WORD.finditer(text):
            if found[1] in table or found[1] in arguments or found[1] in members:
                continue
            if not any(found.start() in place for place in own):
                yield file, line(text, found.start()), f"'{found[1]}' is no command, argument or member of an answer"
    keys = re.findall(r'\{\s*"([A-Za-z]+(?:\.[A-Za-z0-9]+)*)",', files.pop(DECLARATIONS))
    dotted = "|".join(re.escape(key) for key in keys if "." in key)
    # A key without a dot is a word as well; it is looked for as a whole text.
    whole = "|".join(key for key in keys if "." not in key and key not in arguments)
    spelled = re.compile(rf'"(?:[^"\n]*\b({dotted})\b[^"\n]*|({whole}))"')
    for file, text in files.items():
        for found in spelled.finditer(text):
            key, place = found[1] or found[2], DECLARATIONS.relative_to(ROOT)
            yield file, line(text, found.start()), f"the key '{key}' belongs to {place}"


def main():
    found = list(problems())
    for file, number, why in found:
        print(f"{file.relative_to(ROOT)}:{number}: {why}", file=sys.stderr)
    if not found:
        print(f"names: those of {len(commands())} commands and of the settings in order")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
