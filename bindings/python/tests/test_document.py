"""Documents: each method writes what its C function writes, failures raise, text is checked."""

import contextlib
import ctypes
import errno
import gc
import io
import mmap
import os
import pathlib
import tempfile
import unittest
import warnings
from typing import Any, Callable, Iterator

import jtpdf
from jtpdf import Box, Color, ColorSpace, Compression, Document, ImageData, Role, _native

lib = _native.library
Rect = _native.Rect

PIXELS = bytes([0x78, 0x01, 0x00, 0xFF, 0x00, 0x1F])
BOX = Box(10, 20, 30, 40, 15)
RECT = Rect(10, 20, 30, 40, 15)


def written_by_c(use: Callable[[int], None]) -> bytes:
    """What the C interface writes when use(document) gets it, in millimetres."""
    pointer = lib.CreateMemoryPdfDoc(jtpdf.MILLIMETER)
    assert lib.InitPdfDoc(pointer) == 0
    use(pointer)
    assert lib.FinalizePdfDoc(pointer, None) == 0
    data = ctypes.string_at(lib.GetPdfData(pointer), lib.GetPdfDataSize(pointer))
    lib.DestroyPdfDoc(pointer)
    return data


def written_by_face(use: Callable[[Document], None]) -> bytes:
    with Document(unit=jtpdf.MILLIMETER) as doc:
        use(doc)
    return bytes(doc.data)


def rgb(red: int, green: int, blue: int, alpha: int = 255) -> _native.RGBColor:
    return _native.RGBColor(red, green, blue, alpha)


