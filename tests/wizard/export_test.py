"""An export through the real window, with the mouse alone and with the keyboard alone."""

import zipfile

from wizard import CANCEL, FINISH, NEXT
from wizard_case import PREFIX, WizardCase

HEADING, FINISH_TITLE, FINISH_MESSAGE, VERSIONS = 1013, 1023, 1022, 1010
BACKUP = 1028
FILE_NAME = 1152  # the field of the system's dialog


class ExportCase(WizardCase):
    def setUp(self):
        super().setUp()
        self.wizard = self.open_wizard()

    def package(self, name):
        """The path of a package that is gone when the test ends."""
        path = PREFIX / "drive_c" / f"{name}.ucex"
        path.unlink(missing_ok=True)
        self.addCleanup(path.unlink, missing_ok=True)
        return path

    def name_package(self, path):
        self.wizard.wait_until(
            lambda wizard: any(c.number == FILE_NAME and c.focused for c in wizard.box().controls),
            "the dialog to take a name")
        self.screen.type("C:\\" + path.name)
        self.screen.press("Return")


class ExportTest(ExportCase):
    def enter_categories(self):
        self.wizard.choose("Export selected environment settings")
        self.wizard.press_button(NEXT)
        self.wizard.page_control(VERSIONS)
        self.wizard.press_button(NEXT)
        self.wizard.tree()

    def assert_finished(self, package):
        self.wizard.wait_until(lambda wizard: wizard.shows(FINISH_TITLE), "the finish page")
        self.assertEqual(self.wizard.page_control(FINISH_MESSAGE).text,
                         f"Your settings have been successfully exported to  C:\\{package.name}")
        self.assertTrue(package.exists())

    def assert_like_command_line(self, package, *labels):
        expected = self.package("expected")
        choice = [part for label in labels for part in ("--category", label)]
        self.run_windows("carrovan-cli.exe", "export", "--version", "2026", *choice,
                         "--output", f"C:\\{expected.name}")
        self.assertEqual(content(package), content(expected))

    def test_mouse_alone(self):
        package = self.package("mouse")
        self.enter_categories()
        self.wizard.click_box("Select All")
        self.wizard.click_box("Shortcut key")
        self.wizard.click_box("Interface layout")
        self.wizard.press_button(FINISH)
        self.name_package(package)
        self.assert_finished(package)
        self.assert_like_command_line(package, "Shortcut key", "Interface layout")
        self.wizard.press_button(FINISH)
        self.wizard.wait_until(lambda wizard: wizard.shows(HEADING), "the start page")

    def test_keyboard_alone(self):
        package = self.package("keyboard")
        self.wizard.window()
        self.screen.press("space", "alt+n")
        self.wizard.page_control(VERSIONS)
        self.screen.press("alt+n")
        self.wizard.wait_until(lambda wizard: wizard.tree().focused, "the tree")
        unticked = 10
        self.screen.press("Home", *["Down", "space"] * unticked)
        self.wizard.wait_until(
            lambda wizard: wizard.tree().checked_labels() ==
            ["Select All", "Catalog Library", "Sheet Metal Library", "Cosmetic Thread"],
            "the choice")
        self.screen.press("Return")
        self.name_package(package)
        self.assert_finished(package)
        self.assert_like_command_line(package, "Catalog Library", "Sheet Metal Library",
                                      "Cosmetic Thread")
        self.screen.press("Return")
        self.wizard.wait_until(lambda wizard: wizard.shows(HEADING), "the start page")
        self.screen.press("Escape")
        self.assert_ends(self.wizard)

    def test_cancelled_save_dialog_leaves_the_categories_page_as_it_was(self):
        self.enter_categories()
        self.wizard.click_box("Options")
        chosen = self.wizard.tree().checked_labels()
        self.wizard.press_button(FINISH)
        self.wizard.box()
        self.screen.press("Escape")
        self.wizard.wait_until(lambda wizard: wizard.button(FINISH).enabled, "the buttons")
        self.assertEqual(self.wizard.tree().checked_labels(), chosen)

    def test_package_that_is_there_is_replaced_only_after_asking(self):
        package = self.package("taken")
        package.write_bytes(b"an older package")
        self.enter_categories()
        self.wizard.click_box("Select All")
        self.wizard.click_box("Shortcut key")
        self.wizard.press_button(FINISH)
        self.name_package(package)
        self.wizard.wait_until(lambda wizard: "Yes" in button_texts(wizard.box()), "the question")
        self.wizard.answer("No")
        self.assertEqual(package.read_bytes(), b"an older package")
        self.wizard.wait_until(lambda wizard: "Save" in button_texts(wizard.box()), "the dialog")
        self.screen.press("Return")
        self.wizard.wait_until(lambda wizard: "Yes" in button_texts(wizard.box()), "the question")
        self.wizard.answer("Yes")
        self.assert_finished(package)
        self.assert_like_command_line(package, "Shortcut key")

    def test_no_category_is_refused(self):
        self.enter_categories()
        self.wizard.click_box("Select All")
        self.wizard.press_button(FINISH)
        self.assertEqual(self.wizard.answer(), "Please select the exported settings")
        self.assertEqual(self.wizard.tree().checked_labels(), [])

    def test_keys_and_clicks_during_the_run_are_dropped(self):
        package = self.package("patience")
        self.enter_categories()
        left, top, width, _ = self.wizard.window().area
        finish = self.wizard.button(FINISH).centre()
        self.wizard.press_button(FINISH)
        self.name_package(package)
        self.wizard.wait_until(lambda wizard: self.staging_holds_registry_files(), "the run")
        self.screen.press("Escape", "Return", "alt+F4")
        self.screen.click(*finish, times=3)
        self.screen.click(left + width - 10, top + 10)  # the window manager's close button
        self.assert_finished(package)
        self.assertIsNone(self.wizard.process.poll())

    def staging_holds_registry_files(self):
        return any(list(folder.glob("*.reg")) for folder in self.staging_folders())

    def test_second_quick_press_of_next_goes_one_step_at_most(self):
        self.wizard.choose("Export selected environment settings")
        self.screen.click(*self.wizard.button(NEXT).centre(), times=2)
        self.wizard.wait_until(lambda wizard: not wizard.shows(HEADING), "the next page")
        self.wizard.wait_until(lambda wizard: wizard.button(CANCEL).enabled, "the end of the step")
        if self.wizard.shows(VERSIONS):  # the second press came while the first was carried out
            self.wizard.press_button(NEXT)
        self.assertIn("Select All", self.wizard.tree().checked_labels())
        self.assertFalse(self.wizard.button(NEXT).enabled)


class BackupTest(ExportCase):
    def test_one_click_backup_holds_everything_and_stays_on_the_reset_page(self):
        package = self.package("backup")
        self.wizard.choose("Reset all settings in the current version")
        self.wizard.press_button(NEXT)
        self.wizard.answer()
        self.wizard.click(self.wizard.page_control(BACKUP))
        self.name_package(package)
        self.wizard.wait_until(lambda wizard: wizard.button(FINISH).enabled, "the end of the run")
        self.assertTrue(self.wizard.shows(BACKUP))
        with zipfile.ZipFile(package) as archive:
            description = archive.read("config.ini").decode("utf-8")
        self.assertEqual(description.count("=1"), 13, description)


def button_texts(box):
    return [c.text.replace("&", "") for c in box.controls if c.class_name == "Button"]


def content(package):
    with zipfile.ZipFile(package) as archive:
        return [(name, archive.read(name)) for name in archive.namelist()]
