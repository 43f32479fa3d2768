"""Pictures of Pillow and NumPy: their pixels come back out of the PDF file."""

import io
import re
import struct
import tempfile
import unittest
import zlib
from typing import Any

import jtpdf
import numpy
from PIL import Image, ImageCms


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
        for mode in ("I", "F"):
            with self.assertRaisesRegex(ValueError, f"'{mode}'.*convert"):
                jtpdf.Picture.from_pillow(Image.new(mode, (2, 2)))


    def test_words_are_big_endian_in_the_file(self) -> None:
        values = [0, 1, 256, 0x1234, 0xFFFE, 0xFFFF]
        big = struct.pack(">6H", *values)
        for mode, order in (("I;16", "<"), ("I;16B", ">")):
            picture = Image.frombytes(mode, (3, 2), struct.pack(order + "6H", *values))
            self.assertEqual(images_of(jtpdf.Picture.from_pillow(picture)),
                             [("/DeviceGray", 16, 3, 2, big)], mode)
        png = saved(Image.frombytes("I;16", (3, 2), struct.pack("<6H", *values)), "PNG")
        self.assertEqual(images_of(jtpdf.Picture.from_pillow(Image.open(png))),
                         [("/DeviceGray", 16, 3, 2, big)])

    def test_a_transparent_colour_becomes_a_soft_mask(self) -> None:
        gray = Image.frombytes("L", (3, 1), bytes([7, 8, 7]))
        words = Image.frombytes("I;16", (3, 1), struct.pack("<3H", 0x0708, 0x0807, 0x0708))
        colors = Image.frombytes("RGB", (3, 1), bytes([7, 7, 7, 7, 7, 8, 7, 7, 7]))
        bits = Image.frombytes("1", (3, 1), bytes([0b10100000]))
        for picture, key in ((gray, 7), (words, 0x0708), (colors, (7, 7, 7)), (bits, 1),
                             (colors, (0x0707, 0x07FF, 0x0700))):
            kind, *rest = images_of(jtpdf.Picture.from_pillow(picture))[0]
            picture = picture.copy()
            picture.info["transparency"] = key
            mask, image = images_of(jtpdf.Picture.from_pillow(picture))
            self.assertEqual(mask, ("/DeviceGray", 8, 3, 1, bytes([0, 255, 0])), picture.mode)
            self.assertEqual(image, (kind, *rest))

    def test_profiles_for_rgb_come_along_and_are_shared(self) -> None:
        srgb = ImageCms.ImageCmsProfile(ImageCms.createProfile("sRGB")).tobytes()
        for mode, count in (("RGB", 1), ("RGBA", 1), ("P", 1), ("L", 0), ("CMYK", 0)):
            picture = self.rgb.convert(mode)
            picture.info["icc_profile"] = srgb
            with jtpdf.Document() as doc:
                for _ in range(2):
                    doc.write_picture(jtpdf.Picture.from_pillow(picture))
            self.assertEqual(bytes(doc.data).count(b"/ICCBased"), count, mode)
        lab = ImageCms.ImageCmsProfile(ImageCms.createProfile("LAB")).tobytes()
        for bad in (lab, srgb[:100], srgb[:-1], b"", srgb[:36] + b"psca" + srgb[40:]):
            self.rgb.info["icc_profile"] = bad
            self.assertIsNone(jtpdf.Picture.from_pillow(self.rgb).profile)


def saved(picture: Any, kind: str, **options: Any) -> io.BytesIO:
    file = io.BytesIO()
    picture.save(file, kind, **options)
    file.seek(0)
    return file


class Jpeg(unittest.TestCase):
    def setUp(self) -> None:
        self.picture = Image.merge("RGB", [Image.linear_gradient("L"), Image.radial_gradient("L"),
                                           Image.new("L", (256, 256), 77)])

    def passes(self, file: io.BytesIO, space: jtpdf.ColorSpace = jtpdf.ColorSpace.RGB) -> None:
        picture = Image.open(file)
        image = jtpdf.Picture.from_pillow(picture).image
        self.assertEqual(image, jtpdf.ImageData(file.getvalue(), jtpdf.Compression.JPEG,
                                                256, 256, 8, space))
        self.assertEqual(picture.getpixel((0, 0)), Image.open(file).getpixel((0, 0)),
                         "Pillow still decodes it")

    def is_decoded(self, picture: Any) -> None:
        image = jtpdf.Picture.from_pillow(picture).image
        self.assertIs(image.compression, jtpdf.Compression.FLATE)
        self.assertEqual((image.width, image.height), picture.size)

    def test_files_pass_as_they_are(self) -> None:
        self.passes(saved(self.picture, "JPEG"))
        self.passes(saved(self.picture, "JPEG", progressive=True))
        self.passes(saved(self.picture.convert("L"), "JPEG"), jtpdf.ColorSpace.GRAY)
        self.passes(saved(self.picture.convert("CMYK"), "JPEG"), jtpdf.ColorSpace.CMYK)

    def test_files_pass_with_their_profile(self) -> None:
        srgb = ImageCms.ImageCmsProfile(ImageCms.createProfile("sRGB")).tobytes()
        picture = jtpdf.Picture.from_pillow(
            Image.open(saved(self.picture, "JPEG", icc_profile=srgb)))
        self.assertIs(picture.image.compression, jtpdf.Compression.JPEG)
        self.assertEqual(picture.profile, srgb)

    def test_files_on_disk_pass(self) -> None:
        with tempfile.NamedTemporaryFile(suffix=".jpg") as file:
            self.picture.save(file, "JPEG")
            file.flush()
            with Image.open(file.name) as picture:
                image = jtpdf.Picture.from_pillow(picture).image
            with open(file.name, "rb") as whole:
                self.assertEqual(image.data, whole.read())

    def test_what_was_touched_is_compressed_anew(self) -> None:
        file = saved(self.picture, "JPEG")
        changed = Image.open(file)
        changed.putpixel((0, 0), (1, 2, 3))
        self.is_decoded(changed)
        self.is_decoded(Image.open(file).resize((20, 30)))
        draft = Image.open(file)
        draft.draft("RGB", (64, 64))
        self.is_decoded(draft)
        gray = Image.open(file)
        gray.draft("L", (256, 256))
        self.is_decoded(gray)

    def test_what_readers_may_not_decode_is_compressed_anew(self) -> None:
        self.is_decoded(Image.open(saved(self.picture, "PNG")))
        file = saved(self.picture, "JPEG").getvalue()
        frame = file.index(b"\xff\xc0")
        names = bytearray(file)
        scan = file.index(b"\xff\xda")
        for at, name in enumerate(b"RGB"):
            names[frame + 10 + 3 * at] = names[scan + 5 + 2 * at] = name
        self.is_decoded(Image.open(io.BytesIO(bytes(names))))

    def test_a_file_that_is_cut_off_is_an_error(self) -> None:
        file = saved(self.picture, "JPEG").getvalue()
        with self.assertRaises(OSError):
            jtpdf.Picture.from_pillow(Image.open(io.BytesIO(file[:-100])))


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
