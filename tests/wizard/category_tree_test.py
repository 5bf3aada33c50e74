"""The tree of categories under real mouse clicks and key presses."""

from wizard import BACK, BACKUP, DESCRIPTION, EXPORT, NEXT, RESET, VERSIONS
from wizard import SELECT_ALL as ROOT_LABEL
from wizard_case import WizardCase

CATEGORIES_2026 = ["Options", "Register", "Interface layout", "Document Template", "Shortcut key",
                   "3DBOM Configuration", "Property Templates", "Custom materials",
                   "Custom Parts Library", "2D Draft Settings", "Catalog Library",
                   "Sheet Metal Library", "Cosmetic Thread"]


class ExportTreeTest(WizardCase):
    def setUp(self):
        super().setUp()
        self.wizard = self.open_wizard()
        self.wizard.start(EXPORT)
        self.version = self.wizard.page_control(VERSIONS)

    def enter_categories(self):
        self.wizard.press_button(NEXT)
        self.wizard.tree()

    def assert_checked(self, labels):
        self.wizard.wait_until(lambda wizard: wizard.tree().checked_labels() == labels,
                               f"{labels} to be checked, and nothing else")

    def assert_description(self, text):
        self.wizard.wait_until(lambda wizard: wizard.page_control(DESCRIPTION).text == text,
                               f"the description {text!r}")

    def test_everything_is_expanded_and_checked_at_first(self):
        self.enter_categories()
        self.assert_checked([ROOT_LABEL, *CATEGORIES_2026])
        tree = self.wizard.tree()
        self.assertEqual([item["depth"] for item in tree.items], [0] + [1] * 13)
        self.assertTrue(tree.items[0]["expanded"])
        self.assertTrue(tree.focused)
        self.assert_description("All settings.")

    def test_version_2025_has_no_bom_configuration(self):
        self.assertEqual(self.version.entries, ["2023", "2024", "2025", "2026"])
        self.assertEqual(self.version.text, "2026")
        self.screen.press("Up")
        self.enter_categories()
        labels = [label for label in CATEGORIES_2026 if label != "3DBOM Configuration"]
        self.assert_checked([ROOT_LABEL, *labels])

    def test_box_of_a_category_unticks_the_root_until_all_are_ticked(self):
        self.enter_categories()
        self.wizard.click_box("Options")
        self.assert_checked(CATEGORIES_2026[1:])
        self.assert_description("all the settings in the options dialog.")
        self.wizard.click_box("Options")
        self.assert_checked([ROOT_LABEL, *CATEGORIES_2026])

    def test_box_of_the_root_unticks_and_ticks_everything(self):
        self.enter_categories()
        self.wizard.click_box(ROOT_LABEL)
        self.assert_checked([])
        self.assert_description("All settings.")
        self.wizard.click_box("Catalog Library")
        self.assert_checked(["Catalog Library"])
        self.wizard.click_box(ROOT_LABEL)
        self.assert_checked([ROOT_LABEL, *CATEGORIES_2026])

    def test_label_changes_the_description_and_the_selection_only(self):
        self.enter_categories()
        self.wizard.click_label("Shortcut key")
        self.assert_description("all the shortcut key related settings.")
        self.assert_checked([ROOT_LABEL, *CATEGORIES_2026])
        self.assertTrue(self.wizard.tree().item("Shortcut key")["has_caret"])
        self.wizard.click_label(ROOT_LABEL)
        self.wizard.wait_until(lambda wizard: wizard.tree().item(ROOT_LABEL)["has_caret"],
                               "the root to be selected")
        self.assert_description("all the shortcut key related settings.")

    def test_space_key_toggles_one_box_and_nothing_else(self):
        self.enter_categories()
        self.screen.press("Down", "Down", "space")
        self.assert_checked([ROOT_LABEL, "Options", *CATEGORIES_2026[2:]])
        self.assert_description("All settings.")

    def test_tree_is_built_anew_and_the_staging_folder_kept_after_back_and_next(self):
        self.enter_categories()
        self.wizard.click_box(ROOT_LABEL)
        self.assert_checked([])
        staging = self.staging_folders()
        self.wizard.press_button(BACK)
        self.wizard.page_control(VERSIONS)
        self.assertEqual((len(staging), self.staging_folders()), (1, staging))
        self.enter_categories()
        self.assert_checked([ROOT_LABEL, *CATEGORIES_2026])


class ResetTreeTest(WizardCase):
    def test_reset_page_offers_every_category_and_a_backup(self):
        wizard = self.open_wizard()
        wizard.start(RESET)
        self.assertEqual(wizard.box().text, "Carrovan")
        self.assertIn("the current settings cannot be restored", wizard.answer())
        self.assertEqual(wizard.tree().checked_labels(), [ROOT_LABEL, *CATEGORIES_2026])
        self.assertEqual(wizard.page_control(BACKUP).text, "One click backup of all settings")
        wizard.press_button(NEXT)
        self.assertIn("at least once after reset", wizard.answer("No"))
        self.assertEqual(wizard.tree().checked_labels(), [ROOT_LABEL, *CATEGORIES_2026])
