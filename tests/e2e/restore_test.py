"""Imports and resets are undone: afterwards the machine is as it was."""

import json
import os
import random
import re
import shutil
import subprocess
import time
import unittest
import zlib

import hostile_zip
from machines import RELEASE_CLI, SandboxTest, make_sandbox, small_sandbox
from playable import PlayableSandbox, differences, files_below

KILLS = int(os.environ.get("CARROVAN_KILLS", "25"))


class RestoreCase(SandboxTest):
    def setUp(self):
        super().setUp()
        self.sandbox = self.make_machine()
        self.machine = PlayableSandbox(self.sandbox)

    def make_machine(self):
        return small_sandbox(self.folder / "machine")

    def run_verb(self, *arguments, status=0):
        done = self.machine.run(*arguments)
        self.assertEqual(done.returncode, status, done.stderr)
        return done

    def import_all(self, *options):
        self.run_verb("export", "--version", "2025", "--all", "--output", self.package)
        self.before = self.machine.state()
        done = self.run_verb("import", self.package, "--to", "2026", "--all", *options)
        self.after = self.machine.state()
        self.assertNotEqual(differences(self.before, self.after), [])
        return done

    def assert_state(self, expected):
        self.assertEqual(differences(expected, self.machine.state()), [])

    def points(self):
        return json.loads(self.run_verb("restore-points", "--json").stdout)

    def changed_file(self):
        """Some file that the import has changed."""
        path = next(path for path, content in sorted(self.after.files.items())
                    if content is not None and self.before.files.get(path) not in (None, content))
        return self.sandbox.profile / path


