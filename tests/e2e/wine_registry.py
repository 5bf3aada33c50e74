"""The registry of a Wine prefix, read by Wine's own registry tool."""

import os
import sys
from pathlib import Path

PROJECT = Path(__file__).resolve().parents[2]
sys.path.append(str(PROJECT / "tools"))
from limits import run_limited  # noqa: E402

ATTEMPTS = 3  # on a busy machine the tool sometimes ends at once, without a word


def export_key(prefix, key):
    """The bytes of a registry file of a key and everything below it."""
    file = Path(prefix) / "drive_c" / "state.reg"
    environment = {**os.environ, "WINEPREFIX": str(prefix)}
    environment.pop("DISPLAY", None)
    for _ in range(ATTEMPTS):
        done = run_limited([PROJECT / "tools/wine", "reg", "export", key, r"C:\state.reg", "/y"],
                           env=environment)
        if done.returncode == 0 and file.exists():
            content = file.read_bytes()
            file.unlink()
            return content
    raise AssertionError(f"{key} cannot be exported: {done.stdout!r} {done.stderr!r}")
