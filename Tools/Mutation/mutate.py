#!/usr/bin/env python3
"""Changes the code in one place at a time and checks whether a test fails.

    Tools/Mutation/mutate.py Sources/Timecode=30 Sources/OrvaneSyncCore/Services/Matching/SyncEngine.cpp

A mutant with which all tests pass is printed as a part of a unified difference. It either shows a gap in the tests or is
equivalent to the code. Works in a copy of the tree, so the sources do not change:

1. All chosen mutants are compiled in at once, each with a switch (places.py, Mutants.h). The mutants of lines that do not
   compile are taken out, and the rest is built again.
2. The test programs run once without a mutant. A listener (ReachListener.cpp) writes which mutants each test evaluates.
3. With each mutant the tests run that evaluate it, the fast ones first, until one fails. A run that takes too long counts
   as noticed. A value that a program computes once belongs to the first test that needs it.

ORVANE_SEED (1) decides which places are chosen. Without --test every test program is used.
"""
import argparse
import os
import random
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import time
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

from places import compiled, places

ROOT = Path(__file__).resolve().parents[2]
LISTENER = """
add_library(orvane_mutation_listener OBJECT ${PROJECT_SOURCE_DIR}/Tools/Mutation/ReachListener.cpp)
target_link_libraries(orvane_mutation_listener PRIVATE orvane_options GTest::gtest)
get_property(targets DIRECTORY PROPERTY BUILDSYSTEM_TARGETS)
foreach(target IN LISTS targets)
    if(target MATCHES "^test_")
        target_sources(${target} PRIVATE $<TARGET_OBJECTS:orvane_mutation_listener>)
    endif()
endforeach()
"""
MOST_MUTANTS = 1 << 16  # as in Mutants.h
FAST_MS = 2000  # the tests that run first take this long together, in each program


def write(path, text):
    """Unchanged files keep their times."""
    if path.is_file() and path.read_text() == text:
        return
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_text(text)


class Tree:
    """The copy that is changed and built."""

    def __init__(self, copy, build):
        self.copy, self.folder = copy, copy / build
        names = subprocess.run(["git", "ls-files", "--cached", "--others", "--exclude-standard"], cwd=ROOT, check=True,
                               capture_output=True, text=True).stdout.split("\n")
        for name in filter(None, names):
            source, target = ROOT / name, copy / name
            if name == "Tests/CMakeLists.txt":
                write(target, source.read_text() + LISTENER)
            elif source.is_file() and not (target.is_file() and target.read_bytes() == source.read_bytes()):
                target.parent.mkdir(parents=True, exist_ok=True)
                shutil.copy(source, target)
        if not (self.folder / "build.ninja").exists():
            subprocess.run(["cmake", "--preset", "debug", "-B", self.folder], cwd=copy, check=True,
                           stdout=subprocess.DEVNULL)

    def put_in(self, mutants, files):
        for name in files:
            chosen = [mutant for mutant in mutants if mutant.name == name]
            text = (ROOT / name).read_text()
            write(self.copy / name, compiled(text, chosen, self.copy / "Tools/Mutation/Mutants.h") if chosen else text)

    def build(self, targets):
        """What the compiler printed; empty if it is built."""
        done = subprocess.run(["cmake", "--build", self.folder, "--target", *targets, "--", "-k", "0"], cwd=self.copy,
                              capture_output=True, text=True, env={**os.environ, "LC_ALL": "C"})
        return done.stdout + done.stderr if done.returncode else ""

    def run(self, test, arguments, timeout, **environment):
        """True if the program returns 0 within the time."""
        with tempfile.TemporaryDirectory(prefix="mutant-", ignore_cleanup_errors=True) as home:
            environment = {**os.environ, "QT_QPA_PLATFORM": "offscreen", "ALSA_CONFIG_PATH": "/dev/null", "TMPDIR": home,
                           "HOME": home, **{f"XDG_{kind}_HOME": home for kind in ("CONFIG", "CACHE", "DATA", "STATE")},
                           **environment}
            process = subprocess.Popen([self.folder / "bin" / test, *arguments], cwd=self.folder, env=environment,
                                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, start_new_session=True)
            try:
                return process.wait(timeout) == 0
            except subprocess.TimeoutExpired:
                return False
            finally:
                try:
                    os.killpg(process.pid, signal.SIGKILL)
                except ProcessLookupError:
                    pass
                process.wait()


def blamed(output, mutants, tree):
    """The mutants that cause the compiler's errors: those of the lines that it names, otherwise of the whole file."""
    lines, files = set(), set()
    for path, line, message in re.findall(r"(\S+?\.(?:cpp|h)):(\d+):(?:\d+:)? +(error|required from|note)", output):
        name = os.path.relpath(tree.folder / path, tree.copy)
        lines.add((name, int(line) - 2, message))
        if message == "error":
            files.add(name)
    guilty = []
    for mutant in mutants:
        first, last = mutant.lines()
        if mutant.constant:  # its constant is no constant expression any more
            first, last = (mutant.text.count("\n", 0, position) for position in mutant.constant)
        if any((mutant.name, line, message) in lines for line in range(first, last + 1)
               for message in ("error", "required from", *(["note"] if mutant.constant else []))):
            guilty.append(mutant)
    return guilty or [mutant for mutant in mutants if mutant.name in files]


