#!/usr/bin/env python3
"""installed_tree.py CMAKE BUILD WORK: what the build installs stands where programs look for it.

WORK is made anew and stands for the root of the system.
"""

import os
import pathlib
import re
import shutil
import subprocess
import sys
from typing import List


def output_of(*command: str) -> List[str]:
    return subprocess.run(command, check=True, text=True, stdout=subprocess.PIPE).stdout.splitlines()


def main() -> None:
    cmake, build, work = sys.argv[1:]
    shutil.rmtree(work, ignore_errors=True)
    subprocess.run([cmake, "--install", build], check=True, stdout=subprocess.DEVNULL,
                   env={**os.environ, "DESTDIR": work})
    mistakes = []

    def expect_in(folders: List[str], name: str, program: str) -> None:
        if not any(pathlib.Path(f"{work}/{folder}/{name}").exists() for folder in folders):
            mistakes.append(f"{program} finds no {name}: it looks in {' '.join(folders)}")

    folders = "import site; print(*site.getsitepackages(), sep='\\n')"
    expect_in(output_of("/usr/bin/python3", "-c", folders), "jtpdf/__init__.py", "Python")
    if shutil.which("zsh"):
        expect_in(output_of("zsh", "-fc", "print -l $fpath"), "_jtpdf", "zsh")

    readme = next(pathlib.Path(work).rglob("README.md"))
    for picture in re.findall(r"!\[[^]]*\]\(([^)]+)\)", readme.read_text(encoding="utf-8")):
        if not (readme.parent / picture).exists():
            mistakes.append(f"{readme} shows {picture}, which is not installed")

    listed = pathlib.Path(build, "install_manifest.txt").read_text().splitlines()
    mistakes += [f"{name} is installed twice" for name in sorted(set(listed)) if listed.count(name) > 1]
    sys.exit("\n".join(mistakes) or 0)


if __name__ == "__main__":
    main()
