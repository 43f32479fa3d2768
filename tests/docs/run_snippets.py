#!/usr/bin/env python3
"""Runs the code in a Markdown page as a newcomer would paste it, in the order of the page.

    run_snippets.py PAGE.md WORK [--only NAME]
    run_snippets.py PAGE.md --print NAME

A fenced block behind one of these comments is a snippet; KIND is shell, python, c, cpp or cmake, and
NAME is only there where one snippet is wanted alone:

    <!-- snippet: KIND -->          <!-- snippet: KIND NAME -->

A C or C++ program is saved under the name in its first line, and one of CMake as CMakeLists.txt, for
the commands behind them; the programs are compiled and run by themselves, too. Nothing is added to a
block. One behind <!-- output --> is what the snippet before it prints, both streams together. Every
PDF that is there in the end has to be sound. Every other block of code is behind a comment that says
what runs it, <!-- elsewhere: COMMAND -->, on which page it is a snippet, <!-- elsewhere: PAGE.md -->, or
which file it shows, <!-- file: PATH -->.

WORK is made anew, and holds what the page links to in examples/images; where a comment
<!-- checkout: FOLDER --> is in the page, FOLDER of it is a checkout. The environment says where things
are: SOURCE, STAGE (an installed library), JTPDF (the command, may be empty), JTPDF_LIBRARY, CC, CXX,
QPDF (may be empty).
"""

import argparse
import atexit
import os
import pathlib
import re
import shlex
import shutil
import subprocess
import sys
import tempfile
from typing import Iterator, List, NamedTuple

FENCED = re.compile(r"^```(?P<language>\w*).*\n(?P<text>(?:.*\n)*?)^```$", re.MULTILINE)
COMMENT = re.compile(r"<!-- (snippet|output|elsewhere|file)(?:: (\S+)(?: (\S+))?)? -->\n+$")
CHECKOUT = re.compile(r"^<!-- checkout: (\S+) -->$", re.MULTILINE)
INPUT = re.compile(r"\]\((?:\.\./)*(examples/images/[^)/]+)\)")
CODE = ("sh", "python", "c", "cpp", "cmake")
COMPILERS = {"c": ("CC", "-std=c99"), "cpp": ("CXX", "-std=c++17")}


class Snippet(NamedTuple):
    kind: str  # "output" for what the one before prints
    name: str
    text: str
    line: int


def check_elsewhere(place: str, text: str, line: int) -> None:
    source = pathlib.Path(os.environ.get("SOURCE", ".")) / place
    if not source.exists():
        sys.exit(f"line {line}: there is no {place} to run this block")
    if source.suffix == ".md" and all(
            text != snippet.text for snippet in snippets(source.read_text(encoding="utf-8"))):
        sys.exit(f"line {line}: {place} has no snippet like this block")


def snippets(page: str) -> Iterator[Snippet]:
    found = 0
    for match in FENCED.finditer(page):
        line = page.count("\n", 0, match.start()) + 1
        comment = COMMENT.search(page[:match.start()])
        found += comment is not None
        if comment and comment[1] == "snippet":
            yield Snippet(comment[2], comment[3] or "", match["text"], line)
        elif comment and comment[1] == "output":
            yield Snippet("output", "", match["text"], line)
        elif comment and comment[1] == "elsewhere":
            check_elsewhere(comment[2], match["text"], line)
        elif not comment and match["language"] in CODE:
            sys.exit(f"line {line}: nothing runs this block: put <!-- snippet: KIND --> before it")
    if found != len(re.findall(r"^<!-- (?:snippet|output|elsewhere|file)\b", page, re.MULTILINE)):
        sys.exit("a comment that announces a block has none behind it")


def link_checkout(source: pathlib.Path, folder: pathlib.Path) -> None:
    """A checkout that may be built in, without what earlier builds left in the source."""
    folder.mkdir(exist_ok=True)
    for entry in source.iterdir():
        if entry.name not in (".git", "build"):
            (folder / entry.name).symlink_to(entry)