class WritesLikeC(unittest.TestCase):
    maxDiff = None

    def check(self, face: Callable[[Document], None], c: Callable[[int], None]) -> None:
        self.assertEqual(written_by_face(face), written_by_c(c))

    def test_information(self) -> None:
        def face(doc: Document) -> None:
            doc.set_info("Title", "Grüße, 世界 🌍")
            doc.set_info("/Subject", "")
            self.assertFalse(doc.mark)
            doc.mark = True
            self.assertTrue(doc.mark)

        def c(doc: int) -> None:
            lib.SetPdfInfoItem(doc, b"Title", "Grüße, 世界 🌍 ")
            lib.SetPdfInfoItem(doc, b"Subject", None)
            lib.SetPdfMgMk(doc, True)

        self.check(face, c)
        self.assertIn("(þÿ".encode("latin-1"), written_by_face(face))

    def test_drawing(self) -> None:
        def face(doc: Document) -> None:
            doc.fill_rectangle(BOX, Color.BLACK)
            doc.clear_canvas()
            doc.canvas_box = BOX
            self.assertEqual(doc.canvas_box, BOX)
            doc.draw_image(jtpdf.Image(7))
            doc.draw_image(jtpdf.Image(8), BOX.inset(1, 2))
            doc.fill_rectangle(BOX, Color(1, 2, 3))
            doc.stroke_rectangle(BOX, Color(4, 5, 6), 0.5)
            doc.fill_and_stroke_rectangle(BOX, Color(7, 8, 9), Color.NONE, 0.6)
            doc.fill_and_stroke_circle(BOX, Color(10, 11, 12), Color(13, 14, 15), 0.7)
            self.assertEqual(doc.write_canvas(), jtpdf.Form(2))

        def c(doc: int) -> None:
            inner = Rect(10, 20, 30, 40, 15)
            lib.InsetPdfRect(ctypes.byref(inner), 1, 2)
            lib.SetPdfCanvasBoundingBox(doc, RECT)
            lib.DrawPdfImage(doc, 7)
            lib.DrawPdfImageInRect(doc, 8, inner)
            lib.FillPdfRectangle(doc, RECT, rgb(1, 2, 3))
            lib.StrokePdfRectangle(doc, RECT, rgb(4, 5, 6), 0.5)
            lib.FillAndStrokePdfRectangle(doc, RECT, rgb(7, 8, 9), rgb(255, 255, 255, 0), 0.6)
            lib.FillAndStrokePdfCircle(doc, RECT, rgb(10, 11, 12), rgb(13, 14, 15), 0.7)
            self.assertEqual(lib.WritePdfCanvas(doc, None), 0)

        self.check(face, c)

    def test_pages(self) -> None:
        def face(doc: Document) -> None:
            form = doc.write_canvas()
            doc.write_page(form, BOX)
            doc.write_page(form, BOX, crop_box=BOX.inset(1, 1))

        def c(doc: int) -> None:
            form = ctypes.c_int()
            self.assertEqual(lib.WritePdfCanvas(doc, ctypes.byref(form)), 0)
            self.assertEqual(lib.WritePdfPage(doc, form, RECT, RECT), 0)
            self.assertEqual(lib.WritePdfPage(doc, form, Rect(11, 21, 28, 38, 15), RECT), 0)

        self.check(face, c)

    def test_pages_of_tuples(self) -> None:
        def face(doc: Document) -> None:
            doc.fill_rectangle((10, 20, 30, 40, 15), (1, 2, 3))
            doc.stroke_rectangle((10, 20, 30, 40), (255, 255, 255, 0), 1)
            form = doc.add_page((0, 0, 210, 297))
            doc.write_page(form, (0, 0, 210, 297), crop_box=(10, 20, 30, 40))
            doc.fill_rectangle(BOX, Color.BLACK)
            doc.add_image_page(jtpdf.Image(7), (10, 20, 30, 40))

        def c(doc: int) -> None:
            form = ctypes.c_int()
            sheet, upright = Rect(0, 0, 210, 297, 0), Rect(10, 20, 30, 40, 0)
            lib.FillPdfRectangle(doc, RECT, rgb(1, 2, 3))
            lib.StrokePdfRectangle(doc, upright, rgb(255, 255, 255, 0), 1)
            lib.SetPdfCanvasBoundingBox(doc, sheet)
            self.assertEqual(lib.WritePdfCanvas(doc, ctypes.byref(form)), 0)
            self.assertEqual(lib.WritePdfPage(doc, form, sheet, sheet), 0)
            self.assertEqual(lib.WritePdfPage(doc, form, upright, sheet), 0)
            lib.SetPdfCanvasBoundingBox(doc, upright)
            lib.DrawPdfImage(doc, 7)
            self.assertEqual(lib.WritePdfCanvas(doc, ctypes.byref(form)), 0)
            self.assertEqual(lib.WritePdfPage(doc, form, upright, upright), 0)

        self.check(face, c)

    def test_images(self) -> None:
        def face(doc: Document) -> None:
            gray = ImageData(PIXELS, Compression.FLATE, 3, 2, 8, ColorSpace.GRAY)
            raw = ImageData(PIXELS, Compression.NONE, 1, 2, 8, ColorSpace.CMYK)
            jpx = ImageData(PIXELS, Compression.JPEG2000, 5, 4)
            profile = doc.write_icc_profile(PIXELS)
            self.assertEqual(profile, jtpdf.Profile(3))
            doc.write_icc_profile(PIXELS, Compression.FLATE)
            self.assertEqual(doc.write_image(gray), jtpdf.Image(6))
            doc.write_image(ImageData(PIXELS, Compression.LZW, 3, 2, 4, profile), role=Role.PHOTO,
                            name="Fuß", entries={"/JT/Shot": "β", "Lens": ""})
            doc.write_image(gray, mask_white=True, role=Role.BORDER)
            doc.write_image_with_alpha(raw, gray, role=Role.CLIP_ART, name="n", entries={"K": "v"})
            self.assertEqual(doc.write_jpeg2000_image(jpx, role=Role.TEXT), jtpdf.Image(11))

        def c(doc: int) -> None:
            data = ctypes.cast(ctypes.c_char_p(PIXELS), ctypes.c_void_p)

            def image(*numbers: int) -> Any:
                return ctypes.byref(_native.ImageDescriptor(data, len(PIXELS), *numbers))

            gray = image(2, 3, 2, 8, 0, 0)
            items = (_native.DictionaryItem * 2)(_native.DictionaryItem(b"/JT/Shot", "β"),
                                                 _native.DictionaryItem(b"Lens", ""))
            item = _native.DictionaryItem(b"K", "v")
            self.assertEqual(lib.WritePdfICCProfile(doc, data, len(PIXELS), -1, None), 0)
            self.assertEqual(lib.WritePdfICCProfile(doc, data, len(PIXELS), 2, None), 0)
            self.assertEqual(lib.WritePdfImage(doc, gray, False, 8, None, 0, None, None), 0)
            self.assertEqual(lib.WritePdfImage(
                doc, image(1, 3, 2, 4, 3, 3), False, 1, "Fuß", 2, items, None), 0)
            self.assertEqual(lib.WritePdfImage(doc, gray, True, 3, None, 0, None, None), 0)
            self.assertEqual(lib.WritePdfImageWithAlpha(
                doc, image(-1, 1, 2, 8, 2, 0), gray, 4, "n", 1, ctypes.byref(item), None), 0)
            self.assertEqual(lib.WritePdfImageJPEG2000(
                doc, image(3, 5, 4, 8, 1, 0), 6, None, 0, None, None), 0)

        self.check(face, c)

    def test_every_function_is_declared(self) -> None:
        header = os.environ.get("JTPDF_EXPORTS")
        if header is None:
            self.skipTest("JTPDF_EXPORTS does not name the list of exports")
        names = {name for name in pathlib.Path(header).read_text().split()
                 if not name.startswith("PDFCoordinateUnit")}
        self.assertEqual(names, set(_native._PROTOTYPES))

    def test_units_are_the_librarys(self) -> None:
        for name in ("Point", "Inch", "Centimeter", "Millimeter"):
            unit = ctypes.c_double.in_dll(lib, "PDFCoordinateUnit" + name).value
            self.assertEqual(getattr(jtpdf, name.upper()), unit)
        units: "list[tuple[jtpdf.Unit, jtpdf.Unit]]" = [
            ("pt", jtpdf.POINT), ("in", jtpdf.INCH), ("cm", jtpdf.CENTIMETER),
            ("mm", jtpdf.MILLIMETER)]
        for name_of_unit, unit_in_points in units:
            pages = []
            for way in (name_of_unit, unit_in_points):
                with Document(unit=way) as doc:
                    doc.add_page((0, 0, 3, 4))
                pages.append(bytes(doc.data))
            self.assertEqual(*pages)
        with self.assertRaisesRegex(ValueError, "'ell' is none of pt, in, cm, mm"):
            Document(unit="ell")  # type: ignore[arg-type]

    def test_records_have_the_librarys_layout(self) -> None:
        pointer = ctypes.sizeof(ctypes.c_void_p)
        self.assertEqual(ctypes.sizeof(_native.ImageDescriptor), 40 if pointer == 8 else 32)
        self.assertEqual(ctypes.sizeof(Rect), 40)
        self.assertEqual(ctypes.sizeof(_native.RGBColor), 4)
        self.assertEqual(ctypes.sizeof(_native.DictionaryItem), 2 * pointer)
        self.assertEqual(_native.ImageDescriptor.color_space_object.offset, pointer + 24)


