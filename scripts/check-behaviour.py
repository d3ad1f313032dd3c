#!/usr/bin/env python3
"""Holds docs/behaviour.md and tests/one-system.txt against the tests of the builds.

check-behaviour.py BUILD_DIR [BUILD_DIR_OF_THE_OTHER_SYSTEM]   check
check-behaviour.py --write                                     fill in the columns of the systems

Each test that the page names must be a test that ctest will run on the systems that its row tells, and none may be
disabled. What runs on one system alone must be named in tests/one-system.txt with the reason. That a test which runs is
real is the harness's part: it fails a test that skips itself or asserts nothing.
"""
import json
import re
import subprocess
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
PAGE = ROOT / "docs" / "behaviour.md"
ONE_SYSTEM = ROOT / "tests" / "one-system.txt"
SYSTEMS = ("linux", "windows")
SHARED_AT_LEAST = 0.95


class OneSystem:
    """Which tests only one system runs."""

    def __init__(self):
        self.entries = []  # system, pattern as written, compiled
        for line in ONE_SYSTEM.read_text(encoding="utf-8").splitlines():
            if line and not line.startswith("#"):
                entry = re.fullmatch(r"(linux|windows) (\S+): \S.*", line)
                if not entry:
                    sys.exit(f"one-system.txt: not 'linux|windows TEST: reason': {line}")
                pattern = re.escape(entry[2]).replace(r"\*", ".*").replace(r"\?", ".")
                self.entries.append((entry[1], entry[2], re.compile(pattern)))

    def systems_of(self, test: str) -> tuple:
        for system, _, pattern in self.entries:
            if pattern.fullmatch(test):
                return (system,)
        return SYSTEMS

    def idle(self, listings: dict) -> list:
        """Lines that match no test of their system."""
        return [f"one-system.txt: no {system} test {text}" for system, text, pattern in self.entries
                if system in listings and not any(pattern.fullmatch(name) for name in listings[system])]


def listing(build: Path) -> dict:
    shown = subprocess.run(["ctest", "--test-dir", str(build), "--show-only=json-v1"], check=True, capture_output=True)
    tests = json.loads(shown.stdout)["tests"]
    return {test["name"]: {p["name"]: p["value"] for p in test.get("properties", [])} for test in tests}


def system_of(build: Path) -> str:
    cache = (build / "CMakeCache.txt").read_text(encoding="utf-8")
    return "windows" if "mingw.cmake" in cache else "linux"


def cells_of(line: str) -> list:
    return [cell.strip() for cell in line.strip().strip("|").split("|")]


def columns(names: list, one: OneSystem) -> list:
    """What the row says of each system: yes, no, or how many of its tests run there."""
    told = []
    for system in SYSTEMS:
        count = sum(system in one.systems_of(name) for name in names)
        told.append("yes" if count == len(names) else "no" if count == 0 else f"{count} of {len(names)}")
    return told


def with_columns(line: str, one: OneSystem) -> str:
    if not line.startswith("|"):
        return line
    cells = cells_of(line)
    if cells[0] == "Behaviour":
        return "| Behaviour | Test | Linux | Windows |"
    if set(cells[0]) <= {"-"}:
        return "|---|---|---|---|"
    names = re.findall(r"`([^`]+)`", cells[1])
    return f"| {cells[0]} | {cells[1]} | " + " | ".join(columns(names, one)) + " |"


def faults_of_page(listings: dict, one: OneSystem, named: set) -> list:
    faults = []
    for number, line in enumerate(PAGE.read_text(encoding="utf-8").splitlines(), 1):
        if with_columns(line, one) != line:
            faults.append(f"behaviour.md:{number}: not as the builds are (scripts/check-behaviour.py --write)")
        if not line.startswith("|") or cells_of(line)[0] == "Behaviour" or set(cells_of(line)[0]) <= {"-"}:
            continue
        names = re.findall(r"`([^`]+)`", cells_of(line)[1])
        if not names:
            faults.append(f"behaviour.md:{number}: names no test")
        for system, tests in listings.items():
            faults += [f"behaviour.md:{number}: no {system} test {name}" for name in names
                       if system in one.systems_of(name) and name not in tests]
        named.update(names)
    return faults


def faults_of_builds(listings: dict, one: OneSystem) -> list:
    faults = one.idle(listings)
    for system, tests in listings.items():
        faults += [f"{name} is disabled" for name, p in tests.items() if p.get("DISABLED") or "DISABLED_" in name]
        faults += [f"{name} was not built" for name in tests if name.endswith("_NOT_BUILT")]
        faults += [f"{name} runs on {system} although one-system.txt says otherwise" for name in tests
                   if system not in one.systems_of(name)]
    if len(listings) == 2:
        for here, there in (SYSTEMS, SYSTEMS[::-1]):
            faults += [f"{name} runs on {here} only, and one-system.txt does not say why" for name in listings[here]
                       if name not in listings[there] and one.systems_of(name) != (here,)]
        shared = len(listings["linux"].keys() & listings["windows"].keys())
        every = len(listings["linux"].keys() | listings["windows"].keys())
        print(f"both systems run {shared} of {every} tests, {100 * shared / every:.1f} %; Linux {len(listings['linux'])}, "
              f"Windows {len(listings['windows'])}")
        if shared < SHARED_AT_LEAST * every:
            faults.append(f"fewer than {100 * SHARED_AT_LEAST:.0f} % of the tests run on both systems")
    return faults


def main() -> int:
    one = OneSystem()
    if sys.argv[1:] == ["--write"]:
        lines = PAGE.read_text(encoding="utf-8").splitlines()
        PAGE.write_text("\n".join(with_columns(line, one) for line in lines) + "\n", encoding="utf-8")
        return 0
    builds = [Path(argument) for argument in sys.argv[1:]]
    listings = {system_of(build): listing(build) for build in builds}
    named = set()
    faults = faults_of_page(listings, one, named) + faults_of_builds(listings, one)
    for fault in faults:
        print(fault, file=sys.stderr)
    if not faults:
        every = set().union(*listings.values())
        print(f"behaviours hold: {len(named & every)} of {len(every)} tests are named in docs/behaviour.md")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
