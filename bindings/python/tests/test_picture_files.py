"""Pictures from files: what is known of them, the pages that are made of them, and what fails."""

import contextlib
import io
import os
import pathlib
import subprocess
import sys
import tempfile
import unittest
import unittest.mock
from typing import List, Tuple, Union

import jtpdf
from jtpdf import Box, Document, PictureError, PictureFile, _whole_file

IMAGES = pathlib.Path(os.environ["JTPDF_IMAGES"])
PHOTO = IMAGES / "coast.jpg"
BALLOON = IMAGES / "balloon-rgba.png"
CORPUS = IMAGES.parent.parent / "pictures" / "fuzz" / "corpus"
FILM = CORPUS / "gif" / "film-2"
PAGES = CORPUS / "tiff" / "pages"


class Probe(unittest.TestCase):
    def test_tells_what_the_header_says(self) -> None:
        info = jtpdf.probe(PHOTO)
        self.assertEqual((info.format, info.colors, info.bits_per_component), ("JPEG", "RGB", 8))
        self.assertTrue(info.stored_as_it_is)
        self.assertEqual((info.frame, info.frames, info.orientation), (0, 1, 1))
        self.assertEqual((info.problem, info.notes, info.reason), ("", (), ""))
        self.assertTrue(jtpdf.probe(BALLOON).has_alpha)

    def test_takes_paths_bytes_and_files(self) -> None:
        data = BALLOON.read_bytes()
        expected = jtpdf.probe(BALLOON)
        with open(BALLOON, "rb") as file:
            self.assertEqual(jtpdf.probe(file), expected)
        for source in (data, bytearray(data), memoryview(data)):
            self.assertEqual(jtpdf.probe(source), expected)
        self.assertEqual(jtpdf.probe(str(BALLOON)), expected)
        self.assertEqual(jtpdf.probe(io.BytesIO(data)), expected)
        with PictureFile(data) as picture:
            self.assertEqual(jtpdf.probe(picture), expected)
        with self.assertRaisesRegex(ValueError, "is closed"):
            picture.info()

    def test_says_what_is_wrong(self) -> None:
        with self.assertRaises(FileNotFoundError) as missing:
            jtpdf.probe("/nowhere/a.png")
        self.assertEqual(missing.exception.filename, "/nowhere/a.png")
        with self.assertRaisesRegex(PictureError, "^b'x+...: is no picture of a known kind"):
            jtpdf.probe(b"x" * 100)
        with self.assertRaisesRegex(PictureError, "ends before|cut off|damaged"):
            jtpdf.probe(PHOTO.read_bytes()[:300])
        with self.assertRaisesRegex(ValueError, "has no frame 1; there are 1"):
            jtpdf.probe(PHOTO, frame=1)
        with self.assertRaisesRegex(ValueError, "frame is -1"):
            jtpdf.probe(PHOTO, frame=-1)
        with self.assertRaisesRegex(PictureError, "claims .* allow it with maxPixels"):
            PictureFile(PHOTO, max_pixels=100)
        with self.assertRaises(TypeError):
            jtpdf.probe(7)  # type: ignore[arg-type]

    def test_tells_of_the_frames_that_are_asked_for(self) -> None:
        sources: Tuple[Union[pathlib.Path, bytes], ...] = (FILM, FILM.read_bytes())
        for source in sources:
            with PictureFile(source) as first, PictureFile(source, all_frames=True) as film:
                self.assertEqual((first.frames, film.frames), (1, 3))
                self.assertEqual(first.info().notes, ("only the first of its 3 frames was used",))
                self.assertEqual(film.info(2).notes, ())
                self.assertEqual(jtpdf.probe(film, frame=2).frame, 2)
                with self.assertRaisesRegex(ValueError, "has no frame 1; there are 1"):
                    first.info(1)

    def test_gives_the_bytes_free(self) -> None:
        data = bytearray(BALLOON.read_bytes())
        with PictureFile(data):
            with self.assertRaises(BufferError):
                data.append(0)
        data.append(0)


