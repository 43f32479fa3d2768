"""Every kind of input, written and looked at through readers that know nothing of us."""
import io
import os
import struct
import subprocess
import unittest
import zlib

import numpy
from PIL import Image, ImageCms, ImageOps

import support
from support import (BLOCK, JtpdfTest, blocks, chunk, exif, images, jpeg_bytes, jpeg_segment,
                     jpeg_with, render)


def png(width, height, depth, kind, rows, chunks=b"", interlace=0):
    """A PNG file of exactly these packed rows, which Pillow cannot write for every depth."""
    head = struct.pack(">IIBBBBB", width, height, depth, kind, 0, 0, interlace)
    data = zlib.compress(b"".join(b"\0" + row for row in rows))
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", head) + chunks + chunk(b"IDAT", data)
            + chunk(b"IEND", b""))


def png_chunks(data, name):
    """The contents of all chunks of that name."""
    found, at = [], 8
    while at < len(data):
        size = int.from_bytes(data[at:at + 4], "big")
        if data[at + 4:at + 8] == name:
            found.append(data[at + 8:at + 8 + size])
        at += 12 + size
    return found


def pack(values, depth):
    """Samples of one row, packed."""
    bits = "".join(format(value, f"0{depth}b") for value in values)
    bits += "0" * (-len(bits) % 8)
    return bytes(int(bits[i:i + 8], 2) for i in range(0, len(bits), 8))


def over(picture, background):
    """What a picture with alpha shows on a page of that colour."""
    page = Image.new("RGBA", picture.size, background)
    page.alpha_composite(picture.convert("RGBA"))
    return page.convert("RGB")


