"""What the pictures of the gallery have in common: they are registered, turned into colours, compared, written.

A picture is a function that returns a bitmap, or several to stand side by side. Its first line of text is the title,
the rest says what to look at.
"""

import ast
import ctypes
import hashlib
import inspect
from collections import namedtuple

import numpy as np

from zepbmp import Format, _library

Picture = namedtuple("Picture", "name title text alt calls zoom function module lines")
# module -> its pictures in their order
pictures = {}
GAP = 8
# From here on a line is drawn between two pixels.
GRID_ZOOM = 10


def picture(calls, alt, zoom=1):
    """Registers a picture.

    calls   the names of zepbmp.h that it shows
    alt     what is seen, for people who do not see it
    zoom    a pixel becomes so many pixels across and down
    """

    def register(function):
        title, _, text = inspect.getdoc(function).partition("\n\n")
        module = function.__module__
        lines = _lines_without_text(function)
        made = Picture(function.__name__, title.rstrip("."), text, alt, calls.split(), zoom, function, module, lines)
        pictures.setdefault(module, []).append(made)
        return function

    return register


def _lines_without_text(function):
    """Line numbers of a function in its file, without decorator and text: first and last of the head, then the body."""
    source, start = inspect.getsourcelines(function)
    tree = ast.parse("".join(source)).body[0]
    text = tree.body[0]
    return start + tree.lineno - 1, start + text.lineno - 2, start + text.end_lineno, start + tree.end_lineno - 1


def render(one):
    """The picture's pixels, uint8 (height, width, 4): red, green, blue, opacity."""
    shown = one.function()
    parts = [_zoomed(colours(part), one.zoom) for part in (shown if isinstance(shown, tuple) else (shown,))]
    height = max(len(part) for part in parts)
    row = []
    for part in parts:
        filled = np.zeros((height, part.shape[1] + (GAP if row else 0), 4), np.uint8)
        filled[: len(part), -part.shape[1] :] = part
        row.append(filled)
    return np.concatenate(row, axis=1)


def watch_calls():
    """A list that gets the name and the arguments of every call of a C function from now on."""
    calls = []
    for name, function in list(_library.call.items()):

        def watched(*arguments, name=name, function=function):
            calls.append((name, arguments))
            return function(*arguments)

        _library.call[name] = watched
    return calls


def digest(pixels):
    return hashlib.sha256(repr(pixels.shape).encode() + pixels.tobytes()).hexdigest()


def colours(bitmap):
    """A bitmap in red, green, blue, opacity. Weights and masks are greys; an array of that shape is taken as it is."""
    if isinstance(bitmap, np.ndarray):
        return bitmap
    pixels = bitmap.to_array()
    shown = np.full((bitmap.height, bitmap.width, 4), 255, np.uint8)
    if bitmap.format is Format.YUY2:
        shown[..., :3] = _from_yuv(pixels)
    elif bitmap.format is Format.RGBQ:
        shown[..., :3] = pixels[..., 2::-1]
    elif bitmap.format is Format.RGB8:
        shown[..., :3] = colour_table(bitmap)[pixels]
    else:
        full = {Format.PWRW: 4096, Format.A8: 128}[bitmap.format]
        shown[..., :3] = (np.minimum(pixels, full).astype(np.int64) * 255 // full)[..., None]
    return shown


def _from_yuv(pixels):
    """BT.601, studio range, in whole numbers: the same on every machine."""
    even, odd = pixels[:, 0::2, 1].astype(np.int64) - 128, pixels[:, 1::2, 1].astype(np.int64) - 128
    luma = 298 * (pixels[..., 0].astype(np.int64) - 16) + 128
    u, v = np.repeat(even, 2, axis=1), np.repeat(odd, 2, axis=1)
    return np.stack([luma + 409 * v, luma - 100 * u - 208 * v, luma + 516 * u], axis=-1).clip(0, 65535) >> 8


def colour_table(bitmap):
    """Red, green, blue of an RGB8 bitmap's 256 entries: from its display header, or, before there is one, greys."""
    header = _library.Record.from_address(bitmap._address).dib_info
    if not header:
        return np.repeat(np.arange(256, dtype=np.uint8)[:, None], 3, axis=1)
    entries = (ctypes.c_uint8 * 1024).from_address(header + 40)
    return np.frombuffer(entries, np.uint8).reshape(256, 4)[:, 2::-1].copy()


def _zoomed(pixels, zoom):
    large = pixels.repeat(zoom, axis=0).repeat(zoom, axis=1)
    if zoom >= GRID_ZOOM:
        for lines in (large[zoom - 1 :: zoom], large[:, zoom - 1 :: zoom]):
            lines[..., :3] = lines[..., :3] // 2 + 64
    return large
