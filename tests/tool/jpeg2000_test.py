"""JPEG 2000 files that are damaged, rare or rich: what becomes of them."""
import os
import struct
import subprocess
import unittest

import numpy
from PIL import Image

from pixels_test import over
from support import BLOCK, JtpdfTest, blocks, exif, images, page_boxes, render, run


def box(kind, data):
    return struct.pack(">I4s", len(data) + 8, kind) + data


def boxes(data):
    """The boxes of a run: place, size, name."""
    found, at = [], 0
    while at < len(data):
        size, name = struct.unpack(">I4s", data[at:at + 8])
        size = size or len(data) - at
        found.append((at, size, name))
        at += size
    return found


def with_boxes(jp2, inside=(), before=(), behind=()):
    """The file with more boxes: in the end of its header, before it, behind everything."""
    place = {name: (at, size) for at, size, name in boxes(jp2)}
    at, size = place[b"jp2h"]
    header = box(b"jp2h", jp2[at + 8:at + size] + b"".join(inside))
    return jp2[:at] + b"".join(before) + header + jp2[at + size:] + b"".join(behind)


def without(jp2, name):
    """The file without that box of its header."""
    place = {kind: (at, size) for at, size, kind in boxes(jp2)}
    at, size = place[b"jp2h"]
    inner = jp2[at + 8:at + size]
    kept = b"".join(inner[a:a + s] for a, s, kind in boxes(inner) if kind != name)
    return jp2[:at] + box(b"jp2h", kept) + jp2[at + size:]


class Jpeg2000Test(JtpdfTest):
    def jp2(self, picture=None, **options):
        path = self.save(picture or blocks(), "plain.jp2", **{"irreversible": False, **options})
        return self.get("plain.jp2")

    def compress(self, planes, size, layout, *options, name="made.jp2"):
        """Through opj_compress, from raw planes."""
        path = self.put(b"".join(plane.astype(numpy.uint8).tobytes() for plane in planes), "a.rawl")
        done = subprocess.run(
            ["opj_compress", "-i", path, "-o", self.path(name), "-F",
             f"{size[0]},{size[1]},{len(planes)},8,u@{layout}", "-mct", "0", *options],
            capture_output=True)
        self.assertEqual(done.returncode, 0, done.stderr)
        return self.get(name)


