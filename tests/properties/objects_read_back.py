#!/usr/bin/env python3
"""objects_read_back.py LIBRARY QPDF FOLDER [SEED [COUNT]]

What a host writes itself is read back as it was given. Random values are spelled in one of the ways
that PDF allows and written as objects, as entries of streams, pages, forms and the catalog; qpdf, which
we did not write, gives them back as JSON. The seed decides what is tried.
"""

import base64
import ctypes
import json
import pathlib
import random
import subprocess
import sys


class Rect(ctypes.Structure):
    _fields_ = [(name, ctypes.c_double)
                for name in ("left", "bottom", "width", "height", "angle")]


class Entry(ctypes.Structure):
    _fields_ = [("key", ctypes.c_char_p), ("value", ctypes.c_char_p)]


class Name(str):
    """A name, with its solidus."""


class Reference(int):
    """The number of an object."""


def value(dice, depth=0):
    kind = dice.randrange(9 if depth < 4 else 7)
    if kind == 0:
        return dice.randrange(-10**6, 10**6)
    if kind == 1:
        return dice.randrange(-10**6, 10**6) / 64
    if kind == 2:
        return dice.choice((True, False))
    if kind == 3:
        return Name("/" + "".join(dice.choices("ABCdef019.-_ #(", k=dice.randrange(1, 9))))
    if kind == 4:
        return bytes(dice.choices(range(256), k=dice.randrange(20)))
    if kind == 5:
        return "".join(dice.choices("abc ()\\äß€🎉", k=dice.randrange(1, 12)))
    if kind == 6:
        return Reference(dice.randrange(1, 20))
    if kind == 7:
        return [value(dice, depth + 1) for _ in range(dice.randrange(4))]
    return {Name(f"/K{i}"): value(dice, depth + 1) for i in range(dice.randrange(4))}


def blank(dice):
    return "".join(dice.choices(" \n\r\t\f", k=dice.randrange(1, 3)))


def string(dice, data):
    if dice.random() < 0.3:
        return "<" + "".join(f"{byte:02x}" + " " * dice.randrange(2) for byte in data) + ">"
    return "(" + "".join(f"\\{byte:03o}" if not 32 <= byte < 127 or chr(byte) in "()\\" else chr(byte)
                         for byte in data) + ")"


def spelled(dice, what):
    if isinstance(what, bool):
        return "true" if what else "false"
    if isinstance(what, Reference):
        return f"{int(what)}{blank(dice)}0{blank(dice)}R"
    if isinstance(what, int):
        return f"{'+' if what >= 0 and dice.random() < 0.1 else ''}{what}"
    if isinstance(what, float):
        return f"{what:.6f}"
    if isinstance(what, Name):
        return "/" + "".join(c if c.isalnum() or c in ".-_" else f"#{ord(c):02x}" for c in what[1:])
    if isinstance(what, str):
        return string(dice, b"\xfe\xff" + what.encode("utf-16-be"))
    if isinstance(what, bytes):
        return string(dice, what)
    if isinstance(what, list):
        return "[" + blank(dice).join(spelled(dice, item) for item in what) + "]"
    return "<<" + blank(dice).join(
        spelled(dice, key) + blank(dice) + spelled(dice, item) for key, item in what.items()) + ">>"


def same(given, found):
    """Whether qpdf's JSON (version 2) shows the value."""
    if isinstance(given, bool):
        return found is given
    if isinstance(given, Reference):
        return found == f"{int(given)} 0 R"
    if isinstance(given, (int, float)):
        return not isinstance(found, (bool, str)) and float(found) == given
    if isinstance(given, Name):
        return found == given
    if isinstance(given, str):
        return found == "u:" + given
    if isinstance(given, bytes):
        # What could be text is shown as such: as PDFDocEncoding, which is ASCII among these.
        return isinstance(found, str) and (found == "b:" + given.hex() or (
            found.startswith("u:") and given[:2] not in (b"\xfe\xff", b"\xff\xfe")
            and len(found) - 2 == len(given.removeprefix(b"\xef\xbb\xbf").decode("latin-1"))
            and all(a == chr(b) for a, b in zip(found[2:], given) if 32 <= b < 127)))
    if isinstance(given, list):
        return isinstance(found, list) and len(given) == len(found) and all(map(same, given, found))
    return isinstance(found, dict) and given.keys() == found.keys() and all(
        same(item, found[key]) for key, item in given.items())


