#!/usr/bin/env python3
"""make_inputs.py FOLDER: the pictures that the packages are compared with, made once."""

import io
import os
import pathlib
import random
import sys

from PIL import Image, ImageFilter

folder = pathlib.Path(sys.argv[1])
if (folder / "made").exists():
    sys.exit()


def photograph(width: int, height: int, seed: int) -> Image.Image:
    """Smooth shapes under fine grain, which compress as photographs do."""
    chance = random.Random(seed)
    coarse = Image.frombytes("RGB", (24, 16), chance.randbytes(24 * 16 * 3)).resize((width, height), Image.Resampling.BICUBIC)
    grain = Image.frombytes("L", (512, 512), chance.randbytes(512 * 512)).filter(ImageFilter.GaussianBlur(0.6))
    tiled = Image.new("L", (width, height))
    for x in range(0, width, 512):
        for y in range(0, height, 512):
            tiled.paste(grain, (x, y))
    return Image.blend(coarse, Image.merge("RGB", [tiled] * 3), 0.12)


def spread(name: str, count: int, suffix: str, data: bytes) -> None:
    """So many files with the same bytes, which take the room of one."""
    (folder / name).mkdir(parents=True, exist_ok=True)
    first = folder / name / f"0000{suffix}"
    first.write_bytes(data)
    for i in range(1, count):
        os.link(first, folder / name / f"{i:04}{suffix}")


def encoded(picture: Image.Image, kind: str, **options: object) -> bytes:
    buffer = io.BytesIO()
    picture.save(buffer, kind, **options)
    return buffer.getvalue()


large = photograph(4000, 3000, 1)
quality = next(q for q in range(50, 100) if len(encoded(large, "JPEG", quality=q)) > 1.9e6 or q == 97)
spread("large", 200, ".jpg", encoded(large, "JPEG", quality=quality))
spread("small", 2000, ".jpg", encoded(photograph(192, 128, 2), "JPEG", quality=80))
spread("png", 50, ".png", encoded(photograph(1200, 900, 3), "PNG"))
(folder / "made").touch()
