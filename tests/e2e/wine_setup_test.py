"""What users download: the setup and the portable zip, built twice and tried under Wine."""

import calendar
import functools
import hashlib
import os
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
import zipfile
from pathlib import Path

import registry_file
from help_page import HelpPage
from machines import MAKE_SAMPLE, PROJECT, digest
from wine_registry import export_key

sys.path.append(str(PROJECT / "tests/wizard"))
from limits import end_group, run_limited  # noqa: E402
from screen import LIMIT_SECONDS, Screen, wait_for  # noqa: E402
from wizard import HEADING, Wizard, processes_in_prefix  # noqa: E402

DIST = PROJECT / "build/dist"
PROGRAMS = PROJECT / "build/windows"
PICTURES = PROJECT / "build/test"
PREFIX = PROJECT / "build/wine-setup"
DRIVE = PREFIX / "drive_c"
BIN = DRIVE / "Program Files/ORMA/VANTRIC 2026/Bin"
BIN_NAME = r"C:\Program Files\ORMA\VANTRIC 2026\Bin"

HIVES = ("HKEY_CURRENT_USER", "HKEY_LOCAL_MACHINE")
SETTINGS = r"HKEY_CURRENT_USER\SOFTWARE\Carrovan"
UNINSTALL = r"HKEY_CURRENT_USER\Software\Microsoft\Windows\CurrentVersion\Uninstall\Carrovan"
APP_PATHS = r"SOFTWARE\Microsoft\Windows\CurrentVersion\App Paths\VANTRIC.exe"
CLASSES = r"Software\Classes"
PACKAGE_CLASS = "Carrovan.Package"
EXTENSIONS = (".ucex", ".ucx")
PROGRAM_FILES = ["carrovan-cli.exe", "carrovan.exe", "en-us/MevrinLg.DLL", "zh-cn/MevrinLg.DLL"]
HELP_FILES = ["help/" + name for name in (
    "administrators.html", "command-line.html", "help.css", "index.html", "package-format.html",
    "pictures/changes-100.png", "pictures/finish-100.png", "pictures/import-100.png",
    "pictures/start-100.png", "restore-points.html", "troubleshooting.html")]
FILES = sorted(["Carrovan.txt", *PROGRAM_FILES, *HELP_FILES])
UNINSTALLER_COPIES = ("Un.exe", "Un_A.exe", "Un_B.exe", "uninstall.exe")
DONE, FAILED, RUNNING, NO_LIBRARY = 0, 2, 3, 4


@functools.cache
def make_dist(*arguments):
    run_limited([PROJECT / "tools/make-dist", *arguments], check=True, seconds=3600)


def version():
    return re.search(r"^project\(carrovan VERSION ([0-9.]+)",
                     (PROJECT / "CMakeLists.txt").read_text(encoding="utf-8"),
                     re.MULTILINE).group(1)


def setup_program():
    return DIST / f"carrovan-{version()}-setup.exe"


def portable_zip():
    return DIST / f"carrovan-{version()}-portable.zip"


def files_of(folder):
    return sorted(path.relative_to(folder).as_posix() for path in folder.rglob("*")
                  if path.is_file())


def registry(key):
    """The values of a key and all below it, by the key's full path in lower case."""
    return {name.lower(): dict(values)
            for name, values in registry_file.parse(export_key(PREFIX, key))}


class DistTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        make_dist()

    def test_checksums_are_those_of_the_files(self):
        lines = (DIST / "SHA256SUMS").read_text(encoding="ascii").splitlines()
        self.assertEqual(lines, [f"{digest(file)}  {file.name}"
                                 for file in (portable_zip(), setup_program())])

    def test_packing_again_gives_the_same_bytes(self):
        with tempfile.TemporaryDirectory() as folder:
            make_dist("--pack", folder)
            for file in (portable_zip(), setup_program(), DIST / "SHA256SUMS"):
                self.assertEqual((Path(folder) / file.name).read_bytes(), file.read_bytes())

    def test_portable_zip_holds_what_the_setup_installs_and_nothing_of_the_build_machine(self):
        with zipfile.ZipFile(portable_zip()) as archive:
            self.assertEqual(archive.namelist(), FILES)
            self.assertEqual({entry.extra for entry in archive.infolist()}, {b""})
            self.assertEqual(len({entry.date_time for entry in archive.infolist()}), 1)

    def test_programs_bear_no_other_time_than_the_zip_and_no_path_of_the_build(self):
        with zipfile.ZipFile(portable_zip()) as archive:
            for name in PROGRAM_FILES:
                content = archive.read(name)
                header = int.from_bytes(content[0x3C:0x40], "little")
                linked = int.from_bytes(content[header + 8:header + 12], "little")
                packed = calendar.timegm((*archive.getinfo(name).date_time, 0, 0, 0))
                self.assertIn(linked, (0, packed - 1, packed), name)  # a zip has even seconds only
                self.assertNotIn(str(PROJECT).encode(), content, name)

    def test_setup_tells_its_version(self):
        content = setup_program().read_bytes()
        for key, value in (("ProductName", "Carrovan"), ("FileDescription", "Carrovan setup"),
                           ("ProductVersion", version()), ("FileVersion", version())):
            self.assertRegex(content, re.escape(key.encode("utf-16-le")) + b"\0{2,6}" +
                             re.escape(value.encode("utf-16-le")), key)


class HelpTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        make_dist()
        with zipfile.ZipFile(portable_zip()) as archive:
            cls.files = {name: archive.read(name) for name in archive.namelist()
                         if name.startswith("help/")}
        cls.pages = {name: HelpPage(content) for name, content in cls.files.items()
                     if name.endswith(".html")}

    def links_of(self, name):
        """Where a page leads and what it shows, each as a file and a name in it."""
        for link in self.pages[name].values_of("href", "src"):
            file, _, anchor = link.partition("#")
            yield "help/" + file if file else name, anchor

    def test_every_link_leads_to_a_file_of_the_help_and_a_name_in_it(self):
        for name in self.pages:
            for file, anchor in self.links_of(name):
                with self.subTest(page=name, link=f"{file}#{anchor}"):
                    self.assertIn(file, self.files)
                    if anchor:
                        self.assertIn(anchor, self.pages[file].values_of("id"))

    def test_everything_is_reached_from_the_page_that_opens_first(self):
        reached, waiting = set(), ["help/index.html"]
        while waiting:
            name = waiting.pop()
            reached.add(name)
            if name in self.pages:
                waiting += {file for file, _ in self.links_of(name)} - reached
        self.assertEqual(reached, set(self.files))

    def test_pages_are_english_in_utf_8_with_a_title_and_without_scripts(self):
        for name, page in self.pages.items():
            with self.subTest(page=name):
                self.assertEqual(page.values_of("lang"), ["en"])
                self.assertEqual(page.values_of("charset"), ["utf-8"])
                tags = [tag for tag, _ in page.elements]
                self.assertEqual((tags.count("title"), tags.count("h1"), tags.count("script")),
                                 (1, 1, 0))
                names = page.values_of("id")
                self.assertEqual(len(names), len(set(names)))
        self.assertIn("Show changes…".encode(), self.files["help/index.html"])

    def test_every_document_is_a_page_except_that_for_developers(self):
        documents = {path.stem for path in (PROJECT / "docs").glob("*.md")} - {"architecture"}
        pages = {Path(name).stem for name in self.pages}
        self.assertEqual(pages, documents - {"wizard"} | {"index"})

    def test_tables_are_tables(self):
        self.assertIn(b"<th>Exit code</th>", self.files["help/administrators.html"])


