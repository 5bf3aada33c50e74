"""The Windows program under Wine writes the same package as the native one from a sandbox."""

import json
import os
import sys
import tempfile
import zipfile
from pathlib import Path

import registry_file
from machines import (EXPORT_ALL, MAKE_SAMPLE, PROJECT, RELEASE_CLI, SandboxTest, make_sandbox,
                      run_cli)

from limits import run_limited  # found by way of machines

WINDOWS_BUILD = os.environ.get("CARROVAN_WINDOWS_BUILD", PROJECT / "build/windows")
PREFIX = PROJECT / "build/wine-test"  # the one that tools/test-windows uses
STARTUP_FOLDER = PREFIX / "drive_c/Program Files/ORMA/VANTRIC 2026/Bin"


def run_windows(*arguments):
    environment = dict(os.environ, WINEPREFIX=str(PREFIX))
    environment.pop("DISPLAY", None)
    return run_limited([PROJECT / "tools/wine", "carrovan-cli.exe", *arguments],
                       cwd=STARTUP_FOLDER, env=environment, encoding="utf-8")


def make_wine_sample():
    """Puts the sample product with the programs of this build into the prefix."""
    run_limited([PROJECT / "tools/wine-prefix", PREFIX], check=True)
    run_limited([sys.executable, MAKE_SAMPLE, "--wine", PREFIX, "--programs", WINDOWS_BUILD],
                check=True)


def windows_path(path):
    return "Z:" + str(path).replace("/", "\\")


class WineExportTest(SandboxTest):
    @classmethod
    def setUpClass(cls):
        make_wine_sample()
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.machine = make_sandbox(Path(folder.name) / "machine")
        cls.native = Path(folder.name) / "native.ucex"
        cls.windows = Path(folder.name) / "导出 windows.ucex"
        cls.native_done = cls.machine.export_all(cls.native, program=RELEASE_CLI)
        cls.windows_done = run_windows(*EXPORT_ALL, windows_path(cls.windows))

    def setUp(self):
        super().setUp()
        self.assertEqual((self.native_done.returncode, self.native_done.stderr), (0, ""))
        self.assertEqual((self.windows_done.returncode, self.windows_done.stderr), (0, ""))

    def test_entries_are_the_same_in_the_same_order(self):
        with zipfile.ZipFile(self.native) as native, zipfile.ZipFile(self.windows) as windows:
            self.assertEqual(windows.namelist(), native.namelist())

    def test_entries_have_the_same_bytes_and_registry_files_the_same_keys(self):
        with zipfile.ZipFile(self.native) as native, zipfile.ZipFile(self.windows) as windows:
            for name in native.namelist():
                if name.endswith(".reg"):
                    self.assertEqual(registry_file.parse(windows.read(name)),
                                     registry_file.parse(native.read(name)), name)
                else:
                    self.assertEqual(windows.read(name), native.read(name), name)

    def test_files_have_the_same_times(self):
        with zipfile.ZipFile(self.native) as native, zipfile.ZipFile(self.windows) as windows:
            for entry in native.infolist():
                if entry.filename.startswith(("Local", "Roaming")):
                    self.assertEqual(windows.getinfo(entry.filename).date_time, entry.date_time,
                                     entry.filename)

    def test_finish_text_names_the_package(self):
        self.assertIn(windows_path(self.windows), self.windows_done.stdout)

    def test_staging_folder_is_gone(self):
        temp = PREFIX / "drive_c/users" / self.machine.user / "AppData/Local/Temp"
        self.assertEqual(list(temp.glob("*-*-*-*-*")), [])

    def test_inspect_prints_the_same_on_both_systems(self):
        windows = run_windows("inspect", windows_path(self.native))
        native = run_cli("inspect", self.native)
        self.assertEqual((windows.returncode, windows.stderr), (0, ""))
        self.assertEqual(windows.stdout.replace("\r\n", "\n"), native.stdout)

    def test_extract_gives_the_same_files(self):
        done = run_windows("extract", windows_path(self.native), windows_path(self.folder / "out"))
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        with zipfile.ZipFile(self.native) as archive:
            for name in archive.namelist():
                copy = self.folder / "out" / name.replace("\\", "/")
                self.assertEqual(copy.read_bytes(), archive.read(name), name)

    def test_versions_are_the_same(self):
        windows = run_windows("versions", "--json")
        self.assertEqual((windows.returncode, windows.stderr), (0, ""))
        native = self.machine.run("versions", "--json")
        self.assertEqual(self.versions(windows), self.versions(native))

    def test_refusals_have_the_same_status_and_text(self):
        for arguments in (("export", "--version", "2019", "--all", "--output", "x.ucex"),
                          ("export", "--version", "2026", "--category", "Wallpapers",
                           "--output", "x.ucex")):
            windows = run_windows(*arguments)
            native = self.machine.run(*arguments, cwd=self.folder)
            self.assertEqual(windows.returncode, native.returncode)
            self.assertEqual(windows.stderr.replace("\r\n", "\n"), native.stderr)
        self.assertFalse((STARTUP_FOLDER / "x.ucex").exists())

    @staticmethod
    def versions(done):
        """Without the one difference: Wine spells its folder of users in lower case."""
        return json.loads(done.stdout.replace("C:\\\\users\\\\", "C:\\\\Users\\\\"))
