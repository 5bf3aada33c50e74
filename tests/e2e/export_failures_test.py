"""What an export does when something is wrong: it says so, and no package is lost."""

import json
import os
import shutil
import subprocess
import zipfile

import expected_package
from machines import (AS_PLAIN_USER, CLI, EXPORT_ALL, SandboxTest, make_sandbox, run_cli,
                      small_sandbox)

OLD_PACKAGE = b"the package of last week"


class RefusedExportTest(SandboxTest):
    """Exports that end with nothing written."""

    def setUp(self):
        super().setUp()
        self.machine = small_sandbox(self.folder / "machine")
        self.package.write_bytes(OLD_PACKAGE)

    def assert_nothing_changed(self):
        self.assertEqual(self.package.read_bytes(), OLD_PACKAGE)
        self.assertEqual(self.machine.temporary_files(), [])
        self.assertEqual(sorted(p.name for p in self.folder.iterdir()),
                         ["machine", "settings.ucex"])

    def test_unknown_category_is_wrong_usage(self):
        done = self.machine.run("export", "--version", "2026", "--category", "Wallpapers",
                                "--output", self.package)
        self.assert_refused(done, 2, "Wallpapers")
        self.assert_nothing_changed()

    def test_category_that_the_version_lacks_is_refused(self):
        done = self.machine.run("export", "--version", "2025", "--category", "3DBOM Configuration",
                                "--output", self.package)
        self.assert_refused(done, 1, "3DBOM Configuration")
        self.assert_nothing_changed()

    def test_version_that_is_not_installed_is_refused(self):
        for version in ("2019", "2027", "28.0", "VANTRIC"):
            done = self.machine.run("export", "--version", version, "--all",
                                    "--output", self.package)
            self.assert_refused(done, 1, "2023, 2024, 2025, 2026")
        self.assert_nothing_changed()

    def test_unknown_company_is_refused(self):
        self.set_identity("CompanyShortName=Vantric", "CompanyShortName=Somebody")
        self.assert_refused(self.machine.export_all(self.package), 1,
                            "Please check the ini file")
        self.assert_nothing_changed()

    def test_folder_that_is_no_machine_is_refused(self):
        (self.machine.root / "product.ini").unlink()
        self.assert_refused(self.machine.export_all(self.package), 1, "product.ini")
        self.assert_nothing_changed()

    def test_registry_that_does_not_parse_is_refused(self):
        hive = self.machine.root / "registry" / "HKEY_CURRENT_USER.reg"
        hive.write_bytes(hive.read_bytes()[:-40] + '"cut'.encode("utf-16-le"))
        self.assert_refused(self.machine.export_all(self.package), 1, "HKEY_CURRENT_USER.reg")
        self.assert_nothing_changed()

    def test_missing_output_folder_is_refused(self):
        done = self.machine.export_all(self.folder / "missing" / "settings.ucex")
        self.assert_refused(done, 1, "missing")
        self.assert_nothing_changed()

    def test_output_that_is_a_folder_is_refused(self):
        folder = self.machine.root / "folder.ucex"
        folder.mkdir()
        self.assert_refused(self.machine.export_all(folder), 1, "folder.ucex")
        self.assertEqual(list(folder.iterdir()), [])
        self.assert_nothing_changed()

    def test_output_with_another_extension_is_wrong_usage(self):
        self.assert_refused(self.machine.export_all(self.folder / "settings.zip"), 2, ".ucex")
        self.assert_nothing_changed()

    def test_temporary_path_that_is_no_folder_is_refused(self):
        (self.machine.local / "Temp").rmdir()
        (self.machine.local / "Temp").write_bytes(b"in the way")
        self.assert_refused(self.machine.export_all(self.package), 1, "Temp")
        self.assertEqual(self.package.read_bytes(), OLD_PACKAGE)

    def test_without_a_machine_the_verb_says_what_it_needs(self):
        self.assert_refused(run_cli(*EXPORT_ALL, self.package), 1, "--root")
        self.assert_nothing_changed()

    def set_identity(self, old, new):
        file = self.machine.root / "product.ini"
        text = file.read_text("utf-8")
        self.assertIn(old, text)
        file.write_text(text.replace(old, new), "utf-8")


