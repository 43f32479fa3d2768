"""A typed host: mypy --strict accepts it, and needs every "ignore" in it."""

import datetime
import io
import pathlib
import sys
from typing import IO

import jtpdf


def use(doc: jtpdf.Document, path: pathlib.Path) -> memoryview:
    data = jtpdf.ImageData(path.read_bytes(), jtpdf.Compression.JPEG, 640, 480)
    image: jtpdf.Image = doc.write_image(data, role=jtpdf.Role.PHOTO, entries={"Key": "value"})
    profile: jtpdf.Profile = doc.write_icc_profile(bytearray(10))
    jtpdf.ImageData(memoryview(b""), jtpdf.Compression.NONE, 1, 1, color_space=profile)
    form: jtpdf.Form = doc.write_canvas()
    doc.draw_image(image, jtpdf.Box(0, 0, 1, 1))
    doc.write_page(form, doc.canvas_box)
    doc.draw_image(form)  # type: ignore[arg-type]
    doc.write_page(image, doc.canvas_box)  # type: ignore[arg-type]
    doc.draw_image(7)  # type: ignore[arg-type]
    doc.fill_rectangle((0, 0, 1, 1, 45), (255, 0, 0))
    doc.fill_rectangle([0, 0, 1, 1.5], [255, 0, 0])
    doc.fill_rectangle((0, 0, 1, 1), "#ff8000")
    doc.set_info("CreationDate", datetime.date(2026, 5, 17))
    doc.fill_rectangle((0, 0, 1), jtpdf.Color.BLACK)  # type: ignore[arg-type]
    doc.fill_rectangle("0 0 1 1", jtpdf.Color.BLACK)  # type: ignore[arg-type]
    jtpdf.Document(unit="ell")  # type: ignore[arg-type]
    doc.set_info("Title", b"bytes")  # type: ignore[arg-type]
    return doc.data


class Sink:
    def write(self, data: bytes) -> None: ...


def stream(file: IO[bytes]) -> None:
    jtpdf.Document(file).finish()
    jtpdf.Document(io.BytesIO()).finish()
    jtpdf.Document(sys.stdout.buffer).finish()
    jtpdf.Document(Sink()).finish()
    with open("a.pdf", "wb") as opened:
        jtpdf.Document(opened).finish()
    jtpdf.Document(sys.stdout)  # type: ignore[arg-type]


with jtpdf.Document("a.pdf", unit=jtpdf.INCH) as document:
    use(document, pathlib.Path("a.jpg"))
