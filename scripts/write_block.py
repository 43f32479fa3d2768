#!/usr/bin/env python3
"""scripts/write_block.py PAGE NAME < TEXT: puts a command's results into a page of the docs.

What stands between two comments is replaced:

    <!-- NAME begin: written by COMMAND -->
    <!-- NAME end -->
"""

import pathlib
import re
import sys


def write_block(page: pathlib.Path, name: str, body: str) -> None:
    text = page.read_text(encoding="utf-8")
    pattern = re.compile(rf"(<!-- {name} begin: [^>]*-->\n).*?(<!-- {name} end -->)", re.DOTALL)
    if len(pattern.findall(text)) != 1:
        sys.exit(f"{page} has not one block '{name}': write <!-- {name} begin: written by COMMAND -->"
                 f" and <!-- {name} end --> where the results are to stand")
    body = body.strip("\n") + "\n"
    page.write_text(pattern.sub(lambda match: match[1] + body + match[2], text), encoding="utf-8")


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    write_block(pathlib.Path(sys.argv[1]), sys.argv[2], sys.stdin.read())
    print(f"wrote '{sys.argv[2]}' in {sys.argv[1]}", file=sys.stderr)