class InstalledCase(unittest.TestCase):
    """A Wine machine with the sample product, on which every test finds no Carrovan."""

    @classmethod
    def setUpClass(cls):
        make_dist()
        run_limited([PROJECT / "tools/wine-prefix", PREFIX], check=True)
        cls.screen = cls.enterClassContext(Screen())
        cls.environment = {**cls.screen.environment(), "WINEPREFIX": str(PREFIX)}
        cls.keep_wine_running()
        run_limited([sys.executable, MAKE_SAMPLE, "--wine", PREFIX], check=True)
        shutil.copy2(PROGRAMS / "tarvik.dll", BIN)
        PICTURES.mkdir(exist_ok=True)
        cls.local, = (DRIVE / "users").glob("*/AppData/Local")
        cls.folder = cls.local / "Programs/Carrovan"
        cls.link = (cls.local.parent /
                    "Roaming/Microsoft/Windows/Start Menu/Programs/Carrovan.lnk")
        cls.restore_point = cls.local / "Carrovan/Restore/2026-01-01/settings.ucex"
        cls.clean()  # a run that was killed left something

    @classmethod
    def keep_wine_running(cls):
        """Wine keeps to the screen, or to none, that its first program had, so the first one is a
        program on this screen that stays."""
        process = subprocess.Popen([PROJECT / "tools/wine", "cmd"], stdin=subprocess.PIPE,
                                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                                   env=cls.environment, process_group=0)
        cls.addClassCleanup(run_limited, ["wineserver", "-k"], env=cls.environment)
        cls.addClassCleanup(end_group, process)
        cls.addClassCleanup(process.stdin.close)

    @classmethod
    def run_windows(cls, *command):
        return run_limited([PROJECT / "tools/wine", *command], env=cls.environment,
                           encoding="utf-8")

    def setUp(self):
        self.addCleanup(self.clean)

    @classmethod
    def clean(cls):
        if (cls.folder / "uninstall.exe").exists():
            cls.uninstall("/PURGE")
        for folder in (cls.folder, cls.local / "Carrovan", DRIVE / "Carrovan"):
            shutil.rmtree(folder, ignore_errors=True)
        cls.link.unlink(missing_ok=True)
        keys = (SETTINGS, UNINSTALL, *(rf"{hive}\{APP_PATHS}" for hive in HIVES),
                *(rf"{hive}\{CLASSES}\{name}" for hive in HIVES
                  for name in (PACKAGE_CLASS, *EXTENSIONS)))
        (DRIVE / "clean.reg").write_text("Windows Registry Editor Version 5.00\n\n" + "".join(
            f"[-{key}]\n\n" for key in keys), encoding="utf-16", newline="\r\n")
        cls.run_windows("reg", "import", r"C:\clean.reg")
        (DRIVE / "clean.reg").unlink()

    def run_setup(self, *switches):
        return self.run_windows(setup_program(), "/S", *switches).returncode

    def install(self, *switches):
        self.assertEqual(self.run_setup(*switches), DONE)

    @classmethod
    def uninstall(cls, *switches):
        """The uninstaller works in a copy of itself, which goes on when the first one has ended."""
        cls.run_windows(cls.folder / "uninstall.exe", "/S", *switches)
        wait_for(lambda: not processes_in_prefix(PREFIX, UNINSTALLER_COPIES),
                 what="the uninstaller's copy to end")

    def run_cli(self, *arguments):
        return self.run_windows(self.folder / "carrovan-cli.exe", *arguments)

    def folder_name(self):
        """Of the folder that the setup takes by itself, as Windows programs name it."""
        return "C:\\" + str(self.folder.relative_to(DRIVE)).replace("/", "\\")

    def make_restore_point(self):
        self.restore_point.parent.mkdir(parents=True)
        self.restore_point.write_bytes(b"settings")

    def product_folder(self):
        """As the setup has noted it; None when it has not."""
        values = registry(SETTINGS)[SETTINGS.lower()]
        return values["ProductFolder"].strip('"').replace("\\\\", "\\") \
            if "ProductFolder" in values else None

    def settings_are_gone(self):
        return self.run_windows("reg", "query", SETTINGS).returncode != 0

    def classes(self, hive=HIVES[0]):
        """The values of Carrovan's class, of the extensions and of what is below them."""
        ours = tuple(rf"{hive}\{CLASSES}\{name}".lower() for name in (PACKAGE_CLASS, *EXTENSIONS))
        start = len(rf"{hive}\{CLASSES}" "\\")
        return {key[start:]: {name: re.sub(r"\\(.)", r"\1", data[1:-1])
                              for name, data in values.items()}
                for key, values in registry(rf"{hive}\Software").items() if key.startswith(ours)}

    def installed_classes(self, folder):
        return {
            "carrovan.package": {"": "User Configuration File"},
            r"carrovan.package\defaulticon": {"": folder + r"\carrovan.exe,0"},
            r"carrovan.package\shell": {},
            r"carrovan.package\shell\open": {},
            r"carrovan.package\shell\open\command": {"": f'"{folder}\\carrovan.exe" "%1"'},
            **{key: values for extension in EXTENSIONS for key, values in (
                (extension, {"": PACKAGE_CLASS}),
                (rf"{extension}\openwithprogids", {PACKAGE_CLASS: ""}))}}


