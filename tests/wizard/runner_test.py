"""The runner of these tests, on tests that are made up for it."""

import sys
import tempfile
import unittest
from pathlib import Path

from wizard import ROOT

from limits import run_limited  # found by way of wizard

RUNNER = ROOT / "tests" / "wizard" / "run_tests.py"
HEAD = """
import os, pathlib, time, unittest
FOLDER = pathlib.Path(__file__).parent

def first_time(name):
    new = not (FOLDER / name).exists()
    (FOLDER / name).touch()
    return new
"""
MEETING = """
class {own}Test(unittest.TestCase):
    def test_other_class_runs_meanwhile(self):
        (FOLDER / "{own}").write_text(os.environ["CARROVAN_WIZARD_PREFIX"])
        end = time.monotonic() + 120
        while not (FOLDER / "{other}").exists():
            self.assertLess(time.monotonic(), end, "the other class has not begun")
            time.sleep(0.05)
"""


class RunnerTest(unittest.TestCase):
    def setUp(self):
        self.folder = Path(self.enterContext(tempfile.TemporaryDirectory()))

    def run_tests(self, *arguments, **files):
        """The status, what was counted, and all that was said."""
        for name, text in files.items():
            (self.folder / f"{name}_test.py").write_text(HEAD + text, encoding="utf-8")
        done = run_limited([sys.executable, RUNNER, "--folder", self.folder, *arguments],
                           encoding="utf-8")
        log = self.folder / "log"
        log.write_text(done.stderr, encoding="utf-8")
        counted = run_limited([ROOT / "tools" / "count_tests.py", log], encoding="utf-8").stdout
        return done.returncode, counted.split(), done.stderr

    def test_classes_run_beside_each_other_with_a_prefix_each(self):
        status, counted, said = self.run_tests(
            here=MEETING.format(own="Here", other="There"),
            there=MEETING.format(own="There", other="Here"))
        self.assertEqual((status, counted), (0, ["2", "0", "0"]), said)
        self.assertNotEqual((self.folder / "Here").read_text(), (self.folder / "There").read_text())

    def test_failed_test_is_run_once_more_and_counts_when_it_fails_again(self):
        status, counted, said = self.run_tests(some="""
class SomeTest(unittest.TestCase):
    def test_good(self):
        self.assertTrue(first_time("good"), "run twice")

    def test_bad_at_first(self):
        self.assertFalse(first_time("bad at first"), "a missed click")

    def test_bad_in_a_part(self):
        with self.subTest(part=1):
            self.assertFalse(first_time("bad in a part"))

    def test_bad(self):
        self.fail("a fault")
""")
        self.assertEqual((status, counted), (1, ["3", "1", "0"]), said)
        self.assertEqual((said.count("false : a missed click"),
                          said.count("AssertionError: a fault")), (1, 2))

    def test_class_that_cannot_be_prepared_is_tried_once_more(self):
        preparation = """
class {0}Test(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        assert {1}, "no screen"

    def test_one(self):
        pass

    def test_two(self):
        pass
"""
        status, counted, said = self.run_tests(some=preparation.format(
            "Late", 'not first_time("late")') + preparation.format("Never", "False"))
        self.assertEqual((status, counted), (1, ["2", "2", "0"]), said)
        self.assertEqual(said.count("AssertionError: no screen"), 3)

    def test_part_that_is_stopped_says_where_and_its_tests_have_failed(self):
        status, counted, said = self.run_tests(some="""
class SomeTest(unittest.TestCase):
    def test_good(self):
        pass

    def test_stopped(self):
        os.kill(os.getpid(), 15)
        time.sleep(120)
""")
        self.assertEqual((status, counted), (1, ["0", "2", "0"]), said)
        self.assertIn("in test_stopped", said)

    def test_file_that_cannot_be_read_is_a_failure(self):
        status, counted, said = self.run_tests(broken="import nothing_of_this_name\n")
        self.assertEqual((status, counted), (1, ["0", "1", "0"]), said)
        self.assertIn("No module named 'nothing_of_this_name'", said)

    def test_pattern_chooses_files(self):
        good = "class {0}Test(unittest.TestCase):\n    def test_it(self): pass\n"
        status, counted, said = self.run_tests("one_*", one=good.format("One"),
                                               two=good.format("Two"))
        self.assertEqual((status, counted), (0, ["1", "0", "0"]), said)
        self.assertRegex(said, r"(?m)^test_it \(one_test\.OneTest\.test_it\) \.\.\. ok "
                               r"\(\d+\.\d s\)$")


if __name__ == "__main__":
    unittest.main()
