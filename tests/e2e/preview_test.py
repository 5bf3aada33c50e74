"""A dry run reports what a run will change, and changes nothing."""

import json

from machines import SandboxTest, make_sandbox, snapshot
from playable import PlayableSandbox, assert_foreseen


class PreviewTest(SandboxTest):
    def setUp(self):
        super().setUp()
        self.sandbox = make_sandbox(self.folder / "machine")
        self.machine = PlayableSandbox(self.sandbox)

    def run_verb(self, *arguments, status=0):
        done = self.machine.run(*arguments)
        self.assertEqual(done.returncode, status, done.stderr)
        return done

    def dry_run(self, *arguments):
        before = snapshot(self.sandbox.root)
        done = self.run_verb(*arguments, "--dry-run")
        self.assertEqual(snapshot(self.sandbox.root), before)
        self.assertEqual(self.sandbox.temporary_files(), [])
        return done

    def foreseen(self, *arguments):
        return json.loads(self.dry_run(*arguments, "--json").stdout)

    def test_dry_import_foretells_the_import_and_changes_nothing(self):
        self.run_verb("export", "--version", "2025", "--all", "--output", self.package)
        arguments = ("import", self.package, "--to", "2026", "--all")
        foreseen = self.foreseen(*arguments)
        before = self.machine.state()
        self.run_verb(*arguments)
        assert_foreseen(self, foreseen, before, self.machine.state())
        self.assertTrue(foreseen["dryRun"])
        merged = [file for category in foreseen["categories"] for file in category["files"]
                  if file["change"] == "merged"]
        self.assertTrue(merged)

    def test_dry_reset_foretells_the_reset_and_needs_no_yes(self):
        arguments = ("reset", "--category", "Options", "Interface layout")
        foreseen = self.foreseen(*arguments)
        before = self.machine.state()
        self.run_verb(*arguments, "--yes")
        assert_foreseen(self, foreseen, before, self.machine.state())
        labels = {category["label"] for category in foreseen["categories"]}
        self.assertEqual(labels, {"Options", "Interface layout"})

    def test_dry_run_is_told_for_people_too(self):
        self.run_verb("export", "--version", "2025", "--all", "--output", self.package)
        arguments = ("import", self.package, "--to", "2026", "--all")
        summary = self.dry_run(*arguments).stdout.splitlines()
        self.assertTrue(summary.pop().endswith("of which --details lists each item."))
        labels = [category["label"] for category in self.foreseen(*arguments)["categories"]]
        self.assertEqual([line.split(":")[0] for line in summary], [*labels, "Paths"])
        done = self.dry_run(*arguments, "--details")
        self.assertEqual(done.stdout.splitlines()[:len(summary) + 2], [*summary, "", labels[0]])
        for word in ("added", "replaced", "merged", "removed", "value changed", "value dropped"):
            self.assertIn(f"  {word} ", done.stdout)
        self.assertTrue(done.stdout.splitlines()[-1].startswith("Nothing was changed"))

    def test_details_are_those_of_a_dry_run_only(self):
        self.assertEqual(self.machine.run("reset", "--all", "--yes", "--details").returncode, 2)

    def test_dry_run_of_a_refused_import_is_refused(self):
        self.run_verb("export", "--version", "2026", "--all", "--output", self.package)
        done = self.machine.run("import", self.package, "--to", "2024", "--all", "--dry-run")
        self.assertEqual((done.returncode, done.stdout), (1, ""))

    def test_dry_run_leaves_no_restore_point(self):
        self.dry_run("reset", "--all")
        self.assertIn("There are no restore points", self.run_verb("restore-points").stdout)


if __name__ == "__main__":
    import unittest
    unittest.main()
