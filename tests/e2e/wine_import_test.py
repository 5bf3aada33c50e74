"""The Windows program under Wine leaves registry and folders as the same rules say."""

import contextlib
import os
import shutil
import subprocess
import sys
import tempfile

import hostile_zip
import registry_file
from expected_machine import State
from machines import PROJECT, SandboxTest
from playable import (differences, exists_on_drive, files_below, play_2024_to_2025,
                      play_tour)
from wine_export_test import PREFIX, make_wine_sample, run_windows, windows_path
from wine_registry import export_key

sys.path.append(str(PROJECT / "tests/wizard"))
from limits import end_group  # noqa: E402
from screen import wait_for  # noqa: E402


class PlayableWine:
    """The profile and registry of the product in a Wine prefix."""

    def __init__(self):
        self.drive = PREFIX / "drive_c"
        temp, = (self.drive / "users").glob("*/AppData/Local/Vantric")
        self.app_data = temp.parents[1]
        self.profile = rf"C:\users\{temp.parents[2].name}"

    def run(self, *arguments):
        return run_windows(*arguments)

    def path(self, host_path):
        return windows_path(host_path)

    def path_exists(self, path):
        return exists_on_drive(self.drive, path)

    def state(self):
        files = {path: content for path, content in files_below(self.app_data).items()
                 if path.count("/") == 0 or path.split("/")[1] in ("Vantric", "ORMA")}
        registry = {}
        for hive in ("HKEY_CURRENT_USER", "HKEY_LOCAL_MACHINE"):
            registry.update(registry_file.parse(export_key(PREFIX, rf"{hive}\SOFTWARE\Vantric")))
        return State(files, registry)

    def staging_folders(self):
        return list((self.app_data / "Local/Temp").glob("*-*-*-*-*"))


def wine_environment():
    environment = dict(os.environ, WINEPREFIX=str(PREFIX))
    environment.pop("DISPLAY", None)
    return environment


class WineTest(SandboxTest):
    """Each test finds the sample product as it was installed."""

    def setUp(self):
        super().setUp()
        make_wine_sample()
        self.machine = PlayableWine()


class WineImportTest(WineTest):
    def test_tour_from_2025_to_2026_with_a_backup_and_a_reset(self):
        play_tour(self, self.machine, self.folder)
        self.assertEqual(self.machine.staging_folders(), [])

    def test_tour_from_2024_to_2025(self):
        play_2024_to_2025(self, self.machine, self.folder)
        self.assertEqual(self.machine.staging_folders(), [])

    def test_bad_packages_change_nothing(self):
        before = self.machine.state()
        hostile_zip.make_package(self.package, [("config.ini", hostile_zip.CONFIG),
                                                ("Options\\General.reg", b"no registry file")])
        whole = self.package.read_bytes()
        self.package.write_bytes(whole[:-30])
        self.assert_import_refused("settings.ucex is not a package")
        hostile_zip.make_package(self.package, [
            ("config.ini", hostile_zip.CONFIG.replace(b"=VANTRIC", b"=OTHER"))])
        self.assert_import_refused("Please run Vantric at least once")
        self.assertEqual(differences(before, self.machine.state()), [])

    def test_running_product_refuses_import_and_reset(self):
        before = self.machine.state()
        hostile_zip.make_package(self.package, [("config.ini", hostile_zip.CONFIG)])
        with self.running_product():
            self.assert_import_refused("Please close the product before running it again")
            done = self.machine.run("reset", "--all", "--yes")
            self.assert_refused(done, 1, "Please close the product before running it again")
        self.assertEqual(differences(before, self.machine.state()), [])

    @contextlib.contextmanager
    def running_product(self):
        """Some program under the product's name, spelled otherwise; it ends with its input."""
        product = PREFIX / "drive_c" / "vantric.EXE"
        shutil.copy2(PREFIX / "drive_c" / "windows" / "system32" / "cmd.exe", product)
        self.addCleanup(product.unlink)
        with tempfile.TemporaryFile() as output, subprocess.Popen(
                [PROJECT / "tools/wine", "C:\\vantric.EXE"], stdin=subprocess.PIPE, stdout=output,
                env=wine_environment(), process_group=0) as process:
            try:
                wait_for(lambda: os.fstat(output.fileno()).st_size, 120, "the product to run")
                yield
                process.stdin.close()
                process.wait(120)
            finally:
                end_group(process)

    def assert_import_refused(self, reason):
        done = self.machine.run("import", windows_path(self.package), "--to", "2026", "--all")
        self.assert_refused(done, 1, reason)

    def test_registry_file_that_is_none_is_told(self):
        before = self.machine.state()
        hostile_zip.make_package(self.package, [("config.ini", hostile_zip.CONFIG),
                                                ("Options\\General.reg", b"no registry file")])
        done = self.machine.run("import", windows_path(self.package), "--to", "2026", "--all")
        self.assertEqual((done.returncode, done.stderr.count("\n")), (3, 1), done.stderr)
        self.assertIn("Not imported into the registry: ", done.stderr)
        self.assertEqual(differences(before, self.machine.state()), [])
