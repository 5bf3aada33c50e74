"""Packages as an attacker or a broken disk would make them."""

import struct
import zipfile

CONFIG = ("[Selected]\r\nOptions=1\r\n[Base]\r\nCOMPANY=Vantric\r\nINTERNAL VERSION=28.0\r\n"
          "RELEASE VERSION=2026\r\nPRODUCT=VANTRIC\r\n").encode()

# Names that would leave the folder they are extracted to, or that Windows would not take for a
# file of that folder.
ESCAPING_NAMES = (
    "/absolute.txt", "\\rooted.txt", "\\\\server\\share\\network.txt", "C:\\drive.txt",
    "C:relative.txt", "..\\up.txt", "../up-with-slash.txt", "Local\\..\\..\\up-inside.txt",
    "Local/../../up-inside-with-slash.txt", "stream.txt:hidden", "CON", "Local\\nul.txt",
    "com1.reg")


HEADER = "Windows Registry Editor Version 5.00\r\n\r\n"
RUN_KEY = r"HKEY_CURRENT_USER\SOFTWARE\Microsoft\Windows\CurrentVersion\Run"

# Keys that a settings package has no business with, each in one more way to write a registry file.
OUTSIDE_FILES = (
    (HEADER + f'[{RUN_KEY}]\r\n"a"="calc.exe"\r\n').encode(),
    b"\xff\xfe" + (HEADER + f"[{RUN_KEY}]\r\n").encode("utf-16-le"),
    b"\xef\xbb\xbf" + (HEADER + f"[{RUN_KEY}]\r\n").encode(),
    f"REGEDIT4\n\n[-{RUN_KEY}]\n".encode(),
    b"REGEDIT4\n\n[HKLM\\SOFTWARE\\Vantric]\n",
    (HEADER + "[HKEY_CURRENT_USER\\SOFTWARE\\Vantric]\r\n\"a\"=hex:01,\\\r\n"
     f"[{RUN_KEY}]\r\n").encode(),
    (HEADER + "[HKEY_CURRENT_USER\\SOFTWARE\\VantricX]\r\n").encode(),
    (HEADER + f"  [{RUN_KEY}]\r\n").encode(),
    (HEADER + "[HKEY_CURRENT_USER\\\\SOFTWARE\\Vantric]\r\n").encode(),
)


def registry_file(key, *values):
    text = HEADER + "".join(line + "\r\n" for line in (f"[{key}]", *values))
    return b"\xff\xfe" + text.encode("utf-16-le")


def make_bomb(path, gigabytes):
    """A package of a few bytes that says of itself to hold gigabytes, in one item."""
    make_package(path, [("config.ini", CONFIG), ("Local\\zeros.bin", b"0")])
    declare_size(path, (gigabytes << 30) - 16)


def make_package(path, entries):
    """Entries are (name, content) pairs, stored in order with the names as they stand."""
    with zipfile.ZipFile(path, "w", zipfile.ZIP_DEFLATED) as archive:
        for name, content in entries:
            entry = zipfile.ZipInfo("placeholder")
            entry.compress_type = zipfile.ZIP_DEFLATED
            entry.filename = name
            archive.writestr(entry, content)


def declare_size(path, size):
    """Has the last entry of the directory claim another unpacked size."""
    data = bytearray(path.read_bytes())
    struct.pack_into("<I", data, data.rindex(b"PK\1\2") + 24, size)
    path.write_bytes(data)


def mark_encrypted(path, name):
    """Sets the encryption bit of an entry in its local and its central header."""
    data = bytearray(path.read_bytes())
    with zipfile.ZipFile(path) as archive:
        local = archive.getinfo(name).header_offset
    _set_flag(data, local + 6)
    _set_flag(data, data.index(name.encode(), local + 30 + len(name)) - 46 + 8)
    path.write_bytes(data)


def spoil_content(path, name):
    """Changes a byte in the middle of an entry's data."""
    data = bytearray(path.read_bytes())
    with zipfile.ZipFile(path) as archive:
        entry = archive.getinfo(name)
    start = entry.header_offset + 30 + len(name.encode())
    data[start + entry.compress_size // 2] ^= 0x55
    path.write_bytes(data)


def _set_flag(data, offset):
    flags, = struct.unpack_from("<H", data, offset)
    struct.pack_into("<H", data, offset, flags | 1)
