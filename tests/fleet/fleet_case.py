"""What the tests of fleets share: the control machine, which plays the role's playbooks."""

import functools
import json
import os
import shutil
import sys
import tempfile
import unittest
from pathlib import Path

from hosts import FOLDER, PRODUCT_FOLDER, PROJECT, Host, make_key, make_template, write_inventory

sys.path.append(str(PROJECT / "tests/e2e"))
from limits import run_limited  # noqa: E402
from machines import RELEASE_CLI, make_sandbox  # noqa: E402
from playable import differences  # noqa: E402

ANSIBLE = PROJECT / "deploy/ansible"
DIST = PROJECT / "build/dist"
PLAY_SECONDS = 900  # far beyond what a play takes on a busy machine
HOST_FAILED = 2  # the playbook's exit status


class FleetTest(unittest.TestCase):
    """A fleet that all tests of a class share; each finds it as the one before has left it."""

    HOSTS = 2

    @classmethod
    def setUpClass(cls):
        make_template()
        cls.folder = Path(tempfile.mkdtemp())
        cls.addClassCleanup(shutil.rmtree, cls.folder)
        key = make_key(cls.folder)
        cls.hosts = []
        for number in range(1, cls.HOSTS + 1):
            cls.hosts.append(Host(f"ws{number:02}", number, key))
            cls.addClassCleanup(cls.hosts[-1].remove)
        cls.package = colleagues_package()

    def play(self, playbook, *, status=0, hosts=None, **variables):
        """Plays it over the hosts; the folder of the answers, if it makes one."""
        results = self.folder / f"results-{len(list(self.folder.glob('results-*')))}"
        inventory = self.folder / "inventory.json"
        write_inventory({host.name: host.inventory() for host in self.hosts}
                        if hosts is None else hosts, inventory, carrovan_version="2026",
                        carrovan_product_folder=PRODUCT_FOLDER, carrovan_results=str(results),
                        carrovan_program=str(RELEASE_CLI), **variables)
        done = run_limited(["ansible-playbook", "-i", inventory, playbook], cwd=ANSIBLE,
                           env=self._environment(), seconds=PLAY_SECONDS, encoding="utf-8")
        self.said = done.stdout + done.stderr
        self.assertEqual(done.returncode, status, self.said)
        return next(iter(results.glob("*")), None)

    def _environment(self):
        """The control machine's user has known no host before."""
        return {**os.environ, "ANSIBLE_HOST_KEY_CHECKING": "False", "ANSIBLE_NOCOLOR": "1",
                "ANSIBLE_SSH_ARGS": "-o ControlMaster=auto -o ControlPersist=30s -o "
                f"ControlPath={self.folder}/%C -o UserKnownHostsFile=/dev/null "
                "-o ServerAliveInterval=2 -o ServerAliveCountMax=2",
                "ANSIBLE_LOCALHOST_WARNING": "False", "LC_ALL": "C.UTF-8"}

    def answer(self, results, host, number=1):
        return results / host.name / "answers" / str(number)

    def document(self, results, host):
        return json.loads((self.answer(results, host) / "output.json").read_text("utf-8"))

    def exit_status(self, results, host):
        return int((self.answer(results, host) / "status.txt").read_text("utf-8"))

    def errors(self, results, host):
        return (self.answer(results, host) / "errors.txt").read_text("utf-8")

    def assert_failed(self, host):
        self.assertRegex(self.said, rf"fatal: \[{host.name}\]")

    def assert_not_failed(self, host):
        self.assertNotRegex(self.said, rf"fatal: \[{host.name}\]")

    def assert_changed(self, host, before):
        self.assertNotEqual(differences(before, host.settings()), [], host.name)

    def assert_unchanged(self, host, before):
        self.assertEqual(differences(before, host.settings()), [], host.name)

    def fleet(self, results):
        """The sum of a run, by host."""
        done = run_limited([RELEASE_CLI, "fleet", results, "--json"], encoding="utf-8")
        self.assertIn(done.returncode, (0, 3), done.stderr)
        return {host["host"]: host for host in json.loads(done.stdout)["hosts"]}


@functools.cache
def setup_program():
    """What users download, made of the programs as they are built."""
    folder = FOLDER / "dist"
    run_limited([PROJECT / "tools/make-dist", "--pack", folder], check=True, seconds=900)
    program, = folder.glob("*-setup.exe")
    return program


@functools.cache
def colleagues_package():
    """The settings of 2025 of somebody else."""
    package = FOLDER / "colleague.ucex"
    with tempfile.TemporaryDirectory() as folder:
        machine = make_sandbox(Path(folder) / "machine", "--user", "ada", "--seed", "7")
        done = machine.run("export", "--version", "2025", "--all", "--output", package,
                           program=RELEASE_CLI)
        assert done.returncode == 0, done.stderr
    return package
