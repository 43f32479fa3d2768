"""TIFF files that common writers do not write: what becomes of their pages."""
import os
import resource
import subprocess
import unittest

import numpy
from PIL import Image, ImageCms

from support import BLOCK, JTPDF, JtpdfTest, blocks, images, page_boxes, render, run
from tiff_files import greys, page, tiff
from pixels_test import over


def rgb_page(picture, **fields):
    return page(picture.width, picture.height, picture.tobytes(), (8,) * 3, 2, **fields)


class ManyPages(JtpdfTest):
    def seconds(self, path):
        """The processor's time for the file: the least of three."""
        times = []
        for _ in range(3):
            before = resource.getrusage(resource.RUSAGE_CHILDREN)
            subprocess.run([JTPDF, "-j", "1", "-S", "A6", path, "-o", self.path("o.pdf")],
                           check=True, timeout=300)
            after = resource.getrusage(resource.RUSAGE_CHILDREN)
            times.append(after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime)
        return min(times)

    def test_time_grows_with_the_pages_and_not_with_their_square(self):
        # Four times the work, and sixteen times where each page is looked for from the first on.
        few, many = (self.seconds(self.put(greys(n), f"{n}.tif")) for n in (3000, 12000))
        self.assertLess(many / few, 9)
        self.assertEqual(len(page_boxes(self.path("o.pdf"))), 12000)

    def test_as_many_as_there_can_be(self):
        out = self.path("o.pdf")
        self.assertEqual(run(self.put(greys(65535), "most.tif"), "-S", "A6", "-o", out)[0], 0)
        count = subprocess.run(["qpdf", "--show-npages", out], capture_output=True, check=True)
        self.assertEqual(count.stdout, b"65535\n")
        self.assertFails(1, "has more than 65535 pages; split it",
                         self.put(greys(65536), "more.tif"), "-S", "A6", "-o", self.path("x.pdf"))

    def test_every_page_is_found_where_it_lies(self):
        for order in "<", ">":
            pages = [blocks(4 + n, 3, seed=n) for n in range(5)]
            pdf = self.convert(self.put(tiff(*map(rgb_page, pages), order=order), "a.tif"))
            for number, picture in enumerate(pages):
                self.assertShows(pdf, picture, page=number + 1)

    def test_pages_of_files_with_64_bits(self):
        pages = [blocks(4 + n, 3, seed=n) for n in range(3)]
        self.put(tiff(*map(rgb_page, pages)), "a.tif")
        for swap in "-L", "-B":
            subprocess.run(["tiffcp", "-8", swap, self.path("a.tif"), self.path("b.tif")],
                           check=True)
            self.assertIn(self.get("b.tif")[:4], (b"II+\0", b"MM\0+"))
            pdf = self.convert(self.path("b.tif"))
            for number, picture in enumerate(pages):
                self.assertShows(pdf, picture, page=number + 1)

    def test_a_chain_of_pages_that_never_ends(self):
        status, _, _ = run(self.put(tiff(*map(rgb_page, [blocks(), blocks(seed=2)]), last=8),
                                    "a.tif"), "-o", self.path("o.pdf"))
        self.assertIn(status, (0, 1))
        if status == 0:
            self.assertEqual(len(page_boxes(self.path("o.pdf"))), 2)


class BadPages(JtpdfTest):
    def setUp(self):
        super().setUp()
        self.good = [blocks(6 + n, 4, seed=n) for n in range(3)]

    def check(self, data, message, number, of=3):
        path = self.put(data, "a.tif")
        out = self.path("o.pdf")
        error = self.assertFails(1, rf"a\.tif, page {number}: {message}", path, "-o", out)
        self.assertRegex(error, rf"nothing was written: 1 of {of} inputs cannot be used; "
                         "--skip-bad leaves them out")
        self.assertFalse(os.path.exists(out))
        error = self.assertFails(1, rf"a\.tif, page {number}: {message}", path, "--skip-bad", "-o",
                                 out)
        self.assertRegex(error, rf"1 of {of} inputs failed and were left out")
        pictures = [picture for n, picture in enumerate(self.good) if n + 1 != number][:of - 1]
        self.assertEqual(len(page_boxes(out)), len(pictures))
        for place, picture in enumerate(pictures):
            self.assertShows(out, picture, page=place + 1)
        os.remove(out)

    def test_one_of_a_kind_that_is_not_known(self):
        pages = [rgb_page(picture) for picture in self.good]
        for number in 2, 3:
            bad = list(pages)
            bad[number - 1] = page(4, 4, bytes(16), photometric=32845 + 1000)
            self.check(tiff(*bad), "has a TIFF colour model that is not known here", number)
            bad[number - 1] = page(4, 4, bytes(16), _339=(3, (2,)))
            self.check(tiff(*bad), "has signed 8-bit samples", number)

    def test_one_that_does_not_fit(self):
        pages = [rgb_page(picture) for picture in self.good]
        pages[1] = page(2, 2, bytes(4))
        self.check(tiff(*pages), "would need a page of", 2)

    def test_one_whose_directory_is_damaged(self):
        pages = [rgb_page(picture) for picture in self.good]
        pages[1] = rgb_page(self.good[1], _256=None)  # no width
        self.check(tiff(*pages), r"cannot be decoded \(libtiff: .*\); the file is damaged", 2)

    def test_a_chain_that_is_cut_off(self):
        pages = [rgb_page(picture) for picture in self.good[:2]]
        self.check(tiff(*pages, last=1 << 30), r"cannot be decoded \(libtiff: ", 3)

    def test_of_equal_files_the_same_pages_are_left_out(self):
        pages = [rgb_page(picture) for picture in self.good]
        pages[1] = page(2, 2, bytes(4))
        paths = [self.put(tiff(*pages), name) for name in ("a.tif", "b.tif")]
        out = self.path("o.pdf")
        self.assertFails(1, "2 of 6 inputs failed", *paths, "--skip-bad", "-o", out)
        objects = [i["object"] for i in images(out)]
        self.assertEqual(objects[:2], objects[2:])

    def test_a_single_page_is_not_numbered(self):
        self.assertFails(1, r"a\.tif: has signed 8-bit samples",
                         self.put(tiff(page(4, 4, bytes(16), _339=(3, (2,)))), "a.tif"), "-o",
                         self.path("o.pdf"))


