"""Results against plain NumPy formulas."""

import models
import numpy as np
import pytest
from hypothesis import given
from hypothesis import strategies as st
from strategies import colored, fields, filled, sizes, starts

import zepbmp
from zepbmp import Bitmap, DrawMode, Field, Format, ShapeMode


def expect_lines(dest: Bitmap, before: models.Array, drawn: models.Array, field: Field) -> None:
    """The field's lines are as drawn (which may lack a last column), everything else is as before."""
    expected = before.copy()
    lines = models.lines_of(dest.height, field)
    expected[lines, : drawn.shape[1]] = drawn[lines]
    np.testing.assert_array_equal(dest.array, expected)


@given(sizes, colored, st.sampled_from([Format.PWRW, Format.A8]), fields, starts)
def test_compose_under_a_map(size, format, mask_format, field, seed):
    random = np.random.default_rng(seed)
    dest, src1, src2 = (filled(*size, format, random) for _ in range(3))
    mask = filled(size[0] + 3, size[1] + 1, mask_format, random)
    before = dest.to_array()
    zepbmp.compose(dest, src1, src2, mask, field)
    mix = models.mix_weights if mask_format is Format.PWRW else models.mix_masks
    expect_lines(dest, before, mix(src1.array, src2.array, mask.array, format), field)


@given(sizes, colored, st.sampled_from([Format.PWRW, Format.A8]), starts)
def test_compose_in_place(size, format, mask_format, seed):
    random = np.random.default_rng(seed)
    src1, src2, mask = (filled(*size, one, random) for one in (format, format, mask_format))
    dest = Bitmap(*size, format)
    zepbmp.compose(dest, src1, src2, mask)
    zepbmp.compose(src1, src1, src2, mask)
    np.testing.assert_array_equal(src1.array, dest.array)


@given(sizes, colored, starts)
def test_weights_beyond_full_extrapolate(size, format, seed):
    random = np.random.default_rng(seed)
    dest, src1, src2 = (filled(*size, format, random) for _ in range(3))
    mask = Bitmap.from_array(random.integers(0, 65536, size[::-1]).astype(np.uint16), Format.PWRW)
    zepbmp.compose(dest, src1, src2, mask)
    np.testing.assert_array_equal(dest.array, models.mix_weights(src1.array, src2.array, mask.array, format))


@given(sizes, st.sampled_from(Format), fields, st.integers(0, 4096) | st.sampled_from([0, 2048, 4096]), starts)
def test_compose_level(size, format, field, level, seed):
    random = np.random.default_rng(seed)
    dest, src1, src2 = (filled(*size, format, random) for _ in range(3))
    before = dest.to_array()
    zepbmp.compose_level(dest, src1, src2, level, field)
    drawn = models.mix_level(src1.to_array().view(np.uint8), src2.to_array().view(np.uint8), level)
    expect_lines(dest, before, drawn.view(before.dtype), field)


@given(sizes, colored, fields, st.integers(0, 0xFFFFFF), starts)
def test_compose_color(size, format, field, color, seed):
    random = np.random.default_rng(seed)
    dest, source = (filled(*size, format, random) for _ in range(2))
    mask = filled(*size, Format.PWRW, random)
    before = dest.to_array()
    zepbmp.compose_color(dest, source, mask, color, field=field)
    expect_lines(dest, before, models.mix_color(before, source.array, mask.array, color, format), field)


@given(sizes, colored, fields, st.integers(0, 0xFFFFFF), starts)
def test_compose_color_band(size, format, field, color, seed):
    random = np.random.default_rng(seed)
    dest, src1, src2 = (filled(*size, format, random) for _ in range(3))
    mask1, mask2 = (filled(*size, Format.PWRW, random) for _ in range(2))
    before = dest.to_array()
    zepbmp.compose_color(dest, src1, mask1, color, src2=src2, mask2=mask2, field=field)
    drawn = models.mix_band(src1.array, src2.array, mask1.array, mask2.array, color, format)
    expect_lines(dest, before, drawn, field)


@given(sizes, st.sampled_from(Format), st.sampled_from([Field.EVEN, Field.ODD]), st.booleans(), starts)
def test_interpolate_field(size, format, field, in_place, seed):
    random = np.random.default_rng(seed)
    source = filled(*size, format, random)
    dest = source if in_place else filled(*size, format, random)
    if size[1] == 1 and field is Field.ODD:  # the source has no such line
        expected = dest.to_array()
    else:
        expected = models.interpolated(source.to_array(), field)
    zepbmp.interpolate_field(dest, source, field)
    np.testing.assert_array_equal(dest.array, expected)


