#!/usr/bin/python3
"""Compares jtpdf with img2pdf and cat: time, size and peak memory, as a Markdown table.

    bench/tool/compare.py JTPDF [--folder DIR] [--rounds N] [--write-docs]

DIR must be on a tmpfs (default /dev/shm), where disks have no say; about 4 GB are used and removed.
Each command runs in turn, round after round, and the best of its rounds counts: what a loaded
machine adds is not the command's doing. The processor seconds suffer least from such company.
On a machine that others use too, --realtime keeps them away. Needs Debian's python3-pil,
python3-numpy and img2pdf. --write-docs keeps the tables in docs/performance-tool.md.
"""
import argparse
import glob
import importlib.metadata
import io
import os
import pathlib
import shutil
import sys
import tempfile
import time

import numpy
from PIL import Image, TiffImagePlugin

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.append(str(ROOT / "scripts"))
sys.dont_write_bytecode = True
from photograph import photograph
from write_block import write_block

said = []


def say(text):
    print(text, flush=True)
    said.append(text + "\n")


def jpeg_of_two_megabytes():
    image = photograph(3200, 2400, 1)
    for quality in range(80, 101):
        data = io.BytesIO()
        image.save(data, "JPEG", quality=quality)
        if len(data.getvalue()) >= 2_000_000:
            break
    return data.getvalue()


def distinct_copies(jpeg, count, folder):
    """The same picture with a comment of its own in each file, so that no two are equal."""
    os.mkdir(folder)
    for number in range(count):
        comment = f"picture {number:06d}".encode()
        segment = b"\xff\xfe" + (len(comment) + 2).to_bytes(2, "big") + comment
        with open(f"{folder}/{number:06d}.jpg", "wb") as file:
            file.write(jpeg[:2] + segment + jpeg[2:])


def make_inputs(folder, only):
    if "large" in only:
        distinct_copies(jpeg_of_two_megabytes(), 200, folder + "/large")
    if "small" in only:
        small = io.BytesIO()
        photograph(192, 128, 2).save(small, "JPEG", quality=60)
        distinct_copies(small.getvalue(), 20000, folder + "/small")
    if "png" in only:
        make_png_inputs(folder + "/png")
    if "fax" in only:
        make_fax_input(folder + "/fax.tif")


def make_png_inputs(folder):
    os.mkdir(folder)
    pixels = numpy.asarray(photograph(4032, 3024, 3))
    for number in range(50):
        # Shifted, so that the files differ while making them takes seconds.
        Image.fromarray(numpy.roll(pixels, 80 * number, 1)).save(
            f"{folder}/{number:02d}.png", compress_level=1)


def make_fax_input(path):
    """500 pages at 300 dpi, each with other marks, of one strip in group 4 each."""
    random = numpy.random.default_rng(11)

    def page():
        values = numpy.full((3508, 2480), 255, numpy.uint8)
        for left, top in random.integers((200, 200), (2200, 3300), (400, 2)):
            values[top:top + 30, left:left + int(random.integers(10, 200))] = 0
        return Image.fromarray(values).convert("1")

    TiffImagePlugin.STRIP_SIZE = 1 << 30
    page().save(path, compression="group4", save_all=True,
                append_images=(page() for _ in range(499)))


def start(arguments, output):
    if os.path.exists(output):
        os.unlink(output)
    child = os.fork()
    if child == 0:
        if "cat" in arguments:
            os.dup2(os.open(output, os.O_CREAT | os.O_WRONLY, 0o644), 1)
        os.execvp(arguments[0], arguments)
    return child


def run(arguments, output):
    """Seconds on the clock, seconds of processors and bytes written."""
    begin = time.monotonic()
    _, status, usage = os.wait4(start(arguments, output), 0)
    seconds = time.monotonic() - begin
    if status != 0:
        sys.exit(f"compare.py: {' '.join(arguments[:4])} ... failed")
    return seconds, usage.ru_utime + usage.ru_stime, os.path.getsize(output)