class Host:
    def __init__(self, library, path):
        self.lib = ctypes.CDLL(library)
        self.lib.CreateFilePdfDoc.restype = ctypes.c_void_p
        self.lib.CreateFilePdfDoc.argtypes = [ctypes.c_double] + [ctypes.c_wchar_p] * 3
        self.doc = ctypes.c_void_p(self.lib.CreateFilePdfDoc(1.0, str(path), None, None))
        self.call("InitPdfDoc")

    def call(self, function, *arguments):
        code = getattr(self.lib, function)(self.doc, *arguments)
        if code != 0:
            sys.exit(f"{function} gives {code} for {arguments}")

    def number_of(self, function, *arguments):
        number = ctypes.c_int(0)
        self.call(function, *arguments, ctypes.byref(number))
        return number.value


def write(host, dice, count):
    """The values by the places where JSON has to show them, and streams' data by their number."""
    expected, data = {}, {}
    page = Rect(0, 0, 200, 100, 0)

    def text(what):
        return spelled(dice, what).encode("ascii")

    for _ in range(count):
        what = value(dice)
        if isinstance(what, Reference):
            what = [what]  # a lone reference is no object
        expected[host.number_of("WritePdfObject", text(what)), "value"] = what
        entries = {f"/E{i}": value(dice) for i in range(dice.randrange(4))}
        records = (Entry * len(entries))(*((key.encode(), text(entry))
                                           for key, entry in entries.items()))
        content = bytes(dice.choices(range(256), k=dice.randrange(300)))
        number = host.number_of("WritePdfStream", len(records), records, content,
                                ctypes.c_size_t(len(content)))
        data[number] = content
        expected.update({(number, key): entry for key, entry in entries.items()})
    for i in range(8):
        key = f"/Own{i}/Deep"
        places = {name: {Name("/Deep"): value(dice)} for name in ("Catalog", "Page", "Canvas")}
        for name, own in places.items():
            host.call(f"SetPdf{name}Entry", key.encode(), text(own["/Deep"]))
        expected["/Catalog", f"/Own{i}"] = places["Catalog"]
        form = host.number_of("WritePdfCanvas")
        host.call("WritePdfPage", form, page, page)
        expected[form, f"/Own{i}"] = places["Canvas"]
        expected["/Page", f"/Own{i}"] = places["Page"]
    host.call("FinalizePdfDoc", None)
    host.lib.DestroyPdfDoc(host.doc)
    return expected, data


def dictionary(objects, kind, key):
    """The dictionary of the stream of that number, or the one of that type which has the key."""
    if isinstance(kind, int):
        return objects[f"obj:{kind} 0 R"]["stream"]["dict"]
    return next(entry["value"] for entry in objects.values()
                if isinstance(entry.get("value"), dict) and key in entry["value"]
                and entry["value"].get("/Type") == kind)


def main():
    library, qpdf, folder = sys.argv[1:4]
    seed = int(sys.argv[4]) if len(sys.argv) > 4 else 20162
    count = int(sys.argv[5]) if len(sys.argv) > 5 else 400
    dice = random.Random(seed)
    path = pathlib.Path(folder) / "read_back.pdf"
    expected, data = write(Host(library, path), dice, count)
    read = subprocess.run([qpdf, "--json=2", "--json-stream-data=inline", "--decode-level=none",
                           str(path)], capture_output=True)
    if read.returncode != 0 or read.stderr:
        sys.exit(f"seed {seed}: qpdf says:\n" + read.stderr[:3000].decode(errors="replace"))
    objects = json.loads(read.stdout)["qpdf"][1]
    for (place, key), given in expected.items():
        found = (objects[f"obj:{place} 0 R"]["value"] if key == "value"
                 else dictionary(objects, place, key)[key])
        if not same(given, found):
            sys.exit(f"seed {seed}: {place} {key} is {found!r}, was given as {given!r}")
    for number, content in data.items():
        stream = objects[f"obj:{number} 0 R"]["stream"]
        if base64.b64decode(stream["data"]) != content:
            sys.exit(f"seed {seed}: the data of stream {number} is not what was given")
    print(f"{len(expected)} values and {len(data)} streams read back")


if __name__ == "__main__":
    main()