@given(sizes, st.sampled_from(Format), fields, starts)
def test_clear_and_copy(size, format, field, seed):
    random = np.random.default_rng(seed)
    bitmap, source = (filled(*size, format, random) for _ in range(2))
    if field is not Field.SKIP_FIRST:
        before = bitmap.to_array()
        zepbmp.copy(bitmap, source, field)
        expect_lines(bitmap, before, source.array, field)
    before = bitmap.to_array()
    zepbmp.clear(bitmap, field)
    expect_lines(bitmap, before, np.zeros_like(before), field)


@given(sizes, sizes, st.sampled_from(Format), st.data(), starts)
def test_blit(dest_size, source_size, format, data, seed):
    random = np.random.default_rng(seed)
    dest, source = filled(*dest_size, format, random), filled(*source_size, format, random)
    dest_x, src_x, width = (data.draw(st.integers(low, 50)) for low in (0, -20, -2))
    dest_y, src_y, height = (data.draw(st.integers(low, 8)) for low in (0, -4, -2))
    expected = dest.to_array()
    for line in range(height):
        for column in range(width):
            x, y, from_x, from_y = dest_x + column, dest_y + line, src_x + column, src_y + line
            if x < dest.width and y < dest.height and 0 <= from_x < source.width and 0 <= from_y < source.height:
                expected[y, x] = source.array[from_y, from_x]
    zepbmp.blit(dest, dest_x, dest_y, width, height, source, src_x, src_y)
    np.testing.assert_array_equal(dest.array, expected)


def test_blit_left_of_the_destination_drops_the_right_pixels():
    source = Bitmap.from_array(np.array([[1, 2, 3]], np.uint8), Format.A8)
    dest = Bitmap(3, 1, Format.A8)
    zepbmp.blit(dest, -1, 0, 3, 1, source)
    assert dest.array.tolist() == [[1, 2, 0]]


@pytest.mark.parametrize("field, expected", [(Field.EVEN, [5, 0, 7, 0]), (Field.ODD, [0, 6, 0, 8])])
def test_blit_of_a_field(field, expected):
    source = Bitmap.from_array(np.array([[5], [6], [7], [8]], np.uint8), Format.A8)
    dest = Bitmap(1, 4, Format.A8)
    zepbmp.blit(dest, 0, 0, 1, 4, source, field=field)
    assert dest.array[:, 0].tolist() == expected


@given(
    sizes,
    st.floats(-10, 50, width=32),
    st.floats(-5, 10, width=32),
    st.floats(0, 30, width=32),
    st.sampled_from([1.0, 0.5, 1.25, 2.0]),
    fields,
    starts,
)
def test_hard_circle(size, cx, cy, radius, aspect, field, seed):
    weights = filled(*size, Format.PWRW, np.random.default_rng(seed))
    before = weights.to_array()
    zepbmp.alpha_circle(weights, cx, cy, radius, aspect=aspect, field=field)
    expect_lines(weights, before, models.hard_circle(*size, cx, cy, radius, aspect), field)


@given(st.floats(6, 20, width=32), st.floats(1, 4, width=32), st.sampled_from(zepbmp.Ramp))
def test_soft_circle_falls_from_full_to_none(radius, feather, ramp):
    weights = Bitmap(48, 48, Format.PWRW)
    zepbmp.alpha_circle(weights, 24, 24, radius, feather, ramp=ramp)
    np.testing.assert_array_equal(weights.array, weights.array[::-1, ::-1])
    right = weights.array[24, 24:].astype(int)
    assert right[0] == 4096 and right[-1] == 0 and (np.diff(right) <= 0).all()
    assert (right[: int(radius - feather) - 1] == 4096).all() and (right[int(radius) + 2 :] == 0).all()


@given(
    st.integers(-128, 600),
    st.integers(-128, 400),
    st.integers(64, 900),
    st.integers(64, 900),
    st.sampled_from(ShapeMode),
    st.sampled_from([Field.FRAME, Field.EVEN, Field.ODD]),
    starts,
)
def test_alpha_rect(x, y, width, height, mode, field, seed):
    weights = filled(9, 7, Format.PWRW, np.random.default_rng(seed))
    before = weights.to_array()
    numbers = [value / 64 for value in (x, y, width, height)]
    zepbmp.alpha_rect(weights, *numbers, mode=mode, field=field)
    shape = models.box(9, 7, *numbers)
    drawn = np.maximum(before, shape) if mode is ShapeMode.MAX else before + shape
    drawn[shape == 4096] = 4096
    expect_lines(weights, before, drawn, field)


