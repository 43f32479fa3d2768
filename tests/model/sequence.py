"""The text form of a call sequence, and the transcript that the model predicts for one.

A sequence is a list of lines, one call a line; README.md describes the tokens. `predict` plays it
against model.Library and returns the transcript lines that player.cpp must print for the same
sequence played against the real library.
"""

import struct

import model

SLOTS = 8  # documents that a sequence can hold at a time: d0 to d7

# ---- Tokens -------------------------------------------------------------------------------------


def double_token(x):
    """A double as C's strtod reads it: hexadecimal, inf, -inf, nan or -nan."""
    if x != x:
        return "-nan" if model.sign_bit(x) else "nan"
    return shown_double(x)


def shown_double(x):
    """What printf("%a") shows in the C locale."""
    bits = struct.unpack("<Q", struct.pack("<d", x))[0]
    sign = "-" if bits >> 63 else ""
    exponent = bits >> 52 & 0x7FF
    mantissa = bits & 0xFFFFFFFFFFFFF
    if exponent == 0x7FF:
        return sign + ("nan" if mantissa else "inf")
    digits = ("%013x" % mantissa).rstrip("0")
    point = "." if digits else ""
    if exponent == 0:
        power = -1022 if mantissa else 0
    else:
        power = exponent - 1023
    return "%s0x%d%s%sp%+d" % (sign, 1 if exponent else 0, point, digits, power)


def read_double(token):
    if token == "nan":
        return model.POSITIVE_NAN
    if token == "-nan":
        return model.DEFAULT_NAN
    if token in ("inf", "-inf"):
        return float(token)
    return float.fromhex(token)


def wide_token(units):
    return "-" if units is None else "w:" + ",".join("%x" % (u & 0xFFFFFFFF) for u in units)


def read_wide(token):
    if token == "-":
        return None
    units = []
    pattern, _, times = token[2:].partition("*")
    for text in pattern.split(",") if pattern else []:
        u = int(text, 16)
        units.append(u - (1 << 32) if u >= 1 << 31 else u)
    return units * int(times or 1)


def text_token(text):
    return "-" if text is None else "t:" + text.hex()


def read_text(token):
    return None if token == "-" else read_data(token)


def data_token(data, times=1):
    return "b:" + data.hex() + ("*%d" % times if times != 1 else "")


def read_data(token):
    if token == "-":
        return b""
    pattern, _, times = token[2:].partition("*")
    return bytes.fromhex(pattern) * int(times or 1)


def rect_token(rect):
    return "[" + ",".join(map(double_token, rect)) + "]"


def read_rect(token):
    return tuple(read_double(t) for t in token[1:-1].split(","))


def color_token(color):
    return bytes(color).hex()


def read_color(token):
    return tuple(bytes.fromhex(token))


def image_token(data, compression, width, height, bits, color_space, color_space_object):
    numbers = (compression, width, height, bits, color_space, color_space_object)
    return "{" + ",".join([data] + [str(n) for n in numbers]) + "}"


def read_image(token):
    if token == "-":
        return None
    data, *numbers = token[1:-1].split(",")
    return (read_data(data), *map(int, numbers))


def items_token(items):
    if items is None:
        return "-"
    return "(" + ";".join(key.hex() + "=" + wide_token(value) for key, value in items) + ")"


def read_items(token):
    items = []
    for row in token[1:-1].split(";") if token not in ("-", "()") else []:
        key, value = row.split("=")
        items.append((bytes.fromhex(key), read_wide(value)))
    return items


# ---- Playing against the model ------------------------------------------------------------------

READERS = {
    "double": read_double,
    "wide": read_wide,
    "text": read_text,
    "data": read_data,
    "rect": read_rect,
    "color": read_color,
    "image": read_image,
    "items": read_items,
    "int": int,
    "bool": lambda token: token == "1",
}

# Arguments behind the handle. "out" is the last of a writer with an out-parameter: "out", or
# "null" for a caller that does not want the number.
ARGUMENTS = {
    "FinalizePdfDoc": "text",
    "SetPdfInfoItem": "text wide",
    "SetPdfMgMk": "bool",
    "SetPdfCanvasBoundingBox": "rect",
    "DrawPdfImage": "int",
    "DrawPdfImageInRect": "int rect",
    "FillPdfRectangle": "rect color",
    "StrokePdfRectangle": "rect color double",
    "FillAndStrokePdfRectangle": "rect color color double",
    "FillAndStrokePdfCircle": "rect color color double",
    "WritePdfCanvas": "out",
    "WritePdfPage": "int rect rect",
    "WritePdfImage": "image bool int wide items out",
    "WritePdfImageWithAlpha": "image image int wide items out",
    "WritePdfImageJPEG2000": "image int wide items out",
    "WritePdfICCProfile": "data int out",
}

CODE_RETURNING = {"InitPdfDoc", "FinalizePdfDoc", "WritePdfPage"}


