"""The operations: each checks its arguments, translates them, and makes one call."""

import ctypes
import sys
from collections.abc import Sequence
from ctypes import c_void_p
from fractions import Fraction
from typing import Any, Final, SupportsIndex, TypeAlias

import numpy as np
import numpy.typing as npt

from zepbmp import _library, _stack
from zepbmp._bitmap import Bitmap
from zepbmp._bitmap_checks import bitmap as check_bitmap
from zepbmp._bitmap_checks import color_for, covers, dest_and_source, distinct, frame, plane, same_format, same_size
from zepbmp._checks import (
    ANY_LINES,
    FRAME_OR_FIELD,
    INT32_MAX,
    INT32_MIN,
    ONE_FIELD,
    UINT32_MAX,
    array,
    bad_type,
    bad_value,
    field as check_field,
    flag,
    integer,
    member,
    single,
)
from zepbmp._types import QUADS, WEIGHT_FULL, DrawMode, Field, Format, Ramp, ShapeMode, Vertex

Number: TypeAlias = float | np.floating[Any] | np.integer[Any] | Fraction
Rectangle: TypeAlias = Sequence[Number] | npt.NDArray[Any]
Corners: TypeAlias = Sequence[Vertex | Sequence[float]] | npt.NDArray[Any]

_COLORED: Final = (Format.YUY2, Format.RGBQ)
_MAPPED: Final = (*_COLORED, Format.PWRW)
_WEIGHTS: Final = (Format.PWRW,)
_COVERAGE: Final = (Format.PWRW, Format.A8)

_COMPOSE_LEVEL: Final = 0x10000
_SHAPE_ELLIPTIC: Final = 0x30000
_SHAPE_COSINE: Final = 0x40000
_MAP_EXTRA: Final = 16
_MAP_SOLID: Final = 32
_MAP_ANTIALIAS: Final = 0x4000
_MAP_NO_FILTER: Final = 0x8000

_call = _library.call


# ---------------------------------------------------------------- fills, copies, blits


def clear(bitmap: Bitmap, field: Field = Field.FRAME) -> None:
    """Sets the lines of a field to zero, padding included.

    >>> bitmap = zepbmp.Bitmap.from_array(np.full((3, 2), 5, np.uint8), zepbmp.Format.A8)
    >>> zepbmp.clear(bitmap, zepbmp.Field.EVEN)
    >>> bitmap.array.tolist()
    [[0, 0], [5, 5], [0, 0]]
    """
    check_bitmap("bitmap", bitmap)
    check_field(field, ANY_LINES)
    _call["bmp_clear"](bitmap._address, field)


def copy(dest: Bitmap, source: Bitmap, field: Field = Field.FRAME) -> None:
    """Copies the lines of a field. Both bitmaps have the same size and bytes a pixel.

    >>> source = zepbmp.Bitmap.from_array(np.array([[1], [2], [3]], np.uint8), zepbmp.Format.A8)
    >>> dest = zepbmp.Bitmap(1, 3, zepbmp.Format.A8)
    >>> zepbmp.copy(dest, source, zepbmp.Field.ODD)
    >>> dest.array.tolist()
    [[0], [2], [0]]
    """
    dest_and_source(dest, source)
    same_size("source", source, dest)
    check_field(field, FRAME_OR_FIELD)
    _call["bmp_copy"](dest._address, source._address, field)


