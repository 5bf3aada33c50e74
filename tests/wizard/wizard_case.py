"""What the tests of the wizard share: a Wine prefix with the sample product, and a screen."""

import os
import shutil
import subprocess
import tempfile
import unittest
import zipfile
from pathlib import Path

from machine_state import parse_registry_file
from screen import LIMIT_SECONDS, Screen
from wizard import PROGRAMS, ROOT, STARTUP_FOLDER, Wizard, end_wine, install_programs

from limits import end_group, run_limited  # found by way of wizard

PREFIX = Path(os.environ.get("CARROVAN_WIZARD_PREFIX", ROOT / "build" / "wine-wizard"))
DRIVE = PREFIX / "drive_c"
PROGRAM_FILES = ("carrovan.exe", "carrovan-cli.exe", "tarvik.dll", "tarvik.ini", "en-us", "zh-cn")


class WizardCase(unittest.TestCase):
    """Every test class has a screen of its own and finds the sample product as it was made."""

    SPOILS_SAMPLE = False  # True for classes that import or reset settings
    _sample_is_fresh = False

    @classmethod
    def setUpClass(cls):
        run_limited([ROOT / "tools" / "wine-prefix", PREFIX], check=True)
        if not WizardCase._sample_is_fresh:
            end_wine(PREFIX)  # what a run that was stopped has left is on a screen that is gone
            install_programs(PREFIX)
        WizardCase._sample_is_fresh = not cls.SPOILS_SAMPLE
        cls.screen = cls.enterClassContext(Screen())

    @classmethod
    def tearDownClass(cls):
        end_wine(PREFIX)

    def setUp(self):
        # A wizard that an earlier test ended by force left its folder.
        for folder in self.staging_folders():
            shutil.rmtree(folder)

    def open_wizard(self, folder=None, arguments=()):
        """A wizard that is closed at the end of the test."""
        return self.enterContext(Wizard(self.screen, PREFIX, folder, arguments=arguments))

    def program_folder(self, name="program"):
        """A copy of the program and what it needs, on drive C:, for a test to spoil."""
        folder = Path(tempfile.mkdtemp(dir=DRIVE)) / name
        self.addCleanup(shutil.rmtree, folder.parent)
        folder.mkdir()
        for file in PROGRAM_FILES:
            source = PREFIX / STARTUP_FOLDER / file
            (shutil.copytree if source.is_dir() else shutil.copy2)(source, folder / file)
        return folder

    @classmethod
    def run_cli(cls, *arguments, folder=PREFIX / STARTUP_FOLDER, status=0):
        """Runs the command line to its end; it must end with this status."""
        return cls._run(["carrovan-cli.exe", *arguments], folder, status)

    def run_windows(self, *command, folder=PREFIX / STARTUP_FOLDER, wait=True):
        """Runs a Windows program on this screen; not waited for, it is ended with the test."""
        if wait:
            return self._run(command, folder)
        process = subprocess.Popen([ROOT / "tools" / "wine", *command], cwd=folder,
                                   env=self._environment(), stdout=subprocess.DEVNULL,
                                   stderr=subprocess.DEVNULL, process_group=0)
        self.addCleanup(end_group, process)
        return process

    @classmethod
    def _run(cls, command, folder, status=0):
        done = run_limited([ROOT / "tools" / "wine", *command], cwd=folder,
                           env=cls._environment())
        assert done.returncode == status, (command, done.returncode)
        return done.stdout

    @classmethod
    def _environment(cls):
        return {**cls.screen.environment(), "WINEPREFIX": str(PREFIX)}

    def package(self, name):
        """The path of a package that is gone when the test ends."""
        path = DRIVE / name
        path.unlink(missing_ok=True)
        self.addCleanup(path.unlink, missing_ok=True)
        return path

    def crafted_package(self, name, **entries):
        """A package with these texts as its entries."""
        path = self.package(name)
        with zipfile.ZipFile(path, "w") as archive:
            for entry, text in entries.items():
                archive.writestr(entry, text)
        return path

    def staging_folders(self):
        return sorted((DRIVE / "users").glob("*/AppData/Local/Temp/*-*-*-*-*"))

    def assert_ends(self, wizard):
        self.assertEqual(wizard.process.wait(LIMIT_SECONDS), 0)


def windows_name(path):
    """The name on drive C: of a file that lies directly there."""
    return "C:\\" + path.name


def change_identity(folder, old, new):
    """Changes what the stand-in of the product's library reports."""
    file = folder / "tarvik.ini"
    text = file.read_text(encoding="utf-8")
    assert old in text
    file.write_text(text.replace(old, new), encoding="utf-8")


def package_content(package):
    """Every entry in its order: the bytes, of registry files the keys and values."""
    with zipfile.ZipFile(package) as archive:
        return [(name, parse_registry_file(archive.read(name)) if name.endswith(".reg")
                 else archive.read(name)) for name in archive.namelist()]