class Files(unittest.TestCase):
    def setUp(self) -> None:
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def is_whole(self, path: pathlib.Path) -> bool:
        return path.read_bytes().endswith(b"%%EOF\r\n")

    def test_take_every_kind_of_path(self) -> None:
        path = self.folder / "größe-世界.pdf"
        names: "list[str | bytes | pathlib.Path]" = [path, str(path), os.fsencode(path)]
        for name in names:
            with Document(name, creator="me", author="Æsop"):
                pass
            self.assertTrue(self.is_whole(path))
            path.unlink()

    def test_and_memory_are_the_same(self) -> None:
        with Document(self.folder / "a.pdf", creator="me", author="Æsop") as on_disk:
            on_disk.write_page(on_disk.write_canvas(), BOX)
        with Document(creator="me", author="Æsop") as in_memory:
            in_memory.write_page(in_memory.write_canvas(), BOX)
        self.assertEqual((self.folder / "a.pdf").read_bytes(), in_memory.data)

    def test_end_with_the_closing_text(self) -> None:
        doc = Document(self.folder / "a.pdf")
        doc.finish("% the end")
        doc.finish()
        self.assertTrue((self.folder / "a.pdf").read_bytes().endswith(b"%%EOF\r\n% the end\r\n"))

    def test_are_given_up_by_an_exception(self) -> None:
        path = self.folder / "a.pdf"
        with warnings.catch_warnings():
            warnings.simplefilter("error")
            with self.assertRaises(KeyError):
                with Document(path) as doc:
                    raise KeyError
            self.assertFalse(self.is_whole(path))
            with self.assertRaisesRegex(ValueError, "discarded"):
                doc.write_canvas()
            del doc
            gc.collect()

    def test_warn_when_they_are_dropped(self) -> None:
        with self.assertWarnsRegex(ResourceWarning, "a.pdf.*without finish"):
            Document(self.folder / "a.pdf")
            gc.collect()

    def test_are_dropped_quietly_where_that_is_no_mistake(self) -> None:
        with warnings.catch_warnings():
            warnings.simplefilter("error")
            Document(self.folder / "a.pdf").finish()
            Document(self.folder / "a.pdf").discard()
            Document.unopened(self.folder / "never.pdf")
            Document()
            failed = Document(self.folder / "a.pdf")
            with contextlib.suppress(jtpdf.Error):
                failed.open()
            del failed
            gc.collect()
        self.assertFalse((self.folder / "never.pdf").exists())

    def test_may_be_opened_again_after_a_failure(self) -> None:
        folder = self.folder / "later"
        doc = Document.unopened(folder / "a.pdf")
        with self.assertRaises(FileNotFoundError):
            doc.open()
        folder.mkdir()
        doc.open()
        doc.finish()
        self.assertTrue(self.is_whole(folder / "a.pdf"))


