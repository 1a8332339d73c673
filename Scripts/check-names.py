#!/usr/bin/env python3
"""Checks the texts in the sources that name something declared elsewhere.

- Commands: a command that the windows run must be in the table of commands. An argument must belong to the command of
  the same call, or, if the call does not name one, to any command; so must one that the code of a command reads. The table is read from docs/automation.md, which a
  test compares with the program's.
- Settings: a key is written only in its declaration; all other code uses the declaration. Each declaration is used
  outside the declarations and the settings window; this finds settings that no code reads.
"""
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
SOURCES = ROOT / "Sources"
# Folders that show a setting whether code reads it or not.
SETTINGS_WINDOW = [SOURCES / "OrvaneSyncApp/ViewModels/Settings", SOURCES / "OrvaneSyncApp/Views/Settings"]
# Settings without a reader, and why.
UNREAD = {"overrideAnamorphic": "reserved, as its meaning says"}
DECLARATIONS = SOURCES / "OrvaneSyncCore/Models/Settings"
COMMANDS = SOURCES / "OrvaneSyncApp/Controllers/Commands"
WINDOWS = [SOURCES / "OrvaneSyncApp/Views", SOURCES / "OrvaneSyncApp/ViewModels"]
# Functions of the windows that take the identifier of a command, some of them after another argument.
RUNS = re.compile(
    r"\b(?:run|runFromField|runForClips|runForTrack|runWithPath|of|isEnabled|applies|command|commandButton|commandBox)"
    r'\(\s*(?:[\w.()]+,\s*)?"([^"]*)"')
# Other places of an identifier: what a row's is compared with, and tables with an icon or an act for a command.
NAMED = re.compile(r'\bid [!=]= "([^"]*)"|\{"([^"]*)",\s*(?:Glyph::|\[(?:this|&|=)?\])')
GIVES = re.compile(r'\.set\(\s*"([^"]*)"')
# An argument that the code of a command reads.
READS = re.compile(r'\bcall\.\w+\(\s*"([^"]*)"')
# A command with the arguments that the same call passes to it.
CALL = re.compile(r'\brun(?:FromField)?\(\s*"([^"]*)",\s*')
MOVED = re.compile(r"(?:std::move\()?(\w+)\)?$")
MADE = re.compile(r"\bJSON (?:\w+::)*(\w+)\([^)]*\)(?: const)? \{\n(.*?)\n\}", re.DOTALL)
CALLED = re.compile(r'\b(\w+)\(\s*(?:"([^"]*)"|)')
WORD = re.compile(r'"([a-z]+[A-Z][A-Za-z]*)"')
# Texts that look like an identifier but do not name anything of the core: names that Qt uses, and a unit.
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


def expression(text, start):
    """The text of an argument of a call, from its first letter on."""
    depth = 0
    for place in range(start, len(text)):
        if text[place] in "([{":
            depth += 1
        elif text[place] in ")]}":
            depth -= 1
        if depth < 0 or (depth == 0 and text[place] == ","):
            return text[start:place]
    return text[start:]


def arguments_of_calls(text, made):
    """Each command that a text runs with arguments, its place, and the names of these arguments."""
    def names(words):
        calls = CALLED.findall(words)
        return set().union({word for function, word in calls if word and function in made},
                           *(made.get(function, set()) for function, _ in calls))

    for found in CALL.finditer(text):
        words = expression(text, found.end())
        given = names(words)
        if moved := MOVED.match(words):
            before = text[:found.start()]
            declared = [one.start() for one in re.finditer(rf"\bJSON {moved[1]}\b", before)]
            since = before[declared[-1]:] if declared else ""
            given = names(since[:since.find(";")])
            given |= set(re.findall(rf'\b{moved[1]}\.set(?:IfPresent)?\(\s*"([^"]*)"', since))
        yield found[1], found.start(), given


def unread_settings(files):
    """File and name of each whose reader is missing, or is there against UNREAD."""
    declared = [(file, name) for file, text in files.items() if DECLARATIONS in file.parents
                for name in re.findall(r"inline const (?:Declared|std::array)<.*?>\s+(\w+)\s*[{=]", text)]
    readers = "".join(text for file, text in files.items()
                      if not any(folder in file.parents for folder in [DECLARATIONS, *SETTINGS_WINDOW]))
    for file, name in declared:
        if (re.search(rf"\bsettings::{name}\b", readers) is None) != (name in UNREAD):
            yield file, name
    if len(declared) < 50:
        yield DECLARATIONS / "Families.h", "the declarations, which are not understood,"


def problems():
    table = commands()
    arguments = set().union(*table.values())
    files = {file: text_of(file) for file in sources(SOURCES)}
    windows = [file for file in files if any(folder in file.parents for folder in WINDOWS)]
    for file in sources(COMMANDS):
        for found in READS.finditer(files[file]):
            if found[1] not in arguments:
                yield file, line(files[file], found.start()), f"no command takes an argument '{found[1]}'"
    # The members of answers are written in the code of the commands.
    members = {word for file in files if file not in windows for word in WORD.findall(files[file])}
    made = {name: set(GIVES.findall(body)) for file in windows for name, body in MADE.findall(files[file])}
    for file, name in unread_settings(files):
        why = "has a reader, but is listed in UNREAD" if name in UNREAD else "is read nowhere"
        yield file, line(files[file], files[file].find(f" {name}{{")), f"'{name}' {why}"
    for file in windows:
        text = files[file]
        for command, place, given in arguments_of_calls(text, made):
            for name in sorted(given - table.get(command, given)):
                yield file, line(text, place), f"'{command}' takes no argument '{name}'"
        own = [range(*found.span()) for found in OWN_WORD.finditer(text)]
        for found in [*RUNS.finditer(text), *NAMED.finditer(text)]:
            if (name := next(filter(None, found.groups()), "")) not in table:
                yield file, line(text, found.start()), f"no command is called '{name}'"
        for found in GIVES.finditer(text):
            if found[1] not in arguments:
                yield file, line(text, found.start()), f"no command takes an argument '{found[1]}'"
        for found in WORD.finditer(text):
            if found[1] in table or found[1] in arguments or found[1] in members:
                continue
            if not any(found.start() in place for place in own):
                yield file, line(text, found.start()), f"'{found[1]}' is no command, argument or member of an answer"
    declarations = "".join(files.pop(file) for file in list(files) if DECLARATIONS in file.parents)
    keys = re.findall(r'\{\s*"([A-Za-z]+(?:\.[A-Za-z0-9]+)*)",', declarations)
    dotted = "|".join(re.escape(key) for key in keys if "." in key)
    # A key without a dot is also a common word, so only the whole text counts.
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
