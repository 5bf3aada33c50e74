"""Files of any size pass through little memory. Measured with the release build: the sanitizers
take memory of their own."""

import os
import subprocess
import zipfile

from machines import RELEASE_CLI, SandboxTest, small_sandbox

MEMORY_LIMIT_BYTES = 100 << 20
GIB = 1 << 30


class LargeFilesTest(SandboxTest):
    def test_huge_files_need_little_memory_and_make_a_readable_package(self):
        machine = small_sandbox(self.folder / "machine")
        folder = machine.product_local / "en-us/CosmeticThread"
        sizes = {"beyond four gibibytes.bin": 4 * GIB + 12345, "one gibibyte.bin": GIB}
        for name, size in sizes.items():
            with open(folder / name, "wb") as file:
                file.truncate(size)
        (folder / "mixed.bin").write_bytes(os.urandom(40 << 20) + bytes(20 << 20))

        peak = self.peak_memory("--root", machine.root, "export", "--version", "2026",
                                "--category", "Cosmetic Thread", "--output", self.package)
        self.assertLess(peak, MEMORY_LIMIT_BYTES)
        with zipfile.ZipFile(self.package) as archive:
            for name, size in sizes.items():
                entry = archive.getinfo(
                    rf"Local\Vantric\VANTRIC\28.0\en-us\CosmeticThread\{name}")
                self.assertEqual(entry.file_size, size)
            mixed = archive.read(entry.filename.rpartition("\\")[0] + r"\mixed.bin")
        self.assertEqual(mixed, (folder / "mixed.bin").read_bytes())
        done = subprocess.run(["7z", "t", self.package], capture_output=True, check=False)
        self.assertEqual(done.returncode, 0, done.stdout)

        peak = self.peak_memory("inspect", self.package)
        self.assertLess(peak, MEMORY_LIMIT_BYTES)

    def peak_memory(self, *arguments):
        """In bytes, of a run that must succeed."""
        with open(self.folder / "output", "w+", encoding="utf-8") as output:
            run = subprocess.Popen([RELEASE_CLI, *arguments], stdout=output, stderr=output)
            _, status, usage = os.wait4(run.pid, 0)
            run.returncode = os.waitstatus_to_exitcode(status)
            output.seek(0)
            self.assertEqual(run.returncode, 0, output.read())
        return usage.ru_maxrss * 1024
