"""Objects of one's own: their methods write what the C functions write, images what PDF has for them."""

import gc
import re
import unittest
import weakref
import zlib
from typing import Callable, Dict, List, Tuple

import jtpdf
from jtpdf import Colors, Document, Filter, Image, ImageObject, Object

PAGE = (0, 0, 200, 100)


def objects_of(doc: Document) -> Dict[int, bytes]:
    """The objects of a finished document by their numbers."""
    found = re.findall(rb"(?<=\r\n)(\d+) 0 obj\r\n(.*?)endobj\r\n", bytes(doc.data), re.DOTALL)
    return {int(number): text for number, text in found}


def first_object(use: Callable[[Document], object]) -> bytes:
    with Document() as doc:
        use(doc)
    return objects_of(doc)[2]


def lines(*texts: str) -> bytes:
    return "".join(text + "\r\n" for text in texts).encode("latin-1")


class Objects(unittest.TestCase):
    def test_are_written_under_their_numbers(self) -> None:
        with Document() as doc:
            later = doc.reserve_object()
            first = doc.write_object(f"[ {later} ]")
            self.assertEqual(doc.write_object("(x)", reserved=later), later)
            stream = doc.write_stream({"/A/B": "1"}, b"ab", memoryview(b"cde"))
            reserved = doc.reserve_object()
            doc.write_stream({}, b"", reserved=reserved)
        objects = objects_of(doc)
        self.assertEqual((later.number, first.number, stream.number), (2, 3, 4))
        self.assertEqual(objects[2], lines("(x)"))
        self.assertEqual(objects[3], lines("[ 2 0 R ]"))
        self.assertEqual(objects[4], lines("<<", "/A", "<<", "/B 1", ">>", "/Length 5", ">>", "stream",
                                           "abcde", "endstream"))
        self.assertEqual(objects[5], lines("<<", "/Length 0", ">>", "stream", "", "endstream"))

    def test_that_are_none_are_refused(self) -> None:
        doc = Document()
        problems: List[Tuple[str, Callable[[], object]]] = [
            ("WritePdfObject", lambda: doc.write_object("[ 1")),
            ("WritePdfStreamPieces", lambda: doc.write_stream({"Width": "1"}, b"x")),
            ("SetPdfCatalogEntry", lambda: doc.set_catalog_entry("/A", "1 2")),
            ("SetPdfContentEncoder", lambda: doc.set_content_encoder(zlib.compress, "Flate"))]
        for function, problem in problems:
            with self.assertRaises(jtpdf.Error) as caught:
                problem()
            self.assertEqual(caught.exception.function, function)
        with self.assertRaisesRegex(ValueError, "value has characters that are no ASCII"):
            doc.set_catalog_entry("/Lang", "(ä)")
        with self.assertRaisesRegex(ValueError, "key has a NUL"):
            doc.set_page_entry("/A\0", "1")
        with self.assertRaisesRegex(TypeError, "operators is 7"):
            doc.draw_content(7)  # type: ignore[arg-type]

    def test_belong_to_their_document(self) -> None:
        doc, other = Document(), Document()
        with self.assertRaisesRegex(ValueError, "reserved belongs to another document"):
            other.write_object("1", reserved=doc.reserve_object())
        mask = other.write_image_object(ImageObject([b"x"], 1, 1, colors=Colors.gray()))
        with self.assertRaisesRegex(ValueError, "mask belongs to another document"):
            doc.write_image_object(ImageObject([b"abc"], 1, 1, soft_mask=mask))
        with self.assertRaisesRegex(TypeError, "is no Object"):
            doc.write_object("1", reserved=Image(2))  # type: ignore[arg-type]

    def test_entries_boxes_turns_and_bookmarks(self) -> None:
        with Document(unit="in") as doc:
            doc.set_catalog_entry("/PageLayout", "/SinglePage")
            doc.set_canvas_entry("/Resources/Font/F1", "<< /Type /Font >>")
            doc.set_page_entry("/UserUnit", "2.0")
            doc.set_page_box("trim", (0.5, 0.25, 1, 1))
            doc.turn_page(-1)
            doc.add_bookmark("Página")
            doc.add_bookmark("below", 0, level=1)
            doc.set_open_page(0, "/XYZ null null 1.5")
            doc.add_page((0, 0, 2, 2))
            self.assertEqual(doc.page_count, 1)
            with self.assertRaisesRegex(ValueError, "kind is 'media', none of bleed, trim, art"):
                doc.set_page_box("media", PAGE)  # type: ignore[arg-type]
        data = bytes(doc.data)
        for line in ("/PageLayout /SinglePage", "/F1 << /Type /Font >>", "/UserUnit 2.0",
                     "/TrimBox [36 18 108 90]", "/Rotate 270", "/Dest [4 0 R /Fit]",
                     "/OpenAction [4 0 R /XYZ null null 1.5]"):
            self.assertIn(lines(line), data)

    def test_text_is_in_a_font_of_the_readers(self) -> None:
        def draw(doc: Document) -> None:
            doc.draw_text("Café (5 €) \\", 72, 10, 12.5, color="#ff0033", font="Times-Bold")
            doc.add_page(PAGE)
        form = first_object(draw)
        self.assertIn(lines(r"q BT 1 0 0.2 rg /Times-Bold 12.5 Tf 72 10 Td "
                            r"(Caf\351 \(5 \200\) \\) Tj ET Q"), form)
        self.assertIn(b"/Times-Bold << /Type /Font", form)
        with self.assertRaisesRegex(ValueError, "text has '日', which these fonts lack"):
            Document().draw_text("日", 0, 0, 1)


