#!/usr/bin/env python3
"""compare_pixels.py DPI PDF PICTURE.pixels.png...: renders each page beside what it has to show.

DPI is how many pixels of a picture are an inch of its page. Both are made small before they are compared: readers place pixels a little differently."""

import pathlib
import subprocess
import sys
import tempfile

from PIL import Image, ImageChops, ImageStat

MOST = 4.0  # mean difference of a channel, of 255
MOST_INKS = 20.0  # readers have other inks than Pillow; inverted ones would differ by more than 100

dpi, pdf, *pictures = sys.argv[1:]
with tempfile.TemporaryDirectory() as work:
    subprocess.run(["pdftoppm", "-r", str(4 * int(dpi)), "-png", pdf, f"{work}/page"], check=True)
    pages = sorted(pathlib.Path(work).glob("page*.png"))
    if len(pages) != len(pictures):
        sys.exit(f"{pdf} has {len(pages)} pages, not {len(pictures)}")
    failed = []
    for page, wanted in zip(pages, pictures):
        with Image.open(page) as rendered, Image.open(wanted) as picture:
            if rendered.size != (4 * picture.width, 4 * picture.height):
                failed.append(f"{wanted}: rendered as {rendered.size}, not four times {picture.size}")
                continue
            small = (picture.width // 4, picture.height // 4)
            difference = ImageChops.difference(*(image.convert("RGB").resize(small, Image.Resampling.BOX)
                                                 for image in (rendered, picture)))
            mean = max(ImageStat.Stat(difference).mean)
            if mean > (MOST_INKS if "cmyk" in wanted else MOST):
                failed.append(f"{wanted}: differs by {mean:.2f} of 255 on average")
    if failed:
        sys.exit("\n".join(failed))
