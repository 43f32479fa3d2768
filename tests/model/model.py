"""A second, independent description of the library, in slow and literal Python.

`Library` has one method for each exported function. It keeps its own errno, its own standard error
stream and its own file system, and predicts every byte of a document, every result code, every
out-parameter and every line printed in diagnostic mode. Nothing here was derived from the C++
sources: it says a second time what the library promises, so that the two can be held against each
other (compare.py). When they disagree, one of them breaks the promise; find out which before
changing either.

Texts that reach the file are `bytes`; wide texts are lists of signed 32-bit units; doubles are
Python floats, whose operations go through `fmul` and its like because the sign of a NaN shows in
the output ("nan", "-nan").
"""

import errno as errno_names
import math
import os
import posixpath
import struct

SENTINEL = -559038737  # what an out-parameter holds before the call

# ---- Doubles: the hardware's rules for NaN ------------------------------------------------------


class AmbiguousNaN(Exception):
    """Two NaNs of different sign met in an operation whose operands a compiler may exchange."""


def sign_bit(x):
    return struct.unpack("<Q", struct.pack("<d", x))[0] >> 63


def from_bits(bits):
    return struct.unpack("<d", struct.pack("<Q", bits))[0]


POSITIVE_NAN = from_bits(0x7FF8000000000000)
DEFAULT_NAN = from_bits(0xFFF8000000000000)  # of an invalid operation on x86-64: prints "-nan"


def is_nan(x):
    return x != x


def nan_operand(a, b, commutative):
    """The NaN that an operation passes on: the first operand's, if that is one."""
    if is_nan(a) and is_nan(b) and commutative and sign_bit(a) != sign_bit(b):
        raise AmbiguousNaN
    chosen = a if is_nan(a) else b
    return DEFAULT_NAN if sign_bit(chosen) else POSITIVE_NAN


def fadd(a, b):
    if is_nan(a) or is_nan(b):
        return nan_operand(a, b, True)
    if math.isinf(a) and math.isinf(b) and a != b:
        return DEFAULT_NAN
    return a + b


def fsub(a, b):
    if is_nan(a) or is_nan(b):
        return nan_operand(a, b, False)
    if math.isinf(a) and math.isinf(b) and a == b:
        return DEFAULT_NAN
    return a - b


def fmul(a, b):
    if is_nan(a) or is_nan(b):
        return nan_operand(a, b, True)
    if (math.isinf(a) and b == 0) or (a == 0 and math.isinf(b)):
        return DEFAULT_NAN
    return a * b


def fneg(a):
    return from_bits(struct.unpack("<Q", struct.pack("<d", a))[0] ^ (1 << 63))


def fsin(a):
    if is_nan(a):
        return nan_operand(a, a, False)
    return DEFAULT_NAN if math.isinf(a) else math.sin(a)


def fcos(a):
    if is_nan(a):
        return nan_operand(a, a, False)
    return DEFAULT_NAN if math.isinf(a) else math.cos(a)


# ---- Value formatting ---------------------------------------------------------------------------


def Num(value):
    if is_nan(value):
        text = "-nan" if sign_bit(value) else "nan"
    else:
        text = "%.4f" % value
    return text.encode()[:29]  # a buffer of 30 bytes, the last of them NUL


def IntToStr(value, width=0):
    if width > 100:
        width = 100
    sign = "-" if value < 0 else ""
    digits = str(abs(value))
    while len(sign) + len(digits) < width:
        digits = "0" + digits
    return (sign + digits).encode()


def AsRefString(object_number):
    return IntToStr(object_number, 0) + b" 0 R"


def AsRefArray(first_object, count):
    s = bytearray(b"[")
    n = first_object
    while n < first_object + count:
        s += AsRefString(n) + b" "
        n += 1
    s[-1:] = b"]"  # overwrites the "[" itself when there was no object
    return bytes(s)


class StringList:
    def __init__(self):
        self.lines = []

    def Add(self, *texts):
        if len(texts) == 0:
            return
        line = b""
        for t in texts:
            if line != b"" and line[-1:] != b"[" and t != b"]":
                line += b" "
            line += t
        self.lines.append(line)

    def Text(self):
        return b"\r\n".join(self.lines)


# ---- Text strings -------------------------------------------------------------------------------


