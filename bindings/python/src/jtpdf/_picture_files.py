"""Pictures as they come: paths, bytes and files in every format that the pictures library reads."""

from __future__ import annotations

import contextlib
import ctypes
import dataclasses
import os
from types import TracebackType
from typing import TYPE_CHECKING, Any, Callable, Iterable, Literal, Protocol, Union, cast

from . import _native
from ._picture_library import (Failure, Info, Layout, Limits, Page, PictureError, library,
                               raise_failure)
from ._values import Box

if TYPE_CHECKING:
    from _typeshed import StrOrBytesPath

    from ._values import Buffer


class Readable(Protocol):
    """A file that is open for reading bytes, or whatever else has its method read."""

    def read(self) -> bytes: ...


if TYPE_CHECKING:
    #: What a method takes for a picture: a path, the bytes of a file, or a file.
    PictureSource = Union[StrOrBytesPath, Buffer, Readable, "PictureFile"]

#: How a picture is scaled: as large as it can be inside of its page; so that nothing of that is
#: left free; stretched; or only made smaller or larger.
Fit = Literal["into", "fill", "exact", "shrink", "enlarge"]
#: Levels of compression.
USUAL, SMALLEST = 6, 13

_FITS = ("into", "fill", "exact", "shrink", "enlarge")


@dataclasses.dataclass(frozen=True)
class PictureInfo:
    """What the header of a picture says, and so how it will be stored."""

    format: str
    width: int  #: in pixels as stored, before the orientation
    height: int
    bits_per_component: int
    colors: str  #: grey, RGB or CMYK
    has_palette: bool
    has_alpha: bool  #: declares transparency, which may yet be opaque throughout
    profile: str  #: its colour profile: none, used or left out
    resolution: tuple[float, float] | None  #: dots per inch, where the file says
    orientation: int  #: as EXIF counts, 1 to 8
    frame: int
    frames: int  #: how many there are, of an animation one unless all are asked for
    stored_as_it_is: bool
    reason: str  #: why it is decoded, where it is
    memory: int  #: about the most bytes that decoding takes
    notes: tuple[str, ...]
    problem: str  #: why this frame alone cannot be used; empty for a good one


class PictureFile:
    """A picture that is open, to be asked and used more than once.

    Its frames are the pages of a TIFF file. Of any other file there is one, or with all_frames all
    that it has: those of an animation, each as it is seen, and the further pictures of JPEG and HEIF
    files. A picture of more than max_pixels or max_bytes is refused; 0 stands for the usual bounds.

    >>> import jtpdf
    >>> portable = bytes.fromhex("89504e470d0a1a0a0000000d4948445200000001000000010800000000"
    ...     "3a7e9b550000000a49444154789c636000000002000148afa4710000000049454e44ae426082")
    >>> with PictureFile(portable) as picture:
    ...     picture.info().format, picture.frames
    ('PNG', 1)
    """

    _pointer: int | None = None

    def __init__(self, source: PictureSource, *, max_pixels: int = 0, max_bytes: int = 0,
                 all_frames: bool = False) -> None:
        self._library = library()
        self._memory: _native.Borrowed | None = None
        failure, limits = Failure(), Limits(max_pixels, max_bytes, all_frames)
        if isinstance(source, PictureFile):
            raise TypeError("source is a PictureFile already")
        if isinstance(source, (str, os.PathLike)):
            self.name = os.fsdecode(source)
            path = _native.text(self.name, "source")
            self._pointer = self._library.JTPDFOpenPictureFile(
                os.fsencode(path), ctypes.byref(limits), ctypes.byref(failure))
        else:
            self.name = _name_of(source)
            data = source.read() if hasattr(source, "read") else source
            self._memory = _native.Borrowed(cast(Any, data)).__enter__()
            self._pointer = self._library.JTPDFOpenPictureMemory(
                self._memory.address, self._memory.size, ctypes.byref(limits),
                ctypes.byref(failure))
        if self._pointer is None:
            self.close()
            raise_failure(failure, self.name)

    def __enter__(self) -> PictureFile:
        return self

    def __exit__(self, kind: type[BaseException] | None, value: BaseException | None,
                 traceback: TracebackType | None) -> None:
        self.close()

    def __del__(self) -> None:
        if getattr(self, "_library", None) is not None:
            self.close()

    def __repr__(self) -> str:
        return f"<jtpdf.PictureFile {self.name}>"

    def close(self) -> None:
        """Gives the bytes free."""
        pointer, self._pointer = self._pointer, None
        if pointer is not None:
            self._library.JTPDFClosePicture(pointer)
        memory, self._memory = self._memory, None
        if memory is not None:
            memory.__exit__(None, None, None)

    @property
    def pointer(self) -> int:
        """The picture of the C interface."""
        if self._pointer is None:
            raise ValueError(f"{self!r} is closed")
        return self._pointer

    @property
    def frames(self) -> int:
        """How many frames there are."""
        return int(self._library.JTPDFCountPictureFrames(self.pointer))

    def info(self, frame: int = 0) -> PictureInfo:
        """What is known of a frame."""
        info, failure = Info(), Failure()
        if self._library.JTPDFGetPictureInfo(self.pointer, frame_number(frame), ctypes.byref(info),
                                             ctypes.byref(failure)) != 0:
            raise_failure(failure, self.name)
        resolution = (info.resolution_x, info.resolution_y)
        return PictureInfo(
            format=info.format.decode(), width=info.width, height=info.height,
            bits_per_component=info.bits_per_component, colors=info.colors.decode(),
            has_palette=info.has_palette, has_alpha=info.has_alpha, profile=info.profile.decode(),
            resolution=resolution if all(resolution) else None, orientation=info.orientation,
            frame=frame, frames=self.frames, stored_as_it_is=not info.reason,
            reason=info.reason.decode(), memory=info.memory, notes=tuple(self._notes(frame)),
            problem=info.problem.decode())

    def _notes(self, frame: int) -> Iterable[str]:
        index = 0
        while note := self._library.JTPDFGetPictureNote(self.pointer, frame, index):
            yield note.decode()
            index += 1


