"""TIFF pages that pass through: fax data, JPEG, Deflate, LZW, stored in the PDF as they are."""
import os
import subprocess
import unittest

import numpy
from PIL import Image

from support import JtpdfTest, blocks, images, jpeg_bytes, run
from tiff_files import page, tiff

GROUP3, GROUP4, LZW, JPEG, DEFLATE = 3, 4, 5, 7, 8


def black_and_white(seed=1):
    return blocks(mode="L", seed=seed).point(lambda v: 255 if v > 127 else 0).convert("1")


class Stored(JtpdfTest):
    def tiffcp(self, source, *options):
        subprocess.run(["tiffcp", *options, source, self.path("made.tif")], check=True,
                       capture_output=True)
        return self.path("made.tif")

    def strips(self, path):
        with Image.open(path) as image:
            offsets, sizes = image.tag_v2[273], image.tag_v2[279]
        with open(path, "rb") as file:
            data = file.read()
        return [data[at:at + size] for at, size in zip(offsets, sizes)]

    def check(self, path, encoding, picture=None, messages=None, tolerance=4):
        """The PDF of a file, which shows the picture, stored by that encoding."""
        pdf = self.convert(path, messages=messages)
        image, = images(pdf)
        self.assertEqual(image["enc"], encoding)
        if encoding != "image":
            self.assertLessEqual(os.path.getsize(pdf), os.path.getsize(path) + 2000)
        with Image.open(path) as source:
            expected = (picture or source).convert("RGB")
        self.assertShows(pdf, expected, tolerance=tolerance)
        return pdf

    def stored_pixels(self, pdf):
        subprocess.run(["pdfimages", "-png", pdf, self.path("p")], check=True)
        with Image.open(self.path("p-000.png")) as image:
            image.load()
            return image

    def check_exactly(self, path, encoding):
        pdf = self.check(path, encoding)
        with Image.open(path) as source:
            self.assertEqual(self.stored_pixels(pdf).convert("RGB").tobytes(),
                             source.convert("RGB").tobytes())
        return pdf


