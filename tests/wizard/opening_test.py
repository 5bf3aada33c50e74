"""How the wizard opens, on good and on bad machines."""

import shutil

from screen import wait_for
from texts import CHINESE
from wizard import BACK, CANCEL, FINISH, HEADING, NEXT, is_frame, list_windows
from wizard_case import PREFIX, WizardCase, change_identity

WELCOME = "Welcome to the Import and Export Settings Wizard"
RADIOS = (1001, 1002, 1003)


class OpeningTest(WizardCase):
    def test_start_page_is_shown_and_nothing_is_chosen(self):
        wizard = self.open_wizard()
        self.assertEqual(wizard.window().text, "Import and Export Settings Wizard")
        self.assertEqual(wizard.page_control(HEADING).text, WELCOME)
        for radio in RADIOS:
            self.assertFalse(wizard.page_control(radio).checked)
        self.assertTrue(wizard.page_control(RADIOS[0]).focused)
        self.assertFalse(wizard.button(FINISH).enabled)
        self.assertTrue(wizard.button(NEXT).enabled)
        self.assertTrue(wizard.button(CANCEL).enabled)
        self.assertNotIn(BACK, [c.number for c in wizard.window().controls if c.depth == 1])

    def test_next_without_a_choice_asks_for_one(self):
        wizard = self.open_wizard()
        wizard.press_button(NEXT)
        self.assertEqual(wizard.answer(), "Please Select")
        self.assertEqual(wizard.page_control(HEADING).text, WELCOME)

    def test_running_product_is_found_in_any_spelling_and_closes_the_wizard(self):
        product = PREFIX / "drive_c" / "vantric.EXE"
        shutil.copy2(PREFIX / "drive_c" / "windows" / "system32" / "notepad.exe", product)
        self.addCleanup(product.unlink)
        self.run_windows("C:\\vantric.EXE", wait=False)
        self.addCleanup(self.run_windows, "taskkill", "/f", "/im", "vantric.EXE")
        wait_for(lambda: list_windows(self.screen, PREFIX, "vantric.EXE"), what="the product")
        wizard = self.open_wizard()
        box = wizard.box()
        self.assertEqual(box.text, "")
        self.assertEqual(wizard.answer(), "Please close the product before running it again")
        self.assert_ends(wizard)

    def test_missing_library_is_named(self):
        folder = self.program_folder()
        (folder / "tarvik.dll").unlink()
        self.assert_refuses(folder, "tarvik.dll is missing")

    def test_damaged_library_is_named(self):
        folder = self.program_folder()
        (folder / "tarvik.dll").write_bytes(b"MZ but nothing more" * 40)
        self.assert_refuses(folder, "tarvik.dll cannot be loaded")

    def test_missing_function_is_named(self):
        folder = self.program_folder()
        shutil.copy2(folder / "en-us" / "MevrinLg.DLL", folder / "tarvik.dll")
        self.assert_refuses(folder, "tarvik.dll has no function EyeGetProductName")

    def assert_refuses(self, folder, reason):
        wizard = self.open_wizard(folder)
        self.assertEqual(wizard.box().text, "Carrovan")
        self.assertIn(reason, wizard.answer())
        self.assert_ends(wizard)

    def test_unknown_company_closes_the_wizard_and_leaves_nothing_behind(self):
        folder = self.program_folder()
        change_identity(folder, "Vantric", "Nobody")
        wizard = self.open_wizard(folder)
        self.assertEqual(wizard.answer(), "Please check the ini file")
        self.assert_ends(wizard)
        self.assertEqual(self.staging_folders(), [])

    def test_texts_come_from_the_library_of_the_products_language(self):
        folder = self.program_folder()
        change_text(folder / "en-us" / "MevrinLg.DLL", WELCOME, WELCOME.upper())
        self.assertEqual(self.heading(folder), WELCOME.upper())

    def test_language_is_chinese_when_the_product_names_none(self):
        folder = self.program_folder()
        change_identity(folder, "Language=en-us", "Language=")
        self.assertEqual(self.heading(folder), CHINESE[103])

    def test_program_has_texts_of_its_own_when_the_library_is_missing(self):
        folder = self.program_folder()
        shutil.rmtree(folder / "en-us")
        self.assertEqual(self.heading(folder), WELCOME)

    def test_program_has_texts_of_its_own_when_the_library_is_none(self):
        folder = self.program_folder()
        (folder / "en-us" / "MevrinLg.DLL").write_bytes(b"MZ but nothing more" * 40)
        self.assertEqual(self.heading(folder), WELCOME)

    def test_opens_from_a_folder_with_chinese_characters(self):
        self.assertEqual(self.heading(self.program_folder("图纸 目录")), WELCOME)

    def heading(self, folder):
        return self.open_wizard(folder).page_control(HEADING).text

    def test_second_wizard_has_a_staging_folder_of_its_own(self):
        first, second = self.open_wizard(), self.open_wizard()
        wait_for(lambda: len([w for w in first.windows() if is_frame(w)]) == 2,
                 what="two wizards")
        self.assertEqual(len(self.staging_folders()), 2)
        first.press_button(CANCEL)  # of the one in front
        wait_for(lambda: len([w for w in first.windows() if is_frame(w)]) == 1,
                 what="one of the wizards to close")
        self.assertEqual(len(self.staging_folders()), 1)
        first.press_button(CANCEL)
        self.assert_ends(first)
        self.assert_ends(second)
        self.assertEqual(self.staging_folders(), [])

    def test_system_menu_shows_the_about_box(self):
        wizard = self.open_wizard()
        wizard.window()
        self.screen.press("alt+space")
        self.screen.press("Up", "Return")
        box = wizard.box()
        self.assertEqual(box.text, "About Carrovan")
        self.assertRegex("\n".join(c.text for c in box.controls), r"Carrovan \d+\.\d+\.\d+\n")
        self.screen.press("Escape")
        wait_for(lambda: not wizard.has_box(), what="the box to close")

    def test_every_way_to_close_ends_the_program(self):
        for close in ("Escape", "alt+F4", CANCEL):
            with self.subTest(close=close):
                wizard = self.open_wizard()
                wizard.window()
                if close == CANCEL:
                    wizard.press_button(CANCEL)
                else:
                    self.screen.press(close)
                self.assert_ends(wizard)
                self.assertEqual(self.staging_folders(), [])


def change_text(library, old, new):
    """Exchanges a text of a resource library for another one of the same length."""
    content = library.read_bytes()
    assert old.encode("utf-16-le") in content and len(old) == len(new)
    library.write_bytes(content.replace(old.encode("utf-16-le"), new.encode("utf-16-le")))