def peak_memory(arguments, output):
    """Megabytes at most in a run of its own, asked of the kernel every two milliseconds: what
    wait4 reports begins with the memory of the Python that started the command."""
    own_name = pathlib.Path("/proc/self/comm").read_text(encoding="ascii").strip()
    child = start(arguments, output)
    peak = 0
    while os.waitpid(child, os.WNOHANG)[0] == 0:
        with open(f"/proc/{child}/status", encoding="ascii") as status:
            facts = dict(line.split(":", 1) for line in status)
        if facts["Name"].strip() != own_name:
            peak = max(peak, int(facts.get("VmHWM", "0 kB").split()[0]))
        time.sleep(0.002)
    return peak / 1024


def compare(title, commands, output, rounds):
    best = {}
    for _ in range(rounds):
        for name, arguments in commands.items():
            found = run(arguments, output)
            old = best.get(name, found)
            best[name] = tuple(min(pair) for pair in zip(old, found))
    own = best["jtpdf"][0]
    say(f"\n### {title}\n\n| command | seconds | jtpdf is faster by | processor seconds | MB written "
        "| peak memory, MB |\n|---|---|---|---|---|---|")
    for name, (seconds, processor, size) in best.items():
        memory = peak_memory(commands[name], output)
        say(f"| {name} | {seconds:.3f} | {seconds / own:.2f} | {processor:.3f} | "
            f"{size / 1e6:.1f} | {memory:.1f} |")
    return best


CASES = (("large", "200 JPEG photographs of 2 MB", 200),
         ("small", "20,000 small JPEGs (192 x 128)", 20000),
         ("png", "50 PNG photographs of 12 megapixels", 50),
         ("fax", "A TIFF file of 500 pages in group 4", 500))


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("jtpdf")
    parser.add_argument("--folder", default="/dev/shm")
    parser.add_argument("--rounds", type=int, default=5)
    parser.add_argument("--only", default=",".join(case[0] for case in CASES))
    parser.add_argument("--realtime", action="store_true",
                        help="put the commands before all else that runs (as root)")
    parser.add_argument("--write-docs", action="store_true",
                        help="keep the tables in docs/performance-tool.md")
    options = parser.parse_args()
    if options.write_docs and options.only != parser.get_default("only"):
        parser.error("--write-docs takes the whole comparison, without --only")
    version = importlib.metadata.version("img2pdf")
    say(f"The best of {options.rounds} rounds, {os.cpu_count()} processors, img2pdf {version}.")
    folder = tempfile.mkdtemp(prefix="jtpdf-bench-", dir=options.folder)
    try:
        make_inputs(folder, options.only.split(","))
        out = folder + "/out.pdf"
        first = ["chrt", "-f", "10"] if options.realtime else []
        for key, title, pages in CASES:
            if key not in options.only:
                continue
            inputs = sorted(glob.glob(f"{folder}/{key}*"))
            if os.path.isdir(inputs[0]):
                inputs = sorted(glob.glob(inputs[0] + "/*"))
            best = compare(title, {
                "jtpdf": [*first, os.path.abspath(options.jtpdf), "-o", out, *inputs],
                "cat": [*first, "cat", *inputs],
                "img2pdf": [*first, "img2pdf", "--nodate", "-o", out, *inputs]}, out,
                           options.rounds)
            ours, cat, peer = (best[name][0] for name in ("jtpdf", "cat", "img2pdf"))
            say(f"\njtpdf takes {ours / cat:.2f} times as long as cat, {(ours - cat) / pages * 1e6:.0f}"
                f" µs a page more; img2pdf takes {peer / ours:.1f} times as long as jtpdf.")
        if options.write_docs:
            write_block(ROOT / "docs/performance-tool.md", "command", "".join(said).lstrip("\n"))
    finally:
        shutil.rmtree(folder)


if __name__ == "__main__":
    main()
