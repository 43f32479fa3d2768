"""Every warning of a reader that we expect, by name, and why it is no fault of the file.

A warning that is not listed here fails the test of its document.
"""

import re
from fnmatch import fnmatch


class Expected:
    """For documents like the pattern: what the reader prints, and why.

    With refuses, the reader does not open the document, or not all of it: it is not asked about
    pages, images and pixels, and it has to go on refusing.
    """

    def __init__(self, documents, reader, pattern, reason, refuses=False):
        self.documents, self.reader, self.reason = documents, reader, reason
        self.pattern = re.compile(pattern)  # of a whole line
        self.refuses = refuses

    def about(self, document, reader):
        return reader == self.reader and any(fnmatch(document, d) for d in self.documents)


NO_PAGE = ("empty", "closing_text_empty", "numbers")
NO_PAGE_REASON = (
    "A document without a page has /Kids ] in its page tree, one byte that is no array, and readers"
    " have nothing to show."
)
ODD_NUMBERS_REASON = (
    "The document holds numbers that PDF has not: infinities, and more digits than 64 bits hold."
)
GENEROUS_REASON = (
    "A node of the second level with ten kids claims 100 pages, also where its last kid holds fewer."
    " Ghostscript believes it and looks for pages 192 to 200."
)

EXPECTED = (
    Expected(
        ["*"],
        "MuPDF",
        r"warning: ICC support is not available",
        "Debian's MuPDF is built without colour management; it shows ICC-based images by their"
        " alternate colour space.",
    ),
    Expected(
        NO_PAGE,
        "qpdf",
        r"WARNING: .* treating unexpected array close token as null|exit status 3"
        r"|qpdf: operation succeeded with warnings",
        NO_PAGE_REASON,
    ),
    Expected(
        ["numbers"],
        "qpdf",
        r"WARNING: .* unknown token while reading object; treating as string"
        r"|WARNING: .* overflow/underflow converting \d+ to 64-bit integer",
        ODD_NUMBERS_REASON,
    ),
    Expected(
        NO_PAGE,
        "Poppler",
        r"Syntax Error: Invalid page count 0|exit status 99"
        r"|.*Wrong page range given: the first page \(1\) can not be after the last page \(0\)\.",
        NO_PAGE_REASON,
        refuses=True,
    ),
    Expected(
        NO_PAGE,
        "MuPDF",
        r"error: malformed page tree|error: cannot draw '.*'|exit status 1",
        NO_PAGE_REASON,
        refuses=True,
    ),
    Expected(
        NO_PAGE,
        "Ghostscript",
        r"counts no pages, shows 0|\s+\*\*\*\* Error: Couldn't initialise file\."
        r"|\s+Output may be incorrect\.|\s+No pages will be processed \(FirstPage > LastPage\)\."
        r"|exit status 1",
        NO_PAGE_REASON,
        refuses=True,
    ),
    Expected(
        NO_PAGE,
        "PDFium",
        "",
        "It shows one blank page where there is none.",
        refuses=True,
    ),
    Expected(
        ["pages_191"],
        "Ghostscript",
        r"counts 200 pages, shows \d+|\s+\*\*\*\* Error: (Couldn't get page info|page not found)\."
        r"|\s+Output may be incorrect\.|exit status 1",
        GENEROUS_REASON,
        refuses=True,
    ),
    Expected(
        ["open_objects"],
        "Ghostscript",
        r"\s+Fonts used: |\s+Helvetica\s+Type1\s+Not embedded\s+No ToUnicode\s+",
        "It lists the fonts of a document; this one names Helvetica, which every reader brings along.",
    ),
)


def explained(document, reader, warning):
    """Whether the warning is expected of the reader for the document."""
    return any(
        e.about(document, reader) and e.pattern.fullmatch(warning) for e in EXPECTED
    )


def refuses(document, reader):
    return any(e.refuses and e.about(document, reader) for e in EXPECTED)


BOUND = 8.0  # the mean difference of a page's rendering, out of 255


class Bound:
    """A document that a reader may show more differently than BOUND, and why."""

    def __init__(self, document, reader, bound, reason):
        self.document, self.reader, self.bound, self.reason = document, reader, bound, reason


_COLORS = "It shows ICC-based images by device RGB, and CMYK by a conversion of its own."

_SMOOTHED = "It resamples pictures even at their own size, which smooths fine patterns."

BOUNDS = (
    *(
        Bound(document, reader, 20.0, _COLORS)
        for document in ("images", "everything", "album")
        for reader in ("MuPDF", "pdf.js")
    ),
    Bound("jtpdf-*", "MuPDF", 25.0, _COLORS),
    Bound("jtpdf-*", "Poppler", 10.0, _SMOOTHED),
)


def bound(document, reader):
    return max(
        [BOUND] + [b.bound for b in BOUNDS if b.reader == reader and fnmatch(document, b.document)]
    )
