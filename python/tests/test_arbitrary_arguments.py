"""Whatever the arguments: an operation raises TypeError or ValueError, or makes a call that keeps every duty.

Calls that fit have none, one or all of their arguments replaced by what may not fit. The guard of duties.py judges
them; run under AddressSanitizer, so does each access of the library.
"""

import inspect
import re
from collections import Counter

import duties
import numpy as np
import pytest
from hypothesis import given, settings
from hypothesis import strategies as st

import zepbmp
from zepbmp import Bitmap, DrawMode, Field, Format, Ramp, ShapeMode

INF, NAN = float("inf"), float("nan")
WIDTH, HEIGHT = 24, 7
YUY2, RGBQ, PWRW, QUAD3, RGB8, A8 = (
    Format.YUY2, Format.RGBQ, Format.PWRW, Format.QUAD3, Format.RGB8, Format.A8
)  # fmt: skip

OPERATIONS = {
    name: thing
    for name, thing in ((name, getattr(zepbmp, name)) for name in zepbmp.__all__)
    if inspect.isfunction(thing) and name != "display"
}

# Formats that go together.
FITTING: dict[str, list[dict[str, Format | None]]] = {
    "clear": [{"bitmap": YUY2}],
    "copy": [{"dest": PWRW, "source": YUY2}, {"dest": A8, "source": A8}],
    "blit": [{"dest": PWRW, "source": YUY2}, {"dest": RGBQ, "source": RGBQ}],
    "interpolate_field": [
        {"dest": A8, "source": A8},
        {"dest": PWRW, "source": YUY2},
        {"dest": RGBQ, "source": QUAD3},
        {"dest": RGB8, "source": RGB8},
    ],
    "draw_rect": [{"bitmap": RGB8}, {"bitmap": RGBQ}, {"bitmap": PWRW}],
    "draw_line": [{"bitmap": RGB8}],
    "translate_color": [{}],
    "set_palette": [{"bitmap": RGB8}],
    "compose": [
        {"dest": RGBQ, "src1": RGBQ, "src2": RGBQ, "mask": PWRW},
        {"dest": YUY2, "src1": YUY2, "src2": YUY2, "mask": A8},
    ],
    "compose_level": [{"dest": RGBQ, "src1": RGBQ, "src2": RGBQ}, {"dest": A8, "src1": A8, "src2": A8}],
    "compose_color": [
        {"dest": YUY2, "src1": YUY2, "src2": YUY2, "mask1": PWRW, "mask2": PWRW},
        {"dest": RGBQ, "src1": RGBQ, "src2": None, "mask1": PWRW, "mask2": None},
    ],
    "alpha_rect": [{"weights": PWRW}],
    "alpha_circle": [{"weights": PWRW}],
    "map_polygon": [
        {"dest": YUY2, "source": YUY2, "coverage": A8, "depth": QUAD3},
        {"dest": RGBQ, "source": RGBQ, "coverage": PWRW, "depth": QUAD3},
        {"dest": RGBQ, "source": RGBQ, "coverage": None, "depth": None},
        {"dest": PWRW, "source": PWRW, "coverage": PWRW, "depth": None},
    ],
    "tint_polygon": [{"dest": RGBQ, "strength": A8, "coverage": A8}, {"dest": YUY2, "strength": A8, "coverage": PWRW}],
    "fill_polygon": [{"dest": RGBQ, "coverage": PWRW}, {"dest": YUY2, "coverage": A8}],
    "map_rect": [
        {"dest": YUY2, "source": YUY2, "weights": PWRW},
        {"dest": RGBQ, "source": RGBQ, "weights": PWRW},
        {"dest": RGB8, "source": RGB8, "weights": None},
    ],
}
POOL = {format: [Bitmap(WIDTH, HEIGHT, format) for _ in range(6)] for format in Format}


def some(*values):
    return st.sampled_from(values)


# ---------------------------------------------------------------- what fits

_position = st.floats(-50, 60, width=32) | some(0.0, 24.0, 174762.0, -174762.0)
_vertex = st.tuples(_position, _position, some(1.0, 1.0, 0.5, 3.0, 1e-6), _position, _position)
_across, _down = st.floats(0, WIDTH, width=32), st.floats(0, HEIGHT, width=32)
_rectangle = st.tuples(st.floats(-9, WIDTH, width=32), st.floats(-9, HEIGHT, width=32), _across, _down)
_size = st.floats(0, 60, width=32)

GOOD = {
    "field": some(Field.EVEN, Field.ODD),
    "source_field": some(None, Field.EVEN, Field.ODD),
    "ramp": st.sampled_from(Ramp),
    "vertices": st.lists(_vertex, max_size=7),
    "dest_rect": _rectangle,
    "src_rect": _rectangle,
    "antialias": st.booleans(),
    "filter": st.booleans(),
    "color": st.integers(0, 255),
    "level": st.integers(0, 4096),
    "index": st.integers(0, 255),
    **{name: st.integers(0, WIDTH - 1) for name in ("x0", "x1")},
    **{name: st.integers(0, HEIGHT - 1) for name in ("y0", "y1")},
    **{name: st.integers(-30, 60) for name in ("dest_x", "dest_y", "src_x", "src_y", "left", "top", "right", "bottom")},
    **{name: _position for name in ("x", "y", "cx", "cy")},
    **{name: _size for name in ("feather", "width", "height")},
    "aspect": st.floats(0.125, 4, width=32),
    ("blit", "width"): st.integers(-3, 60),
    ("blit", "height"): st.integers(-3, 12),
    ("alpha_rect", "mode"): st.sampled_from(ShapeMode),
    ("alpha_rect", "radius"): st.none() | st.tuples(_size, _size),
    ("alpha_circle", "radius"): _size,
    "mode": st.sampled_from(DrawMode),
}

