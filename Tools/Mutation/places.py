"""The places of a source where mutate.py can change the code, and how a mutant is compiled in.

A mutant is on or off at run time, so each place has two texts: the one that is shown to the reader (`a <= b`), and the one
that is compiled (`a < orvane_mutation::Less<17>{} < b`, see Mutants.h).
"""
import re
from dataclasses import dataclass


@dataclass
class Place:
    start: int
    end: int
    shown: str  # replaces text[start:end] for the reader
    before: str  # what is compiled: `before`, the text itself, `after`; "@" is the number of the mutant
    after: str = ""
    replaces: bool = False  # `before` is compiled in place of the text
    constant: tuple | None = None  # (start, end) of the constant's definition that the place is in
    line: int = 0
    number: int = 0
    text: str = ""  # of the whole source
    name: str = ""  # of the source

    def lines(self):
        """First and last line, from 0."""
        return self.text.count("\n", 0, self.start), self.text.count("\n", 0, self.end)

    def difference(self):
        first = self.text.rfind("\n", 0, self.start) + 1
        last = self.text.find("\n", self.end)
        changed = self.text[first : self.start] + self.shown + self.text[self.end : last]
        return "".join(f"{sign}{line}\n" for sign, part in (("-", self.text[first:last]), ("+", changed))
                       for line in part.split("\n"))


def operator(sign, other, name):
    return rf"(?<=[^\1] ){re.escape(sign)}(?= [^\1])", other, f"{sign} orvane_mutation::{name}<@>{{}} {sign}"


# Pattern, text shown, text compiled. The blanks exclude templates, arrows, pointers and references.
REPLACED = [
    operator("<", "<=", "Less"),
    operator("<=", "<", "LessEqual"),
    operator(">", ">=", "Greater"),
    operator(">=", ">", "GreaterEqual"),
    operator("==", "!=", "Equal"),
    operator("!=", "==", "NotEqual"),
    operator("+", "-", "Plus"),
    operator("-", "+", "Minus"),
    operator("*", "/", "Times"),
    operator("/", "*", "Divided"),
    (r"\bstd::min(?=\()", "std::max", "orvane_mutation::min<@>"),
    (r"\bstd::max(?=\()", "std::min", "orvane_mutation::max<@>"),
    (r"\btrue\b", "false", "(orvane_mutant(@) ? false : true)"),
    (r"\bfalse\b", "true", "(orvane_mutant(@) ? true : false)"),
    (r"\bcontinue;", "break;", "{ if (orvane_mutant(@)) break; continue; }"),
]
NUMBER = re.compile(r"(?<![\w.'])\d[\d']*(?:\.\d+)?(?=[;,) ])")
FORCED = {True: "(orvane_mutant(@) || (", False: "(!orvane_mutant(@) && ("}
# A call or an assignment as a statement of one line.
STATEMENT = re.compile(r"(?<=[;{}:)]\n) +(?:(\w(?:[\w.:\[\]]|->)*\([^\n]*\);)|(\w(?:[\w.\[\]]|->)* [-+|&*]?= [^\n{]*;))$", re.M)
SKIPPED = re.compile(r"^\s*(#|static_assert|template)")
MASKED = re.compile(r'//[^\n]*|/\*.*?\*/|R"(\w*)\(.*?\)\1"|"(?:[^"\\\n]|\\.)*"' r"|(?<![0-9A-Fa-f])'(?:[^'\\\n]|\\.)+'", re.S)
CONSTANT = re.compile(r"\b(?:constexpr|const) [^;(){}=]*?\w(?:\[\w*\])?(?: = |(?=\{))")
STOPS = re.compile(r"&&|\|\||[?,;(){}\[\]]|(?<= ):(?= )|(?<![=<>!])=(?!=)|\breturn\b")


def masked(text):
    """The text at the same positions, with blanks for comments and "\\1" for what is in literals."""
    return MASKED.sub(lambda found: re.sub(r"[^\n]", " " if found.group()[0] == "/" else "\1", found.group()), text)


