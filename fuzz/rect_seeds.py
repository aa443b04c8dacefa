"""Inputs of map_rect_fuzzer: one for each combination that takes a way of its own through the library."""

import struct

FIELD_ODD, FIELD = 1, 2
FORMATS = {"yuy2": 0, "rgbq": 1, "rgb8": 2}
ANY_FORMAT, WRONG_MAP, SOURCE_SIZE, SMALLER_MAP, LARGER_MAP = range(27, 32)
EMPTY_MAP, FULL_MAP, THIN_MAP, LARGEST_MAP, NOISE_MAP = range(5)
ANY_SIDES, ANY_STARTS = 1, 2
DEST_TO_EDGE, DEST_FROM_EDGE, SOURCE_TO_EDGE, SOURCE_ANYWHERE = 0x10, 0x20, 0x40, 0x80
WHOLE = DEST_TO_EDGE | DEST_FROM_EDGE | SOURCE_TO_EDGE

# As in the fuzzer.
RATIOS = ("1", "2", "3to2", "4to3", "3", "4", "8", "16to9", "fraction", "half", "3to4", "tenth", "none", "50", "5to4",
          "inverted", "inverted_fraction")


def wide(hundreds):
    """131 columns for each, 4 lines at most."""
    return 223 + hundreds


def inside(value):
    return struct.pack("<I", round(value * 64))[:3]


def fixed(value):
    return struct.pack("<h", round(value * 64))


def whole(ratio):
    """The whole destination, and as much of the source's end as the ratio asks for."""
    return bytes((WHOLE, ratio))


def part(dest_end, dest_length, source_end, ratio):
    return b"\0" + inside(dest_end) + inside(source_end) + fixed(dest_length) + bytes((ratio,))


def apart(dest_end, dest_length, source_end, source_start):
    return (bytes((SOURCE_ANYWHERE,)) + inside(dest_end) + inside(source_end) + fixed(dest_length)
            + fixed(source_start))


def any_sides(*values):
    return bytes((ANY_SIDES,)) + struct.pack("<4f", *values)


def any_starts(dest, source):
    return bytes((ANY_STARTS | DEST_TO_EDGE | SOURCE_TO_EDGE,)) + struct.pack("<2f", dest, source)


def call(axes, form="rgbq", oddity=0, flags=0, create_flags=0, weights=EMPTY_MAP, streams=0, width=71, height=19,
         source_width=79, source_height=39, seed=5, tables=0):
    return struct.pack("<8B", FORMATS[form] | oddity << 3, flags | create_flags << 2 | weights << 4 | streams << 7,
                       width, height, source_width, source_height, seed, tables) + axes


NAN, INFINITE = float("nan"), float("inf")
HOSTILE = {
    "nan": (NAN, 5, 0, 5),
    "nan_end": (0, NAN, 0, 5),
    "nan_source": (0, 5, NAN, 5),
    "nan_source_end": (0, 5, 0, NAN),
    "endless": (-INFINITE, INFINITE, 0, 5),
    "endless_source": (0, 5, -INFINITE, INFINITE),
    "huge": (-1e9, 1e9, -1e9, 1e9),
    "huge_end": (0, 1e9, 0, 30),
    "huge_source_end": (0, 30, 0, 1e30),
    "past": (0, 5e5, 0, 20),
    "past_source": (0, 20, 0, 5e5),
    "far": (5e5, 524287, 0, 20),
    "wraps": (-5e5, 524287, 0, 9),
    "before": (-1e6, -5, 0, 5),
    "before_source": (0, 5, -1e6, -5),
    "empty_source": (0, 5, 3, 3),
    "denormal": (0, 5, 0, 1e-40),
}

# One axis; the other one is inside both bitmaps.
INNER = part(15.5, 11.25, 30.5, 2)
CLIPPED = {
    "before": part(15.5, 40.25, 16, 2),
    "before_dest": part(15.5, 40.25, 39, 0),
    "source_past": apart(15.5, 4, 12, 30),
    "dest_past": part(15.5, -30, 20, 0),
    "thin": part(5.75, 0.25, 10, 2),
    "inverted": apart(15.5, 11, 2, 30),
    "empty": part(15.5, 0, 20, 0),
}


def inputs():
    for form in FORMATS:
        for tables in range(4):
            at = f"{form}_tables{tables}"
            for r, ratio in enumerate(RATIOS):
                yield f"whole_{ratio}_{at}", call(whole(r) * 2, form, tables=tables)
                yield f"inner_{ratio}_{at}", call(part(60.25, 50.5, 70.75, r) + part(15.5, 11.25, 30.5, r), form,
                                                  tables=tables, weights=NOISE_MAP)
                yield f"wide_{ratio}_{at}", call(
                    part(1500.5, 490.75, 2600.25, r) + bytes((WHOLE, 0)), form, tables=tables, streams=1,
                    width=wide(12), height=3, source_width=wide(20), source_height=3, weights=FULL_MAP)
            for weights in range(5):
                axes = part(60.25, 50.5, 70.75, 2) + part(15.5, 11.25, 30.5, 2)
                yield f"again_{weights}_{at}", call(axes * 3, form, tables=tables, weights=weights)
        for create_flags in range(4):
            for flags in (0, FIELD_ODD, FIELD, FIELD | FIELD_ODD):
                for r in (0, 1, 2, 9):
                    yield f"field_{form}_{create_flags}_{flags}_{RATIOS[r]}", call(
                        whole(r) * 2, form, flags=flags, create_flags=create_flags)
        for width in (0, 1, 2, 3, 5):
            for height in (0, 1, 2):
                yield f"tiny_{form}_{width}x{height}", call(whole(0) * 2, form, width=width, height=height)
                yield f"tiny_source_{form}_{width}x{height}", call(
                    apart(70, 60, width, 0) + apart(18, 15, height, 0), form, source_width=width, source_height=height,
                    flags=FIELD, create_flags=2)
        for oddity in range(ANY_FORMAT, 32):
            yield f"oddity_{form}_{oddity}", call(whole(2) * 2, form, oddity=oddity)
        for place, axis in CLIPPED.items():
            yield f"clipped_{place}_{form}_x", call(axis + INNER, form)
            yield f"clipped_{place}_{form}_y", call(INNER + axis, form)
        for kind, values in HOSTILE.items():
            yield f"hostile_{kind}_{form}_x", call(any_sides(*values) + INNER, form)
            yield f"hostile_{kind}_{form}_y", call(INNER + any_sides(*values), form)
        for start in (NAN, INFINITE, -INFINITE, -1e30, 1e30, 1e-40, -70.3):
            yield f"start_{start}_{form}", call(any_starts(start, 0) + INNER, form)
            yield f"source_start_{start}_{form}", call(any_starts(0, start) + INNER, form)
