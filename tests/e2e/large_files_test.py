"""Files of any size pass through little memory. Measured with the release build: the sanitizers
take memory of their own."""

import os
import subprocess
import unittest
import zipfile
from pathlib import Path

from machines import RELEASE_CLI, SandboxTest, small_sandbox

MEMORY_LIMIT_BYTES = 100 << 20
# More than the sizes of a zip archive without its 64-bit extension can state.
HUGE_BYTES = (4 << 30) + 12345


@unittest.skipUnless(Path(RELEASE_CLI).exists(), "the release build is not there: tools/build host")
class LargeFilesTest(SandboxTest):
    def test_huge_files_need_little_memory_and_make_a_readable_package(self):
        machine = small_sandbox(self.folder / "machine")
        folder = machine.product_local / "en-us/CosmeticThread"
        with open(folder / "huge.bin", "wb") as file:
            file.truncate(HUGE_BYTES)
        (folder / "mixed.bin").write_bytes(os.urandom(40 << 20) + bytes(20 << 20))

        peak = self.peak_memory("--root", machine.root, "export", "--version", "2026",
                                "--category", "Cosmetic Thread", "--output", self.package)
        self.assertLess(peak, MEMORY_LIMIT_BYTES)
        prefix = "Local\\Vantric\\VANTRIC\\28.0\\en-us\\CosmeticThread\\"
        with zipfile.ZipFile(self.package) as archive:
            self.assertEqual(archive.getinfo(prefix + "huge.bin").file_size, HUGE_BYTES)
            mixed = archive.read(prefix + "mixed.bin")
        self.assertEqual(mixed, (folder / "mixed.bin").read_bytes())
        listing = subprocess.run(["7z", "l", "-slt", self.package], capture_output=True, check=True)
        self.assertIn(f"\nSize = {HUGE_BYTES}\n".encode(), listing.stdout)

        peak = self.peak_memory("inspect", self.package)
        self.assertLess(peak, MEMORY_LIMIT_BYTES)

    def test_many_threads_and_large_files_need_little_memory(self):
        machine = small_sandbox(self.folder / "machine")
        folder = machine.product_local / "en-us/CosmeticThread"
        # Each just fits into what is packed in one call, and none becomes smaller.
        for number in range(8):
            (folder / f"large {number}.bin").write_bytes(os.urandom((24 << 20) - 1 - number))
        for number in range(200):
            (folder / f"small {number}.bin").write_bytes(os.urandom(400_000))
        (folder / "streamed.bin").write_bytes(os.urandom(30 << 20))
        for threads in ("1", "2", "64"):
            with self.subTest(threads=threads):
                peak = self.peak_memory("--root", machine.root, "export", "--version", "2026",
                                        "--category", "Cosmetic Thread", "--output", self.package,
                                        "--threads", threads)
                self.assertLess(peak, MEMORY_LIMIT_BYTES)
                peak = self.peak_memory("extract", self.package, self.folder / threads,
                                        "--threads", threads)
                self.assertLess(peak, MEMORY_LIMIT_BYTES)

    def peak_memory(self, *arguments):
        """In bytes, of a run that must succeed."""
        report = self.folder / "peak"
        done = subprocess.run(["/usr/bin/time", "-f", "%M", "-o", report, RELEASE_CLI, *arguments],
                              capture_output=True, check=False)
        self.assertEqual((done.returncode, done.stderr), (0, b""))
        return int(report.read_text()) * 1024
