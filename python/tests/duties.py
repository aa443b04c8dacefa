"""The caller's duties, as include/zepbmp.h states them, read from the bitmaps' records and the raw arguments of a call.

`install` puts a guard before every function of the library. It stops a call that breaks a duty, and counts the others.
"""

import ctypes
import math
from collections import Counter
from collections.abc import Callable
from typing import Any

import numpy as np
import pytest

from zepbmp import _library

YUY2, RGBQ, PWRW, RGB8, A8 = 0, 1, 2, 6, 7
FIELD, LEVEL, EXTRA, SOLID = 2, 0x10000, 16, 32


class BrokenDuty(Exception):
    """A call that the library must not see."""


def duty(kept: bool, text: str) -> None:
    if not kept:
        raise BrokenDuty(text)


def record(address: Any, name: str) -> _library.Record:
    duty(isinstance(address, int) and address > 4096, f"{name} is no bitmap")
    return _library.Record.from_address(address)


def at_least(big: _library.Record, small: _library.Record, name: str) -> None:
    duty(big.width >= small.width and big.height >= small.height, f"{name} is too small")


def numbers(*values: float) -> None:
    duty(all(math.isfinite(ctypes.c_float(value).value) for value in values), "a number is not finite")


def int32(*values: int) -> None:
    duty(all(-(2**31) <= value < 2**31 for value in values), "an integer wraps")


def uint32(*values: int) -> None:
    duty(all(0 <= value < 2**32 for value in values), "an unsigned integer wraps")


def create(width: int, height: int, format: int, flags: int) -> None:
    int32(width, height)
    duty(width >= 0 and height >= 0 and 0 <= format <= 7 and flags in (0, 2, 3, 4, 6, 7), "no bitmap has that form")


def pointer(bitmap: int, x: int, y: int) -> None:
    header = record(bitmap, "bitmap")
    duty(0 <= x < header.width and 0 <= y < header.height, "the pixel lies outside")


def clear(bitmap: int, flags: int) -> None:
    record(bitmap, "bitmap")
    uint32(flags)


def copy(dest: int, source: int, flags: int) -> None:
    to, of = record(dest, "dest"), record(source, "source")
    for name in ("width", "height", "pitch", "bytes_per_pixel"):
        duty(getattr(to, name) == getattr(of, name), f"{name} differs")


def blt(dest: int, x: int, y: int, width: int, height: int, source: int, src_x: int, src_y: int, flags: int) -> None:
    duty(record(dest, "dest").bytes_per_pixel == record(source, "source").bytes_per_pixel, "pixels differ in size")
    int32(x, y, width, height, src_x, src_y)


def interporate(dest: int, source: int, flags: int) -> None:
    to, of = record(dest, "dest"), record(source, "source")
    duty(of.pitch >= to.pitch and of.height >= to.height, "the source is too small")


def draw_rect(bitmap: int, left: int, top: int, right: int, bottom: int, color: int, mode: int) -> None:
    record(bitmap, "bitmap")
    int32(left, top, right, bottom)
    uint32(color, mode)


def draw_line(bitmap: int, x0: int, y0: int, x1: int, y1: int, color: int, mode: int) -> None:
    header = record(bitmap, "bitmap")
    for x, y in ((x0, y0), (x1, y1)):
        duty(0 <= x < header.width and 0 <= y < header.height, "an end lies outside")
    uint32(color, mode)


def set_palette(bitmap: int, index: int, color: int) -> None:
    record(bitmap, "bitmap")
    int32(index)
    uint32(color)


def compose(dest: int, src1: int, src2: int, mask: int, flags: int) -> None:
    to = record(dest, "dest")
    for name, source in (("src1", src1), ("src2", src2)):
        at_least(record(source, name), to, name)
        duty(record(source, name).format == to.format, f"{name} has another format")
    if flags & LEVEL:
        duty(0 <= mask <= 4096, "the level is out of range")
        return
    map = record(mask, "mask")
    at_least(map, to, "mask")
    duty(map.format == A8 or map.bytes_per_pixel >= 2, "the mask has 1 byte a pixel")
    duty(mask != dest, "the mask is dest")


