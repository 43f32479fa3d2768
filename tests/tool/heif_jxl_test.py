"""HEIF, AVIF and JPEG XL: what becomes of the pictures of phones and of the web."""
import os
import struct
import subprocess
import tempfile
import unittest

import numpy
from PIL import Image

from pixels_test import over
from support import (JtpdfTest, blocks, exif, icc_profile, images, jpeg_bytes, jpeg_segment,
                     jpeg_with, page_boxes, render, run)


class Encoded(JtpdfTest):
    def command(self, *arguments):
        subprocess.run(arguments, check=True, capture_output=True)

    def pixels(self, pdf, number=0):
        subprocess.run(["pdfimages", "-png", pdf, self.path("p")], check=True)
        with Image.open(self.path(f"p-{number:03d}.png")) as image:
            image.load()
            return image

    def turned(self, orientation=6):
        """A JPEG that lies on its side."""
        stored = jpeg_bytes(blocks().transpose(Image.ROTATE_90))
        return jpeg_with(stored, jpeg_segment(0xE1, b"Exif\0\0" + exif(orientation, 192)))

    def check_words(self, error):
        """Nothing but the command's own: libraries have a word for their developers, too."""
        if "SANITIZED" not in os.environ:
            self.assertEqual([line for line in error.splitlines()
                              if not line.startswith("jtpdf: ")], [])

    def check_damage(self, path, number):
        """Cut off or changed anywhere, the file is refused, or shown where it can be."""
        with open(path, "rb") as file:
            whole = file.read()
        for size in (30, len(whole) // 3, len(whole) * 9 // 10, len(whole) - 1):
            self.assertFails(1, r"bad: (ends before its picture does|cannot be decoded \(lib|is "
                             "no picture)", self.put(whole[:size], "bad"), "-o",
                             self.path("o.pdf"))
        bad = bytearray(whole)
        for at in range(number, len(whole), 7):
            bad[at] ^= 0x5A
        status, _, error = run(self.put(bytes(bad), "bad"), "-o", self.path("o.pdf"))
        self.check_words(error)
        self.assertRegex(error, r"bad: .*(damaged|known here)" if status else "^$")


@unittest.skipUnless(os.environ.get("LATE_LIBRARIES"), "they are linked")
class LateLibraries(Encoded):
    def setUp(self):
        super().setUp()
        self.libraries = os.environ["LATE_LIBRARIES"].split(":")

    def pictures(self):
        """One for each of them."""
        self.save(blocks(), "a.png")
        self.command("heif-enc", self.path("a.png"), "-o", self.path("a.heic"))
        self.command("cjxl", self.path("a.png"), self.path("a.jxl"))
        return [self.path("a.heic"), self.path("a.jxl")]

    def test_they_are_loaded_for_their_pictures_alone(self):
        def loaded(*arguments):
            log = run(*arguments, "-q", "-o", self.path("o.pdf"),
                      environment={"LD_DEBUG": "files"})[2]
            return [library for library in self.libraries if f"/{library}" in log]
        pictures = self.pictures()
        self.assertEqual(loaded(self.path("a.png")), [])
        self.assertEqual(loaded(*pictures), self.libraries)

    def test_what_cannot_be_loaded_is_said(self):
        pictures = self.pictures()
        for library, picture in zip(self.libraries, pictures):
            folder = tempfile.mkdtemp(dir=self.folder)
            with open(os.path.join(folder, library), "wb"):
                pass  # empty, and found before the one of the system
            status, _, error = run(picture, picture, "-o", self.path("o.pdf"),
                                   environment={"LD_LIBRARY_PATH": folder})
            self.assertEqual(status, 1)
            self.assertEqual(error.count(f"is of a kind that {library} decodes, which cannot be "
                                         "loaded ("), 2)  # it is tried for each
            self.assertEqual(run(self.path("a.png"), "-o", self.path("o.pdf"),
                                 environment={"LD_LIBRARY_PATH": folder})[0], 0)


class JpegXl(Encoded):
    def encode(self, source, *options, name="a.jxl"):
        self.command("cjxl", source, self.path(name), *options)
        return self.path(name)

    def test_a_jpeg_comes_back_as_it_was(self):
        profile = icc_profile()
        for name, jpeg in {"plain": jpeg_bytes(blocks()), "grey": jpeg_bytes(blocks(mode="L")),
                           "progressive": jpeg_bytes(blocks(), progressive=True, dpi=(192, 192)),
                           "profile": jpeg_bytes(blocks(), icc_profile=profile),
                           "on its side": self.turned()}.items():
            with self.subTest(name):
                path = self.encode(self.put(jpeg, "a.jpg"))
                straight = page_boxes(self.convert(self.path("a.jpg")))
                pdf = self.convert(path)
                self.assertEqual(page_boxes(pdf), straight)
                subprocess.run(["pdfimages", "-all", pdf, self.path("j")], check=True)
                self.assertEqual(self.get("j-000.jpg"), jpeg)
                self.assertEqual(images(pdf)[0]["color"],
                                 {"grey": "gray", "profile": "icc"}.get(name, "rgb"))

    def test_a_jpeg_that_must_be_decoded(self):
        red_green_blue = subprocess.run(["cjpeg", "-rgb", "-quality", "95"], check=True,
                                        input=b"P6 96 56 255\n" + blocks().tobytes(),
                                        capture_output=True).stdout
        adobe = red_green_blue.index(b"\xff\xee")  # without the marker its names alone say RGB
        jpeg = red_green_blue[:adobe] + red_green_blue[adobe + 16:]
        self.assertShows(self.convert(self.encode(self.put(jpeg, "a.jpg"))), blocks())

    def test_pixels_without_loss(self):
        for mode in "L", "RGB", "LA", "RGBA":
            picture = blocks(mode=mode)
            path = self.encode(self.save(picture, "a.png"), "-d", "0")
            pdf = self.convert(path)
            shown = over(picture.convert("RGBA"), "white") if mode.endswith("A") else picture
            self.assertShows(pdf, shown)
            stored = [numpy.asarray(self.pixels(pdf).convert("RGB"))]
            self.assertEqual(stored[0].tolist(), numpy.asarray(
                Image.merge(mode.rstrip("A"), picture.split()[:len(mode.rstrip("A"))]
                            ).convert("RGB")).tolist())
            if mode.endswith("A"):
                self.assertEqual(self.pixels(pdf, 1).convert("L").tobytes(),
                                 picture.getchannel("A").tobytes())

    def test_sixteen_bits(self):
        samples = numpy.asarray(blocks(mode="L")).astype(numpy.uint16) * 251 + 77
        self.put(b"P5 96 56 65535\n" + samples.astype(">u2").tobytes(), "a.pgm")
        pdf = self.convert(self.encode(self.path("a.pgm"), "-d", "0"))
        self.assertEqual(images(pdf)[0]["bpc"], "16")
        self.assertShows(pdf, Image.fromarray((samples >> 8).astype(numpy.uint8)))

    def test_lossy_pixels(self):
        self.assertShows(self.convert(self.encode(self.save(blocks(), "a.png"), "-d", "0.1")),
                         blocks(), tolerance=30)

    def test_orientation_and_resolution(self):
        self.encode(self.put(self.turned(), "a.jpg"))
        kept = self.get("a.jxl")
        at = kept.index(b"brobExif") - 4
        packed = kept[at:at + int.from_bytes(kept[at:at + 4], "big")]
        plain = bytes(4) + exif(6, 192)
        plain = struct.pack(">I4s", len(plain) + 8, b"Exif") + plain
        self.encode(self.path("a.jpg"), "--lossless_jpeg=0", "-d", "0.1")  # drops the resolution
        for box in packed, plain:
            pdf = self.convert(self.put(self.get("a.jxl") + box, "b.jxl"))
            self.assertEqual(images(pdf)[0]["enc"], "image")
            self.assertEqual(page_boxes(pdf)[0], (48 * 72 / 96, 28 * 72 / 96))
            self.assertSamePicture(render(pdf, dpi=192), blocks(), 30)

    def test_a_profile_is_kept(self):
        path = self.encode(self.save(blocks(), "a.png", icc_profile=icc_profile()), "-d", "0")
        self.convert(path)
        self.assertIn(b"/ICCBased", self.get("out.pdf"))
        srgb = self.encode(self.save(blocks(), "a.png"), "-d", "0")
        self.convert(srgb)
        self.assertNotIn(b"/ICCBased", self.get("out.pdf"))

    def test_of_an_animation_the_first_frame_is_used_with_a_note(self):
        frames = [blocks(seed=seed).quantize(64) for seed in (1, 2, 3)]
        self.save(frames[0], "a.gif", save_all=True, append_images=frames[1:], duration=100)
        path = self.encode(self.path("a.gif"), "-d", "0")
        pdf = self.convert(path, messages=r"a\.jxl: only the first of its 3 frames")
        self.assertShows(pdf, frames[0].convert("RGB"))
        pdf = self.convert(path, "--all-frames")
        for number, frame in enumerate(frames):
            self.assertShows(pdf, frame.convert("RGB"), page=number + 1)

    def test_damage(self):
        for options in ((), ("--container=1",)):
            self.check_damage(self.encode(self.save(blocks(), "a.png"), "-d", "0", *options), 90)
        self.check_damage(self.encode(self.put(jpeg_bytes(blocks()), "a.jpg")), 200)


class Heif(Encoded):
    def encode(self, *sources, options=("-q", "95", "-p", "chroma=444"), name="a.heic"):
        self.command("heif-enc", *options, *sources, "-o", self.path(name))
        return self.path(name)

    AVIF = ("-A", "-q", "95", "-p", "chroma=444")

    def test_pictures_show(self):
        for mode in "L", "RGB", "RGBA":
            picture = blocks(mode=mode)
            source = self.save(picture, "a.png")
            for path in self.encode(source), self.encode(source, options=self.AVIF, name="a.avif"):
                with self.subTest(mode, path=path):
                    pdf = self.convert(path)
                    self.assertShows(pdf, over(picture, "white") if mode == "RGBA" else picture,
                                     tolerance=30)

    def test_opacity_is_kept(self):
        picture = Image.new("RGBA", (64, 64), (200, 100, 50, 255))
        picture.paste((200, 100, 50, 0), (0, 0, 32, 64))
        pdf = self.convert(self.encode(self.save(picture, "a.png")))
        mask = numpy.asarray(self.pixels(pdf, 1).convert("L"))
        self.assertLess(mask[:, :24].max(), 8)
        self.assertGreater(mask[:, 40:].min(), 247)

    def test_ten_and_twelve_bits(self):
        samples = numpy.arange(64 * 64).reshape(64, 64).astype(numpy.uint16) * 16
        rgb = numpy.stack([samples] * 3, -1)
        self.put(b"P6 64 64 65535\n" + rgb.astype(">u2").tobytes(), "a.ppm")
        self.command("convert", self.path("a.ppm"), "PNG48:" + self.path("a.png"))
        for options in ("-b", "10"), ("-A", "-b", "12"):
            pdf = self.convert(self.encode(self.path("a.png"), options=("-q", "95", *options)))
            self.assertEqual(images(pdf)[0]["bpc"], "16")
            shown = numpy.asarray(render(pdf).convert("L")).astype(int)
            self.assertLess(abs(shown - (samples >> 8))[4:-4, 4:-4].max(), 8)

    def test_a_profile_is_kept(self):
        source = self.save(blocks(), "a.png", icc_profile=icc_profile())
        self.convert(self.encode(source))
        self.assertIn(b"/ICCBased", self.get("out.pdf"))

    def test_libheif_turns_what_is_to_be_turned(self):
        self.encode(self.save(blocks(), "a.png"))
        whole = bytearray(self.get("a.heic"))
        # The property that keeps the rotation is made of one that says nothing here.
        at = whole.find(b"pixi")
        self.assertGreater(at, 0)
        size = struct.unpack(">I", whole[at - 4:at])[0]
        whole[at:at - 4 + size] = (b"irot" + bytes([1])).ljust(size - 4, b"\0")
        pdf = self.convert(self.put(bytes(whole), "turned.heic"))
        self.assertShows(pdf, blocks().transpose(Image.ROTATE_90), tolerance=30)

    def test_of_several_pictures_the_main_one_is_used_with_a_note(self):
        first, second = self.save(blocks(), "1.png"), self.save(blocks(seed=2), "2.png")
        pdf = self.convert(self.encode(first, second),
                           messages=r"a\.heic: only the main one of its 2 pictures was used")
        self.assertShows(pdf, blocks(), tolerance=30)
        pdf = self.convert(self.path("a.heic"), "--all-frames")
        for page, picture in enumerate((blocks(), blocks(seed=2))):
            self.assertShows(pdf, picture, page=page + 1, tolerance=30)

    def test_a_film_is_left_out_with_a_note(self):
        self.encode(self.save(blocks(), "a.png"))
        data = self.get("a.heic") + struct.pack(">I4s", 16, b"moov") + bytes(8)
        self.convert(self.put(data, "live.heic"), messages=r"live\.heic: its film was left out")

    def test_damage(self):
        source = self.save(blocks(), "a.png")
        self.check_damage(self.encode(source), 300)
        self.check_damage(self.encode(source, options=self.AVIF, name="a.avif"), 300)

    def test_of_more_pixels_than_allowed_nothing_is_decoded(self):
        path = self.encode(self.save(blocks(), "a.png"))
        self.assertFails(1, r"a\.heic: .*(96 x 56 pixels, more than|exceeds)", path,
                         "--max-pixels", "5000", "-o", self.path("o.pdf"))


if __name__ == "__main__":
    unittest.main()