def is_valid_wide(units):
    return all(0 <= u <= 0x10FFFF and not 0xD800 <= u <= 0xDFFF for u in units)


def utf8(units):
    """The file-system form of a wide path, or None if it is not valid wide text."""
    if not is_valid_wide(units):
        return None
    return "".join(map(chr, units)).encode("utf-8")


def PDFUTF16FromWString(library, units):
    room = 2 * len(units)
    converted = bytearray()
    if is_valid_wide(units):
        for u in units:
            character = chr(u).encode("utf-16-be")
            if len(converted) + len(character) > room:
                break
            converted += character
    if len(converted) == 0:
        if library.diagnostic_mode:
            library.print_error("Error: unable to convert string to UTF-16 BE:0xADDR")
        return b""
    return b"\xfe\xff" + bytes(converted)


def PsString(library, units):
    body = bytearray()
    for b in PDFUTF16FromWString(library, units):
        if b <= 0x1F:
            body += b"\\" + ("%03o" % b).encode()
        elif b in (0x5C, 0x28, 0x29):
            body += b"\\" + bytes([b])
        else:
            body += bytes([b])
    return b"(" + bytes(body) + b")"


def wide(text):
    return [ord(c) for c in text]


# ---- Dictionaries -------------------------------------------------------------------------------


def ValidKey(key):
    kept = bytes(b for b in key if 0x21 <= b <= 0x7E)
    if kept == b"":
        return b"/JT_DUMMY_KEY"
    if kept[:1] != b"/":
        kept = b"/" + kept
    return kept


def CopyPart(path):
    if path != b"" and path[:1] == b"/":
        path = path[1:]
    if b"/" in path:
        path = path[: path.index(b"/")]
    return b"" if path == b"" else b"/" + path


def MovePart(path):
    """Returns (first component, what is left of the path)."""
    p = CopyPart(path)
    return p, path[len(p) :]


def TrimDictionary(text):
    return text.strip(bytes(range(0x01, 0x21)))


def ItemsAsString(key, value, previous_parent):
    if b"/" in key:
        pos = key.rindex(b"/")
        leaf = key[pos:]
        parent = key[:pos]
    else:
        leaf = key
        parent = key
    text = leaf + b" " + value
    while True:
        a, parent = MovePart(parent)
        b = CopyPart(previous_parent)
        if a == b:
            _, previous_parent = MovePart(previous_parent)
        elif a != b"":
            behind_line_end = max(text.rfind(b"\r"), text.rfind(b"\n")) + 1
            text = text[:behind_line_end] + a + b"\r\n<<\r\n" + text[behind_line_end:]
        if a == b"":
            break
    while True:
        component, previous_parent = MovePart(previous_parent)
        if component == b"":
            break
        text = b">>\r\n" + text
    return text


class Dict(dict):
    def AsString(self):
        body = b""
        prev = b""
        for key in sorted(self):
            if key not in (b"", b"/Length", b"/Stream"):
                body += ItemsAsString(key, self[key], prev) + b"\r\n"
            prev = key[: key.rindex(b"/")] if b"/" in key else b""
        body += ItemsAsString(b"", b"", prev)
        return TrimDictionary(body)


def dict_from_items(library, items):
    result = Dict()
    for key, value in items:
        text = PsString(library, value or [])
        result[ValidKey(key)] = text
    return result


# ---- Boxes and colours --------------------------------------------------------------------------


