"""The real wizard under Wine, operated with the mouse and the keyboard as its users do."""

import contextlib
import json
import os
import signal
import subprocess
import sys
import threading
import time
from pathlib import Path

from screen import LIMIT_SECONDS, wait_for

ROOT = Path(__file__).resolve().parents[2]
sys.path.append(str(ROOT / "tools"))
from limits import end_group, run_limited  # noqa: E402

PROGRAMS = ROOT / "build" / "windows"
STARTUP_FOLDER = "drive_c/Program Files/ORMA/VANTRIC 2026/Bin"

FINISH, BACK, NEXT, CANCEL = 1, 1000, 1001, 1003  # the frame's buttons
TREE, DESCRIPTION = 1006, 1020  # on the category pages
BACKUP = 1028  # on the reset page
HEADING, VERSIONS = 1013, 1010  # on the start page and on the version page
PACKAGE, SELECT_FILE, TARGETS, PATH_TITLE = 1011, 1012, 1014, 1024  # on the path page
FINISH_TITLE, FINISH_MESSAGE = 1023, 1022
FINISH_LIST, FINISH_UNDO, OPEN_FOLDER = 1040, 1041, 1042
SHOW_CHANGES, BACKUP_TEXT = 1039, 1038  # on category pages
LIST_TEXT, LIST_LINES = 1043, 1044  # in the window of a list
FILE_NAME = 1152  # the field of the system's file dialogs

EXPORT = "Export selected environment settings"
IMPORT = "Import selected environment settings"
RESET = "Reset all settings in the current version"
SELECT_ALL = "Select All"


class Control:
    """A window or control as the probe found it."""

    def __init__(self, facts, controls=()):
        self.__dict__.update(facts)
        self.controls = list(controls)

    def centre(self):
        left, top, width, height = self.area
        return left + width // 2, top + height // 2

    def item(self, label):
        """An item of a tree; the root's label is "Select All"."""
        return next(item for item in self.items if item["text"] == label)

    def checked_labels(self):
        return [item["text"] for item in self.items if item["checked"]]