def literal(text: str) -> bytes:
    """The text as it stands in the file: UTF-16, control characters as octal."""
    units = text.encode("utf-16-be")
    return b"(\xfe\xff" + b"".join(
        bytes([byte]) if byte >= 0x20 else b"\\%03o" % byte for byte in units) + b")"


class Text(unittest.TestCase):
    def test_arrives_whole_with_characters_of_two_units(self) -> None:
        with tempfile.TemporaryDirectory() as folder:
            path = pathlib.Path(folder, "party 🎉.pdf")
            with Document(path, creator="🎉", author="by 🎉 me") as doc:
                doc.set_info("Title", "Party 🎉 2026")
                doc.write_image(ImageData(PIXELS, Compression.FLATE, 3, 2), name="n🎉",
                                entries={"K": "v🎉🎉w"})
            self.assertEqual([file.name for file in pathlib.Path(folder).iterdir()], [path.name])
            file = path.read_bytes()
            with Document(creator="🎉", author="by 🎉 me") as in_memory:
                pass
        for text in ("🎉", "by 🎉 me"):
            self.assertIn(literal(text), bytes(in_memory.data))
        for text in ("🎉", "by 🎉 me", "Party 🎉 2026", "n🎉", "v🎉🎉w"):
            self.assertIn(literal(text), file)

    def test_is_a_str(self) -> None:
        doc = Document()
        with self.assertRaisesRegex(TypeError, "value is b'x', no str"):
            doc.set_info("Title", b"x")  # type: ignore[arg-type]
        with self.assertRaisesRegex(TypeError, "name is 7, no str"):
            doc.write_image(ImageData(PIXELS, Compression.FLATE, 3, 2),
                            name=7)  # type: ignore[arg-type]


class Failures(unittest.TestCase):
    def test_are_oserrors_of_the_right_kind(self) -> None:
        with self.assertRaises(FileNotFoundError) as caught:
            Document("/no/such/folder/a.pdf")
        error = caught.exception
        assert isinstance(error, jtpdf.Error)
        self.assertEqual((error.errno, error.filename), (errno.ENOENT, "/no/such/folder/a.pdf"))
        self.assertEqual((error.function, error.code), ("InitPdfDoc", errno.ENOENT))
        self.assertFalse(error.refused)
        with self.assertRaises(IsADirectoryError):
            Document("/")

    def test_name_the_full_disk(self) -> None:
        doc = Document("/dev/full")
        with self.assertRaises(jtpdf.Error) as caught:
            doc.finish()
        self.assertEqual(caught.exception.errno, errno.ENOSPC)

    def test_are_refusals_whatever_failed_before(self) -> None:
        doc = Document()
        ctypes.set_errno(errno.ENOENT)
        with self.assertRaisesRegex(jtpdf.Error, "refused") as caught:
            doc.open()
        self.assertTrue(caught.exception.refused)

    def test_of_every_writer_raise(self) -> None:
        doc = Document.unopened()
        data = ImageData(PIXELS, Compression.FLATE, 3, 2)
        calls: dict[str, Callable[[], object]] = {
            "WritePdfCanvas": doc.write_canvas,
            "WritePdfPage": lambda: doc.write_page(jtpdf.Form(1), BOX),
            "WritePdfImage": lambda: doc.write_image(data),
            "WritePdfImageWithAlpha": lambda: doc.write_image_with_alpha(data, data),
            "WritePdfImageJPEG2000": lambda: doc.write_jpeg2000_image(data),
            "WritePdfICCProfile": lambda: doc.write_icc_profile(PIXELS),
            "FinalizePdfDoc": doc.finish,
        }
        for function, call in calls.items():
            with self.subTest(function), self.assertRaises(jtpdf.Error) as caught:
                call()
            self.assertEqual(caught.exception.function, function)

    def test_of_arguments_are_told_before_the_call(self) -> None:
        doc = Document()
        with self.assertRaisesRegex(ValueError, "value has a NUL at character 1"):
            doc.set_info("Title", "a\0b")
        with self.assertRaises(UnicodeEncodeError):
            doc.set_info("Title", "a\ud800")
        with self.assertRaisesRegex(ValueError, "name has a NUL"):
            doc.write_image(ImageData(b"", Compression.FLATE, 1, 1), name="\0")
        with self.assertRaisesRegex(TypeError, r"Form\(number=3\) is no Image"):
            doc.draw_image(jtpdf.Form(3))  # type: ignore[arg-type]
        with self.assertRaisesRegex(TypeError, r"Image\(number=3\) is no Form"):
            doc.write_page(jtpdf.Image(3), BOX)  # type: ignore[arg-type]
        with self.assertRaisesRegex(ValueError, "green is 256"):
            doc.fill_rectangle(BOX, (0, 256, 0))
        with self.assertRaisesRegex(ValueError, "width is 2147483648"):
            ImageData(b"", Compression.FLATE, 2**31, 1)
        for text in ("ff8000", "#ff800", "#gg8000"):
            with self.assertRaises(ValueError):
                Color.from_hex(text)


