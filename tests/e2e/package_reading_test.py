"""Looking into packages and unpacking them, honest ones and hostile ones."""

import json
import os
import random
import tempfile
import zipfile
from pathlib import Path

import expected_package
import hostile_zip
from machines import SandboxTest, make_sandbox, run_cli


class HonestPackageTest(SandboxTest):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.exported = Path(folder.name) / "设置.ucex"
        done = make_sandbox(Path(folder.name) / "machine").export_all(cls.exported)
        assert done.returncode == 0, done.stderr

    def test_inspect_tells_product_versions_categories_and_entries(self):
        done = run_cli("inspect", self.exported)
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        for text in ("Vantric", "VANTRIC", "2026", "28.0", *expected_package.LABELS,
                     r"Options\General.reg", "GB5782"):
            self.assertIn(text, done.stdout)

    def test_inspect_as_json_tells_the_same_to_programs(self):
        done = run_cli("inspect", self.exported, "--json")
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        found = json.loads(done.stdout)
        self.assertEqual([found[key] for key in ("company", "product", "releaseVersion",
                                                 "internalVersion")],
                         ["Vantric", "VANTRIC", "2026", "28.0"])
        self.assertEqual(found["categories"], expected_package.LABELS)
        self.assertEqual(found["refused"], [])
        with zipfile.ZipFile(self.exported) as archive:
            expected = [{"name": entry.filename, "sizeBytes": entry.file_size,
                         "packedSizeBytes": entry.compress_size} for entry in archive.infolist()]
        self.assertEqual(found["entries"], expected)

    def test_output_is_unicode_in_the_plainest_locale(self):
        done = run_cli("inspect", self.exported, encoding=None,
                       env=dict(os.environ, LC_ALL="C", LANG="C"))
        self.assertEqual((done.returncode, done.stderr), (0, b""))
        self.assertIn("螺栓", done.stdout.decode("utf-8"))
        self.assertIn("😀", done.stdout.decode("utf-8"))

    def test_extract_replaces_files_and_keeps_others(self):
        out = self.folder / "out"
        out.mkdir()
        (out / "config.ini").write_bytes(b"older")
        (out / "mine.txt").write_bytes(b"mine")
        done = run_cli("extract", self.exported, out)
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        self.assertEqual((out / "config.ini").read_bytes(),
                         expected_package.config_ini(expected_package.LABELS))
        self.assertEqual((out / "mine.txt").read_bytes(), b"mine")