def test_rounded_rect_is_symmetric_and_lacks_its_corners():
    weights = Bitmap(20, 16, Format.PWRW)
    zepbmp.alpha_rect(weights, 2, 2, 16, 12, radius=(6, 5))
    shape = weights.array
    np.testing.assert_array_equal(shape, shape[::-1, ::-1])
    assert shape[2, 2] == 0 and (shape[8, 2:18] == 4096).all() and (shape[2:14, 10] == 4096).all()
    assert 0 < np.count_nonzero((shape > 0) & (shape < 4096))


@given(
    st.sampled_from([(Format.RGBQ, DrawMode.SET), (Format.PWRW, DrawMode.SET)])
    | st.sampled_from([(Format.RGB8, DrawMode.OR), (Format.RGB8, DrawMode.AND)]),
    st.tuples(*(st.integers(-5, 45) for _ in range(4))),
    st.integers(0, 255),
    starts,
)
def test_draw_rect(how, edges, color, seed):
    format, mode = how
    left, top, right, bottom = edges
    bitmap = filled(40, 6, format, np.random.default_rng(seed))
    expected = bitmap.to_array()
    inside = expected[max(top, 0) : max(bottom, 0), max(left, 0) : max(right, 0)]
    if mode is DrawMode.OR:
        inside |= color
    elif mode is DrawMode.AND:
        inside &= color
    else:
        inside[:] = [color, 0, 0, 0] if format is Format.RGBQ else color
    zepbmp.draw_rect(bitmap, left, top, right, bottom, color, mode)
    np.testing.assert_array_equal(bitmap.array, expected)


@given(st.tuples(*(st.integers(0, 15) for _ in range(4))), st.integers(0, 255), st.sampled_from(DrawMode), starts)
def test_draw_line(ends, color, mode, seed):
    x, y, x1, y1 = ends
    bitmap = filled(16, 16, Format.RGB8, np.random.default_rng(seed))
    expected = bitmap.to_array()
    across, down = abs(x1 - x), abs(y1 - y)
    steps = [(np.sign(x1 - x), 0), (0, np.sign(y1 - y))]
    (major, along), (minor, aside) = ((across, steps[0]), (down, steps[1]))[:: 1 if across >= down else -1]
    error = major >> 1
    for _ in range(major):
        old = int(expected[y, x])
        expected[y, x] = {
            DrawMode.SET: color,
            DrawMode.OR: old | color,
            DrawMode.AND: old & color,
            DrawMode.XOR: old ^ color,
        }[mode]
        x, y, error = x + along[0], y + along[1], error - minor
        if error <= 0:
            x, y, error = x + aside[0], y + aside[1], error + major
    zepbmp.draw_line(bitmap, *ends, color, mode)
    np.testing.assert_array_equal(bitmap.array, expected)


@given(st.integers(0, 2**32 - 1))
def test_translate_color(color):
    red, green, blue = color & 255, color >> 8 & 255, color >> 16 & 255
    assert zepbmp.translate_color(color) == blue | green << 8 | red << 16


@given(st.sampled_from([Format.YUY2, Format.RGBQ, Format.PWRW]), sizes, st.booleans(), starts)
def test_map_polygon_onto_itself_is_a_copy(format, size, filter, seed):
    width, height = size[0] + size[0] % 2, size[1]
    source = filled(width, height, format, np.random.default_rng(seed))
    dest, plane = Bitmap(width, height, format), Bitmap(width, height, Format.A8)
    corners = [(x, y, 1, x, y) for x, y in ((0, 0), (width, 0), (width, height), (0, height))]
    zepbmp.map_polygon(dest, source, corners, coverage=plane, filter=False)
    np.testing.assert_array_equal(dest.array, source.array)
    assert (plane.array == zepbmp.MASK_FULL).all()
    if filter:  # whole texels lie under whole pixels; only clamped positions at the ends mix two of them
        zepbmp.map_polygon(dest, source, corners)
        difference = dest.array[1:-1, 2:-2].astype(int) - source.array[1:-1, 2:-2]
        assert (difference == 0).all()


