"""A typed host: mypy --strict accepts it, and needs every "ignore" in it."""

import pathlib

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
    doc.fill_rectangle((0, 0, 1), jtpdf.Color.BLACK)  # type: ignore[arg-type]
    jtpdf.Document(unit="ell")  # type: ignore[arg-type]
    doc.set_info("Title", b"bytes")  # type: ignore[arg-type]
    return doc.data


with jtpdf.Document("a.pdf", unit=jtpdf.INCH) as document:
    use(document, pathlib.Path("a.jpg"))
