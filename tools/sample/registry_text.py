"""Registry keys and values, and the text file that holds them."""

from dataclasses import dataclass

HEADER = "Windows Registry Editor Version 5.00"
COLUMNS = 80

# The number of a registry type, as hexadecimal data names it.
NONE, EXPAND_SZ, BINARY, MULTI_SZ, QWORD = 0, 2, 3, 7, 11


@dataclass(frozen=True)
class Key:
    path: str
    values: tuple  # (name, data text) pairs; the default value's name is empty


def text(value):
    return '"' + _escaped(value) + '"'


def dword(value):
    return f"dword:{value & 0xFFFFFFFF:08x}"


def qword(value):
    return _hexadecimal(QWORD, value.to_bytes(8, "little"))


def binary(data):
    return _hexadecimal(BINARY, data)


def typed_none(data=b""):
    return _hexadecimal(NONE, data)


def expand_text(value):
    return _hexadecimal(EXPAND_SZ, _utf16(value) + b"\0\0")


def multi_text(values):
    return _hexadecimal(MULTI_SZ, b"".join(_utf16(v) + b"\0\0" for v in values) + b"\0\0")


def render(keys):
    """The bytes of a registry file. Keys and values are written sorted by name, since some
    registries keep the order in which they were filled and others sort."""
    lines = [HEADER, ""]
    for key in sorted(keys, key=lambda key: _sort_key(key.path)):
        lines.append(f"[{key.path}]")
        for name, data in sorted(key.values, key=lambda value: value[0].lower()):
            lines.append(_wrapped(_value_name(name) + "=", data))
        lines.append("")
    return b"\xff\xfe" + _utf16("".join(line + "\r\n" for line in lines))


def _sort_key(path):
    return [part.lower() for part in path.split("\\")]


def _value_name(name):
    return text(name) if name else "@"


def _escaped(value):
    return value.replace("\\", "\\\\").replace('"', '\\"')


def _utf16(value):
    return value.encode("utf-16-le")


def _hexadecimal(kind, data):
    prefix = "hex:" if kind == BINARY else f"hex({kind:x}):"
    return prefix + data.hex(",")


def _wrapped(start, data):
    """Cuts long hexadecimal data between bytes; other data is never cut."""
    if not data.startswith("hex"):
        return start + data
    first, *rest = data.split(",")
    rows = [start + first]
    for piece in rest:
        if len(rows[-1]) + len(piece) + 3 > COLUMNS:
            rows[-1] += ",\\"
            rows.append("  " + piece)
        else:
            rows[-1] += "," + piece
    return "\r\n".join(rows)
