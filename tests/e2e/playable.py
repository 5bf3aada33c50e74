"""Machines on which whole runs are played, and whose state is compared as a whole."""

import xml.etree.ElementTree as ElementTree

import registry_file
from expected_machine import ExpectedImport, State, Versions, after_reset


class PlayableSandbox:
    def __init__(self, sandbox):
        self.sandbox = sandbox
        self.drive = sandbox.root / "C"
        self.app_data = sandbox.profile
        self.profile = rf"C:\Users\{sandbox.user}"

    def run(self, *arguments):
        return self.sandbox.run(*arguments)

    def path(self, host_path):
        return host_path

    def path_exists(self, windows_path):
        return exists_on_drive(self.drive, windows_path)

    def state(self):
        registry = {}
        for hive in ("HKEY_CURRENT_USER", "HKEY_LOCAL_MACHINE"):
            registry.update(registry_file.parse(self.sandbox.registry_bytes(hive)))
        return State(without_restore_points(files_below(self.sandbox.profile)), registry)


def without_restore_points(files):
    """The program's own, which no run and no undo counts among what it changes."""
    own = "Local/Carrovan"
    return {path: content for path, content in files.items()
            if path != own and not path.startswith(own + "/")}


def assert_foreseen(test, foreseen, before, after):
    """Every change was foreseen by the dry run, and everything foreseen has happened."""
    changed = {path.lower() for path in before.files.keys() | after.files.keys()
               if before.files.get(path, "none") != after.files.get(path, "none")}
    reported = {file["path"].split("\\AppData\\")[1].replace("\\", "/").lower()
            for category in foreseen["categories"] for file in category["files"]}
    test.assertEqual(reported, changed)
    values = {f"{value['key']}|{value['name']}".lower()
              for category in foreseen["categories"] for value in category["values"]}
    test.assertEqual(values, changed_values(before.registry, after.registry))


def changed_values(before, after):
    changed = set()
    for key in before.keys() | after.keys():
        old, new = before.get(key, {}), after.get(key, {})
        changed |= {f"{key}|{name}".lower() for name in old.keys() | new.keys()
                    if old.get(name) != new.get(name)}
    return changed


def files_below(folder):
    """Content by path relative to the folder; None for a folder."""
    return {str(path.relative_to(folder)): None if path.is_dir() else path.read_bytes()
            for path in folder.rglob("*")}


def exists_on_drive(drive, windows_path):
    """Without regard to case, as Windows looks for a path."""
    if windows_path[:1].upper() != "C":
        return False
    place = drive
    for name in windows_path[3:].replace("/", "\\").split("\\"):
        found = [entry for entry in place.iterdir() if entry.name.lower() == name.lower()
                 ] if place.is_dir() else []
        if not found:
            return False
        place = found[0]
    return True


def differences(expected, actual):
    """One line for each path, key and value that is not as expected."""
    lines = _missing_and_more("file", expected.files, actual.files)
    lines += [f"content of {path}" for path in sorted(expected.files.keys() & actual.files.keys())
              if not _same_content(path, expected.files[path], actual.files[path])]
    lines += _missing_and_more("key", expected.registry, actual.registry)
    for key in sorted(expected.registry.keys() & actual.registry.keys()):
        here, there = expected.registry[key], actual.registry[key]
        lines += [f"value {key} {name!r}: {here.get(name)} became {there.get(name)}"
                  for name in sorted(here.keys() | there.keys())
                  if here.get(name) != there.get(name)]
    return lines


def _missing_and_more(kind, expected, actual):
    return ([f"{kind} missing: {name}" for name in sorted(expected.keys() - actual.keys())] +
            [f"{kind} too much: {name}" for name in sorted(actual.keys() - expected.keys())])


def _same_content(path, expected, actual):
    """The systems' XML libraries break lines in different places."""
    if expected == actual or expected is None or actual is None or not path.endswith(".xml"):
        return expected == actual
    return _canonical(expected) == _canonical(actual)


def _canonical(document):
    return ElementTree.canonicalize(
        ElementTree.tostring(ElementTree.fromstring(document), "unicode"), strip_text=True)


def play_tour(test, machine, folder):
    """Export from 2025, import into 2026 without two categories, a backup and a reset of three."""
    before = machine.state()
    package = folder / "settings 2025.ucex"
    _run(test, machine, "export", "--version", "2025", "--all", "--output", machine.path(package))
    test.assertEqual(differences(before, machine.state()), [])

    importing = ExpectedImport(machine, package, Versions("2025", "2026"), folder / "merges")
    unticked = ("Options", "Custom materials")
    ticked = [label for label in importing.labels if label not in unticked]
    test.assertEqual(len(importing.labels), 12)
    expected = importing.apply(unticked)
    _run(test, machine, "import", machine.path(package), "--to", "2026", "--category", *ticked)
    test.assertEqual(differences(expected, machine.state()), [])

    backup = folder / "backup.ucex"
    _run(test, machine, "export", "--version", "2026", "--all", "--output", machine.path(backup))
    test.assertEqual(differences(expected, machine.state()), [])

    labels = ("Register", "Interface layout", "2D Draft Settings")
    expected = after_reset(expected, labels, "28.0", "2026")
    _run(test, machine, "reset", "--category", *labels, "--yes")
    test.assertEqual(differences(expected, machine.state()), [])


def play_2024_to_2025(test, machine, folder):
    """The two releases share a folder of the drafting program, though not the one in it: first
    without those settings, then with everything."""
    move_settings_to_2024(machine)
    package = folder / "settings 2024.ucex"
    _run(test, machine, "export", "--version", "2024", "--all", "--output", machine.path(package))
    for half in ("Local", "Roaming"):
        own = machine.app_data / half / DRAFTING_2024 / "25.0/own.uik"
        own.parent.mkdir()
        own.write_bytes(b"the user's own")
        (machine.app_data / half / "Vantric/VANTRIC/27.0").mkdir(exist_ok=True)
    for unticked in (("2D Draft Settings", "Register"), ()):
        importing = ExpectedImport(machine, package, Versions("2024", "2025"), folder / "merges")
        test.assertEqual(len(importing.labels), 12)
        expected = importing.apply(unticked)
        ticked = [label for label in importing.labels if label not in unticked]
        _run(test, machine, "import", machine.path(package), "--to", "2025", "--category", *ticked)
        test.assertEqual(differences(expected, machine.state()), [])
        for half in ("Local", "Roaming"):
            drafting = machine.app_data / half / DRAFTING_2024
            test.assertEqual((drafting / "25.0/own.uik").exists(), bool(unticked))
            test.assertEqual(list((drafting / "25.0").iterdir()) != [drafting / "25.0/own.uik"],
                             not unticked)


DRAFTING_2024 = "ORMA/ORMA CAD TVRN-INT-VANTRIC 2024 (x64)"


def move_settings_to_2024(machine):
    """The user of 2025 has only ever used 2024."""
    for half in ("Local", "Roaming"):
        product = machine.app_data / half / "Vantric/VANTRIC"
        (product / "27.0").rename(product / "26.0")
        drafting = machine.app_data / half / DRAFTING_2024
        (drafting / "25.0").rename(drafting / "24.0")


def _run(test, machine, *arguments):
    done = machine.run(*arguments)
    test.assertEqual(done.returncode, 0, done.stderr)
    return done
