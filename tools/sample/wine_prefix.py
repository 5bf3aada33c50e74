"""The sample as a Wine prefix: real files on its drive C:, real keys in its registry."""

import os
import shutil
from pathlib import Path

from limits import run_limited
from sample import product
from sample.identity import identity_file
from sample.layout import find, lay_files
from sample.registry_content import CURRENT_USER, LOCAL_MACHINE, machine_keys, user_keys
from sample.registry_text import render

PROGRAMS = ("carrovan-cli.exe", "carrovan.exe", "tarvik.dll",
            "en-us/MevrinLg.DLL", "zh-cn/MevrinLg.DLL")
_WINE = Path(__file__).resolve().parents[1] / "wine"
_ATTEMPTS = 3  # on a busy machine Wine's registry tool sometimes ends at once, without a word


def fill_prefix(prefix, user, seed, scale, programs=None):
    """Programs, when given, is the folder whose programs go into the product's startup folder."""
    drive = Path(prefix) / "drive_c"
    if not drive.is_dir():
        raise FileNotFoundError(f"{prefix} is not a Wine prefix; make one with tools/wine-prefix")
    counts = lay_files(drive, user, seed, scale)
    _install_programs(find(drive, product.STARTUP_FOLDER), programs)
    for hive, keys in ((CURRENT_USER, user_keys(user, seed)), (LOCAL_MACHINE, machine_keys())):
        _replace_keys(prefix, hive, render(keys))
    return counts


def _install_programs(startup_folder, programs):
    (startup_folder / "tarvik.ini").write_bytes(identity_file())
    if programs is not None:
        for name in PROGRAMS:
            (startup_folder / name).parent.mkdir(exist_ok=True)
            shutil.copy2(Path(programs) / name, startup_folder / name)


def _replace_keys(prefix, hive, registry_file):
    """The registry tool adds to what is there, so that older keys of the product go first."""
    file = Path(prefix) / "drive_c" / "sample.reg"
    file.write_bytes(registry_file)
    try:
        _run_wine(prefix, "reg", "delete", rf"{hive}\SOFTWARE\{product.COMPANY}", "/f", check=False)
        _run_wine(prefix, "reg", "import", r"C:\sample.reg")
    finally:
        file.unlink()


def _run_wine(prefix, *command, check=True):
    environment = dict(os.environ, WINEPREFIX=str(Path(prefix).resolve()))
    for _ in range(_ATTEMPTS if check else 1):
        done = run_limited([_WINE, *command], env=environment)
        if done.returncode == 0:
            return
    if check:
        raise OSError(f"wine {' '.join(command)} failed: {done.stderr.decode(errors='replace')}")
