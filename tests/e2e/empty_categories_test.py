"""Categories of which a version or a package has nothing."""

import json
import shutil

from machines import SandboxTest, small_sandbox

GONE = ("Document Template", "Property Templates", "Custom materials", "Custom Parts Library",
        "Catalog Library")


class EmptyCategoriesTest(SandboxTest):
    def setUp(self):
        super().setUp()
        self.machine = small_sandbox(self.folder / "machine")

    def export(self, *choice):
        return self.machine.run("export", "--version", "2026", *choice, "--output", self.package)

    def template(self):
        template = self.machine.product_roaming / "en-us" / "Template" / "own.prt"
        template.parent.mkdir(parents=True)
        template.write_bytes(b"the user's own")
        return template

    def import_into(self, *options):
        return self.machine.run("import", self.package, "--to", "2026", "--category",
                                "Document Template", "Cosmetic Thread", *options)

    def test_export_of_all_that_is_there_is_done_and_names_what_is_empty(self):
        done = self.export("--all")
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        for label in GONE[:2]:
            self.assertIn(f'Empty: "{label}": this version has nothing of it\n', done.stdout)
        self.assertNotIn('Empty: "Options"', done.stdout)

    def test_empty_category_that_was_asked_for_makes_an_export_partial(self):
        done = self.export("--category", "Options", "Document Template")
        self.assertEqual(done.returncode, 3, done.stderr)
        self.assertEqual(done.stderr,
                         'Not stored: "Document Template": this version has nothing of it\n')
        self.assertNotIn("Empty", done.stdout)

    def test_document_of_an_export_names_each_category_as_stored_or_empty(self):
        done = self.export("--all", "--json")
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        document = json.loads(done.stdout)
        outcomes = {item["label"]: item["outcome"] for item in document.pop("categories")}
        self.assertEqual({label for label, word in outcomes.items() if word == "empty"},
                         set(GONE))
        self.assertEqual(outcomes["Options"], "stored")
        self.assertEqual(document, {"verb": "export", "version": "2026", "exitStatus": 0,
                                    "package": str(self.package), "problems": [],
                                    "shared": False, "leftOut": []})
        asked = json.loads(self.export("--category", "Options", "Document Template",
                                       "--json").stdout)
        self.assertEqual(asked["exitStatus"], 3)
        self.assertEqual(asked["problems"], [
            'Not stored: "Document Template": this version has nothing of it'])
        self.assertEqual(asked["categories"], [{"label": "Options", "outcome": "stored"},
                                               {"label": "Document Template",
                                                "outcome": "empty"}])

    def test_import_that_empties_a_ticked_category_names_it_and_is_partial(self):
        self.export("--all")
        template = self.template()
        done = self.import_into()
        self.assertEqual(done.returncode, 3, done.stderr)
        self.assertEqual(done.stderr, "Document Template: emptied, since the package holds "
                                      "nothing of it\n")
        self.assertFalse(template.exists())
        self.assertEqual(self.machine.run("undo").returncode, 0)
        self.assertEqual(template.read_bytes(), b"the user's own")

    def test_dry_run_foresees_an_emptied_category_and_its_status(self):
        self.export("--all")
        template = self.template()
        done = self.import_into("--dry-run", "--json")
        self.assertEqual(done.returncode, 3, done.stderr)
        self.assertEqual(done.stderr, "Document Template: would be emptied, since the package "
                                      "holds nothing of it\n")
        document = json.loads(done.stdout)
        self.assertEqual(document["emptied"], ["Document Template"])
        self.assertEqual(document["exitStatus"], 3)
        self.assertTrue(template.exists())

    def test_category_that_is_empty_on_both_sides_is_no_finding(self):
        self.export("--all")
        done = self.import_into()
        self.assertEqual((done.returncode, done.stderr), (0, ""))

    def test_category_that_is_not_ticked_is_not_emptied(self):
        self.export("--all")
        template = self.template()
        done = self.machine.run("import", self.package, "--to", "2026", "--category",
                                "Cosmetic Thread")
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        self.assertTrue(template.exists())
        shutil.rmtree(template.parent)
