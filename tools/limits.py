"""Time limits, so that nothing waits for ever: for a command, and for a whole script."""

import os
import select
import shlex
import signal
import subprocess
import sys
import tempfile
from pathlib import Path

_WITH_LIMIT = Path(__file__).with_name("with-limit")
COMMAND_SECONDS = 600  # for what takes a second or two on an idle machine


def run_limited(command, *, seconds=COMMAND_SECONDS, check=False, encoding=None, **options):
    """The finished run of a command, with its output and errors, as texts with plain line ends when
    an encoding is given. They go through files: what a
    Windows program starts besides, Wine's desktop for one, inherits them and outlives it, so that
    the end of a pipe may never come. Raises a TimeoutError that names the command when it does not
    end in time; it and its process group are ended then."""
    with tempfile.TemporaryFile() as output, tempfile.TemporaryFile() as errors:
        done = subprocess.CompletedProcess(
            command, _status(command, seconds, output, errors, options),
            _content(output, encoding), _content(errors, encoding))
    if check:
        done.check_returncode()
    return done


def run_within(seconds, what):
    """Starts this script anew with a time limit, unless it runs within it already."""
    if os.environ.get("CARROVAN_WITHIN") != what:
        os.execv(_WITH_LIMIT, [_WITH_LIMIT, str(seconds), what, sys.executable,
                               *sys.orig_argv[1:]])


def end_group(process):
    """Ends a program that was started with process_group=0, unless it has ended, and what it has
    started in its group."""
    if process.poll() is None:
        os.killpg(process.pid, signal.SIGKILL)
        process.wait()


def _status(command, seconds, output, errors, options):
    options.setdefault("stdin", subprocess.DEVNULL)
    with subprocess.Popen(command, stdout=output, stderr=errors, process_group=0,
                          **options) as process:
        try:
            return _await_end(process, seconds)
        except BaseException as reason:
            end_group(process)
            if not isinstance(reason, subprocess.TimeoutExpired):
                raise
            said = (_content(output) + _content(errors)).decode(errors="replace").strip()
            raise TimeoutError(
                f"'{shlex.join(map(str, command))}' did not end within {seconds} s; stopped. "
                f"It has said: {said or 'nothing'}") from None


def _await_end(process, seconds):
    """As `process.wait`, which looks only every now and then and so makes short commands longer."""
    end = os.pidfd_open(process.pid)
    try:
        if not select.select([end], [], [], seconds)[0]:
            raise subprocess.TimeoutExpired(process.args, seconds)
    finally:
        os.close(end)
    return process.wait()


def _content(file, encoding=None):
    file.seek(0)
    content = file.read()
    if encoding is None:
        return content
    return content.decode(encoding).replace("\r\n", "\n").replace("\r", "\n")