class Box:
    def __init__(self, left=0.0, bottom=0.0, width=0.0, height=0.0, angle=0.0):
        self.left, self.bottom, self.width, self.height = left, bottom, width, height
        self.angle = angle

    def AsPdfRect(self):
        return (self.left, self.bottom, self.width, self.height, self.angle)

    def Inset(self, dx, dy):
        self.left = fadd(self.left, dx)
        self.bottom = fadd(self.bottom, dy)
        self.width = fsub(self.width, fmul(2.0, dx))
        self.height = fsub(self.height, fmul(2.0, dy))

    def AsPoints(self, factor):
        return Box(
            fmul(self.left, factor),
            fmul(self.bottom, factor),
            fmul(self.width, factor),
            fmul(self.height, factor),
            self.angle,
        )

    def AsMatrix(self, scale_to_box):
        cx = fadd(fmul(self.width, 0.5), self.left)
        cy = fadd(fmul(self.height, 0.5), self.bottom)
        r = fmul(self.angle, 0.017453292519943295)
        s = b"1 0 0 1 " + Num(cx) + b" " + Num(cy) + b" cm "
        s += Num(fcos(r)) + b" " + Num(fsin(r)) + b" " + Num(fneg(fsin(r))) + b" " + Num(fcos(r))
        s += b" 0 0 cm "
        if scale_to_box:
            s += Num(self.width) + b" 0 0 " + Num(self.height)
        else:
            s += b"1 0 0 1"
        s += b" " + Num(fmul(self.width, -0.5)) + b" " + Num(fmul(self.height, -0.5)) + b" cm"
        return s

    def AsArray(self):
        right = fadd(self.left, self.width)
        top = fadd(self.bottom, self.height)
        corners = (Num(self.left), Num(self.bottom), Num(right), Num(top))
        return b"[" + b" ".join(corners) + b"]"


NO_COLOR = (255, 255, 255, 0)


def color_as_string(color):
    red, green, blue, _ = color
    return Num(red / 255.0) + b" " + Num(green / 255.0) + b" " + Num(blue / 255.0)


# ---- Canvas -------------------------------------------------------------------------------------


class Canvas(Dict):
    def __init__(self, unit_factor):
        super().__init__()
        self.unit_factor = unit_factor
        self.contents = StringList()
        self.bounding_box = Box()
        self.Clear()

    def Clear(self):
        self.contents.lines.clear()
        self.clear()
        self.contents.Add(b"/GS0 gs")

    def Image(self, image, box):
        p = box.AsPoints(self.unit_factor)
        name = b"/Im" + IntToStr(image, 0)
        self.contents.Add(b"q", p.AsMatrix(True), b" " + name, b"Do", b"Q")
        self[b"/Resources/XObject/Im" + IntToStr(image, 0)] = AsRefString(image)

    def Rectangle(self, box, fill, stroke, line_width):
        p = box.AsPoints(self.unit_factor)
        w = fmul(line_width, self.unit_factor)
        lines = self.contents
        matrix = p.AsMatrix(False)
        lines.Add(b"%rectangle")
        lines.Add(b"q")
        if fill != NO_COLOR:
            lines.Add(color_as_string(fill), b"rg")
        if stroke != NO_COLOR:
            lines.Add(color_as_string(stroke), b"RG")
        lines.Add(Num(w), b"w", matrix, b"0", b"0", Num(p.width), Num(p.height), b"re")
        if fill == NO_COLOR:
            lines.Add(b"S Q")
        elif stroke == NO_COLOR:
            lines.Add(b"F Q")
        else:
            lines.Add(b"B Q")

    def Circle(self, box, fill, stroke, line_width):
        p = box.AsPoints(self.unit_factor)
        w = fmul(line_width, self.unit_factor)
        A = fsub(fmul(p.width, 0.5), fmul(w, 0.5))
        B = fsub(fmul(p.height, 0.5), fmul(w, 0.5))
        k = 0.551784
        kA = fmul(k, A)
        kB = fmul(B, k)
        cx = fadd(fmul(p.width, 0.5), p.left)
        cy = fadd(fmul(p.height, 0.5), p.bottom)

        def minus(x):
            return Num(fneg(x))

        lines = self.contents
        lines.Add(Num(w), b"w")
        lines.Add(color_as_string(fill), b"rg", color_as_string(stroke), b"RG")
        lines.Add(b"q 1 0 0 1 ", Num(cx), Num(cy), b" cm")
        lines.Add(minus(A), b"0", b" m")
        lines.Add(minus(A), Num(kB), minus(kA), Num(B), b"0", Num(B), b"c")
        lines.Add(Num(kA), Num(B), Num(A), Num(kB), Num(A), b"0", b"c")
        lines.Add(Num(A), minus(kB), Num(kA), minus(B), b"0", minus(B), b"c")
        lines.Add(minus(kA), minus(B), minus(A), minus(kB), minus(A), b"0", b"c")
        lines.Add(b"b Q")


# ---- Sinks --------------------------------------------------------------------------------------


class StreamFailure(Exception):
    """std::ios_base::failure; its only argument is what()."""


