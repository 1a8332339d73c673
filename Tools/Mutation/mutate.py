#!/usr/bin/env python3
"""Changes the code in one place at a time and checks whether a test program fails.

    Tools/Mutation/mutate.py --test test_OrvaneSyncCore_SmartAudio Sources/OrvaneSyncCore/Services/SmartAudio/*.cpp

Each mutant is built and its test programs are run; a mutant with which all tests pass is printed as a line of a
unified difference. It either shows a gap in the tests or is equivalent to the code. Works in a copy of the tree, under
build/mutation, so the sources do not change. ORVANE_SEED (1) decides which places are chosen.
"""
import argparse
import os
import random
import re
import shutil
import subprocess
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
COPY = ROOT / "build" / "mutation"

# Patterns, and their replacements. The spaces exclude templates, arrows, pointers and references.
RULES = [
    (r" < ", [" <= "]),
    (r" <= ", [" < "]),
    (r" > ", [" >= "]),
    (r" >= ", [" > "]),
    (r" == ", [" != "]),
    (r" != ", [" == "]),
    (r" && ", [" || "]),
    (r" \|\| ", [" && "]),
    (r" \+ ", [" - "]),
    (r" - ", [" + "]),
    (r" \* ", [" / "]),
    (r" / ", [" * "]),
    (r"\bstd::min\b", ["std::max"]),
    (r"\bstd::max\b", ["std::min"]),
    (r"\btrue\b", ["false"]),
    (r"\bfalse\b", ["true"]),
    (r"(?<=if \()(?=[^)])", ["!!0 && ", "!0 || "]),
    (r"(?<![\w.])\d+(?:\.\d+)?(?=[;,) ])", ["+1"]),
    (r"\bcontinue;", ["break;"]),
]
SKIPPED = re.compile(r"^\s*(//|#|\*|static_assert|template)")


def places(path):
    """(line number, start, end, replacement) of every possible change by the rules."""
    found = []
    for number, line in enumerate(path.read_text().splitlines()):
        if SKIPPED.match(line):
            continue
        code = re.sub(r'"(?:[^"\\]|\\.)*"', lambda text: "\0" * len(text.group()), line).split("//")[0]
        for pattern, replacements in RULES:
            for match in re.finditer(pattern, code):
                for replacement in replacements:
                    if replacement == "+1":
                        replacement = match.group() + " + 1"
                    found.append((number, match.start(), match.end(), replacement))
    return found


def run(command, timeout, **more):
    try:
        return subprocess.run(command, cwd=COPY, timeout=timeout, capture_output=True, **more).returncode
    except subprocess.TimeoutExpired:
        return -1


def prepare():
    """Updates the copy to the state of the tree; unchanged files keep their times."""
    COPY.mkdir(parents=True, exist_ok=True)
    names = subprocess.run(["git", "ls-files", "--cached", "--others", "--exclude-standard"], cwd=ROOT, check=True,
                           capture_output=True, text=True).stdout.split("\n")
    for name in filter(None, names):
        source, target = ROOT / name, COPY / name
        if not source.is_file() or target.is_file() and target.read_bytes() == source.read_bytes():
            continue
        target.parent.mkdir(parents=True, exist_ok=True)
        shutil.copy(source, target)
    if not (COPY / "build" / "debug" / "build.ninja").exists():
        subprocess.run(["cmake", "--preset", "debug"], cwd=COPY, check=True, stdout=subprocess.DEVNULL)


def main():
    options = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    options.add_argument("files", nargs="+", type=Path)
    options.add_argument("--test", action="append", required=True, help="a test program; may come again")
    options.add_argument("--count", type=int, default=20, help="mutants at most (20)")
    options.add_argument("--timeout", type=int, default=120, help="seconds for one test program (120)")
    arguments = options.parse_args()
    prepare()
    build = ["cmake", "--build", "build/debug", "--target", *arguments.test]
    if run(build, None) != 0:
        sys.exit("The tree does not build as it is.")
    for test in arguments.test:
        if run([f"build/debug/bin/{test}"], arguments.timeout) != 0:
            sys.exit(f"{test} fails as it is.")

    everywhere = [(path.resolve().relative_to(ROOT), place) for path in arguments.files for place in places(path)]
    random.Random(int(os.environ.get("ORVANE_SEED", "1"))).shuffle(everywhere)
    noticed = unbuilt = survived = 0
    for name, (number, start, end, replacement) in everywhere:
        if noticed + survived == arguments.count:
            break
        target = COPY / name
        original = target.read_text()
        lines = original.splitlines()
        line = lines[number]
        lines[number] = line[:start] + replacement + line[end:]
        target.write_text("\n".join(lines) + "\n")
        if run(build, None) != 0:
            unbuilt += 1
        elif any(run([f"build/debug/bin/{test}"], arguments.timeout) != 0 for test in arguments.test):
            noticed += 1
        else:
            survived += 1
            print(f"{name}:{number + 1}\n-{line}\n+{lines[number]}", flush=True)
        target.write_text(original)
    print(f"{noticed} noticed, {survived} not, {unbuilt} did not build; of {len(everywhere)} places.")


if __name__ == "__main__":
    main()