class SilentSetupTest(InstalledCase):
    def test_files_of_the_zip_are_installed_with_an_uninstaller(self):
        self.install()
        self.assertEqual(files_of(self.folder), sorted([*FILES, "uninstall.exe"]))
        with zipfile.ZipFile(portable_zip()) as archive:
            for name in FILES:
                self.assertEqual((self.folder / name).read_bytes(), archive.read(name), name)
        self.assertIn(r"C:\users".encode("utf-16-le"), self.link.read_bytes())
        self.assertIn("carrovan.exe".encode("utf-16-le"), self.link.read_bytes())

    def test_list_of_installed_apps_has_a_complete_entry(self):
        self.install()
        folder = self.folder_name()
        entry = registry(UNINSTALL)[UNINSTALL.lower()]
        size = int(entry.pop("EstimatedSize").removeprefix("dword:"), 16)
        on_disk = sum((self.folder / name).stat().st_size for name in FILES) / 1024
        self.assertLess(abs(size - on_disk), 64)
        texts = {name: re.sub(r"\\(.)", r"\1", value[1:-1]) if value.startswith('"') else value
                 for name, value in entry.items()}
        self.assertEqual(texts, {
            "DisplayName": "Carrovan", "DisplayVersion": version(), "Publisher": "Carrovan",
            "DisplayIcon": folder + r"\carrovan.exe,0", "InstallLocation": folder,
            "UninstallString": f'"{folder}\\uninstall.exe"',
            "QuietUninstallString": f'"{folder}\\uninstall.exe" /S',
            "NoModify": "dword:00000001", "NoRepair": "dword:00000001"})

    def test_uninstaller_has_the_version_too(self):
        self.install()
        self.assertIn("Carrovan setup".encode("utf-16-le"),
                      (self.folder / "uninstall.exe").read_bytes())

    def test_installed_programs_work_with_the_product_that_the_switch_names(self):
        self.install("/PRODUCT=" + BIN_NAME)
        self.assertEqual(self.product_folder(), BIN_NAME)
        self.assertEqual(self.run_cli("--version").stdout.strip(), f"carrovan-cli {version()}")
        done = self.run_cli("versions")
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        self.assertIn("2026", done.stdout)

    def test_switches_of_a_batch_file_may_have_blanks(self):
        # The command interpreter passes quotes as they are written.
        batch = DRIVE / "install.cmd"
        self.addCleanup(batch.unlink)
        self.addCleanup(shutil.rmtree, DRIVE / "Carrovan Tools", ignore_errors=True)
        setup = "Z:" + str(setup_program()).replace("/", "\\")
        uninstaller = r"C:\Carrovan Tools\uninstall.exe"
        batch.write_bytes("\r\n".join((
            "@echo off",
            f'start /wait "" "{setup}" /S /PRODUCT="{BIN_NAME}" /D=C:\\Carrovan Tools',
            "if errorlevel 1 exit /b 1",
            rf"reg query {SETTINGS} /v ProductFolder",
            rf'start /wait "" "{uninstaller}" /S _?=C:\Carrovan Tools',
            "exit /b %ERRORLEVEL%")).encode())
        done = self.run_windows("cmd", "/C", r"C:\install.cmd")
        self.assertEqual(done.returncode, DONE)
        self.assertIn(BIN_NAME, done.stdout)
        self.assertEqual(files_of(DRIVE / "Carrovan Tools"), ["uninstall.exe"])
        self.assertTrue(self.settings_are_gone())

    def test_folder_without_the_library_is_refused_and_nothing_installed(self):
        self.assertEqual(self.run_setup(r"/PRODUCT=C:\windows"), NO_LIBRARY)
        self.assertEqual(self.run_setup(r"/PRODUCT=C:\no such folder"), NO_LIBRARY)
        self.assertFalse(self.folder.exists())
        self.assertTrue(self.settings_are_gone())

    def test_without_a_product_the_program_says_what_to_do(self):
        self.install()
        self.assertIsNone(self.product_folder())
        done = self.run_cli("versions")
        self.assertEqual((done.returncode, done.stdout), (1, ""))
        self.assertIn("run Carrovan's setup and name the CAD product's program folder", done.stderr)

    def test_product_is_found_where_it_has_registered_its_program(self):
        for hive in HIVES:
            for program in (BIN_NAME + r"\VANTRIC.exe", f'"{BIN_NAME}\\VANTRIC.exe"'):
                with self.subTest(hive=hive, program=program):
                    self.clean()
                    self.run_windows("reg", "add", rf"{hive}\{APP_PATHS}", "/ve", "/d", program,
                                     "/f")
                    self.install()
                    self.assertEqual(self.product_folder(), BIN_NAME)

    def test_another_folder_is_taken_and_left_by_the_next_setup(self):
        other = DRIVE / "Carrovan"
        self.install(r"/D=C:\Carrovan")
        self.assertFalse(self.folder.exists())
        self.assertEqual(files_of(other), sorted([*FILES, "uninstall.exe"]))
        self.install("/D=" + self.folder_name())
        self.assertEqual(files_of(self.folder), sorted([*FILES, "uninstall.exe"]))
        self.assertFalse(other.exists())

    def test_file_that_cannot_be_written_fails(self):
        (self.folder / "Carrovan.txt").mkdir(parents=True)
        self.assertEqual(self.run_setup(), FAILED)
        self.assertTrue(self.settings_are_gone())