class Headers(Jpeg2000Test):
    """One field of the main header is damaged at a time: nobody shows a picture then."""
    # Where it is: the marker before it, and how far behind that.
    DAMAGES = {
        "tile width 0": (b"\xff\x51", 22, bytes(4)),
        "tile height 0": (b"\xff\x51", 26, bytes(4)),
        "tiles right of the picture": (b"\xff\x51", 30, struct.pack(">I", 5)),
        "tiles below the picture": (b"\xff\x51", 34, struct.pack(">I", 5)),
        "tiles of one pixel": (b"\xff\x51", 22, struct.pack(">II", 1, 1)),
        "no pixels across": (b"\xff\x51", 14, struct.pack(">I", 96)),
        "no pixels down": (b"\xff\x51", 18, struct.pack(">I", 56)),
        "no components": (b"\xff\x51", 38, bytes(2)),
        "more components than are described": (b"\xff\x51", 38, struct.pack(">H", 4)),
        "a step of 0 across": (b"\xff\x51", 41, b"\0"),
        "a step of 0 down": (b"\xff\x51", 42, b"\0"),
        "a depth of 39": (b"\xff\x51", 40, b"\x26"),
        "no coding style": (b"\xff\x52", 0, b"\xff\x64"),
        "a short coding style": (b"\xff\x52", 2, struct.pack(">H", 9)),
        "an order that there is not": (b"\xff\x52", 5, b"\x05"),
        "no layers": (b"\xff\x52", 6, bytes(2)),
        "a colour transform that there is not": (b"\xff\x52", 8, b"\x02"),
        "33 levels": (b"\xff\x52", 9, b"\x21"),
        "wide code blocks": (b"\xff\x52", 10, b"\x09"),
        "large code blocks": (b"\xff\x52", 10, b"\x05\x05"),
        "a code block style that there is not": (b"\xff\x52", 12, b"\x80"),
        "a wavelet that there is not": (b"\xff\x52", 13, b"\x02"),
        "precincts that are not there": (b"\xff\x52", 4, b"\x01"),
        "no quantisation": (b"\xff\x5c", 0, b"\xff\x64"),
        "a quantisation that there is not": (b"\xff\x5c", 4, b"\x43"),
        "quantisation of fewer levels": (b"\xff\x52", 9, b"\x10"),
        "a tile that there is not": (b"\xff\x90", 4, struct.pack(">H", 9)),
        "a tile of no length": (b"\xff\x90", 6, struct.pack(">I", 13)),
        "no marker": (b"\xff\x52", 0, b"\x12\x34"),
    }

    def test_every_damage_is_told_before_anything_is_written(self):
        whole = self.jp2()
        start = whole.index(b"\xff\x4f\xff\x51")
        for damage, (marker, offset, value) in self.DAMAGES.items():
            at = whole.index(marker, start) + offset
            data = whole[:at] + value + whole[at + len(value):]
            for name, content in (("a.jp2", data), ("a.j2k", data[start:])):
                with self.subTest(damage, name=name):
                    self.assertNotEqual(data, whole)
                    self.assertFails(1, rf"{name}: (is damaged: |ends before its picture)",
                                     self.put(content, name), "--dry-run")

    def test_headers_of_different_pictures(self):
        whole = self.jp2()
        at = whole.index(b"ihdr") + 4
        for offset, value in ((0, struct.pack(">I", 57)), (4, struct.pack(">I", 97)),
                              (8, struct.pack(">H", 1))):
            data = whole[:at + offset] + value + whole[at + offset + len(value):]
            self.assertFails(1, "its two JPEG 2000 headers are of different pictures",
                             self.put(data, "a.jp2"), "--dry-run")

    def test_a_tile_that_is_missing(self):
        whole = self.jp2(tile_size=(48, 56))
        start = whole.index(b"\xff\x4f\xff\x51")
        first = whole.index(b"\xff\x90", start)
        length = struct.unpack(">I", whole[first + 6:first + 10])[0]
        for data in (whole[:first] + whole[first + length:],
                     whole[:first + length] + b"\xff\xd9"):
            self.assertFails(1, "ends before its picture does", self.put(data[start:], "a.j2k"),
                             "--dry-run")
        picture = self.convert(self.put(whole, "b.jp2"))
        self.assertShows(picture, blocks())

    def test_tile_parts_that_are_missing(self):
        planes = [numpy.asarray(band) for band in blocks().split()]
        whole = self.compress(planes, blocks().size, "1x1:1x1:1x1", "-TP", "R", name="made.j2k")
        parts = [at for at in range(len(whole)) if whole[at:at + 4] == b"\xff\x90\0\x0a"]
        self.assertGreater(len(parts), 2)
        self.assertShows(self.convert(self.put(whole, "whole.j2k")), blocks())
        for end in b"", b"\xff\xd9":
            self.assertFails(1, "ends before its picture does",
                             self.put(whole[:parts[-1]] + end, "a.j2k"), "--dry-run")


