"""Formats, fields, modes: the library's flags as types that cannot be taken for each other."""

from enum import Enum, IntEnum
from typing import Final, NamedTuple

WEIGHT_FULL: Final = 4096
"""A full weight in a PWRW bitmap, and a full level."""

MASK_FULL: Final = 128
"""A full mask in an A8 bitmap."""


class Format(IntEnum):
    """Pixel formats. Bytes are named in memory order.

    >>> zepbmp.Format.RGBQ.bytes_per_pixel
    4
    """

    YUY2 = 0
    """2 bytes: packed YUV 4:2:2, a pair of pixels is Y0 U Y1 V."""
    RGBQ = 1
    """4 bytes: blue, green, red and a fourth byte."""
    PWRW = 2
    """2 bytes: an unsigned 16-bit weight, 4096 = full."""
    QUAD3 = 3
    """4 bytes of no fixed meaning, for instance a depth buffer."""
    QUAD4 = 4
    """4 bytes of no fixed meaning."""
    QUAD5 = 5
    """4 bytes of no fixed meaning."""
    RGB8 = 6
    """1 byte: a palette index."""
    A8 = 7
    """1 byte: a mask, 128 = full, or the strength of a tint, 255 = full."""

    @property
    def bytes_per_pixel(self) -> int:
        """Bytes of a pixel: 1, 2 or 4."""
        return (2, 4, 2, 4, 4, 4, 1, 1)[self]


QUADS: Final = (Format.QUAD3, Format.QUAD4, Format.QUAD5)


class Field(IntEnum):
    """The lines that an operation touches.

    >>> bitmap = zepbmp.Bitmap(1, 5, zepbmp.Format.A8)
    >>> bitmap.array[:] = 9
    >>> zepbmp.clear(bitmap, zepbmp.Field.ODD)
    >>> bitmap.array[:, 0].tolist()
    [9, 0, 9, 0, 9]
    """

    FRAME = 0
    """Every line."""
    SKIP_FIRST = 1
    """Every line but the first."""
    EVEN = 2
    """Lines 0, 2, 4 and so on."""
    ODD = 3
    """Lines 1, 3, 5 and so on."""


class DrawMode(IntEnum):
    """What becomes of a pixel and a colour.

    >>> bitmap = zepbmp.Bitmap(4, 1, zepbmp.Format.RGB8)
    >>> zepbmp.draw_rect(bitmap, 0, 0, 4, 1, 0x0F, zepbmp.DrawMode.OR)
    >>> zepbmp.draw_rect(bitmap, 0, 0, 2, 1, 0x09, zepbmp.DrawMode.AND)
    >>> bitmap.array.tolist()
    [[9, 9, 15, 15]]
    """

    SET = 0x00
    OR = 0x10
    AND = 0x20
    XOR = 0x30


class ShapeMode(IntEnum):
    """What becomes of a weight that is there and the weight of a shape.

    >>> weights = zepbmp.Bitmap(1, 1, zepbmp.Format.PWRW)
    >>> zepbmp.alpha_rect(weights, 0, 0, 0.5, 1, mode=zepbmp.ShapeMode.ADD)
    >>> zepbmp.alpha_rect(weights, 0, 0, 0.25, 1, mode=zepbmp.ShapeMode.ADD)
    >>> weights.array.tolist()
    [[3072]]
    """

    ADD = 0x00
    """Weights add up, modulo 65536."""
    MAX = 0x10
    """The larger weight is kept."""


class Ramp(Enum):
    """The course of a soft edge.

    >>> weights = zepbmp.Bitmap(1, 1, zepbmp.Format.PWRW)
    >>> zepbmp.alpha_circle(weights, 2.5, 0.5, radius=4, feather=4, ramp=zepbmp.Ramp.COSINE)
    >>> weights.array.tolist()
    [[2048]]
    """

    LINEAR = "linear"
    COSINE = "cosine"


class Vertex(NamedTuple):
    """A polygon's corner: where it lies on the source and on the destination.

    >>> zepbmp.Vertex(u=0, v=0, w=1, x=10, y=20)
    Vertex(u=0, v=0, w=1, x=10, y=20)
    """

    u: float
    """Source column, pixels."""
    v: float
    """Source line, lines of the frame, also where one field of it is sampled."""
    w: float
    """Perspective weight, above 0: 1 / distance in any unit. The same at every corner: affine."""
    x: float
    """Destination column, pixels."""
    y: float
    """Destination line, lines of the frame."""
