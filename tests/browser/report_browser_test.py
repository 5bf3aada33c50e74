#!/usr/bin/env python3
"""The page about a run in a real browser: it loads without an error, asks for nothing, is never
wider than the window, and its filter works. tools/test-report runs it."""

import html
import os
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
import urllib.parse
import zipfile
from pathlib import Path

PROJECT = Path(__file__).resolve().parents[2]
sys.path.append(str(PROJECT / "tests" / "e2e"))
sys.dont_write_bytecode = True

import fleet_folder  # noqa: E402
from machines import run_cli, small_sandbox  # noqa: E402

BROWSER = shutil.which("chromium")
PICTURES = Path(os.environ.get("CARROVAN_PICTURES", PROJECT / "build" / "report-pictures"))
LIMIT_SECONDS = 120
# Measures in place of the page's own script; the policy that forbids it is taken out with that.
MEASURE = """<script>
document.querySelectorAll("details").forEach(function (part) { part.open = true; });
parent.document.title = "wide " + document.documentElement.scrollWidth + " of " + innerWidth;
</script>"""
HOSTILE = ("</script><script>document.title='sentinel'</script>"
           "<img src=x onerror=document.title='sentinel'>\u202e\u05d0" + "x" * 90 + ".reg")

PACKAGE_TITLE = "Package \u2013 Carrovan"


def title_of(dom):
    return re.search(r"<title>(.*?)</title>", dom)[1]


def browse(page, *options, width=1280, height=1600, fragment="", dark=False):
    """The finished browser with its output; what pages log is on its standard error."""
    scheme = ["--force-dark-mode", "--blink-settings=preferredColorScheme=0"] if dark else []
    with tempfile.TemporaryDirectory() as profile:
        return subprocess.run(
            [BROWSER, "--headless", "--no-sandbox", "--disable-gpu", "--hide-scrollbars",
             "--disable-background-networking", "--disable-component-update", "--no-first-run",
             "--enable-logging=stderr", "--v=0", f"--user-data-dir={profile}",
             "--virtual-time-budget=3000", f"--window-size={width},{height}", *scheme, *options,
             page.as_uri() + fragment],
            capture_output=True, encoding="utf-8", timeout=LIMIT_SECONDS, check=False)


