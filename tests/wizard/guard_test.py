"""What guards a run through the real window: changes shown before, trust, undo, and what the finish
page lists."""

from machine_state import MachineState
from held_run import HeldRun  # noqa: E402, beside the module that machine_state takes
from import_test import DISTRUST, RETAIN_PATHS, ImportCase, description
from reset_test import ResetCase
from wizard import (BACK, BACKUP, BACKUP_TEXT, FINISH, FINISH_UNDO, HEADING, IMPORT, NEXT, PACKAGE,
                    PROGRAMS, RESET, SELECT_ALL, SELECT_FILE, SHOW_CHANGES, TARGETS)
from wizard_case import DRIVE, PREFIX, WizardCase, windows_name

RUN_KEY = r"HKEY_CURRENT_USER\Software\Microsoft\Windows\CurrentVersion\Run"
UNDONE = "What this run changed has been undone."


def held_reset(case):
    """A reset of the command line that is stopped while it is at work."""
    return HeldRun(lambda: case.run_windows("carrovan-cli.exe", "reset", "--all", "--yes",
                                            wait=False),
                   next((DRIVE / "users").glob("*/AppData/Local")) / "Carrovan")


class UndoneImportTest(ImportCase):
    SPOILS_SAMPLE = True

    def import_2025(self):
        package = self.package("settings-2025.ucex")
        self.run_cli("export", "--version", "2025", "--all", "--output", windows_name(package))
        self.enter_path_page(package)
        self.wizard.press_button(NEXT)
        self.assertEqual(self.wizard.answer(), RETAIN_PATHS)

    def finish(self):
        with self.wizard.with_registry_tool_awaited():
            self.wizard.press_button(FINISH)
            self.wizard.finish_text()

    def test_changes_are_shown_without_changing_anything_and_undo_puts_everything_back(self):
        self.import_2025()
        before = MachineState(PREFIX)
        self.wizard.click(self.wizard.page_control(SHOW_CHANGES))
        heading, lines = self.wizard.answer_list("Close")
        self.assertEqual(heading, "What the import of the ticked categories would change:")
        self.assertTrue(any(line.startswith("Options – values ") for line in lines), lines[:5])
        self.assertTrue(any(line.startswith("replaced: C:\\users\\") for line in lines))
        self.assert_as(before)

        self.finish()
        listed = self.wizard.finish_lines()
        self.assertIn("Options: imported", listed)
        self.assertTrue(any(line.startswith("Left out: HKEY_CURRENT_USER") for line in listed))
        self.assertNotEqual(MachineState(PREFIX).files, before.files)

        self.wizard.click(self.wizard.page_control(FINISH_UNDO))
        self.assertIn("import into version 2026", self.wizard.answer("Yes"))
        self.assertRegex(self.wizard.answer(), r"^Items put back: \d+$")
        self.assert_as(before)
        self.assertEqual(self.wizard.finish_lines(), [UNDONE])
        self.assertFalse(self.wizard.shows(FINISH_UNDO))

    def test_command_line_undoes_the_wizards_import(self):
        self.import_2025()
        before = MachineState(PREFIX)
        self.finish()
        self.run_cli("undo")
        self.assert_as(before)

    def assert_as(self, before):
        after = MachineState(PREFIX)
        self.assertEqual(after.keys, before.keys)
        self.assertEqual(after.files, before.files)


class AnotherRunTest(ImportCase):
    SPOILS_SAMPLE = True

    def test_import_is_refused_while_the_command_line_is_at_work_and_works_afterwards(self):
        package = self.package("settings-2025.ucex")
        self.run_cli("export", "--version", "2025", "--all", "--output", windows_name(package))
        self.enter_path_page(package)
        self.wizard.press_button(NEXT)
        self.assertEqual(self.wizard.answer(), RETAIN_PATHS)
        with held_reset(self) as other:
            before = MachineState(PREFIX)
            self.wizard.press_button(FINISH)
            self.assertEqual(self.wizard.answer(), f"Another run is at work:\n{other.name()}\n\n"
                             "Nothing was changed. Try again when it has ended.")
            self.assertIn("Options", self.wizard.tree().checked_labels())
            after = MachineState(PREFIX)
            self.assertEqual((after.keys, after.files), (before.keys, before.files))
            self.assertEqual(other.go_on(), 0)
        with self.wizard.with_registry_tool_awaited():
            self.wizard.press_button(FINISH)
            self.wizard.finish_text()
        self.assertIn("Options: imported", self.wizard.finish_lines())


class UndoneResetTest(ResetCase):
    SPOILS_SAMPLE = True

    def test_system_menu_undoes_what_the_command_line_has_reset(self):
        before = MachineState(PREFIX)
        self.run_cli("reset", "--all", "--yes")
        self.assertNotEqual(MachineState(PREFIX).keys, before.keys)
        self.wizard.page_control(HEADING)
        self.screen.press("alt+space", "u")
        self.assertIn("reset of version 2026", self.wizard.answer("Yes"))
        self.assertRegex(self.wizard.answer(), r"^Items put back: \d+$")
        after = MachineState(PREFIX)
        self.assertEqual((after.keys, after.files), (before.keys, before.files))

    def test_backup_says_where_it_lies_beside_its_button(self):
        backup = self.package("backup.ucex")
        self.enter_categories()
        with self.wizard.with_registry_tool_awaited():
            self.wizard.click(self.wizard.page_control(BACKUP))
            self.wizard.name_file(windows_name(backup))
            self.wizard.wait_until_done(lambda wizard: wizard.page_control(BACKUP_TEXT).text,
                                        "the line beside the button")
        self.assertEqual(self.wizard.page_control(BACKUP_TEXT).text,
                         f"The backup is in {windows_name(backup)}")

    def test_changes_of_a_reset_are_shown(self):
        before = MachineState(PREFIX)
        self.enter_categories()
        self.wizard.click(self.wizard.page_control(SHOW_CHANGES))
        heading, lines = self.wizard.answer_list("Close")
        self.assertEqual(heading, "What the reset of the ticked categories would change:")
        self.assertTrue(any(line.startswith("removed: C:\\users\\") for line in lines))
        after = MachineState(PREFIX)
        self.assertEqual((after.keys, after.files), (before.keys, before.files))


