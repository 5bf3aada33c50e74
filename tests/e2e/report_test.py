"""The page about a run: what it says, when it is written, and that nothing in it acts."""

import base64
import hashlib
import json
import os
import re
import stat
import zipfile
from html.parser import HTMLParser

from machines import AS_PLAIN_USER, SandboxTest, run_cli, small_sandbox

SOURCE_LINE = "report/page_frame.cpp: style-src 'sha256-{}', script-src 'sha256-{}'"


class Page(HTMLParser):
    """The elements of a page with their attributes, and the text of some of them."""

    def __init__(self, text):
        super().__init__(convert_charrefs=True)
        self.elements = []
        self.texts = {"style": "", "script": "", "title": "", "h1": "", "dl": ""}
        self.open = []
        self.all_text = ""
        self.feed(text)

    def handle_starttag(self, tag, attrs):
        self.elements.append((tag, dict(attrs)))
        self.open.append(tag)

    def handle_endtag(self, tag):
        while self.open and self.open.pop() != tag:
            pass

    def handle_data(self, data):
        for tag in self.texts:
            if tag in self.open:
                self.texts[tag] += data
        if not {"style", "script"} & set(self.open):
            self.all_text += data

    def items(self, kind):
        return [attrs for _, attrs in self.elements if attrs.get("data-kind") == kind]

    def classes(self):
        return " ".join(attrs.get("class") or "" for _, attrs in self.elements)


def sum_of(text):
    return base64.b64encode(hashlib.sha256(text.encode()).digest()).decode()


