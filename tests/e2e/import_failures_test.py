"""What an import and a reset do with bad packages and bad machines: they say so, and nothing outside
the destinations changes."""

import os
import random
import shutil
import subprocess
import unittest

import hostile_zip
from expected_package import OPTION_SUBKEYS
from machines import AS_PLAIN_USER, SandboxTest, run_cli, small_sandbox
from playable import PlayableSandbox, differences, files_below

RUN_ONCE = "Please run Vantric at least once"
LOCAL = "Local\\Vantric\\VANTRIC\\28.0\\"


def description(company="Vantric", product="VANTRIC", release="2026", internal="28.0",
                labels=("Cosmetic Thread",)):
    lines = ["[Selected]", *(f"{label}=1" for label in labels), "[Base]", f"COMPANY={company}",
             f"INTERNAL VERSION={internal}", f"RELEASE VERSION={release}", f"PRODUCT={product}"]
    return "".join(line + "\r\n" for line in lines)


class BadImportTest(SandboxTest):
    def setUp(self):
        super().setUp()
        self.machine = PlayableSandbox(small_sandbox(self.folder / "machine"))
        self.before = self.machine.state()
        self.outside = self.files_outside()

    def files_outside(self):
        """Everything in the test's folder but the user's application data."""
        profile = str(self.machine.sandbox.profile.relative_to(self.folder))
        return {path: content for path, content in files_below(self.folder).items()
                if not path.startswith((profile, "settings.", "machine/registry"))}

    def make_package(self, *entries, config=None):
        config = description() if config is None else config
        first = [("config.ini", config if isinstance(config, bytes) else config.encode())]
        hostile_zip.make_package(self.package, [*first, *entries])

    def run_import(self, *arguments, **options):
        arguments = arguments or ("--to", "2026", "--all")
        return self.machine.sandbox.run("import", self.package, *arguments, timeout=120, **options)

    def assert_unchanged(self):
        self.assertEqual(differences(self.before, self.machine.state()), [])
        self.assertEqual(self.files_outside(), self.outside)

    def assert_import_refused(self, done, reason, status=1):
        self.assert_refused(done, status, reason)
        self.assert_unchanged()


