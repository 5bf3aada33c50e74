#!/usr/bin/env python3
"""Counts what test programs said they ran: count_tests.py LOG prints passed, failed and skipped.

Understands GoogleTest and Python's unittest, also as quoted by ctest, of which a program that
crashed or ran out of time counts as one failure."""

import re
import sys

_GOOGLE_TEST = {
    "passed": re.compile(r"\[  PASSED  \] (\d+) tests?\."),
    "failed": re.compile(r"\[  FAILED  \] (\d+) tests?, listed below"),
    "skipped": re.compile(r"\[  SKIPPED \] (\d+) tests?, listed below"),
}
_UNITTEST = re.compile(r"^(?:\d+: )?Ran (\d+) tests? in [^\n]*\n(?:\d+: )?\n"
                       r"(?:\d+: )?(?:OK|FAILED)([^\n]*)", re.MULTILINE)

_CTEST_ENDED = re.compile(r"^\t *\d+ - \S+ \((?!Failed\))[^)\n]+\)", re.MULTILINE)


def in_order(log):
    """Of tests that ran side by side, the lines of each together."""
    lines = log.splitlines(keepends=True)
    number = re.compile(r"(\d+): ")
    def test_of(line):
        match = number.match(line)
        return int(match.group(1)) if match else 0
    return "".join(sorted(lines, key=test_of))


def count(log):
    log = in_order(log)
    counts = {name: sum(map(int, pattern.findall(log)))
              for name, pattern in _GOOGLE_TEST.items()}
    for ran, rest in _UNITTEST.findall(log):
        details = {name: int(number) for name, number in re.findall(r"(\w+)=(\d+)", rest)}
        bad = details.get("failures", 0) + details.get("errors", 0)
        skipped = details.get("skipped", 0)
        counts["passed"] += max(int(ran) - bad - skipped, 0)
        counts["failed"] += bad
        counts["skipped"] += skipped
    counts["failed"] += len(_CTEST_ENDED.findall(log))
    return counts


if __name__ == "__main__":
    with open(sys.argv[1], encoding="utf-8", errors="replace") as file:
        print(*count(file.read()).values())
