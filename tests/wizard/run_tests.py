#!/usr/bin/env python3
"""Runs the tests of the wizard's window: run_tests.py [PATTERN]. A test that fails is run once more
and counts only when it fails again, since a real window on a busy machine may miss a click. What
went wrong the first time is printed all the same."""

import sys
import time
import unittest
from pathlib import Path

sys.path.append(str(Path(__file__).resolve().parents[2] / "tools"))
from limits import run_within  # noqa: E402


def main():
    run_within(2100, "the tests of the wizard")
    pattern = sys.argv[1] if len(sys.argv) > 1 else "*_test.py"
    start = time.monotonic()
    suite = unittest.defaultTestLoader.discover(str(Path(__file__).parent), pattern)
    first = run(suite)
    failed = [test for test, _ in first.failures + first.errors]
    again = [test for test in failed if isinstance(test, unittest.TestCase)]
    bad = len(failed) - len(again)  # a class that could not be prepared
    if again:
        print("once more:", file=sys.stderr)
        second = run(unittest.TestSuite(again))
        bad += len(second.failures) + len(second.errors)
    print(f"Ran {first.testsRun} tests in {time.monotonic() - start:.3f}s\n\n"
          f"{f'FAILED (failures={bad})' if bad else 'OK'}", file=sys.stderr)
    return 1 if bad else 0


def run(suite):
    result = unittest.TextTestResult(unittest.runner._WritelnDecorator(sys.stderr), True, 2)
    suite(result)
    result.printErrors()
    return result


if __name__ == "__main__":
    sys.exit(main())
