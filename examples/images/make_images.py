#!/usr/bin/python3
"""Makes the image files of this directory with real encoders; README.md tells what each is.

Usage: make_images.py [DIRECTORY]      (without DIRECTORY: the one that holds this script)

Needs, from Debian: python3-numpy python3-pil libjpeg-turbo-progs libopenjp2-tools and
fonts-urw-base35 (for the captions).
"""

import os
import struct
import subprocess
import sys
import zlib

import numpy as np
from PIL import Image, ImageDraw, ImageFont

import pictures

FONTS = "/usr/share/fonts/opentype/urw-base35/"

# What the pages of the album say: file, heading, line.
CAPTIONS = (
    ("prints", "Photographs",
     "Baseline, grey and progressive JPEG files, written byte for byte"),
    ("shapes", "Rectangles and circles",
     "Sixty turned squares and a sunflower of circles, no pictures"),
    ("turned", "Turned and mirrored",
     "Three pictures, drawn again and again but written only once"),
    ("inks", "Four inks",
     "A CMYK JPEG file with an Adobe marker, shown through its inverted Decode array"),
    ("jpeg2000", "JPEG 2000",
     "A JP2 file over the whole page; it names its own colour space"),
    ("softmask", "Soft masks",
     "One balloon and one cloud: raw RGB data, each with a plane of opacity"),
    ("colorkey", "Colour key",
     "The same grey fern twice: as it is, and with pure white left out"),
    ("profile", "Colour profile",
     "The same bytes twice: as they are, and put right by an ICC profile"),
    ("sheet", "One form, two pages",
     "This sheet has crop marks; the next page is the same form, cropped"),
    ("contact", "Contact sheet",
     "Every picture once more; none of them had to be written again"),
)


# ---- Encoders ---------------------------------------------------------------------------------


def encode_jpeg(path, pixels, *options):
    """Through cjpeg: one component for a plane, YCbCr for colours."""
    image = pictures.image_from(pixels)
    kind = b"P5" if image.mode == "L" else b"P6"
    pnm = b"%s %d %d 255\n" % (kind, image.width, image.height) + image.tobytes()
    subprocess.run(["cjpeg", "-optimize", *options, "-outfile", path], input=pnm, check=True)


def encode_cmyk_jpeg(path, pixels, quality):
    """Through Pillow, which stores the four inks inverted and says so in an Adobe marker."""
    ink = 1.0 - np.clip(pixels, 0.0, 1.0)
    black = ink.min(axis=-1, keepdims=True) ** 1.6  # black ink takes over in the shadows only
    cmy = (ink - black) / np.maximum(1.0 - black, 1e-6)
    cmyk = pictures.image_from(np.concatenate([cmy, black], axis=-1)).tobytes()
    size = (pixels.shape[1], pixels.shape[0])
    Image.frombytes("CMYK", size, cmyk).save(path, "JPEG", quality=quality, optimize=True)


def encode_jp2(path, pixels, ratio):
    """Through opj_compress, which reads files only."""
    source = path + ".ppm"
    pictures.image_from(pixels).save(source)
    try:
        command = ["opj_compress", "-i", source, "-o", path, "-r", str(ratio)]
        subprocess.run(command, check=True, stdout=subprocess.DEVNULL)
    finally:
        os.remove(source)


def encode_zlib(path, pixels):
    """Eight bits per component, row after row, as one zlib stream."""
    write(path, zlib.compress(pictures.image_from(pixels).tobytes(), 9))


def encode_zlib_4_bits(path, plane):
    """Four bits per sample, two in a byte; the width is even."""
    samples = np.clip(plane * 15.0 + 0.5, 0, 15).astype(np.uint8)
    write(path, zlib.compress((samples[:, 0::2] << 4 | samples[:, 1::2]).tobytes(), 9))


def write(path, data):
    with open(path, "wb") as file:
        file.write(data)


# ---- An ICC profile ---------------------------------------------------------------------------


def bgr_profile():
    """sRGB's primaries with red and blue exchanged, for pixels that are stored blue first.

    A version 2 display profile: a matrix of the three primaries (adapted to D50) and one curve.
    """
    fixed = lambda value: struct.pack(">i", round(value * 65536))
    xyz = lambda x, y, z: b"XYZ \0\0\0\0" + fixed(x) + fixed(y) + fixed(z)
    red, green, blue = (0.4361, 0.2225, 0.0139), (0.3851, 0.7169, 0.0971), (0.1431, 0.0606, 0.7141)
    white = (0.9642, 1.0, 0.8249)
    name = b"JTPDF album: sRGB, blue first\0"
    description = b"desc\0\0\0\0" + struct.pack(">I", len(name)) + name + bytes(8 + 3 + 67)
    copyright_text = b"text\0\0\0\0No copyright, use freely\0"
    curve = b"curv\0\0\0\0" + struct.pack(">IH", 1, round(2.2 * 256))
    tags = ((b"desc", description), (b"cprt", copyright_text), (b"wtpt", xyz(*white)),
            (b"rXYZ", xyz(*blue)), (b"gXYZ", xyz(*green)), (b"bXYZ", xyz(*red)),
            (b"rTRC", curve), (b"gTRC", curve), (b"bTRC", curve))
    table, body = struct.pack(">I", len(tags)), b""
    for signature, data in tags:
        table += signature + struct.pack(">II", 132 + 12 * len(tags) + len(body), len(data))
        body += data + bytes(-len(data) % 4)
    size = 128 + len(table) + len(body)
    header = struct.pack(">I4xI4s4s4s", size, 0x02100000, b"mntr", b"RGB ", b"XYZ ")
    header += struct.pack(">6H", 2024, 1, 1, 0, 0, 0) + b"acsp" + bytes(28)
    header += b"".join(fixed(value) for value in white) + bytes(48)
    return header + table + body


