"""Objects of one's own: images in every filter and colour space of PDF, and how values are spelled."""

from __future__ import annotations

import ctypes
import dataclasses
import enum
import math
from typing import TYPE_CHECKING, Callable, Mapping, Sequence

from . import _native
from ._values import Image

if TYPE_CHECKING:
    from ._values import Buffer

#: Encodes bytes, as zlib.compress does.
Encode = Callable[[bytes], bytes]


@dataclasses.dataclass(frozen=True)
class Object:
    """The number of an object in its document, from write_object and so on.

    Its text names it in a value: ``f"[{number}]"`` is an array of one reference.

    >>> str(Object(12))
    '12 0 R'
    """

    number: int
    document: int = dataclasses.field(default=0, repr=False, compare=False)

    def __str__(self) -> str:
        return f"{self.number} 0 R"


def pdf_string(text: str) -> str:
    """A text as the value of an entry, such as the title of a link.

    >>> pdf_string("Grüße")
    '<FEFF0047007200FC00DF0065>'
    """
    return f"<FEFF{text.encode('utf-16-be').hex().upper()}>"


def literal(text: str) -> str:
    """A text as the operand of an operator, in the encoding of the fonts that readers bring along.

    >>> literal("5 € (each)")
    '(5 \\\\200 \\\\(each\\\\))'
    """
    try:
        data = text.encode("cp1252")
    except UnicodeEncodeError as problem:
        raise ValueError(f"text has {text[problem.start]!r}, which these fonts lack") from None
    return "(" + "".join(chr(byte) if 32 <= byte < 127 and chr(byte) not in "()\\" else
                         f"\\{chr(byte)}" if chr(byte) in "()\\" else f"\\{byte:03o}"
                         for byte in data) + ")"


def number(value: float) -> str:
    """A number with six decimals at most."""
    if not math.isfinite(value) or abs(value) >= 1e9:
        raise ValueError(f"{value} is no number for a PDF file")
    text = f"{value:.6f}".rstrip("0").rstrip(".")
    return "0" if text == "-0" else text


def array(numbers: Sequence[float]) -> str:
    """Numbers as an array.

    >>> array([1, 0.5])
    '[1 0.5]'
    """
    return f"[{' '.join(map(number, numbers))}]"


class Filter(enum.Enum):
    """How the data of an image is encoded."""

    NONE = ""
    FLATE = "/FlateDecode"  #: what zlib.compress gives
    LZW = "/LZWDecode"
    JPEG = "/DCTDecode"
    JPEG2000 = "/JPXDecode"
    CCITT_G3 = "/CCITTFaxDecode 0"  #: rows coded one by one
    CCITT_G3_2D = "/CCITTFaxDecode 1"  #: some rows coded by the one above
    CCITT_G4 = "/CCITTFaxDecode -1"
    JBIG2 = "/JBIG2Decode"  #: the segments of one page, without a file's head


@dataclasses.dataclass(frozen=True)
class Colors:
    """A colour space, and how many components its colours have.

    >>> Colors.indexed(Colors.rgb(), bytes([255, 0, 0, 0, 0, 255])).text
    '[/Indexed /DeviceRGB 1 <FF00000000FF>]'
    """

    text: str
    components: int
    sample_components: int = 0  # of a sample where they are others: 1 for a palette

    @staticmethod
    def gray() -> Colors:
        return Colors("/DeviceGray", 1)

    @staticmethod
    def rgb() -> Colors:
        return Colors("/DeviceRGB", 3)

    @staticmethod
    def cmyk() -> Colors:
        return Colors("/DeviceCMYK", 4)

    @staticmethod
    def indexed(base: Colors, palette: bytes) -> Colors:
        """A palette of 1 to 256 colours, each of as many bytes as the base has components."""
        count, rest = divmod(len(palette), base.components)
        if rest or not 1 <= count <= 256:
            raise ValueError(f"palette has {len(palette)} bytes, not {base.components} for each of "
                             "1 to 256 colours")
        return Colors(f"[/Indexed {base.text} {count - 1} <{palette.hex().upper()}>]",
                      base.components, 1)


