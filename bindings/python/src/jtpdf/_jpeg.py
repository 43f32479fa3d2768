"""JPEG files that Pillow has opened and not decoded yet, to be written as they are."""

from __future__ import annotations

from typing import Any, NamedTuple

from ._values import ColorSpace, Compression, ImageData

_SPACES = {"L": ColorSpace.GRAY, "RGB": ColorSpace.RGB, "CMYK": ColorSpace.CMYK}

# Baseline, extended and progressive: what every reader of PDF decodes.
_COMMON_FRAMES = (0xC0, 0xC1, 0xC2)


class _Frame(NamedTuple):
    marker: int
    bits: int
    size: tuple[int, int]  # width and height
    components: bytes  # their names


def untouched(picture: Any) -> ImageData | None:
    """The file of the picture, if it is a JPEG file that is whole and that nobody has decoded.

    Pillow decodes late, and as long as it has not, nobody can have changed a pixel.
    """
    file = getattr(picture, "fp", None)
    if picture.format != "JPEG" or not getattr(picture, "tile", None) or file is None:
        return None
    position = file.tell()
    file.seek(0)
    data: bytes = file.read()
    file.seek(position)
    frame = _frame_of(data)
    if frame is None or frame.marker not in _COMMON_FRAMES or frame.bits != 8:
        return None
    if frame.size != picture.size:  # a draft of it
        return None
    space = _SPACES.get(picture.mode)
    if space is None or len(frame.components) != len(picture.getbands()):
        return None
    if frame.components == b"RGB" and "adobe" not in picture.info:  # readers differ
        return None
    if not data.rstrip(b"\0").endswith(b"\xff\xd9"):
        return None
    return ImageData(data, Compression.JPEG, *frame.size, 8, space)


def _frame_of(data: bytes) -> _Frame | None:
    """What the frame's header says."""
    position = 2
    while position + 10 <= len(data) and data[position] == 0xFF:
        marker = data[position + 1]
        if marker == 0xFF:  # fills
            position += 1
            continue
        body = position + 4
        if 0xC0 <= marker <= 0xCF and marker not in (0xC4, 0xC8, 0xCC):
            height, width = (int.from_bytes(data[at:at + 2], "big") for at in (body + 1, body + 3))
            count = data[body + 5]
            return _Frame(marker, data[body], (width, height),
                          data[body + 6:body + 6 + 3 * count:3])
        position += 2 + int.from_bytes(data[position + 2:position + 4], "big")
    return None
