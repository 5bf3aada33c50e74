"""The files of the sample: installation, per-user folders of two versions, and what lies beside."""

import random
import zlib
from dataclasses import dataclass
from datetime import datetime, timezone

from sample import product
from sample.customization import menu_file, ribbon_file, shortcut_file
from sample.materials import material_file, table_file

LOCAL = "Users/{user}/AppData/Local/"
ROAMING = "Users/{user}/AppData/Roaming/"

_RIBBONS = ("VANTRIC-PartTemplate.xml", "VANTRIC-Assembly.xml", "VANTRIC-Drawing.xml",
            "VANTRIC-Scene.xml", "VANTRIC-SheetMetal.xml", "功能区.xml")
_SHORTCUTS = (("Accelerators.xml", 120), ("Assembly-Accelerators.xml", 60), ("快捷键.xml", 40))

_FIRST_DAY = int(datetime(2024, 6, 3, 8, tzinfo=timezone.utc).timestamp())
_SPAN_SECONDS = 400 * 24 * 3600


@dataclass(frozen=True)
class SampleFile:
    path: str  # below drive C:; one that ends in "/" is an empty folder
    content: bytes
    modified: int


@dataclass(frozen=True)
class Series:
    """Numbered files of one kind in one folder; counts grow with the scale of the sample."""
    folder: str
    name: str
    count: int
    size_bytes: int


_ROAMING_SERIES = (
    Series("Template", "模板 {:03}.prtdot", 5, 260_000),
    Series("Template", "Template {:03}.asmdot", 5, 240_000),
)
_LOCAL_SERIES = (
    Series("ToolBox/GB/螺栓", "GB5782-M{:03}.prt", 30, 130_000),
    Series("ToolBox/ISO/Nuts", "ISO4032-M{:03}.prt", 25, 120_000),
    Series("ToolBox/User Parts", "gear {:03}.asm", 15, 140_000),
    Series("materials/Textures", "brushed {:03}.bmp", 6, 160_000),
    Series("FavoriteCatalog", "目录 {:03}.cat", 10, 80_000),
    Series("PropertyTemplates/NewTemplates", "Template {:03}.ptd", 6, 12_000),
)
_DRAFTING_SERIES = (
    Series("Support", "shapes {:03}.shx", 6, 90_000),
    Series("Support/字体", "字体 {:03}.shx", 4, 110_000),
)


