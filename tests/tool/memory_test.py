"""What the command takes of memory, and what it does when there is no more."""
import faulthandler
import os
import re
import resource
import struct
import subprocess
import unittest
import zlib

from support import JTPDF, JtpdfTest, chunk, jpeg_bytes, jpeg_segment, jpeg_with, noise

faulthandler.dump_traceback_later(300, exit=True)  # a hang is a failure that says where


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
        self.assertLess(many, few + 12)  # and not 75: how much is under way differs with the load
        pngs = [self.save(noise(500 + n, 500), f"{n}.png", compress_level=1) for n in range(40)]
        few, many = self.peak(*pngs[:10]), self.peak(*pngs)
        self.assertGreater(few, 4)
        self.assertLess(many, few + 12)

    @unittest.skipIf("SANITIZED" in os.environ, "sanitizers have memory of their own")
    def test_what_passes_through_takes_no_memory_however_large_it_is(self):
        side = 7000
        rows = (b"\0" + os.urandom(3 * side)) * side
        stream = zlib.compress(rows, 0)  # 147 MB
        head = chunk(b"IHDR", struct.pack(">IIBBBBB", side, side, 8, 2, 0, 0, 0))
        one = [chunk(b"IDAT", stream)]
        many = [chunk(b"IDAT", stream[at:at + 8192]) for at in range(0, len(stream), 8192)]
        for name, chunks in ("one.png", one), ("many.png", many):
            path = self.put(b"\x89PNG\r\n\x1a\n" + head + b"".join(chunks) + chunk(b"IEND", b""),
                            name)
            self.assertLess(self.peak(path), 40, name)

    @unittest.skipIf("SANITIZED" in os.environ, "sanitizers have memory of their own")
    def test_memory_that_runs_out_is_an_error_and_leaves_nothing(self):
        paths = [self.save(noise(300 + n, 300, n, "RGBA"), f"{n}.png", compress_level=1)
                 for n in range(66)]
        names = sorted(os.listdir(self.folder))
        failures = 0

        def limit_to(kilobytes):
            return lambda: resource.setrlimit(resource.RLIMIT_AS,
                                              (kilobytes << 10, kilobytes << 10))

        # From what its libraries take, through every place where it can end, to enough.
        least = next(kilobytes for kilobytes in range(8 << 10, 1 << 20, 4 << 10)
                     if subprocess.run([JTPDF, "--version"], capture_output=True,
                                       preexec_fn=limit_to(kilobytes)).returncode == 0)
        for kilobytes in range(least, least + (48 << 10), 4 << 10):
            for _ in range(2):
                done = subprocess.run([JTPDF, "-q", "-j", "2", "--compression", "1", *paths, "-o",
                                       self.path("o.pdf")], capture_output=True,
                                      preexec_fn=limit_to(kilobytes))
                with self.subTest(kilobytes=kilobytes, error=done.stderr):
                    if b"error while loading shared libraries" in done.stderr:
                        continue
                    self.assertIn(done.returncode, (0, 1))
                    if done.returncode == 1:
                        failures += 1
                        self.assertIn(b"memory", done.stderr)
                        self.assertEqual(sorted(os.listdir(self.folder)), names)
                    else:
                        os.remove(self.path("o.pdf"))
        self.assertGreater(failures, 1)


if __name__ == "__main__":
    unittest.main()
