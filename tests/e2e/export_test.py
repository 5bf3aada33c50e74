"""An export of everything holds exactly the user's files, and other people's tools can open it."""

import json
import os
import subprocess
import tempfile
import time
import zipfile
from pathlib import Path

import expected_package
import registry_file
from machines import SandboxTest, make_sandbox, run_cli, snapshot


class ExportEverythingTest(SandboxTest):
    """One export, looked at from all sides."""

    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.machine = make_sandbox(Path(folder.name) / "machine")
        cls.before = snapshot(cls.machine.root)
        cls.exported = Path(folder.name) / "x.ucex"
        cls.done = cls.machine.export_all(cls.exported)
        cls.groups = list(expected_package.category_files(cls.machine))
        cls.files = {name: path for group in cls.groups for name, path in group.items()}

    def setUp(self):
        super().setUp()
        self.assertEqual(self.done.returncode, 0, self.done.stderr)
        self.archive = zipfile.ZipFile(self.exported)
        self.addCleanup(self.archive.close)
        self.names = [entry.filename for entry in self.archive.infolist()]

    def test_says_where_the_package_went_and_nothing_else(self):
        self.assertIn(str(self.exported), self.done.stdout)
        self.assertEqual(self.done.stderr, "")

    def test_holds_exactly_the_expected_entries(self):
        expected = ["config.ini", *self.files, *expected_package.REGISTRY_ENTRIES]
        self.assertGreater(len(self.files), 250)
        self.assertEqual(sorted(self.names), sorted(expected))

    def test_stores_description_then_folders_then_registry_files(self):
        groups = [{"config.ini"}, *self.groups] + [{n} for n in expected_package.REGISTRY_ENTRIES]
        position = {name: index for index, group in enumerate(groups) for name in group}
        order = [position[name] for name in self.names]
        self.assertEqual(order, sorted(order))

    def test_files_keep_their_bytes(self):
        for name, path in self.files.items():
            self.assertEqual(self.archive.read(name), path.read_bytes(), name)

    def test_files_keep_their_times(self):
        for name, path in self.files.items():
            stored = time.mktime((*self.archive.getinfo(name).date_time, 0, 0, -1))
            self.assertLessEqual(abs(stored - path.stat().st_mtime), 2, name)

    def test_describes_itself(self):
        self.assertEqual(self.archive.read("config.ini"),
                         expected_package.config_ini(expected_package.LABELS))

    def test_registry_files_hold_their_keys(self):
        keys = registry_file.parse(self.machine.registry_bytes("HKEY_CURRENT_USER"))
        self.assertEqual(len(expected_package.REGISTRY_ENTRIES), 27)
        for name in expected_package.REGISTRY_ENTRIES:
            found = registry_file.parse(self.archive.read(name))
            self.assertEqual(dict(found), expected_package.registry_keys(name, keys), name)

    def test_names_are_unicode_with_backslashes(self):
        for entry in self.archive.infolist():
            self.assertNotIn("/", entry.filename)
            self.assertTrue(entry.filename.isascii() or entry.flag_bits & 0x800, entry.filename)
        self.assertTrue(any("😀" in name for name in self.names))
        self.assertTrue(any("螺栓" in name for name in self.names))

    def test_leaves_the_machine_as_it_was(self):
        self.assertEqual(snapshot(self.machine.root), self.before)
        self.assertEqual(self.machine.temporary_files(), [])
        self.assertEqual(sorted(p.name for p in self.exported.parent.iterdir()),
                         ["machine", "x.ucex"])

    def test_unzip_extracts_the_same_bytes(self):
        done = self.tool("unzip", "-q", "-o", "-d", self.folder / "out", self.exported)
        self.assertIn(done.returncode, (0, 1), done.stderr)
        self.assert_extracted(self.folder / "out")

    def test_7z_tests_and_extracts_the_same_bytes(self):
        self.assertEqual(self.tool("7z", "t", self.exported).returncode, 0)
        done = self.tool("7z", "x", f"-o{self.folder / 'out'}", self.exported)
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assert_extracted(self.folder / "out")

    def test_zipinfo_lists_every_entry(self):
        done = self.tool("zipinfo", "-t", self.exported)
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertTrue(done.stdout.startswith(f"{len(self.names)} files"), done.stdout)

    def test_own_extraction_gives_the_same_bytes_and_times(self):
        done = run_cli("extract", self.exported, self.folder / "out")
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        self.assert_extracted(self.folder / "out")
        for name, path in self.files.items():
            copy = self.folder / "out" / name.replace("\\", "/")
            self.assertLessEqual(abs(copy.stat().st_mtime - path.stat().st_mtime), 2, name)

    def tool(self, *command):
        return subprocess.run(command, capture_output=True, check=False, encoding="utf-8",
                              env=dict(os.environ, LC_ALL="C.UTF-8"))

    def assert_extracted(self, folder):
        found = {str(path.relative_to(folder)).replace("/", "\\"): path.read_bytes()
                 for path in folder.rglob("*") if path.is_file()}
        self.assertEqual(sorted(found), sorted(self.names))
        for name, content in found.items():
            self.assertEqual(content, self.archive.read(name), name)


