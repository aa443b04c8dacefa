"""The gallery's pages in Markdown: each picture beside the lines that drew it."""

import inspect
import json
import sys

TITLES = {
    "bitmaps": "Bitmaps",
    "copies": "Fills, copies, blits",
    "drawing": "Drawing, colours, palettes",
    "compose": "Composition",
    "shapes": "Shapes in weight maps",
    "polygons": "Polygons",
    "rects": "Rectangles, resampled",
}
WIDE = "---\nhide-toc: true\n---\n"


def write(folder, pictures):
    """Writes index.md, a page for each module with its sources, and frames.md into a folder."""
    sheet = [
        WIDE,
        "# Gallery\n",
        """Every picture is drawn by the library when the manual is built, from two made-up
frames of 640 x 360 pixels, and its pixels are compared with known ones at every test. Click one to see the lines of
Python that drew it; the operations are those of the [C functions](../functions/index.md), which the pages link to.\n""",
    ]
    for module, made in pictures.items():
        sheet += [f"## [{TITLES[module]}]({module}.md)\n", "````{container} thumbnails"]
        for one in made:
            sheet += [
                f"```{{image}} {one.name}.png",
                f":alt: {json.dumps(one.alt)}",
                f":target: {module}.html#picture-{one.name.replace('_', '-')}",
                "```",
            ]
        sheet += ["````\n"]
        _write_page(folder, module, made)
    sheet += ["```{toctree}", ":hidden:\n", *pictures, "frames", "```"]
    _write(folder / "index.md", sheet)
    _write_frames(folder)


def figure(one, folder):
    """A picture in another page, with a link to the lines that drew it."""
    return "\n".join(
        [
            f"```{{figure}} {folder}/{one.name}.png",
            f":alt: {json.dumps(one.alt)}",
            ":width: 480px",
            "",
            f"{one.title}. {{ref}}`How it is drawn <picture-{one.name}>`",
            "```",
        ]
    )


def _write_page(folder, module, made):
    page = [
        WIDE,
        f"# {TITLES[module]}\n",
        "The frames and helpers that these pictures start from stand [on a page of " "their own](frames.md).\n",
    ]
    for one in made:
        first, last, body, end = one.lines
        shown = [
            f"{{c:func}}`{name}`" if name[0].islower() else f"{{c:macro}}`{name}`"
            for name in one.calls
            if name.startswith(("bmp_", "BMP_"))
        ]
        page += [
            f"(picture-{one.name})=",
            f"## {one.title}\n",
            one.text + "\n",
            "Shows " + ", ".join(shown) + ".\n",
            "````{container} example",
            f"```{{image}} {one.name}.png",
            f":alt: {json.dumps(one.alt)}",
            "```",
            f"```{{literalinclude}} {module}.py",
            ":language: python",
            f":lines: {first}-{last},{body}-{end}",
            "```",
            "````\n",
        ]
    _write(folder / f"{module}.md", page)
    _write(folder / f"{module}.py", [inspect.getsource(sys.modules[module]).rstrip("\n")])


def _write_frames(folder):
    page = [
        WIDE,
        "# What the pictures start from\n",
        "The two landscapes are drawn by formulas; `detail`, `corners` and the others keep the pictures' own lines "
        "short.\n",
        "```{literalinclude} frames.py",
        ":language: python",
        "```",
    ]
    _write(folder / "frames.md", page)
    _write(folder / "frames.py", [inspect.getsource(sys.modules["frames"]).rstrip("\n")])


def _write(path, lines):
    text = "\n".join(lines) + "\n"
    if not path.exists() or path.read_text(encoding="utf-8") != text:
        path.write_text(text, encoding="utf-8")
