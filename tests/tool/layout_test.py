"""Page sizes and boxes as readers report them; expected values are what img2pdf gives."""
import re
import subprocess
import unittest

from PIL import Image

from support import JtpdfTest, blocks, exif, jpeg_bytes, jpeg_segment, jpeg_with, page_boxes, render

A4 = (595.2756, 841.8898)


class Layout(JtpdfTest):
    def boxes(self, pdf):
        """Page box, crop box, and the lower left corner and size of the image drawn."""
        text = subprocess.run(["qpdf", "--qdf", "--object-streams=disable", pdf, "-"],
                              capture_output=True).stdout.decode("latin-1")
        numbers = lambda name: [float(n) for n in re.search(
            name + r" \[([^\]]*)\]", text).group(1).split()]
        move, size = re.search(
            r"q 1 0 0 1 (\S+ \S+) cm .*? cm (\S+ 0 0 \S+) \S+ \S+ cm  /Im", text).groups()
        return (numbers("/MediaBox"), numbers("/CropBox"), [float(n) for n in move.split()],
                [float(size.split()[0]), float(size.split()[3])])

    def check(self, picture, options, page, image):
        path = self.save(Image.new("1", picture), "a.png")
        media, crop, middle, size = self.boxes(self.convert(path, *options.split()))
        for found, wanted in zip(media + crop, [0, 0, *page] * 2):
            self.assertAlmostEqual(found, wanted, 3, options)
        for found, wanted in zip(middle + size, [page[0] / 2, page[1] / 2, *image]):
            self.assertAlmostEqual(found, wanted, 3, options)

    def test_sizes_are_those_of_img2pdf(self):
        tall, wide = (300, 600), (3000, 600)
        for picture, options, page, image in (
                (tall, "", (225, 450), (225, 450)),
                (tall, "-b 10:20", (265, 470), (225, 450)),
                (tall, "-S A4", A4, (420.9449, 841.8898)),
                (tall, "-S A4 -b 10:20", A4, (410.9449, 821.8898)),
                (tall, "-S A4 -b 10:20 -f fill", A4, (555.2756, 1110.5512)),
                (tall, "-S A4 -b 10:20 -f exact", A4, (555.2756, 821.8898)),
                (tall, "-S A4 -b 10:20 -f shrink", A4, (225, 450)),
                (tall, "-S A4 -b 10:20 -f enlarge", A4, (410.9449, 821.8898)),
                (tall, "-s 200x100 -b 10:20", (90, 120), (50, 100)),
                (tall, "-s 200x100 -b 10:20 -f fill", (240, 420), (200, 400)),
                (tall, "-s 200x100 -b 10:20 -f exact", (240, 120), (200, 100)),
                (tall, "-s 200x100 -b 10:20 -f enlarge", (265, 470), (225, 450)),
                (tall, "-S A4 -a -b 10:20", A4, (410.9449, 821.8898)),
                (tall, "-S A4 -s 200x100 -b 10:20", A4, (50, 100)),
                (tall, "-S A4 -s 50%", A4, (112.5, 225)),
                (tall, "-S A4 -s 300dpi -b 10:20", A4, (72, 144)),
                (tall, "-S 210mm -b 10:20", (595.2756, 1130.5512), (555.2756, 1110.5512)),
                (tall, "-s 200 -b 10:20", (240, 420), (200, 400)),
                (wide, "-S A4 -b 10:20 -f shrink", A4, (555.2756, 111.0551)),
                (wide, "-S A4 -b 10:20 -f enlarge", A4, (2250, 450)),
                (wide, "-S A4 -a -b 10:20", (A4[1], A4[0]), (821.8898, 164.378)),
                (wide, "-S A4 -a -s 100x200", (A4[1], A4[0]), (100, 20)),
                (wide, "-s x100", (500, 100), (500, 100)),
                (wide, "-S Letter^T", (792, 612), (792, 158.4)),
                (wide, "-S 10cmx2in", (283.4646, 144), (283.4646, 56.6929))):
            with self.subTest(picture=picture, options=options):
                self.check(picture, options, page, image)

    def test_crop_border_insets_the_crop_box_alone(self):
        path = self.save(Image.new("1", (960, 960)), "a.png")
        media, crop, _, _ = self.boxes(self.convert(path, "--crop-border", "1in:0.5in"))
        self.assertEqual(media, [0, 0, 720, 720])
        self.assertEqual(crop, [36, 72, 684, 648])

    def test_turned_pictures_are_measured_turned(self):
        picture = blocks(12, 7)
        stored = jpeg_bytes(picture.transpose(Image.ROTATE_90))
        path = self.put(jpeg_with(stored, jpeg_segment(0xE1, b"Exif\0\0" + exif(6))), "a.jpg")
        pdf = self.convert(path, "-S", "96ptx56mm", "-f", "exact")
        self.assertAlmostEqual(page_boxes(pdf)[0][0], 96, 3)
        pdf = self.convert(path, "-s", "144")
        self.assertEqual(page_boxes(pdf)[0], (144, 84))
        self.assertEqual(render(pdf, dpi=48).size, (96, 56))

    def test_resolution_comes_from_each_format(self):
        picture = blocks(10, 10)
        size = picture.width * 72 / 150
        per_centimetre = bytearray(jpeg_bytes(picture, dpi=(59, 59)))
        self.assertEqual(per_centimetre[13], 1)  # per inch
        per_centimetre[13] = 2
        paths = [self.save(picture, "jfif.jpg", dpi=(150, 150)),
                 self.put(bytes(per_centimetre), "cm.jpg"),
                 self.put(jpeg_with(jpeg_bytes(picture)[:2] + jpeg_bytes(picture)[20:],
                                    jpeg_segment(0xE1, b"Exif\0\0" + exif(dpi=150))), "exif.jpg"),
                 self.save(picture, "phys.png", dpi=(150, 150)),
                 self.save(picture, "a.tif", dpi=(150, 150)),
                 self.save(picture, "a.webp", exif=b"Exif\0\0" + exif(dpi=150), lossless=True)]
        for path, box in zip(paths, page_boxes(self.convert(*paths))):
            exact = size * 150 / (59 * 2.54) if path.endswith("cm.jpg") else size
            self.assertAlmostEqual(box[0], exact, 2, path)
            self.assertAlmostEqual(box[1], exact, 2, path)

    def test_unlike_resolutions_keep_the_pixels_shape(self):
        path = self.save(blocks(10, 10), "a.tif", tiffinfo={282: 200.0, 283: 100.0, 296: 2})
        self.assertEqual(page_boxes(self.convert(path)),
                         [(80 * 72 / 200, 80 * 72 / 100)])

    def test_pages_out_of_range_name_the_value_and_the_way_out(self):
        small = self.save(Image.new("1", (2, 2)), "small.png")
        large = self.save(Image.new("1", (20000, 20)), "large.png")
        out = self.path("out.pdf")
        self.assertFails(1, r"small\.png: would need a page of 1\.5 x 1\.5 pt .*3 to 14400 pt.*-S",
                         small, "-o", out)
        self.assertFails(1, r"large\.png: would need a page of 15000 x 15 pt", large, "-o", out)
        self.convert(small, large, "-S", "A4")
        self.assertFails(2, "out of range", small, "-S", "2x2", "-o", out)
        self.assertFails(2, "out of range", small, "-S", "600cmx600cm", "-o", out)

    def test_borders_that_leave_nothing_are_refused(self):
        path = self.save(blocks(), "a.png")
        self.assertFails(1, "no room left", path, "-S", "A4", "-b", "15cm", "-o", self.path("x"))
        self.assertFails(1, "would show nothing", path, "--crop-border", "5cm", "-o",
                         self.path("x"))

    def test_values_that_are_none_are_usage_errors(self):
        path = self.save(blocks(), "a.png")
        for options, words in ((["-S", "A44"], "no page size"), (["-S", "10kmx3"], "no page size"),
                               (["-s", "10x"+"%"], "no image size"), (["-s", "0dpi"], "no image"),
                               (["-b", "-1"], "no length"), (["-f", "fit"], "none of into"),
                               (["-r", "45"], "none of auto"), (["--role", "x"], "none of back"),
                               (["-S", ""], "no page size"), (["-b", "1cm:"], "no length"),
                               (["--compression", "13"], "0 to 12"), (["-j", "0"], "1 to 256"),
                               (["--max-pixels", "1e6"], "whole number"),
                               (["--creationdate", "2026-02-30"], "no date")):
            with self.subTest(options=options):
                self.assertFails(2, words, path, *options, "-o", self.path("x.pdf"))


if __name__ == "__main__":
    unittest.main()
