#!/usr/bin/env python3
"""Plants deliberate faults, one at a time, in a built tree and reports which of them the tests catch.

Called by mutate.sh, which prepares the tree and Wine.
"""

import argparse
import pathlib
import random
import re
import subprocess
import sys

SUBSYSTEMS = ("foundation", "messaging", "net", "media", "system", "ui", "library")
# Whose tests a fault can reach beside those of its own subsystem; the floors keep the others out.
PROGRAMS = ("example", "courier", "dictation", "workstation")
REACHED = {
    "foundation": (*SUBSYSTEMS, *PROGRAMS), "library": (*SUBSYSTEMS, *PROGRAMS), "system": ("net", *PROGRAMS),
    "messaging": ("ui", *PROGRAMS), "ui": ("messaging", *PROGRAMS), "net": PROGRAMS, "media": PROGRAMS,
}
OPPOSITES = {
    "==": "!=", "!=": "==", "<": ">=", ">=": "<", ">": "<=", "<=": ">", "&&": "||", "||": "&&",
    "0": "1", "1": "0", "true": "false", "false": "true",
}
OPERATOR = re.compile(r"(?<= )(==|!=|<=|>=|<|>|&&|\|\|)(?= )")
RESULT = re.compile(r"(?<=\breturn )(0|1|true|false)(?=;)")
CONSTANT = re.compile(r"(?<![\w.'])\d+(?![\w.'])")
# A call, an assignment or a count; a declaration has a blank before its name.
STATEMENT = re.compile(r"\s+(\(void\))?([\w:.\->\[\]*]+(\(.*\)| [|&+*/-]?= .+)|(\+\+|--)[\w.\->]+);\s*$")
# What is no code, or no code that runs.
TEXT = re.compile(r'"(\\.|[^"\\])*"|\'(\\.|[^\'\\])*\'|//.*$')
NOT_RUN = re.compile(r"\s*#|.*\bstatic_assert\b")


class Fault:
    def __init__(self, kind, path, number, old, new):
        self.kind, self.path, self.number, self.old, self.new = kind, path, number, old, new

    def __str__(self):
        change = f"{self.old.strip()}  ->  {self.new.strip() or '(dropped)'}"
        return f"{self.path}:{self.number + 1}: {self.kind}: {change}"


def faults_of_line(path, number, line, starts_statement):
    code = TEXT.sub(lambda text: " " * len(text.group()), line)
    if NOT_RUN.match(code):
        return

    def replaced(match, text):
        return line[: match.start()] + text + line[match.end() :]

    for kind, pattern in (("condition", OPERATOR), ("result", RESULT)):
        for match in pattern.finditer(code):
            yield Fault(kind, path, number, line, replaced(match, OPPOSITES[match.group()]))
    for match in CONSTANT.finditer(code):
        yield Fault("constant", path, number, line, replaced(match, str(int(match.group()) + 1)))
    if starts_statement and STATEMENT.match(code.rstrip("\n")):
        yield Fault("line", path, number, line, "\n")


def all_faults(tree, subsystems):
    for subsystem in subsystems:
        for path in sorted((tree / subsystem).rglob("*.cpp")):
            before = ";"
            for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(keepends=True)):
                yield from faults_of_line(path.relative_to(tree), number, line, before[-1] in ";{}:")
                before = TEXT.sub("", line).rstrip() or before


def drawn_faults(tree, subsystems, seed):
    """All faults in random order, the kinds by turns."""
    chance = random.Random(seed)
    kinds = {}
    for fault in all_faults(tree, subsystems):
        kinds.setdefault(fault.kind, []).append(fault)
    for faults in kinds.values():
        chance.shuffle(faults)
    while kinds:
        for kind in list(kinds):
            yield kinds[kind].pop()
            if not kinds[kind]:
                del kinds[kind]


class Tree:
    def __init__(self, path):
        self.path = path
        self.log = path / "build" / "mutate.log"

    def run(self, *command):
        # A file, because Wine's processes keep a pipe open.
        with self.log.open("w", encoding="utf-8") as log:
            done = subprocess.run(command, cwd=self.path, stdin=subprocess.DEVNULL, stdout=log, stderr=log, check=False)
        return done.returncode == 0

    def builds(self):
        return self.run("cmake", "--build", "--preset", "win32", "--target", "Tessel")

    def end_programs(self):
        """Ends what a failing test left running, which would disturb the tests of the next fault."""
        self.run("wineserver", "-k")
        self.run("wineserver", "-w")
        self.run("wineserver", "-p")
        self.run("wine", "cmd", "/c", "exit")

    def failing_test(self, *selection):
        command = ["ctest", "--preset", "win32", "-j", "2", "--stop-on-failure", *selection]
        if self.run(*command):
            return None
        failed = re.search(r"FAILED:\s*\d+ - (.+) \(", self.log.read_text(encoding="utf-8", errors="replace"))
        self.end_programs()
        return failed.group(1) if failed else sys.exit(f"ctest failed, but no test did: {command}")

    def fails(self, test):
        return self.failing_test("-R", f"^{re.escape(test)}$") is not None

    def outcome(self, fault):
        """@return: None if the faulty library does not build; else a verdict and a test that fails, or an empty text"""
        source = self.path / fault.path
        original = source.read_text(encoding="utf-8")
        lines = original.splitlines(keepends=True)
        lines[fault.number] = fault.new
        source.write_text("".join(lines), encoding="utf-8")
        try:
            if not self.builds():
                return None
            own = fault.path.parts[0]
            others = "|".join(name for name in REACHED[own] if name != own)
            test = self.failing_test("-R", rf"^{own}\.", "--no-tests=ignore")  # library has none
            test = test or self.failing_test("-R", rf"^({others})\.")
            if not test:
                return "NOT CAUGHT", ""
            return ("caught" if self.fails(test) else "CAUGHT ONCE"), test
        finally:
            source.write_text(original, encoding="utf-8")


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("tree", type=pathlib.Path)
    parser.add_argument("--count", type=int, default=60, help="faults that compile")
    parser.add_argument("--seed", type=int, default=random.randrange(10**6))
    parser.add_argument("--subsystem", choices=SUBSYSTEMS, help="plant faults only there")
    options = parser.parse_args()
    tree = Tree(options.tree)
    print(f"seed {options.seed}", flush=True)
    selection = ["-R", rf"^{options.subsystem}\."] if options.subsystem else ["-E", r"^package\."]
    failing = tree.failing_test(*selection)
    if failing:
        sys.exit(f"{failing} fails without any fault: no faults planted")

    counted = 0
    catching = []
    subsystems = [options.subsystem] if options.subsystem else SUBSYSTEMS
    for fault in drawn_faults(tree.path, subsystems, options.seed):
        if counted == options.count:
            break
        outcome = tree.outcome(fault)
        if outcome is None:
            print(f"{'did not compile':16} {fault}", flush=True)
            continue
        verdict, test = outcome
        counted += 1
        if verdict == "caught":
            catching.append(test)
        print(f"{verdict:16} {fault}{f'  [{test}]' if test else ''}", flush=True)
    print(f"{len(catching)} of {counted} faults caught: {100 * len(catching) // max(counted, 1)} %")
    if not tree.builds():
        sys.exit(f"the library does not build without any fault (see {tree.log})")
    # A fault may have left damage behind, such as a key of the registry.
    unfit = [test for test in sorted(set(catching)) if tree.fails(test)]
    if unfit:
        sys.exit(f"not counted on: these tests fail without any fault by now: {' '.join(unfit)}")


main()