def blit(
    dest: Bitmap,
    dest_x: SupportsIndex,
    dest_y: SupportsIndex,
    width: SupportsIndex,
    height: SupportsIndex,
    source: Bitmap,
    src_x: SupportsIndex = 0,
    src_y: SupportsIndex = 0,
    field: Field = Field.FRAME,
) -> None:
    """Copies a rectangle of width x height pixels, clipped to both bitmaps, which have the same bytes a pixel.

    A part left of or above the source moves the destination by as much. A part left of or above the destination does
    not move the source: the rectangle's left (top) pixels land at column (line) 0, the right (bottom) ones are dropped.
    Within one bitmap, where a line overlaps itself, bytes move in 4-byte words from left to right, then single bytes.
    The rectangle's edges fit 32 bits.

    field   Field.EVEN, Field.ODD: every second line of both, those whose destination line has that parity

    >>> source = zepbmp.Bitmap.from_array(np.arange(1, 7, dtype=np.uint8).reshape(2, 3), zepbmp.Format.A8)
    >>> dest = zepbmp.Bitmap(4, 3, zepbmp.Format.A8)
    >>> zepbmp.blit(dest, 2, 1, 2, 2, source, 1, 0)
    >>> dest.array.tolist()
    [[0, 0, 0, 0], [0, 0, 2, 3], [0, 0, 5, 6]]
    """
    dest_and_source(dest, source)
    check_field(field, FRAME_OR_FIELD)
    width, height = integer("width", width), integer("height", height)
    dest_x, dest_y = _start("dest_x", dest_x, width), _start("dest_y", dest_y, height)
    src_x, src_y = _start("src_x", src_x, width), _start("src_y", src_y, height)
    _call["bmp_blt"](dest._address, dest_x, dest_y, width, height, source._address, src_x, src_y, field)


def _start(name: str, value: Any, length: int) -> int:
    """Where an edge is whose end fits 32 bits, too."""
    return integer(name, value, max(INT32_MIN, INT32_MIN - length), min(INT32_MAX, INT32_MAX - length))


def interpolate_field(dest: Bitmap, source: Bitmap, field: Field) -> None:
    """Rebuilds a frame from one field of the source.

    The field's lines are copied, each line between two of them is their rounded average, byte by byte; a line beyond
    the field's first or last is its copy. Works in place, or from a source that is at least as large, with as many
    bytes a pixel.

    field   Field.EVEN or Field.ODD, the one that is kept

    >>> source = zepbmp.Bitmap.from_array(np.array([[10], [99], [20], [99]], np.uint8), zepbmp.Format.A8)
    >>> zepbmp.interpolate_field(source, source, zepbmp.Field.EVEN)
    >>> source.array.tolist()
    [[10], [15], [20], [20]]
    """
    dest_and_source(dest, source)
    covers("source", source, dest)
    check_field(field, ONE_FIELD)
    _call["bmp_interporate"](dest._address, source._address, field)


# ---------------------------------------------------------------- drawing, colours


_RECT_FORMATS: Final = {
    DrawMode.SET: (Format.RGBQ, Format.PWRW),
    DrawMode.OR: (Format.RGB8,),
    DrawMode.AND: (Format.RGB8,),
}
_LARGEST_COLOR: Final = {Format.RGBQ: UINT32_MAX, Format.PWRW: WEIGHT_FULL, Format.RGB8: 0xFF}


def draw_rect(
    bitmap: Bitmap,
    left: SupportsIndex,
    top: SupportsIndex,
    right: SupportsIndex,
    bottom: SupportsIndex,
    color: SupportsIndex,
    mode: DrawMode = DrawMode.SET,
) -> None:
    """Fills columns left..right-1 of lines top..bottom-1, clipped to the bitmap.

    RGBQ, PWRW   DrawMode.SET
    RGB8         DrawMode.OR, DrawMode.AND
    color        RGBQ: byte k of the pixel in bits 8k..8k+7; PWRW: 0..4096; RGB8: 0..255

    >>> weights = zepbmp.Bitmap(4, 2, zepbmp.Format.PWRW)
    >>> zepbmp.draw_rect(weights, 1, -5, 3, 1, 4096)
    >>> weights.array.tolist()
    [[0, 4096, 4096, 0], [0, 0, 0, 0]]
    """
    check_bitmap("bitmap", bitmap, _LARGEST_COLOR)
    member("mode", mode, DrawMode)
    if bitmap._format not in _RECT_FORMATS.get(mode, ()):
        raise bad_value("mode", mode, f"{bitmap!r} takes " + ("OR or AND" if bitmap._format is Format.RGB8 else "SET"))
    _call["bmp_draw_rect"](
        bitmap._address,
        integer("left", left),
        integer("top", top),
        integer("right", right),
        integer("bottom", bottom),
        integer("color", color, 0, _LARGEST_COLOR[bitmap._format]),
        mode,
    )


