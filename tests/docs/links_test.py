#!/usr/bin/env python3
"""links_test.py ROOT: every relative link in the Markdown pages below ROOT leads somewhere.

A link may name a heading of a page, as page.md#heading. What was built or installed is no page.
"""

import collections
import pathlib
import re
import sys
from typing import Iterator, Set, Tuple

NO_SOURCES = {".git", "build", "venv", "node_modules"}
FENCED = re.compile(r"^```.*?^```$", re.MULTILINE | re.DOTALL)
CODE = re.compile(r"(`+)[^`]+?\1")
LINK = re.compile(r"\]\(\s*<?([^)\s>]+)>?(?:\s+\"[^\"]*\")?\s*\)|<(?:img|a)\s[^>]*(?:src|href)=\"([^\"]+)\"")
HEADING = re.compile(r"^#+ +(.*?)\s*$", re.MULTILINE)


def links(text: str) -> Iterator[str]:
    for match in LINK.finditer(CODE.sub("", FENCED.sub("", text))):
        yield match[1] or match[2]


def anchors(text: str) -> Set[str]:
    """The names that headings go by in a link; the second of one name has a number behind it."""
    names: Set[str] = set()
    count: "collections.Counter[str]" = collections.Counter()
    for title in HEADING.findall(FENCED.sub("", text)):
        name = re.sub(r"[^\w\- ]", "", title.lower()).replace(" ", "-")
        names.add(f"{name}-{count[name]}" if count[name] else name)
        count[name] += 1
    return names


def dead_links(page: pathlib.Path) -> Iterator[Tuple[str, str]]:
    text = page.read_text(encoding="utf-8")
    for link in links(text):
        if re.match(r"[a-z]+:", link):
            continue
        path, _, anchor = link.partition("#")
        target = page.parent / path if path else page
        if not target.exists():
            yield link, "there is no such file"
        elif anchor and target.suffix == ".md" and anchor not in anchors(target.read_text("utf-8")):
            yield link, "the page has no such heading"


def pages(folder: pathlib.Path) -> Iterator[pathlib.Path]:
    for entry in sorted(folder.iterdir()):
        if entry.is_dir() and not entry.is_symlink() and entry.name not in NO_SOURCES:
            yield from pages(entry)
        elif entry.suffix == ".md":
            yield entry


def main() -> None:
    root = pathlib.Path(sys.argv[1])
    found = list(pages(root))
    dead = [(page, *problem) for page in found for problem in dead_links(page)]
    for page, link, reason in dead:
        print(f"{page.relative_to(root)}: {link}: {reason}")
    if dead or not found:
        sys.exit(1)
    print(len(found), "pages")


if __name__ == "__main__":
    main()
