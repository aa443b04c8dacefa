#!/usr/bin/python3
"""Builds the HTML manual: scripts/docs and the tests call it.

usage: build.py --library FILE --output FOLDER
  --library FILE    the shared library that draws the pictures
  --output FOLDER   gets html/, the manual, and what it is made from: pages/, xml/, doctrees/

The pages are those of docs/, with the changelog and others from elsewhere. On the way into pages/
  links to files outside docs/ lead to the page that holds them, or to a copy of the file;
  <!-- show NAME... --> becomes what zepbmp.h says of these functions, macros and records;
  <!-- picture NAME --> becomes that picture of the gallery;
  `bmp_...` and `BMP_...` link to what they name;
  index.md's lists become the table of contents; pages of docs/ that they leave out come last.
Everything that is missing or doubtful is an error: a link, a picture, a comment, a name of zepbmp.h that no page shows.
What has not changed is not made again.
"""

import argparse
import hashlib
import os
import re
import shutil
import subprocess
import sys
import zlib
from pathlib import Path

import theme

HERE = Path(__file__).resolve().parent
DOCS = HERE.parent
ROOT = DOCS.parent
HEADER = ROOT / "include" / "zepbmp.h"
# Pages that do not stand in docs/.
ELSEWHERE = {
    "CHANGELOG.md": "changelog.md",
    "CONTRIBUTING.md": "contributing.md",
    "simd/lanes.md": "lanes.md",
    "include/zepbmp.h": "reference.md",
    "README.md": "index.md",
}
FENCE = re.compile(r"(^(`{3,}).*?^\2[^\n]*$)", re.MULTILINE | re.DOTALL)


def fail(*messages):
    sys.exit("\n".join(f"error: {message}" for message in messages))


def run(*command, **more):
    done = subprocess.run(
        [str(part) for part in command], stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, **more
    )
    if done.returncode != 0:
        print(done.stdout, end="")
        fail(f"{Path(str(command[0])).name} failed")
    return done.stdout


def write(path, text):
    """Leaves a file alone that has this text already, so that Sphinx reads only pages that changed."""
    path.parent.mkdir(parents=True, exist_ok=True)
    if not path.exists() or path.read_text(encoding="utf-8") != text:
        path.write_text(text, encoding="utf-8")


def copy(source, target):
    target.parent.mkdir(parents=True, exist_ok=True)
    if not target.exists() or target.read_bytes() != source.read_bytes():
        shutil.copyfile(source, target)


def digest(*files):
    total = hashlib.sha256()
    for file in files:
        total.update(f"{file}\0{file.stat().st_size}\0".encode())
        total.update(file.read_bytes())
    return total.hexdigest()


def unless_done(stamp, inputs, make):
    """Calls make unless that was done with these inputs before."""
    now = digest(*inputs)
    if stamp.exists() and stamp.read_text() == now:
        return
    stamp.unlink(missing_ok=True)
    make()
    stamp.parent.mkdir(parents=True, exist_ok=True)
    stamp.write_text(now)


# ---------------------------------------------------------------- zepbmp.h


def names_of_header():
    """Every name that zepbmp.h declares, with its kind; fields as record.field."""
    text = re.sub(r"/\*.*?\*/", "", HEADER.read_text(encoding="utf-8"), flags=re.DOTALL)
    names = dict.fromkeys(re.findall(r"BMP_CALL (bmp_\w+)\(", text), "function")
    names |= dict.fromkeys(re.findall(r"^#define (\w+)", text, re.MULTILINE), "macro")
    del names["ZEPBMP_H"]
    for body, record in re.findall(r"typedef struct \w+ \{(.*?)\} (\w+);", text, re.DOTALL):
        names[record] = "struct"
        names |= dict.fromkeys((f"{record}.{field}" for field in re.findall(r"(\w+);", body)), "member")
    return names


DIRECTIVES = {"function": "doxygenfunction", "macro": "doxygendefine", "struct": "doxygenstruct"}


def values_of_header():
    """What the flags, formats and version numbers are."""
    return dict(re.findall(r"^#define (\w+) (\d\w*)", HEADER.read_text(encoding="utf-8"), re.MULTILINE))


