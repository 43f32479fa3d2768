"""--optimize: as small as can be, and not a pixel or a coefficient other than it was."""
import os
import subprocess
import unittest

import numpy
from PIL import Image

from support import JtpdfTest, blocks, icc_profile, images, jpeg_bytes, jpeg_segment, jpeg_with
from tiff_files import page, tiff


def photograph(width=200, height=150, mode="RGB"):
    """Soft shapes and a little noise, as a camera has it."""
    y, x = numpy.mgrid[:height, :width]
    source = numpy.random.default_rng(7)
    planes = [127 + 90 * numpy.sin(x / (9 + c) + c) * numpy.cos(y / (11 + c))
              + source.normal(0, 6, (height, width)) for c in range(len(mode))]
    return Image.merge(mode, [Image.fromarray(p.clip(0, 255).astype(numpy.uint8)) for p in planes])


class Optimize(JtpdfTest):
    def both(self, path, *options):
        """The bytes of the PDF without and with the option; the latter stays as out.pdf."""
        self.convert(path, *options)
        plain = os.path.getsize(self.path("out.pdf"))
        self.convert(path, "-O", *options)
        return plain, os.path.getsize(self.path("out.pdf"))

    def pixels(self, option):
        subprocess.run(["pdfimages", option, self.path("out.pdf"), self.path("p")], check=True)
        name, = (n for n in os.listdir(self.folder) if n.startswith("p-000"))
        with Image.open(self.path(name)) as image:
            image.load()
        os.remove(self.path(name))
        return image

    def test_a_jpeg_has_the_same_pixels_in_fewer_bytes(self):
        for mode in "L", "RGB", "CMYK":
            for options in ({"subsampling": 2}, {"subsampling": 0}, {"progressive": True},
                            {"optimize": True}):
                with self.subTest(mode, options=options):
                    jpeg = jpeg_bytes(photograph(mode=mode), **options)
                    plain, smaller = self.both(self.put(jpeg, "a.jpg"))
                    self.assertLessEqual(smaller, plain)
                    if "progressive" not in options:
                        self.assertLess(smaller, plain - 300)
                    self.assertEqual(images(self.path("out.pdf"))[0]["enc"], "jpeg")
                    with Image.open(self.path("a.jpg")) as source:
                        self.assertEqual(self.pixels("-j").tobytes(), source.tobytes())

    def test_what_says_how_to_read_a_jpeg_is_kept(self):
        rgb = subprocess.run(["cjpeg", "-rgb", "-quality", "90"], check=True, capture_output=True,
                             input=b"P6 200 150 255\n" + photograph().tobytes()).stdout
        plain, smaller = self.both(self.put(rgb, "a.jpg"))
        self.assertLess(smaller, plain)
        with Image.open(self.path("a.jpg")) as source:
            self.assertEqual(self.pixels("-j").tobytes(), source.tobytes())
        profiled = jpeg_with(jpeg_bytes(photograph(), icc_profile=icc_profile()),
                             jpeg_segment(0xFE, b"a comment"))
        self.both(self.put(profiled, "b.jpg"))
        self.assertEqual(images(self.path("out.pdf"))[0]["color"], "icc")
        self.assertNotIn(b"a comment", self.get("out.pdf"))

    def test_a_damaged_jpeg_stays_as_it_is(self):
        whole = jpeg_bytes(photograph())
        jpeg = whole[:len(whole) // 2] + b"\xff\xd9"
        self.convert(self.put(jpeg, "a.jpg"), "-O")
        self.assertTrue(jpeg in self.get("out.pdf"))

    def test_strips_of_a_jpeg_in_tiff(self):
        source = self.save(photograph(), "a.tif")
        subprocess.run(["tiffcp", "-c", "jpeg:r", "-r", "16", source, self.path("b.tif")],
                       check=True)
        plain, smaller = self.both(self.path("b.tif"))
        self.assertLess(smaller, plain)
        with Image.open(self.path("b.tif")) as image:
            self.assertEqual(self.pixels("-j").tobytes(), image.convert("RGB").tobytes())

    def test_what_passes_through_is_packed_harder(self):
        picture = photograph()
        for name, options in {"a.png": {"compress_level": 1},
                              "a.tif": {"compression": "tiff_lzw",
                                        "tiffinfo": {278: 1000}}}.items():
            plain, smaller = self.both(self.save(picture, name, **options))
            self.assertLess(smaller, plain)
            self.assertEqual(self.pixels("-png").convert("RGB").tobytes(), picture.tobytes())

    def test_what_was_given_stays_where_it_is_smaller(self):
        grey = Image.fromarray((numpy.arange(256)[None] // 4 + numpy.zeros((256, 1), int)).astype(
            numpy.uint8))
        path = self.save(grey, "a.png", optimize=True)
        plain, smaller = self.both(path)
        self.assertLessEqual(smaller, plain)
        self.assertEqual(self.pixels("-png").convert("L").tobytes(), grey.tobytes())

    def test_opacity_is_kept(self):
        picture = blocks(mode="RGBA")
        plain, smaller = self.both(self.save(picture, "a.png", compress_level=1))
        self.assertLessEqual(smaller, plain)
        self.assertEqual([i["type"] for i in images(self.path("out.pdf"))], ["image", "smask"])

    def test_damage_in_fax_data_is_found(self):
        bw = blocks(mode="L").point(lambda v: 255 if v > 127 else 0).convert("1")
        subprocess.run(["tiffcp", "-c", "g4", "-r", "1000", self.save(bw, "a.tif"),
                        self.path("g4.tif")], check=True)
        with Image.open(self.path("g4.tif")) as image:
            at, size = image.tag_v2[273][0], image.tag_v2[279][0]
        strip = bytearray(self.get("g4.tif")[at:at + size])
        strip[size // 2:size // 2 + 10] = b"\x02" * 10
        bad = tiff(page(*bw.size, bytes(strip), (1,), 1, _259=(3, (4,))))
        self.assertFails(1, r"bad\.tif: (cannot be decoded \(libtiff|is damaged)",
                         self.put(bad, "bad.tif"), "-O", "-o", self.path("o.pdf"))


if __name__ == "__main__":
    unittest.main()
