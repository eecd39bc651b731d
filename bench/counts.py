#!/usr/bin/env python3
"""Counts the instructions that the library executes and compares them with bench/counts.txt.

counts.py BUILD BUILD32 [check|table|update]: the build directories of the presets release and x86, in which
zrasn_counts is built. `check` fails when a count is more than 1 % higher than in the file, `table` prints all of them
too, `update` writes the file.

What is counted: the instructions in libzrasn and libzrz themselves, with all that the compiler inlined there. What they
call in other libraries (malloc, memcpy, strlen, iconv) is not: glibc chooses its functions by the processor.
"""
import math
import re
import shutil
import subprocess
import sys
import tempfile
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
FILE = ROOT / "bench" / "counts.txt"
TOLERANCE = 0.01
WORD_SIZES = ("64 bit", "32 bit")
COUNTED = re.compile(r"(^|/)lib(zrasn|zrz)\.so[.\d]*$")
HEAD = """\
# Instructions of the library itself for one call, as 64-bit and as 32-bit program: name, instructions-64,
# instructions-32. `make counts COUNTS=update` writes this file anew. Where a figure rises, the commit message says why.
# Compiler: {compiler}
"""


def compiler(build):
    cache = (build / "CMakeCache.txt").read_text()
    path = re.search(r"^CMAKE_CXX_COMPILER:\w+=(.*)$", cache, re.M).group(1)
    return subprocess.run([path, "--version"], check=True, capture_output=True, text=True).stdout.splitlines()[0]


def read_dump(file):
    """The name of the row and the library's own instructions in one of callgrind's files."""
    name, instructions, counted = None, 0, False
    lines = iter(file.read_text().splitlines())
    for line in lines:
        if line.startswith("desc: Trigger: Client Request: "):
            name = line.rpartition(": ")[2]
        elif line.startswith("ob="):
            counted = COUNTED.search(line[3:]) is not None
        elif line.startswith("calls="):
            next(lines)  # what the called function takes stands at that function too
        elif counted and line[:1].isdigit():
            instructions += int(line.split()[1])
    return name, instructions


def measure(build):
    """Instructions by the name of the row. Nothing of the environment reaches the program."""
    with tempfile.TemporaryDirectory() as folder:
        subprocess.run(
            [shutil.which("valgrind"), "-q", "--tool=callgrind", "--collect-atstart=no", "--compress-strings=no",
             "--compress-pos=no", "--dump-line=no", f"--callgrind-out-file={folder}/counts",
             build / "bench" / "counts" / "zrasn_counts"],
            check=True, env={"PATH": "/usr/bin:/bin"}, stderr=subprocess.DEVNULL)
        return dict(read_dump(dump) for dump in Path(folder).glob("counts.*"))


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
    rows = [f"{name:{width}} {wide:9} {narrow:9}\n" for name, (wide, narrow) in sorted(figures.items())]
    FILE.write_text(HEAD.format(compiler=used_compiler) + "".join(rows))


def percent(change):
    return f"{100 * change:+.2f} %"


def compare(known, measured, mode):
    """Prints what differs. Returns whether a figure has risen or the rows are not the same."""
    updates = mode == "update"
    failed, fallen = False, 0
    for name in sorted(known.keys() ^ measured.keys()):
        print(f"counts: {name} is " + ("not measured any more" if name in known else "not in bench/counts.txt"))
        failed = True
    shared = sorted(known.keys() & measured.keys())
    for at, size in enumerate(WORD_SIZES):
        for name in shared:
            before, now = known[name][at], measured[name][at]
            change = now / before - 1
            text = f"{name}, {size}: {now:,} instructions, {before:,} in bench/counts.txt ({percent(change)})"
            if change > TOLERANCE:
                print(f"counts: {text}: too many")
                failed = True
            elif change < -TOLERANCE:
                print(f"counts: {text}: fewer")
                fallen += 1
            elif mode == "table":
                print(f"counts: {text}")
        if shared:
            mean = math.exp(sum(math.log(measured[name][at] / known[name][at]) for name in shared) / len(shared))
            print(f"counts: {size}: {len(shared)} rows, geometric mean {percent(mean - 1)}")
    if fallen and not updates:
        print(f"counts: {fallen} figures are more than 1 % lower: renew bench/counts.txt (make counts COUNTS=update)")
    if failed and not updates:
        print("counts: bench/counts.txt does not hold any more: find the reason, or renew the file "
              "(make counts COUNTS=update) and give the reason in the commit message")
    return failed


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
    measured = {name: (wide[name], narrow[name]) for name in wide}
    failed = known and compare(known, measured, mode)
    if mode == "update":
        write_figures(used_compiler, measured)
        return 0
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
