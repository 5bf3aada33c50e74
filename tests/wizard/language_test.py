"""The wizard in the languages of the product: what is Chinese in Chinese, and that every text that
it shows comes from the language's library."""

import contextlib
import functools
import json
import os
import re
import shutil
import signal
import threading
import zlib

from guard_test import held_reset
from import_test import description
from reset_test import plain
from screen import wait_for
from texts import CHINESE, CHINESE_CAPTIONS, ENGLISH, MARKED_CAPTIONS
from wizard import (BACK, BACKUP, BACKUP_TEXT, CANCEL, DESCRIPTION, FINISH, FINISH_UNDO, HEADING,
                    NEXT, PACKAGE, PATH_TITLE, PROGRAMS, SHOW_CHANGES, TARGETS, TREE, VERSIONS,
                    Wizard, list_windows, processes_in_prefix)
from wizard_case import DRIVE, PREFIX, WizardCase, change_identity, windows_name

RADIOS = (1001, 1002, 1003)
INTRODUCTION, EXPLANATIONS = 1015, (1018, 1029, 1030)  # on the start page
VERSION_LABEL, VERSION_TITLE, CATEGORIES_TITLE, QUESTION, LEAD_IN = 1019, 1020, 1027, 1021, 1022
PATH_FILE_LABEL, PATH_SELECT, PATH_VERSION_LABEL = 1019, 1012, 1026


def journal_with(written, old, new):
    """A restore point's journal with one text in place of another and checksums to match."""
    lines = (line.rpartition(',"check":')[0].replace(old, new) for line in written.splitlines())
    return "".join(f'{line},"check":"{zlib.crc32(line.encode()):08x}"}}\n' for line in lines)


class LanguageCase(WizardCase):
    def system_menu(self):
        return json.loads(self.run_windows(PROGRAMS / "tests" / "window_probe.exe", "carrovan.exe",
                                           "menu"))


class ChineseTest(LanguageCase):
    def setUp(self):
        super().setUp()
        folder = self.program_folder()
        change_identity(folder, "Language=en-us", "Language=zh-cn")
        self.wizard = self.open_wizard(folder)

    def assert_shown(self, **texts):
        for name, (control, text) in texts.items():
            self.assertEqual(plain(self.wizard.page_control(control).text), text, name)

    def assert_button(self, number, text):
        self.assertEqual(self.wizard.button(number).text, text)

    def test_start_page_and_its_message(self):
        self.assertEqual(self.wizard.window().text, CHINESE[112])
        self.assert_shown(heading=(HEADING, CHINESE[103]),
                          introduction=(INTRODUCTION, CHINESE[104]))
        for control, number in zip(RADIOS + EXPLANATIONS, (106, 107, 108, 109, 110, 111)):
            self.assertEqual(self.wizard.page_control(control).text, CHINESE[number])
        self.assert_button(NEXT, CHINESE_CAPTIONS["NEXT"])
        self.assert_button(FINISH, CHINESE[174])
        self.assert_button(CANCEL, CHINESE[176])
        self.assertEqual(self.system_menu()[-2:], [CHINESE[201], CHINESE[101]])
        self.screen.press("alt+n")
        self.assertEqual(self.wizard.answer(), CHINESE[169])

    def test_pages_of_an_export(self):
        self.wizard.start(CHINESE[106])
        self.assert_shown(title=(VERSION_TITLE, CHINESE[126]), label=(VERSION_LABEL, CHINESE[127]),
                          list=(VERSIONS, "2026"))
        self.assert_button(BACK, CHINESE_CAPTIONS["BACK"])
        self.wizard.press_button(NEXT)
        self.assert_shown(title=(CATEGORIES_TITLE, CHINESE[133]), question=(QUESTION, CHINESE[143]),
                          lead_in=(LEAD_IN, CHINESE[118]), description=(DESCRIPTION, CHINESE[114]))
        labels = [item["text"] for item in self.wizard.tree().items]
        self.assertEqual(labels[:3], [CHINESE[148], "Options", "Register"])
        self.wizard.click_label("Shortcut key")
        self.wizard.wait_until(lambda wizard: wizard.page_control(DESCRIPTION).text == CHINESE[149],
                               "the description")
        self.wizard.click_box(CHINESE[148])
        self.wizard.press_button(FINISH)
        self.assertEqual(self.wizard.answer(), CHINESE[133])

    def test_path_page(self):
        self.wizard.start(CHINESE[107])
        self.assert_shown(title=(PATH_TITLE, CHINESE_CAPTIONS["PATH_TITLE"]),
                          file=(PATH_FILE_LABEL, CHINESE_CAPTIONS["PATH_FILE"]),
                          select=(PATH_SELECT, CHINESE_CAPTIONS["PATH_SELECT"]),
                          version=(PATH_VERSION_LABEL, CHINESE_CAPTIONS["PATH_VERSION"]))
        self.wizard.press_button(NEXT)
        self.assertEqual(self.wizard.answer(), CHINESE[167])

    def test_reset_is_warned_of_and_asked_about(self):
        self.wizard.start(CHINESE[108])
        self.assertEqual(plain(self.wizard.answer()), CHINESE[166])
        self.assert_shown(title=(CATEGORIES_TITLE, CHINESE[164]), question=(QUESTION, CHINESE[165]),
                          tree=(TREE, ""))
        self.wizard.press_button(NEXT)
        self.assertEqual(plain(self.wizard.answer("No")), CHINESE[179])

    def test_about_box(self):
        self.wizard.page_control(HEADING)
        self.screen.press("alt+space")
        self.screen.press("Up", "Return")
        box = self.wizard.box()
        self.assertEqual(box.text, CHINESE_CAPTIONS["ABOUT"])
        texts = [control.text for control in box.controls]
        for name in ("ABOUT_NAME", "ABOUT_PURPOSE", "OK"):
            self.assertIn(CHINESE_CAPTIONS[name], texts)