class UndoTest(RestoreCase):
    def test_undo_of_an_import_brings_everything_back(self):
        done = self.import_all()
        point, = self.points()
        self.assertIn(f"\nRestore point: {point['id']} ", done.stdout)
        self.assertEqual((point["verb"], point["version"], point["state"]),
                         ("import", "2026", "finished"))
        self.run_verb("undo")
        self.assert_state(self.before)
        self.assertEqual(self.points()[0]["state"], "undone")
        self.assertEqual(self.sandbox.temporary_files(), [])

    def test_undo_of_a_reset_brings_everything_back(self):
        before = self.machine.state()
        self.run_verb("reset", "--all", "--yes")
        self.assertNotEqual(differences(before, self.machine.state()), [])
        self.run_verb("undo")
        self.assert_state(before)

    def test_undo_can_be_done_twice(self):
        self.import_all()
        self.run_verb("undo")
        self.assertIn(": 0 put back, 0 kept", self.run_verb("undo").stdout)
        self.assert_state(self.before)

    def test_undo_goes_back_run_by_run(self):
        self.import_all()
        first, = self.points()
        self.run_verb("reset", "--category", "Options", "--yes")
        self.run_verb("undo")
        self.assert_state(self.after)
        self.run_verb("undo", first["id"])
        self.assert_state(self.before)

    def test_undo_of_one_category_leaves_the_others(self):
        self.import_all()
        self.run_verb("undo", "--category", "Options")
        half = self.machine.state()
        self.assertEqual(half.files, self.after.files)
        self.assertNotEqual(differences(self.after, half), [])
        self.assertEqual(self.points()[0]["state"], "partly undone")
        self.run_verb("undo")
        self.assert_state(self.before)

    def test_undo_keeps_what_the_user_changed_unless_forced(self):
        self.import_all()
        path = self.changed_file()
        path.write_bytes(b"the user's work")
        done = self.run_verb("undo", status=3)
        self.assertIn("Kept, as it was changed since: ", done.stderr)
        self.assertIn(path.name, done.stderr)
        self.assertEqual(path.read_bytes(), b"the user's work")
        self.run_verb("undo", "--force")
        self.assert_state(self.before)

    def test_undo_tells_its_result_as_json(self):
        self.import_all()
        self.changed_file().write_bytes(b"the user's work")
        result = json.loads(self.run_verb("undo", "--json", status=3).stdout)
        self.assertEqual(result["restorePoint"], self.points()[0]["id"])
        self.assertEqual((len(result["kept"]), result["problems"], result["exitStatus"]),
                         (1, [], 3))
        self.assertGreater(result["restored"], 10)

    def test_undo_refuses_what_it_cannot_do(self):
        self.assert_refused(self.machine.run("undo"), 1, "There is nothing to undo")
        self.import_all()
        self.assert_refused(self.machine.run("undo", "2001-01-01T000000Z"), 1,
                            "There is no restore point 2001-01-01T000000Z")
        self.assert_refused(self.machine.run("undo", "..\\.."), 1, "There is no restore point")
        self.assert_refused(self.machine.run("undo", "--category", "Nothing"), 2,
                            'There is no category "Nothing"')

    def test_prune_refuses_odd_numbers(self):
        for number in ("-1", "99999999999999999999", "one"):
            done = self.machine.run("prune", "--keep", number)
            self.assertEqual((done.returncode, done.stdout), (2, ""), number)

    def test_undo_of_a_legacy_import_knows_its_version(self):
        package = self.folder / "settings.ucx"
        hostile_zip.make_package(package, [("VANTRIC_Option_Config.xml",
                                            b'<r><Draw><Font value="Release 2025"/></Draw></r>')])
        before = self.machine.state()
        done = self.run_verb("import", package, "--all", "--json")
        self.assertEqual(json.loads(done.stdout)["version"], "2026")
        self.assertNotEqual(differences(before, self.machine.state()), [])
        self.assertEqual(self.points()[0]["version"], "2026")
        self.run_verb("undo", "--category", "Options")
        self.assert_state(before)

    def test_no_restore_point_is_kept_when_none_is_wanted(self):
        done = self.import_all("--no-restore-point")
        self.assertNotIn("Restore point", done.stdout)
        self.assertEqual(self.points(), [])

    def test_a_refused_import_leaves_nothing(self):
        self.run_verb("export", "--version", "2025", "--all", "--output", self.package)
        self.run_verb("import", self.package, "--to", "2024", "--all", status=1)
        self.assertFalse((self.sandbox.local / "Carrovan").exists())

    def test_a_run_that_changes_nothing_leaves_no_restore_point(self):
        self.import_all()
        self.run_verb("reset", "--all", "--yes")
        points = self.points()
        done = self.run_verb("reset", "--all", "--yes")
        self.assertNotIn("Restore point", done.stdout)
        self.assertEqual(self.points(), points)
        done = self.run_verb("reset", "--all", "--yes", "--json")
        self.assertIsNone(json.loads(done.stdout)["restorePoint"])

    def test_without_room_for_a_restore_point_nothing_is_imported(self):
        self.run_verb("export", "--version", "2025", "--all", "--output", self.package)
        (self.sandbox.local / "Carrovan").write_bytes(b"in the way")
        before = self.machine.state()
        done = self.machine.run("import", self.package, "--to", "2026", "--all")
        self.assert_refused(done, 1, "No restore point can be made")
        self.assertIn("--no-restore-point", done.stderr)
        self.assert_state(before)

    def test_prune_keeps_the_newest(self):
        for _ in range(3):
            self.run_verb("reset", "--category", "Options", "--yes")
            self.run_verb("undo")
        ids = [point["id"] for point in self.points()]
        self.assertEqual(len(ids), 3)
        done = self.run_verb("prune", "--keep", "1")
        *removed, freed = done.stdout.splitlines()
        self.assertEqual([re.sub(r", \d+ bytes$", "", line) for line in removed],
                         [f"Removed {old}" for old in ids[1:]])
        self.assertRegex(freed, r"^2 restore points removed, [1-9]\d+ bytes freed$")
        self.assertEqual([point["id"] for point in self.points()], ids[:1])

    def test_document_of_a_prune_names_what_went_and_how_many_stay(self):
        for _ in range(3):
            self.run_verb("reset", "--category", "Options", "--yes")
            undone = json.loads(self.run_verb("undo", "--json").stdout)
            self.assertEqual((undone["verb"], undone["exitStatus"]), ("undo", 0))
        ids = [point["id"] for point in self.points()]
        document = json.loads(self.run_verb("prune", "--keep", "1", "--json").stdout)
        self.assertEqual([point["id"] for point in document["removed"]], ids[1:])
        self.assertEqual(document.pop("freedBytes"),
                         sum(point["freedBytes"] for point in document.pop("removed")))
        self.assertEqual(document, {"verb": "prune", "exitStatus": 0, "kept": 1, "problems": []})

    def test_prune_goes_by_age(self):
        self.run_verb("reset", "--category", "Options", "--yes")
        root = self.sandbox.local / "Carrovan/Restore"
        old = root / "2020-01-01T000000Z"
        shutil.copytree(root / self.points()[0]["id"], old)
        self.assertEqual(len(self.points()), 2)
        self.run_verb("prune", "--older-than", "30", "--keep", "2")
        self.assertEqual(len(self.points()), 2)
        self.run_verb("prune", "--older-than", "30")
        self.assertEqual(len(self.points()), 1)
        self.assertFalse(old.exists())
        done = self.machine.run("prune")
        self.assertEqual(done.returncode, 2)

    def test_damaged_journal_is_refused_by_name(self):
        self.import_all()
        point = self.points()[0]
        journal = self.sandbox.local / "Carrovan/Restore" / point["id"] / "journal.jsonl"
        content = bytearray(journal.read_bytes())
        content[len(content) // 2] ^= 1
        journal.write_bytes(content)
        before = self.machine.state()
        done = self.machine.run("undo")
        self.assert_refused(done, 1, point["id"] + " is not to be trusted: a line of its journal")
        self.assert_state(before)

    def test_damaged_copy_is_refused_by_name(self):
        self.import_all()
        point = self.points()[0]
        folder = self.sandbox.local / "Carrovan/Restore" / point["id"]
        copy = next(file for file in sorted((folder / "files").iterdir()) if file.stat().st_size)
        copy.chmod(0o644)
        copy.write_bytes(b"other" + copy.read_bytes())
        before = self.machine.state()
        done = self.machine.run("undo")
        self.assert_refused(done, 1, "its copy is damaged or missing")
        self.assert_state(before)

    def test_verified_import_reads_every_change_back(self):
        done = self.import_all("--verify")
        self.assertRegex(done.stdout, r"Read back: \d{2,} items, 0 not as they were to become")

    def test_import_tells_its_result_as_json(self):
        result = json.loads(self.import_all("--json", "--verify").stdout)
        self.assertEqual((result["verb"], result["version"], result["exitStatus"]),
                         ("import", "2026", 0))
        self.assertEqual(result["verification"]["differences"], [])
        self.assertGreater(result["verification"]["items"], 10)
        self.assertEqual(result["restorePoint"], self.points()[0]["id"])
        self.assertEqual(result["problems"], [])
        self.assertIn({"label": "Options", "outcome": "imported"}, result["categories"])
        self.assertTrue(result["dropped"])
        reasons = {value["why"].partition(":")[0] for value in result["dropped"]}
        self.assertEqual(reasons, {"names a path that does not exist here",
                                   "names a network path that does not answer here"})
        self.assertIn("Your settings have been successfully imported", result["finishText"])

    def test_a_file_that_cannot_be_changed_is_named_and_the_status_is_3(self):
        self.run_verb("export", "--version", "2025", "--all", "--output", self.package)
        files = self.sandbox.product_local / "Customization"
        closed = next(path for path in sorted(files.rglob("*")) if path.is_file())
        closed.chmod(0o444)
        self.addCleanup(closed.chmod, 0o644)
        done = self.run_verb("import", self.package, "--to", "2026", "--all", "--json", "--verify",
                             status=3)
        self.assertIn(closed.name, done.stderr)
        result = json.loads(done.stdout)
        self.assertEqual((result["exitStatus"], result["verification"]["differences"]), (3, []))


class PlantedJournalTest(RestoreCase):
    """A journal that no run has written is not played back."""

    RUN = r"SOFTWARE\Microsoft\Windows\CurrentVersion\Run"

    def setUp(self):
        super().setUp()
        self.user = self.machine.profile
        self.documents = self.sandbox.root / "C/Users" / self.sandbox.user / "Documents"
        self.documents.mkdir()
        (self.documents / "thesis.txt").write_bytes(b"years of work")
        self.before = self.machine.state()

    def plant(self, *records):
        point = self.sandbox.local / "Carrovan/Restore/2030-01-01T000000Z"
        shutil.rmtree(point, ignore_errors=True)
        (point / "files").mkdir(parents=True)
        (point / "files/1").write_bytes(b"planted")
        begun = {"record": "point begun", "format": 1, "verb": "import", "version": "2026"}
        lines = "".join(json.dumps(record) + "\n" for record in (begun, *records))
        (point / "journal.jsonl").write_text(lines, "utf-8")

    def changing(self, path, before="absent"):
        record = {"record": "file changing", "path": path, "before": {"kind": before}}
        if before == "file":
            record["before"].update(sizeBytes=7, crc32=zlib.crc32(b"planted"))
            record["copy"] = "files\\1"
        return record

    def assert_nothing_is_played(self, *records, named):
        self.plant(self.changing(self.user + r"\AppData\Local\Vantric\VANTRIC\28.0\x.txt", "file"),
                   *records)
        for options in ((), ("--force",)):
            done = self.machine.run("undo", *options)
            self.assert_refused(done, 1, "is not to be trusted: " + named)
            self.assert_state(self.before)
            self.assertEqual((self.documents / "thesis.txt").read_bytes(), b"years of work")

    def test_scratch_folders_are_a_runs_own(self):
        for folder in (self.user + r"\Documents", self.user + r"\AppData\Local\Temp\..\..\..\Documents",
                       self.user + r"\AppData\Local\Vantric"):
            self.assert_nothing_is_played({"record": "scratch made", "path": folder}, named=folder)

    def test_documents_and_start_up_folder_stay(self):
        start = self.user + r"\AppData\Roaming\Microsoft\Windows\Start Menu\Programs\Startup\x.cmd"
        for path in (self.user + r"\Documents\thesis.txt", start,
                     self.user + r"\AppData\Local\Vantric\..\..\..\Documents\thesis.txt"):
            for before in ("absent", "file"):
                self.assert_nothing_is_played(self.changing(path, before), named=path)

    def test_no_value_is_set_that_starts_a_program(self):
        value = {"name": "a", "type": 1, "data": [120, 0, 0, 0]}
        self.assert_nothing_is_played(
            {"record": "key changing", "root": "HKEY_CURRENT_USER", "key": self.RUN,
             "before": [value]}, named="HKEY_CURRENT_USER\\" + self.RUN)

    def test_nothing_is_changed_behind_a_link(self):
        link = self.sandbox.product_local / "link"
        link.symlink_to(self.documents)
        self.before = self.machine.state()
        path = self.user + r"\AppData\Local\Vantric\VANTRIC\28.0\link\thesis.txt"
        self.assert_nothing_is_played(self.changing(path), named=path)
        shared = self.sandbox.local / "Temp/01234567-89ab-cdef-0123-456789abcdef"
        shared.symlink_to(self.documents)
        self.plant({"record": "scratch made",
                    "path": self.user + r"\AppData\Local\Temp" + "\\" + shared.name})
        self.run_verb("undo")
        self.assertFalse(shared.is_symlink())
        self.assertTrue((self.documents / "thesis.txt").exists())

    def test_what_a_trusted_package_changed_elsewhere_is_undone_with_trust(self):
        key = r"HKEY_CURRENT_USER\SOFTWARE\Elsewhere"
        config = hostile_zip.CONFIG
        hostile_zip.make_package(self.package, [
            ("config.ini", config), ("Options\\a.reg", hostile_zip.registry_file(key, '"a"="b"')),
            ("Local\\Other\\x.txt", b"x")])
        self.run_verb("import", self.package, "--to", "2026", "--all", "--trust")
        self.assertNotEqual(differences(self.before, self.machine.state()), [])
        done = self.run_verb("undo", status=1)
        self.assertIn("; --trust undoes it all the same", done.stderr)
        self.run_verb("undo", "--trust")
        self.assert_state(self.before)


class LinkedFolderTest(RestoreCase):
    """A category's folder is a link to a folder with 72 files that others share."""

    def setUp(self):
        super().setUp()
        self.shared = self.folder / "shared"
        for number in range(72):
            path = self.shared / f"{number % 3}" / f"{number}.txt"
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_bytes(b"%d" % number)
        self.link = self.sandbox.product_local / "en-us/CosmeticThread"
        shutil.rmtree(self.link)
        self.link.symlink_to(self.shared)
        self.before = self.machine.state()

    def assert_whole(self):
        found = sorted(path.read_bytes() for path in self.shared.rglob("*.txt"))
        self.assertEqual(found, sorted(b"%d" % number for number in range(72)))

    def test_reset_takes_the_link_alone(self):
        self.run_verb("reset", "--category", "Cosmetic Thread", "--yes")
        self.assertFalse(self.link.is_symlink())
        self.assert_whole()
        self.run_verb("undo")
        self.assertTrue(self.link.is_symlink())
        self.assert_whole()
        self.assert_state(self.before)

    def test_ticked_import_puts_its_folder_in_the_links_place(self):
        self.run_verb("export", "--version", "2025", "--all", "--output", self.package)
        self.run_verb("import", self.package, "--to", "2026", "--all")
        self.assertFalse(self.link.is_symlink())
        self.assertTrue(self.link.is_dir())
        self.assert_whole()
        self.run_verb("undo")
        self.assertTrue(self.link.is_symlink())
        self.assert_whole()
        self.assert_state(self.before)

    def test_linked_folder_of_the_version_is_reset_and_undone_through(self):
        elsewhere = self.folder / "elsewhere"
        shutil.move(self.sandbox.product_local, elsewhere)
        self.sandbox.product_local.symlink_to(elsewhere)
        before = self.machine.state()
        behind = files_below(elsewhere)
        self.run_verb("reset", "--all", "--yes")
        self.assertTrue(self.sandbox.product_local.is_symlink())
        self.assertNotEqual(files_below(elsewhere), behind)
        self.assert_whole()
        self.run_verb("undo")
        self.assert_state(before)
        self.assertEqual(files_below(elsewhere), behind)
        self.assert_whole()


class WholeSampleTest(RestoreCase):
    def make_machine(self):
        return make_sandbox(self.folder / "machine")

    def test_undo_brings_the_whole_sample_back(self):
        self.import_all()
        self.run_verb("undo")
        self.assert_state(self.before)


class KillTest(SandboxTest):
    """An import is killed at random moments; an undo brings the machine back each time."""

    def setUp(self):
        super().setUp()
        self.template = small_sandbox(self.folder / "template")
        done = self.template.run("export", "--version", "2025", "--all", "--output", self.package,
                                 program=RELEASE_CLI)
        self.assertEqual(done.returncode, 0, done.stderr)
        self.before = PlayableSandbox(self.template).state()

    def fresh_machine(self):
        shutil.rmtree(self.folder / "machine", ignore_errors=True)
        shutil.copytree(self.template.root, self.folder / "machine")
        return type(self.template)(self.folder / "machine", self.template.user)

    def start_import(self, sandbox):
        return subprocess.Popen([RELEASE_CLI, "--root", sandbox.root, "import", self.package, "--to",
                                 "2026", "--all"], stdout=subprocess.DEVNULL,
                                stderr=subprocess.DEVNULL)

    def duration(self):
        begun = time.monotonic()
        self.assertEqual(self.start_import(self.fresh_machine()).wait(), 0)
        return time.monotonic() - begun

    def test_undo_after_a_kill_at_any_moment_gives_the_state_before(self):
        longest = self.duration()
        moments = random.Random(1)
        killed = changed = 0
        for number in range(KILLS):
            sandbox = self.fresh_machine()
            machine = PlayableSandbox(sandbox)
            program = self.start_import(sandbox)
            time.sleep(moments.random() * longest)
            program.kill()
            killed += program.wait() != 0
            state = machine.state()
            changed += differences(self.before, state) != []
            done = sandbox.run("undo", program=RELEASE_CLI)
            if done.returncode == 1:
                self.assertIn("There is nothing to undo", done.stderr)
            else:
                self.assertEqual(done.returncode, 0, f"kill {number}: {done.stderr}")
            self.assertEqual(differences(self.before, machine.state()), [], f"kill {number}")
        print(f"{KILLS} imports, {killed} killed, {changed} of them with changes on the way")
        self.assertGreater(killed, 0)


if __name__ == "__main__":
    unittest.main()