class Jpeg(JtpdfTest):
    def assertPassesThrough(self, data, name="a.jpg", messages=None, stored=None):
        path = self.put(data, name)
        pdf = self.convert(path, messages=messages)
        subprocess.run(["pdfimages", "-all", pdf, self.path("extracted")], check=True)
        name, = [n for n in os.listdir(self.folder) if n.startswith("extracted")]
        self.assertEqual(self.get(name), stored or data)
        return pdf

    def test_baseline_passes_byte_for_byte(self):
        picture = blocks()
        self.assertShows(self.assertPassesThrough(jpeg_bytes(picture)), picture, tolerance=12)

    def test_progressive_passes_byte_for_byte(self):
        picture = blocks()
        pdf = self.assertPassesThrough(jpeg_bytes(picture, progressive=True))
        self.assertShows(pdf, picture, tolerance=12)

    def test_grey_passes_byte_for_byte(self):
        picture = blocks(mode="L")
        self.assertShows(self.assertPassesThrough(jpeg_bytes(picture)), picture, tolerance=8)

    def test_cmyk_with_adobe_marker_passes_byte_for_byte(self):
        # Pillow writes the marker and inverted inks, as encoders for print do.
        picture = blocks(mode="CMYK")
        data = jpeg_bytes(picture)
        self.assertIn(b"Adobe", data)
        pdf = self.assertPassesThrough(data)
        self.assertEqual(images(pdf)[0]["color"], "cmyk")
        self.assertInks(pdf, picture)

    def test_cmyk_without_adobe_marker_is_complemented_and_said_so(self):
        # The same inks, not inverted, and no marker: what cjpeg-like encoders write.
        picture = blocks(mode="CMYK")
        inverted = Image.fromarray(255 - numpy.asarray(picture), "CMYK")
        data = jpeg_bytes(inverted)  # Pillow inverts once more: stored as they are
        at = data.index(b"\xff\xee")
        data = data[:at] + data[at + 2 + int.from_bytes(data[at + 2:at + 4], "big"):]
        self.assertNotIn(b"Adobe", data)
        pdf = self.convert(self.put(data, "plain.jpg"),
                           messages=r"plain\.jpg: is CMYK without the Adobe marker.*decoded")
        self.assertEqual(images(pdf)[0]["enc"], "image")
        self.assertInks(pdf, picture)

    def assertInks(self, pdf, picture):
        """The inks as they are in the PDF, read back by Poppler."""
        subprocess.run(["pdfimages", "-tiff", pdf, self.path("inks")], check=True)
        with Image.open(self.path("inks-000.tif")) as image:
            self.assertEqual(image.mode, "CMYK")
            found, wanted = numpy.asarray(image, int), numpy.asarray(picture, int)
        difference = numpy.abs(found - wanted)[BLOCK // 2::BLOCK, BLOCK // 2::BLOCK]
        self.assertLessEqual(difference.max(), 8)

    def test_rgb_named_by_its_components_shows_its_colours(self):
        picture = blocks()
        path = self.save(picture, "p.ppm")
        data = subprocess.run(["cjpeg", "-rgb", "-quality", "95", path], check=True,
                              capture_output=True).stdout
        at = data.find(b"\xff\xee")
        if at >= 0:  # the encoder's marker would say it too
            data = data[:at] + data[at + 2 + int.from_bytes(data[at + 2:at + 4], "big"):]
        self.assertNotIn(b"Adobe", data)
        pdf = self.convert(self.put(data, "rgb.jpg"))
        self.assertEqual(images(pdf)[0]["enc"], "image")
        self.assertShows(pdf, picture, tolerance=12)
        frame, scan = (data.index(marker) for marker in (b"\xff\xc0", b"\xff\xda"))
        for names in b"XGB", b"RXB", b"RGX":  # only all three of them say so
            other = bytearray(data)
            for number, name in enumerate(names):
                other[frame + 10 + 3 * number] = other[scan + 5 + 2 * number] = name
            pdf = self.convert(self.put(bytes(other), "other.jpg"))
            self.assertEqual(images(pdf)[0]["enc"], "jpeg")

    def test_arithmetic_coding_is_decoded(self):
        picture = blocks()
        path = self.save(picture, "p.ppm")
        done = subprocess.run(["cjpeg", "-arithmetic", "-quality", "95", path],
                              capture_output=True)
        self.assertEqual(done.returncode, 0)
        self.assertShows(self.convert(self.put(done.stdout, "a.jpg")), picture, tolerance=12)

    def test_scans_are_counted_where_they_are_decoded(self):
        path = self.save(blocks(2, 2), "p.ppm")
        data = subprocess.run(["cjpeg", "-arithmetic", "-progressive", path], check=True,
                              capture_output=True).stdout
        first = data.index(b"\xff\xda")
        second = data.index(b"\xff\xda", first + 2)
        def repeated(count):
            return data[:first] + data[first:second] * count + data[second:]
        scans = data.count(b"\xff\xda")
        self.convert(self.put(repeated(500 - scans + 1), "a.jpg"), messages="may show faults")
        self.assertFails(1, r"b\.jpg: cannot be decoded \(libjpeg: too many scans\)",
                         self.put(repeated(500 - scans + 2), "b.jpg"), "-o", self.path("o.pdf"))

    def test_of_several_pictures_the_first_is_used(self):
        first = jpeg_bytes(blocks(seed=1))
        first = jpeg_with(first, jpeg_segment(0xE2, b"MPF\0" + bytes(32)))
        second = jpeg_bytes(blocks(seed=2))
        pdf = self.assertPassesThrough(first + second, stored=first, messages=(
            rf"a\.jpg: only its first picture was used; {len(second)} bytes behind it"))
        self.assertShows(pdf, blocks(seed=1), tolerance=12)

    def with_segment_behind(self, data, marker, stray):
        """The JPEG with stray bytes behind its first segment of that marker."""
        at = data.index(bytes([0xFF, marker]))
        at += 2 + int.from_bytes(data[at + 2:at + 4], "big")
        return data[:at] + stray + data[at:]

    def test_stray_bytes_between_segments_are_passed_over_with_a_note(self):
        picture = blocks()
        plain = jpeg_bytes(picture)
        for stray in b"junk", b"\xff\0", b"\0\xff\0\0\xff\xff\0":
            for marker in 0xE0, 0xDB, 0xC0, 0xC4:
                with self.subTest(stray=stray, marker=marker):
                    data = self.with_segment_behind(plain, marker, stray)
                    self.assertSamePicture(Image.open(io.BytesIO(data)), picture, 12)
                    pdf = self.assertPassesThrough(data, messages=rf"a\.jpg: holds {len(stray)} stray "
                                                   "bytes between its segments, which decoders")
                    self.assertShows(pdf, picture, tolerance=12)

    def test_segments_that_are_too_short_for_their_data(self):
        picture = blocks()
        for segment, count in ((b"\xff\xee\0\x07Adobe\0\x64\0\0\0\0\1", 7), (b"\xff\xfe\0\0", 2),
                               (b"\xff\xe1\0\1", 2)):
            data = jpeg_with(jpeg_bytes(picture), segment)
            pdf = self.assertPassesThrough(data, messages=f"holds {count} stray bytes")
            self.assertShows(pdf, picture, tolerance=12)

    def test_strays_reach_no_further_than_the_file(self):
        data = jpeg_bytes(blocks())
        self.assertFails(1, "ends before its picture does", self.put(data[:100] + bytes(500),
                                                                     "a.jpg"), "-o", "/dev/null")

    def test_bytes_behind_the_picture_are_left_out(self):
        picture = jpeg_bytes(blocks(), progressive=True)
        self.assertPassesThrough(picture + b"a film of the moment before", stored=picture)

    def test_orientations_all_show_upright(self):
        upright = blocks()
        inverse = {1: None, 2: Image.FLIP_LEFT_RIGHT, 3: Image.ROTATE_180,
                   4: Image.FLIP_TOP_BOTTOM, 5: Image.TRANSPOSE, 6: Image.ROTATE_90,
                   7: Image.TRANSVERSE, 8: Image.ROTATE_270}
        for orientation, turn in inverse.items():
            for order in ("big", "little"):
                with self.subTest(orientation=orientation, order=order):
                    stored = upright if turn is None else upright.transpose(turn)
                    data = jpeg_with(jpeg_bytes(stored), jpeg_segment(
                        0xE1, b"Exif\0\0" + exif(orientation, order=order)))
                    # Pillow agrees on what upright is.
                    shown = ImageOps.exif_transpose(Image.open(io.BytesIO(data)))
                    self.assertEqual(shown.size, upright.size)
                    pdf = self.convert(self.put(data, f"{orientation}.jpg"))
                    self.assertShows(pdf, shown, tolerance=12)

    def test_orientations_that_are_none_are_ignored_with_a_note(self):
        for orientation in (0, 9, 65535):
            with self.subTest(orientation=orientation):
                data = jpeg_with(jpeg_bytes(blocks()), jpeg_segment(
                    0xE1, b"Exif\0\0" + exif(orientation)))
                pdf = self.convert(self.put(data, "a.jpg"),
                                   messages=f"orientation {orientation} is none of 1 to 8")
                self.assertShows(pdf, blocks(), tolerance=12)

    def test_rotation_option_turns_clockwise_in_place_of_exif(self):
        upright = blocks()
        data = jpeg_with(jpeg_bytes(upright), jpeg_segment(0xE1, b"Exif\0\0" + exif(6)))
        path = self.put(data, "a.jpg")
        for option, turn in (("none", None), ("0", None), ("90", Image.ROTATE_270),
                             ("180", Image.ROTATE_180), ("270", Image.ROTATE_90),
                             ("auto", Image.ROTATE_270)):
            with self.subTest(option=option):
                expected = upright if turn is None else upright.transpose(turn)
                self.assertShows(self.convert(path, "-r", option), expected, tolerance=12)


class Png(JtpdfTest):
    def test_grey_and_rgb_keep_every_depth(self):
        for mode, kind, channels in (("grey", 0, 1), ("rgb", 2, 3)):
            for depth in (1, 2, 4, 8, 16) if kind == 0 else (8, 16):
                with self.subTest(mode=mode, depth=depth):
                    most = (1 << depth) - 1
                    picture = numpy.asarray(blocks(mode="L" if kind == 0 else "RGB"), int)
                    samples = picture * most // 255
                    rows = [pack([int(v) for v in row.reshape(-1)], depth) for row in samples]
                    height, width = samples.shape[:2]
                    path = self.put(png(width, height, depth, kind, rows), "a.png")
                    pdf = self.convert(path)
                    self.assertEqual(images(pdf)[0]["bpc"], str(depth))
                    shown = (samples * 255 + most // 2) // most
                    self.assertShows(pdf, Image.fromarray(shown.astype(numpy.uint8)))

    def test_16_bits_are_kept_exactly(self):
        samples = [0, 1, 255, 256, 32767, 65534, 65535, 4660]
        path = self.put(png(8, 1, 16, 0, [struct.pack(">8H", *samples)]), "a.png")
        pdf = self.convert(path, "-S", "A4")
        with open(pdf, "rb") as file:
            data = file.read()
        at = data.index(b"/Subtype /Image")
        begin = data.index(b"stream\r\n", at) + 8
        length = int(data[data.index(b"/Length ", at) + 8:].split()[0])
        self.assertEqual(zlib.decompress(data[begin:begin + length]),
                         b"\0" + struct.pack(">8H", *samples))  # a row behind its filter

    def test_interlaced_files_show_like_others(self):
        for mode in ("RGB", "L", "RGBA"):
            with self.subTest(mode=mode):
                path = self.save(blocks(mode=mode), "plain.png")
                out = self.path("inter.png")
                subprocess.run(["/usr/bin/convert", path, "-interlace", "PNG", out], check=True)
                self.assertEqual(self.get("inter.png")[28], 1)
                self.assertShows(self.convert(out), over(blocks(mode=mode), "white"))

    def test_palettes_stay_palettes(self):
        for colours, bits in (2, 1), (4, 2), (16, 4), (30, 8):
            picture = blocks(6, 5).quantize(colours)
            path = self.save(picture, "a.png")
            pdf = self.convert(path)
            (dictionary, data), = support.stored(pdf)
            self.assertEqual(data, b"".join(png_chunks(self.get("a.png"), b"IDAT")))
            self.assertEqual(dictionary["/BitsPerComponent"], bits)
            self.assertEqual(dictionary["/ColorSpace"][:3], ["/Indexed", "/DeviceRGB", colours - 1])
            self.assertShows(pdf, picture)

    def test_interlaced_grey_palettes_become_grey_of_few_bits(self):
        for greys, bits in (((0, 255), 1), ((0, 85, 170, 255), 2), ((0, 17, 34, 51, 255), 4)):
            with self.subTest(bits=bits):
                indices = [[(x // BLOCK + y // BLOCK) % len(greys) for x in range(5 * BLOCK)]
                           for y in range(4 * BLOCK)]
                palette = chunk(b"PLTE", bytes(v for grey in greys for v in (grey,) * 3))
                rows = [pack(row, 4) for row in indices]
                path = self.put(png(5 * BLOCK, 4 * BLOCK, 4, 3, rows, palette), "plain.png")
                subprocess.run(["/usr/bin/convert", path, "-interlace", "PNG", "-define",
                                "png:bit-depth=4", "-define", "png:color-type=3",
                                self.path("a.png")], check=True)
                self.assertEqual(self.get("a.png")[24:29], b"\4\3\0\0\1")
                pdf = self.convert(self.path("a.png"))
                self.assertEqual((images(pdf)[0]["color"], images(pdf)[0]["bpc"]),
                                 ("gray", str(bits)))
                expected = Image.fromarray(numpy.array(
                    [[greys[i] for i in row] for row in indices], numpy.uint8))
                self.assertShows(pdf, expected)

    def test_palettes_with_transparency(self):
        picture = blocks(6, 5).quantize(8)
        for alphas in (bytes([0, 255, 0]), bytes([0, 128, 64, 255, 10])):
            with self.subTest(alphas=alphas):
                path = self.save(picture, "a.png", transparency=alphas)
                pdf = self.convert(path)
                mask, picture_stored = support.stored(pdf)
                self.assertEqual(mask[0]["/BitsPerComponent"], 1 if 128 not in alphas else 8)
                self.assertEqual(picture_stored[1],
                                 b"".join(png_chunks(self.get("a.png"), b"IDAT")))
                self.assertShows(pdf, over(Image.open(path), "white"))

    def test_colour_keys_stay_colour_keys(self):
        for mode in ("L", "RGB"):
            with self.subTest(mode=mode):
                picture = blocks(mode=mode)
                key = picture.getpixel((BLOCK, BLOCK))
                path = self.save(picture, "a.png", transparency=key)
                pdf = self.convert(path)
                (dictionary, data), = support.stored(pdf)
                values = key if mode == "RGB" else [key]
                self.assertEqual(dictionary["/Mask"], [v for value in values for v in [value] * 2])
                self.assertEqual(data, b"".join(png_chunks(self.get("a.png"), b"IDAT")))
                self.assertShows(pdf, over(Image.open(path), "white"))

    def test_colour_keys_of_16_bits_become_soft_masks(self):
        # 0x1234 is transparent, 0x1235 not, which readers that keep 8 bits take for the same.
        picture = numpy.repeat(numpy.repeat(numpy.array([[0x1234, 0x1235], [0x8000, 0x1234]]),
                                            BLOCK, 0), BLOCK, 1)
        rows = [row.astype(">u2").tobytes() for row in picture]
        path = self.put(png(2 * BLOCK, 2 * BLOCK, 16, 0, rows, chunk(b"tRNS", b"\x12\x34")),
                        "a.png")
        pdf = self.convert(path)
        (mask, _), (dictionary, data) = support.stored(pdf)
        self.assertEqual(mask["/BitsPerComponent"], 1)
        self.assertNotIn("/Mask", dictionary)
        self.assertEqual(data, png_chunks(self.get("a.png"), b"IDAT")[0])
        expected = numpy.where(picture == 0x1234, 255, picture >> 8).astype(numpy.uint8)
        self.assertShows(pdf, Image.fromarray(expected))

    def test_interlaced_colour_keys_become_soft_masks(self):
        for mode in ("L", "RGB"):
            picture = blocks(mode=mode)
            path = self.save(picture, "plain.png", transparency=picture.getpixel((BLOCK, BLOCK)))
            subprocess.run(["/usr/bin/convert", path, "-interlace", "PNG", "-define",
                            f"png:color-type={0 if mode == 'L' else 2}", self.path("a.png")],
                           check=True)
            data = self.get("a.png")
            self.assertEqual((data[25], data[28]), (0 if mode == "L" else 2, 1))
            self.assertTrue(png_chunks(data, b"tRNS"))
            pdf = self.convert(self.path("a.png"))
            self.assertEqual([i["type"] for i in images(pdf)], ["image", "smask"])
            self.assertShows(pdf, over(Image.open(path), "white"))

    def test_what_passes_through_is_stored_byte_for_byte(self):
        random = numpy.random.default_rng(1)
        for kind, depths in ((0, (1, 2, 4, 8, 16)), (2, (8, 16)), (3, (1, 2, 4, 8))):
            for depth in depths:
                with self.subTest(kind=kind, depth=depth):
                    components = 3 if kind == 2 else 1
                    size = (37 * depth * components + 7) // 8
                    rows = [random.bytes(size) for _ in range(9)]
                    palette = chunk(b"PLTE", random.bytes(3 << depth)) if kind == 3 else b""
                    # The stream in several chunks, as most encoders write it; rows of all filters.
                    stream = zlib.compress(b"".join(bytes([y % 5]) + row
                                                    for y, row in enumerate(rows)))
                    data = png(37, 9, depth, kind, rows, palette)
                    parts = stream[:1], stream[1:20], b"", stream[20:]
                    data = data.replace(chunk(b"IDAT", png_chunks(data, b"IDAT")[0]),
                                        b"".join(chunk(b"IDAT", part) for part in parts))
                    pdf = self.convert(self.put(data, "a.png"))
                    (dictionary, found), = support.stored(pdf)
                    self.assertEqual(found, stream)
                    self.assertEqual(dictionary["/DecodeParms"],
                                     {"/BitsPerComponent": depth, "/Colors": components,
                                      "/Columns": 37, "/Predictor": 15})
                    self.assertEqual(dictionary["/BitsPerComponent"], depth)
                    self.assertLess(os.path.getsize(pdf), len(data) + 2048 + 2 * len(palette))
                    for tool in "pdftoppm", "mutool":
                        shown = numpy.asarray(render(pdf, tool=tool))
                        self.assertGreater(shown.std(), 0)

    def test_palettes_with_every_byte_come_through(self):
        entries = bytes(range(256)) + bytes(range(255, -1, -1)) + bytes(256)
        rows = [bytes(range(256))] * 9
        pdf = self.convert(self.put(png(256, 9, 8, 3, rows, chunk(b"PLTE", entries)), "a.png"))
        (dictionary, _), = support.stored(pdf)
        value = dictionary["/ColorSpace"][3]
        self.assertEqual(value, "b:" + entries.hex())

    def test_alpha_is_a_soft_mask_and_shows_what_is_under_it(self):
        for mode in ("LA", "RGBA"):
            with self.subTest(mode=mode):
                picture = blocks(mode=mode)
                pdf = self.convert(self.save(picture, "a.png"))
                self.assertEqual([i["type"] for i in images(pdf)], ["image", "smask"])
                self.assertShows(pdf, over(picture, "white"))

    def test_alpha_over_a_coloured_page(self):
        picture = blocks(mode="RGBA")
        pdf = self.convert(self.save(picture, "a.png"))
        width, height = [72 * side / 96 for side in picture.size]
        colour = self.path("colour.pdf")
        objects = [b"<</Type/Catalog/Pages 2 0 R>>", b"<</Type/Pages/Kids[3 0 R]/Count 1>>",
                   b"<</Type/Page/Parent 2 0 R/MediaBox[0 0 %g %g]/Contents 4 0 R>>"
                   % (width, height), b""]
        paint = b"0 0.6 1 rg 0 0 %g %g re f" % (width, height)
        objects[3] = b"<</Length %d>>stream\n%s\nendstream" % (len(paint), paint)
        body = b"%PDF-1.5\n" + b"".join(b"%d 0 obj%s endobj\n" % (i + 1, o)
                                        for i, o in enumerate(objects))
        with open(colour, "wb") as file:
            file.write(body + b"trailer<</Root 1 0 R/Size 5>>\n%%EOF\n")
        both = self.path("both.pdf")
        done = subprocess.run(["qpdf", pdf, "--underlay", colour, "--", both],
                              capture_output=True)
        self.assertIn(done.returncode, (0, 3), done.stderr)  # 3: it mended the hand-made page
        self.assertShows(both, over(picture, (0, 153, 255, 255)))

    def test_alpha_that_is_opaque_throughout_is_dropped(self):
        for mode in ("LA", "RGBA"):
            picture = blocks(mode=mode)
            picture.putalpha(255)
            pdf = self.convert(self.save(picture, "a.png"))
            self.assertEqual([i["type"] for i in images(pdf)], ["image"])

    def test_every_sample_of_the_png_suite_depths_by_kind(self):
        # Colour types with alpha at 16 bits, which Pillow cannot write.
        for kind, channels in ((4, 2), (6, 4)):
            with self.subTest(kind=kind):
                small = numpy.random.default_rng(kind).integers(0, 65536, (4, 5, channels))
                big = small.repeat(BLOCK, 0).repeat(BLOCK, 1)
                rows = [row.astype(">u2").tobytes() for row in big]
                pdf = self.convert(self.put(png(5 * BLOCK, 4 * BLOCK, 16, kind, rows), "a.png"))
                self.assertEqual([i["bpc"] for i in images(pdf)], ["16", "16"])
                eight = (big >> 8).astype(numpy.uint8)
                picture = Image.fromarray(eight, "LA" if kind == 4 else "RGBA")
                self.assertShows(pdf, over(picture, "white"))

    def test_exif_chunk_turns_the_page(self):
        upright = blocks()
        path = self.save(upright.transpose(Image.ROTATE_90), "a.png", exif=b"Exif\0\0" + exif(6))
        self.assertShows(self.convert(path), upright)


    def test_of_an_animation_the_still_picture_is_used_with_a_note(self):
        picture = blocks()
        rows = [bytes(v for pixel in row for v in pixel) for row in numpy.asarray(picture).tolist()]
        for frames in 1, 7:
            control = chunk(b"acTL", struct.pack(">II", frames, 0))
            path = self.put(png(picture.width, picture.height, 8, 2, rows, control), "a.png")
            pdf = self.convert(path, messages=None if frames == 1 else r"a\.png: is an animation "
                               "of 7 frames; only its still picture was used")
            self.assertShows(pdf, picture)

    def test_whole_dots_per_inch_are_found_again(self):
        # PNG keeps whole dots per metre: 2834.65 of 72 dpi become 2835.
        def width_at(metre):
            density = chunk(b"pHYs", struct.pack(">IIB", metre, metre, 1))
            path = self.put(png(4000, 100, 1, 0, [bytes(500)] * 100, density), "a.png")
            return support.page_boxes(self.convert(path))[0][0]
        for dpi in 72, 75, 96, 300, 601, 1200:
            self.assertAlmostEqual(width_at(round(dpi / 0.0254)), 4000 * 72 / dpi, delta=0.006)
        for metre in 2834, 2836, 11810, 11812, 5000:  # too far from a whole number
            self.assertAlmostEqual(width_at(metre), 4000 * 72 / (metre * 0.0254), delta=0.006)


class Jpeg2000(JtpdfTest):
    # Pillow names no channel alpha; that the second of two and the fourth of four is, is custom.
    def jp2(self, picture, name="a.jp2", **options):
        return self.save(picture, name, irreversible=False, **options)

    def test_opaque_grey_and_rgb_pass_byte_for_byte(self):
        for mode in ("L", "RGB"):
            with self.subTest(mode=mode):
                picture = blocks(mode=mode)
                path = self.jp2(picture)
                pdf = self.convert(path)
                subprocess.run(["pdfimages", "-all", pdf, self.path("e")], check=True)
                self.assertEqual(self.get("e-000.jp2"), self.get("a.jp2"))
                self.assertShows(pdf, picture)

    def test_alpha_is_decoded(self):
        for mode in ("LA", "RGBA"):
            with self.subTest(mode=mode):
                picture = blocks(mode=mode)
                pdf = self.convert(self.jp2(picture))
                self.assertEqual([i["type"] for i in images(pdf)], ["image", "smask"])
                self.assertShows(pdf, over(picture, "white"))

    def test_sixteen_bits_are_kept(self):
        samples = numpy.asarray(blocks(mode="L"), numpy.uint16) * 256 + 1
        path = self.jp2(Image.fromarray(samples))
        pdf = self.convert(path)
        self.assertEqual(images(pdf)[0]["bpc"], "16")
        self.assertShows(pdf, blocks(mode="L"))

    def test_ycc_and_subsampling_are_decoded(self):
        picture = blocks()
        ycc = picture.convert("YCbCr")
        raw = b"".join(band.tobytes() for band in ycc.split())
        path = self.put(raw, "a.rawl")
        out = self.path("ycc.jp2")
        done = subprocess.run(["opj_compress", "-i", path, "-o", out, "-F",
                               f"{ycc.width},{ycc.height},3,8,u@1x1:1x1:1x1", "-mct", "0"],
                              capture_output=True)
        self.assertEqual(done.returncode, 0, done.stderr)
        data = self.get("ycc.jp2")
        at = data.index(b"colr") + 4
        data = data[:at + 3] + struct.pack(">I", 18) + data[at + 7:]  # the enumerated sYCC
        pdf = self.convert(self.put(data, "b.jp2"))
        self.assertShows(pdf, picture, tolerance=5)

    def test_cmyk_is_decoded(self):
        inks = blocks(mode="CMYK")
        raw = b"".join(band.tobytes() for band in inks.split())
        path = self.put(raw, "a.rawl")
        out = self.path("cmyk.jp2")
        subprocess.run(["opj_compress", "-i", path, "-o", out, "-F",
                        f"{inks.width},{inks.height},4,8,u", "-mct", "0"], capture_output=True)
        data = self.get("cmyk.jp2")
        at = data.index(b"colr") + 4
        data = data[:at + 3] + struct.pack(">I", 12) + data[at + 7:]
        cdef = data.find(b"cdef")
        if cdef >= 0:  # the encoder calls a fourth channel alpha: take that back
            size = int.from_bytes(data[cdef - 4:cdef], "big")
            head = data.index(b"jp2h")
            total = int.from_bytes(data[head - 4:head], "big") - size
            data = (data[:head - 4] + struct.pack(">I", total) + data[head:cdef - 4]
                    + data[cdef - 4 + size:])
        pdf = self.convert(self.put(data, "b.jp2"))
        subprocess.run(["pdfimages", "-tiff", pdf, self.path("inks")], check=True)
        with Image.open(self.path("inks-000.tif")) as image:
            self.assertEqual(numpy.asarray(image).tolist(), numpy.asarray(inks).tolist())

    def test_resolution_box(self):
        data = self.jp2_with_resolution(11811)  # 300 dpi, per metre
        pdf = self.convert(self.put(data, "r.jp2"))
        width, height = support.page_boxes(pdf)[0]
        self.assertAlmostEqual(width, blocks().width * 72 / 300, 2)

    def jp2_with_resolution(self, per_metre):
        self.jp2(blocks(), "plain.jp2")
        data = self.get("plain.jp2")
        box = struct.pack(">I4sHHHHBB", 18, b"resc", per_metre, 1, per_metre, 1, 0, 0)
        box = struct.pack(">I4s", len(box) + 8, b"res ") + box
        head = data.index(b"jp2h") - 4
        size = int.from_bytes(data[head:head + 4], "big")
        return (data[:head] + struct.pack(">I", size + len(box)) + data[head + 4:head + size]
                + box + data[head + size:])


class Tiff(JtpdfTest):
    def test_modes(self):
        for mode in ("1", "L", "RGB", "P", "CMYK", "RGBA", "LA"):
            for compression in (None, "tiff_lzw", "tiff_adobe_deflate", "packbits"):
                with self.subTest(mode=mode, compression=compression):
                    picture = (blocks(6, 5).quantize(16) if mode == "P" else
                               blocks(6, 5, "L").point(lambda v: 255 * (v > 127)).convert("1")
                               if mode == "1" else blocks(6, 5, mode))
                    path = self.save(picture, "a.tif", compression=compression)
                    pdf = self.convert(path)
                    if mode == "CMYK":
                        subprocess.run(["pdfimages", "-tiff", pdf, self.path("i")], check=True)
                        with Image.open(self.path("i-000.tif")) as inks:
                            self.assertEqual(inks.tobytes(), picture.tobytes())
                    else:
                        self.assertShows(pdf, over(picture, "white"))

    def tiff(self, picture, *options):
        """Through ImageMagick, which knows more of TIFF than Pillow does."""
        path = self.save(picture, "in.png")
        out = self.path("out.tif")
        subprocess.run(["/usr/bin/convert", path, *options, out], check=True)
        return out

    def test_every_depth(self):
        for depth in (1, 2, 4, 8, 12, 16):
            with self.subTest(depth=depth):
                most = min((1 << depth) - 1, 255)
                picture = blocks(mode="L").point(lambda v: (v * most // 255) * 255 // most)
                path = self.tiff(picture, "-depth", str(depth), "-define",
                                 "quantum:format=unsigned", "-type", "Grayscale")
                pdf = self.convert(path)
                self.assertEqual(images(pdf)[0]["bpc"], str({12: 16, 16: 8}.get(depth, depth)))  # each of 16 is two bytes alike
                self.assertShows(pdf, picture)

    def test_tiles_planes_white_zero_and_fax(self):
        cases = {"tiles": ("-define", "tiff:tile-geometry=32x16"),
                 "planes": ("-interlace", "plane"),
                 "jpeg": ("-compress", "jpeg", "-quality", "95"),
                 "big endian": ("-endian", "MSB", "-depth", "16")}
        for name, options in cases.items():
            with self.subTest(name):
                picture = blocks()
                self.assertShows(self.convert(self.tiff(picture, *options)), picture, tolerance=12)
        for mode in ("L", "1"):
            picture = blocks(mode="L").point(lambda v: 255 * (v > 127)).convert(mode)
            path = self.save(picture, "a.tif", tiffinfo={262: 0})
            with Image.open(path) as image:
                self.assertEqual(image.tag_v2[262], 0)
            self.assertShows(self.convert(path), picture)
        bilevel = blocks(mode="L").point(lambda v: 255 * (v > 127)).convert("1")
        for compression in ("Group4", "Fax"):
            with self.subTest(compression):
                pdf = self.convert(self.tiff(bilevel, "-compress", compression))
                self.assertEqual(images(pdf)[0]["bpc"], "1")
                self.assertShows(pdf, bilevel)

    def test_premultiplied_alpha_is_undone(self):
        picture = blocks(mode="RGBA")
        multiplied = numpy.asarray(picture, int)
        multiplied[..., :3] = (multiplied[..., :3] * multiplied[..., 3:] + 127) // 255
        path = self.save(Image.fromarray(multiplied.astype(numpy.uint8), "RGBA"), "a.tif")
        subprocess.run(["tiffset", "-s", "338", "1", "1", path], check=True)
        with Image.open(path) as image:
            self.assertEqual(image.tag_v2[338], (1,))
        self.assertShows(self.convert(path), over(picture, "white"))

    def test_every_page_becomes_one(self):
        pages = [blocks(seed=n) for n in range(5)]
        path = self.save(pages[0], "a.tif", save_all=True, append_images=pages[1:])
        pdf = self.convert(path)
        self.assertEqual(len(support.page_boxes(pdf)), 5)
        for number, picture in enumerate(pages):
            self.assertShows(pdf, picture, page=number + 1)

    def test_orientation_and_resolution_tags(self):
        upright = blocks()
        path = self.save(upright.transpose(Image.ROTATE_90), "a.tif", tiffinfo={274: 6},
                         dpi=(192, 192))
        pdf = self.convert(path)
        self.assertEqual(support.page_boxes(pdf)[0],
                         (upright.width * 72 / 192, upright.height * 72 / 192))
        self.assertSamePicture(render(pdf, dpi=192), upright)


class Webp(JtpdfTest):
    def test_opaque_and_alpha(self):
        for mode in ("RGB", "RGBA"):
            with self.subTest(mode=mode):
                picture = blocks(mode=mode)
                pdf = self.convert(self.save(picture, "a.webp", lossless=True, exact=True))
                self.assertEqual(len(images(pdf)), len(mode) - 2)
                self.assertShows(pdf, over(picture, "white"))

    def test_lossy_and_orientation(self):
        upright = blocks()
        path = self.save(upright.transpose(Image.ROTATE_90), "a.webp", quality=100,
                         exif=b"Exif\0\0" + exif(6))
        self.assertShows(self.convert(path), upright, tolerance=60)

    def test_first_frame_of_a_film(self):
        frames = [blocks(seed=n) for n in range(3)]
        path = self.save(frames[0], "a.webp", save_all=True, append_images=frames[1:],
                         lossless=True)
        pdf = self.convert(path, messages=r"a\.webp: only the first of its 3 frames was used")
        self.assertEqual(len(support.page_boxes(pdf)), 1)
        self.assertShows(pdf, frames[0])

    def test_exif_with_and_without_the_prefix_of_jpeg(self):
        upright = blocks()
        stored = upright.transpose(Image.ROTATE_90)
        for prefix in b"", b"Exif\0\0":
            self.save(stored, "a.webp", lossless=True, exif=exif(6))
            data = self.get("a.webp")
            at = data.index(b"EXIF")
            self.assertEqual(data[at + 8:at + 10], b"MM")  # Pillow takes the prefix off
            body = prefix + exif(6)
            data = (data[8:at] + b"EXIF" + struct.pack("<I", len(body)) + body
                    + bytes(len(body) % 2))
            path = self.put(b"RIFF" + struct.pack("<I", len(data)) + data, "b.webp")
            self.assertShows(self.convert(path), upright)


class Profiles(JtpdfTest):
    def test_rgb_profiles_are_declared_once_for_each_distinct_one(self):
        other = ImageCms.ImageCmsProfile(ImageCms.createProfile("sRGB")).tobytes()
        rgb = support.icc_profile()
        paths = [self.save(blocks(seed=1), "1.jpg", icc_profile=rgb),
                 self.save(blocks(seed=2), "2.png", icc_profile=rgb),
                 self.save(blocks(seed=3), "3.tif", icc_profile=rgb),
                 self.save(blocks(seed=4), "4.webp", icc_profile=rgb, lossless=True),
                 self.save(blocks(seed=5), "5.png", icc_profile=other),
                 self.save(blocks(seed=6), "6.png")]
        pdf = self.convert(*paths)
        data = self.get("out.pdf")
        self.assertEqual(data.count(b"/Alternate /DeviceRGB"), 2)
        self.assertEqual(data.count(b"/N 3"), 2)
        self.assertEqual([i["color"] for i in images(pdf)],
                         ["icc", "icc", "index", "index", "icc", "rgb"])
        for dictionary, _ in support.stored(pdf)[:5]:
            space = dictionary["/ColorSpace"]
            self.assertEqual((space[1] if space[0] == "/Indexed" else space)[0], "/ICCBased")
        subprocess.run(["qpdf", "--qdf", "--object-streams=disable", pdf, self.path("q.pdf")],
                       check=True)
        self.assertIn(rgb, self.get("q.pdf"))

    def test_profiles_of_grey_and_inks_are_declared_once_each(self):
        for space, mode, alternate in ((b"GRAY", "L", "Gray"), (b"CMYK", "CMYK", "CMYK")):
            with self.subTest(space=space):
                profile = support.icc_profile(space)
                paths = [self.save(blocks(mode=mode, seed=1), "1.jpg", icc_profile=profile),
                         self.save(blocks(mode=mode, seed=2), "2.tif", icc_profile=profile)]
                if mode == "L":
                    paths.append(self.save(blocks(mode=mode), "3.png", icc_profile=profile))
                pdf = self.convert(*paths)
                data = self.get("out.pdf")
                self.assertEqual(data.count(b"/Alternate /Device" + alternate.encode()), 1)
                self.assertEqual(data.count(b"/ICCBased"), len(paths))
                subprocess.run(["qpdf", "--qdf", "--object-streams=disable", pdf,
                                self.path("q.pdf")], check=True)
                self.assertIn(profile, self.get("q.pdf"))
                if mode == "L":
                    self.assertShows(pdf, blocks(mode=mode, seed=1), tolerance=10)

    def test_profiles_of_other_components_are_left_out_with_a_note_under_v(self):
        cases = ((b"GRAY", "RGB", "grey"), (b"CMYK", "L", "CMYK"), (b"RGB ", "L", "RGB"))
        for space, mode, word in cases:
            with self.subTest(space=space, mode=mode):
                path = self.save(blocks(mode=mode), "a.jpg",
                                 icc_profile=support.icc_profile(space))
                pdf = self.convert(path)
                self.assertNotIn(b"ICCBased", self.get("out.pdf"))
                self.convert(path, "-v", messages=rf"a\.jpg: its colour profile \({word}\) was "
                             "left out")

    def test_profiles_in_several_segments_are_joined(self):
        rgb = support.icc_profile()
        half = len(rgb) // 2
        data = jpeg_bytes(blocks())
        for number, part in ((2, rgb[half:]), (1, rgb[:half])):  # in the wrong order, too
            data = jpeg_with(data, jpeg_segment(
                0xE2, b"ICC_PROFILE\0" + bytes([number, 2]) + part))
        self.put(data, "a.jpg")
        swapped = jpeg_with(jpeg_with(jpeg_bytes(blocks()), jpeg_segment(
            0xE2, b"ICC_PROFILE\0\1\2" + rgb[:half])), jpeg_segment(
                0xE2, b"ICC_PROFILE\0\2\2" + rgb[half:]))
        for content in (data, swapped):
            pdf = self.convert(self.put(content, "a.jpg"))
            self.assertEqual(images(pdf)[0]["color"], "icc")
            subprocess.run(["qpdf", "--qdf", pdf, self.path("q.pdf")], check=True)
            self.assertIn(rgb, self.get("q.pdf"))

    def test_damaged_profiles_are_left_out(self):
        path = self.save(blocks(), "a.jpg", icc_profile=b"no profile at all" * 20)
        pdf = self.convert(path, "-v", messages="profile is damaged")
        self.assertEqual(images(pdf)[0]["color"], "rgb")


if __name__ == "__main__":
    unittest.main()
