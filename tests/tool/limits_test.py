"""What one picture may take: of memory, of a PDF, of time."""
import os
import re
import struct
import subprocess
import unittest
import zlib

import numpy
from PIL import Image

import support
from pixels_test import png
from support import (JTPDF, JtpdfTest, blocks, chunk, images, jpeg_bytes, jpeg_segment, jpeg_with,
                     run)
from tiff_files import page, tiff


def profile_of(size, seed=0):
    """A profile of RGB as far as its header goes."""
    head = struct.pack(">I", size) + bytes(8) + b"mntrRGB XYZ " + bytes(12) + b"acsp"
    return head + bytes([seed]) * (size - len(head))


def png_with_profile(profile, seed=1):
    picture = blocks(seed=seed)
    rows = [bytes(v for pixel in row for v in pixel) for row in numpy.asarray(picture).tolist()]
    return png(picture.width, picture.height, 8, 2, rows,
               chunk(b"iCCP", b"p\0\0" + zlib.compress(profile, 9)))


class Limits(JtpdfTest):
    def peak(self, *arguments):
        """The most memory that the command had, in megabytes."""
        child = subprocess.Popen([JTPDF, *map(str, arguments), "-o", self.path("out.pdf")])
        most = 0
        while child.poll() is None:
            with open(f"/proc/{child.pid}/status") as status:
                found = re.search(r"VmHWM:\s+(\d+)", status.read())
            most = max(most, int(found.group(1)) / 1024 if found else 0)
        self.assertEqual(child.returncode, 0)
        return most

    def sparse(self, name, begin, size, end=b""):
        """A file of so many bytes that takes hardly any of the disk."""
        path = self.put(begin, name)
        os.truncate(path, size - len(end))
        with open(path, "ab") as file:
            file.write(end)
        return path

    def test_profiles_that_are_too_large_are_left_out(self):
        large = profile_of(60_000_000)
        self.assertLess(len(png_with_profile(large)), 100_000)
        message = r"(?m)^jtpdf: .*: its colour profile was left out: it is larger than 4 MiB$"
        self.convert(self.put(png_with_profile(large), "a.png"), messages=message)
        self.assertNotIn(b"ICCBased", self.get("out.pdf"))
        jpeg = jpeg_bytes(blocks(), icc_profile=profile_of(4 * 1024 * 1024 + 1))
        self.convert(self.put(jpeg, "a.jpg"), messages=message)
        for name, options in (("a.tif", {}), ("a.webp", {"lossless": True})):
            path = self.save(blocks(), name, icc_profile=profile_of(5_000_000), **options)
            self.convert(path, messages=message)
            self.assertNotIn(b"ICCBased", self.get("out.pdf"))

    @unittest.skipIf("SANITIZED" in os.environ, "sanitizers have memory of their own")
    def test_profiles_do_not_add_up(self):
        few, many = [[self.put(png_with_profile(profile_of(4_000_000, n), n), f"{n}.png")
                      for n in range(count)] for count in (10, 60)]
        # All at once they would be 200 MB more, and as many again that remember what was written.
        self.assertLess(self.peak(*many, "-j", "2"), self.peak(*few, "-j", "2") + 20)
        self.assertEqual(len(images(self.convert(*many))), 60)

    def test_a_picture_of_many_samples_is_bound_by_its_bytes(self):
        side = 10_000
        fields, data = page(side, side, bytes(4_000_000), (16,) * 16, 2, _338=(3, (0,) * 13),
                            _259=(3, (8,)))  # deflated, as far as the header tells
        path = self.put(tiff((fields, data)), "many.tif")
        message = ("would take 3800 MB of memory to decode, more than the 2000 MB allowed; if "
                   "that is right, allow it with --max-pixels 950000000")
        self.assertFails(1, message, path, "-o", self.path("o.pdf"))
        self.assertEqual(run("-q", "--dry-run", path, "--max-pixels", "950000000")[0], 0)

    def test_decoders_that_need_more_than_the_pixels_say_so(self):
        side = 4096
        grey = Image.new("L", (side, side))
        rgb = Image.new("RGB", (side, side))
        self.save(grey, "a.jp2", irreversible=False)
        opaque = self.save(grey.convert("LA"), "b.jp2", irreversible=False)
        film = self.save(rgb, "a.webp", save_all=True, append_images=[Image.new("RGB", (side, side),
                                                                                "red")])
        plain = self.save(grey, "a.png")
        for path, size in ((opaque, 10 * side * side + 8192),
                           (film, 16 * side * side + os.path.getsize(film))):
            message = f"would take {size / 1e6:.0f} MB of memory to decode"
            limit = -(-size // 4)
            self.assertFails(1, message, path, "--max-pixels", limit - 1, "-S", "A4", "-o",
                             self.path("o.pdf"))
            self.assertEqual(run("-q", "--dry-run", path, "-S", "A4", "--max-pixels", limit)[0], 0)
        self.assertEqual(run("--dry-run", plain, "--max-pixels", side * side, "-S", "A4")[0], 0)

    def test_tiles_larger_than_any_picture_are_refused(self):
        fields, data = page(16, 16, bytes(256), _273=None, _278=None, _279=None,
                            _322=(4, (65536,)), _323=(4, (65536,)), _324=(4, (0,)),
                            _325=(4, (256,)))
        self.assertFails(1, "claims 65536 x 65536 pixels, more than the 500000000 allowed",
                         self.put(tiff((fields, data)), "a.tif"), "-o", self.path("o.pdf"))

    def test_files_larger_than_an_image_of_a_pdf_are_refused(self):
        jpeg = jpeg_bytes(blocks())
        self.save(blocks(), "small.jp2", irreversible=False)
        jp2 = self.get("small.jp2")
        at = jp2.index(b"jp2c") - 4
        part = jp2.index(b"\xff\x90") + 6  # the length of its tile: as far as the codestream goes
        jp2 = jp2[:part] + bytes(4) + jp2[part + 4:]
        most = (1 << 32) - 1
        for size in (most, most + 1, most + 5000):
            head = jp2[:at] + struct.pack(">I4sQ", 1, b"jp2c", size - at) + jp2[at + 8:-2]
            for name, begin in (("a.jpg", jpeg[:-2]), ("a.jp2", head)):
                with self.subTest(name=name, size=size):
                    path = self.sparse(name, begin, size, jpeg[-2:] if name == "a.jpg" else
                                       jp2[-2:])
                    if size == most:
                        status, text, error = run("--dry-run", path)
                        self.assertEqual((status, error), (0, ""))
                        self.assertIn(b"as it is", text)
                    else:
                        self.assertFails(1, rf"{name}: holds {size} bytes, more than the {most} "
                                         "that one PDF image can hold; save it smaller, or in "
                                         "pieces", path, "-o", self.path("o.pdf"))

    def test_what_a_tiff_holds_besides_its_pixels_is_no_limit(self):
        path = self.put(tiff(page(16, 16, bytes(256), _37724=(7, bytes(90_000_000)))), "a.tif")
        self.convert(path, "--max-pixels", "1000")

    def test_the_manual_and_the_help_say_what_the_bound_is(self):
        with open(os.environ["SOURCE"] + "/tools/jtpdf/jtpdf.1") as file:
            text = re.sub(r"\s+", " ", file.read())
        self.assertIn("or whose decoding would take more than four bytes for each of them", text)
        self.assertRegex(re.sub(r"\s+", " ", run("--help")[1].decode()),
                         r"--max-pixels N refuse larger images, and more than 4 N bytes")


if __name__ == "__main__":
    unittest.main()
