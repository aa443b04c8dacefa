#!/usr/bin/python3
"""Renders the gallery's pictures with the library and compares their pixels with the known ones, in digests.txt.

usage: render.py [--write FOLDER] [--accept]
  --write FOLDER   writes the pictures as PNG files, and the gallery's pages
  --accept         takes the pixels as they are now as the known ones, and draws the README's pictures anew

ZEPBMP_LIBRARY names the library. Every picture is rendered twice.
"""

import argparse
import re
import sys
from pathlib import Path

HERE = Path(__file__).resolve().parent
ROOT = HERE.parent.parent
sys.path.insert(0, str(HERE))
sys.path.append(str(ROOT / "python"))

try:
    import numpy as np
    from PIL import Image

    import bitmaps, copies, drawing, compose, shapes, polygons, rects  # noqa: E401, F401
    import frames
    import gallery
    import pages
except ImportError as missing:
    sys.exit(f"error: {missing}")

DIGESTS = HERE / "digests.txt"
README = {"wipe": "window", "perspective": "fly", "cube": "cube"}
README_BYTES = 300_000
HEADING = """# SHA-256 of the gallery's pixels, and of the frames that they start from: where one of those differs, the
# difference is in the drawing of the frame, not in the library. docs/gallery/render.py --accept writes this file.
"""


HEADER = (ROOT / "include" / "zepbmp.h").read_text(encoding="utf-8")
VALUES = {name: int(value, 0) for name, value in re.findall(r"^#define (BMP_\w+) (\d\w*?)u?\b", HEADER, re.MULTILINE)}
# The functions that take a flag, by the beginnings of both names. Flags are the last argument.
TAKERS = {
    "BMP_COMPOSE_": "bmp_compose",
    "BMP_CREATE_": "bmp_create",
    "BMP_FIELD": ("bmp_alpha_", "bmp_blt", "bmp_clear", "bmp_compose", "bmp_copy", "bmp_interporate", "bmp_map_"),
    "BMP_MAP_": "bmp_map_polygon",
    "BMP_SHAPE_": "bmp_alpha_",
}


def shows(name, calls, claimed):
    """Whether a picture's calls show a name that it claims: the function called, the format created, the flag given.

    A field flag counts at a function that is claimed, too: the frames that a picture starts from are woven of fields.
    """
    if name.startswith("bmp_"):
        return name == "bmp_destroy" or any(function == name for function, _ in calls)
    if name == "BMP_INTEGER":
        return any(shows(flag, calls, claimed) for flag in ("BMP_COMPOSE_LEVEL", "BMP_MAP_EXTRA"))
    if name not in VALUES:
        return True  # a record, or a fault of undrawn()
    if name.startswith("BMP_FMT_"):
        return any(function == "bmp_create" and arguments[2] == VALUES[name] for function, arguments in calls)
    takers = next((functions for flag, functions in TAKERS.items() if name.startswith(flag)), ())
    given = [
        arguments[-1]
        for function, arguments in calls
        if function.startswith(takers) and (function in claimed or not name.startswith("BMP_FIELD"))
    ]
    if name == "BMP_SHAPE_ADD":
        return any(not flags & VALUES["BMP_SHAPE_MAX"] for flags in given)
    return any(flags & VALUES[name] for flags in given)


def render_all():
    """Pixels by name, and what is wrong."""
    rendered, faults, calls = {}, [], gallery.watch_calls()
    for name, frame in (("frame dusk", frames.dusk()), ("frame sea", frames.sea())):
        rendered[name] = gallery.colours(frame)
    for module, made in gallery.pictures.items():
        for one in made:
            if one.name in rendered:
                faults.append(f"{module}.py: there are two pictures {one.name}")
            calls.clear()
            rendered[one.name] = gallery.render(one)
            faults += [f"{one.name}: does not show {name}" for name in one.calls if not shows(name, calls, one.calls)]
            if not np.array_equal(rendered[one.name], gallery.render(one)):
                faults.append(f"{one.name}: two renderings differ")
    return rendered, faults


