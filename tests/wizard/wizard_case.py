"""What the tests of the wizard share: a Wine prefix with the sample product, and a screen."""

import os
import shutil
import subprocess
import tempfile
import unittest
from pathlib import Path

from screen import Screen
from wizard import PROGRAMS, ROOT, STARTUP_FOLDER, Wizard, install_programs

PREFIX = Path(os.environ.get("CARROVAN_WIZARD_PREFIX", ROOT / "build" / "wine-wizard"))
PROGRAM_FILES = ("carrovan.exe", "tarvik.dll", "tarvik.ini", "en-us", "zh-cn")


class WizardCase(unittest.TestCase):
    """Every test class has a screen and a freshly made sample product of its own."""

    @classmethod
    def setUpClass(cls):
        subprocess.run([ROOT / "tools" / "wine-prefix", PREFIX], check=True)
        install_programs(PREFIX)
        cls.screen = cls.enterClassContext(Screen())

    @classmethod
    def tearDownClass(cls):
        subprocess.run(["wineserver", "-k"], env={**os.environ, "WINEPREFIX": str(PREFIX)},
                       check=False)

    def setUp(self):
        # A wizard that an earlier test ended by force left its folder.
        for folder in self.staging_folders():
            shutil.rmtree(folder)

    def open_wizard(self, folder=None):
        """A wizard that is closed at the end of the test."""
        return self.enterContext(Wizard(self.screen, PREFIX, folder))

    def program_folder(self, name="program"):
        """A copy of the program and what it needs, on drive C:, for a test to spoil."""
        folder = Path(tempfile.mkdtemp(dir=PREFIX / "drive_c")) / name
        self.addCleanup(shutil.rmtree, folder.parent)
        folder.mkdir()
        for file in PROGRAM_FILES:
            source = PREFIX / STARTUP_FOLDER / file
            (shutil.copytree if source.is_dir() else shutil.copy2)(source, folder / file)
        return folder

    def run_windows(self, *command, folder=PREFIX / STARTUP_FOLDER, wait=True):
        """Runs a Windows program on this screen; not waited for, it is ended with the test."""
        environment = {**self.screen.environment(), "WINEPREFIX": str(PREFIX)}
        command = [ROOT / "tools" / "wine", *command]
        if wait:
            return subprocess.run(command, cwd=folder, env=environment, check=True,
                                  stdout=subprocess.PIPE, stderr=subprocess.DEVNULL).stdout
        process = subprocess.Popen(command, cwd=folder, env=environment,
                                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        self.addCleanup(process.wait)
        self.addCleanup(process.terminate)
        return process

    def staging_folders(self):
        return sorted((PREFIX / "drive_c" / "users").glob("*/AppData/Local/Temp/*-*-*-*-*"))

    def assert_ends(self, wizard):
        self.assertEqual(wizard.process.wait(20), 0)


__all__ = ["PREFIX", "PROGRAMS", "ROOT", "WizardCase"]
