"""The frames that the gallery's pictures start from, 640 x 360: a landscape at dusk and a boat at sea."""

import sys
from functools import lru_cache
from pathlib import Path

import numpy as np

import zepbmp
from zepbmp import Bitmap, Format

sys.path.insert(0, str(Path(__file__).resolve().parent.parent / "images"))
import draw_clips  # noqa: E402

WIDTH, HEIGHT = draw_clips.WIDTH, draw_clips.HEIGHT


@lru_cache(maxsize=None)
def _drawn(name, second):
    return getattr(draw_clips, name)(second)


def _frame(name, format, second):
    picture = _drawn(name, second)
    pixels = np.zeros((HEIGHT, WIDTH, format.bytes_per_pixel), np.uint8)
    if format is Format.RGBQ:
        pixels[..., :3] = np.rint(picture.clip(0, 255))[..., ::-1]
    else:
        planes = [np.frombuffer(plane, np.uint8).reshape(HEIGHT, WIDTH) for plane in draw_clips.planes(picture)]
        pixels[..., 0] = planes[0]
        pixels[:, 0::2, 1], pixels[:, 1::2, 1] = planes[1][:, 0::2], planes[2][:, 0::2]
    return Bitmap.from_array(pixels, format)


def dusk(format=Format.RGBQ, second=1.0):
    """A landscape at dusk."""
    return _frame("dusk", format, second)


def sea(format=Format.RGBQ, second=1.0):
    """A boat that sails to the right."""
    return _frame("sea", format, second)


def new(format=Format.RGBQ, width=WIDTH, height=HEIGHT):
    """An empty bitmap."""
    return Bitmap(width, height, format)


def detail(bitmap, left, top, width, height):
    """A part of a bitmap, as a bitmap of its own."""
    part = Bitmap(width, height, bitmap.format)
    zepbmp.blit(part, 0, 0, width, height, bitmap, left, top)
    return part


def corners(bitmap, *positions, w=(1, 1, 1, 1)):
    """A whole bitmap on four positions x y: top left, top right, bottom right, bottom left."""
    across, down = bitmap.width, bitmap.height
    source = [(0, 0), (across, 0), (across, down), (0, down)]
    return [(u, v, q, x, y) for (u, v), q, (x, y) in zip(source, w, positions)]


def star(cx, cy, radius):
    """A five-pointed star drawn in one stroke: its heart is enclosed twice."""
    angles = np.arange(5) * 4 * np.pi / 5 - np.pi / 2
    return [(round(cx + radius * np.cos(a), 2), round(cy + radius * np.sin(a), 2)) for a in angles]


def boat(second=1.0):
    """The boat alone, small enough to see its pixels: 68 x 78."""
    small = new(Format.RGBQ, 68, 78)
    zepbmp.map_rect(small, (0, 0, 68, 78), sea(second=second), (256, 157, 392, 313), new(Format.PWRW, 68, 78))
    return small


def woven(interlace=zepbmp.Field.FRAME):
    """An interlaced frame of the boat: the odd lines are a second later than the even ones."""
    frame = boat(1)
    zepbmp.copy(frame, boat(2), zepbmp.Field.ODD)
    return Bitmap.from_array(frame.array, Format.RGBQ, interlace)


def burst(cx, cy, outer, inner, points):
    """A star with many points, drawn around its outline."""
    angles = np.arange(2 * points) * np.pi / points - np.pi / 2
    radii = [outer, inner] * points
    return [(round(cx + r * np.cos(a), 2), round(cy + r * np.sin(a), 2)) for r, a in zip(radii, angles)]


def zone_plate(width, height):
    """Rings that become finer outward, up to one pixel: what every poor resampler gets wrong."""
    x, y = np.meshgrid(np.arange(width) - width / 2, np.arange(height) - height / 2)
    rings = np.rint(127.5 + 127.5 * np.cos(np.pi * (x * x + y * y) / width)).astype(np.uint8)
    return Bitmap.from_array(np.repeat(rings[..., None], 4, axis=2), Format.RGBQ)


def checkers(size, cell, light=0xF2E6CC, dark=0x2B3A55):
    """A square checkerboard."""
    board = new(Format.RGBQ, size, size)
    for y in range(0, size, cell):
        for x in range(0, size, cell):
            zepbmp.draw_rect(board, x, y, x + cell, y + cell, (light, dark)[(x // cell + y // cell) % 2])
    return board


def project(x, y, z, across=-0.6, down=0.42, distance=5.2, scale=500):
    """Weight and position of a point of space, turned and looked at from above."""
    x, z = x * np.cos(across) - z * np.sin(across), z * np.cos(across) + x * np.sin(across)
    y, z = y * np.cos(down) - z * np.sin(down), z * np.cos(down) + y * np.sin(down)
    w = 1 / (distance + z)
    return round(w, 4), round(320 + scale * x * w, 2), round(180 + scale * y * w, 2)
