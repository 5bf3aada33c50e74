"""A run that is stopped in its middle, to see what it keeps others from."""

import contextlib
import os
import signal
import time

ATTEMPTS = 50  # a run may be over before it is seen
SECONDS = 120  # for one to begin or to end


class HeldRun:
    """A process that is stopped while it has the right to change the user's settings. `start` gives
    a fresh one, `own_folder` is where the program notes who has that right."""

    def __init__(self, start, own_folder):
        self.owner = own_folder / "run.owner"
        for _ in range(ATTEMPTS):
            self.left = self.name()
            self.process = start()
            if self._is_stopped():
                return
        raise AssertionError(f"none of {ATTEMPTS} runs could be stopped while it was at work")

    def __enter__(self):
        return self

    def __exit__(self, *_):
        if self.process.poll() is None:
            self.process.kill()
            self.process.wait(SECONDS)

    def name(self):
        """Empty when nobody is noted."""
        with contextlib.suppress(OSError):
            return self.owner.read_text(encoding="utf-8")
        return ""

    def go_on(self):
        """To the end; gives the exit status."""
        self.process.send_signal(signal.SIGCONT)
        return self.process.wait(SECONDS)

    def kill(self):
        self.process.kill()
        self.process.wait(SECONDS)

    def _is_stopped(self):
        end = time.monotonic() + SECONDS
        while not self._has_noted_itself():
            if self.process.poll() is not None:
                return False
            if time.monotonic() > end:
                self.process.kill()
                raise TimeoutError(f"the run did not begin within {SECONDS} s")
            time.sleep(0.0005)
        self.process.send_signal(signal.SIGSTOP)
        options = os.WSTOPPED | os.WEXITED | os.WNOWAIT
        state = os.waitid(os.P_PID, self.process.pid, options)
        if state.si_code == os.CLD_STOPPED and self._has_noted_itself():
            return True
        self.process.send_signal(signal.SIGCONT)
        self.process.wait(SECONDS)
        return False

    def _has_noted_itself(self):
        """The name is gone before the right is given back; that of a killed run may stand there."""
        return self.name() not in ("", self.left)
