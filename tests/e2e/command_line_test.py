"""The command line's own manners: help, version, wrong usage, versions of the product."""

import json
import os
import pty
import re
import subprocess

from machines import CLI, SandboxTest, make_sandbox, run_cli, small_sandbox

VERBS = ("versions", "export", "inspect", "verify", "extract")


class HelpTest(SandboxTest):
    def test_help_names_every_verb_the_exit_status_and_an_example(self):
        done = run_cli("--help")
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        for text in (*VERBS, "--root", "Exit status", "carrovan-cli export --version 2026 --all"):
            self.assertIn(text, done.stdout)
        self.assertLessEqual(max(map(len, done.stdout.splitlines())), 120)

    def test_each_verb_explains_itself(self):
        for verb in VERBS:
            done = run_cli(verb, "--help")
            self.assertEqual((done.returncode, done.stderr), (0, ""), verb)
            self.assertIn(verb, done.stdout)

    def test_version_is_one_line(self):
        done = run_cli("--version")
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        self.assertTrue(re.fullmatch(r"carrovan-cli \d+\.\d+\.\d+\n", done.stdout), done.stdout)

    def test_wrong_usage_is_told_on_standard_error(self):
        for arguments in ((), ("fly",), ("export",), ("export", "--version", "2026", "--all"),
                          ("export", "--all", "--output", "x.ucex"),
                          ("export", "--version", "2026", "--output", "x.ucex"),
                          ("export", "--version", "2026", "--all", "--category", "Options",
                           "--output", "x.ucex"),
                          ("inspect",), ("inspect", "a", "b"), ("extract", "a"),
                          ("versions", "--fast")):
            done = run_cli(*arguments, cwd=self.folder)
            self.assertEqual((done.returncode, done.stdout), (2, ""), arguments)
            self.assertNotEqual(done.stderr, "", arguments)
        self.assertIn('There is no verb "fly"', run_cli("fly").stderr)
        self.assertEqual(os.listdir(self.folder), [])


class VersionsTest(SandboxTest):
    def test_versions_as_text_name_year_and_folders(self):
        machine = make_sandbox(self.folder / "machine")
        done = machine.run("versions")
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        for text in ("2023", "2024", "2025", "2026", "never run",
                     r"HKEY_CURRENT_USER\SOFTWARE\Vantric\VANTRIC 28.0",
                     rf"C:\Users\{machine.user}\AppData\Roaming\Vantric\VANTRIC\27.0"):
            self.assertIn(text, done.stdout)

    def test_versions_as_json_hold_every_fact(self):
        machine = make_sandbox(self.folder / "machine", "--user", "王小明")
        done = machine.run("versions", "--json", env=dict(os.environ, LC_ALL="C"))
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        versions = json.loads(done.stdout)["versions"]
        self.assertEqual([(v["internalVersion"], v["releaseVersion"], v["running"],
                           v["hasBeenRun"]) for v in versions],
                         [("25.0", "2023", False, False), ("26.0", "2024", False, True),
                          ("27.0", "2025", False, True), ("28.0", "2026", True, True)])
        local = "C:\\Users\\王小明\\AppData\\Local\\"
        self.assertEqual(versions[2]["draftFolder"],
                         local + r"ORMA\ORMA CAD TVRN-INT-VANTRIC 2024 (x64)")
        self.assertEqual(versions[3], {
            "internalVersion": "28.0", "releaseVersion": "2026", "running": True,
            "hasBeenRun": True,
            "localFolder": local + r"Vantric\VANTRIC\28.0",
            "roamingFolder": local.replace("Local", "Roaming") + r"Vantric\VANTRIC\28.0",
            "draftFolder": local + r"ORMA\ORMA CAD TVRN-INT-VANTRIC 2026 (x64)",
            "registryKey": r"HKEY_CURRENT_USER\SOFTWARE\Vantric\VANTRIC 28.0"})

    def test_without_a_machine_the_verb_says_what_it_needs(self):
        self.assert_refused(run_cli("versions"), 1, "--root")

    def test_folder_that_is_no_machine_is_refused(self):
        self.assert_refused(run_cli("--root", self.folder, "versions"), 1, "product.ini")
        self.assert_refused(run_cli("--root", self.folder / "missing", "versions"), 1, "missing")


class ProgressTest(SandboxTest):
    def test_progress_is_shown_on_a_terminal_and_results_stay_apart(self):
        machine = small_sandbox(self.folder / "machine")
        terminal, program_side = pty.openpty()
        self.addCleanup(os.close, terminal)
        command = [CLI, "--root", machine.root, "export", "--version", "2026",
                   "--category", "Interface layout", "--output", self.package]
        done = subprocess.run(command, stdout=subprocess.PIPE, stderr=program_side, check=False)
        os.close(program_side)
        self.assertEqual(done.returncode, 0)
        self.assertIn(b" files", os.read(terminal, 4096))
        self.assertEqual(done.stdout.count(b"\n"), 1)
        self.assertNotIn(b" files", done.stdout)
