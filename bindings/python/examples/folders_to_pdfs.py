#!/usr/bin/env python3
"""folders_to_pdfs.py SCANS PDFS: makes one PDF of each folder of scans, by a cluster.

    folders_to_pdfs.py --workers 4 /scans /pdfs                     the processors of this machine
    folders_to_pdfs.py --scheduler tcp://head:8786 /scans /pdfs     a cluster that sees both folders

Of the folder /scans/1923/deeds comes /pdfs/1923/deeds.pdf. A PDF takes its name when it is whole, and is
made again only after a change in its folder: run it again to go on after an interruption, or every night.
What is wrong with a folder is said and keeps no other from its PDF. Takes Debian's python3-distributed.
"""

import argparse
import os
import pathlib
import re
import sys
from typing import Any, List

import jtpdf
from distributed import Client, LocalCluster, as_completed

KINDS = {".bmp", ".gif", ".heic", ".jp2", ".jpeg", ".jpg", ".jxl", ".png", ".tif", ".tiff", ".webp"}


def scans_in(folder: pathlib.Path) -> List[pathlib.Path]:
    """The pictures of a folder, page 9 before page 10."""
    scans = [path for path in folder.iterdir() if path.suffix.lower() in KINDS]
    return sorted(scans, key=lambda path: [
        int(part) if part.isdecimal() else part for part in re.split(r"(\d+)", path.name)])


def make_pdf(folder: pathlib.Path, target: pathlib.Path) -> int:
    """Runs on a worker. Gives how many pages were made: 0 where the PDF is there already."""
    scans = scans_in(folder)
    changed = max(path.stat().st_mtime_ns for path in [folder, *scans])
    if target.exists() and target.stat().st_mtime_ns >= changed:
        return 0
    target.parent.mkdir(parents=True, exist_ok=True)
    pages = jtpdf.pictures_to_pdf(scans, target, page="A4", auto_orient=True, title=folder.name)
    # As old as its scans: one that came while it was made makes it too old, and it is made again.
    os.utime(target, ns=(changed, changed))
    return pages


def make_pdfs(client: Any, root: pathlib.Path, pdfs: pathlib.Path) -> bool:
    """Says what becomes of each folder; gives whether nothing failed."""
    problems: List[object] = []
    folders = {}
    for folder, _, names in os.walk(root, onerror=problems.append):
        if any(pathlib.Path(name).suffix.lower() in KINDS for name in names):
            path = pathlib.Path(folder)
            target = pdfs / path.relative_to(root).parent / f"{path.name}.pdf"
            folders[client.submit(make_pdf, path, target, pure=False)] = path
    made = kept = 0
    for future in as_completed(folders):
        if future.exception() is not None:
            problems.append(f"{folders[future]}: {future.exception()}")
        elif future.result() > 0:
            print(f"{folders[future]}: {future.result()} pages", flush=True)
            made += 1
        else:
            kept += 1
    for problem in problems:
        print(problem, file=sys.stderr)
    print(f"{made} made, {kept} there already, {len(problems)} failed")
    return not problems


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("scans", type=pathlib.Path)
    parser.add_argument("pdfs", type=pathlib.Path)
    where = parser.add_mutually_exclusive_group()
    where.add_argument("--scheduler", metavar="ADDRESS")
    where.add_argument("--workers", type=int, default=os.cpu_count())
    arguments = parser.parse_args()
    cluster = arguments.scheduler or LocalCluster(
        n_workers=arguments.workers, threads_per_worker=1, dashboard_address=None)
    with Client(cluster) as client:
        return 0 if make_pdfs(client, arguments.scans.resolve(), arguments.pdfs.resolve()) else 1


if __name__ == "__main__":
    sys.exit(main())
