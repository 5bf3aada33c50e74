"""Imports through the real window: what is asked, what is refused, and what it does."""

import zipfile

from machine_state import MachineState
from expected_machine import FOLDER_OF  # noqa: E402, beside the module that machine_state takes
from wizard import (BACK, CANCEL, EXPORT, FINISH, HEADING, IMPORT, NEXT, PACKAGE, PATH_TITLE,
                    SELECT_ALL, TARGETS, VERSIONS)
from wizard_case import DRIVE, PREFIX, WizardCase, windows_name

LOCAL_2025, LOCAL_2026 = "Local/Vantric/VANTRIC/27.0", "Local/Vantric/VANTRIC/28.0"
ROAMING_2026 = "Roaming/Vantric/VANTRIC/28.0"
RETAIN_PATHS = ("It is recommended that users retain the absolute path-related files from the old "
                "version settings. \nOtherwise, these configurations may become invalid.")
NEVER_RUN = "Please run Vantric at least once"
DISTRUST = "There are reasons not to trust this package. Import it all the same?"
FOLDERS_MISSING = ("Associated local and roaming folders for this version are missed, please run "
                   "Vantric at least once after installation!")


def description(release, *labels):
    """A package's config.ini."""
    selected = "".join(f"{label}=1\r\n" for label in labels)
    return (f"[Selected]\r\n{selected}[Base]\r\nCOMPANY=Vantric\r\nPRODUCT=VANTRIC\r\n"
            f"INTERNAL VERSION={int(release) - 1998}.0\r\nRELEASE VERSION={release}\r\n")


class ImportCase(WizardCase):
    def setUp(self):
        super().setUp()
        self.wizard = self.open_wizard()

    def enter_path_page(self, package=None, year="2026"):
        self.wizard.start(IMPORT)
        if package is None:
            return
        self.wizard.select_package(windows_name(package))
        self.wizard.wait_until(lambda wizard: wizard.page_control(PACKAGE).text ==
                               windows_name(package), "the package's path")
        if year != "2026":
            self.wizard.choose_version(TARGETS, year)

    def assert_on_path_page(self):
        self.assertEqual(self.wizard.page_control(PATH_TITLE).text, "Import new settings")
        self.assertIsNone(self.wizard.process.poll())