class PartialExportTest(SandboxTest):
    """Exports that leave something out name it and keep the rest."""

    def setUp(self):
        super().setUp()
        self.machine = small_sandbox(self.folder / "machine")
        self.entries = {name for group in expected_package.category_files(self.machine)
                        for name in group}

    def assert_partial(self, *named):
        done = self.machine.run("export", "--version", "2026", *self.categories(),
                                "--output", self.package, timeout=120)
        self.assertEqual(done.returncode, 3, done.stderr)
        self.assertEqual(done.stderr.count("\n"), len(named), done.stderr)
        for line, words in zip(sorted(done.stderr.splitlines()), sorted(named)):
            self.assertIn(words, line)
        with zipfile.ZipFile(self.package) as archive:
            self.assertIsNone(archive.testzip())
            return set(archive.namelist())

    def categories(self):
        emptied = ("Document Template", "Property Templates", "Custom materials",
                   "Custom Parts Library", "Catalog Library")
        return [word for label in expected_package.LABELS if label not in emptied
                for word in ("--category", label)]

    def test_file_that_fails_while_it_is_read_is_named(self):
        broken = self.machine.product_local / "en-us/CosmeticThread/broken.txt"
        broken.symlink_to("/proc/self/mem")
        names = self.assert_partial("broken.txt")
        self.assertEqual(names, self.entries | {"config.ini"} | set(
            expected_package.REGISTRY_ENTRIES))

    def test_pipe_is_named_and_not_waited_for(self):
        for language in ("en-us", "zh-cn"):
            os.mkfifo(self.machine.product_local / language / "CosmeticThread/pipe.xml")
        os.mkfifo(self.machine.product_local / "Customization/pipe.xml")
        names = self.assert_partial(*["pipe.xml"] * 3)
        self.assertFalse(any("pipe.xml" in name for name in names))

    def test_category_without_any_folder_is_named(self):
        for language in ("en-us", "zh-cn"):
            shutil.rmtree(self.machine.product_local / language / "SheetMetal")
        names = self.assert_partial("Sheet Metal Library")
        self.assertFalse(any("\\SheetMetal\\" in name for name in names))

    def test_category_with_one_language_is_complete(self):
        shutil.rmtree(self.machine.product_local / "zh-cn/SheetMetal")
        done = self.machine.run("export", "--version", "2026", *self.categories(),
                                "--output", self.package)
        self.assertEqual((done.returncode, done.stderr), (0, ""))

    def test_registry_key_that_is_missing_has_no_entry(self):
        hive = self.machine.root / "registry" / "HKEY_CURRENT_USER.reg"
        text = hive.read_bytes()[2:].decode("utf-16-le")
        key = "VANTRIC 28.0\\Tessaline]"
        self.assertEqual(text.count(key), 1)
        hive.write_bytes(b"\xff\xfe" + text.replace(key, key.replace("T", "X")).encode("utf-16-le"))
        done = self.machine.run("export", "--version", "2026", "--category", "Options",
                                "--output", self.package)
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        with zipfile.ZipFile(self.package) as archive:
            names = [name for name in expected_package.REGISTRY_ENTRIES[:26] if "Tess" not in name]
            self.assertEqual(archive.namelist(), ["config.ini", *names])


class PermissionTest(SandboxTest):
    def setUp(self):
        super().setUp()
        self.machine = small_sandbox(self.folder / "machine")

    def test_folder_that_cannot_be_written_is_refused_and_keeps_its_package(self):
        folder = self.folder / "locked"
        folder.mkdir()
        package = folder / "settings.ucex"
        package.write_bytes(OLD_PACKAGE)
        package.chmod(0o444)
        folder.chmod(0o555)
        self.addCleanup(folder.chmod, 0o755)
        for output in (package, folder / "new.ucex"):
            done = self.machine.export_all(output, wrapper=AS_PLAIN_USER)
            self.assert_refused(done, 1, output.name)
        self.assertEqual(package.read_bytes(), OLD_PACKAGE)
        self.assertEqual(os.listdir(folder), ["settings.ucex"])

    def test_file_that_may_not_be_read_is_named(self):
        locked = self.machine.product_local / "en-us/CosmeticThread/locked.txt"
        locked.write_bytes(b"secret")
        locked.chmod(0)
        done = self.machine.run("export", "--version", "2026", "--category", "Cosmetic Thread",
                                "--output", self.package, wrapper=AS_PLAIN_USER)
        self.assertEqual((done.returncode, done.stderr.count("\n")), (3, 1), done.stderr)
        self.assertIn("locked.txt", done.stderr)
        with zipfile.ZipFile(self.package) as archive:
            self.assertFalse(any("locked" in name for name in archive.namelist()))
            self.assertTrue(any("Metric.txt" in name for name in archive.namelist()))


    def test_document_names_what_was_not_stored_and_a_category_that_is_lost_whole(self):
        for language in ("en-us", "zh-cn"):
            for path in (self.machine.product_local / language / "CosmeticThread").rglob("*"):
                if path.is_file():
                    path.chmod(0)
        done = self.machine.run("export", "--version", "2026", "--category", "Cosmetic Thread",
                                "Shortcut key", "--output", self.package, "--json",
                                wrapper=AS_PLAIN_USER)
        document = json.loads(done.stdout)
        self.assertEqual((done.returncode, document["exitStatus"]), (3, 3), done.stderr)
        self.assertEqual(document["categories"], [
            {"label": "Shortcut key", "outcome": "stored"},
            {"label": "Cosmetic Thread", "outcome": "not stored"}])
        self.assertEqual(document["problems"], done.stderr.splitlines())