class Play:
    """One sequence on a fresh library, with the bookkeeping that player.cpp does as well."""

    def __init__(self):
        self.library = model.Library()
        self.documents = [None] * SLOTS
        self.names = [None] * SLOTS  # the file whose bytes are to be shown when it is closed
        self.lines = []

    def say(self, index, name, result):
        self.lines.append("%s %s%s errno=%d" % (index, name, result, self.library.errno))
        self.lines += ["  err " + line for line in self.library.error_lines]
        self.library.error_lines.clear()

    def skip(self, index, name):
        self.lines.append("%s %s skipped" % (index, name))

    def say_file(self, slot):
        """Shows the file that the document in slot has just closed."""
        path = model.utf8(self.names[slot])
        self.names[slot] = None
        if path == b"/dev/full":
            return
        files = self.library.files
        content = files.fifos[path] if path in files.fifos else files.regular[path]
        self.lines.append("  file %s %s" % (path.hex(), content.hex()))
        if path in files.fifos:
            content.clear()

    def run(self, sequence):
        for index, line in enumerate(sequence):
            words = line.split()
            times = 1
            if words[0] == "repeat":
                times = int(words[1])
                words = words[2:]
            for _ in range(times):
                self.call(index, words[0], words[1:])
        for slot, document in enumerate(self.documents):
            if document is not None:
                self.call("end", "DestroyPdfDoc", ["d%d" % slot])
        for path, content in sorted(self.library.files.regular.items()):
            self.lines.append("left %s %d" % (path.hex(), len(content)))

    def call(self, index, name, words):
        library = self.library
        if name == "errno":
            library.errno = int(words[0])
        elif name == "mkfifo":
            library.files.fifos[model.utf8(read_wide(words[0]))] = bytearray()
        elif name == "mkdir":
            library.files.directories.add(model.utf8(read_wide(words[0])))
        elif name == "JTPDFGetDiagnosticMode":
            self.say(index, name, " %d" % library.JTPDFGetDiagnosticMode())
        elif name == "JTPDFSetDiagnosticMode":
            library.JTPDFSetDiagnosticMode(words[0] == "1")
            self.say(index, name, "")
        elif name == "InsetPdfRect":
            rect = library.InsetPdfRect(
                read_rect(words[0]), read_double(words[1]), read_double(words[2])
            )
            self.say(index, name, " " + self.shown_rect(rect))
        elif name == "DestroyPdfDoc" and words[0] == "-":
            library.DestroyPdfDoc(None)
            self.say(index, name, "")
        elif name.startswith("Create"):
            self.create(index, name, int(words[0][1:]), words[1:])
        elif self.documents[int(words[0][1:])] is None:
            self.skip(index, name)
        else:
            self.call_document(index, name, int(words[0][1:]), words[1:])

    def create(self, index, name, slot, words):
        if self.documents[slot] is not None:
            self.skip(index, name)
            return
        unit = read_double(words[0])
        if name == "CreateMemoryPdfDoc":
            self.documents[slot] = self.library.CreateMemoryPdfDoc(unit)
        else:
            texts = [read_wide(word) for word in words[1:]]
            self.documents[slot] = self.library.CreateFilePdfDoc(unit, *texts)
        self.say(index, name, "")

    def call_document(self, index, name, slot, words):
        document = self.documents[slot]
        function = getattr(self.library, name)
        kinds = ARGUMENTS.get(name, "").split()
        wants_out = kinds[-1:] == ["out"]
        values = [READERS[kind](word) for kind, word in zip(kinds, words) if kind != "out"]
        if name == "InitPdfDoc" and self.file_is_busy(document):
            self.skip(index, name)
            return
        result = function(document, *values)
        if name in CODE_RETURNING:
            self.say(index, name, " code=%d" % result[0])
        elif wants_out:
            out = " out=%d" % result[1] if words[-1] == "out" else ""
            self.say(index, name, " code=%d%s" % (result[0], out))
        elif name == "GetPdfData":
            self.say(index, name, " " + ("null" if result is None else result.hex()))
        elif name in ("GetPdfDataSize", "GetPdfMgMk"):
            self.say(index, name, " %d" % result)
        elif name == "GetPdfCanvasBoundingBox":
            self.say(index, name, " " + self.shown_rect(result))
        else:
            self.say(index, name, "")
        if document.output_kind == model.FILE:
            if name == "InitPdfDoc" and result[0] == 0:
                self.names[slot] = document.output.name
            closed = name == "DestroyPdfDoc" or (name == "FinalizePdfDoc" and result[0] == 0)
            if closed and self.names[slot] is not None:
                self.say_file(slot)
        if name == "DestroyPdfDoc":
            self.documents[slot] = None

    def file_is_busy(self, document):
        """Whether another document has the file open: two writers of one file are not played."""
        if document.output_kind != model.FILE or document.initialized:
            return False
        path = model.utf8(document.output.name)
        return path != b"/dev/full" and path in self.library.files.busy

    @staticmethod
    def shown_rect(rect):
        return "[" + ",".join(map(shown_double, rect)) + "]"


def predict(sequence):
    """The transcript of a sequence.

    Raises model.AmbiguousNaN or model.Unsupported where the outcome is not fixed.
    """
    play = Play()
    play.run(sequence)
    return play.lines


def read_sequence(path):
    """The calls in a file, without its blank lines and its comments (#)."""
    with open(path, encoding="ascii") as file:
        lines = [line.strip() for line in file]
    return [line for line in lines if line and not line.startswith("#")]
