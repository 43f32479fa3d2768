"""The C interface: the shared library, its records and functions, and borrowed memory."""

from __future__ import annotations

import ctypes
import errno
import sys
from types import TracebackType
from typing import TYPE_CHECKING, Any, Callable

from . import _library
from ._errors import Error
from ._output import Output, WriteFunction

if TYPE_CHECKING:
    from ._values import Buffer


class Rect(ctypes.Structure):
    _fields_ = [(name, ctypes.c_double) for name in ("left", "bottom", "width", "height", "angle")]


class RGBColor(ctypes.Structure):
    _fields_ = [(name, ctypes.c_uint8) for name in ("red", "green", "blue", "alpha")]


class ImageDescriptor(ctypes.Structure):
    _fields_ = [
        ("data", ctypes.c_void_p),
        ("size", ctypes.c_uint32),
        ("compression", ctypes.c_int32),
        ("width", ctypes.c_int32),
        ("height", ctypes.c_int32),
        ("bits_per_component", ctypes.c_int32),
        ("color_space", ctypes.c_int32),
        ("color_space_object", ctypes.c_int32),
    ]


class DictionaryItem(ctypes.Structure):
    _fields_ = [("key", ctypes.c_char_p), ("value", ctypes.c_wchar_p)]


class Entry(ctypes.Structure):
    _fields_ = [("key", ctypes.c_char_p), ("value", ctypes.c_char_p)]


class Piece(ctypes.Structure):
    _fields_ = [("data", ctypes.c_void_p), ("size", ctypes.c_size_t)]


#: JTPDFEncodeFunction.
EncodeFunction = ctypes.CFUNCTYPE(
    ctypes.c_int32, ctypes.c_void_p, ctypes.c_void_p, ctypes.c_size_t,
    ctypes.POINTER(ctypes.c_void_p), ctypes.POINTER(ctypes.c_size_t))

_Doc = ctypes.c_void_p
_Unit = ctypes.c_double
_Text = ctypes.c_wchar_p
_Number = ctypes.POINTER(ctypes.c_int)
_Image = ctypes.POINTER(ImageDescriptor)
# The last arguments of the image writers: role, name, entries, number.
_Tags = (ctypes.c_int32, _Text, ctypes.c_uint, ctypes.POINTER(DictionaryItem), _Number)

_Entries = (ctypes.c_uint, ctypes.POINTER(Entry))
_Pieces = (ctypes.c_uint, ctypes.POINTER(Piece))

