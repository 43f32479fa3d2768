#!/usr/bin/env python3
"""Makes random call sequences for player.cpp, the same ones for the same seed.

    generate.py --seed 7 --count 100 [--hostile] > sequences.txt

Plain sequences look like a host's: documents that are created, initialised, drawn on, finalised and
destroyed, with a wrong call now and then. Hostile ones put any value anywhere and any call in any
state.
"""

import argparse
import random
import struct

import model
import sequence as seq

# ---- Values -------------------------------------------------------------------------------------

UNITS = (72.0, 28.346456692944, 2.8346456692944, 1.0)
ANGLES = (0.0, -0.0, 30.0, 45.0, 90.0, -90.0, 180.0, 270.0, 360.0, 1e-5, 0.0029, 12.5)
SPECIAL_DOUBLES = (
    0.0,
    -0.0,
    0.00005,
    -0.00005,
    0.00004999999,
    1e-310,
    5e-324,
    -5e-324,
    2.2250738585072014e-308,
    1e15,
    123456789012345678.0,
    9.999999999999999e22,
    1e23,
    1e24,
    -1e23,
    -1e24,
    1e25,
    1e100,
    1.7976931348623157e308,
    -1.7976931348623157e308,
    float("inf"),
    float("-inf"),
)
INTEGERS = (0, 1, 2, 3, 9, 10, 11, 99, 100, 255, -1, -2, -7, 65535, 2**31 - 1, -(2**31))
ERRNOS = (0, 1, 2, 9, 13, 22, 28, 84, 133, 134, 9999, -1, -7, 2**31 - 1, -(2**31))
PAGE_COUNTS = (1, 1, 2, 3, 8, 9, 10, 11, 12, 20, 21)
MANY_PAGES = (99, 100, 101, 109, 110, 111, 120, 191, 200, 201, 995, 1000, 1001, 1010, 1011, 1100)

COMMON_CHARACTERS = [ord(c) for c in "abcXYZ 019._-%#<>[]{}/"]
TEXT_CHARACTERS = (
    [0x28, 0x29, 0x5C, 0x0D, 0x0A, 0x09, 0x01, 0x1F, 0x20, 0x7F, 0x80, 0xE9, 0xFF]
    + [0x100, 0x10A, 0x10D, 0xD0A, 0x2028, 0x2829, 0x285C, 0x5C5C, 0x20AC, 0xFEFF, 0xFFFE, 0xFFFF]
    + [0xD7FF, 0xE000, 0x0D0A]
)
ASTRAL = (0x10000, 0x1F600, 0x10FFFF, 0x10A0A, 0x2F800)
INVALID = (0xD800, 0xDBFF, 0xDC00, 0xDFFF, 0x110000, 0x7FFFFFFF, -1, -(2**31))

KEY_NAMES = (
    b"Width", b"Height", b"Type", b"Subtype", b"Filter", b"ColorSpace", b"Mask", b"SMask",
    b"SMaskInData", b"Decode", b"Intent", b"JTImageName", b"JTImageType", b"BitsPerComponent",
    b"Length", b"Stream", b"Title", b"Subject", b"Author", b"Creator", b"Producer", b"MGmk",
    b"Keywords", b"A", b"B", b"C", b"Z", b"a", b"b", b"AB", b"Resources", b"XObject", b"Im3",
    b"JT_DUMMY_KEY", b"#20", b"(x)", b"%", b"[", b"<<",
)  # fmt: skip
WHOLE_KEYS = (
    b"", b"/", b"//", b"///", b" ", b"\x80\xff", b"\x7f", b"/Length", b"/Stream", b"/A/Length",
    b"/A/Stream", b"/Length/A", b"/Stream/A/B", b"/Resources/XObject/Im3", b" /My Key\t",
    b"/A/k", b"/B/A/x", b"/A/B/x", b"/A/C/y", b"/A//B", b"//A", b"/A/", b"/A/B/", b"A/B", b"/A/A/A",
    b"/A/B/C/D/E", b"/A/B/C/x", b"/B/B/B/B", b"/R/A", b"/R/B", b"/Ra", b"/R.x/y", b"/R/A/c",
    b"\xc3\xa9", b"/\xc3\xa9/x", b"\x01\x1f\x20", b"/A\x00"[:2], b"/JT_DUMMY_KEY", b"!", b"~",
)  # fmt: skip


