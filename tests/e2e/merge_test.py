"""The merge verbs of the command line, as a script uses them."""
import json
import os
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path
from xml.etree import ElementTree

ROOT = Path(__file__).resolve().parents[2]
PROGRAM = os.environ.get("CARROVAN_CLI", str(ROOT / "build/host-check/carrovan-cli"))


def run(*arguments, stdin=b"", locale="C", timeout=None):
    environment = {**os.environ, "LC_ALL": locale}
    return subprocess.run([PROGRAM, *map(str, arguments)], input=stdin, capture_output=True,
                          env=environment, check=False, timeout=timeout)


class MergeVerbs(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)

    def put(self, name, text):
        path = self.folder / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(text if isinstance(text, bytes) else text.encode())
        return path

    def test_merge_xml_writes_the_document_and_nothing_else(self):
        old = self.put("old.xml", "<r><a>old</a><b/></r>")
        new = self.put("new.xml", "<r>\n  <a>new</a>\n</r>")
        done = run("merge-xml", old, new, self.folder / "out.xml")
        self.assertEqual((done.returncode, done.stdout, done.stderr), (0, b"", b""))
        self.assertEqual((self.folder / "out.xml").read_text(), "<r><a>old</a><b/></r>\n")

    def test_merge_xml_keeps_names_that_the_new_encoding_lacks(self):
        old = self.put("old.xml", "<r><快捷键><!--全图--></快捷键></r>")
        new = self.put("new.xml", '<?xml version="1.0" encoding="ISO-8859-1"?><r>\xe9</r>'
                       .encode("latin-1"))
        done = run("merge-xml", old, new, self.folder / "out.xml")
        self.assertEqual((done.returncode, done.stdout, done.stderr), (0, b"", b""))
        merged = ElementTree.parse(self.folder / "out.xml").getroot()
        self.assertEqual([merged.text, merged[0].tag], ["é", "快捷键"])
        self.assertEqual((self.folder / "out.xml").read_text("utf-8"),
                         '<?xml version="1.0" encoding="UTF-8"?>\n'
                         "<r>é<快捷键><!--全图--></快捷键></r>\n")

    def test_merge_xml_logs_why_it_failed(self):
        not_the_encoding = b'<?xml version="1.0" encoding="EUC-JP"?><a>\xff\xff\x8f\xff</a>'
        for content in ("<r>", not_the_encoding):
            with self.subTest(content):
                old = self.put("old.xml", content)
                new = self.put("new.xml", "<r/>")
                done = run("merge-xml", old, new, self.folder / "out.xml")
                self.assertEqual(done.returncode, 1)
                self.assertEqual(done.stdout.decode(), f"Failed to load old XML file: {old}\n")
                self.assertEqual(done.stderr.count(b"\n"), 1)
                self.assertFalse((self.folder / "out.xml").exists())

    def test_merge_folders_log_reaches_a_pipe_whole_in_any_locale(self):
        self.put("旧版本/功能区.xml", "<r><t>旧</t></r>")
        self.put("新版本/功能区.xml", "<r><t>新</t></r>")
        self.put("新版本/😀.xml", "<r/>")
        old = self.folder / "旧版本"
        done = run("merge-folders", old, self.folder / "新版本")
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertEqual(done.stdout.decode().split("\n"), [
            "Old folder contains 1 XML files",
            "New folder contains 2 XML files",
            "", "=== Merging common files ===",
            "Merging: 功能区.xml", "Successfully merged: 功能区.xml",
            "", "=== Copying new files ===", "Copied new file: 😀.xml",
            "", "=== Identifying obsolete files ===",
            "", "=== Creating backup ===", f"Backup created at: {old}_backup",
            "", "=== Cleaning old folder ===",
            "", "=== Updating old folder ===", "Updated: 功能区.xml", "Updated: 😀.xml",
            "", "=== Merge and Sync Summary ===",
            "Successfully merged: 1 out of 1 common files",
            "New files copied: 1",
            "Obsolete files deleted: 0",
            f"Backup location: {old}_backup",
            "Final file count in old folder: 2 files", ""])
        self.assertEqual((old / "功能区.xml").read_text(), "<r><t>旧</t></r>\n")
        self.assertFalse((self.folder / "旧版本_merged_temp").exists())

    def test_pipes_that_are_named_like_documents_are_passed_over(self):
        table = ("<V28.0><Accels-0><Command>{0}</Command><Ctrl>1</Ctrl><Key>{0}</Key></Accels-0>"
                 "<Count>1</Count></V28.0>")
        for number, side in (("1", "old"), ("2", "new")):
            self.put(f"{side}/keys.xml", table.format(number))
            os.mkfifo(self.folder / side / "p.xml")
        for verb in (("merge-shortcuts", self.folder / "old", self.folder / "new", "V28.0"),
                     ("merge-folders", self.folder / "old", self.folder / "new")):
            done = run(*verb, timeout=60)
            self.assertEqual((done.returncode, done.stderr), (0, b""), verb)
            self.assertNotIn(b"p.xml", done.stdout)
        done = run("rewrite", self.folder / "old", "--product", "V", "--package-release", "2024",
                   "--package-internal", "26.0", "--target-release", "2026", "--target-internal",
                   "28.0", "--drafting-folder", "none", timeout=60)
        self.assertEqual((done.returncode, done.stderr), (0, b""))
        for side in ("old", "new"):
            self.assertTrue((self.folder / side / "p.xml").is_fifo())

    def test_merge_folders_refuses_a_missing_folder(self):
        done = run("merge-folders", self.folder / "none", self.folder)
        self.assertEqual(done.returncode, 1)
        self.assertIn(b"Old folder does not exist or is not a directory: ", done.stdout)

    def test_merge_folders_says_which_file_operation_failed(self):
        old = self.put("old/a.xml", "<r/>")
        self.put("new/a.xml", "<r/>")
        old.chmod(0o444)
        done = run("merge-folders", self.folder / "old", self.folder / "new")
        self.assertEqual(done.returncode, 1)
        self.assertIn("access denied (error 5)", done.stderr.decode())
        self.assertEqual(done.stderr.count(b"\n"), 1)

    def test_merge_shortcuts_updates_the_new_folder(self):
        entry = "<Accels-0><Command>{0}</Command><Ctrl>8</Ctrl><Key>{0}</Key></Accels-0>"
        self.put("old/k.xml", f"<T><Count>1</Count>{entry.format(5)}</T>")
        new = self.put("new/k.xml", f"<T><Count>1</Count>{entry.format(6)}</T>")
        done = run("merge-shortcuts", self.folder / "old", self.folder / "new", "T")
        self.assertEqual((done.returncode, done.stdout, done.stderr), (0, b"", b""))
        self.assertIn("<Count>2</Count>", new.read_text())
        again = run("merge-shortcuts", self.folder / "old", self.folder / "new", "T")
        self.assertEqual(again.returncode, 1)

    def test_ribbon_record_goes_to_json_and_back(self):
        record = {"kind": -1, "id": 4294967295, "text1": "功能", "value2": 2, "text2": "",
                  "children": [{"id": 7}], "value3": 3, "text3": "😀", "text4": "d"}
        encoded = run("ribbon-encode", stdin=json.dumps(record).encode())
        self.assertEqual(encoded.returncode, 0, encoded.stderr)
        decoded = run("ribbon-decode", stdin=encoded.stdout)
        self.assertEqual(decoded.returncode, 0, decoded.stderr)
        result = json.loads(decoded.stdout)
        self.assertEqual(result["children"][0]["id"], 7)
        self.assertEqual({**result, "children": record["children"]}, record)

    def test_ribbon_texts_that_are_no_unicode_come_back_as_they_were(self):
        rest = "00000000" + "fffeff00" + "00000000" + "fffeff00" * 2 + "00000000"
        for text in ("fffeff013dd8", "fffeff0200dc00d8", "04c8abcdbc", "03616263", "02c8ff"):
            with self.subTest(text):
                record = "0100000002000000" + text + rest
                decoded = run("ribbon-decode", stdin=record.encode())
                self.assertEqual(decoded.returncode, 0, decoded.stderr)
                json.loads(decoded.stdout)
                encoded = run("ribbon-encode", stdin=decoded.stdout)
                self.assertEqual(encoded.stdout.decode().strip(), record)

    def test_ribbon_verbs_refuse_what_is_no_record(self):
        for text in (b"", b"123", b"zz", b"0000000000000000fffeffffffffffffee"):
            self.assertEqual(run("ribbon-decode", stdin=text).returncode, 1, text)
        deep = {"id": 0}
        for _ in range(64):
            deep = {"children": [deep]}
        wrong = [b"", b"[]", b"{\"id\": -1}", b"{\"id\": \"1\"}", b"{\"kind\": 2147483648}",
                 b"{\"other\": 1}", b"{\"children\": {}}", json.dumps(deep).encode(),
                 b"[" * 100000]
        for text in wrong:
            done = run("ribbon-encode", stdin=text)
            self.assertEqual((done.returncode, done.stderr.count(b"\n")), (1, 1), text[:40])


if __name__ == "__main__":
    sys.exit(unittest.main())
