"""Every kind of input through five readers; with --write-docs what they show goes into a page."""
import io
import os
import pathlib
import shutil
import struct
import subprocess
import sys
import tempfile
import unittest

import numpy
from PIL import Image, ImageOps

import pixels_test
import support
from support import BLOCK, blocks, jpeg_bytes, run

sys.path.append(os.path.join(os.environ["SOURCE"], "scripts"))
sys.dont_write_bytecode = True
from write_block import write_block

PAGE = pathlib.Path(os.environ["SOURCE"], "docs/readers-tool.md")
MODULES = os.path.join(os.environ["BUILD"], "pdfjs", "node_modules")


def install_pdfjs():
    """pdf.js in the build folder; None and a loud word where it cannot be had."""
    if os.path.isdir(MODULES + "/pdfjs-dist") and os.path.isdir(MODULES + "/@napi-rs"):
        return True
    if not shutil.which("npm"):
        print("SKIPPED LOUDLY: pdf.js is not tested, for there is no npm here", flush=True)
        return False
    done = subprocess.run(["npm", "install", "--no-audit", "--no-fund", "--prefix",
                           os.path.dirname(MODULES), "pdfjs-dist@4.10.38",
                           "@napi-rs/canvas@0.1.68"], capture_output=True, text=True, timeout=300)
    if done.returncode != 0:
        print("SKIPPED LOUDLY: pdf.js cannot be installed:", done.stderr[-300:], flush=True)
    return done.returncode == 0


def cmyk_without_marker(picture):
    data = jpeg_bytes(Image.fromarray(255 - numpy.asarray(picture), "CMYK"))
    at = data.index(b"\xff\xee")
    return data[:at] + data[at + 2 + int.from_bytes(data[at + 2:at + 4], "big"):]