class TrustTest(ImportCase):
    def test_hostile_package_is_unpacked_only_after_a_yes_and_no_is_the_default(self):
        package = self.crafted_package("hostile.ucex", **{
            "config.ini": description("2026", "Options"),
            "Options\\run.reg": f"REGEDIT4\r\n\r\n[{RUN_KEY}]\r\n\"evil\"=\"evil.exe\"\r\n",
            "Roaming\\Microsoft\\Windows\\Start Menu\\Programs\\Startup\\evil.bat": "evil"})
        self.enter_path_page(package)
        self.wizard.press_button(NEXT)
        window = self.wizard.list_window()
        self.screen.press("Return")
        self.wizard.wait_until(lambda wizard: len(wizard.windows()) == 1, "the question to close")
        self.assert_on_path_page()
        self.assertEqual(window.controls[0].text, DISTRUST)

        self.wizard.press_button(NEXT)
        lines = self.wizard.answer_list("No")[1]
        self.assertEqual(sorted(line.split(": ")[0] for line in lines),
                         ["Options\\run.reg", "Roaming\\Microsoft\\Windows\\Start Menu\\Programs"
                          "\\Startup\\evil.bat"])
        self.assert_on_path_page()


class OpenedPackageTest(WizardCase):
    def test_package_named_on_the_command_line_opens_the_path_page_of_an_import(self):
        package = self.crafted_package("given.ucex", **{
            "config.ini": description("2026", "Options")})
        wizard = self.open_wizard(arguments=[windows_name(package)])
        wizard.wait_until(lambda wizard: wizard.page_control(PACKAGE).text ==
                          windows_name(package), "the package's path")
        self.assertEqual(wizard.page_control(TARGETS).text, "2026")
        wizard.press_button(NEXT)
        self.assertEqual(wizard.tree().checked_labels(), [SELECT_ALL, "Options"])


    def test_package_dropped_on_the_window_opens_the_path_page_of_an_import(self):
        package = self.crafted_package("dropped.ucex", **{
            "config.ini": description("2026", "Options")})
        wizard = self.open_wizard()
        wizard.start(RESET)
        wizard.answer()
        wizard.tree()
        self.drop(wizard, package)
        wizard.wait_until(lambda wizard: wizard.shows(PACKAGE), "the path page")
        self.assertEqual(wizard.page_control(PACKAGE).text, windows_name(package))
        wizard.press_button(BACK)
        wizard.page_control(HEADING)
        chosen = [c.text for c in wizard.window().controls if c.checked]
        self.assertEqual(chosen, [IMPORT])

    def test_dropped_file_of_another_kind_is_refused(self):
        picture = self.package("picture.jpg")
        picture.write_bytes(b"no package")
        wizard = self.open_wizard()
        wizard.page_control(HEADING)
        self.drop(wizard, picture)
        self.assertEqual(wizard.answer(), "Please select a file")
        self.assertTrue(wizard.shows(HEADING))

    def drop(self, wizard, file):
        self.run_windows(PROGRAMS / "tests" / "drop_probe.exe", wizard.window().text,
                         windows_name(file))


class KeyboardTest(WizardCase):
    def test_enter_presses_next_until_there_is_something_to_finish(self):
        wizard = self.open_wizard()
        wizard.choose(IMPORT)
        self.screen.press("Return")
        wizard.page_control(PACKAGE)
        self.screen.press("Return")  # the button with the focus
        self.assertTrue(any(c.number == 1152 for c in wizard.box().controls))
        self.screen.press("Escape")

    def test_empty_path_page_has_its_focus_on_select_file(self):
        wizard = self.open_wizard()
        wizard.start(IMPORT)
        wizard.page_control(PACKAGE)
        wizard.wait_until(lambda wizard: wizard.page_control(SELECT_FILE).focused, "the focus")

    def test_f1_says_that_there_is_no_help_where_it_is_not_installed(self):
        wizard = self.open_wizard()
        wizard.page_control(HEADING)
        self.screen.press("F1")
        self.assertEqual(wizard.answer(), "The help is not installed with this program.")

    def test_double_click_on_the_root_toggles_twice(self):
        wizard = self.open_wizard()
        wizard.start("Export selected environment settings")
        wizard.press_button(NEXT)
        checked = wizard.tree().checked_labels()
        left, top, width, height = wizard.tree().item(SELECT_ALL)["box"]
        self.screen.click(left + width // 2, top + height // 2, times=2)
        self.screen.press("Tab")  # both clicks have been handled when this has
        wizard.wait_until(lambda wizard: wizard.tree().checked_labels() == checked,
                          "the boxes as they were")
