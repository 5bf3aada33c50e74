"""Sandboxes of the sample product, and running the program on them."""

import atexit
import functools
import hashlib
import os
import pwd
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

PROJECT = Path(__file__).resolve().parents[2]
MAKE_SAMPLE = PROJECT / "tools" / "make_sample.py"
sys.path.append(str(PROJECT / "tools"))  # its limits.py is for the tests too

# The program under test, and the same without sanitizers for what is measured.
CLI = os.environ.get("CARROVAN_CLI", PROJECT / "build/host-check/carrovan-cli")
RELEASE_CLI = os.environ.get("CARROVAN_RELEASE_CLI", PROJECT / "build/host/carrovan-cli")

# Root may read and write everything; a program that is started so may not.
AS_PLAIN_USER = () if os.geteuid() != 0 else (
    "setpriv", "--bounding-set=-dac_override,-dac_read_search",
    "--inh-caps=-dac_override,-dac_read_search")

EXPORT_ALL = ("export", "--version", "2026", "--all", "--output")


class Sandbox:
    def __init__(self, root, user):
        self.root = Path(root)
        self.user = user
        self.profile = self.root / "C" / "Users" / user / "AppData"
        self.local = self.profile / "Local"
        self.roaming = self.profile / "Roaming"
        self.product_local = self.local / "Vantric/VANTRIC/28.0"
        self.product_roaming = self.roaming / "Vantric/VANTRIC/28.0"

    def registry_bytes(self, hive):
        return (self.root / "registry" / f"{hive}.reg").read_bytes()

    def run(self, *arguments, **options):
        return run_cli("--root", self.root, *arguments, **options)

    def export_all(self, package, **options):
        return self.run(*EXPORT_ALL, package, **options)

    def temporary_files(self):
        """What an export may use while it runs and must have removed when it ends."""
        return sorted((self.local / "Temp").iterdir())


class SandboxTest(unittest.TestCase):
    """Gives each test a folder of its own; a test class that spoils nothing shares one machine."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)
        self.package = self.folder / "settings.ucex"

    def assert_refused(self, done, status, reason):
        """One line on standard error that says why, nothing on standard output."""
        self.assertEqual((done.returncode, done.stdout), (status, ""), done.stderr)
        self.assertEqual(done.stderr.count("\n"), 1, done.stderr)
        self.assertIn(reason, done.stderr)

    def in_namespace(self, script, *arguments):
        """Runs a shell script that may mount small file systems, which are gone with its end."""
        for options in (["-m"], ["-rm"]):
            if subprocess.run(["unshare", *options, "mount", "-t", "tmpfs", "none", self.folder],
                              capture_output=True, check=False).returncode == 0:
                return subprocess.run(["unshare", *options, "sh", "-c", script, "sh", *arguments],
                                      capture_output=True, check=False, encoding="utf-8")
        raise unittest.SkipTest("this system lets nobody mount a small file system")


def run_cli(*arguments, program=CLI, wrapper=(), **options):
    """The finished run with its texts; the program never sees a terminal."""
    options.setdefault("encoding", "utf-8")
    return subprocess.run([*wrapper, program, *arguments], capture_output=True, check=False,
                          **options)


def make_sandbox(root, *options):
    subprocess.run([sys.executable, MAKE_SAMPLE, "--sandbox", root, *options],
                   check=True, stdout=subprocess.DEVNULL)
    user = options[options.index("--user") + 1] if "--user" in options else None
    return Sandbox(root, user or _current_user())


def small_sandbox(root):
    """A machine without its large folders, for tests that run the program many times."""
    shutil.copytree(_small_template(), root)
    return Sandbox(root, _current_user())


@functools.cache
def _small_template():
    folder = Path(tempfile.mkdtemp())
    atexit.register(shutil.rmtree, folder)
    machine = make_sandbox(folder / "machine")
    for language in ("en-us", "zh-cn"):
        for name in ("ToolBox", "FavoriteCatalog", "PropertyTemplates", "materials"):
            shutil.rmtree(machine.product_local / language / name)
        shutil.rmtree(machine.product_roaming / language / "Template")
    return machine.root


def _current_user():
    return pwd.getpwuid(os.getuid()).pw_name


def snapshot(folder):
    """Every file below a folder with its time and a digest of its bytes."""
    return {str(path.relative_to(folder)): (path.stat().st_mtime, digest(path))
            for path in Path(folder).rglob("*") if path.is_file()}


def digest(path):
    return hashlib.sha256(path.read_bytes()).hexdigest()
