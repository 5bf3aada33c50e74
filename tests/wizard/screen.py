"""A screen without a monitor: an X server, a window manager, real key presses and mouse clicks."""

import os
import select
import subprocess
import time
from pathlib import Path


LIMIT_SECONDS = 120  # for what takes less than a second on an idle machine
DOUBLE_CLICK_SECONDS = 0.6  # a little more than the system's own time


class Screen:
    """Runs as long as it is used: `with Screen(1280, 1024) as screen:`."""

    def __init__(self, width=1280, height=1024):
        self._last_click, self._last_click_ended = None, 0.0
        read_end, write_end = os.pipe()
        self._server = subprocess.Popen(
            ["Xvfb", "-displayfd", str(write_end), "-screen", "0", f"{width}x{height}x24",
             "-nolisten", "tcp"], pass_fds=[write_end], stderr=subprocess.DEVNULL)
        os.close(write_end)
        with os.fdopen(read_end) as pipe:
            self.display = ":" + self._line_of(pipe)
        self._manager = subprocess.Popen(
            ["openbox", "--sm-disable", "--config-file", Path(__file__).with_name("openbox.xml")],
            env=self.environment(), stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        for process in (self._manager, self._server):
            process.terminate()
            try:
                process.wait(LIMIT_SECONDS)
            except subprocess.TimeoutExpired:
                process.kill()
                process.wait()

    def _line_of(self, pipe):
        """What the X server says when it is ready."""
        if not select.select([pipe], [], [], LIMIT_SECONDS)[0]:
            self._server.kill()
            raise TimeoutError(f"Xvfb was not ready within {LIMIT_SECONDS} s")
        line = pipe.readline().strip()
        if not line:
            raise OSError("Xvfb has ended instead of giving a screen")
        return line

    def environment(self):
        """For the programs that shall use this screen."""
        return {**os.environ, "DISPLAY": self.display}

    def click(self, x, y, times=1):
        if (x, y) == self._last_click:  # else it would be the second half of a double click
            time.sleep(max(0, self._last_click_ended + DOUBLE_CLICK_SECONDS - time.monotonic()))
        self._xdotool("mousemove", x, y, "click", "--repeat", times, "--delay", 30, 1)
        self._last_click, self._last_click_ended = (x, y), time.monotonic()

    def move_mouse_away(self):
        self._xdotool("mousemove", 1, 1)

    def press(self, *keys):
        """Keys by their X names: "Tab", "alt+n", "space"."""
        self._xdotool("key", "--delay", 40, *keys)

    def type(self, text):
        self._xdotool("type", "--delay", 60, text)

    def picture(self, path, area=None):
        """Stores a PNG of the screen, or of an area (left, top, width, height) of it."""
        command = ["import", "-window", "root"]
        if area:
            left, top, width, height = area
            command += ["-crop", f"{width}x{height}+{left}+{top}", "+repage"]
        command += ["-strip", "-define", "png:compression-level=9", str(path)]
        subprocess.run(command, env=self.environment(), check=True, timeout=LIMIT_SECONDS)

    def _xdotool(self, *arguments):
        subprocess.run(["xdotool", *map(str, arguments)], env=self.environment(), check=True,
                       timeout=LIMIT_SECONDS)


def wait_for(condition, seconds=LIMIT_SECONDS, what="the expected state"):
    """The condition's first true value; an AssertionError when there is none in time."""
    end = time.monotonic() + seconds
    while True:
        value = condition()
        if value:
            return value
        if time.monotonic() > end:
            raise AssertionError(f"waited {seconds} s in vain for {what}")
        time.sleep(0.1)