class ImportMessagesTest(ImportCase):
    def test_next_without_a_package_asks_for_one(self):
        self.enter_path_page()
        self.assertEqual(self.wizard.page_control(TARGETS).entries, [])
        self.wizard.press_button(NEXT)
        self.assertEqual(self.wizard.answer(), "Please select a file")
        self.assert_on_path_page()

    def test_newer_package_is_refused_and_another_version_may_be_chosen(self):
        package = self.crafted_package("newer.ucex", **{
            "config.ini": description("2026", "Shortcut key")})
        self.enter_path_page(package, "2025")
        self.wizard.press_button(NEXT)
        self.assertEqual(self.wizard.answer(), "Downgrading is not supported.")
        self.assert_on_path_page()
        self.wizard.choose_version(TARGETS, "2026")
        self.wizard.press_button(NEXT)
        self.assertEqual(self.wizard.tree().checked_labels(), [SELECT_ALL, "Shortcut key"])

    def test_version_that_was_never_run_is_refused(self):
        package = self.crafted_package("old.ucex", **{"config.ini": description("2023")})
        self.enter_path_page(package, "2023")
        self.wizard.press_button(NEXT)
        self.assertEqual(self.wizard.answer(), NEVER_RUN)
        self.assert_on_path_page()

    def test_version_without_folders_ends_the_program(self):
        package = self.crafted_package("old.ucex", **{"config.ini": description("2023")})
        self.enter_path_page(package, "2024")
        self.wizard.press_button(NEXT)
        self.assertEqual(self.wizard.answer(), RETAIN_PATHS)
        self.assertEqual(self.wizard.answer(), FOLDERS_MISSING)
        self.assert_ends(self.wizard)
        self.assertEqual(self.staging_folders(), [])

    def test_item_that_cannot_be_extracted_is_named_and_the_rest_goes_on(self):
        package = self.crafted_package("odd.ucex", **{
            "config.ini": description("2026", "Options"), "..\\outside.txt": "not here"})
        self.enter_path_page(package)
        self.wizard.press_button(NEXT)
        self.assertEqual(self.wizard.answer_list("Yes")[0], DISTRUST)
        self.assertRegex(self.wizard.answer(),
                         r"^Failed to extract file: C:\\.*\\Temp\\[-0-9A-F]+\\\.\.\\outside\.txt$")
        self.assertEqual(self.wizard.tree().checked_labels(), [SELECT_ALL, "Options"])
        self.assertEqual(list((DRIVE / "users").glob("*/AppData/Local/Temp/outside.txt")), [])

    def test_file_that_is_no_package_has_no_categories(self):
        package = self.package("broken.ucex")
        package.write_bytes(b"PK, but nothing more")
        self.enter_path_page(package)
        self.wizard.press_button(NEXT)
        # Without a description there is no company and product whose version could have been run.
        self.assertEqual(self.wizard.answer(), NEVER_RUN)
        self.assert_on_path_page()

    def test_legacy_package_with_two_documents_is_corrupt(self):
        package = self.crafted_package("two.UCX", **{"a.xml": "<a/>", "b.xml": "<b/>"})
        self.wizard.start(IMPORT)
        self.wizard.select_package(windows_name(package))
        self.assertEqual(self.wizard.answer(), "File corruption")
        self.assertEqual(self.wizard.page_control(PACKAGE).text, "")
        self.wizard.press_button(NEXT)
        self.assertEqual(self.wizard.answer(), "Please select a file")

    def test_refused_or_cancelled_choice_leaves_the_chosen_package(self):
        chosen = self.crafted_package("into-2025.ucex", **{
            "config.ini": description("2025", "Options")})
        corrupt = self.crafted_package("two.ucx", **{"a.xml": "<a/>", "b.xml": "<b/>"})
        self.enter_path_page(chosen, "2025")
        self.wizard.select_package(windows_name(corrupt))
        self.assertEqual(self.wizard.answer(), "File corruption")
        self.assert_chosen(chosen, "2025")
        self.wizard.cancel_package()
        self.assert_chosen(chosen, "2025")
        self.wizard.press_button(NEXT)
        self.assertEqual(self.wizard.tree().checked_labels(), [SELECT_ALL, "Options"])

    def assert_chosen(self, package, year):
        self.wizard.wait_until(lambda wizard: wizard.page_control(TARGETS).text == year, year)
        self.assertEqual(self.wizard.page_control(PACKAGE).text, windows_name(package))
        self.assertEqual(self.wizard.page_control(TARGETS).entries,
                         ["2023", "2024", "2025", "2026"])

    def test_categories_are_all_checked_again_after_back_and_next(self):
        package = self.crafted_package("again.ucex", **{
            "config.ini": description("2026", "Options", "Shortcut key")})
        self.enter_path_page(package)
        self.wizard.press_button(NEXT)
        self.wizard.click_box("Options")
        self.wizard.wait_until(lambda wizard: wizard.tree().checked_labels() == ["Shortcut key"],
                               "one category")
        staging = self.staging_folders()
        self.wizard.press_button(BACK)
        self.assertEqual(self.wizard.page_control(PACKAGE).text, windows_name(package))
        self.assertEqual((len(staging), len(self.staging_folders())), (1, 1))
        self.assertNotEqual(self.staging_folders(), staging)
        self.wizard.press_button(NEXT)
        self.assertEqual(self.wizard.tree().checked_labels(),
                         [SELECT_ALL, "Options", "Shortcut key"])


