"""Documents."""

from __future__ import annotations

import contextlib
import ctypes
import dataclasses
import datetime
import errno
import itertools
import os
import stat
import warnings
import zlib
from types import TracebackType
from typing import TYPE_CHECKING, Callable, Literal, Mapping, Sequence

from . import _arguments, _native, _objects, _picture_files
from ._errors import Error
from ._objects import Colors, Encode, Encoder, Filter, ImageObject, Object
from ._output import Output, Writable
from ._pictures import Picture
from ._values import (POINT, Box, BoxLike, ColorLike, Compression, Form, Image, ImageData, Profile,
                      Role, Unit, points)

if TYPE_CHECKING:
    from _typeshed import StrOrBytesPath

    from ._picture_files import Fit, PictureSource
    from ._values import Buffer

# Positions in a file have ten digits; what finish() writes at most, for each page and besides.
_MOST_BYTES = 10**10
_PAGE_BYTES = 512
_REST_BYTES = 10**6

# A number for each document of the process; 0 is none.
_numbers = itertools.count(1)

_NO_ENTRIES: Mapping[str, str] = {}


class Document:
    """A PDF file that is being written, in one forward pass.

    Without a path the document is kept in memory, and ``data`` gives its bytes when it is finished.
    In place of a path, every object with ``write`` will do that takes bytes: io.BytesIO(), a socket's
    file, sys.stdout.buffer. It gets the bytes as they come, is flushed in the end and stays open; what
    it raises comes out of the method that wrote.

    A document has at most 10^10 bytes, as readers take no more than ten digits for a position in it.
    With ``compress`` what is drawn is written by zlib; image data is always the caller's own. With
    ``optimize`` picture files are made as small as they get without loss, however long that takes.
    All lengths are in ``unit``: "pt", "in", "cm", "mm", or the number of PDF points that one is.
    Wherever a Box or a Color is wanted, a tuple or list of its values will do, and for a colour a text
    such as "#ff8000". What no file should have, such as a width that is negative or no number, is a
    TypeError or ValueError that names the argument.

    >>> import jtpdf
    >>> with jtpdf.Document("out.pdf", unit="mm") as doc:
    ...     doc.fill_rectangle((20, 20, 60, 40, 15), (255, 128, 0))
    ...     page = doc.add_page((0, 0, 210, 297))

    The end of the ``with`` block finishes the document. If an exception leaves the block, the
    document is given up instead, and a file stays incomplete. Without a ``with`` block say finish()
    or discard(); a file that is dropped without either gives a ResourceWarning.

    A document is used by one thread at a time; other threads run while it writes.
    """

    def __init__(self, path: StrOrBytesPath | Writable | None = None, *, unit: Unit = POINT,
                 creator: str = "", author: str = "", compress: bool = False,
                 optimize: bool = False) -> None:
        self._prepare(path, unit, creator, author, compress, optimize)
        self.open()

    @classmethod
    def unopened(cls, path: StrOrBytesPath | Writable | None = None, *, unit: Unit = POINT,
                 creator: str = "", author: str = "", compress: bool = False,
                 optimize: bool = False) -> Document:
        """A document still to be opened; all that is not written can be set before.

        >>> doc = Document.unopened()
        >>> doc.set_info("Title", "Early")
        >>> doc.open()
        """
        document = cls.__new__(cls)
        document._prepare(path, unit, creator, author, compress, optimize)
        return document

    def _prepare(self, path: StrOrBytesPath | Writable | None, unit: Unit, creator: str,
                 author: str, compress: bool, optimize: bool) -> None:
        self._unfinished = False  # an open file that nothing has settled
        self._handle: _native.Handle | None = None
        self._path: str | None = None
        self._output: Output | None = None
        self._number = next(_numbers)  # what its objects know it by
        self._drawn = False  # since the last form
        self._encoder: Encoder | None = None
        self._profiles: dict[bytes, Profile] = {}  # of pictures
        self._picture_writer: _picture_files.Writer | None = None
        self._picture_level = _picture_files.SMALLEST if optimize else _picture_files.USUAL
        self._pages = 0  # how many are queued
        self._written = 0  # how many bytes of data
        self._unit = points(unit)
        wide_creator = _native.wide_text(creator, "creator")
        wide_author = _native.wide_text(author, "author")
        if path is None:
            self._handle = _native.Handle("TryCreateMemoryPdfDoc", self._unit)
        elif isinstance(path, (str, bytes, os.PathLike)):
            self._path = os.fsdecode(path)
            self._handle = _native.Handle(
                "TryCreateFilePdfDoc", self._unit, _native.text(self._path, "path"), wide_creator,
                wide_author)
        elif hasattr(path, "write"):
            self._output = Output(path)
            self._handle = _native.Handle("TryCreateCallbackPdfDoc", self._unit,
                                          self._output.function, None, output=self._output)
        else:
            raise TypeError(f"path is {path!r}, neither a path nor an object with write")
        if self._path is None and creator:
            self.set_info("Creator", creator)
        if self._path is None and author:
            self.set_info("Author", author)
        if compress:
            self.set_content_encoder(zlib.compress)

    def __repr__(self) -> str:
        if self._output is not None:
            place = f"to {self._output.file!r}"
        else:
            place = "in memory" if self._path is None else repr(self._path)
        return f"<jtpdf.Document {place}>"

    # -- Beginning and end

    def __enter__(self) -> Document:
        return self

    def __exit__(self, kind: type[BaseException] | None, value: BaseException | None,
                 traceback: TracebackType | None) -> None:
        if self._handle is None:
            return
        if kind is None:
            self.finish()
        else:
            self.discard()

    def __del__(self) -> None:
        if getattr(self, "_unfinished", False):
            warnings.warn(f"{self!r} was dropped without finish() or discard() and is incomplete",
                          ResourceWarning, stacklevel=2, source=self)

    @property
    def _pointer(self) -> int | None:
        if self._handle is None:
            raise ValueError(f"{self!r} was discarded")
        return self._handle.pointer

    def open(self) -> None:
        """Opens the file, truncating what is there. Can be repeated if it fails."""
        self._call("InitPdfDoc")
        self._unfinished = self._path is not None or self._output is not None

    def finish(self, closing_text: str = "") -> None:
        """Writes what is left and closes the file.

        A closing text becomes one more line at the very end. Does nothing the second time.
        """
        closing = _native.text(closing_text, "closing_text").encode("utf-8")
        self._require_room("FinalizePdfDoc", self._pages * _PAGE_BYTES, _file_size(self._path))
        self._call("FinalizePdfDoc", closing)
        self._unfinished = False
        if self._output is not None:
            self._output.flush()

    def discard(self) -> None:
        """Gives the document up: a file that is not finished stays incomplete."""
        self._handle = self._picture_writer = None
        self._unfinished = False

    @property
    def data(self) -> memoryview:
        """The bytes of a finished document in memory, without a copy.

        >>> doc = Document()
        >>> doc.finish()
        >>> bytes(doc.data[:8])
        b'%PDF-1.5'
        """
        address = _native.library.GetPdfData(self._pointer)
        if address is None:
            raise ValueError(f"{self!r} has no bytes: only a finished document in memory has")
        size = _native.library.GetPdfDataSize(self._pointer)
        array = (ctypes.c_char * size).from_address(address)
        array._owner = self._handle  # which lives as long as the view
        return memoryview(array).cast("B").toreadonly()

    # -- Information

    def set_info(self, key: str, value: str | datetime.date) -> None:
        """Sets an information item such as Title, Subject, Keywords, CreationDate or ModDate.

        >>> import datetime
        >>> with Document() as doc:
        ...     doc.set_info("Title", "Grüße, 世界")
        ...     doc.set_info("CreationDate", datetime.datetime.now(datetime.timezone.utc))
        """
        _native.library.SetPdfInfoItem(
            self._pointer, _native.text(key, "key").encode("utf-8"),
            _arguments.info_text(value))

    @property
    def mark(self) -> bool:
        """The mark flag, written as the information item MGmk."""
        return bool(_native.library.GetPdfMgMk(self._pointer))

    @mark.setter
    def mark(self, mark: bool) -> None:
        _native.library.SetPdfMgMk(self._pointer, mark)

    # -- The canvas

    @property
    def canvas_box(self) -> Box:
        """The extent of the next form: nothing outside it shows.

        Where none is set, add_page() sets it to the sheet, and write_canvas() makes a form of which
        everything shows.

        >>> doc = Document()
        >>> doc.canvas_box = Box(0, 0, 595, 842)
        >>> doc.canvas_box.height
        842.0
        """
        rect = _native.library.GetPdfCanvasBoundingBox(self._pointer)
        return Box(rect.left, rect.bottom, rect.width, rect.height, rect.angle)

    @canvas_box.setter
    def canvas_box(self, box: Box) -> None:
        _native.library.SetPdfCanvasBoundingBox(self._pointer, _arguments.rect(box, "canvas_box"))

    def clear_canvas(self) -> None:
        """Removes all that was drawn since the last form; the canvas box stays."""
        _native.library.ClearPdfCanvas(self._pointer)
        self._drawn = False

    def draw_image(self, image: Image, box: BoxLike | None = None) -> None:
        """Draws the image into the box, or over the canvas box as it is at this moment.

        A negative width or height mirrors it.
        """
        number = _arguments.object_number(image, Image, self._number, "image")
        if box is not None:
            self._draw("DrawPdfImageInRect", number, _arguments.rect(box, "box", mirrors=True))
        elif self._has_canvas_box():
            self._draw("DrawPdfImage", number)
        else:
            raise ValueError("no canvas_box is set for the image to cover")

    def fill_rectangle(self, box: BoxLike, fill: ColorLike) -> None:
        """Fills the box, turned by its angle."""
        self._draw("FillPdfRectangle", _arguments.rect(box, "box"), _arguments.color(fill, "fill"))

    def stroke_rectangle(self, box: BoxLike, stroke: ColorLike, line_width: float) -> None:
        """Strokes the box; the stroke lies half inside and half outside of it."""
        self._draw("StrokePdfRectangle", _arguments.rect(box, "box"),
                   _arguments.color(stroke, "stroke"), _arguments.size(line_width, "line_width"))

    def fill_and_stroke_rectangle(self, box: BoxLike, fill: ColorLike, stroke: ColorLike,
                                  line_width: float) -> None:
        """Fills the box and strokes it."""
        self._draw("FillAndStrokePdfRectangle", _arguments.rect(box, "box"),
                   _arguments.color(fill, "fill"), _arguments.color(stroke, "stroke"),
                   _arguments.size(line_width, "line_width"))

    def fill_and_stroke_circle(self, box: BoxLike, fill: ColorLike, stroke: ColorLike,
                               line_width: float) -> None:
        """Fills and strokes the ellipse in the box, the stroke inside.

        The box's angle is ignored. Line width and colours stay in force on this canvas. There is no
        ellipse without a fill or a stroke: Color.NONE is white here, and a stroke in the colour of
        the fill does not show.
        """
        self._draw("FillAndStrokePdfCircle", _arguments.rect(box, "box"),
                   _arguments.color(fill, "fill"), _arguments.color(stroke, "stroke"),
                   _arguments.size(line_width, "line_width"))

    def _draw(self, function: str, *arguments: object) -> None:
        getattr(_native.library, function)(self._pointer, *arguments)
        self._drawn = True

    def _has_canvas_box(self) -> bool:
        rect = _native.library.GetPdfCanvasBoundingBox(self._pointer)
        return bool(rect.width or rect.height)

    # -- Objects

    def write_canvas(self) -> Form:
        """Makes a form of the canvas and empties it."""
        before = self.canvas_box
        unbound = self._drawn and not self._has_canvas_box()
        if unbound:
            most = _arguments.EVERYWHERE / self._unit
            self.canvas_box = Box(-most, -most, 2 * most, 2 * most)
        number = self._write("WritePdfCanvas")
        if unbound:
            self.canvas_box = before
        self._drawn = False
        return Form(number, self._number)

    def write_page(self, form: Form, media_box: BoxLike, *, crop_box: BoxLike | None = None) -> None:
        """Adds a page that shows the form. The crop box is the part that readers show."""
        number = _arguments.object_number(form, Form, self._number, "form")
        media = _arguments.rect(media_box, "media_box")
        crop = media if crop_box is None else _arguments.rect(crop_box, "crop_box")
        self._call("WritePdfPage", number, crop, media)
        self._pages += 1

    def write_image(self, image: ImageData, *, mask_white: bool = False, role: Role = Role.OTHER,
                    name: str = "", entries: Mapping[str, str] = _NO_ENTRIES) -> Image:
        """Writes an image; with mask_white, pixels of nothing but 255 become transparent.

        ``entries`` are added to the image's dictionary.

        >>> import zlib
        >>> with Document() as doc:
        ...     pixels = zlib.compress(bytes([255, 0, 0, 0, 0, 255]))
        ...     doc.write_image(ImageData(pixels, Compression.FLATE, 2, 1), name="flag")
        Image(number=2)
        """
        return self._write_image(
            "WritePdfImage", [image], mask_white, *_arguments.tags(role, name, entries))

    def write_image_with_alpha(self, image: ImageData, alpha: ImageData, *,
                               role: Role = Role.OTHER, name: str = "",
                               entries: Mapping[str, str] = _NO_ENTRIES) -> Image:
        """Writes an image with a grey one of any size as its soft mask: 0 is transparent."""
        return self._write_image(
            "WritePdfImageWithAlpha", [image, alpha], *_arguments.tags(role, name, entries))

    def write_jpeg2000_image(self, image: ImageData, *, role: Role = Role.OTHER, name: str = "",
                             entries: Mapping[str, str] = _NO_ENTRIES) -> Image:
        """Writes JPEG 2000 data, which names its own colour space and alpha."""
        return self._write_image(
            "WritePdfImageJPEG2000", [image], *_arguments.tags(role, name, entries))

    def write_icc_profile(self, profile: Buffer,
                          compression: Compression = Compression.NONE) -> Profile:
        """Writes a profile for RGB data, to be the color_space of image data."""
        with self._borrowed(profile) as memory:
            self._require_room("WritePdfICCProfile", memory.size)
            number = self._write("WritePdfICCProfile", memory.address, memory.size, compression)
            self._written += memory.size
        return Profile(number, self._number)

    # -- Put together

    def write_picture(self, picture: Picture | PictureSource, *, frame: int = 0,
                      role: Role = Role.OTHER, name: str = "",
                      entries: Mapping[str, str] = _NO_ENTRIES) -> Image:
        """Writes a picture, with its alpha channel and its profile if it has them.

        A picture is a Picture, or what a picture comes in: a path, the bytes of a file, or a file, of
        any format that add_picture() takes. Of these the role is always PHOTO, and what can be
        stored as it is, is; frame is one of several that a file may hold.
        """
        if not isinstance(picture, Picture):
            if name or entries or role != Role.OTHER:
                raise TypeError("role, name and entries are for a Picture")
            return self._write_picture_file(picture, frame)
        image = picture.image
        if picture.profile is not None:
            image = dataclasses.replace(image, color_space=self._profile(picture.profile))
        if picture.alpha is None:
            return self.write_image(image, role=role, name=name, entries=entries)
        return self.write_image_with_alpha(image, picture.alpha, role=role, name=name,
                                           entries=entries)

    def add_picture(self, picture: PictureSource, page: str | None = None, *,
                    image: str | None = None, border: str | None = None, fit: Fit = "into",
                    turn: int | None = None, auto_orient: bool = False, frame: int = 0) -> Image:
        """Adds a page of a picture: a path, the bytes of a file, or a file.

        JPEG, JPEG 2000, PNG, TIFF, WebP, GIF, BMP, PNM, HEIF and JPEG XL are read. page is "A4",
        "Letter", "A4^T" for landscape or "10cmx15cm"; image is the size of the picture, "10cmx15cm",
        "50%" or "300dpi"; border is "1cm", or "1cm:2cm" above and below, left and right. Without
        them the page is as large as the picture, by the resolution in its file. turn is in degrees
        clockwise, in place of the orientation that the file says; auto_orient turns the page where
        the picture lies the other way.

        >>> doc = Document("album.pdf")  # doctest: +SKIP
        >>> doc.add_picture("photo.jpg", page="A4", border="1cm", fit="into")  # doctest: +SKIP
        Image(number=2)
        """
        with _picture_files.opened(picture) as opened:
            sheet, box = self.lay_out_picture(opened, page, image=image, border=border, fit=fit,
                                              turn=turn, auto_orient=auto_orient, frame=frame)
            written = self._write_picture_file(opened, frame)
        self.draw_image(written, box)
        self.add_page(sheet)
        return written

    def lay_out_picture(self, picture: PictureSource, page: str | None = None, *,
                        image: str | None = None, border: str | None = None, fit: Fit = "into",
                        turn: int | None = None, auto_orient: bool = False,
                        frame: int = 0) -> tuple[Box, Box]:
        """The sheet and the box of the picture on it that add_picture() would take."""
        record = _picture_files.page_record(page, image, border, fit, turn, auto_orient)
        with _picture_files.opened(picture) as opened:
            return self._pictures().lay_out(opened, frame, record)

    def fit_picture(self, picture: PictureSource, box: BoxLike, *, fit: Fit = "into",
                    turn: int | None = None, frame: int = 0) -> Box:
        """Where a picture goes in a box of the canvas, for draw_image(): for several on one page.

        It stands in the middle of the box, turned as that is. add_picture() says what fit and turn
        are. What stands around or beneath the picture goes by upright() of the result.

        >>> with Document("card.pdf", unit="mm") as doc:  # doctest: +SKIP
        ...     for logo, left in (("ours.png", 10), ("theirs.jpg", 160)):
        ...         place = doc.fit_picture(logo, (left, 270, 40, 15))
        ...         doc.fill_rectangle(place.upright().inset(-1, -1), "#eeeeee")
        ...         doc.draw_image(doc.write_picture(logo), place)
        ...     page = doc.add_page((0, 0, 210, 297))
        """
        room = _arguments.rect(box, "box")
        with _picture_files.opened(picture) as opened:
            return self._pictures().fit(opened, frame, room, fit, turn)

    def _pictures(self) -> _picture_files.Writer:
        if self._handle is None:
            raise ValueError(f"{self!r} was discarded")
        if self._picture_writer is None:
            self._picture_writer = _picture_files.Writer(
                self._handle, self._unit, self._picture_level)
        return self._picture_writer

    def _write_picture_file(self, picture: PictureSource, frame: int) -> Image:
        def run(function: Callable[..., int], *arguments: object) -> int:
            output = self._output
            return function(*arguments) if output is None else output.run(function, *arguments)

        with _picture_files.opened(picture) as opened:
            try:
                number = self._pictures().write(opened, frame, run, self._path)
            except Error:
                self._unfinished = False  # whoever gets the error knows that the file is incomplete
                raise
            finally:
                if self._output is not None and self._output.failed:
                    self._unfinished = False
        return Image(number, self._number)

    def _profile(self, data: bytes) -> Profile:
        """The profile, written once for all pictures that have it."""
        if data not in self._profiles:
            self._profiles[data] = self.write_icc_profile(zlib.compress(data), Compression.FLATE)
        return self._profiles[data]

    def add_page(self, sheet: BoxLike, *, crop_box: BoxLike | None = None) -> Form:
        """Adds a page of what was drawn; the form of it may serve other pages, too.

        >>> with Document(unit="in") as doc:
        ...     doc.fill_rectangle((1, 1, 2, 1, 45), (0, 0, 128))
        ...     front = doc.add_page((0, 0, 4, 3))
        ...     doc.write_page(front, (0, 0, 4, 3))
        """
        box = _arguments.rect(sheet, "sheet")
        if crop_box is not None:
            _arguments.rect(crop_box, "crop_box")  # before anything is written
        _native.library.SetPdfCanvasBoundingBox(self._pointer, box)
        form = self.write_canvas()
        self.write_page(form, sheet, crop_box=crop_box)
        return form

    def add_image_page(self, image: Image, sheet: BoxLike) -> Form:
        """Adds a page that the image covers, and nothing else: the canvas is cleared first."""
        self.clear_canvas()
        self.draw_image(image, sheet)
        return self.add_page(sheet)

    # -- Objects of one's own

    def write_object(self, value: str, *, reserved: Object | None = None) -> Object:
        """Writes the text of one object of PDF, under a number of reserve_object() if one is given.

        >>> with Document() as doc:
        ...     link = doc.write_object("<< /Type /Annot /Subtype /Link /Rect [0 0 9 9] >>")
        ...     doc.set_page_entry("/Annots", f"[{link}]")
        ...     page = doc.add_page((0, 0, 100, 100))
        """
        text = _objects.syntax(value, "value")
        if reserved is None:
            return Object(self._write("WritePdfObject", text), self._number)
        number = _arguments.object_number(reserved, Object, self._number, "reserved")
        self._call("WriteReservedPdfObject", number, text)
        return reserved

    def write_stream(self, entries: Mapping[str, str], *pieces: Buffer,
                     reserved: Object | None = None) -> Object:
        """Writes a stream of the pieces of data, one behind the other.

        Keys of entries are paths of names ("/DecodeParms/Columns"), values the text of one object.
        """
        records = _objects.entry_records(entries)
        with contextlib.ExitStack() as stack:
            memories = [stack.enter_context(self._borrowed(piece)) for piece in pieces]
            data = (_native.Piece * len(memories))(*(
                _native.Piece(memory.address, memory.size) for memory in memories))
            size = sum(memory.size for memory in memories)
            self._require_room("WritePdfStreamPieces", size)
            if reserved is None:
                number = self._write("WritePdfStreamPieces", *records, len(memories), data)
            else:
                number = _arguments.object_number(reserved, Object, self._number, "reserved")
                self._call("WriteReservedPdfStream", number, *records, len(memories), data)
            self._written += size
        return Object(number, self._number)

    def reserve_object(self) -> Object:
        """Takes the number of an object that is written later, for objects that name each other.

        >>> with Document() as doc:
        ...     later = doc.reserve_object()
        ...     first = doc.write_object(f"[{later}]")
        ...     second = doc.write_object(f"[{first}]", reserved=later)
        """
        return Object(self._write("ReservePdfObject"), self._number)

    def set_catalog_entry(self, key: str, value: str) -> None:
        """Sets an entry of the catalog, such as /PageLayout.

        >>> with Document() as doc:
        ...     doc.set_catalog_entry("/ViewerPreferences/FitWindow", "true")
        """
        self._set_entry("SetPdfCatalogEntry", key, value)

    def set_page_entry(self, key: str, value: str) -> None:
        """Sets an entry of the page that is added next, such as /Annots."""
        self._set_entry("SetPdfPageEntry", key, value)

    def set_canvas_entry(self, key: str, value: str) -> None:
        """Sets an entry of the next form, as a rule a resource of what is drawn."""
        self._set_entry("SetPdfCanvasEntry", key, value)

    def _set_entry(self, function: str, key: str, value: str) -> None:
        self._call(function, _objects.syntax(key, "key"), _objects.syntax(value, "value"))

    def draw_content(self, operators: str) -> None:
        """Draws lines of a content stream as they are; lengths in them are points."""
        self._draw("DrawPdfContent", _objects.syntax(operators, "operators"))

    def draw_text(self, text: str, left: float, base_line: float, size: float, *,
                  color: ColorLike = "#000000", font: str = "Helvetica") -> None:
        """Draws a line of text from its left end on its base line; size is in points.

        The font is one that every reader brings along: Helvetica, Times-Roman, Courier and their
        kinds (Helvetica-Bold), which have the characters of Windows' western code page.

        >>> with Document(unit="mm") as doc:
        ...     doc.draw_text("Café (at noon)", 20, 280, 12)
        ...     page = doc.add_page((0, 0, 210, 297))
        """
        ink = _arguments.color(color, "color")
        rgb = " ".join(_objects.number(part / 255) for part in (ink.red, ink.green, ink.blue))
        place = " ".join(_objects.number(_arguments.number(value, what) * self._unit)
                         for value, what in ((left, "left"), (base_line, "base_line")))
        operators = (f"q BT {rgb} rg /{font} {_objects.number(_arguments.size(size, 'size'))} Tf "
                     f"{place} Td {_objects.literal(text)} Tj ET Q")
        self.set_canvas_entry(f"/Resources/Font/{font}",
                              f"<< /Type /Font /Subtype /Type1 /BaseFont /{font} "
                              "/Encoding /WinAnsiEncoding >>")
        self.draw_content(operators)

    def write_image_object(self, image: ImageObject) -> Image:
        """Writes an image in any filter and colour space of PDF."""
        def reference(named: Image | Object) -> str:
            number = _arguments.object_number(named, type(named), self._number, "mask")
            return f"{number} 0 R"

        written = self.write_stream(image.entries(reference), *image.pieces)
        return Image(written.number, written.document)

    def write_icc_colors(self, profile: Buffer, components: Literal[1, 3, 4],
                         filter: Filter = Filter.NONE) -> Colors:
        """Writes an ICC profile for colours of 1, 3 or 4 components, for ImageObject."""
        device = {1: "/DeviceGray", 3: "/DeviceRGB", 4: "/DeviceCMYK"}.get(components)
        if device is None:
            raise ValueError(f"components is {components}, none of 1, 3 and 4")
        entries = {"/N": str(components), "/Alternate": device}
        if filter != Filter.NONE:
            entries["/Filter"] = filter.value
        return Colors(f"[/ICCBased {self.write_stream(entries, profile)}]", components)

    def set_page_box(self, kind: Literal["bleed", "trim", "art"], box: BoxLike) -> None:
        """Sets one more box of the page that is added next (ISO 32000-1, 14.11.2)."""
        keys = {"bleed": "/BleedBox", "trim": "/TrimBox", "art": "/ArtBox"}
        if kind not in keys:
            raise ValueError(f"kind is {kind!r}, none of {', '.join(keys)}")
        rect = _arguments.rect(box, "box")
        corners = (rect.left, rect.bottom, rect.left + rect.width, rect.bottom + rect.height)
        self.set_page_entry(keys[kind], _objects.array([c * self._unit for c in corners]))

    def turn_page(self, quarters: int) -> None:
        """Turns the page that is added next clockwise by so many quarters, as readers show it."""
        self.set_page_entry("/Rotate", str(quarters % 4 * 90))

    def add_bookmark(self, title: str, page: int | None = None, *, level: int = 0) -> None:
        """Adds a bookmark to a page by its index, or to the page that is added next.

        >>> with Document() as doc:
        ...     doc.add_bookmark("Beginning")
        ...     page = doc.add_page((0, 0, 100, 100))
        """
        index = self._pages if page is None else page
        self._call("AddPdfBookmark", level, _native.wide_text(title, "title"), index)

    def set_open_page(self, page: int, view: str = "/Fit") -> None:
        """Says what a reader shows first: a page by its index, which may be added later.

        view is the rest of a destination (ISO 32000-1, 12.3.2.2): "/Fit", "/XYZ null null 1.5".

        >>> with Document() as doc:
        ...     doc.set_open_page(0, "/FitH null")
        ...     page = doc.add_page((0, 0, 100, 100))
        """
        self._call("SetPdfOpenPage", page, _objects.syntax(view, "view"))

    @property
    def page_count(self) -> int:
        """How many pages were added: the index of the next one."""
        return self._pages

    def set_content_encoder(self, encode: Encode, filter: str = "/FlateDecode") -> None:
        """Encodes what is drawn from now on; ``compress=True`` takes zlib.compress.

        >>> import zlib
        >>> with Document() as doc:
        ...     doc.set_content_encoder(lambda plain: zlib.compress(plain, 9))
        """
        encoder = Encoder(encode)
        self._call("SetPdfContentEncoder", _objects.syntax(filter, "filter"), encoder.function, None)
        self._encoder = encoder
        if self._handle is not None:
            self._handle.encoder = encoder

    # -- Calls that can fail

    def _call(self, function: str, *arguments: object) -> None:
        try:
            _native.call(function, self._pointer, *arguments, path=self._path, output=self._output)
        except Error:
            self._unfinished = False  # whoever gets the error knows that the file is incomplete
            if self._encoder is not None:
                self._encoder.raise_problem()
            raise
        finally:
            if self._output is not None and self._output.failed:
                self._unfinished = False

    def _write(self, function: str, *arguments: object) -> int:
        number = ctypes.c_int()
        self._call(function, *arguments, ctypes.byref(number))
        return number.value

    def _write_image(self, function: str, images: Sequence[ImageData],
                     *arguments: object) -> Image:
        with contextlib.ExitStack() as stack:
            memories = [stack.enter_context(self._borrowed(image.data)) for image in images]
            size = sum(memory.size for memory in memories)
            self._require_room(function, size)
            records = [_arguments.descriptor(image, memory, self._number)
                       for image, memory in zip(images, memories)]
            number = self._write(function, *records, *arguments)
            self._written += size
        return Image(number, self._number)

    def _borrowed(self, data: Buffer) -> _native.Borrowed:
        return _native.Borrowed(data, None if self._output is None else self._output.lent)

    def _require_room(self, function: str, size: int, written: int = 0) -> None:
        """Raises Error where no room is left for so many bytes more and what finish() adds."""
        handed_on = 0 if self._output is None else self._output.size
        if max(written, handed_on, self._written) + size + _REST_BYTES > _MOST_BYTES:
            raise Error._of(function, errno.EFBIG, self._path,
                            "the document would have more than 10^10 bytes, beyond which readers "
                            "find nothing; write it as several documents")


def _file_size(path: str | None) -> int:
    """The size of a regular file, else 0."""
    if path is None:
        return 0
    try:
        status = os.stat(path)
    except (OSError, ValueError):
        return 0
    return status.st_size if stat.S_ISREG(status.st_mode) else 0
