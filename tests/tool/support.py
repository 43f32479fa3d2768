"""What the tests of the command share: running it, making pictures, looking at pages."""
import base64
import io
import json
import os
import pty
import random
import re
import shutil
import struct
import subprocess
import sys
import tempfile
import unittest
import zlib

import numpy
from PIL import Image

JTPDF = os.environ["JTPDF"]
if "FAIL_FAST" in os.environ:  # for scripts/mutate, which asks only whether anything fails
    sys.argv.append("--failfast")
BLOCK = 8  # test pictures are made of blocks so large that a renderer's edges do not matter


def run(*arguments, input=None, environment=None, folder=None, command=JTPDF):
    """Runs the command; gives its exit status, standard output (bytes) and messages."""
    given = {"stdin": subprocess.DEVNULL} if input is None else {"input": input}
    done = subprocess.run([command, *map(str, arguments)], **given, capture_output=True,
                          cwd=folder, env={**os.environ, **(environment or {})}, timeout=120)
    return done.returncode, done.stdout, done.stderr.decode("utf-8", "replace")


def blocks(columns=12, rows=7, mode="RGB", seed=1):
    """A picture of blocks in random colours."""
    source = random.Random(seed)
    channels = len(Image.new(mode, (1, 1)).getbands())
    small = Image.new(mode, (columns, rows))
    for y in range(rows):
        for x in range(columns):
            value = tuple(source.randrange(256) for _ in range(channels))
            small.putpixel((x, y), value if channels > 1 else value[0])
    return small.resize((columns * BLOCK, rows * BLOCK), Image.NEAREST)


def noise(width, height, seed=1, mode="RGB"):
    """A picture that takes long to compress; with alpha one that is never stored as it is."""
    return Image.fromarray(numpy.random.default_rng(seed).integers(
        0, 256, (height, width, len(mode)), numpy.uint8), mode)


def stored(pdf):
    """Dictionary and data, as they are stored, of the images in the order of their objects."""
    text = subprocess.run(["qpdf", "--json=2", "--json-stream-data=inline", "--decode-level=none",
                           pdf], check=True, capture_output=True).stdout
    objects = json.loads(text)["qpdf"][1]
    streams = [(int(name[4:].split()[0]), value["stream"]) for name, value in objects.items()
               if "stream" in value and value["stream"]["dict"].get("/Subtype") == "/Image"]
    return [(stream["dict"], base64.b64decode(stream["data"]))
            for _, stream in sorted(streams, key=lambda pair: pair[0])]


def render(pdf, page=1, dpi=96, tool="pdftoppm"):
    """The page as a reader shows it."""
    with tempfile.TemporaryDirectory() as folder:
        if tool == "pdftoppm":
            subprocess.run(["pdftoppm", "-r", str(dpi), "-f", str(page), "-l", str(page), "-png",
                            "-cropbox", pdf, folder + "/page"], check=True, capture_output=True)
        else:
            subprocess.run(["mutool", "draw", "-q", "-r", str(dpi), "-o", folder + "/page-%d.png",
                            pdf, str(page)], check=True, capture_output=True)
        name, = os.listdir(folder)
        image = Image.open(os.path.join(folder, name))
        image.load()
        return image.convert("RGB")


def page_boxes(pdf):
    """Width and height of every page, from its MediaBox."""
    text = subprocess.run(["pdfinfo", "-box", "-f", "1", "-l", "100000", pdf], check=True,
                          capture_output=True, text=True).stdout
    numbers = [[float(n) for n in line.split(":")[1].split()]
               for line in text.splitlines() if "MediaBox" in line]
    return [(right - left, top - bottom) for left, bottom, right, top in numbers]


def images(pdf):
    """The rows of pdfimages -list as dictionaries."""
    lines = subprocess.run(["pdfimages", "-list", pdf], check=True, capture_output=True,
                           text=True).stdout.splitlines()
    names = lines[0].split()
    return [dict(zip(names, re.split(r"\s+", line.strip()))) for line in lines[2:]]