class ImportTest(ImportCase):
    SPOILS_SAMPLE = True

    def apply(self):
        with self.wizard.with_registry_tool_awaited():
            self.wizard.press_button(FINISH)
            return self.wizard.finish_text()

    def test_package_of_2025_into_2026_without_two_categories(self):
        package = self.package("settings-2025.ucex")
        self.run_cli("export", "--version", "2025", "--all", "--output", windows_name(package))
        before = MachineState(PREFIX)
        self.enter_path_page(package)
        self.wizard.press_button(NEXT)
        self.assertEqual(self.wizard.answer(), RETAIN_PATHS)
        self.assertEqual(len(self.wizard.tree().checked_labels()), 13)  # no 3DBOM Configuration
        self.wizard.click_box("Register")
        self.wizard.click_box("Custom Parts Library")
        self.assertEqual(self.apply(),
                         "Your settings have been successfully imported to  VANTRIC 2026.")
        after = MachineState(PREFIX)
        self.assert_options_alone_are_imported(before, after)
        self.assert_libraries_are_replaced_but_for_parts(before, after)
        self.assertEqual(self.staging_folders(), [])
        self.go_home()

    def assert_options_alone_are_imported(self, before, after):
        for subkey in ("General", "Color", "Performance"):
            old = before.key(rf"VANTRIC 27.0\{subkey}")[""]
            self.assertGreater(len(old), 5)
            now = after.key(rf"VANTRIC 28.0\{subkey}")[""]
            self.assertEqual({name: now.get(name) for name in old}, old, subkey)
        for kept in ("", r"\Window Placement\View00", r"\User Profile"):
            self.assertEqual(after.key("VANTRIC 28.0")[kept], before.key("VANTRIC 28.0")[kept])
        self.assertEqual(after.key("VANTRIC 27.0"), before.key("VANTRIC 27.0"))

    def assert_libraries_are_replaced_but_for_parts(self, before, after):
        for language in ("en-us", "zh-cn"):
            for library in ("FavoriteCatalog", "CosmeticThread"):
                old = before.folder(f"{LOCAL_2025}/{language}/{library}")
                self.assertEqual(after.folder(f"{LOCAL_2026}/{language}/{library}"), old)
                self.assertTrue(old)
            for kept in ("ToolBox", "3DBOM"):
                folder = f"{LOCAL_2026}/{language}/{kept}"
                self.assertEqual(after.folder(folder), before.folder(folder))
        self.assertEqual(after.folder(LOCAL_2025), before.folder(LOCAL_2025))

    def go_home(self):
        self.wizard.press_button(FINISH)
        self.wizard.wait_until(lambda wizard: wizard.shows(HEADING), "the start page")

    def test_export_after_an_import_into_2025_is_one_of_the_version_that_is_shown(self):
        package = self.crafted_package("into-2025.ucex", **{
            "config.ini": description("2025", "Cosmetic Thread")})
        self.enter_path_page(package, "2025")
        self.wizard.press_button(NEXT)
        self.wizard.click_box("Cosmetic Thread")
        self.assertEqual(self.apply(),
                         "Your settings have been successfully imported to  VANTRIC 2025.")
        self.go_home()
        self.wizard.start(EXPORT)
        self.assertEqual(self.wizard.page_control(VERSIONS).text, "2026")
        self.wizard.press_button(NEXT)
        self.assertIn("3DBOM Configuration", self.wizard.tree().checked_labels())
        exported = self.package("shown.ucex")
        self.wizard.click_box(SELECT_ALL)
        self.wizard.click_box("Shortcut key")
        self.wizard.press_button(FINISH)
        self.wizard.name_file(windows_name(exported))
        self.wizard.finish_text()
        with zipfile.ZipFile(exported) as archive:
            self.assertIn("RELEASE VERSION=2026", archive.read("config.ini").decode())
            self.assertTrue(all(r"\28.0" in name for name in archive.namelist()[1:]))

    def test_everything_unticked_changes_nothing_but_what_is_nobodys(self):
        package = self.package_of_everything()
        before = MachineState(PREFIX)
        self.enter_path_page(package)
        self.wizard.press_button(NEXT)
        self.wizard.answer_list("Yes")  # nobody's file is a reason against it
        self.assertEqual(len(self.wizard.tree().checked_labels()), 14)
        self.wizard.click_box(SELECT_ALL)
        self.wizard.wait_until(lambda wizard: wizard.tree().checked_labels() == [], "no category")
        self.assertEqual(self.apply(),
                         "Your settings have been successfully imported to  VANTRIC 2026.")
        after = MachineState(PREFIX)
        self.assertEqual(after.keys, before.keys)
        self.assertEqual([path for path in after.files.keys() | before.files.keys()
                          if after.files.get(path) != before.files.get(path)],
                         [f"{LOCAL_2026}/en-us/nobodys.txt"])

    def package_of_everything(self):
        """A package with a file or a value of every category, and a file of nobody."""
        entries = {"config.ini": description("2026", "Options", "Register", "2D Draft Settings",
                                             *FOLDER_OF),
                   f"{LOCAL_2026}/en-us/nobodys.txt": "nobody's"}
        for half, below in FOLDER_OF.values():
            for language in ("en-us", "zh-cn"):
                entries[f"{half}/Vantric/VANTRIC/28.0/{below.format(language)}/new.dat"] = "new"
        for half in ("Local", "Roaming"):
            entries[f"{half}/ORMA/ORMA CAD TVRN-INT-VANTRIC 2026 (x64)/28.0/new.dat"] = "new"
        for name, subkey in (("Options/General.reg", "\\General"), ("Register/x.reg", "")):
            entries[name] = ("REGEDIT4\r\n\r\n[HKEY_CURRENT_USER\\SOFTWARE\\Vantric\\VANTRIC 28.0"
                             f'{subkey}]\r\n"New"="new"\r\n')
        return self.crafted_package("everything.ucex", **{
            name.replace("/", "\\"): text for name, text in entries.items()})

    def test_legacy_package_is_imported_after_another_choice_was_refused_or_cancelled(self):
        document = ('<Scene at="1"><Surface_Finish><ImgDir0001 value="2026"/></Surface_Finish>'
                    "</Scene>")
        package = self.crafted_package("legacy.ucx", **{"Scene_UI.xml": document})
        corrupt = self.crafted_package("none.ucx", **{"a.txt": "no document"})
        self.enter_path_page(package)
        self.wizard.select_package(windows_name(corrupt))
        self.assertEqual(self.wizard.answer(), "File corruption")
        self.wizard.cancel_package()
        self.assertEqual(self.wizard.page_control(PACKAGE).text, windows_name(package))
        self.assertEqual(self.wizard.page_control(TARGETS).entries, ["2026"])
        package.unlink()  # what was unpacked of it is still there
        self.wizard.press_button(NEXT)
        self.assertEqual(self.wizard.finish_text(),
                         "Your settings have been successfully imported to  VANTRIC 2026.")
        scenes = (DRIVE / "users").glob(f"*/AppData/{ROAMING_2026}/*/Customization/"
                                        "VANTRIC-Scene.xml")
        self.assertEqual(['at="1"' in scene.read_text() for scene in scenes], [True, True])

    def test_legacy_package_puts_its_document_into_both_languages(self):
        document = '<Scene><Surface_Finish><ImgDir0001 value="2026"/></Surface_Finish></Scene>'
        package = self.crafted_package("legacy.ucx", **{"Scene_UI.xml": document})
        before = MachineState(PREFIX)
        self.enter_path_page(package)
        self.assertEqual(self.wizard.page_control(TARGETS).entries, ["2026"])
        self.wizard.press_button(NEXT)
        self.assertEqual(self.wizard.finish_text(),
                         "Your settings have been successfully imported to  VANTRIC 2026.")
        self.assertFalse(self.wizard.button(FINISH).enabled)
        after = MachineState(PREFIX)
        self.assertEqual(after.keys, before.keys)
        placed = sorted(path for path in after.files
                        if after.files[path] != before.files.get(path))
        self.assertEqual([path.lower() for path in placed],
                         [f"{ROAMING_2026}/{language}/Customization/VANTRIC-Scene.xml".lower()
                          for language in ("en-us", "zh-cn")])
        self.wizard.press_button(CANCEL)
        self.assert_ends(self.wizard)
        self.assertEqual(self.staging_folders(), [])
