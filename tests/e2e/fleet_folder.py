"""Folders as they are collected from the hosts of a fleet."""

import json
from pathlib import Path


def document(verb="import", status=0, **members):
    """What carrovan-cli prints for a run that ended so."""
    plain = {"verb": verb, "version": "2026", "package": "standard.ucex", "dryRun": False,
             "exitStatus": status, "problems": [], "emptied": [], "dropped": [], "paths": [],
             "categories": [{"label": "Options", "outcome": "imported"},
                            {"label": "Shortcut key", "outcome": "left out"}],
             "finishText": "", "log": [], "optionsSet": None, "unextracted": 0,
             "restorePoint": "2026-11-21T164406Z", "verification": None}
    return json.dumps({**plain, **members}, ensure_ascii=False)


class FleetFolder:
    """Writes the folder; bytes and texts are put into files as they are, None leaves one out."""

    def __init__(self, root, hosts, job="import", **members):
        self.root = Path(root)
        self.root.mkdir()
        self.list({"job": job, "hosts": hosts, **members})

    def list(self, content):
        text = content if isinstance(content, str) else json.dumps(content)
        (self.root / "fleet.json").write_text(text, "utf-8")

    def answer(self, host, output=None, status="0\n", errors="", user="ada", number=1):
        folder = self.root / host / "answers" / str(number)
        folder.mkdir(parents=True)
        for name, content in (("output.json", output), ("status.txt", status),
                              ("errors.txt", errors), ("user.txt", user)):
            if content is not None:
                data = content if isinstance(content, bytes) else content.encode()
                (folder / name).write_bytes(data)
        return folder

    def failure(self, host, text):
        (self.root / host).mkdir(exist_ok=True)
        (self.root / host / "failure.txt").write_text(text, "utf-8")


def sample(root):
    """Ten hosts, of which each came to something else."""
    fleet = FleetFolder(root, [f"ws{i:02}" for i in range(1, 11)])
    dropped = [{"file": "Options\\Directories.reg", "name": f"Library{i}",
                "key": r"HKEY_CURRENT_USER\SOFTWARE\Vantric\VANTRIC 28.0\Directories",
                "why": "names a path that does not exist here"} for i in range(3)]
    for host in ("ws01", "ws02", "ws03"):
        fleet.answer(host, document())
    fleet.answer("ws04", document(dropped=dropped))
    fleet.answer("ws05", document(status=3, problems=[
        r"Not imported: Options\General.reg: access denied (error 5)"], emptied=["Catalog Library"],
        verification={"items": 7, "differences": [
            r"C:\Users\ada\AppData\Roaming\Vantric\VANTRIC\28.0\a.xml is not as it was to become"]}),
        "3\n", "It is recommended that users retain the absolute path-related files.\n")
    fleet.answer("ws06", "", "1\r\n", "VANTRIC.exe is running\n")
    fleet.failure("ws07", "unreachable: Connection timed out\nafter 3 attempts\n")
    fleet.answer("ws08", document(), "0\n", user="ada")
    fleet.answer("ws08", "", "1", "Another run is at work: carrovan-cli import, process 12\n",
                 user="张伟", number=2)
    fleet.answer("ws09", "Access is denied.", "0")
    return fleet
