#!/usr/bin/env python3
"""Holds docs/behaviour.md against the tests of a build: check-behaviour.py BUILD_DIR

Each test that the page names must be a test that ctest will run, and none of the suite may be disabled. That a test
which runs is real is the harness's part: it fails a test that skips itself or asserts nothing.
"""
import json
import re
import subprocess
import sys
from pathlib import Path


def suite(build: str) -> dict:
    listing = subprocess.run(["ctest", "--test-dir", build, "--show-only=json-v1"], check=True, capture_output=True)
    tests = json.loads(listing.stdout)["tests"]
    return {test["name"]: {p["name"]: p["value"] for p in test.get("properties", [])} for test in tests}


def rows(page: Path):
    for number, line in enumerate(page.read_text(encoding="utf-8").splitlines(), 1):
        cells = [cell.strip() for cell in line.strip().strip("|").split("|")]
        if line.startswith("|") and len(cells) > 1 and cells[0] != "Behaviour" and not set(cells[0]) <= {"-"}:
            yield number, re.findall(r"`([^`]+)`", cells[-1])


def main() -> int:
    tests = suite(sys.argv[1])
    page = Path(__file__).resolve().parent.parent / "docs" / "behaviour.md"
    faults = [f"{name} is disabled" for name, p in tests.items() if p.get("DISABLED") or "DISABLED_" in name]
    faults += [f"{name} was not built" for name in tests if name.endswith("_NOT_BUILT")]
    named = set()
    for number, names in rows(page):
        if not names:
            faults.append(f"behaviour.md:{number}: names no test")
        faults += [f"behaviour.md:{number}: no test {name}" for name in names if name not in tests]
        named.update(names)
    for fault in faults:
        print(fault, file=sys.stderr)
    if not faults:
        print(f"behaviours hold: {len(named)} of {len(tests)} tests are named in docs/behaviour.md")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
