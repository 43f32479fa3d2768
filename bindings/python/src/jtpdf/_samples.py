"""Samples as they stand in a PDF file: rearranged, and compressed with zlib."""

from __future__ import annotations

import zlib
from typing import Sequence

from ._values import ColorSpace, Compression, ImageData


def flate(samples: bytes, width: int, height: int, bits: int, color_space: ColorSpace) -> ImageData:
    return ImageData(zlib.compress(samples), Compression.FLATE, width, height, bits, color_space)


def channels(samples: bytes, size: int, count: int, chosen: Sequence[int]) -> bytes:
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


def swapped(samples: bytes) -> bytes:
    """Components of 16 bits in the other order of bytes."""
    return channels(samples, 1, 2, (1, 0))
