"""What collected answers of many hosts come to, whatever one of them holds."""

import json
import os
import stat
import unittest

from fleet_folder import FleetFolder, document, sample
from machines import AS_PLAIN_USER, SandboxTest, run_cli, small_sandbox
from report_test import Page

NO_DOCUMENT = "it answered with something other than a document of carrovan-cli: "


class FleetCase(SandboxTest):
    def setUp(self):
        super().setUp()
        self.results = self.folder / "results"

    def fleet(self, *options, status=3):
        done = run_cli("fleet", self.results, *options, timeout=120)
        self.assertEqual((done.returncode, done.stderr), (status, ""))
        return done.stdout

    def hosts(self, status=3):
        """The document's hosts by name."""
        read = json.loads(self.fleet("--json", status=status))
        self.assertEqual((read["verb"], read["exitStatus"]), ("fleet", status))
        return {host["host"]: host for host in read["hosts"]}

    def judge(self, *answer, job="import", **named):
        """The result and the reason of a host with this one answer."""
        folder = FleetFolder(self.results, ["ws01"], job)
        folder.answer("ws01", *answer, **named)
        host = self.hosts()["ws01"]
        return host["result"], host["reason"]


class FleetResultTest(FleetCase):
    def test_each_host_has_a_line_and_the_last_one_is_the_sum(self):
        sample(self.results)
        (self.results / "ws77").mkdir()
        *lines, other, total = self.fleet().splitlines()
        self.assertEqual([line.split()[0] for line in lines], [f"ws{i:02}" for i in range(1, 11)])
        self.assertEqual(lines[0], "ws01  ada      done            0")
        self.assertEqual(lines[4], "ws05  ada      done in part    3     Not imported: "
                                   r"Options\General.reg: access denied (error 5)")
        self.assertEqual(lines[6], "ws07           failed          -     "
                                   "unreachable: Connection timed out")
        self.assertIn("ws08  ada, 张伟  failed          0, 1  Another run is at work", lines[7])
        self.assertEqual(lines[9], "ws10           no answer       -")
        self.assertEqual(other, "Not asked: ws77")
        self.assertEqual(total, "10 hosts: 4 done, 1 in part, 3 failed, 1 no answer, "
                                "1 not understood")

    def test_status_is_zero_only_when_every_host_is_done(self):
        fleet = FleetFolder(self.results, ["ws01", "ws02"], note="of no matter")
        fleet.answer("ws01", document())
        self.assertIn("2 hosts: 1 done, 1 no answer\n", self.fleet(status=3))
        fleet.answer("ws02", document())
        self.assertIn("2 hosts: 2 done\n", self.fleet(status=0))

    def test_document_holds_what_the_hosts_said(self):
        sample(self.results)
        read = json.loads(self.fleet("--json"))
        self.assertEqual(read["job"], "import")
        self.assertEqual(read["totals"], {"hosts": 10, "done": 4, "inPart": 1, "failed": 3,
                                          "wrongUsage": 0, "noAnswer": 1, "notUnderstood": 1})
        hosts = {host["host"]: host for host in read["hosts"]}
        self.assertEqual(hosts["ws07"]["failure"],
                         ["unreachable: Connection timed out", "after 3 attempts"])
        partly, = hosts["ws05"]["answers"]
        self.assertEqual((partly["result"], partly["user"], partly["exitStatus"]),
                         ("done in part", "ada", 3))
        self.assertEqual(partly["emptied"], ["Catalog Library"])
        self.assertEqual(len(partly["differences"]), 1)
        self.assertEqual(len(hosts["ws04"]["answers"][0]["dropped"]), 3)
        self.assertEqual([answer["user"] for answer in hosts["ws08"]["answers"]], ["ada", "张伟"])
        self.assertEqual(hosts["ws10"]["answers"], [])

    def test_documents_of_real_runs_are_understood(self):
        machine = small_sandbox(self.folder / "machine")
        verbs = {"export": ("export", "--version", "2025", "--all", "--output", self.package),
                 "import": ("import", self.package, "--to", "2026", "--all", "--verify"),
                 "undo": ("undo",), "reset": ("reset", "--all", "--yes"),
                 "prune": ("prune", "--keep", "0"), "versions": ("versions",)}
        for verb, arguments in verbs.items():
            done = machine.run(*arguments, "--json")
            self.results = self.folder / verb
            fleet = FleetFolder(self.results, ["ws01"], verb)
            fleet.answer("ws01", done.stdout, str(done.returncode), done.stderr)
            status = 3 if done.returncode else 0
            word = "done in part" if done.returncode else "done"
            self.assertEqual(self.hosts(status)["ws01"]["result"], word, (verb, done.stderr))

    def test_refused_run_needs_no_document(self):
        self.assertEqual(self.judge("", "1", "\nThe product runs\n"), ("failed", "The product runs"))

    def test_wrong_usage_is_no_failure_of_the_run(self):
        self.assertEqual(self.judge(None, "2", "--to is needed\n"),
                         ("wrong usage", "--to is needed"))

    def test_failure_counts_besides_an_answer(self):
        fleet = FleetFolder(self.results, ["ws01"])
        fleet.answer("ws01", document())
        fleet.failure("ws01", "the second user was not reached")
        host = self.hosts()["ws01"]
        self.assertEqual((host["result"], host["reason"]),
                         ("failed", "the second user was not reached"))
        self.assertEqual(host["answers"][0]["result"], "done")


