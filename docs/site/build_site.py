#!/usr/bin/env python3
"""Makes the documentation site; scripts/docs calls it.

    build_site.py --album PROGRAM --output DIRECTORY [--doxygen PROGRAM]

PROGRAM is the built example album. DIRECTORY/html becomes the site. It fails, and says where, when
an export or a type of the public headers is not documented, when Doxygen warns of anything, when a
link leads nowhere, or when the gallery does not show what the album has.
"""

import argparse
import pathlib
import re
import shutil
import subprocess
import sys
from typing import Dict, List

import check_site
import header_comments
import markdown_pages
import other_pages

SITE = pathlib.Path(__file__).resolve().parent
ROOT = SITE.parent.parent
HEADERS = ROOT / "include/jtpdf"

# What the head of every page leads to, if it is there.
NAVIGATION = [
    ("Guide", ROOT / "docs/guide/index.md"),
    ("Reference", SITE / "reference.md"),
    ("File format", ROOT / "docs/file-format.md"),
    ("Readers", ROOT / "docs/readers.md"),
    ("Performance", ROOT / "docs/performance.md"),
    ("Testing", ROOT / "docs/testing.md"),
    ("Gallery", SITE / "gallery.md"),
]


def fail(lines: List[str]) -> None:
    if lines:
        sys.exit("\n".join(str(line) for line in lines))


def exports() -> List[str]:
    return (ROOT / "src/jtpdf.exports").read_text().split()


def version() -> str:
    text = (ROOT / "CMakeLists.txt").read_text()
    return re.search(r"^project\(jtpdf VERSION ([\d.]+)", text, re.MULTILINE)[1]


def render_album(album: pathlib.Path, folder: pathlib.Path) -> Dict[str, pathlib.Path]:
    """The pages of the album and its card as pictures, by the names that the gallery uses."""
    folder.mkdir(parents=True)
    subprocess.run([album, folder / "album.pdf", ROOT / "examples/images"], check=True)
    for document, name, *pages in (("album.pdf", "album"), ("album-card.pdf", "card", "-singlefile")):
        subprocess.run(["pdftoppm", "-png", "-cropbox", "-scale-to-x", "1000", "-scale-to-y", "-1", *pages,
                        folder / document, folder / name], check=True)
    return {picture.name: picture for picture in folder.glob("*.png")}


def write_headers(folder: pathlib.Path) -> None:
    folder.mkdir(parents=True)
    for header in sorted(HEADERS.iterdir()):
        text = header.read_text(encoding="utf-8")
        if header.suffix == ".hpp":
            text = header_comments.cpp_header(text, set(exports()))
        else:
            text = header_comments.c_header(text)
        (folder / header.name).write_text(text, encoding="utf-8")


def sources() -> List[pathlib.Path]:
    pages = [*SITE.glob("*.md"), *ROOT.glob("docs/*.md"), *ROOT.glob("docs/guide/*.md")]
    return sorted(pages)


def write_pages(folder: pathlib.Path, pictures: Dict[str, pathlib.Path]) -> List[pathlib.Path]:
    """Writes all Markdown pages as Doxygen reads them; returns the pictures that they show."""
    folder.mkdir(parents=True)
    pages = markdown_pages.Pages(ROOT, sources(), HEADERS, pictures)
    pages.also(ROOT / "bindings/python/README.md", "python-package")
    pages.also(ROOT / "tools/jtpdf/jtpdf.1", "command")
    for source in sources():
        text = source.read_text(encoding="utf-8")
        (folder / f"{pages.identity(source)}.md").write_text(pages.convert(source, text), "utf-8")
    manual = (ROOT / "tools/jtpdf/jtpdf.1").read_text(encoding="utf-8")
    (folder / "command.md").write_text(other_pages.manual(manual, "command"), "utf-8")
    package = ROOT / "bindings/python/src/jtpdf"
    (folder / "python-package.md").write_text(other_pages.python(package, "python-package"), "utf-8")
    fail(pages.problems)
    return pages.shown


def navigation() -> str:
    links = []
    for title, page in NAVIGATION:
        if page.exists():
            name = markdown_pages.identity_of(page)
            links.append(f'<a href="$relpath^{name}.html">{title}</a>')
    return "\n".join(links)


def run_doxygen(doxygen: str, work: pathlib.Path) -> List[str]:
    """Runs Doxygen on work/input; returns what it warns of."""
    header = (SITE / "header.html").read_text().replace("@NAVIGATION@", navigation())
    (work / "header.html").write_text(header)
    settings = "\n".join([
        (SITE / "Doxyfile").read_text(),
        f'INPUT = "{work}/input"',
        f'OUTPUT_DIRECTORY = "{work}"',
        f'STRIP_FROM_PATH = "{work}/input/include"',
        f'STRIP_FROM_INC_PATH = "{work}/input/include"',
        f'USE_MDFILE_AS_MAINPAGE = "{work}/input/pages/index.md"',
        f'PROJECT_NUMBER = "{version()}"',
        f'HTML_HEADER = "{work}/header.html"',
        f'HTML_FOOTER = "{SITE}/footer.html"',
        f'LAYOUT_FILE = "{SITE}/layout.xml"',
        f'GENERATE_TAGFILE = "{work}/tags.xml"',
    ])
    result = subprocess.run([doxygen, "-"], input=settings, text=True, check=False,
                            stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)
    warnings = result.stderr.replace(f"{work}/input/pages/", "").replace(f"{work}/input/", "")
    # A record's fields and the small members of a value type are described by the type's comment.
    covered = re.compile(r": Member .* of (struct|class) (?!jtpdf::Document ).* is not documented\.")
    return [line for line in warnings.splitlines() if line and not covered.search(line)]


def undocumented(work: pathlib.Path) -> List[str]:
    """Exports that have no entry of their own in the reference."""
    tags = (work / "tags.xml").read_text(encoding="utf-8")
    return [f"{name} is exported and not in the reference" for name in exports()
            if f"<name>{name}</name>" not in tags]


def main() -> None:
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--album", type=pathlib.Path, required=True)
    parser.add_argument("--output", type=pathlib.Path, required=True)
    parser.add_argument("--doxygen", default="doxygen")
    arguments = parser.parse_args()

    work = arguments.output.resolve()
    for folder in ("input", "html", "album"):
        shutil.rmtree(work / folder, ignore_errors=True)
    work.mkdir(parents=True, exist_ok=True)

    pictures = render_album(arguments.album.resolve(), work / "album")
    write_headers(work / "input/include/jtpdf")
    shown = write_pages(work / "input/pages", pictures)
    fail([f"gallery.md does not show {name}" for name, path in sorted(pictures.items())
          if path not in shown])
    fail(run_doxygen(arguments.doxygen, work) + undocumented(work))

    html = work / "html"
    for file in [SITE / "jtpdf.css", *shown]:
        shutil.copy(file, html)
    check_site.tidy(html)
    check_site.prune(html)
    fail(check_site.problems(html))
    fail([f"{source.name}: the site does not show `{code}`" for source in sources()
          for code in check_site.lost_code(
              markdown_pages.fenced(source.read_text(encoding="utf-8")),
              (html / f"{markdown_pages.identity_of(source)}.html").read_text(encoding="utf-8"))])
    print(f"The site: {html}/index.html ({len(list(html.glob('*.html')))} pages)")


if __name__ == "__main__":
    main()
