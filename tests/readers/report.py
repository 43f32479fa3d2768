"""docs/readers.md, from what the matrix found."""

import re

import expected
from readers import run

HEAD = """\
# What readers make of our files

Made by `tests/readers/matrix`; the sections of text stand in `tests/readers/report.py`, the
expectations in `tests/readers/expected.py`. The ordinary test run asks the first four readers
(`ctest -R readers`), and compares the pixels of one document with the colours that were drawn.

What the readers make of the files of the `jtpdf` command, for each kind of input, is in
[readers-tool.md](readers-tool.md).
"""

ADVICE = """\
## What readers object to, and what to do about it

**No page.** A document without a page has the one byte `]` for its `/Kids`, which is no array.
qpdf takes it as null and warns; Poppler, MuPDF and Ghostscript have nothing to show and say so;
PDFium shows a blank page. Write at least one page; an empty form will do.

**A full node above one that is not.** From 101 pages on the page tree has nodes of nodes, and one
with ten kids claims all the pages that it could hold, also when its last kid is not full. That is so
with more than 100 pages when the last two digits of their number are 91 to 99 (191, 995), with more
than 1000 when the last three are 901 to 999, and so on. The root always counts right, and readers
that walk the tree show every page. Ghostscript believes the nodes: of 191 pages it counts 200, shows
191, and ends with an error. Where files are to pass through Ghostscript, avoid these numbers: add
blank pages, or split the document.

**JPEG 2000 with alpha.** Every JPEG 2000 image is written with `/SMaskInData 1`: alpha that the data
holds is its soft mask. MuPDF, Ghostscript, pdf.js and PDFium show it so; Poppler 22.12 mixes the
alpha channel into the colours instead. Without alpha in the data all agree. For transparency that
shows everywhere, decode the image and write it with WritePdfImageWithAlpha.

**Colour management.** CMYK colours and ICC-based images look different from reader to reader, as
readers have profiles of their own or none. Debian's MuPDF, and pdf.js under Node, show ICC-based
images by their alternate colour space, device RGB.

**Small images.** Poppler, Ghostscript and PDFium smooth images that they enlarge, each in its own
way; most of the differences above are those edges. pdf.js 5.4 under Node paints the last pixels of a
one-bit image white, whoever wrote it.

**Keys of one's own.** `/Length` and `/Stream` in the table of an image's entries are never written,
but where the entry before them in the order of keys opened a dictionary, that is not closed any
more, and no reader can read the image. Do not use these two keys.
"""


def version(command, pattern):
    out, complaints = run(command, accept=range(256))
    found = re.search(pattern, out + "\n".join(complaints))
    return found[1] if found else "unknown"


def versions():
    from js_readers import PACKAGES

    npm = {name.split("@")[-2].strip("/"): name.rsplit("@", 1)[1] for name in PACKAGES}
    return {
        "qpdf": version(["qpdf", "--version"], r"version (\S+)"),
        "Poppler": version(["pdfinfo", "-v"], r"version (\S+)"),
        "MuPDF": version(["mutool", "-v"], r"version (\S+)"),
        "Ghostscript": version(["gs", "--version"], r"(\S+)"),
        "pdf.js": "pdfjs-dist " + npm["pdfjs-dist"],
        "PDFium": "@hyzyla/pdfium " + PACKAGES[1].rsplit("@", 1)[1],
    }


def cell_text(row, reader, cell):
    if cell.unexplained:
        return "**warns**"
    notes = " (notes)" if cell.explained_here else ""
    if not reader.renders:
        return "notes" if notes else "ok"
    if row.facts.pages == 0:
        return "refuses" if notes else "opens" if cell.pages == 0 else "a blank page"
    if cell.pages != row.facts.pages:
        return f"{cell.pages} pages"
    return f"{cell.difference:.2f}{notes}"


def table(head, rows):
    lines = ["| " + " | ".join(head) + " |", "|" + "---|" * len(head)]
    return "\n".join(lines + ["| " + " | ".join(row) + " |" for row in rows])


def document_rows(readers, rows):
    for row in rows:
        cells = [cell_text(row, reader, row.cells[reader.name]) for reader in readers]
        yield [f"`{row.name}`", str(row.facts.pages), str(row.facts.images), *cells]


def generated_row(readers, rows):
    cells = []
    for reader in readers:
        found = [row.cells[reader.name] for row in rows]
        if any(cell.unexplained for cell in found):
            cells.append("**warns**")
        elif reader.renders:
            cells.append(f"{max(cell.difference or 0 for cell in found):.2f}")
        else:
            cells.append("ok")
    pages = sum(row.facts.pages for row in rows)
    images = sum(row.facts.images for row in rows)
    return [f"{len(rows)} generated, the worst", str(pages), str(images), *cells]


def text(readers, rows, failures):
    named = [row for row in rows if not row.name.startswith("generated_")]
    generated = [row for row in rows if row.name.startswith("generated_")]
    body = list(document_rows(readers, named))
    if generated:
        body.append(generated_row(readers, generated))
    parts = [
        HEAD,
        "## Readers\n",
        table(["reader", "version"], [list(pair) for pair in versions().items()]),
        f"\n## Documents\n\n{len(rows)} documents with {sum(r.facts.pages for r in rows)} pages."
        " A number is the mean difference of a reader's rendering from the others', out of 255,"
        " at 72 dots per inch: for each page the median over the other readers, and of the pages"
        f" the worst. It is at most {expected.BOUND} where nothing else is stated below."
        " Notes are warnings that are explained below.\n",
        table(["document", "pages", "images", *[reader.name for reader in readers]], body),
        "",
        ADVICE,
        "## Larger differences\n",
        table(
            ["document", "reader", "at most", "reason"],
            [[f"`{b.document}`", b.reader, str(b.bound), b.reason] for b in expected.BOUNDS],
        ),
        "\n## Warnings that are expected\n",
        table(
            ["documents", "reader", "reason"],
            [[", ".join(f"`{d}`" for d in e.documents), e.reader, e.reason] for e in expected.EXPECTED],
        ),
        "",
    ]
    if failures:
        parts += ["## Not as expected\n", *[f"- {failure}" for failure in failures], ""]
    return "\n".join(parts)