class Fax(Stored):
    def setUp(self):
        super().setUp()
        self.source = self.save(black_and_white(), "bw.tif")
        self.all_rows = ("-r", "100000")

    def data_of(self, pdf):
        subprocess.run(["pdfimages", "-ccitt", pdf, self.path("c")], check=True)
        return self.get("c-000.ccitt")

    def test_one_strip_of_every_kind_is_stored_as_it_is(self):
        for kind in "g3:1d", "g3:2d", "g4":
            with self.subTest(kind):
                path = self.tiffcp(self.source, "-c", kind, *self.all_rows)
                self.assertEqual(self.data_of(self.check_exactly(path, "ccitt")),
                                 self.strips(path)[0])
                ends = self.get("out.pdf").count(b"/EndOfBlock true")
                self.assertEqual(ends, kind == "g4")  # whose end was seen

    def test_bits_in_reverse_order_are_turned(self):
        for kind in "g3:1d", "g3:2d", "g4":
            with self.subTest(kind):
                path = self.tiffcp(self.source, "-c", kind, "-f", "lsb2msb", *self.all_rows)
                turned = bytes(int(f"{byte:08b}"[::-1], 2) for byte in self.strips(path)[0])
                self.assertEqual(self.data_of(self.check_exactly(path, "ccitt")), turned)

    def test_rows_at_bytes_without_ends_of_lines(self):
        path = self.save(black_and_white(), "rle.tif", compression="tiff_ccitt",
                         tiffinfo={278: 1000})
        self.assertEqual(len(self.strips(path)), 1)
        self.assertEqual(self.data_of(self.check_exactly(path, "ccitt")), self.strips(path)[0])

    def test_white_runs_that_mean_black(self):
        path = self.tiffcp(self.source, "-c", "g4", *self.all_rows)
        with Image.open(path) as image:
            size = image.size
        for photometric in 0, 1:
            made = tiff(page(*size, self.strips(path)[0], (1,), photometric, _259=(3, (GROUP4,))))
            self.check_exactly(self.put(made, f"{photometric}.tif"), "ccitt")

    def test_several_strips_become_one(self):
        path = self.tiffcp(self.source, "-c", "g4", "-r", "16")
        self.assertGreater(len(self.strips(path)), 1)
        self.assertLessEqual(os.path.getsize(self.check_exactly(path, "image")),
                             os.path.getsize(path) + 2000)

    def test_what_readers_complain_of_is_decoded(self):
        path = self.tiffcp(self.source, "-c", "g3:fill", *self.all_rows)
        self.check_exactly(path, "image")

    def strip_of(self, data, kind=GROUP4, **fields):
        size = black_and_white().size
        return self.put(tiff(page(*size, data, (1,), 1, _259=(3, (kind,)), **fields)), "x.tif")

    def test_group_4_without_its_end_is_looked_through(self):
        whole = self.strips(self.tiffcp(self.source, "-c", "g4", *self.all_rows))[0]
        bits = "".join(f"{byte:08b}" for byte in whole)
        end = bits.rindex("000000000001" * 2)
        rows = int(bits[:end].ljust((end + 7) // 8 * 8, "0"), 2).to_bytes((end + 7) // 8, "big")
        pdf = self.check(self.strip_of(rows), "ccitt", black_and_white())
        self.assertIn(b"/EndOfBlock false", self.get("out.pdf"))
        self.convert(self.strip_of(whole[:len(whole) // 2]), messages=r"x\.tif: is damaged and may "
                     r"show faults \(libtiff: Premature EO")
        self.assertFails(1, r"x\.tif: cannot be decoded \(libtiff: .*cut off",
                         self.strip_of(b"\x02" * 99), "-o", pdf)

    def test_group_3_that_is_damaged_is_told(self):
        whole = self.strips(self.tiffcp(self.source, "-c", "g3:1d", *self.all_rows))[0]
        half = len(whole) // 2
        for bad in whole[:half], whole[:half] + bytes([0x55] * 40) + whole[half:]:
            status, _, error = run(self.strip_of(bad, GROUP3), "-o", self.path("o.pdf"))
            self.assertRegex(error, r"x\.tif: cannot be decoded \(libtiff: " if status else
                             r"x\.tif: is damaged and may show faults \(libtiff: ")

    def test_a_strip_that_is_not_all_there(self):
        whole = self.strips(self.tiffcp(self.source, "-c", "g4", *self.all_rows))[0]
        path = self.strip_of(whole, _279=(4, (len(whole) + 5000,)))
        self.assertFails(1, r"x\.tif: cannot be decoded \(libtiff: ", path, "-o",
                         self.path("o.pdf"))


class Jpeg(Stored):
    def jpeg_of(self, pdf):
        subprocess.run(["pdfimages", "-all", pdf, self.path("j")], check=True)
        return self.get("j-000.jpg")

    def strips_of(self, picture, rows, **options):
        return [jpeg_bytes(picture.crop((0, top, picture.width, min(top + rows, picture.height))),
                           **options) for top in range(0, picture.height, rows)]

    def tiff_of(self, picture, strips, rows, photometric=6, **fields):
        bits = (8,) * len(picture.getbands())
        return self.put(tiff(page(*picture.size, strips, bits, photometric, _259=(3, (JPEG,)),
                                  _278=(4, (rows,)), **fields)), "made.tif")

    def test_strips_become_one_jpeg(self):
        source = self.save(blocks(), "rgb.tif")
        for options in ("jpeg:r", "jpeg"), ("jpeg:r:95", "jpeg:95"):
            for option in options:
                for rows in 1000, 16, 32:
                    with self.subTest(option, rows=rows):
                        path = self.tiffcp(source, "-c", option, "-r", str(rows))
                        pdf = self.check(path, "jpeg", tolerance=30)
                        jpeg = self.jpeg_of(pdf)
                        for strip in self.strips(path):
                            at = strip.index(b"\xff\xda")
                            at += 2 + int.from_bytes(strip[at + 2:at + 4], "big")
                            self.assertIn(strip[at:-2], jpeg)
                        if ":r" in option:  # all colours whole, so that edges of strips don't blur
                            self.assertEqual(self.stored_pixels(pdf).tobytes(),
                                             Image.open(path).convert("RGB").tobytes())

    def test_greys_inks_and_white_at_zero(self):
        for mode, photometric in ("L", 1), ("L", 0), ("CMYK", 5):
            picture = blocks(mode=mode)
            strips = [strip.replace(b"Adobe", b"Other") for strip in self.strips_of(picture, 16)]
            path = self.tiff_of(picture, strips, 16, photometric)
            with Image.open(path) as image:
                shown = image.convert("RGB")
            if mode == "CMYK":  # a reader's own colours
                self.assertEqual(images(self.convert(path))[0]["enc"], "jpeg")
                continue
            self.check(path, "jpeg", shown)

    def with_restarts(self, jpeg):
        return subprocess.run(["jpegtran", "-restart", "1"], input=jpeg, check=True,
                              capture_output=True).stdout

    def test_one_strip_that_is_progressive_or_has_restarts(self):
        picture = blocks()
        for strip in (jpeg_bytes(picture, progressive=True), jpeg_bytes(picture, optimize=True),
                      self.with_restarts(jpeg_bytes(picture))):
            path = self.tiff_of(picture, [strip], 1000)
            self.check(path, "jpeg", picture)

    def test_strips_that_are_not_of_one_jpeg_are_decoded(self):
        picture = blocks()
        kinds = {"other tables": [jpeg_bytes(picture.crop((0, y, 96, min(y + 16, 56))),
                                             quality=80 + y // 8) for y in range(0, 56, 16)],
                 "restarts": [*map(self.with_restarts, self.strips_of(picture, 16))],
                 "progressive": self.strips_of(picture, 16, progressive=True),
                 "other sampling": self.strips_of(picture, 16)[:3]
                 + self.strips_of(picture, 16, subsampling=2)[3:]}
        for kind, strips in kinds.items():
            with self.subTest(kind):
                path = self.tiff_of(picture, strips, 16)
                status, _, error = run(path, "-o", self.path("out.pdf"))
                if status == 0:
                    self.assertEqual(images(self.path("out.pdf"))[0]["enc"], "image")
                    self.assertShows(self.path("out.pdf"), picture)
                else:  # libtiff does not know it either
                    self.assertRegex(error, r"cannot be decoded \(libtiff")

    def test_rows_that_are_no_whole_blocks_are_decoded(self):
        picture = blocks()
        path = self.tiff_of(picture, self.strips_of(picture, 12), 12)
        self.check(path, "image", picture)

    def test_tiles_are_decoded(self):
        path = self.tiffcp(self.save(blocks(), "rgb.tif"), "-c", "jpeg:95", "-t", "-w", "32", "-l",
                           "32")
        self.check(path, "image", blocks(), tolerance=30)


class Packed(Stored):
    def modes(self):
        yield "L", blocks(mode="L")
        yield "RGB", blocks()
        yield "P", blocks().quantize(200)
        yield "1", black_and_white()

    def test_deflate_and_lzw_are_stored_as_they_are(self):
        for name, picture in self.modes():
            source = self.save(picture, "source.tif")
            for kind in ("lzw", "zip") if name == "1" else ("lzw:1", "zip:1", "lzw:2", "zip:2"):
                with self.subTest(name, kind=kind):
                    path = self.tiffcp(source, "-c", kind, "-r", "100000")
                    pdf = self.check_exactly(path, "image")
                    stored = self.get("out.pdf")
                    self.assertIn(self.strips(path)[0], stored)
                    self.assertIn(b"/LZWDecode" if "lzw" in kind else b"/FlateDecode", stored)
                    self.assertEqual(b"/Predictor 2" in stored, ":2" in kind)
                    self.assertEqual(images(pdf)[0]["color"],
                                     {"RGB": "rgb", "P": "index"}.get(name, "gray"))

    def test_inks(self):
        picture = blocks(mode="CMYK")
        path = self.tiffcp(self.save(picture, "source.tif"), "-c", "zip:2", "-r", "1000")
        pdf = self.convert(path)
        self.assertIn(self.strips(path)[0], self.get("out.pdf"))
        subprocess.run(["pdfimages", "-tiff", pdf, self.path("t")], check=True)
        with Image.open(self.path("t-000.tif")) as image:
            self.assertEqual(image.mode, "CMYK")
            self.assertEqual(image.tobytes(), picture.tobytes())

    def test_palettes_of_every_depth(self):
        for bits in 1, 2, 4:
            colours = 1 << bits
            indices = (numpy.arange(96) // 8 + numpy.arange(56)[:, None] // 8) % colours
            rows = numpy.packbits(numpy.unpackbits(indices.astype(numpy.uint8)[..., None], -1)
                                  [..., 8 - bits:].reshape(56, -1), -1)
            table = tuple(int(v) * 257 for c in range(3) for v in
                          (numpy.arange(colours) * (37 + 50 * c) % 256))
            made = tiff(page(96, 56, rows.tobytes(), (bits,), 3, _320=(3, table)))
            path = self.tiffcp(self.put(made, "p.tif"), "-c", "zip", "-r", "1000")
            self.check(path, "image")
            self.assertIn(self.strips(path)[0], self.get("out.pdf"))

    def test_sixteen_bits_where_they_lie_as_in_pdf(self):
        samples = (numpy.asarray(blocks(mode="L")).astype(int) * 257 - 128).clip(0)
        for order, kind in ("<", "<u2"), (">", ">u2"):
            made = tiff(page(96, 56, samples.astype(kind).tobytes(), (16,)), order=order)
            for option in "zip:1", "lzw:1", "lzw:2":
                path = self.tiffcp(self.put(made, "16.tif"), "-c", option, "-r", "1000",
                                   "-B" if order == ">" else "-L")
                pdf = self.convert(path)
                # Poppler does not know their predictor.
                self.assertEqual(self.strips(path)[0] in self.get("out.pdf"),
                                 order == ">" and option[-1] == "1")
                self.assertEqual(images(pdf)[0]["bpc"], "16")
                self.assertShows(pdf, Image.fromarray((samples >> 8).astype(numpy.uint8)))

    def test_white_at_zero(self):
        grey = numpy.asarray(blocks(mode="L"))
        made = tiff(page(96, 56, (255 - grey).tobytes(), photometric=0))
        path = self.tiffcp(self.put(made, "w.tif"), "-c", "lzw:2", "-r", "1000")
        self.check(path, "image", blocks(mode="L"))
        self.assertIn(self.strips(path)[0], self.get("out.pdf"))

    def test_old_lzw_is_decoded(self):
        values = [256, *range(40, 136), 257]  # clear, data, end: nine bits each, the lowest first
        bits = sum(value << 9 * i for i, value in enumerate(values))
        data = bits.to_bytes((9 * len(values) + 7) // 8, "little")
        path = self.put(tiff(page(96, 1, data, _259=(3, (LZW,)))), "old.tif")
        pdf = self.convert(path, "-S", "A6")
        self.assertEqual(list(self.stored_pixels(pdf).convert("L").tobytes()), values[1:-1])

    def test_what_is_damaged_or_short_is_refused(self):
        picture = Image.effect_noise((96, 56), 80)
        for kind in "lzw:1", "zip:1":
            path = self.tiffcp(self.save(picture, "n.tif"), "-c", kind, "-r", "1000")
            strip, = self.strips(path)
            number = {"l": LZW, "z": DEFLATE}[kind[0]]
            half = len(strip) // 2
            bad = {"cut": strip[:half], "rows": strip,
                   "bytes": strip[:half] + bytes([255] * 40) + strip[half + 40:]}
            for name, data in bad.items():
                with self.subTest(kind, name=name):
                    made = tiff(page(96, 57 if name == "rows" else 56, data,
                                     _259=(3, (number,))))
                    self.assertFails(1, r"bad\.tif: cannot be decoded", self.put(made, "bad.tif"),
                                     "-o", self.path("o.pdf"))


if __name__ == "__main__":
    unittest.main()