def shown(names, known, page):
    names, values = names.split(), values_of_header()
    for name in names:
        if name not in known:
            fail(f"{page}: zepbmp.h has no {name}")
    numbers = [f"| {{c:macro}}`{name}` | `{values[name].rstrip('u')}` |" for name in names if name in values]
    lines = ["| name | value |", "|---|---|", *numbers, ""] if numbers else []
    for name in names:
        lines += [f"```{{{DIRECTIVES[known[name]]}}} {name}"] + [":members:"] * (known[name] == "struct") + ["```", ""]
    return "\n".join(lines)


# ---------------------------------------------------------------- pages


class Stage:
    """Brings the pages into the folder that Sphinx reads."""

    def __init__(self, output, pictures, figure):
        self.folder = output / "pages"
        self.pictures = pictures
        self.figure = figure
        self.known = names_of_header()
        self.written = set()

    def page(self, source, target):
        text = source.read_text(encoding="utf-8")
        parts = FENCE.split(text)
        # Of three parts the second is a whole block of code, the third its fence.
        for k in range(0, len(parts), 3):
            parts[k] = self.prose(parts[k], source, target)
        text = "".join(part for k, part in enumerate(parts) if k % 3 != 2)
        if target == "index.md":
            text += self.contents(text)
        write(self.folder / target, text)
        self.written.add(target)

    def prose(self, text, source, target):
        up = "../" * target.count("/")
        text = re.sub(r"\]\(([^)\s]+)\)", lambda link: f"]({self.link(link[1], source, target)})", text)
        text = re.sub(r"(?<![`{\w])`((?:bmp|BMP)_\w+)`(?!`)", self.name, text)
        text = re.sub(r"<!-- show ([\w\s]+?) -->", lambda names: shown(names[1], self.known, source), text)
        # Pictures in a row stand in a grid.
        return re.sub(
            r"<!-- picture \w+ -->(?:\s+<!-- picture \w+ -->)*", lambda row: self.row(row[0], up, source), text
        )

    def name(self, code):
        kind = self.known.get(code[1])
        return f"{{c:{'func' if kind == 'function' else kind}}}`{code[1]}`" if kind else code[0]

    def picture(self, name, up, source):
        if name not in self.pictures:
            fail(f"{source}: the gallery has no picture {name}")
        return self.figure(self.pictures[name], up + "gallery")

    def row(self, comments, up, source):
        figures = [self.picture(name, up, source) for name in re.findall(r"picture (\w+)", comments)]
        return "\n".join(["````{container} pictures", *figures, "````"]) if len(figures) > 1 else figures[0]

    def link(self, link, source, target):
        if re.match(r"[a-z]+:|#", link):
            return link
        path, _, anchor = link.partition("#")
        file = (source.parent / path).resolve()
        inside = os.path.relpath(file, ROOT)
        page = ELSEWHERE.get(inside)
        if not page and inside.startswith("docs/"):
            page = inside.removeprefix("docs/")
        # The gallery's pages are written by docs/gallery/render.py.
        drawn = inside.startswith("docs/gallery/") and file.suffix == ".md"
        if not drawn and (not file.is_file() or inside.startswith("..")):
            fail(f"{source}: there is no file {link}")
        if not page:
            page = "files/" + inside
        if not drawn and inside not in ELSEWHERE and file.suffix != ".md":
            copy(file, self.folder / page)
        return os.path.relpath(page, os.path.dirname(target) or ".") + (anchor and "#" + anchor)

    def contents(self, text):
        """The table of contents: the lists of index.md, a part for each heading."""
        toc, listed = "", {"index"}
        for heading, body in re.findall(r"^## (.*?)\n(.*?)(?=^## |\Z)", text, re.MULTILINE | re.DOTALL):
            entries = re.findall(r"^- \[(.*?)\]\((\S+?)\.md\)", body, re.MULTILINE)
            toc += "\n".join(
                ["\n```{toctree}", ":hidden:", f":caption: {heading}", ""]
                + [f"{title} <{page}>" for title, page in entries]
                + ["```", ""]
            )
            listed |= {page for _, page in entries}
        others = sorted({page.stem for page in DOCS.glob("*.md")} - listed)
        if others:
            toc += "\n".join(["\n```{toctree}", ":hidden:", ":caption: More", "", *others, "```", ""])
        return toc

    def all(self):
        for source in sorted(DOCS.glob("*.md")):
            self.page(source, source.name)
        for source in sorted((DOCS / "functions").glob("*.md")):
            self.page(source, "functions/" + source.name)
        for source, target in ELSEWHERE.items():
            if target not in self.written and target.endswith(".md"):
                self.page(ROOT / source, target)
        functions = self.folder / "functions" / "index.md"
        groups = re.findall(r"^\| \[.*?\]\((\w+)\.md\)", functions.read_text(encoding="utf-8"), re.MULTILINE)
        write(
            functions,
            functions.read_text(encoding="utf-8") + "\n```{toctree}\n:hidden:\n\n" + "\n".join(groups) + "\n```\n",
        )
        for stale in self.folder.rglob("*.md"):
            page = str(stale.relative_to(self.folder))
            if page not in self.written and not page.startswith("gallery/"):
                stale.unlink()


