"""A small fleet: a workstation as it should be, and one on which the product runs."""

import unittest

from fleet_case import HOST_FAILED, FleetTest, setup_program

REFUSAL = "Please close the product before running it again"


class TwoHostsTest(FleetTest):
    """The steps of a rollout, one after the other."""

    def test_1_export_is_fetched_from_every_host_after_a_silent_setup(self):
        results = self.play("run.yml", carrovan_job="export", carrovan_setup=str(setup_program()))
        for host in self.hosts:
            self.assertEqual(self.exit_status(results, host), 0)
            self.assertEqual(self.document(results, host)["verb"], "export")
            package = self.answer(results, host) / "settings.ucex"
            self.assertEqual(package.read_bytes()[:2], b"PK")
        self.assertEqual([host["result"] for host in self.fleet(results).values()], ["done"] * 2)
        self.assertTrue((results / "report.html").is_file())

    def test_2_import_fails_the_host_on_which_the_product_runs_and_no_other(self):
        idle, busy = self.hosts
        type(self).before = {host: host.settings() for host in self.hosts}
        with busy.running_product():
            results = self.play("run.yml", status=HOST_FAILED, carrovan_package=str(self.package))
        self.assertEqual(self.exit_status(results, idle), 0)
        document = self.document(results, idle)
        self.assertEqual((document["verb"], document["verification"]["differences"]),
                         ("import", []))
        self.assert_changed(idle, self.before[idle])
        self.assertEqual(self.exit_status(results, busy), 1)
        self.assertIn(REFUSAL, self.errors(results, busy))
        self.assert_unchanged(busy, self.before[busy])
        self.assert_failed(busy)
        self.assert_not_failed(idle)
        fleet = self.fleet(results)
        self.assertEqual(fleet[idle.name]["result"], "done")
        self.assertNotEqual(fleet[busy.name]["result"], "done")
        self.assertIn(REFUSAL, (results / "report.html").read_text(encoding="utf-8"))

    def test_3_dry_run_changes_nothing_and_is_reported(self):
        before = {host: host.settings() for host in self.hosts}
        results = self.play("run.yml", carrovan_package=str(self.package), carrovan_dry_run=True,
                            carrovan_categories=["Options", "Interface layout"],
                            carrovan_options=["--map", r"D:\100% ours & theirs=C:\Users\Public"])
        for host in self.hosts:
            document = self.document(results, host)
            self.assertTrue(document["dryRun"])
            self.assertLessEqual({category["label"] for category in document["categories"]},
                                 {"Options", "Interface layout", "Other"})
            self.assert_unchanged(host, before[host])

    def test_4_undo_gives_every_host_back_what_it_had(self):
        idle, busy = self.hosts
        results = self.play("run.yml", status=HOST_FAILED, carrovan_job="undo")
        self.assertEqual(self.exit_status(results, idle), 0)
        self.assertEqual(self.document(results, idle)["verb"], "undo")
        self.assert_unchanged(idle, self.before[idle])
        self.assertIn("no restore point", self.errors(results, busy))
        self.assert_failed(busy)

    def test_5_prune_leaves_no_more_restore_points_than_asked_for(self):
        self.assertTrue(self.hosts[0].restore_points())
        results = self.play("run.yml", carrovan_job="prune", carrovan_keep=0)
        self.assertEqual(self.hosts[0].restore_points(), [])
        self.assertEqual(len(self.document(results, self.hosts[0])["removed"]), 1)

    def test_6_run_at_the_log_on_is_done_once_and_collected(self):
        rollout = {"carrovan_package": str(self.package), "carrovan_name": "standard-2026"}
        self.play("at_logon.yml", **rollout)
        for host in self.hosts:
            host.log_on("standard-2026")
        results = self.play("collect.yml", **rollout)
        for host in self.hosts:
            self.assertEqual(self.exit_status(results, host), 0)
            self.assertEqual(self.document(results, host)["verb"], "import")
            self.assertEqual(len(host.restore_points()), 1)
            host.log_on("standard-2026")
            self.assertEqual(len(host.restore_points()), 1)

    def test_7_run_that_was_withdrawn_does_not_come_at_the_log_on(self):
        self.play("withdraw.yml", carrovan_job="prune", carrovan_name="standard-2026")
        for host in self.hosts:
            self.assertFalse(host.task("Carrovan-Fleet-standard-2026").exists())
            self.assertFalse((host.drive / "Program Files/Carrovan-Fleet/standard-2026").exists())

    def test_8_host_that_has_not_answered_yet_has_failed(self):
        results = self.play("collect.yml", status=HOST_FAILED, carrovan_name="another",
                            carrovan_job="prune")
        for host in self.hosts:
            self.assert_failed(host)
            self.assertEqual(self.fleet(results)[host.name]["result"], "no answer")

    def test_9_word_that_no_argument_may_hold_reaches_no_host(self):
        for words in (['--map', 'a"=b'], ["--map", "a=b\r\ncalc"]):
            results = self.play("run.yml", status=HOST_FAILED, carrovan_job="prune",
                                carrovan_options=words)
            for host in self.hosts:
                self.assertIn("no argument", (results / host.name / "failure.txt").read_text())

    def test_name_that_would_lead_elsewhere_is_refused(self):
        results = self.play("run.yml", status=HOST_FAILED, carrovan_job="prune",
                            carrovan_name="..")
        self.assertIsNone(results)
        self.assertIn("carrovan_name has letters", self.said)


if __name__ == "__main__":
    unittest.main()
