"""The absolute paths of a package: what inspect lists, what an import maps, keeps and drops."""

import json
import re

from machines import SandboxTest, run_cli, small_sandbox

LIBRARY = r"D:\NoSuchFolder\Library"
NETWORK = r"\\server\share\templates"
HERE = r"C:\Firm's Standard & Co"


class PathsTest(SandboxTest):
    def setUp(self):
        super().setUp()
        self.machine = small_sandbox(self.folder / "machine")
        self.assertEqual(self.export("2025").returncode, 0)
        (self.machine.root / "C" / HERE[3:] / "Library").mkdir(parents=True)
        # What the version has itself is told apart from what is imported.
        hive = self.machine.root / "registry" / "HKEY_CURRENT_USER.reg"
        text = hive.read_bytes().decode("utf-16")
        text = text.replace("NoSuchFolder", "Before").replace("\\\\templates", "\\\\before")
        hive.write_bytes(text.encode("utf-16"))

    def export(self, version):
        return self.machine.run("export", "--version", version, "--all", "--output", self.package)

    def import_into(self, *options, to="2026"):
        return self.machine.run("import", self.package, "--to", to, "--all", *options)

    def dry_run(self, *options, to="2026"):
        done = self.import_into("--dry-run", "--json", *options, to=to)
        self.assertIn(done.returncode, (0, 3), done.stderr)
        return json.loads(done.stdout)

    def values(self):
        """Of the user's hive, by their key and name, as the file has them."""
        text = self.machine.registry_bytes("HKEY_CURRENT_USER").decode("utf-16")
        values = {}
        key = None
        for line in text.replace("\\\r\n  ", "").splitlines():
            if line.startswith("["):
                key = line[1:-1]
            elif match := re.match(r'(@|"(?:[^"\\]|\\.)*")=(.*)$', line):
                values[key, match[1].strip('"')] = match[2]
        return values

    def value(self, name, key=r"VANTRIC 28.0\Directories"):
        return self.values().get((rf"HKEY_CURRENT_USER\SOFTWARE\Vantric\{key}", name))

    def every_map(self):
        """Maps each path that the package names to one that exists here."""
        listing = json.loads(self.machine.run("inspect", self.package, "--paths", "--json").stdout)
        options = []
        for path in {p["path"].rstrip("\\").lower(): p["path"] for p in listing["paths"]}.values():
            # What follows a program's name on a command line is no part of the program.
            options += ["--map", f"{path}={HERE}"]
        return options


class InspectPathsTest(PathsTest):
    def test_lists_each_path_with_its_places_and_without_a_machine_no_state(self):
        done = self.inspect("--json")
        paths = {path["path"]: path for path in json.loads(done)["paths"]}
        library = paths[LIBRARY]
        self.assertEqual((library["count"], library["state"], library["becomes"]), (2, None, None))
        self.assertEqual({place["file"] for place in library["places"]},
                         {r"Options\Directories.reg", r"Register\VANTRIC2025.reg"})
        self.assertEqual({place["name"] for place in library["places"]}, {"Library"})
        icons = paths[r"C:\Users\olduser\Pictures\icon.bmp"]["places"]
        self.assertTrue(all(place["file"].endswith(".xml") and place["line"] > 0
                            for place in icons))

    def inspect(self, *options):
        done = self.machine.run("inspect", self.package, "--paths", *options) \
            if "--to" in options else self.run_without_machine(*options)
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        return done.stdout

    def run_without_machine(self, *options):
        return run_cli("inspect", self.package, "--paths", *options)

    def test_looks_paths_up_after_the_rewriting_for_the_version(self):
        paths = {path["path"]: path for path in json.loads(self.inspect("--to", "2026", "--json"))
                 ["paths"] if not any(place["file"].endswith(".xml") for place in path["places"])}
        user = self.machine.user
        mended = paths[r"%USERPROFILE%\Pictures"]
        self.assertEqual((mended["becomes"], mended["state"]),
                         (rf"C:\Users\{user}\Pictures", "missing"))
        self.assertEqual(paths[LIBRARY]["state"], "missing")
        self.assertEqual(paths[NETWORK]["state"], "noAnswer")
        # The rewriting passes over strings that stand there as bytes.
        self.assertEqual((paths[r"%USERPROFILE%\AppData\Local\Temp\autosave"]["becomes"],
                          paths[r"%USERPROFILE%\AppData\Local\Temp\autosave"]["state"]),
                         (r"%USERPROFILE%\AppData\Local\Temp\autosave", "variable"))

    def test_refuses_a_version_that_is_not_installed_or_no_machine(self):
        self.assert_refused(self.machine.run("inspect", self.package, "--paths", "--to", "1999"),
                            1, "1999")
        self.assert_refused(self.run_without_machine("--to", "2026"), 1, "--to needs a machine")

    def test_version_without_paths_is_wrong_usage(self):
        self.assertEqual(self.machine.run("inspect", self.package, "--to", "2026").returncode, 2)


