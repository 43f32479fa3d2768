#!/usr/bin/env python3
"""format_test.py file-format.md FILE.pdf: the tables of the page hold the file, byte by byte.

The first column of a table row is a position, and the second one the lines that begin there, each
as `code` with escapes.
"""

import pathlib
import re
import sys

ROW = re.compile(r"^\| (\d+) \| (`.*?`(?:<br>`.*?`)*) \| .*\|$", re.MULTILINE)


def main() -> None:
    page = pathlib.Path(sys.argv[1]).read_text(encoding="utf-8")
    file = pathlib.Path(sys.argv[2]).read_bytes()
    position = 0
    for shown, lines in ROW.findall(page):
        if int(shown) != position:
            sys.exit(f"the row of byte {shown} follows one that ends at byte {position}")
        for line in re.findall(r"`(.*?)`", lines):
            described = line.encode("ascii").decode("unicode_escape").encode("latin-1")
            found = file[position:position + len(described)]
            if found != described:
                sys.exit(f"at byte {position} the page has {described!r}, the file {found!r}")
            position += len(described)
    if position != len(file):
        sys.exit(f"the page ends at byte {position}, the file at byte {len(file)}")
    print(position, "bytes")


if __name__ == "__main__":
    main()
