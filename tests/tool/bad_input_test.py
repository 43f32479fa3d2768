"""Files that are no pictures, damaged ones, and what is said about them."""
import faulthandler
import os
import resource
import struct
import subprocess
import unittest
import zlib

from PIL import Image

from support import JTPDF, JtpdfTest, blocks, chunk, jpeg_bytes, run

faulthandler.dump_traceback_later(300, exit=True)  # a hang is a failure that says where


class BadInput(JtpdfTest):
    def test_what_is_no_picture(self):
        out = self.path("o.pdf")
        for data in (b"\0", b"GIF88a" + bytes(50), b"%PDF-1.4\n", bytes(5000), b"\xff\xd8",
                     b"\x89PNG", b"RIFF\0\0\0\0WAVE"):
            with self.subTest(data=data[:8]):
                self.assertFails(1, r"x: is no picture of a known kind", self.put(data, "x"), "-o",
                                 out)
        self.assertFails(1, "x: is empty", self.put(b"", "x"), "-o", out)
        self.assertFails(1, "cannot be read: No such file or directory; check the name",
                         self.path("nowhere"), "-o", out)
        self.assertFalse(os.path.exists(out))

    def test_a_file_that_may_not_be_read(self):
        path = self.save(blocks(), "a.png")
        os.chmod(path, 0)
        prefix = []
        if os.geteuid() == 0:  # root may read everything: become somebody else
            os.chmod(self.folder, 0o755)
            prefix = ["setpriv", "--reuid=65534", "--clear-groups"]
            if subprocess.run([*prefix, JTPDF, "--version"], capture_output=True).returncode != 0:
                self.skipTest("the command lies in a folder that is closed to others")
        done = subprocess.run([*prefix, JTPDF, path], stdout=subprocess.PIPE,
                              stderr=subprocess.PIPE)
        self.assertEqual(done.returncode, 1, done.stderr)
        self.assertIn(b"cannot be read: Permission denied; check its permissions", done.stderr)

    def test_truncated_anywhere(self):
        picture = blocks(6, 4)
        self.save(picture, "a.jpg", icc_profile=b"x" * 300)
        self.save(picture, "p.jpg", progressive=True)
        self.save(picture, "a.png", icc_profile=b"x" * 300)
        self.save(picture, "a.jp2", irreversible=False)
        self.save(blocks(6, 4, "RGBA"), "b.jp2", irreversible=False)
        self.save(picture, "a.j2k", irreversible=False)
        self.save(picture, "a.tif", compression="tiff_lzw")
        self.save(picture, "a.webp")
        self.save(picture, "b.webp", lossless=True, icc_profile=b"x" * 300)
        names = sorted(os.listdir(self.folder))
        out = self.path("o.pdf")
        for name in names:
            data = self.get(name)
            # Nothing of a file follows its picture but a TIFF's directory, which comes last.
            for size in sorted({*range(1, min(len(data), 60), 7), *range(60, len(data),
                                                                         max(1, len(data) // 12)),
                                len(data) - 1}):
                with self.subTest(name=name, size=size):
                    status, _, error = run(self.put(data[:size], "cut"), "-o", out)
                    if name == "a.tif" and status == 0:
                        continue  # padding at the end
                    if name.endswith((".jp2", ".j2k")) and size >= len(data) - 2:
                        # Of the end marker alone nothing is missed: jpeg2000_test.py looks at it.
                        self.assertEqual(status, 0, error)
                        os.remove(out)
                        continue
                    self.assertEqual(status, 1, error)
                    self.assertRegex(error, r"^jtpdf: .*cut: (is|ends|cannot|has|claims|holds)")
                    self.assertFalse(os.path.exists(out))

    def test_enormous_sizes_are_refused_before_memory_is_taken(self):
        side = 100_000
        png = (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", side, side, 8, 6, 0, 0,
                                                                0))
               + chunk(b"IDAT", zlib.compress(bytes(1000))) + chunk(b"IEND", b""))
        self.save(blocks(), "a.jp2", irreversible=False)
        jp2 = self.get("a.jp2")
        at = jp2.index(b"\xff\x51") + 6
        jp2 = jp2[:at] + struct.pack(">IIIIII", side, side, 0, 0, side, side) + jp2[at + 24:]
        at = jp2.index(b"ihdr") + 4
        jp2 = jp2[:at] + struct.pack(">II", side, side) + jp2[at + 8:]
        self.save(blocks(), "a.tif")
        with Image.open(self.path("a.tif")) as image:
            width, height = image.size
        tif = self.get("a.tif").replace(struct.pack("<HHI", 256, 4, 1) + struct.pack("<I", width),
                                        struct.pack("<HHI", 256, 4, 1) + struct.pack("<I", side))
        tif = tif.replace(struct.pack("<HHIHH", 256, 3, 1, width, 0),
                          struct.pack("<HHII", 256, 4, 1, side))
        tif = tif.replace(struct.pack("<HHIHH", 257, 3, 1, height, 0),
                          struct.pack("<HHII", 257, 4, 1, side))
        tif = tif.replace(struct.pack("<HHII", 257, 4, 1, height),
                          struct.pack("<HHII", 257, 4, 1, side))
        jpeg = jpeg_bytes(blocks())
        sof = jpeg.index(b"\xff\xc0") + 5
        jpeg = jpeg[:sof] + struct.pack(">HH", 65535, 65535) + jpeg[sof + 4:]
        for name, data in (("a.png", png), ("b.jp2", jp2), ("b.tif", tif), ("b.jpg", jpeg)):
            with self.subTest(name=name):
                path = self.put(data, name)
                def limit():
                    resource.setrlimit(resource.RLIMIT_AS, (400 << 20, 400 << 20))
                done = subprocess.run([JTPDF, path, "-j", "1", "-o", self.path("o.pdf")],
                                      capture_output=True, text=True,
                                      preexec_fn=None if "SANITIZED" in os.environ else limit)
                self.assertEqual(done.returncode, 1, done.stderr)
                self.assertRegex(done.stderr, r"claims \d+ x \d+ pixels, more than the 500000000 "
                                 "allowed; if that is right, allow it with --max-pixels")
        lie = self.path("a.png")
        self.assertFails(1, "too small a file for its 100000 x 100000 pixels", lie, "-s", "1cm",
                         "--max-pixels", "20000000000", "-o", self.path("o.pdf"))

    def test_a_png_with_any_bit_changed_is_refused(self):
        self.save(blocks(4, 3), "a.png", dpi=(96, 96))
        whole = self.get("a.png")
        out = self.path("o.pdf")
        for at in range(8, len(whole)):
            data = bytearray(whole)
            data[at] ^= 1 << at % 8
            status, _, error = run(self.put(bytes(data), "b.png"), "-o", out)
            self.assertEqual(status, 1, at)
            self.assertRegex(error, r"b\.png: (is damaged|ends before|is a PNG file without|claims|"
                             "would need|has no pixels|is too small)")
        self.assertFalse(os.path.exists(out))

    def test_pngs_with_right_checksums_and_wrong_pixels(self):
        head = struct.pack(">IIBBBBB", 40, 30, 8, 2, 0, 0, 0)
        rows = (b"\0" + bytes(120)) * 30
        whole = zlib.compress(rows)
        out = self.path("o.pdf")

        def fails(pattern, data, head=head, chunks=b""):
            file = (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", head) + chunks + chunk(b"IDAT", data)
                    + chunk(b"IEND", b""))
            self.assertFails(1, r"a\.png: " + pattern, self.put(file, "a.png"), "-o", out)

        damaged = "cannot be decoded: its pixels are damaged or cut off"
        fails(damaged, whole[:-5])
        fails(damaged, whole[:-1] + b"x")
        fails(damaged, zlib.compress(rows[:-1]))
        fails(damaged, zlib.compress(rows + b"x"))
        fails(damaged, zlib.compress(rows[:121 * 7] + b"\5" + rows[121 * 7 + 1:]))
        no_stream = "is damaged: its pixels are not compressed as PNG has it"
        for stream in b"x", b"\x78\x9d" + whole[2:], b"\x79\x9c" + whole[2:], \
                b"\x78\xbb" + whole[2:], b"\x88\x1c" + whole[2:]:
            fails(no_stream, stream)
            # Of a large picture too, which is not inflated.
            fails(no_stream, stream + bytes(10_000), struct.pack(">IIBBBBB", 900, 900, 8, 2, 0, 0, 0))
        fails("is too small a file for its 9000 x 9000 pixels", whole,
              struct.pack(">IIBBBBB", 9000, 9000, 8, 2, 0, 0, 0))
        for kind, depth, *rest in (1, 8), (5, 8), (7, 8), (2, 4), (3, 16), (0, 3), (6, 4), (0, 0), \
                (0, 8, 1, 0, 0), (0, 8, 0, 1, 0), (0, 8, 0, 0, 2):
            fails("is damaged: its header names a kind of pixels that PNG does not have", whole,
                  struct.pack(">IIBBBBB", 40, 30, depth, kind, *(rest or (0, 0, 0))))
        for palette in b"", b"12", bytes(3 * 257):
            fails("is damaged: it has no palette, or one that is none", whole,
                  struct.pack(">IIBBBBB", 40, 30, 8, 3, 0, 0, 0), chunk(b"PLTE", palette))

    def test_max_pixels(self):
        path = self.save(blocks(), "a.png")  # 96 x 56
        self.convert(path, "--max-pixels", "5376")
        self.assertFails(1, "claims 96 x 56 pixels", path, "--max-pixels", "5375", "-o",
                         self.path("x.pdf"))

    def test_rare_jpegs_are_refused_in_words(self):
        jpeg = jpeg_bytes(blocks())
        sof = jpeg.index(b"\xff\xc0")
        out = self.path("o.pdf")
        lossless = jpeg[:sof + 1] + b"\xc3" + jpeg[sof + 2:]
        self.assertFails(1, "JPEG of a rare kind", self.put(lossless, "a.jpg"), "-o", out)
        twelve = jpeg[:sof + 4] + b"\x0c" + jpeg[sof + 5:]
        self.assertFails(1, "12-bit", self.put(twelve, "a.jpg"), "-o", out)
        no_size = jpeg[:sof + 5] + b"\0\0" + jpeg[sof + 7:]
        self.assertFails(1, "has no pixels", self.put(no_size, "a.jpg"), "-o", out)

    def test_names_reach_the_terminal_without_control_characters(self):
        path = self.put(b"x", "a\x1b[31m.png")
        _, _, error = run(path, "-o", self.path("o"))
        self.assertNotIn("\x1b", error)


if __name__ == "__main__":
    unittest.main()