_PROTOTYPES: dict[str, tuple[Any, ...]] = {  # the result, then the arguments
    "CreateFilePdfDoc": (_Doc, _Unit, _Text, _Text, _Text),
    "CreateMemoryPdfDoc": (_Doc, _Unit),
    "CreateCallbackPdfDoc": (_Doc, _Unit, WriteFunction, ctypes.c_void_p),
    "TryCreateFilePdfDoc": (_Doc, _Unit, _Text, _Text, _Text),
    "TryCreateMemoryPdfDoc": (_Doc, _Unit),
    "TryCreateCallbackPdfDoc": (_Doc, _Unit, WriteFunction, ctypes.c_void_p),
    "SetPdfMemoryErrors": (None, _Doc, ctypes.c_bool),
    "InitPdfDoc": (ctypes.c_int32, _Doc),
    "FinalizePdfDoc": (ctypes.c_int32, _Doc, ctypes.c_char_p),
    "GetPdfData": (ctypes.c_void_p, _Doc),
    "GetPdfDataSize": (ctypes.c_size_t, _Doc),
    "SetPdfInfoItem": (None, _Doc, ctypes.c_char_p, _Text),
    "GetPdfMgMk": (ctypes.c_bool, _Doc),
    "SetPdfMgMk": (None, _Doc, ctypes.c_bool),
    "DestroyPdfDoc": (None, _Doc),
    "ClearPdfCanvas": (None, _Doc),
    "GetPdfCanvasBoundingBox": (Rect, _Doc),
    "SetPdfCanvasBoundingBox": (None, _Doc, Rect),
    "DrawPdfImage": (None, _Doc, ctypes.c_int),
    "DrawPdfImageInRect": (None, _Doc, ctypes.c_int, Rect),
    "FillPdfRectangle": (None, _Doc, Rect, RGBColor),
    "StrokePdfRectangle": (None, _Doc, Rect, RGBColor, ctypes.c_double),
    "FillAndStrokePdfRectangle": (None, _Doc, Rect, RGBColor, RGBColor, ctypes.c_double),
    "FillAndStrokePdfCircle": (None, _Doc, Rect, RGBColor, RGBColor, ctypes.c_double),
    "InsetPdfRect": (None, ctypes.POINTER(Rect), ctypes.c_double, ctypes.c_double),
    "WritePdfCanvas": (ctypes.c_int32, _Doc, _Number),
    "WritePdfPage": (ctypes.c_int32, _Doc, ctypes.c_int, Rect, Rect),
    "WritePdfImage": (ctypes.c_int32, _Doc, _Image, ctypes.c_bool, *_Tags),
    "WritePdfImageWithAlpha": (ctypes.c_int32, _Doc, _Image, _Image, *_Tags),
    "WritePdfImageJPEG2000": (ctypes.c_int32, _Doc, _Image, *_Tags),
    "WritePdfICCProfile": (
        ctypes.c_int32, _Doc, ctypes.c_void_p, ctypes.c_uint, ctypes.c_int32, _Number),
    "WritePdfStream": (
        ctypes.c_int32, _Doc, *_Entries, ctypes.c_void_p, ctypes.c_size_t, _Number),
    "WritePdfStreamPieces": (ctypes.c_int32, _Doc, *_Entries, *_Pieces, _Number),
    "WritePdfObject": (ctypes.c_int32, _Doc, ctypes.c_char_p, _Number),
    "ReservePdfObject": (ctypes.c_int32, _Doc, _Number),
    "WriteReservedPdfObject": (ctypes.c_int32, _Doc, ctypes.c_int, ctypes.c_char_p),
    "WriteReservedPdfStream": (ctypes.c_int32, _Doc, ctypes.c_int, *_Entries, *_Pieces),
    "SetPdfCatalogEntry": (ctypes.c_int32, _Doc, ctypes.c_char_p, ctypes.c_char_p),
    "SetPdfPageEntry": (ctypes.c_int32, _Doc, ctypes.c_char_p, ctypes.c_char_p),
    "SetPdfCanvasEntry": (ctypes.c_int32, _Doc, ctypes.c_char_p, ctypes.c_char_p),
    "DrawPdfContent": (None, _Doc, ctypes.c_char_p),
    "SetPdfContentEncoder": (
        ctypes.c_int32, _Doc, ctypes.c_char_p, EncodeFunction, ctypes.c_void_p),
    "AddPdfBookmark": (ctypes.c_int32, _Doc, ctypes.c_int, _Text, ctypes.c_int),
    "SetPdfOpenPage": (ctypes.c_int32, _Doc, ctypes.c_int, ctypes.c_char_p),
    "JTPDFGetVersion": (ctypes.c_char_p,),
    "JTPDFGetDiagnosticMode": (ctypes.c_bool,),
    "JTPDFSetDiagnosticMode": (None, ctypes.c_bool),
}


library = _library.load("libjtpdf-2.dll" if sys.platform == "win32" else "libjtpdf.so.2",
                        "JTPDF_LIBRARY", "libjtpdf2", _PROTOTYPES)
_set_errno: Callable[[int], object] = ctypes.set_errno
if sys.platform == "win32":
    # The DLL's C runtime is not Python's, and has an errno of its own.
    _set_errno = ctypes.CDLL("msvcrt")._set_errno


def call(function: str, *arguments: Any, path: str | None = None,
         output: Output | None = None) -> None:
    """Calls a function that gives a result code; raises Error if it is not 0.

    A refusal sets no errno, so with 0 in it beforehand no older failure passes for the reason.
    """
    _set_errno(0)
    prototype = getattr(library, function)
    code: int = prototype(*arguments) if output is None else output.run(prototype, *arguments)
    if code != 0:
        raise Error._of(function, code, path)


