"""Polygons."""

import numpy as np

import zepbmp
from frames import boat, checkers, corners, detail, dusk, new, project, sea, star, woven
from gallery import picture
from zepbmp import Bitmap, Field, Format, Ramp


@picture("bmp_map_polygon BMP_MAP_ANTIALIAS", alt="A turned picture of the boat lies on the landscape")
def affine():
    """A turned picture.

    Four corners; the same weight at each of them makes the mapping affine.
    """
    frame, boat = dusk(), sea()
    quad = corners(boat, (180, 40), (530, 110), (470, 310), (120, 240))
    zepbmp.map_polygon(frame, boat, quad, antialias=True)
    return frame


@picture(
    "bmp_map_polygon BMP_MAP_ANTIALIAS BmpVertex",
    alt="Three pictures of the boat fly out of the dusk toward the viewer, each in perspective",
)
def perspective():
    """Pictures in perspective.

    A corner's weight is one over its distance. The lower picture's left edge is nearer than its right one.
    """
    frame, boat = dusk(), sea()
    for quad, near in (
        ([(330, 30), (430, 50), (430, 110), (330, 115)], 1.4),
        ([(450, 60), (600, 25), (600, 175), (450, 150)], 0.65),
        ([(50, 70), (330, 130), (330, 270), (50, 330)], 1.8),
    ):
        w = (near, 1, 1, near)
        zepbmp.map_polygon(frame, boat, corners(boat, *quad, w=w), antialias=True)
    return frame


@picture(
    "bmp_map_polygon BMP_MAP_ANTIALIAS",
    zoom=8,
    alt="The corner of a turned picture, enlarged: stairs on the left, smooth edges on the right",
)
def antialias():
    """Without and with anti-aliased edges.

    A corner of a turned picture, enlarged.
    """
    tiles = []
    for smooth in (False, True):
        frame, boat = dusk(), sea()
        quad = corners(boat, (180, 40), (530, 110), (470, 310), (120, 240))
        zepbmp.map_polygon(frame, boat, quad, antialias=smooth)
        tiles.append(detail(frame, 495, 95, 39, 45))
    return tuple(tiles)


@picture(
    "bmp_map_polygon BMP_MAP_NO_FILTER",
    alt="A checkered floor that runs to the horizon: broken into flicker on the left, calm on the right",
)
def floor():
    """Nearest samples, and prefiltered ones.

    A floor to the horizon. On the left each pixel takes the nearest one of the board, on the right the average of a box
    as large as the pixel.
    """
    board = checkers(512, 16)
    tiles = []
    for filtered in (False, True):
        frame = detail(dusk(), 160, 90, 316, 270)
        quad = [(0, 0, 0.08, -60, 120), (512, 0, 0.08, 376, 120), (512, 512, 1, 2600, 420), (0, 512, 1, -2300, 420)]
        zepbmp.map_polygon(frame, board, quad, filter=filtered)
        tiles.append(frame)
    return tuple(tiles)


@picture(
    "bmp_map_polygon BMP_MAP_EXTRA BMP_MAP_SOLID",
    alt="A golden five-pointed star whose heart shows the landscape, an arrow, and a ring of translucent leaves",
)
def fill():
    """Solid fills.

    Any shape: what is enclosed twice is outside, as a star's heart. Levels below full are translucent.
    """
    frame = dusk()
    zepbmp.fill_polygon(frame, 0xFFD98A, star(150, 130, 110))
    zepbmp.fill_polygon(
        frame, 0xBFE3F2, [(300, 90), (400, 90), (400, 50), (480, 120), (400, 190), (400, 150), (300, 150), (330, 120)]
    )
    for leaf in range(9):
        turn = np.pi * (0.1 + leaf / 10)
        tip, side = np.array([np.cos(turn), -np.sin(turn)]), np.array([np.sin(turn), np.cos(turn)]) * 26
        foot = np.array([470.0, 345.0])
        spots = [foot, foot + 60 * tip + side, foot + 125 * tip, foot + 60 * tip - side]
        zepbmp.fill_polygon(frame, 0xF06B4F, [tuple(np.round(s, 2)) for s in spots], level=1800)
    return frame


@picture(
    "bmp_map_polygon BMP_MAP_EXTRA BMP_FMT_A8",
    alt="A moon with a halo and its path of light are tinted into the evening sky",
)
def tint():
    """A tint.

    An 8-bit picture says how far the frame goes toward a colour, 255 = all the way: light, shade and smoke.
    """
    x, y = np.meshgrid(np.arange(128) - 63.5, np.arange(128) - 63.5)
    glow = np.rint(255 * np.clip(1.02 - np.hypot(x, y) / 64, 0, 1) ** 1.6).astype(np.uint8)
    frame, light = dusk(), Bitmap.from_array(glow, Format.A8)
    moon = corners(light, (60, -30), (320, -30), (320, 230), (60, 230))
    path = corners(light, (120, 200), (260, 200), (340, 400), (40, 400))
    zepbmp.tint_polygon(frame, light, 0xFFF6D8, moon)
    zepbmp.tint_polygon(frame, light, 0xFFB070, path)
    return frame


