"""Debian's furo, mended for reading from files.

The package expects a web server that offers /javascript, its script is a module, which browsers do not load from files,
and its style sheet was compiled without the rules for systems that prefer dark pages. What is not found is left as it
is: other releases of furo need none of this.
"""

import re
from pathlib import Path

import furo

IMPORTED_SCRIPT = 'import Gumshoe from "./gumshoe-patched.js";'
IMPORTED_STYLE = re.compile(r"@import url\((/javascript/[\w./-]+)\);")
# The rules of the dark scheme, when it was chosen by hand.
CHOSEN_DARK = re.compile(r'^  body\[data-theme="dark"\] (\{[^{}]*\})', re.MULTILINE | re.DOTALL)
PREFERRED_DARK = '@media not print {\n@media (prefers-color-scheme: dark) {\n  body:not([data-theme="light"]) %s } }\n'


def without_a_server():
    """Files of the theme's _static folder that need a change: name -> text."""
    static = Path(furo.__file__).parent / "theme" / "furo" / "static"
    changed = {}
    script = (static / "scripts" / "furo.js").read_text(encoding="utf-8")
    if IMPORTED_SCRIPT in script:
        gumshoe = (static / "scripts" / "gumshoe-patched.js").read_text(encoding="utf-8")
        changed["scripts/furo.js"] = gumshoe + script.replace(IMPORTED_SCRIPT, "")
    style = (static / "styles" / "furo.css").read_text(encoding="utf-8")
    mended = IMPORTED_STYLE.sub(lambda found: (Path("/usr/share") / found[1][1:]).read_text(encoding="utf-8"), style)
    dark = CHOSEN_DARK.search(mended)
    if dark and "prefers-color-scheme" not in mended:
        mended += PREFERRED_DARK % dark[1]
    if mended != style:
        changed["styles/furo.css"] = mended
    return changed
