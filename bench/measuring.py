"""What the benchmarks share: building, taking the time of programs, and saying which targets are
missed."""

import os
import statistics
import subprocess
import sys
import time
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
BUILD = ROOT / "build" / "host"
CLI = BUILD / "carrovan-cli"


def build(*targets):
    if not (BUILD / "build.ninja").exists():
        subprocess.run(["cmake", "--preset", "host"], cwd=ROOT, check=True,
                       stdout=subprocess.DEVNULL)
    subprocess.run(["cmake", "--build", BUILD, "--target", *targets], check=True,
                   stdout=subprocess.DEVNULL)


def make_sample(machine, scale):
    subprocess.run([ROOT / "tools" / "make_sample.py", "--sandbox", machine, "--scale", str(scale)],
                   check=True)


def run(command, cwd=None, statuses=(0,)):
    """What the command took: seconds, seconds of processor time, and megabytes at most. Any status
    but those that are expected ends the benchmark."""
    os.sync()  # so that nobody pays for writing back what the one before wrote
    start = time.monotonic()
    process = subprocess.Popen(command, cwd=cwd, stdout=subprocess.DEVNULL,
                               stderr=subprocess.DEVNULL)
    _, status, usage = os.wait4(process.pid, 0)
    seconds = time.monotonic() - start
    process.returncode = os.waitstatus_to_exitcode(status)
    if process.returncode not in statuses:
        sys.exit(f"{Path(sys.argv[0]).name}: {' '.join(map(str, command))} ended with "
                 f"{process.returncode}")
    return seconds, usage.ru_utime + usage.ru_stime, usage.ru_maxrss / 1024


def rotated(items, count):
    """Each round begins with another program, so that no place in the round favours one."""
    count %= len(items)
    return items[count:] + items[:count]


def medians(runs):
    """Of each program's runs: seconds, seconds of processor time; and the most memory."""
    return {name: (statistics.median(run[0] for run in taken),
                   statistics.median(run[1] for run in taken), max(run[2] for run in taken))
            for name, taken in runs.items()}


def progress(text):
    if sys.stderr.isatty():
        print(text, file=sys.stderr)


def report(rows):
    """Prints rows of name, value, target or None, and a remark; 1 when a target is missed."""
    missed = False
    for name, value, target, remark in rows:
        verdict = "" if target is None else "ok" if value <= target else "MISSED"
        missed = missed or verdict == "MISSED"
        limit = "" if target is None else f"at most {target:6.2f}"
        print(f"{name:48} {value:8.2f}   {limit:14}   {verdict:7} {remark}".rstrip())
    return 1 if missed else 0
