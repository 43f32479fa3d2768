"""Shows that reader_test.py sees what is wrong: each change to the golden document "pixels" that
keeps the file's length has to fail, and has to be named.

faults_test.py --host H --test reader_test.py PIXELS_PDF
"""

import argparse
import subprocess
import sys
import tempfile
from pathlib import Path

# What is changed, into what, and a part of what the test then says.
FAULTS = (
    (b"0.7071 0.7071 -0.7071", b"0.7071 -0.7071 0.7071", "bar, upper right end"),
    (b"0.0000 1.0000 -1.0000", b"0.0000 -1.0000 1.0000", "image turned by 90 degrees"),
    (b"/SMask 3 0 R", b"/Smask 3 0 R", "soft mask"),
    (b"/Mask [255 255]", b"/Musk [255 255]", "colour key"),
    (b"/Decode [1 0 1 0 1 0 1 0]", b"/Decode [0 1 0 1 0 1 0 1]", "CMYK"),
    (b"[ /ICCBased 8 0 R ]", b"[ /DeviceRGB      ]", "ICC"),
    (b"/CropBox [20.0000", b"/CropBux [20.0000", "crop box"),
    (b"/MediaBox [0.0000 0.0000 400.0000", b"/MediaBox [0.0000 0.0000 390.0000", "media box"),
    (b"/BBox [20.0000", b"/BBox [10.0000", "left of the bounding box"),
    (b"1.0000 1.0000 0.0000 rg 0.0000 0.0000 1.0000 RG",
     b"0.0000 0.0000 1.0000 rg 1.0000 1.0000 0.0000 RG", "shared form, circle's middle"),
    (b"/Count 3", b"/Count 2", "pages"),
    (b"/Subtype /Image", b"/Subtype /Imago", "images"),
    (b"b Q\r\n", b"b QQ\n", "warns of something unexplained"),
    (b"startxref\r\n", b"startxref\r\n9", "warns of something unexplained"),
)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--host", required=True)
    parser.add_argument("--test", required=True)
    parser.add_argument("pdf", type=Path)
    arguments = parser.parse_args()
    sound = arguments.pdf.read_bytes()
    failures = 0
    with tempfile.TemporaryDirectory() as folder:
        pdf = Path(folder, "pixels.pdf")
        for before, after, sign in FAULTS:
            if before not in sound:
                print(f"{before} is not in {arguments.pdf}: a fault that is planted nowhere")
                failures += 1
                continue
            pdf.write_bytes(sound.replace(before, after, 1))
            result = subprocess.run(
                [sys.executable, arguments.test, "--host", arguments.host, pdf],
                capture_output=True,
                text=True,
            )
            if result.returncode == 77:
                print(result.stdout)
                return 77
            if result.returncode != 1 or sign not in result.stdout:
                print(f"{before} as {after} is not noticed as {sign!r}:\n{result.stdout}")
                print(result.stderr)
                failures += 1
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
