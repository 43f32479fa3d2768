#!/usr/bin/env python3
"""Holds the model itself against bytes worked out by hand.

The library and the model could share a mistake; these lines were written down before either.
"""

import unittest

import model
import sequence as seq
from model import CopyPart, Dict, IntToStr, MovePart, Num, PsString, StringList, ValidKey, wide

RED, BLUE = (255, 0, 0, 255), (0, 0, 255, 255)


def rendered(**entries):
    return Dict((key.encode(), value.encode()) for key, value in entries.items()).AsString()


class Formatting(unittest.TestCase):
    def test_numbers_have_four_decimals_and_at_most_29_characters(self):
        self.assertEqual(Num(0.00004), b"0.0000")
        self.assertEqual(Num(-0.00001), b"-0.0000")
        self.assertEqual(Num(1234.5), b"1234.5000")
        self.assertEqual(Num(1e25), b"10000000000000000905969664.00")
        self.assertEqual(Num(model.DEFAULT_NAN), b"-nan")

    def test_integers_keep_their_sign_in_front_of_the_zeros(self):
        self.assertEqual(IntToStr(-7, 4), b"-007")
        self.assertEqual(IntToStr(1234, 2), b"1234")
        self.assertEqual(IntToStr(5, 500), b"0" * 99 + b"5")

    def test_an_array_of_no_references_is_a_bare_bracket(self):
        self.assertEqual(model.AsRefArray(5, 3), b"[5 0 R 6 0 R 7 0 R]")
        self.assertEqual(model.AsRefArray(1, 0), b"]")

    def test_lines_get_their_blanks(self):
        lines = StringList()
        lines.Add(b"[", b"3", b"2", b"]", b"0", b"d")
        lines.Add(b"a", b"", b"b")
        self.assertEqual(lines.Text(), b"[3 2] 0 d\r\na  b")


class Texts(unittest.TestCase):
    def test_text_is_utf_16_with_escapes(self):
        library = model.Library()
        for text, body in (
            ("A(b)", b"\\000A\\000\\(\\000b\\000\\)"),
            ("a\\b", b"\\000a\\000\\\\\\000b"),
            ("\u00e9", b"\\000\xe9"),
            ("\u20ac", b" \xac"),
            ("\u010a", b"\\001\\012"),
            ("a\U0001f600", b"\\000a"),
        ):
            self.assertEqual(PsString(library, wide(text)), b"(\xfe\xff" + body + b")")

    def test_what_cannot_be_converted_is_empty(self):
        library = model.Library()
        for units in ([], [0x1F600], [0xD800], [0x61, 0xD800], [0x110000], [-1]):
            self.assertEqual(PsString(library, units), b"()")


class Dictionaries(unittest.TestCase):
    def test_keys_are_made_valid(self):
        self.assertEqual(ValidKey(b" /My Key\t"), b"/MyKey")
        self.assertEqual(ValidKey(b"\x80\xff"), b"/JT_DUMMY_KEY")
        self.assertEqual(ValidKey(b"Type"), b"/Type")

    def test_components_are_cut_off_as_if_they_had_their_solidus(self):
        self.assertEqual([CopyPart(p) for p in (b"/A/B/C", b"A/B", b"//A")], [b"/A", b"/A", b""])
        self.assertEqual(MovePart(b"/A/B"), (b"/A", b"/B"))
        self.assertEqual(MovePart(b"A/B"), (b"/A", b"B"))

    def test_paths_nest(self):
        for entries, text in (
            ({"/A/B": "1", "/C": "2"}, "/A|<<|/B 1|>>|/C 2"),
            ({"/R/A": "1", "/R/B": "2"}, "/R|<<|/A 1|/B 2|>>"),
            ({"/A/B/x": "1", "/A/C/y": "2"}, "/A|<<|/B|<<|/x 1|>>|/C|<<|/y 2|>>|>>"),
            ({"/A/k": "1", "/B/A/x": "2"}, "/A|<<|/k 1|/B|<<|/x 2|>>|>>"),
            ({"Abc": "v"}, "/Abc|<<|Abc v"),
            ({"/Length": "1", "/Stream": "2"}, ""),
            (
                {
                    "/Type": "/Page",
                    "/Resources/ProcSet": "[/PDF /ImageC]",
                    "/Resources/XObject/Im1": "7 0 R",
                    "/Length": "120",
                },
                "/Resources|<<|/ProcSet [/PDF /ImageC]|/XObject|<<|/Im1 7 0 R|>>|>>|/Type /Page",
            ),
        ):
            self.assertEqual(rendered(**entries), text.replace("|", "\r\n").encode())


