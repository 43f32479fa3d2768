"""The C interface of libjtpdf-pictures, which is loaded when it is first needed."""

from __future__ import annotations

import ctypes
import functools
import os
import sys
from typing import Any

from . import _library, _native
from ._errors import Error


class PictureError(ValueError):
    """A picture that cannot be used, with the reason in plain words.

    A file that cannot be read is an OSError, as everywhere in Python.

    >>> import jtpdf
    >>> try:
    ...     jtpdf.probe(b"no picture")
    ... except jtpdf.PictureError as error:
    ...     print(str(error).partition(";")[0])
    b'no picture': is no picture of a known kind
    """


class Failure(ctypes.Structure):
    """JTPDFPictureError."""

    _fields_ = [("result", ctypes.c_int32), ("code", ctypes.c_int32),
                ("message", ctypes.c_char * 1016)]


class Limits(ctypes.Structure):
    _fields_ = [("max_pixels", ctypes.c_uint64), ("max_bytes", ctypes.c_uint64),
                ("all_frames", ctypes.c_bool)]


class Info(ctypes.Structure):
    _fields_ = [
        ("format", ctypes.c_char_p),
        ("colors", ctypes.c_char_p),
        ("width", ctypes.c_int32),
        ("height", ctypes.c_int32),
        ("bits_per_component", ctypes.c_int32),
        ("orientation", ctypes.c_int32),
        ("resolution_x", ctypes.c_double),
        ("resolution_y", ctypes.c_double),
        ("memory", ctypes.c_uint64),
        ("size", ctypes.c_uint64),
        ("reason", ctypes.c_char_p),
        ("profile", ctypes.c_char_p),
        ("problem", ctypes.c_char_p),
        ("has_palette", ctypes.c_bool),
        ("has_alpha", ctypes.c_bool),
    ]


class Page(ctypes.Structure):
    _fields_ = [("page", ctypes.c_char_p), ("image", ctypes.c_char_p), ("border", ctypes.c_char_p),
                ("fit", ctypes.c_int32), ("turn", ctypes.c_int32), ("auto_orient", ctypes.c_bool)]


class Layout(ctypes.Structure):
    _fields_ = [("page", _native.Rect), ("image", _native.Rect)]


_Handle = ctypes.c_void_p
_Failure = ctypes.POINTER(Failure)
_Limits = ctypes.POINTER(Limits)

_PROTOTYPES: dict[str, tuple[Any, ...]] = {  # the result, then the arguments
    "JTPDFOpenPictureFile": (_Handle, ctypes.c_char_p, _Limits, _Failure),
    "JTPDFOpenPictureMemory": (_Handle, ctypes.c_void_p, ctypes.c_size_t, _Limits, _Failure),
    "JTPDFClosePicture": (None, _Handle),
    "JTPDFCountPictureFrames": (ctypes.c_uint, _Handle),
    "JTPDFGetPictureInfo": (
        ctypes.c_int32, _Handle, ctypes.c_uint, ctypes.POINTER(Info), _Failure),
    "JTPDFGetPictureNote": (ctypes.c_char_p, _Handle, ctypes.c_uint, ctypes.c_uint),
    "JTPDFCreatePictureWriter": (
        _Handle, ctypes.c_void_p, ctypes.c_double, ctypes.c_int, _Failure),
    "JTPDFDestroyPictureWriter": (None, _Handle),
    "JTPDFWritePicture": (
        ctypes.c_int32, _Handle, _Handle, ctypes.c_uint, ctypes.POINTER(ctypes.c_int), _Failure),
    "JTPDFLayOutPicture": (
        ctypes.c_int32, _Handle, _Handle, ctypes.c_uint, ctypes.POINTER(Page),
        ctypes.POINTER(Layout), _Failure),
    "JTPDFFitPicture": (
        ctypes.c_int32, _Handle, _Handle, ctypes.c_uint, _native.Rect, ctypes.c_int32,
        ctypes.c_int32, ctypes.POINTER(_native.Rect), _Failure),
}


@functools.lru_cache(maxsize=None)
def library() -> ctypes.CDLL:
    """Loads the library at the first call."""
    if sys.platform == "win32":
        raise ImportError("the library that reads pictures from files is not there for Windows")
    return _library.load("libjtpdf-pictures.so.0", "JTPDF_PICTURES_LIBRARY", "libjtpdf-pictures0",
                         _PROTOTYPES, needs="decoders")


def raise_failure(failure: Failure, name: str, path: str | None = None) -> None:
    """Raises what a failure stands for; name is that of the picture."""
    message = f"{name}: {failure.message.decode('utf-8', 'replace')}"
    if failure.result == _NO_MEMORY:
        raise MemoryError(message)
    if failure.result == _DOCUMENT:
        raise Error._of("JTPDFWritePicture", failure.code, path)
    if failure.code > 0:
        raise OSError(failure.code, os.strerror(failure.code), name)
    raise PictureError(message) if failure.result == _UNUSABLE else ValueError(message)


_UNUSABLE, _DOCUMENT, _NO_MEMORY = 1, 3, 4