class RefusedImportTest(BadImportTest):
    def test_package_cut_at_any_byte_is_refused_or_imported_whole(self):
        self.make_package((LOCAL + "en-us\\CosmeticThread\\new.txt", b"new" * 20))
        whole = self.package.read_bytes()
        for length in range(len(whole)):
            self.package.write_bytes(whole[:length])
            done = self.run_import()
            self.assert_refused(done, 1, "settings.ucex")
        self.assert_unchanged()

    def test_missing_package_and_folder_in_its_place(self):
        self.assert_import_refused(self.run_import(), "settings.ucex is missing")
        self.package.mkdir()
        self.assert_import_refused(self.run_import(), "settings.ucex is not a package")
        self.package.rmdir()

    def test_newer_release(self):
        self.make_package(config=description(release="2027", internal="29.0"))
        self.assert_import_refused(self.run_import(), "Downgrading is not supported.")
        self.make_package()
        self.assert_import_refused(self.run_import("--to", "2025", "--all"),
                                   "Downgrading is not supported.")

    def test_another_product_or_company(self):
        for config in (description(product="OTHER"), description(company="Elsewhere")):
            self.make_package(config=config)
            self.assert_import_refused(self.run_import(), RUN_ONCE)

    def test_company_or_product_that_leads_elsewhere(self):
        """Whoever trusts the package, and though the key that it asks for is there."""
        for config in (description(company=".."), description(company="..\\..\\.."),
                       description(company="../../.."), description(product=".."),
                       description(product="VANTRIC 28.0\\General\\.."),
                       description(product="C:"), description(product="NUL"),
                       description(product="VANTRIC ."), description(product="..\\..\\..")):
            self.make_package((LOCAL + "en-us\\CosmeticThread\\new.txt", b"new"), config=config)
            for options in ((), ("--trust",), ("--trust", "--dry-run")):
                done = self.run_import("--to", "2026", "--all", *options)
                self.assert_import_refused(done, "settings.ucex is not to be trusted: config.ini: ")
            inspected = self.machine.sandbox.run("inspect", self.package)
            self.assertEqual(inspected.returncode, 1, inspected.stdout)
            self.assertIn("is not one plain name", inspected.stdout)

    def test_target_that_was_never_started(self):
        self.make_package(config=description(release="2023", internal="25.0"))
        self.assert_import_refused(self.run_import("--to", "2023", "--all"), RUN_ONCE)

    def test_target_that_is_not_installed(self):
        self.make_package()
        self.assert_import_refused(self.run_import("--to", "2031", "--all"),
                                   "Version 2031 is not installed")

    def test_target_without_its_folders(self):
        shutil.rmtree(self.machine.sandbox.product_roaming)
        self.before = self.machine.state()
        self.make_package(config=description(release="2025", internal="27.0"))
        done = self.run_import()
        self.assertEqual((done.returncode, done.stdout), (1, ""), done.stderr)
        self.assertIn("Associated local and roaming folders", done.stderr.splitlines()[-1])
        self.assert_unchanged()

    def test_description_that_is_missing_or_says_nothing(self):
        for config in (b"", b"\xff\xfe", b"no sections at all\r\nCOMPANY=Vantric\r\n",
                       bytes(5000), ("[Base]\r\nCOMPANY=" + "V" * 10_000).encode()):
            self.make_package(config=config)
            self.assert_import_refused(self.run_import(), RUN_ONCE)
        hostile_zip.make_package(self.package, [("x.txt", b"x")])
        self.assert_import_refused(self.run_import(), RUN_ONCE)

    def test_category_that_the_package_does_not_mark(self):
        self.make_package()
        self.assert_import_refused(self.run_import("--to", "2026", "--category", "Register"),
                                   '"Register" is not offered by this package')

    def test_wrong_usage(self):
        self.make_package()
        for arguments, reason in (
                (("--all",), "--to is needed"),
                (("--to", "2026", "--category", "Wallpapers"), "Wallpapers")):
            self.assert_import_refused(self.run_import(*arguments), reason, status=2)
        for arguments in (("--to", "2026"), ("--to", "2026", "--all", "--category", "Options")):
            done = self.run_import(*arguments)
            self.assertEqual((done.returncode, done.stdout), (2, ""), done.stderr)
        self.assert_unchanged()

    def test_temporary_path_that_is_no_folder(self):
        self.make_package()
        temp = self.machine.sandbox.local / "Temp"
        temp.rmdir()
        temp.write_bytes(b"in the way")
        done = self.run_import()
        self.assert_refused(done, 1, "Temp")