def draw_line(
    bitmap: Bitmap,
    x0: SupportsIndex,
    y0: SupportsIndex,
    x1: SupportsIndex,
    y1: SupportsIndex,
    color: SupportsIndex,
    mode: DrawMode = DrawMode.SET,
) -> None:
    """Draws a line from (x0, y0) toward (x1, y1), which is itself not drawn, into an RGB8 bitmap.

    Both ends lie inside the bitmap. The colour is a byte.

    >>> bitmap = zepbmp.Bitmap(5, 3, zepbmp.Format.RGB8)
    >>> zepbmp.draw_line(bitmap, 0, 0, 4, 2, 7)
    >>> bitmap.array.tolist()
    [[7, 0, 0, 0, 0], [0, 7, 7, 0, 0], [0, 0, 0, 7, 0]]
    """
    check_bitmap("bitmap", bitmap, (Format.RGB8,))
    member("mode", mode, DrawMode)
    right, bottom = bitmap._width - 1, bitmap._height - 1
    _call["bmp_draw_line"](
        bitmap._address,
        integer("x0", x0, 0, right),
        integer("y0", y0, 0, bottom),
        integer("x1", x1, 0, right),
        integer("y1", y1, 0, bottom),
        integer("color", color, 0, 0xFF),
        mode,
    )


def translate_color(color: SupportsIndex) -> int:
    """Turns a Windows colour reference 0x00BBGGRR into an RGBQ pixel 0x00RRGGBB and back. The top byte is dropped.

    >>> hex(zepbmp.translate_color(0x112233))
    '0x332211'
    """
    result: int = _call["bmp_translate_color"](None, integer("color", color, 0, UINT32_MAX))
    return result


# ---------------------------------------------------------------- palette, display


def set_palette(bitmap: Bitmap, index: SupportsIndex, color: SupportsIndex) -> None:
    """Stores a colour, 0x00RRGGBB, in an entry of an RGB8 bitmap's colour table, which starts as a grey ramp.

    >>> bitmap = zepbmp.Bitmap(5, 3, zepbmp.Format.RGB8)
    >>> zepbmp.set_palette(bitmap, 7, 0xFF8000)
    """
    check_bitmap("bitmap", bitmap, (Format.RGB8,))
    _call["bmp_set_palette"](bitmap._address, integer("index", index, 0, 255), integer("color", color, 0, 0xFFFFFF))
    _expect_display_header(bitmap)


def _expect_display_header(bitmap: Bitmap) -> None:
    if not _library.Record.from_address(bitmap._address).dib_info:
        raise MemoryError(f"no memory for the display header of {bitmap!r}")


def display(
    device_context: SupportsIndex,
    dest_x: SupportsIndex,
    dest_y: SupportsIndex,
    width: SupportsIndex,
    height: SupportsIndex,
    bitmap: Bitmap,
    src_x: SupportsIndex = 0,
    start_line: SupportsIndex = 0,
) -> int:
    """Shows a bitmap on a Windows device context; no colour is converted. Other systems raise NotImplementedError.

    device_context                  the handle (HDC)
    dest_x, dest_y, width, height   rectangle of the device, pixels
    src_x                           the bitmap's column at its left edge
    start_line                      what the bitmap's first line counts as: a scan line
    returns                         the number of lines set, 0 on failure

    >>> import sys
    >>> bitmap = zepbmp.Bitmap(64, 48, zepbmp.Format.RGBQ)
    >>> if sys.platform == "win32":
    ...     zepbmp.display(window_context, 0, 0, 64, 48, bitmap)
    """
    largest_handle = 2 ** (8 * ctypes.sizeof(c_void_p)) - 1
    check_bitmap("bitmap", bitmap)
    arguments = (
        integer("device_context", device_context, 1, largest_handle),
        integer("dest_x", dest_x),
        integer("dest_y", dest_y),
        integer("width", width, 0),
        integer("height", height, 0),
        bitmap._address,
        integer("src_x", src_x, 0, bitmap._width),
        integer("start_line", start_line, 0),
    )
    if sys.platform != "win32":
        raise NotImplementedError("display: only Windows has device contexts")
    lines: int = _call["bmp_display"](*arguments)
    _expect_display_header(bitmap)
    return lines


# ---------------------------------------------------------------- composition


