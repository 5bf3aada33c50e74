"""Whole imports and resets: what a machine holds afterwards is exactly what it should."""

import json
import re
import zipfile

import expected_package
from expected_machine import FOLDER_OF, ExpectedImport, Versions
from machines import SandboxTest, make_sandbox
from playable import PlayableSandbox, differences, play_2024_to_2025, play_tour


class WholeRunTest(SandboxTest):
    def setUp(self):
        super().setUp()
        self.machine = PlayableSandbox(make_sandbox(self.folder / "machine"))

    def run_verb(self, *arguments):
        done = self.machine.run(*arguments)
        self.assertEqual(done.returncode, 0, done.stderr)
        return done

    def assert_state(self, expected):
        self.assertEqual(differences(expected, self.machine.state()), [])

    def test_tour_from_2025_to_2026_with_a_backup_and_a_reset(self):
        play_tour(self, self.machine, self.folder)

    def test_tour_from_2024_to_2025(self):
        play_2024_to_2025(self, self.machine, self.folder)

    def test_unticked_categories_stay_and_what_is_nobodys_comes(self):
        """Each of the thirteen is unticked at least once; the package holds other settings of all
        of them."""
        other = make_sandbox(self.folder / "other", "--seed", "2")
        other.export_all(self.package)
        nobodys = "Vantric/VANTRIC/28.0/en-us/Elsewhere/x.dat"
        with zipfile.ZipFile(self.package, "a") as archive:
            archive.writestr("Local\\" + nobodys.replace("/", "\\"), b"nobody's")
        for ticked in ("Cosmetic Thread", "Document Template"):
            before = self.machine.state()
            importing = ExpectedImport(self.machine, self.package, Versions("2026", "2026"),
                                       self.folder / "merges")
            self.assertEqual(len(importing.labels), 13)
            expected = importing.apply([name for name in importing.labels if name != ticked])
            self.run_verb("import", self.package, "--to", "2026", "--category", ticked)
            self.assert_state(expected)
            after = self.machine.state()
            self.assertEqual(after.files[f"Local/{nobodys}"], b"nobody's")
            self.assertEqual(after.registry, before.registry)
            subfolder = FOLDER_OF[ticked][1].rpartition("/")[2]
            changed = {path for path in before.files.keys() | after.files.keys()
                       if before.files.get(path, "none") != after.files.get(path, "none")}
            self.assertTrue(changed)
            self.assertEqual([path for path in sorted(changed) if f"/{subfolder}/" not in path
                              and "/Elsewhere" not in path], [])

    def test_import_of_the_same_release_is_silent_on_standard_error(self):
        self.run_verb("export", "--version", "2026", "--all", "--output", self.package)
        done = self.run_verb("import", self.package, "--to", "2026", "--all")
        self.assertEqual(done.stderr, "")
        self.assertEqual(done.stdout.splitlines()[:len(expected_package.LABELS)],
                         [f"{label}: imported" for label in expected_package.LABELS])
        self.assertTrue(done.stdout.endswith(
            "Your settings have been successfully imported to  VANTRIC 2026.\n"), done.stdout)

    def test_what_an_import_reports_stays_in_the_restore_point_and_is_printed_when_asked_for(self):
        self.run_verb("export", "--version", "2025", "--all", "--output", self.package)
        arguments = ("import", self.package, "--to", "2026", "--all")
        result = r"Options: imported\n(.*\n)*"
        self.assertRegex(self.run_verb(*arguments).stdout, rf"\A{result}\Z")
        point, = json.loads(self.run_verb("restore-points", "--json").stdout)
        log = next(self.machine.sandbox.local.glob("Carrovan/Restore/*/log.txt")).read_text("utf-8")
        self.assertIn("\nSuccessfully replaced 5 user paths\n", log)
        self.run_verb("undo")
        printed = self.run_verb(*arguments, "--verbose", "--no-restore-point").stdout
        # Each run works in a folder of its own.
        own = re.compile(r"[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}")
        self.assertTrue(own.sub("", printed).startswith(own.sub("", log)), printed)
        self.assertRegex(own.sub("", printed)[len(own.sub("", log)):], rf"\A{result}\Z")
        self.assertEqual(point["state"], "finished")

    def test_reset_names_every_category_and_what_was_done_with_it(self):
        done = self.run_verb("reset", "--category", "Cosmetic Thread", "--yes")
        self.assertEqual(done.stderr, "")
        for label in expected_package.LABELS:
            outcome = "reset" if label == "Cosmetic Thread" else "kept"
            self.assertIn(f"{label}: {outcome}\n", done.stdout)
        self.assertIn("VANTRIC 2026 Relevant settings selected have been reset. \n\n"
                      "Settings take effect after restarting ", done.stdout)

    def test_round_trip_gives_back_every_category(self):
        before = self.machine.state()
        self.run_verb("export", "--version", "2026", "--all", "--output", self.package)
        self.run_verb("reset", "--all", "--yes")
        expected = ExpectedImport(self.machine, self.package, Versions("2026", "2026"),
                                  self.folder / "merges").apply(())
        self.run_verb("import", self.package, "--to", "2026", "--all")
        self.assert_state(expected)

        lines = differences(before, self.machine.state())
        unexpected = [line for line in lines if not line.startswith(self.DROPPED)]
        self.assertEqual(unexpected, [])
        self.assertFalse([line for line in lines if " became None" in line], "a value is lost")

    LOCAL = "Local/Vantric/VANTRIC/28.0"
    ROAMING = "Roaming/Vantric/VANTRIC/28.0"
    DRAFT = "ORMA/ORMA CAD TVRN-INT-VANTRIC 2026 (x64)/28.0"
    LIVE_KEY = r"value HKEY_CURRENT_USER\SOFTWARE\Vantric\VANTRIC 28.0"
    # What a round trip changes on purpose.
    DROPPED = (
        # Files named ".config" belong to one machine and never enter a package.
        f"file missing: {ROAMING}/en-us/Customization/user.config",
        f"file missing: {ROAMING}/zh-cn/Customization/user.config",
        f"file missing: Local/{DRAFT}/tools.config",
        f"file missing: Roaming/{DRAFT}/tools.config",
        # A package holds files; folders only exist around them.
        f"file missing: {LOCAL}/zh-cn/ToolBox/Empty Folder",
        # With no shortcuts of the user's own, the product's own free ones are merged in.
        f"content of {LOCAL}/Customization/",
        # A factory default that the user's key did not have stays.
        rf"{LIVE_KEY} 'FirstRun': None became",
    )
