"""What methods take: boxes, colours, dates, objects; what they refuse, by the argument's name."""

import contextlib
import copy
import datetime
import math
import pickle
import unittest
from typing import Any, Callable, List

import jtpdf
from jtpdf import Box, Color, Compression, Document, Form, Image, ImageData

SHEET = (0, 0, 210, 297)


def file_of(use: Callable[[Document], object]) -> bytes:
    with Document(unit="mm") as doc:
        use(doc)
    return bytes(doc.data)


class Taken(unittest.TestCase):
    def same(self, first: Callable[[Document], object], second: Callable[[Document], object]) -> None:
        self.assertEqual(file_of(lambda doc: [first(doc), doc.add_page(SHEET)]),
                         file_of(lambda doc: [second(doc), doc.add_page(SHEET)]))

    def test_boxes_are_lists_too(self) -> None:
        self.same(lambda doc: doc.fill_rectangle([1, 2, 3.5, 4, 5], Color.BLACK),
                  lambda doc: doc.fill_rectangle(Box(1, 2, 3.5, 4, 5), Color.BLACK))

    def test_colours_are_lists_and_texts_too(self) -> None:
        colors: "list[jtpdf.ColorLike]" = [[255, 128, 0], "#ff8000", "#FF8000", [255, 128, 0, 255]]
        for color in colors:
            self.same(lambda doc: doc.stroke_rectangle(SHEET, color, 1),
                      lambda doc: doc.stroke_rectangle(SHEET, (255, 128, 0), 1))

    def test_dates_are_pdf_dates(self) -> None:
        utc = datetime.timezone.utc
        east = datetime.timezone(datetime.timedelta(hours=5, minutes=30))
        west = datetime.timezone(-datetime.timedelta(hours=3, minutes=30))
        dates: "dict[datetime.date, str]" = {
            datetime.date(2026, 5, 7): "D:20260507",
            datetime.datetime(2026, 5, 17, 1, 2, 3): "D:20260517010203",
            datetime.datetime(2026, 5, 17, 1, 2, 3, 999999, utc): "D:20260517010203Z",
            datetime.datetime(2026, 5, 17, 12, tzinfo=east): "D:20260517120000+05'30'",
            datetime.datetime(2026, 5, 17, 12, tzinfo=west): "D:20260517120000-03'30'",
            datetime.date(999, 1, 1): "D:09990101",
        }
        for date, text in dates.items():
            self.same(lambda doc: doc.set_info("CreationDate", date),
                      lambda doc: doc.set_info("CreationDate", text))

    def test_an_extent_may_mirror_an_image(self) -> None:
        doc = Document()
        doc.draw_image(Image(7), (10, 10, -5, -5))
        with self.assertRaisesRegex(ValueError, "box.width is nan"):
            doc.draw_image(Image(7), (0, 0, math.nan, 1))


class Canvas(unittest.TestCase):
    def test_without_a_box_shows_what_was_drawn(self) -> None:
        def unbound(doc: Document) -> None:
            doc.fill_rectangle((1, 2, 3, 4), "#000000")
            doc.write_page(doc.write_canvas(), SHEET)
            self.assertEqual(doc.canvas_box, Box(0, 0, 0, 0))

        def bound(doc: Document) -> None:
            most = 14400 / jtpdf.MILLIMETER
            doc.canvas_box = Box(-most, -most, 2 * most, 2 * most)
            unbound_calls(doc)

        def unbound_calls(doc: Document) -> None:
            doc.fill_rectangle((1, 2, 3, 4), "#000000")
            doc.write_page(doc.write_canvas(), SHEET)

        self.assertEqual(file_of(unbound), file_of(bound))
        self.assertIn(b"/BBox [-14400.0000 -14400.0000 14400.0000 14400.0000]", file_of(unbound))

    def test_without_a_box_is_left_alone_where_nothing_was_drawn(self) -> None:
        def use(doc: Document) -> None:
            doc.write_canvas()
            doc.fill_rectangle((1, 2, 3, 4), "#000000")
            doc.clear_canvas()
            doc.write_canvas()

        self.assertNotIn(b"14400", file_of(use))

    def test_without_a_box_cannot_be_covered(self) -> None:
        with self.assertRaisesRegex(ValueError, "no canvas_box is set"):
            Document().draw_image(Image(7))