class Compressed(unittest.TestCase):
    def drawn(self, doc: Document) -> None:
        for i in range(100):
            doc.fill_rectangle((i, i, 10, 10), "#d62839")
        doc.add_page(PAGE)

    def test_in_one_word(self) -> None:
        with Document() as plain:
            self.drawn(plain)
        with Document(compress=True) as doc:
            self.drawn(doc)
        content = objects_of(doc)[2]
        self.assertIn(b"/Filter /FlateDecode\r\n", content)
        self.assertLess(5 * len(doc.data), len(plain.data))
        stream = content.partition(b"stream\r\n")[2].rpartition(b"\r\nendstream")[0]
        self.assertIn(zlib.decompress(stream), bytes(plain.data))

    def test_what_the_encoder_raises_comes_out(self) -> None:
        def fail(data: bytes) -> bytes:
            raise KeyError(len(data))
        doc = Document()
        doc.set_content_encoder(fail)
        with self.assertRaises(KeyError):
            self.drawn(doc)
        doc.set_content_encoder(zlib.compress)
        doc.write_canvas()
        doc.discard()

    def test_leaves_nothing_behind(self) -> None:
        doc = Document(compress=True)
        self.drawn(doc)
        alive = weakref.ref(doc._encoder)
        gc.disable()
        try:
            del doc
            self.assertIsNone(alive())
        finally:
            gc.enable()


