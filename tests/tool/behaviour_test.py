"""Output, exit status, messages, inputs: what a person meets besides the pictures."""
import faulthandler
import hashlib
import os
import pty
import re
import resource
import select
import shutil
import signal
import stat
import struct
import subprocess
import threading
import time
import unittest
import zlib

import numpy
from PIL import Image

from support import (JTPDF, JtpdfTest, blocks, images, jpeg_bytes, jpeg_segment, jpeg_with,
                     page_boxes, run)


faulthandler.dump_traceback_later(300, exit=True)  # a hang is a failure that says where


def noise(width, height, seed=1):
    """A picture that takes long to compress."""
    return Image.fromarray(numpy.random.default_rng(seed).integers(
        0, 256, (height, width, 3), numpy.uint8))


class Output(JtpdfTest):
    def assertNoLitter(self, *expected):
        self.assertEqual(sorted(os.listdir(self.folder)), sorted(expected))

    def test_a_file_is_replaced_whole_or_not_at_all(self):
        self.save(blocks(), "a.png")
        self.put(b"%PDF-1.5 truth", "out.pdf")
        self.put(self.get("a.png")[:-40], "bad.png")
        good, bad, out = self.path("a.png"), self.path("bad.png"), self.path("out.pdf")
        self.assertFails(1, r"bad\.png: ends before.*cut off", good, bad, "-o", out)
        self.assertEqual(self.get("out.pdf"), b"%PDF-1.5 truth")
        self.assertNoLitter("a.png", "bad.png", "out.pdf")
        self.assertEqual(run(good, "-o", out)[0], 0)
        self.assertTrue(self.get("out.pdf").startswith(b"%PDF-1.5"))
        self.assertNoLitter("a.png", "bad.png", "out.pdf")

    def test_a_picture_that_fails_while_it_is_decoded_leaves_nothing(self):
        self.save(blocks(40, 40), "a.png")
        data = bytearray(self.get("a.png"))
        at = data.index(b"IDAT") + 10
        data[at] ^= 0xFF  # found by nobody who reads the header only
        bad = self.put(bytes(data), "bad.png")
        good = self.path("a.png")
        out = self.path("out.pdf")
        for jobs in "1", "3":
            self.assertFails(1, r"bad\.png: cannot be decoded \(libpng: .*\).*save the picture",
                             good, bad, good, "-j", jobs, "-o", out)
            self.assertNoLitter("a.png", "bad.png")

    def test_skip_bad_leaves_out_reports_and_counts(self):
        good = self.save(blocks(), "a.png")
        bad = self.put(b"not a picture", "bad.txt")
        self.put(self.get("a.png")[:60], "cut.png")
        out = self.path("out.pdf")
        error = self.assertFails(1, "2 of 4 inputs failed", good, bad, self.path("cut.png"), good,
                                 "--skip-bad", "-o", out)
        self.assertRegex(error, r"bad\.txt: is no picture of a known kind; convert it")
        self.assertEqual(len(page_boxes(out)), 2)
        self.assertFails(1, "nothing was written", bad, "--skip-bad", "-o", self.path("none.pdf"))
        self.assertFalse(os.path.exists(self.path("none.pdf")))

    def test_new_files_get_the_usual_mode_and_old_ones_keep_theirs(self):
        path = self.save(blocks(), "a.png")
        old = os.umask(0o027)
        try:
            pdf = self.convert(path)
            self.assertEqual(stat.S_IMODE(os.stat(pdf).st_mode), 0o640)
            os.chmod(pdf, 0o604)
            self.convert(path)
            self.assertEqual(stat.S_IMODE(os.stat(pdf).st_mode), 0o604)
        finally:
            os.umask(old)

    def test_links_stay_links(self):
        path = self.save(blocks(), "a.png")
        os.mkdir(self.path("real"))
        self.put(b"old", "real/doc.pdf")
        os.symlink("real/doc.pdf", self.path("link.pdf"))
        self.assertEqual(run(path, "-o", self.path("link.pdf"))[0], 0)
        self.assertTrue(os.path.islink(self.path("link.pdf")))
        self.assertTrue(self.get("real/doc.pdf").startswith(b"%PDF"))
        self.assertEqual(os.listdir(self.path("real")), ["doc.pdf"])

    def test_an_input_is_never_replaced(self):
        path = self.save(blocks(), "a.png")
        before = self.get("a.png")
        os.link(path, self.path("other.png"))
        for name in (path, self.path("other.png")):
            self.assertFails(2, "is an input and would be replaced", path, "-o", name)
        self.assertEqual(self.get("a.png"), before)

    def test_any_name_can_be_written_and_read(self):
        for name in ("größe.pdf", "a b\nc.pdf", "[x]", "Ω" * 100 + ".pdf", b"\xff\xfe.pdf"):
            with self.subTest(name=name):
                folder = os.fsencode(self.folder)
                source = self.save(blocks(), "a.png")
                target = os.path.join(folder, os.fsencode(name))
                for locale in "C", "C.UTF-8":
                    done = subprocess.run([JTPDF, source, "-o", target], capture_output=True,
                                          env={**os.environ, "LC_ALL": locale})
                    self.assertEqual(done.returncode, 0, done.stderr)
                    with open(target, "rb") as file:
                        self.assertTrue(file.read().rstrip().endswith(b"%%EOF"))
        subprocess.run(["cp", source, self.path("[y]")])
        self.convert(self.path("[y]"))

    def test_standard_output_is_the_same_pdf(self):
        paths = [self.save(blocks(seed=n), f"{n}.png") for n in range(3)]
        expected = open(self.convert(*paths), "rb")
        self.addCleanup(expected.close)
        pdf = expected.read()
        for arguments in ([], ["-o", "-"]):
            self.assertEqual(run(*paths, *arguments), (0, pdf, ""))
        with open(self.path("file"), "wb") as file:  # in the middle of a file
            file.write(b"before")
            file.flush()
            subprocess.run([JTPDF, *paths], stdout=file, check=True)
            file.write(b"after")
        self.assertEqual(self.get("file"), b"before" + pdf + b"after")
        with open(self.path("file"), "ab") as file:
            subprocess.run([JTPDF, *paths], stdout=file, check=True)
        self.assertTrue(self.get("file").endswith(b"after" + pdf))

    def test_standard_output_that_is_a_socket(self):
        import socket
        ours, theirs = socket.socketpair()
        path = self.save(blocks(), "a.png")
        child = subprocess.Popen([JTPDF, path], stdout=theirs)
        theirs.close()
        data = b""
        while part := ours.recv(65536):
            data += part
        ours.close()
        self.assertEqual(child.wait(), 0)
        self.assertEqual(data, open(self.convert(path), "rb").read())

    def test_never_to_a_terminal(self):
        path = self.save(blocks(), "a.png")
        master, slave = pty.openpty()
        done = subprocess.run([JTPDF, path], stdout=slave, stderr=subprocess.PIPE)
        os.close(slave)
        os.close(master)
        self.assertEqual(done.returncode, 2)
        self.assertIn(b"not written to a terminal; name a file with -o", done.stderr)

    def test_a_fifo_and_a_device_are_written_directly(self):
        path = self.save(blocks(), "a.png")
        os.mkfifo(self.path("fifo"))
        reader = subprocess.Popen(["timeout", "30", "cat", self.path("fifo")],
                                  stdout=subprocess.PIPE)
        self.assertEqual(run(path, "-o", self.path("fifo"))[0], 0)
        self.assertEqual(reader.communicate()[0], open(self.convert(path), "rb").read())

    def test_full_disks_are_reported(self):
        path = self.save(noise(200, 200), "a.png")
        for arguments in (["-o", "/dev/full"],):
            self.assertFails(1, r"/dev/full: cannot be written: No space left on device; make room",
                             path, *arguments)
        with open("/dev/full", "wb") as full:
            done = subprocess.run([JTPDF, path], stdout=full, stderr=subprocess.PIPE)
        self.assertEqual(done.returncode, 1)
        self.assertIn(b"standard output: cannot be written: No space left", done.stderr)

    def test_a_full_file_system_leaves_no_litter(self):
        path = self.save(noise(400, 400), "a.png")
        small = self.path("small")
        os.mkdir(small)
        mount = subprocess.run(["mount", "-t", "tmpfs", "-o", "size=64k", "tmpfs", small],
                               capture_output=True)
        if mount.returncode != 0:
            self.skipTest("a small tmpfs cannot be mounted here (needs root)")
        try:
            out = os.path.join(small, "out.pdf")
            self.assertFails(1, r"out\.pdf: cannot be written: No space left", path, "-o", out)
            self.assertEqual(os.listdir(small), [])
        finally:
            subprocess.run(["umount", small], check=True)

    def test_a_file_size_limit_is_reported(self):
        path = self.save(noise(400, 400), "a.png")
        def limit():
            signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
            resource.setrlimit(resource.RLIMIT_FSIZE, (20000, 20000))
        done = subprocess.run([JTPDF, path, "-o", self.path("out.pdf")], capture_output=True,
                              preexec_fn=limit)
        self.assertEqual(done.returncode, 1, done.stderr)
        self.assertIn(b"cannot be written: File too large", done.stderr)
        self.assertNoLitter("a.png")

    def test_a_closed_pipe_is_an_error_not_a_crash(self):
        path = self.save(noise(600, 600), "a.png")
        child = subprocess.Popen([JTPDF, path], stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        child.stdout.read(10)
        child.stdout.close()
        error = child.stderr.read()
        child.stderr.close()
        self.assertEqual(child.wait(), 1)
        self.assertIn(b"standard output: cannot be written: Broken pipe", error)

    def test_places_that_cannot_be_written(self):
        path = self.save(blocks(), "a.png")
        self.assertFails(1, r"nowhere/out\.pdf: cannot be written: No such file.*make its folder",
                         path, "-o", self.path("nowhere/out.pdf"))
        self.assertFails(1, "cannot be written: Is a directory", path, "-o", self.folder)

    def test_signals_leave_no_litter(self):
        paths = [self.save(noise(1500, 1500, n), f"{n}.png", compress_level=1) for n in range(6)]
        names = os.listdir(self.folder)
        for number in signal.SIGINT, signal.SIGTERM, signal.SIGHUP:
            with self.subTest(number):
                child = subprocess.Popen([JTPDF, "--compression", "12", *paths, "-o",
                                          self.path("out.pdf")])
                while child.poll() is None and len(os.listdir(self.folder)) == len(names):
                    time.sleep(0.002)
                time.sleep(0.05)
                child.send_signal(number)
                self.assertEqual(child.wait(), -number)  # the shell must know what ended it
                self.assertNoLitter(*names)

    def test_output_is_the_same_whatever_the_jobs_and_the_locale(self):
        paths = []
        for n in range(12):
            paths.append(self.save(blocks(20 + n, 9, seed=n), f"{n}.png"))
            paths.append(self.save(blocks(20 + n, 9, seed=n), f"{n}.jpg"))
        hashes = set()
        for jobs in "1", "2", "7":
            for locale in "C", "de_DE.UTF-8":
                status, data, _ = run(*paths, "-j", jobs, "--title", "Ä",
                                      environment={"LC_ALL": locale, "TZ": "Asia/Tokyo"})
                self.assertEqual(status, 0)
                hashes.add(hashlib.sha256(data).hexdigest())
        self.assertEqual(len(hashes), 1)
        self.assertNotIn(b"Date", data)


class Inputs(JtpdfTest):
    def test_content_decides_and_names_do_not(self):
        for real, name in (("PNG", "a.jpg"), ("JPEG", "b.tif"), ("TIFF", "c"), ("WEBP", "d.png"),
                           ("JPEG2000", "e.pdf")):
            blocks().save(self.path(name), real)
        pdf = self.convert(*[self.path(n) for n in ("a.jpg", "b.tif", "c", "d.png", "e.pdf")])
        self.assertEqual([i["enc"] for i in images(pdf)],
                         ["image", "jpeg", "image", "image", "jpx"])

    def test_folders_are_read_in_natural_order_with_their_images_only(self):
        os.mkdir(self.path("scans"))
        order = ["Scan1.png", "scan2.png", "scan02.png", "scan10.png", "scan10b.png", "x.png"]
        for number, name in enumerate(order):
            self.save(blocks(4 + number, 4, seed=number), "scans/" + name)
        self.put(b"words", "scans/notes.txt")
        self.put(b"", "scans/empty.png")
        self.save(blocks(40, 4), "scans/.hidden.png")
        os.mkdir(self.path("scans/inner"))
        os.rename(self.path("scans/scan02.png"), self.path("scans/scan3.png"))
        widths = [round(w * 96 / 72 / 8) for w, _ in page_boxes(self.convert(self.path("scans")))]
        self.assertEqual(widths, [4, 5, 6, 7, 8, 9])
        os.mkdir(self.path("none"))
        self.assertFails(1, r"none: is a folder without a picture", self.path("none"), "-o",
                         self.path("x.pdf"))

    def test_pages_come_in_the_order_given(self):
        paths = [self.save(blocks(4 + n, 4), f"{n}.png") for n in (3, 1, 2)]
        pdf = self.convert(*paths, paths[0])
        self.assertEqual([round(w / 6) for w, _ in page_boxes(pdf)], [7, 5, 6, 7])

    def test_lists_from_files_and_standard_input(self):
        paths = [self.save(blocks(4 + n, 4), f"{n} x.png") for n in range(3)]
        data = "\0".join(paths).encode() + b"\0"
        listed = self.put(data, "list")
        self.assertEqual(len(page_boxes(self.convert("--from-file", listed))), 3)
        out = self.path("o.pdf")
        status, _, error = run(paths[0], "--from-file", "-", "-o", out, input=data)
        self.assertEqual((status, error), (0, ""))
        self.assertEqual(len(page_boxes(out)), 4)
        self.assertFails(1, "nowhere: cannot be read", "--from-file", self.path("nowhere"), "-o",
                         out)

    def test_one_image_from_standard_input(self):
        self.save(blocks(), "a.png")
        out = self.path("o.pdf")
        status, _, error = run("-", self.path("a.png"), "-o", out, input=self.get("a.png"))
        self.assertEqual((status, error), (0, ""))
        self.assertEqual(len(page_boxes(out)), 2)
        self.assertFails(1, "standard input: is empty", "-", "-o", out, input=b"")
        self.assertFails(2, "standard input can be read only once", "-", "-", "-o", out)
        self.assertFails(2, "only once", "-", "--from-file", "-", "-o", out)

    def test_pipes_are_inputs_too(self):
        self.save(blocks(), "a.png")
        done = subprocess.run(["bash", "-c", f'"{JTPDF}" <(cat a.png) -o o.pdf'],
                              cwd=self.folder, capture_output=True)
        self.assertEqual((done.returncode, done.stderr), (0, b""))

    def test_identical_images_are_written_once_and_drawn_twice(self):
        path = self.save(blocks(seed=1), "a.png")
        shutil.copy(path, self.path("copy.png"))
        os.link(path, self.path("link.png"))
        other = self.save(blocks(seed=2), "b.png")
        tiff = self.save(blocks(seed=3), "a.tif", save_all=True, append_images=[blocks(seed=4)])
        shutil.copy(tiff, self.path("b.tif"))
        for jobs in "1", "4":
            pdf = self.convert(path, self.path("copy.png"), other, self.path("link.png"), path,
                               tiff, self.path("b.tif"), "-j", jobs)
            with open(pdf, "rb") as file:
                self.assertEqual(file.read().count(b"/Subtype /Image"), 4)
            self.assertEqual(len(page_boxes(pdf)), 9)
            objects = [i["object"] for i in images(pdf)]
            self.assertEqual(len(objects), 9)
            self.assertEqual(len({objects[i] for i in (0, 1, 3, 4)}), 1)
            self.assertEqual(objects[5:7], objects[7:9])

    def test_nearly_identical_images_are_told_apart(self):
        # The same size and the same bytes wherever a quick look would look.
        big = jpeg_bytes(noise(700, 700))
        at = len(big) // 4
        while 0xFF in big[at - 2:at + 2] or big[at] ^ 1 == 0xFF:
            at += 1
        changed = big[:at] + bytes([big[at] ^ 1]) + big[at + 1:]
        pdf = self.convert(self.put(big, "a.jpg"), self.put(changed, "b.jpg"),
                           self.put(big, "c.jpg"))
        objects = [i["object"] for i in images(pdf)]
        self.assertEqual(objects[0], objects[2])
        self.assertNotEqual(objects[0], objects[1])

    def test_metadata_in_any_script_and_locale(self):
        path = self.save(blocks(), "a.png")
        text = "Größe · Ελλάδα · 写真 · 😀🎞 end"
        pdf = self.path("o.pdf")
        status, _, error = run(path, "-o", pdf, "--title", text, "--author", "Ö (a\\b)",
                               "--subject", "[s, t]", "--keywords", "k1, k2", "--creator", "me",
                               "--creationdate", "2026-05-17T12:30:00+02:00",
                               "--moddate", "2026-05-18", environment={"LC_ALL": "C"})
        self.assertEqual((status, error), (0, ""))
        info = subprocess.run(["pdfinfo", "-isodates", "-enc", "UTF-8", pdf], text=True,
                              capture_output=True, env={**os.environ, "TZ": "UTC"}).stdout
        for line in (f"Title: +{re.escape(text)}", r"Author: +Ö \(a\\b\)", r"Subject: +\[s, t\]",
                     "Keywords: +k1, k2", "Creator: +me", "CreationDate: +2026-05-17T12:30:00",
                     "ModDate: +2026-05-18"):
            self.assertRegex(info, "(?m)^" + line)
        self.assertFails(2, "--title: the text is not UTF-8", path, "--title", b"\xff".decode(
            "latin-1").encode("latin-1").decode("utf-8", "surrogateescape"), "-o", pdf)

    def test_name_and_role_are_recorded(self):
        path = self.save(blocks(), "Größe 1.png")
        pdf = self.convert(path, "--role", "ClipArt")
        text = subprocess.run(["qpdf", "--json", pdf], capture_output=True, text=True).stdout
        self.assertIn('"/JTImageType": "/ClipArt"', text)
        self.assertRegex(text, r'"/JTImageName": "(u:)?Größe 1\.png"')


class BadInput(JtpdfTest):
    def test_what_is_no_picture(self):
        out = self.path("o.pdf")
        for data in (b"\0", b"GIF89a" + bytes(50), b"%PDF-1.4\n", bytes(5000), b"\xff\xd8",
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
                    self.assertEqual(status, 1, error)
                    self.assertRegex(error, r"^jtpdf: .*cut: (is|ends|cannot|has|claims|holds)")
                    self.assertFalse(os.path.exists(out))

    def test_enormous_sizes_are_refused_before_memory_is_taken(self):
        side = 100_000
        def chunk(name, data):
            return struct.pack(">I", len(data)) + name + data + struct.pack(
                ">I", zlib.crc32(name + data))
        png = (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", side, side, 8, 6, 0, 0,
                                                                0))
               + chunk(b"IDAT", zlib.compress(bytes(1000))) + chunk(b"IEND", b""))
        self.save(blocks(), "a.jp2", irreversible=False)
        jp2 = self.get("a.jp2")
        at = jp2.index(b"\xff\x51") + 6
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


