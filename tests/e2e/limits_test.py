"""Nothing waits for ever: commands whose output is wanted, scripts, and the runners of ./test."""

import fcntl
import os
import subprocess
import tempfile
import time
import unittest
from pathlib import Path

from machines import PROJECT

from limits import run_limited  # found by way of machines

WITH_LIMIT = PROJECT / "tools/with-limit"
PLENTY = 300  # for what ends in a moment, on however busy a machine


class Held:
    """A lock that the processes of a test inherit, so that it is free when all of them are gone."""

    def __init__(self, test):
        self._file = tempfile.TemporaryFile()
        test.addCleanup(self._file.close)
        fcntl.flock(self._file, fcntl.LOCK_EX)
        self.number = self._file.fileno()

    def wait_until_free(self):
        """Closes this process's own hold; AssertionError when another's stays."""
        with open(f"/proc/self/fd/{self.number}", "rb") as again:
            self._file.close()
            end = time.monotonic() + PLENTY
            while True:
                try:
                    return fcntl.flock(again, fcntl.LOCK_EX | fcntl.LOCK_NB)
                except BlockingIOError:
                    if time.monotonic() > end:
                        raise AssertionError("a process is left") from None
                    time.sleep(0.05)


class RunLimitedTest(unittest.TestCase):
    def test_output_and_status_come_though_a_child_holds_the_output_open(self):
        held = Held(self)
        done = run_limited(["sh", "-c", "sleep 600 & echo $!; echo bad >&2; exit 3"],
                           pass_fds=[held.number], encoding="utf-8")
        child = int(done.stdout)
        self.assertEqual((done.returncode, done.stderr), (3, "bad\n"))
        os.kill(child, 9)  # it still ran
        held.wait_until_free()

    def test_command_that_does_not_end_is_named_and_ended_with_its_children(self):
        held = Held(self)
        with self.assertRaisesRegex(TimeoutError, "'sh -c .*sleep 601.* did not end within 1 s; "
                                                  "stopped. It has said: begun$"):
            run_limited(["sh", "-c", "echo begun; sleep 600 & sleep 601; true"], seconds=1,
                        pass_fds=[held.number])
        held.wait_until_free()

    def test_failure_is_raised_when_asked_for(self):
        with self.assertRaises(subprocess.CalledProcessError):
            run_limited(["false"], check=True)

    def test_texts_have_plain_line_ends(self):
        self.assertEqual(run_limited(["printf", r"a\r\nb\n"], encoding="utf-8").stdout, "a\nb\n")
        self.assertEqual(run_limited(["printf", r"a\r\nb\n"]).stdout, b"a\r\nb\n")


class WithLimitTest(unittest.TestCase):
    def run_with_limit(self, *arguments, **options):
        return run_limited([WITH_LIMIT, *arguments], seconds=PLENTY, encoding="utf-8", **options)

    def test_input_output_and_status_are_those_of_the_command(self):
        with tempfile.TemporaryFile() as text:
            text.write(b"text")
            text.seek(0)
            done = self.run_with_limit("600", "the copy", "sh", "-c", "cat; echo bad >&2; exit 7",
                                       stdin=text)
        self.assertEqual((done.returncode, done.stdout, done.stderr), (7, "text", "bad\n"))

    def test_command_that_hangs_is_named_and_all_of_it_ended(self):
        held = Held(self)
        done = self.run_with_limit(
            "1", "the sleep", "bash", "-c", "trap '' TERM; setsid sleep 600 & sleep 601; sleep 602",
            pass_fds=[held.number])
        self.assertEqual((done.returncode, done.stdout), (124, ""))
        self.assertIn("with-limit: the sleep did not end within 1 s", done.stderr)
        self.assertIn(": sleep 600 \n", done.stderr)
        self.assertIn(": sleep 601 \n", done.stderr)
        held.wait_until_free()

    def test_limit_around_another_one_ends_what_is_below_both(self):
        held = Held(self)
        done = self.run_with_limit("1", "the outer", WITH_LIMIT, "600", "the inner", "setsid",
                                   "--wait", "sleep", "603", pass_fds=[held.number])
        self.assertEqual(done.returncode, 124)
        self.assertIn("the outer did not end", done.stderr)
        held.wait_until_free()

    def test_nothing_is_left_when_it_is_killed_itself(self):
        held = Held(self)
        with subprocess.Popen([WITH_LIMIT, "600", "the sleep", "sh", "-c",
                               "setsid sleep 604 & echo begun; sleep 605"], stdout=subprocess.PIPE,
                              pass_fds=[held.number]) as run:
            self.assertEqual(run.stdout.readline(), b"begun\n")
            run.kill()
        held.wait_until_free()

    def test_another_command_that_runs_is_left_alone(self):
        with subprocess.Popen(["sleep", "606"]) as other:
            self.assertEqual(self.run_with_limit("1", "the sleep", "sleep", "607").returncode, 124)
            self.assertIsNone(other.poll())
            other.kill()

    def test_command_finds_what_it_runs_within(self):
        done = self.run_with_limit("600", "the answer", "sh", "-c", "echo $CARROVAN_WITHIN")
        self.assertEqual(done.stdout, "the answer\n")

    def test_wrong_usage_is_refused(self):
        for arguments in ((), ("5",), ("5", "what"), ("0", "what", "true"), ("x", "what", "true")):
            self.assertEqual(self.run_with_limit(*arguments).returncode, 2, arguments)

    def test_script_starts_itself_anew_within_its_limit(self):
        script = ("import os, sys, time; sys.path.append('tools'); from limits import run_within; "
                  "run_within(1, 'the script'); print(sys.argv[1], flush=True); time.sleep(600)")
        done = run_limited(["python3", "-c", script, "argument"], cwd=PROJECT, seconds=PLENTY,
                           encoding="utf-8")
        self.assertEqual((done.returncode, done.stdout), (124, "argument\n"))
        self.assertIn("the script did not end within 1 s", done.stderr)


