#!/usr/bin/env python3
"""Runs the benchmarks and writes docs/performance.md and docs/performance.svg.

report.py BUILD BUILD32 [--seconds S]: the build directories of the presets bench and bench-x86; S seconds are given to
each thing measured. The tables are printed as well.
"""
import argparse
import json
import math
import os
import re
import shutil
import statistics
import subprocess
import tempfile
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
LIBRARY, LIMIT, READING, FLOOR = "zrasn", "hand-written", "reading", "floor"
PACKED = ["zrasn, packed", "zrasn, kept block"]
PEERS = [LIMIT, LIBRARY, *PACKED, "protobuf", "protobuf, arena", "snacc", "Heimdal", "asn1c", "OpenSSL", FLOOR]
WORKLOADS = {
    "uuid": "UUID",
    "attrlist": "attribute list",
    "decision": "decision request",
    "acl": "access-control list",
    "audit": "audit event",
    "objects": "2,000 objects",
}
LOCAL = ["LCS in UTF-8", "LCS, ASCII texts"]
WAYS = {"encode": [*LOCAL, "bindings"], "decode": [*LOCAL, "strict", *PACKED, "bindings"]}
ODD_FORMS = ["indefinite lengths", "long lengths", "segments"]
OPERATIONS = {"encode": "Encode", "decode": "Decode and free"}
REPETITIONS = 9


class Results:
    """The medians of one run: by (workload, peer, operation), in ns."""

    def __init__(self, file):
        times = {}
        self.octets = {}
        for entry in json.loads(Path(file).read_text())["benchmarks"]:
            if entry["run_type"] != "iteration":
                continue
            key = tuple(re.sub(r"/repeats:\d+", "", entry["name"]).split("/"))
            times.setdefault(key, []).append(entry["cpu_time"])
            self.octets[key] = entry["octets"]
        self.ns = {key: statistics.median(all_times) for key, all_times in times.items()}
        quarters = [statistics.quantiles(t, n=4) for t in times.values() if len(t) > 2]
        self.spread = statistics.median((high - low) / middle for low, middle, high in quarters)
        self.peers = [peer for peer in PEERS if any(peer == measured for _, measured, _ in times)]

    def ratio(self, workload, peer, operation):
        time = self.ns.get((workload, peer, operation))
        return time and time / self.ns[workload, LIMIT, operation]

    def mean_ratio(self, peer, operation):
        ratios = [self.ratio(workload, peer, operation) for workload in WORKLOADS]
        return statistics.geometric_mean(ratios) if all(ratios) else None


def run(*command, **environment):
    subprocess.run(command, check=True, env={**os.environ, **environment})


