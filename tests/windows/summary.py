"""summary.py LOG: says from ctest's log how many tests ran on Windows, and names those left out."""

import pathlib
import re
import sys

FOLDER = pathlib.Path(__file__).resolve().parent
ROOMS = FOLDER.parent


def left_out() -> "dict[str, str]":
    lines = (FOLDER / "left_out.txt").read_text(encoding="utf-8").splitlines()
    return dict(line.split(": ", 1) for line in lines if not line.startswith("#"))


def running_rooms() -> "set[str]":
    text = (ROOMS / "CMakeLists.txt").read_text(encoding="utf-8")
    return set(re.findall(r"if\(WIN32\).*?set\(rooms ([^)]*)\)", text, re.DOTALL)[0].split())


def check_rooms() -> None:
    """Every room runs or is left out, so that no new one is forgotten."""
    rooms = {path.name for path in ROOMS.iterdir() if path.is_dir() and path.name[0] not in "_."}
    named = {name for name in left_out() if "/" not in name and "." not in name} - {"python"}
    wrong = rooms ^ (running_rooms() | named)
    if wrong or running_rooms() & named:
        sys.exit(f"tests/windows/left_out.txt and tests/CMakeLists.txt disagree about {wrong}")


def main() -> None:
    check_rooms()
    log = pathlib.Path(sys.argv[1]).read_text(encoding="utf-8", errors="replace")
    cases = sum(map(int, re.findall(r"^\[  PASSED  \] (\d+) tests?\.", log, re.MULTILINE)))
    programs = len(re.findall(r"^Test Passed\.$", log, re.MULTILINE))
    with_cases = len(re.findall(r"^\[==========\] \d+ tests?.* ran\.", log, re.MULTILINE))
    skipped = re.findall(r"^\S+: Skipped\n(.*)$", log, re.MULTILINE)
    print(f"ran under Wine: {cases + programs - with_cases} tests "
          f"({cases} cases of {with_cases} runs of GoogleTest programs, {programs - with_cases} others)")
    print(f"left out: {len(skipped)} cases and {len(left_out())} rooms, files or tests")
    for reason in sorted(set(skipped)):
        print(f"  {skipped.count(reason)} cases: {reason}")
    for name, reason in left_out().items():
        print(f"  {name}: {reason}")


main()
