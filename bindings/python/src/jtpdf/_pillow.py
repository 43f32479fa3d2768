"""Images of Pillow: their pixels as image data, with their alpha channel and profile."""

from __future__ import annotations

import sys
from typing import Any, Optional, Tuple

from . import _jpeg
from ._samples import flate, swapped
from ._values import ColorSpace, ImageData

_INVERTED = bytes(255 - value for value in range(256))

# Modes whose pixels PDF has in the same form: bits of a component and colour space.
_PLAIN_MODES = {
    "1": (1, ColorSpace.GRAY),
    "L": (8, ColorSpace.GRAY),
    "RGB": (8, ColorSpace.RGB),
    "CMYK": (8, ColorSpace.CMYK),
}
_OTHER_COLOR_MODES = ("P", "RGBX", "YCbCr", "LAB", "HSV")

Parts = Tuple[ImageData, Optional[ImageData]]


def parts(picture: Any) -> tuple[ImageData, ImageData | None, bytes | None]:
    """Image data, soft mask and profile of the picture."""
    jpeg = _jpeg.untouched(picture)
    image, alpha = (jpeg, None) if jpeg is not None else _pixels(picture)
    return image, alpha, _profile(picture) if image.color_space is ColorSpace.RGB else None


def _profile(picture: Any) -> bytes | None:
    """The profile, if it is one for RGB data: PDF files of ours have no other."""
    data = picture.info.get("icc_profile")
    if not isinstance(data, bytes) or len(data) < 128 or data[16:20] != b"RGB ":
        return None
    if data[36:40] != b"acsp" or int.from_bytes(data[:4], "big") > len(data):
        return None
    return data


def _pixels(picture: Any) -> Parts:
    mode: str = picture.mode
    if mode == "I" and picture.format == "PNG":  # Pillow's mode for a PNG file of 16 bits
        return _words(picture.convert("I;16"), picture.info.get("transparency"))
    if mode.startswith("I;16"):
        return _words(picture, picture.info.get("transparency"))
    if mode in ("LA", "La"):
        return _with_alpha(picture.convert("LA"), "L")
    if mode in ("RGBA", "RGBa", "PA") or (mode == "P" and "transparency" in picture.info):
        return _with_alpha(picture.convert("RGBA"), "RGB")
    if mode in _OTHER_COLOR_MODES:
        picture = picture.convert("RGB")
    if picture.mode not in _PLAIN_MODES:
        raise ValueError(f"an image of mode {mode!r} has no fixed range of values; convert it "
                         "to 'L' or 'RGB'")
    return _plain(picture), _key_mask(picture)


def _plain(picture: Any) -> ImageData:
    bits, color_space = _PLAIN_MODES[picture.mode]
    samples: bytes = picture.tobytes()
    if color_space is ColorSpace.CMYK:  # always declared inverted
        samples = samples.translate(_INVERTED)
    width, height = picture.size
    return flate(samples, width, height, bits, color_space)


def _with_alpha(picture: Any, colors: str) -> Parts:
    return _plain(picture.convert(colors)), _plain(picture.getchannel("A"))


def _key_mask(picture: Any) -> ImageData | None:
    """The soft mask of a picture with a colour that is transparent, as PNG files have it."""
    key = picture.info.get("transparency")
    if picture.mode == "1" and isinstance(key, int):
        key = 255 if key else 0
        picture = picture.convert("L")
    if picture.mode == "L" and isinstance(key, int):
        opaque = bytes(0 if value == key else 255 for value in range(256))
        return _mask(picture, picture.tobytes().translate(opaque))
    if picture.mode == "RGB" and isinstance(key, tuple) and len(key) == 3:
        picture = picture.copy()
        # Pillow makes 8 bits of 16, but not of the key.
        picture.info["transparency"] = tuple(v >> 8 if max(key) > 255 else v for v in key)
        alpha = picture.convert("RGBA").getchannel("A")
        return _mask(picture, alpha.tobytes())
    return None


def _mask(picture: Any, samples: bytes) -> ImageData:
    width, height = picture.size
    return flate(samples, width, height, 8, ColorSpace.GRAY)


def _words(picture: Any, key: Any) -> Parts:
    """Grey of 16 bits, most significant byte first."""
    samples: bytes = picture.tobytes()
    is_big = picture.mode == "I;16B" or (picture.mode == "I;16N" and sys.byteorder == "big")
    if not is_big:
        samples = swapped(samples)
    width, height = picture.size
    image = flate(samples, width, height, 16, ColorSpace.GRAY)
    if not isinstance(key, int):
        return image, None
    high, low = divmod(key, 256)
    opaque = bytes(0 if pixel == (high, low) else 255 for pixel in zip(samples[::2], samples[1::2]))
    return image, _mask(picture, opaque)