class FileTypesTest(InstalledCase):
    def write(self, key, name, data):
        value = ("/v", name) if name else ("/ve",)
        done = self.run_windows("reg", "add", key, *value, "/d", data, "/f")
        self.assertEqual(done.returncode, 0, done.stderr)

    def test_packages_open_in_the_wizard_that_was_installed_last(self):
        self.install(r"/D=C:\Carrovan")
        self.assertEqual(self.classes(), self.installed_classes(r"C:\Carrovan"))
        self.install("/D=" + self.folder_name())
        self.assertEqual(self.classes(), self.installed_classes(self.folder_name()))
        self.uninstall()
        self.assertEqual(self.classes(), {})

    def test_extensions_of_somebody_else_stay_his(self):
        self.write(rf"{HIVES[0]}\{CLASSES}\.ucex", "", "Other.File")
        self.write(rf"{HIVES[1]}\{CLASSES}\.ucx", "", "Other.Document")
        before = [self.classes(hive) for hive in HIVES]
        self.install()
        expected = self.installed_classes(self.folder_name())
        expected[".ucex"] = {"": "Other.File"}
        expected[".ucx"] = {}
        self.assertEqual(self.classes(), expected)
        self.uninstall()
        self.assertEqual([self.classes(hive) for hive in HIVES], before)

    def test_uninstaller_leaves_what_others_have_written_since(self):
        self.install()
        ucex, ucx = (rf"{HIVES[0]}\{CLASSES}\{extension}" for extension in EXTENSIONS)
        self.write(ucex, "", "Other.File")
        self.write(rf"{ucex}\OpenWithProgids", "Other.File", "")
        self.write(ucx, "Content Type", "application/other")
        self.uninstall()
        self.assertEqual(self.classes(), {
            ".ucex": {"": "Other.File"}, r".ucex\openwithprogids": {"Other.File": ""},
            ".ucx": {"Content Type": "application/other"}})

    def test_uninstaller_of_another_copy_leaves_those_of_the_installed_one(self):
        self.install()
        other = DRIVE / "Carrovan"
        other.mkdir()
        shutil.copy2(self.folder / "uninstall.exe", other)
        done = self.run_windows(other / "uninstall.exe", "/S", r"_?=C:\Carrovan")
        self.assertEqual(done.returncode, DONE)
        self.assertEqual(self.classes(), self.installed_classes(self.folder_name()))

    def test_explorer_is_told_of_both(self):
        # Wine tells which calls of its shell are made.
        environment = {**self.environment, "WINEDEBUG": "+shell"}
        for program in ((setup_program(), "/S"),
                        (self.folder / "uninstall.exe", "/S", "_?=" + self.folder_name())):
            done = run_limited([PROJECT / "tools/wine", *program], env=environment,
                               encoding="utf-8")
            self.assertEqual(done.returncode, DONE)
            self.assertRegex(done.stderr, r"SHChangeNotify \(0x0?8000000,")