class MapTest(PathsTest):
    def test_mapped_path_is_imported_instead_of_dropped(self):
        done = self.import_into("--map", rf"D:\nosuchfolder={HERE}")
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertEqual(self.value("Library"), '"C:\\\\Firm\'s Standard & Co\\\\Library"')
        self.assertTrue(self.value("Network").endswith('before"'))
        self.assertRegex(done.stdout, r"Paths: \d+ kept, 2 mapped, 12 dropped\n")

    def test_dry_run_shows_each_path_with_its_fate_and_value(self):
        paths = self.dry_run("--map", rf"D:\NoSuchFolder={HERE}")["paths"]
        by_fate = {fate: [path for path in paths if path["fate"] == fate]
                   for fate in ("kept", "mapped", "dropped")}
        self.assertEqual({(path["was"], path["path"], path["name"], path["state"])
                          for path in by_fate["mapped"]},
                         {(LIBRARY, rf"{HERE}\Library", "Library", "exists")})
        self.assertEqual({(path["path"], path["state"]) for path in by_fate["dropped"]
                          if path["name"] == "Network"}, {(NETWORK, "noAnswer")})
        self.assertIn(rf"C:\Users\{self.machine.user}\AppData\Local\Vantric",
                      {path["path"] for path in by_fate["kept"]})
        text = self.import_into("--dry-run", "--details",
                                "--map", rf"D:\NoSuchFolder={HERE}").stdout
        self.assertIn(rf"  path mapped  {LIBRARY} -> {HERE}\Library (exists here)  "
                      r"Options\Directories.reg: HKEY_CURRENT_USER\SOFTWARE\Vantric\VANTRIC 28.0"
                      "\\Directories  Library\n", text)

    def test_every_mapped_path_leaves_no_value_dropped(self):
        document = self.dry_run(*self.every_map())
        self.assertEqual([path for path in document["paths"] if path["fate"] == "dropped"], [])
        self.assertEqual([item for category in document["categories"]
                          for item in category["dropped"]], [])

    def test_longest_map_wins_and_only_whole_names_count(self):
        self.import_into("--map", rf"D:\NoSuchFolder={HERE}",
                         "--map", rf"D:\NoSuchFolder\Library={HERE}", "--map", r"D:\No=C:\never")
        self.assertEqual(self.value("Library"), '"C:\\\\Firm\'s Standard & Co"')

    def test_map_holds_for_a_package_of_the_same_release_too(self):
        self.export("2026")
        drive = r"C:\Users" + "\\" + self.machine.user + r"\AppData\Local\Vantric"
        self.import_into("--map", rf"{drive}={HERE}", "--keep-dead-paths")
        self.assertEqual(self.value("Drawings"), '"C:\\\\Firm\'s Standard & Co"')

    def test_new_place_is_taken_word_for_word(self):
        """Neither its year nor another user's name in it is rewritten."""
        words = r"C:\Users\olduser\VANTRIC 2025 27.0"
        (self.machine.root / "C/Users/olduser/VANTRIC 2025 27.0/Library").mkdir(parents=True)
        self.import_into("--map", rf"D:\NoSuchFolder={words}")
        self.assertEqual(self.value("Library"),
                         '"' + (words + r"\Library").replace("\\", "\\\\") + '"')

    def test_map_file_holds_maps_as_lines_in_utf_8_and_utf_16(self):
        maps = self.folder / "maps.txt"
        text = f"# where our library is now\n\n  D:\\NoSuchFolder = {HERE}\r\n"
        for encoding in ("utf-8", "utf-8-sig", "utf-16"):
            maps.write_bytes(text.encode(encoding))
            paths = self.dry_run("--map-file", maps)["paths"]
            self.assertEqual({path["path"] for path in paths if path["fate"] == "mapped"},
                             {rf"{HERE}\Library"})

    def test_undo_takes_a_mapped_import_back(self):
        before = self.values()
        self.import_into("--map", rf"D:\NoSuchFolder={HERE}")
        self.assertNotEqual(self.values(), before)
        self.assertEqual(self.machine.run("undo").returncode, 0)
        self.assertEqual(self.values(), before)

    def test_verified_import_with_maps_is_as_foreseen(self):
        done = self.import_into("--verify", "--json", *self.every_map())
        self.assertEqual(json.loads(done.stdout)["verification"]["differences"], [])

    def test_dead_paths_are_kept_on_demand(self):
        document = self.dry_run("--keep-dead-paths")
        self.assertEqual([path for path in document["paths"] if path["fate"] == "dropped"], [])
        self.import_into("--keep-dead-paths")
        self.assertEqual(self.value("Library"), '"D:\\\\NoSuchFolder\\\\Library"')
        self.assertEqual(self.value("Network"), r'"\\\\server\\share\\templates"')

    def test_without_these_options_an_import_says_nothing_of_paths(self):
        done = self.import_into("--json")
        self.assertEqual(json.loads(done.stdout)["paths"], [])
        self.assertEqual(self.value("Library"), '"D:\\\\Before\\\\Library"')


