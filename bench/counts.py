#!/usr/bin/env python3
"""Counts what the library executes, compares the figures with bench/counts.txt, and looks how they grow.

counts.py BUILD BUILD32 [check|table|update]: the build directories of the presets release and x86, in which
zrasn_counts is built. `check` fails when a figure is more than 1 % higher than in the file, `table` prints all of them
too, `update` writes the file.

What is counted are the instructions in libzrasn and libzrz themselves, with all that the compiler inlined there, and
the calls that leave them: of malloc and free, memcpy, strlen. What happens behind those is not counted, for glibc
chooses its functions by the processor.

Octets of every shape are decoded at several sizes, each twice the last. More than 2.1 times the instructions or the
calls for twice the octets is a failure in every mode.
"""
import math
import re
import shutil
import statistics
import subprocess
import sys
import tempfile
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
FILE = ROOT / "bench" / "counts.txt"
TOLERANCE = 0.01
# For twice the octets; and the number of calls from which on they say something about growth.
MOST_GROWTH = 2.1
FEW_CALLS = 100
# The columns of the file.
FIGURES = ("instructions as 64-bit program", "instructions as 32-bit program",
           "calls as 64-bit program", "calls as 32-bit program")
COUNTED = re.compile(r"(^|/)lib(zrasn|zrz)\.so[.\d]*$")
HEAD = """\
# What the library executes for one call of an entry point: its own instructions as 64-bit and as 32-bit program, then
# its calls of other libraries (malloc, memcpy, strlen) in both. `make counts COUNTS=update` writes this file anew. Where
# a figure rises, the commit message says why.
# Compiler: {compiler}
"""


def compiler(build):
    cache = (build / "CMakeCache.txt").read_text()
    path = re.search(r"^CMAKE_CXX_COMPILER:\w+=(.*)$", cache, re.M).group(1)
    return subprocess.run([path, "--version"], check=True, capture_output=True, text=True).stdout.splitlines()[0]


def read_dump(file):
    """The name of the row, the library's own instructions and its calls in one of callgrind's files."""
    name, instructions, calls = None, 0, 0
    counted = callee_counted = False
    lines = iter(file.read_text().splitlines())
    for line in lines:
        if line.startswith("desc: Trigger: Client Request: "):
            name = line.rpartition(": ")[2]
        elif line.startswith("ob="):
            counted = callee_counted = COUNTED.search(line[3:]) is not None
        elif line.startswith("cob="):
            callee_counted = COUNTED.search(line[4:]) is not None
        elif line.startswith("calls="):
            if counted and not callee_counted:
                calls += int(line[6:].split()[0])
            callee_counted = counted
            next(lines)  # what the called function takes stands at that function too
        elif counted and line[:1].isdigit():
            instructions += int(line.split()[1])
    return name, (instructions, calls)


def measure(build):
    """Instructions and calls by the name of the row. Nothing of the environment reaches the program."""
    with tempfile.TemporaryDirectory() as folder:
        run = subprocess.run(
            [shutil.which("valgrind"), "-q", "--tool=callgrind", "--instr-atstart=no", "--compress-strings=no",
             "--compress-pos=no", "--dump-line=no", f"--callgrind-out-file={folder}/counts",
             build / "bench" / "counts" / "zrasn_counts"],
            env={"PATH": "/usr/bin:/bin"}, stderr=subprocess.PIPE, text=True)
        if run.returncode != 0:
            sys.exit(f"counts: {run.stderr}counts: {build} gives no figures")
        rows = dict(read_dump(dump) for dump in Path(folder).glob("counts.*"))
    for name, (instructions, _) in rows.items():
        if instructions == 0:
            sys.exit(f"counts: {name} executes nothing in a file called like {COUNTED.pattern}")
    return rows


def read_figures():
    """The compiler that the file names, and its figures by row."""
    known_compiler, figures = None, {}
    for line in FILE.read_text().splitlines():
        if line.startswith("# Compiler: "):
            known_compiler = line.partition(": ")[2]
        elif not line.startswith("#"):
            name, *both = line.split()
            figures[name] = tuple(map(int, both))
    return known_compiler, figures


def write_figures(used_compiler, figures):
    width = max(map(len, figures))
    rows = [" ".join([f"{name:{width}}"] + [f"{figure:8}" for figure in figures[name]]) + "\n" for name in sorted(figures)]
    FILE.write_text(HEAD.format(compiler=used_compiler) + "".join(rows))


