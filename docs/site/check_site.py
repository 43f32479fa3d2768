"""What a finished site holds: nothing that is not used, and no link that leads nowhere."""

import collections
import html
import pathlib
import re
import textwrap
from html.parser import HTMLParser
from typing import Dict, List, Set
from urllib.parse import unquote, urlsplit

OPTION = re.compile(r"(?<!\S)--?\w[\w-]*")
CELL = re.compile(r'<td class="(markdownTableBody\w+)">(.*?)</td>', re.DOTALL)
PYTHON_CLASS = re.compile(r'<a class="[^"]*" href="[^"]*">jtpdf\.([A-Z]\w*)</a>')


class Page(HTMLParser):
    """The names that a page defines and the links that it has."""

    def __init__(self, text: str) -> None:
        super().__init__()
        self.names: Set[str] = set()
        self.links: List[str] = []
        self.feed(text)

    def handle_starttag(self, tag, attrs) -> None:
        for key, value in attrs:
            if key in ("id", "name") and value:
                self.names.add(value)
            elif key in ("href", "src") and value is not None:
                self.links.append(value)


def _pages(folder: pathlib.Path) -> Dict[str, Page]:
    return {file.name: Page(file.read_text(encoding="utf-8")) for file in folder.glob("*.html")}


def _cell(match: "re.Match[str]") -> str:
    length = len(html.unescape(re.sub(r"<[^>]*>", "", match[2])).strip())
    kind = "sentence" if length >= 40 else "phrase" if length >= 12 else ""
    return f'<td class="{match[1]} {kind}">{match[2]}</td>' if kind else match[0]


def tidy(folder: pathlib.Path) -> None:
    """Mends what Doxygen cannot be told.

    Reference pages begin with their folder and with links into themselves, which go, as do the links
    beside names that are links; examples in headers are indented; code and options would break at
    their hyphens, and long cells of tables be narrow; and Doxygen takes a class of the Python package
    for the C++ one.
    """
    for file in folder.glob("*.html"):
        text = file.read_text(encoding="utf-8")
        text = re.sub(r'<div class="summary">.*?</div>', "", text, flags=re.DOTALL)
        text = re.sub(r'<div id="nav-path".*?</div>', "", text, flags=re.DOTALL)
        text = re.sub(r' <a href="[^"]*">More\.\.\.</a>', "", text)
        text = re.sub(r'(?<=<pre class="fragment">).*?(?=</pre>)',
                      lambda match: textwrap.dedent(match[0]), text, flags=re.DOTALL)
        text = re.sub(r"<code>(?=[^<\s]{1,24}</code>)", '<code class="short">', text)
        text = CELL.sub(_cell, text)
        text = re.sub(r"(?<=<b>)[^<]*(?=</b>)", lambda match: OPTION.sub(
            r'<span class="short">\g<0></span>', match[0]), text)
        text = PYTHON_CLASS.sub(lambda match: f'<a href="python-package.html#python-package-'
                                f'{match[1].lower()}">jtpdf.{match[1]}</a>', text)
        file.write_text(text, encoding="utf-8")


def prune(folder: pathlib.Path) -> None:
    """Removes what no page leads to, from the first page on: Doxygen writes more than we use."""
    pages = _pages(folder)
    reached = {"index.html"}
    waiting = collections.deque(reached)
    while waiting:
        page = pages.get(waiting.popleft())
        for link in page.links if page else []:
            name = unquote(urlsplit(link).path)
            if name and name not in reached:
                reached.add(name)
                waiting.append(name)
    for file in folder.iterdir():
        if file.is_file() and file.name not in reached:
            file.unlink()


def lost_code(markdown: str, page: str) -> List[str]:
    """Lines and pieces of code in a Markdown text that its page does not show as they are."""
    markdown = re.sub(r"<!--.*?-->", "", markdown, flags=re.DOTALL)
    blocks = re.compile(r"^```.*?\n(.*?)^```$", re.MULTILINE | re.DOTALL)
    code = [line for block in blocks.findall(markdown) for line in block.splitlines()]
    # The titles of links Doxygen shows without their marks.
    text = re.sub(r"\[[^\]]*\]\(", "", blocks.sub("", markdown))
    code += re.findall(r"(?<!`)`([^`]+)`(?!`)", text)
    pieces = re.findall(r'<(?:code|div class="line")[^>]*>(.*?)</(?:code|div)>', page, re.DOTALL)
    shown = {" ".join(html.unescape(re.sub(r"<[^>]*>", "", piece)).split()) for piece in pieces}
    return [piece for piece in code if " ".join(piece.split()) not in shown | {""}]


def problems(folder: pathlib.Path) -> List[str]:
    pages = _pages(folder)
    found = []
    for name, page in sorted(pages.items()):
        for link in page.links:
            parts = urlsplit(link)
            if parts.scheme in ("http", "https", "mailto"):
                continue
            target = unquote(parts.path) or name
            if parts.scheme or not (folder / target).is_file():
                found.append(f"{name}: {link}: there is no such file in the site")
            elif parts.fragment and target in pages and \
                    unquote(parts.fragment) not in pages[target].names:
                found.append(f"{name}: {link}: the page has no such place")
    return found
