# SPDX-License-Identifier: MIT
"""Settings of Sphinx for the site. build.py lays out the pages and runs it."""
import logging
import os
import re
import xml.etree.ElementTree as tree
from pathlib import Path

from docutils import nodes
from sphinx.addnodes import pending_xref

project = "libzv-iptv-service-api"
author = f"{project} developers"
version = re.search(r"^    VERSION (\S+)$", (Path(__file__).parents[2] / "CMakeLists.txt").read_text(), re.M)[1]
release = version

extensions = ["myst_parser", "breathe"]
root_doc = "index"
myst_heading_anchors = 4  # page.md#section, as in the repository

breathe_projects = {"api": os.environ["ZVIPTV_DOXYGEN_XML"]}
breathe_default_project = "api"
breathe_show_include = False
# Words before declarations that are not C++.
cpp_id_attributes = ["ZVIPTV_API"]
primary_domain = "cpp"
highlight_language = "none"

html_theme = "furo"
pygments_style = "default"
pygments_dark_style = "native"
html_title = f"{project} {version}"
html_static_path = ["site.css"]
html_css_files = ["site.css"]
html_copy_source = False
html_use_index = False
html_show_copyright = False
html_show_sphinx = False
# A browser may not read other files of a site that it opened from a folder: a result shows its title alone.
html_show_search_summary = False
html_theme_options = {"top_of_page_button": None}


def header_names():
    """Classes, records, enumerations and functions, as pages spell them."""
    index = tree.parse(Path(breathe_projects["api"]) / "index.xml")
    for compound in index.iterfind("compound"):
        is_class = compound.get("kind") in ("class", "struct")
        if is_class:
            yield compound.findtext("name")
        for member in compound.iterfind("member"):
            if member.get("kind") in ("function", "enum") and (is_class or compound.get("kind") == "file"):
                yield (compound.findtext("name") + "::" if is_class else "") + member.findtext("name")


def link_names(app, document):
    """Links names of the headers in the prose of the pages to the reference."""
    for literal in list(document.findall(nodes.literal)):
        name = literal.astext().removesuffix("()")
        if name in app.env.api_names and not isinstance(literal.parent, (nodes.title, nodes.reference, pending_xref)):
            link = pending_xref("", refdomain="cpp", reftype="any", reftarget=name, refexplicit=True, refwarn=True,
                                refdoc=app.env.docname)
            literal.replace_self(link)
            link += literal


def is_no_namespace(record):
    """Several headers declare a namespace; Sphinx warns of the second one, and cannot be told otherwise."""
    return not re.search(r"Duplicate C\+\+ declaration.*\n.*cpp:type:: [a-z_:]+'", record.getMessage())


def setup(app):
    logging.getLogger("sphinx.sphinx.domains.cpp").addFilter(is_no_namespace)
    app.connect("builder-inited", lambda app: setattr(app.env, "api_names", frozenset(header_names())))
    app.connect("doctree-read", link_names)
