"""Sandboxes of the sample product, and running the program on them."""

import hashlib
import os
import pwd
import subprocess
import sys
from pathlib import Path

PROJECT = Path(__file__).resolve().parents[2]
MAKE_SAMPLE = PROJECT / "tools" / "make_sample.py"


class Sandbox:
    def __init__(self, root, user):
        self.root = Path(root)
        self.user = user
        self.profile = self.root / "C" / "Users" / user / "AppData"
        self.local = self.profile / "Local"
        self.roaming = self.profile / "Roaming"

    def registry_bytes(self, hive):
        return (self.root / "registry" / f"{hive}.reg").read_bytes()


def make_sandbox(root, *options):
    subprocess.run([sys.executable, MAKE_SAMPLE, "--sandbox", root, *options],
                   check=True, stdout=subprocess.DEVNULL)
    user = options[options.index("--user") + 1] if "--user" in options else None
    return Sandbox(root, user or pwd.getpwuid(os.getuid()).pw_name)


def snapshot(folder):
    """Every file below a folder with its time and a digest of its bytes."""
    return {str(path.relative_to(folder)): (path.stat().st_mtime, digest(path))
            for path in Path(folder).rglob("*") if path.is_file()}


def digest(path):
    return hashlib.sha256(path.read_bytes()).hexdigest()
