"""Every argument is checked before a call, and the message says what is wrong."""

import re
from fractions import Fraction

import duties
import numpy as np
import pytest

import zepbmp
from zepbmp import Bitmap, DrawMode, Field, Format, ShapeMode, _library

YUY2, RGBQ, PWRW, QUAD3, RGB8, A8 = (
    Bitmap(6, 4, one) for one in (Format.YUY2, Format.RGBQ, Format.PWRW, Format.QUAD3, Format.RGB8, Format.A8)
)
RGBQ2, SMALL, LARGE = Bitmap(6, 4, Format.RGBQ), Bitmap(5, 4, Format.RGBQ), Bitmap(9, 9, Format.RGBQ)
RGB8_2, SMALL_PWRW, LARGE_PWRW = Bitmap(6, 4, Format.RGB8), Bitmap(6, 3, Format.PWRW), Bitmap(7, 4, Format.PWRW)
SMALL_QUAD4 = Bitmap(6, 3, Format.QUAD4)
CORNERS = [(0, 0, 1, 0, 0), (4, 0, 1, 4, 0), (4, 4, 1, 4, 4)]
INF, NAN = float("inf"), float("nan")

BAD_CALLS = [
    (TypeError, "width", "an integer", lambda: Bitmap(1.5, 2, Format.A8)),
    (TypeError, "width", "a plain integer", lambda: Bitmap(Format.A8, 2, Format.A8)),
    (ValueError, "width", "0..2147483647", lambda: Bitmap(-1, 2, Format.A8)),
    (ValueError, "height", "0..2147483647", lambda: Bitmap(1, 2**31, Format.A8)),
    (ValueError, "width", "shorter than 2^31", lambda: Bitmap(2**29, 1, Format.RGBQ)),
    (TypeError, "format", "zepbmp.Format", lambda: Bitmap(1, 2, 7)),
    (TypeError, "interlace", "zepbmp.Field", lambda: Bitmap(1, 2, Format.A8, 2)),
    (ValueError, "interlace", "FRAME or EVEN or ODD", lambda: Bitmap(1, 2, Format.A8, Field.SKIP_FIRST)),
    (TypeError, "zero", "True or False", lambda: Bitmap(1, 2, Format.A8, zero=1)),
    (ValueError, "x", "0..5", lambda: A8.pointer(6, 0)),
    (ValueError, "y", "0..3", lambda: A8.pointer(0, -1)),
    (ValueError, "bitmap", "QUAD3 or QUAD4 or QUAD5", lambda: RGBQ.depth),
    (TypeError, "array", "uint8", lambda: A8.copy_from(np.zeros((4, 6), np.int8))),
    (ValueError, "array", "(4, 6)", lambda: A8.copy_from(np.zeros((4, 5), np.uint8))),
    (TypeError, "array", "NumPy array", lambda: A8.copy_to(bytearray(24))),
    (ValueError, "array", "writeable", lambda: A8.copy_to(np.broadcast_to(np.uint8(0), (4, 6)))),
    (ValueError, "array", "column index", lambda: Bitmap.from_array(np.zeros(4, np.uint8), Format.A8)),
    (ValueError, "array", "shape", lambda: Bitmap.from_array(np.zeros((4, 4, 3), np.uint8), Format.RGBQ)),
    (TypeError, "bitmap", "zepbmp.Bitmap", lambda: zepbmp.clear(np.zeros((4, 4)))),
    (TypeError, "bitmap", "zepbmp.Bitmap", lambda: zepbmp.clear(None)),
    (TypeError, "field", "zepbmp.Field", lambda: zepbmp.clear(A8, 1)),
    (ValueError, "source", "bytes a pixel", lambda: zepbmp.copy(A8, RGBQ)),
    (ValueError, "source", "as wide and high", lambda: zepbmp.copy(SMALL, RGBQ)),
    (ValueError, "field", "FRAME or EVEN or ODD", lambda: zepbmp.copy(A8, A8, Field.SKIP_FIRST)),
    (ValueError, "source", "bytes a pixel", lambda: zepbmp.blit(A8, 0, 0, 1, 1, RGBQ)),
    (ValueError, "dest_x", "-2147483648..2147483646", lambda: zepbmp.blit(A8, 2**31 - 1, 0, 1, 1, A8)),
    (ValueError, "dest_y", "-2147483648..0", lambda: zepbmp.blit(A8, 0, 1, 1, 2**31 - 1, A8)),
    (ValueError, "src_x", "-2147483643..2147483647", lambda: zepbmp.blit(A8, 0, 0, -5, 1, A8, -(2**31))),
    (ValueError, "src_y", "-2147483648..2147483642", lambda: zepbmp.blit(A8, 0, 0, 1, 5, A8, 0, 2**31 - 5)),
    (ValueError, "width", "-2147483648..2147483647", lambda: zepbmp.blit(A8, 0, 0, 2**31, 1, A8)),
    (TypeError, "src_y", "an integer", lambda: zepbmp.blit(A8, 0, 0, 1, 1, A8, 0, 0.0)),
    (ValueError, "source", "bytes a pixel", lambda: zepbmp.interpolate_field(A8, RGBQ, Field.ODD)),
    (ValueError, "source", "at least as wide and high", lambda: zepbmp.interpolate_field(LARGE, RGBQ, Field.ODD)),
    (ValueError, "field", "EVEN or ODD", lambda: zepbmp.interpolate_field(A8, A8, Field.FRAME)),
    (ValueError, "bitmap", "RGBQ or PWRW or RGB8", lambda: zepbmp.draw_rect(YUY2, 0, 0, 1, 1, 0)),
    (ValueError, "mode", "OR or AND", lambda: zepbmp.draw_rect(RGB8, 0, 0, 1, 1, 0)),
    (ValueError, "mode", "SET", lambda: zepbmp.draw_rect(RGBQ, 0, 0, 1, 1, 0, DrawMode.OR)),
    (ValueError, "color", "0..255", lambda: zepbmp.draw_rect(RGB8, 0, 0, 1, 1, 256, DrawMode.OR)),
    (ValueError, "color", "0..4096", lambda: zepbmp.draw_rect(PWRW, 0, 0, 1, 1, 4097)),
    (ValueError, "color", "0..4294967295", lambda: zepbmp.draw_rect(RGBQ, 0, 0, 1, 1, -1)),
    (ValueError, "bitmap", "RGB8", lambda: zepbmp.draw_line(A8, 0, 0, 1, 1, 0)),
    (ValueError, "x1", "0..5", lambda: zepbmp.draw_line(RGB8, 0, 0, 6, 1, 0)),
    (ValueError, "y0", "0..3", lambda: zepbmp.draw_line(RGB8, 0, -1, 5, 1, 0)),
    (TypeError, "mode", "zepbmp.DrawMode", lambda: zepbmp.draw_line(RGB8, 0, 0, 5, 1, 0, ShapeMode.MAX)),
    (ValueError, "color", "0..4294967295", lambda: zepbmp.translate_color(2**32)),
    (ValueError, "bitmap", "RGB8", lambda: zepbmp.set_palette(RGBQ, 0, 0)),
    (ValueError, "index", "0..255", lambda: zepbmp.set_palette(RGB8, 256, 0)),
    (ValueError, "color", "0..16777215", lambda: zepbmp.set_palette(RGB8, 0, 2**24)),
    (ValueError, "width", "0..2147483647", lambda: zepbmp.display(1, 0, 0, -1, 1, A8)),
    (ValueError, "device_context", "1..", lambda: zepbmp.display(0, 0, 0, 1, 1, A8)),
    (ValueError, "src_x", "0..6", lambda: zepbmp.display(1, 0, 0, 1, 1, A8, 7)),
    (ValueError, "start_line", "0..", lambda: zepbmp.display(1, 0, 0, 1, 1, A8, 0, -1)),
    (ValueError, "dest", "YUY2 or RGBQ", lambda: zepbmp.compose(A8, A8, A8, PWRW)),
    (ValueError, "src1", "the format of dest", lambda: zepbmp.compose(RGBQ, QUAD3, RGBQ, PWRW)),
    (ValueError, "src2", "at least as wide and high", lambda: zepbmp.compose(RGBQ, RGBQ, SMALL, PWRW)),
    (ValueError, "mask", "PWRW or A8", lambda: zepbmp.compose(RGBQ, RGBQ, RGBQ, RGB8)),
    (ValueError, "mask", "PWRW or A8", lambda: zepbmp.compose(RGBQ, RGBQ, RGBQ, RGBQ)),
    (ValueError, "mask", "at least as wide and high", lambda: zepbmp.compose(RGBQ, RGBQ, RGBQ, SMALL_PWRW)),
    (TypeError, "mask", "zepbmp.Bitmap", lambda: zepbmp.compose(RGBQ, RGBQ, RGBQ, 2048)),
    (ValueError, "level", "0..4096", lambda: zepbmp.compose_level(A8, A8, A8, 4097)),
    (TypeError, "level", "an integer", lambda: zepbmp.compose_level(A8, A8, A8, 0.5)),
    (ValueError, "src2", "the format of dest", lambda: zepbmp.compose_level(A8, A8, RGB8, 0)),
    (ValueError, "src2", "go together", lambda: zepbmp.compose_color(RGBQ, RGBQ, PWRW, 0, mask2=PWRW)),
    (ValueError, "mask2", "go together", lambda: zepbmp.compose_color(RGBQ, RGBQ, PWRW, 0, src2=RGBQ)),
    (ValueError, "mask1", "PWRW", lambda: zepbmp.compose_color(RGBQ, RGBQ, A8, 0)),
    (TypeError, "mask1", "zepbmp.Bitmap", lambda: zepbmp.compose_color(RGBQ, RGBQ, None, 0)),
    (
        ValueError,
        "mask2",
        "at least as wide",
        lambda: zepbmp.compose_color(RGBQ, RGBQ, PWRW, 0, src2=RGBQ, mask2=SMALL_PWRW),
    ),
    (ValueError, "color", "0..16777215", lambda: zepbmp.compose_color(YUY2, YUY2, PWRW, 2**24)),
    (ValueError, "weights", "PWRW", lambda: zepbmp.alpha_rect(YUY2, 0, 0, 1, 1)),
    (ValueError, "x", "finite", lambda: zepbmp.alpha_rect(PWRW, NAN, 0, 1, 1)),
    (ValueError, "y", "finite", lambda: zepbmp.alpha_rect(PWRW, 0, 1e39, 1, 1)),
    (ValueError, "y", "finite", lambda: zepbmp.alpha_rect(PWRW, 0, 10**400, 1, 1)),
    (ValueError, "x", "-33554432..33554432", lambda: zepbmp.alpha_rect(PWRW, -4e7, 0, 1, 1)),
    (ValueError, "width", "0..33554432", lambda: zepbmp.alpha_rect(PWRW, 0, 0, -1, 1)),
    (ValueError, "height", "0..33554432", lambda: zepbmp.alpha_rect(PWRW, 0, 0, 1, 4e7)),
    (ValueError, "radius[0]", "0..33554432", lambda: zepbmp.alpha_rect(PWRW, 0, 0, 1, 1, radius=(-1, 1))),
    (TypeError, "height", "a number", lambda: zepbmp.alpha_rect(PWRW, 0, 0, 1, "1")),
    (ValueError, "mode", "MAX", lambda: zepbmp.alpha_rect(PWRW, 0, 0, 1, 1, mode=ShapeMode.ADD, radius=(1, 1))),
    (TypeError, "radius", "a pair", lambda: zepbmp.alpha_rect(PWRW, 0, 0, 1, 1, radius=1)),
    (ValueError, "radius[1]", "finite", lambda: zepbmp.alpha_rect(PWRW, 0, 0, 1, 1, radius=(1, INF))),
    (ValueError, "field", "FRAME or EVEN or ODD", lambda: zepbmp.alpha_rect(PWRW, 0, 0, 1, 1, field=Field.SKIP_FIRST)),
    (ValueError, "cx", "-1073741824..1073741824", lambda: zepbmp.alpha_circle(PWRW, 2e9, 0, 1)),
    (ValueError, "cy", "-1073741824..1073741824", lambda: zepbmp.alpha_circle(PWRW, 0, -2e9, 1)),
    (ValueError, "radius", "-1073741824..1073741824", lambda: zepbmp.alpha_circle(PWRW, 0, 0, 2e9)),
    (ValueError, "feather", "finite", lambda: zepbmp.alpha_circle(PWRW, 0, 0, 1, INF)),
    (ValueError, "aspect", "above 0", lambda: zepbmp.alpha_circle(PWRW, 0, 0, 1, 0, 0)),
    (ValueError, "aspect", "above 0", lambda: zepbmp.alpha_circle(PWRW, 0, 0, 1, 0, 1e-50)),
    (TypeError, "ramp", "zepbmp.Ramp", lambda: zepbmp.alpha_circle(PWRW, 0, 0, 1, ramp="cosine")),
    (ValueError, "dest", "YUY2 or RGBQ or PWRW", lambda: zepbmp.map_polygon(A8, A8, CORNERS)),
    (ValueError, "source", "the format of dest", lambda: zepbmp.map_polygon(YUY2, RGBQ, CORNERS)),
    (ValueError, "source", "the format of dest", lambda: zepbmp.map_polygon(RGBQ, PWRW, CORNERS)),
    (ValueError, "source", "another bitmap than dest", lambda: zepbmp.map_polygon(RGBQ, RGBQ, CORNERS)),
    (ValueError, "depth", "QUAD3 or QUAD4 or QUAD5", lambda: zepbmp.map_polygon(RGBQ, RGBQ2, CORNERS, depth=LARGE)),
    (ValueError, "depth", "at least as wide", lambda: zepbmp.map_polygon(RGBQ, RGBQ2, CORNERS, depth=SMALL_QUAD4)),
    (ValueError, "coverage", "another bitmap", lambda: zepbmp.map_polygon(PWRW, LARGE_PWRW, CORNERS, coverage=PWRW)),
    (ValueError, "dest", "YUY2 or RGBQ", lambda: zepbmp.map_polygon(PWRW, LARGE_PWRW, CORNERS, depth=QUAD3)),
    (ValueError, "coverage", "PWRW or A8", lambda: zepbmp.map_polygon(RGBQ, RGBQ2, CORNERS, coverage=RGB8)),
    (ValueError, "coverage", "at least", lambda: zepbmp.map_polygon(RGBQ, RGBQ2, CORNERS, coverage=SMALL_PWRW)),
    (ValueError, "antialias", "filter", lambda: zepbmp.map_polygon(RGBQ, LARGE, CORNERS, antialias=True, filter=False)),
    (ValueError, "antialias", "depth", lambda: zepbmp.map_polygon(RGBQ, LARGE, CORNERS, antialias=True, depth=QUAD3)),
    (TypeError, "filter", "True or False", lambda: zepbmp.map_polygon(RGBQ, LARGE, CORNERS, filter=0)),
    (
        ValueError,
        "source_field",
        "must be that of",
        lambda: zepbmp.map_polygon(RGBQ, LARGE, CORNERS, field=Field.ODD, source_field=Field.EVEN),
    ),
    (
        ValueError,
        "source_field",
        "EVEN or ODD",
        lambda: zepbmp.map_polygon(RGBQ, LARGE, CORNERS, source_field=Field.FRAME),
    ),
    (ValueError, "vertices", "every x", lambda: zepbmp.map_polygon(RGBQ, LARGE, [(0, 0, 1, 524289, 0)])),
    (ValueError, "vertices", "every y", lambda: zepbmp.map_polygon(RGBQ, LARGE, [(0, 0, 1, 0, -524289)])),
    (
        ValueError,
        "vertices",
        "every y",
        lambda: zepbmp.map_polygon(RGBQ, LARGE, [(0, 0, 1, 0, 174763)], antialias=True),
    ),
    (ValueError, "vertices", "every y", lambda: zepbmp.fill_polygon(RGBQ, 0, [(0, 174763)])),
    (ValueError, "vertices", "five numbers", lambda: zepbmp.map_polygon(RGBQ, LARGE, [(0, 0)] * 3)),
    (ValueError, "vertices", "as long as", lambda: zepbmp.map_polygon(RGBQ, LARGE, [(0, 0), (1,), (1, 2)])),
    (TypeError, "vertices", "rows of numbers", lambda: zepbmp.map_polygon(RGBQ, LARGE, "corners")),
    (TypeError, "vertices", "rows of numbers", lambda: zepbmp.map_polygon(RGBQ, LARGE, np.ones((3, 5), complex))),
    (ValueError, "vertices", "finite", lambda: zepbmp.map_polygon(RGBQ, LARGE, np.full((3, 5), 1e39))),
    (ValueError, "vertices", "above 0", lambda: zepbmp.map_polygon(RGBQ, LARGE, np.full((3, 5), 1e-50))),
    (ValueError, "strength", "A8", lambda: zepbmp.tint_polygon(RGBQ, RGB8, 0, CORNERS)),
    (ValueError, "dest", "YUY2 or RGBQ", lambda: zepbmp.tint_polygon(PWRW, A8, 0, CORNERS)),
    (ValueError, "coverage", "another", lambda: zepbmp.tint_polygon(RGBQ, A8, 0, CORNERS, coverage=A8)),
    (ValueError, "level", "0..4096", lambda: zepbmp.fill_polygon(RGBQ, 0, CORNERS, level=4097)),
    (ValueError, "dest", "YUY2 or RGBQ", lambda: zepbmp.fill_polygon(A8, 0, CORNERS)),
    (ValueError, "field", "FRAME or", lambda: zepbmp.fill_polygon(RGBQ, 0, CORNERS, field=Field.SKIP_FIRST)),
    (ValueError, "vertices", "five numbers", lambda: zepbmp.fill_polygon(RGBQ, 0, [(0, 0, 1), (1, 1, 1)])),
    (ValueError, "dest", "YUY2 or RGBQ or RGB8", lambda: zepbmp.map_rect(A8, (0,) * 4, A8, (0,) * 4)),
    (ValueError, "source", "the format of dest", lambda: zepbmp.map_rect(RGBQ, (0,) * 4, QUAD3, (0,) * 4, PWRW)),
    (ValueError, "source", "another bitmap", lambda: zepbmp.map_rect(RGB8, (0,) * 4, RGB8, (0,) * 4)),
    (ValueError, "weights", "None", lambda: zepbmp.map_rect(RGB8, (0,) * 4, RGB8_2, (0,) * 4, PWRW)),
    (TypeError, "weights", "zepbmp.Bitmap", lambda: zepbmp.map_rect(RGBQ, (0,) * 4, RGBQ2, (0,) * 4)),
    (ValueError, "weights", "PWRW", lambda: zepbmp.map_rect(RGBQ, (0,) * 4, RGBQ2, (0,) * 4, YUY2)),
    (ValueError, "weights", "as wide and high", lambda: zepbmp.map_rect(RGBQ, (0,) * 4, RGBQ2, (0,) * 4, LARGE_PWRW)),
    (TypeError, "dest_rect", "four numbers", lambda: zepbmp.map_rect(RGB8, (0, 0, 1), RGB8_2, (0, 0, 1, 1))),
    (TypeError, "src_rect", "four numbers", lambda: zepbmp.map_rect(RGB8, (0, 0, 1, 1), RGB8_2, 1)),
    (ValueError, "the right of dest_rect", "0..6", lambda: zepbmp.map_rect(RGB8, (0, 0, 6.5, 1), RGB8_2, (0, 0, 1, 1))),
    (ValueError, "the bottom of src_rect", "0..4", lambda: zepbmp.map_rect(RGB8, (0, 0, 1, 1), RGB8_2, (0, 0, 1, 5))),
    (ValueError, "the left of dest_rect", "finite", lambda: zepbmp.map_rect(RGB8, (NAN, 0, 1, 1), RGB8_2, (0,) * 4)),
    (ValueError, "src_rect", "above its left", lambda: zepbmp.map_rect(RGB8, (0,) * 4, RGB8_2, (1, 0, 1, 1))),
    (ValueError, "src_rect", "above its left", lambda: zepbmp.map_rect(RGB8, (0,) * 4, RGB8_2, (0, 2, 1, 1))),
    (TypeError, "field", "zepbmp.Field", lambda: zepbmp.blit(A8, 0, 0, 1, 1, A8, field=3)),
    (TypeError, "mode", "zepbmp.DrawMode", lambda: zepbmp.draw_rect(RGBQ, 0, 0, 1, 1, 0, 0)),
    (TypeError, "field", "zepbmp.Field", lambda: zepbmp.compose(RGBQ, RGBQ, RGBQ, PWRW, 3)),
    (TypeError, "field", "zepbmp.Field", lambda: zepbmp.compose_level(RGBQ, RGBQ, RGBQ, 0, 3)),
    (TypeError, "field", "zepbmp.Field", lambda: zepbmp.compose_color(RGBQ, RGBQ, PWRW, 0, field=3)),
    (ValueError, "dest", "YUY2 or RGBQ", lambda: zepbmp.compose_color(A8, A8, PWRW, 0)),
    (TypeError, "mode", "zepbmp.ShapeMode", lambda: zepbmp.alpha_rect(PWRW, 0, 0, 1, 1, mode=16)),
    (ValueError, "weights", "PWRW", lambda: zepbmp.alpha_circle(YUY2, 0, 0, 1)),
    (TypeError, "field", "zepbmp.Field", lambda: zepbmp.alpha_circle(PWRW, 0, 0, 1, field=3)),
    (TypeError, "field", "zepbmp.Field", lambda: zepbmp.map_polygon(RGBQ, LARGE, CORNERS, field=3)),
    (TypeError, "antialias", "True or False", lambda: zepbmp.map_polygon(RGBQ, LARGE, CORNERS, antialias=1)),
    (TypeError, "filter", "True or False", lambda: zepbmp.tint_polygon(RGBQ, A8, 0, CORNERS, filter=None)),
    (TypeError, "field", "zepbmp.Field", lambda: zepbmp.map_rect(RGB8, (0,) * 4, RGB8_2, (0,) * 4, field=3)),
    (ValueError, "the top of src_rect", "-524288..", lambda: zepbmp.map_rect(RGB8, (0,) * 4, RGB8_2, (0, -1e6, 1, 1))),
]


