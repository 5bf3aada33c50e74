"""Eight workstations at once, of which five are not as they should be."""

import shutil
import threading
import time
import unittest

from fleet_case import HOST_FAILED, FleetTest, setup_program

POLL_SECONDS = 0.05  # an import under Wine takes several seconds
LIMIT_SECONDS = 600


class EightHostsTest(FleetTest):
    """One rollout; what came of it is looked at host by host."""

    HOSTS = 8

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.sound = cls.hosts[:3]
        cls.busy, cls.full, cls.leaving, cls.chatty, cls.silent = cls.hosts[3:]
        cls.filled = False

    def test_1_setup_reaches_all_of_them_at_once(self):
        results = self.play("run.yml", carrovan_job="prune", carrovan_setup=str(setup_program()))
        self.assertEqual({host["result"] for host in self.fleet(results).values()}, {"done"})

    def test_2_import_is_played_to_its_end_whatever_happens_to_some_hosts(self):
        shared = type(self)
        shared.before = {host: host.settings() for host in self.hosts}
        make_chatty(self.chatty)
        shared.filled = self.full.fill_disk()
        self.silent.switch_off()
        self.leaving.restart()
        leaving = threading.Thread(target=switch_off_in_the_middle, args=(self.leaving,))
        leaving.start()
        with self.busy.running_product():
            shared.results = self.play("run.yml", status=HOST_FAILED,
                                       carrovan_package=str(self.package))
        leaving.join()
        shared.play_said = self.said
        shared.results_by_host = self.fleet(self.results)
        self.silent.switch_on()

    def test_3_import_is_done_where_nothing_is_in_its_way(self):
        for host in self.sound:
            with self.subTest(host=host.name):
                self.assertEqual(self.exit_status(self.results, host), 0)
                self.assertEqual(self.results_by_host[host.name]["result"], "done")
                self.assertNotRegex(self.play_said, rf"fatal: \[{host.name}\]")
                self.assert_changed(host, self.before[host])

    def test_3_host_on_which_the_product_runs_has_failed_and_keeps_its_settings(self):
        self.assert_host_failed(self.busy, "failed", "Please close the product")
        self.assert_unchanged(self.busy, self.before[self.busy])

    def test_3_host_with_a_full_disk_has_failed_and_keeps_its_settings(self):
        if not self.filled:
            self.skipTest("this system lets nobody mount a small disk")
        self.assert_host_failed(self.full, "failed", "are free in")
        self.assert_unchanged(self.full, self.before[self.full])

    def test_3_host_that_answers_with_anything_but_a_document_has_failed(self):
        self.assertEqual(self.exit_status(self.results, self.chatty), 0)
        self.assert_host_failed(self.chatty, "not understood", "")
        self.assert_unchanged(self.chatty, self.before[self.chatty])

    def test_3_host_that_is_off_has_failed_and_says_nothing_later(self):
        self.assert_host_failed(self.silent, "failed", "the host does not answer")
        self.assert_unchanged(self.silent, self.before[self.silent])

    def test_3_host_that_goes_away_in_the_middle_has_failed(self):
        self.assert_host_failed(self.leaving, "failed", "the host does not answer")
        self.assertEqual(len(self.leaving.restore_points()), 1)

    def test_4_host_that_went_away_in_the_middle_gets_its_settings_back(self):
        self.leaving.switch_on()
        results = self.play("run.yml", carrovan_job="undo",
                            hosts={self.leaving.name: self.leaving.inventory()})
        self.assertEqual(self.document(results, self.leaving)["verb"], "undo")
        self.assert_unchanged(self.leaving, self.before[self.leaving])

    def assert_host_failed(self, host, result, reason):
        """For the play and on the page, which says why."""
        self.assertRegex(self.play_said, rf"fatal: \[{host.name}\]")
        self.assertEqual(self.results_by_host[host.name]["result"], result)
        page = (self.results / "report.html").read_text(encoding="utf-8")
        self.assertIn(host.name, page)
        self.assertIn(reason, page)


def make_chatty(host):
    """Its program greets instead of answering, and says that all went well."""
    program = host.local / "Programs/Carrovan/carrovan-cli.exe"
    shutil.copy2(host.drive / "windows/system32/cmd.exe", program)


def switch_off_in_the_middle(host):
    """As soon as the import keeps what it is about to change."""
    end = time.monotonic() + LIMIT_SECONDS
    while time.monotonic() < end:
        if host.restore_points():
            host.switch_off()
            return
        time.sleep(POLL_SECONDS)
    raise AssertionError(f"waited {LIMIT_SECONDS} s in vain for the import of {host.name}")


if __name__ == "__main__":
    unittest.main()
