"""Reads registry files the way these tests need it: keys, values and their order."""

import re

_VALUE = re.compile(r'(@|"(?:[^"\\]|\\.)*")=(.*)', re.DOTALL)


def parse(data):
    """A list of (key path, [(value name, data), ...]) in file order. Hexadecimal data comes back
    without its line breaks; the default value's name is empty."""
    text = _decoded(data)
    header, *lines = text.replace(",\\\r\n  ", ",").split("\r\n")
    assert header == "Windows Registry Editor Version 5.00", header
    keys = []
    for line in lines:
        if line.startswith("["):
            keys.append((line[1:line.rindex("]")], []))
        elif line:
            keys[-1][1].append(_value(line))
    return keys


def _decoded(data):
    assert data[:2] == b"\xff\xfe", "a registry file begins with FF FE"
    return data[2:].decode("utf-16-le")


def _value(line):
    match = _VALUE.fullmatch(line)
    assert match, f"not a value line: {line!r}"
    name, data = match.groups()
    return ("" if name == "@" else re.sub(r"\\(.)", r"\1", name[1:-1])), data