class Words(JtpdfTest):
    def test_help_fits_a_screen_with_three_examples(self):
        status, text, error = run("--help")
        lines = text.decode().splitlines()
        self.assertEqual((status, error), (0, ""))
        self.assertLessEqual(len(lines), 24)
        self.assertLessEqual(max(map(len, lines)), 80)
        self.assertEqual(len([l for l in lines if l.startswith("  ") and "jtpdf" in l]), 3)

    def test_every_option_is_in_the_help_the_manual_and_the_completions(self):
        source = os.environ["SOURCE"] + "/tools/jtpdf/"
        with open(source + "options.cpp") as file:
            names = re.findall(r"--[a-z-]+(?=\")", file.read())
        self.assertGreater(len(names), 20)
        texts = {"help": run("--help")[1].decode()}
        for name in ("jtpdf.1", "completions/jtpdf.bash", "completions/_jtpdf"):
            with open(source + name) as file:
                texts[name] = file.read().replace("\\-", "-")
        for name in names:
            for where, text in texts.items():
                self.assertIn(name, text, where)

    def test_completions(self):
        folder = os.environ["SOURCE"] + "/tools/jtpdf/completions/"
        script = """source "$1/jtpdf.bash"; shift
                    COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); _jtpdf; echo "${COMPREPLY[*]}" """
        for words, expected in ((("--pa",), "--pagesize"), (("-f", "e"), "exact enlarge"),
                                (("-S", "Le"), "Letter Legal"), (("pi",), "picture.png")):
            self.save(blocks(), "picture.png")
            done = subprocess.run(["bash", "-c", script, "-", folder, "jtpdf", *words],
                                  capture_output=True, text=True, cwd=self.folder)
            self.assertEqual(done.stdout.split(), expected.split(), done.stderr)
        if shutil.which("zsh"):
            done = subprocess.run(["zsh", "-n", folder + "_jtpdf"], capture_output=True)
            self.assertEqual((done.returncode, done.stderr), (0, b""))

    def test_manual_formats_without_a_warning(self):
        done = subprocess.run(["groff", "-man", "-Tutf8", "-ww",
                               os.environ["SOURCE"] + "/tools/jtpdf/jtpdf.1"], capture_output=True)
        self.assertEqual((done.returncode, done.stderr), (0, b""))
        self.assertIn(b"turn images into a PDF", done.stdout)

    def test_version(self):
        status, text, _ = run("--version")
        self.assertEqual(status, 0)
        self.assertRegex(text.decode(), r"^jtpdf \d+\.\d+\.\d+\n$")

    def test_usage_errors(self):
        for arguments in ([], ["--nonsense"], ["-j"], ["a", "-q", "-v", "-o", "x"]):
            self.assertFails(2, r"see jtpdf --help", *arguments)

    def test_quiet_and_verbose(self):
        data = jpeg_bytes(blocks()) + b"more"
        path = self.put(data, "a.jpg")
        self.convert(path)
        self.convert(path, "-v", messages="only its first picture was used; 4 bytes")
        odd = self.put(jpeg_with(jpeg_bytes(blocks()), jpeg_segment(
            0xE1, b"Exif\0\0MM\0*\0\0\0\x08\0\1\1\x12\0\3\0\0\0\1\0\x09\0\0\0\0\0\0")), "b.jpg")
        self.convert(odd, messages="orientation 9")
        self.convert(odd, "-q")

    def test_dry_run_lists_what_would_become_of_each_input(self):
        one = self.save(blocks(), "a.jpg", dpi=(96, 96))
        two = self.save(blocks(mode="LA"), "b.png")
        bad = self.put(b"?", "c")
        status, text, error = run("--dry-run", one, two, bad, one)
        self.assertEqual(status, 1)
        self.assertIn("c: is no picture", error)
        head, *rows = text.decode().splitlines()
        self.assertRegex(head, "FORMAT +PIXELS +BITS +COLOUR +PROFILE +TURNED +PAGE.*STORED +FILE")
        self.assertRegex(rows[0], r"^JPEG +96x56 +8 +RGB +none +no +72x42 +as it is +.*a\.jpg$")
        self.assertRegex(rows[1],
                         r"^PNG +96x56 +8 +grey\+alpha +none +no +72x42 +decoded: .*b\.png$")
        self.assertIn("same as page 1", rows[2])
        self.assertEqual(sorted(os.listdir(self.folder)), ["a.jpg", "b.png", "c"])

    def test_progress_shows_on_a_terminal_and_nowhere_else(self):
        paths = [self.save(noise(300, 300, n), f"{n}.png", compress_level=1) for n in range(8)]
        command = [JTPDF, "-j", "1", *paths, "-o", "-"]
        def take_late(output):
            # Longer than a second on any machine: the pipe is full until somebody reads.
            time.sleep(1.5)
            output.read()
            output.close()
        def on_terminal(*more):
            master, slave = pty.openpty()
            child = subprocess.Popen([*command, *more], stdout=subprocess.PIPE, stderr=slave)
            os.close(slave)
            reader = threading.Thread(target=take_late, args=[child.stdout])
            reader.start()
            text = b""
            while True:
                try:
                    if select.select([master], [], [], 60)[0]:
                        part = os.read(master, 4096)
                        if not part:
                            break
                        text += part
                except OSError:  # the other end is closed
                    break
            os.close(master)
            reader.join()
            self.assertEqual(child.wait(), 0)
            return text.decode()
        text = on_terminal()
        self.assertRegex(text, r"\[#+-*\] \d/8 pages, \d+\.\d MB/s, \d+ s left")
        self.assertTrue(text.endswith("\r\033[K"))  # and is gone in the end
        self.assertEqual(on_terminal("-q"), "")
        done = subprocess.run(command, capture_output=True)
        self.assertEqual((done.returncode, done.stderr), (0, b""))


