"""Puts the sample's files on a drive and gives them their modification times."""

import os
import shutil
from pathlib import Path

from sample import product
from sample.part_files import PartFileMaker
from sample.profile_files import LOCAL, ROAMING, ProfileFiles, of_user


def lay_files(drive, user, seed, scale):
    """Replaces the product's folders on a drive; the rest of the drive stays as it is. Returns the
    number of files and of bytes."""
    _remove_product(drive, user)
    files = total_bytes = 0
    for item in ProfileFiles(user, seed, scale, PartFileMaker(seed)).all():
        folder_path, _, name = item.path.rpartition("/")
        folder = find(drive, folder_path)
        folder.mkdir(parents=True, exist_ok=True)
        if name:
            _write(folder / name, item)
            files, total_bytes = files + 1, total_bytes + len(item.content)
    return files, total_bytes


def find(drive, path):
    """The host path of a path below the drive, in the spelling that is there already."""
    place = Path(drive)
    for name in path.split("/"):
        place = _entry(place, name)
    return place


def _entry(folder, name):
    wanted = folder / name
    if wanted.exists() or not folder.is_dir():
        return wanted
    same = (entry for entry in folder.iterdir() if entry.name.lower() == name.lower())
    return next(same, wanted)


def _write(target, item):
    target.write_bytes(item.content)
    os.utime(target, (item.modified, item.modified))


def _remove_product(drive, user):
    roots = [product.PROGRAM_FOLDER]
    roots += [of_user(root, user) + name
              for root in (LOCAL, ROAMING) for name in (product.COMPANY, "ORMA")]
    for root in roots:
        shutil.rmtree(find(drive, root), ignore_errors=True)