def compose_color(dest: int, src1: int, src2: int, mask1: int, mask2: int, color: int, flags: int) -> None:
    duty((src2 is None) == (mask2 is None), "src2 and mask2 go together")
    uint32(color)
    to = record(dest, "dest")
    for name, source in (("src1", src1), ("src2", src2)):
        if source is not None:
            at_least(record(source, name), to, name)
            duty(record(source, name).format == to.format, f"{name} has another format")
    for name, mask in (("mask1", mask1), ("mask2", mask2)):
        if mask is not None:
            at_least(record(mask, name), to, name)
            duty(record(mask, name).bytes_per_pixel >= 2 and mask != dest, f"{name} is no weight map")
    duty(mask1 is not None, "mask1 is missing")


def alpha_rect(bitmap: int, *values: float) -> None:
    duty(record(bitmap, "bitmap").bytes_per_pixel == 2, "no 16-bit pixels")
    numbers(*values[:-1])


def map_polygon(dst: int, dst2: int, aux: int, tex_a: int, tex_b: int, vertices: int, count: int, flags: int) -> None:
    to = record(dst, "dst")
    planes = [dst]
    for name, plane in (("dst2", dst2), ("aux", aux)):
        if plane is not None:
            at_least(record(plane, name), to, name)
            planes.append(plane)
    duty(aux is None or record(aux, "aux").bytes_per_pixel == 4, "aux has no floats")
    if flags & EXTRA:
        uint32(tex_a)
        if flags & SOLID:
            uint32(tex_b)
        else:
            record(tex_b, "tex_b")
            planes.append(tex_b)
    else:
        record(tex_a, "tex_a")
        duty(tex_b is None, "tex_b is not read")
        planes.append(tex_a)
    duty(len(set(planes)) == len(planes), "two bitmaps are the same")
    duty(0 <= count < 2**31, "too many corners")
    corners = np.ctypeslib.as_array((ctypes.c_float * 5 * count).from_address(vertices))
    duty(bool(np.isfinite(corners).all() and (corners[:, 2] > 0).all()), "a corner is no corner")


def map_rect(dest: int, weight_map: int, *values: Any) -> None:
    dx0, dy0, dx1, dy1, src, src_size, sx0, sy0, sx1, sy1, flags = values
    to, of = record(dest, "dest"), record(src, "src")
    numbers(dx0, dy0, dx1, dy1, sx0, sy0, sx1, sy1)
    duty(dest != src and to.format == of.format and src_size is None, "dest and src do not go together")
    duty(0 <= dx1 <= to.width and 0 <= dy1 <= to.height, "the destination's end lies outside")
    duty(0 <= sx1 <= of.width and 0 <= sy1 <= of.height, "the source's end lies outside")
    duty(all(abs(x) <= 2**18 for x in (dx0, dx1, sx0, sx1)), "a column is out of range")
    duty(all(abs(y) <= 2**19 for y in (dy0, dy1, sy0, sy1)), "a line is out of range")
    if to.format == RGB8:
        duty(weight_map is None, "RGB8 has no weight map")
    else:
        map = record(weight_map, "weight_map")
        duty(weight_map not in (dest, src) and map.bytes_per_pixel == 2, "no weight map")
        duty((map.width, map.height) == (to.width, to.height), "the weight map has another size")


DUTIES: dict[str, Callable[..., None]] = {
    "bmp_create": create,
    "bmp_pointer": pointer,
    "bmp_clear": clear,
    "bmp_copy": copy,
    "bmp_blt": blt,
    "bmp_interporate": interporate,
    "bmp_draw_rect": draw_rect,
    "bmp_draw_line": draw_line,
    "bmp_translate_color": lambda ignored, color: uint32(color),
    "bmp_set_palette": set_palette,
    "bmp_compose": compose,
    "bmp_compose_color": compose_color,
    "bmp_alpha_rect": alpha_rect,
    "bmp_alpha_circle": alpha_rect,
    "bmp_map_polygon": map_polygon,
    "bmp_map_rect": map_rect,
}


def guarded(function: Any, check: Callable[..., None], count: Counter[str], name: str) -> Callable[..., Any]:
    def call(*arguments: Any) -> Any:
        check(*arguments)
        count[name] += 1
        return function(*arguments)

    return call


def install(patch: pytest.MonkeyPatch) -> Counter[str]:
    count: Counter[str] = Counter()
    for name, check in DUTIES.items():
        patch.setitem(_library.call, name, guarded(_library.call[name], check, count, name))
    return count
