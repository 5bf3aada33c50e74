"""The Windows program under Wine: a second run is refused by name, and a killed one keeps nobody
out."""

import json
import re
import subprocess

from held_run import HeldRun
from machines import PROJECT
from wine_export_test import STARTUP_FOLDER
from wine_import_test import wine_environment
from wine_restore_test import WineRestoreCase


class WineOneRunTest(WineRestoreCase):
    def setUp(self):
        super().setUp()
        self.own = self.machine.app_data / "Local/Carrovan"
        self.export()

    def start_import(self):
        return subprocess.Popen([PROJECT / "tools/wine", "carrovan-cli.exe", *self.import_all()],
                                cwd=STARTUP_FOLDER, env=wine_environment(),
                                stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)

    def held_import(self):
        return HeldRun(self.start_import, self.own)

    def test_second_run_is_refused_and_the_first_is_named(self):
        with self.held_import() as first:
            name = first.name()
            self.assertRegex(name, re.compile(r"\Acarrovan-cli import, process \d+\Z"))
            for verb in (self.import_all(), ("reset", "--all", "--yes"), ("undo",),
                         ("prune", "--keep", "0")):
                self.assert_refused(self.machine.run(*verb), 1,
                                    f"Another run is at work: {name}\n")
            for verb in (("restore-points",), (*self.import_all(), "--dry-run")):
                self.run_verb(*verb)
            self.assertEqual(first.go_on(), 0)
        self.assertEqual([path.name for path in self.own.iterdir()], ["Restore"])
        self.run_verb("undo")
        self.assert_state(self.before)

    def test_killed_run_keeps_nobody_out(self):
        with self.held_import() as first:
            first.kill()
        self.run_verb(*self.import_all())
        self.assertEqual([path.name for path in self.own.iterdir()], ["Restore"])
        for point in json.loads(self.run_verb("restore-points", "--json").stdout):
            self.run_verb("undo", point["id"])
        self.assert_state(self.before)
