"""Pixels of other packages as image data, compressed with zlib."""

from __future__ import annotations

import dataclasses
import sys
import zlib
from typing import TYPE_CHECKING, Any, Sequence

from ._values import ColorSpace, Compression, ImageData

if TYPE_CHECKING:
    from _typeshed import ReadableBuffer

_INVERTED = bytes(255 - value for value in range(256))
_BOOLEAN = bytes([0]) + bytes([255]) * 255

# Modes whose pixels PDF has in the same form: bits of a component and colour space.
_PLAIN_MODES = {
    "1": (1, ColorSpace.GRAY),
    "L": (8, ColorSpace.GRAY),
    "RGB": (8, ColorSpace.RGB),
    "CMYK": (8, ColorSpace.CMYK),
}
_OTHER_COLOR_MODES = ("P", "RGBX", "YCbCr", "LAB", "HSV")


@dataclasses.dataclass(frozen=True)
class Picture:
    """Image data and, if the picture has an alpha channel, the soft mask made of it."""

    image: ImageData
    alpha: ImageData | None = None

    @staticmethod
    def from_pillow(picture: Any) -> Picture:
        """The picture of a Pillow image of any mode but I and F, which have no fixed range.

        >>> from PIL import Image
        >>> Picture.from_pillow(Image.new("LA", (3, 2))).alpha is None
        False
        """
        mode: str = picture.mode
        if mode in ("LA", "La"):
            return _with_alpha(picture.convert("LA"), "L")
        if mode in ("RGBA", "RGBa", "PA") or (mode == "P" and "transparency" in picture.info):
            return _with_alpha(picture.convert("RGBA"), "RGB")
        if mode in _OTHER_COLOR_MODES:
            return Picture.from_pillow(picture.convert("RGB"))
        if mode not in _PLAIN_MODES:
            raise ValueError(f"an image of mode {mode!r} has no fixed range of values; convert it "
                             "to 'L' or 'RGB'")
        return Picture(_plain_pillow(picture))

    @staticmethod
    def from_array(array: ReadableBuffer) -> Picture:
        """The picture of an array: rows of grey pixels, or of pixels with 1 to 4 channels.

        The channels are grey; grey and alpha; red, green, blue; red, green, blue and alpha. The
        elements are bool, uint8 or uint16 (NumPy's names). Everything with the buffer protocol
        is an array, and it need not be contiguous.

        >>> import numpy
        >>> picture = Picture.from_array(numpy.zeros((20, 30, 3), numpy.uint8))
        >>> picture.image.width, picture.image.height
        (30, 20)
        """
        view = memoryview(array)
        shape = view.shape or ()
        if len(shape) not in (2, 3) or 0 in shape or (len(shape) == 3 and shape[2] > 4):
            raise ValueError(f"an array of the shape {shape} is no picture: rows, columns and up "
                             "to 4 channels are needed")
        bits, samples = _samples(view)
        height, width, channels = (*shape, 1)[:3]
        colors = 1 if channels < 3 else 3
        color_space = ColorSpace.GRAY if colors == 1 else ColorSpace.RGB
        pixels = _channels(samples, bits // 8, channels, range(colors))
        image = _flate(pixels, width, height, bits, color_space)
        if channels == colors:
            return Picture(image)
        alpha = _channels(samples, bits // 8, channels, range(colors, channels))
        return Picture(image, _flate(alpha, width, height, bits, ColorSpace.GRAY))


def _flate(samples: bytes, width: int, height: int, bits: int,
           color_space: ColorSpace) -> ImageData:
    return ImageData(zlib.compress(samples), Compression.FLATE, width, height, bits, color_space)


def _plain_pillow(picture: Any) -> ImageData:
    bits, color_space = _PLAIN_MODES[picture.mode]
    samples: bytes = picture.tobytes()
    if color_space is ColorSpace.CMYK:  # always declared inverted
        samples = samples.translate(_INVERTED)
    width, height = picture.size
    return _flate(samples, width, height, bits, color_space)


def _with_alpha(picture: Any, colors: str) -> Picture:
    return Picture(_plain_pillow(picture.convert(colors)), _plain_pillow(picture.getchannel("A")))


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
        return 16, samples if is_big else _channels(samples, 1, 2, (1, 0))
    raise ValueError(f"elements of the kind {view.format!r} have no fixed range of values; make "
                     "them bool, uint8 or uint16")


def _channels(samples: bytes, size: int, count: int, chosen: Sequence[int]) -> bytes:
    """Of pixels with count channels of size bytes, the chosen channels."""
    if list(chosen) == list(range(count)):
        return samples
    pixels = len(samples) // (size * count)
    result = bytearray(pixels * size * len(chosen))
    for target, source in enumerate(chosen):
        for byte in range(size):
            result[target * size + byte::len(chosen) * size] = (
                samples[source * size + byte::count * size])
    return bytes(result)
