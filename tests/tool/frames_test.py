"""Animated PNG files and JPEG files of several pictures: each a page with --all-frames."""
import struct
import unittest

from PIL import Image

from pixels_test import over
from support import (BLOCK, JtpdfTest, blocks, chunk, icc_profile, images, jpeg_segment, jpeg_with,
                     page_boxes)


def chunks_of(data):
    at, found = 8, []
    while at < len(data):
        size = struct.unpack(">I", data[at:at + 4])[0]
        found.append((data[at + 4:at + 8], data[at + 8:at + 8 + size]))
        at += 12 + size
    return found


def png(chunks):
    return b"\x89PNG\r\n\x1a\n" + b"".join(chunk(*one) for one in chunks)


def seen(data, frames):
    """What the frames look like over each other; a file holds a part of each."""
    canvas = Image.new("RGBA", frames[0].size)
    controls = [chunk for name, chunk in chunks_of(data) if name == b"fcTL"]
    for control, frame in zip(controls, frames):
        _, width, height, left, top, _, _, disposal, blend = struct.unpack(">5I2H2B", control)
        before, box = canvas.copy(), (left, top, left + width, top + height)
        part = frame.convert("RGBA").crop(box)
        canvas.paste(Image.alpha_composite(canvas.crop(box), part) if blend else part, box)
        yield canvas.copy()
        if disposal == 2 and control is not controls[0]:
            canvas = before
        elif disposal != 0:
            canvas.paste((0, 0, 0, 0), box)


class Apng(JtpdfTest):
    def frames(self, mode="RGBA"):
        """Frames of which each after the first changes a part of what is seen."""
        frames = [blocks(6, 5, mode)]
        for n in range(1, 4):
            frame = frames[-1].copy()
            colour = (n * 60, 255 - n * 60, 99, 80 * n)[-len(frame.getbands()):]
            frame.paste(colour if len(colour) > 1 else colour[0],
                        (n * BLOCK, n * BLOCK, 5 * BLOCK, 4 * BLOCK))
            frames.append(frame)
        return frames

    def film(self, frames, **options):
        return self.save(frames[0], "a.png", save_all=True, append_images=frames[1:], **options)

    def shows_its_frames(self, path, frames):
        pdf = self.convert(path, "--all-frames")
        self.assertEqual(len(page_boxes(pdf)), len(frames))
        for number, picture in enumerate(seen(self.get(path), frames)):
            self.assertShows(pdf, over(picture, "white"), page=number + 1)
        return pdf

    def test_all_frames_as_they_are_seen(self):
        frames = self.frames()
        for disposal in 0, 1, [0, 2, 2, 0], 2:
            for blend in 0, 1:
                with self.subTest(disposal=disposal, blend=blend):
                    path = self.film(frames, disposal=disposal, blend=blend)
                    self.shows_its_frames(path, frames)

    def test_every_kind_of_pixels(self):
        for mode in "L", "RGB":
            with self.subTest(mode=mode):
                frames = self.frames(mode)
                self.shows_its_frames(self.film(frames), frames)
        palette = [blocks(6, 5, seed=seed).quantize(16) for seed in range(2)]
        palette[1].putpalette(palette[0].getpalette())
        clear = [picture.copy() for picture in palette]
        for picture in clear:
            picture.info["transparency"] = clear[0].getpixel((0, 0))
        for frames in palette, clear, [blocks(6, 5, "LA", seed=seed) for seed in range(2)]:
            with self.subTest(mode=frames[0].mode):
                self.shows_its_frames(self.put(self.of_stills(frames), "a.png"), frames)

    def of_stills(self, pictures):
        """Whole frames, as they are in files of their own."""
        options = {"bits": 8} if pictures[0].mode == "P" else {}
        stills = [chunks_of(self.get(self.save(picture, "p.png", **options)))
                  for picture in pictures]
        chunks = [stills[0][0], (b"acTL", struct.pack(">II", len(stills), 0))]
        chunks += [chunk for chunk in stills[0] if chunk[0] in (b"PLTE", b"tRNS")]
        for n, still in enumerate(stills):
            data = b"".join(data for name, data in still if name == b"IDAT")
            chunks.append((b"fcTL", struct.pack(">5I2H2B", 2 * n, *pictures[n].size, 0, 0, 1, 10,
                                                0, 0)))
            chunks.append((b"IDAT", data) if n == 0 else (b"fdAT", bytes(4) + data))
        return png([*chunks, (b"IEND", b"")])

    def test_grey_frames_keep_their_profile(self):
        pdf = self.convert(self.film(self.frames("L"), icc_profile=icc_profile(b"GRAY")),
                           "--all-frames")
        self.assertEqual([(image["color"], image["comp"]) for image in images(pdf)],
                         [("icc", "1")] * 4)

    def test_what_a_passing_frame_hid_is_seen_again(self):
        ground = blocks(6, 5)
        passing = Image.new("RGB", ground.size, "red")
        last = ground.copy()
        last.paste((0, 200, 0), (BLOCK, BLOCK, 3 * BLOCK, 2 * BLOCK))
        frames = [ground, passing, last]
        self.shows_its_frames(self.film(frames, disposal=[0, 2, 0]), frames)

    def test_a_still_picture_that_is_no_frame(self):
        still, first, second = (blocks(6, 5, seed=n) for n in range(3))
        path = self.save(still, "a.png", save_all=True, append_images=[first, second],
                         default_image=True)
        pdf = self.convert(path, "--all-frames")
        self.assertEqual(len(page_boxes(pdf)), 2)
        self.assertShows(pdf, first, page=1)
        self.assertShows(pdf, second, page=2)
        pdf = self.convert(path, messages=r"an animation of 2 frames; only its still picture was")
        self.assertShows(pdf, still)

    def test_damage(self):
        whole = chunks_of(self.get(self.film(self.frames())))
        second = [i for i, (name, _) in enumerate(whole) if name == b"fcTL"][1]
        control = whole[second][1]

        def changed(data):
            return whole[:second] + [(b"fcTL", data)] + whole[second + 1:]

        outside = control[:12] + struct.pack(">I", 6 * BLOCK) + control[16:]
        for chunks, message in (
                (changed(outside), "a frame of its animation lies outside of the picture"),
                (changed(control[:20]), "a frame of its animation is not described"),
                ([c for c in whole if c[0] != b"fdAT"], "a frame of its animation has no pixels"),
                ([c for c in whole if c[0] not in (b"fcTL", b"fdAT")],
                 "the frames of its animation are not there")):
            with self.subTest(message=message):
                path = self.put(png(chunks), "b.png")
                self.assertFails(1, rf"b\.png: is damaged: {message}", "--all-frames", path, "-o",
                                 self.path("o.pdf"))
        spoiled = [(name, data[:9] + bytes(len(data) - 9) if name == b"fdAT" else data)
                   for name, data in whole]
        self.assertFails(1, r"b\.png, page 2: cannot be decoded", "--all-frames",
                         self.put(png(spoiled), "b.png"), "-o", self.path("o.pdf"))