class UpgradeTest(InstalledCase):
    def test_older_files_are_replaced_and_the_users_own_stay(self):
        self.install("/PRODUCT=" + BIN_NAME)
        (self.folder / "carrovan.exe").write_bytes(b"MZ of yesterday")
        (self.folder / "en-us" / "notes.txt").write_bytes(b"mine")
        self.make_restore_point()
        self.install()
        self.assertEqual(files_of(self.folder),
                         sorted([*FILES, "uninstall.exe", "en-us/notes.txt"]))
        self.assertGreater((self.folder / "carrovan.exe").stat().st_size, 100_000)
        self.assertEqual(self.product_folder(), BIN_NAME)
        self.assertEqual(self.restore_point.read_bytes(), b"settings")

    def test_product_of_the_switch_takes_the_place_of_the_noted_one(self):
        self.install("/PRODUCT=" + BIN_NAME)
        other = DRIVE / "Carrovan"
        other.mkdir()
        shutil.copy2(PROGRAMS / "tarvik.dll", other)
        self.install(r"/PRODUCT=C:\Carrovan")
        self.assertEqual(self.product_folder(), r"C:\Carrovan")


class RunningWizardTest(InstalledCase):
    def open_wizard(self, folder):
        wizard = self.enterContext(Wizard(self.screen, PREFIX, folder))
        wizard.page_control(HEADING)
        return wizard

    def close(self, wizard):
        self.screen.press("Escape")
        self.assertEqual(wizard.process.wait(LIMIT_SECONDS), 0)

    def test_installed_wizard_opens_and_keeps_setup_and_uninstaller_away(self):
        self.install("/PRODUCT=" + BIN_NAME)
        before = files_of(self.folder)
        wizard = self.open_wizard(self.folder)
        wizard.picture(PICTURES / "installed-wizard.png")
        self.assertEqual(self.run_setup(), RUNNING)
        self.uninstall()
        self.assertEqual(files_of(self.folder), before)
        self.assertFalse(self.settings_are_gone())
        self.close(wizard)
        self.install()

    def test_uninstaller_that_stays_in_its_folder_tells_by_its_exit_code(self):
        self.install("/PRODUCT=" + BIN_NAME)
        in_place = "_?=" + self.folder_name()
        uninstaller = self.folder / "uninstall.exe"
        wizard = self.open_wizard(self.folder)
        self.assertEqual(self.run_windows(uninstaller, "/S", in_place).returncode, RUNNING)
        self.close(wizard)
        self.assertEqual(self.run_windows(uninstaller, "/S", in_place).returncode, DONE)
        self.assertFalse((self.folder / "carrovan.exe").exists())
        self.assertTrue(self.settings_are_gone())

    def test_portable_programs_start_beside_the_library(self):
        with zipfile.ZipFile(portable_zip()) as archive:
            archive.extractall(BIN)
            for name in archive.namelist():
                self.addCleanup((BIN / name).unlink)
        done = self.run_windows(BIN / "carrovan-cli.exe", "versions")
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        self.close(self.open_wizard(BIN))