@unittest.skipUnless(BROWSER, "there is no browser; tools/install-dependencies browser installs it")
class ReportInBrowserTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.folder = Path(folder.name)
        machine = small_sandbox(cls.folder / "machine")
        package = cls.folder / "settings.ucex"
        cls.run_cli(machine, "export", "--version", "2025", "--all", "--output", package)
        cls.trial = cls.folder / "trial.html"
        cls.run_cli(machine, "import", package, "--to", "2026", "--all", "--dry-run",
                    "--report", cls.trial)
        with zipfile.ZipFile(package, "a") as archive:
            archive.writestr(HOSTILE, b"x")
            archive.writestr("Options\\" + HOSTILE.replace("/", "|"), b"x")
        cls.hostile = cls.folder / "hostile.html"
        cls.run_cli(machine, "inspect", package, "--report", cls.hostile)
        fleet = fleet_folder.sample(cls.folder / "fleet")
        fleet.answer("ws10", fleet_folder.document(status=3, problems=[HOSTILE * 3]), "3", HOSTILE,
                     user=HOSTILE)
        cls.fleet = cls.folder / "fleet.html"
        run_cli("fleet", fleet.root, "--report", cls.fleet)
        PICTURES.mkdir(parents=True, exist_ok=True)

    @staticmethod
    def run_cli(machine, *arguments):
        done = machine.run(*arguments)
        if not (arguments[-1]).exists():
            raise AssertionError(done.stderr)

    def dom(self, page, fragment=""):
        done = browse(page, "--dump-dom", fragment=fragment)
        self.assertIn("</html>", done.stdout, done.stderr)
        self.assertEqual(re.findall(r".*CONSOLE.*", done.stderr), [])
        return done.stdout

    def test_script_runs_without_an_error(self):
        for page in (self.trial, self.hostile, self.fleet):
            dom = self.dom(page)
            items = len(re.findall(r"<li [^>]*data-kind=", dom))
            self.assertIn(f">{items} of {items} items<", dom)

    def test_nothing_is_asked_for(self):
        log = self.folder / "net.json"
        done = browse(self.hostile, "--dump-dom", f"--log-net-log={log}")
        self.assertIn("</html>", done.stdout)
        asked = set(re.findall(r'"url":"([^"]*)"', log.read_text("utf-8", "replace")))
        own = self.hostile.as_uri()
        foreign = {url for url in asked if not own.startswith(url.split("#")[0])
                   and urllib.parse.urlsplit(url).scheme in ("http", "https", "file", "ws", "ftp")
                   and not urllib.parse.urlsplit(url).netloc.endswith(
                       (".google.com", ".googleapis.com", ".gvt1.com"))}
        self.assertEqual(foreign, set())

    def test_names_of_a_package_stay_text(self):
        dom = self.dom(self.hostile)
        self.assertEqual(title_of(dom), PACKAGE_TITLE)
        self.assertNotIn("<img", dom)
        self.assertIn("document.title='sentinel'", html.unescape(dom))

    def test_policy_stops_a_script_and_a_style_that_got_in_all_the_same(self):
        page = self.folder / "injected.html"
        page.write_text(self.hostile.read_text("utf-8").replace(
            "<footer>", "<script>document.title='sentinel'</script>"
            "<img src='x' onerror=\"document.title='sentinel'\"><footer>"), "utf-8")
        done = browse(page, "--dump-dom")
        self.assertEqual(title_of(done.stdout), PACKAGE_TITLE)
        self.assertIn("Content Security Policy", done.stderr)

    def shown(self, fragment, page=None):
        """Of each kind, how many items the page shows."""
        dom = self.dom(page or self.trial, fragment)
        items = re.findall(r'<li class="[^"]*" data-kind="([^"]*)"( hidden="")?>', dom)
        shown = [kind for kind, hidden in items if not hidden]
        self.assertIn(f">{len(shown)} of {len(items)} items<", dom)
        return shown, dom

    def test_filter_shows_a_kind(self):
        shown, dom = self.shown("#kind=dropped")
        self.assertEqual(set(shown), {"dropped"})
        self.assertRegex(dom, r'<details class="card cat" id="c1"[^>]* hidden=""')
        self.assertRegex(dom, r'<details class="card cat" id="c0" open=""')

    def test_filter_shows_a_category(self):
        everything, _ = self.shown("")
        shown, dom = self.shown("#category=c2")
        self.assertIn("merged", shown)
        self.assertLess(len(shown), len(everything))
        hidden = re.findall(r'<details class="card cat" id="c\d+"[^>]* hidden=""', dom)
        self.assertEqual(len(hidden), dom.count('<details class="card cat"') - 1)

    def test_filter_finds_text_of_an_item_and_of_its_place_in_any_case(self):
        shown, dom = self.shown("#kind=changed&text=ANNOTATIONSlimit00")
        self.assertEqual(shown, ["changed"])
        self.assertIn("AnnotationsLimit00", dom)
        in_place, _ = self.shown("#text=" + urllib.parse.quote("28.0\\annotations"))
        self.assertGreater(len(in_place), len(shown))
        self.assertEqual(self.shown("#text=%3Cscript%3E")[0], [])

    def test_filter_of_a_fleet_shows_lines_of_the_hosts_that_are_shown(self):
        rows = r'<tr class="[^"]*" data-of="(c\d+)" data-kind="([^"]*)"( hidden="")?>'
        everything = re.findall(rows, self.shown("", self.fleet)[1])
        self.assertEqual([kind for _, kind, hidden in everything if hidden], [])
        shown, dom = self.shown("#kind=failed", self.fleet)
        self.assertEqual(set(shown), {"failed"})
        hosts = {host for host, kind, _ in everything if kind == "failed"}
        self.assertEqual({host for host, _, hidden in re.findall(rows, dom) if not hidden}, hosts)
        self.assertLess(len(hosts), len({host for host, _, _ in everything}))

    def test_names_of_a_fleet_stay_text(self):
        dom = self.dom(self.fleet)
        self.assertEqual(title_of(dom), "Fleet \u2013 Carrovan")
        self.assertNotIn("<img", dom)

    def test_page_is_never_wider_than_the_window(self):
        for page in (self.trial, self.hostile, self.fleet):
            text = page.read_text("utf-8")
            text = re.sub(r'<meta http-equiv="Content-Security-Policy"[^>]*>', "", text)
            text = re.sub(r"<script>.*</script>", lambda _: MEASURE, text, flags=re.DOTALL)
            measured = self.folder / f"measured-{page.name}"
            for width in (375, 1280):
                # A window cannot be so narrow, a frame in it can.
                measured.write_text(f'<title></title><iframe width="{width}" height="900" '
                                    f'frameborder="0" srcdoc="{html.escape(text)}"></iframe>',
                                    "utf-8")
                self.assertEqual(title_of(browse(measured, "--dump-dom").stdout),
                                 f"wide {width} of {width}", page.name)

    def test_pictures_show_the_page_light_and_dark_wide_and_narrow(self):
        seen = set()
        for dark in (False, True):
            for width in (1280, 375):
                name = f"trial-{width}-{'dark' if dark else 'light'}.png"
                browse(self.trial, f"--screenshot={PICTURES / name}", width=width, dark=dark,
                       fragment="#category=c2")
                seen.add((PICTURES / name).read_bytes())
                name = name.replace("trial", "fleet")
                browse(self.fleet, f"--screenshot={PICTURES / name}", width=width, dark=dark)
                seen.add((PICTURES / name).read_bytes())
        self.assertEqual(len(seen), 8)


if __name__ == "__main__":
    unittest.main()