# Not to be told apart in a picture: bytes without a meaning, a flag that draws what its twin draws; and Windows.
UNDRAWN = {"BMP_FMT_QUAD4", "BMP_FMT_QUAD5", "BMP_SHAPE_ELLIPTIC_EDGES", "bmp_display", "BMP_CALL"}


def undrawn():
    """Functions, formats and flags of zepbmp.h that no picture shows."""
    found = re.findall(r"BMP_CALL (bmp_\w+)\(|^#define (BMP_\w+)", HEADER, re.MULTILINE)
    wanted = {function or macro for function, macro in found} - UNDRAWN
    shown = {name for made in gallery.pictures.values() for one in made for name in one.calls}
    return [f"no picture shows {name}" for name in sorted(wanted - shown)] + [
        f"a picture shows {name}, which is not in zepbmp.h" for name in sorted(shown - wanted - {"Bitmap", "BmpVertex"})
    ]


def read_digests():
    lines = DIGESTS.read_text(encoding="utf-8").splitlines()
    return {name: digest for digest, _, name in (line.partition("  ") for line in lines if not line.startswith("#"))}


def compare(digests, known):
    faults = [
        f"{name}: its pixels are not the known ones"
        for name in digests
        if known.get(name, "") != digests[name] and name in known
    ]
    faults += [f"{name}: has no digest in {DIGESTS.name}" for name in digests if name not in known]
    return faults + [
        f"{name}: in {DIGESTS.name}, but there is no such picture" for name in known if name not in digests
    ]


def readme_faults(rendered):
    faults, total = [], 0
    text = (ROOT / "README.md").read_text(encoding="utf-8")
    for name, file in README.items():
        path = HERE.parent / "images" / f"{file}.png"
        if not path.exists():
            faults.append(f"there is no {path}")
            continue
        total += path.stat().st_size
        with Image.open(path) as image:
            if not np.array_equal(np.asarray(image.convert("RGBA")), rendered[name]):
                faults.append(f"docs/images/{file}.png is not what the gallery renders as {name}")
        if f"docs/images/{file}.png" not in text:
            faults.append(f"README.md does not show docs/images/{file}.png")
    if total > README_BYTES:
        faults.append(f"the README's pictures take {total} bytes: more than {README_BYTES}")
    return faults


def save(path, pixels):
    """A PNG without an opacity that says nothing."""
    opaque = pixels[..., 3].min() == 255
    Image.fromarray(pixels[..., :3] if opaque else pixels).save(path, optimize=True)


def main():
    parser = argparse.ArgumentParser(description="Renders the gallery's pictures and compares them with known ones.")
    parser.add_argument("--write", type=Path, metavar="FOLDER", help="writes pictures and pages")
    parser.add_argument("--accept", action="store_true", help="takes the pixels as they are now as the known ones")
    arguments = parser.parse_args()

    rendered, faults = render_all()
    faults += undrawn()
    digests = {name: gallery.digest(pixels) for name, pixels in rendered.items()}
    if arguments.accept:
        DIGESTS.write_text(HEADING + "".join(f"{digests[name]}  {name}\n" for name in digests), encoding="utf-8")
        for name, file in README.items():
            save(HERE.parent / "images" / f"{file}.png", rendered[name])
    faults += compare(digests, read_digests()) + readme_faults(rendered)
    if arguments.write:
        arguments.write.mkdir(parents=True, exist_ok=True)
        for name, pixels in rendered.items():
            if not name.startswith("frame "):
                save(arguments.write / f"{name}.png", pixels)
        pages.write(arguments.write, gallery.pictures)
    if faults:
        sys.exit("\n".join(f"error: {fault}" for fault in faults))
    print(f"{len(rendered) - 2} pictures, each rendered twice, are what they were")


if __name__ == "__main__":
    main()
