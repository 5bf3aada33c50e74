"""The Windows program under Wine foretells, reads back and undoes what it does."""

import json
import os
import random
import shutil
import subprocess
import time

from machines import PROJECT
from playable import assert_foreseen, differences
from wine_export_test import STARTUP_FOLDER, windows_path
from wine_import_test import WineTest, wine_environment

from limits import end_group, run_limited  # found by way of machines

KILLS = int(os.environ.get("CARROVAN_KILLS", "3"))


class WineRestoreCase(WineTest):
    def setUp(self):
        super().setUp()
        own = self.machine.app_data / "Local/Carrovan"
        shutil.rmtree(own, ignore_errors=True)
        self.addCleanup(shutil.rmtree, own, ignore_errors=True)
        self.before = self.machine.state()

    def run_verb(self, *arguments, status=0):
        done = self.machine.run(*arguments)
        self.assertEqual(done.returncode, status, done.stderr)
        return done

    def assert_state(self, expected):
        self.assertEqual(differences(expected, self.machine.state()), [])

    def export(self):
        self.run_verb("export", "--version", "2025", "--all", "--output",
                      windows_path(self.package))

    def import_all(self):
        return ("import", windows_path(self.package), "--to", "2026", "--all")


class WineRestoreTest(WineRestoreCase):
    def play(self, *verb):
        """Foretold, done, read back, undone, undone again."""
        foreseen = json.loads(self.run_verb(*verb, "--dry-run", "--json").stdout)
        self.assert_state(self.before)
        done = json.loads(self.run_verb(*verb, "--verify", "--json").stdout)
        self.assertEqual(done["verification"]["differences"], [])
        self.assertGreater(done["verification"]["items"], 10)
        assert_foreseen(self, foreseen, self.before, self.machine.state())
        self.run_verb("undo", done["restorePoint"])
        self.assert_state(self.before)
        self.run_verb("undo")
        self.assert_state(self.before)
        self.assertEqual(self.machine.staging_folders(), [])

    def test_import_is_foretold_read_back_and_undone(self):
        self.export()
        self.play(*self.import_all())

    def test_reset_is_foretold_read_back_and_undone(self):
        self.play("reset", "--all", "--yes")

    def test_undo_after_a_kill_at_any_moment_gives_the_state_before(self):
        self.export()
        begun = time.monotonic()
        self.run_verb(*self.import_all())
        longest = time.monotonic() - begun
        self.run_verb("undo")
        moments = random.Random(1)
        for number in range(KILLS):
            with subprocess.Popen([PROJECT / "tools/wine", "carrovan-cli.exe", *self.import_all()],
                                  cwd=STARTUP_FOLDER, env=wine_environment(), process_group=0,
                                  stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL) as program:
                try:
                    time.sleep(moments.random() * longest)
                    self.kill_windows_program()
                    program.wait(120)
                finally:
                    end_group(program)
            done = self.machine.run("undo")
            self.assertIn(done.returncode, (0, 1), f"kill {number}: {done.stderr}")
            self.assert_state(self.before)

    @staticmethod
    def kill_windows_program():
        """Like the end of a task: the registry tool that it started may live on."""
        run_limited([PROJECT / "tools/wine", "taskkill", "/f", "/im", "carrovan-cli.exe"],
                    env=wine_environment())