@pytest.mark.parametrize("kind, argument, rule, call", BAD_CALLS, ids=range(len(BAD_CALLS)))
def test_a_bad_argument_is_named_with_its_value_and_the_rule(kind, argument, rule, call, monkeypatch):
    count = duties.install(monkeypatch)
    with pytest.raises(kind, match=rf"^{re.escape(argument)} is .+: .*{re.escape(rule)}"):
        call()
    assert not count, "the library was called"


@pytest.mark.parametrize(
    "value, text",
    [
        (10**5000, "an integer of 16610 bits"),
        (Fraction(10**5000), "<Fraction instance at .*>"),
        (np.ma.array([[1, 2], [3, 4]]), r"masked_array\( ?data=\[\[1, 2\], \[3, 4\]\], mask.*"),
        ("x" * 10**6, "'xxxx.*xxxx'"),
    ],
    ids=["integer", "fraction", "array", "string"],
)
def test_a_message_is_one_short_line(value, text):
    with pytest.raises((TypeError, ValueError), match=f"^left is {text}(: | \\()") as raised:
        zepbmp.draw_rect(RGBQ, value, 0, 1, 1, 0)
    assert len(str(raised.value)) < 200 and len(str(raised.value).splitlines()) == 1


def test_what_encloses_nothing_draws_nothing():
    dest, blank = Bitmap(6, 4, Format.RGBQ), np.zeros((4, 6, 4))
    for corners in ([], np.zeros((0, 5)), CORNERS[:1], CORNERS[:2]):
        zepbmp.map_polygon(dest, RGBQ2, corners)
        zepbmp.fill_polygon(dest, 0xFFFFFFFF, corners)
    zepbmp.fill_polygon(dest, 0xFFFFFFFF, CORNERS, level=0)
    zepbmp.draw_rect(dest, 3, 0, 3, 4, 0xFFFFFFFF)
    np.testing.assert_array_equal(dest.array, blank)