# What no walk through the wizard can show.
NEVER_SHOWN = {
    **dict.fromkeys((113, 131, 163, 181, 182), "no part of the wizard uses it"),
    175: "the button that ends the wizard always says Close",
    **dict.fromkeys((*range(134, 143), *range(144, 148)),
                    "a category's label is a key of packages and stays English"),
    206: "the stand-in of the product's library opens no package that cannot be looked into",
    **dict.fromkeys((265, 266), "a window answers nobody while it is busy"),
    "FINISH": "text 174 takes its place before it is seen",
    "CANCEL": "text 176 takes its place before it is seen",
}


def marked(number):
    """A text of the library that the tests build, whose texts bear their numbers."""
    return f"«{number}»{ENGLISH[number]}"


def button(number):
    return marked(number).replace("&", "")


def shows(*marks):
    """The test ends well only when these texts and captions came from the language's library."""
    def watched(test):
        @functools.wraps(test)
        def run(self):
            test(self)
            self.assertEqual({mark for mark in marks if _sign(mark) not in self.seen}, set())
        run.shown = marks
        return run
    return watched


def _sign(mark):
    return str(mark) if isinstance(mark, int) else MARKED_CAPTIONS[mark].strip("«»")


class WatchedWizard(Wizard):
    """Keeps the marks of all that it showed whenever somebody looked."""

    def __init__(self, *arguments, seen):
        self._seen = seen
        super().__init__(*arguments)

    def windows(self):
        windows = super().windows()
        for window in windows:
            for control in (window, *window.controls):
                self.note(control.text, *control.entries, *(i["text"] for i in control.items))
        return windows

    def note(self, *texts):
        for text in texts:
            self._seen.update(re.findall("«([^»]+)»", text))


