"""Who the sample product is and where it keeps things."""

COMPANY = "Vantric"
PRODUCT = "VANTRIC"
RUNNING_VERSION = "28.0"
RUNNING_YEAR = "2026"

# In the order in which the registry lists them; the running version is the last one.
MACHINE_VERSIONS = ("25.0", "26.0", "27.0", "28.0")

LANGUAGES = ("en-us", "zh-cn")
PROGRAM_FOLDER = "Program Files/ORMA"
STARTUP_FOLDER = PROGRAM_FOLDER + "/VANTRIC 2026/Bin"

# Somebody whose settings this user once took over.
OTHER_USER = "olduser"

OPTION_SUBKEYS = (
    "General", "DimensionFont", "HideCommandAutoTips", "Model", "Color", "Surface_Finish",
    "Directories", "Bulk Drawing Creation Template Directories", "Draw", "Grid", "MouseCustomize",
    "SheetMetal", "Tessaline", "UIInteraction", "Annotations", "Render", "AutoCAD Import",
    "Point Snap", "m3DWire", "Import Options", "BOMDataExport", "Open Option", "Technical Drawing",
    "Performance", "Assembly", "Export Options")


def year_of(version):
    """The year form of an internal version: 27.0 is release 2025."""
    return str(int(float(version)) + 1998)


def drafting_folder(version):
    """The 2D drafting folder of a version; release 2025 still uses the one of 2024."""
    year, subfolder = year_of(version), version
    if year == "2025":
        year, subfolder = "2024", "25.0"
    return f"ORMA/ORMA CAD TVRN-INT-{PRODUCT} {year} (x64)/{subfolder}"


def product_folder(version):
    """The product's folder below the user's Local and Roaming application data."""
    return f"{COMPANY}/{PRODUCT}/{version}"


def windows_path(path):
    """A path below drive C: as Windows spells it."""
    return "C:\\" + path.replace("/", "\\")