# ---------------------------------------------------------------- what may not fit

_integer = (
    st.integers(-8, 48)
    | some(HEIGHT, WIDTH, 255, 256, 4096, 4097, 65536, 2**24, -(2**31), 2**31 - 1, 2**31, 2**32 - 1, 2**32)
    | st.integers()
)
_float = (
    st.floats(-60, 60)
    | some(0.0, -0.0, 1e-46, 1e-45, 3.4e38, 3.5e38, INF, NAN, 2.0**18, 2.0**19, 2.0**25)
    | st.floats()
)
_number = _integer | _float
_any_number = st.tuples(*(_number for _ in range(5)))
_corners = (
    st.lists(st.tuples(_position, _position), min_size=2, max_size=6)
    | st.lists(_vertex, max_size=4)
    | st.lists(_any_number, min_size=3, max_size=5)
    | st.tuples(_vertex, _vertex, st.tuples(_position, _position, some(0.0, -0.0, -1.0, 1e-46, NAN), _size, _size))
)
_rectangles = (
    st.tuples(*(_number for _ in range(4)))
    | st.tuples(_across, _down, some(0.0, 24.0, 24.0001, 25.0, -1e-3), some(0.0, 7.0, 7.001, 8.0, -1e-3))
    | st.lists(_across, max_size=5)
)
_near_miss = st.builds(Bitmap, st.integers(WIDTH - 9, WIDTH + 9), st.integers(HEIGHT - 1, HEIGHT + 1), some(*Format))
_any_bitmap = st.builds(
    Bitmap,
    st.integers(0, 40),
    st.integers(0, 12),
    some(*Format),
    some(Field.FRAME, Field.EVEN, Field.ODD),
    st.booleans(),
)
_junk = st.none() | some("", "7", b"1", 1j) | st.just(np.zeros((4, 4), np.uint8)) | st.just([]) | st.booleans()
_flag = st.sampled_from([*Field, *DrawMode, *ShapeMode, *Ramp, *Format, 0, 1, 2, 3])


def wild(name, bitmaps):
    """Of a bitmap: another one of the call, one of another format, one that is nearly large enough, any other."""
    if name in bitmaps:
        others = st.sampled_from([one for one in bitmaps.values() if one is not None])
        same_size = st.sampled_from([POOL[format][0] for format in Format])
        return others | same_size | _near_miss | _any_bitmap | _junk
    if name in ("field", "source_field", "mode", "ramp"):
        return _flag | _junk
    if name == "vertices":
        return _corners | _junk
    if name in ("dest_rect", "src_rect"):
        return _rectangles | _junk
    return _number | _number | _junk


@st.composite
def calls(draw, name):
    formats = draw(st.sampled_from(FITTING[name]))
    bitmaps = {
        parameter: None if format is None else POOL[format][place]
        for place, (parameter, format) in enumerate(formats.items())
    }
    parameters = inspect.signature(OPERATIONS[name]).parameters
    replaced = draw(st.sampled_from([(), tuple(parameters), *((one,) for one in parameters)]))
    arguments = {}
    for parameter, description in parameters.items():
        if parameter in replaced:
            arguments[parameter] = draw(wild(parameter, bitmaps))
        elif parameter in bitmaps:
            arguments[parameter] = bitmaps[parameter]
        elif description.default is description.empty or draw(st.booleans()):
            arguments[parameter] = draw(GOOD[(name, parameter) if (name, parameter) in GOOD else parameter])
    return arguments


@pytest.mark.parametrize("name", OPERATIONS)
def test_no_call_breaks_a_duty(name, monkeypatch):
    count = duties.install(monkeypatch)
    outcomes = Counter()

    @settings(max_examples=3 * settings.default.max_examples)
    @given(calls(name))
    def attempt(arguments):
        before = sum(count.values())
        try:
            OPERATIONS[name](**arguments)
            outcomes["called"] += 1
            assert sum(count.values()) == before + 1
        except (TypeError, ValueError) as error:
            outcomes["refused"] += 1
            assert re.match(r"(the \w+ of )?[\w\[\]]+ is .+: .+", str(error)), error
            assert sum(count.values()) == before, "the library was called"

    attempt()
    assert min(outcomes["called"], outcomes["refused"]) >= 30, outcomes


@given(_number | _junk, _number | _junk, some(*Format) | _junk, some(*Field) | _junk)
def test_a_bitmap_has_the_size_asked_for_or_is_refused(width, height, format, interlace):
    if all(isinstance(one, int) and one > 1 for one in (width, height)) and width * height > 10**7:
        return  # memory that the machine may have
    try:
        bitmap = Bitmap(width, height, format, interlace, zero=False)
    except (TypeError, ValueError, MemoryError):
        return
    assert (bitmap.width, bitmap.height, bitmap.format, bitmap.interlace) == (width, height, format, interlace)
    assert bitmap.array.shape[:2] == (height, width)
