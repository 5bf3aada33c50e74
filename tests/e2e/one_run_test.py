"""One run at a time changes a user's settings: a second one is refused by name, and one that was
killed keeps nobody out."""

import json
import subprocess
import unittest

import hostile_zip
from held_run import HeldRun
from machines import CLI, SandboxTest, small_sandbox, snapshot
from playable import PlayableSandbox, differences

STARTED_AT_ONCE = 6


class OneRunTest(SandboxTest):
    def setUp(self):
        super().setUp()
        self.machine = small_sandbox(self.folder / "machine")
        self.own = self.machine.local / "Carrovan"
        self.export(self.package)
        self.import_all = ("import", self.package, "--to", "2026", "--all")
        self.before = self.state()

    def export(self, package):
        done = self.machine.run("export", "--version", "2025", "--all", "--output", package)
        self.assertEqual(done.returncode, 0, done.stderr)

    def state(self):
        return PlayableSandbox(self.machine).state()

    def start(self, *verb, errors=subprocess.DEVNULL):
        return subprocess.Popen([CLI, "--root", self.machine.root, *verb],
                                stdout=subprocess.DEVNULL, stderr=errors, encoding="utf-8")

    def held(self, *verb):
        return HeldRun(lambda: self.start(*verb), self.own)

    def run_verb(self, *verb, status=0):
        done = self.machine.run(*verb)
        self.assertEqual(done.returncode, status, done.stderr)
        return done

    def points(self):
        return [point["id"] for point in
                json.loads(self.run_verb("restore-points", "--json").stdout)]

    def undo_all(self):
        for point in self.points():
            self.run_verb("undo", point)
        self.assertEqual(differences(self.before, self.state()), [])

    def changing_verbs(self):
        legacy = self.folder / "settings.ucx"
        hostile_zip.make_package(legacy, [("Scene_UI.xml", b"<scene/>")])
        return (self.import_all, ("import", legacy, "--all"), ("reset", "--all", "--yes"),
                ("undo",), ("prune", "--keep", "0"))

    def assert_nothing_of_the_lock(self):
        left = {path.name for path in self.own.glob("*")} if self.own.exists() else set()
        self.assertLessEqual(left, {"Restore"})

    def test_second_run_is_refused_and_the_first_is_named(self):
        with self.held(*self.import_all) as first:
            name = f"carrovan-cli import, process {first.process.pid}"
            self.assertEqual(first.name(), name)
            machine = snapshot(self.machine.root)
            for verb in self.changing_verbs():
                done = self.machine.run(*verb)
                self.assert_refused(done, 1, f"Another run is at work: {name}\n")
                self.assertEqual(snapshot(self.machine.root), machine, verb)
            self.assertEqual(first.go_on(), 0)
        self.assert_nothing_of_the_lock()
        self.run_verb("undo")
        self.assertEqual(differences(self.before, self.state()), [])

    def test_what_only_looks_works_beside_a_run(self):
        with self.held(*self.import_all):
            self.export(self.folder / "another.ucex")
            for verb in (("versions",), ("inspect", self.package), ("restore-points",)):
                self.run_verb(*verb)
            for verb in (self.import_all, ("reset", "--all")):
                self.run_verb(*verb, "--dry-run")

    def start_undo(self):
        """One that has something to do."""
        self.run_verb("reset", "--all", "--yes")
        return self.start("undo")

    def test_reset_and_undo_are_named_as_well(self):
        for verb, start in (("reset", lambda: self.start("reset", "--all", "--yes")),
                            ("undo", self.start_undo)):
            with HeldRun(start, self.own) as first:
                self.assert_refused(
                    self.machine.run(*self.import_all), 1, "Another run is at work: "
                    f"carrovan-cli {verb}, process {first.process.pid}\n")
                self.assertEqual(first.go_on(), 0)

    def test_killed_run_keeps_nobody_out(self):
        with self.held(*self.import_all) as first:
            first.kill()
        self.assertTrue((self.own / "run.owner").exists())
        self.run_verb(*self.import_all)
        self.assert_nothing_of_the_lock()
        self.undo_all()

    def test_name_of_a_killed_run_is_not_taken_for_the_one_that_works(self):
        with self.held(*self.import_all) as first:
            first.kill()
        with self.held(*self.import_all) as second:
            self.assertIn(f"process {second.process.pid}\n", self.machine.run("undo").stderr)

    def test_of_runs_that_start_at_once_each_is_whole_or_refused(self):
        runs = [self.start(*self.import_all, errors=subprocess.PIPE)
                for _ in range(STARTED_AT_ONCE)]
        names = {f"Another run is at work: carrovan-cli import, process {run.pid}\n"
                 for run in runs}
        done = 0
        for run in runs:
            errors = run.communicate(timeout=300)[1]
            if run.returncode == 1:
                self.assertIn(errors, names)
            else:
                self.assertEqual(run.returncode, 0, errors)
                done += 1
        self.assertGreater(done, 0)
        self.assertEqual(len(self.points()), done)
        self.assert_nothing_of_the_lock()
        self.undo_all()

    def test_runs_that_change_nothing_leave_the_machine_as_it_was(self):
        machine = snapshot(self.machine.root)
        self.run_verb("prune", "--keep", "0")
        self.run_verb("undo", status=1)
        self.assertEqual(snapshot(self.machine.root), machine)
        self.assertFalse(self.own.exists())

    def test_disk_without_room_for_the_lock_keeps_nobody_from_an_undo(self):
        self.run_verb(*self.import_all)
        kept = self.own.rename(self.folder / "kept")
        self.own.mkdir()
        done = self.in_namespace(
            'own=$1; kept=$2; shift 2; mount -t tmpfs -o nr_inodes=2k none "$own" || exit 99\n'
            'cp -a "$kept/." "$own"; seq -f "$own/Restore/%g" 2000 | xargs touch 2>/dev/null\n'
            'touch "$own/run.lock" 2>/dev/null && exit 98\n'
            'exec "$@"\n', self.own, kept, CLI, "--root", self.machine.root, "undo")
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertEqual(differences(self.before, self.state()), [])


if __name__ == "__main__":
    unittest.main()
