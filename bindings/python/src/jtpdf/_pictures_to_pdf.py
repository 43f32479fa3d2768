"""One line from pictures to a PDF file."""

from __future__ import annotations

import contextlib
import os
from typing import TYPE_CHECKING, Callable, Iterator, Sequence, Union

from ._document import Document
from ._output import Writable
from ._picture_files import opened
from ._whole_file import whole_file

if TYPE_CHECKING:
    from _typeshed import StrOrBytesPath

    from ._picture_files import Fit, PictureSource


def pictures_to_pdf(inputs: Sequence[PictureSource], output: StrOrBytesPath | Writable, *,
                    page: str | None = None, image: str | None = None, border: str | None = None,
                    fit: Fit = "into", turn: int | None = None, auto_orient: bool = False,
                    all_frames: bool = False, first_frame_only: bool = False, title: str = "",
                    author: str = "", optimize: bool = False,
                    progress: Callable[[int, int], object] | None = None) -> int:
    """Makes a PDF with a page for each picture, and returns how many pages it has.

    Document.add_picture() says what page, image, border, fit, turn and auto_orient are, and Document
    what optimize is. Each page of a TIFF file becomes one, or with first_frame_only the first alone;
    with all_frames so does each frame that a PictureFile has with it. progress is called with the
    number of inputs that are done and of all. The output appears when it is whole: where something
    fails, what was there stays.

    >>> pictures_to_pdf(["one.jpg", "two.png"], "album.pdf", page="A4", border="1cm",
    ...                 progress=lambda done, total: print(f"{done} of {total}"))  # doctest: +SKIP
    1 of 2
    2 of 2
    2
    """
    if isinstance(inputs, (str, bytes, os.PathLike)):
        raise TypeError(f"inputs is {inputs!r}, one input; give a list")
    with _whole(output) as target, Document(target, author=author, optimize=optimize) as doc:
        if title:
            doc.set_info("Title", title)
        for done, source in enumerate(inputs, 1):
            with opened(source, all_frames=all_frames) as picture:
                for frame in range(1 if first_frame_only else picture.frames):
                    doc.add_picture(picture, page, image=image, border=border, fit=fit, turn=turn,
                                    auto_orient=auto_orient, frame=frame)
            if progress is not None:
                progress(done, len(inputs))
        pages = doc.page_count
        if pages == 0:
            raise ValueError("inputs are none; a PDF has at least one page")
    return pages


@contextlib.contextmanager
def _whole(output: StrOrBytesPath | Writable) -> Iterator[Union[str, Writable]]:
    """What a document writes to; a file takes its name when it is whole."""
    if not isinstance(output, (str, bytes, os.PathLike)):
        yield output
        return
    path = os.path.realpath(os.fsdecode(output))
    if os.path.exists(path) and not os.path.isfile(path):
        yield path  # a device or a pipe is written as it is
        return
    with whole_file(path) as written:
        yield written
