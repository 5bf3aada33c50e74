#!/usr/bin/env python3
"""Plays a tour of the wizard through its real window, on a screen of its own: exports everything
from 2025, imports it into 2026 without two categories, resets three categories after a backup, and
undoes the reset and the import.

    play_tour.py PREFIX FOLDER

The prefix holds the sample product and its programs. The folder gets a picture of every step, the
packages, and changes.txt, which shows what each step has changed in the registry and in folders."""

import shutil
import sys
import time
from pathlib import Path

from machine_state import MachineState, describe_changes
from screen import LIMIT_SECONDS, Screen
from wizard import (BACKUP, CANCEL, EXPORT, FINISH, FINISH_TITLE, HEADING, IMPORT, NEXT, PATH_TITLE,
                    RESET, SELECT_ALL, SHOW_CHANGES, TREE, VERSIONS, Wizard, end_wine)

from limits import run_within  # found by way of wizard

SETTINGS, BACKUP_PACKAGE = "settings-2025.ucex", "backup-2026.ucex"
LEFT_OUT = ("Register", "Custom Parts Library")
TO_RESET = ("Options", "Shortcut key", "Catalog Library")


class Tour:
    def __init__(self, wizard, prefix, folder):
        self._wizard = wizard
        self._prefix = prefix
        self._folder = folder
        self._pictures = 0
        self._state = self._first_state = MachineState(prefix)
        self._report = []

    def play(self):
        self._picture("start", HEADING)
        for title, step in (("Exporting everything from 2025", self._export),
                            (f"Importing it into 2026 without {' and '.join(LEFT_OUT)}",
                             self._import),
                            (f"Resetting {', '.join(TO_RESET)} of 2026 after a backup",
                             self._reset)):
            with self._wizard.with_registry_tool_awaited():
                step()
            self._note(title)
        self._undo("undo-reset")
        self._undo("undo-import")
        self._state = self._first_state
        self._note("Undoing the reset and the import; compared with the machine before the tour")
        self._wizard.press_button(CANCEL)
        self._wizard.process.wait(LIMIT_SECONDS)

    def _export(self):
        self._wizard.start(EXPORT)
        self._wizard.choose_version(VERSIONS, "2025")
        self._picture("export-version", VERSIONS)
        self._wizard.press_button(NEXT)
        self._picture("export-categories", TREE)
        self._wizard.press_button(FINISH)
        self._wizard.name_file("C:\\" + SETTINGS)
        self._finish("export-finish")

    def _import(self):
        self._wizard.start(IMPORT)
        self._wizard.select_package("C:\\" + SETTINGS)
        self._picture("import-package", PATH_TITLE)
        self._wizard.press_button(NEXT)
        self._answer("import-advice")
        self._click_boxes(*LEFT_OUT)
        self._picture("import-categories", TREE)
        self._wizard.click(self._wizard.page_control(SHOW_CHANGES))
        self._wizard.list_window()
        self._store_picture("import-changes")
        self._wizard.answer_list("Close")
        self._wizard.press_button(FINISH)
        self._finish("import-finish")

    def _reset(self):
        self._wizard.start(RESET)
        self._answer("reset-warning")
        self._click_boxes(SELECT_ALL, *TO_RESET)
        self._wizard.click(self._wizard.page_control(BACKUP))
        self._wizard.name_file("C:\\" + BACKUP_PACKAGE)
        backup = self._prefix / "drive_c" / BACKUP_PACKAGE
        self._wizard.wait_until_done(
            lambda wizard: backup.exists() and wizard.button(FINISH).enabled, "the backup")
        self._picture("reset-categories", TREE)
        self._wizard.press_button(NEXT)
        self._answer("reset-question", "Yes")
        self._finish("reset-finish")

    def _undo(self, name):
        self._wizard.page_control(HEADING)
        self._wizard.screen.press("alt+space", "u")
        self._answer(name, "Yes")
        self._report.append(self._wizard.answer())

    def _click_boxes(self, *labels):
        for label in labels:
            self._wizard.click_box(label)

    def _answer(self, name, answer="OK"):
        self._wizard.box()
        self._store_picture(name)
        self._wizard.answer(answer)

    def _finish(self, name):
        self._report.append(self._wizard.finish_text())
        self._picture(name, FINISH_TITLE)
        self._wizard.press_button(FINISH)
        self._wizard.wait_until(lambda wizard: wizard.shows(HEADING), "the start page")

    def _picture(self, name, shown):
        self._wizard.page_control(shown)
        self._store_picture(name)

    def _store_picture(self, name):
        time.sleep(0.5)  # for the last of the painting
        self._pictures += 1
        self._wizard.picture(self._folder / "pages" / f"{self._pictures:02}-{name}.png")

    def _note(self, title):
        state = MachineState(self._prefix)
        said = self._report.pop().replace("\r\n", " ").split()
        lines = [title, "=" * len(title), "The wizard says: " + " ".join(said),
                 *describe_changes(self._state, state), ""]
        self._state = state
        with open(self._folder / "changes.txt", "a", encoding="utf-8") as changes:
            changes.write("\n".join(lines) + "\n")


def main():
    run_within(3600, "the tour of the wizard")
    prefix, folder = Path(sys.argv[1]).resolve(), Path(sys.argv[2]).resolve()
    (folder / "pages").mkdir(parents=True, exist_ok=True)
    (folder / "changes.txt").unlink(missing_ok=True)
    for name in (SETTINGS, BACKUP_PACKAGE):
        (prefix / "drive_c" / name).unlink(missing_ok=True)
    end_wine(prefix)
    with Screen() as screen, Wizard(screen, prefix) as wizard:
        Tour(wizard, prefix, folder).play()
    for name in (SETTINGS, BACKUP_PACKAGE):
        shutil.move(prefix / "drive_c" / name, folder / name)


if __name__ == "__main__":
    main()