class Samples(JtpdfTest):
    def shows_exactly(self, data, samples, messages=None):
        """The stored pixels of the first image, read back by Poppler."""
        pdf = self.convert(self.put(data, "a.tif"), "-S", "A6", messages=messages)
        subprocess.run(["pdfimages", "-png", pdf, self.path("p")], check=True)
        with Image.open(self.path("p-000.png")) as image:
            wanted = numpy.asarray(samples)
            if wanted.ndim == 2 and image.mode == "RGB":  # greys of a palette
                image = image.convert("L")
            self.assertEqual(numpy.asarray(image).tolist(), wanted.tolist())
        return pdf

    def mask(self, pdf):
        with Image.open(self.path("p-001.png")) as image:
            return numpy.asarray(image).tolist()

    def test_a_palette_with_opacity_keeps_its_colours(self):
        palette = [(n * 37 % 256, n * 91 % 256, n * 153 % 256) for n in range(256)]
        indices, alphas = [0, 1, 7, 100, 200, 255], [255, 0, 1, 128, 200, 254]
        data = bytes(v for pair in zip(indices, alphas) for v in pair)
        colormap = (3, tuple(entry[c] * 257 for c in range(3) for entry in palette))
        for kind in 1, 2:  # associated or not: an index is no amount of light
            pdf = self.shows_exactly(tiff(page(6, 1, data, (8, 8), 3, _320=colormap,
                                               _338=(3, (kind,)))), [[palette[i] for i in indices]])
            self.assertEqual(self.mask(pdf), [alphas])

    def test_palettes_of_8_bit_numbers_are_taken_as_they_are_meant(self):
        palette = [(n, 255 - n, n // 2) for n in range(256)]
        colormap = (3, tuple(entry[c] for c in range(3) for entry in palette))
        self.shows_exactly(tiff(page(4, 1, bytes([0, 1, 128, 255]), (8,), 3, _320=colormap)),
                           [[palette[i] for i in (0, 1, 128, 255)]])
        wide = list(palette)
        wide[3] = (256, 0, 0)  # one entry beyond 8 bits: then all have 16
        wide[4] = (0, 0, 512)  # a third colour: pdfimages doesn't know palettes of one bit
        colormap = (3, tuple(entry[c] for c in range(3) for entry in wide))
        self.shows_exactly(tiff(page(3, 1, bytes([3, 4, 255]), (8,), 3, _320=colormap)),
                           [[(1, 0, 0), (0, 0, 2), (0, 0, 0)]])

    def test_premultiplied_colours_are_divided_and_rounded(self):
        alphas = [1, 2, 3, 100, 127, 128, 200, 254, 255]
        colours = [alpha * 5 // 7 for alpha in alphas]
        data = bytes(v for colour, alpha in zip(colours, alphas) for v in (colour, alpha))
        self.shows_exactly(tiff(page(9, 1, data, (8, 8), 1, _338=(3, (1,)))),
                           [[(2 * c * 255 + a) // (2 * a) for c, a in zip(colours, alphas)]])

    def test_opacity_behind_other_samples(self):
        pixels = [(10, 20, 30, 99, 128), (40, 50, 60, 98, 255), (70, 80, 90, 97, 1)]
        pdf = self.shows_exactly(
            tiff(page(3, 1, bytes(v for p in pixels for v in p), (8,) * 5, 2, _338=(3, (0, 2)))),
            [[p[:3] for p in pixels]], messages="its pixels hold 1 sample besides colour and "
            "opacity, left out")
        self.assertEqual(self.mask(pdf), [[128, 255, 1]])

    def test_a_fourth_sample_that_is_not_declared_is_taken_for_opacity(self):
        picture = blocks(mode="RGBA")
        data = tiff(page(picture.width, picture.height, picture.tobytes(), (8,) * 4, 2))
        path = self.put(data, "a.tif")
        with Image.open(path) as image:
            self.assertEqual(image.mode, "RGBA")  # Pillow takes it so, too
        pdf = self.convert(path, messages=r"a\.tif: does not say what the fourth sample of its "
                           "pixels is; it was taken for their opacity, as other programs do")
        self.assertShows(pdf, over(picture, "white"))

    def test_a_fourth_sample_that_is_declared_to_be_something_else_is_left_out(self):
        picture = blocks(mode="RGBA")
        pdf = self.convert(self.put(tiff(page(picture.width, picture.height, picture.tobytes(),
                                              (8,) * 4, 2, _338=(3, (0,)))), "a.tif"),
                           messages="hold 1 sample besides colour and opacity, left out")
        colours = Image.fromarray(numpy.asarray(picture)[..., :3])
        self.assertShows(pdf, colours)

    def test_samples_that_pdf_cannot_hold_are_named(self):
        out = self.path("o.pdf")
        cases = (((8,), 2, 1, "has signed 8-bit samples, which PDF cannot hold; save it with "
                  "unsigned ones"),
                 ((16,), 2, 2, "has signed 16-bit samples"),
                 ((32,), 3, 4, "has floating-point or complex 32-bit samples.*whole numbers"),
                 ((32,), 1, 4, "has 32-bit samples, and PDF holds up to 16 bits; save it with 8 "
                  "or 16"))
        for bits, kind, size, message in cases:
            with self.subTest(message):
                data = tiff(page(16, 16, bytes(256 * size), bits, _339=(3, (kind,))))
                self.assertFails(1, message, self.put(data, "a.tif"), "-o", out)


class Lab(JtpdfTest):
    def to_lab(self, picture):
        srgb = ImageCms.createProfile("sRGB")
        lab = ImageCms.createProfile("LAB", 5000)
        change = ImageCms.buildTransform(srgb, lab, "RGB", "LAB", renderingIntent=1)
        # Pillow's bytes are those of CIELAB in TIFF: a and b signed.
        return ImageCms.applyTransform(picture, change)

    def write(self, values, bits, photometric):
        height, width = values.shape[:2]
        kind = {8: numpy.uint8, 16: numpy.uint16}[bits]
        return self.put(tiff(page(width, height, values.astype(kind).tobytes(), (bits,) * 3,
                                  photometric)), "lab.tif")

    def check(self, values, bits, photometric, picture, tolerance):
        pdf = self.convert(self.write(values, bits, photometric))
        self.assertEqual(images(pdf)[0]["bpc"], str(bits))
        self.assertSamePicture(render(pdf), picture, tolerance)

    def test_colours_are_those_that_colour_management_gives(self):
        picture = Image.blend(blocks(), Image.new("RGB", blocks().size, "grey"), 0.3)
        signed = numpy.asarray(self.to_lab(picture)).astype(numpy.uint8).astype(int)
        lightness, a, b = signed[..., 0], *(((signed[..., c] + 128) % 256 - 128) for c in (1, 2))
        self.check(signed, 8, 8, picture, 4)
        icc = numpy.stack([lightness, a + 128, b + 128], -1)
        self.check(icc, 8, 9, picture, 4)
        wide = numpy.stack([lightness * 257, a * 256 % 65536, b * 256 % 65536], -1)
        self.check(wide, 16, 8, picture, 4)
        wide_icc = numpy.stack([lightness * 256, (a + 128) * 256, (b + 128) * 256], -1)
        self.check(wide_icc, 16, 9, picture, 4)

    def test_greys_stay_grey(self):
        steps = numpy.arange(0, 256, 5).repeat(BLOCK)[None, :].repeat(BLOCK, 0)
        for photometric, middle in ((8, 0), (9, 128)):
            values = numpy.stack([steps, numpy.full_like(steps, middle),
                                  numpy.full_like(steps, middle)], -1)
            page_shown = numpy.asarray(render(self.convert(self.write(values, 8, photometric))),
                                       int)
            self.assertLessEqual((page_shown.max(-1) - page_shown.min(-1)).max(), 1)
            self.assertEqual(page_shown[4, 4].tolist(), [0, 0, 0])
            self.assertEqual(page_shown[4, -4].tolist(), [255, 255, 255])

    def test_opacity_is_kept(self):
        values = numpy.full((8, 16, 4), 128, numpy.uint8)
        values[..., 1:3] = 0
        values[:, 8:, 3] = 0
        path = self.put(tiff(page(16, 8, values.tobytes(), (8,) * 4, 8, _338=(3, (2,)))), "a.tif")
        shown = render(self.convert(path))
        self.assertEqual(shown.getpixel((12, 4)), (255, 255, 255))
        self.assertLess(shown.getpixel((4, 4))[0], 200)


if __name__ == "__main__":
    unittest.main()