class HostileAnswerTest(FleetCase):
    def assert_not_understood(self, reason, *answer, **named):
        result, why = self.judge(*answer, **named)
        self.assertEqual(result, "not understood", why)
        self.assertIn(reason, why)
        self.assertNotIn(" done,", self.fleet())

    def assert_no_document(self, reason, *answer, **named):
        self.assert_not_understood(NO_DOCUMENT + reason, *answer, **named)

    def test_output_that_is_no_json(self):
        self.assert_no_document("it is not whole JSON", "All is well.\n")

    def test_output_that_is_cut_short(self):
        self.assert_no_document("it is not whole JSON", document()[:-3])

    def test_output_with_something_behind_it(self):
        self.assert_no_document("it is not whole JSON", document() + document())

    def test_output_that_is_not_utf8(self):
        self.assert_no_document("it is not whole JSON", b'{"verb": "import\xff"}')

    def test_output_that_is_missing_or_empty(self):
        for output in (None, "", "\r\n "):
            self.assert_not_understood("it printed no document", output)
            self.results = self.folder / repr(output)

    def test_output_that_nests_a_million_deep(self):
        for output in ("[" * 1_000_000, '{"a":' * 1_000_000,
                       '{"verb": "import", "x": ' + "[" * 500_000 + "]" * 500_000 + "}"):
            self.assert_no_document("it nests deeper than 64 levels", output)
            self.results = self.folder / f"results{len(output)}"

    def test_output_with_more_values_than_any_run_reports(self):
        self.assert_no_document("it holds more than 2000000 values",
                                '{"verb": "import", "log": [' + "0," * 2_000_001 + "0]}")

    def test_output_that_is_no_object(self):
        for output in ("[]", "null", "3", '"import"'):
            self.assert_no_document("it is no object", output)
            self.results = self.folder / output.strip('"')

    def test_document_of_another_verb(self):
        self.assert_no_document('it is of the verb "reset"', document("reset"))

    def test_document_without_a_verb(self):
        self.assert_no_document("it names no verb", '{"versions": []}')

    def test_document_of_nobody_for_a_job_of_another_word(self):
        self.assert_no_document("it names no verb", '{"changed": true}', job="roll-out")

    def test_document_whose_status_is_not_that_of_the_program(self):
        self.assert_no_document("it names the exit status 3, but the program ended with 0",
                                document(status=3))

    def test_members_of_wrong_types(self):
        for i, members in enumerate((
                {"problems": "none"}, {"problems": [1]}, {"categories": {}},
                {"categories": ["Options"]}, {"categories": [{"label": 1, "outcome": "imported"}]},
                {"dropped": [None]}, {"dropped": [{"why": []}]}, {"emptied": 0},
                {"verification": []}, {"verification": {"differences": {}}},
                {"restorePoint": 7}, {"package": []}, {"dryRun": "yes"}, {"kept": {}})):
            self.results = self.folder / f"results{i}"
            self.assert_no_document("its member ", document(**members))
            self.assertIn("is not of the type that it should be", self.fleet())

    def test_status_of_the_wrong_type(self):
        for i, status in enumerate(("0", 0.0, True, [], {})):
            self.results = self.folder / f"results{i}"
            self.assert_no_document("its exitStatus is no number",
                                    json.dumps({"verb": "import", "exitStatus": status}))

    def test_exit_status_that_is_missing_or_nonsense(self):
        for i, (status, reason) in enumerate((
                (None, "its exit status is missing"), ("", 'is no number: ""'),
                ("zero", 'is no number: "zero"'), ("0x0", "is no number"),
                ("0 0", "is no number"), ("99999999999999999999", "is no number"))):
            self.results = self.folder / f"results{i}"
            self.assert_not_understood(reason, document(), status)

    def test_exit_status_that_is_none_of_the_programs(self):
        for i, status in enumerate(("139", "-1073741819", "4")):
            self.results = self.folder / f"results{i}"
            result, reason = self.judge("", status)
            self.assertEqual(result, "failed")
            self.assertEqual(reason, f"it ended with exit status {status}, "
                                     "which carrovan-cli never gives")

    def test_file_that_is_larger_than_the_limit(self):
        folder = FleetFolder(self.results, ["ws01"]).answer("ws01", document())
        for name in ("output.json", "status.txt", "errors.txt"):
            content = (folder / name).read_bytes()
            os.truncate(folder / name, (64 << 20) + 1)
            if name == "errors.txt":
                self.assertEqual(self.hosts(0)["ws01"]["answers"][0]["errors"],
                                 ["errors.txt is larger than 64 MB"])
            else:
                self.assertEqual(self.hosts()["ws01"]["reason"], f"{name} is larger than 64 MB")
            (folder / name).write_bytes(content)

    def test_links_are_not_followed(self):
        elsewhere = FleetFolder(self.folder / "elsewhere", []).answer("ws01", document())
        hosts = ["file", "answer", "answers", "host"]
        fleet = FleetFolder(self.results, hosts)
        folder = fleet.answer("file", None)
        (folder / "output.json").symlink_to(elsewhere / "output.json")
        (self.results / "answer/answers").mkdir(parents=True)
        (self.results / "answer/answers/1").symlink_to(elsewhere)
        (self.results / "answers").mkdir()
        (self.results / "answers/answers").symlink_to(elsewhere.parent)
        (self.results / "host").symlink_to(elsewhere.parent.parent)
        (self.results / "other").symlink_to(elsewhere)
        read = self.hosts()
        self.assertIn("output.json is a link", read["file"]["reason"])
        self.assertIn("answers/1 is a link", read["answer"]["reason"])
        self.assertIn("answers is a link", read["answers"]["reason"])
        self.assertIn("is a link", read["host"]["reason"])
        self.assertFalse([host for host in hosts if read[host]["result"] == "done"])
        self.assertIn("Not asked: other\n", self.fleet())

    def test_what_is_no_file_is_not_waited_for(self):
        fleet = FleetFolder(self.results, ["pipe", "folder"])
        os.mkfifo(fleet.answer("pipe", None) / "output.json")
        (fleet.answer("folder", None) / "output.json").mkdir()
        read = self.hosts()
        self.assertIn("output.json is no file", read["pipe"]["reason"])
        self.assertIn("output.json is a folder", read["folder"]["reason"])

    def test_file_that_may_not_be_read_is_named(self):
        folder = FleetFolder(self.results, ["ws01"]).answer("ws01", document())
        (folder / "output.json").chmod(0)
        done = run_cli("fleet", self.results, wrapper=AS_PLAIN_USER)
        self.assertEqual(done.returncode, 3, done.stderr)
        self.assertIn("output.json cannot be read: access denied", done.stdout)

    def test_folder_that_may_not_be_read_is_named(self):
        fleet = FleetFolder(self.results, ["host", "answers", "answer"])
        locked = {"host": self.results / "host", "answers": self.results / "answers/answers",
                  "answer": self.results / "answer/answers/1"}
        for host, folder in locked.items():
            fleet.answer(host, document())
            folder.chmod(0)
        done = run_cli("fleet", self.results, wrapper=AS_PLAIN_USER)
        for folder in locked.values():
            folder.chmod(stat.S_IRWXU)
        self.assertEqual(done.returncode, 3, done.stderr)
        for what in ("its folder", "answers", "answers/1"):
            self.assertIn(f"  {what} cannot be read: access denied (error 5)\n", done.stdout)

    def test_names_that_lead_elsewhere_have_no_answer(self):
        FleetFolder(self.folder / "ws00", []).answer("x", document())
        names = ["..", ".", "", "../ws00", "..\\ws00", "/etc", "a\nb", str(self.folder / "ws00"),
                 "ws00/../ws01", "fleet.json"]
        FleetFolder(self.results, names).answer("ws01", document())
        read = self.hosts()
        for name in names:
            self.assertEqual(read[name]["answers"], [], name)
            self.assertNotEqual(read[name]["result"], "done", name)
            if name != "fleet.json":
                self.assertEqual(read[name]["reason"], "its name cannot be that of a folder")
        self.assertIn("a\\u000ab", self.fleet())

    def test_host_that_is_listed_twice_counts_once(self):
        FleetFolder(self.results, ["ws01", "ws01", "ws01"]).answer("ws01", document())
        text = self.fleet(status=0)
        self.assertEqual(text.splitlines()[1:], ["Named more than once: ws01", "1 host: 1 done"])
        self.assertEqual(len(self.hosts(0)), 1)

    def test_what_a_terminal_would_obey_is_printed_as_an_escape(self):
        evil = "\x1b[2J\u202e\x9b31m\r\x07evil"
        fleet = FleetFolder(self.results, ["ws01", evil])
        fleet.answer("ws01", document(status=3, problems=[evil]), "3", evil, user=evil)
        fleet.answer(evil, evil, user=evil)
        (self.results / ("n" + evil)).mkdir()
        for text in (self.fleet(), self.fleet("--json")):
            self.assertFalse(set(text) & set("\x1b\u202e\x9b\r\x07"))
            self.assertIn("evil", text)

    def test_standard_error_that_is_not_utf8_is_shown(self):
        result, reason = self.judge("", "1", b"\xffbad\r\nsecond\n")
        self.assertEqual((result, reason), ("failed", "\ufffdbad"))

    def test_endless_lists_are_cut_and_counted(self):
        FleetFolder(self.results, ["ws01"]).answer(
            "ws01", document(status=3, problems=["p" * 5000] * 2500), "3", "e\n" * 3000)
        answer, = self.hosts()["ws01"]["answers"]
        self.assertEqual((len(answer["problems"]), len(answer["errors"])), (2000, 2000))
        self.assertEqual(answer["omitted"], 1500)
        self.assertTrue(answer["problems"][0].endswith("… (5000 characters)"))


