"""An export through the real window, with the mouse alone and with the keyboard alone."""

import signal

from wizard import BACK, CANCEL, EXPORT, FINISH, HEADING, NEXT, SELECT_ALL, VERSIONS
from wizard_case import WizardCase, package_content, windows_name

from limits import run_limited  # found by way of wizard


class ExportTest(WizardCase):
    def setUp(self):
        super().setUp()
        self.wizard = self.open_wizard()

    def enter_categories(self, year="2026"):
        self.wizard.start(EXPORT)
        if year != "2026":
            self.wizard.choose_version(VERSIONS, year)
        self.wizard.press_button(NEXT)
        self.wizard.tree()

    def assert_finished(self, package):
        self.assertEqual(self.wizard.finish_text(), "Your settings have been successfully exported "
                                                    f"to  {windows_name(package)}")
        self.assertTrue(package.exists())

    def assert_like_command_line(self, package, year, *labels):
        expected = self.package("expected.ucex")
        choice = [part for label in labels for part in ("--category", label)]
        self.run_cli("export", "--version", year, *choice, "--output", windows_name(expected))
        self.assertEqual(package_content(package), package_content(expected))

    def export_by_mouse(self, year, labels):
        package = self.package("mouse.ucex")
        self.enter_categories(year)
        self.wizard.click_box(SELECT_ALL)
        for label in labels:
            self.wizard.click_box(label)
        with self.wizard.with_registry_tool_awaited():
            self.wizard.press_button(FINISH)
            self.wizard.name_file(windows_name(package))
            self.assert_finished(package)
        self.assert_like_command_line(package, year, *labels)
        self.wizard.press_button(FINISH)
        self.wizard.wait_until(lambda wizard: wizard.shows(HEADING), "the start page")

    def test_mouse_alone(self):
        self.export_by_mouse("2026", ("Register", "Shortcut key", "Interface layout"))

    def test_mouse_alone_and_another_version(self):
        self.export_by_mouse("2025", ("Options", "Property Templates", "2D Draft Settings"))

    def export_by_keyboard(self, year, keys_on_tree, labels):
        package = self.package("keyboard.ucex")
        self.wizard.window()
        self.screen.press("space", "alt+n")
        self.wizard.wait_until(lambda wizard: wizard.page_control(VERSIONS).focused, "the list")
        self.screen.press(*["Up"] * (2026 - int(year)), "alt+n")
        self.wizard.wait_until(lambda wizard: wizard.tree().focused, "the tree")
        self.screen.press("Home", *keys_on_tree)
        self.wizard.wait_until(
            lambda wizard: wizard.tree().checked_labels() == [SELECT_ALL, *labels], "the choice")
        with self.wizard.with_registry_tool_awaited():
            self.screen.press("Return")
            self.wizard.name_file(windows_name(package))
            self.assert_finished(package)
        self.assert_like_command_line(package, year, *labels)
        self.screen.press("Return")
        self.wizard.wait_until(lambda wizard: wizard.shows(HEADING), "the start page")
        self.screen.press("Escape")
        self.assert_ends(self.wizard)

    def test_keyboard_alone(self):
        self.export_by_keyboard("2026", ["Down", "space", "Down", *["Down", "space"] * 8],
                                ("Register", "Catalog Library", "Sheet Metal Library",
                                 "Cosmetic Thread"))

    def test_keyboard_alone_and_another_version(self):
        self.export_by_keyboard("2025", ["Down", "space", "Down", "Down", *["Down", "space"] * 9],
                                ("Register", "Interface layout"))

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
        package = self.package("taken.ucex")
        package.write_bytes(b"an older package")
        self.enter_categories()
        self.wizard.click_box(SELECT_ALL)
        self.wizard.click_box("Shortcut key")
        self.wizard.press_button(FINISH)
        self.wizard.name_file(windows_name(package))
        self.wizard.wait_until(lambda wizard: "Yes" in button_texts(wizard.box()), "the question")
        self.wizard.answer("No")
        self.assertEqual(package.read_bytes(), b"an older package")
        self.wizard.wait_until(lambda wizard: "Save" in button_texts(wizard.box()), "the dialog")
        self.screen.press("Return")
        self.wizard.wait_until(lambda wizard: "Yes" in button_texts(wizard.box()), "the question")
        self.wizard.answer("Yes")
        self.assert_finished(package)
        self.assert_like_command_line(package, "2026", "Shortcut key")

    def test_no_category_is_refused(self):
        self.enter_categories()
        self.wizard.click_box(SELECT_ALL)
        self.wizard.press_button(FINISH)
        self.assertEqual(self.wizard.answer(), "Please select the exported settings")
        self.assertEqual(self.wizard.tree().checked_labels(), [])

    def test_keys_and_clicks_during_the_run_are_dropped(self):
        package = self.package("patience.ucex")
        self.enter_categories()
        left, top, width, _ = self.wizard.window().area
        finish = self.wizard.button(FINISH).centre()
        self.wizard.press_button(FINISH)
        self.wizard.name_file(windows_name(package))
        self.wizard.wait_until(lambda wizard: self.staging_holds_registry_files(), "the run")
        self.screen.press("Escape", "Return", "alt+F4")
        self.screen.click(*finish, times=3)
        self.screen.click(left + width - 10, top + 10)  # the window manager's close button
        self.assert_finished(package)
        self.assertIsNone(self.wizard.process.poll())

    def staging_holds_registry_files(self):
        return any(list(folder.glob("*.reg")) for folder in self.staging_folders())

    def test_second_quick_press_of_next_goes_one_step_at_most(self):
        self.wizard.choose(EXPORT)
        self.screen.click(*self.wizard.button(NEXT).centre(), times=2)
        self.wizard.wait_until(lambda wizard: not wizard.shows(HEADING), "the next page")
        self.wizard.wait_until(lambda wizard: wizard.button(CANCEL).enabled, "the end of the step")
        if self.wizard.shows(VERSIONS):  # the second press came while the first was carried out
            self.wizard.press_button(NEXT)
        self.assertIn(SELECT_ALL, self.wizard.tree().checked_labels())
        self.assertFalse(self.wizard.button(NEXT).enabled)

    def test_progress_is_painted_during_the_run_and_gone_after_it(self):
        package = self.package("progress.ucex")
        self.enter_categories()
        window, back = self.wizard.window().area, self.wizard.button(BACK).area
        area = (window[0] + 8, back[1], back[0] - window[0] - 16, back[3])
        idle = self.colours(area)
        self.wizard.press_button(FINISH)
        self.wizard.name_file(windows_name(package))
        self.wizard.wait_until(lambda wizard: self.staging_holds_registry_files(), "the run")
        self.wizard.process.send_signal(signal.SIGSTOP)
        try:
            self.assertTrue(self.colours(area) - idle)
        finally:
            self.wizard.process.send_signal(signal.SIGCONT)
        self.wizard.finish_text()
        self.assertEqual(self.colours(area), idle)

    def colours(self, area):
        """The colours that an area of the screen shows."""
        left, top, width, height = area
        done = run_limited(["import", "-window", "root", "-crop", f"{width}x{height}+{left}+{top}",
                            "-depth", "8", "rgb:-"], env=self.screen.environment(), check=True)
        return {done.stdout[i:i + 3] for i in range(0, len(done.stdout), 3)}


def button_texts(box):
    return [c.text.replace("&", "") for c in box.controls if c.class_name == "Button"]
