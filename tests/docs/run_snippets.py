#!/usr/bin/env python3
"""Runs the code in a Markdown page as a newcomer would, in the order of the page.

    run_snippets.py PAGE.md WORK [--only NAME]
    run_snippets.py PAGE.md --print NAME

A fenced block behind one of these comments is a snippet; KIND is shell, python, c or cpp, and NAME
is only there where one snippet is wanted alone:

    <!-- snippet: KIND -->          <!-- snippet: KIND
    <!-- snippet: KIND NAME -->     lines that run before it and are not shown
                                    -->

A C or C++ snippet without a main() becomes the body of one; the C++ face, or the C header, is
included already. A block behind <!-- output --> is what the snippet before it prints, both streams
together. Every PDF that is there in the end has to be sound, but those named in
<!-- incomplete: FILE.pdf -->.

WORK is made anew. It holds the folders of examples, and that of their images as images.
The environment says where things are: SOURCE, STAGE (an installed library), JTPDF (the command,
may be empty), JTPDF_LIBRARY, CC, CXX, QPDF (may be empty).
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

SNIPPET = re.compile(
    r"^<!-- (?:snippet: (?P<kind>\w+)(?: (?P<name>\w+))?(?P<hidden>\n.*?)?|(?P<output>output)) ?-->\n+"
    r"```\w*\n(?P<text>.*?)^```$", re.MULTILINE | re.DOTALL)
MARK = re.compile(r"^<!-- (?:snippet:|output)", re.MULTILINE)
INCOMPLETE = re.compile(r"^<!-- incomplete: (\S+) -->$", re.MULTILINE)

PREAMBLE = {
    "c": "#include <jtpdf/jtpdf.h>\n#include <stdio.h>\n#include <string.h>\n",
    "cpp": "#include <jtpdf/jtpdf.hpp>\n",
}
OPENING = {"c": "int main(void) {\n", "cpp": "using namespace jtpdf::literals;\n\nint main() {\n"}


class Snippet(NamedTuple):
    kind: str  # "output" for what the one before prints
    name: str
    hidden: str
    text: str
    line: int


def snippets(page: str) -> Iterator[Snippet]:
    found = list(SNIPPET.finditer(page))
    if len(found) != len(MARK.findall(page)):
        sys.exit("a comment that announces a snippet or an output has no fenced block behind it")
    for match in found:
        yield Snippet(match["kind"] or "output", match["name"] or "",
                      (match["hidden"] or "").strip("\n"), match["text"],
                      page.count("\n", 0, match.start()) + 1)


def program(kind: str, hidden: str, text: str) -> str:
    """The whole program that a C or C++ snippet stands for."""
    if re.search(r"^int main\(", text, re.MULTILINE):
        return text
    lines = hidden.splitlines()
    includes = [line for line in lines if line.startswith("#include")]
    rest = [line for line in lines if not line.startswith("#include")]
    return "\n".join(
        [PREAMBLE[kind], *includes, OPENING[kind], *rest, text, "return 0;", "}", ""])


class Room:
    """The folder that the snippets run in, and what they find in their environment."""

    def __init__(self, work: pathlib.Path) -> None:
        self.work = work
        self.source = pathlib.Path(os.environ["SOURCE"])
        shutil.rmtree(work, ignore_errors=True)
        work.mkdir(parents=True)
        for folder in ("examples", "bindings"):
            (work / folder).symlink_to(self.source / folder)
        (work / "images").symlink_to("examples/images")
        # Installed libraries have no blanks in their paths: $(pkg-config ...) would be split there.
        stage = pathlib.Path(tempfile.mkdtemp()) / "stage"
        stage.symlink_to(os.environ["STAGE"])
        atexit.register(shutil.rmtree, stage.parent)
        library = next(stage.rglob("libjtpdf.so")).parent
        self.environment = {
            **os.environ,
            "PKG_CONFIG_PATH": f"{library}/pkgconfig",
            "LD_LIBRARY_PATH": str(library),
            "PYTHONPATH": str(self.source / "bindings/python/src"),
            "PYTHONDONTWRITEBYTECODE": "1",
        }
        if os.environ.get("JTPDF"):
            folder = os.path.dirname(os.environ["JTPDF"])
            self.environment["PATH"] = f"{folder}:{os.environ['PATH']}"

    def run(self, command: List[str], what: str) -> str:
        result = subprocess.run(command, cwd=self.work, env=self.environment, text=True,
                                stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False)
        if result.returncode != 0:
            sys.exit(f"{what}: exit status {result.returncode} of {shlex.join(command)}\n"
                     f"{result.stdout}")
        return result.stdout

    def run_snippet(self, snippet: Snippet, what: str) -> str:
        kind, hidden, text = snippet.kind, snippet.hidden, snippet.text
        if kind == "shell":
            return self.run(["bash", "-euo", "pipefail", "-c", f"{hidden}\n{text}"], what)
        if kind == "python":
            return self.run(["/usr/bin/python3", "-W", "error", "-c", f"{hidden}\n{text}"], what)
        if kind not in ("c", "cpp"):
            sys.exit(f"{what}: unknown kind '{kind}': use shell, python, c or cpp")
        source = self.work / f"snippet.{kind}"
        source.write_text(program(kind, hidden, text))
        compiler = os.environ["CC" if kind == "c" else "CXX"]
        standard = "-std=gnu11" if kind == "c" else "-std=c++17"
        flags = shlex.split(self.run(["pkg-config", "--cflags", "--libs", "jtpdf"], what))
        self.run([compiler, standard, "-Wall", "-Wextra", "-Werror", "-pthread", source.name, "-o",
                  "snippet", *flags], what)
        return self.run(["./snippet"], what)

    def check_documents(self, incomplete: List[str]) -> List[pathlib.Path]:
        documents = sorted(self.work.glob("*.pdf"))
        for document in documents:
            if document.name not in incomplete and os.environ.get("QPDF"):
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
    room = Room(arguments.work)
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
    documents = room.check_documents(INCOMPLETE.findall(page))
    if arguments.only and not documents:
        sys.exit(f"the snippet {arguments.only} wrote no document")
    print(count, "snippets ran")


if __name__ == "__main__":
    main()
