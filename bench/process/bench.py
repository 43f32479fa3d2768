"""Measures the programs of the process benchmark and prints the tables; see scripts/bench.

Every program is checked first: qpdf must find no fault in its output, and the floor's must be the
library's to the byte. Then all programs take turns, round after round, so that whatever else the
machine does meets all of them; a ratio is formed within a round.
"""

import argparse
import os
import pathlib
import re
import shutil
import statistics
import subprocess
import sys

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parent.parent
sys.path.append(str(ROOT / "scripts"))
sys.dont_write_bytecode = True
from write_block import write_block
PROGRAMS = ["library", "floor", "libharu", "cairo", "podofo", "qpdf", "mupdf"]
LIMIT = 60  # seconds of CPU time that a program may take for a run
COUNTABLE = 100_000  # items whose instructions callgrind counts within minutes
SLOW = 4  # a peer that would take longer gets a tenth of the items
NOT_AVAILABLE = 3


class Workload:
    def __init__(self, name, title, item, count, quick, small, memory=False, checked=None):
        self.name = name
        self.title = title  # with a place for the count
        self.item = item
        self.count = count  # items in a timed run
        self.quick = quick  # the same under --quick
        self.small = small  # two counts whose difference gives the instructions of an item
        self.memory = memory  # keeps its result in memory
        self.checked = checked  # items that qpdf checks to the bottom, which takes long


WORKLOADS = [
    Workload("rectangles", "{} filled and stroked rectangles on one page", "rectangle",
             1_000_000, 20_000, (1000, 3000), checked=20_000),
    Workload("rotated", "{} rectangles, each rotated", "rectangle", 1_000_000, 20_000, (1000, 3000),
             checked=20_000),
    Workload("ellipses", "{} filled and stroked ellipses on one page", "ellipse", 1_000_000,
             20_000, (1000, 3000), checked=20_000),
    Workload("jpeg-file", "{} pages of 2 MB JPEGs, to a file", "page", 200, 5, (3, 9),
             checked=10),
    Workload("jpeg-memory", "{} pages of 2 MB JPEGs, to memory", "page", 200, 5, (3, 9),
             memory=True, checked=10),
    Workload("small-jpegs", "{} pages of small JPEGs, embedded anew each", "page", 20_000, 400,
             (200, 600)),
    Workload("pages", "{} pages, a rectangle on each", "page", 100_000, 1000, (300, 900)),
    Workload("documents", "{} small documents in memory, created to destroyed", "document",
             100_000, 500, (200, 600), memory=True),
]

GROWTH = [
    ("rectangles", "shapes (rectangles)"),
    ("ellipses", "shapes (ellipses)"),
    ("pages", "pages"),
    ("images", "images on one page"),
    ("keys", "path keys, ascending"),
    ("shuffled-keys", "path keys, shuffled"),
]


class Machine:
    """Where the programs are and how they are run."""

    def __init__(self, arguments):
        self.build = pathlib.Path(arguments.build).resolve()
        self.bin = self.build / "bench" / "process"
        self.work = pathlib.Path(arguments.tmpfs) / f"jtpdf-library-bench-{os.getuid()}"
        self.inputs = self.work / "inputs"
        self.inputs.mkdir(parents=True, exist_ok=True)

    def out(self, program):
        return self.work / f"{program}.pdf"

    def has(self, program):
        return (self.bin / f"bench-{program}").exists()

    def command(self, program, workload, count, out):
        return [str(self.bin / f"bench-{program}"), workload, str(count), str(out),
                str(self.inputs)]

    def run(self, program, workload, count, out, touch=0, limit=LIMIT):
        """One run: a dictionary of wall, user, system (s), peak (bytes), status."""
        self.out(program).unlink(missing_ok=True)  # giving an old file's memory back takes time
        done = subprocess.run(
            [str(self.bin / "timed_run"), str(touch), str(limit)]
            + self.command(program, workload, count, out),
            stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, check=True)
        words = done.stdout.split()
        result = {words[i]: float(words[i + 1]) for i in range(0, len(words), 2)}
        result["cpu"] = result["user"] + result["system"]
        if result["status"] not in (0, -1, NOT_AVAILABLE):
            sys.exit(f"{program}, {workload}: {done.stderr.strip()}")
        return result


