#!/usr/bin/env python3
"""Takes a picture of every page of the wizard, for the documentation and for looking at them:
take_pictures.py PREFIX FOLDER [PERCENT...]. Each picture is named after its page and scale."""

import os
import sys
import time
from pathlib import Path

from screen import LIMIT_SECONDS, Screen
from wizard import (BACK, CANCEL, EXPORT, FINISH, FINISH_TITLE, HEADING, IMPORT, NEXT, PATH_TITLE,
                    RESET, ROOT, TREE, VERSIONS, Wizard, end_wine, install_programs)

from limits import run_limited, run_within  # found by way of wizard


def main():
    run_within(1800, "taking pictures of the wizard")
    prefix, folder = Path(sys.argv[1]), Path(sys.argv[2])
    folder.mkdir(parents=True, exist_ok=True)
    run_limited([ROOT / "tools" / "wine-prefix", prefix], check=True)
    install_programs(prefix)
    for percent in map(int, sys.argv[3:] or ("100", "150")):
        set_scale(prefix, percent)
        with Screen(1680, 1280) as screen, Wizard(screen, prefix) as wizard:
            take(wizard, prefix, folder, percent)
    set_scale(prefix, 100)


def set_scale(prefix, percent):
    environment = {**os.environ, "WINEPREFIX": str(prefix)}
    run_limited([ROOT / "tools" / "wine", "reg", "add", r"HKCU\Control Panel\Desktop",
                 "/v", "LogPixels", "/t", "REG_DWORD", "/d", str(96 * percent // 100), "/f"],
                env=environment, check=True)
    end_wine(prefix)


def take(wizard, prefix, folder, percent):
    def picture(page, shown):
        wizard.page_control(shown)
        time.sleep(0.5)  # for the last of the painting
        wizard.picture(folder / f"{page}-{percent}.png")

    package = prefix / "drive_c" / "settings-2026.ucex"
    package.unlink(missing_ok=True)
    picture("start", HEADING)
    wizard.start(EXPORT)
    picture("version", VERSIONS)
    wizard.press_button(NEXT)
    wizard.click_box("Custom Parts Library")
    picture("export", TREE)
    wizard.press_button(FINISH)
    wizard.name_file("C:\\" + package.name)
    picture("finish", FINISH_TITLE)
    wizard.press_button(FINISH)

    wizard.start(IMPORT)
    wizard.select_package("C:\\" + package.name)
    picture("path", PATH_TITLE)
    wizard.press_button(NEXT)
    picture("import", TREE)
    wizard.press_button(BACK)
    wizard.page_control(PATH_TITLE)
    wizard.press_button(BACK)
    wizard.start(RESET)
    wizard.answer()
    picture("reset", TREE)
    wizard.press_button(CANCEL)
    wizard.process.wait(LIMIT_SECONDS)


if __name__ == "__main__":
    main()