@dataclasses.dataclass(frozen=True)
class ImageObject:
    """An image as PDF can have it (ISO 32000-1, 8.9.5), encoded already.

    Whether the data is what the description says is not checked.

    >>> import zlib
    >>> rows = b"".join(bytes([0, *range(4)]) for _ in range(3))  # as PNG has them
    >>> image = ImageObject([zlib.compress(rows)], 4, 3, Filter.FLATE, colors=Colors.gray(),
    ...                     predictor=15)
    """

    pieces: Sequence[Buffer]  #: the data, one piece behind the other
    width: int
    height: int
    filter: Filter = Filter.NONE
    bits_per_component: int = 8
    colors: Colors = Colors("/DeviceRGB", 3)  #: not used by a stencil, nor for JPEG 2000
    stencil: bool = False  #: one bit a pixel, painted where it is 0
    predictor: int = 1  #: of FLATE and LZW: 2 is TIFF's, 15 is for rows of PNG
    black_is_1: bool = False  #: of CCITT, as the next three
    byte_aligned: bool = False
    end_of_line: bool = False
    end_of_block: bool = True
    jbig2_globals: Object | None = None
    decode: Sequence[float] = ()  #: two for each component of a sample
    color_key: Sequence[int] = ()  #: ranges of samples that are transparent, likewise
    soft_mask: Image | None = None  #: a grey image: 0 is transparent
    stencil_mask: Image | None = None  #: a stencil: 1 is transparent
    matte: Sequence[float] = ()  #: of a soft mask: what its image was blended with
    interpolate: bool = False

    def __post_init__(self) -> None:
        for name in ("width", "height"):
            if not 1 <= getattr(self, name) < 2**31:
                raise ValueError(f"{name} is {getattr(self, name)}: an image has at least one")
        if self.bits_per_component not in (1, 2, 4, 8, 16):
            raise ValueError(f"bits_per_component is {self.bits_per_component}, none of 1, 2, 4, 8 "
                             "and 16")
        if self.predictor != 1 and self.filter not in (Filter.FLATE, Filter.LZW):
            raise ValueError("predictor is one of FLATE and LZW only")
        if self.predictor not in (1, 2, 10, 11, 12, 13, 14, 15):
            raise ValueError(f"predictor is {self.predictor}, none of 1, 2 and 10 to 15")
        for name in ("decode", "color_key"):
            count = len(getattr(self, name))
            if count not in (0, 2 * self._components) and self.filter != Filter.JPEG2000:
                raise ValueError(f"{name} has {count} numbers, not two for each of "
                                 f"{self._components}")
        if sum(map(bool, (self.soft_mask, self.stencil_mask, self.color_key))) > 1:
            raise ValueError("an image has one mask, not two")

    @property
    def _components(self) -> int:
        return 1 if self.stencil else self.colors.sample_components or self.colors.components

    def entries(self, reference: Callable[[Image | Object], str]) -> dict[str, str]:
        """The entries of its dictionary; reference gives the text that names an object."""
        entries = {"/Type": "/XObject", "/Subtype": "/Image", "/Width": str(self.width),
                   "/Height": str(self.height)}
        if self.stencil:
            entries["/ImageMask"] = "true"
        elif self.filter != Filter.JPEG2000:  # whose data says both
            entries["/BitsPerComponent"] = str(self.bits_per_component)
            entries["/ColorSpace"] = self.colors.text
        entries.update(self._filter_entries(reference))
        for key, numbers in (("/Decode", self.decode), ("/Mask", self.color_key),
                             ("/Matte", self.matte)):
            if numbers:
                entries[key] = array(numbers)
        for key, mask in (("/Mask", self.stencil_mask), ("/SMask", self.soft_mask)):
            if mask is not None:
                entries[key] = reference(mask)
        if self.interpolate:
            entries["/Interpolate"] = "true"
        return entries

    def _filter_entries(self, reference: Callable[[Image | Object], str]) -> dict[str, str]:
        if self.filter == Filter.NONE:
            return {}
        name, _, coding = self.filter.value.partition(" ")
        parameters = {}
        if self.predictor != 1:
            parameters = {
                "Predictor": str(self.predictor), "Columns": str(self.width),
                "Colors": str(self._components),
                "BitsPerComponent": str(1 if self.stencil else self.bits_per_component)}
        if self.jbig2_globals is not None:
            parameters = {"JBIG2Globals": reference(self.jbig2_globals)}
        if coding:
            parameters = {"K": coding, "Columns": str(self.width), "Rows": str(self.height)}
            flags = (("BlackIs1", self.black_is_1, False),
                     ("EncodedByteAlign", self.byte_aligned, False),
                     ("EndOfLine", self.end_of_line, False),
                     ("EndOfBlock", self.end_of_block, True))
            parameters.update((key, str(on).lower()) for key, on, usual in flags if on != usual)
        return {"/Filter": name,
                **{f"/DecodeParms/{key}": value for key, value in parameters.items()}}


def entry_records(entries: Mapping[str, str]) -> tuple[int, object]:
    return len(entries), (_native.Entry * len(entries))(*(
        _native.Entry(syntax(key, "key"), syntax(value, "value"))
        for key, value in entries.items()))


def syntax(value: str, what: str) -> bytes:
    """The text of an object, a path of names or operators as bytes."""
    try:
        return _native.text(value, what).encode("ascii")
    except UnicodeEncodeError:
        raise ValueError(f"{what} has characters that are no ASCII; jtpdf.pdf_string spells "
                         "texts") from None


class Encoder:
    """A function that encodes, as the library calls it; it has to live as long as the document."""

    def __init__(self, encode: Encode) -> None:
        # What the function keeps is no part of this object, which would make a circle.
        state = self._state = _EncoderState()

        def run(_context: int | None, address: int, size: int, encoded: _Address,
                encoded_size: _Size) -> int:
            try:
                state.result = bytes(encode(ctypes.string_at(address, size)))
                encoded[0] = ctypes.cast(ctypes.c_char_p(state.result), ctypes.c_void_p)
                encoded_size[0] = len(state.result)
                return 0
            except BaseException as problem:
                state.problem = problem
                return _FAILED

        self.function = _native.EncodeFunction(run)

    def raise_problem(self) -> None:
        """Raises what the function raised in the call that has failed."""
        problem, self._state.problem = self._state.problem, None
        if problem is not None:
            raise problem


class _EncoderState:
    result = b""
    problem: BaseException | None = None


_FAILED = 5  # EIO
if TYPE_CHECKING:
    _Address = ctypes._Pointer[ctypes.c_void_p]
    _Size = ctypes._Pointer[ctypes.c_size_t]
