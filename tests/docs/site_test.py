#!/usr/bin/env python3
"""site_test.py FOLDER: the site in FOLDER is whole, by itself.

Every link leads to a file in it and a place that is there; nothing is fetched from elsewhere; every
page has the navigation with itself marked, a search, and a next or a previous page; what a reader may
look for is in the index of the search.
"""

import html.parser
import pathlib
import re
import sys
from typing import Dict, Iterator, List, Set, Tuple
from urllib.parse import unquote, urlsplit

FETCHED = ("src", "srcset", "data", "poster", "action")
WITHOUT_NEIGHBOURS = {"genindex.html", "search.html", "py-modindex.html"}
# A word of the guide, an export, a method of Python, an option of the command.
SEARCHED = ("scanner", "writepdfimagewithalpha", "canva", "auto")


class Page(html.parser.HTMLParser):
    """The names that a page defines, the links that it has, and what it fetches."""

    def __init__(self, text: str) -> None:
        super().__init__()
        self.names: Set[str] = set()
        self.links: List[str] = []
        self.fetched: List[str] = []
        self.classes: Set[str] = set()
        self.feed(text)

    def handle_starttag(self, tag: str, attrs: "List[Tuple[str, str | None]]") -> None:
        for key, value in attrs:
            if key in ("id", "name") and value:
                self.names.add(value)
            elif key == "class" and value:
                self.classes |= {f"{tag}.{one}" for one in value.split()}
            elif key == "href" and value is not None:
                (self.fetched if tag == "link" else self.links).append(value)
            elif key in FETCHED and value is not None:
                self.fetched.append(value)


def problems(folder: pathlib.Path, pages: Dict[str, Page]) -> Iterator[str]:
    for name, page in sorted(pages.items()):
        for link in page.links + page.fetched:
            parts = urlsplit(link)
            if parts.scheme in ("http", "https", "mailto") and link not in page.fetched:
                continue
            path = (folder / name).parent / unquote(parts.path) if parts.path else folder / name
            path = path.resolve()
            target = str(path.relative_to(folder)) if path.is_relative_to(folder) else ""
            if parts.scheme or parts.netloc or not path.is_file() or not target:
                yield f"{name}: {link} is not in the site"
            elif parts.fragment and target in pages and \
                    unquote(parts.fragment) not in pages[target].names:
                yield f"{name}: {link}: the page has no such place"
        if name in WITHOUT_NEIGHBOURS:
            continue
        if name != "index.html" and "a.current" not in page.classes:
            yield f"{name}: the navigation does not mark the page"
        if not {"a.next-page", "a.prev-page"} & page.classes:
            yield f"{name}: there is no next and no previous page"
        if "input.sidebar-search" not in page.classes:
            yield f"{name}: there is no search"
    for sheet in folder.rglob("*.css"):
        for url in re.findall(r"(?:url\(|@import)\s*[\"']?(?!data:|url)([^)\"']+)", sheet.read_text("utf-8")):
            if not (sheet.parent / url).is_file():
                yield f"{sheet.relative_to(folder)}: {url} is not in the site"
    if "prefers-color-scheme: dark" not in (folder / "_static/styles/furo.css").read_text("utf-8"):
        yield "the style sheet has no dark colours"
    if re.search(r"^import ", (folder / "_static/scripts/furo.js").read_text("utf-8"), re.MULTILINE):
        yield "the theme's script is a module, which browsers don't run from a file"
    index = (folder / "searchindex.js").read_text("utf-8")
    for word in SEARCHED:
        if not re.search(rf"\b{word}\b", index):
            yield f"the search does not find {word}"


def main() -> None:
    folder = pathlib.Path(sys.argv[1]).resolve()
    pages = {str(file.relative_to(folder)): Page(file.read_text("utf-8"))
             for file in folder.rglob("*.html")}
    found = list(problems(folder, pages))
    if found or len(pages) < 20:
        sys.exit("\n".join(found) or f"the site has {len(pages)} pages only")
    print(len(pages), "pages")


if __name__ == "__main__":
    main()
