"""Resets through the real window: the warnings and questions, and what it does."""

from machine_state import MachineState, read_defaults
from wizard import (BACK, BACKUP, EXPORT, FINISH, FINISH_TITLE, HEADING, NEXT, RESET, SELECT_ALL,
                    VERSIONS)
from wizard_case import PREFIX, WizardCase, change_identity, package_content, windows_name

WARNING = ("After the reset operation, the current settings cannot be restored. \nIt is "
           "recommended to export the current settings and then perform the reset.")
QUESTION = "You need to run Vantric at least once after reset.\nContinue?"
DONE = ("VANTRIC 2026 Relevant settings selected have been reset. \n\nSettings take effect after "
        "restarting ")
LOCAL, ROAMING = "Local/Vantric/VANTRIC/28.0", "Roaming/Vantric/VANTRIC/28.0"
CHOSEN = ("Options", "Shortcut key", "Catalog Library")


def plain(text):
    """Without the form in which a control keeps the ends of its lines."""
    return text.replace("\r\n", "\n")


class ResetCase(WizardCase):
    def setUp(self):
        super().setUp()
        self.wizard = self.open_wizard()

    def enter_categories(self):
        self.wizard.start(RESET)
        self.assertEqual(plain(self.wizard.answer()), WARNING)
        self.wizard.tree()

    def check_only(self, labels):
        self.wizard.click_box(SELECT_ALL)
        for label in labels:
            self.wizard.click_box(label)
        self.wizard.wait_until(lambda wizard: wizard.tree().checked_labels() == list(labels),
                               "the choice")


class ResetRefusedTest(ResetCase):
    def test_after_the_answer_no_next_leads_to_the_finish_page_without_a_reset(self):
        before = MachineState(PREFIX)
        self.enter_categories()
        self.wizard.press_button(NEXT)
        self.assertEqual(plain(self.wizard.answer("No")), QUESTION)
        self.wizard.wait_until(lambda wizard: wizard.button(NEXT).enabled, "the buttons")
        self.assertTrue(self.wizard.shows(BACKUP))
        self.wizard.press_button(NEXT)
        self.assertEqual(self.wizard.finish_text(), "")
        after = MachineState(PREFIX)
        self.assertEqual((after.keys, after.files), (before.keys, before.files))
        self.wizard.press_button(FINISH)
        self.wizard.wait_until(lambda wizard: wizard.shows(HEADING), "the start page")

    def test_after_the_answer_no_back_keeps_the_page_and_finish_returns_to_the_start(self):
        self.enter_categories()
        self.wizard.click_box("Options")
        chosen = self.wizard.tree().checked_labels()
        self.wizard.press_button(NEXT)
        self.wizard.answer("No")
        self.wizard.press_button(BACK)
        self.assertEqual(self.wizard.tree().checked_labels(), chosen)
        self.wizard.press_button(FINISH)
        self.wizard.answer("No")
        self.wizard.press_button(FINISH)
        self.wizard.wait_until(lambda wizard: wizard.shows(HEADING), "the start page")
        self.assertFalse(self.wizard.shows(FINISH_TITLE))


class UnusedVersionTest(WizardCase):
    def test_version_that_was_never_run_is_not_reset(self):
        folder = self.program_folder()
        change_identity(folder, "ProductVersion=28.0", "ProductVersion=29.0")
        change_identity(folder, "HumanReadableVersion=2026", "HumanReadableVersion=2027")
        wizard = self.open_wizard(folder)
        wizard.start(RESET)
        self.assertEqual(wizard.answer(), "Please run Vantric at least once")
        self.assertTrue(wizard.shows(HEADING))


class ResetTest(ResetCase):
    SPOILS_SAMPLE = True

    def test_three_categories_after_a_backup_of_everything(self):
        backup = self.package("backup.ucex")
        self.export_2025()
        before = MachineState(PREFIX)
        self.enter_categories()
        self.check_only(CHOSEN)
        self.back_up(backup)
        self.assertEqual(self.wizard.tree().checked_labels(), list(CHOSEN))
        self.wizard.press_button(NEXT)
        self.assertEqual(plain(self.wizard.answer("Yes")), QUESTION)
        self.assertEqual(plain(self.wizard.finish_text()), DONE)
        after = MachineState(PREFIX)
        self.assert_options_are_the_defaults(before, after)
        self.assert_only_these_folders_are_gone(before, after)
        self.assert_backup_is_of_before(backup, before)
        self.assertEqual(self.staging_folders(), [])

    def export_2025(self):
        """An earlier run on another version is none of the reset's business."""
        package = self.package("of-2025.ucex")
        self.wizard.start(EXPORT)
        self.wizard.choose_version(VERSIONS, "2025")
        self.wizard.press_button(NEXT)
        self.check_only(("Shortcut key",))
        self.wizard.press_button(FINISH)
        self.wizard.name_file(windows_name(package))
        self.wizard.finish_text()
        self.wizard.press_button(FINISH)

    def back_up(self, backup):
        with self.wizard.with_registry_tool_awaited():
            self.wizard.click(self.wizard.page_control(BACKUP))
            self.wizard.name_file(windows_name(backup))
            self.wizard.wait_until_done(
                lambda wizard: backup.exists() and wizard.button(FINISH).enabled, "the backup")

    def assert_options_are_the_defaults(self, before, after):
        for subkey in ("General", "Color", "Directories", "Export Options"):
            key = rf"VANTRIC 28.0\{subkey}"
            self.assertEqual(after.key(key), read_defaults(PREFIX, key))
            self.assertNotEqual(after.key(key), before.key(key))
        for kept in ("", r"\Window Placement\View00", r"\User Profile"):
            self.assertEqual(after.key("VANTRIC 28.0")[kept], before.key("VANTRIC 28.0")[kept])
        self.assertEqual(after.key("VANTRIC 27.0"), before.key("VANTRIC 27.0"))

    def assert_only_these_folders_are_gone(self, before, after):
        gone = [f"{LOCAL}/Customization/", f"{LOCAL}/en-us/FavoriteCatalog/",
                f"{LOCAL}/zh-cn/FavoriteCatalog/"]
        self.assertTrue(all(before.folder(folder[:-1]) for folder in gone))
        self.assertEqual(after.files, {path: digest for path, digest in before.files.items()
                                       if not path.startswith(tuple(gone))})

    def assert_backup_is_of_before(self, backup, before):
        content = dict(package_content(backup))
        self.assertEqual(content["config.ini"].count(b"=1"), 13)
        self.assertIn(b"RELEASE VERSION=2026", content["config.ini"])
        general = dict(dict(content["Options\\General.reg"])
                       [r"HKEY_CURRENT_USER\SOFTWARE\Vantric\VANTRIC 28.0\General"])
        self.assertEqual(general, before.key(r"VANTRIC 28.0\General")[""])
        self.assertIn(r"Local\Vantric\VANTRIC\28.0\en-us\ToolBox\empty.prt", content)
