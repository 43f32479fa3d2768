#!/usr/bin/env python3
"""line_counts_test.py PAGE.md: the programs in its table of lines have as many lines as it says.

A row is "| [name](program) | lines | lines without the library |". Blank lines and comments don't count.
"""

import pathlib
import re
import sys

ROW = re.compile(r"^\| \[[^]]+\]\(([^)]+)\) \| (\d+) \| (\d+) \|$", re.MULTILINE)
COMMENTS = {".py": r'^\s*"""(.|\n)*?"""\n|^\s*#.*\n'}
C_COMMENTS = r"/\*(.|\n)*?\*/|^\s*//.*\n"


def lines_of(program: pathlib.Path) -> int:
    code = re.sub(COMMENTS.get(program.suffix, C_COMMENTS), "", program.read_text(encoding="utf-8"),
                  flags=re.MULTILINE)
    return sum(1 for line in code.splitlines() if line.strip())


def main() -> None:
    page = pathlib.Path(sys.argv[1])
    rows = ROW.findall(page.read_text(encoding="utf-8"))
    if not rows:
        sys.exit(f"{page}: there is no table of lines")
    wrong = [f"{page}: {program} has {lines} lines, not {said}" for program, said, _ in rows
             if (lines := lines_of(page.parent / program)) != int(said)]
    if wrong:
        sys.exit("\n".join(wrong))


if __name__ == "__main__":
    main()
