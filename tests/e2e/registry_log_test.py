"""The sandbox's registry: what a run has changed is in the hives when it ends and is not lost when
it is killed, and many changes of it cost no more than they say."""

import os
import random
import shutil
import subprocess
import time
import unittest

import hostile_zip
import registry_file
from machines import CLI, SandboxTest, small_sandbox
from playable import PlayableSandbox, differences

KILLS = int(os.environ.get("CARROVAN_KILLS", "25"))
KEY = r"HKEY_CURRENT_USER\SOFTWARE\Vantric\VANTRIC 28.0\Many"
# Far more than is needed, unless every change writes the whole hive.
SECONDS = 240


def make_package(path, files):
    """Each registry file makes a key of its own and sets a value that all of them set."""
    content = [("config.ini", hostile_zip.CONFIG)]
    for number in range(files):
        text = hostile_zip.registry_file(rf"{KEY}\{number}", f'"n"=dword:{number:08x}',
                                         "", f"[{KEY}]", f'"last"=dword:{number:08x}')
        content.append((rf"Options\{number:05}.reg", text))
    hostile_zip.make_package(path, content)


class RegistryLogTest(SandboxTest):
    def setUp(self):
        super().setUp()
        self.machine = small_sandbox(self.folder / "machine")
        self.before = PlayableSandbox(self.machine).state()
        self.registry = self.machine.root / "registry"

    def run_verb(self, *arguments):
        done = self.machine.run(*arguments, timeout=SECONDS)
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertEqual(self.logs(), [])

    def logs(self):
        return sorted(path.name for path in self.registry.glob("*.changes"))

    def keys(self):
        found = registry_file.parse(self.machine.registry_bytes("HKEY_CURRENT_USER"))
        return {key[len(KEY) + 1:]: values for key, values in found if key.startswith(KEY + "\\")}

    def test_many_registry_files_are_imported_and_undone(self):
        make_package(self.package, 400)
        self.run_verb("import", self.package, "--to", "2026", "--category", "Options")
        self.assertEqual(self.keys(), {f"{number}": [("n", f"dword:{number:08x}")]
                                       for number in range(400)})
        self.run_verb("undo")
        self.assertEqual(differences(self.before, PlayableSandbox(self.machine).state()), [])

    def test_kill_at_any_moment_loses_no_change_of_the_registry(self):
        make_package(self.package, 60)
        template = shutil.copytree(self.machine.root, self.folder / "template")
        begun = time.monotonic()
        self.assertEqual(self.start_import().wait(SECONDS), 0)
        longest = time.monotonic() - begun
        moments = random.Random(1)
        logs = changed = 0
        for number in range(KILLS):
            shutil.rmtree(self.machine.root)
            shutil.copytree(template, self.machine.root)
            program = self.start_import()
            time.sleep(moments.random() * longest)
            program.kill()
            program.wait(SECONDS)
            logs += self.logs() != []
            self.run_verb("versions")
            self.assert_imported_in_order(f"kill {number}")
            changed += self.keys() != {}
            done = self.machine.run("undo", timeout=SECONDS)
            if done.returncode != 1 or "There is nothing to undo" not in done.stderr:
                self.assertEqual(done.returncode, 0, f"kill {number}: {done.stderr}")
            self.assertEqual(differences(self.before, PlayableSandbox(self.machine).state()), [],
                             f"kill {number}")
            # What a kill has left of a hive that was being written, the next one takes over.
            self.assertLessEqual(len(list(self.registry.glob("*.part"))), 1)
        print(f"{KILLS} imports, {logs} left a log, {changed} had changed the registry")

    def start_import(self):
        return subprocess.Popen(
            [CLI, "--root", self.machine.root, "import", self.package, "--to", "2026",
             "--category", "Options"], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)

    def assert_imported_in_order(self, moment):
        """Each file whole or not at all, and none without those in front of it."""
        keys = self.keys()
        self.assertEqual(keys, {f"{number}": [("n", f"dword:{number:08x}")]
                                for number in range(len(keys))}, moment)
        found = dict(registry_file.parse(self.machine.registry_bytes("HKEY_CURRENT_USER")))
        if keys:
            self.assertEqual(found[KEY], [("last", f"dword:{len(keys) - 1:08x}")], moment)


if __name__ == "__main__":
    unittest.main()
