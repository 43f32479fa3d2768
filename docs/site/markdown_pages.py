"""The Markdown pages of the repository as Doxygen reads them.

Headings get names, links between pages become references by name, links to other files of the
repository become plain text, pictures become figures, and comments go.
"""

import collections
import html
import os.path
import pathlib
import re
import textwrap
from typing import Callable, Dict, List

FENCED = re.compile(r"(^```.*?^```$)", re.MULTILINE | re.DOTALL)
INDENTED = re.compile(r"(?<=\n\n)((?: {4}.*\n)+)")
PICTURE = re.compile(r"!\[([^\]]*)\]\(([^)]+)\)")
LINK = re.compile(r"(?<!!)\[((?:[^\[\]`]|`[^`]*`)*)\]\(([^)\s]+)\)")
HEADING = re.compile(r"^(#+) (.*)$", re.MULTILINE)
AT_SIGN = re.compile(r"(`[^`]*`)|@")
OPTION = re.compile(r"(`[^`]*`)|(?<!-)--(?=\w)")
BYTES = re.compile(r"(^\| byte \|.*\n(?:^\|.*\n)+)", re.MULTILINE)
COMMENT = re.compile(r"<!--.*?-->\n*", re.DOTALL)


def slug(title: str) -> str:
    return re.sub(r"[^\w\- ]", "", title.lower()).replace(" ", "-")


def identity_of(page: pathlib.Path) -> str:
    """The name of the page's file in the site."""
    if page.parent.name == "guide" and page.stem == "index":
        return "guide"
    return page.stem


def outside_code(text: str, change: Callable[[str], str]) -> str:
    """The text with the change made everywhere but in fenced blocks."""
    return "".join(part if part.startswith("```") else change(part) for part in FENCED.split(text))


def fenced(text: str) -> str:
    """The text with its indented blocks of code as fenced ones."""
    return outside_code(text, lambda part: INDENTED.sub(
        lambda match: f"```text\n{textwrap.dedent(match[1])}```\n", part))


class Pages:
    def __init__(self, root: pathlib.Path, pages: List[pathlib.Path], headers: pathlib.Path,
                 pictures: Dict[str, pathlib.Path]) -> None:
        self.names = {page: identity_of(page) for page in pages}
        self.root = root
        self.headers = headers
        self.pictures = pictures
        self.shown: List[pathlib.Path] = []
        self.problems: List[str] = []

    def also(self, file: pathlib.Path, name: str) -> None:
        """Links to the file lead to the page of that name."""
        self.names[file] = name

    def identity(self, page: pathlib.Path) -> str:
        return self.names[page]

    def convert(self, page: pathlib.Path, text: str) -> str:
        name = self.identity(page)
        slugs: "collections.Counter[str]" = collections.Counter()

        def heading(match: "re.Match[str]") -> str:
            anchor = slug(match[2])
            label = f"{name}-{anchor}"
            if slugs[anchor]:
                label += f"-{slugs[anchor]}"
            slugs[anchor] += 1
            if len(match[1]) == 1:
                label = name
            if label == "index":  # Doxygen has named the main page
                return match[0]
            return f"{match[1]} {match[2].replace('`', '')} {{#{label}}}"

        def change(part: str) -> str:
            part = COMMENT.sub("", part)
            part = AT_SIGN.sub(lambda match: match[1] or r"\@", part)
            part = OPTION.sub(lambda match: match[1] or r"\--", part)  # else it becomes a dash
            part = re.sub(r"%(?=\w)", "%%", part)  # one alone would stop a link, and go
            part = BYTES.sub(r'<div class="bytes">\n\n\1\n</div>\n', part)
            part = HEADING.sub(heading, part)
            part = PICTURE.sub(lambda match: self._picture(page, match[1], match[2]), part)
            return LINK.sub(lambda match: self._link(page, match[1], match[2]), part)

        if not re.search(r"^# ", FENCED.sub("", text), re.MULTILINE):  # its first heading is the title
            text = outside_code(text, lambda part: re.sub(r"^##", "#", part, flags=re.MULTILINE))
        text = outside_code(fenced(text), change)
        # Doxygen knows the languages by the ends of file names.
        for language, end in (("sh", "unparsed"), ("text", "unparsed"), ("cmake", "unparsed"),
                              ("python", "py")):
            text = re.sub(rf"^```{language}$", f"```{{.{end}}}", text, flags=re.MULTILINE)
        return text

    def _target(self, page: pathlib.Path, link: str) -> pathlib.Path:
        return pathlib.Path(os.path.normpath(page.parent / link))

    def _link(self, page: pathlib.Path, title: str, link: str) -> str:
        if re.match(r"[a-z]+:", link):
            return f"[{title}]({link})"
        path, _, anchor = link.partition("#")
        target = self._target(page, path) if path else page
        if target in self.names or target.parent == self.headers:
            # Doxygen takes neither code nor a second line in the title of a reference.
            title = " ".join(title.replace("`", "").split())
        if target in self.names and title.endswith(".md"):
            title = self._heading(target)  # in a site pages have titles, not file names
        if target in self.names:
            name = self.names[target]
            return f'[{title}](@ref {name}{"-" + anchor if anchor else ""})'
        if target.parent == self.headers:
            return f"[{title}](@ref {target.name})"
        return title

    def _heading(self, page: pathlib.Path) -> str:
        first = HEADING.search(FENCED.sub("", page.read_text(encoding="utf-8")))
        return first[2].replace("`", "") if first else page.stem

    def _picture(self, page: pathlib.Path, title: str, link: str) -> str:
        file = self.pictures.get(link) or self._target(page, link)
        if not file.exists():
            self.problems.append(f"{page.relative_to(self.root)}: there is no picture {link}")
            return title
        self.shown.append(file)
        text = html.escape(title)
        return (f'<div class="figure"><img src="{file.name}" alt="{text}">'
                f'<span class="caption">{text}</span></div>')