class CountedRunnersTest(unittest.TestCase):
    """What ./test does with its runners."""

    def count(self, *lines, **options):
        folder = self.enterContext(tempfile.TemporaryDirectory())
        script = ["set -euo pipefail", f"logs={folder}", "source tools/count-runners.sh", *lines,
                  "sum_up"]
        done = run_limited(["bash", "-c", "\n".join(script)], cwd=PROJECT, seconds=PLENTY,
                           encoding="utf-8", **options)
        return done.returncode, done.stdout.splitlines()

    def test_runner_that_is_stopped_is_a_failure_and_the_sum_is_printed(self):
        status, lines = self.count("run good 600 echo '[  PASSED  ] 5 tests.'",
                                   "run hung 1 sleep 608",
                                   "run last 600 echo '[  PASSED  ] 2 tests.'")
        self.assertEqual(status, 1)
        self.assertIn("test: hung: 0 passed, 1 failed, 0 skipped", lines)
        self.assertIn("hung did not end within 1 s", "\n".join(lines))
        self.assertEqual(lines[-1], "7 passed, 1 failed")

    def test_runner_beside_others_is_counted_when_it_is_finished(self):
        status, lines = self.count("begin hung 2 sleep 607", "begin slow 600 sh -c "
                                   "'sleep 1; echo \"[  PASSED  ] 3 tests.\"'",
                                   "run quick 600 echo '[  PASSED  ] 2 tests.'",
                                   "finish slow", "finish hung")
        self.assertEqual((status, lines[:2]), (1, ["test: quick: 2 passed, 0 failed, 0 skipped",
                                                   "test: slow: 3 passed, 0 failed, 0 skipped"]))
        self.assertEqual(lines[-1], "5 passed, 1 failed")

    def test_runner_beside_others_ends_with_the_script(self):
        held = Held(self)
        self.assertEqual(self.count("begin slow 600 sleep 610", "exit 3", pass_fds=[held.number]),
                         (3, []))
        held.wait_until_free()

    def test_failures_before_the_limit_are_counted_besides_it(self):
        report = "printf '[  %s  ] 2 tests, listed below:' FAILED"
        status, lines = self.count(f'run hung 1 sh -c "{report}; sleep 609"')
        self.assertEqual((status, lines[-1]), (1, "0 passed, 3 failed"))

    def test_program_that_ctest_stopped_or_that_crashed_is_a_failure(self):
        log = ("1: [  PASSED  ] 4 tests.\\n\\t  2 - e2e.restore (Timeout)\\n"
               "\\t 13 - engine (SEGFAULT)\\n\\t  3 - e2e.merge (Failed)\\n"
               "3: Ran 3 tests in 0.1s\\n3: \\n3: FAILED (failures=1)\\n")
        status, lines = self.count(f"run native 600 sh -c \"printf '{log}'; exit 8\"")
        self.assertEqual((status, lines[-1]), (1, "6 passed, 3 failed"))

    def test_runner_that_fails_without_a_count_is_a_failure(self):
        self.assertEqual(self.count("run broken 600 false"),
                         (1, ["test: broken: 0 passed, 1 failed, 0 skipped", "0 passed, 1 failed"]))

    def test_check_passes_when_it_prints_nothing(self):
        status, lines = self.count("silent() { true; }", "loud() { echo found; }",
                                   "check quiet silent", "check noise loud")
        self.assertEqual((status, lines), (1, ["test: noise: failed", "found",
                                               "1 passed, 1 failed"]))


if __name__ == "__main__":
    unittest.main()
