"""Every kind of input through six readers; with --write-docs what they show goes into a page."""
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


PACKAGES = {"pdf.js": "pdfjs-dist@4.10.38", "PDFium": "@hyzyla/pdfium@2.1.13",
            "canvas": "@napi-rs/canvas@0.1.68"}


def install_packages():
    """pdf.js and PDFium in the build folder; a loud word where they cannot be had."""
    if all(os.path.isdir(f"{MODULES}/{name.rpartition('@')[0]}") for name in PACKAGES.values()):
        return True
    if not shutil.which("npm"):
        print("SKIPPED LOUDLY: pdf.js and PDFium are not tested, for there is no npm here",
              flush=True)
        return False
    done = subprocess.run(["npm", "install", "--no-audit", "--no-fund", "--prefix",
                           os.path.dirname(MODULES), *PACKAGES.values()], capture_output=True,
                          text=True, timeout=300)
    if done.returncode != 0:
        print("SKIPPED LOUDLY: pdf.js and PDFium cannot be installed:", done.stderr[-300:],
              flush=True)
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
    """A kind of input, as the table names it, its file, and what it shows, where Pillow does not
    know that."""
    kinds = []

    def add(kind, data, shown=None):
        path = os.path.join(folder, f"{len(kinds):02d}")
        if isinstance(data, bytes):
            with open(path, "wb") as file:
                file.write(data)
        else:
            picture, options = data
            picture.save(path, **options)
        kinds.append((kind, path, shown))

    def encoded(picture, name, *words):
        """What a program makes of the picture, whose words name that SOURCE and MADE."""
        names = {"SOURCE": os.path.join(folder, "source.png"), "MADE": os.path.join(folder, name)}
        picture.save(names["SOURCE"])
        subprocess.run([names.get(word, word) for word in words], check=True, capture_output=True)
        return pathlib.Path(names["MADE"]).read_bytes()

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
    add("PNG, interlaced", encoded(blocks(), "made.png", "/usr/bin/convert", "SOURCE", "-interlace",
                                   "PNG", "MADE"))
    deep = numpy.asarray(blocks(mode="RGBA"), numpy.uint16) * 257
    add("PNG, 16-bit RGB and alpha", pixels_test.png(
        12 * BLOCK, 7 * BLOCK, 16, 6, [row.tobytes() for row in deep.astype(">u2")]),
        pixels_test.over(blocks(mode="RGBA"), "white"))
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
    add("BMP, RGB and alpha", (blocks(mode="RGBA"), {"format": "BMP"}))
    add("PAM, RGB and alpha", b"P7\nWIDTH %d\nHEIGHT %d\nDEPTH 4\nMAXVAL 255\nTUPLTYPE RGB_ALPHA\n"
        b"ENDHDR\n" % blocks().size + blocks(mode="RGBA").tobytes(),
        pixels_test.over(blocks(mode="RGBA"), "white"))
    add("PGM, 16-bit grey", b"P5 %d %d 65535\n" % blocks().size
        + (numpy.asarray(blocks(mode="L"), numpy.uint16) * 257).astype(">u2").tobytes(),
        blocks(mode="L"))
    add("PPM", (blocks(), {"format": "PPM"}))
    bilevel = blocks(mode="L").point(lambda v: 255 * (v > 127)).convert("1")
    add("PBM", (bilevel, {"format": "PPM"}))
    add("GIF", (blocks(6, 5).quantize(16), {"format": "GIF"}))
    add("GIF, transparency", (blocks(6, 5).quantize(8), {"format": "GIF", "transparency": 1}))
    for mode in ("1", "L", "RGB", "CMYK", "RGBA"):
        picture = (blocks(mode="L").point(lambda v: 255 * (v > 127)).convert("1") if mode == "1"
                   else blocks(mode=mode))
        add(f"TIFF, {mode}", (picture, {"format": "TIFF", "compression": "tiff_lzw"}))
    add("TIFF, palette", (blocks(6, 5).quantize(16), {"format": "TIFF",
                                                      "compression": "tiff_lzw"}))
    add("TIFF, 16-bit grey", (Image.fromarray(numpy.asarray(blocks(mode="L"), numpy.uint16) * 257),
                              {"format": "TIFF", "compression": "tiff_adobe_deflate"}))
    for depth in (2, 4, 16):
        options = ("-depth", str(depth), "-compress", "LZW")
        colours = blocks(mode="L").point(lambda v, most=(1 << min(depth, 8)) - 1:
                                         round(v * most / 255) * 255 // most)
        add(f"TIFF, {depth}-bit grey, LZW", encoded(colours, "made.tif", "/usr/bin/convert", "SOURCE",
                                                    *options, "MADE"), colours)
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
    add("WebP, lossy", (blocks(), {"format": "WEBP", "quality": 95}))
    add("HEIF, lossy", encoded(blocks(), "made.heic", "heif-enc", "-q", "95", "-o", "MADE", "SOURCE"),
        blocks())
    add("HEIF, alpha, lossy", encoded(blocks(mode="RGBA"), "made.heic", "heif-enc", "-q", "95", "-o",
                                      "MADE", "SOURCE"),
        pixels_test.over(blocks(mode="RGBA"), "white"))
    add("AVIF, lossy", encoded(blocks(), "made.avif", "heif-enc", "-A", "-q", "95", "-o", "MADE",
                               "SOURCE"), blocks())
    for name, mode in ("RGB", "RGB"), ("grey", "L"), ("RGB and alpha", "RGBA"):
        add(f"JPEG XL, {name}", encoded(blocks(mode=mode), "made.jxl", "cjxl", "SOURCE", "MADE", "-d",
                                        "0"), pixels_test.over(blocks(mode=mode), "white"))
    made = os.path.join(folder, "made.jxl")
    for kind, path, _ in kinds[:2]:
        subprocess.run(["cjxl", path, made, "--lossless_jpeg=1"], check=True, capture_output=True)
        add(kind.replace("JPEG,", "JPEG XL of a JPEG,"), pathlib.Path(made).read_bytes(),
            source(path))
    return kinds


def command(*arguments):
    return subprocess.run(arguments, capture_output=True, text=True, timeout=60)


READERS = ("qpdf", "Poppler", "MuPDF", "Ghostscript", "pdf.js", "PDFium")
HERE = pathlib.Path(__file__).parent


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
    elif reader == "pdf.js":
        done = command("node", HERE / "render_with_pdfjs.mjs", MODULES, pdf, prefix)
    else:
        pages = pathlib.Path(prefix + "pages")
        pages.mkdir()
        done = command("node", HERE.parent / "readers/render_pdfium.mjs", os.path.dirname(MODULES),
                       pdf, pages, str(96 / 72))
        if done.returncode == 0:
            (pages / "page-1.ppm").rename(prefix + "1.png")
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
    def test_readers_accept_and_show_every_kind(self):
        readers = READERS if install_packages() else READERS[:-2]
        rows = []
        with tempfile.TemporaryDirectory() as folder:
            for kind, path, shown in make_inputs(folder):
                pdf = path + ".pdf"
                status, _, error = run("-q", path, "-o", pdf)
                self.assertEqual((status, error), (0, ""), kind)
                lossy = kind.startswith(("JPEG,", "JPEG XL of")) or "lossy" in kind
                cells = []
                for reader in readers:
                    with self.subTest(kind=kind, reader=reader):
                        complaint = show(reader, pdf, f"{path}-{reader}-")
                        difference = 0
                        if reader != "qpdf" and not complaint:
                            difference = differs(f"{path}-{reader}-1.png", shown or source(path))
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
            version = PACKAGES[reader].rpartition("@")[2]
        names.append(f"{reader} {version}")
    text = "| input | " + " | ".join(names) + " |\n" + "|---" * (len(names) + 1) + "|\n"
    return text + "".join(f"| {kind} | " + " | ".join(cells) + " |\n" for kind, cells in rows)


WRITE = "--write-docs" in sys.argv
if __name__ == "__main__":
    if WRITE:
        sys.argv.remove("--write-docs")
    unittest.main()
