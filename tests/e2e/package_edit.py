"""Copies of packages with other items, for tests of what reads packages."""

import zipfile

REGISTRY_HEADER = "Windows Registry Editor Version 5.00\r\n\r\n"
GENERAL = r"Options\General.reg"
GENERAL_KEY = r"[HKEY_CURRENT_USER\SOFTWARE\Vantric\VANTRIC 28.0\General]"


def copy_package(source, target, changes):
    """A name of `changes` gets these bytes, or goes away with None; new names come last."""
    left = dict(changes)
    with zipfile.ZipFile(source) as old, zipfile.ZipFile(target, "w") as new:
        for entry in old.infolist():
            content = left.pop(entry.filename, old.read(entry))
            if content is not None:
                new.writestr(entry.filename, content)
        for name, content in left.items():
            new.writestr(name, content)
    return target


def items(package):
    with zipfile.ZipFile(package) as archive:
        return {entry.filename: archive.read(entry) for entry in archive.infolist()}


def registry_bytes(*lines):
    text = REGISTRY_HEADER + "".join(line + "\r\n" for line in lines)
    return b"\xff\xfe" + text.encode("utf-16-le")


def with_lines(content, key, *lines):
    """A registry file with further lines directly below a key."""
    text = content[2:].decode("utf-16-le")
    assert key + "\r\n" in text, key
    text = text.replace(key + "\r\n", key + "\r\n" + "".join(f"{line}\r\n" for line in lines), 1)
    return b"\xff\xfe" + text.encode("utf-16-le")
