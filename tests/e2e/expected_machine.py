"""What a machine holds after an import or a reset, worked out from what it held before, the package
and the rules. Only the merges of two documents are asked of the program, by its own verbs; they have
tests of their own."""

import re
import shutil
import zipfile
from pathlib import Path

import registry_file
from machines import run_cli

LANGUAGES = ("en-us", "zh-cn")
LIVE_KEY = r"HKEY_CURRENT_USER\SOFTWARE\Vantric\VANTRIC {}"
DEFAULT_KEY = r"HKEY_LOCAL_MACHINE\SOFTWARE\Vantric\New User Settings\VANTRIC {}"

# Half of the profile and folder below the product's version folder; "{}" stands for each language.
FOLDER_OF = {
    "Interface layout": ("Roaming", "{}/Customization"),
    "Document Template": ("Roaming", "{}/Template"),
    "Shortcut key": ("Local", "Customization"),
    "3DBOM Configuration": ("Local", "{}/3DBOM"),
    "Property Templates": ("Local", "{}/PropertyTemplates/NewTemplates"),
    "Custom materials": ("Local", "{}/materials"),
    "Custom Parts Library": ("Local", "{}/ToolBox"),
    "Catalog Library": ("Local", "{}/FavoriteCatalog"),
    "Sheet Metal Library": ("Local", "{}/SheetMetal"),
    "Cosmetic Thread": ("Local", "{}/CosmeticThread"),
}


class State:
    """Files and folders below the user's application data (a folder's content is None), and the
    registry as {key: {value name: data}}."""

    def __init__(self, files, registry):
        self.files = dict(files)
        self.registry = {}
        for key, values in registry.items():
            self.add_key(key).update(values)

    def wipe(self, folder):
        for path in [p for p in self.files if p == folder or p.startswith(folder + "/")]:
            del self.files[path]

    def put(self, path, content):
        self.files[path] = content
        for parent in Path(path).parents:
            if str(parent) != ".":
                self.files[str(parent)] = None

    def delete_key(self, key):
        for path in [p for p in self.registry if p == key or p.startswith(key + "\\")]:
            del self.registry[path]

    def copy_key(self, source, target):
        for path, values in list(self.registry.items()):
            if path == source or path.startswith(source + "\\"):
                self.add_key(target + path[len(source):]).update(values)

    def merge_registry_file(self, text):
        for key, values in registry_file.parse(b"\xff\xfe" + text.encode("utf-16-le")):
            self.add_key(key).update(values)

    def add_key(self, key):
        """A registry file need not name the keys above one with values."""
        names = key.split("\\")
        for count in range(1, len(names)):
            self.registry.setdefault("\\".join(names[:count]), {})
        return self.registry.setdefault(key, {})


def drafting_product_folder(year):
    """Release 2025 shares the folder of 2024."""
    return f"Local/ORMA/ORMA CAD TVRN-INT-VANTRIC {'2024' if year == '2025' else year} (x64)"


def product_folder(half, version):
    return f"{half}/Vantric/VANTRIC/{version}"


class Versions:
    """The package's version and the target's, each as release year and internal number."""

    def __init__(self, package, target):
        self.package, self.target = package, target
        self.package_number, self.target_number = (
            f"{int(year) - 1998}.0" for year in (package, target))


