#!/usr/bin/env python3
"""Runs the tests of the wizard's window: run_tests.py [--parts N] [PATTERN]. A window waits more
than it works, so the classes of tests run in parts beside each other, each part with a Wine prefix
and screens of its own. A test that fails is run once more when nothing runs beside it, and counts
only when it fails again, since a real window on a busy machine may miss a click. What went wrong
the first time is printed all the same."""

import argparse
import faulthandler
import io
import multiprocessing
import os
import signal
import sys
import time
import unittest
from collections import defaultdict
from concurrent.futures import ProcessPoolExecutor, as_completed
from concurrent.futures.process import BrokenProcessPool
from pathlib import Path

TESTS = Path(__file__).resolve().parent
sys.path.append(str(TESTS.parents[1] / "tools"))
from limits import run_within  # noqa: E402


def main():
    arguments = parse_arguments()
    run_within(2100, "the tests of the wizard")
    start = time.monotonic()
    classes = find_classes(arguments.folder, arguments.pattern)
    every_test = {test for tests in classes for test in tests}
    good = run_beside_each_other(classes, arguments.parts)
    again = [[test for test in tests if test not in good] for tests in classes]
    if any(again):
        print("once more:", file=sys.stderr)
        good |= run_beside_each_other(filter(None, again), 1)
    bad = len(every_test - good)
    print(f"Ran {len(every_test)} tests in {time.monotonic() - start:.3f}s\n\n"
          f"{f'FAILED (failures={bad})' if bad else 'OK'}", file=sys.stderr)
    return 1 if bad else 0


def parse_arguments():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("pattern", nargs="?", default="*_test.py", help="of the files' names")
    parser.add_argument("--parts", type=int, choices=range(1, 9), default=2)
    parser.add_argument("--folder", type=Path, default=TESTS, help="where the files are")
    return parser.parse_args()


def find_classes(folder, pattern):
    """The names of the tests of each class; the class with the most comes first, as a long one that
    was begun last would run alone."""
    found = unittest.defaultTestLoader.discover(str(folder), pattern)
    print(*unittest.defaultTestLoader.errors, end="", file=sys.stderr)
    classes = defaultdict(list)
    for test in flatten(found):
        classes[type(test)].append(test.id())
    return sorted(classes.values(), key=len, reverse=True)


def flatten(suite):
    for test in suite:
        yield from flatten(test) if isinstance(test, unittest.TestSuite) else [test]


def run_beside_each_other(classes, parts):
    """Runs these tests; gives the names of those that ended well."""
    # Processes that begin anew: a part has its prefix before it imports tests, which fix it.
    spawn = multiprocessing.get_context("spawn")
    prefixes = spawn.SimpleQueue()
    for prefix in name_prefixes(parts):
        prefixes.put(prefix)
    with ProcessPoolExecutor(parts, spawn, prepare_part, (prefixes,)) as pool:
        runs = [pool.submit(run_class, tests) for tests in classes]
        return set(good_tests(runs))


def good_tests(runs):
    for run in as_completed(runs):
        try:
            yield from run.result()
        except BrokenProcessPool as reason:
            print(f"a part has ended before its tests: {reason}", file=sys.stderr)


def name_prefixes(parts):
    from wizard_case import PREFIX  # here, since a part imports it later
    return [str(PREFIX), *(f"{PREFIX}-{part}" for part in range(2, parts + 1))]


def prepare_part(prefixes):
    os.environ["CARROVAN_WIZARD_PREFIX"] = prefixes.get()
    # Stopped at its time limit, it says where it waits.
    faulthandler.register(signal.SIGTERM, all_threads=False, chain=True)


def run_class(tests):
    """The names of those that ended well: none where the class could not be prepared or left."""
    result = Result()
    unittest.defaultTestLoader.loadTestsFromNames(tests)(result)
    result.printErrors()
    result.say_it()
    broken = any(not isinstance(test, unittest.TestCase) for test, _ in result.errors)
    return [] if broken else result.good


class Result(unittest.TextTestResult):
    """Says of each test at its end, in one piece, how it went and how long it took, since another
    part writes to the same place."""

    def __init__(self):
        self._said = io.StringIO()
        super().__init__(unittest.runner._WritelnDecorator(self._said), True, 2)
        self.good = []

    def startTest(self, test):
        self._start = time.monotonic()
        super().startTest(test)

    def addSuccess(self, test):
        super().addSuccess(test)
        self.good.append(test.id())

    def stopTest(self, test):
        super().stopTest(test)
        self._said.seek(self._said.tell() - 1)  # the end of the line
        self._said.write(f" ({time.monotonic() - self._start:.1f} s)\n")
        self.say_it()

    def say_it(self):
        sys.stderr.write(self._said.getvalue())
        sys.stderr.flush()
        self._said.seek(0)
        self._said.truncate()


if __name__ == "__main__":
    sys.exit(main())