def compose(dest: Bitmap, src1: Bitmap, src2: Bitmap, mask: Bitmap, field: Field = Field.FRAME) -> None:
    """Mixes two frames under a map: src1 where the weight is 0, src2 where it is full.

    dest         RGBQ or YUY2; its size decides what is processed
    src1, src2   of its format and at least its size; either may be dest itself
    mask         at least as large as dest: PWRW, weights of 0..4096, or A8, masks of 0..128. Larger ones extrapolate

    In YUY2 both chroma bytes of a pair of pixels take the weight of the pair's first pixel.

    >>> black, white, dest = (zepbmp.Bitmap(3, 1, zepbmp.Format.RGBQ) for _ in range(3))
    >>> white.array[:] = 200
    >>> weights = zepbmp.Bitmap.from_array(np.array([[0, 1024, 4096]], np.uint16), zepbmp.Format.PWRW)
    >>> zepbmp.compose(dest, black, white, weights)
    >>> dest.array[0, :, 0].tolist()
    [0, 50, 200]
    """
    check_bitmap("dest", dest, _COLORED)
    frame("src1", src1, dest)
    frame("src2", src2, dest)
    plane("mask", mask, _COVERAGE, dest)
    check_field(field, ANY_LINES)
    _call["bmp_compose"](dest._address, src1._address, src2._address, mask._address, field)


def compose_level(dest: Bitmap, src1: Bitmap, src2: Bitmap, level: SupportsIndex, field: Field = Field.FRAME) -> None:
    """Mixes two frames of any format, byte by byte: src1 at level 0, src2 at level 4096.

    src1, src2   of dest's format and at least its size; either may be dest itself

    >>> black, white, dest = (zepbmp.Bitmap(1, 1, zepbmp.Format.RGBQ) for _ in range(3))
    >>> white.array[:] = 200
    >>> zepbmp.compose_level(dest, black, white, 1024)
    >>> dest.array.tolist()
    [[[50, 50, 50, 50]]]
    """
    check_bitmap("dest", dest)
    frame("src1", src1, dest)
    frame("src2", src2, dest)
    level = integer("level", level, 0, WEIGHT_FULL)
    check_field(field, ANY_LINES)
    _call["bmp_compose"](dest._address, src1._address, src2._address, level, field | _COMPOSE_LEVEL)


def compose_color(
    dest: Bitmap,
    src1: Bitmap,
    mask1: Bitmap,
    color: SupportsIndex,
    *,
    src2: Bitmap | None = None,
    mask2: Bitmap | None = None,
    field: Field = Field.FRAME,
) -> None:
    """Mixes frames with a flat colour.

    Without src2 and mask2, src1 gets the weight w of mask1, the colour 4096 - w. With them, src2 gets the weight a of
    mask1, the colour b - a, where b is the weight of mask2, and src1 4096 - b: a coloured band where the masks differ.

    dest           RGBQ or YUY2; its size decides what is processed
    src1, src2     of its format and at least its size; either may be dest itself
    mask1, mask2   PWRW, at least as large as dest, weights of 0..4096; larger ones extrapolate
    color          RGBQ: byte k of the pixel in bits 8k..8k+7; YUY2: 0x00YYUUVV

    Left alone are a last odd pixel of a YUY2 line, and, with one source, the fourth byte of RGBQ.

    >>> frame = zepbmp.Bitmap(3, 1, zepbmp.Format.RGBQ)
    >>> weights = zepbmp.Bitmap.from_array(np.array([[0, 1024, 4096]], np.uint16), zepbmp.Format.PWRW)
    >>> zepbmp.compose_color(frame, frame, weights, 0x00102030)
    >>> frame.array[0].tolist()
    [[48, 32, 16, 0], [36, 24, 12, 0], [0, 0, 0, 0]]
    """
    check_bitmap("dest", dest, _COLORED)
    frame("src1", src1, dest)
    plane("mask1", mask1, _WEIGHTS, dest)
    if (src2 is None) != (mask2 is None):
        missing = "src2" if src2 is None else "mask2"
        raise bad_value(missing, None, "src2 and mask2 go together")
    if src2 is not None:
        frame("src2", src2, dest)
        plane("mask2", mask2, _WEIGHTS, dest)
    color = color_for(dest, color)
    check_field(field, ANY_LINES)
    _call["bmp_compose_color"](
        dest._address, src1._address, _address(src2), mask1._address, _address(mask2), color, field
    )


