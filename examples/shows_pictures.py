#!/usr/bin/env python3
"""shows_pictures.py PDFTOPPM FILE.pdf PAGES: each of so many pages shows a picture, in a rendering."""

import subprocess
import sys
import tempfile
from pathlib import Path


def main() -> None:
    pdftoppm, document, pages = sys.argv[1], sys.argv[2], int(sys.argv[3])
    with tempfile.TemporaryDirectory() as folder:
        done = subprocess.run([pdftoppm, "-r", "36", document, f"{folder}/page"], check=True,
                              stderr=subprocess.PIPE, text=True)
        if done.stderr:
            sys.exit(f"{document}: {done.stderr}")
        rendered = sorted(Path(folder).iterdir())
        if len(rendered) != pages:
            sys.exit(f"{document}: {len(rendered)} pages, not {pages}")
        for page in rendered:
            pixels = page.read_bytes().split(b"\n", 3)[3]
            colors = {pixels[i:i + 3] for i in range(0, len(pixels) - 2, 3)}
            if len(colors) < 100:
                sys.exit(f"{document}: {page.name} has {len(colors)} colours, too few for a picture")


if __name__ == "__main__":
    main()
