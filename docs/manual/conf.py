"""Sphinx: turns the staged pages into HTML. docs/manual/build.py gives the XML's folder and the version."""

import os

from docutils import nodes

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


def setup(app):
    app.connect("doctree-read", name_preconditions)