def partners(code):
    """Position of each bracket -> position of its partner."""
    open_at, found = [], {}
    for position, sign in enumerate(code):
        if sign in "([{":
            open_at.append(position)
        elif sign in ")]}" and open_at:
            found[position] = open_at.pop()
            found[found[position]] = position
    return found


def operands(code, brackets, start, end):
    """(start, end) of the operands to the left and to the right of `&&` or `||`."""
    right = end
    while stop := STOPS.search(code, right):
        if stop.group() in "([{" and stop.start() in brackets:
            right = brackets[stop.start()] + 1
        else:
            break
    left = start
    stops = [match for match in STOPS.finditer(code, max(0, start - 2000), start)]
    while stops:
        before = stops.pop()
        if before.end() > left:
            continue
        if before.group() in ")]}" and before.start() in brackets:
            left = brackets[before.start()]
        else:
            begin = before.end()
            break
    else:
        return []
    def trimmed(a, b):
        return a + len(code[a:b]) - len(code[a:b].lstrip()), a + len(code[a:b].rstrip())
    return [trimmed(begin, start), trimmed(end, stop.start())] if stop else []


def forced(start, end, value):
    return Place(start, end, "true" if value else "false", FORCED[value], "))")


def places(text, name):
    """Every possible change by the rules."""
    code = masked(text)
    brackets = partners(code)
    found = [Place(match.start(), match.end(), shown, compiled, replaces=True)
             for pattern, shown, compiled in REPLACED for match in re.finditer(pattern, code)]
    found += [Place(match.start(), match.end(), f"({match.group()} + 1)", "(", " + orvane_mutant(@))")
              for match in NUMBER.finditer(code)]
    for match in re.finditer(r"\bif \(", code):
        start, end = match.end(), brackets.get(match.end() - 1, 0)
        if end and not re.search(r";| = ", code[start:end]):
            found += [forced(start, end, False), forced(start, end, True)]
    for match in re.finditer(r" (&&|\|\|)(?=\s)", code):
        found += [forced(start, end, match.group(1) == "&&")
                  for start, end in operands(code, brackets, match.start(1), match.end(1)) if start < end]
    for match in STATEMENT.finditer(code):
        group = 1 if match.group(1) else 2
        found.append(Place(match.start(group), match.end(group), ";", "{ if (!orvane_mutant(@)) ", " }"))

    constants = []
    for match in CONSTANT.finditer(code):
        end = match.end()
        while end < len(code) and code[end] != ";":
            end = brackets.get(end, end) + 1 if code[end] in "([{" else end + 1
        constants.append((match.start(), end))
    kept = []
    for place in found:
        place.text, place.name = text, name
        place.line = text.count("\n", 0, place.start)
        begin = text.rfind("\n", 0, place.start) + 1
        if SKIPPED.match(text[begin:]):
            continue
        place.constant = next((span for span in constants if span[0] <= place.start < span[1]), None)
        kept.append(place)
    return kept


def compiled(text, chosen, header):
    """The text with the chosen mutants in it; lines keep their numbers but for one more at the start."""
    events = []
    for order, place in enumerate(chosen):
        number = str(-place.number if place.constant else place.number)
        before, after = place.before.replace("@", number), place.after.replace("@", number)
        if place.replaces:
            events.append((place.start, 1, 0, 0, before, place.end))
        else:
            events.append((place.start, 2, -place.end, order, before, place.start))
            events.append((place.end, 0, -place.start, -order, after, place.end))
    for start, end in {place.constant for place in chosen if place.constant}:
        if text.startswith("constexpr", start):
            again = re.search(r"\bconst\b", text[start:end].split("=")[0].split("{")[0])
            events.append((start, 1, 0, 0, "" if again else "const", start + len("constexpr")))
    result, position = [f'#include "{header}"\n'], 0
    for start, _, _, _, part, following in sorted(events):
        result += [text[position:start], part]
        position = following
    return "".join(result) + text[position:]
