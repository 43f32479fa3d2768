#!/usr/bin/env python3
"""syntax_read_by_qpdf.py LIBRARY QPDF FOLDER [SEED [COUNT]]

What WritePdfObject takes for one object is one for a reader that we did not write. Random texts,
well formed and damaged, go to the library; those that it takes stand in a file, which qpdf has to
read without a complaint, with each object under its number. The seed decides what is tried.

What the library refuses although readers take it: comments, an empty name as a key, references to
another generation than 0 and numbers of more than 18 digits.
"""

import ctypes
import pathlib
import random
import re
import subprocess
import sys

TOKENS = [b"1", b"-2", b".5", b"4.", b"+7", b"true", b"false", b"null", b"/A", b"/", b"/B#20c", b"/#",
          b"/a#0", b"(", b")", b"(x)", b"(\\()", b"<", b">", b"<0a>", b"<<", b">>", b"[", b"]", b" ",
          b"\n", b"0", b"R", b"0 R", b"1 0 R", b"endobj", b"stream", b"%", b"{", b"}", b"\\", b"1e5",
          b"--1", b"obj", b"0 0 R", b"xref", b"/K0 1"]
LEAVES = [b"1", b"-2.5", b"/A", b"(x)", b"<00>", b"1 0 R", b"null", b"true", b"(a(b)\\)\r\nc)"]


def well_formed(dice, depth=0):
    kind = dice.random()
    if depth > 4 or kind < 0.4:
        return dice.choice(LEAVES)
    parts = [well_formed(dice, depth + 1) for _ in range(dice.randrange(4))]
    if kind < 0.7:
        return b"[" + b" ".join(parts) + b"]"
    return b"<<" + b" ".join(b"/K%d " % i + part for i, part in enumerate(parts)) + b">>"


def damaged(dice):
    text = bytearray(well_formed(dice))
    for _ in range(dice.randrange(3)):
        at = dice.randrange(len(text) + 1)
        if dice.random() < 0.5:
            text[at:at] = dice.choice(TOKENS)
        else:
            del text[at:at + 1]
    return bytes(text)


def soup(dice):
    return b"".join(dice.choice(TOKENS) + b" " * dice.randrange(2)
                    for _ in range(dice.randrange(1, 7)))


class Rect(ctypes.Structure):
    _fields_ = [(name, ctypes.c_double)
                for name in ("left", "bottom", "width", "height", "angle")]


def write_accepted(library, path, texts):
    lib = ctypes.CDLL(library)
    lib.CreateFilePdfDoc.restype = ctypes.c_void_p
    lib.CreateFilePdfDoc.argtypes = [ctypes.c_double] + [ctypes.c_wchar_p] * 3
    doc = ctypes.c_void_p(lib.CreateFilePdfDoc(1.0, str(path), None, None))
    assert lib.InitPdfDoc(doc) == 0
    number = ctypes.c_int(0)
    page = Rect(0, 0, 595, 842, 0)
    assert lib.WritePdfCanvas(doc, ctypes.byref(number)) == 0
    assert lib.WritePdfPage(doc, number, page, page) == 0
    accepted = {}
    for text in texts:
        if lib.WritePdfObject(doc, text, ctypes.byref(number)) == 0:
            accepted[number.value] = text
    assert lib.FinalizePdfDoc(doc, None) == 0
    lib.DestroyPdfDoc(doc)
    return accepted


def main():
    library, qpdf, folder = sys.argv[1:4]
    seed = int(sys.argv[4]) if len(sys.argv) > 4 else 20161
    count = int(sys.argv[5]) if len(sys.argv) > 5 else 4000
    dice = random.Random(seed)
    path = pathlib.Path(folder) / "syntax.pdf"
    texts = [dice.choice((soup, damaged, well_formed))(dice) for _ in range(count)]
    accepted = write_accepted(library, path, texts)
    if not count // 10 < len(accepted) < count:
        sys.exit(f"{len(accepted)} of {count} texts were accepted: the test is void")
    checked = subprocess.run([qpdf, "--json=2", str(path)], capture_output=True)
    if checked.returncode != 0 or checked.stderr:
        sys.exit(f"seed {seed}: qpdf says of the accepted texts:\n"
                 + checked.stderr[:3000].decode(errors="replace"))
    # Its numbers are those of the file, "4." too, which JSON does not know.
    objects = set(re.findall(rb'"obj:(\d+) 0 R"', checked.stdout))
    for number, text in accepted.items():
        # An object that is null is none.
        if str(number).encode() not in objects and b"null" not in text:
            sys.exit(f"seed {seed}: object {number} is not there: {text!r}")
    print(f"{len(accepted)} of {count} texts accepted, all read by qpdf")


if __name__ == "__main__":
    main()