# ---------------------------------------------------------------- the manual


def inventory(html):
    """Names that the manual documents, as Sphinx lists them for other manuals."""
    data = (html / "objects.inv").read_bytes()
    body = zlib.decompress(data.split(b"\n", 4)[4]).decode()
    return {line.split()[0] for line in body.splitlines() if line.split()[1].startswith("c:")}


def remove_stale(pages, html):
    """Sphinx leaves the HTML of a page that is gone."""
    for file in html.rglob("*.html"):
        page = file.relative_to(html).with_suffix(".md")
        if str(page) not in ("genindex.md", "search.md") and not (pages / page).is_file():
            file.unlink()


def main():
    parser = argparse.ArgumentParser(description="Builds the HTML manual.")
    parser.add_argument("--library", type=Path, required=True)
    parser.add_argument("--output", type=Path, required=True)
    arguments = parser.parse_args()
    library, output = arguments.library.resolve(), arguments.output.resolve()
    if not library.is_file():
        fail(f"there is no library {library}")

    environment = {
        **os.environ,
        "ZEPBMP_LIBRARY": str(library),
        "PYTHONDONTWRITEBYTECODE": "1",
        "ZEPBMP_XML": str(output / "xml"),
    }
    os.environ.update(environment)
    sys.path.insert(0, str(DOCS / "gallery"))
    gallery_files = [
        *sorted((DOCS / "gallery").glob("*.py")),
        DOCS / "gallery" / "digests.txt",
        DOCS / "images" / "draw_clips.py",
        *sorted((ROOT / "python" / "zepbmp").glob("*.py")),
        HEADER,
        ROOT / "README.md",
    ]
    gallery_pages = output / "pages" / "gallery"

    def make_gallery():
        shutil.rmtree(gallery_pages, ignore_errors=True)
        run(sys.executable, DOCS / "gallery" / "render.py", "--write", gallery_pages, env=environment)

    unless_done(output / "stamps" / "gallery", [*gallery_files, library], make_gallery)
    (output / "xml").mkdir(parents=True, exist_ok=True)
    unless_done(
        output / "stamps" / "xml",
        [HERE / "Doxyfile", HEADER],
        lambda: run("doxygen", HERE / "Doxyfile", env=environment, cwd=ROOT),
    )

    import render

    Stage(
        output, {one.name: one for made in render.gallery.pictures.values() for one in made}, render.pages.figure
    ).all()
    # Sphinx would keep what it read with another configuration.
    unless_done(
        output / "stamps" / "conf", [HERE / "conf.py"], lambda: shutil.rmtree(output / "doctrees", ignore_errors=True)
    )
    copy(HERE / "conf.py", output / "pages" / "conf.py")
    for file in (HERE / "static").iterdir():
        copy(file, output / "pages" / "static" / file.name)
    for file, text in theme.without_a_server().items():
        write(output / "pages" / "static" / file, text)
    text = HEADER.read_text(encoding="utf-8")
    environment["ZEPBMP_VERSION"] = ".".join(re.findall(r"^#define ZEPBMP_VERSION_\w+ (\d+)$", text, re.MULTILINE))
    said = run(
        sys.executable,
        "-m",
        "sphinx",
        "-W",
        "--keep-going",
        "-q",
        "-b",
        "html",
        "-d",
        output / "doctrees",
        output / "pages",
        output / "html",
        env=environment,
    )
    print(said, end="")
    remove_stale(output / "pages", output / "html")

    documented = inventory(output / "html")
    missing = [name for name in names_of_header() if name not in documented]
    if missing:
        fail(*(f"the manual says nothing of {name}" for name in missing))
    print(
        f"{output / 'html' / 'index.html'}: {len(names_of_header())} names of zepbmp.h, "
        f"{len(list((output / 'html').rglob('*.html')))} pages"
    )


if __name__ == "__main__":
    main()
