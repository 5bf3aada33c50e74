"""What the product keeps in the registry: installed versions, factory defaults, live settings."""

import random

from sample import product
from sample.registry_text import (Key, binary, dword, expand_text, multi_text, qword, text,
                                  typed_none)

CURRENT_USER = "HKEY_CURRENT_USER"
LOCAL_MACHINE = "HKEY_LOCAL_MACHINE"

_COLOURS = ("Background", "Selection", "Highlight", "Sketch", "Dimension", "Edge", "Face", "Axis")
_FONTS = ("Arial", "Tahoma", "宋体", "仿宋", "Microsoft YaHei")


def machine_keys():
    """Installed versions and the factory defaults of the running one."""
    root = rf"{LOCAL_MACHINE}\SOFTWARE\{product.COMPANY}"
    keys = [_installed_version(root, version) for version in product.MACHINE_VERSIONS]
    defaults = rf"{root}\New User Settings\{product.PRODUCT} {product.RUNNING_VERSION}"
    keys.append(Key(defaults, (("", text("factory")), ("FirstRun", dword(1)))))
    keys += _option_keys(defaults, random.Random("factory"), repeat=1)
    keys.append(Key(defaults + r"\Directories", (("Relative", text(r"Templates\Default")),)))
    return keys


def user_keys(user, seed):
    """The live keys of the versions that this user has run."""
    keys = []
    for version, repeat in (("26.0", 1), ("27.0", 2), ("28.0", 8)):
        live = rf"{CURRENT_USER}\SOFTWARE\{product.COMPANY}\{product.PRODUCT} {version}"
        rng = random.Random(f"{seed}/registry/{version}")
        keys.append(_live_root(live, version, user))
        keys += _option_keys(live, rng, repeat)
        keys += _directory_keys(live, user)
        keys += _odd_keys(live, rng)
        keys += _session_keys(live, rng, user, repeat)
    return keys


def _installed_version(root, version):
    year = product.year_of(version)
    folder = product.windows_path(f"{product.PROGRAM_FOLDER}/{product.PRODUCT} {year}")
    return Key(rf"{root}\{product.PRODUCT}\{version}", (
        ("InstallPath", text(folder + "\\")),
        ("Language", text("zh-cn")),
        ("ReleaseYear", dword(int(year)))))


def _live_root(live, version, user):
    return Key(live, (
        ("", text(f"{product.PRODUCT} {product.year_of(version)}")),
        ("Last User", text(user)),
        ("ProfilePath", expand_text(r"%USERPROFILE%\Documents")),
        ("RunCount", dword(1200 + int(float(version))))))


def _option_keys(root, rng, repeat):
    """The keys of the options dialog, all but the one that holds folders."""
    return [Key(root + "\\" + name, tuple(_settings(name, rng, repeat)))
            for name in product.OPTION_SUBKEYS if name != "Directories"]


def _settings(name, rng, repeat):
    word = name.replace(" ", "")
    for index in range(repeat):
        yield f"{word}Enabled{index:02}", dword(rng.randrange(2))
        yield f"{word}Limit{index:02}", dword(rng.randrange(1 << 32))
        yield f"{word}Precision{index:02}", text(f"{rng.uniform(0, 10):.4f}")
    yield "Font", text(rng.choice(_FONTS))
    yield "Layout", binary(rng.randbytes(24 * repeat))


def _directory_keys(live, user):
    """Search folders: this user's, another user's, and some that are not there."""
    other = rf"C:\Users\{product.OTHER_USER}"
    return [
        Key(live + r"\Directories", (
            ("Autosave", expand_text(r"%USERPROFILE%\AppData\Local\Temp\autosave")),
            ("Drawings", text(rf"C:\Users\{user}\AppData\Local\{product.COMPANY}")),
            ("Library", text(r"D:\NoSuchFolder\Library")),
            ("Network", text(r"\\server\share\templates")),
            ("Relative", text(r"Templates\Default")),
            ("Search", multi_text([rf"{other}\Documents", rf"C:\Users\{user}\Parts", "零件"])),
            ("Slashes", text(f"C:/Users/{product.OTHER_USER}/Pictures")),
            ("Unquoted", text("%USERPROFILE%\\Pictures")))),
        Key(live + r"\Directories\Recent", (
            (rf"{other}\Documents\gear.prt", text("1")),
            ("File1", text(rf"{other}\Documents\gear.prt")),
            ("File2", text(rf"{other}\文档\齿轮 箱.prt"))))]


def _odd_keys(live, rng):
    """Values of every type and names that a careless reader would stumble over."""
    return [
        Key(live + r"\Color\Schemes\Dark", tuple(
            (name, dword(rng.randrange(1 << 24))) for name in _COLOURS)),
        Key(live + r"\Color\Schemes\浅色", tuple(
            (name, dword(rng.randrange(1 << 24))) for name in _COLOURS)),
        Key(live + r"\General\Odd Values", (
            ("", text(r"C:\Program Files\ORMA\VANTRIC 2026\Bin\vantric.exe" + ' "%1"')),
            ("a=b", text("[not a key]")),
            ("Blob", binary(rng.randbytes(600))),
            ("Empty", text("")),
            ("Empty Blob", binary(b"")),
            ("Emoji", text("光照 😀")),
            ("Nothing", typed_none()),
            ("Nothing With Data", typed_none(b"\x01\x02\x03")),
            ("Quoted \"name\"", text(r'say "hello\" to C:\temp\\')),
            ("Ticks", qword(133_500_000_000_000_000)),
            ("; comment", text("; not a comment"))))]


def _session_keys(live, rng, user, repeat):
    """Settings outside the options dialog, which travel with the whole key only."""
    windows = [Key(rf"{live}\Window Placement\View{index:02}", (
        ("Placement", binary(rng.randbytes(44))),
        ("Title", text(f"零件{index}.prt - {product.PRODUCT}")))) for index in range(4 * repeat)]
    return windows + [Key(live + r"\User Profile", (
        ("Name", text(user)),
        ("Home", text(rf"C:\Users\{user}"))))]
