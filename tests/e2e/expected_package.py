"""What a package of a sandbox must hold, worked out from the sandbox's files alone."""

import re

OPTION_SUBKEYS = """General|DimensionFont|HideCommandAutoTips|Model|Color|Surface_Finish|Directories
|Bulk Drawing Creation Template Directories|Draw|Grid|MouseCustomize|SheetMetal|Tessaline
|UIInteraction|Annotations|Render|AutoCAD Import|Point Snap|m3DWire|Import Options|BOMDataExport
|Open Option|Technical Drawing|Performance|Assembly|Export Options""".replace("\n", "").split("|")

# Label, root and folder of each category in the order in which its folders enter the package;
# "{}" stands for each language.
FOLDERS = (
    ("Interface layout", "Roaming", r"Vantric\VANTRIC\28.0\{}\Customization"),
    ("Document Template", "Roaming", r"Vantric\VANTRIC\28.0\{}\Template"),
    ("Shortcut key", "Local", r"Vantric\VANTRIC\28.0\Customization"),
    ("3DBOM Configuration", "Local", r"Vantric\VANTRIC\28.0\{}\3DBOM"),
    ("Property Templates", "Local", r"Vantric\VANTRIC\28.0\{}\PropertyTemplates\NewTemplates"),
    ("Custom materials", "Local", r"Vantric\VANTRIC\28.0\{}\materials"),
    ("Custom Parts Library", "Local", r"Vantric\VANTRIC\28.0\{}\ToolBox"),
    ("2D Draft Settings", "Local", r"ORMA\ORMA CAD TVRN-INT-VANTRIC 2026 (x64)"),
    ("2D Draft Settings", "Roaming", r"ORMA\ORMA CAD TVRN-INT-VANTRIC 2026 (x64)"),
    ("Catalog Library", "Local", r"Vantric\VANTRIC\28.0\{}\FavoriteCatalog"),
    ("Sheet Metal Library", "Local", r"Vantric\VANTRIC\28.0\{}\SheetMetal"),
    ("Cosmetic Thread", "Local", r"Vantric\VANTRIC\28.0\{}\CosmeticThread"),
)
LABELS = ["Options", "Register"] + list(dict.fromkeys(row[0] for row in FOLDERS))

REGISTRY_ENTRIES = [rf"Options\{name}.reg" for name in OPTION_SUBKEYS] + [
    r"Register\VANTRIC2026.reg"]
LIVE_KEY = r"HKEY_CURRENT_USER\SOFTWARE\Vantric\VANTRIC 28.0"


def config_ini(labels):
    lines = ["[Selected]"] + [f"{label}=1" for label in labels] + [
        "[Base]", "COMPANY=Vantric", "INTERNAL VERSION=28.0", "RELEASE VERSION=2026",
        "PRODUCT=VANTRIC"]
    return "".join(line + "\r\n" for line in lines).encode()


def category_folders(machine, labels):
    """Pairs of a folder's name in the package and its place on the host, in package order."""
    for label, root, pattern in FOLDERS:
        if label not in labels:
            continue
        for language in _languages(machine) if "{}" in pattern else [""]:
            folder = pattern.format(language)
            yield f"{root}\\{folder}", machine.profile / root / folder.replace("\\", "/")


def category_files(machine, labels=LABELS):
    """Entry names in groups of one folder each, with the file that belongs into each entry."""
    for name, folder in category_folders(machine, labels):
        group = {}
        for path in folder.rglob("*"):
            entry = name + "\\" + str(path.relative_to(folder)).replace("/", "\\")
            if path.is_file() and ".config" not in entry:
                group[entry] = path
        yield group


def registry_keys(name, all_keys):
    """The keys that belong into a registry entry, intermediate ones included."""
    subkey = re.sub(r"^(Options|Register)\\(.*)\.reg$", r"\2", name)
    root = LIVE_KEY if name.startswith("Register") else rf"{LIVE_KEY}\{subkey}"
    inside = {path: values for path, values in all_keys
              if path == root or path.startswith(root + "\\")}
    for path in list(inside):
        while path != root:
            path = path.rpartition("\\")[0]
            inside.setdefault(path, [])
    return inside


def _languages(machine):
    folders = (machine.root / "C/Program Files/ORMA/AppData").iterdir()
    tag = re.compile(r"[a-z]{2}(-[A-Za-z]{2})?")
    return sorted(path.name for path in folders if path.is_dir() and tag.fullmatch(path.name))