class Images(unittest.TestCase):
    def written(self, image: ImageObject) -> bytes:
        return first_object(lambda doc: doc.write_image_object(image))

    def expect(self, image: ImageObject, *entries: str) -> None:
        self.assertEqual(self.written(image), lines("<<", *entries, "/Length 4", ">>", "stream", "data",
                                                    "endstream"))

    def test_predictor_palette_and_colour_key(self) -> None:
        palette = Colors.indexed(Colors.rgb(), b"\xff\0\0\0\xff\0")
        self.expect(ImageObject([b"da", b"ta"], 4, 2, Filter.FLATE, 4, palette, predictor=15,
                                color_key=(1, 1)),
                    "/BitsPerComponent 4", "/ColorSpace [/Indexed /DeviceRGB 1 <FF000000FF00>]",
                    "/DecodeParms", "<<", "/BitsPerComponent 4", "/Colors 1", "/Columns 4",
                    "/Predictor 15", ">>", "/Filter /FlateDecode", "/Height 2", "/Mask [1 1]",
                    "/Subtype /Image", "/Type /XObject", "/Width 4")

    def test_ccitt(self) -> None:
        self.expect(ImageObject([b"data"], 4, 2, Filter.CCITT_G4, 1, Colors.gray()),
                    "/BitsPerComponent 1", "/ColorSpace /DeviceGray", "/DecodeParms", "<<",
                    "/Columns 4", "/K -1", "/Rows 2", ">>", "/Filter /CCITTFaxDecode", "/Height 2",
                    "/Subtype /Image", "/Type /XObject", "/Width 4")
        self.expect(ImageObject([b"data"], 4, 2, Filter.CCITT_G3_2D, stencil=True, decode=(1, 0),
                                black_is_1=True, byte_aligned=True, end_of_line=True,
                                end_of_block=False),
                    "/Decode [1 0]", "/DecodeParms", "<<", "/BlackIs1 true", "/Columns 4",
                    "/EncodedByteAlign true", "/EndOfBlock false", "/EndOfLine true", "/K 1",
                    "/Rows 2", ">>", "/Filter /CCITTFaxDecode", "/Height 2", "/ImageMask true",
                    "/Subtype /Image", "/Type /XObject", "/Width 4")

    def test_jpeg2000_says_its_colours_itself(self) -> None:
        self.expect(ImageObject([b"data"], 4, 2, Filter.JPEG2000, interpolate=True),
                    "/Filter /JPXDecode", "/Height 2", "/Interpolate true", "/Subtype /Image",
                    "/Type /XObject", "/Width 4")

    def test_masks_globals_and_profiles(self) -> None:
        with Document() as doc:
            mask = doc.write_image_object(ImageObject([b"data"], 1, 1, colors=Colors.gray(),
                                                      matte=(1, 0.5, 0)))
            inks = doc.write_icc_colors(b"data", 4, Filter.FLATE)
            image = doc.write_image_object(ImageObject(
                [b"data"], 1, 1, Filter.JPEG, colors=inks, soft_mask=mask,
                decode=(1, 0, 1, 0, 1, 0, 1, 0)))
            shared = doc.write_stream({}, b"data")
            fax = doc.write_image_object(ImageObject(
                [b"data"], 1, 1, Filter.JBIG2, 1, Colors.gray(), jbig2_globals=shared,
                stencil_mask=mask))
            doc.draw_image(image, PAGE)
            doc.add_page(PAGE)
        objects = objects_of(doc)
        self.assertIn(b"/Matte [1 0.5 0]\r\n", objects[2])
        self.assertEqual(objects[3], lines("<<", "/Alternate /DeviceCMYK", "/Filter /FlateDecode",
                                           "/N 4", "/Length 4", ">>", "stream", "data", "endstream"))
        for line in ("/ColorSpace [/ICCBased 3 0 R]", "/SMask 2 0 R", "/Decode [1 0 1 0 1 0 1 0]"):
            self.assertIn(lines(line), objects[image.number])
        for line in ("/JBIG2Globals 5 0 R", "/Mask 2 0 R"):
            self.assertIn(lines(line), objects[fax.number])

    def test_that_cannot_be_are_refused_by_name(self) -> None:
        gray = Colors.gray()
        problems: List[Tuple[str, Callable[[], object]]] = [
            ("width is 0", lambda: ImageObject([], 0, 1)),
            ("height is -1", lambda: ImageObject([], 1, -1)),
            ("bits_per_component is 3", lambda: ImageObject([], 1, 1, bits_per_component=3)),
            ("predictor is one of", lambda: ImageObject([], 1, 1, Filter.JPEG, predictor=2)),
            ("predictor is 9", lambda: ImageObject([], 1, 1, Filter.LZW, predictor=9)),
            ("decode has 2 numbers", lambda: ImageObject([], 1, 1, decode=(0, 1))),
            ("color_key has 1 numbers",
             lambda: ImageObject([], 1, 1, colors=gray, color_key=(1,))),
            ("one mask, not two",
             lambda: ImageObject([], 1, 1, soft_mask=Image(2), stencil_mask=Image(3))),
            ("palette has 5 bytes", lambda: Colors.indexed(Colors.cmyk(), b"12345"))]
        for problem, make in problems:
            with self.assertRaisesRegex(ValueError, problem):
                make()
        with self.assertRaisesRegex(ValueError, "components is 2"):
            Document().write_icc_colors(b"", 2)  # type: ignore[arg-type]
        self.assertEqual(str(Object(7)), "7 0 R")


if __name__ == "__main__":
    unittest.main()
