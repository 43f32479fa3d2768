#!/usr/bin/env python3
"""installed_tree.py CMAKE BUILD WORK: what the build installs stands where programs look for it.

WORK is made anew and stands for the root of the system.
"""

import os
import pathlib
import re
import shlex
import shutil
import subprocess
import sys
from typing import List

# A stranger's program that takes pictures.
HOST = """
#include <jtpdf/pictures.h>
#include <stdio.h>

int main(void) {
  JTPDFPictureError error;
  if (JTPDFOpenPictureMemory("x", 1, NULL, &error) != NULL) return 1;
  puts(error.message);
  return error.result == kJTPDFPictureUnusable ? 0 : 1;
}
"""
PROJECT = """
cmake_minimum_required(VERSION 3.25)
project(stranger LANGUAGES C)
find_package(jtpdf REQUIRED COMPONENTS pictures)
add_executable(host host.c)
target_link_libraries(host PRIVATE jtpdf::pictures)
"""


def output_of(*command: str) -> List[str]:
    return subprocess.run(command, check=True, text=True, stdout=subprocess.PIPE).stdout.splitlines()


def build_with_pictures(cmake: str, work: pathlib.Path) -> None:
    """Builds and runs the program by pkg-config and by find_package."""
    description = next(work.rglob("jtpdf-pictures.pc"))
    libraries = description.parent.parent
    host = work / "host"
    host.mkdir()
    (host / "host.c").write_text(HOST)
    (host / "CMakeLists.txt").write_text(PROJECT)
    environment = {**os.environ, "LD_LIBRARY_PATH": str(libraries)}
    flags = subprocess.run(["pkg-config", "--cflags", "--libs", "jtpdf-pictures"], check=True, text=True,
                           stdout=subprocess.PIPE,
                           env={**os.environ, "PKG_CONFIG_PATH": str(description.parent)}).stdout
    subprocess.run([os.environ.get("CC", "cc"), "-std=c11", host / "host.c", *shlex.split(flags), "-o",
                    host / "by_pkg_config"], check=True)
    prefix = next(work.rglob("jtpdfConfig.cmake")).parent
    subprocess.run([cmake, "-S", host, "-B", host / "build", f"-Djtpdf_DIR={prefix}"], check=True,
                   stdout=subprocess.DEVNULL)
    subprocess.run([cmake, "--build", host / "build"], check=True, stdout=subprocess.DEVNULL)
    for program in (host / "by_pkg_config", host / "build" / "host"):
        subprocess.run([program], check=True, stdout=subprocess.DEVNULL, env=environment)


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
    build_with_pictures(cmake, pathlib.Path(work))
    mistakes += [f"{name} is installed twice" for name in sorted(set(listed)) if listed.count(name) > 1]
    sys.exit("\n".join(mistakes) or 0)


if __name__ == "__main__":
    main()