class ExpectedImport:
    """An import of a package into an installed version with all but some categories ticked. `scratch`
    is a folder for the merges."""

    def __init__(self, machine, package, versions, scratch):
        before = machine.state()
        self.state = State(before.files, before.registry)
        self.machine = machine
        self.versions = versions
        self.scratch = Path(scratch)
        with zipfile.ZipFile(package) as archive:
            self.entries = {name.replace("\\", "/"): archive.read(name)
                            for name in archive.namelist()}
        self.labels = re.findall(r"(?m)^(.*)=1\r$", self.entries["config.ini"].decode())

    def apply(self, unticked):
        if self.versions.package != self.versions.target:
            self._mend()
        for label in self.labels:
            if label in unticked:
                self._leave_out(label)
            else:
                self._take_in(label)
        for folder in ("Options/", "Register/"):
            for name in [n for n in self.entries if n.startswith(folder)]:
                self.state.merge_registry_file(_decoded(self.entries[name]))
        for name, content in self.entries.items():
            if name.startswith(("Local/", "Roaming/")) and ".config" not in name:
                self.state.put(name, content)
        return self.state

    # What another release's package is mended by.

    def _mend(self):
        mended = {}
        for name, content in self.entries.items():
            drafting = "ORMA CAD TVRN-INT" in name
            if name.endswith(".xml") and not drafting:
                content = self._mended_xml(content)
            elif name.endswith(".reg") and not drafting:
                content = self._mended_registry_file(content)
            mended["/".join(self._mended_folders(name))] = content
        self.entries = mended

    def _mended_folders(self, name):
        *folders, file = name.split("/")
        drafting = False
        for index, folder in enumerate(folders):
            drafting = drafting or "ORMA CAD TVRN-INT" in folder
            if drafting:
                folder = self._mended_drafting_folder(folder)
            else:
                folder = folder.replace(self.versions.package_number, self.versions.target_number)
            folders[index] = folder
        return [*folders, file]

    def _mended_drafting_folder(self, folder):
        if re.fullmatch(r"\d+\.\d+", folder):
            return self._target_drafting_folder().rpartition("/")[2]
        folder = self._renamed_by_year(folder, self.versions.package)
        if "VANTRIC 2024" in folder and self.versions.target != "2025":
            folder = self._renamed_by_year(folder, "2024")
        return folder

    def _renamed_by_year(self, folder, year):
        """No folder gets the name of 2025, which shares that of 2024."""
        if year not in folder:
            return folder
        return folder.replace(year, self.versions.target).replace(
            "ORMA CAD TVRN-INT-VANTRIC 2025 (x64)", "ORMA CAD TVRN-INT-VANTRIC 2024 (x64)")

    def _mended_xml(self, content):
        wide = content.startswith(b"\xff\xfe")
        text = _decoded(content) if wide else content.decode("utf-8")
        text = text.replace("\r\n", "\n").replace(self.versions.package, self.versions.target)
        found = [n for n in re.findall(r"VANTRIC([0-9.]+)", text)
                 if re.fullmatch(r"\d+\.?\d*|\.\d+", n)]
        if found:
            text = text.replace("VANTRIC" + max(found, key=float),
                                "VANTRIC" + self.versions.target_number)
        text = "".join(line + "\r\n" for line in text.removesuffix("\n").split("\n"))
        return b"\xff\xfe" + text.encode("utf-16-le") if wide else text.encode()

    def _mended_registry_file(self, content):
        text = _decoded(content)
        package, target = self.versions.package_number, self.versions.target_number
        for old, new in (("VANTRIC " + package, "VANTRIC " + target),
                         (package + "\\", target + "\\"),
                         (self.versions.package, self.versions.target)):
            text = text.replace(old, new)
        user = self.machine.profile.rpartition("\\")[2]
        for prefix in (r"C:\\Users" + "\\\\", "C:/Users/", "\\Users\\", "/Users/"):
            text = re.sub(re.escape(prefix) + r'[^\\/"\x00-\x20]+',
                          lambda found, prefix=prefix: prefix + user, text)
        text = text.replace("%USERPROFILE%", self.machine.profile.replace("\\", "\\\\"))
        return b"\xff\xfe" + "".join(line + "\r\n" for line in text.split("\r\n")
                                     if self._stays(line.strip())).encode("utf-16-le")

    def _stays(self, line):
        if line.startswith("[") or "=" not in line:
            return True
        value = line.partition("=")[2].strip()
        inner = value[1:-1]
        if len(value) < 2 or value[0] != '"' or value[-1] != '"' or len(inner) < 3:
            return True
        drive = inner[1] == ":" and inner[2] in "\\/"
        if not drive and not inner.startswith("\\\\"):
            return True
        return self.machine.path_exists(re.sub(r"\\\\", r"\\", inner))

    # What a category does.

    def _folders(self, label, version):
        half, below = FOLDER_OF[label]
        return [f"{product_folder(half, version)}/{below.format(language)}"
                for language in (LANGUAGES if "{}" in below else ("",))]

    def _target_drafting_folder(self):
        folder = drafting_product_folder(self.versions.target)
        if self.versions.target == "2025":
            return folder + "/25.0"
        inside = {path[len(folder) + 1:].partition("/")[0] for path in self.state.files
                  if path.startswith(folder + "/")}
        return f"{folder}/{inside.pop() if len(inside) == 1 else self.versions.target[2:] + '.0'}"

    def _leave_out(self, label):
        if label in ("Options", "Register"):
            folders = [label]
        elif label == "2D Draft Settings":
            local = drafting_product_folder(self.versions.target)
            if self.versions.target == "2025":
                local += "/25.0"
            folders = [local, local.replace("Local", "Roaming", 1)]
        else:
            folders = self._folders(label, self.versions.target_number)
        for folder in folders:
            for name in [n for n in self.entries if n.startswith(folder + "/")]:
                del self.entries[name]

    def _take_in(self, label):
        if label in ("Options", "Register"):
            return
        if label == "Shortcut key":
            self._merge_shortcuts()
        elif label == "2D Draft Settings":
            local = self._target_drafting_folder()
            self.state.wipe(local)
            self.state.wipe(local.replace("Local", "Roaming", 1))
        else:
            for folder in self._folders(label, self.versions.target_number):
                if label == "Interface layout":
                    self._merge_interface(folder)
                self.state.wipe(folder)

    def _merge_interface(self, folder):
        package, own = self._laid_out(folder)
        if own.is_dir():
            run_cli("merge-folders", package, own)
            self._take_back(folder, package)
            self._take_back(folder + "_backup", Path(str(package) + "_backup"))

    def _merge_shortcuts(self):
        folder, = self._folders("Shortcut key", self.versions.target_number)
        package, own = self._laid_out(folder)
        if not own.is_dir():
            own = self.machine.drive / "Program Files/ORMA/VANTRIC 2026/AppData/Customization"
        run_cli("merge-shortcuts", own, package, "VANTRIC" + self.versions.target_number)
        self._take_back(folder, package)

    def _laid_out(self, folder):
        """The package's files of a folder and the machine's, on disk."""
        shutil.rmtree(self.scratch, ignore_errors=True)
        for name, files in (("package", self.entries), ("own", self.state.files)):
            for path, content in files.items():
                if content is not None and path.startswith(folder + "/"):
                    target = self.scratch / name / path[len(folder) + 1:]
                    target.parent.mkdir(parents=True, exist_ok=True)
                    target.write_bytes(content)
        return self.scratch / "package", self.scratch / "own"

    def _take_back(self, folder, source):
        for name in [n for n in self.entries if n.startswith(folder + "/")]:
            del self.entries[name]
        for path in source.rglob("*"):
            if path.is_file():
                self.entries[f"{folder}/{path.relative_to(source)}"] = path.read_bytes()


def after_reset(before, labels, version, year):
    """The running version with these categories reset."""
    state = State(before.files, before.registry)
    live, default = LIVE_KEY.format(version), DEFAULT_KEY.format(version)
    for label in labels:
        if label == "Register":
            state.delete_key(live)
            state.copy_key(default, live)
        elif label == "Options":
            raise NotImplementedError("reset the whole key instead")
        elif label == "2D Draft Settings":
            state.wipe(f"Roaming/{year[2:]}.0")
            state.wipe(drafting_product_folder(year))
        else:
            half, below = FOLDER_OF[label]
            for language in LANGUAGES:
                state.wipe(f"{product_folder(half, version)}/{below.format(language)}")
    return state


def _decoded(content):
    assert content.startswith(b"\xff\xfe")
    return content[2:].decode("utf-16-le")