class Values:
    """Random arguments as tokens."""

    def __init__(self, rng, hostile):
        self.rng = rng
        self.hostile = hostile
        # One sign of NaN a sequence: which of two a sum passes on is not fixed.
        self.nan = rng.choice((model.POSITIVE_NAN, model.DEFAULT_NAN))
        self.special = rng.choice((0.1, 0.1, 0.1, 0.9)) if hostile else 0.01

    def chance(self, plain, hostile):
        return self.rng.random() < (hostile if self.hostile else plain)

    def double(self):
        rng = self.rng
        if rng.random() < self.special:
            return self.nan if rng.random() < 0.1 else rng.choice(SPECIAL_DOUBLES)
        if self.chance(0.0, 0.03):
            x = struct.unpack("<d", struct.pack("<Q", rng.getrandbits(64)))[0]
            return self.nan if x != x else x
        kind = rng.randrange(6)
        if kind == 0:
            return float(rng.randrange(0, 600))
        if kind == 1:
            return rng.randrange(-50, 6000) / 10
        if kind == 2:  # on, and just beside, half a unit of the last decimal
            x = rng.randrange(-40000, 40000) / 10000 + 0.00005
            return x + rng.choice((0.0, 0.0, 1e-17, -1e-16, 1e-9))
        if kind == 3:  # exactly half: 1/32 has five decimals
            return rng.randrange(-3200, 3200) / 32
        if kind == 4:
            return rng.uniform(-1, 1)
        return rng.uniform(0, 1000)

    def angle(self):
        rng = self.rng
        if self.chance(0.0, 0.3):
            return self.double()
        return rng.choice(ANGLES) if rng.random() < 0.7 else rng.uniform(-720, 720)

    def unit(self):
        if self.chance(0.0, 0.3):
            return seq.double_token(self.double())
        return seq.double_token(self.rng.choice(UNITS))

    def length(self):
        return seq.double_token(self.double())

    def rect(self):
        if self.rng.random() < 0.1:
            size = (0.0, 0.0, 595.0, 842.0, 0.0)
            return seq.rect_token(size)
        return seq.rect_token([self.double() for _ in range(4)] + [self.angle()])

    def color(self):
        rng = self.rng
        kind = rng.randrange(5)
        if kind == 0:
            return seq.color_token(model.NO_COLOR)
        if kind == 1:
            channel = rng.choice((0, 255, 254, 128))
            return seq.color_token((channel, channel, channel, rng.choice((0, 255))))
        if kind == 2:
            return seq.color_token(rng.choice(((255, 255, 254, 0), (255, 255, 255, 1))))
        return seq.color_token([rng.randrange(256) for _ in range(4)])

    def int(self):
        rng = self.rng
        if rng.random() < 0.5:
            return rng.choice(INTEGERS)
        return rng.getrandbits(32) - 2**31

    def object_number(self):
        return self.int() if self.chance(0.02, 0.3) else self.rng.randrange(1, 16)

    def enumerator(self, count):
        """A value of an enumeration with the values 0 to count - 1, or any other."""
        rng = self.rng
        if self.chance(0.04, 0.3):
            return rng.choice((-1, count, count + 1)) if rng.random() < 0.5 else self.int()
        return rng.randrange(count)

    def wide(self, null=0.1):
        rng = self.rng
        if rng.random() < null:
            return None
        if rng.random() < 0.1:
            return []
        units = []
        for _ in range(rng.choice((1, 1, 2, 3, 5, 8, 13))):
            kind = rng.random()
            if kind < 0.5:
                units.append(rng.choice(COMMON_CHARACTERS))
            elif kind < 0.85:
                units.append(rng.choice(TEXT_CHARACTERS))
            elif kind < 0.98 or not self.chance(0.3, 1.0):
                units.append(rng.choice(ASTRAL))
            else:
                units.append(rng.choice(INVALID))
        if self.chance(0.0, 0.05):
            units = [rng.randrange(1, 0x110000) for _ in range(rng.randrange(1, 40))]
        if self.chance(0.0, 0.01):
            units *= self.rng.choice((300, 300, 3000))
        return units

    def wide_token(self, null=0.1):
        return seq.wide_token(self.wide(null))

    def key(self):
        rng = self.rng
        kind = rng.random()
        if kind < 0.3:
            return rng.choice(WHOLE_KEYS)
        if kind < 0.35 and self.hostile:
            return bytes(rng.randrange(1, 256) for _ in range(rng.randrange(12)))
        names = [rng.choice(KEY_NAMES) for _ in range(rng.choice((1, 1, 1, 2, 2, 3, 4)))]
        if rng.random() < 0.5:  # few names, so that paths share and deviate
            names = [rng.choice((b"A", b"B", b"C")) for _ in names]
        return rng.choice((b"/", b"/", b"", b" ")) + b"/".join(names)

    def items(self):
        rng = self.rng
        if rng.random() < 0.5:
            return rng.choice(("-", "()"))
        rows = [(self.key(), self.wide()) for _ in range(rng.choice((1, 2, 3, 5, 8)))]
        if rng.random() < 0.3:
            rows.append((rng.choice(rows)[0], self.wide()))
        return seq.items_token(rows)

    def data(self):
        rng = self.rng
        kind = rng.randrange(8)
        if kind == 0:
            return "-"
        if kind == 1:
            return "b:"
        if kind == 2:
            return "b:000d0a0d0a00"
        if kind == 3:
            return seq.data_token(b"endstream\r\nendobj\r\n")
        if kind == 4 and rng.random() < 0.1:
            return seq.data_token(rng.randbytes(16), rng.choice((512, 513, 1024, 3000)))
        return seq.data_token(rng.randbytes(rng.choice((1, 2, 3, 7, 16, 40))))

    def image(self, compression=None):
        numbers = [
            self.enumerator(4) if compression is None else compression,
            self.int() if self.chance(0.02, 0.2) else self.rng.randrange(1, 2000),
            self.int() if self.chance(0.02, 0.2) else self.rng.randrange(1, 2000),
            self.int() if self.chance(0.02, 0.2) else self.rng.choice((1, 2, 4, 8, 16)),
            self.enumerator(4),
            self.object_number(),
        ]
        return seq.image_token(self.data(), *numbers)

    def role(self):
        return self.enumerator(9)

    def bool(self):
        return self.rng.randrange(2)

    def out(self):
        return "null" if self.rng.random() < 0.05 else "out"

    def closing_text(self):
        texts = (None, None, b"", b"%closing", b"a\r\nb", b"\xff\x01 ", b" ")
        return seq.text_token(self.rng.choice(texts))


