"""Writes PDF 1.5 files in one forward pass, over the C library libjtpdf.

>>> import jtpdf
>>> with jtpdf.Document("hello.pdf", unit="mm") as doc:
...     doc.fill_rectangle((45, 110, 120, 80, 15), (214, 40, 57))
...     page = doc.add_page((0, 0, 210, 297))

A document writes images, forms and pages as they come, so its size is limited by the disk and not
by memory. Failures are jtpdf.Error, an OSError. See Document for all that can be written.

The package calls the C interface; jtpdf.h says what each call writes. Memory that runs out is a
MemoryError.
"""

from __future__ import annotations

from . import _native
from ._document import Document
from ._errors import Error
from ._objects import Colors, Filter, ImageObject, Object, pdf_string
from ._picture_files import PictureError, PictureFile, PictureInfo, probe
from ._pictures import Picture
from ._pictures_to_pdf import pictures_to_pdf
from ._values import (CENTIMETER, INCH, MILLIMETER, POINT, Box, BoxLike, Color, ColorLike,
                      ColorSpace, Compression, Form, Image, ImageData, Profile, Role, Unit)

__version__ = "2.1.6"

__all__ = [
    "CENTIMETER", "INCH", "MILLIMETER", "POINT", "Box", "BoxLike", "Color", "ColorLike",
    "ColorSpace", "Colors", "Compression", "Document", "Error", "Filter", "Form", "Image",
    "ImageData", "ImageObject", "Object", "Picture", "PictureError", "PictureFile", "PictureInfo",
    "Profile", "Role", "Unit",
    "diagnostic_mode", "library_version", "pdf_string", "pictures_to_pdf", "probe",
    "set_diagnostic_mode",
]


def library_version() -> str:
    """The version of the shared library that runs; ``__version__`` is that of the package."""
    version: bytes = _native.library.JTPDFGetVersion()
    return version.decode("ascii")


def diagnostic_mode() -> bool:
    """Whether the library says on the standard error stream what went wrong."""
    return bool(_native.library.JTPDFGetDiagnosticMode())


def set_diagnostic_mode(on: bool) -> None:
    """Switches these messages on or off for the whole process.

    >>> set_diagnostic_mode(True)
    >>> diagnostic_mode()
    True
    >>> set_diagnostic_mode(False)
    """
    _native.library.JTPDFSetDiagnosticMode(on)