class Pages(unittest.TestCase):
    def test_are_laid_out_as_asked_for(self) -> None:
        with Document(unit="mm") as doc:
            image = doc.add_picture(PHOTO, page="A4", border="1cm", fit="into")
            self.assertEqual(doc.page_count, 1)
            doc.draw_image(image, (0, 0, 20, 20))
            doc.add_page((0, 0, 20, 20))
            sheet, box = doc.lay_out_picture(PHOTO, "A4", border="1cm")
        self.assertAlmostEqual(sheet.width, 210)
        self.assertAlmostEqual(box.left, 10)
        self.assertIn(b"/MediaBox [0.0000 0.0000 595.2756 841.8898]", bytes(doc.data))
        self.assertIn(PHOTO.read_bytes(), bytes(doc.data))

    def test_follow_the_picture_where_nothing_is_asked_for(self) -> None:
        doc = Document()
        info = jtpdf.probe(PHOTO)
        sheet, _ = doc.lay_out_picture(PHOTO, image="100dpi", turn=90)
        self.assertAlmostEqual(sheet.width, 72 * info.height / 100)
        stored, _ = doc.lay_out_picture(PHOTO, image="100dpi", turn=0)
        self.assertAlmostEqual(stored.width, 72 * info.width / 100)
        with self.assertRaisesRegex(ValueError, 'page: "A9" is no page size'):
            doc.add_picture(PHOTO, "A9")
        with self.assertRaisesRegex(ValueError, "fit is 'best', none of into"):
            doc.add_picture(PHOTO, fit="best")  # type: ignore[arg-type]
        with self.assertRaisesRegex(ValueError, "turn: 45 is none of"):
            doc.add_picture(PHOTO, turn=45)
        self.assertEqual(doc.page_count, 0)
        doc.discard()
        with self.assertRaisesRegex(ValueError, "was discarded"):
            doc.add_picture(PHOTO)

    def test_fit_into_a_box_of_the_canvas(self) -> None:
        info = jtpdf.probe(PHOTO)
        high = 60 * info.height / info.width
        with Document(unit="mm") as doc:
            with PictureFile(PHOTO) as photo:
                place = doc.fit_picture(photo, (20, 30, 60, 60))
                turned = doc.fit_picture(photo, (20, 30, 60, 60, 5), turn=90)
            exact = doc.fit_picture(PHOTO, Box(1, 2, 3, 4), fit="exact")
            with self.assertRaisesRegex(ValueError, "box: has no room for a picture"):
                doc.fit_picture(PHOTO, (0, 0, 0, 1))
            with self.assertRaisesRegex(ValueError, "fit is 'best', none of into"):
                doc.fit_picture(PHOTO, (0, 0, 1, 1), fit="best")  # type: ignore[arg-type]
            with self.assertRaisesRegex(ValueError, "turn: 45 is none of"):
                doc.fit_picture(PHOTO, (0, 0, 1, 1), turn=45)
            doc.draw_image(doc.write_picture(PHOTO), place)
            doc.add_page((0, 0, 100, 100))
        for value, expected in zip((place.left, place.bottom, place.width, place.height),
                                   (20, 60 - high / 2, 60, high)):
            self.assertAlmostEqual(value, expected)
        self.assertAlmostEqual(exact.width, 3)
        self.assertAlmostEqual(exact.height, 4)
        self.assertEqual(turned.angle, 275)
        upright = turned.upright()
        self.assertAlmostEqual(upright.height, 60)
        self.assertAlmostEqual(upright.width, high)
        self.assertAlmostEqual(upright.bottom, 30)
        self.assertEqual(upright.angle, 5)

    def test_write_picture_takes_files_too(self) -> None:
        with Document() as doc:
            image = doc.write_picture(BALLOON)
            with self.assertRaisesRegex(TypeError, "role, name and entries are for a Picture"):
                doc.write_picture(BALLOON, name="balloon")
            doc.add_image_page(image, (0, 0, 100, 100))
        self.assertEqual(bytes(doc.data).count(b"/SMask "), 2)  # with that of the graphics state

    def test_what_the_output_raises_comes_out(self) -> None:
        class Full(io.RawIOBase):
            def writable(self) -> bool:
                return True

            def write(self, data: object) -> int:
                raise OSError(28, "full")

        doc = Document(Full())
        with self.assertRaisesRegex(OSError, "full"):
            doc.add_picture(PHOTO)
        doc.discard()