def test_no_memory_for_a_palette(monkeypatch):
    bitmap = Bitmap(1, 1, Format.RGB8)
    monkeypatch.setitem(_library.call, "bmp_set_palette", lambda *arguments: None)
    with pytest.raises(MemoryError, match="display header of <zepbmp.Bitmap 1 x 1 RGB8>"):
        zepbmp.set_palette(bitmap, 0, 0)


def test_display_needs_windows():
    with pytest.raises(NotImplementedError, match="only Windows"):
        zepbmp.display(1, 0, 0, 6, 4, A8)


@pytest.mark.parametrize("number", [True, np.int8(1), np.uint64(1), np.float32(1), 1, 1.0])
def test_numbers_of_any_kind_are_taken(number):
    zepbmp.alpha_circle(PWRW, number, number, number, number, number)
    if not isinstance(number, (float, np.float32)):
        zepbmp.draw_rect(RGBQ, number, number, number, number, number)


def test_the_guard_stops_bad_calls(monkeypatch):
    duties.install(monkeypatch)
    call = _library.call
    for name, arguments in (
        ("bmp_clear", (None, 0)),
        ("bmp_draw_line", (RGB8._address, 0, 0, 6, 0, 0, 0)),
        ("bmp_compose", (RGBQ._address, RGBQ._address, SMALL._address, PWRW._address, 0)),
        ("bmp_compose", (RGBQ._address, RGBQ._address, RGBQ._address, RGB8._address, 0)),
        ("bmp_map_rect", (RGB8._address, None, 0, 0, 7, 1, RGB8_2._address, None, 0, 0, 1, 1, 0)),
        ("bmp_alpha_circle", (A8._address, 0, 0, 0, 0, 1, 0)),
    ):
        with pytest.raises(duties.BrokenDuty):
            call[name](*arguments)
