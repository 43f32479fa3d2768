"""Options, messages, help, progress: what a person meets besides the pictures."""
import faulthandler
import os
import re
import select
import shutil
import subprocess
import threading
import time
import unittest

from support import JTPDF, JtpdfTest, blocks, jpeg_bytes, jpeg_segment, jpeg_with, noise, run

faulthandler.dump_traceback_later(300, exit=True)  # a hang is a failure that says where


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
        # Those of the first view take a page of the manual, and one word in the help.
        texts = {"help": re.sub("--viewer-[.]+", " ".join(n for n in names if "viewer" in n),
                                run("--help")[1].decode())}
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
        self.assertRegex(text.decode(), r"^jtpdf \d+\.\d+\.\d+\nReads [\w ,]+ and [\w ]+\n$")
        for kind in "HEIF", "JPEG", "JPEG 2000", "JPEG XL", "PNG", "TIFF", "WebP":
            self.assertRegex(text.decode(), rf"[ds] {kind}[,\n ]|, {kind}[,\n ]")

    def test_usage_errors(self):
        for arguments in ([], ["--nonsense"], ["-j"], ["a", "-q", "-v", "-o", "x"]):
            self.assertFails(2, r"see jtpdf --help", *arguments)

    def odd_jpeg(self, name):
        """A JPEG with something to say about."""
        return self.put(jpeg_with(jpeg_bytes(blocks()), jpeg_segment(
            0xE1, b"Exif\0\0MM\0*\0\0\0\x08\0\1\1\x12\0\3\0\0\0\1\0\x09\0\0\0\0\0\0")), name)

    def test_quiet_and_verbose(self):
        data = jpeg_bytes(blocks()) + b"more"
        path = self.put(data, "a.jpg")
        self.convert(path)
        self.convert(path, "-v", messages="only its first picture was used; 4 bytes")
        odd = self.odd_jpeg("b.jpg")
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
        paths = [self.save(noise(300, 300, n, "RGBA"), f"{n}.png", compress_level=1) for n in range(8)]
        paths.append(self.odd_jpeg("odd.jpg"))
        command = [JTPDF, "-j", "1", *paths, "-o", "-"]
        def take_late(output):
            # Longer than a second on any machine: the pipe is full until somebody reads.
            time.sleep(1.5)
            output.read()
            output.close()
        def on_terminal(*more):
            master, slave = self.open_terminal()
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
        self.assertRegex(text, r"\[#+-*\] \d/9 pages, \d+\.\d MB/s, \d+ s left")
        # It makes way for a message, and is gone in the end.
        self.assertRegex(text, r"left\r\033\[Kjtpdf: .*odd\.jpg: its EXIF orientation 9")
        self.assertTrue(text.endswith("\r\033[K"))
        self.assertEqual(on_terminal("-q"), "")
        done = subprocess.run(command, capture_output=True)
        self.assertEqual(done.returncode, 0)
        self.assertRegex(done.stderr, rb"^jtpdf: .*odd\.jpg: [^\r\n]*\n$")


class Description(JtpdfTest):
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

    def recorded(self, *arguments):
        return subprocess.run(["qpdf", "--json", self.convert(*arguments)], capture_output=True,
                              text=True).stdout

    def test_roles_are_recorded_and_names_where_asked_for(self):
        path = self.save(blocks(), "Größe 1 😀🎞.png")
        text = self.recorded(path, "--role", "ClipArt", "--record-names")
        self.assertIn('"/JTImageType": "/ClipArt"', text)
        self.assertRegex(text, r'"/JTImageName": "(u:)?Größe 1 😀🎞\.png"')
        odd = os.path.join(os.fsencode(self.folder), b"\xff.png")
        shutil.copy(path, odd)
        done = subprocess.run([JTPDF, odd, "--record-names", "-o", self.path("odd.pdf")])
        self.assertEqual(done.returncode, 0)
        with open(self.path("odd.pdf"), "rb") as file:
            self.assertIn(b"/JTImageName (\xfe\xff\xff\xfd\\000.\\000p\\000n\\000g)", file.read())

    def test_names_stay_private(self):
        path = self.save(blocks(), "secret-project.png")
        self.assertNotIn("/JTImageName", self.recorded(path))
        before = self.get("out.pdf")
        self.assertNotIn(b"secret", before)
        os.rename(path, self.path("b.png"))
        self.convert(self.path("b.png"))
        self.assertEqual(self.get("out.pdf"), before)


if __name__ == "__main__":
    unittest.main()