def difference(before, now):
    """How much more, as a part of what it was."""
    return (now - before) / max(before, 1)


def compare(known, measured, mode):
    """Prints what differs. Returns whether a figure has risen or the rows are not the same."""
    rows = sorted(known.keys() & measured.keys())
    failed, fallen = False, False
    for name in sorted(known.keys() ^ measured.keys()):
        print(f"counts: {name} is " + ("not measured any more" if name in known else "not in bench/counts.txt"))
        failed = True
    for at, figure in enumerate(FIGURES):
        for name in rows:
            before, now = known[name][at], measured[name][at]
            change = difference(before, now)
            verdict = "too many" if change > TOLERANCE else "fewer" if change < -TOLERANCE else "as before"
            failed |= verdict == "too many"
            fallen |= verdict == "fewer"
            if mode == "table" or verdict != "as before":
                print(f"counts: {name}: {now:,} {figure}, {before:,} in bench/counts.txt ({change:+.2%}): {verdict}")
    for at, figure in enumerate(FIGURES if rows else ()):
        changes = [math.log(max(measured[name][at], 1) / max(known[name][at], 1)) for name in rows]
        mean = math.expm1(statistics.fmean(changes))
        print(f"counts: {figure}: {mean:+.2%} in the geometric mean of {len(rows)} rows")
    if mode != "update" and failed:
        print("counts: find the reason, or renew bench/counts.txt (make counts COUNTS=update) and give the reason in the "
              "commit message")
    elif mode != "update" and fallen:
        print("counts: bench/counts.txt should be renewed (make counts COUNTS=update)")
    return failed


def look_at_growth(rows, bits):
    """Prints what grows the most. `rows` are those of growing octets. Returns whether something grows too fast."""
    sizes = {}
    for name, figures in rows.items():
        shape, octets, call = re.fullmatch(r"growth:(.+):(\d+)/(.+)", name).groups()
        sizes.setdefault(f"{shape}/{call}", []).append((int(octets), figures))
    growth, per_octet = [], []
    for name, measured in sizes.items():
        measured.sort()
        per_octet.append((max(figures[0] / octets for octets, figures in measured), name))
        for (octets, before), (more_octets, after) in zip(measured, measured[1:]):
            doublings = math.log2(more_octets / octets)
            for what, least, most in zip(("instructions", "calls"), before, after):
                if what == "instructions" or most > FEW_CALLS:
                    growth.append(((most / max(least, 1)) ** (1 / doublings), what, f"{name} at {more_octets:,} octets"))
    for factor, what, name in sorted(growth):
        if factor > MOST_GROWTH:
            print(f"counts: {name}: {factor:.2f} times the {what} for twice the octets, {MOST_GROWTH} are permitted")
    factor, what, name = max(growth)
    print(f"counts: {bits}-bit: {len(growth)} doublings, at most {factor:.2f} times as many ({what}, {name})")
    most, name = max(per_octet)
    print(f"counts: {bits}-bit: at most {most:.0f} instructions per octet ({name})")
    return factor > MOST_GROWTH


def main():
    builds, mode = [Path(build).resolve() for build in sys.argv[1:3]], sys.argv[3]
    if mode not in ("check", "table", "update"):
        sys.exit(__doc__)
    used_compiler = compiler(builds[0])
    known_compiler, known = read_figures() if FILE.exists() else (None, {})
    if mode != "update" and used_compiler != known_compiler:
        print(f"counts: nothing is compared: the compiler is {used_compiler}, bench/counts.txt is of {known_compiler}")
        return 0
    with ThreadPoolExecutor() as pool:
        wide, narrow = pool.map(measure, builds)
    grows = [{name: rows.pop(name) for name in list(rows) if name.startswith("growth:")} for rows in (wide, narrow)]
    too_fast = [look_at_growth(rows, bits) for rows, bits in zip(grows, (64, 32))]
    measured = {name: tuple(both for pair in zip(wide[name], narrow[name]) for both in pair) for name in wide}
    failed = known and compare(known, measured, mode)
    if any(too_fast):
        return 1
    if mode == "update":
        write_figures(used_compiler, measured)
        return 0
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