class UntrustedImportTest(BadImportTest):
    """What could do harm is refused before anything is unpacked."""

    OWN_KEY = r"HKEY_CURRENT_USER\SOFTWARE\Vantric\VANTRIC 28.0\General"

    def assert_untrusted(self, done, *words):
        for word in ("settings.ucex is not to be trusted: ", "; inspect lists the reasons, --trust",
                     *words):
            self.assert_import_refused(done, word)

    def make_options(self, *contents, **names):
        files = [(f"Options\\{number}.reg", content) for number, content in enumerate(contents)]
        self.make_package(*files, *names.items(), config=description(labels=("Options",)))

    def test_registry_files_with_keys_of_others(self):
        for content in hostile_zip.OUTSIDE_FILES:
            self.make_options(content)
            self.assert_untrusted(self.run_import(), "Options\\0.reg: line ")

    def test_registry_file_is_one_by_its_folder_and_not_by_its_extension(self):
        for name in ("options/x.txt", "REGISTER\\x"):
            self.make_package((name, hostile_zip.OUTSIDE_FILES[0]))
            self.assert_untrusted(self.run_import(), hostile_zip.RUN_KEY)

    def test_package_of_another_company_is_measured_by_the_one_that_is_installed(self):
        key = r"HKEY_CURRENT_USER\SOFTWARE\Microsoft\Windows"
        self.make_package(("Options\\a.reg", hostile_zip.registry_file(key)),
                          config=description(company="Microsoft"))
        self.assert_untrusted(self.run_import(), r"outside HKEY_CURRENT_USER\SOFTWARE\Vantric;")

    def test_first_reason_is_named_and_the_others_are_counted(self):
        good = hostile_zip.registry_file(self.OWN_KEY)
        bad = hostile_zip.OUTSIDE_FILES[0]
        self.make_options(good, bad, good)
        self.assertNotIn("more reason", self.run_import().stderr)
        self.make_options(good, bad, bad)
        self.assert_untrusted(self.run_import(), "1.reg: line 3 names", " (and 1 more reason);")
        self.make_options(bad, bad, bad)
        self.assert_untrusted(self.run_import(), "0.reg: line 3 names", " (and 2 more reasons);")

    def test_names_that_leave_the_destination_or_clash(self):
        for names in (("..\\up.txt",), ("CON",), ("Other\\a.txt", "other/A.TXT"),
                      ("Other\\a", "Other\\a\\b"), ("Options\\%TEMP%.reg",)):
            self.make_package(*((name, b"x") for name in names))
            self.assert_untrusted(self.run_import(), "the name ")

    def test_absurd_size(self):
        hostile_zip.make_bomb(self.package, 4)
        self.assert_untrusted(self.run_import(), "bytes would unpack to 429496")

    def test_trust_takes_the_package_all_the_same(self):
        own = hostile_zip.registry_file(self.OWN_KEY, '"Trusted"="yes"')
        self.make_options(own, hostile_zip.registry_file(
            r"HKEY_CURRENT_USER\SOFTWARE\Elsewhere", '"a"="b"'))
        self.assert_untrusted(self.run_import(), "Elsewhere")
        done = self.run_import("--to", "2026", "--all", "--trust")
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        registry = self.machine.state().registry
        self.assertEqual(registry[self.OWN_KEY]["Trusted"], '"yes"')
        self.assertEqual(registry[r"HKEY_CURRENT_USER\SOFTWARE\Elsewhere"], {"a": '"b"'})

    def test_own_keys_need_no_trust(self):
        self.make_options(hostile_zip.registry_file(self.OWN_KEY, '"Trusted"="yes"'))
        done = self.run_import()
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        self.assertEqual(self.machine.state().registry[self.OWN_KEY]["Trusted"], '"yes"')

    def test_registry_file_that_the_mending_spoils_is_not_imported(self):
        """The package says that its release is a word of the registry file."""
        spoilt = hostile_zip.registry_file(self.OWN_KEY, '"Taken"=hex:01', '"Spoilt"=dword:00000001')
        self.make_package(("Options\\0.reg", spoilt),
                          config=description(release="dword", internal="27.0", labels=("Options",)))
        done = self.run_import()
        self.assertEqual(done.returncode, 3, done.stderr)
        self.assertIn("Not imported into the registry: ", done.stderr)
        self.assertNotIn("Taken", self.machine.state().registry[self.OWN_KEY])
        done = self.run_import("--to", "2026", "--all", "--trust")
        self.assertNotIn("Not imported into the registry: ", done.stderr)
        self.assertIn("Taken", self.machine.state().registry[self.OWN_KEY])

    def test_registry_file_that_is_not_understood_whole(self):
        """The registry tool may set what is not foreseen: that is said of a trusted package."""
        own = hostile_zip.registry_file(self.OWN_KEY, '"Trusted"="yes"')
        odd = own + '"x\\c"="d"\r\n'.encode("utf-16-le")
        self.make_options(own, odd)
        self.assert_untrusted(self.run_import(), "1.reg: line 5 is not understood: ")
        for options in (("--dry-run",), ("--verify",)):
            done = self.run_import("--to", "2026", "--all", "--trust", *options)
            self.assertEqual(done.returncode, 3, done.stderr)
            self.assertEqual(done.stderr.count("\n"), 1, done.stderr)
            self.assertIn("Neither foreseen nor undone is what ", done.stderr)
            self.assertIn("1.reg changes: line 5 is not understood: an unknown escape", done.stderr)
        self.assertEqual(self.machine.state().registry[self.OWN_KEY]["Trusted"], '"yes"')

    def test_text_with_line_ends_is_taken_and_named(self):
        self.make_options(hostile_zip.registry_file(self.OWN_KEY, '"Lines"="one\r\ntwo"'))
        self.assert_untrusted(self.run_import(), "line 4 is not understood: ")
        done = self.run_import("--to", "2026", "--all", "--trust", "--verify")
        self.assertEqual((done.returncode, done.stderr.count("\n")), (3, 1), done.stderr)
        self.assertIn("Neither foreseen nor undone is what ", done.stderr)
        self.assertIn("Lines", self.machine.state().registry[self.OWN_KEY])

    def test_names_that_are_too_long(self):
        names = [LOCAL + "x" * 300, LOCAL + "deep\\" * 1000 + "x"]
        for name in names:
            self.make_package((name, b"x"))
            self.assert_untrusted(self.run_import(), "the name ")
        self.make_package(*((name, b"x") for name in names))
        done = self.run_import("--to", "2026", "--all", "--trust")
        self.assertEqual((done.returncode, done.stderr.count("Failed to extract file: ")), (3, 2))
        self.assertNotIn("deep", "".join(map(str, self.machine.sandbox.local.rglob("*"))))
        self.assertEqual(self.machine.sandbox.temporary_files(), [])

    def test_files_of_nobody(self):
        for name in ("Local\\x.cmd", "Roaming\\x.cmd"):
            self.make_package((name, b"x"))
            self.assert_untrusted(self.run_import(), f"{name}: the file would lie in no program's")


