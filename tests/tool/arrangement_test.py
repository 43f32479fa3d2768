"""Pages with boxes, several pictures on a page, bookmarks, the first view, first pages."""
import os
import re
import subprocess
import unittest

from PIL import Image

from support import BLOCK, JtpdfTest, blocks, page_boxes, render, run


def qpdf_text(pdf):
    """The file's objects as qpdf writes them, streams plain."""
    return subprocess.run(["qpdf", "--qdf", "--object-streams=disable", pdf, "-"], check=True,
                          capture_output=True).stdout.decode("latin-1")


def plain(colour, size=(40, 40)):
    return Image.new("RGB", size, colour)


class Boxes(JtpdfTest):
    def test_boxes_are_inset_from_the_page(self):
        path = self.save(Image.new("1", (960, 960)), "a.png")
        pdf = self.convert(path, "--bleed-border", "1in", "--trim-border", "1in:0.5in",
                           "--art-border", "100")
        text = qpdf_text(pdf)
        for name, box in (("BleedBox", [72, 72, 648, 648]), ("TrimBox", [36, 72, 684, 648]),
                          ("ArtBox", [100, 100, 620, 620])):
            found = re.search(rf"/{name} \[([^]]*)\]", text).group(1).split()
            self.assertEqual([float(n) for n in found], box)
        self.assertEqual(page_boxes(pdf), [(720, 720)])

    def test_a_border_that_leaves_nothing_is_refused(self):
        path = self.save(blocks(), "a.png")
        for name in "crop", "bleed", "trim", "art":
            self.assertFails(1, f"would show nothing.*smaller --{name}-border", path,
                             f"--{name}-border", "5cm", "-o", self.path("x"))


class Nup(JtpdfTest):
    colours = ["red", "lime", "blue", "yellow", "black"]

    def files(self):
        return [self.save(plain(c), f"{i}.png") for i, c in enumerate(self.colours)]

    def test_pictures_stand_in_rows_from_the_top_left(self):
        pdf = self.convert(*self.files(), "-S", "230x330", "-b", "10", "--nup", "2x2")
        self.assertEqual(page_boxes(pdf), [(230, 330)] * 2)
        page = render(pdf, dpi=72)
        for colour, (x, y) in zip(self.colours, ((60, 85), (170, 85), (60, 245), (170, 245))):
            self.assertEqual(page.getpixel((x, y)), plain(colour).getpixel((0, 0)), colour)
            self.assertEqual(page.getpixel((x, y - 60)), (255, 255, 255))  # above the square
        self.assertEqual(page.getpixel((115, 85)), (255, 255, 255))  # the border between
        last = render(pdf, page=2, dpi=72)
        self.assertEqual(last.getpixel((60, 85)), (0, 0, 0))
        self.assertEqual(last.getpixel((170, 85)), (255, 255, 255))

    def test_what_is_larger_than_its_part_is_cut_off(self):
        pdf = self.convert(*self.files()[:2], "-S", "200x100", "--nup", "2x1", "-s", "150x150")
        page = render(pdf, dpi=72)
        for x, colour in ((1, "red"), (98, "red"), (101, "lime"), (198, "lime")):
            self.assertEqual(page.getpixel((x, 50)), plain(colour).getpixel((0, 0)), x)

    def test_a_bad_picture_leaves_no_gap(self):
        files = self.files()
        self.put(b"\x89PNG\r\n\x1a\nnothing", "1.png")
        self.assertFails(1, "1 of 5 inputs failed", *files, "--skip-bad", "-S", "200x100", "--nup",
                         "2x1", "-o", self.path("o.pdf"))
        page = render(self.path("o.pdf"), dpi=72)
        self.assertEqual(page.getpixel((150, 50)), (0, 0, 255))
        self.assertEqual(len(page_boxes(self.path("o.pdf"))), 2)

    def test_a_page_of_which_every_picture_fails_is_left_out(self):
        files = self.files()[:4]
        for name in "2.png", "3.png":  # whose header is sound, so that only their writing fails
            self.save(blocks(mode="RGBA"), name)
            data = bytearray(self.get(name))
            data[data.index(b"IDAT") + 6] ^= 0xFF
            self.put(bytes(data), name)
        self.assertFails(1, "2 of 4 inputs failed", *files, "--skip-bad", "-S", "200x100", "--nup",
                         "2x1", "-o", self.path("o.pdf"))
        self.assertEqual(len(page_boxes(self.path("o.pdf"))), 1)

    def test_what_many_pictures_draw_is_compressed(self):
        files = [self.save(plain("red"), "0.png")] * 100
        pdf = self.convert(*files, "-S", "A4", "--nup", "10x10")
        self.assertLess(os.path.getsize(pdf), 3500)
        self.assertEqual(render(pdf, dpi=72).getpixel((300, 463)), (255, 0, 0))

    def test_a_grid_needs_a_page(self):
        path = self.save(blocks(), "a.png")
        out = ["-o", self.path("x")]
        self.assertFails(2, "--nup: the pages need a size", path, "--nup", "2x2", *out)
        self.assertFails(2, "--nup: the pages need a size", path, "--nup", "2x2", "-S", "x5cm", *out)
        self.assertFails(2, "--nup and -a", path, "--nup", "2x2", "-S", "A4", "-a", *out)
        for grid in "2", "0x2", "2x", "x", "2x101", "2cmx3", "-1x2":
            self.assertFails(2, "no grid of pictures", path, "-S", "A4", f"--nup={grid}", *out)
        self.assertFails(1, "no room left", path, "-S", "A4", "-b", "8cm", "--nup", "2x2", *out)


