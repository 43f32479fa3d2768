"""Inputs that change while they are read: never a crash, never a page of what was not there."""
import os
import re
import subprocess
import time
import unittest

from support import JTPDF, JtpdfTest, blocks, jpeg_bytes, noise
from tiff_files import greys

CHANGED = b"changed while it was read; run again when it is complete"


class Changes(JtpdfTest):
    def begin(self, *arguments, out="-"):
        """The command, held up by its output, which nobody takes yet."""
        return subprocess.Popen([JTPDF, "-j", "1", *arguments, "-o", out],
                                stdout=subprocess.PIPE, stderr=subprocess.PIPE)

    def assertSaysChanged(self, child, name):
        _, error = child.communicate(timeout=120)
        self.assertEqual(child.returncode, 1, error)
        self.assertRegex(error, rb"(?m)^jtpdf: .*" + re.escape(name.encode()) + rb"(, page \d+)?: "
                         + CHANGED + rb"$")
        self.assertNotIn(b"Bad address", error)

    def wait_for_output(self, child):
        self.assertEqual(child.stdout.read(10)[:5], b"%PDF-")

    def test_a_file_that_shrinks_while_it_is_written(self):
        path = self.put(jpeg_bytes(noise(4000, 1500)), "a.jpg")
        self.assertGreater(os.path.getsize(path), 4 << 20)  # more than pipes hold
        for more in ((), ("--skip-bad",)):
            with self.subTest(more):
                data = self.get("a.jpg")
                child = self.begin(path, *more)
                self.wait_for_output(child)
                os.truncate(path, 100_000)
                self.assertSaysChanged(child, "a.jpg")
                self.put(data, "a.jpg")

    def test_a_file_that_is_written_to_while_it_is_written(self):
        path = self.put(jpeg_bytes(noise(4000, 1500)), "a.jpg")
        child = self.begin(path)
        self.wait_for_output(child)
        with open(path, "r+b") as file:
            file.seek(2_000_000)
            file.write(b"other")
        self.assertSaysChanged(child, "a.jpg")

    def test_a_file_that_changes_between_planning_and_writing(self):
        first = self.put(jpeg_bytes(noise(4000, 1500)), "a.jpg")
        for name, size in (("small.png", (9, 9)), ("large.png", (300, 300))):
            with self.subTest(name):
                second = self.save(noise(*size), name)
                child = self.begin(first, second)
                self.wait_for_output(child)
                time.sleep(0.01)  # the clocks of file systems tick slowly
                self.save(noise(size[0] + 1, size[1]), name)
                if size == (300, 300):
                    self.assertSaysChanged(child, name)
                else:  # a small one was kept from its planning on
                    self.assertEqual(child.communicate(timeout=120)[1], b"")

    def test_a_file_that_is_replaced_while_it_is_written_is_still_whole(self):
        path = self.put(jpeg_bytes(noise(4000, 1500)), "a.jpg")
        child = self.begin(path)
        self.wait_for_output(child)
        os.rename(self.save(blocks(), "b.png"), path)
        self.assertEqual(child.communicate(timeout=120)[1], b"")
        self.assertEqual(child.returncode, 0)

    def test_a_file_of_many_pages_is_opened_once(self):
        first = self.put(jpeg_bytes(noise(4000, 1500)), "a.jpg")
        pages = [noise(300, 300, seed=seed) for seed in (1, 2, 3)]
        path = self.save(pages[0], "pages.tif", save_all=True, append_images=pages[1:])
        child = self.begin(first, path)
        self.wait_for_output(child)
        os.rename(self.save(blocks(), "b.png"), path)
        self.assertEqual(child.communicate(timeout=120)[1], b"")
        self.assertEqual(child.returncode, 0)

    def test_a_file_of_many_pages_that_is_written_to_before_its_last_page_is(self):
        first = self.put(jpeg_bytes(noise(4000, 1500)), "a.jpg")
        pages = [noise(300, 300, seed=seed) for seed in (1, 2, 3)]
        path = self.save(pages[0], "pages.tif", save_all=True, append_images=pages[1:])
        child = self.begin(first, path)
        self.wait_for_output(child)
        with open(path, "r+b") as file:
            file.seek(100_000)
            file.write(b"other")
        self.assertSaysChanged(child, "pages.tif")

    def shrinks_while_it_is_planned(self, name):
        path = self.path(name)
        child = subprocess.Popen([JTPDF, "-j", "1", "-S", "A4", path, "-o", self.path("o.pdf")],
                                 stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        while child.poll() is None:
            with open(f"/proc/{child.pid}/maps") as maps:
                if name in maps.read():
                    break
        os.truncate(path, 4096)
        self.assertSaysChanged(child, name)
        self.assertEqual(os.listdir(self.folder), [name])

    def test_a_file_that_shrinks_while_it_is_planned(self):
        self.put(greys(30_000), "many.tif")
        self.shrinks_while_it_is_planned("many.tif")

    def test_a_file_that_shrinks_and_then_seems_to_be_damaged(self):
        self.save(blocks(), "a.png")
        data = self.get("a.png")
        os.remove(self.path("a.png"))
        end = data.index(b"IDAT") - 4
        chunks = (bytes(4) + b"teXt" + bytes(4)) * 4_000_000  # long to plan
        self.put(data[:end] + chunks + data[end:], "many.png")
        self.shrinks_while_it_is_planned("many.png")


if __name__ == "__main__":
    unittest.main()
