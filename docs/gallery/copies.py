"""Fills, copies, blits."""

import zepbmp
from frames import boat, detail, dusk, new, sea, woven
from gallery import picture
from zepbmp import Field


@picture(
    "bmp_clear BMP_FIELD BMP_FIELD_ODD",
    zoom=3,
    alt="The boat three times: as it is, with its even lines black, with its odd lines black",
)
def clear():
    """Clear a field.

    A frame, then without its even lines, then without its odd lines. `BMP_FIELD_ODD` alone clears all lines but the
    first.
    """
    frame, odd_left, even_left = boat(), boat(), boat()
    zepbmp.clear(odd_left, Field.EVEN)
    zepbmp.clear(even_left, Field.ODD)
    return frame, odd_left, even_left


@picture(
    "bmp_copy BMP_FIELD BMP_FIELD_ODD",
    zoom=3,
    alt="Two moments of the boat, and the frame woven of their lines, which looks torn into combs at the sails",
)
def copy_field():
    """Weave two moments into a frame.

    The even lines stay, the odd ones are copied from a second later: that is how an interlaced camera sees.
    """
    early, late, frame = boat(second=1), boat(second=2), boat(second=1)
    zepbmp.copy(frame, late, Field.ODD)
    return early, late, frame


@picture(
    "bmp_interporate BMP_FIELD_ODD",
    zoom=3,
    alt="A frame with torn edges, and two clean ones, in which the boat stands at two places",
)
def interpolate_field():
    """Rebuild a frame from one field.

    A woven frame, then the pictures that its even and its odd lines give: the lines between are averages.
    """
    frame, even, odd = woven(), boat(), boat()
    zepbmp.interpolate_field(even, frame, Field.EVEN)
    zepbmp.interpolate_field(odd, frame, Field.ODD)
    return frame, even, odd


@picture(
    "bmp_blt", alt="A landscape at dusk onto which pieces of the sea are copied; what does not fit is missing"
)
def blit():
    """Copy rectangles.

    Twelve pieces of the boat's picture are put somewhere else. What does not fit is cut off: at the left and top, too,
    it is a piece's right and bottom pixels that are dropped.
    """
    frame, boat = dusk(), sea()
    for column in range(4):
        for line in range(3):
            x, y = -50 + 190 * column, -30 + 145 * line
            zepbmp.blit(frame, x, y, 160, 120, boat, 160 * column, 120 * line)
    return frame


@picture("bmp_blt BMP_FIELD", zoom=4, alt="The boat on every second line of the dusk")
def blit_field():
    """Copy every second line of a rectangle.

    The even lines of the boat are copied over the dusk, whose odd lines stay.
    """
    frame = detail(dusk(), 330, 130, 160, 90)
    zepbmp.blit(frame, 46, 6, 68, 78, boat(), 0, 0, Field.EVEN)
    return frame


@picture("bmp_blt", zoom=10, alt="Four coloured columns on grey; below, the same four repeated over the whole width")
def blit_overlap():
    """Move pixels within a bitmap.

    Four columns of colour. In the lower half each pixel is copied four to the right, onto itself. Words move from left
    to right, so the four repeat: the cheapest way to fill a line with a pattern.
    """
    pattern = new(width=64, height=17)
    pattern.array[:] = 170
    for column, color in enumerate((0x1B1742, 0x8C3B5E, 0xF06B4F, 0xFFD98A)):
        zepbmp.draw_rect(pattern, column, 0, column + 1, 17, color)
    zepbmp.blit(pattern, 4, 9, 60, 8, pattern, 0, 9)
    return pattern