class Bookmarks(JtpdfTest):
    def outline(self, pdf):
        """Level, title and page of each bookmark, as MuPDF sees them."""
        text = subprocess.run(["mutool", "show", pdf, "outline"], check=True, capture_output=True,
                              text=True).stdout
        return [(line.count("\t", 0, line.index('"')) - 1, re.search(r'"(.*)"', line).group(1),
                 int(re.search(r"#(?:page=)?(\d+)", line).group(1)))
                for line in text.splitlines()]

    def test_each_input_has_one_to_its_first_page(self):
        pages = [blocks(), blocks(seed=2)]
        first = self.save(pages[0], "Zwei Seiten.tif", save_all=True, append_images=pages[1:])
        second = self.save(blocks(), "a.b.png")
        third = self.save(blocks(), "Übersicht 🎉.png")
        self.assertEqual(self.outline(self.convert(first, second, third, "--bookmarks")),
                         [(0, "Zwei Seiten", 1), (0, "a.b", 3), (0, "Übersicht 🎉", 4)])

    def test_a_name_that_begins_with_its_only_dot_is_the_title(self):
        self.assertEqual(self.outline(self.convert(self.save(blocks(), ".png", format="PNG"),
                                                   "--bookmarks")), [(0, ".png", 1)])

    def test_titles_come_from_the_list(self):
        os.mkdir(self.path("f"))
        a, b = self.save(blocks(), "a.png"), self.save(blocks(), "b.png")
        self.save(blocks(), "f/one.png"), self.save(blocks(), "f/two.png")
        self.put(f"{a}\tThe beginning\n{self.path('f')}\tA folder\n{b}\n".encode(), "list")
        self.assertEqual(self.outline(self.convert("--from-file", self.path("list"), "--bookmarks")),
                         [(0, "The beginning", 1), (0, "A folder", 2), (1, "one", 2), (1, "two", 3),
                          (0, "b", 4)])
        # A tab is a part of a name without the option, and among names that NUL separates.
        self.assertFails(1, "The beginning: cannot be read", "--from-file", self.path("list"), "-o",
                         self.path("x"))
        odd = self.save(blocks(), "a\tb.png")
        self.put(odd.encode() + b"\0", "nul")
        self.assertEqual(
            [title for _, title, _ in
             self.outline(self.convert("--from-file", self.path("nul"), "--bookmarks"))], ["a\\tb"])  # as MuPDF writes it

    def test_several_on_a_page_lead_to_that_page(self):
        files = [self.save(blocks(seed=i), f"{i}.png") for i in range(3)]
        self.assertEqual(
            self.outline(self.convert(*files, "--bookmarks", "-S", "A5", "--nup", "2x1")),
            [(0, "0", 1), (0, "1", 1), (0, "2", 2)])