class PartialImportTest(BadImportTest):
    """Something could not be put in place; the rest is."""

    THREADS = "Local/Vantric/VANTRIC/28.0/en-us/CosmeticThread/"

    def assert_partial(self, done, *named):
        self.assertEqual(done.returncode, 3, done.stderr)
        self.assertEqual(done.stderr.count("\n"), len(named), done.stderr)
        for line, words in zip(done.stderr.splitlines(), named):
            self.assertIn(words, line)
        self.assertEqual(self.files_outside(), self.outside)

    def threads(self):
        return {path.removeprefix(self.THREADS): content
                for path, content in self.machine.state().files.items()
                if path.startswith(self.THREADS)}

    def test_names_that_leave_the_destination(self):
        self.make_package(*((name, b"gotcha") for name in hostile_zip.ESCAPING_NAMES),
                          (LOCAL + "en-us\\CosmeticThread\\good.txt", b"good"))
        done = self.run_import("--to", "2026", "--all", "--trust")
        self.assert_partial(done, *("Failed to extract file: " for _ in
                                    hostile_zip.ESCAPING_NAMES))
        self.assertEqual(self.threads(), {"good.txt": b"good"})
        self.assertFalse(any(b"gotcha" == content
                             for content in self.machine.state().files.values()))

    def test_damaged_encrypted_and_repeated_entries(self):
        content = random.Random(7).randbytes(5_000)
        folder = LOCAL + "en-us\\CosmeticThread\\"
        self.make_package(*((folder + name, content) for name in (
            "damaged.bin", "locked.bin", "twice.bin", "whole.bin")), (folder + "TWICE.bin", b"2"))
        hostile_zip.spoil_content(self.package, folder + "damaged.bin")
        hostile_zip.mark_encrypted(self.package, folder + "locked.bin")
        done = self.run_import("--to", "2026", "--all", "--trust")
        self.assertEqual(done.returncode, 3, done.stderr)
        for name in ("damaged.bin", "locked.bin"):
            self.assertIn(name, done.stderr)
            self.assertNotIn(name, self.threads())
        self.assertEqual(self.threads()["whole.bin"], content)
        self.assertEqual(self.files_outside(), self.outside)

    def test_read_only_file_of_the_user(self):
        folder = self.machine.sandbox.product_local / "en-us/CosmeticThread"
        locked = folder / "Metric.txt"
        locked.chmod(0o444)
        old = locked.read_bytes()
        self.make_package((LOCAL + "en-us\\CosmeticThread\\Metric.txt", b"new"),
                          (LOCAL + "en-us\\CosmeticThread\\other.txt", b"new"))
        done = self.run_import(wrapper=AS_PLAIN_USER)
        self.assert_partial(done, "Failed to extract file: ", "Not removed whole: ",
                            "What is not in place is kept in ")
        self.assertEqual(self.threads(), {"Metric.txt": old, "other.txt": b"new"})
        kept = list((self.machine.sandbox.local / "Temp").rglob("Metric.txt"))
        self.assertEqual([path.read_bytes() for path in kept], [b"new"])

    def test_registry_file_that_is_none(self):
        self.make_package(("Options\\General.reg", b"not a registry file"),
                          config=description(labels=("Options",)))
        self.assert_partial(self.run_import(), "General.reg")
        self.assertEqual(self.machine.state().registry, self.before.registry)

    def test_registry_file_whose_name_the_interpreter_would_change(self):
        own = hostile_zip.registry_file(UntrustedImportTest.OWN_KEY, '"Trusted"="yes"')
        self.make_package(("Options\\%TEMP%.reg", own), ("Options\\50%.reg", own),
                          config=description(labels=("Options",)))
        done = self.run_import("--to", "2026", "--all", "--trust")
        self.assert_partial(done, "%TEMP%.reg: its name holds a percent sign or a quote",
                            "50%.reg: its name holds a percent sign or a quote")
        self.assertEqual(self.machine.state().registry, self.before.registry)

    def test_descriptions_in_every_encoding(self):
        text = description()
        long = text.replace("[Base]", "Wallpapers=" + "w" * 10_000 + "\r\n[Base]")
        for config in (b"\xff\xfe" + text.encode("utf-16-le"), b"\xef\xbb\xbf" + text.encode(),
                       text.replace("\r\n", "\n").encode(), long.encode(),
                       text.replace("Base", "BASE").encode()):
            self.make_package((LOCAL + "en-us\\CosmeticThread\\new.txt", config), config=config)
            done = self.run_import()
            self.assertEqual((done.returncode, done.stderr), (0, ""), config[:20])
            self.assertEqual(self.threads(), {"new.txt": config})


