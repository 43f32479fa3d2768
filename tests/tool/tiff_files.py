"""TIFF files made field by field, which writers of pictures would not write."""
import struct

FORMATS = {1: "B", 2: "s", 3: "H", 4: "I", 5: "I", 7: "B", 16: "Q"}


def page(width, height, data, bits=(8,), photometric=1, **fields):
    """The fields of a page of one strip, or of several where its data is a list, and its data. More
    fields by their numbers: _338=(3, (1,)) is field 338 of type 3 (SHORT)."""
    strips = data if isinstance(data, list) else [data]
    table = {256: (4, (width,)), 257: (4, (height,)), 258: (3, bits), 259: (3, (1,)),
             262: (3, (photometric,)), 273: (4, (0,) * len(strips)), 277: (3, (len(bits),)), 278: (4, (height,)),
             279: (4, tuple(map(len, strips)))}
    table.update({int(name[1:]): value for name, value in fields.items()})
    return {number: value for number, value in table.items() if value is not None}, strips


def tiff(*pages, order="<", last=0):
    """The file; `last` stands where the last page says that there is none behind it."""
    file = bytearray((b"II*\0" if order == "<" else b"MM\0*") + bytes(4))
    link = 4
    for fields, strips in pages:
        offsets = tuple(len(file) + sum(map(len, strips[:i])) for i in range(len(strips)))
        data = b"".join(strips)
        file += data + bytes(len(data) % 2)
        fields = {number: (kind, offsets if number in (273, 324) else values)
                  for number, (kind, values) in fields.items()}
        places = {}
        for number, (kind, values) in fields.items():
            packed = struct.pack(f"{order}{len(values)}{FORMATS[kind]}", *values)
            if len(packed) > 4:
                places[number] = len(file)
                file += packed + bytes(len(packed) % 2)
        struct.pack_into(order + "I", file, link, len(file))
        file += struct.pack(order + "H", len(fields))
        for number, (kind, values) in sorted(fields.items()):
            packed = struct.pack(f"{order}{len(values)}{FORMATS[kind]}", *values)
            if number in places:
                packed = struct.pack(order + "I", places[number])
            count = len(values) // (2 if kind == 5 else 1)
            file += struct.pack(order + "HHI", number, kind, count) + packed.ljust(4, b"\0")
        link = len(file)
        file += struct.pack(order + "I", last)
    return bytes(file)


def greys(count):
    """As many pages of one pixel."""
    return tiff(*(page(1, 1, bytes([n % 256])) for n in range(count)))
