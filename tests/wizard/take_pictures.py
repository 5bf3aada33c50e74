#!/usr/bin/env python3
"""Takes a picture of every page of the wizard, for the documentation and for looking at them. Each
picture is named after its page and scale."""

import argparse
import os
import time
from pathlib import Path

from screen import LIMIT_SECONDS, Screen
from texts import CHINESE, ENGLISH
from wizard import (BACK, CANCEL, FINISH, FINISH_TITLE, HEADING, NEXT, PATH_TITLE, ROOT,
                    SHOW_CHANGES, STARTUP_FOLDER, TREE, VERSIONS, Wizard, end_wine,
                    install_programs)
from wizard_case import change_identity

from limits import run_limited, run_within  # found by way of wizard

TEXTS = {"en-us": ENGLISH, "zh-cn": CHINESE}


def main():
    arguments = parse_arguments()
    run_within(1800, "taking pictures of the wizard")
    prefix, folder = arguments.prefix.resolve(), arguments.folder
    folder.mkdir(parents=True, exist_ok=True)
    run_limited([ROOT / "tools" / "wine-prefix", prefix], check=True)
    install_programs(prefix)
    change_identity(prefix / STARTUP_FOLDER, "Language=en-us", f"Language={arguments.language}")
    for percent in arguments.percent:
        set_scale(prefix, percent)
        with Screen(2080, 1600) as screen, Wizard(screen, prefix) as wizard:
            take(wizard, prefix, folder, percent, TEXTS[arguments.language])
    set_scale(prefix, 100)


def parse_arguments():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("prefix", type=Path, help="Wine prefix, whose sample is made anew")
    parser.add_argument("folder", type=Path, help="where the pictures go")
    parser.add_argument("percent", type=int, nargs="*", default=(100, 150), help="scales")
    parser.add_argument("--language", choices=TEXTS, default="en-us", help="of the product")
    return parser.parse_args()


def set_scale(prefix, percent):
    environment = {**os.environ, "WINEPREFIX": str(prefix)}
    run_limited([ROOT / "tools" / "wine", "reg", "add", r"HKCU\Control Panel\Desktop",
                 "/v", "LogPixels", "/t", "REG_DWORD", "/d", str(96 * percent // 100), "/f"],
                env=environment, check=True)
    end_wine(prefix)


def take(wizard, prefix, folder, percent, texts):
    def store(name):
        time.sleep(0.5)  # for the last of the painting
        wizard.picture(folder / f"{name}-{percent}.png")

    def picture(page, shown):
        wizard.page_control(shown)
        store(page)

    package = prefix / "drive_c" / "settings-2026.ucex"
    package.unlink(missing_ok=True)
    picture("start", HEADING)
    wizard.screen.press("alt+space")
    store("menu")
    wizard.screen.press("Up", "Return")
    wizard.box()
    store("about")
    wizard.screen.press("Escape")
    wizard.start(texts[106])
    picture("version", VERSIONS)
    wizard.press_button(NEXT)
    wizard.click_box("Custom Parts Library")
    picture("export", TREE)
    wizard.press_button(FINISH)
    wizard.name_file("C:\\" + package.name)
    picture("finish", FINISH_TITLE)
    wizard.press_button(FINISH)

    wizard.start(texts[107])
    wizard.select_package("C:\\" + package.name)
    picture("path", PATH_TITLE)
    wizard.press_button(NEXT)
    picture("import", TREE)
    wizard.press_button(BACK)
    wizard.page_control(PATH_TITLE)
    wizard.press_button(BACK)
    wizard.start(texts[108])
    wizard.box()
    store("warning")
    wizard.answer()
    picture("reset", TREE)
    wizard.click(wizard.page_control(SHOW_CHANGES))
    wizard.list_window()
    store("changes")
    wizard.answer_list(texts[176])
    wizard.press_button(CANCEL)
    wizard.process.wait(LIMIT_SECONDS)


if __name__ == "__main__":
    main()
