"""Comparing packages with each other and with what a machine has."""

import json
import tempfile
import unittest
import zipfile
from pathlib import Path

from machines import SandboxTest, make_sandbox, run_cli
from package_edit import (GENERAL, GENERAL_KEY, copy_package, items, registry_bytes,
                          with_lines)

RIBBON = r"Roaming\Vantric\VANTRIC\28.0\en-us\Customization\VANTRIC-Assembly.xml"
OPPOSITE = {"only in first": "only in second", "only in second": "only in first"}


class DiffTest(SandboxTest):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.machine = make_sandbox(Path(folder.name) / "machine", "--user", "张伟")
        cls.exported = Path(folder.name) / "设置.ucex"
        done = cls.machine.export_all(cls.exported)
        assert done.returncode == 0, done.stderr

    def changed_items(self, changes):
        return copy_package(self.exported, self.folder / "changed.ucex", changes)

    def diff_json(self, *arguments, status=3):
        done = self.machine.run("diff", *arguments, "--json")
        self.assertEqual((done.returncode, done.stderr), (status, ""))
        return json.loads(done.stdout)

    def only_item(self, found):
        self.assertEqual([len(category["items"]) for category in found["categories"]], [1])
        return found["categories"][0]["label"], found["categories"][0]["items"][0]

    def test_package_does_not_differ_from_itself(self):
        done = run_cli("diff", self.exported, self.exported)
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        self.assertEqual(done.stdout.splitlines()[-1], "No difference")

    def test_samples_do_not_differ_from_themselves_and_differ_alike_both_ways(self):
        packages = []
        for seed in ("2", "3"):
            machine = make_sandbox(self.folder / seed, "--seed", seed, "--scale", "0.1",
                                   "--user", f"O'Brien {seed}")
            packages.append(self.folder / f"{seed}.ucex")
            self.assertEqual(machine.export_all(packages[-1]).returncode, 0)
            self.assertTrue(self.diff_json(packages[-1], packages[-1], status=0)["same"])
        forth = self.diff_json(packages[0], packages[1])
        back = self.diff_json(packages[1], packages[0])
        self.assertEqual(mirrored(forth), seen(back))
        self.assertEqual(mirrored(back), seen(forth))
        self.assertGreater(len(seen(forth)), 100)

    def test_package_is_compared_with_the_version_that_it_came_from(self):
        done = self.machine.run("diff", self.exported, "--version", "2026")
        self.assertEqual((done.returncode, done.stderr), (0, ""), done.stdout)
        self.assertIn("Second      version 2026: Vantric VANTRIC 2026 (28.0)", done.stdout)
        self.assertEqual(self.machine.temporary_files(), [])

    def test_only_the_categories_of_the_package_are_read_from_the_machine(self):
        package = self.folder / "thread.ucex"
        self.machine.run("export", "--version", "2026", "--category", "Cosmetic Thread",
                         "--output", package)
        self.assertTrue(self.diff_json(package, "--version", "2026", status=0)["same"])

    def test_versions_of_other_releases_are_compared_under_what_their_names_mean(self):
        found = self.diff_json(self.exported, "--version", "2025")
        pairs = [(item["first"], item["second"]) for category in found["categories"]
                 for item in category["items"]]
        self.assertIn((r"Register\VANTRIC2026.reg", r"Register\VANTRIC2025.reg"), pairs)
        self.assertIn((RIBBON, RIBBON.replace("28.0", "27.0")), pairs)
        roots = {node["path"] for category in found["categories"] for item in category["items"]
                 for node in item["nodes"]}
        self.assertNotIn("/VANTRIC28.0", roots)
        self.assertEqual(self.machine.temporary_files(), [])

    def test_two_versions_are_compared(self):
        found = self.diff_json("--version", "2025", "--version", "2026")
        self.assertEqual([found[side]["name"] for side in ("first", "second")],
                         ["version 2025", "version 2026"])
        self.assertEqual(self.machine.temporary_files(), [])

    def test_registry_values_are_named_with_both_texts(self):
        content = with_lines(items(self.exported)[GENERAL], GENERAL_KEY, '"New"="a\\\\b"')
        content = content.replace('"Font"="'.encode("utf-16-le"), '"Font"="x'.encode("utf-16-le"))
        label, item = self.only_item(
            self.diff_json(self.exported, self.changed_items({GENERAL: content})))
        self.assertEqual((label, item["first"], item["change"]), ("Options", GENERAL, "changed"))
        values = {value["name"]: value for value in item["values"]}
        self.assertEqual(values["New"], {"change": "only in second", "key": GENERAL_KEY[1:-1],
                                         "name": "New", "first": None, "second": '"a\\\\b"'})
        font = values["Font"]
        self.assertEqual(font["second"], '"x' + font["first"][1:])
        self.assertEqual(len(values), 2)

    def test_nodes_of_documents_are_named_with_both_texts(self):
        content = items(self.exported)[RIBBON].replace(b"<Style>", b"<Style>9", 1)
        label, item = self.only_item(
            self.diff_json(self.exported, self.changed_items({RIBBON: content})))
        self.assertEqual(label, "Interface layout")
        [node] = item["nodes"]
        self.assertEqual(node["change"], "changed")
        self.assertRegex(node["path"], r"^/VANTRIC28\.0/EyeRibbonState-0\[ID='1'\]/.*/Style$")
        self.assertEqual(node["second"], "9" + node["first"])

    def test_other_files_are_named_with_their_sizes(self):
        name = next(name for name in items(self.exported) if name.endswith(".prt"))
        changed = self.changed_items({name: b"short"})
        done = run_cli("diff", self.exported, changed)
        self.assertEqual((done.returncode, done.stderr), (3, ""))
        self.assertRegex(done.stdout, r"  ~ .*\.prt \(\d+ -> 5 bytes\): the content differs\n")

    def test_what_a_terminal_obeys_is_escaped(self):
        value = '"quo\\"te\u202e"="\u202etxt.exe\x1b[31m \u200f\u2028x"'
        content = with_lines(items(self.exported)[GENERAL], GENERAL_KEY, value)
        done = run_cli("diff", self.exported, self.changed_items({GENERAL: content}))
        self.assertEqual(done.returncode, 3)
        self.assertIn(r'"quo"te\u202e": "\u202etxt.exe\u001b[31m \u200f\u2028x"', done.stdout)
        self.assertFalse(set("\u202e\x1b\u200f\u2028") & set(done.stdout))

    def test_mark_of_direction_in_an_entry_name_is_escaped(self):
        done = run_cli("diff", self.exported, self.changed_items({"Local\\件\u202e.txt": b"x"}))
        self.assertEqual(done.returncode, 3)
        self.assertIn(r"Local\件\u202e.txt", done.stdout)

    def test_what_is_not_understood_is_named(self):
        changed = self.changed_items({GENERAL: b"no registry file", RIBBON: b"<a>"})
        done = run_cli("diff", self.exported, changed)
        self.assertEqual((done.returncode, done.stderr), (3, ""))
        self.assertIn(": the second is not a registry file\n", done.stdout)
        self.assertIn(": the second is no document: ", done.stdout)

    def test_very_long_registry_file_is_compared_byte_by_byte(self):
        long = registry_bytes(GENERAL_KEY) + "\r\n".encode("utf-16-le") * (4 << 20)
        changed = self.changed_items({GENERAL: long})
        done = run_cli("diff", self.exported, changed)
        self.assertEqual((done.returncode, done.stderr), (3, ""))
        self.assertIn("too long to be compared but byte by byte", done.stdout)

    def test_misuse_is_status_two(self):
        for arguments in ((self.exported,), (), (self.exported, self.exported, self.exported),
                          (self.exported, self.exported, "--version", "2026")):
            done = self.machine.run("diff", *arguments)
            self.assertEqual((done.returncode, done.stdout), (2, ""))

    def test_what_cannot_be_compared_is_status_one(self):
        absurd = self.folder / "absurd.ucex"
        absurd.write_bytes(b"no package")
        legacy = self.folder / "old.ucx"
        with zipfile.ZipFile(legacy, "w") as archive:
            archive.writestr("Scene_UI.xml", "<a/>")
        for other, reason in ((absurd, "is not a package"), (self.folder / "none", "is missing"),
                              (legacy, "only be compared with another one")):
            self.assert_refused(run_cli("diff", self.exported, other), 1, reason)
        self.assert_refused(self.machine.run("diff", self.exported, "--version", "1999"), 1,
                            "not installed")
        self.assertEqual(self.machine.temporary_files(), [])


def seen(found):
    """Each thing that a comparison reports, without its texts' order of sides."""
    return sorted(lines(found, lambda change: change, ("first", "second")))


def mirrored(found):
    return sorted(lines(found, lambda change: OPPOSITE.get(change, change), ("second", "first")))


def lines(found, change, sides):
    for category in found["categories"]:
        for item in category["items"]:
            place = [str(item[side]) for side in sides]
            yield (change(item["change"]), *place)
            for value in item["values"]:
                yield (change(value["change"]), *place, value["name"],
                       *(str(value[side]) for side in sides))
            for node in item["nodes"]:
                yield (change(node["change"]), *place, str(node["attribute"]),
                       *(str(node[side]) for side in sides))


if __name__ == "__main__":
    unittest.main()
