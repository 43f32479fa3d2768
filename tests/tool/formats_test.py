"""BMP, GIF and PNM: every kind of them shows what other programs read in it."""
import struct
import subprocess
import unittest

import numpy
from PIL import Image

from pixels_test import over
from support import BLOCK, JtpdfTest, blocks, icc_profile, images, page_boxes, run, stored


class Bmp(JtpdfTest):
    def shows(self, data, picture, **options):
        pdf = self.convert(self.put(data, "a.bmp"), **options)
        self.assertShows(pdf, picture)
        return pdf

    def info(self, width, height, bits, pixels, compression=0, palette=b"", masks=b"", size=40,
             more=b""):
        """A file with a header of that size."""
        head = struct.pack("<IiiHHIIiiII", size, width, height, 1, bits, compression, 0, 3780, 3780,
                           len(palette) // 4, 0)[:size] + masks + more
        at = 14 + len(head) + len(palette)
        return b"BM" + struct.pack("<IHHI", at + len(pixels), 0, 0, at) + head + palette + pixels

    def rows(self, values, bits):
        """Rows from the lowest on, each filled up to four bytes."""
        packed = []
        for row in values[::-1]:
            text = "".join(format(int(v), f"0{bits}b") for v in row)
            text += "0" * (-len(text) % 32)
            packed.append(int(text, 2).to_bytes(len(text) // 8, "big"))
        return b"".join(packed)

    def test_what_pillow_writes(self):
        for mode in ("1", "L", "P", "RGB", "RGBA"):
            with self.subTest(mode=mode):
                picture = (blocks(6, 5).quantize(16) if mode == "P" else
                           blocks(6, 5, "L").point(lambda v: 255 * (v > 127)).convert("1")
                           if mode == "1" else blocks(6, 5, mode))
                path = self.save(picture, "a.bmp", dpi=(96, 96))
                pdf = self.convert(path)
                with Image.open(path) as image:
                    self.assertShows(pdf, over(image, "white"))
                self.assertEqual(page_boxes(pdf), [(36, 30)])

    def test_every_depth_of_palettes(self):
        for bits in 1, 2, 4, 8:
            with self.subTest(bits=bits):
                numbers = numpy.kron(numpy.arange(35).reshape(5, 7) % (1 << bits),
                                     numpy.ones((BLOCK, BLOCK), int))
                colours = numpy.random.default_rng(bits).integers(0, 256, (1 << bits, 3))
                palette = b"".join(bytes([b, g, r, 0]) for r, g, b in colours.tolist())
                picture = Image.fromarray(colours[numbers].astype(numpy.uint8))
                data = self.rows(numbers, bits)
                self.shows(self.info(7 * BLOCK, 5 * BLOCK, bits, data, palette=palette), picture)
                upside = self.rows(numbers[::-1], bits)
                self.shows(self.info(7 * BLOCK, -5 * BLOCK, bits, upside, palette=palette), picture)

    def test_the_first_header_with_three_bytes_for_a_colour(self):
        numbers = numpy.kron(numpy.arange(6).reshape(2, 3), numpy.ones((BLOCK, BLOCK), int))
        colours = [(10, 20, 30), (200, 0, 0), (0, 200, 0), (0, 0, 200), (99, 99, 0), (255,) * 3]
        palette = b"".join(bytes(c[::-1]) for c in colours) + bytes(30)
        head = struct.pack("<IHHHH", 12, 3 * BLOCK, 2 * BLOCK, 1, 4)
        data = self.rows(numbers, 4)
        file = b"BM" + struct.pack("<IHHI", 0, 0, 0, 26 + len(palette)) + head + palette + data
        self.shows(file, Image.fromarray(numpy.array(colours, numpy.uint8)[numbers]))

    def test_masks(self):
        picture = numpy.asarray(blocks(6, 5), int)
        cases = ((16, 0, (), (5, 5, 5)), (16, 3, (0xF800, 0x07E0, 0x001F), (5, 6, 5)),
                 (32, 3, (0x3FF00000, 0x000FFC00, 0x000003FF), (10, 10, 10)),
                 (32, 0, (), (8, 8, 8)), (32, 3, (0xFF, 0xFF00, 0xFF0000), (8, 8, 8)))
        for bits, compression, masks, depths in cases:
            with self.subTest(bits=bits, masks=masks):
                usual = {16: (0x7C00, 0x03E0, 0x001F), 32: (0xFF0000, 0xFF00, 0xFF)}[bits]
                value = numpy.zeros(picture.shape[:2], numpy.int64)
                shown = numpy.zeros_like(picture)
                for c, (mask, depth) in enumerate(zip(masks or usual, depths)):
                    most = (1 << depth) - 1
                    sample = picture[..., c] * most // 255
                    value |= sample * (mask & -mask)
                    shown[..., c] = (sample * 255 + most // 2) // most
                rows = b"".join(row.astype(f"<u{bits // 8}").tobytes() for row in value[::-1])
                data = self.info(6 * BLOCK, 5 * BLOCK, bits, rows, compression,
                                 masks=struct.pack(f"<{len(masks)}I", *masks))
                self.shows(data, Image.fromarray(shown.astype(numpy.uint8)))

    def test_run_lengths(self):
        for compression, bits in (1, 8), (2, 4):
            palette = b"".join(bytes([n * 16, 255 - n * 16, n * 5, 0]) for n in range(16))
            # The lowest row: a run of 5 of colour 3; then literally 1, 2, 3; from there one to the
            # right and one up; a run of 4 of colour 9; the end of the row, and of the picture.
            literal = b"\0\3\1\2\3\0" if bits == 8 else b"\0\3\x12\x30"
            run = (b"\5\3", b"\4\x09") if bits == 8 else (b"\5\x33", b"\4\x99")
            data = run[0] + literal + b"\0\2\1\1" + run[1] + b"\0\0\0\1"
            numbers = numpy.zeros((3, 13), int)
            numbers[2, :8] = [3] * 5 + [1, 2, 3]
            numbers[1, 9:13] = 9
            path = self.put(self.info(13, 3, bits, data, compression, palette), "a.bmp")
            pdf = self.convert(path, "-s", "13cmx3cm")
            subprocess.run(["pdfimages", "-png", pdf, self.path("p")], check=True)
            wanted = [[[n * 5, 255 - n * 16, n * 16] for n in row] for row in numbers.tolist()]
            with Image.open(self.path("p-000.png")) as image:
                self.assertEqual(numpy.asarray(image.convert("RGB")).tolist(), wanted)
            self.assertFails(1, "a run of its pixels is longer than a row",
                             self.put(self.info(12, 3, bits, data, compression, palette), "b.bmp"),
                             "-s", "13cmx3cm", "-o", self.path("o.pdf"))

    def test_alpha_and_profiles_of_the_newest_header(self):
        picture = blocks(6, 5, "RGBA")
        samples = numpy.asarray(picture)
        rows = b"".join(samples[y][:, [2, 1, 0, 3]].tobytes() for y in range(5 * BLOCK)[::-1])
        profile = icc_profile()
        masks = struct.pack("<IIII", 0xFF0000, 0xFF00, 0xFF, 0xFF000000)
        more = struct.pack("<I", 0x4D424544) + bytes(36 + 12) + struct.pack(
            "<IIII", 0, 124 + len(rows), len(profile), 0)
        data = self.info(6 * BLOCK, 5 * BLOCK, 32, rows, 3, masks=masks, size=124, more=more)
        data = data[:14] + struct.pack("<I", 124) + data[18:]
        self.assertEqual(data[10:14], struct.pack("<I", 14 + 124))
        self.shows(data + profile, over(picture, "white"))
        self.assertIn(b"/ICCBased", self.get("out.pdf"))

    def test_cut_anywhere_and_wrong(self):
        self.save(blocks(2, 2).quantize(8), "a.bmp")
        whole = self.get("a.bmp")
        out = self.path("o.pdf")
        for size in list(range(1, 120, 7)) + [len(whole) - 1]:
            self.assertFails(1, "(ends before|no picture of a known kind)",
                             self.put(whole[:size], "b.bmp"), "-o", out)
        for data, message in (
                (self.info(8, 8, 7, bytes(99)), "a depth that BMP does not have"),
                (self.info(8, 8, 24, bytes(999), 4), r"a BMP compression that is not known here \(4\)"),
                (self.info(8, 8, 16, bytes(999), 3, masks=struct.pack("<III", 5, 2, 8)),
                 "bits of a pixel that no sample has"),
                (self.info(0, 8, 24, bytes(99)), "has no pixels"),
                (self.info(-8, 8, 24, bytes(99)), "claims")):
            self.assertFails(1, message, self.put(data, "c.bmp"), "-o", out)


class Gif(JtpdfTest):
    def film(self, **options):
        """Frames of which each after the first changes a part of what is seen."""
        frames = [blocks(6, 5).quantize(8).convert("RGB")]
        for n in range(1, 4):
            frame = frames[-1].copy()
            frame.paste((n * 60, 255 - n * 60, 99), (n * BLOCK, n * BLOCK, 5 * BLOCK, 4 * BLOCK))
            frames.append(frame)
        path = self.save(frames[0], "a.gif", save_all=True, append_images=frames[1:], **options)
        return path, frames

    def test_still_pictures(self):
        for colours, interlace in (2, 0), (16, 1), (30, 0):
            picture = blocks(6, 5).quantize(colours)
            path = self.save(picture, "a.gif", interlace=interlace)
            pdf = self.convert(path)
            self.assertShows(pdf, picture)
            self.assertEqual(images(pdf)[0]["color"], "index")

    def test_transparency_is_a_soft_mask(self):
        picture = blocks(6, 5).quantize(8)
        self.assertNotIn(b"palette+alpha", run("--dry-run", self.save(picture, "a.gif"))[1])
        path = self.save(picture, "a.gif", transparency=picture.getpixel((0, 0)))
        self.assertIn(b"palette+alpha", run("--dry-run", path)[1])
        pdf = self.convert(path)
        self.assertEqual(stored(pdf)[0][0]["/BitsPerComponent"], 1)
        with Image.open(path) as image:
            self.assertShows(pdf, over(image, "white"))

    def test_the_first_frame_is_used_and_said_so(self):
        path, frames = self.film()
        pdf = self.convert(path, messages=r"a\.gif: only the first of its 4 frames was used")
        self.assertShows(pdf, frames[0])

    def test_all_frames_as_they_are_seen(self):
        # Not 3 for the first: what was before it, readers don't agree on.
        for disposal in 0, 1, 2, [1, 3, 3, 1]:
            with self.subTest(disposal=disposal):
                path, _ = self.film(disposal=disposal)
                pdf = self.convert(path, "--all-frames")
                with Image.open(path) as film:
                    self.assertEqual(len(page_boxes(pdf)), film.n_frames)
                    for number in range(film.n_frames):
                        film.seek(number)
                        self.assertShows(pdf, over(film.convert("RGBA"), "white"), page=number + 1)

    def test_what_a_passing_frame_hid_is_seen_again(self):
        ground = blocks(6, 5).quantize(8).convert("RGB")
        passing = Image.new("RGB", ground.size, "red")
        last = passing.copy()
        last.paste((0, 200, 0), (BLOCK, BLOCK, 3 * BLOCK, 2 * BLOCK))
        path = self.save(ground, "a.gif", save_all=True, append_images=[passing, last],
                         disposal=[1, 3, 1])
        pdf = self.convert(path, "--all-frames")
        with Image.open(path) as film:
            film.seek(2)
            self.assertEqual(film.tile[0][1], (BLOCK, BLOCK, 3 * BLOCK, 2 * BLOCK))
            self.assertEqual(film.convert("RGB").getpixel((0, 0)), ground.getpixel((0, 0)))
            self.assertShows(pdf, over(film.convert("RGBA"), "white"), page=3)

    def test_cut_anywhere(self):
        path, _ = self.film()
        whole = self.get("a.gif")
        for size in range(6, len(whole), 41):
            self.assertFails(1, r"b\.gif: (ends before|cannot be decoded)",
                             self.put(whole[:size], "b.gif"), "-o", self.path("o.pdf"))


class Webp(JtpdfTest):
    def test_all_frames_as_they_are_seen(self):
        frames = [blocks(6, 5, seed=n) for n in range(3)]
        path = self.save(frames[0], "a.webp", save_all=True, append_images=frames[1:],
                         lossless=True)
        pdf = self.convert(path, "--all-frames")
        self.assertEqual(len(page_boxes(pdf)), 3)
        for number, frame in enumerate(frames):
            self.assertShows(pdf, frame, page=number + 1)


class Pnm(JtpdfTest):
    def test_raw_and_plain(self):
        grey, colour = blocks(6, 5, "L"), blocks(6, 5)
        bilevel = grey.point(lambda v: 255 * (v > 127)).convert("1")
        for picture in bilevel, grey, colour:
            raw = self.save(picture, "a.ppm")
            self.assertShows(self.convert(raw), picture)
            subprocess.run(["/usr/bin/convert", raw, "-compress", "none", self.path("p.pnm")],
                           check=True)
            self.assertIn(self.get("p.pnm")[1:2], b"123")
            self.assertShows(self.convert(self.path("p.pnm")), picture)

    def test_headers_with_comments_and_digits_without_blanks(self):
        data = b"P1 # a comment\n#and one more\n4 # of width\n2\n1010\n0 1\n#in between\n01"
        pdf = self.convert(self.put(data, "a.pbm"), "-s", "4cmx2cm")
        subprocess.run(["pdfimages", "-png", pdf, self.path("p")], check=True)
        with Image.open(self.path("p-000.png")) as image:
            self.assertEqual(numpy.asarray(image.convert("L")).tolist(),
                             [[0, 255, 0, 255], [255, 0, 255, 0]])

    def test_every_range_comes_out_from_black_to_white(self):
        for most in 1, 3, 7, 100, 255, 1023, 65535:
            size = 2 if most > 255 else 1
            samples = [most * n // 8 for n in range(9)]
            data = b"P5 9 1 %d\n" % most + b"".join(s.to_bytes(size, "big") for s in samples)
            pdf = self.convert(self.put(data, "a.pgm"), "-s", "9cmx1cm")
            subprocess.run(["pdfimages", "-png", pdf, self.path("p")], check=True)
            with Image.open(self.path("p-000.png")) as image:
                found = numpy.asarray(image, float).reshape(1, 9, -1)[0, :, 0]
            if image.mode == "1":
                found = found * 255
            scale = 65535 if found.max() > 255 else 255
            for sample, value in zip(samples, found):
                self.assertAlmostEqual(value, sample * scale / most, delta=1.01, msg=(most, found))

    def test_pam(self):
        cases = (("L", "GRAYSCALE"), ("LA", "GRAYSCALE_ALPHA"), ("RGB", "RGB"), ("RGBA", "RGB_ALPHA"))
        for mode, name in cases:
            with self.subTest(mode=mode):
                picture = blocks(6, 5, mode)
                head = (f"P7\nWIDTH {picture.width}\n# comment\nHEIGHT {picture.height}\n"
                        f"DEPTH {len(mode)}\nMAXVAL 255\nTUPLTYPE {name}\nENDHDR\n")
                pdf = self.convert(self.put(head.encode() + picture.tobytes(), "a.pam"))
                self.assertShows(pdf, over(picture, "white"))
        inks = blocks(20, 20, "CMYK")
        head = b"P7\nWIDTH 160\nHEIGHT 160\nDEPTH 4\nMAXVAL 255\nTUPLTYPE CMYK\nENDHDR\n"
        pdf = self.convert(self.put(head + inks.tobytes(), "b.pam"))
        subprocess.run(["pdfimages", "-tiff", pdf, self.path("i")], check=True)
        with Image.open(self.path("i-000.tif")) as image:
            self.assertTrue(image.tobytes() == inks.tobytes())

    def test_what_is_wrong(self):
        out = self.path("o.pdf")
        for data, message in (
                (b"P5 4 4 255\n" + bytes(15), "ends before its picture does"),
                (b"P2 4 4 255\n" + b"1 " * 15, "ends before its picture does"),
                (b"P6 4", "ends before its picture does"),
                (b"P5 4 x 255\n" + bytes(16), "where a number should stand is none"),
                (b"P5 4 4 70000\n" + bytes(16), "a number is larger than it may be"),
                (b"P5 4 4 0\n" + bytes(16), "its samples have no range"),
                (b"P5 4 4 9\n" + b"\x0a" * 16, "a sample is larger than its header allows"),
                (b"P2 4 4 9\n" + b"10 " * 16, "a sample is larger than its header allows"),
                (b"P1 4 4\n" + b"2" * 16, "a sample is larger than its header allows"),
                (b"P7\nWIDTH 1\nHEIGHT 1\nDEPTH 5\nMAXVAL 9\nENDHDR\n" + bytes(5), "has 5 samples"),
                (b"P7\nWIDE 1\nENDHDR\n", "an entry that PAM does not know"),
                (b"P5 0 4 9\n", "has no pixels"),
                (b"P5 99999 99999 255\n", "claims 99999 x 99999 pixels")):
            with self.subTest(data=data[:12]):
                self.assertFails(1, message, self.put(data, "a.pnm"), "-o", out)
        two = b"P5 24 24 255\n" + bytes(range(24)) * 24
        self.convert(self.put(two * 2, "b.pgm"),
                     messages=rf"only its first picture was used; {len(two)} bytes behind it")


if __name__ == "__main__":
    unittest.main()
