"""Ribbon element records and the hexadecimal text in which customization files hold them."""

import struct
from dataclasses import dataclass, field

_WIDE_MARK = b"\xff\xfe\xff"


@dataclass
class RibbonElement:
    kind: int
    id: int
    text1: str = ""
    value2: int = 0
    text2: str = ""
    children: list = field(default_factory=list)
    value3: int = 0
    text3: str = ""
    text4: str = ""


def element_text(element):
    return _record(element).hex()


def _record(element):
    """Little-endian fields in stream order; the children come last."""
    parts = [struct.pack("<iI", element.kind, element.id), _wide(element.text1),
             struct.pack("<I", element.value2), _wide(element.text2),
             struct.pack("<i", element.value3), _wide(element.text3), _wide(element.text4),
             struct.pack("<I", len(element.children))]
    return b"".join(parts + [_record(child) for child in element.children])


def _wide(value):
    data = value.encode("utf-16-le")
    return _WIDE_MARK + _length(len(data) // 2) + data


def _length(count):
    if count < 0xFF:
        return struct.pack("<B", count)
    if count < 0xFFFE:
        return struct.pack("<BH", 0xFF, count)
    return struct.pack("<BHI", 0xFF, 0xFFFF, count)
