"""What a caller passes: boxes, colours, image data, and what documents give back."""

from __future__ import annotations

import dataclasses
import enum
import math
import operator
import re
from typing import TYPE_CHECKING, ClassVar, Dict, List, Literal, Tuple, Union

if TYPE_CHECKING:
    from typing import Any, Protocol

    from _typeshed import ReadableBuffer

    class Array(Protocol):
        """An array of NumPy: it has the buffer protocol, which Python 3.12 is the first to type."""

        @property
        def __array_interface__(self) -> Any: ...

    #: Whatever has the buffer protocol.
    Buffer = Union[ReadableBuffer, Array]

#: Units: how many PDF points one is. Any number of points can be a unit.
POINT = 1.0
INCH = 72.0
CENTIMETER = 28.346456692944
MILLIMETER = 2.8346456692944

#: What a document takes for its unit.
Unit = Union[float, Literal["pt", "in", "cm", "mm"]]
_UNITS: Dict[str, float] = {"pt": POINT, "in": INCH, "cm": CENTIMETER, "mm": MILLIMETER}


def points(unit: Unit) -> float:
    """How many points the unit is."""
    if not isinstance(unit, str):
        if not isinstance(unit, (int, float)):
            raise TypeError(f"unit is {unit!r}, neither a number of points nor one of "
                            f"{', '.join(_UNITS)}")
        if not 0 < unit < math.inf:
            raise ValueError(f"unit is {unit}: no length can be that many points")
        return unit
    if unit not in _UNITS:
        raise ValueError(f"the unit {unit!r} is none of {', '.join(_UNITS)}, nor a number of points")
    return _UNITS[unit]


@dataclasses.dataclass(frozen=True)
class Box:
    """Lower-left corner and extent in the document's unit, y upwards, turned by an angle.

    The angle is in degrees, counter-clockwise about the centre.

    >>> Box(10, 20, 30, 40).inset(1, 2)
    Box(left=11, bottom=22, width=28, height=36, angle=0.0)
    """

    left: float
    bottom: float
    width: float
    height: float
    angle: float = 0.0

    def inset(self, dx: float, dy: float) -> Box:
        """The box with every side moved inwards; negative values grow it."""
        return Box(self.left + dx, self.bottom + dy, self.width - 2 * dx, self.height - 2 * dy,
                   self.angle)

    def upright(self) -> Box:
        """The same area without what mirrors an image or turns it by quarters.

        Its sides aren't negative, and its angle is one from -45 to 45 degrees: what stands around or
        beneath a picture goes by it.

        >>> Box(10, 20, -30, 40, 90).upright()
        Box(left=-25.0, bottom=25.0, width=40, height=30, angle=0.0)
        """
        angle = math.remainder(self.angle, 90)
        width, height = abs(self.width), abs(self.height)
        if round((self.angle - angle) / 90) % 2:
            width, height = height, width
        return Box(self.left + (self.width - width) / 2, self.bottom + (self.height - height) / 2,
                   width, height, angle)


@dataclasses.dataclass(frozen=True)
class Color:
    """A device RGB colour, its components from 0 to 255.

    Alpha never reaches the file; it only tells ``Color.NONE`` from white. Rectangles leave out a
    fill or stroke of that colour.

    >>> Color.from_hex("#ff8000")
    Color(red=255, green=128, blue=0, alpha=255)
    """

    red: int
    green: int
    blue: int
    alpha: int = 255

    BLACK: ClassVar[Color]
    WHITE: ClassVar[Color]
    NONE: ClassVar[Color]

    def __post_init__(self) -> None:
        for field in dataclasses.fields(self):
            try:
                value = operator.index(getattr(self, field.name))
            except TypeError:
                raise TypeError(f"{field.name} is {getattr(self, field.name)!r}; colours are whole "
                                "numbers from 0 to 255") from None
            if not 0 <= value <= 255:
                raise ValueError(f"{field.name} is {value}; colours go from 0 to 255")

    @staticmethod
    def from_hex(text: str) -> Color:
        """The colour of a text such as "#ff8000"."""
        if not re.fullmatch("#[0-9A-Fa-f]{6}", text):
            raise ValueError(f"{text!r} is not # and six hexadecimal digits")
        return Color(*bytes.fromhex(text[1:]))


Color.BLACK = Color(0, 0, 0)
Color.WHITE = Color(255, 255, 255)
Color.NONE = Color(255, 255, 255, 0)


#: What a method takes for a box, and for a colour: one of them, or its values.
BoxLike = Union[Box, Tuple[float, float, float, float], Tuple[float, float, float, float, float],
                List[float], List[int]]
ColorLike = Union[Color, str, Tuple[int, int, int], Tuple[int, int, int, int], List[int]]


class Compression(enum.IntEnum):
    """How bytes are encoded. The library never encodes or decodes."""

    NONE = -1  #: not at all: the samples themselves, or a plain profile
    JPEG = 0
    LZW = 1
    FLATE = 2  #: what zlib.compress gives
    JPEG2000 = 3


class ColorSpace(enum.IntEnum):
    """The colour space of a device. A Profile can stand wherever one of them can."""

    GRAY = 0
    RGB = 1
    CMYK = 2  #: always declared inverted: 255 is no ink


class Role(enum.IntEnum):
    """What an image is for; it is only recorded."""

    BACKGROUND = 0
    PHOTO = 1
    MASK = 2
    BORDER = 3
    CLIP_ART = 4
    ALPHA = 5
    TEXT = 6
    SHAPE = 7
    OTHER = 8


@dataclasses.dataclass(frozen=True)
class Image:
    """The number of an image in its document, from write_image and so on."""

    number: int
    document: int = dataclasses.field(default=0, repr=False, compare=False)


@dataclasses.dataclass(frozen=True)
class Form:
    """The number of a form in its document, from write_canvas."""

    number: int
    document: int = dataclasses.field(default=0, repr=False, compare=False)


@dataclasses.dataclass(frozen=True)
class Profile:
    """The number of a profile's colour space in its document, from write_icc_profile."""

    number: int
    document: int = dataclasses.field(default=0, repr=False, compare=False)


@dataclasses.dataclass(frozen=True)
class ImageData:
    """An image that is encoded already, in any bytes-like object, which is never copied.

    Width and height are pixels; whether they agree with the data is not checked.

    >>> import zlib
    >>> gradient = ImageData(zlib.compress(bytes(range(256))), Compression.FLATE, 256, 1,
    ...                      color_space=ColorSpace.GRAY)
    """

    data: Buffer
    compression: Compression
    width: int
    height: int
    bits_per_component: int = 8
    color_space: ColorSpace | Profile = ColorSpace.RGB

    def __post_init__(self) -> None:
        for name in ("width", "height", "bits_per_component"):
            value = getattr(self, name)
            if not -(2**31) <= value < 2**31:
                raise ValueError(f"{name} is {value}, which has more than 32 bits")
            if value < 1:
                raise ValueError(f"{name} is {value}: an image has at least one")
