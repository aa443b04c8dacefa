"""Bitmaps."""

import ctypes

import numpy as np

import zepbmp
from frames import new
from gallery import picture
from zepbmp import Bitmap, Format


@picture(
    "bmp_create bmp_destroy BMP_CREATE_ZERO BMP_FMT_A8 BMP_FMT_RGBQ Bitmap",
    zoom=13,
    alt="Two bitmaps as bytes: lines of 16 of which ten are orange, lines of 32 of which twenty are; the rest is dark",
)
def pitch():
    """A line is padded to 16 bytes.

    Ten pixels of one byte, five pixels of four; each square is a byte in memory. What is orange was written as pixels,
    the rest is padding, which was cleared with them.
    """
    shown = []
    for width, format in ((10, Format.A8), (5, Format.RGBQ)):
        bitmap = Bitmap(width, 9, format)
        bitmap.array[:] = 200
        stored = (ctypes.c_uint8 * (9 * bitmap.pitch)).from_address(bitmap.pointer())
        memory = np.frombuffer(stored, np.uint8).reshape(9, bitmap.pitch)
        shown.append(Bitmap.from_array(memory, Format.RGB8))
        zepbmp.set_palette(shown[-1], 200, 0xF28C28)
    return tuple(shown)


@picture(
    "bmp_pointer",
    zoom=20,
    alt="A grid of grey pixels of which two are coloured, orange at column 3, line 1, blue at column 26, line 6",
)
def pointer():
    """The address of a pixel.

    Two pixels are written through their addresses.
    """
    bitmap = new(Format.RGBQ, 32, 9)
    bitmap.array[:] = 200
    for x, y, color in ((3, 1, 0xF28C28), (26, 6, 0x2878F2)):
        ctypes.c_uint32.from_address(bitmap.pointer(x, y)).value = color
    return bitmap
