"""What a user's settings are at one moment, and what has changed between two."""

import hashlib
import sys
from collections import defaultdict
from pathlib import Path

from wizard import ROOT

sys.path.append(str(ROOT / "tests" / "e2e"))
from registry_file import parse as parse_registry_file  # noqa: E402
from wine_registry import export_key  # noqa: E402

PRODUCT_KEY = r"HKEY_CURRENT_USER\SOFTWARE\Vantric"
# Below Local and Roaming: the system's own, and the restore points.
FOREIGN_FOLDERS = ("Temp", "Microsoft", "Carrovan")
EXAMPLES = 3  # of the files that have changed in a folder


class MachineState:
    """The registry keys {key: {value name: data}} and files {path below AppData: digest} that the
    product keeps of the user of a Wine prefix."""

    def __init__(self, prefix):
        self.keys = _read_keys(Path(prefix))
        self.files = _read_files(Path(prefix))

    def key(self, path):
        """The values of a key below the product's own, of its subkeys too."""
        full = PRODUCT_KEY + "\\" + path
        return {key[len(full):]: values for key, values in self.keys.items()
                if (key + "\\").startswith(full + "\\")}

    def folder(self, path):
        """The files below a folder of AppData, and what they hold."""
        return {file[len(path):]: digest for file, digest in self.files.items()
                if file.startswith(path + "/")}


def read_defaults(prefix, path):
    """The product's factory defaults below a key, as `MachineState.key` gives the user's."""
    full = r"HKEY_LOCAL_MACHINE\SOFTWARE\Vantric\New User Settings" + "\\" + path
    return {key[len(full):]: dict(values) for key, values in
            parse_registry_file(export_key(prefix, full))}


def describe_changes(before, after):
    """Readable lines: which keys and folders have changed, and how, with examples."""
    lines = ["registry, below " + PRODUCT_KEY + ":"]
    lines += _describe_keys(before.keys, after.keys) or ["  no change"]
    lines.append("files, below AppData:")
    lines += _describe_files(before.files, after.files) or ["  no change"]
    return lines


def _read_keys(prefix):
    return {key: dict(values) for key, values in parse_registry_file(export_key(prefix, PRODUCT_KEY))}


def _read_files(prefix):
    files = {}
    for data in (prefix / "drive_c" / "users").glob("*/AppData"):
        for path in data.rglob("*"):
            name = path.relative_to(data)
            if path.is_file() and name.parts[1] not in FOREIGN_FOLDERS:
                files[name.as_posix()] = hashlib.sha256(path.read_bytes()).hexdigest()
    return files


def _describe_keys(before, after):
    lines = []
    for key in sorted(before.keys() | after.keys()):
        changes = _changes(before.get(key, {}), after.get(key, {}))
        name = key[len(PRODUCT_KEY) + 1:]
        if key not in after:
            lines.append(f"  {name}: the key is gone, with {len(before[key])} values")
        elif key not in before:
            lines.append(f"  {name}: a new key, with {len(after[key])} values")
        elif any(changes.values()):
            lines.append(f"  {name}: {_counts(changes)}")
            lines += [f"      {kind}: {_describe_value(kind, names[0], before[key], after[key])}"
                      for kind, names in changes.items() if names]
    return lines


def _describe_value(kind, name, before, after):
    shown = name or "(Default)"
    if kind == "changed":
        return f"{shown}: {_short(before[name])} -> {_short(after[name])}"
    return f"{shown}: {_short((after if kind == 'added' else before)[name])}"


def _describe_files(before, after):
    groups = defaultdict(lambda: {"changed": [], "added": [], "removed": []})
    for kind, paths in _changes(before, after).items():
        for path in paths:
            groups[_folder_of_category(path)][kind].append(path.rpartition("/")[2])
    lines = []
    for folder, changes in sorted(groups.items()):
        lines.append(f"  {folder}: {_counts(changes)}")
        for kind, names in changes.items():
            if names:
                more = f", and {len(names) - EXAMPLES} more" if len(names) > EXAMPLES else ""
                lines.append(f"      {kind}: {', '.join(names[:EXAMPLES])}{more}")
    return lines


def _changes(before, after):
    common = before.keys() & after.keys()
    return {"changed": sorted(name for name in common if before[name] != after[name]),
            "added": sorted(after.keys() - common),
            "removed": sorted(before.keys() - common)}


def _folder_of_category(path):
    """Local/Company/Product/Version/Language/Category, or as much of it as there is."""
    return "/".join(path.split("/")[:-1][:6])


def _counts(changes):
    return ", ".join(f"{len(names)} {kind}" for kind, names in changes.items() if names)


def _short(data):
    return data if len(data) <= 48 else data[:45] + "..."