@picture(
    "bmp_map_polygon BMP_FMT_QUAD3",
    alt="A picture of the boat passes through a wall with the dusk: its near half stands before it; beside it depths",
)
def depth():
    """A depth buffer.

    The nearer pixel, with the larger weight, wins: the boat's picture passes through the wall. On the right the buffer.
    """
    frame, buffer = new(width=316, height=280), new(Format.QUAD3, 316, 280)
    wall, door = dusk(), sea()
    straight = corners(wall, (8, 60), (308, 60), (308, 220), (8, 220), w=(1, 1, 1, 1))
    across = corners(door, (50, 10), (266, 90), (266, 190), (50, 270), w=(1.6, 0.62, 0.62, 1.6))
    zepbmp.map_polygon(frame, wall, straight, depth=buffer)
    zepbmp.map_polygon(frame, door, across, depth=buffer)
    greys = np.rint(buffer.depth * 150).clip(0, 255).astype(np.uint8)
    return frame, Bitmap.from_array(greys, Format.RGB8)


@picture(
    "bmp_map_polygon BMP_FMT_YUY2 BMP_FMT_PWRW",
    alt="A flying picture of the boat, beside it the same shape in white on black",
)
def coverage():
    """A coverage plane.

    What a polygon covers is marked in a second bitmap: a weight map for the next composition. The frame is YUY2.
    """
    frame, plane, boat = dusk(Format.YUY2), new(Format.PWRW), sea(Format.YUY2)
    quad = corners(boat, (200, 70), (440, 130), (440, 250), (200, 310), w=(1.9, 1, 1, 1.9))
    zepbmp.map_polygon(frame, boat, quad, coverage=plane, antialias=True)
    return detail(frame, 162, 50, 316, 280), detail(plane, 162, 50, 316, 280)


@picture("bmp_map_polygon BMP_FMT_PWRW", alt="A soft disc of sea, tilted away in perspective, in the landscape")
def mapped_weights():
    """Weights can be mapped, too.

    A soft disc lies down in perspective and becomes the map of a composition.
    """
    disc, weights, frame = new(Format.PWRW, 256, 256), new(Format.PWRW), new()
    zepbmp.alpha_circle(disc, 128, 128, radius=126, feather=30, ramp=Ramp.COSINE)
    quad = corners(disc, (190, 110), (450, 110), (620, 350), (20, 350), w=(0.45, 0.45, 1, 1))
    zepbmp.map_polygon(weights, disc, quad)
    zepbmp.compose(frame, dusk(), sea(), weights)
    return frame


@picture(
    "bmp_map_polygon BMP_FIELD BMP_FIELD_ODD",
    zoom=4,
    alt="A turned boat on even lines only, on odd lines only, and complete",
)
def polygon_fields():
    """A polygon in fields.

    Its even lines, its odd lines, and both: of a source that is not interlaced two calls draw what one
    call draws without the flag.
    """
    tiles = []
    for fields in ([Field.EVEN], [Field.ODD], [Field.EVEN, Field.ODD]):
        frame, source = detail(dusk(), 300, 120, 52, 60), boat()
        for field in fields:
            quad = corners(source, (10, 2), (50, 8), (42, 58), (2, 52))
            zepbmp.map_polygon(frame, source, quad, field=field, antialias=True)
        tiles.append(frame)
    return tuple(tiles)


@picture(
    "bmp_map_polygon BMP_FIELD_ODD",
    zoom=2,
    alt="A boat torn by interlacing, and two clean ones at the two places where its fields saw it",
)
def interlaced_source():
    """One field of an interlaced source.

    The woven frame enlarged as it is, and, created as interlaced, by its even and by its odd field: the lines between
    are interpolated on the way.
    """
    tiles = []
    for interlace, field in ((Field.FRAME, None), (Field.ODD, Field.EVEN), (Field.ODD, Field.ODD)):
        source, frame = woven(interlace), new(width=102, height=117)
        quad = corners(source, (0, 0), (102, 0), (102, 117), (0, 117))
        zepbmp.map_polygon(frame, source, quad, source_field=field)
        tiles.append(frame)
    return tuple(tiles)


@picture(
    "bmp_map_polygon BMP_MAP_ANTIALIAS",
    alt="A cube over the dusk with the boat on its front, a checkerboard on its side and sunset on its top",
)
def cube():
    """A cube.

    Eight points, turned and projected; a corner's weight is one over its distance. Each side that faces the viewer is
    one polygon.
    """
    point = {(x, y, z): project(x, y, z) for x in (-1, 1) for y in (-1, 1) for z in (-1, 1)}
    front = [(-1, -1, -1), (1, -1, -1), (1, 1, -1), (-1, 1, -1)]
    side = [(1, -1, -1), (1, -1, 1), (1, 1, 1), (1, 1, -1)]
    top = [(-1, -1, 1), (1, -1, 1), (1, -1, -1), (-1, -1, -1)]
    frame = dusk()
    for picture, places in ((sea(), front), (checkers(256, 32), side), (dusk(), top)):
        w, x, y = zip(*(point[place] for place in places))
        zepbmp.map_polygon(frame, picture, corners(picture, *zip(x, y), w=w), antialias=True)
    return frame
