"""The sample is what every other end-to-end test and the measurements stand on."""

import subprocess
import sys
import tempfile
import unittest
import xml.etree.ElementTree as ElementTree
import zlib
from pathlib import Path

import registry_file
from machines import MAKE_SAMPLE, make_sandbox, run_cli, snapshot


class SampleMakingTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)

    def sandbox(self, name, *options):
        return make_sandbox(self.folder / name, *options)

    def test_same_seed_gives_same_bytes_and_times(self):
        first = self.sandbox("first", "--user", "u").root
        second = self.sandbox("second", "--user", "u").root
        self.assertEqual(snapshot(first / "C"), snapshot(second / "C"))
        for name in ("product.ini", "registry/HKEY_CURRENT_USER.reg",
                     "registry/HKEY_LOCAL_MACHINE.reg"):
            self.assertEqual((first / name).read_bytes(), (second / name).read_bytes(), name)

    def test_another_seed_gives_another_sample(self):
        first = snapshot(self.sandbox("first", "--seed", "1").root / "C")
        second = snapshot(self.sandbox("second", "--seed", "2").root / "C")
        self.assertEqual(first.keys(), second.keys())
        changed = [path for path in first if first[path] != second[path]]
        self.assertGreater(len(changed), 300)

    def test_filling_again_restores_the_product_and_keeps_the_rest(self):
        machine = self.sandbox("machine")
        before = snapshot(machine.root / "C")
        stale = machine.local / "Vantric" / "VANTRIC" / "28.0" / "stale.prt"
        stale.write_bytes(b"left over")
        other = machine.local / "Other Product" / "settings.ini"
        other.parent.mkdir()
        other.write_bytes(b"[keep]")
        self.sandbox("machine")
        self.assertEqual(other.read_bytes(), b"[keep]")
        other.unlink()
        self.assertEqual(snapshot(machine.root / "C"), before)

    def test_grows_with_its_scale(self):
        def total(machine):
            return sum(path.stat().st_size for path in machine.root.rglob("*") if path.is_file())
        ratio = total(self.sandbox("large", "--scale", "3")) / total(self.sandbox("small"))
        self.assertTrue(2.5 <= ratio <= 3.5, ratio)

    def test_takes_a_chinese_user_name(self):
        machine = self.sandbox("machine", "--user", "王小明")
        self.assertTrue((machine.root / "C/Users/王小明/AppData/Local/Vantric").is_dir())
        self.assertIn("UserName=王小明", (machine.root / "product.ini").read_text("utf-8"))

    def test_says_what_is_wrong_with_its_arguments(self):
        for arguments in ([], ["--sandbox", "x", "--scale", "0"],
                          ["--sandbox", "x", "--scale", "nan"], ["--sandbox", "x", "--user", "a/b"],
                          ["--sandbox", "x", "--programs", "y"]):
            done = subprocess.run([sys.executable, MAKE_SAMPLE, *arguments], cwd=self.folder,
                                  capture_output=True, text=True, check=False)
            self.assertEqual((done.returncode, done.stdout), (2, ""), arguments)
            self.assertIn("usage:", done.stderr)

    def test_refuses_a_folder_that_is_no_wine_prefix(self):
        done = subprocess.run([sys.executable, MAKE_SAMPLE, "--wine", self.folder],
                              capture_output=True, text=True, check=False)
        self.assertEqual(done.returncode, 1)
        self.assertIn("is not a Wine prefix", done.stderr)


class SampleContentTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(cls.folder.cleanup)
        cls.machine = make_sandbox(Path(cls.folder.name) / "machine")

    def ribbon(self, language, version="28.0"):
        folder = self.machine.roaming / "Vantric/VANTRIC" / version / language / "Customization"
        return folder / "VANTRIC-Scene.xml"

    def test_has_the_promised_size_and_packs_to_under_half(self):
        files = [path for root in (self.machine.local, self.machine.roaming)
                 for path in root.rglob("*") if path.is_file()]
        contents = [path.read_bytes() for path in files]
        total = sum(map(len, contents))
        self.assertTrue(280 <= len(files) <= 400, len(files))
        self.assertTrue(25e6 <= total <= 40e6, total)
        packed = sum(len(zlib.compress(content, 6)) for content in contents)
        self.assertTrue(0.35 <= packed / total <= 0.50, packed / total)

    def test_customization_files_are_well_formed_and_name_product_and_other_user(self):
        files = list(self.machine.root.rglob("Customization/*.xml"))
        self.assertGreater(len(files), 40)
        for path in files:
            ElementTree.fromstring(path.read_bytes())
        ribbon = self.ribbon("en-us").read_text("utf-8")
        self.assertIn("<VANTRIC28.0>", ribbon)
        self.assertIn("C:\\Users\\olduser\\", ribbon)

    def test_ribbon_records_decode_to_their_last_byte(self):
        root = ElementTree.fromstring(self.ribbon("zh-cn").read_bytes())
        records = [node.text for node in root.iter() if node.tag.startswith("RibbonElement-")]
        self.assertGreater(len(records), 20)
        for record in records:
            data = bytes.fromhex(record)
            self.assertEqual(end_of_record(data, 0), len(data))

    def test_older_version_has_customization_that_the_running_one_lacks(self):
        merged = Path(self.folder.name) / "merged.xml"
        old, new = (self.ribbon("en-us", version) for version in ("27.0", "28.0"))
        done = run_cli("merge-xml", old, new, merged)
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        self.assertNotIn("我的", new.read_text("utf-8"))
        self.assertIn("我的", merged.read_text("utf-8"))

        folders = []
        for version in ("27.0", "28.0"):
            folder = Path(self.folder.name) / version
            folder.mkdir()
            folders.append(folder)
            source = self.machine.local / "Vantric/VANTRIC" / version / "Customization"
            for path in source.glob("*.xml"):
                text = path.read_text("utf-8").replace("VANTRIC27.0", "VANTRIC28.0")
                (folder / path.name).write_text(text, "utf-8")
        done = run_cli("merge-shortcuts", *folders, "VANTRIC28.0")
        self.assertEqual((done.returncode, done.stderr), (0, ""))

    def test_registry_holds_every_type_and_all_option_keys(self):
        data = self.machine.registry_bytes("HKEY_CURRENT_USER")
        keys = dict(registry_file.parse(data))
        live = r"HKEY_CURRENT_USER\SOFTWARE\Vantric\VANTRIC 28.0"
        options = {path.split("\\")[4] for path in keys if path.startswith(live + "\\")}
        self.assertGreaterEqual(len(options), 26)
        values = [value for path in keys if path.startswith(live) for _, value in keys[path]]
        for kind in ('"', "dword:", "hex:", "hex(2):", "hex(7):", "hex(b):", "hex(0):"):
            self.assertTrue(any(value.startswith(kind) for value in values), kind)
        self.assertTrue(any(name == "" for name, _ in keys[live]))

    def test_registry_is_sorted_and_names_the_versions_in_order(self):
        for hive in ("HKEY_CURRENT_USER", "HKEY_LOCAL_MACHINE"):
            keys = registry_file.parse(self.machine.registry_bytes(hive))
            paths = [path.lower().split("\\") for path, _ in keys]
            self.assertEqual(paths, sorted(paths))
            for _, values in keys:
                names = [name.lower() for name, _ in values]
                self.assertEqual(names, sorted(names))
        versions = [path for path, _ in keys if "\\VANTRIC\\" in path]
        self.assertEqual([path.rpartition("\\")[2] for path in versions],
                         ["25.0", "26.0", "27.0", "28.0"])


def end_of_record(data, position):
    position = end_of_text(data, position + 8)
    position = end_of_text(data, position + 4)
    position = end_of_text(data, position + 4)
    position = end_of_text(data, position)
    children = int.from_bytes(data[position:position + 4], "little")
    position += 4
    for _ in range(children):
        position = end_of_record(data, position)
    return position


def end_of_text(data, position):
    assert data[position:position + 3] == b"\xff\xfe\xff", position
    count, position = data[position + 3], position + 4
    if count == 0xFF:
        count, position = int.from_bytes(data[position:position + 2], "little"), position + 2
    data[position:position + 2 * count].decode("utf-16-le")
    return position + 2 * count


if __name__ == "__main__":
    unittest.main()