class MarkedTest(LanguageCase):
    SPOILS_SAMPLE = True

    def setUp(self):
        super().setUp()
        self.seen = set()
        self.local = next((DRIVE / "users").glob("*/AppData/Local"))
        self.product = self.local / "Vantric/VANTRIC/28.0"
        self.restore = self.local / "Carrovan" / "Restore"
        shutil.rmtree(self.restore, ignore_errors=True)
        self.folder = self.program_folder()
        shutil.copy2(PROGRAMS / "tests" / "marked" / "MevrinLg.DLL", self.folder / "en-us")
        self.wizard = None

    def open(self):
        self.wizard = self.enterContext(
            WatchedWizard(self.screen, PREFIX, self.folder, seen=self.seen))

    def press_and_answer(self, control, answer="OK"):
        self.wizard.press_button(control)
        self.wizard.answer(answer)

    def click(self, control):
        self.wizard.click(self.wizard.page_control(control))

    def put(self, path, content="new"):
        """A file of the product's; what stands there already is replaced."""
        file = self.product / path
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text(content, encoding="utf-8")

    @shows(101, 103, 104, *range(106, 113), 169, 174, 176, 201, 208, 264, "NEXT", "ABOUT",
           "ABOUT_NAME", "ABOUT_PURPOSE", "OK")
    def test_start_page_and_menu(self):
        self.open()
        self.wizard.page_control(HEADING)
        self.wizard.note(*self.system_menu())
        self.press_and_answer(NEXT)
        self.screen.press("F1")
        self.wizard.answer()
        self.screen.press("alt+space", "u")
        self.wizard.answer()
        self.screen.press("alt+space")
        self.screen.press("Up", "Return")
        self.wizard.box()

    @shows(114, 115, 116, 117, 118, 126, 127, 133, 143, 148, *range(149, 155), *range(158, 162),
           "BACK")
    def test_pages_of_an_export(self):
        self.enter_export()
        shown = self.wizard.page_control(DESCRIPTION).text
        for item in self.wizard.tree().items[1:]:
            self.wizard.click_middle(item["label"])
            shown = self.wizard.wait_until(
                lambda wizard, former=shown: self.description_other_than(former), item["text"])
        self.wizard.click_box(marked(148))
        self.press_and_answer(FINISH)

    def description_other_than(self, former):
        text = self.wizard.page_control(DESCRIPTION).text
        return text if text != former else None

    @shows(119, 120, 173, 250, 253, 255, 256, 257, 260)
    def test_end_of_an_export_that_is_in_part(self):
        package = self.package("part.ucex")
        for language in ("en-us", "zh-cn"):
            self.take_away(self.product / language / "CosmeticThread")
        unreadable = self.product / "en-us" / "SheetMetal" / "unreadable.txt"
        unreadable.symlink_to("/proc/self/mem")
        self.addCleanup(unreadable.unlink)
        self.enter_export()
        self.wizard.click_box("Custom Parts Library")
        with self.without_registry_tool():
            self.save_export(package)

    @contextlib.contextmanager
    def without_registry_tool(self):
        """Ends the registry tool whenever it has just begun."""
        done = threading.Event()

        def end_tools():
            while not done.wait(0.01):
                for tool in processes_in_prefix(PREFIX, ("cmd.exe", "reg.exe")):
                    with contextlib.suppress(ProcessLookupError):
                        os.kill(int(tool.name), signal.SIGKILL)

        ender = threading.Thread(target=end_tools)
        ender.start()
        try:
            yield
        finally:
            done.set()
            ender.join()

    def take_away(self, path):
        """Until the end of the test; what stands there by then goes."""
        moved = path.rename(path.with_name(path.name + ".moved"))
        self.addCleanup(moved.rename, path)
        self.addCleanup(shutil.rmtree, path, ignore_errors=True)

    @shows(259)
    def test_export_that_cannot_be_written(self):
        self.enter_export()
        self.save_export(self.blocked_package())

    def enter_export(self):
        self.open()
        self.wizard.start(marked(106))
        self.wizard.press_button(NEXT)
        self.wizard.tree()

    def save_export(self, package):
        self.wizard.press_button(FINISH)
        self.wizard.name_file(windows_name(package))
        self.wizard.finish_text()

    def blocked_package(self):
        """One beside which no part file can be made."""
        package = self.package("blocked.ucex")
        part = package.with_name(package.name + ".part")
        part.mkdir()
        self.addCleanup(part.rmdir)
        return package

    @shows(162, 164, 165, 166, 168, 223, 262, 263)
    def test_reset_of_nothing_and_backups_before_it(self):
        self.enter_reset()
        self.wizard.click_box(marked(148))
        self.click(SHOW_CHANGES)
        self.wizard.answer()
        for package in (self.blocked_package(), self.package("backup.ucex")):
            former = self.wizard.page_control(BACKUP_TEXT).text
            self.click(BACKUP)
            self.wizard.name_file(windows_name(package))
            self.wizard.wait_until_done(
                lambda wizard, text=former: wizard.page_control(BACKUP_TEXT).text != text,
                "the line beside the button")

    def enter_reset(self):
        self.open()
        self.wizard.start(marked(108))
        self.wizard.answer()
        self.wizard.tree()

    def reset(self):
        self.wizard.press_button(NEXT)
        self.wizard.answer("Yes")

    @shows(122, 179, 210, 211, 220, 222, 224, 225, 226, 233, 235, 236, 238, 243, 244, 246, 252, 253,
           261, 267)
    def test_reset_that_is_undone(self):
        key = r"HKCU\SOFTWARE\Vantric\VANTRIC 28.0\General"
        self.run_windows("reg", "add", key, "/ve", "/d", "mine", "/f")
        for language in ("en-us", "zh-cn"):
            thread = self.product / language / "CosmeticThread"
            self.take_away(thread)
            thread.mkdir()
        self.enter_reset()
        self.wizard.click_box("Custom Parts Library")
        self.show_changes()
        self.press_in_list(224)
        self.wizard.name_file(windows_name(self.write_protected_file()))
        self.await_button("Yes")
        self.wizard.answer("Yes")
        self.await_mark(226)
        self.wizard.answer()
        self.wizard.answer_list(button(176))
        self.reset()
        self.wizard.finish_text()
        self.click(FINISH_UNDO)
        self.wizard.answer("Yes")
        self.wizard.answer()
        self.wizard.finish_lines()

    def show_changes(self):
        self.click(SHOW_CHANGES)
        self.wizard.list_window()

    def press_in_list(self, number):
        self.wizard.click(next(c for c in self.wizard.list_window().controls
                               if c.text == marked(number)))

    def await_mark(self, number):
        self.wizard.wait_until(lambda wizard: wizard.windows() and str(number) in self.seen,
                               f"text {number}")

    def await_button(self, text):
        self.wizard.wait_until(lambda wizard: any(c.text.replace("&", "") == text
                                                  for c in wizard.box().controls), text)

    def write_protected_file(self):
        file = self.package("list.txt")
        file.touch(0o444)
        return file

    @shows(121, 129, 130, 183, 209, 221, 230, 231, 232, 234, 237, 240, 241, 242, 245, 251, 258)
    def test_import_of_an_older_version(self):
        package = self.package("settings-2025.ucex")
        self.run_cli("export", "--version", "2025", "--all", "--output", windows_name(package))
        self.enter_import(package)
        self.wizard.answer()
        self.show_changes()
        self.wizard.answer_list(button(176))
        self.wizard.press_button(FINISH)
        self.wizard.finish_text()
        self.click(FINISH_UNDO)
        self.wizard.answer("No")

    def enter_import(self, package):
        self.open()
        self.wizard.start(marked(107))
        self.wizard.select_package(windows_name(package))
        self.wizard.wait_until(lambda wizard: wizard.page_control(PACKAGE).text ==
                               windows_name(package), "the package's path")
        self.wizard.press_button(NEXT)

    @shows(204, 205, 216, 217, 228, 247, 254)
    def test_import_of_a_package_with_odd_content(self):
        self.put("en-us/materials/mine.txt")
        package = self.crafted_package("odd.ucex", **{
            "config.ini": description("2026", "Custom materials"),
            "Local\\Vantric\\VANTRIC\\28.0\\en-us\\nobodys.txt": "nobody's",
            "..\\outside.txt": "not here"})
        self.enter_import(package)
        self.wizard.answer_list(button(216))
        self.wizard.answer()
        self.show_changes()
        self.wizard.answer_list(button(176))
        self.wizard.press_button(FINISH)
        self.wizard.finish_text()

    @shows(268)
    def test_import_of_a_document_of_options(self):
        options = '<r><Draw><Font value="Release 2025"/></Draw></r>'
        self.enter_import(self.crafted_package("options.ucx", **{
            "VANTRIC_Option_Config.xml": options}))
        self.wizard.finish_text()

    @shows(167, 177, 178, 180, 203, "PATH_TITLE", "PATH_FILE", "PATH_SELECT", "PATH_VERSION")
    def test_refusals_of_an_import(self):
        corrupt = self.crafted_package("corrupt.ucx", **{"a.xml": "<a/>", "b.xml": "<b/>"})
        older = self.crafted_package("older.ucex", **{"config.ini": description("2023")})
        newer = self.crafted_package("newer.ucex", **{"config.ini": description("2026")})
        self.open()
        self.wizard.start(marked(107))
        self.press_and_answer(NEXT)
        self.wizard.select_package(windows_name(corrupt))
        self.wizard.answer()
        for package, year in ((newer, "2025"), (older, "2023"), (older, "2024")):
            self.wizard.select_package(windows_name(package))
            self.wizard.wait_until(lambda wizard, name=windows_name(package):
                                   wizard.page_control(PACKAGE).text == name, "the path")
            self.wizard.choose_version(TARGETS, year)
            self.press_and_answer(NEXT)
        self.wizard.answer()  # of the last one, which ends the program
        self.assert_ends(self.wizard)

    @shows(155)
    def test_product_that_runs(self):
        product = DRIVE / "vantric.EXE"
        shutil.copy2(DRIVE / "windows" / "system32" / "notepad.exe", product)
        self.addCleanup(product.unlink)
        self.run_windows("C:\\vantric.EXE", wait=False)
        self.addCleanup(self.run_windows, "taskkill", "/f", "/im", "vantric.EXE")
        wait_for(lambda: list_windows(self.screen, PREFIX, "vantric.EXE"), what="the product")
        self.open()
        self.wizard.answer()

    @shows(157)
    def test_unknown_company(self):
        change_identity(self.folder, "Vantric", "Nobody")
        self.open()
        self.wizard.answer()

    @shows(202, 227)
    def test_machine_without_a_temporary_folder(self):
        self.enter_reset()
        temporary = self.local / "Temp"
        moved = temporary.rename(self.local / "Moved")
        temporary.write_bytes(b"")
        self.addCleanup(moved.rename, temporary)
        self.addCleanup(temporary.unlink)
        self.click(SHOW_CHANGES)
        self.wizard.answer()
        self.click(BACKUP)
        self.wizard.answer()

    @shows(207)
    def test_reset_without_a_restore_point(self):
        self.restore.parent.mkdir(exist_ok=True)
        self.restore.write_bytes(b"")
        self.addCleanup(self.restore.unlink)
        self.enter_reset()
        self.reset()
        self.wizard.answer("No")

    @shows(269)
    def test_reset_beside_another_run(self):
        self.enter_reset()
        with held_reset(self):
            self.reset()
            self.wizard.answer()

    @shows(212, 213, 214, 215, 218, 219)
    def test_undo_that_cannot_put_everything_back(self):
        self.put("Customization/mine.txt")
        self.put("zh-cn/FavoriteCatalog/mine.txt")
        self.enter_reset()
        self.wizard.click_box(marked(148))
        self.wizard.click_box("Shortcut key")
        self.wizard.click_box("Catalog Library")
        self.reset()
        self.wizard.finish_text()
        point = next(self.restore.glob("*"))
        journal = point / "journal.jsonl"
        written = journal.read_text(encoding="utf-8")
        for name, other, answer in (("Vantric", "Strange", 217), ("AppData", "Elsewhere", 176)):
            journal.write_text(journal_with(written, name, other), encoding="utf-8")
            self.undo()
            self.wizard.answer_list(button(answer))
        journal.write_text(written, encoding="utf-8")
        self.put("Customization/mine.txt", "changed since")
        catalog = self.product / "zh-cn/FavoriteCatalog"
        shutil.rmtree(catalog, ignore_errors=True)
        catalog.symlink_to("/nowhere")  # no folder can be made there
        self.undo()
        self.press_in_list(218)
        self.await_mark(213)
        self.wizard.answer_list(button(176))

    def undo(self):
        self.click(FINISH_UNDO)
        self.wizard.answer("Yes")

    def test_every_text_is_shown_by_one_of_these(self):
        tests = [getattr(self, name) for name in dir(self) if name.startswith("test_")]
        shown = [mark for test in tests for mark in getattr(test, "shown", ())]
        self.assertEqual({*shown} | {*NEVER_SHOWN}, {*ENGLISH} | {*MARKED_CAPTIONS})
        self.assertEqual({*shown} & {*NEVER_SHOWN}, set())