def fair_count(machine, program, workload, count):
    """The items of a program's run: a tenth for slow peers, whose costs are plain from that too."""
    if program in ("library", "floor"):
        return count
    part = max(1, count // 50)
    probe = machine.run(program, workload.name, part, machine.out(program))
    slow = probe["status"] != 0 or probe["cpu"] * count / part > SLOW
    return max(1, count // 10) if slow else count


def check(machine, program, workload, count):
    """Runs a program once and checks its output. Returns the run, with the output's size."""
    out = machine.out(program)
    if program == "floor":  # right if it equals the library's, which was checked before
        run = machine.run(program, workload.name, count, out)
    elif workload.checked and workload.checked < count:
        check_by_qpdf(machine, program, workload, workload.checked, "--check")
        run = check_by_qpdf(machine, program, workload, count, "--show-npages")
    else:
        run = check_by_qpdf(machine, program, workload, count, "--check")
    run["size"] = out.stat().st_size if out.exists() else 0
    if program == "floor" and run["status"] == 0:
        same = subprocess.run(["cmp", str(machine.out("library")), str(out)], check=False)
        if same.returncode != 0:
            sys.exit(f"{workload.name}: the floor's bytes differ from the library's")
    return run


def check_by_qpdf(machine, program, workload, count, how):
    run = machine.run(program, workload.name, count, machine.out(program))
    if run["status"] == 0:
        done = subprocess.run(["qpdf", how, "--no-warn", str(machine.out(program))],
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                              check=False)
        if done.returncode not in (0, 3):  # 3: warnings only
            sys.exit(f"{program}, {workload.name}: qpdf finds fault:\n{done.stdout}")
    return run


def instruction_counter(machine, quick):
    """A function that gives the instructions per item of a program and workload, and its name."""
    probe = subprocess.run(["perf", "stat", "-x,", "-e", "instructions:u", "true"],
                           stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
                           check=False) if shutil.which("perf") else None
    use_perf = probe is not None and re.match(r"^\d+,", probe.stderr.strip()) is not None

    def instructions(program, name, count):
        command = machine.command(program, name, count, machine.out("counted"))
        if use_perf:
            run = subprocess.run(["perf", "stat", "-x,", "-e", "instructions:u"] + command,
                                 stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
                                 check=False)
            found = re.search(r"^(\d+),", run.stderr, re.MULTILINE)
        else:
            run = subprocess.run(["valgrind", "--tool=callgrind", "--callgrind-out-file=/dev/null"]
                                 + command, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                                 text=True, check=False)
            found = re.search(r"Collected : (\d+)", run.stderr)
        if run.returncode != 0 or not found:
            return None
        return int(found.group(1))

    def per_item(program, name, counts):
        low, high = (instructions(program, name, count) for count in counts)
        if low is None or high is None:
            return None
        return (high - low) / (counts[1] - counts[0])

    if quick and not use_perf:
        return None, None
    return per_item, "perf stat" if use_perf else "callgrind"


def measure(machine, workload, programs, rounds, quick):
    """All runs of a workload: {program: {"check": run, "runs": [run...]}}."""
    count = workload.quick if quick else workload.count
    results = {}
    for program in programs:
        own = fair_count(machine, program, workload, count)
        results[program] = {"check": check(machine, program, workload, own), "runs": [],
                            "count": own}
        if program != "library":  # whose output the floor's, the next, is compared with
            machine.out(program).unlink(missing_ok=True)
    for _ in range(rounds):
        for program in programs:
            first, own = results[program]["check"], results[program]["count"]
            if first["status"] != 0:
                continue
            out = "-" if workload.memory else machine.out(program)
            touch = int(first["size"] + first["peak"]) + (64 << 20)
            run = machine.run(program, workload.name, own, out, touch)
            machine.out(program).unlink(missing_ok=True)
            if run["status"] == 0:
                results[program]["runs"].append(run)
    return results


def scaled_time(seconds):
    for limit, factor, unit in ((1e-6, 1e9, "ns"), (1e-3, 1e6, "µs"), (1, 1e3, "ms")):
        if seconds < limit:
            return f"{seconds * factor:.3g} {unit}"
    return f"{seconds:.3g} s"


def scaled_size(size):
    return f"{size / 1e6:,.0f} MB" if size >= 1e8 else f"{size / 1e6:,.1f} MB"


def span(values, form):
    """median (least to greatest), or the one value"""
    middle = form(statistics.median(values))
    if len(values) == 1:
        return middle
    return f"{middle} ({form(min(values))} to {form(max(values))})"


def ratios(results, program, base, kind="wall"):
    """The time per item of a program over that of another, round by round."""
    scale = results[base]["count"] / results[program]["count"]
    return [scale * a[kind] / b[kind]
            for a, b in zip(results[program]["runs"], results[base]["runs"])]


def times(values):
    return span(values, lambda value: f"{value:.2f}") if values else ""


def table(workload, results, instructions, count):
    lines = [
        f"**{workload.title.format(f'{count:,}')}** (times and instructions per {workload.item})",
        "",
        "| program | wall time | CPU time | peak memory | instructions | time ÷ floor | "
        "time ÷ library | CPU ÷ library |",
        "|---|---|---|---|---|---|---|---|",
    ]
    for program, result in results.items():
        first, runs, own = result["check"], result["runs"], result["count"]
        if first["status"] == NOT_AVAILABLE:
            lines.append(f"| {program} | n/a | | | | | | |")
            continue
        if first["status"] == -1:
            lines.append(f"| {program}, {own:,} {workload.item}s | over {LIMIT} s, stopped "
                         "| | | | | | |")
            continue
        counted = instructions.get(program)
        lines.append("| " + " | ".join([
            program if own == count else f"{program}, {own:,} {workload.item}s",
            span([run["wall"] / own for run in runs], scaled_time),
            scaled_time(statistics.median([run["cpu"] / own for run in runs])),
            scaled_size(statistics.median([run["peak"] for run in runs])),
            f"{counted:,.0f}" if counted is not None else "",
            times(ratios(results, program, "floor")),
            times(ratios(results, program, "library")),
            times(ratios(results, program, "library", "cpu")),
        ]) + " |")
    return "\n".join(lines) + "\n"


class Targets:
    """What the library is held to, and what came out. Times are judged by the wall clock; what the
    CPU time gives stands beside it, because other work on the machine disturbs it less."""

    def __init__(self):
        self.rows = []

    def _add(self, what, sign, limit, value, cpu, form):
        if value is None:
            return
        met = value <= limit if sign == "at most" else value >= limit
        self.rows.append((what, f"{sign} {form.format(limit)}", form.format(value),
                          "" if cpu is None else form.format(cpu), "met" if met else "**missed**"))

    def at_most(self, what, limit, value, cpu=None, form="{:.2f}"):
        self._add(what, "at most", limit, value, cpu, form)

    def at_least(self, what, limit, value, cpu=None, form="{:.2f}"):
        self._add(what, "at least", limit, value, cpu, form)

    def table(self):
        lines = ["| target | limit | measured | by CPU time | |", "|---|---|---|---|---|"]
        lines += ["| " + " | ".join(row) + " |" for row in self.rows]
        return "\n".join(lines) + "\n"


def judge(targets, workload, results, instructions):
    """Adds the targets of a workload."""
    def ratio(program, base, kind="wall"):
        if program not in results or base not in results:
            return None
        values = ratios(results, program, base, kind)
        return statistics.median(values) if values else None

    def peak(program):
        return statistics.median([run["peak"] for run in results[program]["runs"]])

    name = workload.name
    faster = {"rectangles": ("libharu", 3), "rotated": ("libharu", 4), "ellipses": ("libharu", 5),
              "jpeg-memory": ("podofo", 1.2), "small-jpegs": ("mupdf", 2.5), "pages": ("mupdf", 5),
              "documents": ("libharu", 4)}
    if name in faster:
        peer, limit = faster[name]
        targets.at_least(f"{name}: times as fast as {peer}", limit, ratio(peer, "library"),
                         ratio(peer, "library", "cpu"))
    if name in ("rectangles", "rotated", "ellipses") and instructions.get("floor"):
        targets.at_most(f"{name}: instructions ÷ floor", 2,
                        instructions["library"] / instructions["floor"])
    if name == "jpeg-file":
        targets.at_most(f"{name}: time ÷ floor", 1.05, ratio("library", "floor"),
                        ratio("library", "floor", "cpu"))
        targets.at_most(f"{name}: peak memory (MB)", 12, peak("library") / 1e6, form="{:.1f}")
    if name == "jpeg-memory":
        targets.at_most(f"{name}: peak memory ÷ output", 1.05,
                        peak("library") / results["library"]["check"]["size"])


def growth(machine, sizes, per_item):
    """CPU time and instructions per item at each size: {workload: [(size, seconds, count)...]}."""
    result = {}
    for name, _ in GROWTH:
        idle = min(machine.run("library", name, 0, machine.out("library"))["cpu"]
                   for _ in range(7))
        rows = []
        for size in sizes:
            repeats = max(3, min(15, 300_000 // size))
            first = machine.run("library", name, size, machine.out("library"))
            touch = int(first["peak"]) + machine.out("library").stat().st_size + (64 << 20)
            best = min(machine.run("library", name, size, machine.out("library"), touch)["cpu"]
                       for _ in range(repeats))
            countable = per_item and size <= COUNTABLE
            counted = per_item("library", name, (0, size)) if countable else None
            rows.append((size, (best - idle) / size, counted))
        result[name] = rows
    machine.out("library").unlink(missing_ok=True)
    return result


def growth_table(result):
    sizes = [size for size, _, _ in result[GROWTH[0][0]]]
    lines = ["| items | " + " | ".join(f"{size:,}" for size in sizes) + " | greatest ÷ least |",
             "|---|" + "---|" * (len(sizes) + 1)]
    for name, title in GROWTH:
        seconds = [row[1] for row in result[name]]
        lines.append(f"| {title}: CPU time | " + " | ".join(scaled_time(s) for s in seconds)
                     + f" | {max(seconds) / min(seconds):.2f} |")
        counted = [row[2] for row in result[name] if row[2] is not None]
        if counted:
            cells = [f"{c:,.0f}" for c in counted] + [""] * (len(sizes) - len(counted))
            lines.append(f"| {title}: instructions | " + " | ".join(cells)
                         + f" | {max(counted) / min(counted):.2f} |")
    return "\n".join(lines) + "\n"


def growth_plot(result):
    """The growth as a picture: cost per item over that of the smallest size."""
    colours = ["#1b6ca8", "#38a3a5", "#7b2d8b", "#c8553d", "#b08900", "#555555"]
    width, height, left, right, top, bottom = 790, 400, 70, 250, 30, 55
    sizes = [row[0] for row in result[GROWTH[0][0]]]
    greatest = max(row[1] / rows[0][1] for rows in result.values() for row in rows)
    ceiling = max(1.5, greatest * 1.1)

    def x(index):
        return left + (width - left - right) * index / (len(sizes) - 1)

    def y(value):
        return height - bottom - (height - top - bottom) * value / ceiling

    parts = [f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {width} {height}" '
             'font-family="sans-serif" font-size="13">',
             f'<rect width="{width}" height="{height}" fill="#ffffff"/>',
             f'<text x="{left}" y="18">CPU time per item, relative to {sizes[0]:,} items</text>']
    for tick in [0.25 * i for i in range(int(ceiling / 0.25) + 1)]:
        parts.append(f'<line x1="{left}" y1="{y(tick):.1f}" x2="{width - right}" '
                     f'y2="{y(tick):.1f}" stroke="#dddddd"/>')
        parts.append(f'<text x="{left - 8}" y="{y(tick) + 4:.1f}" text-anchor="end">'
                     f'{tick:.2f}</text>')
    parts.append(f'<line x1="{left}" y1="{y(1.3):.1f}" x2="{width - right}" y2="{y(1.3):.1f}" '
                 'stroke="#cc0000" stroke-dasharray="6 4"/>')
    parts.append(f'<text x="{width - right + 8}" y="{y(1.3) + 4:.1f}" fill="#cc0000">1.3</text>')
    for index, size in enumerate(sizes):
        parts.append(f'<text x="{x(index):.1f}" y="{height - bottom + 22}" text-anchor="middle">'
                     f'{size:,}</text>')
    parts.append(f'<text x="{(left + width - right) / 2:.0f}" y="{height - 10}" '
                 'text-anchor="middle">items in one document</text>')
    for number, ((name, title), colour) in enumerate(zip(GROWTH, colours)):
        base = result[name][0][1]
        points = [(x(i), y(row[1] / base)) for i, row in enumerate(result[name])]
        line = " ".join(f"{px:.1f},{py:.1f}" for px, py in points)
        parts.append(f'<polyline points="{line}" fill="none" stroke="{colour}" stroke-width="2"/>')
        for px, py in points:
            parts.append(f'<circle cx="{px:.1f}" cy="{py:.1f}" r="3.5" fill="{colour}"/>')
        legend = top + 40 + 22 * number
        parts.append(f'<line x1="{width - right + 40}" y1="{legend}" x2="{width - right + 62}" '
                     f'y2="{legend}" stroke="{colour}" stroke-width="3"/>')
        parts.append(f'<text x="{width - right + 68}" y="{legend + 4}">{title}</text>')
    parts.append("</svg>")
    return "\n".join(parts) + "\n"


def footprint(machine, targets):
    """The stripped library's size and the CPU time from dlopen to the end of a first document."""
    library = (machine.build / "src" / "libjtpdf.so").resolve()
    stripped = machine.work / "stripped.so"
    subprocess.run(["strip", "-o", str(stripped), str(library)], check=True)
    size = stripped.stat().st_size
    costs = []
    for _ in range(21):
        done = subprocess.run([str(machine.bin / "first_document"), str(stripped)],
                              stdout=subprocess.PIPE, text=True, check=True)
        words = done.stdout.split()
        costs.append((float(words[1]), float(words[3])))
    stripped.unlink()
    loading, document = (statistics.median(column) for column in zip(*costs))
    targets.at_most("shared library, stripped (KB)", 150, size / 1000, form="{:.1f}")
    many = machine.run("library", "pages", 1_000_000, machine.out("library"))
    targets.at_most("1,000,000 pages: peak memory (MB)", 200, many["peak"] / 1e6, form="{:.1f}")
    targets.at_most("dlopen and a first document: CPU time (ms)", 2,
                    statistics.median(sum(pair) for pair in costs) / 1000)
    return (f"The shared library, stripped: {size:,} bytes. Loaded by `dlopen` into a C program "
            f"(which brings the C++ runtime in): {loading:.0f} µs of CPU time, a first document "
            f"{document:.0f} µs (medians of 21 processes).\n")


def first_line(command):
    done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True,
                          check=False)
    return done.stdout.strip().splitlines()[0] if done.stdout.strip() else ""


def description():
    cpu = {}
    for line in subprocess.run(["lscpu"], stdout=subprocess.PIPE, text=True,
                               check=True).stdout.splitlines():
        key, _, value = line.partition(":")
        cpu[key.strip()] = value.strip()
    with open("/proc/meminfo", encoding="ascii") as file:
        memory = int(file.readline().split()[1]) / 1e6
    with open("/etc/os-release", encoding="utf-8") as file:
        system = re.search(r'PRETTY_NAME="(.*)"', file.read()).group(1)
    packages = ["libhpdf-dev", "libcairo2-dev", "libpodofo-dev", "libqpdf-dev", "libmupdf-dev"]
    versions = []
    for package in packages:
        version = first_line(["dpkg-query", "-W", "-f", "${Version}", package])
        versions.append(f"{package} {version}")
    virtual = cpu.get("Hypervisor vendor")
    guest = f", {virtual} virtual machine" if virtual else ""
    return (f"{cpu.get('Model name')} (family {cpu.get('CPU family')}, model {cpu.get('Model')}), "
            f"{cpu.get('CPU(s)')} CPUs, L3 {cpu.get('L3 cache', 'unknown')}{guest}, "
            f"{memory:.0f} GB, {system}, Linux {os.uname().release.split('-')[0]}, "
            f"{first_line(['c++', '--version'])}; {', '.join(versions)}. "
            "Inputs and outputs on tmpfs. Load average when the run began: "
            f"{os.getloadavg()[0]:.0f} (other work on the machine stretches wall times; CPU times hold within "
            "a few percent).\n")


def main():
    parser = argparse.ArgumentParser(prog="scripts/bench")
    parser.add_argument("--build", required=True, help=argparse.SUPPRESS)
    parser.add_argument("--quick", action="store_true", help="small counts, one round")
    parser.add_argument("--rounds", type=int, default=5, help="timed runs of each program")
    parser.add_argument("--only", default="", help="these workloads, separated by commas")
    parser.add_argument("--programs", default="", help="these programs, separated by commas")
    parser.add_argument("--no-instructions", action="store_true", help="leave counting out")
    parser.add_argument("--no-growth", action="store_true", help="leave the growth check out")
    parser.add_argument("--tmpfs", default="/dev/shm", help="where inputs and outputs go")
    parser.add_argument("--write-docs", action="store_true",
                        help="put the results into docs/performance.md")
    arguments = parser.parse_args()
    machine = Machine(arguments)
    wanted = arguments.programs.split(",") if arguments.programs else PROGRAMS
    programs = [program for program in PROGRAMS
                if program in wanted + ["library", "floor"] and machine.has(program)]
    for program in PROGRAMS:
        if not machine.has(program):
            print(f"{program}: not built, left out", file=sys.stderr)
    names = arguments.only.split(",") if arguments.only else [w.name for w in WORKLOADS]
    unknown = set(names) - {w.name for w in WORKLOADS}
    if unknown:
        parser.error(f"no such workload: {', '.join(sorted(unknown))}")

    print("Preparing inputs ...", file=sys.stderr)
    subprocess.run([str(machine.bin / "make_inputs"), str(machine.inputs)], check=True)
    per_item, counter = instruction_counter(machine, arguments.quick)
    if arguments.no_instructions:
        per_item, counter = None, None
    rounds = 1 if arguments.quick else arguments.rounds
    targets = Targets()
    sections = []

    about = description() + (
        f"\nMedians of {rounds} rounds (least and greatest in brackets), all programs in turn"
        + (f"; instructions in user mode by {counter}" if counter else "") + ".\n")
    print(about)
    for workload in WORKLOADS:
        if workload.name not in names:
            continue
        print(f"Running {workload.name} ...", file=sys.stderr)
        results = measure(machine, workload, programs, rounds, arguments.quick)
        instructions = {}
        if per_item:
            for program in programs:
                if results[program]["check"]["status"] == 0:
                    instructions[program] = per_item(program, workload.name, workload.small)
        judge(targets, workload, results, instructions)
        count = workload.quick if arguments.quick else workload.count
        sections.append(table(workload, results, instructions, count))
        print(sections[-1], flush=True)

    grown = None
    if not arguments.no_growth:
        print("Running growth ...", file=sys.stderr)
        sizes = (1000, 10_000) if arguments.quick else (10_000, 100_000, 1_000_000)
        grown = growth(machine, sizes, per_item)
        for name, title in GROWTH:
            seconds = [row[1] for row in grown[name]]
            targets.at_most(f"growth of {title}: greatest ÷ least per item", 1.3,
                            max(seconds) / min(seconds))
        sections.append("**Growth** (CPU time of the process per item, without what an empty "
                        "document costs; the least of several runs)\n\n" + growth_table(grown))
        print(sections[-1], flush=True)
    sections.append("**Footprint**\n\n" + footprint(machine, targets))
    print(sections[-1])
    if arguments.quick:
        print("A smoke run is too small to judge by.\n")
    print(targets.table())

    if arguments.write_docs and not arguments.quick:
        page = ROOT / "docs" / "performance.md"
        write_block(page, "library machine", about)
        write_block(page, "library targets", targets.table())
        write_block(page, "library results", "\n".join(sections))
        if grown:
            plot = ROOT / "docs" / "performance-growth.svg"
            plot.write_text(growth_plot(grown), encoding="utf-8")
        print(f"Wrote {page.relative_to(ROOT)}", file=sys.stderr)


if __name__ == "__main__":
    main()
