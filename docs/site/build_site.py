#!/usr/bin/env python3
"""Makes the documentation site; scripts/docs calls it.

    build_site.py --album PROGRAM --library FILE [--page FOLDER] --output DIRECTORY

PROGRAM is the built example album, FILE the shared library, for the Python package. DIRECTORY/html
becomes the site; with FOLDER, which scripts/package-js makes, the page "Pictures to PDF" is part of it.
It fails, and says where, when an export or a name of a package is not documented, when a link leads
nowhere, or when the gallery does not show what the album has.
"""

import argparse
import os
import pathlib
import re
import shutil
import subprocess
import sys
from typing import Dict, List

import headers
import reference

SITE = pathlib.Path(__file__).resolve().parent
ROOT = SITE.parent.parent
DOCS = ROOT / "docs"
HEADERS = ROOT / "include/jtpdf"
C_HEADERS = sorted(HEADERS.glob("*.h"), key=lambda header: (header.name != "jtpdf.h", header.name))
CPP_HEADERS = sorted(HEADERS.glob("*.hpp"))

LINK = re.compile(r"(?<!!)\[((?:[^\[\]`]|`[^`]*`)*)\]\(([^)\s:#]+)(#[^)\s]*)?\)")
# Files of the repository that have a page in the site.
PAGES = {
    **{f"include/jtpdf/{header.name}": "reference/c.rst" for header in C_HEADERS},
    **{f"include/jtpdf/{header.name}": "reference/cpp.rst" for header in CPP_HEADERS},
    "bindings/python/README.md": "reference/python.rst",
    "bindings/js/jtpdf.d.ts": "reference/javascript.md",
    "tools/jtpdf/jtpdf.1": "reference/command.md",
}


def link_in_site(page: pathlib.Path, match: "re.Match[str]", with_page: bool) -> str:
    """The link as the site has it: to the page of a file, or to the file; else its words alone."""
    title, path, anchor = match.groups()
    target = pathlib.Path(os.path.normpath(page.parent / path))
    name = str(target.relative_to(ROOT))
    if name == "web/index.html":  # not one of Sphinx's, and there only if it was made
        return f'<a href="{os.path.relpath(DOCS / "pictures/index.html", page.parent)}">{title}</a>' \
            if with_page else title
    if name in PAGES:
        return f"[{title}]({os.path.relpath(DOCS / PAGES[name], page.parent)})"
    if target.is_relative_to(DOCS) and title.endswith(".md"):  # in a site pages have titles
        return f"[{re.search('^#+ (.*)$', target.read_text('utf-8'), re.M)[1]}]({path}{anchor or ''})"
    if target.is_relative_to(DOCS) or target.is_file() and target.suffix != ".md":
        return match[0]
    return title


def copy_pages(pages: pathlib.Path, with_page: bool) -> None:
    """What Sphinx reads, with what the pages link to in its place beside them."""
    shutil.copytree(DOCS, pages, ignore=shutil.ignore_patterns("site"))
    for entry in ROOT.iterdir():
        if entry.name not in ("docs", "build", ".git"):
            (pages.parent / entry.name).symlink_to(entry)
    for page in pages.rglob("*.md"):
        original = DOCS / page.relative_to(pages)
        page.write_text(LINK.sub(lambda match: link_in_site(original, match, with_page),
                                 page.read_text("utf-8")), "utf-8")


def render_album(album: pathlib.Path, folder: pathlib.Path) -> None:
    """The pages of the album and its card as pictures, by the names that the gallery uses."""
    folder.mkdir(parents=True)
    subprocess.run([album, folder / "album.pdf", ROOT / "examples/images"], check=True)
    for document, name, *pages in (("album.pdf", "album"), ("album-card.pdf", "card", "-singlefile")):
        subprocess.run(["pdftoppm", "-png", "-cropbox", "-scale-to-x", "1000", "-scale-to-y", "-1", *pages,
                        folder / document, folder / name], check=True)


def write_reference(folder: pathlib.Path) -> None:
    """The pages of the C and the C++ interface."""
    c = {header.name: headers.read(header.read_text("utf-8"), False) for header in C_HEADERS}
    cpp = {header.name: headers.read(header.read_text("utf-8"), True) for header in CPP_HEADERS}
    known: Dict[str, str] = {}
    for items in c.values():
        known.update(reference.links(items, "c"))
    page = reference.Page("c", known)
    page.heading("C reference", "#")
    for name, items in c.items():
        page.header(name, items)
    (folder / "c.rst").write_text("\n".join(page.lines), "utf-8")

    for items in cpp.values():
        known.update(reference.links(items, "cpp"))
    page = reference.Page("cpp", known)
    page.heading("C++ reference", "#")
    for name, items in cpp.items():
        page.header(name, items)
    (folder / "cpp.rst").write_text("\n".join(page.lines), "utf-8")