class FleetListTest(FleetCase):
    def test_folder_without_a_readable_list_is_refused(self):
        fleet = FleetFolder(self.results, [])
        for content in ("", "{", "[]", '{"job": "import"}', '{"hosts": []}', "[" * 1_000_000,
                        '{"job": 1, "hosts": []}', '{"job": "import", "hosts": "ws01"}',
                        '{"job": "import", "hosts": ["ws01", 2]}'):
            fleet.list(content)
            self.assert_refused(run_cli("fleet", self.results), 1, "fleet.json is not understood")
        (self.results / "fleet.json").unlink()
        self.assert_refused(run_cli("fleet", self.results), 1, "holds no fleet.json")
        (self.results / "fleet.json").mkdir()
        self.assert_refused(run_cli("fleet", self.results), 1, "fleet.json is a folder")

    def test_what_is_no_folder_is_refused(self):
        self.assert_refused(run_cli("fleet", self.results), 1, str(self.results))
        self.results.write_text("{}")
        self.assert_refused(run_cli("fleet", self.results), 1, str(self.results))

    def test_missing_argument_is_wrong_usage(self):
        self.assertEqual(run_cli("fleet").returncode, 2)


class FleetPageTest(FleetCase):
    def test_page_shows_each_host_and_first_what_needs_attention(self):
        sample(self.results)
        html = self.folder / "fleet.html"
        self.fleet("--report", html)
        text = html.read_text("utf-8")
        page = Page(text)
        self.assertIn("10 hosts: 4 done", page.all_text)
        rows = [attrs["data-kind"] for tag, attrs in page.elements if tag == "tr" and attrs]
        self.assertEqual(rows, ["failed", "failed", "done", "failed", "not understood",
                                "no answer", "done in part", "done", "done", "done", "done"])
        self.assertEqual(len(page.items("dropped")), 3)
        self.assertEqual(len(page.items("differs")), 1)
        self.assertEqual(len(page.items("emptied")), 1)

    def test_page_that_cannot_be_written_is_refused(self):
        sample(self.results)
        read_only = self.folder / "read-only.html"
        read_only.write_text("mine")
        read_only.chmod(stat.S_IREAD)
        for path in (read_only, self.folder / "missing/page.html"):
            done = run_cli("fleet", self.results, "--report", path, wrapper=AS_PLAIN_USER)
            self.assert_refused(done, 1, f"The report cannot be written: {path}: ")
        self.assertEqual(read_only.read_text(), "mine")


if __name__ == "__main__":
    unittest.main()
