"""Imports of legacy packages from the command line, good and bad ones."""

import json
import unittest

import hostile_zip
import import_failures_test as failures


class LegacyImportTest(failures.BadImportTest):
    SCENE = "VANTRIC-Scene.xml"

    def setUp(self):
        super().setUp()
        self.package = self.folder / "settings.ucx"

    def make_legacy(self, *entries):
        hostile_zip.make_package(self.package, entries)

    def scenes(self):
        return [(self.machine.sandbox.product_roaming / language / "Customization" / self.SCENE)
                .read_bytes() for language in ("en-us", "zh-cn")]

    def test_scene_goes_into_both_languages(self):
        self.make_legacy(("Scene_UI.xml", b"<scene at='VANTRIC23.0 VANTRIC24.1'/>"))
        done = self.run_import("--all")
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        self.assertEqual(self.scenes(), [b"<scene at='VANTRIC23.0 VANTRIC28.0'/>\r\n"] * 2)
        self.assertIn("imported to  VANTRIC 2026", done.stdout)

    def test_document_for_a_version_that_is_not_installed_is_refused_with_its_text(self):
        for target in ("2031", "soon", "0"):
            self.make_legacy(("Scene_UI.xml", f"<s><Surface_Finish><ImgDir0001 value='{target}'/>"
                              "</Surface_Finish></s>".encode()))
            done = self.run_import("--all")
            self.assertEqual(done.returncode, 1, done.stderr)
            self.assertIn(f"Version {target} is not installed; installed: ", done.stderr)
            self.assert_unchanged()

    def test_options_go_into_existing_values(self):
        self.make_legacy(("VANTRIC_Option_Config.xml",
                          b'<r><Draw><Font value="Release 2025"/><New value="1"/></Draw></r>'))
        done = self.run_import("--all")
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        self.assertIn("\nOptions set: 1\n", done.stdout)
        key = self.machine.state().registry[
            r"HKEY_CURRENT_USER\SOFTWARE\Vantric\VANTRIC 28.0\Draw"]
        self.assertEqual(key["Font"], '"Release 2026"')
        self.assertNotIn("New", key)

    def test_options_of_which_none_fits_are_told(self):
        self.make_legacy(("VANTRIC_Option_Config.xml",
                          b'<r><Draw><New value="1"/></Draw>'
                          b'<Nowhere><Font value="1"/></Nowhere></r>'))
        for arguments in ((), ("--dry-run",)):
            done = self.run_import("--all", *arguments)
            self.assertEqual((done.returncode, done.stderr.count("\n")), (3, 1), done.stderr)
            self.assertIn("No option was imported: ", done.stderr)
            self.assert_unchanged()
            self.assertFalse((self.machine.sandbox.local / "Carrovan").exists())
        done = self.run_import("--all")
        self.assertIn("Options set: 0\n", done.stdout)

    def test_options_are_counted_in_the_document_too(self):
        self.make_legacy(("VANTRIC_Option_Config.xml",
                          b'<r><Draw><Font value="A"/><New value="1"/></Draw></r>'))
        self.assertEqual(json.loads(self.run_import("--all", "--json").stdout)["optionsSet"], 1)
        self.make_legacy(("Scene_UI.xml", b"<scene/>"))
        self.assertIsNone(json.loads(self.run_import("--all", "--json").stdout)["optionsSet"])

    def test_document_names_the_target_and_another_one_is_refused(self):
        document = b'<r><Surface_Finish><ImgDir0001 value="2026"/></Surface_Finish></r>'
        self.make_legacy(("Scene_UI.xml", document))
        self.assert_import_refused(self.run_import("--to", "2025", "--all"),
                                   "The package is for version 2026")
        for arguments in (("--all",), ("--to", "2026", "--all")):
            done = self.run_import(*arguments)
            self.assertEqual((done.returncode, done.stderr), (0, ""))
            self.assertEqual(self.scenes(), [document] * 2)

    def test_hostile_target_texts_change_nothing(self):
        for target in ("../../x", "..\\..\\x", "99999999999", "-1", "%s%n", "x" * 5000):
            self.make_legacy(("Scene_UI.xml", f'<r><Surface_Finish><ImgDir0001 value="{target}"/>'
                              "</Surface_Finish></r>".encode("utf-8").decode()))
            done = self.run_import("--all")
            self.assertEqual(done.returncode, 1, done.stderr)
            self.assert_unchanged()

    def test_packages_without_exactly_one_document(self):
        for entries in ((("a.txt", b"x"),), (("a.xml", b"<a/>"), ("b.XML", b"<b/>")),
                        (("sub\\a.xml", b"<a/>"),)):
            self.make_legacy(*entries)
            self.assert_import_refused(self.run_import("--all"), "File corruption")

    def test_document_of_another_kind_is_told(self):
        self.make_legacy(("Wallpaper.xml", b"<a/>"))
        done = self.run_import("--all")
        self.assertEqual((done.returncode, done.stderr.count("\n")), (3, 1), done.stderr)
        self.assert_unchanged()

    def test_item_that_cannot_be_unpacked_is_told_though_the_document_is_imported(self):
        self.make_legacy(("Scene_UI.xml", b"<scene/>"), ("..\\up.txt", b"gotcha"))
        self.assert_import_refused(self.run_import("--all"), "is not to be trusted: ..\\up.txt")
        done = self.run_import("--all", "--trust")
        self.assertEqual((done.returncode, done.stderr.count("\n")), (3, 1), done.stderr)
        self.assertIn("Failed to extract file: ", done.stderr)
        self.assertEqual(self.files_outside(), self.outside)

    def test_categories_are_wrong_usage(self):
        self.make_legacy(("Scene_UI.xml", b"<scene/>"))
        self.assert_import_refused(self.run_import("--category", "Options"), "--all is needed",
                                   status=2)


if __name__ == "__main__":
    unittest.main()