def grey_rows(depth, width=12 * BLOCK, height=7 * BLOCK):
    return [pixels_test.pack([(x // BLOCK + y // BLOCK) % (1 << min(depth, 4)) * ((1 << depth) - 1)
                              // ((1 << min(depth, 4)) - 1) for x in range(width)], depth)
            for y in range(height)]


def make_inputs(folder):
    """Pairs of a kind of input, as the table names it, and its file."""
    kinds = []

    def add(kind, data):
        path = os.path.join(folder, f"{len(kinds):02d}")
        if isinstance(data, bytes):
            with open(path, "wb") as file:
                file.write(data)
        else:
            picture, options = data
            picture.save(path, **options)
        kinds.append((kind, path))

    profile = support.icc_profile()
    add("JPEG, baseline RGB", jpeg_bytes(blocks()))
    add("JPEG, progressive", jpeg_bytes(blocks(), progressive=True))
    add("JPEG, grey", jpeg_bytes(blocks(mode="L")))
    add("JPEG, ICC profile", jpeg_bytes(blocks(), icc_profile=profile))
    add("JPEG, CMYK, Adobe marker", jpeg_bytes(blocks(mode="CMYK")))
    add("JPEG, CMYK, no marker", cmyk_without_marker(blocks(mode="CMYK")))
    for orientation in (2, 5, 6, 7):
        add(f"JPEG, EXIF orientation {orientation}", support.jpeg_with(
            jpeg_bytes(blocks()), support.jpeg_segment(
                0xE1, b"Exif\0\0" + support.exif(orientation))))
    add("JP2, grey", (blocks(mode="L"), {"format": "JPEG2000", "irreversible": False}))
    add("JP2, RGB", (blocks(), {"format": "JPEG2000", "irreversible": False}))
    add("JP2, RGB, lossy", (blocks(), {"format": "JPEG2000", "irreversible": True,
                                       "quality_layers": [20]}))
    add("JP2, RGB and alpha", (blocks(mode="RGBA"), {"format": "JPEG2000"}))
    jp2 = io.BytesIO()
    blocks().save(jp2, "JPEG2000", irreversible=False)
    add("J2K, RGB", jp2.getvalue()[jp2.getvalue().index(b"\xff\x4f\xff\x51"):])
    add("JP2, 16-bit grey", (Image.fromarray(numpy.asarray(blocks(mode="L"), numpy.uint16) * 257),
                             {"format": "JPEG2000"}))
    for depth in (1, 2, 4, 8, 16):
        add(f"PNG, {depth}-bit grey",
            pixels_test.png(12 * BLOCK, 7 * BLOCK, depth, 0, grey_rows(depth)))
    add("PNG, 8-bit RGB", (blocks(), {"format": "PNG"}))
    wide = (numpy.asarray(blocks(), numpy.uint16) * 257).astype(">u2")
    add("PNG, 16-bit RGB", pixels_test.png(12 * BLOCK, 7 * BLOCK, 16, 2,
                                           [row.tobytes() for row in wide]))
    add("PNG, RGB and alpha", (blocks(mode="RGBA"), {"format": "PNG"}))
    add("PNG, grey and alpha", (blocks(mode="LA"), {"format": "PNG"}))
    add("PNG, palette", (blocks(6, 5).quantize(16), {"format": "PNG"}))
    add("PNG, palette with tRNS", (blocks(6, 5).quantize(8),
                                   {"format": "PNG", "transparency": bytes([0, 128, 255])}))
    add("PNG, colour key", (blocks(), {"format": "PNG",
                                       "transparency": blocks().getpixel((0, 0))}))
    for bits in (1, 2, 4, 8):
        add(f"PNG, palette, {bits} bits", (blocks(6, 5).quantize(min(1 << bits, 30)),
                                            {"format": "PNG", "bits": bits}))
    add("PNG, colour key, grey", (blocks(mode="L"), {
        "format": "PNG", "transparency": blocks(mode="L").getpixel((0, 0))}))
    grey_profile = support.icc_profile(b"GRAY")
    add("PNG, grey, ICC profile", (blocks(mode="L"), {"format": "PNG",
                                                      "icc_profile": grey_profile}))
    add("BMP, RGB", (blocks(), {"format": "BMP"}))
    add("BMP, palette", (blocks(6, 5).quantize(16), {"format": "BMP"}))
    add("PPM", (blocks(), {"format": "PPM"}))
    bilevel = blocks(mode="L").point(lambda v: 255 * (v > 127)).convert("1")
    add("PBM", (bilevel, {"format": "PPM"}))
    add("GIF", (blocks(6, 5).quantize(16), {"format": "GIF"}))
    add("GIF, transparency", (blocks(6, 5).quantize(8), {"format": "GIF", "transparency": 1}))
    for mode in ("1", "L", "RGB", "CMYK", "RGBA"):
        picture = (blocks(mode="L").point(lambda v: 255 * (v > 127)).convert("1") if mode == "1"
                   else blocks(mode=mode))
        add(f"TIFF, {mode}", (picture, {"format": "TIFF", "compression": "tiff_lzw"}))
    black = blocks(mode="L").point(lambda v: 255 * (v > 127)).convert("1")
    for kind, picture, options in (
            ("group 3", black, "g3:1d"), ("group 3, two dimensions", black, "g3:2d"),
            ("group 4", black, "g4"), ("JPEG in strips, lossy", blocks(), "jpeg:r:95"),
            ("LZW, predictor", blocks(), "lzw:2"), ("Deflate, predictor", blocks(), "zip:2")):
        picture.save(os.path.join(folder, "source.tif"))
        made = os.path.join(folder, "made.tif")
        subprocess.run(["tiffcp", "-c", options, "-r", "16" if "JPEG" in kind else "1000",
                        os.path.join(folder, "source.tif"), made], check=True)
        add("TIFF, " + kind, pathlib.Path(made).read_bytes())
    add("WebP, RGB", (blocks(), {"format": "WEBP", "lossless": True}))
    add("WebP, RGB and alpha", (blocks(mode="RGBA"), {"format": "WEBP", "lossless": True,
                                                      "exact": True}))
    return kinds


def command(*arguments):
    return subprocess.run(arguments, capture_output=True, text=True, timeout=60)


READERS = ("qpdf", "Poppler", "MuPDF", "Ghostscript", "pdf.js")


def show(reader, pdf, prefix):
    """Renders with the reader to PREFIX1.png; gives what it complained of, empty for nothing."""
    if reader == "qpdf":
        done = command("qpdf", "--check", pdf)
        return "" if done.returncode == 0 else done.stdout + done.stderr
    if reader == "Poppler":
        done = command("pdftoppm", "-r", "96", "-png", "-singlefile", pdf, prefix + "1")
    elif reader == "MuPDF":
        done = command("mutool", "draw", "-q", "-r", "96", "-o", prefix + "1.png", pdf)
    elif reader == "Ghostscript":
        done = command("gs", "-q", "-dNOPAUSE", "-dBATCH", "-dSAFER", "-sDEVICE=png16m", "-r96",
                       "-o", prefix + "1.png", pdf)
    else:
        done = command("node", os.path.join(os.path.dirname(__file__), "render_with_pdfjs.mjs"),
                       MODULES, pdf, prefix)
    said = done.stdout + done.stderr.replace(OF_ITSELF.get(reader, ""), "")
    return said or ("" if done.returncode == 0 else f"status {done.returncode}")


# What a reader says of itself whatever the file: Debian's MuPDF is built without ICC.
OF_ITSELF = {"MuPDF": "warning: ICC support is not available\n"}


def source(path):
    """The picture as Pillow decodes it: upright, over white, 8 bits."""
    with Image.open(path) as image:
        image = ImageOps.exif_transpose(image)
        if image.mode.startswith("I"):
            return Image.fromarray((numpy.asarray(image, int) >> 8).astype(numpy.uint8))
        return pixels_test.over(image, "white")


def colours_are_the_readers(kind, reader):
    """Inks and profiles leave the colour to the reader, and Ghostscript manages the grey of JP2
    files, which name a colour space of their own, to a lighter one."""
    return "CMYK" in kind or "ICC" in kind or (reader == "Ghostscript" and kind == "JP2, grey")


def differs(path, expected):
    """The largest difference at the middles of the blocks, of 255."""
    with Image.open(path) as image:
        shown = numpy.asarray(image.convert("RGB"), int)
    wanted = numpy.asarray(expected.convert("RGB"), int)
    if shown.shape != wanted.shape:
        return 255
    middle = slice(BLOCK // 2, None, BLOCK)
    return int(numpy.abs(shown - wanted)[middle, middle].max())


class Readers(unittest.TestCase):
    def test_five_readers_accept_and_show_every_kind(self):
        readers = READERS if install_pdfjs() else READERS[:-1]
        rows = []
        with tempfile.TemporaryDirectory() as folder:
            for kind, path in make_inputs(folder):
                pdf = path + ".pdf"
                status, _, error = run("-q", path, "-o", pdf)
                self.assertEqual((status, error), (0, ""), kind)
                lossy = kind.startswith("JPEG") or "lossy" in kind
                cells = []
                for reader in readers:
                    with self.subTest(kind=kind, reader=reader):
                        complaint = show(reader, pdf, f"{path}-{reader}-")
                        difference = 0
                        if reader != "qpdf" and not complaint:
                            difference = differs(f"{path}-{reader}-1.png", source(path))
                        near = difference <= (30 if lossy else 4)
                        free = colours_are_the_readers(kind, reader)
                        cells.append("refuses" if complaint else "accepts" if reader == "qpdf" else
                                     "shows" if near else "own colours" if free else
                                     f"differs by {difference}")
                        self.assertEqual(complaint, "")
                        self.assertTrue(near or free, difference)
                rows.append((kind, cells))
        if WRITE:
            write_block(PAGE, "readers", table(readers, rows))


def table(readers, rows):
    versions = {"qpdf": ("qpdf", "--version"), "Poppler": ("pdftoppm", "-v"),
                "MuPDF": ("mutool", "-v"), "Ghostscript": ("gs", "--version")}
    names = []
    for reader in readers:
        if reader in versions:
            done = command(*versions[reader])
            version = (done.stdout + done.stderr).split("\n")[0].split()[-1]
        else:
            version = "4.10.38"
        names.append(f"{reader} {version}")
    text = "| input | " + " | ".join(names) + " |\n" + "|---" * (len(names) + 1) + "|\n"
    return text + "".join(f"| {kind} | " + " | ".join(cells) + " |\n" for kind, cells in rows)


WRITE = "--write-docs" in sys.argv
if __name__ == "__main__":
    if WRITE:
        sys.argv.remove("--write-docs")
    unittest.main()
