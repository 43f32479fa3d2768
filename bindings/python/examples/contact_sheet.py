#!/usr/bin/env python3
"""contact_sheet.py OUT.pdf PICTURE...: twelve pictures to a sheet, with soft shadows and captions."""

import pathlib
import sys

import jtpdf
from PIL import Image, ImageFilter


def draw(doc: jtpdf.Document, source: str, shadow: jtpdf.Image, cell: jtpdf.Box) -> None:
    with jtpdf.PictureFile(source) as picture:
        place = doc.fit_picture(picture, cell)
        under = place.upright()
        if not picture.info().has_alpha:  # a picture of the shape that its box is
            doc.draw_image(shadow, (under.left, under.bottom - 4, under.width + 4, under.height + 4))
        doc.draw_image(doc.write_picture(picture), place)
    doc.draw_text(pathlib.Path(source).name[:32], cell.left, cell.bottom - 5, 8, color="#444444")


def write_sheets(target: str, sources: list[str]) -> None:
    # Black, and transparent towards its edges.
    square = Image.new("LA", (128, 128))
    square.paste((0, 150), (10, 10, 118, 118))
    with jtpdf.Document(target, unit="mm", compress=True) as doc:
        blurred = square.filter(ImageFilter.GaussianBlur(5))
        shadow = doc.write_picture(jtpdf.Picture.from_pillow(blurred))
        for first in range(0, len(sources), 12):
            for i, source in enumerate(sources[first:first + 12]):
                # Cells of 56 mm, with room for captions: 4 rows of 3.
                row, column = divmod(i, 3)
                draw(doc, source, shadow, jtpdf.Box(13 + 64 * column, 229 - 68 * row, 56, 56))
            doc.add_page((0, 0, 210, 297))


if __name__ == "__main__":
    write_sheets(sys.argv[1], sys.argv[2:])
