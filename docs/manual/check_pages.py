#!/usr/bin/python3
"""Opens every page of the HTML manual in headless Chromium, from its files, at phone and desktop width, light and dark.

usage: check_pages.py FOLDER [--screenshots FOLDER] [--only PAGE...]
  FOLDER          the manual
  --screenshots   keeps a picture of each page, width and scheme
  --only          these pages, as index.html

Faults are: a link to a page, an anchor or a file that is not there; an address elsewhere that is none; a picture that
does not show or has no text for those who do not see it; anything on the console; anything loaded from elsewhere; a
page wider than the screen; text too close to its background. Every run first plants each of these faults in a copy of a
page, and fails where one is not found.
"""

import argparse
import base64
import shutil
import sys
import tempfile
import time
from functools import lru_cache
from html.parser import HTMLParser
from pathlib import Path
from urllib.parse import unquote, urlsplit

from selenium import webdriver
from selenium.common.exceptions import TimeoutException
from selenium.webdriver.chrome.options import Options
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.support.ui import WebDriverWait

WIDTHS = {"desktop": (1280, 900), "phone": (390, 844)}
SCHEMES = ("light", "dark")
# As the Web Content Accessibility Guidelines ask of text, level AA.
LEAST_CONTRAST = 4.5

PICTURES = """
return Array.from(document.images, i => [i.getAttribute('src'), i.naturalWidth, (i.getAttribute('alt') || '').trim()])
"""
LOADED = "return performance.getEntriesByType('resource').map(e => e.name)"
# The page, or the part that holds the article, can be scrolled sideways; code and tables scroll within themselves.
EXTENT = """
const room = arguments[0], article = document.querySelector('article') || document.body
const shown = [document.documentElement]
for (let e = article; e; e = e.parentElement) if (getComputedStyle(e).overflowX !== 'visible') shown.push(e)
const wide = Math.max(...shown.map(e => e.scrollWidth - e.clientWidth + room))
if (wide <= room) return null
const inside = e => { for (let p = e; p && p !== article; p = p.parentElement)
  if (getComputedStyle(p).overflowX !== 'visible') return true; return false }
const far = Array.from(article.querySelectorAll('*')).filter(e => e.getBoundingClientRect().right > room && !inside(e))
return [wide, room, far.slice(0, 3).map(e => e.tagName.toLowerCase() + '.' + e.className)]
"""
# The text that a page shows, with the contrast to the nearest background that is there.
CONTRAST = """
const parts = c => (c.match(/[\\d.]+/g) || [0, 0, 0, 0]).map(Number)
const light = ([r, g, b]) => { const l = v => { v /= 255; return v <= .03928 ? v / 12.92 : ((v + .055) / 1.055) ** 2.4 }
  return .2126 * l(r) + .7152 * l(g) + .0722 * l(b) }
const over = (top, below) => { const a = top.length > 3 ? top[3] : 1
  return [0, 1, 2].map(k => top[k] * a + below[k] * (1 - a)) }
const ground = new Map()
const background = e => { if (!e) return [255, 255, 255]
  if (!ground.has(e)) ground.set(e, over(parts(getComputedStyle(e).backgroundColor), background(e.parentElement)))
  return ground.get(e) }
const seen = new Map(), walk = document.createTreeWalker(document.querySelector('article') || document.body, 4)
while (walk.nextNode()) {
  const e = walk.currentNode.parentElement, text = walk.currentNode.textContent.trim()
  if (!text || e.closest('script, style, .headerlink, [hidden]') || !e.getClientRects().length) continue
  const back = background(e), front = over(parts(getComputedStyle(e).color), back)
  const a = light(front), b = light(back), ratio = (Math.max(a, b) + .05) / (Math.min(a, b) + .05)
  const key = front + '|' + back
  if (!seen.has(key)) seen.set(key, [ratio, text.slice(0, 30), front.map(Math.round), back.map(Math.round)]) }
return Array.from(seen.values())
"""


class Page(HTMLParser):
    """The links of a page, and the anchors that it offers."""

    def __init__(self, text):
        super().__init__()
        self.anchors, self.links = set(), []
        self.feed(text)

    def handle_starttag(self, tag, attributes):
        for name, value in attributes:
            if name == "id" or (tag == "a" and name == "name"):
                self.anchors.add(value)
            elif name in ("href", "src") and value is not None:
                self.links.append(value)