@contextlib.contextmanager
def read_only_map() -> Iterator[mmap.mmap]:
    with tempfile.TemporaryFile() as file:
        file.write(PIXELS)
        file.flush()
        with mmap.mmap(file.fileno(), 0, access=mmap.ACCESS_READ) as mapped:
            yield mapped


class Memory(unittest.TestCase):
    def written(self, data: Any) -> bytes:
        with Document() as doc:
            doc.write_image(ImageData(data, Compression.FLATE, 3, 2))
        return bytes(doc.data)

    def test_of_every_bytes_like_object_is_taken(self) -> None:
        with read_only_map() as mapped:
            for data in (bytearray(PIXELS), memoryview(PIXELS), memoryview(b"x" + PIXELS)[1:],
                         (ctypes.c_ubyte * 6)(*PIXELS), mapped):
                with self.subTest(type(data)):
                    self.assertEqual(self.written(data), self.written(PIXELS))

    def test_is_not_copied(self) -> None:
        data = bytearray(PIXELS)
        with _native.Borrowed(memoryview(data).toreadonly()[2:]) as memory:
            here = ctypes.addressof(ctypes.c_char.from_buffer(data))
            self.assertEqual((memory.address, memory.size), (here + 2, 4))
            with self.assertRaises(BufferError):  # held in place meanwhile
                data.append(0)
        del memory
        data.append(0)

    def test_in_pieces_or_large_elements_is_rejected(self) -> None:
        with self.assertRaises(BufferError):
            self.written(memoryview(PIXELS)[::2])
        with self.assertRaisesRegex(ValueError, "elements of 2 bytes"):
            self.written(memoryview(PIXELS).cast("H"))
        with self.assertRaises(TypeError):
            self.written("text")

    def test_of_the_result_outlives_the_document(self) -> None:
        with Document() as doc:
            doc.set_info("Title", "kept")
        view = doc.data
        copy = bytes(view)
        doc.discard()
        del doc
        gc.collect()
        other = [Document() for _ in range(50)]  # would take the place of what was freed
        self.assertEqual(view, copy)
        self.assertTrue(view.readonly)
        self.assertEqual(io.BytesIO().write(view), len(copy))
        del other

    def test_of_no_result_is_refused(self) -> None:
        with self.assertRaisesRegex(ValueError, "no bytes"):
            Document().data


class Diagnostics(unittest.TestCase):
    def test_switch_is_the_processes(self) -> None:
        self.assertFalse(jtpdf.diagnostic_mode())
        jtpdf.set_diagnostic_mode(True)
        self.assertTrue(lib.JTPDFGetDiagnosticMode())
        jtpdf.set_diagnostic_mode(False)
        self.assertFalse(jtpdf.diagnostic_mode())


if __name__ == "__main__":
    unittest.main()
