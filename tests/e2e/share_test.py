"""Packages for others: what is personal stays out of them, is named, and is nobody's loss."""

import json
import re
import tempfile
import unittest
from pathlib import Path

import registry_file
from machines import SandboxTest, make_sandbox, run_cli, small_sandbox
from package_edit import (GENERAL, GENERAL_KEY, copy_package, items, registry_bytes, with_lines)

USER = "张伟"
COMPUTER = "WERKSTATT-7"
DIRECTORIES = r"Options\Directories.reg"
REGISTER = r"Register\VANTRIC2026.reg"
LIVE = r"HKEY_CURRENT_USER\SOFTWARE\Vantric\VANTRIC 28.0"
COMPUTER_KEY = (r"[HKEY_LOCAL_MACHINE\SYSTEM\CurrentControlSet\Control\ComputerName"
                r"\ActiveComputerName]")


def values(content):
    return {(key, name): data for key, found in registry_file.parse(content)
            for name, data in found}


def edit_hive(machine, hive, edit):
    path = machine.root / "registry" / f"{hive}.reg"
    text = path.read_bytes()[2:].decode("utf-16-le")
    path.write_bytes(b"\xff\xfe" + edit(text).encode("utf-16-le"))


class ShareTest(SandboxTest):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.machine = make_sandbox(Path(folder.name) / "machine", "--user", USER)
        edit_hive(cls.machine, "HKEY_LOCAL_MACHINE", lambda text: text +
                  f'{COMPUTER_KEY}\r\n"ComputerName"="{COMPUTER}"\r\n\r\n')
        lines = (f'"Server"="\\\\\\\\{COMPUTER.lower()}\\\\parts"',
                 '"Odd\u202e"="C:\\\\Users\\\\x\u200f\\\\y"', '"Beside"="WERKSTATT-70"')
        edit_hive(cls.machine, "HKEY_CURRENT_USER", lambda text: text.replace(
            GENERAL_KEY + "\r\n", GENERAL_KEY + "\r\n" + "\r\n".join(lines) + "\r\n", 1))
        cls.whole = Path(folder.name) / "whole.ucex"
        cls.shared = Path(folder.name) / "shared.ucex"
        assert cls.machine.export_all(cls.whole).returncode == 0
        cls.export = cls.machine.run("export", "--version", "2026", "--all", "--share",
                                     "--output", cls.shared)

    def private_json(self, package):
        done = run_cli("inspect", package, "--private", "--json")
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        return json.loads(done.stdout)

    def test_export_says_what_it_left_out_and_why(self):
        self.assertEqual((self.export.returncode, self.export.stderr), (0, ""))
        for line in (rf'  {DIRECTORIES}: [{LIVE}\Directories\Recent]: a list of recent files',
                     rf'  {DIRECTORIES}: [{LIVE}\Directories] "Search": '
                     "names a user's profile folder",
                     rf'  {REGISTER}: [{LIVE}\User Profile] "Name": names the user',
                     rf'  {GENERAL}: [{LIVE}\General] "Server": names the computer',
                     rf'  {GENERAL}: [{LIVE}\General] "Odd\u202e": '
                     "names a user's profile folder"):
            self.assertIn(line + "\n", self.export.stdout)
        self.assertNotIn("Beside", self.export.stdout)
        self.assertNotIn("\u202e", self.export.stdout)

    def test_document_of_an_export_holds_what_it_left_out(self):
        package = self.folder / "shared.ucex"
        done = self.machine.run("export", "--version", "2026", "--all", "--share", "--json",
                                "--output", package)
        document = json.loads(done.stdout)
        self.assertTrue(document["shared"])
        self.assertIn({"kind": "value", "action": "left out", "entry": REGISTER,
                       "key": rf"{LIVE}\User Profile", "name": "Name",
                       "reason": "names the user"}, document["leftOut"])
        self.assertIn(f"personal: {len(document['leftOut'])}\n", self.export.stdout)

    def test_only_that_is_left_out(self):
        before, after = items(self.whole), items(self.shared)
        self.assertEqual(list(before), list(after))
        named = set(re.findall(r"^  (.*?\.(?:reg|xml)): ", self.export.stdout, re.MULTILINE))
        for name, content in before.items():
            if name not in named | {"config.ini"}:
                self.assertEqual(content, after[name], name)
        kept, all_values = values(after[DIRECTORIES]), values(before[DIRECTORIES])
        self.assertEqual({name for _, name in kept}, {
            "Autosave", "Library", "Network", "Relative", "Unquoted"})
        self.assertTrue(kept.items() < all_values.items())

    def test_nothing_in_registry_files_and_documents_names_the_user(self):
        for name, content in items(self.shared).items():
            if name.endswith((".reg", ".xml")):
                encoding = "utf-16" if content[:2] == b"\xff\xfe" else "utf-8"
                text = content.decode(encoding)
                for word in (USER, "olduser", "werkstatt-7\\"):
                    self.assertNotIn(word, text.lower(), name)

    def test_nothing_is_left_in_a_shared_package(self):
        self.assertEqual(self.private_json(self.shared),
                         {"package": str(self.shared), "shared": True, "private": []})
        done = run_cli("inspect", self.shared, "--private")
        self.assertEqual(done.stdout, "Shared      yes\nPrivate     nothing\n")

    def test_any_package_shows_what_would_be_left_out(self):
        found = self.private_json(self.whole)
        self.assertFalse(found["shared"])
        self.assertIn({"kind": "value", "action": "left out", "entry": REGISTER,
                       "key": LIVE, "name": "Last User", "reason": "says who the user is"},
                      found["private"])
        self.assertIn({"kind": "key", "action": "left out", "entry": REGISTER,
                       "key": LIVE + r"\Directories\Recent", "name": None,
                       "reason": "a list of recent files"}, found["private"])
        self.assertEqual({item["action"] for item in found["private"] if item["kind"] == "file"},
                         {"changed"})
        # The package does not say what the computer is called.
        named = {(item["entry"], item["key"], item["name"]) for item in found["private"]}
        self.assertEqual(self.export.stdout.count("\n  "), len(named) + 2)

    def test_other_readers_take_a_shared_package_for_any_other(self):
        done = run_cli("verify", self.shared)
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        done = run_cli("inspect", self.shared)
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        self.assertIn("\nShared      yes", done.stdout)
        self.assertTrue(json.loads(run_cli("inspect", self.shared, "--json").stdout)["shared"])
        self.assertFalse(json.loads(run_cli("inspect", self.whole, "--json").stdout)["shared"])
        self.assertNotIn("\nShared", run_cli("inspect", self.whole).stdout)

    def test_import_takes_nothing_from_the_target(self):
        target = make_sandbox(self.folder / "target", "--user", "O'Brien", "--seed", "7")
        live = "[" + LIVE + r"\Directories\Recent]"
        edit_hive(target, "HKEY_CURRENT_USER", lambda text: text.replace(
            live + "\r\n", live + '\r\n"File9"="C:\\\\Users\\\\O\'Brien\\\\own.prt"\r\n', 1))
        before = values(target.registry_bytes("HKEY_CURRENT_USER"))
        done = target.run("import", self.shared, "--to", "2026", "--all")
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        after = values(target.registry_bytes("HKEY_CURRENT_USER"))
        for key, name in before:
            self.assertIn((key, name), after)
            if key.endswith("Recent") or name in ("Last User", "Search", "Home", "Name"):
                self.assertEqual(before[key, name], after[key, name])
        self.assertEqual(after[LIVE + r"\Directories", "Network"],
                         values(items(self.whole)[DIRECTORIES])[LIVE + r"\Directories", "Network"])
        done = target.run("diff", self.shared, "--version", "2026", "--json")
        missing = [value for category in json.loads(done.stdout)["categories"]
                   for item in category["items"] for value in item["values"]
                   if value["change"] == "only in first"]
        self.assertEqual(missing, [])

    def test_text_values_are_read_whatever_their_form(self):
        data = ",".join(f"{byte:02x}" for byte in "x\0C:\\Users\\bo\\y\0\0".encode("utf-16-le"))
        content = registry_bytes(GENERAL_KEY, f'"List"=hex(7):{data[:60]}\\', f"  {data[60:]}",
                                 '"Expand"=hex(2):41,00,00,00', '"Quote"="say \\"C:/users/bo/\\""')
        package = copy_package(self.shared, self.folder / "a.ucex", {GENERAL: content})
        self.assertEqual([item["name"] for item in self.private_json(package)["private"]],
                         ["List", "Quote"])

    def test_hostile_texts_are_escaped(self):
        content = with_lines(items(self.shared)[GENERAL], GENERAL_KEY,
                             '"a\x1b[2J\u202e"="C:\\\\Users\\\\x"')
        package = copy_package(self.shared, self.folder / "a.ucex", {GENERAL: content})
        done = run_cli("inspect", package, "--private")
        self.assertIn(r'"a\u001b[2J\u202e"', done.stdout)
        self.assertFalse(set("\x1b\u202e") & set(done.stdout))

    def test_export_leaves_nothing_behind(self):
        machine = small_sandbox(self.folder / "small")
        done = machine.run("export", "--version", "2026", "--all", "--share", "--output",
                           self.package)
        self.assertIn("Left out or changed", done.stdout)
        self.assertEqual(machine.temporary_files(), [])


if __name__ == "__main__":
    unittest.main()
