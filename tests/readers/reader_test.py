"""Asks every reader about one document: reader_test.py --host H --checker C --pdf FILE

Fails when a reader warns of something that expected.py does not explain, when readers and host do
not agree on pages, their sizes and images, or when a pixel has not the colour that was drawn.
Readers that are not installed are named loudly; without any of them, and for a file that does not
exist, the test is skipped (exit status 77).
"""

import argparse
import re
import subprocess
import sys
import tempfile
from pathlib import Path

import expected
import pixels
from readers import READERS, Page

SKIPPED = 77

# Images that a golden document writes and draws on no page.
UNDRAWN = {"texts": 3, "dictionaries": 13, "images_unknown": 6}

BOX_TOLERANCE = 0.006  # Poppler prints two decimals
SIZE_TOLERANCE = 1  # pixels; readers round page sizes in their own ways


class Facts:
    """What the document has to be: from the host that wrote it, or from the structure checker."""

    def __init__(self, pages, images, boxes=None, sound=True):
        self.pages, self.images, self.boxes, self.sound = pages, images, boxes, sound


def output(command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def facts_of_golden(host, name):
    values, boxes = {}, []
    for line in output([host, "facts", name]).splitlines():
        key, *rest = line.split()
        if key == "page":
            boxes.append(Page(tuple(map(float, rest[1:5])), tuple(map(float, rest[6:10]))))
        else:
            values[key] = int(rest[0])
    return Facts(values["pages"], values["images"], boxes, values["sound"] == 1)


def facts_of_file(checker, pdf):
    report = output([checker, "--closing-text", pdf])
    count = lambda what: int(re.search(rf"(\d+) {what}\b", report)[1])
    return Facts(count("pages"), count("images"))


class Test:
    def __init__(self, document, facts):
        self.document, self.facts, self.failures = document, facts, []

    def fail(self, text):
        self.failures.append(f"{self.document}: {text}")

    def warnings(self, reader, lines):
        for line in lines:
            if not expected.explained(self.document, reader.name, line):
                self.fail(f"{reader.name} warns of something unexplained: {line!r}")

    def check(self, reader, pdf):
        self.warnings(reader, reader.check(pdf))

    def refusal(self, reader, pdf, folder):
        """A reader that is expected to refuse is held to it, so that the list stays true."""
        pages, lines = reader.pages(pdf)
        self.warnings(reader, lines)
        pictures, lines = reader.render(pdf, folder)
        self.warnings(reader, lines)
        if pages and len(pages) == self.facts.pages and len(pictures) == self.facts.pages:
            self.fail(f"{reader.name} reads it now: take it out of expected.py")

    def pages(self, reader, pdf):
        pages, lines = reader.pages(pdf)
        self.warnings(reader, lines)
        if pages is None:
            self.fail(f"{reader.name} tells no pages")
            return
        if len(pages) != self.facts.pages:
            self.fail(f"{reader.name} counts {len(pages)} pages, not {self.facts.pages}")
        for number, (found, wanted) in enumerate(zip(pages, self.facts.boxes or []), 1):
            for name, box, other in (
                ("media", found.media, wanted.media),
                ("crop", found.crop, wanted.crop),
            ):
                if max(abs(a - b) for a, b in zip(box, other)) > BOX_TOLERANCE:
                    self.fail(f"{reader.name}, page {number}: {name} box {box}, not {other}")

    def images(self, reader, pdf):
        images, lines = reader.images(pdf)
        self.warnings(reader, lines)
        wanted = self.facts.images
        if reader.counts_drawn_images:
            wanted -= UNDRAWN.get(self.document, 0)
        if images != wanted:
            self.fail(f"{reader.name} finds {images} images, not {wanted}")

    def render(self, reader, pdf, folder):
        pictures, lines = reader.render(pdf, folder)
        self.warnings(reader, lines)
        if len(pictures) != self.facts.pages:
            self.fail(f"{reader.name} renders {len(pictures)} pages, not {self.facts.pages}")
        return pictures

    def sizes(self, renderings):
        first = next(iter(renderings), None)
        for name, pictures in renderings.items():
            for number, (a, b) in enumerate(zip(renderings[first], pictures), 1):
                if max(abs(a.width - b.width), abs(a.height - b.height)) > SIZE_TOLERANCE:
                    self.fail(
                        f"page {number} has {a.width} x {a.height} pixels in {first},"
                        f" {b.width} x {b.height} in {name}"
                    )

    def colors(self, name, pictures):
        drawing = pixels.DRAWINGS[self.document]
        for point in drawing.points:
            if point.page > len(pictures):
                self.fail(f"{name} has no page {point.page} for the point: {point.what}")
                continue
            color = pictures[point.page - 1].pixel(*drawing.place(point))
            wanted = point.expected(name)
            if pixels.off(color, wanted) > pixels.TOLERANCE:
                self.fail(f"{name} shows {color}, not {wanted}: {point.what}")

    def run(self, pdf):
        readers = []
        for reader in READERS:
            if reader.missing():
                print(f"NOT ASKED: {reader.name}, {', '.join(reader.missing())} is not installed")
            else:
                readers.append(reader)
        if not readers:
            return SKIPPED
        renderings = {}
        with tempfile.TemporaryDirectory() as temporary:
            for reader in readers:
                folder = Path(temporary, reader.name)
                folder.mkdir()
                self.check(reader, pdf)
                if expected.refuses(self.document, reader.name):
                    self.refusal(reader, pdf, folder)
                    continue
                if self.facts.pages > 0:
                    self.pages(reader, pdf)
                if reader.counts_images:
                    self.images(reader, pdf)
                if reader.renders:
                    renderings[reader.name] = self.render(reader, pdf, folder)
        self.sizes(renderings)
        if self.document in pixels.DRAWINGS:
            for name, pictures in renderings.items():
                self.colors(name, pictures)
        for failure in self.failures:
            print(failure)
        if not self.failures:
            print(
                f"{self.document}: {self.facts.pages} pages, {self.facts.images} images;"
                f" {', '.join(reader.name for reader in readers)} agree"
            )
        return 1 if self.failures else 0


def main():
    parser = argparse.ArgumentParser(description="Asks every reader about one document.")
    parser.add_argument("--host", help="golden_host, for a golden document")
    parser.add_argument("--checker", help="check_structure, for any other file")
    parser.add_argument("pdf", type=Path)
    arguments = parser.parse_args()
    if not arguments.pdf.exists():
        print(f"NOT TESTED: {arguments.pdf} does not exist")
        return SKIPPED
    if arguments.host:
        facts = facts_of_golden(arguments.host, arguments.pdf.stem)
    else:
        facts = facts_of_file(arguments.checker, arguments.pdf)
    if not facts.sound:
        print(f"NOT FOR READERS: {arguments.pdf.name} is kept as an example of an unsound file")
        return SKIPPED
    return Test(arguments.pdf.stem, facts).run(arguments.pdf)


if __name__ == "__main__":
    sys.exit(main())