class ReportTest(SandboxTest):
    def setUp(self):
        super().setUp()
        self.machine = small_sandbox(self.folder / "machine")
        self.html = self.folder / "page.html"

    def run_verb(self, *arguments, status=0):
        done = self.machine.run(*arguments)
        self.assertEqual(done.returncode, status, done.stderr)
        return done

    def page(self, *arguments, status=0):
        self.run_verb(*arguments, "--report", self.html, status=status)
        return Page(self.html.read_text("utf-8"))

    def export(self):
        self.run_verb("export", "--version", "2025", "--all", "--output", self.package)

    def import_all(self, year="2026"):
        return "import", self.package, "--to", year, "--all"

    def test_page_of_a_comparison_shows_what_only_one_has_and_what_differs(self):
        self.export()
        done = json.loads(self.run_verb("diff", self.package, "--version", "2026", "--json",
                                        status=3).stdout)
        page = self.page("diff", self.package, "--version", "2026", status=3)
        self.assertIn("They differ", page.all_text)
        for kind in ("only in first", "only in second", "changed"):
            values = [value for category in done["categories"] for item in category["items"]
                      for value in item["values"] if value["change"] == kind]
            self.assertGreaterEqual(len(page.items(kind)), min(len(values), 1))
        self.assertTrue(page.items("changed"))
        same = self.page("diff", self.package, self.package)
        self.assertIn("No difference", same.all_text)

    def test_page_of_an_import_names_its_paths(self):
        self.export()
        new_place = r"C:\Users"
        page = self.page(*self.import_all(), "--dry-run", "--map", rf"D:\NoSuchFolder={new_place}")
        self.assertIn("Paths in the package", page.all_text)
        self.assertTrue(page.items("kept"))

    def test_page_of_a_dry_run_shows_every_change_and_its_kind(self):
        self.export()
        foreseen = json.loads(self.run_verb(*self.import_all(), "--dry-run", "--json").stdout)
        page = self.page(*self.import_all(), "--dry-run")
        for kind in ("added", "replaced", "merged", "removed", "changed", "dropped"):
            expected = sum(
                item.get("change", "dropped") == kind
                for category in foreseen["categories"]
                for items in (category["files"], category["keys"], category["values"],
                              category["dropped"]) for item in items)
            self.assertEqual(len(page.items(kind)), expected, kind)
        self.assertIn("Tried out only: nothing was changed", page.all_text)
        for fact in ("From version2025", "To version2026", str(self.package)):
            self.assertIn(fact, page.texts["dl"].replace("\n", ""))
        self.assertRegex(page.texts["dl"], r"20\d\d-\d\d-\d\d \d\d:\d\d:\d\d UTC")

    def test_merged_documents_are_trees_that_mark_what_is_new(self):
        self.export()
        page = self.page(*self.import_all(), "--dry-run")
        merged = len(page.items("merged"))
        self.assertGreater(merged, 3)
        trees = [attrs for tag, attrs in page.elements
                 if tag == "details" and attrs.get("class") == "tree"]
        self.assertEqual(len(trees), merged)
        self.assertRegex(page.all_text, r"Merged document: [1-9]\d* new elements, \d+ changed")
        self.assertGreater(page.classes().count("mark"), merged)

    def test_page_of_a_run_shows_the_same_as_that_of_its_trial(self):
        self.export()
        trial = self.page(*self.import_all(), "--dry-run")
        page = self.page(*self.import_all(), "--verify")
        for kind in ("replaced", "merged", "removed", "changed", "dropped"):
            self.assertEqual(page.items(kind), trial.items(kind))
        point, = json.loads(self.run_verb("restore-points", "--json").stdout)
        self.assertIn(point["id"], page.texts["dl"])
        self.assertRegex(page.texts["dl"], r"Read back\d+ items, 0 not as")
        self.assertIn("Done", page.all_text)
        undo = self.page("undo", "--dry-run")
        self.assertIn("Tried out only", undo.all_text)
        self.assertEqual(len(undo.items("changed")), len(page.items("changed")))
        undone = self.page("undo")
        self.assertIn("Done", undone.all_text)
        for kind in ("added", "replaced", "removed", "changed"):
            self.assertEqual(undone.items(kind), undo.items(kind))

    def test_dry_undo_changes_nothing_and_foretells_the_undo(self):
        self.export()
        self.run_verb(*self.import_all())
        before = json.loads(self.run_verb("restore-points", "--json").stdout)
        tried = json.loads(self.run_verb("undo", "--dry-run", "--json").stdout)
        self.assertTrue(tried["dryRun"])
        self.assertNotIn("Restore", json.dumps(tried["categories"]))
        self.assertEqual(json.loads(self.run_verb("restore-points", "--json").stdout), before)
        done = json.loads(self.run_verb("undo", "--json").stdout)
        self.assertEqual(done["restored"], tried["restored"])
        self.assertGreater(done["restored"], 0)
        again = self.run_verb("undo", "--dry-run").stdout
        self.assertEqual(again, "Nothing was changed; a run would change nothing.\n")

    def test_refused_run_says_why(self):
        self.export()
        page = self.page(*self.import_all("2024"), status=1)
        self.assertIn("Refused: nothing was changed", page.all_text)
        self.assertIn("Downgrading is not supported", page.all_text)

    def test_package_that_is_not_trusted_says_why(self):
        self.export()
        with zipfile.ZipFile(self.package, "a") as package:
            package.writestr("..\\x<script>", b"x")
        page = self.page(*self.import_all(), status=1)
        self.assertIn("Refused: nothing was changed", page.all_text)
        inspected = self.page("inspect", self.package, status=1)
        self.assertTrue(inspected.items("refused") + inspected.items("not trusted"))
        self.assertIn("x<script>", inspected.all_text)

    def test_page_of_a_package_shows_its_entries(self):
        self.export()
        page = self.page("inspect", self.package)
        with zipfile.ZipFile(self.package) as package:
            self.assertEqual(len(page.items("held")), len(package.namelist()))
        self.assertIn("Vantric VANTRIC", page.texts["dl"])

    def test_page_of_a_reset_shows_what_was_removed(self):
        page = self.page("reset", "--category", "Options", "--yes")
        self.assertTrue(page.items("removed") + page.items("changed"))
        self.assertIn("Done", page.all_text)

    def test_names_of_a_package_stay_text(self):
        self.export()
        hostile = "</script><script>document.title='sentinel'</script><img src=x onerror=y>\u202e"
        with zipfile.ZipFile(self.package, "a") as package:
            package.writestr(hostile, b"x")
        page = self.page("inspect", self.package)
        tags = [tag for tag, _ in page.elements]
        self.assertEqual(tags.count("script"), 1)
        self.assertNotIn("img", tags)
        self.assertIn("<script>document.title='sentinel'<", page.all_text)
        self.assertIn("\\u202E", page.all_text)
        self.assertNotIn("\u202e", self.html.read_text("utf-8"))

    def test_policy_names_the_style_and_the_script_by_their_sums(self):
        self.export()
        page = self.page("inspect", self.package)
        policy = next(attrs["content"] for tag, attrs in page.elements
                      if attrs.get("http-equiv") == "Content-Security-Policy")
        sums = [sum_of(page.texts[tag]) for tag in ("style", "script")]
        self.assertEqual(re.findall(r"'sha256-([^']*)'", policy), sums, SOURCE_LINE.format(*sums))
        self.assertTrue(policy.startswith("default-src 'none';"))
        for _, attrs in page.elements:
            self.assertFalse({"src", "href", "style", "srcset", "data"} & attrs.keys()
                             - ({"href"} if attrs.get("href", "").startswith("#c") else set()))
            self.assertFalse([name for name in attrs if name.startswith("on")])

    def test_page_that_cannot_be_written_is_refused_before_anything_changes(self):
        self.export()
        read_only = self.folder / "read-only.html"
        read_only.write_text("mine")
        read_only.chmod(stat.S_IREAD)
        folder = self.folder / "folder.html"
        folder.mkdir()
        for path in (self.folder / "missing" / "page.html", read_only, folder):
            for verb in (self.import_all(), (*self.import_all(), "--dry-run"),
                         ("reset", "--all", "--yes"), ("inspect", self.package)):
                done = run_cli("--root", self.machine.root, *verb, "--report", path,
                               wrapper=AS_PLAIN_USER)
                self.assert_refused(done, 1, f"The report cannot be written: {path}: ")
        self.assertEqual(read_only.read_text(), "mine")
        self.assertIn("There are no restore points", self.run_verb("restore-points").stdout)
        self.assertEqual(sorted(os.listdir(self.folder)),
                         ["folder.html", "machine", "read-only.html", "settings.ucex"])

    def test_undo_whose_page_cannot_be_written_is_refused(self):
        self.export()
        self.run_verb(*self.import_all())
        done = self.machine.run("undo", "--report", self.folder / "missing" / "page.html")
        self.assert_refused(done, 1, "The report cannot be written: ")
        point, = json.loads(self.run_verb("restore-points", "--json").stdout)
        self.assertEqual(point["state"], "finished")

    def test_report_that_fails_afterwards_leaves_the_run_done(self):
        # The reset removes this folder, which was there when the page's place was looked at.
        inside = self.machine.product_local / "en-us" / "CosmeticThread"
        self.assertTrue(inside.is_dir())
        done = self.machine.run("reset", "--category", "Cosmetic Thread", "--yes",
                                "--report", inside / "page.html")
        self.assertFalse(inside.exists())
        self.assertEqual(done.returncode, 3, done.stderr)
        self.assertIn("The report cannot be written: ", done.stderr)
        self.assertIn("Cosmetic Thread: reset\n", done.stdout)

    def test_page_has_the_name_of_a_page(self):
        self.export()
        done = self.machine.run(*self.import_all(), "--report", self.package)
        self.assertEqual((done.returncode, done.stdout), (2, ""))
        self.assertTrue(zipfile.is_zipfile(self.package))


if __name__ == "__main__":
    import unittest
    unittest.main()