class Handle:
    """Owns a document of the C interface, which lives as long as anybody holds the handle."""

    pointer: int | None = None
    encoder: object = None  # whose function the document calls

    def __init__(self, function: str, *arguments: Any, output: Output | None = None) -> None:
        # Kept: while the interpreter shuts down, module globals may be gone before this object.
        self._destroy: Callable[[int | None], None] = library.DestroyPdfDoc
        self._output = output  # whose function the document calls
        self.pointer = getattr(library, function)(*arguments)
        if self.pointer is None:
            raise Error._of(function, errno.ENOMEM)

    def __del__(self) -> None:
        if self.pointer is not None:
            self._destroy(self.pointer)


class _PyBuffer(ctypes.Structure):
    """Py_buffer of the stable ABI."""

    _fields_ = [
        ("buf", ctypes.c_void_p),
        ("obj", ctypes.c_void_p),
        ("len", ctypes.c_ssize_t),
        ("itemsize", ctypes.c_ssize_t),
        ("readonly", ctypes.c_int),
        ("ndim", ctypes.c_int),
        ("format", ctypes.c_char_p),
        ("shape", ctypes.c_void_p),
        ("strides", ctypes.c_void_p),
        ("suboffsets", ctypes.c_void_p),
        ("internal", ctypes.c_void_p),
    ]


_PYBUF_SIMPLE = 0
_get_buffer = ctypes.pythonapi.PyObject_GetBuffer
_get_buffer.argtypes = [ctypes.py_object, ctypes.POINTER(_PyBuffer), ctypes.c_int]
_get_buffer.restype = ctypes.c_int
_release_buffer = ctypes.pythonapi.PyBuffer_Release
_release_buffer.argtypes = [ctypes.POINTER(_PyBuffer)]
_release_buffer.restype = None


class Borrowed:
    """The memory of a bytes-like object, read-only or not, without a copy of it.

    >>> with Borrowed(b"abc") as memory:
    ...     ctypes.string_at(memory.address, memory.size)
    b'abc'
    """

    def __init__(self, data: Buffer, lent: list[Borrowed] | None = None) -> None:
        self._data: Any = data
        self._buffer = _PyBuffer()
        self._lent = [] if lent is None else lent  # where to stand while it is borrowed

    def __enter__(self) -> Borrowed:
        _get_buffer(self._data, ctypes.byref(self._buffer), _PYBUF_SIMPLE)
        try:
            if self._buffer.itemsize > 1:
                raise ValueError(
                    f"data has elements of {self._buffer.itemsize} bytes, whose order is open; "
                    "memoryview(data).cast('B') takes them as they lie in memory")
            if self.size > 0xFFFFFFFF:
                raise ValueError(f"{self.size} bytes of data are more than 2^32 - 1")
        except ValueError:
            _release_buffer(ctypes.byref(self._buffer))
            raise
        self._lent.append(self)
        return self

    def __exit__(self, kind: type[BaseException] | None, value: BaseException | None,
                 traceback: TracebackType | None) -> None:
        self._lent.remove(self)
        _release_buffer(ctypes.byref(self._buffer))

    def view(self) -> memoryview | None:
        """The same memory as a memoryview, which may be kept; None of a kind that has none."""
        try:
            return memoryview(self._data).toreadonly().cast("B")
        except TypeError:
            return None

    @property
    def address(self) -> int | None:
        address: int | None = self._buffer.buf
        return address

    @property
    def size(self) -> int:
        size: int = self._buffer.len
        return size


def text(value: str, what: str) -> str:
    """The text, if the library can take it as it is."""
    if not isinstance(value, str):
        raise TypeError(f"{what} is {value!r}, no str")
    if "\0" in value:
        raise ValueError(f"{what} has a NUL at character {value.index(chr(0))}")
    value.encode("utf-8")  # raises UnicodeEncodeError for a lone surrogate
    return value


def wide_text(value: str, what: str) -> str:
    """The text as it is to be given to the library, to be written into the file.

    The library has room for one UTF-16 unit a character. A blank behind the text, which is cut off,
    makes the room for each pair of units.

    >>> wide_text("Party 🎉 2026", "value")
    'Party 🎉 2026 '
    """
    value = text(value, what)
    return value if value.isascii() else value + " " * sum(c > "\uffff" for c in value)