class Memory(JtpdfTest):
    def peak(self, *arguments):
        """Megabytes, read from the process itself while it waits for its output to be taken."""
        child = subprocess.Popen([JTPDF, *arguments], stdout=subprocess.PIPE)
        peak = 0
        while child.stdout.read(1 << 20):
            with open(f"/proc/{child.pid}/status") as status:
                found = re.search(r"VmHWM:\s+(\d+)", status.read())
            peak = max(peak, int(found.group(1)) / 1024 if found else 0)
        child.stdout.close()
        self.assertEqual(child.wait(), 0)
        return peak

    @unittest.skipIf("SANITIZED" in os.environ, "sanitizers have memory of their own")
    def test_memory_does_not_grow_with_the_pages(self):
        base = jpeg_bytes(noise(1000, 700))  # about 1 MB
        paths = [self.put(jpeg_with(base, jpeg_segment(0xFE, b"%d" % n)), f"{n}.jpg")
                 for n in range(100)]
        few, many = self.peak(*paths[:25]), self.peak(*paths)
        self.assertLess(many, 32)
        self.assertLess(many, few + 6)
        pngs = [self.save(noise(500 + n, 500), f"{n}.png", compress_level=1) for n in range(40)]
        few, many = self.peak(*pngs[:10]), self.peak(*pngs)
        self.assertGreater(few, 4)
        self.assertLess(many, few + 6)


if __name__ == "__main__":
    unittest.main()