class Unsupported(Exception):
    """The sequence asks for something whose outcome is not fixed; no prediction is made."""


# What the C++ library says when a stream's state changes to failed.
STREAM_STATE_TEXT = "basic_ios::clear: iostream error"


class MemorySink:
    def __init__(self):
        self.content = bytearray()

    def write(self, data):
        self.content += data

    def position(self):
        return len(self.content)


class FileSink:
    """A file stream with its exception mask set, on the model's file system."""

    def __init__(self, library, name):
        self.library = library
        self.name = name  # wide
        self.is_open = False
        self.failed = False
        self.content = None

    def fail(self):
        self.failed = True
        raise StreamFailure(STREAM_STATE_TEXT)

    def open(self):
        path = utf8(self.name)
        code = errno_names.EILSEQ if path is None else self.library.files.open_error(path)
        if code != 0:
            self.library.errno = code
            self.fail()
        self.content = self.library.files.truncate(path)
        self.path = path
        self.is_open = True
        self.failed = False

    def write(self, data):
        if self.failed or not self.is_open:
            self.fail()
        self.content += data
        if self.path == b"/dev/full":
            if len(data) >= 65536:  # more than any buffer keeps back
                self.library.errno = errno_names.ENOSPC
                self.fail()
            if len(data) >= 1000 or len(self.content) > 4000:
                raise Unsupported("where a full device first fails depends on the buffering")

    def position(self):
        if self.failed:
            self.fail()
        return len(self.content) if self.is_open else -1

    def close(self):
        self.is_open = False
        self.library.files.busy.discard(self.path)
        if self.path == b"/dev/full":
            self.library.errno = errno_names.ENOSPC
            self.fail()


class FileSystem:
    """An empty directory with the directory "isdir" and the symbolic link "loop" (to itself)."""

    def __init__(self):
        self.regular = {}  # path -> bytearray
        self.fifos = {}  # path -> bytearray that nobody has read yet
        self.directories = {b"", b"isdir"}
        self.busy = set()

    def open_error(self, path):
        """The errno of opening path for writing, created and truncated, or 0."""
        if path == b"/dev/full":
            return 0
        if path == b"":
            return errno_names.ENOENT
        if len(path) >= 4096:
            return errno_names.ENAMETOOLONG
        if path.startswith(b"/") or b".." in path:
            raise Unsupported("paths that leave the directory")
        current = b""
        components = path.split(b"/")
        for i, component in enumerate(components[:-1]):
            # A name that ends in its solidus would have to be a directory, which is not made.
            ends_path = not any(components[i + 1 :])
            if component in (b"", b"."):
                continue
            current = current + b"/" + component if current else component
            if current in self.directories:
                continue
            if ends_path:
                return errno_names.EISDIR
            if len(component) > 255:
                return errno_names.ENAMETOOLONG
            if current == b"loop":
                return errno_names.ELOOP
            if current in self.regular or current in self.fifos:
                return errno_names.ENOTDIR
            return errno_names.ENOENT
        last = components[-1]
        if last in (b"", b"."):
            return errno_names.EISDIR
        if len(last) > 255:
            return errno_names.ENAMETOOLONG
        full = current + b"/" + last if current else last
        if full == b"loop":
            return errno_names.ELOOP
        if full in self.directories:
            return errno_names.EISDIR
        return 0

    def truncate(self, path):
        if posixpath.normpath(path) != path:
            raise Unsupported("one file by two names")
        self.busy.add(path)
        if path == b"/dev/full":
            return bytearray()
        if path in self.fifos:
            self.fifos[path] = bytearray()
            return self.fifos[path]
        self.regular[path] = bytearray()
        return self.regular[path]


# ---- Documents ----------------------------------------------------------------------------------

PRODUCER = wide("JTPDF 2.1.6")

ROLE_NAMES = (
    b"Background",
    b"Photo",
    b"Mask",
    b"Border",
    b"ClipArt",
    b"Alpha",
    b"Text",
    b"Shape",
    b"Other",
)

FILTERS = (b"/DCTDecode", b"/LZWDecode", b"/FlateDecode", b"/JPXDecode")

JPEG2000 = 3
FILE, MEMORY = 0, 1


def refusal(message):
    """A failure of the library's own, with the category of stream errors."""
    return StreamFailure(message + ": iostream error")


