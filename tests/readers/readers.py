"""The PDF readers that the tests ask, each behind the same few questions.

A reader that is installed tells how many pages a file has and how large they are, renders them, and
every line that it prints beyond its answer counts as a warning.
"""

import json
import re
import shutil
import subprocess
from pathlib import Path

DPI = 72  # a pixel is a point


class Picture:
    """A rendered page: width, height and three bytes a pixel."""

    def __init__(self, width, height, data):
        self.width, self.height, self.data = width, height, data

    @classmethod
    def read_ppm(cls, path):
        data = path.read_bytes()
        head = re.match(rb"P6\s(?:#[^\n]*\n)*(\d+)\s(?:#[^\n]*\n)*(\d+)\s255\s", data)
        if not head:
            raise ValueError(f"{path} is no binary PPM of 8 bits")
        width, height = int(head[1]), int(head[2])
        pixels = data[head.end() :]
        if len(pixels) != 3 * width * height:
            raise ValueError(f"{path} holds {len(pixels)} bytes for {width} x {height} pixels")
        return cls(width, height, pixels)

    def pixel(self, x, y):
        at = 3 * (y * self.width + x)
        return tuple(self.data[at : at + 3])


class Page:
    """The boxes of a page in points: left, bottom, right, top."""

    def __init__(self, media, crop):
        self.media, self.crop = media, crop


def run(command, accept=(0,)):
    """Runs a reader; gives its standard output and what it complains about, a line each."""
    result = subprocess.run(
        [str(part) for part in command], capture_output=True, timeout=300, stdin=subprocess.DEVNULL
    )
    out = result.stdout.decode("utf-8", "replace")
    complaints = result.stderr.decode("utf-8", "replace").splitlines()
    if result.returncode not in accept:
        complaints.append(f"exit status {result.returncode}")
    return out, [line for line in complaints if line.strip()]


def rendered(folder):
    """The PPM files of a folder in the order of their numbers."""
    number = lambda path: int(re.findall(r"\d+", path.stem)[-1])
    return [Picture.read_ppm(path) for path in sorted(folder.glob("*.ppm"), key=number)]


def numbers(text):
    return tuple(float(n) for n in re.findall(r"-?\d+(?:\.\d+)?", text))


class Reader:
    """A reader by name, with the programs that it needs and what it can tell."""

    name = ""
    programs = ()
    renders = False
    counts_images = False
    counts_drawn_images = False  # of all images only those that a page draws

    def missing(self):
        return [program for program in self.programs if not shutil.which(program)]

    def check(self, pdf):
        """The complaints about the file as a whole."""
        return []

    def pages(self, pdf):
        """The pages with their boxes, or None when it cannot tell, and complaints."""
        raise NotImplementedError

    def images(self, pdf):
        """The number of image objects, and complaints."""
        raise NotImplementedError

    def render(self, pdf, folder):
        """The pages as pictures of their crop boxes, and complaints."""
        raise NotImplementedError


class Qpdf(Reader):
    name = "qpdf"
    programs = ("qpdf",)
    counts_images = True

    _SILENCE = re.compile(
        r"checking .*|PDF Version: 1\.5|File is not encrypted|File is not linearized"
        r"|No syntax or stream encoding errors found; the file may still contain"
        r"|errors that qpdf cannot detect"
    )

    def check(self, pdf):
        out, complaints = run(["qpdf", "--check", pdf])
        return complaints + [line for line in out.splitlines() if not self._SILENCE.fullmatch(line)]

    def _json(self, pdf, key):
        out, complaints = run(["qpdf", "--json=2", f"--json-key={key}", pdf], accept=(0, 3))
        return json.loads(out or "{}").get(key), complaints

    def pages(self, pdf):
        pages, complaints = self._json(pdf, "pages")
        if pages is None:
            return None, complaints
        objects, more = self._json(pdf, "qpdf")
        dictionaries = [objects[1][f"obj:{page['object']}"]["value"] for page in pages]
        boxes = lambda page: (page["/MediaBox"], page.get("/CropBox", page["/MediaBox"]))
        return [Page(*boxes(page)) for page in dictionaries], complaints + more

    def images(self, pdf):
        objects, complaints = self._json(pdf, "qpdf")
        if objects is None:
            return None, complaints
        streams = [o["stream"]["dict"] for o in objects[1].values() if "stream" in o]
        return sum(s.get("/Subtype") == "/Image" for s in streams), complaints


