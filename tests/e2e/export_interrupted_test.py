"""An export that dies at any moment leaves the old package or the new one, never a mixture."""

import fcntl
import os
import subprocess
import time
import unittest
import zipfile

import expected_package
from machines import CLI, EXPORT_ALL, SandboxTest, digest, make_sandbox, small_sandbox

KILLS = 60


class KilledExportTest(SandboxTest):
    def setUp(self):
        super().setUp()
        self.machine = small_sandbox(self.folder / "machine")
        self.command = [CLI, "--root", self.machine.root, *EXPORT_ALL, self.package]

    def run_to_its_end(self):
        started = time.monotonic()
        subprocess.run(self.command, capture_output=True, check=False)
        return time.monotonic() - started

    def kill_after(self, seconds):
        """True when the run was still going."""
        with subprocess.Popen(self.command, stdout=subprocess.DEVNULL,
                              stderr=subprocess.DEVNULL) as run:
            try:
                run.wait(seconds)
                return False
            except subprocess.TimeoutExpired:
                run.kill()
                return True

    def assert_whole_package(self):
        with zipfile.ZipFile(self.package) as archive:
            self.assertIsNone(archive.testzip())
            self.assertEqual(archive.namelist(), self.names)

    def test_package_is_old_or_new_whenever_the_export_is_killed(self):
        duration = self.run_to_its_end()
        with zipfile.ZipFile(self.package) as archive:
            self.names = archive.namelist()
        old = b"the package of last week" * 1000
        killed = replaced = 0
        for number in range(KILLS):
            self.package.write_bytes(old)
            killed += self.kill_after(1.1 * duration * number / KILLS)
            if self.package.read_bytes() != old:
                self.assert_whole_package()
                replaced += 1
        self.assertGreater(killed, 0)
        self.assertLess(replaced, KILLS)
        self.run_to_its_end()
        self.assert_whole_package()
        self.assertEqual(sorted(os.listdir(self.folder)), ["machine", "settings.ucex"])

    def test_new_package_is_absent_empty_or_whole_when_the_export_is_killed(self):
        duration = self.run_to_its_end()
        with zipfile.ZipFile(self.package) as archive:
            self.names = archive.namelist()
        for number in range(KILLS // 3):
            self.package.unlink(missing_ok=True)
            self.kill_after(3.3 * duration * number / KILLS)
            if self.package.exists() and self.package.stat().st_size > 0:
                self.assert_whole_package()


class FullDiskTest(SandboxTest):
    """The disk is a small file system of memory in a mount namespace of the test's own."""

    def setUp(self):
        super().setUp()
        self.machine = make_sandbox(self.folder / "machine")
        self.disk = self.folder / "disk"
        self.disk.mkdir()

    def test_full_target_disk_keeps_the_old_package_and_leaves_no_litter(self):
        done = self.in_namespace(
            'disk=$1; shift; mount -t tmpfs -o size=2m none "$disk" || exit 99\n'
            'head -c 100000 /dev/zero >"$disk/settings.ucex"\n'
            '"$@" "$disk/settings.ucex"; status=$?\n'
            'ls -A "$disk"; sha256sum <"$disk/settings.ucex"; exit $status\n',
            self.disk, CLI, "--root", self.machine.root, *EXPORT_ALL)
        self.package.write_bytes(bytes(100000))
        self.assertEqual(done.stdout, f"settings.ucex\n{digest(self.package)}  -\n", done.stderr)
        self.assertEqual((done.returncode, done.stderr.count("\n")), (1, 1), done.stderr)
        self.assertIn("disk is full", done.stderr)
        self.assertEqual(self.machine.temporary_files(), [])

    def test_full_temporary_disk_names_each_key_that_it_could_not_prepare(self):
        done = self.in_namespace(
            'temp=$1; shift; mount -t tmpfs -o size=16k none "$temp" || exit 99\n'
            '"$@" >/dev/null; status=$?; ls -A "$temp"; exit $status\n',
            self.machine.local / "Temp", CLI, "--root", self.machine.root, *EXPORT_ALL,
            self.package)
        self.assertEqual((done.returncode, done.stdout), (3, ""), done.stderr)
        self.assertIn(r"VANTRIC 28.0\Export Options", done.stderr)
        with zipfile.ZipFile(self.package) as archive:
            self.assertIsNone(archive.testzip())
            for name in expected_package.REGISTRY_ENTRIES[:26]:
                named = "\\" + name[len("Options\\"):-len(".reg")] + ":" in done.stderr
                self.assertNotEqual(named, name in archive.namelist(), name)

    def test_temporary_disk_without_room_for_a_description_keeps_the_old_package(self):
        self.package.write_bytes(b"the package of last week")
        done = self.in_namespace(
            'temp=$1; shift; mount -t tmpfs -o size=64k,nr_inodes=2 none "$temp" || exit 99\n'
            '"$@" >/dev/null; status=$?; ls -A "$temp"; exit $status\n',
            self.machine.local / "Temp", CLI, "--root", self.machine.root, "export", "--version",
            "2026", "--category", "Cosmetic Thread", "--output", self.package)
        self.assertEqual((done.returncode, done.stdout), (1, ""), done.stderr)
        self.assertIn("could not be written and read back", done.stderr)
        self.assertEqual(self.package.read_bytes(), b"the package of last week")


class AbandonedFolderTest(SandboxTest):
    """Folders in the temporary path that killed runs left behind."""

    NAME = "00112233-4455-6677-8899-AABBCCDDEEFF"

    def setUp(self):
        super().setUp()
        self.machine = small_sandbox(self.folder / "machine")
        self.left = self.machine.local / "Temp" / self.NAME
        (self.left / "Local").mkdir(parents=True)
        (self.left / "Local" / "x.txt").write_bytes(b"x")
        self.mark = self.left / "~carrovan.lock"

    def export(self):
        done = self.machine.run("export", "--version", "2026", "--category", "Cosmetic Thread",
                                "--output", self.package)
        self.assertEqual(done.returncode, 0, done.stderr)

    def test_killed_exports_folder_is_gone_after_the_next(self):
        self.left.rename(self.folder / "aside")
        with subprocess.Popen([CLI, "--root", self.machine.root, *EXPORT_ALL, self.package],
                              stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL) as run:
            deadline = time.monotonic() + 60
            temporary = self.machine.local / "Temp"
            while not list(temporary.glob("*/~carrovan.lock")) and run.poll() is None:
                self.assertLess(time.monotonic(), deadline, "no staging folder within a minute")
            run.kill()
        self.export()
        self.assertEqual(self.machine.temporary_files(), [])

    def test_marked_folder_of_nobody_goes(self):
        self.mark.touch()
        self.export()
        self.assertEqual(self.machine.temporary_files(), [])

    def test_folder_of_a_living_process_stays(self):
        with self.mark.open("w") as held:
            fcntl.flock(held, fcntl.LOCK_EX)
            self.export()
            self.assertEqual((self.left / "Local" / "x.txt").read_bytes(), b"x")

    def test_folder_without_a_mark_stays(self):
        self.export()
        self.assertEqual((self.left / "Local" / "x.txt").read_bytes(), b"x")

    def test_linked_folder_stays(self):
        self.mark.touch()
        self.left.rename(self.folder / "elsewhere")
        self.left.symlink_to(self.folder / "elsewhere")
        self.export()
        self.assertTrue((self.folder / "elsewhere" / "Local" / "x.txt").exists())

    def test_preview_removes_nothing(self):
        self.export()
        self.mark.touch()
        done = self.machine.run("import", self.package, "--to", "2026", "--all", "--dry-run")
        self.assertIn(done.returncode, (0, 3), done.stderr)
        self.assertTrue(self.mark.exists())
        self.machine.run("reset", "--category", "Cosmetic Thread", "--yes")
        self.assertEqual(self.machine.temporary_files(), [])
