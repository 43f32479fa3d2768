#!/usr/bin/env python3
"""numpy_page.py OUT.pdf: a NumPy array becomes a page, here two waves that meet."""

import sys

import jtpdf
import numpy


def waves(size: int) -> "numpy.typing.NDArray[numpy.uint8]":
    y, x = numpy.mgrid[0:size, 0:size] / size
    rings = [numpy.sin(60 * numpy.hypot(x - at, y - 0.5)) for at in (0.3, 0.7)]
    height = (sum(rings) + 2) / 4
    return numpy.dstack([255 * height, 120 + 100 * height, 255 - 60 * height]).astype(numpy.uint8)


def write_page(target: str) -> None:
    with jtpdf.Document(target, unit="mm") as doc:
        picture = doc.write_picture(jtpdf.Picture.from_array(waves(400)), name="waves")
        doc.add_image_page(picture, (0, 0, 100, 100))


if __name__ == "__main__":
    write_page(*sys.argv[1:])
