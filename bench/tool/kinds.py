#!/usr/bin/python3
"""Compares jtpdf with img2pdf for each kind of picture: bytes and seconds, as a Markdown table.

    bench/tool/kinds.py JTPDF [--rounds N] [--write-docs]

The pictures are made here: a photograph with grain, a screenshot of text in windows, a scanned page.
Each command runs in turn, round after round, and the best of its rounds counts. Needs Debian's
python3-pil, python3-numpy, imagemagick, fonts-dejavu-core, libjxl-tools, libheif-examples and
img2pdf. --write-docs keeps the table in docs/performance-tool.md.
"""
import argparse
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import time

import numpy
from PIL import Image, ImageDraw, ImageFont

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.append(str(ROOT / "scripts"))
sys.dont_write_bytecode = True
from photograph import photograph
from write_block import write_block

FONT = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf"
WORDS = ("forward only once through the file and every position is counted while it is written so "
         "that a pipe gets a right table of them at the end").split()


def lines_of_text(picture, box, size, fill, seed=1):
    draw = ImageDraw.Draw(picture)
    font = ImageFont.truetype(FONT, size)
    random = numpy.random.default_rng(seed)
    left, top, right, bottom = box
    for y in range(top, bottom - size, size * 3 // 2):
        line = ""
        while draw.textlength(line, font) < (right - left) * 0.9:
            line += WORDS[random.integers(len(WORDS))] + " "
        draw.text((left, y), line[:-6], font=font, fill=fill)


def screenshot():
    """Windows with text, flat areas and a shaded title bar."""
    picture = Image.new("RGB", (1600, 1000), (58, 110, 165))
    draw = ImageDraw.Draw(picture)
    for n, (x, y) in enumerate(((60, 40), (700, 160), (240, 420))):
        draw.rectangle((x, y, x + 840, y + 520), fill=(250, 250, 248), outline=(90, 90, 90))
        for row in range(28):
            draw.line((x, y + row, x + 840, y + row), fill=(40 + 2 * row, 70 + 3 * row, 160))
        lines_of_text(picture, (x + 20, y + 44, x + 820, y + 500), 14, (20, 20, 30), n)
    return picture


def scan(grey):
    """A page at 300 dpi as a scanner sees it: edges that waver, and in grey paper with grain."""
    page = Image.new("L", (2480, 3508), 255)
    lines_of_text(page, (250, 250, 2230, 3250), 44, 0)
    random = numpy.random.default_rng(9)
    noise = random.normal(0, 60 if not grey else 4, (3508, 2480))
    values = numpy.asarray(page, float) + noise * (1 if grey else 0.8)
    if grey:
        return Image.fromarray(numpy.clip(values, 0, 255).astype(numpy.uint8))
    return Image.fromarray((values > 100).astype(numpy.uint8) * 255).convert("1")


def make_inputs(folder):
    """Kind of picture and file of it."""
    kinds = []

    def add(kind, picture, name, **options):
        path = f"{folder}/{name}"
        picture.save(path, **options)
        kinds.append((kind, path))

    def convert(kind, source, name, *options):
        path = f"{folder}/{name}"
        subprocess.run(["convert", f"{folder}/{source}", *options, path], check=True)
        kinds.append((kind, path))

    photo = photograph(1600, 1200, 7)
    add("photograph, JPEG", photo, "p.jpg", quality=90)
    add("photograph, JPEG 2000", photo, "p.jp2", quality_layers=[12])
    add("photograph, PNG", photo, "p.png")
    convert("photograph, PNG, interlaced", "p.png", "i.png", "-interlace", "PNG")
    add("photograph, PNG, grey", photo.convert("L"), "g.png")
    convert("photograph, PNG, 16 bits", "p.png", "w.png", "-blur", "0x1.5", "-depth", "16")
    soft = photo.copy()
    soft.putalpha(Image.linear_gradient("L").resize(photo.size))
    add("photograph, PNG, alpha", soft, "a.png")
    for name, compression in (("none", None), ("LZW", "tiff_lzw"),
                              ("Deflate", "tiff_adobe_deflate"), ("JPEG", "jpeg")):
        add(f"photograph, TIFF, {name}", photo, f"p-{name}.tif", compression=compression)
    convert("photograph, TIFF, LZW, predictor, one strip", "p.png", "predictor.tif", "-compress",
            "LZW", "-define", "tiff:predictor=2", "-define", "tiff:rows-per-strip=1200")
    add("photograph, WebP, lossless", photo, "l.webp", lossless=True)
    add("photograph, WebP, lossy", photo, "p.webp", quality=85)
    add("photograph, BMP", photo, "p.bmp")
    add("photograph, PPM", photo, "p.ppm")
    screen = screenshot()
    add("screenshot, PNG", screen, "s.png")
    add("screenshot, PNG, palette", screen.quantize(256), "q.png")
    add("screenshot, WebP, lossless", screen, "s.webp", lossless=True)
    add("screenshot, GIF", screen.quantize(256), "s.gif")
    add("screenshot, BMP", screen, "s.bmp")
    page = scan(False)
    add("scan, 1 bit, PNG", page, "b.png")
    add("scan, 1 bit, PBM", page, "b.pbm")
    add("scan, 1 bit, TIFF, G4", page, "g4.tif", compression="group4")
    convert("scan, 1 bit, TIFF, G4, one strip", "g4.tif", "one.tif", "-compress", "Group4",
            "-define", "tiff:rows-per-strip=3508")
    convert("scan, 1 bit, TIFF, G3", "g4.tif", "g3.tif", "-compress", "Fax")
    add("scan, 1 bit, TIFF, LZW", page, "lzw.tif", compression="tiff_lzw")
    add("scan, grey, PNG", scan(True), "grey.png")
    subprocess.run(["cjxl", f"{folder}/p.jpg", f"{folder}/p.jxl"], check=True, capture_output=True)
    kinds.append(("photograph, JPEG XL of a JPEG", f"{folder}/p.jxl"))
    subprocess.run(["heif-enc", "-q", "60", "-o", f"{folder}/p.heic", f"{folder}/p.png"], check=True,
                   capture_output=True)
    kinds.append(("photograph, HEIF", f"{folder}/p.heic"))
    return kinds


def run(arguments):
    """Seconds, or nothing where the command refuses."""
    begin = time.monotonic()
    done = subprocess.run(arguments, capture_output=True)
    return time.monotonic() - begin if done.returncode == 0 else None


def measure(arguments, out, rounds):
    """The best seconds and the bytes of what was written."""
    if os.path.exists(out):
        os.unlink(out)
    seconds = [run(arguments) for _ in range(rounds)]
    if None in seconds:
        return None, None
    return min(seconds), os.path.getsize(out)


def row_of(kind, path, options, folder):
    out = f"{folder}/out.pdf"
    ours, size = measure([options.jtpdf, "-q", path, "-o", out], out, options.rounds)
    _, least = measure([options.jtpdf, "-q", "-O", path, "-o", out], out, 1)
    if size is None or least is None:
        sys.exit(f"kinds.py: {options.jtpdf} refuses {kind}")
    theirs, their_size = measure(["img2pdf", "--nodate", path, "-o", out], out, options.rounds)
    read = os.path.getsize(path)
    peer = (f"{their_size / 1e3:.1f} | {size / their_size:.2f} | {ours:.3f} | {theirs:.3f}"
            if their_size else f"refused | | {ours:.3f} | ")
    return (f"| {kind} | {read / 1e3:.1f} | {size / 1e3:.1f} | {least / 1e3:.1f} | {peer} |", size,
            least, their_size)


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("jtpdf")
    parser.add_argument("--rounds", type=int, default=3)
    parser.add_argument("--write-docs", action="store_true",
                        help="keep the table in docs/performance-tool.md")
    options = parser.parse_args()
    lines = ["| picture | kB | jtpdf, kB | jtpdf -O, kB | img2pdf, kB | jtpdf / img2pdf | jtpdf, s "
             "| img2pdf, s |", "|---|---|---|---|---|---|---|---|"]
    sums = {"all": [0, 0, 0], "PNG, TIFF and WebP": [0, 0, 0]}
    folder = tempfile.mkdtemp(prefix="jtpdf-kinds-")
    try:
        for kind, path in make_inputs(folder):
            line, *sizes = row_of(kind, path, options, folder)
            lines.append(line)
            print(line, flush=True)
            if sizes[2] is None:
                continue
            for name, total in sums.items():
                if name == "all" or any(word in kind for word in ("PNG", "TIFF", "WebP")):
                    total[:] = [a + b for a, b in zip(total, sizes)]
    finally:
        shutil.rmtree(folder)
    for name, (own, least, peer) in sums.items():
        lines += ["", f"Over {name} that both take, jtpdf writes {own / peer:.2f} times the bytes of "
                  f"img2pdf, and with -O {least / peer:.3f} times."]
        print(lines[-1])
    if options.write_docs:
        write_block(ROOT / "docs/performance-tool.md", "kinds", "\n".join(lines))


main()
