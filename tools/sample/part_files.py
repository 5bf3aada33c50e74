"""Binary files of the product: a header, geometry, attribute text and a preview picture.

Geometry and attributes pack well and pictures hardly do, so that a file as a whole deflates to
somewhat under half its size, as drawing files of this kind do."""

import random
import struct
from array import array

_POOL_BYTES = 1 << 20
_ATTRIBUTES = ("Material=Q235", "Material=45#", "Finish=Ra3.2", "Weight=", "Author=", "图号=",
               "Standard=GB/T 5782", "Standard=ISO 4014", "Note=去毛刺", "Tolerance=", "Status=")


class PartFileMaker:
    """Cuts files out of pools that are made once, so that large samples stay quick to make."""

    def __init__(self, seed):
        rng = random.Random(f"{seed}/pools")
        self._geometry = _geometry_pool(rng)
        self._attributes = _attribute_pool(rng)

    def make(self, rng, size_bytes, tag):
        body = max(size_bytes - 64, 0)
        pieces = [struct.pack("<8sIQ44s", tag.encode(), 3, body, rng.randbytes(8))]
        while body > 0:
            length = min(body, 48 << 10)
            pieces += self._section(rng, length)
            body -= length
        return b"".join(pieces)

    def _section(self, rng, length):
        picture = length // 8
        attributes = length // 4
        yield _slice(rng, self._geometry, length - picture - attributes)
        yield _slice(rng, self._attributes, attributes)
        yield rng.randbytes(picture)


def _slice(rng, pool, length):
    start = rng.randrange(len(pool) - length)
    return pool[start:start + length]


def _geometry_pool(rng):
    """Coordinates in steps of a hundredth, within a metre."""
    return array("i", rng.choices(range(-500, 500), k=_POOL_BYTES // 4)).tobytes()


def _attribute_pool(rng):
    lines = [f"{rng.choice(_ATTRIBUTES)}{rng.randrange(10_000)}\r\n".encode()
             for _ in range(_POOL_BYTES // 16)]
    return b"".join(lines)