class FirstView(JtpdfTest):
    def catalog(self, *options):
        files = [self.save(blocks(seed=i), f"{i}.png") for i in range(3)]
        text = qpdf_text(self.convert(*files, *options))
        return re.search(r"<<(?:(?!endobj).)*?/Type /Catalog.*?endobj", text, re.S).group(0), text

    def test_the_catalog_says_how(self):
        catalog, _ = self.catalog("--viewer-panes", "outlines", "--viewer-page-layout",
                                  "TwoPageRight", "--viewer-fit-window", "--viewer-center-window")
        for entry in ("/PageMode /UseOutlines", "/PageLayout /TwoPageRight", "/FitWindow true",
                      "/CenterWindow true"):
            self.assertIn(entry, catalog)
        self.assertNotIn("OpenAction", catalog)

    def test_a_full_screen_keeps_the_pane_for_later(self):
        catalog, _ = self.catalog("--viewer-fullscreen", "--viewer-panes", "thumbs")
        self.assertIn("/PageMode /FullScreen", catalog)
        self.assertIn("/NonFullScreenPageMode /UseThumbs", catalog)

    def test_the_first_page_and_its_size(self):
        for options, page, view in (
                (["--viewer-initial-page", "2"], 2, "/XYZ null null null"),
                (["--viewer-initial-page", "3", "--viewer-magnification", "fitbh"], 3,
                 "/FitBH null"),
                (["--viewer-magnification", "Fit"], 1, "/Fit"),
                (["--viewer-magnification", "150%"], 1, "/XYZ null null 1.5000"),
                (["--viewer-magnification", "0.25"], 1, "/XYZ null null 0.2500")):
            with self.subTest(options=options):
                catalog, text = self.catalog(*options)
                number, found = re.search(r"/OpenAction \[\s*(\d+) 0 R\s+(.*?)\s*\]", catalog,
                                          re.S).groups()
                self.assertEqual(found.split(), view.split())
                self.assertIn(f"%% Page {page}\n%% Original object ID", text)
                self.assertRegex(text, rf"%% Page {page}\n(%%[^\n]*\n)?{number} 0 obj")

    def test_values_that_are_none(self):
        path = self.save(blocks(), "a.png")
        for options, words in ((["--viewer-panes", "all"], "none of none, outlines"),
                               (["--viewer-page-layout", "x"], "none of single"),
                               (["--viewer-initial-page", "0"], "whole number from 1"),
                               (["--viewer-initial-page", "2"], "only 1 page"),
                               (["--viewer-magnification", "wide"], "none of fit"),
                               (["--viewer-magnification", "0"], "1% to 10000%")):
            with self.subTest(options=options):
                self.assertFails(2, words, path, *options, "-o", self.path("x.pdf"))


class Inputs(JtpdfTest):
    def test_the_first_page_alone(self):
        path = self.save(blocks(4, 4), "a.tif", save_all=True, append_images=[blocks(5, 5)] * 2)
        self.assertEqual(len(page_boxes(self.convert(path))), 3)
        self.assertEqual(page_boxes(self.convert(path, "--first-frame-only")),
                         [(4 * BLOCK * 0.75, 4 * BLOCK * 0.75)])

    def test_standard_input_needs_no_dash(self):
        with open(self.save(blocks(), "a.png"), "rb") as file:
            data = file.read()
        status, pdf, error = run(input=data)
        self.assertEqual((status, pdf[:5], error), (0, b"%PDF-", ""))
        self.assertFails(2, "no input", "-o", self.path("x"))  # the null device
        self.assertFails(1, "standard input: is empty", "-o", self.path("x"), input=b"")
        controller, terminal = self.open_terminal()
        done = subprocess.run([os.environ["JTPDF"], "-o", self.path("x")], stdin=terminal,
                              capture_output=True, timeout=60)
        os.close(controller), os.close(terminal)
        self.assertEqual(done.returncode, 2)
        self.assertIn(b"no input", done.stderr)

    def test_an_odd_resolution_is_left_aside(self):
        small = self.save(blocks(5, 5), "small.png", dpi=(60000, 60000))
        large = self.save(Image.new("RGB", (400, 400)), "large.jpg", dpi=(1, 1))
        pdf = self.convert(large, small, messages=r"(?s)large\.jpg: its resolution of 1 x 1 dpi "
                           r"would make a page of 28800 x 28800 pt; 96 dpi were.*small\.png: its")
        self.assertEqual(page_boxes(pdf), [(300, 300), (30, 30)])
        # Asked for, it stands.
        self.assertFails(1, "would need a page", large, "-s", "1dpi", "-o", self.path("x"))

    def test_keywords_add_up(self):
        path = self.save(blocks(), "a.png")
        pdf = self.convert(path, "--keywords", "one", "--keywords", "two words")
        text = subprocess.run(["pdfinfo", pdf], check=True, capture_output=True, text=True).stdout
        self.assertRegex(text, r"Keywords: +one, two words\n")

    def test_more_sizes_of_paper(self):
        path = self.save(blocks(), "a.png")
        for name, width, height in (("B0", 1000, 1414), ("b6", 125, 176), ("JB0", 1030, 1456),
                                    ("jb5", 182, 257), ("A0", 841, 1189)):
            (w, h), = page_boxes(self.convert(path, "-S", name))
            self.assertAlmostEqual(w, width * 72 / 25.4, 1)
            self.assertAlmostEqual(h, height * 72 / 25.4, 1)


if __name__ == "__main__":
    unittest.main()