def output(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def table(head, rows):
    lines = ["| " + " | ".join(cells) + " |" for cells in [head] + rows]
    lines.insert(1, "| --- |" + " ---: |" * (len(head) - 1))
    return "\n".join(lines) + "\n"


def number(value):
    """Three digits, or as many as an integer has."""
    if value is None:
        return ""
    if value >= 100:
        return f"{value:,.0f}"
    return f"{value:.3g}" if value >= 1 else f"{value:.2f}"


def peers_of(results, operation):
    """Packed records are only decoded."""
    return [peer for peer in results.peers if operation != "encode" or peer not in PACKED]


def ratios_table(results, operation):
    rows = []
    for peer in peers_of(results, operation):
        cells = [results.ratio(workload, peer, operation) for workload in WORKLOADS]
        mean = "" if peer == FLOOR else number(results.mean_ratio(peer, operation))
        rows.append([peer] + [number(cell) for cell in cells] + [mean])
    times = [number(results.ns[workload, LIMIT, operation]) + " ns" for workload in WORKLOADS]
    rows.insert(1, ["that is"] + times + [""])
    return table([OPERATIONS[operation]] + list(WORKLOADS.values()) + ["geometric mean"], rows)


def speed_table(results):
    rows = []
    for workload, title in WORKLOADS.items():
        octets = results.octets[workload, LIBRARY, "encode"]
        cells = [f"{octets:,.0f}"]
        for operation in OPERATIONS:
            ns = results.ns[workload, LIBRARY, operation]
            cells += [number(ns), f"{octets * 1000 / ns:,.0f}"]
        rows.append([title] + cells)
    return table(["zrasn", "octets", "encode, ns", "MB/s", "decode and free, ns", "MB/s"], rows)


def other_ways_table(results, operation):
    """The other ways, against the plain forms."""
    plain = {workload: results.ns[workload, LIBRARY, operation] for workload in WORKLOADS}
    rows = [["plain forms, ns"] + [number(ns) for ns in plain.values()] + ["1"]]
    for way in WAYS[operation]:
        if ("uuid", way, operation) not in results.ns:
            continue  # there was no locale for it
        ratios = [results.ns[workload, way, operation] / ns for workload, ns in plain.items()]
        rows.append([way] + [number(ratio) for ratio in ratios + [statistics.geometric_mean(ratios)]])
    return table([OPERATIONS[operation]] + list(WORKLOADS.values()) + ["geometric mean"], rows)


def other_texts_table(results):
    """Texts that have to be converted: what they take beside the plain forms, in passes of iconv."""
    rows = []
    for operation, title in OPERATIONS.items():
        local, iconv = ([results.ns.get((workload, way, operation)) for workload in WORKLOADS]
                        for way in ("LCS, other texts", "iconv"))
        if not all(local):
            return "Not measured: there was no locale for it.\n"
        plain = [results.ns[workload, LIBRARY, operation] for workload in WORKLOADS]
        rows.append([f"{title}, ns"] + [number(ns) for ns in local])
        rows.append(["iconv, ns"] + [number(ns) for ns in iconv])
        rows.append(["beyond plain, in passes of iconv"] +
                    [number(max(ns - less, 0) / by) for ns, less, by in zip(local, plain, iconv)])
    return table(["Texts to convert"] + list(WORKLOADS.values()), rows)


def odd_forms_table(results):
    """Times per octet of input, against the library's own form."""
    per_octet = {key: ns / results.octets[key] for key, ns in results.ns.items()}
    rows = []
    for form in ODD_FORMS:
        ratios = [per_octet[workload, form, "decode"] / per_octet[workload, LIBRARY, "decode"] for workload in WORKLOADS]
        rows.append([form] + [number(ratio) for ratio in ratios + [statistics.geometric_mean(ratios)]])
    return table(["Decode and free, per octet"] + list(WORKLOADS.values()) + ["geometric mean"], rows)


def type_codes_table(results):
    rows = []
    for what in sorted(what for what, peer, operation in results.ns if (peer, operation) == ("type code", "encode")):
        cells = [what, f"{results.octets[what, 'type code', 'encode']:,.0f}"]
        for operation in OPERATIONS:
            ns, plain = results.ns[what, "type code", operation], results.ns.get((what, "plain record", operation))
            cells += [number(ns), number(ns / plain) if plain else ""]
        rows.append(cells)
    return table(["Type code", "octets", "encode, ns", "plain", "decode and free, ns", "plain"], rows)


def conversions_table(results):
    texts = {}
    for what, characters, operation in results.ns:
        if operation == "convert":
            texts.setdefault(what, {})[int(characters)] = results.ns[what, characters, operation]
    sizes = sorted({size for times in texts.values() for size in times})
    rows = [[what] + [number(times[size]) for size in sizes] for what, times in sorted(texts.items())]
    return table(["ns per text"] + [f"{size:,} characters" for size in sizes], rows)


def beside_iconv_table(results):
    rows = {}
    for what, characters, operation in sorted(results.ns):
        if operation == "iconv":
            iconv, ours = (results.ns[what, characters, by] for by in ("iconv", LIBRARY))
            rows.setdefault(what, {})[int(characters)] = [number(ours), number(iconv), number(iconv / ours)]
    sizes = sorted({size for cells in rows.values() for size in cells})
    head = [cell for size in sizes for cell in (f"{size:,} characters, ns", "iconv, ns", "times as fast")]
    return table(["Text"] + head, [[what] + sum((rows[what][size] for size in sizes), []) for what in rows])


def heap_table(heap, results):
    rows = []
    for operation in OPERATIONS:
        for peer in peers_of(results, operation):
            counts = {heap[key]["allocations"] for key in heap if key.split("/")[1:] == [peer, operation]}
            if operation == "encode" and peer != LIBRARY and counts == {1}:
                continue
            cells = []
            for workload in WORKLOADS:
                use = heap.get(f"{workload}/{peer}/{operation}")
                cells.append(f"{use['allocations']:,} / {use['peak']:,}" if use else "")
            rows.append([f"{operation}, {peer}"] + cells)
    return table(["Allocations / peak octets"] + list(WORKLOADS.values()), rows)


def scaling_tables(results):
    """One table for each thing that grows: ns for one octet, element or level, at every size."""
    sizes = {}
    for name, _, _ in results.ns:
        what, size = name.rsplit(" ", 1)
        sizes.setdefault(what, {})[int(size)] = name
    text = ""
    for what, names in sizes.items():
        rows = []
        for operation in OPERATIONS:
            for peer in (LIBRARY, LIMIT, READING, FLOOR):
                cells = [(results.ns.get((name, peer, operation)), size) for size, name in names.items()]
                if cells[0][0] is not None:
                    rows.append([f"{operation}, {peer}"] + [number(ns / size) for ns, size in cells])
        text += table([f"ns per unit, {what}"] + [f"{size:,}" for size in names], rows) + "\n"
    return text


def library_size(library):
    with tempfile.TemporaryDirectory() as directory:
        copy = Path(directory) / "lib.so"
        shutil.copy(library.resolve(), copy)
        run("strip", str(copy))
        sections = dict(line.split()[:2] for line in output("size", "-A", str(copy)).splitlines()[2:] if line)
        return int(sections[".text"]), int(output("size", str(copy)).splitlines()[1].split()[0]), copy.stat().st_size


def machine():
    model = re.search(r"model name\s*: (.*)", Path("/proc/cpuinfo").read_text())
    return f"{model[1] if model else os.uname().machine}, {os.cpu_count()} processors, Linux {os.uname().release}"


def compiler(build):
    path = re.search(r"CMAKE_CXX_COMPILER:\w+=(.*)", (build / "CMakeCache.txt").read_text())[1]
    return output(path, "--version").splitlines()[0]


COLOURS = ["#1b9e77", "#e7298a", "#d95f02", "#7570b3", "#66a61e", "#e6ab02", "#a6761d", "#666666"]


def chart(results):
    """Two panels of bars, one for each operation: the ratios to the hand-written code on a logarithmic scale."""
    peers = [peer for peer in results.peers if peer not in (LIMIT, FLOOR, *PACKED)]
    width, panel, left, bottom = 980, 280, 60, 36
    top = 1.3 * max(results.ratio(w, p, o) or 1 for w in WORKLOADS for p in peers for o in OPERATIONS)
    least = 0.5
    group = (width - left - 20) / len(WORKLOADS)
    bar = group / (len(peers) + 1.5)

    def height(ratio):
        return (panel - 40) * math.log(max(ratio, least) / least) / math.log(top / least)

    parts = [
        f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {width} {2 * (panel + bottom) + 40}" '
        'font-family="sans-serif" font-size="12">',
        '<rect width="100%" height="100%" fill="white"/>',
    ]
    for i, peer in enumerate(peers):
        x = left + i * 125
        parts.append(f'<rect x="{x}" y="10" width="12" height="12" fill="{COLOURS[i]}"/>')
        parts.append(f'<text x="{x + 17}" y="20">{peer}</text>')
    for row, (operation, title) in enumerate(OPERATIONS.items()):
        base = 40 + (row + 1) * panel + row * bottom
        parts.append(f'<text x="{left}" y="{base - panel + 14}" font-weight="bold">{title}: time as a multiple of the '
                     "hand-written code</text>")
        tick = 1
        while tick <= top:
            y = base - height(tick)
            parts.append(f'<line x1="{left}" x2="{width - 20}" y1="{y:.1f}" y2="{y:.1f}" '
                         f'stroke="{"black" if tick == 1 else "#dddddd"}"/>')
            parts.append(f'<text x="{left - 8}" y="{y + 4:.1f}" text-anchor="end">{tick}</text>')
            tick *= 10
        for g, (workload, name) in enumerate(WORKLOADS.items()):
            x = left + g * group + bar * 0.75
            parts.append(f'<text x="{left + (g + 0.5) * group:.1f}" y="{base + 18}" text-anchor="middle">{name}</text>')
            for i, peer in enumerate(peers):
                ratio = results.ratio(workload, peer, operation)
                if ratio is None:
                    continue
                y = base - height(ratio)
                parts.append(f'<rect x="{x + i * bar:.1f}" y="{y:.1f}" width="{bar * 0.9:.1f}" '
                             f'height="{base - y:.1f}" fill="{COLOURS[i]}"><title>{peer}, {name}: '
                             f"{ratio:.2f}</title></rect>")
    parts.append("</svg>\n")
    return "\n".join(parts)


def document(build, native, narrow, growth, heap):
    code, text, whole = library_size(build / "src" / "libzrasn.so")
    return f"""# Performance

What the library takes to turn records into octets and back, beside other encoders on the same machine in the same run.
`make bench` measures, prints these tables and writes this page; `make bench BENCH_SECONDS=5` takes more time for each
figure. It installs the other encoders from Debian packages; one that is not there is left out.

Times vary from run to run by more than a small change costs; instructions do not. `make counts` runs every entry point
under callgrind on these workloads, on lists in forms that the library never writes, on records 256 levels deep and
through the type codes, and compares the library's own instructions, and its calls of other libraries, with
`bench/counts.txt`: 1 % more is a failure. So are more than 2.1 times the instructions or calls for twice the octets, of
any shape: wide, deep, both, segmented, of indefinite length, refused at the end. It does not see what happens inside malloc, memcpy and strlen, nor caches and
mispredicted branches; those show in the times.

- Machine: {machine()}
- Compiler: {compiler(build)}, -O2 for everything
- Figures are medians of {REPETITIONS} repetitions in mixed order, of processor time; the middle half of the repetitions
  lies within {native.spread:.1%} (in the middle of all cases).

![Ratios to the hand-written code](performance.svg)

## Against other encoders

The figures are multiples of the time that hand-written code takes: an encoder and a decoder for just this one record
(`bench/*/handwritten.cpp`), the fastest that was found. *Encode* includes the block of the result and its release,
*decode and free* all blocks of the record. The floor is malloc and free of the same blocks and nothing else. Every
peer's octets are compared with the library's before anything is timed, except those of protobuf, which has a form of
its own; every peer's decoder is checked by encoding again what it gave. asn1c is built without its tracing; snacc uses
its arena and a buffer of fixed size.

{ratios_table(native, "encode")}
{ratios_table(native, "decode")}
{speed_table(native)}
The workloads: one UUID; 10 attributes of 3 values; an extended-decision request (3 principals with 4 identities and 5
attributes each, two more lists of 5 attributes); an access-control list of 200 entries with 8 permissions; an audit
event with a tree of 340 elements, 4 levels deep; 2,000 objects with 256-octet bodies.

## Other ways

The figures are multiples of the plain forms' time. The forms for the local code set (LCS) convert nothing where it is
UTF-8, and look at each text where all are ASCII but the code set is another, ISO 8859-1 here. *Strict* is `zr::decode`
that accepts only what an encode gives back; a UUID is decoded plainly without any call, which it cannot be strictly.
*Packed* decodes into one block, *kept block* into the one of the last decode. Bindings work by an object tree, one object
for each field and element: `set_value` and `saveEncoding`, `loadObject` and `get_value`, with a new binding object for
each record.

{other_ways_table(native, "encode")}
{other_ways_table(native, "decode")}
Texts that have to be converted, with é as every tenth character, where the local code set is ISO 8859-1. *iconv* is one
opening and closing of the C library's converter and one pass over the same texts.

{other_texts_table(native)}
Octets in forms that the library reads and never writes, per octet of input against its own form: all records and lists of
indefinite length; all lengths in an octet or two more than needed; all texts and byte strings in segments of 16 octets.

{odd_forms_table(native)}
The type-code interface uses no objects. *Plain* is how many times as long it takes as the entry points of a record with
the same fields (`bench/values/plain_records.h`):

{type_codes_table(native)}
Conversions between code sets, of texts in which every tenth character is é, into a new buffer. The local code set is
ISO 8859-1, which libzrz converts without the C library's converter.

{conversions_table(native)}
The same by iconv of the C library, with a descriptor that stays open. Both write into a block that is there already;
*é* is every tenth character:

{beside_iconv_table(native)}
## Memory

Calls of the allocator, and the octets held at most, for one operation. Encoders that are not listed take one
block, as long as their result. snacc's arena was there before.

{heap_table(heap, native)}
## Growth

Time for one octet, element or level while records grow. Blocks so large that they come fresh from the system are
touched by the floor too: there the system's work outweighs everything else. *Reading* reads one octet of each block of
the record and nothing else: what the caches do not hold has to come from memory. An encoder that counts first needs it
twice.

{scaling_tables(growth)}## 32-bit build

The same figures of the 32-bit build (`-m32`), against the hand-written code of that build.

{ratios_table(narrow, "encode")}
{ratios_table(narrow, "decode")}
## Size

The shared library with all records: {code:,} octets of code, {text:,} with constants, unwinding tables and exported
names, {whole:,} octets as a stripped file.

## Measured elsewhere

- [Python](python.md#what-it-costs): a dict of a record from its octets, beside `json.loads` and pyasn1 (`bench/python.py`).
- The program: [`decode --select` and `--where`](tool.md#choosing-records-and-members) by instructions (`bench/select.sh`), and
  [`dump`](tool.md#looking-into-octets) beside other programs (`bench/dump.sh`).
- [Allocators](cookbook.md#faster-allocators) below the library (`bench/allocators.sh`), and [JSON parsers](design.md#alternatives)
  (`bench/parsers/parsers.sh`).
"""


def main():
    arguments = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    arguments.add_argument("build", type=Path)
    arguments.add_argument("build32", type=Path)
    arguments.add_argument("--seconds", type=float, default=0.3)
    given = arguments.parse_args()
    each = f"--benchmark_min_time={given.seconds / REPETITIONS}"
    program, program32 = (str(build / "bench" / "zrasn_bench") for build in (given.build, given.build32))

    with tempfile.TemporaryDirectory() as directory:
        def measure(name, *command, repetitions=REPETITIONS):
            print(f"Measuring: {name}", flush=True)
            file = f"{directory}/results.json"
            with open(os.devnull, "w") as nowhere:
                subprocess.run([*command, each, f"--benchmark_repetitions={repetitions}", f"--benchmark_out={file}",
                                "--benchmark_out_format=json"], check=True, stdout=nowhere)
            return Results(file)

        native = measure("all encoders", program, "--benchmark_enable_random_interleaving=true")
        growth = measure("growth", program, "--scaling", repetitions=5)
        narrow = measure("the 32-bit build", program32)
        print("Counting allocations", flush=True)
        run(program, f"--heap={directory}/heap.json", LD_PRELOAD=str(given.build / "bench" / "libzrasn_bench_heap.so"))
        heap = json.loads(Path(directory, "heap.json").read_text())

    page = document(given.build, native, narrow, growth, heap)
    (ROOT / "docs").mkdir(exist_ok=True)
    (ROOT / "docs" / "performance.md").write_text(page)
    (ROOT / "docs" / "performance.svg").write_text(chart(native))
    print(page)


if __name__ == "__main__":
    main()
