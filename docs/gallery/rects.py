"""Rectangles, resampled."""

import zepbmp
from frames import HEIGHT, WIDTH, boat, corners, dusk, new, sea, woven, zone_plate
from gallery import picture
from zepbmp import Bitmap, Field, Format


@picture(
    "bmp_map_rect BMP_MAP_NO_FILTER",
    zoom=2,
    alt="Rings that become finer outward: on the left with false circles in the corners, on the right fading to grey",
)
def area():
    """Nearest samples, and areas.

    A test picture of ever finer rings, reduced to two fifths. Nearest samples show circles that are not there; the
    exact average of all that a pixel covers fades to grey.
    """
    plate = zone_plate(390, 390)
    nearest, area = new(width=156, height=156), new(width=156, height=156)
    quad = corners(plate, (0, 0), (156, 0), (156, 156), (0, 156))
    zepbmp.map_polygon(nearest, plate, quad, filter=False)
    zepbmp.map_rect(area, (0, 0, 156, 156), plate, (0, 0, 390, 390), new(Format.PWRW, 156, 156))
    return nearest, area


@picture(
    "bmp_map_rect bmp_alpha_circle",
    alt="Sixteen small pictures: a round window grows until the whole landscape has become the sea",
)
def contact_sheet():
    """A contact sheet.

    Any scale at any place: sixteen moments of a wipe at 152.5 x 82.5 pixels, each at its own fraction of a pixel.
    """
    sheet, coverage, frame, weights = new(), new(Format.PWRW), new(), new(Format.PWRW)
    sheet.array[:] = 255
    for k in range(16):
        zepbmp.alpha_circle(weights, 320, 200, radius=10 + 27 * k, feather=20)
        zepbmp.compose(frame, dusk(), sea(), weights)
        left, top = 6 + 158.5 * (k % 4), 6 + 88.5 * (k // 4)
        place = (left, top, left + 152.5, top + 82.5)
        zepbmp.map_rect(sheet, place, frame, (0, 0, WIDTH, HEIGHT), coverage)
    zepbmp.compose_color(sheet, sheet, coverage, 0xFFFFFF)
    return sheet


@picture(
    "bmp_map_rect",
    zoom=2,
    alt="The tip of the small sail, enlarged: square pixels of exactly equal size with blended borders",
)
def enlarge():
    """Enlarged by 7.3.

    Every source pixel has exactly the same size; where two meet within a pixel, that one is their mix.
    """
    frame, coverage = new(width=312, height=175), new(Format.PWRW, 312, 175)
    part = (20, 18, 20 + 312 / 7.3, 18 + 175 / 7.3)
    zepbmp.map_rect(frame, (0, 0, 312, 175), boat(), part, coverage)
    return frame


@picture(
    "bmp_map_rect BMP_FMT_PWRW",
    zoom=20,
    alt="Two bars that meet within a column of pixels, and the weights: the shared column is full",
)
def seam():
    """No seam.

    Two rectangles meet at 7.4, within a column. Each adds its part to the weights, and the column becomes their exact
    mix. On the right the weights after the first one.
    """
    frame, weights, after_first = new(width=15, height=9), new(Format.PWRW, 15, 9), new(Format.PWRW, 15, 9)
    red, blue = new(width=4, height=4), new(width=4, height=4)
    red.array[:], blue.array[:] = (60, 80, 230, 0), (200, 120, 40, 0)
    zepbmp.map_rect(frame, (1, 1, 7.4, 8), red, (0, 0, 4, 4), weights)
    zepbmp.copy(after_first, weights)
    zepbmp.map_rect(frame, (7.4, 1, 14, 8), blue, (0, 0, 4, 4), weights)
    return frame, after_first


@picture(
    "bmp_map_rect bmp_compose",
    zoom=20,
    alt="A light square at four positions; its borders become greyer and whiter with the fraction of a pixel",
)
def placement():
    """At any place.

    The same square, each time a quarter of a pixel further to the right and an eighth lower. The weights say how much
    of a pixel is covered; composed with them, borders are smooth.
    """
    frame, weights, night = new(width=32, height=8), new(Format.PWRW, 32, 8), new(width=32, height=8)
    night.array[:], square = 40, new(width=1, height=1)
    square.array[:] = 250
    for k in range(4):
        left, top = 2 + 7.25 * k, 2 + 0.125 * k
        zepbmp.map_rect(frame, (left, top, left + 4, top + 4), square, (0, 0, 1, 1), weights)
    zepbmp.compose(frame, night, frame, weights)
    return frame


@picture("bmp_map_rect BMP_FMT_RGB8", zoom=10, alt="A grey boat of 8 bits, whose border fades toward black")
def indices():
    """Eight bits.

    RGB8 counts as intensities and has no weight map: a pixel that is covered in part fades toward 0.
    """
    luma = Bitmap.from_array(sea(Format.YUY2).array[..., 0], Format.RGB8)
    frame = new(Format.RGB8, 64, 36)
    zepbmp.map_rect(frame, (2.5, 2.5, 61.5, 33.5), luma, (200, 165, 430, 286))
    return frame


@picture(
    "bmp_map_rect BMP_FIELD BMP_FIELD_ODD",
    zoom=3,
    alt="A torn boat enlarged as a frame, and two clean ones made of its even and of its odd field",
)
def rect_fields():
    """Field by field.

    An interlaced frame enlarged as a whole tears further apart. One field of it, drawn on that field's lines, keeps its
    place; here the lines between are interpolated afterwards.
    """
    source, whole, coverage = woven(Field.ODD), new(width=68, height=108), new(Format.PWRW, 68, 108)
    tiles = [whole]
    zepbmp.map_rect(whole, (0, 0, 68, 108), source, (0, 0, 68, 78), coverage)
    for field in (Field.EVEN, Field.ODD):
        frame, coverage = new(width=68, height=108), new(Format.PWRW, 68, 108)
        zepbmp.map_rect(frame, (0, 0, 68, 108), source, (0, 0, 68, 78), coverage, field=field)
        zepbmp.interpolate_field(frame, frame, field)
        tiles.append(frame)
    return tuple(tiles)
