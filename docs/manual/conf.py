"""Sphinx: turns the staged pages into HTML. docs/manual/build.py gives the XML's folder and the version."""

import os
import re

from docutils import nodes
from sphinx import addnodes

project = "zepbmp"
author = "the zepbmp developers"
copyright = author
version = release = os.environ["ZEPBMP_VERSION"]
extensions = ["myst_parser", "breathe"]
exclude_patterns = ["files"]
# A picture of a page is copied once; nothing is fetched from elsewhere.
html_theme = "furo"
html_title = f"zepbmp {version}"
html_static_path = ["static"]
html_css_files = ["manual.css"]
html_copy_source = False
# Summaries would be fetched, which browsers do not do from files.
html_show_search_summary = False
html_show_sphinx = False
html_show_copyright = False
html_theme_options = {
    "light_css_variables": {"color-brand-primary": "#8c2f4b", "color-brand-content": "#8c2f4b"},
    "dark_css_variables": {"color-brand-primary": "#ffb27a", "color-brand-content": "#ffb27a"},
    "top_of_page_button": None,
}
pygments_style = "xcode"
pygments_dark_style = "github-dark"
highlight_language = "none"
add_function_parentheses = False
nitpicky = True
nitpick_ignore = [("c:identifier", name) for name in ("int32_t", "uint32_t", "uint8_t", "intptr_t")]

myst_heading_anchors = 4
myst_enable_extensions = ["colon_fence"]

breathe_projects = {"zepbmp": os.environ["ZEPBMP_XML"]}
breathe_default_project = "zepbmp"
breathe_domain_by_extension = {"h": "c"}


def name_preconditions(_app, doctree):
    """Doxygen's short title in full."""
    for title in doctree.findall(nodes.field_name):
        if title.astext() == "Pre":
            title.children = [nodes.Text("Precondition")]


MENTION = re.compile(r"(\b(?:bmp|BMP)_\w+\b(?:\(\))?|\bdocs/\w+\.md\b)")


def link(app, page, mention):
    """What zepbmp.h mentions, a name of its own or a page, as a link; as text where the manual has no such thing."""
    if mention.startswith("docs/"):
        target = mention.removeprefix("docs/").removesuffix(".md")
        if target not in app.env.titles:
            return nodes.Text(mention)
        uri = app.builder.get_relative_uri(page, target)
        return nodes.reference("", app.env.titles[target].astext(), refuri=uri, internal=True)
    domain, name = app.env.get_domain("c"), mention.removesuffix("()")
    code = nodes.literal(mention, mention, classes=["xref", "c"])
    found = domain.resolve_xref(app.env, page, app.builder, "any", name, addnodes.pending_xref(), code)
    return found or nodes.Text(mention)


def link_contracts(app, doctree, page):
    """The contracts' text is Doxygen's: their mentions become links here."""
    for contract in doctree.findall(addnodes.desc_content):
        for text in list(contract.findall(nodes.Text)):
            parts = MENTION.split(text.astext())
            if len(parts) > 1 and isinstance(text.parent, nodes.paragraph):
                linked = [link(app, page, part) if k % 2 else nodes.Text(part) for k, part in enumerate(parts)]
                text.parent.replace(text, linked)


def setup(app):
    app.connect("doctree-read", name_preconditions)
    app.connect("doctree-resolved", link_contracts)
