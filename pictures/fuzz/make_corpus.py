#!/usr/bin/python3
"""Writes the seeds of the fuzz corpora: one small picture of each kind that a reader tells apart.

    pictures/fuzz/make_corpus.py      (Debian's python3-pil, python3-numpy, libtiff-tools, libjxl-tools,
                                       libheif-examples)
"""
import os
import struct
import subprocess
import sys
import tempfile
import zlib

import numpy
from PIL import Image

FOLDER = os.path.join(os.path.dirname(os.path.abspath(__file__)), "corpus")


def picture(mode, seed=1, size=(9, 7)):
    bands = len(Image.new(mode, (1, 1)).getbands())
    pixels = numpy.random.default_rng(seed).integers(0, 256, (size[1], size[0], bands), numpy.uint8)
    return Image.fromarray(pixels[..., 0] if bands == 1 else pixels, mode)


def path(folder, name):
    os.makedirs(os.path.join(FOLDER, folder), exist_ok=True)
    return os.path.join(FOLDER, folder, name)


def chunk(name, data):
    return struct.pack(">I", len(data)) + name + data + struct.pack(">I", zlib.crc32(name + data))


def png(name, depth, kind, bits, chunks=b""):
    row = b"\0" + bytes(range(17, 17 + (9 * bits + 7) // 8))
    head = struct.pack(">IIBBBBB", 9, 3, depth, kind, 0, 0, 0)
    with open(path("png", name), "wb") as file:
        file.write(b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", head) + chunks
                   + chunk(b"IDAT", zlib.compress(row * 3)) + chunk(b"IEND", b""))


EXIF = b"Exif\0\0MM\0*\0\0\0\x08\0\1\1\x12\0\3\0\0\0\1\0\6\0\0\0\0\0\0"
PROFILE = (b"\0\0\0\x90lcms\4\x30\0\0mntrRGB XYZ " + bytes(12) + b"acsp").ljust(144, b"\0")


def write(folder, name, data):
    with open(path(folder, name), "wb") as file:
        file.write(data)


def read(folder, name):
    with open(path(folder, name), "rb") as file:
        return file.read()


def bitmaps():
    for mode in ("1", "L", "RGB", "RGBA"):
        image = picture("L").convert("1") if mode == "1" else picture(mode)
        image.save(path("bmp", mode), "BMP")
    for name, bits, compression, masks in (("555", 16, 0, ()), ("565", 16, 3, (0xF800, 0x7E0, 31)),
                                           ("deep", 32, 3, (0x3FF00000, 0xFFC00, 0x3FF))):
        head = struct.pack("<IiiHHIIiiII", 40, 5, -3, 1, bits, compression, 0, 1000, 1000, 0, 0)
        head += struct.pack(f"<{len(masks)}I", *masks)
        pixels = bytes(range((5 * bits + 31) // 32 * 4 * 3))
        write("bmp", name, b"BM" + struct.pack("<IHHI", 0, 0, 0, 14 + len(head)) + head + pixels)
    for name, bits, compression, data in (
            ("rle8", 8, 1, b"\5\3\0\3\1\2\3\0\0\2\1\1\4\x09\0\0\0\1"),
            ("rle4", 4, 2, b"\5\x33\0\3\x12\x30\0\2\1\1\4\x99\0\0\0\1")):
        head = struct.pack("<IiiHHIIiiII", 40, 13, 3, 1, bits, compression, 0, 0, 0, 16, 0)
        palette = bytes(range(64))
        write("bmp", name, b"BM" + struct.pack("<IHHI", 0, 0, 0, 54 + 64) + head + palette + data)
    head = struct.pack("<IHHHH", 12, 5, 3, 1, 4)
    write("bmp", "core", b"BM" + struct.pack("<IHHI", 0, 0, 0, 74) + head + bytes(48) + bytes(12))


def films():
    frames = [picture("RGB", seed).quantize(8) for seed in (1, 2, 3)]
    for disposal in (0, 2, 3):
        frames[0].save(path("gif", f"film-{disposal}"), "GIF", save_all=True, disposal=disposal,
                       append_images=frames[1:])
    frames[0].save(path("gif", "interlaced"), "GIF", interlace=1, transparency=2)
    frames[0].save(path("gif", "plain"), "GIF", interlace=0)


def netpbm():
    for mode in ("1", "L", "RGB"):
        image = picture("L").convert("1") if mode == "1" else picture(mode)
        image.save(path("pnm", f"raw-{mode}"), "PPM")
    write("pnm", "plain-1", b"P1 # comment\n4 2\n1010 0101")
    write("pnm", "plain-L", b"P2 3 2 9\n1 2 3\n4 5 9\n")
    write("pnm", "plain-RGB", b"P3 2 1 300\n1 2 3 4 5 300\n")
    write("pnm", "wide", b"P5 3 2 1000\n" + bytes(range(12)))
    for depth in (1, 2, 3, 4):
        write("pnm", f"pam-{depth}", b"P7\nWIDTH 3\nHEIGHT 2\nDEPTH %d\nMAXVAL 255\nENDHDR\n" % depth
              + bytes(range(6 * depth)))
    write("pnm", "pam-inks", b"P7\nWIDTH 2\nHEIGHT 1\nDEPTH 4\nMAXVAL 7\nTUPLTYPE CMYK\nENDHDR\n"
          + bytes(range(8)))


def odd_ones():
    """Files that few writers make: each takes a way of its own through its reader."""
    jpeg = read("jpeg", "L-plain")
    write("jpeg", "stray", jpeg[:20] + b"stray" + jpeg[20:])
    png = read("png", "grey-8")
    write("png", "animation", png[:33] + chunk(b"acTL", struct.pack(">II", 2, 0)) + png[33:])
    jp2 = read("jpeg2000", "RGB.jp2")
    uuid = b"JpgTiffExif->JP2" + EXIF
    write("jpeg2000", "exif.jp2", jp2 + struct.pack(">I4s", len(uuid) + 8, b"uuid") + uuid)
    write("jpeg2000", "no-end.jp2", jp2[:-2])
    write("jpeg2000", "no-boxes.jp2", jp2[:12] + jp2[jp2.index(b"jp2c") - 4:])
    picture("RGB", size=(40, 30)).save(path("jpeg2000", "tiles.jp2"), "JPEG2000",
                                       tile_size=(16, 16))
    colours = lambda number: struct.pack("<HHIHH", 262, 3, 1, number, 0)
    write("tiff", "lab", read("tiff", "RGB-None").replace(colours(2), colours(8)))
    write("tiff", "bad-page", read("tiff", "pages").replace(colours(1), colours(77)))
    write("tiff", "undeclared", read("tiff", "RGBA-None").replace(
        struct.pack("<HHI", 338, 3, 1), struct.pack("<HHI", 700, 3, 1)))


def encoded():
    """What other programs write."""
    with tempfile.TemporaryDirectory() as folder:
        source = lambda name: os.path.join(folder, name)
        quietly = lambda *command: subprocess.run(command, check=True, capture_output=True)
        picture("L").convert("1").save(source("1.tif"))
        picture("RGB", size=(24, 20)).save(source("RGB.tif"))
        for name, options in {"fax-1d": "g3:1d", "fax-2d": "g3:2d", "fax-4": "g4"}.items():
            quietly("tiffcp", "-c", options, "-f", "lsb2msb", source("1.tif"), path("tiff", name))
        for name, options in {"jpeg-strips": "jpeg:r", "jpeg-ycc": "jpeg", "lzw-2": "lzw:2",
                              "zip-2": "zip:2"}.items():
            quietly("tiffcp", "-c", options, "-r", "16" if "jpeg" in name else "100",
                    source("RGB.tif"), path("tiff", name))
        for mode in "L", "RGB", "RGBA":
            picture(mode, size=(40, 24)).save(source(mode + ".png"))
            for name, options in {"lossless": ["-d", "0"], "lossy": ["-d", "3"]}.items():
                quietly("cjxl", source(mode + ".png"), path("jxl", f"{mode}-{name}"), *options)
            quietly("heif-enc", source(mode + ".png"), "-o", path("heif", mode + ".heic"))
            quietly("heif-enc", "-A", source(mode + ".png"), "-o", path("heif", mode + ".avif"))
        picture("RGB").save(source("a.jpg"), exif=EXIF)
        quietly("cjxl", source("a.jpg"), path("jxl", "jpeg"))
        quietly("heif-enc", source("L.png"), source("RGB.png"), "-o", path("heif", "two.heic"))


def main():
    for mode in ("L", "RGB", "CMYK"):
        for name, options in (("plain", {}), ("progressive", {"progressive": True}),
                              ("exif", {"exif": EXIF, "icc_profile": PROFILE})):
            picture(mode).save(path("jpeg", f"{mode}-{name}"), "JPEG", quality=50, **options)
    with open(path("jpeg", "CMYK-plain"), "rb") as file:
        data = file.read()
    at = data.index(b"\xff\xee")
    with open(path("jpeg", "CMYK-no-marker"), "wb") as file:
        file.write(data[:at] + data[at + 2 + int.from_bytes(data[at + 2:at + 4], "big"):])
    for depth in (1, 2, 4, 8, 16):
        png(f"grey-{depth}", depth, 0, depth, chunk(b"tRNS", b"\0\1"))
    png("rgb-16", 16, 2, 48, chunk(b"pHYs", struct.pack(">IIB", 11811, 11811, 1)))
    png("grey-alpha-16", 16, 4, 32)
    png("palette-4", 4, 3, 4, chunk(b"PLTE", bytes(48)) + chunk(b"tRNS", b"\0\x80"))
    picture("RGBA").save(path("png", "rgba"), "PNG", icc_profile=PROFILE, exif=EXIF)
    for mode in ("L", "RGB", "RGBA"):
        picture(mode).save(path("jpeg2000", f"{mode}.jp2"), "JPEG2000", irreversible=False)
        picture(mode).save(path("jpeg2000", f"{mode}.j2k"), "JPEG2000", irreversible=True)
    for mode in ("L", "RGB", "CMYK", "RGBA", "P"):
        for compression in (None, "tiff_lzw", "tiff_adobe_deflate", "packbits"):
            image = picture("RGB").quantize(8) if mode == "P" else picture(mode)
            image.save(path("tiff", f"{mode}-{compression}"), "TIFF", compression=compression)
    for compression in ("group3", "group4"):
        picture("L").convert("1").save(path("tiff", compression), "TIFF", compression=compression)
    picture("RGB").save(path("tiff", "jpeg"), "TIFF", compression="jpeg")
    picture("RGB").save(path("tiff", "pages"), "TIFF", save_all=True,
                        append_images=[picture("L", 2)])
    for mode in ("RGB", "RGBA"):
        picture(mode).save(path("webp", f"{mode}-lossy"), "WEBP", quality=10, exif=EXIF)
        picture(mode).save(path("webp", f"{mode}-lossless"), "WEBP", lossless=True,
                           icc_profile=PROFILE)
    picture("RGB").save(path("webp", "film"), "WEBP", save_all=True, lossless=True,
                        append_images=[picture("RGB", 2)])
    bitmaps()
    films()
    netpbm()
    odd_ones()
    encoded()
    for folder, name in (("gif", "film-3"), ("webp", "film"), ("png", "animation-over"),
                         ("jpeg", "two-pictures"), ("heif", "two.heic")):
        # By the interface of C, which chooses all frames by the third byte.
        write("api", f"film-{folder}", b"\0\0\x80\0" + read(folder, name))


if sys.version_info < (3, 9):
    sys.exit("make_corpus.py: needs Python 3.9 or newer")
main()