class Drawing(unittest.TestCase):
    def drawn(self, draw):
        canvas = model.Canvas(1.0)
        draw(canvas)
        return canvas.contents.lines[1:]

    def test_image(self):
        lines = self.drawn(lambda c: c.Image(12, model.Box(10.0, 20.0, 30.0, 40.0)))
        self.assertEqual(
            lines,
            [
                b"q 1 0 0 1 25.0000 40.0000 cm 1.0000 0.0000 -0.0000 1.0000 0 0 cm "
                b"30.0000 0 0 40.0000 -15.0000 -20.0000 cm  /Im12 Do Q"
            ],
        )

    def test_rectangle(self):
        box = model.Box(10.0, 20.0, 30.0, 40.0)
        self.assertEqual(
            self.drawn(lambda c: c.Rectangle(box, RED, BLUE, 2.0)),
            [
                b"%rectangle",
                b"q",
                b"1.0000 0.0000 0.0000 rg",
                b"0.0000 0.0000 1.0000 RG",
                b"2.0000 w 1 0 0 1 25.0000 40.0000 cm 1.0000 0.0000 -0.0000 1.0000 0 0 cm "
                b"1 0 0 1 -15.0000 -20.0000 cm 0 0 30.0000 40.0000 re",
                b"B Q",
            ],
        )

    def test_circle(self):
        box = model.Box(0.0, 0.0, 100.0, 50.0)
        self.assertEqual(
            self.drawn(lambda c: c.Circle(box, RED, BLUE, 2.0)),
            [
                b"2.0000 w",
                b"1.0000 0.0000 0.0000 rg 0.0000 0.0000 1.0000 RG",
                b"q 1 0 0 1  50.0000 25.0000  cm",
                b"-49.0000 0  m",
                b"-49.0000 13.2428 -27.0374 24.0000 0 24.0000 c",
                b"27.0374 24.0000 49.0000 13.2428 49.0000 0 c",
                b"49.0000 -13.2428 27.0374 -24.0000 0 -24.0000 c",
                b"-27.0374 -24.0000 -49.0000 -13.2428 -49.0000 0 c",
                b"b Q",
            ],
        )


class Documents(unittest.TestCase):
    def test_an_empty_document(self):
        lines = seq.predict(
            ["CreateMemoryPdfDoc d0 0x1p+0", "InitPdfDoc d0"]
            + ["FinalizePdfDoc d0 -", "GetPdfData d0"]
        )
        data = bytes.fromhex(lines[3].split()[2])
        head = b"%PDF-1.5\r\n%\xe2\xe3\xcd\xd3\r\n1 0 obj\r\n<<\r\n/AIS false"
        self.assertTrue(data.startswith(head))
        self.assertIn(
            b"endobj\r\n2 0 obj\r\n<<\r\n/Count 0\r\n/Kids ]\r\n/Type /Pages\r\n>>\r\nendobj\r\n"
            b"3 0 obj\r\n<<\r\n/Pages 2 0 R\r\n/Type /Catalog\r\n>>\r\nendobj\r\n"
            b"4 0 obj\r\n<<\r\n/MGmk (\xfe\xff\\000f\\000a\\000l\\000s\\000e)\r\n/Producer (",
            data,
        )
        table = data.index(b"xref\r\n0 5\r\n0000000000 65535 f\r\n0000000017 00000 n\r\n")
        self.assertTrue(
            data.endswith(
                b"trailer\r\n<<\r\n/Size 5\r\n/Root 3 0 R\r\n/Info 4 0 R\r\n>>\r\nstartxref\r\n"
                b"%d\r\n%%%%EOF\r\n" % table
            )
        )

    def test_101_pages_have_two_levels_of_nodes(self):
        rect = "[0x0p+0,0x0p+0,0x1p+0,0x1p+0,0x0p+0]"
        lines = seq.predict(
            ["CreateMemoryPdfDoc d0 0x1p+0", "InitPdfDoc d0"]
            + ["repeat 101 WritePdfPage d0 2 %s %s" % (rect, rect)]
            + ["FinalizePdfDoc d0 -", "GetPdfData d0"]
        )
        data = bytes.fromhex(lines[-2].split()[2])
        counts = [int(line[7:]) for line in data.splitlines() if line.startswith(b"/Count ")]
        self.assertEqual(counts, [10] * 10 + [1] + [100, 1] + [101])

    def test_a_refusal_reports_the_errno_that_was_there(self):
        lines = seq.predict(
            ["JTPDFSetDiagnosticMode 1", "CreateMemoryPdfDoc d0 0x1p+0", "WritePdfCanvas d0 out"]
            + ["errno 2", "WritePdfCanvas d0 out"]
        )
        self.assertEqual(
            lines[2:6],
            [
                "2 WritePdfCanvas code=-1 out=-559038737 errno=0",
                "  err WritePdfCanvas: JTPDF error: "
                "Cannot write to a non-initialized document: iostream error",
                "4 WritePdfCanvas code=2 out=-559038737 errno=2",
                "  err WritePdfCanvas: JTPDF error: 2; No such file or directory",
            ],
        )


if __name__ == "__main__":
    unittest.main()
