"""However many threads pack and unpack, what comes out and what is named is the same."""

import re
import shutil
import unittest
import zipfile

from machines import AS_PLAIN_USER, SandboxTest, make_sandbox, run_cli, snapshot

COUNTS = ("1", "2", "8")
PLENTY = 300  # seconds, for a run that would hang


def entries(package):
    """Names, sizes, checksums and packed bytes, in their order; without times, as the description
    is new in each package."""
    with open(package, "rb") as file, zipfile.ZipFile(package) as archive:
        listed = []
        for info in archive.infolist():
            file.seek(info.header_offset + 30 + len(info.orig_filename.encode()) + len(info.extra))
            listed.append((info.orig_filename, info.file_size, info.CRC,
                           file.read(info.compress_size)))
        return listed


def contents(folder):
    return {name: digest for name, (_, digest) in snapshot(folder).items()}


def damage(package):
    """Bytes within the content of every tenth item."""
    with zipfile.ZipFile(package) as archive:
        damaged = [info for info in archive.infolist() if info.compress_size > 100][::10]
    with open(package, "r+b") as file:
        for info in damaged:
            file.seek(info.header_offset + 30 + len(info.orig_filename.encode()) +
                      len(info.extra) + 50)
            file.write(b"\xff\x00damaged\xff")
    return len(damaged)


class ThreadsTest(SandboxTest):
    def test_number_of_threads_is_checked(self):
        for verb in (("export", "--version", "2026", "--all", "--output", "x.ucex"),
                     ("import", "x.ucex", "--to", "2026", "--all"), ("extract", "x.ucex", "x")):
            for number in ("0", "65", "-1", "1.5", "two", "", "0x2", "100000000000000000000"):
                done = run_cli(*verb, f"--threads={number}", cwd=self.folder)
                self.assertEqual((done.returncode, done.stdout), (2, ""), (verb, number))
                self.assertIn("--threads", done.stderr)
                if number:
                    self.assertIn(f"{number} is not a number from 1 to 64", done.stderr)
            self.assertIn("--threads", run_cli(verb[0], "--help").stdout)
        self.assertEqual(list(self.folder.iterdir()), [])

    def test_packages_hold_the_same_bytes_and_name_the_same_failures(self):
        machine = make_sandbox(self.folder / "machine")
        unreadable = sorted((machine.product_local / "en-us").rglob("*.*"))[5:50:10]
        for path in unreadable:
            path.chmod(0)
        expected = None
        for count in (*COUNTS, "64"):
            done = machine.run("export", "--version", "2026", "--all", "--output", self.package,
                               "--threads", count, wrapper=AS_PLAIN_USER, timeout=PLENTY)
            result = (done.returncode, done.stdout, done.stderr, entries(self.package))
            expected = expected or result
            self.assertEqual(result[:3], expected[:3], count)
            self.assertTrue(result == expected, count)
        self.assertEqual(expected[0], 3)
        self.assertEqual(expected[2].count("Not stored"), len(unreadable))

    def test_damaged_package_is_unpacked_to_the_same_files_with_the_same_failures(self):
        machine = make_sandbox(self.folder / "machine")
        self.assertEqual(machine.export_all(self.package).returncode, 0)
        count = damage(self.package)
        results = []
        for threads in COUNTS:
            folder = self.folder / "unpacked"
            done = run_cli("extract", self.package, folder, "--threads", threads, timeout=PLENTY)
            results.append((done.returncode, done.stdout, done.stderr, snapshot(folder)))
            shutil.rmtree(folder)
        self.assertEqual(results[0][0], 3)
        self.assertEqual(results[0][2].count("\n"), count)
        for result in results[1:]:
            self.assertEqual(result, results[0])

    def test_imports_leave_the_same_machine(self):
        machine = make_sandbox(self.folder / "machine")
        self.assertEqual(machine.export_all(self.package).returncode, 0)
        results = []
        for threads in COUNTS:
            copy = self.folder / "copy"
            shutil.copytree(machine.root, copy)
            done = run_cli("--root", copy, "import", self.package, "--to", "2026", "--all",
                           "--no-restore-point", "--threads", threads, timeout=PLENTY)
            # The staging folder has a new name in each run.
            log = re.sub(r"[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}", "GUID", done.stdout)
            results.append((done.returncode, log, done.stderr, contents(copy)))
            shutil.rmtree(copy)
        self.assertEqual(results[0][0], 0, results[0][2])
        for result in results[1:]:
            self.assertEqual(result, results[0])


if __name__ == "__main__":
    unittest.main()