@lru_cache(maxsize=None)
def read(path):
    return Page(path.read_text(encoding="utf-8"))


def link_faults(folder, names):
    for name in names:
        for link in read((folder / name).resolve()).links:
            address = urlsplit(link)
            if address.scheme in ("http", "https"):
                if not address.hostname or "." not in address.hostname or " " in link:
                    yield f"{name}: {link} is no address"
                continue
            if address.scheme == "mailto":
                continue
            target = (folder / name).parent / unquote(address.path) if address.path else folder / name
            if address.scheme or not target.is_file():
                yield f"{name}: link to {link}, which is not there"
                continue
            if (
                address.fragment
                and target.suffix == ".html"
                and unquote(address.fragment) not in read(target.resolve()).anchors
            ):
                yield f"{name}: link to {link}: there is no such anchor"


def start():
    options = Options()
    options.binary_location = shutil.which("chromium") or sys.exit("error: there is no chromium: install the package")
    # No sandbox: root, in a container, may not have one. No name is looked up: what a page asks from elsewhere fails.
    for argument in (
        "--headless=new",
        "--no-sandbox",
        "--disable-dev-shm-usage",
        "--disable-gpu",
        "--hide-scrollbars",
        "--disable-background-networking",
        "--host-resolver-rules=MAP * ~NOTFOUND",
    ):
        options.add_argument(argument)
    options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
    driver = shutil.which("chromedriver") or sys.exit("error: there is no chromedriver: install chromium-driver")
    return webdriver.Chrome(service=Service(driver), options=options)


def show(browser, width, scheme):
    across, down = WIDTHS[width]
    browser.execute_cdp_cmd(
        "Emulation.setDeviceMetricsOverride", {"width": across, "height": down, "deviceScaleFactor": 1, "mobile": False}
    )
    browser.execute_cdp_cmd(
        "Emulation.setEmulatedMedia", {"features": [{"name": "prefers-color-scheme", "value": scheme}]}
    )


def save(browser, path):
    """The page from its top, however long, up to a limit."""
    high = browser.execute_script("return Math.min(document.documentElement.scrollHeight, 9000)")
    across = browser.execute_script("return document.documentElement.clientWidth")
    shot = browser.execute_cdp_cmd(
        "Page.captureScreenshot",
        {
            "format": "png",
            "captureBeyondViewport": True,
            "clip": {"x": 0, "y": 0, "width": across, "height": high, "scale": 1},
        },
    )
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_bytes(base64.b64decode(shot["data"]))


def page_faults(browser, folder, name, screenshots=None):
    show(browser, "desktop", "light")
    browser.get((folder / name).resolve().as_uri())
    for source, width, text in browser.execute_script(PICTURES):
        if width == 0:
            yield f"{name}: the picture {source} does not show"
        if not text:
            yield f"{name}: the picture {source} has no text"
    for address in browser.execute_script(LOADED):
        if not address.startswith(("file:", "data:")):
            yield f"{name}: loads {address}"
    for width in WIDTHS:
        for scheme in SCHEMES:
            show(browser, width, scheme)
            where = f"{name}, {width}, {scheme}"
            extent = browser.execute_script(EXTENT, WIDTHS[width][0])
            if extent:
                yield f"{where}: {extent[0]} pixels wide, the screen {extent[1]}: {' '.join(extent[2])}"
            for ratio, text, front, back in browser.execute_script(CONTRAST):
                if ratio < LEAST_CONTRAST:
                    yield f"{where}: contrast {ratio:.2f}, {front} on {back}: {text!r}"
            if screenshots:
                save(browser, screenshots / f"{name.removesuffix('.html').replace('/', '-')}-{width}-{scheme}.png")
    for entry in browser.get_log("browser"):
        yield f"{name}: console: {entry['level']}: {entry['message']}"