def write_manual(folder: pathlib.Path) -> None:
    """The manual page, each section of it under a heading of Sphinx's."""
    html = subprocess.run(["mandoc", "-T", "html", "-O", "fragment", ROOT / "tools/jtpdf/jtpdf.1"],
                          check=True, capture_output=True, text=True).stdout
    html = re.sub(r"\n\s+", " ", html.partition('<div class="manual-text">')[2])
    lines = ["# Manual of the command", ""]
    for level, title, text in re.findall(
            r'<h([12]) class="S[hs]" id="\w+"><a [^>]*>(.*?)</a></h\1>(.*?)(?=</?section|<table)', html,
            re.DOTALL):
        lines += ["#" * (int(level) + 1) + " " + title.capitalize(), ""]
        lines += ["```{raw} html", text.strip(), "```", ""] if text.strip() else []
    (folder / "command.md").write_text("\n".join(lines), "utf-8")


def write_javascript(folder: pathlib.Path) -> None:
    """What the npm package exports, by its file of types: what is said of each, and how it is declared."""
    types = (ROOT / "bindings/js/jtpdf.d.ts").read_text("utf-8")
    lines = ["# JavaScript reference", "", "What the npm package `jtpdf` gives, as its file of types declares it.", ""]
    for comment, declaration in re.findall(
            r"^(?:/\*\*(.*?)\*/\n)?(export .*?)(?=\n\n(?:/\*\*|export)|\Z)", types, re.DOTALL | re.MULTILINE):
        name = re.search(r"^export (?:class|function|type|interface) (\w+)", declaration)[1]
        prose = re.sub(r"^ *\* ?", "", comment, flags=re.MULTILINE).strip()
        lines += [f"## {name}", "", *prose.splitlines(), "", "```typescript", declaration.strip(), "```", ""]
    (folder / "javascript.md").write_text("\n".join(lines), "utf-8")


def public_names() -> Dict[str, List[str]]:
    """What the pages of the reference have to show, found in the simplest way there is."""
    package = (ROOT / "bindings/python/src/jtpdf/__init__.py").read_text("utf-8")
    cpp = "".join(header.read_text("utf-8") for header in CPP_HEADERS)
    cpp = re.sub(r"^namespace detail .*?^}  // namespace detail| private:.*?^};|^}  // namespace jtpdf$.*?(?=^namespace jtpdf|\Z)", "",
                 cpp, flags=re.DOTALL | re.MULTILINE)
    return {
        "c.html": (ROOT / "src/jtpdf.exports").read_text().split(),
        "cpp.html": re.findall(r"^(?:class|struct) (?:\[\[\w+\]\] )?(\w+)(?! *<|::)\b", cpp, re.MULTILINE)
        + re.findall(r"^  (?!return)(?:static |constexpr )*[\w:]+[&*]? (\w+)\(.*[{;,]$", cpp, re.MULTILINE),
        "python.html": re.findall(r'"(\w+)"', re.search(r"__all__ = \[(.*?)\]", package, re.DOTALL)[1]),
    }


def undocumented(html: pathlib.Path) -> List[str]:
    """Names of the interface without an entry in the reference."""
    missing = []
    for page, names in public_names().items():
        text = (html / "reference" / page).read_text("utf-8")
        shown = re.findall(r'<span class="sig-name descname">(?:<span class="\w+">)*(\w+)', text)
        missing += [f"{name} has no entry in {page}" for name in names if name not in shown]
    text = (html / "reference/javascript.html").read_text("utf-8")
    types = (ROOT / "bindings/js/jtpdf.d.ts").read_text("utf-8")
    missing += [f"{name} has no entry in javascript.html" for name in re.findall(r"^export \w+ (\w+)", types, re.MULTILINE)
                if f"<h2>{name}<" not in text]
    return missing


def main() -> None:
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--album", type=pathlib.Path, required=True)
    parser.add_argument("--library", type=pathlib.Path, required=True)
    parser.add_argument("--page", type=pathlib.Path)
    parser.add_argument("--output", type=pathlib.Path, required=True)
    arguments = parser.parse_args()

    work = arguments.output.resolve()
    for folder in ("input", "html", "album"):
        shutil.rmtree(work / folder, ignore_errors=True)
    pages, html = work / "input/docs", work / "html"
    (work / "input").mkdir(parents=True)
    copy_pages(pages, arguments.page is not None)
    render_album(arguments.album.resolve(), work / "album")
    gallery = (pages / "gallery.md").read_text("utf-8")
    for picture in (work / "album").glob("*.png"):
        shutil.copy(picture, pages)
        if picture.name not in gallery:
            sys.exit(f"gallery.md does not show {picture.name}")
    write_reference(pages / "reference")
    write_manual(pages / "reference")
    write_javascript(pages / "reference")
    subprocess.run(
        [sys.executable, "-B", "-m", "sphinx", "-q", "-n", "-W", "--keep-going", "-b", "html", "-c", SITE,
         "-d", work / "input/read", pages, html], check=True,
        env={**os.environ, "JTPDF_LIBRARY": str(arguments.library.resolve())})
    if arguments.page is not None:
        shutil.copytree(arguments.page, html / "pictures")
    missing = undocumented(html)
    if missing:
        sys.exit("\n".join(missing))
    print(f"The site: {html}/index.html ({len(list(html.rglob('*.html')))} pages)")


if __name__ == "__main__":
    main()