def test_map_polygon_with_depth_keeps_what_is_nearer():
    red, blue = (Bitmap.from_array(np.full((4, 4, 4), value, np.uint8), Format.RGBQ) for value in (10, 20))
    dest, depth = Bitmap(4, 4, Format.RGBQ), Bitmap(4, 4, Format.QUAD3)
    near = [(0, 0, 2, 0, 0), (2, 0, 2, 2, 0), (2, 4, 2, 2, 4), (0, 4, 2, 0, 4)]
    far = [(0, 0, 1, 0, 0), (4, 0, 1, 4, 0), (4, 4, 1, 4, 4), (0, 4, 1, 0, 4)]
    zepbmp.map_polygon(dest, red, near, depth=depth)
    zepbmp.map_polygon(dest, blue, far, depth=depth)
    assert dest.array[:, :, 0].tolist() == [[10, 10, 20, 20]] * 4
    assert depth.depth.tolist() == [[2, 2, 1, 1]] * 4


@pytest.mark.parametrize("source_field, expected", [(None, 10), (Field.EVEN, 10), (Field.ODD, 20)])
def test_map_polygon_samples_a_field_of_an_interlaced_source(source_field, expected):
    frame = np.zeros((8, 8, 4), np.uint8)
    frame[0::2], frame[1::2] = 10, 20
    source = Bitmap.from_array(frame, Format.RGBQ, interlace=Field.EVEN)
    dest = Bitmap(8, 8, Format.RGBQ)
    corners = [(x, y, 1, x, y) for x, y in ((0, 0), (8, 0), (8, 8), (0, 8))]
    zepbmp.map_polygon(dest, source, corners, source_field=source_field)
    assert (dest.array == expected).all()


@pytest.mark.parametrize("format, color", [(Format.RGBQ, 0x04030201), (Format.YUY2, 0x010203)])
def test_fill_polygon(format, color):
    dest, plane = Bitmap(8, 4, format), Bitmap(8, 4, Format.PWRW)
    zepbmp.fill_polygon(dest, color, [(2, 1), (6, 1), (6, 3), (2, 3)], coverage=plane)
    expected = np.zeros_like(dest.array)
    expected[1:3, 2:6] = models.color_bytes(color, dest.array.shape, format)[1:3, 2:6]
    np.testing.assert_array_equal(dest.array, expected)
    assert plane.array[1:3, 2:6].min() == 4096 and plane.array.astype(int).sum() == 8 * 4096


@given(st.integers(0, 255), st.integers(0, 0xFFFFFFFF), starts)
def test_tint_polygon(strength, color, seed):
    dest = filled(8, 4, Format.RGBQ, np.random.default_rng(seed))
    before = dest.to_array().astype(int)
    map = Bitmap.from_array(np.full((4, 8), strength, np.uint8), Format.A8)
    corners = [(x, y, 1, x, y) for x, y in ((0, 0), (8, 0), (8, 4), (0, 4))]
    zepbmp.tint_polygon(dest, map, color, corners)
    toward = models.color_bytes(color, before.shape, Format.RGBQ)
    expected = (before * (255 - strength) + toward * strength) // 255
    expected[:, :, 3] = before[:, :, 3]
    np.testing.assert_array_equal(dest.array, expected)


@given(st.integers(1, 12), st.integers(1, 6), st.sampled_from([1, 2, 4]), st.sampled_from([1, 2]), starts)
def test_map_rect_averages_boxes(width, height, across, down, seed):
    random = np.random.default_rng(seed)
    for format in (Format.RGB8, Format.RGBQ):
        source = filled(width * across, height * down, format, random)
        dest = Bitmap(width, height, format)
        weights = None if format is Format.RGB8 else Bitmap(width, height, Format.PWRW)
        zepbmp.map_rect(dest, (0, 0, width, height), source, (0, 0, source.width, source.height), weights)
        boxes = source.to_array().reshape(height, down, width, across, -1).astype(int).sum(axis=(1, 3))
        expected = (boxes // (across * down)).reshape(dest.array.shape)
        if format is Format.RGBQ:
            expected[:, :, 3] = 0
            assert weights is not None and (weights.array == 4096).all()
        np.testing.assert_array_equal(dest.array, expected)


def test_map_rect_draws_the_lines_of_a_field():
    source = Bitmap.from_array(np.full((4, 4, 2), 77, np.uint8), Format.YUY2)
    dest, weights = Bitmap(4, 4, Format.YUY2), Bitmap(4, 4, Format.PWRW)
    zepbmp.map_rect(dest, (0, 0, 4, 4), source, (0, 0, 4, 4), weights, field=Field.ODD)
    assert dest.array[:, 2, 0].tolist() == [0, 77, 0, 77]
