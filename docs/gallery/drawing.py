"""Drawing, colours, palettes."""

import numpy as np

import zepbmp
from frames import HEIGHT, dusk, new
from gallery import picture
from zepbmp import DrawMode, Format


@picture("bmp_draw_rect BMP_FMT_RGBQ", alt="A composition of red, blue, yellow and white rectangles between black bars")
def draw_rect():
    """Fill rectangles.

    Black bars are what is left between them.
    """
    frame = new()
    for left, top, right, bottom, color in (
        (0, 0, 130, 90, 0xF4F1E8),
        (142, 0, 640, 230, 0xC8321E),
        (0, 102, 130, 230, 0xF4F1E8),
        (0, 242, 130, 400, 0x1F4E9C),
        (142, 242, 520, 360, 0xF4F1E8),
        (532, 242, 640, 296, 0xF4F1E8),
        (532, 308, 640, 360, 0xF2C51D),
    ):
        zepbmp.draw_rect(frame, left, top, right, bottom, color)
    return frame


@picture(
    "bmp_draw_rect bmp_set_palette BMP_FMT_RGB8",
    alt="Three overlapping squares of red, green and blue light; where they overlap their colours mix to white",
)
def draw_rect_bits():
    """Rectangles of bits.

    In an RGB8 bitmap bits are set with OR and taken away with AND: three bits are three lamps, and the palette says
    what each mixture looks like. The hole is an AND that leaves the lowest bit.
    """
    frame = new(Format.RGB8)
    for index in range(8):
        lamps = sum(0xFF << 8 * bit for bit in range(3) if index >> bit & 1)
        zepbmp.set_palette(frame, index, lamps)
    zepbmp.draw_rect(frame, 130, 40, 370, 240, 4, DrawMode.OR)
    zepbmp.draw_rect(frame, 270, 40, 510, 240, 2, DrawMode.OR)
    zepbmp.draw_rect(frame, 200, 140, 440, 330, 1, DrawMode.OR)
    zepbmp.draw_rect(frame, 300, 165, 340, 205, 1, DrawMode.AND)
    return frame


@picture("bmp_draw_line", zoom=10, alt="Twenty-four lines from a ring outward, each a staircase of pixels")
def draw_line():
    """Lines.

    In twenty-four directions. The last pixel of a line is not drawn, so lines that go on from each other touch no pixel
    twice.
    """
    bitmap = new(Format.RGB8, 64, 36)
    for turn in range(24):
        x, y = np.cos(turn * np.pi / 12), np.sin(turn * np.pi / 12)
        start, end = (32 + round(6 * x), 18 + round(6 * y)), (32 + round(17.4 * x), 18 + round(17.4 * y))
        zepbmp.draw_line(bitmap, *start, *end, 255 - 5 * turn)
    return bitmap


@picture("bmp_draw_line", zoom=10, alt="A light bar crossed by a fan of lines, four times, combined in four ways")
def line_modes():
    """A line's four modes.

    Set, OR, AND and XOR of 0x66 with a bar of 0xCC. Where XOR draws twice, the picture comes back.
    """
    tiles = []
    for mode in (DrawMode.SET, DrawMode.OR, DrawMode.AND, DrawMode.XOR):
        tile = new(Format.RGB8, 15, 28)
        zepbmp.draw_rect(tile, 3, 8, 12, 20, 0xCC, DrawMode.OR)
        for x in (1, 4, 7, 10, 13):
            zepbmp.draw_line(tile, x, 1, 14 - x, 27, 0x66, mode)
        tiles.append(tile)
    return tuple(tiles)


@picture(
    "bmp_set_palette BMP_FMT_RGB8",
    alt="The same dusk three times: in greys, in the colours of fire, and in two poster colours",
)
def palette():
    """One picture, three palettes.

    The bytes are the same in all three. A bitmap's palette starts as a ramp of greys.
    """
    luma = dusk(Format.YUY2).array[::2, ::2, 0] - 16
    greys, fire, poster = (zepbmp.Bitmap.from_array(luma[:, 62:262], Format.RGB8) for _ in range(3))
    for index in range(256):
        red, green, blue = (min(255, max(0, 3 * index - start)) for start in (0, 180, 420))
        zepbmp.set_palette(fire, index, red << 16 | green << 8 | blue)
        zepbmp.set_palette(poster, index, 0x17324D if index < 70 else 0xE8553D if index < 140 else 0xF7E3B0)
    return greys, fire, poster


@picture("bmp_translate_color", alt="Eight colours in two rows; in the second row red and blue have changed places")
def translate_color():
    """Colours of Windows.

    The upper row draws colour references 0x00BBGGRR as they are: red and blue are exchanged. The lower row draws them
    translated.
    """
    frame = new()
    references = (0x3D55E8, 0x1DC5F2, 0x4DA34D, 0x9C4E1F, 0xB0E3F7, 0x5A2D22, 0xD68F3D, 0x6B2A5D)
    for k, reference in enumerate(references):
        zepbmp.draw_rect(frame, 80 * k, 0, 80 * k + 76, 176, reference)
        right_way_round = zepbmp.translate_color(reference)
        zepbmp.draw_rect(frame, 80 * k, 184, 80 * k + 76, HEIGHT, right_way_round)
    return frame