class BadMapTest(PathsTest):
    def assert_unchanged(self, done, status, reason):
        self.assert_refused(done, status, reason)
        self.assertEqual(self.value("Library"), self.before)

    def setUp(self):
        super().setUp()
        self.before = self.value("Library")

    def test_map_without_equals_or_with_a_relative_path_is_wrong_usage(self):
        self.assert_unchanged(self.import_into("--map", r"D:\a"), 2, 'there is no "="')
        self.assert_unchanged(self.import_into("--map", r"a=C:\b"), 2, '"a" is no absolute path')
        self.assert_unchanged(self.import_into("--map", "D:\\a=C:\\b|c"), 2, "no path holds")

    def test_contradicting_maps_are_wrong_usage(self):
        maps = self.folder / "maps.txt"
        maps.write_text("d:/A=C:\\y\n")
        self.assert_unchanged(self.import_into("--map", r"D:\a=C:\x", "--map-file", maps), 2,
                              r'"d:\A" is mapped to "C:\x" and to "C:\y"')

    def test_map_file_is_named_with_its_line_or_why_it_cannot_be_read(self):
        maps = self.folder / "maps.txt"
        self.assert_unchanged(self.import_into("--map-file", maps), 1, "maps.txt cannot be read")
        maps.write_text("# first\nC:\\a=C:\\b\nwrong\n")
        self.assert_unchanged(self.import_into("--map-file", maps), 2, "maps.txt, line 3,")

    def test_map_that_makes_a_path_too_long_leaves_it_and_is_named(self):
        done = self.import_into("--map", r"D:\NoSuchFolder=C:" + 163 * ("\\" + 200 * "n"),
                                "--keep-dead-paths")
        self.assertEqual(done.returncode, 3)
        self.assertIn("longer than it can be", done.stderr)
        self.assertEqual(self.value("Library"), '"D:\\\\NoSuchFolder\\\\Library"')