def _address(bitmap: Bitmap | None) -> int | None:
    return None if bitmap is None else bitmap._address


# ---------------------------------------------------------------- shapes in weight maps

_SHAPE_LIMIT: Final = 2**25
_CIRCLE_LIMIT: Final = 2**30


def alpha_rect(
    weights: Bitmap,
    x: Number,
    y: Number,
    width: Number,
    height: Number,
    *,
    mode: ShapeMode = ShapeMode.MAX,
    radius: tuple[Number, Number] | None = None,
    field: Field = Field.FRAME,
) -> None:
    """Draws a rectangle with edges at 1/64 pixel into a weight map (PWRW): a pixel gets its covered fraction of 4096.

    x, y, width, height   pixels and frame lines, truncated to 1/64; up to 2^25
    radius                of elliptical corners, across and down; shrunk, keeping the ratio, to half the rectangle.
                          Those always keep the larger weight
    field                 the lines that are drawn: Field.FRAME, Field.EVEN or Field.ODD

    Whole pixels of whole lines become 4096 also where weights are added.

    >>> weights = zepbmp.Bitmap(4, 2, zepbmp.Format.PWRW)
    >>> zepbmp.alpha_rect(weights, 0.5, 0, 2.75, 1.5)
    >>> weights.array.tolist()
    [[2048, 4096, 4096, 1024], [1024, 2048, 2048, 512]]
    """
    check_bitmap("weights", weights, _WEIGHTS)
    member("mode", mode, ShapeMode)
    check_field(field, FRAME_OR_FIELD)
    left, top = (single(name, value, -_SHAPE_LIMIT, _SHAPE_LIMIT) for name, value in (("x", x), ("y", y)))
    across, down = single("width", width, 0, _SHAPE_LIMIT), single("height", height, 0, _SHAPE_LIMIT)
    radius_x = radius_y = 0.0
    flags = int(mode | field)
    if radius is not None:
        if mode is not ShapeMode.MAX:
            raise bad_value("mode", mode, "elliptical corners keep the larger weight, MAX")
        if not isinstance(radius, (tuple, list)) or len(radius) != 2:
            raise bad_type("radius", radius, "must be a pair of numbers or None")
        radius_x, radius_y = (single(f"radius[{i}]", one, 0, _SHAPE_LIMIT) for i, one in enumerate(radius))
        flags |= _SHAPE_ELLIPTIC
    _call["bmp_alpha_rect"](weights._address, left, top, across, down, radius_x, radius_y, flags)


def alpha_circle(
    weights: Bitmap,
    cx: Number,
    cy: Number,
    radius: Number,
    feather: Number = 0,
    aspect: Number = 1,
    *,
    ramp: Ramp = Ramp.LINEAR,
    field: Field = Field.FRAME,
) -> None:
    """Draws a disc into a weight map (PWRW) and sets everything around it to 0, on the lines of a field.

    cx, cy    centre, pixels; line y covers y * aspect .. (y + 1) * aspect
    radius    outer radius, pixels; 0 or less leaves only the 0. It and the centre lie within -2^30..2^30
    feather   width of the soft edge inside the radius; 0 or less: a hard edge, anti-aliased with 4 x 4 samples
    aspect    height of a line in pixels, above 0
    ramp      the soft edge's course

    >>> weights = zepbmp.Bitmap(4, 4, zepbmp.Format.PWRW)
    >>> zepbmp.alpha_circle(weights, 2, 2, 2)
    >>> weights.array[:2].tolist()
    [[1536, 3840, 3840, 1536], [3840, 4096, 4096, 3840]]
    """
    check_bitmap("weights", weights, _WEIGHTS)
    member("ramp", ramp, Ramp)
    check_field(field, ANY_LINES)
    line_height = single("aspect", aspect)
    if not line_height > 0:
        raise bad_value("aspect", aspect, "must be above 0 in single precision")
    _call["bmp_alpha_circle"](
        weights._address,
        single("cx", cx, -_CIRCLE_LIMIT, _CIRCLE_LIMIT),
        single("cy", cy, -_CIRCLE_LIMIT, _CIRCLE_LIMIT),
        single("radius", radius, -_CIRCLE_LIMIT, _CIRCLE_LIMIT),
        single("feather", feather),
        line_height,
        field | (_SHAPE_COSINE if ramp is Ramp.COSINE else 0),
    )