class JtpdfTest(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        self.folder = tempfile.mkdtemp(prefix="jtpdf-test-")
        self.addCleanup(shutil.rmtree, self.folder, ignore_errors=True)

    def open_terminal(self):
        """Both ends of a terminal; skips the test where there is none, as in a bare chroot."""
        try:
            return pty.openpty()
        except OSError as error:
            self.skipTest(f"no terminal can be opened here: {error}")

    def path(self, name):
        return os.path.join(self.folder, name)

    def save(self, image, name, **options):
        image.save(self.path(name), **options)
        return self.path(name)

    def put(self, data, name):
        with open(self.path(name), "wb") as file:
            file.write(data)
        return self.path(name)

    def get(self, name):
        with open(self.path(name), "rb") as file:
            return file.read()

    def convert(self, *arguments, messages=None):
        """Runs the command on the arguments, which must succeed; the path of the PDF."""
        out = self.path("out.pdf")
        status, _, error = run(*arguments, "-o", out)
        self.assertEqual(status, 0, error)
        if messages is None:
            self.assertEqual(error, "")
        else:
            self.assertRegex(error, messages)
        check = subprocess.run(["qpdf", "--check", out], capture_output=True, text=True)
        self.assertEqual(check.returncode, 0, check.stdout + check.stderr)
        return out

    def assertFails(self, status, pattern, *arguments, **options):
        got, _, error = run(*arguments, **options)
        self.assertEqual(got, status, error)
        for line in error.splitlines():
            self.assertTrue(line.startswith("jtpdf: "), line)
        self.assertRegex(error, pattern)
        return error

    def assertSamePicture(self, shown, expected, tolerance=4):
        """Compares the middles of the blocks."""
        self.assertEqual(shown.size, expected.size)
        expected = expected.convert("RGB")
        for y in range(BLOCK // 2, expected.height, BLOCK):
            for x in range(BLOCK // 2, expected.width, BLOCK):
                a, b = shown.getpixel((x, y)), expected.getpixel((x, y))
                if max(abs(m - n) for m, n in zip(a, b)) > tolerance:
                    self.fail(f"at {x}, {y}: the page shows {a}, the picture {b}")

    def assertShows(self, pdf, expected, page=1, tolerance=4):
        """Both renderers show the picture, at 96 dpi."""
        for tool in ("pdftoppm", "mutool"):
            with self.subTest(tool=tool):
                self.assertSamePicture(render(pdf, page, tool=tool), expected, tolerance)


def chunk(name, data):
    """Of a PNG file, with its checksum."""
    return struct.pack(">I", len(data)) + name + data + struct.pack(">I", zlib.crc32(name + data))


def jpeg_segment(marker, data):
    return bytes([0xFF, marker]) + (len(data) + 2).to_bytes(2, "big") + data


def jpeg_with(jpeg, segment):
    """The JPEG with one more segment behind its first marker."""
    return jpeg[:2] + segment + jpeg[2:]


def exif(orientation=None, dpi=None, order="big"):
    """EXIF data from its TIFF header on."""
    entries = []
    values = b""
    count = (orientation is not None) + (3 if dpi else 0)
    data_at = 8 + 2 + 12 * count + 4
    number = lambda value, size: value.to_bytes(size, order)
    if orientation is not None:
        entries.append(number(0x0112, 2) + number(3, 2) + number(1, 4) + number(orientation, 2)
                       + b"\0\0")
    if dpi:
        for tag in (0x011A, 0x011B):
            entries.append(number(tag, 2) + number(5, 2) + number(1, 4)
                           + number(data_at + len(values), 4))
            values += number(dpi, 4) + number(1, 4)
        entries.append(number(0x0128, 2) + number(3, 2) + number(1, 4) + number(2, 2) + b"\0\0")
    head = (b"MM\0*" if order == "big" else b"II*\0") + number(8, 4)
    return head + number(len(entries), 2) + b"".join(entries) + number(0, 4) + values


def jpeg_bytes(image, **options):
    data = io.BytesIO()
    image.save(data, "JPEG", **{"quality": 95, "subsampling": 0, **options})
    return data.getvalue()


def icc_profile(space=b"RGB "):
    """A real profile of the colour space: Ghostscript's own, or one that Pillow makes."""
    names = {b"RGB ": "default_rgb.icc", b"GRAY": "default_gray.icc", b"CMYK": "default_cmyk.icc"}
    for root in ("/usr/share/color/icc/ghostscript", "/usr/share/ghostscript/iccprofiles"):
        path = os.path.join(root, names[space])
        if os.path.exists(path):
            with open(path, "rb") as file:
                return file.read()
    raise unittest.SkipTest("no ICC profiles here: install ghostscript")
