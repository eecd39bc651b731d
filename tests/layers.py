#!/usr/bin/env python3
"""layers.py ROOT: the table of layers in docs/architecture.md is what the sources include.

Every source lies in exactly one layer and includes only what its layer may include, which is never a layer further down
in the table; of the library, what a layer may include it does include. No header of the codec is reached from a header
that a caller of a record includes, and a module's header pulls in few.
"""
import re
import sys
from fnmatch import fnmatch
from pathlib import Path

ROOT = Path(sys.argv[1]).resolve()
FOLDERS = ["src", "base_idls", "zrasn", "tools", "examples", "python"]
FOR_CALLERS = ["zrasn/*.h", "base_idls/*.h", "src/asn1/record/record.h", "src/asn1/record/registry.h",
               "src/asn1/record/operations.h"]
CODEC = "src/asn1/codec/"
# A small module's header; the library has 24 headers behind it.
SMALL, MOST_HEADERS = "base_idls/zrnbase_asn.h", 25

failures = []


def numbers(text):
    """The layers that "1, 3-5" names."""
    named = set()
    for first, last in re.findall(r"(\d+)(?:-(\d+))?", text):
        named.update(range(int(first), int(last or first) + 1))
    return named


def layers():
    """Of each layer by its number: name, patterns of its files, the layers that it may include."""
    page = (ROOT / "docs/architecture.md").read_text()
    rows = re.findall(r"^\| (\d+) \| ([^|]+) \| ([^|]+) \| ([^|]+) \|", page, re.M)
    table = {int(number): (name, re.findall(r"`([^`]+)`", where), numbers(may)) for number, name, where, may in rows}
    if list(table) != list(range(1, len(rows) + 1)) or len(rows) < 5:
        sys.exit("docs/architecture.md has no table of layers with the numbers 1, 2 and so on")
    return table


def included(path):
    """The files of ours that a file includes; the compiler tells of those that are not there."""
    for name in re.findall(r'^\s*#\s*include "([^"]+)"', (ROOT / path).read_text(), re.M):
        for folder in [Path(path).parent, Path("src"), Path(""), Path("tools/zrasn")]:
            if (ROOT / folder / name).is_file():
                yield (folder / name).as_posix()
                break


table = layers()
sources = sorted(p.relative_to(ROOT).as_posix() for folder in FOLDERS for p in (ROOT / folder).rglob("*")
                 if p.suffix in (".h", ".cpp", ".c"))
includes = {path: set(included(path)) for path in sources}

layer_of = {}
for path in sources:
    found = [n for n, (_, patterns, _) in table.items() if any(fnmatch(path, p) for p in patterns)]
    if len(found) != 1:
        failures.append(f"{path} lies in {len(found)} layers: {found}")
    layer_of[path] = found[0] if found else None
for number, (name, patterns, may) in table.items():
    failures += [f"no file is {p} of {name}" for p in patterns if not any(fnmatch(path, p) for path in sources)]
    if any(other >= number for other in may):
        failures.append(f"{name} may include a layer that is not above it")

used = {number: set() for number in table}
for path, targets in includes.items():
    for target in targets:
        own, other = layer_of[path], layer_of.get(target)
        if own == other or own is None or other is None:
            continue
        used[own].add(other)
        if other not in table[own][2]:
            failures.append(f"{path} ({table[own][0]}) includes {target} ({table[other][0]})")
for number, (name, patterns, may) in table.items():
    if not all(p.startswith(("tools/", "examples/", "python/")) for p in patterns):
        failures += [f"{name} includes nothing of {table[n][0]}, as the table says it may" for n in may - used[number]
                     if n < number]


def reached(path):
    """The headers that a file brings with it, and how: each with the one that includes it."""
    way, todo = {path: None}, [path]
    while todo:
        for target in sorted(includes.get(at := todo.pop(), ())):
            if target not in way:
                way[target] = at
                todo.append(target)
    return way


for path in sources:
    if not any(fnmatch(path, pattern) for pattern in FOR_CALLERS):
        continue
    way = reached(path)
    for target in way:
        if target.startswith(CODEC) and not way[target].startswith(CODEC):
            failures.append(f"{path} brings {target} to its callers, by {way[target]}")
if (count := len(reached(SMALL)) - 1) > MOST_HEADERS:
    failures.append(f"{SMALL} brings {count} headers with it, more than {MOST_HEADERS}")

print("\n".join(failures) or f"{len(sources)} files in {len(table)} layers")
sys.exit(1 if failures else 0)