# ---- Captions ---------------------------------------------------------------------------------


def spaced_text(draw, place, text, font, gap):
    """Text with `gap` pixels more between its letters; the width that it takes."""
    x, y = place
    for letter in text:
        draw.text((x, y), letter, font=font, fill=255, anchor="ls")
        x += font.getlength(letter) + gap
    return x - gap - place[0]


def caption(heading, line):
    """A strip of 2000 x 160 pixels: where ink goes."""
    image = Image.new("L", (2000, 160), 0)
    draw = ImageDraw.Draw(image)
    bold = ImageFont.truetype(FONTS + "URWGothic-Demi.otf", 62)
    spaced_text(draw, (4, 62), heading.upper(), bold, 9)
    italic = ImageFont.truetype(FONTS + "P052-Italic.otf", 52)
    draw.text((4, 132), line, font=italic, fill=255, anchor="ls")
    return pictures.plane_from(image)


def title():
    """The cover's 1400 x 400 pixels: where ink goes."""
    image = Image.new("L", (1400, 400), 0)
    draw = ImageDraw.Draw(image)
    large = ImageFont.truetype(FONTS + "URWGothic-Book.otf", 240)
    width = spaced_text(ImageDraw.Draw(Image.new("L", (1, 1))), (0, 0), "ALBUM", large, 60)
    spaced_text(draw, ((1400 - width) / 2, 230), "ALBUM", large, 60)
    small = ImageFont.truetype(FONTS + "P052-Italic.otf", 68)
    line = "pictures on paper, in one forward pass"
    draw.text((700, 350), line, font=small, fill=255, anchor="ms")
    return pictures.plane_from(image)


# ---- The files --------------------------------------------------------------------------------


def make(directory):
    path = lambda name: os.path.join(directory, name)
    small = lambda pixels: pictures.image_from(pixels).resize((160, 120), Image.LANCZOS)

    encode_jpeg(path("dusk.jpg"), pictures.dusk(1080, 1440), "-quality", "82", "-progressive")
    coast = pictures.coast(780, 1040)
    encode_jpeg(path("coast.jpg"), coast, "-quality", "78")
    forest = pictures.forest(780, 1040)
    encode_jpeg(path("forest.jpg"), forest, "-quality", "78")
    tulips = pictures.tulips(550, 880)
    encode_cmyk_jpeg(path("tulips.jpg"), pictures.blurred(tulips, 0.8), 50)
    encode_jp2(path("aurora.jp2"), pictures.aurora(810, 1080), 32)
    encode_jpeg(path("maple-bgr.jpg"), pictures.maple(760, 640)[..., ::-1],
                "-quality", "70", "-sample", "1x1")
    encode_jpeg(path("city.jpg"), pictures.city(600, 1800), "-quality", "68")
    write(path("bgr.icc"), bgr_profile())

    colours, opacity = pictures.balloon(600, 440)
    encode_zlib(path("balloon.rgb.zlib"), colours)
    encode_zlib(path("balloon.alpha.zlib"), opacity)
    encode_zlib(path("cloud.alpha.zlib"), pictures.cloud(240, 420))
    encode_zlib(path("shadow.alpha.zlib"), pictures.shadow(300, 400))
    encode_zlib(path("fern.gray.zlib"), pictures.fern(800, 420))
    encode_zlib_4_bits(path("title.alpha.zlib"), title())
    for name, heading, line in CAPTIONS:
        encode_zlib_4_bits(path("caption-%s.alpha.zlib" % name), caption(heading, line))

    small(coast).save(path("coast-rgb.png"), optimize=True)
    small(forest).save(path("forest-gray.png"), optimize=True)
    small(tulips).quantize(64, dither=Image.NONE).save(path("tulips-palette.png"), optimize=True)
    rgba = np.concatenate([colours, opacity[..., None]], axis=-1)
    icon = pictures.image_from(rgba).resize((132, 180), Image.LANCZOS)
    icon.save(path("balloon-rgba.png"), optimize=True)


if __name__ == "__main__":
    make(sys.argv[1] if len(sys.argv) > 1 else os.path.dirname(os.path.abspath(__file__)))
