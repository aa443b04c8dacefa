"""Composition."""

import numpy as np

import zepbmp
from frames import HEIGHT, WIDTH, burst, detail, dusk, new, sea
from gallery import picture
from zepbmp import Field, Format, Ramp


@picture(
    "bmp_compose bmp_alpha_circle BMP_FMT_PWRW",
    alt="A round window with a soft edge in a landscape at dusk shows the boat at sea",
)
def wipe():
    """A soft round wipe.

    A weight for each pixel says how much of the second frame is seen. A disc makes the weights.
    """
    weights, frame = new(Format.PWRW), new()
    zepbmp.alpha_circle(weights, 320, 200, radius=165, feather=60, ramp=Ramp.COSINE)
    zepbmp.compose(frame, dusk(), sea(), weights)
    return frame


@picture(
    "bmp_compose BMP_FMT_A8",
    alt="A window in the shape of a burst of rays in the landscape at dusk shows the boat at sea",
)
def mask():
    """A mask of 8 bits.

    Weights can be masks of a byte, 128 = full. This one is the coverage that a filled polygon leaves.
    """
    stencil, mask, frame = new(), new(Format.A8), new()
    zepbmp.fill_polygon(stencil, 0, burst(312, 205, 185, 130, 16), coverage=mask)
    zepbmp.compose(frame, dusk(), sea(), mask)
    return frame


@picture(
    "bmp_compose BMP_COMPOSE_LEVEL BMP_INTEGER",
    alt="Five strips, from the dusk on the left to the sea on the right, in equal steps",
)
def level():
    """A dissolve.

    One level for the whole frame: 0, 1024, 2048, 3072, 4096 from left to right.
    """
    strips = []
    for step in range(5):
        frame = new()
        zepbmp.compose_level(frame, dusk(), sea(), 1024 * step)
        strips.append(detail(frame, 200 + 50 * step, 0, 120, HEIGHT))
    return tuple(strips)


@picture("bmp_compose_color", alt="The round window has a golden rim with soft edges")
def band():
    """A coloured rim.

    Two discs: within the smaller one is the sea, outside the larger one the dusk, and between them the colour.
    """
    inner, outer, frame = new(Format.PWRW), new(Format.PWRW), new()
    zepbmp.alpha_circle(inner, 320, 200, radius=135, feather=6, ramp=Ramp.COSINE)
    zepbmp.alpha_circle(outer, 320, 200, radius=160, feather=20, ramp=Ramp.COSINE)
    zepbmp.compose_color(frame, dusk(), inner, 0xF7C65A, src2=sea(), mask2=outer)
    return frame


@picture("bmp_compose_color", alt="The boat in a pool of light; the rest of the sea sinks into dark blue")
def spotlight():
    """A spotlight.

    One frame and a colour: the weight says how much is left of the frame.
    """
    weights, frame = new(Format.PWRW), new()
    zepbmp.alpha_circle(weights, 312, 215, radius=190, feather=170, ramp=Ramp.COSINE)
    zepbmp.compose_color(frame, sea(), weights, 0x081428)
    return frame


@picture(
    "bmp_compose BMP_FIELD",
    zoom=4,
    alt="A soft seam between dusk and sea, on every second line only",
)
def compose_field():
    """One field at a time.

    Only the even lines are mixed. An interlaced wipe moves on between the two fields of a frame.
    """
    frame, weights = dusk(), new(Format.PWRW)
    weights.array[:] = np.clip((np.arange(WIDTH) - 290) * 100, 0, 4096)
    zepbmp.compose(frame, dusk(), sea(), weights, Field.EVEN)
    return detail(frame, 250, 190, 160, 72)


@picture("bmp_compose", zoom=2, alt="Three times the boat: blurred, as it is, and crisper than it was")
def beyond_full():
    """Weights beyond full.

    From a blurred picture to a sharp one is a mix; going further than full, to a weight of 8192, is sharper than sharp.
    """
    sharp = detail(sea(), 230, 150, 104, 120)
    small, blurred, crisp = new(width=52, height=60), new(width=104, height=120), new(width=104, height=120)
    zepbmp.map_rect(small, (0, 0, 52, 60), sharp, (0, 0, 104, 120), new(Format.PWRW, 52, 60))
    zepbmp.map_rect(blurred, (0, 0, 104, 120), small, (0, 0, 52, 60), new(Format.PWRW, 104, 120))
    weights = new(Format.PWRW, 104, 120)
    weights.array[:] = 8192
    zepbmp.compose(crisp, blurred, sharp, weights)
    return blurred, sharp, crisp
