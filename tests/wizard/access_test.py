"""The wizard for those who do not see it, do not use a mouse, or need other colours and sizes."""

from import_test import description
from screen import wait_for
from wizard import (BACK, EXPORT, FINISH, FINISH_LIST, HEADING, IMPORT, NEXT, OPEN_FOLDER, PACKAGE,
                    RESET, ROOT, SHOW_CHANGES, VERSIONS, list_windows)
from wizard_case import PREFIX, WizardCase, windows_name

# What a user can operate or what moves, and so has to have a name.
NAMED_CLASSES = ("Button", "ComboBox", "Edit", "ListBox", "SysTreeView32", "msctls_progress32")


class ScreenReaderTest(WizardCase):
    def assert_named(self, window, *expected):
        controls = [c for c in window.controls if c.class_name in NAMED_CLASSES]
        nameless = [(c.class_name, c.number) for c in controls if not c.name.strip()]
        self.assertEqual(nameless, [])
        names = [c.name.replace("&", "") for c in controls]
        for name in expected:
            self.assertIn(name, names)

    def test_every_control_of_every_page_has_a_name(self):
        package = self.crafted_package("named.ucex", **{
            "config.ini": description("2026", "Cosmetic Thread")})
        wizard = self.open_wizard()
        wizard.page_control(HEADING)
        self.assert_named(wizard.window(), EXPORT, IMPORT, RESET, "Next", "Close")

        wizard.start(EXPORT)
        wizard.page_control(VERSIONS)
        self.assert_named(wizard.window(), "Please select a version", "Back")
        wizard.press_button(NEXT)
        wizard.tree()
        self.assert_named(wizard.window(), "Which settings do you want to export?")
        wizard.press_button(BACK)
        wizard.page_control(VERSIONS)
        wizard.press_button(BACK)

        wizard.start(IMPORT)
        wizard.select_package(windows_name(package))
        wizard.wait_until(lambda wizard: wizard.page_control(PACKAGE).text, "the package's path")
        self.assert_named(wizard.window(), "Please select the file path", "Select File",
                          "Please select the imported version")
        wizard.press_button(NEXT)
        wizard.tree()
        self.assert_named(wizard.window(), "Which settings do you want to import?",
                          "Show changes…")
        wizard.click_box("Cosmetic Thread")
        wizard.press_button(FINISH)
        wizard.finish_text()
        self.assert_named(wizard.window(),
                          "Your settings have been successfully imported to  VANTRIC 2026.")
        wizard.press_button(FINISH)

        wizard.start(RESET)
        wizard.answer()
        wizard.tree()
        self.assert_named(wizard.window(), "Which settings do you want to reset?",
                          "One click backup of all settings")
        wizard.click(wizard.page_control(SHOW_CHANGES))
        self.assert_named(wizard.list_window(), "Close", "Save…",
                          "What the reset of the ticked categories would change:")
        wizard.answer_list("Close")


class FinishPageTest(WizardCase):
    def export(self):
        package = self.package("exported.ucex")
        wizard = self.open_wizard()
        wizard.start(EXPORT)
        wizard.press_button(NEXT)
        wizard.click_box("Select All")
        wizard.click_box("Shortcut key")
        wizard.press_button(FINISH)
        wizard.name_file(windows_name(package))
        wizard.finish_text()
        return wizard

    def test_control_c_copies_the_lines(self):
        wizard = self.export()
        lines = wizard.finish_lines()
        self.assertIn("Shortcut key: exported", lines)
        self.assertIn("Options: left out", lines)
        wizard.click(wizard.page_control(FINISH_LIST))
        self.screen.press("ctrl+c")
        wizard.wait_until(lambda _: self.clipboard().splitlines() == lines, "the copied lines")

    def test_open_folder_shows_the_package_where_it_lies(self):
        wizard = self.export()
        wizard.click(wizard.page_control(OPEN_FOLDER))
        wait_for(lambda: list_windows(self.screen, PREFIX, "explorer.exe"),
                 what="the window of the folder")

    def clipboard(self):
        return self.run_windows(ROOT / "build" / "windows" / "tests" / "clipboard_probe.exe"
                                ).decode("utf-8")


class HighContrastTest(WizardCase):
    def test_pages_keep_the_users_own_colours(self):
        # Wine never says that high contrast is on, so that the program's own tests stand in for it.
        answer = self.run_windows(ROOT / "build" / "windows" / "tests" / "carrovan_tests.exe",
                                  "--gtest_filter=*PageColours*").decode()
        self.assertIn("[  PASSED  ] 2 tests.", answer)
        self.assertNotIn("SKIPPED", answer)


class HelpTest(WizardCase):
    # Wine knows no program that shows pages.
    PAGES, PAGE = r"HKLM\Software\Classes\.html", r"HKLM\Software\Classes\TestedPage"

    def test_f1_opens_the_help_beside_the_program(self):
        folder = self.program_folder()
        (folder / "help").mkdir()
        (folder / "help" / "index.html").write_text("the help", encoding="utf-8")
        opened = self.package("opened.html")
        for key, value in ((self.PAGES, "TestedPage"),
                           (self.PAGE + r"\shell\open\command",
                            f'cmd /c copy "%1" {windows_name(opened)}')):
            self.run_windows("reg", "add", key, "/ve", "/d", value, "/f")
        for key in (self.PAGES, self.PAGE):
            self.addCleanup(self.run_windows, "reg", "delete", key, "/f")
        wizard = self.open_wizard(folder)
        wizard.page_control(HEADING)
        self.screen.press("F1")
        wait_for(lambda: opened.exists() and opened.read_text() == "the help", what="the help")