class PicturesToPdf(unittest.TestCase):
    def setUp(self) -> None:
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def test_is_one_line(self) -> None:
        calls: List[Tuple[int, int]] = []
        output = self.folder / "album.pdf"
        pages = jtpdf.pictures_to_pdf([PHOTO, BALLOON.read_bytes()], output, page="A4", title="Two",
                                      progress=lambda done, total: calls.append((done, total)))
        self.assertEqual((pages, calls), (2, [(1, 2), (2, 2)]))
        self.assertEqual(output.read_bytes().count(b"/Type /Page\r\n"), 2)
        self.assertEqual([path.name for path in self.folder.iterdir()], ["album.pdf"])
        stream = io.BytesIO()
        jtpdf.pictures_to_pdf([PHOTO], stream)
        self.assertTrue(stream.getvalue().startswith(b"%PDF-1.5"))

    def test_takes_the_frames_that_are_asked_for(self) -> None:
        def made(source: pathlib.Path, all_frames: bool, first_frame_only: bool) -> bytes:
            stream = io.BytesIO()
            jtpdf.pictures_to_pdf([source], stream, all_frames=all_frames,
                                  first_frame_only=first_frame_only)
            return stream.getvalue()

        for source, frames, usually in ((FILM, 3, 1), (PAGES, 2, 2)):
            for all_frames, expected in ((False, usually), (True, frames)):
                pdf = made(source, all_frames, False)
                self.assertEqual(pdf.count(b"/Type /Page\r\n"), expected)
                pdf = made(source, all_frames, True)
                self.assertEqual(pdf.count(b"/Type /Page\r\n"), 1)
        each = io.BytesIO()
        with PictureFile(FILM, all_frames=True) as film, Document(each) as doc:
            for frame in range(film.frames):
                doc.add_picture(film, frame=frame)
        self.assertEqual(each.getvalue(), made(FILM, True, False))

    def test_leaves_what_was_there_where_something_fails(self) -> None:
        output = self.folder / "album.pdf"
        output.write_bytes(b"before")
        with self.assertRaises(PictureError):
            jtpdf.pictures_to_pdf([PHOTO, b"x" * 100], output)
        with self.assertRaises(ValueError):
            jtpdf.pictures_to_pdf([], output)
        with self.assertRaises(FileNotFoundError):
            jtpdf.pictures_to_pdf([PHOTO, "/nowhere/a.png"], output)
        self.assertEqual(output.read_bytes(), b"before")
        self.assertEqual([path.name for path in self.folder.iterdir()], ["album.pdf"])
        with self.assertRaisesRegex(TypeError, "one input; give a list"):
            jtpdf.pictures_to_pdf(str(PHOTO), output)
        with self.assertRaises(FileNotFoundError):
            jtpdf.pictures_to_pdf([PHOTO], self.folder / "nowhere" / "album.pdf")

    def test_makes_pictures_as_small_as_they_get(self) -> None:
        sizes = []
        for optimize in (False, True):
            stream = io.BytesIO()
            jtpdf.pictures_to_pdf([PHOTO], stream, optimize=optimize)
            sizes.append(len(stream.getvalue()))
        self.assertLess(sizes[1], sizes[0])

    def test_gives_a_file_the_rights_of_any_other(self) -> None:
        output = self.folder / "album.pdf"
        mask = os.umask(0o026)
        self.addCleanup(os.umask, mask)
        for unnamed in (_whole_file._open_unnamed, lambda folder, mode: None):
            with unittest.mock.patch.object(_whole_file, "_open_unnamed", unnamed):
                jtpdf.pictures_to_pdf([PHOTO], output)
            self.assertEqual(output.stat().st_mode & 0o777, 0o640)
            self.assertEqual([path.name for path in self.folder.iterdir()], ["album.pdf"])
            output.unlink()

    def test_keeps_the_rights_of_the_file_that_it_replaces(self) -> None:
        output = self.folder / "album.pdf"
        for unnamed in (_whole_file._open_unnamed, lambda folder, mode: None):
            output.write_bytes(b"old")
            output.chmod(0o4600)
            during: List[int] = []
            with unittest.mock.patch.object(_whole_file, "_open_unnamed", unnamed):
                jtpdf.pictures_to_pdf([PHOTO], output, progress=lambda done, total: during.extend(
                    path.stat().st_mode for path in self.folder.iterdir()))
            self.assertTrue(output.read_bytes().startswith(b"%PDF"))
            self.assertEqual(output.stat().st_mode & 0o7777, 0o600)
            self.assertEqual([mode for mode in during if mode & 0o077], [])

    def test_closes_a_file_before_it_takes_its_name(self) -> None:
        # Windows renames no open file.
        replace = os.replace

        def replace_closed(source: str, target: str) -> None:
            for number in os.listdir("/proc/self/fd"):
                with contextlib.suppress(FileNotFoundError):
                    self.assertNotEqual(os.readlink(f"/proc/self/fd/{number}"), source)
            replace(source, target)

        with unittest.mock.patch.object(_whole_file, "_open_unnamed", lambda folder, mode: None), \
             unittest.mock.patch.object(os, "replace", replace_closed):
            jtpdf.pictures_to_pdf([PHOTO], self.folder / "album.pdf")

    def test_names_the_output_that_cannot_be_written(self) -> None:
        output = self.folder / "nowhere" / "album.pdf"
        with self.assertRaises(FileNotFoundError) as missing:
            jtpdf.pictures_to_pdf([PHOTO], output)
        self.assertEqual(missing.exception.filename, os.path.realpath(output))

    def test_leaves_nothing_of_a_process_that_is_killed(self) -> None:
        descriptor = _whole_file._open_unnamed(str(self.folder), 0o600)
        if descriptor is None:
            self.skipTest("there are no unnamed files here")
        os.close(descriptor)
        program = ("import jtpdf, os, sys; jtpdf.pictures_to_pdf(sys.argv[1:2], sys.argv[2], "
                   "progress=lambda done, total: os.kill(os.getpid(), 9))")
        done = subprocess.run([sys.executable, "-c", program, PHOTO, self.folder / "album.pdf"],
                              check=False)
        self.assertEqual(done.returncode, -9)
        self.assertEqual(list(self.folder.iterdir()), [])


if __name__ == "__main__":
    unittest.main()
