#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Draws the pictures of the pages: each DOT file beside this script becomes an SVG file, readable on light and dark
pages. draw.py renews them; draw.py --check fails if one is out of date."""
import re
import subprocess
import sys
from pathlib import Path

HERE = Path(__file__).resolve().parent
LOOK = """digraph {
  graph [fontname="DejaVu Sans" fontsize=12 pad=0.15]
  node [fontname="DejaVu Sans" fontsize=12 shape=box style="rounded,filled" fillcolor=white margin="0.15,0.08"]
  edge [fontname="DejaVu Sans" fontsize=11 arrowsize=0.8]
"""
# The classes are set in the DOT files: life is a participant of a sequence, loss is what nobody asked for.
STYLE = """<style>
  text { fill: #1f2328; }
  .graph > polygon { fill: #ffffff; stroke: none; }
  .node path:not([fill="none"]) { fill: #f6f8fa; stroke: #57606a; }
  .cluster path { stroke: #8c959f; }
  .bus path:not([fill="none"]) { fill: #ddf4ff; stroke: #0969da; }
  .edge path { stroke: #1f2328; stroke-width: 1.2; }
  .edge polygon { fill: #1f2328; stroke: #1f2328; }
  .life path { stroke: #8c959f; stroke-dasharray: 4 4; }
  .loss path { stroke: #cf222e; stroke-dasharray: 5 4; }
  .loss polygon { fill: #cf222e; stroke: #cf222e; }
  @media (prefers-color-scheme: dark) {
    text { fill: #e6edf3; }
    .graph > polygon { fill: #0d1117; }
    .node path:not([fill="none"]) { fill: #161b22; stroke: #9da7b3; }
    .cluster path { stroke: #6e7681; }
    .bus path:not([fill="none"]) { fill: #0c2d6b; stroke: #58a6ff; }
    .edge path { stroke: #e6edf3; }
    .edge polygon { fill: #e6edf3; stroke: #e6edf3; }
    .life path { stroke: #6e7681; }
    .loss path { stroke: #ff7b72; }
    .loss polygon { fill: #ff7b72; stroke: #ff7b72; }
  }
</style>
"""


def drawn(source):
    """The picture, without the comments of Graphviz, which contain its version."""
    text = source.read_text().replace("digraph {\n", LOOK, 1)
    svg = subprocess.run(["dot", "-Tsvg"], input=text, check=True, text=True, stdout=subprocess.PIPE).stdout
    svg = re.sub(r"<!--.*?-->\n", "", svg, flags=re.S)
    svg = re.sub(r"<\?xml.*?\?>\n|<!DOCTYPE.*?>\n", "", svg, flags=re.S)
    svg = re.sub(r"<g[^>]*>\n?<title>[^<]*</title>", lambda match: match[0][:match[0].index("<title>")], svg)
    svg = svg.replace('"DejaVu Sans"', '"DejaVu Sans, sans-serif"').replace('"DejaVu Sans Mono"', '"DejaVu Sans Mono, monospace"')
    return svg.replace('<g id="graph0"', STYLE + '<g id="graph0"', 1)


def main(is_check):
    status = 0
    for source in sorted(HERE.glob("*.dot")):
        picture, new = source.with_suffix(".svg"), drawn(source)
        if is_check and (not picture.exists() or picture.read_text() != new):
            print(f"docs/pictures/{picture.name} is out of date; renew it with ./run pictures")
            status = 1
        elif not is_check:
            picture.write_text(new)
    return status


if __name__ == "__main__":
    if sys.argv[1:] not in ([], ["--check"]):
        sys.exit(__doc__)
    sys.exit(main(bool(sys.argv[1:])))
