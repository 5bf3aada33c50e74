"""Imports and resets are undone: afterwards the machine is as it was."""

import json
import os
import random
import shutil
import subprocess
import time
import unittest

import hostile_zip
from machines import RELEASE_CLI, SandboxTest, make_sandbox, small_sandbox
from playable import PlayableSandbox, differences

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

    def test_a_refused_import_leaves_no_restore_point(self):
        self.run_verb("export", "--version", "2025", "--all", "--output", self.package)
        self.run_verb("import", self.package, "--to", "2024", "--all", status=1)
        self.assertEqual(self.points(), [])

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
        ids = [point["id"] for point in self.points()]
        self.assertEqual(len(ids), 3)
        done = self.run_verb("prune", "--keep", "1")
        self.assertEqual(done.stdout.splitlines(), [f"Removed {old}" for old in ids[1:]])
        self.assertEqual([point["id"] for point in self.points()], ids[:1])

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
        for value in result["dropped"]:
            self.assertIn("names a path that does not exist here", value["why"])
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
