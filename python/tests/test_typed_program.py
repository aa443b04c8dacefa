"""A program that mypy takes as it is: what the type hints allow is what the checks take."""

from fractions import Fraction

import numpy as np

import zepbmp
from zepbmp import Bitmap, Field, Format, Vertex


class Named(Bitmap):
    name = ""


def test_a_program_with_every_kind_of_argument() -> None:
    frame = Bitmap(8, np.int64(8), Format.RGBQ, Field.ODD, zero=True)
    source = Bitmap.from_array(np.full((8, 8, 4), 90, np.uint8), Format.RGBQ)
    frame.copy_from(source)
    frame.copy_from(memoryview(bytes(256)).cast("B", (8, 8, 4)))
    bytes_of_one: list[int] = Bitmap.from_array([source.array[0]], Format.RGBQ).array[0, 0].tolist()
    assert bytes_of_one == [90] * 4
    named: Named = Named.from_array(source, Format.RGBQ)
    assert named.name == ""

    weights = Bitmap(8, 8, Format.PWRW)
    zepbmp.alpha_circle(weights, 1, np.float32(2), 3.5, aspect=Fraction(3, 2))
    zepbmp.alpha_rect(weights, np.int16(0), 0, 1, 1, radius=(1, 2.5))
    zepbmp.compose_level(frame, frame, source, np.uint16(4096))

    corners = [(0, 0, 1, 0, 0), (8, 0, 1, 3, 0), (8, 8, 1, 3, 3)]
    zepbmp.map_polygon(frame, source, corners)
    zepbmp.map_polygon(frame, source, np.array(corners))
    zepbmp.map_polygon(frame, source, [Vertex(*corner) for corner in corners], antialias=True)
    zepbmp.fill_polygon(frame, 0x80808080, [(0, 0), (8, 0.5), (8, 8)], level=7)
    zepbmp.map_rect(frame, (0, 0, 4, 4), source, np.array([0, 0, 1, 1]), weights)
    zepbmp.map_rect(frame, [0, 0, 4, 4.5], source, (0, 0, Fraction(1, 2), 1), weights)
    number: int = zepbmp.translate_color(0x10)
    assert number == 0x100000
