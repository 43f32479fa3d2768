#!/usr/bin/python3
"""Measures how many documents a second come of folders of scans, by xargs and by Dask, by workers.

    bench/tool/many_documents.py BUILD [--documents N] [--rounds N] [--workers N,N]
                                  [--realtime] [--write-docs]

BUILD is a build folder (preset release); folders and PDFs are on a tmpfs (/dev/shm). A worker of xargs is a
jtpdf with one thread for each document, one of Dask a process of folders_to_pdfs.py. The best of the rounds
counts; on a machine that others use too, --realtime keeps them away. Needs Debian's python3-pil,
python3-numpy and python3-distributed. --write-docs keeps the tables in docs/performance-tool.md.
"""
import argparse
import io
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import time

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.append(str(ROOT / "scripts"))
sys.dont_write_bytecode = True
from photograph import photograph
from write_block import write_block

EXAMPLE = ROOT / "bindings/python/examples/folders_to_pdfs.py"
EACH = '[ -e "$2/${1##*/}.pdf" ] || "$0" -q -j 1 -S A4 -o "$2/${1##*/}.pdf" "$1"'


def scan(kind, number):
    """A page of 1240 x 1754 pixels: A4 at 150 dpi."""
    data = io.BytesIO()
    options = {"TIFF": {"compression": "tiff_lzw"}, "JPEG": {"quality": 85}}[kind]
    photograph(1240, 1754, number).save(data, kind, **options)
    return data.getvalue()


def make_scans(folder, kind, documents, pages):
    made = [scan(kind, number) for number in range(pages)]
    for document in range(documents):
        place = folder / f"{document:05d}"
        place.mkdir(parents=True)
        for number, data in enumerate(made):
            (place / f"{number}.{kind.lower()}").write_bytes(data)


def by_xargs(first, build, scans, pdfs, workers):
    pdfs.mkdir(exist_ok=True)
    find = ["find", str(scans), "-mindepth", "1", "-type", "d", "-print0"]
    each = ["xargs", "-0", "-P", str(workers), "-I", "{}", "sh", "-c", EACH,
            str(build / "tools/jtpdf/jtpdf"), "{}", str(pdfs)]
    folders = subprocess.run(find, check=True, stdout=subprocess.PIPE).stdout
    subprocess.run(first + each, input=folders, check=True)


def by_dask(first, build, scans, pdfs, workers):
    environment = {**os.environ, "PYTHONPATH": str(ROOT / "bindings/python/src"),
                   "PYTHONDONTWRITEBYTECODE": "1",
                   "JTPDF_LIBRARY": str(build / "src/libjtpdf.so.2"),
                   "JTPDF_PICTURES_LIBRARY": str(build / "pictures/libjtpdf-pictures.so.0")}
    example = [sys.executable, EXAMPLE, "--workers", str(workers), scans, pdfs]
    subprocess.run(first + example, check=True, stdout=subprocess.DEVNULL, env=environment)


def seconds(way, *arguments):
    begin = time.monotonic()
    way(*arguments)
    return time.monotonic() - begin


def measure(way, pdfs, rounds, run):
    """The seconds of a run that makes all, and of one that finds all there already; the best of each."""
    full, idle = [], []
    for _ in range(rounds):
        shutil.rmtree(pdfs, ignore_errors=True)
        full.append(seconds(way, *run))
        idle.append(seconds(way, *run))
    return min(full), min(idle)


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("build", type=pathlib.Path)
    parser.add_argument("--documents", type=int, default=300)
    parser.add_argument("--rounds", type=int, default=3)
    parser.add_argument("--workers", default="1,2")
    parser.add_argument("--realtime", action="store_true",
                        help="put the commands before all else that runs (as root)")
    parser.add_argument("--write-docs", action="store_true")
    options = parser.parse_args()
    build = options.build.resolve()
    first = ["chrt", "-f", "10"] if options.realtime else []
    said = []
    with tempfile.TemporaryDirectory(dir="/dev/shm") as folder:
        for kind, pages, title in (("JPEG", 8, "8 JPEG pages each, stored as they are"),
                                   ("TIFF", 2, "2 TIFF pages each (LZW), decoded and packed")):
            scans, pdfs = pathlib.Path(folder) / kind, pathlib.Path(folder) / "pdfs"
            make_scans(scans, kind, options.documents, pages)
            said.append(f"\n### {options.documents} documents, {title}\n\n| by | workers | documents a "
                        "second | nothing to do, seconds |\n|---|---|---|---|\n")
            for name, way in (("xargs", by_xargs), ("Dask", by_dask)):
                for workers in map(int, options.workers.split(",")):
                    run = first, build, scans, pdfs, workers
                    full, idle = measure(way, pdfs, options.rounds, run)
                    said.append(f"| {name} | {workers} | {options.documents / full:.1f} | {idle:.1f} |\n")
            shutil.rmtree(scans)
    print("".join(said), end="")
    if options.write_docs:
        write_block(ROOT / "docs/performance-tool.md", "documents", "".join(said))


if __name__ == "__main__":
    main()