class ProfileFiles:
    """Makes each file from its own path and the seed alone, whatever else is made."""

    def __init__(self, user, seed, scale, parts):
        self._user = user
        self._seed = seed
        self._scale = scale
        self._parts = parts

    def all(self):
        for path, content in self._every_file():
            yield SampleFile(of_user(path, self._user), content, self._modified(path))

    def _every_file(self):
        yield LOCAL + "Temp/", b""
        yield from self._installation()
        yield from self._version("27.0", self._scale / 10)
        yield from self._version("28.0", self._scale)
        yield from self._bystanders("28.0")

    def _version(self, version, share):
        folder = product.product_folder(version) + "/"
        yield from self._shortcuts(LOCAL + folder + "Customization/", version)
        for language in product.LANGUAGES:
            roaming = ROAMING + folder + language + "/"
            yield from self._interface(roaming + "Customization/", version, language)
            yield from self._series(roaming, _ROAMING_SERIES, share)
            local = LOCAL + folder + language + "/"
            yield from self._series(local, _LOCAL_SERIES, share)
            yield from self._libraries(local, share)
        yield from self._odd_names(LOCAL + folder)
        for root in (LOCAL, ROAMING):
            yield from self._drafting(root + product.drafting_folder(version) + "/", share)

    def _interface(self, folder, version, language):
        for name in _RIBBONS:
            rng = self._random(folder + name)
            yield folder + name, ribbon_file(rng, version, language, self._user)
        rng = self._random(folder + "菜单.xml")
        yield folder + "菜单.xml", menu_file(rng, version, language)
        yield folder + "user.config", b"<configuration><window left=\"10\"/></configuration>\r\n"

    def _shortcuts(self, folder, version):
        for name, count in _SHORTCUTS:
            yield folder + name, shortcut_file(self._random(folder + name), version, count)

    def _libraries(self, folder, share):
        for index in range(_share(6, share)):
            name = f"钢 {index:03}"
            rng = self._random(folder + name)
            yield folder + f"materials/{name}.mat", material_file(rng, name)
        for path, rows, encoding in (
                ("3DBOM/bom.csv", 200, "utf-16"), ("3DBOM/列宽.txt", 40, "gbk"),
                ("SheetMetal/K-Factor.txt", 300, "gbk"), ("SheetMetal/折弯表.txt", 500, "utf-8"),
                ("CosmeticThread/Metric.txt", 250, "utf-8"),
                ("CosmeticThread/管螺纹.txt", 90, "gbk")):
            title = path.rpartition("/")[2]
            yield folder + path, table_file(self._random(folder + path), title, rows, encoding)

    def _drafting(self, folder, share):
        yield from self._series(folder, _DRAFTING_SERIES, share)
        for name, rows in (("vantric.UIK", 120), ("vantric.ACC", 80), ("线型.lin", 60)):
            yield folder + name, table_file(self._random(folder + name), name, rows)
        yield folder + "tools.config", b"not for other machines\r\n"

    def _odd_names(self, folder):
        """Names and sizes that a careless writer of archives would lose."""
        content = self._parts.make(self._random(folder + "odd"), 5_000, "MAT")
        yield folder + "en-us/materials/光泽 😀 brushed.mat", content
        yield folder + "en-us/ToolBox/empty.prt", b""
        yield folder + "en-us/ToolBox/no extension", content[:1]
        yield folder + "zh-cn/ToolBox/Empty Folder/", b""
        yield folder + "zh-cn/ToolBox/100% & 'odd' ~ {0} [x]; name.prt", content[:300]

    def _bystanders(self, version):
        """Files of the product that belong to no category."""
        folder = product.product_folder(version) + "/"
        for path in (LOCAL + folder + "Cache/thumbnails.db", LOCAL + folder + "session.log",
                     LOCAL + folder + "en-us/PropertyTemplates/old.ptd",
                     LOCAL + folder + "Common/ToolBox/shared.prt",
                     ROAMING + folder + "en-us/recent.txt"):
            yield path, self._parts.make(self._random(path), 2_000, "MISC")

    def _installation(self):
        default = product.PROGRAM_FOLDER + "/VANTRIC 2026/AppData/Customization/"
        yield from self._shortcuts(default, product.RUNNING_VERSION)
        yield product.STARTUP_FOLDER + "/release.txt", b"VANTRIC 2026 (28.0)\r\n"
        shared = product.PROGRAM_FOLDER + "/AppData/"
        for language in product.LANGUAGES:
            yield from self._interface(shared + language + "/Customization/",
                                       product.RUNNING_VERSION, language)
        yield shared + "Common/readme.txt", b"Files for every language.\r\n"
        yield shared + "languages.txt", b"en-us\r\nzh-cn\r\n"

    def _series(self, root, series, share):
        for row in series:
            for index in range(_share(row.count, share)):
                path = f"{root}{row.folder}/{row.name.format(index)}"
                rng = self._random(path)
                size = int(row.size_bytes * rng.uniform(0.4, 1.6))
                yield path, self._parts.make(rng, size, row.folder[:4].upper())

    def _random(self, path):
        return random.Random(f"{self._seed}/{path}")

    def _modified(self, path):
        return _FIRST_DAY + zlib.crc32(f"{self._seed}/{path}".encode()) % _SPAN_SECONDS


def of_user(path, user):
    return path.replace("{user}", user)


def _share(count, share):
    return max(1, round(count * share))
