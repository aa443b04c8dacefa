"""Raster operations on in-memory video frames.

Bitmaps are seen as NumPy arrays that share their memory; every operation checks its arguments, works on bitmaps in
place, and lets other threads run meanwhile.

>>> import zepbmp
>>> before = zepbmp.Bitmap(64, 48, zepbmp.Format.RGBQ)
>>> after = zepbmp.Bitmap(64, 48, zepbmp.Format.RGBQ)
>>> after.array[:] = 255
>>> weights = zepbmp.Bitmap(64, 48, zepbmp.Format.PWRW)
>>> zepbmp.alpha_circle(weights, 32, 24, radius=20, feather=6, ramp=zepbmp.Ramp.COSINE)
>>> frame = zepbmp.Bitmap(64, 48, zepbmp.Format.RGBQ)
>>> zepbmp.compose(frame, before, after, weights)
>>> frame.array[24, 32].tolist(), frame.array[0, 0].tolist()
([255, 255, 255, 255], [0, 0, 0, 0])

Arguments
    bitmaps     the destination comes first; a source is never written
    weights     0 = none, WEIGHT_FULL = 4096 = full
    masks       0 = none, MASK_FULL = 128 = full
    positions   pixels and lines, from the top left corner of pixel (0, 0); line 0 is the top line
    colours     integers, as each operation says

An argument of another type raises TypeError, one that breaks a rule raises ValueError; the message names the argument,
the value and the rule. Then nothing has been drawn.

Threads: operations on distinct bitmaps run at the same time. One bitmap must not be written by one thread while another
one uses it.
"""

from zepbmp._bitmap import Bitmap
from zepbmp._operations import (
    alpha_circle,
    alpha_rect,
    blit,
    clear,
    compose,
    compose_color,
    compose_level,
    copy,
    display,
    draw_line,
    draw_rect,
    fill_polygon,
    interpolate_field,
    map_polygon,
    map_rect,
    set_palette,
    tint_polygon,
    translate_color,
)
from zepbmp._types import MASK_FULL, WEIGHT_FULL, DrawMode, Field, Format, Ramp, ShapeMode, Vertex

__all__ = [
    "MASK_FULL",
    "WEIGHT_FULL",
    "Bitmap",
    "DrawMode",
    "Field",
    "Format",
    "Ramp",
    "ShapeMode",
    "Vertex",
    "alpha_circle",
    "alpha_rect",
    "blit",
    "clear",
    "compose",
    "compose_color",
    "compose_level",
    "copy",
    "display",
    "draw_line",
    "draw_rect",
    "fill_polygon",
    "interpolate_field",
    "map_polygon",
    "map_rect",
    "set_palette",
    "tint_polygon",
    "translate_color",
]