# ---------------------------------------------------------------- mapping

# How far from 0 the corners may lie: a third of it in lines, where those are drawn in three parts.
_POSITION_LIMIT: Final = 2**19


def _numbers(vertices: Any) -> npt.NDArray[np.float32]:
    """A private copy, so that what is checked is what the library reads."""
    given = array("vertices", vertices)
    if given.dtype.kind not in "iuf":
        raise bad_type("vertices", vertices, "must be rows of numbers")
    with np.errstate(over="ignore"):
        numbers = given.astype(np.float32, order="C", copy=True)
    return numbers.reshape(0, 5) if numbers.shape[0:1] == (0,) else numbers


def _corners(vertices: Any, antialias: bool) -> npt.NDArray[np.float32]:
    corners = _numbers(vertices)
    if corners.ndim != 2 or corners.shape[1] != 5:
        raise bad_value("vertices", vertices, "must be corners of five numbers, u v w x y")
    if len(corners) > INT32_MAX:
        raise bad_value("vertices", vertices, f"must be at most {INT32_MAX} corners")
    if not np.isfinite(corners).all():
        raise bad_value("vertices", vertices, "every number must be finite in single precision")
    if not (corners[:, 2] > 0).all():
        raise bad_value("vertices", vertices, "every w must be above 0 in single precision")
    lines = _POSITION_LIMIT // 3 if antialias else _POSITION_LIMIT
    for name, positions, limit in (("x", corners[:, 3], _POSITION_LIMIT), ("y", corners[:, 4], lines)):
        if not (np.abs(positions) <= limit).all():
            raise bad_value("vertices", vertices, f"every {name} must lie in {-limit}..{limit}")
    return corners


def _draw_polygon(
    dest: Bitmap,
    coverage: Bitmap | None,
    depth: Bitmap | None,
    textures: tuple[int | None, int | None],
    corners: npt.NDArray[np.float32],
    flags: int,
) -> None:
    _call["bmp_map_polygon"](
        dest._address, _address(coverage), _address(depth), *textures, corners.ctypes.data, len(corners), flags
    )


def _field_flags(field: Field, source_field: Field | None) -> int:
    check_field(field, FRAME_OR_FIELD)
    if source_field is None:
        return field
    check_field(source_field, ONE_FIELD, "source_field")
    if field is Field.FRAME:
        return source_field & 1
    if source_field is not field:
        raise bad_value("source_field", source_field, f"must be that of the destination, {field.name}")
    return field


def map_polygon(
    dest: Bitmap,
    source: Bitmap,
    vertices: Corners,
    *,
    coverage: Bitmap | None = None,
    depth: Bitmap | None = None,
    field: Field = Field.FRAME,
    source_field: Field | None = None,
    antialias: bool = False,
    filter: bool = True,
) -> None:
    """Maps a source onto a polygon, affine or in perspective.

    dest           YUY2, RGBQ or, without depth, PWRW; source has its format
    vertices       the corners: Vertex, or rows of five numbers u v w x y. Convex, concave or self-crossing: what is
                   enclosed twice is outside. x and y lie within -2^19..2^19, with anti-aliased edges y in a third of it
    coverage       A8 or PWRW, at least as large as dest: where something is drawn it becomes full (128, 4096)
    depth          QUAD3, QUAD4 or QUAD5, at least as large as dest: a pixel is drawn where its w is above
                   `Bitmap.depth`, which then becomes w
    field          the lines of dest that are drawn: Field.FRAME, Field.EVEN or Field.ODD
    source_field   the field of an interlaced source that is sampled: Field.EVEN, also when None, or Field.ODD. Where
                   one field of dest is drawn, the same one
    antialias      anti-aliased edges; not with depth
    filter         False takes the nearest pixels; not anti-aliased then

    >>> source = zepbmp.Bitmap.from_array(np.full((8, 8, 4), 90, np.uint8), zepbmp.Format.RGBQ)
    >>> dest = zepbmp.Bitmap(4, 3, zepbmp.Format.RGBQ)
    >>> corners = [(0, 0, 1, 1, 1), (8, 0, 1, 3, 1), (8, 8, 1, 3, 3), (0, 8, 1, 1, 3)]
    >>> zepbmp.map_polygon(dest, source, corners)
    >>> dest.array[:, :, 0].tolist()
    [[0, 0, 0, 0], [0, 90, 90, 0], [0, 90, 90, 0]]
    """
    check_bitmap("dest", dest, _MAPPED if depth is None else _COLORED)
    same_format("source", check_bitmap("source", source), dest)
    flag("antialias", antialias)
    flag("filter", filter)
    if antialias and not filter:
        raise bad_value("antialias", antialias, "needs filter")
    if coverage is not None:
        plane("coverage", coverage, _COVERAGE, dest)
    if depth is not None:
        plane("depth", depth, QUADS, dest)
        if antialias:
            raise bad_value("antialias", antialias, "must be False with depth")
    distinct(dest=dest, source=source, coverage=coverage)
    flags = _field_flags(field, source_field) | (_MAP_ANTIALIAS if antialias else 0) | (0 if filter else _MAP_NO_FILTER)
    _draw_polygon(dest, coverage, depth, (source._address, None), _corners(vertices, antialias), flags)