class Document:
    def __init__(self, library, kind, unit_factor, file_name=(), creator=None, author=None):
        self.library = library
        self.creator = creator or []
        self.author = author or []
        self.unit_factor = unit_factor
        self.mgmk = False
        self.output_kind = kind
        self.output = FileSink(library, file_name) if kind == FILE else MemorySink()
        self.pdf_data = b""
        self.xref = []
        self.canvas = Canvas(unit_factor)
        self.pages = []
        self.initialized = False
        self.finalized = False
        self.info_dict = Dict()
        self.graphics_state_object = 0

    # Life cycle and file structure

    def WriteLn(self, line):
        if not self.initialized:
            raise refusal("Cannot write to a non-initialized document")
        position = self.output.position()
        if line == b"":
            return position
        self.output.write(line + b"\r\n")
        return position

    def AddToXRef(self, position):
        self.xref.append(position)
        return len(self.xref) - 1

    def Initialize(self):
        if self.finalized:
            raise refusal("When finalized, a pdf document cannot be re-initialized")
        if self.initialized:
            raise refusal("PDF document cannot be initialized more than once")
        if self.output_kind == FILE:
            self.output.open()
        self.initialized = True
        self.AddToXRef(self.WriteLn(b"%PDF-1.5"))
        self.WriteLn(b"\x25\xe2\xe3\xcd\xd3")
        self.InitializeGraphicsStateDict()

    def Finalize(self, closing_text):
        if self.finalized:
            if self.library.diagnostic_mode:
                self.library.print_error("Warning: Finalize called multiple times. Ignored.")
            return
        self.FinalizePages()
        catalog = Dict()
        catalog[b"/Type"] = b"/Catalog"
        catalog[b"/Pages"] = AsRefString(len(self.xref) - 1)
        root_object = self.WriteDict(catalog.AsString())
        info_object = self.WriteDict(self.MakeInfoDict().AsString())
        self.FinalizeTrailer(info_object, root_object)
        if closing_text is not None:
            self.WriteLn(closing_text)
        if self.output_kind == FILE:
            if self.output.is_open:
                self.output.close()
        elif self.output_kind == MEMORY:
            self.pdf_data = bytes(self.output.content)
            self.output.content.clear()
        self.graphics_state_object = 0
        self.finalized = True

    def FinalizePages(self):
        N = len(self.pages)
        X = len(self.xref)
        for i, page in enumerate(self.pages):
            page[b"/Parent"] = AsRefString(X + N + i // 10)
            self.WriteDict(page.AsString())
        count = N
        per_node = 10
        while count >= 11:
            base = len(self.xref)
            full = count // 10
            rest = count % 10
            nodes = full + (1 if rest != 0 else 0)
            next_base = base + nodes
            for j in range(full):
                node = Dict()
                node[b"/Type"] = b"/Pages"
                node[b"/Count"] = IntToStr(per_node)
                node[b"/Parent"] = AsRefString(next_base + j // 10)
                node[b"/Kids"] = AsRefArray(base - count + 10 * j, 10)
                self.WriteDict(node.AsString())
            if rest != 0:
                node = Dict()
                node[b"/Type"] = b"/Pages"
                node[b"/Count"] = IntToStr(N % per_node)
                node[b"/Parent"] = AsRefString(next_base + math.ceil(nodes / 10) - 1)
                node[b"/Kids"] = AsRefArray(base - rest, rest)
                self.WriteDict(node.AsString())
            per_node = per_node * 10
            count = nodes
        root = Dict()
        root[b"/Type"] = b"/Pages"
        root[b"/Count"] = IntToStr(N)
        root[b"/Kids"] = AsRefArray(len(self.xref) - count, count)
        self.WriteDict(root.AsString())

    def FinalizeTrailer(self, info_object, root_object):
        start = self.WriteLn(b"xref")
        self.WriteLn(b"0 " + IntToStr(len(self.xref)))
        self.WriteLn(IntToStr(self.xref[0], 10) + b" 65535 f")
        for position in self.xref[1:]:
            self.WriteLn(IntToStr(position, 10) + b" 00000 n")
        self.WriteLn(b"trailer")
        self.WriteLn(b"<<")
        self.WriteLn(b"/Size " + IntToStr(len(self.xref)))
        self.WriteLn(b"/Root " + AsRefString(root_object))
        if info_object != 0:
            self.WriteLn(b"/Info " + AsRefString(info_object))
        self.WriteLn(b">>")
        self.WriteLn(b"startxref")
        self.WriteLn(IntToStr(start))
        self.WriteLn(b"%%EOF")

    def SetInfoItem(self, key, value):
        valid_key = ValidKey(key)
        self.info_dict[valid_key] = PsString(self.library, value or [])

    def MakeInfoDict(self):
        info = Dict(self.info_dict)
        if self.author:
            info[b"/Author"] = PsString(self.library, self.author)
        if self.creator:
            info[b"/Creator"] = PsString(self.library, self.creator)
        info[b"/Producer"] = PsString(self.library, PRODUCER)
        info[b"/MGmk"] = PsString(self.library, wide("true" if self.mgmk else "false"))
        return info

    def GetPdfData(self):
        return self.pdf_data if self.output_kind == MEMORY and self.finalized else None

    def Destroy(self):
        if self.output_kind == FILE and self.output.is_open:
            if self.library.diagnostic_mode:
                self.library.print_error(
                    "Warning: JTPDFDocument destroyed without being finalized."
                )
            before = self.library.errno
            try:
                self.output.close()
            except StreamFailure:
                self.library.errno = before  # no code tells of it

    # Indirect objects

    def begin_object(self):
        n = len(self.xref)
        return self.AddToXRef(self.WriteLn(IntToStr(n) + b" 0 obj"))

    def WriteDict(self, dictionary, stream=b"", no_stream_if_empty=True):
        n = self.begin_object()
        self.WriteLn(b"<<")
        self.WriteLn(dictionary)
        if stream == b"" and no_stream_if_empty:
            self.WriteLn(b">>")
        else:
            self.WriteLn(b"/Length " + IntToStr(len(stream)))
            self.WriteLn(b">>")
            self.WriteLn(b"stream")
            self.WriteLn(stream)
            self.WriteLn(b"endstream")
        self.WriteLn(b"endobj")
        return n

    def InitializeGraphicsStateDict(self):
        self.graphics_state_object = self.begin_object()
        for line in (
            b"<<",
            b"/AIS false",
            b"/BM /Normal",
            b"/ca 1.0",
            b"/CA 1.0",
            b"/OP false",
            b"/op false",
            b"/OPM 1",
            b"/SA true",
            b"/SMask /None",
            b"/Type /ExtGState",
            b">>",
            b"endobj",
        ):
            self.WriteLn(line)

    # Images and profiles

    def FilterValueFromCompression(self, compression):
        if 0 <= compression <= 3:
            return FILTERS[compression]
        if self.library.diagnostic_mode:
            self.library.print_error("Invalid compression type %d" % compression)
        return b""

    def WriteImage(self, image, color_space, mask_white, role, name, items, soft_mask):
        data, compression, width, height, bits, _, color_space_object = image
        if compression == JPEG2000 and soft_mask != -1:
            raise refusal("When using JPEG2000 no separate alpha channel is allowed")
        d = dict_from_items(self.library, items)
        d[b"/Type"] = b"/XObject"
        d[b"/Subtype"] = b"/Image"
        d[b"/BitsPerComponent"] = IntToStr(bits)
        d[b"/JTImageType"] = b"/" + (ROLE_NAMES[role] if 0 <= role <= 8 else b"")
        d[b"/JTImageName"] = PsString(self.library, name or [])
        d[b"/Intent"] = b"/RelativeColorimetric"
        filter_text = self.FilterValueFromCompression(compression)
        if filter_text != b"":
            d[b"/Filter"] = filter_text
        d[b"/Width"] = IntToStr(width)
        d[b"/Height"] = IntToStr(height)
        if compression == JPEG2000:
            d[b"/SMaskInData"] = b"1"
        else:
            space_text = b""
            mask_text = b""
            if color_space == 0:
                space_text = b"/DeviceGray"
                mask_text = b"[255 255]"
            elif color_space == 1:
                space_text = b"/DeviceRGB"
                mask_text = b"[255 255 255 255 255 255]"
            elif color_space == 2:
                space_text = b"/DeviceCMYK"
                mask_text = b"[255 255 255 255 255 255 255 255]"
                d[b"/Decode"] = b"[1 0 1 0 1 0 1 0]"
            elif color_space == 3:
                space_text = AsRefString(color_space_object)
                mask_text = b"[255 255 255 255 255 255]"
            elif self.library.diagnostic_mode:
                self.library.print_error("Invalid color space %d" % color_space)
            if space_text != b"":
                d[b"/ColorSpace"] = space_text
            if mask_white and mask_text != b"":
                d[b"/Mask"] = mask_text
        if soft_mask != -1:
            d[b"/SMask"] = AsRefString(soft_mask)
        n = self.begin_object()
        self.WriteLn(b"<<")
        self.WriteLn(d.AsString())
        self.WriteLn(b"/Length " + IntToStr(len(data)))
        self.WriteLn(b">>")
        self.WriteLn(b"stream")
        self.output.write(data)
        self.WriteLn(b"endstream")
        self.WriteLn(b"endobj")
        return n

    def WriteICCProfile(self, profile, compression):
        n = self.begin_object()
        self.WriteLn(b"<<")
        self.WriteLn(b"/Alternate /DeviceRGB")
        self.WriteLn(b"/N 3")
        filter_text = self.FilterValueFromCompression(compression)
        if filter_text != b"":
            self.WriteLn(b"/Filter " + filter_text)
        self.WriteLn(b"/Length " + IntToStr(len(profile)))
        self.WriteLn(b">>")
        self.WriteLn(b"stream")
        self.output.write(profile)
        self.WriteLn(b"endstream")
        self.WriteLn(b"endobj")
        m = self.begin_object()
        self.WriteLn(b"[ /ICCBased " + IntToStr(n) + b" 0 R ]")
        self.WriteLn(b"endobj")
        return m

    # Forms and pages

    def WriteCanvas(self):
        canvas = self.canvas
        canvas[b"/Type"] = b"/XObject"
        canvas[b"/Subtype"] = b"/Form"
        canvas[b"/FormType"] = b"1"
        canvas[b"/BBox"] = canvas.bounding_box.AsPoints(self.unit_factor).AsArray()
        canvas[b"/Resources/ExtGState/GS0"] = AsRefString(self.graphics_state_object)
        n = self.WriteDict(canvas.AsString(), canvas.contents.Text(), False)
        canvas.Clear()
        return n

    def WritePage(self, form, crop_box, media_box):
        page = Dict()
        page[b"/Type"] = b"/Page"
        content = b"q 1 0 0 1 0 0 cm /Fm" + IntToStr(form) + b" Do Q"
        content_object = self.WriteDict(b"", content, True)
        page[b"/Contents"] = AsRefString(content_object)
        page[b"/MediaBox"] = media_box.AsPoints(self.unit_factor).AsArray()
        page[b"/CropBox"] = crop_box.AsPoints(self.unit_factor).AsArray()
        page[b"/Resources/ProcSet"] = b"[/PDF /ImageB /ImageC]"
        page[b"/Resources/XObject/Fm" + IntToStr(form)] = AsRefString(form)
        page[b"Group/CS"] = b"/DeviceRGB /I false /K false /S /Transparency"
        self.pages.append(Dict(page))


# ---- The exported functions ---------------------------------------------------------------------


class Library:
    """The library and the process around it: errno, the standard error stream, the files.

    Functions that return a code here return (code, out): out is SENTINEL where the real function
    leaves its out-parameter alone. Rectangles are tuples of five floats, colours of four ints, an
    image descriptor is (data, compression, width, height, bits, color space, color space object).
    """

    def __init__(self):
        self.errno = 0
        self.files = FileSystem()
        self.error_lines = []
        self.diagnostic_mode = False

    def print_error(self, line):
        self.error_lines.append(line)

    def guarded(self, name, call):
        try:
            result = call()
            return 0, SENTINEL if result is None else result
        except StreamFailure as failure:
            code = self.errno if self.errno != 0 else -1
            self.HandleDiagnostics(name, failure.args[0], code)
            return code, SENTINEL

    def HandleDiagnostics(self, name, what, code):
        if not self.diagnostic_mode:
            return
        if code == -1:
            self.print_error("%s: JTPDF error: %s" % (name, what))
        else:
            text = os.strerror(self.errno)
            self.print_error("%s: JTPDF error: %d; %s" % (name, code, text))

    # The diagnostic switch

    def JTPDFGetDiagnosticMode(self):
        return self.diagnostic_mode

    def JTPDFSetDiagnosticMode(self, on):
        self.diagnostic_mode = on

    # Documents

    def CreateFilePdfDoc(self, unit_factor, file_name, creator, author):
        return Document(self, FILE, unit_factor, file_name, creator, author)

    def CreateMemoryPdfDoc(self, unit_factor):
        return Document(self, MEMORY, unit_factor)

    def InitPdfDoc(self, doc):
        return self.guarded("InitPdfDoc", doc.Initialize)

    def FinalizePdfDoc(self, doc, closing_text):
        return self.guarded("FinalizePdfDoc", lambda: doc.Finalize(closing_text))

    def GetPdfData(self, doc):
        return doc.GetPdfData()

    def GetPdfDataSize(self, doc):
        data = doc.GetPdfData()
        return 0 if data is None else len(data)

    def SetPdfInfoItem(self, doc, key, value):
        doc.SetInfoItem(key, value)

    def GetPdfMgMk(self, doc):
        return doc.mgmk

    def SetPdfMgMk(self, doc, mark):
        doc.mgmk = mark

    def DestroyPdfDoc(self, doc):
        if doc is not None:
            doc.Destroy()

    # The canvas

    def ClearPdfCanvas(self, doc):
        doc.canvas.Clear()

    def GetPdfCanvasBoundingBox(self, doc):
        return doc.canvas.bounding_box.AsPdfRect()

    def SetPdfCanvasBoundingBox(self, doc, rect):
        doc.canvas.bounding_box = Box(*rect)

    def DrawPdfImage(self, doc, image):
        doc.canvas.Image(image, doc.canvas.bounding_box)

    def DrawPdfImageInRect(self, doc, image, rect):
        doc.canvas.Image(image, Box(*rect))

    def FillPdfRectangle(self, doc, rect, fill):
        doc.canvas.Rectangle(Box(*rect), fill, NO_COLOR, 0.0)

    def StrokePdfRectangle(self, doc, rect, stroke, line_width):
        doc.canvas.Rectangle(Box(*rect), NO_COLOR, stroke, line_width)

    def FillAndStrokePdfRectangle(self, doc, rect, fill, stroke, line_width):
        doc.canvas.Rectangle(Box(*rect), fill, stroke, line_width)

    def FillAndStrokePdfCircle(self, doc, rect, fill, stroke, line_width):
        doc.canvas.Circle(Box(*rect), fill, stroke, line_width)

    def InsetPdfRect(self, rect, dx, dy):
        box = Box(*rect)
        box.Inset(dx, dy)
        return box.AsPdfRect()

    # Writers

    def WritePdfCanvas(self, doc):
        return self.guarded("WritePdfCanvas", doc.WriteCanvas)

    def WritePdfPage(self, doc, form, crop_box, media_box):
        return self.guarded(
            "WritePdfPage", lambda: doc.WritePage(form, Box(*crop_box), Box(*media_box))
        )

    def WritePdfImage(self, doc, image, mask_white, role, name, items):
        color_space = image[5]
        return self.guarded(
            "WritePdfImage",
            lambda: doc.WriteImage(image, color_space, mask_white, role, name, items, -1),
        )

    def WritePdfImageWithAlpha(self, doc, image, alpha, role, name, items):
        soft_mask = -1
        if alpha is not None:
            code, soft_mask = self.WritePdfImage(doc, alpha, False, 5, name, [])
            if code != 0:
                return code, SENTINEL
        color_space = image[5]
        return self.guarded(
            "WritePdfImageWithAlpha",
            lambda: doc.WriteImage(image, color_space, False, role, name, items, soft_mask),
        )

    def WritePdfImageJPEG2000(self, doc, image, role, name, items):
        return self.guarded(
            "WritePdfImageJPEG2000",
            lambda: doc.WriteImage(image, 1, False, role, name, items, -1),
        )

    def WritePdfICCProfile(self, doc, data, compression):
        return self.guarded("WritePdfICCProfile", lambda: doc.WriteICCProfile(data, compression))
