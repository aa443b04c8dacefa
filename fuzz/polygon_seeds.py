"""Inputs of map_polygon_fuzzer: one for each combination that takes a way of its own through the library."""

import struct

YUY2, RGBQ, PWRW, A8 = 0, 1, 2, 7
FIELD_ODD, FIELD, EXTRA, SOLID, ANTIALIAS, NO_FILTER = 1, 2, 16, 32, 0x4000, 0x8000
PLANES = {None: 0, A8: 0, PWRW: 1}
WITH_PLANE, ONLY_SECOND, WITH_DEPTH, SECOND_TEXTURE = 1, 2, 4, 8

WIDTH, HEIGHT = 35, 9
SOURCE_WIDTH, SOURCE_HEIGHT = 70, 40

# A ratio of each class of columns and of lines.
COLUMNS = (1.0, 1.5, 2.25, 3.0, 6.0)
LINES = (0.9, 1.25, 2.0, 3.0)


def fixed(value):
    return struct.pack("<h", max(-32768, min(32767, round(value * 64))))


def tame(u, v, w, x, y):
    return b"\0" + b"".join(fixed(value) for value in (u, v, w, x, y))


def raw(*values):
    return b"\1" + struct.pack("<5f", *values)


def raw_source(u, v, w, x, y):
    return b"\2" + struct.pack("<3f", u, v, w) + fixed(x) + fixed(y)


def turned_quad(across=1.0, down=1.0, weights=(1, 1, 1, 1)):
    """A slightly turned rectangle that reaches over the destination's edges."""
    places = ((-3.3, 1.2), (30.1, -2.4), (35.6, 8.7), (2.2, 12.3))
    sides = ((0, 0), (33, 0), (33, 11), (0, 11))
    return b"".join(tame(1 + u * across, 1 + v * down, w, x, y)
                    for (x, y), (u, v), w in zip(places, sides, weights))


PERSPECTIVE = (1.0, 1.5, 0.75, 2.0)
STAR = b"".join(tame(x, y, 1, x, y) for x, y in ((16, 0.3), (25, 8.6), (1.5, 3.4), (31, 3.1), (7, 8.2)))
LEVEL_EDGES = b"".join(tame(x, y, 1, x, y) for x, y in ((0.2, 3.1), (32.7, 3.3), (32.1, 7.9), (0.4, 7.2)))
TRIANGLES = b"".join(tame(x, y, 1, x, y) for x, y in ((0.5, 0.5), (8.5, 0.5), (4.5, 8.5), (20, 3), (30, 8), (12, 10)))
HOSTILE = {
    "huge": (raw(0, 0, 1, -1e9, -1e9), raw(60, 0, 1, 1e9, -1e9), raw(60, 40, 1, 1e9, 1e9), raw(0, 40, 1, -1e9, 1e9)),
    "beyond": (raw(0, 0, 1, -1e30, -1), raw(60, 0, 1, 1e30, 3), raw(60, 40, 1, 1e30, 15)),
    "nan_u": (raw_source(float("nan"), 0, 1, 0, 0), raw(60, 0, 1, 33, 0), raw(60, 40, 1, 35, 9)),
    "nan_w": (raw_source(0, 0, float("nan"), 0, 0), raw(60, 0, 1, 33, 0), raw(60, 40, 1, 35, 9)),
    "inf_v": (raw_source(0, float("inf"), 1, 0, 0), raw(60, 0, 2, 33, 0), raw(60, 40, 1, 35, 9)),
    "inf_x": (raw(0, 0, 1, float("inf"), 0), raw(60, 0, 1, 33, 0), raw(60, 40, 1, 35, 9)),
    "zero_w": (raw(0, 0, 0, 0, 0), raw(60, 0, 1, 33, 0), raw(60, 40, -1, 35, 9)),
    "denormal": (raw(1e-40, 0, 1e-40, 0, 0), raw(60, 0, 2e-40, 33, 0), raw(60, 40, 1e-40, 35, 9)),
}


def call(polygon, texture=RGBQ, dest=None, plane=None, roles=0, flags=0, width=WIDTH, height=HEIGHT,
         source_width=SOURCE_WIDTH, source_height=SOURCE_HEIGHT, color=0x40C08020, level=4096, tables=0,
         create_flags=0, scale=1):
    dest = texture if dest is None else dest
    if plane is not None:
        roles |= WITH_PLANE
    formats = texture | dest << 3 | PLANES[plane] << 6
    roles |= create_flags << 4 | scale << 6
    return struct.pack("<BBHBBBBIBhB", formats, roles, flags, width, height, source_width, source_height, color, 7,
                       level, tables) + polygon


