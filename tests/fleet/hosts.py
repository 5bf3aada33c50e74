"""Workstations of a fleet: Windows machines under Wine, each with the sample product and an sshd of
its own on a loopback address, in whose sessions cmd runs."""

import contextlib
import json
import os
import pwd
import shutil
import signal
import socket
import subprocess
import sys
import xml.etree.ElementTree as ElementTree
from pathlib import Path

PROJECT = Path(__file__).resolve().parents[2]
sys.path += [str(PROJECT / name) for name in ("tools", "tests/e2e", "tests/wizard")]
import registry_file  # noqa: E402
from expected_machine import State  # noqa: E402
from limits import end_group, run_limited  # noqa: E402
from playable import files_below, without_restore_points  # noqa: E402
from screen import wait_for  # noqa: E402
from wine_registry import export_key  # noqa: E402

FOLDER = PROJECT / "build/fleet"
TEMPLATE = FOLDER / "template"
PROGRAMS = PROJECT / "build/windows"
PRODUCT_FOLDER = r"C:\Program Files\ORMA\VANTRIC 2026\Bin"
USER = pwd.getpwuid(os.getuid()).pw_name
SMALL_DISK_BYTES = 1 << 20
SSHD = shutil.which("sshd", path="/usr/sbin:/usr/local/sbin:/sbin")


def make_template():
    """A machine with the product, of which the workstations are copies."""
    run_limited([PROJECT / "tools/wine-prefix", TEMPLATE], check=True, seconds=900)
    run_limited([sys.executable, PROJECT / "tools/make_sample.py", "--wine", TEMPLATE],
                check=True, seconds=900)
    shutil.copy2(PROGRAMS / "tarvik.dll",
                 TEMPLATE / "drive_c/Program Files/ORMA/VANTRIC 2026/Bin/tarvik.dll")
    _end_wine(TEMPLATE)


def make_key(folder):
    """The key with which the control machine logs in; its public half lies beside it."""
    key = folder / "key"
    run_limited(["ssh-keygen", "-q", "-t", "ed25519", "-N", "", "-f", key], check=True)
    return key