class Room:
    """The folder that the snippets run in, and what they find in their environment."""

    def __init__(self, work: pathlib.Path, page: str) -> None:
        self.work = work
        source = pathlib.Path(os.environ["SOURCE"])
        shutil.rmtree(work, ignore_errors=True)
        work.mkdir(parents=True)
        for folder in CHECKOUT.findall(page):
            link_checkout(source, work / folder)
        for name in set(INPUT.findall(page)):
            shutil.copy(source / name, work)
        # Installed libraries have no blanks in their paths: $(pkg-config ...) would be split there.
        stage = pathlib.Path(tempfile.mkdtemp()) / "stage"
        stage.symlink_to(os.environ["STAGE"])
        atexit.register(shutil.rmtree, stage.parent)
        library = next(stage.rglob("libjtpdf.so")).parent
        self.environment = {
            **os.environ,
            "HOME": str(work / "home"),
            "CMAKE_PREFIX_PATH": str(stage),
            "PKG_CONFIG_PATH": f"{library}/pkgconfig",
            "LD_LIBRARY_PATH": str(library),
            "PYTHONPATH": str(source / "bindings/python/src"),
            "PYTHONDONTWRITEBYTECODE": "1",
        }
        if os.environ.get("JTPDF"):
            folder = os.path.dirname(os.environ["JTPDF"])
            self.environment["PATH"] = f"{folder}:{os.environ['PATH']}"

    def run(self, command: List[str], what: str) -> str:
        result = subprocess.run(command, cwd=self.work, env=self.environment, text=True,
                                errors="replace", stdout=subprocess.PIPE,
                                stderr=subprocess.STDOUT, check=False)
        if result.returncode != 0:
            sys.exit(f"{what}: exit status {result.returncode} of {shlex.join(command)}\n"
                     f"{result.stdout}")
        return result.stdout

    def run_snippet(self, snippet: Snippet, what: str) -> str:
        kind, text = snippet.kind, snippet.text
        if kind == "shell":
            return self.run(["bash", "-euo", "pipefail", "-c", text], what)
        if kind == "python":
            return self.run(["/usr/bin/python3", "-W", "error", "-c", text], what)
        if kind == "cmake":
            (self.work / "CMakeLists.txt").write_text(text)
            return ""
        if kind not in COMPILERS:
            sys.exit(f"{what}: unknown kind '{kind}': use shell, python, c, cpp or cmake")
        name = re.match(rf"(?:/\*|//) (\w+\.{kind})\b", text)
        if not name:
            sys.exit(f"{what}: the first line has to name the file, as /* name.{kind} */")
        (self.work / name[1]).write_text(text)
        compiler, standard = COMPILERS[kind]
        flags = shlex.split(self.run(["pkg-config", "--cflags", "--libs", "jtpdf"], what))
        self.run([os.environ[compiler], standard, "-Wall", "-Wextra", "-Werror", "-pthread", name[1],
                  "-o", "snippet", *flags], what)
        return self.run(["./snippet"], what)

    def check_documents(self) -> List[pathlib.Path]:
        documents = sorted(self.work.glob("*.pdf"))
        for document in documents:
            if os.environ.get("QPDF"):
                self.run([os.environ["QPDF"], "--check", document.name], document.name)
        print(len(documents), "documents:", *(document.name for document in documents))
        return documents


def main() -> None:
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("page", type=pathlib.Path)
    parser.add_argument("work", type=pathlib.Path, nargs="?")
    parser.add_argument("--only", metavar="NAME")
    parser.add_argument("--print", metavar="NAME", dest="shown")
    arguments = parser.parse_args()

    page = arguments.page.read_text(encoding="utf-8")
    if arguments.shown:
        shown = [snippet.text for snippet in snippets(page) if snippet.name == arguments.shown]
        if len(shown) != 1:
            sys.exit(f"{arguments.page} has {len(shown)} snippets called {arguments.shown}")
        print(shown[0], end="")
        return
    if not arguments.work:
        parser.error("WORK, the folder to run in, is missing")
    room = Room(arguments.work, page)
    count = 0
    printed = ""
    for snippet in snippets(page):
        what = f"{arguments.page}:{snippet.line}"
        if snippet.kind == "output":
            if snippet.text != printed:
                sys.exit(f"{what}: the snippet before prints\n{printed}and not\n{snippet.text}")
        elif arguments.only in (None, snippet.name):
            printed = room.run_snippet(snippet, what)
            count += 1
    if count == 0:
        sys.exit(f"{arguments.page} has no snippet {arguments.only or 'to run'}")
    documents = room.check_documents()
    if arguments.only and not documents:
        sys.exit(f"the snippet {arguments.only} wrote no document")
    print(count, "snippets ran")


if __name__ == "__main__":
    main()
