"""What is read: names, folders, lists, pipes, and pictures given twice."""
import faulthandler
import os
import resource
import shutil
import subprocess
import threading
import unittest

from support import JTPDF, JtpdfTest, blocks, images, jpeg_bytes, noise, page_boxes, run

faulthandler.dump_traceback_later(300, exit=True)  # a hang is a failure that says where


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
        self.save(blocks(40, 4), "scans/.hidden.png")
        os.mkdir(self.path("scans/inner"))
        os.rename(self.path("scans/scan02.png"), self.path("scans/scan3.png"))
        widths = [round(w * 96 / 72 / 8) for w, _ in page_boxes(self.convert(self.path("scans")))]
        self.assertEqual(widths, [4, 5, 6, 7, 8, 9])
        os.mkdir(self.path("none"))
        self.assertFails(1, r"none: is a folder without a picture", self.path("none"), "-o",
                         self.path("x.pdf"))

    def test_a_bad_picture_in_a_folder_fails_like_a_named_one(self):
        os.mkdir(self.path("scans"))
        for number in 1, 3:
            self.save(blocks(4 + number, 4), f"scans/scan{number}.jpg")
        out = self.path("o.pdf")
        data = self.get("scans/scan1.jpg")
        bad = {"scan2.jpg": b"", "scan4.jpg": b"garbage", "scan5.JPEG": b"\0", "x.j2k": b"x",
               "animation": b"GIF89a" + bytes(50), "photo.HEIC": b"words", "cut": data[:40],
               "phone": b"\0\0\0\x18ftypheic" + bytes(50), "layers": b"8BPS\0\1" + bytes(50)}
        for name, content in bad.items():
            with self.subTest(name):
                self.put(content, "scans/" + name)
                self.assertFails(1, f"(?s)scans/{name}: (is|ends|has|cannot).*1 of 3 inputs cannot be used; "
                                 "--skip-bad", self.path("scans"), "-o", out)
                self.assertFalse(os.path.exists(out))
                os.remove(self.path("scans/" + name))
        for name, content in bad.items():
            self.put(content, "scans/" + name)
        error = self.assertFails(1, f"{len(bad)} of {len(bad) + 2} inputs failed",
                                 self.path("scans"), "--skip-bad", "-o", out)
        for name in bad:
            self.assertIn(f"scans/{name}: ", error)
        self.assertEqual(len(page_boxes(out)), 2)

    def test_a_picture_that_is_gone_or_closed_fails_like_a_named_one(self):
        os.mkdir(self.path("scans"))
        self.save(blocks(), "scans/scan1.jpg")
        os.symlink("nowhere", self.path("scans/scan2.jpg"))
        self.assertFails(1, "scan2.jpg: cannot be read: No such file", self.path("scans"), "-o",
                         self.path("o.pdf"))

    def test_what_is_plainly_no_picture_is_passed_over_and_listed(self):
        os.makedirs(self.path("scans/inner"))
        self.save(blocks(), "scans/a.png")
        self.put(b"words", "scans/notes.txt")
        self.put(b"", "scans/empty")
        self.put(b"words", "scans/dot.")
        self.put(b"%PDF-1.5", "scans/old.pdf")
        self.put(b"words", "scans/.hidden")
        os.symlink("nowhere", self.path("scans/link"))
        os.mkfifo(self.path("scans/fifo.png"))
        passed = {"notes.txt": "no picture", "empty": "no picture", "old.pdf": "no picture",
                  "link": "no picture", "dot.": "no picture", "fifo.png": "no file",
                  "inner": "a folder; name it to take its pictures"}
        out = self.path("o.pdf")
        status, _, error = run(self.path("scans"), "-o", out)
        self.assertEqual((status, error), (0, ""))
        _, _, error = run(self.path("scans"), "-v", "-o", out)
        _, table, silence = run(self.path("scans"), "--dry-run")
        self.assertEqual(silence, "")
        for name, reason in passed.items():
            self.assertIn(f"scans/{name}: passed over: {reason}\n", error)
            self.assertRegex(table.decode(), f"(?m)  passed over: {reason} +/.*/scans/{name}$")
        self.assertEqual(len(error.splitlines()), len(passed))
        self.assertNotIn(b"hidden", table)
        os.remove(self.path("scans/a.png"))
        error = self.assertFails(1, "scans: is a folder without a picture", self.path("scans"),
                                 "-v", "-o", out)
        self.assertIn("notes.txt: passed over", error)

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

    def test_lists_of_lines_are_taken_as_people_write_them(self):
        names = [f"{n} x.png" for n in range(3)]
        for n, name in enumerate(names):
            self.save(blocks(4 + n, 4), name)
        out = self.path("o.pdf")
        text = "\n".join(names)
        for data in (text, text + "\n", "\n\n" + text + "\n\n", text.replace("\n", "\r\n") + "\r\n",
                     "\ufeff" + text):
            with self.subTest(data=data):
                status, _, error = run("--from-file", "-", "-o", out, input=data.encode(),
                                       folder=self.folder)
                self.assertEqual((status, error), (0, ""))
                self.assertEqual(len(page_boxes(out)), 3)
        odd = "line\nbreak.png"
        os.rename(self.path(names[0]), self.path(odd))
        # One NUL is enough to say that names end by it; an alone name has none behind it.
        for data in (odd + "\0", odd + "\0" + names[1]):
            self.put(data.encode(), "list")
            self.assertEqual(run("--from-file", "list", "-o", out, folder=self.folder)[0], 0)
        late = names[1] + "\n" * 5000 + names[2] + "\0"
        self.assertFails(1, "standard input: separates some names by lines and some by NUL bytes", "--from-file", "-", "-o",
                         out, input=late.encode(), folder=self.folder)

    def test_a_list_that_is_none(self):
        out = self.path("o.pdf")
        os.mkdir(self.path("scans"))
        self.assertFails(1, "scans: is a folder, not a list of names; to take its pictures, name it "
                         "without --from-file", "--from-file", "scans", "-o", out,
                         folder=self.folder)
        for data in b"\n\n", b"\0", b"":
            self.assertFails(2, "the list of --from-file is empty", "--from-file", "-", "-o", out,
                             input=data)
        self.assertFails(2, "the list of --from-file is empty", "--from-file", self.put(b"", "list"),
                         "-o", out)

    def test_pipes_have_a_limit(self):
        path = self.save(noise(300, 300), "a.png", compress_level=0)
        size = os.path.getsize(path)
        self.assertGreater(size, 256 << 10)
        out = self.path("o.pdf")
        data = self.get("a.png")
        self.assertEqual(run("-", "--max-input", size, "-o", out, input=data)[0], 0)
        self.assertEqual(run(path, "--max-input", "1", "-o", out)[0], 0)  # a file is not held
        os.mkfifo(self.path("fifo"))
        for limit in (size - 1, 100_000, 1):
            message = (f"holds more than {limit} bytes, the most that is read from a pipe; save it "
                       "to a file and name that, or allow more with --max-input")
            self.assertFails(1, "standard input: " + message, "-", "--max-input", limit, "-o", out,
                             input=data)
            writer = threading.Thread(target=self.feed, args=["fifo", data])
            writer.start()
            self.assertFails(1, "fifo: " + message, self.path("fifo"), "--max-input", limit, "-o",
                             out)
            writer.join()
        self.assertFails(1, "standard input: holds more than 9 bytes", "--from-file", "-",
                         "--max-input", "9", "-o", out, input=b"/nowhere/at/all")

    def feed(self, name, data):
        try:
            with open(self.path(name), "wb") as file:
                file.write(data)
        except BrokenPipeError:
            pass

    def test_an_endless_input_that_is_no_picture_ends_at_once(self):
        def limit():
            resource.setrlimit(resource.RLIMIT_CPU, (5, 5))
        for arguments in (["-"], ["/dev/zero"]):
            with open("/dev/zero", "rb") as zero:
                done = subprocess.run([JTPDF, *arguments, "-o", self.path("o.pdf")], stdin=zero,
                                      capture_output=True, preexec_fn=limit)
            self.assertEqual(done.returncode, 1)
            self.assertIn(b": is no picture of a known kind", done.stderr)

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
        self.save(blocks(), "a.jpg")
        done = subprocess.run(["bash", "-c", f'"{JTPDF}" <(cat a.png) -o o.pdf'],
                              cwd=self.folder, capture_output=True)
        self.assertEqual((done.returncode, done.stderr), (0, b""))
        # What can be read only once is kept, however much was kept before it.
        done = subprocess.run(
            ["bash", "-c", f'"{JTPDF}" -q -j1 <(cat a.jpg; head -c 20M /dev/zero) <(cat a.png) '
             '<(cat a.png) -o o.pdf'], cwd=self.folder, capture_output=True)
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


if __name__ == "__main__":
    unittest.main()