class Mended(Jpeg2000Test):
    def check(self, data, reason, name="a.jp2", picture=None):
        pdf = self.convert(self.put(data, name), messages=rf"(?m)^jtpdf: .*{name}: is damaged "
                           rf"\({reason}\), but could be decoded$")
        self.assertEqual(images(pdf)[0]["enc"], "image")
        self.assertShows(pdf, over(picture or blocks(), "white"))

    def test_a_codestream_without_its_end(self):
        whole = self.jp2()
        start = whole.index(b"\xff\x4f\xff\x51")
        reason = "its codestream has no end marker"
        at = start - 8
        right = whole[:at] + struct.pack(">I", len(whole) - 2 - at) + whole[at + 4:-2]
        part = whole.index(b"\xff\x90", start) + 6
        open_end = whole[:part] + bytes(4) + whole[part + 4:]
        for data in right, whole[:-2], whole[:-1], whole[:-2] + bytes(9), open_end[:-2]:
            self.check(data, reason)
        self.check(whole[start:-2], reason, "a.j2k")
        rgba = self.jp2(blocks(mode="RGBA"))
        self.check(rgba[:-2], reason, picture=blocks(mode="RGBA"))

    def test_boxes_of_wrong_lengths(self):
        whole = self.jp2()
        place = {name: (at, size) for at, size, name in boxes(whole)}
        at, size = place[b"jp2c"]
        for wrong in (5, 40, size - 300, size + 1, size + 5000, 0xFFFFFFFF):
            with self.subTest(wrong=wrong):
                self.check(whole[:at] + struct.pack(">I", wrong) + whole[at + 4:],
                           "a box has a wrong length")
        self.check(whole[:at] + struct.pack(">I", size - 2) + whole[at + 4:],
                   "its codestream has no end marker")
        for name in b"ftyp", b"jp2h":
            at, size = place[name]
            for wrong in (3, 7, 99_999):
                self.check(whole[:at] + struct.pack(">I", wrong) + whole[at + 4:],
                           "it has no header, or a damaged one")
        self.check(whole + b"more, which is no box", "a box has a wrong length")

    def test_files_without_a_header(self):
        whole = self.jp2()
        (at, size), = [(at, size) for at, size, name in boxes(whole) if name == b"jp2h"]
        self.check(whole[:at] + whole[at + size:], "it has no header, or a damaged one")
        self.check(without(whole, b"ihdr"), "it has no header, or a damaged one")

    def test_depths_that_differ(self):
        whole = self.jp2()
        at = whole.index(b"ihdr") + 4 + 10
        self.check(whole[:at] + b"\x0f" + whole[at + 1:], "its headers differ in depth")

    def test_what_cannot_be_decoded_is_refused(self):
        whole = self.jp2()
        self.assertFails(1, "ends before its picture does", self.put(whole[:-300], "a.jp2"),
                         "--dry-run")
        start = whole.index(b"\xff\x4f\xff\x51")
        self.assertFails(1, "ends before its picture does", self.put(whole[:start], "a.jp2"),
                         "--dry-run")


class Bare(Jpeg2000Test):
    def test_a_codestream_is_put_into_boxes(self):
        for mode, colour in ("L", 17), ("RGB", 16):
            with self.subTest(mode):
                whole = self.jp2(blocks(mode=mode))
                stream = whole[whole.index(b"\xff\x4f\xff\x51"):]
                pdf = self.convert(self.put(stream + b"more", "a.j2k"))
                self.assertEqual(images(pdf)[0]["enc"], "jpx")
                self.assertShows(pdf, blocks(mode=mode))
                head = (box(b"jP  ", b"\r\n\x87\n") + box(b"ftyp", b"jp2 \0\0\0\0jp2 ")
                        + box(b"jp2h", box(b"ihdr", struct.pack(">IIHBBBB", 56, 96, len(mode), 7, 7,
                                                                0, 0))
                              + box(b"colr", struct.pack(">BBBI", 1, 0, 0, colour))))
                self.assertIn(head + box(b"jp2c", stream), self.get("out.pdf"))
                with Image.open(self.put(head + box(b"jp2c", stream), "b.jp2")) as image:
                    self.assertEqual(image.mode, mode)

    def test_others_are_decoded(self):
        for mode in "LA", "RGBA":
            whole = self.jp2(blocks(mode=mode))
            pdf = self.convert(self.put(whole[whole.index(b"\xff\x4f\xff\x51"):], "a.j2k"))
            self.assertEqual(images(pdf)[0]["enc"], "image")
            self.assertShows(pdf, over(blocks(mode=mode), "white"))