class Writer:
    """Writes pictures into one document, each colour profile once."""

    def __init__(self, document: _native.Handle, unit: float, level: int) -> None:
        self._library = library()
        self._document = document  # which lives as long as this
        failure = Failure()
        self._pointer = self._library.JTPDFCreatePictureWriter(document.pointer, unit, level,
                                                               ctypes.byref(failure))
        if self._pointer is None:
            raise_failure(failure, "pictures")

    def __del__(self) -> None:
        if getattr(self, "_pointer", None) is not None:
            self._library.JTPDFDestroyPictureWriter(self._pointer)

    def write(self, picture: PictureFile, frame: int, run: Callable[..., int],
              path: str | None) -> int:
        """Writes a frame, by a function that calls what it is given; the number of the image."""
        number, failure = ctypes.c_int(), Failure()
        if run(self._library.JTPDFWritePicture, self._pointer, picture.pointer, frame_number(frame),
               ctypes.byref(number), ctypes.byref(failure)) != 0:
            raise_failure(failure, picture.name, path)
        return number.value

    def lay_out(self, picture: PictureFile, frame: int, page: Page) -> tuple[Box, Box]:
        layout, failure = Layout(), Failure()
        if self._library.JTPDFLayOutPicture(self._pointer, picture.pointer, frame_number(frame),
                                            ctypes.byref(page), ctypes.byref(layout),
                                            ctypes.byref(failure)) != 0:
            raise_failure(failure, picture.name)
        return _box(layout.page), _box(layout.image)

    def fit(self, picture: PictureFile, frame: int, into: _native.Rect, fit: Fit,
            turn: int | None) -> Box:
        image, failure = _native.Rect(), Failure()
        if self._library.JTPDFFitPicture(self._pointer, picture.pointer, frame_number(frame), into,
                                         _fit_number(fit), _turn_number(turn), ctypes.byref(image),
                                         ctypes.byref(failure)) != 0:
            raise_failure(failure, picture.name)
        return _box(image)


def _box(rect: _native.Rect) -> Box:
    return Box(rect.left, rect.bottom, rect.width, rect.height, rect.angle)


def frame_number(frame: int) -> int:
    if not 0 <= frame < 2**32:
        raise ValueError(f"frame is {frame}; frames count from 0")
    return frame


def page_record(page: str | None, image: str | None, border: str | None, fit: Fit,
                turn: int | None, auto_orient: bool) -> Page:
    def measure(text: str | None, what: str) -> bytes | None:
        return None if text is None else _native.text(text, what).encode("utf-8")

    return Page(measure(page, "page"), measure(image, "image"), measure(border, "border"),
                _fit_number(fit), _turn_number(turn), auto_orient)


def _fit_number(fit: Fit) -> int:
    if fit not in _FITS:
        raise ValueError(f"fit is {fit!r}, none of {', '.join(_FITS)}")
    return _FITS.index(fit)


def _turn_number(turn: int | None) -> int:
    return 0 if turn is None else turn or 360


@contextlib.contextmanager
def opened(source: PictureSource, *, all_frames: bool = False) -> Any:
    """The picture: one that is open already stays so."""
    if isinstance(source, PictureFile):
        yield source
    else:
        with PictureFile(source, all_frames=all_frames) as picture:
            yield picture


def _name_of(source: object) -> str:
    name = getattr(source, "name", None)
    if isinstance(name, str):
        return name
    text = repr(source)
    return text if len(text) <= 40 else text[:37] + "..."


def probe(source: PictureSource, *, frame: int = 0) -> PictureInfo:
    """What the header of a picture says; no pixel is decoded.

    >>> from pathlib import Path
    >>> info = probe(Path("photo.jpg"))  # doctest: +SKIP
    >>> info.width, info.height, info.resolution  # doctest: +SKIP
    (640, 480, (72.0, 72.0))
    """
    with opened(source) as picture:
        info: PictureInfo = picture.info(frame)
        return info


__all__ = ["Fit", "PictureError", "PictureFile", "PictureInfo", "probe"]