class HostilePackageTest(SandboxTest):
    def setUp(self):
        super().setUp()
        # Deep enough for every name that climbs to end up inside the test's own folder.
        self.out = self.folder / "a" / "b" / "out"
        self.out.parent.mkdir(parents=True)

    def inspect(self):
        done = run_cli("inspect", "--json", self.package)
        return done, {item["name"]: item["reason"] for item in json.loads(done.stdout)["refused"]}

    def outside_files(self):
        files = {path for path in self.folder.rglob("*") if path.is_file()}
        return files - set(self.out.rglob("*")) - {self.package}

    def test_names_that_leave_the_destination_are_refused_one_by_one(self):
        hostile_zip.make_package(self.package, [
            ("config.ini", hostile_zip.CONFIG),
            *((name, b"gotcha") for name in hostile_zip.ESCAPING_NAMES),
            ("Local/with slashes.txt", b"good")])
        done = run_cli("extract", self.package, self.out)
        self.assertEqual(done.returncode, 3, done.stderr)
        self.assertEqual(done.stderr.count("\n"), len(hostile_zip.ESCAPING_NAMES), done.stderr)
        found = {str(path.relative_to(self.out)): path.read_bytes()
                 for path in self.out.rglob("*") if path.is_file()}
        self.assertEqual(found, {"config.ini": hostile_zip.CONFIG,
                                 "Local/with slashes.txt": b"good"})
        self.assertEqual(self.outside_files(), set())
        for name in ("/absolute.txt", "/rooted.txt"):
            self.assertFalse(Path(name).exists())

    def test_inspect_names_what_an_import_would_refuse(self):
        hostile_zip.make_package(self.package, [
            ("config.ini", hostile_zip.CONFIG),
            *((name, b"gotcha") for name in hostile_zip.ESCAPING_NAMES)])
        done, refused = self.inspect()
        self.assertEqual((done.returncode, done.stderr.count("\n")), (1, 1), done.stderr)
        self.assertEqual(set(refused),
                         {name.replace("/", "\\") for name in hostile_zip.ESCAPING_NAMES})

    def test_percent_signs_in_names_are_only_characters(self):
        name = "Local\\%s%n%d %1$s.txt"
        hostile_zip.make_package(self.package, [
            ("config.ini", hostile_zip.CONFIG), (name, b"good"), ("..\\" + name, b"bad")])
        done = run_cli("extract", self.package, self.out)
        self.assertEqual((done.returncode, done.stderr.count("\n")), (3, 1), done.stderr)
        self.assertIn("%s%n%d %1$s.txt", done.stderr)
        self.assertEqual((self.out / "Local/%s%n%d %1$s.txt").read_bytes(), b"good")

    def test_damaged_and_encrypted_entries_are_named_and_leave_no_file(self):
        content = random.Random(7).randbytes(50_000)
        hostile_zip.make_package(self.package, [
            ("config.ini", hostile_zip.CONFIG), ("damaged.bin", content),
            ("locked.bin", content), ("whole.bin", content)])
        hostile_zip.spoil_content(self.package, "damaged.bin")
        hostile_zip.mark_encrypted(self.package, "locked.bin")
        done, refused = self.inspect()
        self.assertEqual((done.returncode, sorted(refused)), (1, ["damaged.bin", "locked.bin"]))
        done = run_cli("extract", self.package, self.out)
        self.assertEqual((done.returncode, done.stderr.count("\n")), (3, 2), done.stderr)
        self.assertEqual(sorted(os.listdir(self.out)), ["config.ini", "whole.bin"])
        self.assertEqual((self.out / "whole.bin").read_bytes(), content)

    def test_package_without_a_good_entry_fails(self):
        hostile_zip.make_package(self.package, [("..\\up.txt", b"gotcha")])
        done = run_cli("extract", self.package, self.out)
        self.assertEqual((done.returncode, done.stderr.count("\n")), (1, 1), done.stderr)
        self.assertEqual(self.outside_files(), set())

    def test_links_to_the_outside_are_not_followed(self):
        outside = self.folder / "outside"
        outside.mkdir()
        with zipfile.ZipFile(self.package, "w") as archive:
            link = zipfile.ZipInfo("Local")
            link.create_system, link.external_attr = 3, 0o120777 << 16
            archive.writestr(link, str(outside))
            archive.writestr("Local\\gotcha.txt", b"gotcha")
        run_cli("extract", self.package, self.out)
        self.assertEqual(list(outside.iterdir()), [])
        self.assertFalse((self.out / "Local").is_symlink())

    def test_what_is_no_package_is_refused_in_one_line(self):
        whole = self.folder / "whole.ucex"
        hostile_zip.make_package(whole, [("config.ini", hostile_zip.CONFIG), ("a.txt", b"a" * 999)])
        data = whole.read_bytes()
        whole.unlink()
        for content in (b"", b"PK", b"MZ" + bytes(5000), data[:len(data) // 2], data[:-30],
                        "纯文本".encode()):
            self.package.write_bytes(content)
            for command in (("inspect",), ("inspect", "--json"), ("extract",)):
                target = [self.out] if command[0] == "extract" else []
                done = run_cli(*command, self.package, *target)
                self.assert_refused(done, 1, "settings.ucex")
        self.assertEqual(self.outside_files(), set())

    def test_missing_package_and_folder_are_refused_in_one_line(self):
        for path in (self.folder / "missing.ucex", self.folder):
            self.assert_refused(run_cli("inspect", path), 1, path.name)
            self.assert_refused(run_cli("extract", path, self.out), 1, path.name)
        self.assertFalse(self.out.exists())

    def test_destination_that_is_a_file_fails_and_stays(self):
        hostile_zip.make_package(self.package, [("config.ini", hostile_zip.CONFIG)])
        self.out.write_bytes(b"a file")
        done = run_cli("extract", self.package, self.out)
        self.assertEqual((done.returncode, done.stderr.count("\n")), (1, 1), done.stderr)
        self.assertEqual(self.out.read_bytes(), b"a file")