class OddMachineTest(SandboxTest):
    def test_chinese_user_name_exports_the_same_entries(self):
        names = []
        for user in ("plain", "王小明 Лена 😀"):
            machine = make_sandbox(self.folder / user, "--user", user)
            package = self.folder / f"{user}.ucex"
            done = machine.export_all(package)
            self.assertEqual((done.returncode, done.stderr), (0, ""))
            with zipfile.ZipFile(package) as archive:
                names.append(archive.namelist())
        self.assertEqual(names[0], names[1])

    def test_files_that_an_import_would_not_put_back_are_named(self):
        """The user's name holds the word at which the names in a package begin."""
        for user in ("HansLocal", "Local"):
            machine = make_sandbox(self.folder / user, "--user", user)
            done = machine.run("export", "--version", "2026", "--category", "Cosmetic Thread",
                               "--output", self.package)
            with zipfile.ZipFile(self.package) as archive:
                names = [name for name in archive.namelist() if name != "config.ini"]
            self.assertTrue(all(name.startswith("Local\\AppData\\") for name in names), names)
            self.assertEqual(done.returncode, 3, done.stderr)
            lines = done.stderr.splitlines()
            self.assertEqual(len(lines), len(names))
            for name, line in zip(names, lines):
                self.assertTrue(line.startswith("Not stored: C:\\Users\\"), line)
                self.assertIn(f": it lies in the package as {name}, ", line)
            self.assertEqual(machine.run("import", self.package, "--to", "2026",
                                         "--all").returncode, 1)

    def test_paths_beyond_260_characters_are_stored_and_extracted(self):
        machine = small_sandbox(self.folder / "machine")
        deep = machine.product_local / "en-us/CosmeticThread"
        for index in range(8):
            deep = deep / f"{index}{'深' * 60}"
        deep.mkdir(parents=True)
        (deep / "file.txt").write_bytes(b"deep")
        done = machine.run("export", "--version", "2026", "--category", "Cosmetic Thread",
                           "--output", self.package)
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        done = run_cli("extract", self.package, self.folder / "out")
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        copy = self.folder / "out/Local" / deep.relative_to(machine.local) / "file.txt"
        self.assertGreater(len(str(copy)), 500)
        self.assertEqual(copy.read_bytes(), b"deep")

    def test_machine_without_its_own_key_offers_the_running_version_only(self):
        machine = small_sandbox(self.folder / "machine")
        hive = machine.root / "registry" / "HKEY_LOCAL_MACHINE.reg"
        hive.write_bytes("\ufeffWindows Registry Editor Version 5.00\r\n\r\n".encode("utf-16-le"))
        done = machine.run("versions")
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertIn("28.0", done.stdout)
        self.assertNotIn("27.0", done.stdout)

    def test_package_inside_an_exported_folder_does_not_hold_itself(self):
        machine = small_sandbox(self.folder / "machine")
        package = machine.product_local / "Customization" / "backup.ucex"
        for _ in range(2):
            done = machine.run("export", "--version", "2026", "--category", "Shortcut key",
                               "--output", package)
            self.assertEqual((done.returncode, done.stderr), (0, ""))
        with zipfile.ZipFile(package) as archive:
            self.assertIsNone(archive.testzip())
            self.assertEqual(len([n for n in archive.namelist() if n.endswith(".xml")]), 3)

    def test_exports_at_the_same_time_leave_a_whole_package(self):
        machine = make_sandbox(self.folder / "machine")
        command = [CLI, "--root", machine.root, *EXPORT_ALL, self.package]
        runs = [subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)
                for _ in range(3)]
        errors = [run.communicate()[1] for run in runs]
        # One that meets another's unfinished package is refused.
        for run, error in zip(runs, errors):
            self.assertIn((run.returncode, error.count(b"\n")), ((0, 0), (1, 1)), error)
        self.assertIn(0, [run.returncode for run in runs])
        with zipfile.ZipFile(self.package) as archive:
            self.assertIsNone(archive.testzip())
        self.assertEqual(machine.temporary_files(), [])
        self.assertEqual(sorted(os.listdir(self.folder)), ["machine", "settings.ucex"])