def tint_polygon(
    dest: Bitmap,
    strength: Bitmap,
    color: SupportsIndex,
    vertices: Corners,
    *,
    coverage: Bitmap | None = None,
    field: Field = Field.FRAME,
    source_field: Field | None = None,
    filter: bool = True,
) -> None:
    """Takes a polygon toward a colour, as far as a mapped A8 bitmap says.

    dest       YUY2 or RGBQ
    strength   A8: 0 leaves the picture, 255 is the colour
    color      RGBQ: byte k of the pixel in bits 8k..8k+7, byte 3 stays; YUY2: 0x00YYUUVV

    The others as in map_polygon; filter=False takes bilinear samples.

    >>> strength = zepbmp.Bitmap.from_array(np.full((2, 2), 255, np.uint8), zepbmp.Format.A8)
    >>> dest = zepbmp.Bitmap(2, 1, zepbmp.Format.RGBQ)
    >>> corners = [(0, 0, 1, 0, 0), (2, 0, 1, 1, 0), (2, 2, 1, 1, 1), (0, 2, 1, 0, 1)]
    >>> zepbmp.tint_polygon(dest, strength, 0x00102030, corners)
    >>> dest.array.tolist()
    [[[48, 32, 16, 0], [0, 0, 0, 0]]]
    """
    check_bitmap("dest", dest, _COLORED)
    check_bitmap("strength", strength, (Format.A8,))
    color = color_for(dest, color)
    flag("filter", filter)
    if coverage is not None:
        plane("coverage", coverage, _COVERAGE, dest)
    distinct(strength=strength, coverage=coverage)
    flags = _field_flags(field, source_field) | _MAP_EXTRA | (0 if filter else _MAP_NO_FILTER)
    _draw_polygon(dest, coverage, None, (color, strength._address), _corners(vertices, False), flags)


def fill_polygon(
    dest: Bitmap,
    color: SupportsIndex,
    vertices: Corners,
    *,
    level: SupportsIndex = WEIGHT_FULL,
    coverage: Bitmap | None = None,
    field: Field = Field.FRAME,
) -> None:
    """Fills a polygon with a colour, with anti-aliased edges.

    dest       YUY2 or RGBQ
    color      RGBQ: byte k of the pixel in bits 8k..8k+7; YUY2: 0x00YYUUVV
    vertices   the corners, pairs x y; or as in map_polygon, where u, v and w do not matter
    level      how far the pixels go toward the colour, 0..4096
    coverage   A8 or PWRW, at least as large as dest: gets coverage times level

    >>> dest = zepbmp.Bitmap(4, 2, zepbmp.Format.RGBQ)
    >>> zepbmp.fill_polygon(dest, 0x80808080, [(0, 0), (2.5, 0), (2.5, 1), (0, 1)])
    >>> dest.array[:, :, 0].tolist()
    [[128, 128, 64, 0], [0, 0, 0, 0]]
    """
    check_bitmap("dest", dest, _COLORED)
    color = color_for(dest, color)
    level = integer("level", level, 0, WEIGHT_FULL)
    if coverage is not None:
        plane("coverage", coverage, _COVERAGE, dest)
    check_field(field, FRAME_OR_FIELD)
    corners = _corners(_with_any_source(vertices), True)
    _draw_polygon(dest, coverage, None, (color, level), corners, field | _MAP_EXTRA | _MAP_SOLID)


