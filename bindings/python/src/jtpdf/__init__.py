"""Writes PDF 1.5 files in one forward pass, over the C library libjtpdf.

>>> import jtpdf
>>> sheet = jtpdf.Box(0, 0, 210, 297)
>>> with jtpdf.Document("hello.pdf", unit=jtpdf.MILLIMETER) as doc:
...     doc.canvas_box = sheet
...     doc.fill_rectangle(jtpdf.Box(45, 110, 120, 80, angle=15), jtpdf.Color.from_hex("#d62839"))
...     doc.write_page(doc.write_canvas(), sheet)

A document writes images, forms and pages as they come, so its size is limited by the disk and not
by memory. Failures are jtpdf.Error, an OSError. See Document for all that can be written.

The package calls the C interface; jtpdf.h says what each call writes. Running out of memory inside
the library ends the process.
"""

from __future__ import annotations

from . import _native
from ._document import Document
from ._errors import Error
from ._pictures import Picture
from ._values import (CENTIMETER, INCH, MILLIMETER, POINT, Box, Color, ColorSpace, Compression,
                      Form, Image, ImageData, Profile, Role)

__version__ = "2.1.6"

__all__ = [
    "CENTIMETER", "INCH", "MILLIMETER", "POINT", "Box", "Color", "ColorSpace", "Compression",
    "Document", "Error", "Form", "Image", "ImageData", "Picture", "Profile", "Role",
    "diagnostic_mode", "set_diagnostic_mode",
]


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
