#!/usr/bin/env python3
"""make_pictures.py FOLDER: pictures of each kind, and beside each NAME.pixels.png, what it shows."""

import base64
import pathlib
import struct
import sys
import zlib

from PIL import Image, ImageOps

folder = pathlib.Path(sys.argv[1])
folder.mkdir(parents=True, exist_ok=True)
examples = pathlib.Path(__file__).resolve().parents[3] / "examples/images"
WIDTH, HEIGHT = 60, 40
# 16 x 16 red pixels, which Pillow does not write.
AVIF = (
    "AAAAHGZ0eXBhdmlmAAAAAGF2aWZtaWYxbWlhZgAAAOptZXRhAAAAAAAAACFoZGxyAAAAAAAAAABwaWN0AAAAAAAAAAAAAAAA"
    "AAAAAA5waXRtAAAAAAABAAAAImlsb2MAAAAAREAAAQABAAAAAAEOAAEAAAAAAAAAIQAAACNpaW5mAAAAAAABAAAAFWluZmUC"
    "AAAAAAEAAGF2MDEAAAAAamlwcnAAAABLaXBjbwAAABNjb2xybmNseAACAAIABoAAAAAMYXYxQ4EADAAAAAAUaXNwZQAAAAAA"
    "AAAQAAAAEAAAABBwaXhpAAAAAAMICAgAAAAXaXBtYQAAAAAAAAABAAEEgYIDhAAAACltZGF0EgAKCRgM/9ggQEDQgDISEYAA"
    "AEAAV7baYpPjw1Ef7LGg"
)
photo = Image.open(examples / "coast.jpg").resize((WIDTH, HEIGHT))
ramp = Image.linear_gradient("L").resize((WIDTH, HEIGHT))


def keep(name: str, shown: Image.Image) -> None:
    """What a reader shows of it on white paper."""
    rgba = shown.convert("RGBA")
    paper = Image.new("RGBA", rgba.size, "white")
    paper.alpha_composite(rgba)
    paper.convert("RGB").save(folder / f"{name}.pixels.png")


def save(name: str, picture: Image.Image, **options: object) -> None:
    picture.save(folder / name, **options)
    with Image.open(folder / name) as read:
        keep(name, ImageOps.exif_transpose(read))


for orientation in range(1, 9):
    exif = Image.Exif()
    exif[0x0112] = orientation
    save(f"turned-{orientation}.jpg", photo, exif=exif, quality=95, subsampling=0)
save("gray.jpg", photo.convert("L"), quality=95)
save("cmyk.jpg", photo.convert("CMYK"), quality=95)
save("progressive.jpg", photo, quality=95, progressive=True)
photo.save(folder / "profile.jpg", quality=95, icc_profile=(examples / "bgr.icc").read_bytes())
keep("profile.jpg", Image.merge("RGB", photo.split()[::-1]))  # its red is blue
save("rgb.png", photo)
save("gray.png", photo.convert("L"))
save("bilevel.png", photo.convert("1"))
save("gray-alpha.png", Image.merge("LA", (photo.convert("L"), ramp)))
rgba = photo.copy()
rgba.putalpha(ramp)
save("rgb-alpha.png", rgba)
save("opaque.png", photo.convert("RGBA"))
palette = photo.quantize(16)
save("palette.png", palette, bits=4)
save("palette-key.png", palette, bits=4, transparency=bytes([255, 0, 0]))
save("palette-alpha.png", palette, bits=4, transparency=bytes([255, 0, 128, 64, 255, 200]))
save("rgb-key.png", photo.quantize(8).convert("RGB"), transparency=photo.quantize(8).convert("RGB").getpixel((5, 5)))
save("plain.jp2", photo, irreversible=False)

# What Pillow does not write: 16 bits, pixels in many small chunks, rows in passes.
def png(name: str, header: bytes, rows: bytes, shown: Image.Image, size: int = 1 << 30, extra: bytes = b"") -> None:
    def chunk(kind: bytes, data: bytes) -> bytes:
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))

    packed = zlib.compress(rows)
    pieces = b"".join(chunk(b"IDAT", packed[i:i + size]) for i in range(0, len(packed), size))
    (folder / name).write_bytes(b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + extra + pieces + chunk(b"IEND", b""))
    keep(name, shown)


pixels = photo.tobytes()
rows = [pixels[3 * WIDTH * y:3 * WIDTH * (y + 1)] for y in range(HEIGHT)]
deep = b"".join(b"\0" + bytes(b for value in row for b in (value, value)) for row in rows)
png("rgb16.png", struct.pack(">IIBBBBB", WIDTH, HEIGHT, 16, 2, 0, 0, 0), deep, photo)
deep_alpha = b"".join(b"\0" + b"".join(
    bytes(b for value in row[3 * x:3 * x + 3] for b in (value, value)) + bytes([ramp.getpixel((x, y))] * 2)
    for x in range(WIDTH)) for y, row in enumerate(rows))
png("rgb16-alpha.png", struct.pack(">IIBBBBB", WIDTH, HEIGHT, 16, 6, 0, 0, 0), deep_alpha, rgba)
flat = b"".join(b"\0" + row for row in rows)
png("chunks.png", struct.pack(">IIBBBBB", WIDTH, HEIGHT, 8, 2, 0, 0, 0), flat, photo, size=100)
passes = b""
for left, top, right, down in ((0, 0, 8, 8), (4, 0, 8, 8), (0, 4, 4, 8), (2, 0, 4, 4), (0, 2, 2, 4), (1, 0, 2, 2), (0, 1, 1, 2)):
    for y in range(top, HEIGHT, down):
        passes += b"\0" + b"".join(rows[y][3 * x:3 * x + 3] for x in range(left, WIDTH, right))
png("interlaced.png", struct.pack(">IIBBBBB", WIDTH, HEIGHT, 8, 2, 0, 0, 1), passes, photo)
photo.save(folder / "lossy.webp", quality=95)
with Image.open(folder / "lossy.webp") as read:
    keep("lossy.webp", read)

# What only a browser decodes.
frames = [Image.new("RGB", (WIDTH, HEIGHT), colour) for colour in ("red", "lime", "blue")]
for name in ("animated.gif", "animated.webp"):
    options = {"lossless": True} if name.endswith("webp") else {}
    frames[0].save(folder / name, save_all=True, append_images=frames[1:], duration=100, **options)
    keep(name, frames[0])
save("still.gif", palette)
save("rows.bmp", photo)
(folder / "still.avif").write_bytes(base64.b64decode(AVIF))
keep("still.avif", Image.new("RGB", (16, 16), "red"))