class Mpo(JtpdfTest):
    def setUp(self):
        super().setUp()
        self.jpegs = []
        for seed in range(3):
            path = self.save(blocks(6, 5, seed=seed), "p.jpg", quality=95)
            self.jpegs.append(self.get(path))

    def mpo(self, attributes=(0x030000, 0, 0), moved=0):
        """The three pictures behind each other, with an index in the first one."""
        index = 2 + 4 + 4  # of the begin of its numbers: behind SOI, marker, length, name
        table = 8 + 2 + 2 * 12 + 4
        size = 8 + table - 8 + 3 * 16
        first = len(self.jpegs[0]) + 4 + 4 + size
        places = (0, first - index, first + len(self.jpegs[1]) - index + moved)
        sizes = (first, len(self.jpegs[1]), len(self.jpegs[2]))
        numbers = b"MM\0*" + struct.pack(
            ">IHHHIIHHIII", 8, 2, 0xB001, 4, 1, 3, 0xB002, 7, 48, table, 0)
        for place in zip(attributes, sizes, places):
            numbers += struct.pack(">IIIHH", *place, 0, 0)
        self.assertEqual(len(numbers), size)
        first = jpeg_with(self.jpegs[0], jpeg_segment(0xE2, b"MPF\0" + numbers))
        return self.put(first + self.jpegs[1] + self.jpegs[2], "a.mpo")

    def test_each_picture_passes_through(self):
        pdf = self.convert(self.mpo(), "--all-frames")
        self.assertEqual([image["enc"] for image in images(pdf)], ["jpeg"] * 3)
        for number, jpeg in enumerate(self.jpegs):
            with Image.open(self.put(jpeg, "p.jpg")) as picture:
                self.assertShows(pdf, picture, page=number + 1)

    def test_what_another_program_writes(self):
        pictures = [blocks(6, 5, seed=n) for n in range(2)]
        path = self.save(pictures[0], "b.mpo", save_all=True, append_images=pictures[1:],
                         quality=95)
        pdf = self.convert(path, "--all-frames")
        with Image.open(path) as file:
            for number in range(2):
                file.seek(number)
                self.assertShows(pdf, file.convert("RGB"), page=number + 1, tolerance=8)

    def test_the_first_alone(self):
        rest = len(self.jpegs[1] + self.jpegs[2])
        pdf = self.convert(self.mpo(),
                           messages=f"only its first picture was used; {rest} bytes behind it")
        self.assertEqual(len(page_boxes(pdf)), 1)

    def test_previews_are_left_out(self):
        for kind in 0x010001, 0x010002:
            pdf = self.convert(self.mpo((0x030000, kind, 0)), "--all-frames")
            self.assertEqual(len(page_boxes(pdf)), 2)

    def test_an_index_that_points_elsewhere_is_not_believed(self):
        for moved in 1, 1 << 20:
            pdf = self.convert(self.mpo(moved=moved), "--all-frames",
                               messages="only its first picture was used")
            self.assertEqual(len(page_boxes(pdf)), 1)

    def test_one_that_is_damaged_fails_alone(self):
        self.jpegs[2] = self.jpegs[2][:3] + b"\xd9" + self.jpegs[2][4:]
        self.assertFails(1, r"a\.mpo, page 3: is a JPEG file without a picture", "--all-frames",
                         self.mpo(), "-o", self.path("o.pdf"))


if __name__ == "__main__":
    unittest.main()
