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
        self.assertEqual(found["untrusted"], [])
        with zipfile.ZipFile(self.exported) as archive:
            expected = [{"name": entry.filename, "sizeBytes": entry.file_size,
                         "packedSizeBytes": entry.compress_size} for entry in archive.infolist()]
        self.assertEqual(found["entries"], expected)

    def test_verify_finds_every_exported_package_sound(self):
        done = run_cli("verify", self.exported)
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        with zipfile.ZipFile(self.exported) as archive:
            names = [entry.filename for entry in archive.infolist()]
        self.assertEqual(done.stdout.splitlines()[-1],
                         f"{self.exported}: {len(names)} entries, {self.registry_files(names)} "
                         f"registry files, {self.documents(names)} documents: sound")

    def test_verify_as_json_tells_the_same_to_programs(self):
        done = run_cli("verify", self.exported, "--json")
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        found = json.loads(done.stdout)
        with zipfile.ZipFile(self.exported) as archive:
            names = [entry.filename for entry in archive.infolist()]
        self.assertEqual(found, {
            "package": str(self.exported), "sound": True, "entries": len(names),
            "registryFiles": self.registry_files(names), "documents": self.documents(names),
            "findings": [], "notes": found["notes"]})

    @staticmethod
    def registry_files(names):
        return sum(name.startswith(("Options\\", "Register\\")) for name in names)

    @staticmethod
    def documents(names):
        return sum(name.lower().endswith(".xml") for name in names)

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

    def inspect(self, kind="refused"):
        done = run_cli("inspect", "--json", self.package)
        return done, {item["name"]: item["reason"] for item in json.loads(done.stdout)[kind]}

    def verify(self):
        """The findings by name; both faces of the verb report the same."""
        done = run_cli("verify", self.package)
        as_json = run_cli("verify", "--json", self.package)
        found = json.loads(as_json.stdout)
        findings = [(item["name"], item["problem"]) for item in found["findings"]]
        self.assertEqual((done.returncode, done.stderr), (as_json.returncode, as_json.stderr))
        self.assertEqual(done.returncode, 1 if findings else 0)
        self.assertEqual(found["sound"], not findings)
        self.assertEqual(done.stderr.splitlines(), [f"{name}: {why}" for name, why in findings])
        return dict(findings)

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

    def make_sound_package(self):
        hostile_zip.make_package(self.package, [
            ("config.ini", hostile_zip.CONFIG),
            ("Options\\General.reg",
             hostile_zip.registry_file(r"HKEY_CURRENT_USER\SOFTWARE\Vantric", '"a"="b"'))])
        self.assertEqual(self.verify(), {})
        return bytearray(self.package.read_bytes())

    def test_verify_finds_local_headers_that_differ_from_the_directory(self):
        sound = self.make_sound_package()
        header = sound.rindex(b"PK\3\4")
        for field, reason in ((0, "no local header"), (8, "another method"),
                              (14, "another checksum"), (22, "another size"),
                              (30, "another name")):
            spoilt = bytearray(sound)
            spoilt[header + field] ^= 1
            self.package.write_bytes(spoilt)
            findings = self.verify()
            self.assertEqual(list(findings), ["Options\\General.reg"], reason)
            if field != 0:
                self.assertIn(reason, findings["Options\\General.reg"])

    def test_headers_that_differ_are_a_reason_for_distrust(self):
        spoilt = self.make_sound_package()
        spoilt[spoilt.rindex(b"PK\3\4") + 30] ^= 1
        self.package.write_bytes(spoilt)
        done, untrusted = self.inspect("untrusted")
        self.assertEqual((done.returncode, untrusted), (1, {
            "Options\\General.reg": "its local header bears another name"}))

    def test_damaged_package_passes_only_when_it_reads_back_the_same(self):
        self.make_sound_package()
        with zipfile.ZipFile(self.package, "a") as archive:
            archive.writestr("Local/", b"")
            archive.writestr("Roaming/Vantric/\u87ba\u6813.txt", b"stored as it is")
        whole = self.package.read_bytes()
        bits = len(whole) * 8
        damaged = [bytearray(whole[:length]) for length in range(1, len(whole), len(whole) // 12)]
        for bit in (*range(5, bits, bits // 16), *range(bits - 8 * 400, bits, 8 * 400 // 24 + 1)):
            damaged.append(bytearray(whole))
            damaged[-1][bit // 8] ^= 1 << bit % 8
        before = self.read_back()
        for content in damaged:
            self.package.write_bytes(content)
            passes = [run_cli(verb, self.package).returncode == 0 for verb in ("verify", "inspect")]
            if any(passes):
                self.assertEqual(self.read_back(), before)

    def read_back(self):
        """What an extraction gives, by name; nothing when it is not complete."""
        with tempfile.TemporaryDirectory() as folder:
            done = run_cli("extract", self.package, folder)
            return done.returncode, {str(path.relative_to(folder)): path.is_file() and
                                     path.read_bytes() for path in Path(folder).rglob("*")}

    def test_package_cut_behind_a_package_within_is_not_taken_for_that_one(self):
        inner = bytes(self.make_sound_package())
        with zipfile.ZipFile(self.package, "w") as archive:
            for name, content in (("config.ini", hostile_zip.CONFIG),
                                  ("Local/Vantric/kept.ucex", inner), ("Local/Vantric/x", b"x")):
                archive.writestr(name, content)
        whole = self.package.read_bytes()
        self.package.write_bytes(whole[:whole.index(inner) + len(inner)])
        for verb in ("inspect", "verify"):
            self.assert_refused(run_cli(verb, self.package), 1, "is not a package: ")

    LONG_NAMES = {"Local\\Vantric\\" + "x" * 300: "a part of more than 255 characters",
                  "Local\\Vantric\\" + "deep\\" * 1000 + "x": "more than 512 folders",
                  "Local\\Vantric\\" + "directory\\" * 450 + "x": "longer than this system allows",
                  "Local\\Vantric\\" + "\u87ba" * 100: "longer than this system allows"}

    def test_names_that_are_too_long_are_named_and_leave_no_folder(self):
        hostile_zip.make_package(self.package, [
            ("config.ini", hostile_zip.CONFIG), *((name, b"x") for name in self.LONG_NAMES)])
        findings = self.verify()
        for kind in ("refused", "untrusted"):
            done, found = self.inspect(kind)
            self.assertEqual((done.returncode, found), (1, findings))
        for name, reason in self.LONG_NAMES.items():
            self.assertIn("the name ", findings[name])
            self.assertIn(reason, findings[name])
        done = run_cli("extract", self.package, self.out)
        self.assertEqual((done.returncode, done.stderr.count("\n")), (3, len(self.LONG_NAMES)))
        self.assertEqual(os.listdir(self.out), ["config.ini"])

    def test_package_behind_other_bytes_is_read(self):
        sound = self.make_sound_package()
        self.package.write_bytes(b"MZ" + bytes(1000) + sound)
        self.assertEqual(self.verify(), {})
        self.assertEqual(run_cli("inspect", self.package).returncode, 0)
        done = run_cli("extract", self.package, self.out)
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        self.assertEqual((self.out / "config.ini").read_bytes(), hostile_zip.CONFIG)

    def test_file_that_is_no_package_is_refused_with_the_reason(self):
        sound = self.make_sound_package()
        for content, reason in ((b"", "it is empty"), (b"text", "it holds no zip archive"),
                                (sound[:-30], "the end of the zip archive is missing")):
            self.package.write_bytes(content)
            for verb in (("inspect",), ("verify",), ("extract", self.out)):
                done = run_cli(verb[0], self.package, *verb[1:])
                self.assert_refused(done, 1, f"{self.package} is not a package: {reason}")
        self.package.unlink()
        self.assert_refused(run_cli("verify", self.package), 1, f"{self.package} is missing")

    def test_items_where_an_import_keeps_its_own_are_named(self):
        hostile_zip.make_package(self.package, [
            ("config.ini", hostile_zip.CONFIG), ("Version_Changed_Files.zip", b"PK"),
            ("Version_Changed_Files.zip.part\\x", b"x")])
        for kind in ("refused", "untrusted"):
            done, found = self.inspect(kind)
            self.assertEqual(done.returncode, 1)
            self.assertEqual(set(found), {"Version_Changed_Files.zip",
                                          "Version_Changed_Files.zip.part\\x"})

    def test_inspect_names_what_an_import_would_refuse(self):
        hostile_zip.make_package(self.package, [
            ("config.ini", hostile_zip.CONFIG),
            *((name, b"gotcha") for name in hostile_zip.ESCAPING_NAMES)])
        done, refused = self.inspect()
        self.assertEqual((done.returncode, done.stderr.count("\n")), (1, 1), done.stderr)
        self.assertEqual(set(refused),
                         {name.replace("/", "\\") for name in hostile_zip.ESCAPING_NAMES})

    def test_inspect_and_verify_name_every_reason_for_distrust(self):
        for content in hostile_zip.OUTSIDE_FILES:
            hostile_zip.make_package(self.package, [
                ("config.ini", hostile_zip.CONFIG), ("Register/x", content),
                ("Local\\Vantric\\a.txt", b"1"), ("local\\vantric\\A.TXT", b"2")])
            done, untrusted = self.inspect("untrusted")
            self.assertEqual((done.returncode, done.stderr.count("\n")), (1, 1), done.stderr)
            self.assertEqual(sorted(untrusted), ["Register\\x", "local\\vantric\\A.TXT"])
            self.assertEqual({name: untrusted[name] for name in self.verify()
                              if name in untrusted}, untrusted)

    def test_inspect_as_text_names_the_reasons(self):
        hostile_zip.make_package(self.package, [
            ("config.ini", hostile_zip.CONFIG), ("Options\\x", hostile_zip.OUTSIDE_FILES[0])])
        done = run_cli("inspect", self.package)
        self.assertEqual(done.returncode, 1)
        self.assertIn("\nNot trusted 1\n  Options\\x: line 3 names the key ", done.stdout)

    def test_absurd_size_is_told_from_the_directory_alone(self):
        hostile_zip.make_bomb(self.package, 4)
        done, untrusted = self.inspect("untrusted")
        self.assertEqual((done.returncode, list(untrusted)), (1, ["*"]))
        self.assertIn("would unpack to 429496", untrusted["*"])
        self.assertEqual(self.verify(), untrusted)
        self.assertEqual(self.inspect()[1], {})

    def test_entry_that_lies_about_its_size_unpacks_to_nothing(self):
        hostile_zip.make_package(self.package, [
            ("config.ini", hostile_zip.CONFIG), ("Local\\Vantric\\zeros.bin", bytes(9_000_000))])
        hostile_zip.declare_size(self.package, 1000)
        self.assertEqual(self.verify(), {"Local\\Vantric\\zeros.bin": "the data is damaged"})
        done = run_cli("extract", self.package, self.out)
        self.assertEqual((done.returncode, done.stderr.count("\n")), (3, 1), done.stderr)
        self.assertEqual([path.name for path in self.out.rglob("*") if path.is_file()],
                         ["config.ini"])

    def test_verify_names_what_is_damaged_malformed_or_missing(self):
        content = random.Random(7).randbytes(5_000)
        hostile_zip.make_package(self.package, [
            ("config.ini", hostile_zip.CONFIG.replace(b"[Base]", b"Wallpapers=1\r\n[Base]")),
            ("Options\\none.reg", b"not a registry file"),
            ("Local\\Vantric\\open.xml", b"<open>"), ("Local\\Vantric\\whole.xml", b"<whole/>"),
            ("Local\\Vantric\\damaged.bin", content), ("Local\\Vantric\\locked.xml", content)])
        hostile_zip.spoil_content(self.package, "Local\\Vantric\\damaged.bin")
        hostile_zip.mark_encrypted(self.package, "Local\\Vantric\\locked.xml")
        found = self.verify()
        self.assertEqual(list(found), ["Local\\Vantric\\damaged.bin", "Local\\Vantric\\locked.xml", "config.ini",
                                       "Options\\none.reg", "Local\\Vantric\\open.xml"])
        self.assertEqual(found["Local\\Vantric\\damaged.bin"], "the data is damaged")
        self.assertEqual(found["Local\\Vantric\\locked.xml"], "the data is encrypted")
        self.assertEqual(found["config.ini"], '"Wallpapers" is not a category')
        self.assertEqual(found["Options\\none.reg"], "this is not a registry file")

    def test_verify_wants_a_description_with_four_values(self):
        for config, count in ((b"", 5), (b"[Base]\r\nCOMPANY=Vantric\r\n", 3)):
            hostile_zip.make_package(self.package, [("config.ini", config)])
            done = run_cli("verify", self.package)
            self.assertEqual((done.returncode, done.stderr.count("\n")), (1, count), done.stderr)
            self.assertTrue(done.stdout.endswith(f": {count} findings\n"), done.stdout)

    def test_verify_wants_one_document_of_a_legacy_package(self):
        self.package = self.folder / "settings.ucx"
        hostile_zip.make_package(self.package, [("Scene_UI.xml", b"<scene/>")])
        self.assertEqual(self.verify(), {})
        for entries in ([("a.txt", b"x")], [("a.xml", b"<a/>"), ("b.XML", b"<b/>")]):
            hostile_zip.make_package(self.package, entries)
            self.assertEqual(list(self.verify()), ["*.xml"])
        hostile_zip.make_package(self.package, [("Scene_UI.xml", b"<scene>")])
        self.assertEqual(list(self.verify()), ["Scene_UI.xml"])

    def test_category_without_data_is_only_noted(self):
        hostile_zip.make_package(self.package, [("config.ini", hostile_zip.CONFIG)])
        self.assertEqual(self.verify(), {})
        self.assertTrue(run_cli("verify", self.package).stdout.startswith("Note: Options: "))

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
            for command in (("inspect",), ("inspect", "--json"), ("verify",), ("verify", "--json"),
                            ("extract",)):
                target = [self.out] if command[0] == "extract" else []
                done = run_cli(*command, self.package, *target)
                self.assert_refused(done, 1, "settings.ucex")
        self.assertEqual(self.outside_files(), set())

    def test_missing_package_and_folder_are_refused_in_one_line(self):
        for path in (self.folder / "missing.ucex", self.folder):
            self.assert_refused(run_cli("inspect", path), 1, path.name)
            self.assert_refused(run_cli("verify", path), 1, path.name)
            self.assert_refused(run_cli("extract", path, self.out), 1, path.name)
        self.assertFalse(self.out.exists())

    def test_destination_that_is_a_file_fails_and_stays(self):
        hostile_zip.make_package(self.package, [("config.ini", hostile_zip.CONFIG)])
        self.out.write_bytes(b"a file")
        done = run_cli("extract", self.package, self.out)
        self.assertEqual((done.returncode, done.stderr.count("\n")), (1, 1), done.stderr)
        self.assertEqual(self.out.read_bytes(), b"a file")