def _with_any_source(vertices: Any) -> Any:
    """Pairs x y as corners; everything else as it is."""
    positions = _numbers(vertices)
    if positions.ndim != 2 or positions.shape[1] != 2:
        return vertices
    corners = np.zeros((len(positions), 5), np.float32)
    corners[:, 2] = 1
    corners[:, 3:] = positions
    return corners


_MAPPED_PIXELS: Final = 2**18
_MAPPED_LINES: Final = 2**19


def _rectangle(name: str, value: Any, inside_name: str, inside: Bitmap) -> tuple[float, float, float, float]:
    """Its ends lie inside the bitmap, its starts may not."""
    try:
        left, top, right, bottom = value
    except (TypeError, ValueError):
        raise bad_type(name, value, "must be four numbers: left, top, right, bottom") from None
    last_column, last_line = min(inside._width, _MAPPED_PIXELS), min(inside._height, _MAPPED_LINES)
    return (
        single(f"the left of {name}", left, -_MAPPED_PIXELS, _MAPPED_PIXELS),
        single(f"the top of {name}", top, -_MAPPED_LINES, _MAPPED_LINES),
        single(f"the right of {name}", right, 0, last_column, f", inside {inside_name}"),
        single(f"the bottom of {name}", bottom, 0, last_line, f", inside {inside_name}"),
    )


def map_rect(
    dest: Bitmap,
    dest_rect: Rectangle,
    source: Bitmap,
    src_rect: Rectangle,
    weights: Bitmap | None = None,
    *,
    field: Field = Field.FRAME,
) -> None:
    """Resamples a rectangle: each destination pixel becomes the average of the source under it, by exact overlaps.

    dest        RGB8, RGBQ or YUY2; source has its format
    dest_rect   left, top, right, bottom; right and bottom exclusive and inside dest. Pixels and lines, truncated to
                1/4096 pixel and 1/2048 line
    src_rect    the same on source
    weights     RGBQ, YUY2: the destination's coverage, PWRW of its size, read and written: clear it before a new
                picture. RGB8: None
    field       Field.EVEN, Field.ODD: draws that field's lines; of an interlaced source it samples that field

    A start left of or above its bitmap is moved to the edge, and the other rectangle's start in proportion. An empty
    dest_rect draws nothing; src_rect has an extent. Raises RuntimeError in a thread with less than 256 KB of stack.

    >>> source = zepbmp.Bitmap.from_array(np.array([[10, 20, 30, 50]], np.uint8), zepbmp.Format.RGB8)
    >>> dest = zepbmp.Bitmap(2, 1, zepbmp.Format.RGB8)
    >>> zepbmp.map_rect(dest, (0, 0, 2, 1), source, (0, 0, 4, 1))
    >>> dest.array.tolist()
    [[15, 40]]
    """
    check_bitmap("dest", dest, (Format.RGB8, *_COLORED))
    same_format("source", check_bitmap("source", source), dest)
    if dest._format is not Format.RGB8:
        same_size("weights", check_bitmap("weights", weights, _WEIGHTS), dest)
    elif weights is not None:
        raise bad_value("weights", weights, "must be None for RGB8 bitmaps")
    distinct(dest=dest, source=source)
    check_field(field, FRAME_OR_FIELD)
    dx0, dy0, dx1, dy1 = _rectangle("dest_rect", dest_rect, "dest", dest)
    sx0, sy0, sx1, sy1 = _rectangle("src_rect", src_rect, "source", source)
    if not (sx1 > sx0 and sy1 > sy0):
        raise bad_value("src_rect", src_rect, "its right and bottom must be above its left and top")
    _stack.check()
    _call["bmp_map_rect"](
        dest._address, _address(weights), dx0, dy0, dx1, dy1, source._address, None, sx0, sy0, sx1, sy1, field
    )