def search_faults(browser, folder):
    """The search works from files: each word is found in a page that is about it."""
    for word, page in (("bmp_map_rect", "functions/rectangles.html"), ("interlaced", "concepts.html")):
        browser.get((folder / "search.html").resolve().as_uri() + "?q=" + word)
        try:
            WebDriverWait(browser, 10).until(
                lambda _: browser.execute_script(
                    "return !!document.querySelector('#search-results a[href^=\"' + arguments[0] + '\"]')", page
                )
            )
        except TimeoutException:
            yield f"search.html: a search for {word} does not find {page}"
    for entry in browser.get_log("browser"):
        yield f"search.html: console: {entry['level']}: {entry['message']}"


# ---------------------------------------------------------------- planted faults

FAULTS = {
    "link": ('<a href="nowhere.html">x</a>', "link to nowhere.html, which is not there"),
    "anchor": ('<a href="#nowhere">x</a>', "no such anchor"),
    "address": ('<a href="https://no host/">x</a>', "is no address"),
    "picture": ('<img src="nowhere.png" alt="x">', "does not show"),
    "text": ('<img src="data:image/gif;base64,R0lGODlhAQABAAAAACH5BAEAAAAALAAAAAABAAEAAAIA">', "has no text"),
    "error": ("<script>undefined_function()</script>", "console: SEVERE"),
    "warning": ("<script>console.warn('x')</script>", "console: WARNING"),
    "elsewhere": ('<script src="https://cdn.example.org/x.js"></script>', "loads https://cdn.example.org/x.js"),
    "width": ('<table style="width: 1200px"><tr><td>x</td></tr></table>', "pixels wide, the screen 1280"),
    "phone": ('<table style="width: 600px"><tr><td>x</td></tr></table>', "pixels wide, the screen 390"),
    "contrast": ('<p style="color: #999; background: #fff">x</p>', "contrast 2.85"),
    "dark": ('<p style="color: #222">x</p>', "desktop, dark: contrast"),
}


def missed(browser, folder):
    """Planted faults that are not found, and faults found where none is planted."""
    text = (folder / "index.html").read_text(encoding="utf-8")
    marker = "</article>"
    if text.count(marker) != 1:
        yield f"index.html: holds {text.count(marker)} times {marker}, where faults are planted"
        return
    with tempfile.TemporaryDirectory() as temporary:
        copy = Path(temporary) / "manual"
        shutil.copytree(folder, copy, copy_function=lambda source, target: Path(target).symlink_to(source))
        for fault, (planted, found) in {"none": ("", ""), **FAULTS}.items():
            name = f"fault_{fault}.html"
            (copy / name).write_text(text.replace(marker, f"<section>{planted}</section>{marker}"), encoding="utf-8")
            faults = list(link_faults(copy, [name])) + list(page_faults(browser, copy, name))
            if fault == "none" and faults:
                yield from (f"without a planted fault: {line}" for line in faults)
            elif fault != "none" and not any(found in line for line in faults):
                yield f"the planted fault '{fault}' is not found, only {faults}"


def main():
    parser = argparse.ArgumentParser(description="Opens every page of the HTML manual in headless Chromium.")
    parser.add_argument("folder", type=Path)
    parser.add_argument("--screenshots", type=Path, metavar="FOLDER")
    parser.add_argument("--only", nargs="+", metavar="PAGE")
    arguments = parser.parse_args()
    folder = arguments.folder.resolve()
    names = arguments.only or sorted(path.relative_to(folder).as_posix() for path in folder.rglob("*.html"))
    if not (folder / "index.html").is_file():
        sys.exit(f"error: there is no manual in {folder}")

    started = time.monotonic()
    browser = start()
    try:
        faults = list(missed(browser, folder))
        faults += link_faults(folder, names)
        faults += search_faults(browser, folder)
        pictures = 0
        for name in names:
            faults += page_faults(browser, folder, name, arguments.screenshots)
            pictures += len(browser.execute_script(PICTURES))
    finally:
        browser.quit()
    if faults:
        sys.exit("\n".join(f"error: {fault}" for fault in faults) + f"\n{len(faults)} faults")
    print(
        f"{len(names)} pages, {pictures} pictures: without a fault at two widths, light and dark; all {len(FAULTS)} "
        f"kinds of planted faults are found; {time.monotonic() - started:.0f} seconds"
    )


if __name__ == "__main__":
    main()
