"""Pictures of Pillow and NumPy: their pixels come back out of the PDF file."""

import re
import unittest
import zlib
from typing import Any

import jtpdf
import numpy
from PIL import Image


def images_of(picture: jtpdf.Picture) -> "list[tuple[str, int, int, int, bytes]]":
    """What the file says of its images: colour space, bits, width, height, decoded samples."""
    with jtpdf.Document() as doc:
        image = doc.write_picture(picture)
        doc.add_image_page(image, (0, 0, 100, 100))
    found = []
    for dictionary, stream in re.findall(
            rb"(/BitsPerComponent.*?)>>\r\nstream\r\n(.*?)endstream", bytes(doc.data), re.DOTALL):
        entries = dict(re.findall(rb"^/(\w+) (.*?)\r$", dictionary, re.MULTILINE))
        found.append((entries[b"ColorSpace"].decode(), *(
            int(entries[key]) for key in (b"BitsPerComponent", b"Width", b"Height")),
            zlib.decompress(stream)))
    return found


class Pillow(unittest.TestCase):
    def setUp(self) -> None:
        self.rgb = Image.merge("RGB", [Image.linear_gradient("L").resize((5, 3)),
                                       Image.radial_gradient("L").resize((5, 3)),
                                       Image.new("L", (5, 3), 77)])

    def test_plain_modes_keep_their_pixels(self) -> None:
        for mode, name, bits in (("1", "/DeviceGray", 1), ("L", "/DeviceGray", 8),
                                 ("RGB", "/DeviceRGB", 8)):
            picture = self.rgb.convert(mode)
            self.assertEqual(images_of(jtpdf.Picture.from_pillow(picture)),
                             [(name, bits, 5, 3, picture.tobytes())], mode)

    def test_inks_are_inverted(self) -> None:
        picture = Image.new("CMYK", (1, 2), (0, 10, 200, 255))
        self.assertEqual(images_of(jtpdf.Picture.from_pillow(picture)),
                         [("/DeviceCMYK", 8, 1, 2, bytes([255, 245, 55, 0]) * 2)])

    def test_alpha_becomes_a_soft_mask(self) -> None:
        alpha = Image.linear_gradient("L").resize((5, 3))
        for mode, name in (("RGB", "/DeviceRGB"), ("L", "/DeviceGray")):
            picture = self.rgb.convert(mode)
            with_alpha = picture.copy()
            with_alpha.putalpha(alpha)
            self.assertEqual(images_of(jtpdf.Picture.from_pillow(with_alpha)),
                             [("/DeviceGray", 8, 5, 3, alpha.tobytes()),
                              (name, 8, 5, 3, picture.tobytes())], mode)

    def test_palettes_are_resolved(self) -> None:
        picture = self.rgb.quantize(4)
        self.assertEqual(images_of(jtpdf.Picture.from_pillow(picture)),
                         [("/DeviceRGB", 8, 5, 3, picture.convert("RGB").tobytes())])
        picture.info["transparency"] = 0
        self.assertEqual(len(images_of(jtpdf.Picture.from_pillow(picture))), 2)

    def test_values_without_a_range_are_rejected(self) -> None:
        for mode in ("I", "F", "I;16"):
            with self.assertRaisesRegex(ValueError, f"'{mode}'.*convert"):
                jtpdf.Picture.from_pillow(Image.new(mode, (2, 2)))


class NumPy(unittest.TestCase):
    def check(self, array: Any, *expected: "tuple[str, int, Any]") -> None:
        height, width = array.shape[:2]
        self.assertEqual(images_of(jtpdf.Picture.from_array(array)), [
            (name, bits, width, height, samples.tobytes()) for name, bits, samples in expected])

    def test_bytes_keep_their_channels(self) -> None:
        pixels = numpy.arange(5 * 3 * 4, dtype=numpy.uint8).reshape(5, 3, 4)
        gray, rgb = "/DeviceGray", "/DeviceRGB"
        self.check(pixels[:, :, 0], (gray, 8, pixels[:, :, 0]))
        self.check(pixels[:, :, :1], (gray, 8, pixels[:, :, :1]))
        self.check(pixels[:, :, :2], (gray, 8, pixels[:, :, 1]), (gray, 8, pixels[:, :, 0]))
        self.check(pixels[:, :, :3], (rgb, 8, pixels[:, :, :3]))
        self.check(pixels, (gray, 8, pixels[:, :, 3]), (rgb, 8, pixels[:, :, :3]))
        self.check(pixels[::-1, ::2, :3], (rgb, 8, pixels[::-1, ::2, :3]))

    def test_words_are_big_endian_in_the_file(self) -> None:
        for order in "<>=":
            pixels = (numpy.arange(2 * 3 * 4) * 1021).astype(order + "u2").reshape(2, 3, 4)
            big = pixels.astype(">u2")
            self.check(pixels, ("/DeviceGray", 16, big[:, :, 3]), ("/DeviceRGB", 16, big[:, :, :3]))

    def test_truth_is_white(self) -> None:
        mask = numpy.eye(3, dtype=bool)
        self.check(mask, ("/DeviceGray", 8, mask.astype(numpy.uint8) * 255))

    def test_other_arrays_are_rejected(self) -> None:
        for shape in ((4,), (2, 2, 5), (2, 2, 2, 2), (0, 3)):
            with self.assertRaisesRegex(ValueError, "is no picture"):
                jtpdf.Picture.from_array(numpy.zeros(shape, numpy.uint8))
        for kind in (numpy.float64, numpy.int32, numpy.int8):
            with self.assertRaisesRegex(ValueError, "no fixed range"):
                jtpdf.Picture.from_array(numpy.zeros((2, 2), kind))


if __name__ == "__main__":
    unittest.main()
