#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Builds the site: build.py FOLDER BUILD writes it to FOLDER/html, with the generated headers of the build folder BUILD.

The pages of docs keep their places; README.md, CHANGELOG.md, CONTRIBUTING.md and the page on the samples join them.
The manual pages and the API reference are made here. A warning of any tool is an error.
"""
import os
import re
import shutil
import subprocess
import sys
import xml.etree.ElementTree as tree
from pathlib import Path

SITE = Path(__file__).resolve().parent
DOCS = SITE.parent
ROOT = DOCS.parent
OTHER_PAGES = {"README.md": "readme.md", "CHANGELOG.md": "changelog.md", "CONTRIBUTING.md": "contributing.md",
               "samples/README.md": "samples.md"}
KINDS = ("tutorials", "how-to", "reference", "explanation")
MANUALS = ("zviptvctl.1", "zviptv-sim.1", "zv-iptv.7")
LINK = re.compile(r"(?<=\]\()([^)#:\s]+)(?=(?:#[^)]*)?\))")


def run(*command, **options):
    return subprocess.run(command, check=True, text=True, **options)


def place(file):
    """Where a file of the project is in the site; none if it is not there."""
    name = str(file.relative_to(ROOT))
    if name in OTHER_PAGES:
        return Path(OTHER_PAGES[name])
    parts = file.relative_to(DOCS).parts if file.is_relative_to(DOCS) else ()
    if parts[:1] == ("man",):
        return Path("reference", *parts).with_suffix(".md")
    return Path(*parts) if parts and (len(parts) == 1 or parts[0] in (*KINDS, "pictures")) else None


def with_links(file, text):
    """The page with links to where its targets are in the site."""
    def moved(match):
        target = place(Path(os.path.normpath(file.parent / match[1])))
        if target is None:
            raise SystemExit(f"{file.relative_to(ROOT)} links to {match[1]}, which is not part of the site")
        return os.path.relpath(target, place(file).parent)

    return LINK.sub(moved, text)


def toctree(pages, caption=""):
    return "\n".join(["", "```{toctree}", ":hidden:", *([f":caption: {caption}"] if caption else []), "", *pages, "```", ""])


def with_contents(index):
    """The index with the navigation: a group for each of its sections, of the pages that the section links to."""
    sections = re.split(r"^## (.*)$", index, flags=re.M)[1:]
    entry = re.compile(r"\[(.*?)\]\((.*?\.md)\)")
    return index + "".join(toctree([f"{name} <{page}>" for name, page in entry.findall(text)], title)
                           for title, text in zip(sections[::2], sections[1::2]))


def copy_pages(source):
    found = [file for file in sorted(DOCS.rglob("*")) if file.suffix in (".md", ".svg", ".png", ".json")]
    for file in [*found, *(ROOT / name for name in OTHER_PAGES)]:
        if place(file) is None:
            continue
        copy = source / place(file)
        copy.parent.mkdir(parents=True, exist_ok=True)
        if file.suffix != ".md":
            shutil.copy(file, copy)
            continue
        text = with_links(file, file.read_text())
        copy.write_text(with_contents(text) if file == DOCS / "index.md" else text)


def manual_page(name):
    """A manual page: Markdown headings with HTML between them."""
    with open(DOCS / f"man/{name}.scd") as page:
        roff = run("scdoc", stdin=page, stdout=subprocess.PIPE).stdout
    html = run("mandoc", "-T", "html", "-O", "fragment", input=roff, stdout=subprocess.PIPE).stdout
    body = re.search(r'<div class="manual-text">\n(.*)</div>\n<table class="foot">', html, re.S)[1]
    body = re.sub(r"</?section.*>\n", "", body)
    body = re.sub(r'<h([12]) .*?id=.*?><a .*?>(.*?)</a></h\1>',
                  lambda h: f"\n{'#' * (int(h[1]) + 1)} {h[2].capitalize()}\n", body, flags=re.S)
    body = re.sub(rf"<b>({'|'.join(m[:-2] for m in MANUALS)})</b>\((\d)\)", r'<a href="\1.\2.html">\1(\2)</a>', body)
    return f"# {name[:-2]}({name[-1]})\n\n<div class=\"manual\">\n\n{body}\n</div>\n"


def make_manual(source):
    folder = source / "reference/man"
    folder.mkdir()
    for name in MANUALS:
        (folder / f"{name}.md").write_text(manual_page(name))


def without_private_members(folder):
    """Doxygen writes the private members of a class into its XML, always."""
    for file in (*folder.glob("class*.xml"), *folder.glob("struct*.xml")):
        document = tree.parse(file)
        compound = document.find("compounddef")
        for section in compound.findall("sectiondef"):
            if section.get("kind").startswith("private"):
                compound.remove(section)
        document.write(file)


def make_reference(source, site, build):
    """A page for each header, linked from the tables of the overview. contract.reference requires the comments."""
    generated = [f'"{build / folder}/include"' for folder in ("protocol/generated", "kits")]
    run("doxygen", "-", cwd=ROOT, input=f"@INCLUDE = docs/site/Doxyfile\nINPUT += {' '.join(generated)}\n"
        f"STRIP_FROM_PATH += {' '.join(generated)}\nOUTPUT_DIRECTORY = \"{site}\"\n")
    without_private_members(site / "xml")
    headers = sorted(tree.parse(file).find("compounddef/location").get("file").removeprefix("zviptv/")
                     for file in (site / "xml").glob("*_8h.xml"))
    overview = source / "reference/api.md"
    text = re.sub(r"`zviptv/([\w/]+\.h)`(?=.*\|)", r"[`zviptv/\1`](api/\1.md)", overview.read_text())
    listed = re.findall(r"\(api/(.*?)\.md\)", text)
    overview.write_text(text + toctree([f"api/{header}.md" for header in dict.fromkeys(listed + headers)]))
    for header in headers:
        page = source / f"reference/api/{header}.md"
        page.parent.mkdir(parents=True, exist_ok=True)
        page.write_text(f"# {header}\n\n```{{doxygenfile}} zviptv/{header}\n```\n")


def complete_theme(static):
    """Fixes Debian's furo for a site that is opened from a folder: it takes normalize.css from a web server, its script
    is a module, and its style sheet has lost the colours for a dark desktop."""
    style = static / "styles/furo.css"
    text = style.read_text().replace("@import url(/javascript/normalize.css/normalize.css);",
                                     Path("/usr/share/javascript/normalize.css/normalize.min.css").read_text())
    dark = re.search(r'body\[data-theme="dark"\] \{(\s*--color.*?)\}', text, re.S)[1]
    style.write_text(f'{text}@media not print {{ @media (prefers-color-scheme: dark) '
                     f'{{ body:not([data-theme="light"]) {{{dark}}} }} }}\n')
    script, module = static / "scripts/furo.js", static / "scripts/gumshoe-patched.js"
    script.write_text(script.read_text().replace('import Gumshoe from "./gumshoe-patched.js";', module.read_text()))
    module.unlink()


def main(site, build):
    source = site / "source"
    for old in ("source", "xml", "html", "doctrees"):
        shutil.rmtree(site / old, ignore_errors=True)
    source.mkdir(parents=True)
    copy_pages(source)
    make_manual(source)
    make_reference(source, site, build)
    run("sphinx-build", "-q", "-W", "--keep-going", "-b", "html", "-c", SITE, "-d", site / "doctrees", source,
        site / "html", env={**os.environ, "ZVIPTV_DOXYGEN_XML": str(site / "xml")})
    complete_theme(site / "html/_static")


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    main(Path(sys.argv[1]).resolve(), Path(sys.argv[2]).resolve())
