"""Pixels of other packages as image data, compressed with zlib."""

from __future__ import annotations

import dataclasses
import sys
from typing import TYPE_CHECKING, Any, cast

from . import _pillow
from ._samples import channels, flate, swapped
from ._values import ColorSpace, ImageData

if TYPE_CHECKING:
    from ._values import Buffer

_BOOLEAN = bytes([0]) + bytes([255]) * 255


@dataclasses.dataclass(frozen=True)
class Picture:
    """Image data and, if the picture has them, the soft mask of its alpha channel and its profile."""

    image: ImageData
    alpha: ImageData | None = None
    profile: bytes | None = None

    @staticmethod
    def from_pillow(picture: Any) -> Picture:
        """The picture of a Pillow image of any mode but I and F, which have no fixed range.

        A JPEG file that Pillow has opened and nobody decoded yet (by load(), a pixel, a resize) is
        written as it is. A profile for RGB comes along. A transparent colour, as PNG files have it,
        becomes a soft mask.

        >>> from PIL import Image
        >>> Picture.from_pillow(Image.new("LA", (3, 2))).alpha is None
        False
        """
        return Picture(*_pillow.parts(picture))

    @staticmethod
    def from_array(array: Buffer) -> Picture:
        """The picture of an array: rows of grey pixels, or of pixels with 1 to 4 channels.

        The channels are grey; grey and alpha; red, green, blue; red, green, blue and alpha. The
        elements are bool, uint8 or uint16 (NumPy's names). Everything with the buffer protocol
        is an array, and it need not be contiguous.

        >>> import numpy
        >>> picture = Picture.from_array(numpy.zeros((20, 30, 3), numpy.uint8))
        >>> picture.image.width, picture.image.height
        (30, 20)
        """
        view = memoryview(cast(Any, array))
        shape = view.shape or ()
        if len(shape) not in (2, 3) or 0 in shape or (len(shape) == 3 and shape[2] > 4):
            raise ValueError(f"an array of the shape {shape} is no picture: rows, columns and up "
                             "to 4 channels are needed")
        bits, samples = _samples(view)
        height, width, count = (*shape, 1)[:3]
        colors = 1 if count < 3 else 3
        color_space = ColorSpace.GRAY if colors == 1 else ColorSpace.RGB
        pixels = channels(samples, bits // 8, count, range(colors))
        image = flate(pixels, width, height, bits, color_space)
        if count == colors:
            return Picture(image)
        alpha = channels(samples, bits // 8, count, range(colors, count))
        return Picture(image, flate(alpha, width, height, bits, ColorSpace.GRAY))


def _samples(view: memoryview) -> tuple[int, bytes]:
    """How many bits a component has, and the components as they stand in a PDF file."""
    kind = view.format.lstrip("@=<>!")
    samples = view.tobytes()
    if kind == "B":
        return 8, samples
    if kind == "?":
        return 8, samples.translate(_BOOLEAN)
    if kind == "H":
        is_big = view.format[0] in ">!" or (view.format[0] not in "<" and sys.byteorder == "big")
        return 16, samples if is_big else swapped(samples)
    raise ValueError(f"elements of the kind {view.format!r} have no fixed range of values; make "
                     "them bool, uint8 or uint16")