class Wizard:
    """carrovan.exe in the folder of a sample product, on a screen."""

    def __init__(self, screen, prefix, folder=None, program="carrovan.exe", arguments=()):
        self.screen = screen
        self.prefix = Path(prefix)
        self._environment = {**screen.environment(), "WINEPREFIX": str(self.prefix)}
        self._folder = Path(folder) if folder else self.prefix / STARTUP_FOLDER
        self._name = program
        self.process = subprocess.Popen(
            [ROOT / "tools" / "wine", program, *arguments], cwd=self._folder, env=self._environment,
            stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
            process_group=0)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        end_group(self.process)

    def windows(self):
        """The visible windows, the uppermost first, each with its visible controls."""
        return list_windows(self.screen, self.prefix, self._name)

    def window(self):
        """The wizard's window, as soon as it is there."""
        return wait_for(self._frame, what="the wizard's window")

    def box(self):
        """The dialog in front of the wizard, as soon as there is one."""
        return wait_for(lambda: next((w for w in self.windows() if not is_frame(w)), None),
                        what="a dialog in front of the wizard")

    def has_box(self):
        return any(not is_frame(window) for window in self.windows())

    def page_control(self, number):
        """A control of the page, as soon as it is shown and the wizard waits for the user."""
        return self._page_control(lambda control: control.number == number, f"control {number}")

    def shows(self, number):
        """True when the page that is shown has this control."""
        return any(c.number == number and c.depth == 2 for c in self.window().controls)

    def button(self, number):
        """A button of the frame."""
        return find(self.window(), number, depth=1)

    def tree(self):
        return self.page_control(TREE)

    def wait_until(self, condition, what, seconds=LIMIT_SECONDS):
        return wait_for(lambda: condition(self), seconds, what)

    def wait_until_done(self, condition, what):
        """For the end of a run, which takes long on a busy machine."""
        return self.wait_until(condition, what, seconds=900)

    def click(self, control):
        self.screen.click(*control.centre())

    def press_button(self, number):
        """Clicks a button of the frame as soon as it is enabled."""
        self.click(self.wait_until(lambda wizard: wizard._enabled_button(number),
                                   f"button {number}"))

    def choose(self, text):
        """Clicks the control that shows this text, as soon as its page is shown."""
        self.click(self._page_control(lambda control: control.text == text, text))

    def click_box(self, label):
        self.click_middle(self.tree().item(label)["box"])

    def click_label(self, label):
        self.click_middle(self.tree().item(label)["label"])

    def click_middle(self, area):
        """Clicks an area (left, top, width, height) of the screen."""
        left, top, width, height = area
        self.screen.click(left + width // 2, top + height // 2)

    def start(self, mode):
        """Chooses on the start page what to do, and goes on."""
        self.choose(mode)
        self.press_button(NEXT)

    def choose_version(self, number, year):
        """Opens a list of versions and clicks an entry."""
        versions = self.page_control(number)
        self.click(versions)
        left, top, width, height = self.box().area
        row = versions.entries.index(year)
        self.screen.click(left + width // 2,
                          top + height * (2 * row + 1) // (2 * len(versions.entries)))
        self.wait_until(lambda wizard: wizard.page_control(number).text == year, year)

    def name_file(self, name):
        """Answers the system's file dialog."""
        self.wait_until(lambda wizard: any(c.number == FILE_NAME and c.focused
                                           for c in wizard.box().controls),
                        "the dialog to take a name")
        self.screen.type(name)
        self.screen.press("Return")

    def select_package(self, name):
        """Chooses a package on the path page."""
        self.click(self.page_control(SELECT_FILE))
        self.name_file(name)

    def cancel_package(self):
        """Opens the file dialog of the path page and cancels it."""
        self.click(self.page_control(SELECT_FILE))
        self.wait_until(lambda wizard: any(c.number == FILE_NAME and c.focused
                                           for c in wizard.box().controls), "the file dialog")
        self.screen.press("Escape")
        self.wait_until(lambda wizard: wizard.button(CANCEL).enabled, "the path page")

    def finish_text(self):
        """What the finish page says, as soon as it is shown."""
        self.wait_until_done(lambda wizard: wizard.shows(FINISH_TITLE), "the finish page")
        return self.page_control(FINISH_MESSAGE).text

    def answer(self, text="OK"):
        """Presses a button of the dialog in front and gives the dialog's text."""
        box = self.box()
        texts = [c.text for c in box.controls if c.class_name == "Static" and c.text]
        self.click(next(c for c in box.controls if c.text.replace("&", "") == text))
        return "\n".join(texts)

    def list_window(self):
        """The window of a list in front of the wizard, as soon as it is there."""
        return wait_for(lambda: next((w for w in self.windows() if holds(w, LIST_LINES)), None),
                        what="the window of a list")

    def answer_list(self, text):
        """Presses a button of the window of a list; gives what stands above the lines, and these."""
        window = self.list_window()
        lines = [item["text"] for item in find(window, LIST_LINES, depth=1).items]
        self.click(next(c for c in window.controls if c.text.replace("&", "") == text))
        self.wait_until(lambda wizard: not any(holds(w, LIST_LINES) for w in wizard.windows()),
                        "the window of the list to close")
        return find(window, LIST_TEXT, depth=1).text, lines

    def finish_lines(self):
        """The lines below the finish page's text."""
        return self.page_control(FINISH_LIST).entries

    def picture(self, path):
        """Stores a PNG of the wizard's window with its frame."""
        self.screen.move_mouse_away()
        self.screen.picture(path, self.window().area)

    @contextlib.contextmanager
    def with_registry_tool_awaited(self):
        """Holds the wizard whenever the registry tool runs. The wizard gives the tool fixed times,
        which are short for Wine on a busy machine; a package would then lack a key."""
        done = threading.Event()
        holder = threading.Thread(target=self._hold_during_registry_tool, args=(done,))
        holder.start()
        try:
            yield
        finally:
            done.set()
            holder.join()

    def _hold_during_registry_tool(self, done):
        first_seen = {}
        while not done.wait(0.02):
            now = time.monotonic()
            first_seen = {process: first_seen.get(process, now)
                          for process in processes_in_prefix(self.prefix, ("cmd.exe", "reg.exe"))}
            # A younger one may need the wizard to finish its start.
            started = [process for process, seen in first_seen.items() if now - seen > 0.04]
            if started:
                self._hold_until_ended(started, done)

    def _hold_until_ended(self, processes, done):
        if self.process.poll() is not None:
            return
        self.process.send_signal(signal.SIGSTOP)
        end = time.monotonic() + 30
        while any(map(still_runs, processes)) and time.monotonic() < end:
            if done.wait(0.02):
                break
        self.process.send_signal(signal.SIGCONT)

    def _enabled_button(self, number):
        button = self.button(number)
        return button if button.enabled else None

    def _page_control(self, matches, what):
        return wait_for(lambda: self._idle_page_control(matches), what=what)

    def _idle_page_control(self, matches):
        window = self.window()
        if not find(window, CANCEL, depth=1).enabled:
            return None
        return next((c for c in window.controls if c.depth == 2 and matches(c)), None)

    def _frame(self):
        return next((window for window in self.windows() if is_frame(window)), None)


def list_windows(screen, prefix, program):
    """The visible windows of a program, the uppermost first, each with its visible controls."""
    windows = []
    for facts in json.loads(_probe(screen, prefix, program)):
        if facts["depth"] == 0:
            windows.append(Control(facts))
        elif facts["visible"]:
            windows[-1].controls.append(Control(facts))
    return windows


PROBE_ATTEMPTS = 3


def _probe(screen, prefix, program):
    """What the probe prints. It only looks and never fails by itself; but on a busy machine Wine
    now and then ends a program before its first line, and then it is started again."""
    command = [ROOT / "tools" / "wine", PROGRAMS / "tests" / "window_probe.exe", program]
    for _ in range(PROBE_ATTEMPTS):
        done = run_limited(command, env={**screen.environment(), "WINEPREFIX": str(prefix)})
        if done.returncode == 0:
            return done.stdout
    raise RuntimeError(f"{program}'s windows could not be listed in {PROBE_ATTEMPTS} attempts; the "
                       f"last ended with {done.returncode}: {done.stdout + done.stderr}")


def processes_in_prefix(prefix, names):
    """The folders in /proc of the programs of these names that run in a Wine prefix."""
    wanted = f"WINEPREFIX={prefix}".encode()
    found = []
    for process in Path("/proc").glob("[0-9]*"):
        try:
            if ((process / "comm").read_text(encoding="utf-8").strip() in names
                    and wanted in (process / "environ").read_bytes().split(b"\0")):
                found.append(process)
        except OSError:  # it has ended
            continue
    return found


def still_runs(process):
    """False also for a process that has ended and that nobody has waited for."""
    try:
        return (process / "environ").read_bytes() != b""
    except OSError:
        return False


def is_frame(window):
    return holds(window, CANCEL)


def holds(window, number):
    return any(control.number == number and control.depth == 1 for control in window.controls)


def find(window, number, depth):
    for control in window.controls:
        if control.number == number and control.depth == depth:
            return control
    raise AssertionError(f"no control {number} is shown in {window.text!r}")


def install_programs(prefix):
    """Puts the sample product with the programs of this build into a prefix."""
    run_limited([ROOT / "tools" / "make_sample.py", "--wine", prefix, "--programs", PROGRAMS],
                check=True, env={**os.environ, "WINEPREFIX": str(prefix)})


def end_wine(prefix):
    """Ends everything that runs in a prefix: Wine keeps to the screen, or to none, that its first
    program had, and programs take the scale when the first of them starts."""
    for option in ("-k", "-w"):
        run_limited(["wineserver", option], env={**os.environ, "WINEPREFIX": str(prefix)})
