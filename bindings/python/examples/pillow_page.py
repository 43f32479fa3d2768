#!/usr/bin/env python3
"""pillow_page.py IMAGE OUT.pdf: an image file of any kind that Pillow reads becomes a page."""

import sys

import jtpdf
from PIL import Image


def write_page(source: str, target: str) -> None:
    with Image.open(source) as image, jtpdf.Document(target) as doc:
        picture = doc.write_picture(jtpdf.Picture.from_pillow(image), name=source)
        doc.add_image_page(picture, jtpdf.Box(0, 0, *image.size))


if __name__ == "__main__":
    write_page(*sys.argv[1:])