# ---- Sequences ----------------------------------------------------------------------------------


class Plan:
    """What the generator believes of one document: enough to make mostly sensible calls."""

    def __init__(self, slot):
        self.slot = slot
        self.handle = "d%d" % slot
        self.alive = False
        self.initialized = False
        self.finalized = False
        self.small = False  # on the full device: nothing may outgrow the buffer
        self.pipe = False
        self.hopeless = False  # its file will not open, or not yet


class Generator:
    def __init__(self, rng, hostile):
        self.rng = rng
        self.hostile = hostile
        self.values = Values(rng, hostile)
        self.lines = []
        self.files = 0
        self.many_pages = False

    def say(self, *words):
        self.lines.append(" ".join(str(word) for word in words))

    def make(self):
        rng = self.rng
        if rng.random() < 0.5:
            self.say("JTPDFSetDiagnosticMode", rng.choice((1, 1, 1, 0)))
        plans = [Plan(slot) for slot in range(rng.choice((1, 1, 1, 2, 2, 3)))]
        if rng.random() < 0.05:
            self.say("mkfifo", seq.wide_token(model.wide("pipe")))
            plans[0].pipe = True
        # A pipe holds only so much, and a document of many pages is long.
        self.many_pages = not plans[0].pipe and rng.random() < 0.02
        for _ in range(rng.choice((5, 10, 20, 30, 45))):
            plan = rng.choice(plans)
            if self.values.chance(0.12, 0.3):
                self.disturb(plan)
            else:
                self.advance(plan)
        for plan in plans:
            if rng.random() < 0.7:
                self.finish(plan)
        return self.lines

    # A host's own way through a document

    def advance(self, plan):
        rng = self.rng
        if not plan.alive:
            self.create(plan)
        elif not plan.initialized:
            if rng.random() < 0.7:
                self.initialize(plan)
            else:
                self.draw_or_set(plan)
        elif rng.random() < 0.05 and plan.hopeless:
            self.initialize(plan)
        elif plan.finalized:
            if rng.random() < 0.5:
                self.read(plan)
            else:
                self.destroy(plan)
        elif rng.random() < 0.07:
            self.finalize(plan)
        elif rng.random() < 0.5:
            self.write(plan)
        else:
            self.draw_or_set(plan)

    def create(self, plan):
        rng = self.rng
        plan.initialized = plan.finalized = plan.small = plan.hopeless = False
        plan.alive = True
        if rng.random() < 0.5 and not plan.pipe:
            self.say("CreateMemoryPdfDoc", plan.handle, self.values.unit())
            return
        creator = self.values.wide_token(0.4)
        author = self.values.wide_token(0.4)
        name = seq.wide_token(self.file_name(plan))
        self.say("CreateFilePdfDoc", plan.handle, self.values.unit(), name, creator, author)

    def file_name(self, plan):
        rng = self.rng
        if plan.pipe:
            return model.wide("pipe")
        if not self.values.chance(0.1, 0.3):
            if rng.random() < 0.2:
                return model.wide("again.pdf")  # truncated by every document that opens it
            self.files += 1
            suffix = rng.choice(("", "a", "\u00e9", "\u20ac", "\U0001f600"))
            name = "%d%s.pdf" % (self.files, suffix)
            return model.wide(rng.choice(("", "", "isdir/")) + name)
        kind = rng.randrange(10)
        if kind == 0:
            plan.small = True
            return model.wide("/dev/full")
        plan.hopeless = True
        if kind == 1:
            units = model.wide("bad") + [rng.choice(INVALID)]
            rng.shuffle(units)
            return units
        names = (
            "missing/x.pdf",
            "missing/x.pdf",
            "isdir",
            "isdir/",
            "loop",
            "again.pdf/x.pdf",
            "",
            "\x01\n\\(%s)\x7f\uffff\U0010ffff",
            "n" * rng.choice((250, 255, 256)),
        )
        return model.wide(rng.choice(names))

    def initialize(self, plan):
        self.say("InitPdfDoc", plan.handle)
        plan.initialized = True

    def finalize(self, plan):
        rng = self.rng
        if not plan.small and rng.random() < 0.4:
            count = rng.choice(PAGE_COUNTS)
            if self.many_pages:
                count = rng.choice(MANY_PAGES)
                self.many_pages = False
            self.say("repeat", count, "WritePdfPage", plan.handle, *self.page_words())
        self.say("FinalizePdfDoc", plan.handle, self.values.closing_text())
        plan.finalized = True

    def destroy(self, plan):
        self.say("DestroyPdfDoc", plan.handle)
        plan.alive = False

    def finish(self, plan):
        if not plan.alive:
            return
        if plan.initialized and not plan.finalized:
            self.finalize(plan)
        self.read(plan)
        self.destroy(plan)

    def read(self, plan):
        name = self.rng.choice(("GetPdfData", "GetPdfDataSize", "GetPdfMgMk", "FinalizePdfDoc"))
        if name == "FinalizePdfDoc":
            self.say(name, plan.handle, self.values.closing_text())
        else:
            self.say(name, plan.handle)

    def draw_or_set(self, plan):
        v = self.values
        name = self.rng.choice(
            (
                "ClearPdfCanvas",
                "GetPdfCanvasBoundingBox",
                "SetPdfCanvasBoundingBox",
                "DrawPdfImage",
                "DrawPdfImageInRect",
                "FillPdfRectangle",
                "StrokePdfRectangle",
                "FillAndStrokePdfRectangle",
                "FillAndStrokePdfCircle",
                "FillAndStrokePdfCircle",
                "SetPdfInfoItem",
                "SetPdfInfoItem",
                "SetPdfMgMk",
                "GetPdfMgMk",
            )
        )
        if plan.small:
            name = "SetPdfCanvasBoundingBox"
        words = []
        if name == "SetPdfCanvasBoundingBox":
            words = [v.rect()]
        elif name == "DrawPdfImage":
            words = [v.object_number()]
        elif name == "DrawPdfImageInRect":
            words = [v.object_number(), v.rect()]
        elif name == "FillPdfRectangle":
            words = [v.rect(), v.color()]
        elif name == "StrokePdfRectangle":
            words = [v.rect(), v.color(), v.length()]
        elif name.startswith("FillAndStroke"):
            words = [v.rect(), v.color(), v.color(), v.length()]
        elif name == "SetPdfInfoItem":
            words = [seq.text_token(v.key()), v.wide_token()]
        elif name == "SetPdfMgMk":
            words = [v.bool()]
        self.say(name, plan.handle, *words)

    def page_words(self):
        return [self.values.object_number(), self.values.rect(), self.values.rect()]

    def write(self, plan):
        v = self.values
        if plan.small:
            kind = self.rng.random()
            if kind < 0.1:
                self.say("WritePdfCanvas", plan.handle, v.out())
            elif kind < 0.2:  # fails at once: more than a stream keeps back
                data = seq.data_token(b"0123456789abcdef", 8192)
                self.say("WritePdfICCProfile", plan.handle, data, 2, v.out())
            return
        name = self.rng.choice(
            (
                "WritePdfCanvas",
                "WritePdfCanvas",
                "WritePdfPage",
                "WritePdfImage",
                "WritePdfImage",
                "WritePdfImageWithAlpha",
                "WritePdfImageJPEG2000",
                "WritePdfICCProfile",
            )
        )
        if name == "WritePdfCanvas":
            words = [v.out()]
        elif name == "WritePdfPage":
            words = self.page_words()
        elif name == "WritePdfICCProfile":
            words = [v.data(), v.enumerator(4), v.out()]
        elif name == "WritePdfImage":
            words = [v.image(), v.bool(), v.role(), v.wide_token(), v.items(), v.out()]
        elif name == "WritePdfImageWithAlpha":
            alpha = "-" if self.rng.random() < 0.3 else v.image()
            words = [v.image(), alpha, v.role(), v.wide_token(), v.items(), v.out()]
        else:
            compression = 3 if self.rng.random() < 0.7 else None
            words = [v.image(compression), v.role(), v.wide_token(), v.items(), v.out()]
        self.say(name, plan.handle, *words)

    # Calls that do not fit the state, and what happens around a document

    def disturb(self, plan):
        rng = self.rng
        kind = rng.randrange(12)
        if kind in (0, 1):
            self.say("errno", rng.choice(ERRNOS))
        elif kind == 2:
            self.say("JTPDFSetDiagnosticMode", rng.randrange(2))
        elif kind == 3:
            self.say("JTPDFGetDiagnosticMode")
        elif kind == 4:
            v = self.values
            self.say("InsetPdfRect", v.rect(), v.length(), v.length())
        elif kind == 5:
            if rng.random() < 0.5:
                self.say("DestroyPdfDoc", "-")
            else:  # a failed open may be repeated, and then goes well
                self.say("mkdir", seq.wide_token(model.wide("missing")))
        elif not plan.alive:
            self.create(plan)
        elif kind == 6:
            self.initialize(plan)
        elif kind == 7:
            self.write(plan)
        elif kind == 8:
            self.read(plan)
        elif kind == 9:
            self.draw_or_set(plan)
        elif kind == 10 and rng.random() < 0.4:
            self.say("FinalizePdfDoc", plan.handle, self.values.closing_text())
            plan.finalized = plan.initialized
        elif kind == 11 and rng.random() < 0.4:
            self.destroy(plan)


def generate(seed, hostile):
    # The words of the seed keep the plain and the hostile sequences of one seed apart.
    rng = random.Random("%s %d" % ("hostile" if hostile else "plain", seed))
    return Generator(rng, hostile).make()


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--seed", type=int, default=1, help="of the first sequence")
    parser.add_argument("--count", type=int, default=1, help="each of them with the next seed")
    parser.add_argument("--hostile", action="store_true")
    arguments = parser.parse_args()
    for seed in range(arguments.seed, arguments.seed + arguments.count):
        print("sequence %d" % seed)
        print("\n".join(generate(seed, arguments.hostile)))
        print("end")


if __name__ == "__main__":
    main()