@unittest.skipIf(os.geteuid() != 0, "only root may mount a small disk")
class FullDiskTest(BadImportTest):
    def test_disk_that_fills_up_while_laying_over(self):
        folder = self.machine.sandbox.product_local / "en-us/CosmeticThread"
        shutil.rmtree(folder)
        folder.mkdir()
        done = subprocess.run(["mount", "-t", "tmpfs", "-o", "size=64k", "tmpfs", folder],
                              capture_output=True, check=False)
        if done.returncode != 0:
            self.skipTest("no small disk can be mounted here")
        self.addCleanup(subprocess.run, ["umount", folder], check=False)
        big = random.Random(1).randbytes(200_000)
        self.make_package((LOCAL + "en-us\\CosmeticThread\\big.bin", big),
                          (LOCAL + "en-us\\SheetMetal\\small.bin", b"small"))
        done = self.run_import()
        self.assertEqual(done.returncode, 3, done.stderr)
        self.assertIn("big.bin", done.stderr)
        self.assertIn("is kept in ", done.stderr)
        self.assertEqual(list(folder.iterdir()), [])
        kept = list((self.machine.sandbox.local / "Temp").rglob("big.bin"))
        self.assertEqual([path.read_bytes() for path in kept], [big])


class BadResetTest(BadImportTest):
    def run_reset(self, *arguments, **options):
        return self.machine.sandbox.run("reset", *arguments, timeout=120, **options)

    def test_wrong_usage_changes_nothing(self):
        for arguments in (("--all",), ("--yes",), ("--all", "--yes", "--category", "Options"),
                          ("--category", "Wallpapers", "--yes")):
            done = self.run_reset(*arguments)
            self.assertEqual((done.returncode, done.stdout), (2, ""), done.stderr)
        self.assert_unchanged()

    def test_version_that_was_never_started(self):
        self.rename_key("VANTRIC 28.0", "VANTRIC 58.0")
        self.before = self.machine.state()
        self.assert_import_refused(self.run_reset("--all", "--yes"), RUN_ONCE)

    def test_category_of_another_brand(self):
        ini = self.machine.sandbox.root / "product.ini"
        ini.write_text(ini.read_text("utf-8").replace("=Vantric", "=ORMA"), "utf-8")
        self.rename_key("SOFTWARE\\Vantric\\", "SOFTWARE\\ORMA\\")
        self.outside, self.before = self.files_outside(), self.machine.state()
        self.assert_import_refused(self.run_reset("--category", "Catalog Library", "--yes"),
                                   '"Catalog Library" is not offered for this product')

    def test_read_only_file_is_named(self):
        locked = self.machine.sandbox.product_local / "en-us/CosmeticThread/Metric.txt"
        locked.chmod(0o444)
        done = self.run_reset("--category", "Cosmetic Thread", "--yes", wrapper=AS_PLAIN_USER)
        self.assertEqual((done.returncode, done.stderr.count("\n")), (3, 1), done.stderr)
        self.assertIn("CosmeticThread", done.stderr)
        self.assertTrue(locked.exists())
        self.assertFalse(locked.with_name("管螺纹.txt").exists())

    def test_without_factory_defaults_the_keys_are_gone_and_this_is_told(self):
        hive = self.machine.sandbox.root / "registry" / "HKEY_LOCAL_MACHINE.reg"
        text = hive.read_bytes()[2:].decode("utf-16-le")
        hive.write_bytes(b"\xff\xfe" + text.replace("New User Settings", "Old").encode("utf-16-le"))
        live = r"HKEY_CURRENT_USER\SOFTWARE\Vantric\VANTRIC 28.0"
        there = [name for name in OPTION_SUBKEYS
                 if rf"{live}\{name}" in self.machine.state().registry]
        self.assertGreater(len(there), 3)
        self.remove_key(rf"{live}\{there.pop()}")
        for category, removed in (("Options", [rf"{live}\{name}" for name in there]),
                                  ("Register", [live])):
            lines = [f"{key}: no factory default: removed" for key in removed]
            for arguments in (("--dry-run",), ("--yes",)):
                done = self.run_reset("--category", category, *arguments)
                self.assertEqual(done.returncode, 3, done.stderr)
                self.assertEqual([line[line.find("HKEY"):] for line in done.stderr.splitlines()],
                                 lines)
        self.assertFalse([key for key in self.machine.state().registry if key.startswith(live)])

    def test_pipe_in_a_folder_is_named_and_not_waited_for(self):
        pipe = self.machine.sandbox.product_local / "en-us/CosmeticThread/pipe.xml"
        os.mkfifo(pipe)
        done = self.run_reset("--category", "Cosmetic Thread", "--yes")
        self.assertEqual((done.returncode, done.stderr.count("\n")), (3, 1), done.stderr)
        self.assertIn("Not removed whole: ", done.stderr)
        self.assertTrue(pipe.is_fifo())
        done = self.run_reset("--category", "Cosmetic Thread", "--yes", "--no-restore-point")
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        self.assertFalse(pipe.exists())

    def test_temporary_path_that_is_no_folder(self):
        temp = self.machine.sandbox.local / "Temp"
        temp.rmdir()
        temp.write_bytes(b"in the way")
        self.before = self.machine.state()
        self.assert_import_refused(self.run_reset("--all", "--yes"), "Temp")

    def remove_key(self, path):
        """With its values; it has no subkeys."""
        hive = self.machine.sandbox.root / "registry" / "HKEY_CURRENT_USER.reg"
        before, middle, after = hive.read_bytes()[2:].decode("utf-16-le").partition(f"[{path}]")
        self.assertTrue(middle)
        rest = after.partition("\r\n[")[2]
        text = before + ("[" + rest if rest else "")
        hive.write_bytes(b"\xff\xfe" + text.encode("utf-16-le"))

    def rename_key(self, old, new):
        hive = self.machine.sandbox.root / "registry" / "HKEY_CURRENT_USER.reg"
        text = hive.read_bytes()[2:].decode("utf-16-le")
        self.assertIn(old, text)
        hive.write_bytes(b"\xff\xfe" + text.replace(old, new).encode("utf-16-le"))


class HelpTest(unittest.TestCase):
    def test_help_names_every_option(self):
        for verb, words in (("import", ("PACKAGE", "--to", "--all", "--category", "--trust",
                                       ".ucx")),
                            ("reset", ("--all", "--category", "--yes"))):
            done = run_cli(verb, "--help")
            self.assertEqual((done.returncode, done.stderr), (0, ""))
            for word in words:
                self.assertIn(word, done.stdout)