class ExportSelectionTest(SandboxTest):
    def test_single_category_holds_its_folders_and_no_registry_files(self):
        machine = make_sandbox(self.folder / "machine")
        done = machine.run("export", "--version", "2026", "--category", "Cosmetic Thread",
                           "--output", self.package)
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        expected = [name for group in expected_package.category_files(machine, ["Cosmetic Thread"])
                    for name in group]
        with zipfile.ZipFile(self.package) as archive:
            self.assertEqual(sorted(archive.namelist()), sorted(["config.ini", *expected]))
            self.assertEqual(archive.read("config.ini"),
                             expected_package.config_ini(["Cosmetic Thread"]))

    def test_options_alone_hold_one_entry_per_option_key(self):
        machine = make_sandbox(self.folder / "machine")
        done = machine.run("export", "--version", "2026", "--category", "Options",
                           "--output", self.package)
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        with zipfile.ZipFile(self.package) as archive:
            self.assertEqual(archive.namelist(),
                             ["config.ini", *expected_package.REGISTRY_ENTRIES[:26]])

    def test_categories_come_in_tree_order_whatever_the_order_asked_for(self):
        machine = make_sandbox(self.folder / "machine")
        labels = ["3DBOM Configuration", "Property Templates", "Sheet Metal Library"]
        asked = [word for label in reversed(labels) for word in ("--category", label)]
        done = machine.run("export", "--version", "2026", *asked, "--output", self.package)
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        with zipfile.ZipFile(self.package) as archive:
            self.assertEqual(archive.read("config.ini"), expected_package.config_ini(labels))

    def test_older_version_is_exported_from_its_own_folders(self):
        machine = make_sandbox(self.folder / "machine")
        done = machine.run("export", "--version", "2025", "--all", "--output", self.package)
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        with zipfile.ZipFile(self.package) as archive:
            names = archive.namelist()
            config = archive.read("config.ini").decode()
        self.assertIn("INTERNAL VERSION=27.0\r\nRELEASE VERSION=2025\r\n", config)
        self.assertNotIn("3DBOM Configuration", config)
        self.assertIn(r"Register\VANTRIC2025.reg", names)
        self.assertTrue(any("TVRN-INT-VANTRIC 2024 (x64)\\25.0" in name for name in names))
        self.assertFalse(any("28.0" in name or "3DBOM" in name for name in names))


class OddRunningVersionTest(SandboxTest):
    """A running version whose number says more than its year does."""

    def setUp(self):
        super().setUp()
        self.machine = make_sandbox(self.folder / "machine")
        identity = self.machine.root / "product.ini"
        text = identity.read_text("utf-8")
        self.assertIn("ProductVersion=28.0", text)
        identity.write_text(text.replace("ProductVersion=28.0", "ProductVersion=28.5"), "utf-8")
        for hive in ("HKEY_CURRENT_USER", "HKEY_LOCAL_MACHINE"):
            file = self.machine.root / "registry" / f"{hive}.reg"
            keys = file.read_bytes().decode("utf-16")
            keys = keys.replace("VANTRIC 28.0", "VANTRIC 28.5").replace("VANTRIC\\28.0",
                                                                        "VANTRIC\\28.5")
            file.write_bytes(b"\xff\xfe" + keys.encode("utf-16-le"))
        for folder in (self.machine.product_local, self.machine.product_roaming):
            folder.rename(folder.with_name("28.5"))

    def test_is_the_one_that_is_exported(self):
        done = self.machine.export_all(self.package)
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        with zipfile.ZipFile(self.package) as archive:
            names = archive.namelist()
            self.assertIn(b"INTERNAL VERSION=28.5\r\n", archive.read("config.ini"))
        self.assertTrue(any(name.startswith("Local\\Vantric\\VANTRIC\\28.5\\")
                            for name in names))
        self.assertIn("Options\\General.reg", names)

    def test_is_listed_with_its_own_key_and_folders(self):
        done = self.machine.run("versions", "--json")
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        running = [version for version in json.loads(done.stdout)["versions"]
                   if version["running"]]
        self.assertEqual(len(running), 1)
        self.assertEqual((running[0]["internalVersion"], running[0]["releaseVersion"],
                          running[0]["hasBeenRun"]), ("28.5", "2026", True))
        self.assertTrue(running[0]["registryKey"].endswith("VANTRIC 28.5"))
        self.assertTrue(running[0]["localFolder"].endswith("28.5"))

    def test_reset_and_undo_of_one_category_work_on_it(self):
        folder = self.machine.local / "Vantric/VANTRIC/28.5/en-us/CosmeticThread"
        before = snapshot(folder)
        self.assertTrue(before)
        done = self.machine.run("reset", "--category", "Cosmetic Thread", "--yes")
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertFalse(folder.exists())
        done = self.machine.run("undo", "--category", "Cosmetic Thread")
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertEqual(snapshot(folder).keys(), before.keys())