class Colours(Jpeg2000Test):
    def pixels(self, data):
        pdf = self.convert(self.put(data, "a.jp2"), "-S", "A6")
        subprocess.run(["pdfimages", "-png", pdf, self.path("p")], check=True)
        with Image.open(self.path("p-000.png")) as image:
            return numpy.asarray(image.convert("RGB"))

    def as_ycc(self, data):
        at = data.index(b"colr") + 4
        return data[:at + 3] + struct.pack(">I", 18) + data[at + 7:]

    def test_greys_of_ycc_are_grey(self):
        luma = numpy.arange(256).reshape(16, 16)
        middle = numpy.full((16, 16), 128)
        made = self.compress([luma, middle, middle], (16, 16), "1x1:1x1:1x1",
                             "-n", "1")
        self.assertEqual(self.pixels(self.as_ycc(made)).tolist(),
                         numpy.stack([luma] * 3, -1).tolist())

    def test_chroma_below_an_odd_offset_stays_where_it_is(self):
        # Chroma for two by two pixels, red in its last column and row alone.
        width, height = 14, 12
        luma = numpy.full((height, width), 128)
        blue = numpy.full((6, 7), 128)
        red = blue.copy()
        red[:, -1] = red[-1, :] = 255
        made = self.as_ycc(self.compress([luma, blue, red], (width, height), "1x1:2x2:2x2", "-n",
                                         "1"))
        at = made.index(b"\xff\x4f\xff\x51") + 8
        self.assertEqual(struct.unpack(">6I", made[at:at + 24]), (14, 12, 0, 0, 14, 12))
        # The same samples one pixel farther: the first column and row lie before any chroma.
        moved = made[:at] + struct.pack(">6I", 15, 13, 1, 1, 15, 13) + made[at + 24:]
        for data, last in (made, 2), (moved, 1):
            pdf = self.convert(self.put(data, "a.jp2"))
            shown = numpy.asarray(render(pdf, dpi=960))[4::10, 4::10].astype(int)
            self.assertEqual(shown.shape, (height, width, 3))
            for place in (0, 0), (5, 0), (0, 5), (5, 5):
                self.assertEqual(shown[place].tolist(), [128] * 3)
            for place in (5, -1), (-1, 5), (-1, -1):
                self.assertGreater(shown[place][0], 250)
            self.assertEqual((shown[0, :, 0] > 250).sum(), last)  # columns of red

    def test_premultiplied_colours_are_divided_and_rounded(self):
        alpha = numpy.array([[1, 2, 3, 100, 127, 128, 200, 254, 255] * 2])
        grey = alpha * 5 // 7
        made = self.compress([grey, alpha], (18, 1), "1x1:1x1", "-n", "1")
        cdef = box(b"cdef", struct.pack(">H6H", 2, 0, 0, 1, 1, 2, 0))
        self.assertEqual(self.pixels(with_boxes(without(made, b"cdef"), [cdef])).tolist(),
                         numpy.stack([(2 * grey * 255 + alpha) // (2 * alpha)] * 3, -1).tolist())


class Facts(Jpeg2000Test):
    def resolution(self, *kinds):
        inner = b"".join(box(kind, struct.pack(">HHHHBB", metre, 1, metre, 1, 0, 0))
                         for kind, metre in kinds)
        data = with_boxes(self.jp2(), [box(b"res ", inner)])
        return page_boxes(self.convert(self.put(data, "a.jp2")))[0][0]

    def test_the_display_resolution_counts_wherever_it_stands(self):
        capture, display = (b"resc", 11811), (b"resd", 3937)  # 300 and 100 dpi
        self.assertAlmostEqual(self.resolution(capture), 96 * 72 / 300, 1)
        self.assertAlmostEqual(self.resolution(display), 96 * 72 / 100, 1)
        self.assertAlmostEqual(self.resolution(capture, display), 96 * 72 / 100, 1)
        self.assertAlmostEqual(self.resolution(display, capture), 96 * 72 / 100, 1)

    def test_exif_turns_the_page_and_says_its_resolution(self):
        upright = blocks()
        stored = self.jp2(upright.transpose(Image.ROTATE_90))
        adobe = bytes.fromhex("0537cdab9d0c4431a72afa561f2a113e")
        for head in b"JpgTiffExif->JP2", b"JpgTiffExif->JP2Exif\0\0", adobe:
            for order in "big", "little":
                uuid = box(b"uuid", head + exif(6, 192, order))
                for data in with_boxes(stored, before=[uuid]), with_boxes(stored, behind=[uuid]):
                    pdf = self.convert(self.put(data, "a.jp2"))
                    self.assertEqual(images(pdf)[0]["enc"], "jpx")
                    self.assertEqual(page_boxes(pdf)[0], (48 * 72 / 96, 28 * 72 / 96))
                    self.assertSamePicture(render(pdf, dpi=192), upright)
        other = with_boxes(stored, before=[box(b"uuid", b"0123456789abcdef" + exif(6))])
        self.assertShows(self.convert(self.put(other, "a.jp2")), upright.transpose(Image.ROTATE_90))

    def test_of_several_pictures_the_first_is_used_with_a_note(self):
        whole = self.jp2()
        (at, size), = [(at, size) for at, size, name in boxes(whole) if name == b"jp2c"]
        pdf = self.convert(self.put(whole[:at] + box(b"jp2c", whole[at + 8:]) * 3, "a.jp2"),
                           messages=r"a\.jp2: only the first of its 3 pictures was used")
        self.assertShows(pdf, blocks())


if __name__ == "__main__":
    unittest.main()
