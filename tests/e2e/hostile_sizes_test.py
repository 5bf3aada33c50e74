"""Packages that are made to cost: time and memory of every verb that reads one go with its bytes.
Measured with the release build: the sanitizers take memory of their own."""

import subprocess
import unittest
from pathlib import Path

import hostile_zip
from machines import RELEASE_CLI, SandboxTest, small_sandbox

MEGABYTE = 1 << 20
# A name is held up to eight times (as an entry, refused, found ...), in four bytes for each one.
MEMORY_BYTES = 100 * MEGABYTE
MEMORY_FOR_EACH_BYTE = 20
# Far more than is needed, unless something is done for each pair of what is many.
SECONDS = 120
KEY = r"HKEY_CURRENT_USER\SOFTWARE\Vantric\VANTRIC 28.0\General"


@unittest.skipUnless(Path(RELEASE_CLI).exists(), "the release build is not there: tools/build host")
class HostileSizesTest(SandboxTest):
    def make(self, *entries):
        hostile_zip.make_package(self.package, [("config.ini", hostile_zip.CONFIG), *entries])

    def run_measured(self, *arguments, status=0):
        """What it prints, standard error last, of a run that needs little memory."""
        report = self.folder / "peak"
        done = subprocess.run(["/usr/bin/time", "-q", "-f", "%M", "-o", report, RELEASE_CLI,
                               *arguments], capture_output=True, check=False, timeout=SECONDS)
        texts = [text.decode() for text in (done.stdout, done.stderr)]
        self.assertEqual(done.returncode, status, texts[1][:2000])
        peak = int(report.read_text()) * 1024
        limit = MEMORY_BYTES + MEMORY_FOR_EACH_BYTE * self.package.stat().st_size
        self.assertLess(peak, limit, arguments[:3])
        return texts[0] + texts[1]

    def run_reading_verbs(self, status=0):
        return [self.run_measured(verb, self.package, status=status)
                for verb in ("inspect", "verify")]

    def test_names_that_no_file_can_have_are_named(self):
        for levels, why in ((32_700, "has more than 32000 characters"),
                            (15_900, "lies in more than 512 folders")):
            self.make((r"Local\Vantric" + r"\a" * levels, b"x"))
            for text in self.run_reading_verbs(status=1) + self.run_imports_refused():
                self.assertIn("the name " + why, text)
            folder = self.folder / f"extracted {levels}"
            text = self.run_measured("extract", self.package, folder, status=3)
            self.assertEqual([path.name for path in folder.iterdir()], ["config.ini"])

    def run_imports_refused(self):
        machine = self.folder / "machine"
        if not machine.exists():
            small_sandbox(machine)
        return [self.run_measured("--root", machine, "import", self.package, "--to", "2026",
                                  "--all", *more, status=1) for more in ((), ("--dry-run",))]

    def test_a_thousand_of_the_deepest_names(self):
        for levels in (500, 15_900):
            self.make(*((rf"Local\Vantric\{number}" + r"\a" * levels, b"x")
                        for number in range(1000)))
            status = 0 if levels == 500 else 1
            self.run_reading_verbs(status=status)

    def test_many_entries(self):
        self.make(*((rf"Local\Vantric\VANTRIC\28.0\en-us\CosmeticThread\{number % 100}\{number}.txt",
                     b"x") for number in range(100_000)))
        self.run_reading_verbs()

    def test_many_registry_keys(self):
        text = "".join(f'[{KEY}\\{number}]\r\n"v"="1"\r\n' for number in range(100_000))
        self.make((r"Options\a.reg", registry_bytes(text)))
        self.run_reading_verbs()

    def test_large_value(self):
        text = f'[{KEY}]\r\n"v"="' + "x" * (25 * MEGABYTE) + '"\r\n'
        self.make((r"Options\a.reg", registry_bytes(text)))
        self.run_reading_verbs()

    def test_long_line(self):
        text = f"[{KEY}]\r\n" + '"v"=hex:' + ",".join(["00"] * (25 * MEGABYTE // 3)) + "\r\n"
        self.make((r"Options\a.reg", registry_bytes(text)))
        self.run_reading_verbs()

    def test_line_of_a_key_that_never_ends(self):
        self.make((r"Options\a.reg", registry_bytes("[" + "x" * (25 * MEGABYTE))))
        for text in self.run_reading_verbs(status=1):
            self.assertIn("is too long to be understood", text)


def registry_bytes(text):
    return b"\xff\xfe" + (hostile_zip.HEADER + text).encode("utf-16-le")


if __name__ == "__main__":
    unittest.main()
