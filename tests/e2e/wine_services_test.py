"""What reads a Windows program's output sees its end, though Wine's services go on running."""

import fcntl
import os
import select
import subprocess
import sys
import tempfile
import unittest

from machines import PROJECT
from wine_registry import export_key

from limits import end_group, run_limited  # found by way of machines

sys.path.append(str(PROJECT / "tests/wizard"))
from wizard import end_wine, processes_in_prefix  # noqa: E402

PREFIX = PROJECT / "build/wine-test"
PROGRAM = [PROJECT / "tools/wine", "cmd", "/C", "echo done"]
PLENTY = 300  # seconds, for what takes one or two on an idle machine


class WineServicesTest(unittest.TestCase):
    """Each test finds a prefix in which nothing runs."""

    def setUp(self):
        run_limited([PROJECT / "tools/wine-prefix", PREFIX], check=True)
        end_wine(PREFIX)
        self.environment = {**os.environ, "WINEPREFIX": str(PREFIX)}
        self.environment.pop("DISPLAY", None)

    def assert_services_run(self):
        self.assertTrue(processes_in_prefix(PREFIX, ("services.exe",)))

    def read_to_end(self, pipe):
        """What comes from a pipe until nobody holds its other end."""
        content = b""
        while True:
            self.assertTrue(select.select([pipe], [], [], PLENTY)[0], "the pipe is held open")
            part = os.read(pipe.fileno(), 4096)
            if not part:
                return content
            content += part

    def test_pipe_of_the_first_program_is_closed_while_services_run(self):
        for stdout, stderr in ((subprocess.PIPE, subprocess.STDOUT),
                               (subprocess.PIPE, subprocess.DEVNULL)):
            with self.subTest(stderr=stderr), subprocess.Popen(
                    PROGRAM, stdin=subprocess.DEVNULL, stdout=stdout, stderr=stderr,
                    env=self.environment, process_group=0) as program:
                self.addCleanup(end_group, program)
                self.assertEqual(self.read_to_end(program.stdout).strip(), b"done")
                self.assert_services_run()
                self.assertEqual(program.wait(PLENTY), 0)
            end_wine(PREFIX)

    def test_lock_of_the_caller_is_free_while_services_run(self):
        with tempfile.TemporaryFile() as lock:
            fcntl.flock(lock, fcntl.LOCK_EX)
            run_limited(PROGRAM, env=self.environment, check=True, pass_fds=[lock.fileno()])
            with open(f"/proc/self/fd/{lock.fileno()}", "rb") as again:
                lock.close()
                fcntl.flock(again, fcntl.LOCK_EX | fcntl.LOCK_NB)
        self.assert_services_run()

    def test_services_that_run_are_not_started_again(self):
        run_limited(PROGRAM, env=self.environment, check=True)
        first = processes_in_prefix(PREFIX, ("services.exe",))
        run_limited(PROGRAM, env=self.environment, check=True)
        self.assertEqual(processes_in_prefix(PREFIX, ("services.exe",)), first)
        self.assertEqual(len(first), 1)

    def test_registry_tool_is_the_first_program(self):
        self.assertIn(b"TEMP", export_key(PREFIX, r"HKEY_CURRENT_USER\Environment")
                      .replace(b"\0", b""))
        self.assert_services_run()

    def test_prefix_that_is_made_is_complete_though_its_output_is_captured(self):
        with tempfile.TemporaryDirectory() as folder:
            prefix = f"{folder}/prefix"
            with subprocess.Popen([PROJECT / "tools/wine-prefix", prefix], process_group=0,
                                  stdout=subprocess.PIPE, stderr=subprocess.STDOUT) as making:
                self.addCleanup(end_group, making)
                self.assertEqual(self.read_to_end(making.stdout).decode(),
                                 f"wine-prefix: making {prefix}\n")
                self.assertEqual(making.wait(PLENTY), 0)
            self.assertIn(b"TEMP", export_key(prefix, r"HKEY_CURRENT_USER\Environment")
                          .replace(b"\0", b""))
            end_wine(prefix)


if __name__ == "__main__":
    unittest.main()