def reach(tree, tests, jobs):
    """{number: {program: {test: milliseconds}}} and the tests that fail as they are."""
    found, failing = {}, {}

    def record(test):
        with tempfile.TemporaryDirectory(prefix="reach-") as folder:
            switches, log = Path(folder, "switches"), Path(folder, "log")
            switches.write_bytes(bytes(MOST_MUTANTS))
            log.touch()
            good = tree.run(test, [], 900, ORVANE_MUTANTS_REACHED=str(switches), ORVANE_MUTANTS_LOG=str(log))
            return test, good, [line.split("\t") for line in log.read_text().splitlines()]

    with ThreadPoolExecutor(jobs) as pool:
        for test, good, rows in pool.map(record, tests):
            cases = {name: int(taken) for name, taken, _, _ in rows if not name.endswith("*")}
            bad = {name for name, _, result, _ in rows if result == "failed"}
            if bad or not good:
                failing[test] = sorted(bad) or ["(the program)"]
                if not bad:
                    continue
            for name, _, _, numbers in rows:
                matching = [case for case in cases if case not in bad and
                            (case == name or name.endswith("*") and case.startswith(name[:-1]))]
                for number in map(int, numbers.split()):
                    found.setdefault(number, {}).setdefault(test, {}).update({case: cases[case] for case in matching})
    return found, failing


def noticed(tree, number, programs):
    """The test program that fails with the mutant, or None."""
    fast, slow = [], []
    for test, cases in programs.items():
        total, parts = 0, ([], [])
        for case in sorted(cases, key=cases.get):
            total += cases[case]
            parts[total > FAST_MS].append(case)
        fast.append((test, parts[0]))
        slow.append((test, parts[1]))
    for test, cases in [*fast, *slow]:
        if not cases:
            continue
        chosen = ":".join(cases)
        arguments = ["--gtest_fail_fast", *([f"--gtest_filter={chosen}"] if len(chosen) < 100_000 else [])]
        timeout = 20 + 5 * sum(programs[test][case] for case in cases) / 1000
        if not tree.run(test, arguments, timeout, ORVANE_MUTANT=str(number)):
            return test
    return None


def main():
    options = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    options.add_argument("sources", nargs="+", help="sources, or folders with all .cpp files below them, separated by commas; "
                         "`=` and a number after them limit their mutants (50)")
    options.add_argument("--test", action="append", help="a test program; may come again")
    options.add_argument("--skip", help="no changes in lines that match this expression")
    options.add_argument("--jobs", type=int, default=2, help="runs at once (2)")
    options.add_argument("--copy", type=Path, default=ROOT / "build" / "mutation", help="where the copy is")
    options.add_argument("--build", default="build/debug", help="the build folder in the copy")
    arguments = options.parse_args()

    chance = random.Random(int(os.environ.get("ORVANE_SEED", "1")))
    parts, mutants, everywhere = {}, [], 0
    for argument in arguments.sources:
        part, _, count = argument.partition("=")
        files = [file for path in (Path(name).resolve() for name in part.split(","))
                 for file in (sorted(path.rglob("*.cpp")) if path.is_dir() else [path])]
        possible = [place for name in (file.relative_to(ROOT).as_posix() for file in files)
                    for place in places((ROOT / name).read_text(), name)
                    if not (arguments.skip and re.search(arguments.skip, place.text.split("\n")[place.line]))]
        everywhere += len(possible)
        parts[part] = chance.sample(possible, min(int(count or 50), len(possible)))
        mutants += parts[part]
    if len(mutants) >= MOST_MUTANTS:
        sys.exit("Too many mutants.")
    for number, mutant in enumerate(mutants, 1):
        mutant.number = number

    started = time.monotonic()
    tree = Tree(arguments.copy, arguments.build)
    folders = re.findall(r"^ *orvane_tests\(([\w/]+)", (ROOT / "Tests/CMakeLists.txt").read_text(), re.M)
    tests = arguments.test or ["test_" + folder.replace("/", "_") for folder in folders]
    names = {mutant.name for mutant in mutants}
    tree.put_in(mutants, names)
    while output := tree.build(tests):
        guilty = blamed(output, mutants, tree)
        print(f"{len(guilty)} mutants do not compile", flush=True)
        if not guilty:
            sys.exit(output[-8000:])
        mutants = [mutant for mutant in mutants if mutant not in guilty]
        tree.put_in(mutants, names)
    print(f"built after {time.monotonic() - started:.0f} s", flush=True)
    programs, failing = reach(tree, tests, arguments.jobs)
    for test, cases in failing.items():
        print(f"fails as it is, not used: {test} {' '.join(cases)}")
    print(f"tests ran after {time.monotonic() - started:.0f} s", flush=True)

    survived = set()
    with ThreadPoolExecutor(arguments.jobs) as pool:
        reached = [mutant for mutant in mutants if mutant.number in programs]
        results = pool.map(lambda mutant: noticed(tree, mutant.number, programs[mutant.number]), reached)
        for mutant, test in zip(reached, results):
            if test is None:
                survived.add(mutant.number)
                print(f"{mutant.number}: {mutant.name}:{mutant.line + 1}\n{mutant.difference()}", end="", flush=True)
    built = {mutant.number for mutant in mutants}
    for part, chosen in parts.items():
        missed = [mutant for mutant in chosen if mutant.number in built and mutant.number not in programs]
        for mutant in sorted(missed, key=lambda one: (one.name, one.line)):
            print(f"not reached: {mutant.number}: {mutant.name}:{mutant.line + 1}\n{mutant.difference()}", end="")
        numbers = {mutant.number for mutant in chosen}
        print(f"{part}: {len(numbers & programs.keys() - survived)} noticed, {len(numbers & survived)} not, "
              f"{len(missed)} not reached by a test, {len(numbers - built)} did not compile")
    print(f"{len(reached) - len(survived)} noticed, {len(survived)} not, {len(built - programs.keys())} not reached by a test; "
          f"of {everywhere} places. {time.monotonic() - started:.0f} s")


if __name__ == "__main__":
    main()
