"""What methods are given, checked and in the form that the C interface wants."""

from __future__ import annotations

import ctypes
import datetime
import math
from typing import TYPE_CHECKING, Mapping

from . import _native
from ._values import (Box, BoxLike, Color, ColorLike, ColorSpace, Form, Image, ImageData, Profile,
                      Role)

if TYPE_CHECKING:
    from ._objects import Object

_ICC_BASED = 3  # the kind of colour space that a Profile is

# The largest sheet in points on every side of the origin: what hides nothing of any page.
EVERYWHERE = 14400.0


def number(value: float, what: str) -> float:
    """The finite number."""
    try:
        finite = math.isfinite(value)
    except (TypeError, OverflowError):
        raise TypeError(f"{what} is {value!r}, no number") from None
    if not finite:
        raise ValueError(f"{what} is {value}")
    return float(value)


def size(value: float, what: str) -> float:
    """The number, which may not be negative."""
    value = number(value, what)
    if value < 0:
        raise ValueError(f"{what} is {value}, which is negative")
    return value


def rect(box: BoxLike, what: str, *, mirrors: bool = False) -> _native.Rect:
    """The record of a box; an extent may be negative where it mirrors an image."""
    if not isinstance(box, Box):
        if not isinstance(box, (tuple, list)) or len(box) not in (4, 5):
            raise TypeError(f"{what} is {box!r}, neither a Box nor 4 or 5 numbers")
        box = Box(*box)
    extent = number if mirrors else size
    return _native.Rect(number(box.left, f"{what}.left"), number(box.bottom, f"{what}.bottom"),
                        extent(box.width, f"{what}.width"), extent(box.height, f"{what}.height"),
                        number(box.angle, f"{what}.angle"))


def color(value: ColorLike, what: str) -> _native.RGBColor:
    try:
        if isinstance(value, str):
            value = Color.from_hex(value)
        elif not isinstance(value, Color):
            if not isinstance(value, (tuple, list)) or len(value) not in (3, 4):
                raise TypeError(f"{value!r} is neither a Color nor '#ff8000' nor 3 or 4 numbers")
            value = Color(*value)
    except (TypeError, ValueError) as problem:
        raise type(problem)(f"{what}: {problem}") from None
    return _native.RGBColor(value.red, value.green, value.blue, value.alpha)


def object_number(value: Image | Form | Profile | Object, kind: type, document: int,
                  what: str) -> int:
    if not isinstance(value, kind):
        raise TypeError(f"{what}: {value!r} is no {kind.__name__}")
    if value.document not in (document, 0):
        raise ValueError(f"{what} belongs to another document")
    return value.number


def descriptor(image: ImageData, memory: _native.Borrowed, document: int) -> object:
    if isinstance(image.color_space, Profile):
        color_space = _ICC_BASED
        profile = object_number(image.color_space, Profile, document, "color_space")
    else:
        color_space, profile = int(ColorSpace(image.color_space)), 0
    return ctypes.byref(_native.ImageDescriptor(
        memory.address, memory.size, image.compression, image.width, image.height,
        image.bits_per_component, color_space, profile))


def tags(role: Role, name: str, entries: Mapping[str, str]) -> tuple[object, ...]:
    items = (_native.DictionaryItem * len(entries))(*(
        _native.DictionaryItem(_native.text(key, "key").encode("utf-8"),
                               _native.wide_text(value, "value"))
        for key, value in entries.items()))
    return int(role), _native.wide_text(name, "name"), len(items), items


def info_text(value: str | datetime.date) -> str:
    """The value of an information item; a date as ISO 32000-1, 7.9.4 wants it.

    >>> info_text(datetime.date(2026, 5, 17))
    'D:20260517'
    >>> info_text(datetime.datetime(2026, 5, 17, 12, 30, tzinfo=datetime.timezone.utc))
    'D:20260517123000Z'
    """
    if not isinstance(value, datetime.date):
        return _native.wide_text(value, "value")
    day = f"D:{value.year:04}{value.month:02}{value.day:02}"
    if not isinstance(value, datetime.datetime):
        return day
    time = f"{day}{value.hour:02}{value.minute:02}{value.second:02}"
    offset = value.utcoffset()
    if offset is None:
        return time
    minutes = round(offset.total_seconds() / 60)
    if minutes == 0:
        return time + "Z"
    return f"{time}{'-' if minutes < 0 else '+'}{abs(minutes) // 60:02}'{abs(minutes) % 60:02}'"
