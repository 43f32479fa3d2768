#!/usr/bin/env python3
"""shows_files.py README.md: a block behind <!-- file: PATH --> is that file, whole."""

import pathlib
import re
import sys

SHOWN = re.compile(r"^<!-- file: (\S+) -->\n```\w*\n(.*?)^```$", re.MULTILINE | re.DOTALL)


def main() -> None:
    page = pathlib.Path(sys.argv[1])
    text = page.read_text(encoding="utf-8")
    shown = SHOWN.findall(text)
    if not shown or len(shown) != text.count("<!-- file:"):
        sys.exit(f"{page}: a comment <!-- file: PATH --> has no fenced block behind it")
    for path, block in shown:
        if block != (page.parent / path).read_text(encoding="utf-8"):
            sys.exit(f"{page} does not show {path} as it is: copy the file into the block behind "
                     f"<!-- file: {path} -->")
    print(len(shown), "files")


if __name__ == "__main__":
    main()