class Poppler(Reader):
    name = "Poppler"
    programs = ("pdfinfo", "pdfimages", "pdftoppm")
    renders = True
    counts_images = True
    counts_drawn_images = True

    def pages(self, pdf):
        out, complaints = run(["pdfinfo", "-box", "-f", 1, "-l", -1, pdf])
        boxes = {
            kind: [numbers(line) for line in re.findall(rf"^Page .* {kind}Box:(.*)$", out, re.M)]
            for kind in ("Media", "Crop")
        }
        count = re.search(r"^Pages: +(\d+)$", out, re.M)
        if not count or int(count[1]) != len(boxes["Media"]):
            return None, complaints
        return [Page(*pair) for pair in zip(boxes["Media"], boxes["Crop"])], complaints

    def images(self, pdf):
        out, complaints = run(["pdfimages", "-list", pdf])
        rows = [line.split() for line in out.splitlines()[2:]]
        # A soft mask is listed behind its image, under the same number.
        return len({(row[2], row[10]) for row in rows}), complaints

    def render(self, pdf, folder):
        _, complaints = run(["pdftoppm", "-r", DPI, "-cropbox", pdf, folder / "page"])
        return rendered(folder), complaints


class MuPdf(Reader):
    name = "MuPDF"
    programs = ("mutool",)
    renders = True
    counts_images = True

    def pages(self, pdf):
        out, complaints = run(["mutool", "pages", pdf])
        box = r'Box l="(.*?)" b="(.*?)" r="(.*?)" t="(.*?)"'
        pages = []
        for page in out.split("<page ")[1:]:
            boxes = [re.search(kind + box, page) for kind in ("Media", "Crop")]
            if None in boxes:
                return None, complaints
            pages.append(Page(*[tuple(float(n) for n in found.groups()) for found in boxes]))
        return pages, complaints

    def images(self, pdf):
        out, complaints = run(["mutool", "show", pdf, "grep"])
        return len(re.findall(r"/Subtype\s*/Image\b", out)), complaints

    def render(self, pdf, folder):
        _, complaints = run(["mutool", "draw", "-q", "-r", DPI, "-o", folder / "page-%d.ppm", pdf])
        return rendered(folder), complaints


class Ghostscript(Reader):
    name = "Ghostscript"
    programs = ("gs",)
    renders = True

    _COMMAND = ["gs", "-q", "-dSAFER", "-dBATCH", "-dNOPAUSE"]

    _INFO = re.compile(r"\s*File has \d+ pages?\.?|\w+: .*|Page \d+ MediaBox: .*")

    def pages(self, pdf):
        out, told = run([*self._COMMAND, "-dNODISPLAY", "-dPDFINFO", pdf])
        told = out.splitlines() + told  # it tells all on standard error
        complaints = [line for line in told if line.strip() and not self._INFO.fullmatch(line)]
        text = "\n".join(told)
        boxes = re.findall(r"^Page \d+ MediaBox: \[(.*?)\](?: CropBox: \[(.*?)\])?", text, re.M)
        count = re.search(r"^\s*File has (\d+) pages?", text, re.M)
        if not count or int(count[1]) != len(boxes):
            counted = count[1] if count else "no"
            return None, complaints + [f"counts {counted} pages, shows {len(boxes)}"]
        return [Page(numbers(media), numbers(crop or media)) for media, crop in boxes], complaints

    def render(self, pdf, folder):
        out, complaints = run(
            [*self._COMMAND, "-sDEVICE=ppmraw", f"-r{DPI}", "-dUseCropBox"]
            + ["-dGraphicsAlphaBits=4", f"-sOutputFile={folder}/page-%d.ppm", pdf]
        )
        return rendered(folder), complaints + [line for line in out.splitlines() if line.strip()]


READERS = (Qpdf(), Poppler(), MuPdf(), Ghostscript())