class Refused(unittest.TestCase):
    def setUp(self) -> None:
        self.doc: Any = Document()  # not typed: what is tested does not fit

    def refuses(self, error: "type[Exception]", message: str, call: Callable[[], object]) -> None:
        with self.assertRaisesRegex(error, message):
            call()

    def boxes(self) -> "dict[str, Callable[[Any], object]]":
        doc = self.doc
        return {
            "box": lambda box: doc.fill_rectangle(box, Color.BLACK),
            "box ": lambda box: doc.stroke_rectangle(box, Color.BLACK, 1),
            "box  ": lambda box: doc.fill_and_stroke_rectangle(box, Color.BLACK, Color.BLACK, 1),
            "box   ": lambda box: doc.fill_and_stroke_circle(box, Color.BLACK, Color.BLACK, 1),
            "canvas_box": lambda box: setattr(doc, "canvas_box", box),
            "sheet": doc.add_page,
            "media_box": lambda box: doc.write_page(Form(1), box),
            "crop_box": lambda box: doc.write_page(Form(1), SHEET, crop_box=box),
            "crop_box ": lambda box: doc.add_page(SHEET, crop_box=box),
        }

    def test_are_boxes_that_are_none(self) -> None:
        for name, call in self.boxes().items():
            name = name.strip()
            for box in (7, b"", "abcd", (1, 2, 3), [1, 2, 3, 4, 5, 6], {1, 2, 3, 4}):
                self.refuses(TypeError, f"^{name} is .*, neither a Box nor", lambda: call(box))
            self.refuses(TypeError, f"{name}.left is '1', no number", lambda: call(("1", 2, 3, 4)))
            self.refuses(TypeError, f"{name}.angle is None", lambda: call((1, 2, 3, 4, None)))
            self.refuses(ValueError, f"{name}.bottom is nan", lambda: call((1, math.nan, 3, 4)))
            self.refuses(ValueError, f"{name}.width is inf", lambda: call(Box(1, 2, math.inf, 4)))
            self.refuses(ValueError, f"{name}.height is -4.0, which is negative",
                         lambda: call([1, 2, 3, -4]))
        self.doc.finish()
        self.assertNotIn(b"/Type /XObject", bytes(self.doc.data), "nothing was written")

    def test_are_colours_that_are_none(self) -> None:
        calls: "dict[str, Callable[[Any], object]]" = {
            "fill": lambda color: self.doc.fill_rectangle(SHEET, color),
            "stroke": lambda color: self.doc.stroke_rectangle(SHEET, color, 1),
        }
        for name, call in calls.items():
            for color in (7, None, (1, 2), [1, 2, 3, 4, 5]):
                self.refuses(TypeError, f"^{name}: .* is neither a Color", lambda: call(color))
            self.refuses(TypeError, f"^{name}: red is 0.5", lambda: call((0.5, 0, 0)))
            self.refuses(TypeError, f"^{name}: blue is '0'", lambda: call((0, 0, "0")))
            self.refuses(ValueError, f"^{name}: green is 256", lambda: call((0, 256, 0)))
            for text in ("red", "#ff80", "#ff 80 ", "#gg8000", "ff8000"):
                self.refuses(ValueError, f"^{name}: '{text}' is not #", lambda: call(text))

    def test_are_widths_and_units_that_are_none(self) -> None:
        doc = self.doc
        calls: List[Callable[[Any], object]] = [
            lambda width: doc.stroke_rectangle(SHEET, "#000000", width),
            lambda width: doc.fill_and_stroke_rectangle(SHEET, "#000000", "#000000", width),
            lambda width: doc.fill_and_stroke_circle(SHEET, "#000000", "#000000", width),
        ]
        for call in calls:
            self.refuses(ValueError, "line_width is -0.5", lambda: call(-0.5))
            self.refuses(ValueError, "line_width is nan", lambda: call(math.nan))
            self.refuses(TypeError, "line_width is '1'", lambda: call("1"))
        for unit in (0, -1, math.nan, math.inf):
            self.refuses(ValueError, f"unit is {unit}", lambda: Document(unit=unit))
        self.refuses(TypeError, "unit is None", lambda: Document(unit=None))  # type: ignore

    def test_are_images_without_pixels(self) -> None:
        for name in ("width", "height", "bits_per_component"):
            numbers: Any = {"width": 1, "height": 1, "bits_per_component": 1, name: 0}
            self.refuses(ValueError, f"{name} is 0",
                         lambda: ImageData(b"", Compression.FLATE, **numbers))

    def test_are_objects_of_another_document(self) -> None:
        other = Document()
        profile = other.write_icc_profile(b"profile")
        data = ImageData(b"x", Compression.FLATE, 1, 1, 8, profile)
        image = other.write_image(data)
        form = other.write_canvas()
        doc = self.doc
        self.refuses(ValueError, "image belongs to another", lambda: doc.draw_image(image, SHEET))
        self.refuses(ValueError, "form belongs to another", lambda: doc.write_page(form, SHEET))
        self.refuses(ValueError, "color_space belongs to another", lambda: doc.write_image(data))
        other.add_image_page(image, SHEET)
        other.write_page(form, SHEET)


class Errors(unittest.TestCase):
    def test_survive_being_pickled_and_copied(self) -> None:
        errors = []
        calls: List[Callable[[], object]] = [
            lambda: Document("/no/such/folder/a.pdf"), lambda: Document().open()]
        for call in calls:
            with self.assertRaises(jtpdf.Error) as caught:
                call()
            errors.append(caught.exception)
        for error in errors:
            for other in (pickle.loads(pickle.dumps(error)), copy.copy(error)):
                self.assertIs(type(other), type(error))
                self.assertEqual(str(other), str(error))
                self.assertEqual((other.function, other.code, other.filename),
                                 (error.function, error.code, error.filename))
        self.assertIsInstance(pickle.loads(pickle.dumps(errors[0])), FileNotFoundError)
        self.assertEqual(str(pickle.loads(pickle.dumps(jtpdf.Error("own")))), "own")

    def test_come_back_from_other_processes(self) -> None:
        import concurrent.futures
        with concurrent.futures.ProcessPoolExecutor(1) as pool:
            with self.assertRaises(FileNotFoundError) as caught:
                pool.submit(make, "/no/such/folder/a.pdf").result()
        self.assertIsInstance(caught.exception, jtpdf.Error)


def make(path: str) -> None:
    with Document(path), contextlib.nullcontext():
        pass


if __name__ == "__main__":
    unittest.main()
