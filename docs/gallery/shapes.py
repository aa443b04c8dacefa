"""Shapes in weight maps."""

import numpy as np

import zepbmp
from frames import WIDTH, dusk, new, sea
from gallery import picture
from zepbmp import Field, Format, Ramp, ShapeMode


@picture(
    "bmp_alpha_rect BMP_FMT_PWRW",
    zoom=20,
    alt="A white rectangle in a grid of pixels; its edge pixels are grey as far as they are covered",
)
def rect_edges():
    """Edges between pixels.

    The rectangle begins a quarter into its first column and half into its first line. A pixel gets the weight of the
    part that is covered.
    """
    weights = new(Format.PWRW, 32, 12)
    zepbmp.alpha_rect(weights, 4.25, 2.5, 23.5, 7.25)
    return weights


@picture(
    "bmp_alpha_rect BMP_SHAPE_ADD BMP_SHAPE_MAX",
    alt="Two rectangles of half weight overlap: added, the overlap is full; with the larger one kept, no overlap shows",
)
def rect_modes():
    """Add, or keep the larger weight.

    Columns half as high as a line give half weights, which add up on the left. On the right the larger one is kept.
    """
    tiles = []
    for mode in (ShapeMode.ADD, ShapeMode.MAX):
        weights = new(Format.PWRW, 312, 200)
        for y in range(30, 130):
            zepbmp.alpha_rect(weights, 30, y, 160, 0.5, mode=mode)
        for y in range(70, 170):
            zepbmp.alpha_rect(weights, 120, y, 160, 0.5, mode=mode)
        tiles.append(weights)
    return tuple(tiles)


@picture(
    "bmp_alpha_rect BMP_SHAPE_ELLIPTIC BMP_SHAPE_ELLIPTIC_PLAIN",
    alt="Four windows, with small, with flat, with fully round corners, and an ellipse, show the sea",
)
def elliptic_corners():
    """Elliptical corners.

    Radii across and down. Radii that are too large shrink together, as at the third one; half the rectangle gives an
    ellipse.
    """
    weights, frame = new(Format.PWRW), new()
    for k, radius in enumerate([(10, 10), (50, 20), (999, 999), (135, 72.5)]):
        left, top = 40 + 290 * (k % 2), 25 + 165 * (k // 2)
        zepbmp.alpha_rect(weights, left, top, 270, 145, radius=radius)
    zepbmp.compose(frame, dusk(), sea(), weights)
    return frame


@picture(
    "bmp_alpha_circle BMP_SHAPE_COSINE",
    alt="Three discs: with a hard edge, with a soft edge that begins abruptly, with one that begins gently",
)
def circles():
    """Discs.

    A hard edge; a soft one as a straight ramp; a soft one as a raised cosine, which has no visible beginning.
    """
    hard, linear, cosine = (new(Format.PWRW, 208, 208) for _ in range(3))
    zepbmp.alpha_circle(hard, 104, 104, radius=96)
    zepbmp.alpha_circle(linear, 104, 104, radius=96, feather=70)
    zepbmp.alpha_circle(cosine, 104, 104, radius=96, feather=70, ramp=Ramp.COSINE)
    return hard, linear, cosine


@picture(
    "bmp_alpha_circle BMP_SHAPE_COSINE",
    alt="Two curves over a soft edge: a straight slope, and an S that leaves and arrives level",
)
def ramps():
    """The two ramps as curves.

    The weights along one line through a disc: a linear ramp in orange, a raised cosine in blue.
    """
    chart = new()
    chart.array[:] = 250
    for ramp, color in ((Ramp.LINEAR, 0xE8862E), (Ramp.COSINE, 0x2A6FDB)):
        line = new(Format.PWRW, WIDTH, 1)
        zepbmp.alpha_circle(line, 20, 0.5, radius=580, feather=520, ramp=ramp)
        curve = [(x + 0.5, 330 - int(w) * 300 / 4096) for x, w in enumerate(line.array[0])]
        back = [(x, y + 4) for x, y in reversed(curve)]
        zepbmp.fill_polygon(chart, color, curve + back)
    return chart


@picture("bmp_alpha_circle", zoom=20, alt="A small disc in a grid of pixels with grey pixels along its rim")
def hard_edge():
    """A hard edge is anti-aliased.

    A radius of 4.6 pixels: 4 x 4 samples of a pixel decide how much of it is inside.
    """
    weights = new(Format.PWRW, 32, 12)
    zepbmp.alpha_circle(weights, 16, 6, radius=4.6)
    return weights


@picture(
    "bmp_alpha_circle BMP_FIELD BMP_FIELD_ODD",
    zoom=8,
    alt="A disc of only even lines, one of only odd lines, and a flat one of half the lines",
)
def circle_fields():
    """Discs in fields.

    Drawn on the even lines, on the odd lines, and, with lines two pixels high, into a bitmap that holds one field.
    """
    even, odd, field = new(Format.PWRW, 26, 26), new(Format.PWRW, 26, 26), new(Format.PWRW, 26, 13)
    zepbmp.alpha_circle(even, 13, 13, radius=12, field=Field.EVEN)
    zepbmp.alpha_circle(odd, 13, 13, radius=12, field=Field.ODD)
    zepbmp.alpha_circle(field, 13, 13, radius=12, aspect=2)
    return even, odd, field