class UninstallTest(InstalledCase):
    # What NSIS itself leaves: the copy of the uninstaller, which cannot delete itself and is
    # registered for deletion at the next start of the machine.
    LEFT_FILES = re.compile(r"users/[^/]+/AppData/Local/Temp/~nsu[^/]*\.tmp(/.*)?")
    LEFT_VALUES = {"PendingFileRenameOperations"}
    # What Wine itself notes when the first program on a screen starts.
    WINE_KEYS = (r"hkey_current_user\software\wine\temporary system parameters",
                 r"hkey_local_machine\hardware\devicemap\video",
                 r"hkey_local_machine\system\currentcontrolset\control\class\{4d36e968-",
                 r"hkey_local_machine\system\currentcontrolset\control\deviceclasses",
                 r"hkey_local_machine\system\currentcontrolset\control\servicecurrent",
                 r"hkey_local_machine\system\currentcontrolset\control\video",
                 r"hkey_local_machine\system\currentcontrolset\enum",
                 r"hkey_local_machine\system\currentcontrolset\hardware profiles\current")

    def test_nothing_is_left_behind(self):
        before = self.whole_machine()
        self.install("/PRODUCT=" + BIN_NAME)
        self.uninstall()
        self.assertEqual(self.changes(before, self.whole_machine()), [])

    def test_what_the_user_put_into_the_folder_stays(self):
        self.install()
        (self.folder / "notes.txt").write_bytes(b"mine")
        self.uninstall()
        self.assertEqual(files_of(self.folder), ["notes.txt"])

    def test_restore_points_stay_without_the_switch(self):
        self.install()
        self.make_restore_point()
        self.uninstall()
        self.assertFalse(self.folder.exists())
        self.assertEqual(self.restore_point.read_bytes(), b"settings")

    def test_restore_points_go_with_the_switch_and_nothing_else(self):
        self.install()
        self.make_restore_point()
        other = self.local / "Carrovan" / "other.txt"
        other.write_bytes(b"kept")
        self.uninstall("/PURGE")
        self.assertEqual(files_of(self.local / "Carrovan"), ["other.txt"])
        other.unlink()

    def test_what_a_killed_run_has_left_goes(self):
        self.install()
        own = self.local / "Carrovan"
        own.mkdir()
        for name in ("run.lock", "run.owner"):
            (own / name).write_bytes(b"")
        self.uninstall()
        self.assertFalse(own.exists())

    def whole_machine(self):
        """Files outside Windows' own folder with their digests, and both registry hives."""
        files = {path.relative_to(DRIVE).as_posix(): self.content(path)
                 for top in DRIVE.iterdir() if top.name != "windows"
                 for path in [top, *top.rglob("*")]}
        values = {}
        for hive in HIVES:
            for key, below in registry(hive).items():
                values[key] = None
                values.update({f"{key} {name}": data for name, data in below.items()})
        return files, values

    @staticmethod
    def content(path):
        return hashlib.sha256(path.read_bytes()).hexdigest() if path.is_file() else None

    def changes(self, before, after):
        names = [name for old, new in zip(before, after)
                 for name in sorted(old.keys() | new.keys())
                 if old.get(name, "none") != new.get(name, "none")]
        return [name for name in names if not self.LEFT_FILES.fullmatch(name)
                and name.rpartition(" ")[2] not in self.LEFT_VALUES
                and not name.startswith(self.WINE_KEYS)]


if __name__ == "__main__":
    unittest.main()
