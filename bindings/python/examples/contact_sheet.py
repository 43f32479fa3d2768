#!/usr/bin/env python3
"""contact_sheet.py OUT.pdf PICTURE...: twelve pictures to a sheet, with soft shadows and captions."""

import pathlib
import sys
import zlib
from typing import List

import jtpdf

WIDTH, HEIGHT, MARGIN, GAP = 210, 297, 12, 8  # millimetres
COLUMNS, ROWS = 3, 4
CELL, CAPTION = (WIDTH - 2 * MARGIN - (COLUMNS - 1) * GAP) / COLUMNS, 9


def write_shadow(doc: jtpdf.Document, size: int = 64) -> jtpdf.Image:
    """Black, and a soft mask that lets it through in the middle and fades towards the edges."""
    def at(i: int) -> float:
        return min(1.0, min(i, size - 1 - i) / (size / 8))

    fading = bytes(int(120 * at(x) * at(y)) for y in range(size) for x in range(size))
    mask = jtpdf.ImageData(zlib.compress(fading), jtpdf.Compression.FLATE, size, size,
                           color_space=jtpdf.ColorSpace.GRAY)
    black = jtpdf.ImageData(zlib.compress(b"\0"), jtpdf.Compression.FLATE, 1, 1,
                            color_space=jtpdf.ColorSpace.GRAY)
    return doc.write_image_with_alpha(black, mask, role=jtpdf.Role.SHAPE, name="shadow")


def draw(doc: jtpdf.Document, source: str, shadow: jtpdf.Image, place: int) -> None:
    column, row = place % COLUMNS, place // COLUMNS
    left = MARGIN + column * (CELL + GAP)
    bottom = HEIGHT - MARGIN - (row + 1) * (CELL + CAPTION) + CAPTION
    with jtpdf.PictureFile(source) as picture:
        _, box = doc.lay_out_picture(picture, f"{CELL}x{CELL}mm")
        image = doc.write_picture(picture)
        throws_shadow = not picture.info().has_alpha  # of a shape that its box is
    upright = (box.width, box.height) if box.angle % 180 == 0 else (box.height, box.width)
    width, height = abs(upright[0]), abs(upright[1])
    if throws_shadow:
        doc.draw_image(shadow, (left + (CELL - width) / 2 - 0.5, bottom + (CELL - height) / 2 - 3,
                                width + 3.5, height + 3.5))
    doc.draw_image(image, jtpdf.Box(left + box.left, bottom + box.bottom, box.width, box.height,
                                    box.angle))
    doc.draw_text(pathlib.Path(source).name[:32], left, bottom - 5, 8, color="#444444")


def write_sheets(target: str, sources: List[str]) -> None:
    with jtpdf.Document(target, unit="mm", compress=True) as doc:
        shadow = write_shadow(doc)
        for i, source in enumerate(sources):
            draw(doc, source, shadow, i % (COLUMNS * ROWS))
            if (i + 1) % (COLUMNS * ROWS) == 0 or i + 1 == len(sources):
                doc.add_page((0, 0, WIDTH, HEIGHT))


if __name__ == "__main__":
    write_sheets(sys.argv[1], sys.argv[2:])