class Host:
    """A workstation; it is on until it is switched off."""

    def __init__(self, name, number, key):
        self.name = name
        self.prefix = FOLDER / name
        self.address = f"127.0.1.{number}"
        self._key = key
        self._sshd = None
        self._small_disk = None
        self._copy_template()
        self.port = _free_port(self.address)
        self.switch_on()

    @property
    def drive(self):
        return self.prefix / "drive_c"

    @property
    def profile(self):
        return self.drive / "users" / USER

    @property
    def local(self):
        return self.profile / "AppData/Local"

    def inventory(self):
        return {"ansible_host": self.address, "ansible_port": self.port, "ansible_user": USER,
                "ansible_ssh_private_key_file": str(self._key)}

    def settings(self):
        """What runs change: the product's files and keys."""
        files = {path: content
                 for path, content in without_restore_points(
                     files_below(self.profile / "AppData")).items()
                 if path.split("/")[1:2] in (["Vantric"], ["ORMA"])}
        return State(files, dict(registry_file.parse(
            export_key(self.prefix, r"HKEY_CURRENT_USER\SOFTWARE\Vantric"))))

    def restore_points(self):
        folder = self.local / "Carrovan/Restore"
        return sorted(folder.iterdir()) if folder.is_dir() else []

    def task(self, name):
        """The file in which the system keeps a registered task."""
        return self.drive / "windows/system32/tasks" / name

    def log_on(self, rollout):
        """What Windows does with a registered task when a user logs on. Wine keeps the task, but
        neither its triggers nor its actions: they are read from what was registered."""
        assert self.task(f"Carrovan-Fleet-{rollout}").exists()
        definition = ElementTree.parse(self.drive / "Program Files/Carrovan-Fleet" / rollout
                                       / "task.xml")
        assert definition.find(".//{*}LogonTrigger") is not None
        words = [definition.find(f".//{{*}}Exec/{{*}}{name}").text
                 for name in ("Command", "Arguments")]
        (self.drive / "logon.cmd").write_text("@" + " ".join(words) + "\r\n", encoding="utf-8")
        done = run_limited([PROJECT / "tools/wine", "cmd", "/C", r"C:\logon.cmd"],
                           cwd=self.profile, env=self._environment(), encoding="utf-8")
        assert done.returncode == 0, done.stdout + done.stderr

    @contextlib.contextmanager
    def running_product(self):
        """Some program under the product's name; it ends with its input."""
        program = self.drive / "VANTRIC.exe"
        shutil.copy2(self.drive / "windows/system32/cmd.exe", program)
        said = self.prefix / "product.txt"
        with open(said, "wb") as output, subprocess.Popen(
                [PROJECT / "tools/wine", r"C:\VANTRIC.exe"], stdin=subprocess.PIPE, stdout=output,
                stderr=subprocess.DEVNULL, env=self._environment(), process_group=0) as process:
            try:
                wait_for(lambda: said.stat().st_size, 120, "the product to run")
                yield
            finally:
                process.stdin.close()
                end_group(process)

    def switch_on(self):
        config = self.prefix / "sshd_config"
        config.write_text(_SSHD_CONFIG.format(
            port=self.port, address=self.address, prefix=self.prefix, key=self._key,
            session=PROJECT / "tests/fleet/session"), encoding="utf-8")
        with open(self.prefix / "sshd.log", "ab") as log:
            self._sshd = subprocess.Popen([SSHD, "-D", "-e", "-f", config], process_group=0,
                                          stdin=subprocess.DEVNULL, stdout=log, stderr=log)
        wait_for(self._answers, 60, f"{self.name}'s sshd, see {self.prefix / 'sshd.log'}")

    def switch_off(self):
        """At once and in the middle of what it does, as when the power goes."""
        for process in [*_descendants(self._sshd.pid), *_in_prefix(self.prefix)]:
            with contextlib.suppress(ProcessLookupError):
                os.kill(process, signal.SIGKILL)
        self._sshd.wait()
        _end_wine(self.prefix, "KILL")

    def restart(self):
        """In order: what was set is on the disk then. Wine keeps the registry in memory for a
        while, and would lose the setup's entries with the power."""
        _end_wine(self.prefix)

    def remove(self):
        if self._sshd.poll() is None:
            self.switch_off()
        if self._small_disk is not None:
            end_group(self._small_disk)
        shutil.rmtree(self.prefix)

    def fill_disk(self):
        """Gives the folder of temporary files a disk of its own, which is as good as full. False
        where this system lets nobody mount one."""
        _end_wine(self.prefix)
        temp = self.local / "Temp"
        for unshare in (["unshare", "-m"], ["unshare", "-cm"]):
            holder = subprocess.Popen(
                [*unshare, "sh", "-c", f'mount -t tmpfs -o size={SMALL_DISK_BYTES} none "$1" && '
                 "echo mounted && exec sleep infinity", "sh", temp],
                stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                process_group=0)
            if holder.stdout.readline() == b"mounted\n":
                self._small_disk = holder
                user = " -U --preserve-credentials" if "-cm" in unshare else ""
                (self.prefix / "namespace").write_text(f"-t {holder.pid} -m{user}")
                return True
            holder.wait()
        return False

    def _environment(self):
        environment = {**os.environ, "WINEPREFIX": str(self.prefix)}
        environment.pop("DISPLAY", None)
        return environment

    def _copy_template(self):
        """Windows' own files, which nobody changes, are shared."""
        if self.prefix.exists():
            _end_wine(self.prefix, "KILL")
            shutil.rmtree(self.prefix)
        (self.prefix / "drive_c").mkdir(parents=True)
        for entry in TEMPLATE.iterdir():
            if entry.name != "drive_c":
                run_limited(["cp", "-a", entry, self.prefix], check=True)
        for entry in (TEMPLATE / "drive_c").iterdir():
            link = ["-l"] if entry.name == "windows" else []
            run_limited(["cp", "-a", *link, entry, self.prefix / "drive_c"], check=True)
        (self.prefix / "profile").write_text(str(self.profile), encoding="utf-8")
        run_limited(["ssh-keygen", "-q", "-t", "ed25519", "-N", "", "-f", self.prefix / "host_key"],
                    check=True)

    def _answers(self):
        if self._sshd.poll() is not None:
            raise AssertionError(f"{self.name}'s sshd ended:\n"
                                 + (self.prefix / "sshd.log").read_text(encoding="utf-8"))
        with contextlib.suppress(OSError), socket.create_connection((self.address, self.port), 5):
            return True
        return False


_SSHD_CONFIG = """\
Port {port}
ListenAddress {address}
HostKey {prefix}/host_key
PidFile none
AuthorizedKeysFile {key}.pub
StrictModes no
PermitRootLogin yes
PasswordAuthentication no
KbdInteractiveAuthentication no
UsePAM no
PrintMotd no
Subsystem sftp /usr/lib/openssh/sftp-server
ForceCommand {session} {prefix}
"""


def write_inventory(hosts, file, **variables):
    """`hosts` gives each name its variables."""
    file.write_text(json.dumps({"all": {
        "vars": variables, "children": {"carrovan": {"hosts": hosts}}}}), encoding="utf-8")


def _free_port(address):
    with socket.socket() as free:
        free.bind((address, 0))
        return free.getsockname()[1]


def _end_wine(prefix, how="TERM"):
    """Ends the machine's Wine; by its own server, which writes the registry, unless killed."""
    environment = {**os.environ, "WINEPREFIX": str(prefix)}
    if how == "TERM":
        run_limited(["wineserver", "-k"], env=environment, seconds=120)
    else:
        run_limited(["wineserver", "-k9"], env=environment, seconds=120)
    run_limited(["wineserver", "-w"], env=environment, seconds=120)


def _descendants(process):
    children = {}
    for stat in Path("/proc").glob("[0-9]*/stat"):
        with contextlib.suppress(OSError):
            fields = stat.read_text(encoding="utf-8", errors="replace").rpartition(")")[2].split()
            children.setdefault(int(fields[1]), []).append(int(stat.parent.name))
    found = [process]
    for parent in found:
        found += children.get(parent, [])
    return found


def _in_prefix(prefix):
    wanted = f"WINEPREFIX={prefix}".encode()
    found = []
    for process in Path("/proc").glob("[0-9]*"):
        with contextlib.suppress(OSError):
            if wanted in (process / "environ").read_bytes().split(b"\0"):
                found.append(int(process.name))
    return found