def inputs():
    colours = {"yuy2": YUY2, "rgbq": RGBQ}
    textures = dict(colours, pwrw=PWRW)
    planes = {"": None, "_a8": A8, "_pwrw": PWRW}

    for name, texture in textures.items():
        for h, across in enumerate(COLUMNS):
            for v, down in enumerate(LINES):
                for tables in range(4):
                    at = f"{name}_{1 + 5 * v + h}_tables{tables}"
                    yield f"affine_{at}", call(turned_quad(across, down), texture, tables=tables)
                    quad = turned_quad(across, down, PERSPECTIVE)
                    yield f"perspective_{at}", call(quad, texture, tables=tables)
                    if texture != PWRW:
                        yield f"depth_{at}", call(quad, texture, roles=WITH_DEPTH, tables=tables)
        for tables in range(4):
            for way, weights in (("affine", (1, 1, 1, 1)), ("perspective", PERSPECTIVE)):
                yield f"nearest_{way}_{name}_tables{tables}", call(turned_quad(weights=weights), texture,
                                                                   flags=NO_FILTER, tables=tables)
            yield f"nearest_depth_{name}_tables{tables}", call(turned_quad(weights=PERSPECTIVE), texture,
                                                               roles=WITH_DEPTH, flags=NO_FILTER, tables=tables)
        for suffix, plane in planes.items():
            yield f"plane_{name}{suffix}", call(turned_quad(), texture, plane=plane)
            for kind, polygon in (("quad", turned_quad()), ("star", STAR), ("level", LEVEL_EDGES), ("self", TRIANGLES)):
                for tables in range(4):
                    yield f"antialiased_{kind}_{name}{suffix}_tables{tables}", call(
                        polygon, texture, plane=plane, flags=ANTIALIAS, tables=tables)
        for create_flags in (2, 3):
            for field in (0, FIELD_ODD, FIELD, FIELD | FIELD_ODD):
                yield f"field_{name}_{create_flags}_{field}", call(turned_quad(), texture, flags=field,
                                                                   create_flags=create_flags)
                yield f"field_antialiased_{name}_{create_flags}_{field}", call(
                    turned_quad(), texture, flags=field | ANTIALIAS, create_flags=create_flags)
        for width, height in ((0, 0), (1, 1), (2, 1), (1, 2), (3, 2), (5, 5), (9, 5)):
            for across in (0.1, 1.5, 6.0):
                yield f"tiny_{name}_{width}x{height}_{across}", call(turned_quad(across, across), texture,
                                                                     source_width=width, source_height=height)
        for source_width in (248, 255):
            yield f"wide_{name}_{source_width}", call(turned_quad(100, 0.1), texture, source_width=source_width,
                                                      source_height=2, scale=2)
        for kind, corners in HOSTILE.items():
            for flags in (0, NO_FILTER, ANTIALIAS):
                yield f"{kind}_{name}_{flags:x}", call(b"".join(corners), texture, flags=flags)
        yield f"roles_second_destination_{name}", call(turned_quad(), texture, roles=ONLY_SECOND)
        yield f"roles_second_texture_{name}", call(turned_quad(), texture, roles=SECOND_TEXTURE)

    for name, dest in colours.items():
        for h, across in enumerate(COLUMNS):
            for v, down in enumerate(LINES):
                for tables in range(4):
                    yield f"tint_{name}_{1 + 5 * v + h}_tables{tables}", call(
                        turned_quad(across, down, PERSPECTIVE), A8, dest, flags=EXTRA, tables=tables)
        yield f"tint_nearest_{name}", call(turned_quad(), A8, dest, plane=PWRW, flags=EXTRA | NO_FILTER)
        for suffix, plane in planes.items():
            for level in (4096, 2048, 0, -5, 5000):
                for kind, polygon in (("quad", turned_quad()), ("star", STAR), ("level", LEVEL_EDGES),
                                      ("self", TRIANGLES)):
                    for tables in range(4):
                        yield f"solid_{kind}_{name}{suffix}_{level}_tables{tables}", call(
                            polygon, dest=dest, plane=plane, flags=EXTRA | SOLID, level=level, tables=tables)
        for kind, corners in HOSTILE.items():
            yield f"{kind}_solid_{name}", call(b"".join(corners), dest=dest, flags=EXTRA | SOLID)

    for texture in range(8):
        for dest in range(8):
            for flags in (0, EXTRA, ANTIALIAS):
                yield f"pair_{texture}_{dest}_{flags:x}", call(turned_quad(), texture, dest, plane=PWRW, flags=flags)
    corners = b"".join(tame(i % 60, i % 40, 1, 16 + 15 * (1 if i % 3 else -1) * (i % 7) / 7, i % 9)
                       for i in range(150))
    yield "many_corners", call(corners, flags=ANTIALIAS)
    yield "many_corners_solid", call(corners, flags=EXTRA | SOLID)
