"""The wizard on machines that lack what the product usually has."""

from wizard import EXPORT, FINISH, NEXT, SELECT_ALL, VERSIONS
from wizard_case import WizardCase, change_identity, package_content, windows_name


class OddMachineTest(WizardCase):
    def export(self, wizard, package, labels):
        wizard.click_box(SELECT_ALL)
        for label in labels:
            wizard.click_box(label)
        with wizard.with_registry_tool_awaited():
            wizard.press_button(FINISH)
            wizard.name_file(windows_name(package))
            self.assertIn("successfully exported", wizard.finish_text())

    def test_running_version_is_offered_alone_when_no_other_is_installed(self):
        folder = self.program_folder()
        change_identity(folder, "ProductName=VANTRIC", "ProductName=SOLITAIRE")
        wizard = self.open_wizard(folder)
        wizard.start(EXPORT)
        versions = wizard.page_control(VERSIONS)
        self.assertEqual((versions.entries, versions.text), (["2026"], "2026"))
        wizard.press_button(NEXT)
        self.assertEqual(len(wizard.tree().checked_labels()), 14)

    def test_without_language_folders_what_belongs_to_no_language_is_exported(self):
        folder = self.program_folder()
        change_identity(folder, "StartupFolder=C:\\Program Files\\ORMA\\VANTRIC 2026\\Bin",
                        "StartupFolder=C:\\Nowhere\\VANTRIC 2026\\Bin")
        wizard = self.open_wizard(folder)
        wizard.start(EXPORT)
        wizard.press_button(NEXT)
        labels = ("Register", "Interface layout", "Shortcut key", "Custom Parts Library")
        package = self.package("languageless.ucex")
        self.export(wizard, package, labels)
        names = [name for name, _ in package_content(package)]
        self.assertTrue(any("Customization" in name for name in names))
        self.assertFalse(any("ToolBox" in name for name in names))
        expected = self.package("expected.ucex")
        choice = [part for label in labels for part in ("--category", label)]
        self.run_cli("export", "--version", "2026", *choice, "--output", windows_name(expected),
                     folder=folder, status=3)  # some categories have nothing to store
        self.assertEqual(package_content(package), package_content(expected))
