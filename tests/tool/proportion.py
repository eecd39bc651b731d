#!/usr/bin/env python3
"""proportion.py PROGRAM [answers|all|instructions]: what octets from outside make the program say and take is in proportion
to them, whatever they are.

answers: at most 100 octets for each octet of the input, and 64 KiB; with --lines 512 more for each line, which has an
answer of its own. all, which is meant where nothing is said: memory too, at most 48 octets for each and 4 MiB, and for a
tree as JSON, which is whole before it is shown, twice its length; on a stack of 256 KiB. instructions: under valgrind, at
most 2.1 times as many for twice the octets, from 5,000 to 40,000.
"""
import json
import math
import os
import re
import resource
import subprocess
import sys
import tempfile
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

program = os.path.realpath(sys.argv[1])
mode = sys.argv[2] if len(sys.argv) > 2 else "all"
ENVELOPE = bytes.fromhex("0402acdc")
READING = [["decode"], ["check"], ["canon"], ["roundtrip"], ["dump"], ["dump", "--json"]]


def element(tag, contents, long_form=False):
    size = len(contents)
    if size < 0x80:
        return bytes([tag, 0x81, size] if long_form else [tag, size]) + contents
    octets = size.to_bytes((size.bit_length() + 7) // 8, "big")
    return bytes([tag, 0x80 | len(octets)]) + octets + contents


def chain(levels):
    """Pairs of a name and values in one another, with lengths that are longer than they need be."""
    made = b""
    for _ in range(levels):
        contents = element(0x0C, b"", True) + element(0x30, b"", True) + element(0x30, made, True)
        made = b"\x30\x83" + len(contents).to_bytes(3, "big") + contents
    return made


# Of so many octets, meant for namevalue_s_t, or for any record.
SHAPES = {
    "texts": lambda size: ENVELOPE + element(0x30, b"\x0c\x00" + element(0x30, b"\x0c\x00" * (size // 2)) + b"\x30\x00"),
    "odd texts": lambda size: ENVELOPE + element(0x30, b"\x0c\x00" + element(0x30, b"\x2c\x00" * (size // 2)) + b"\x30\x00"),
    "children": lambda size: ENVELOPE + element(0x30, b"\x0c\x00\x30\x00" + element(
        0x30, bytes.fromhex("30060c0030003000") * (size // 8))),
    "chain": lambda size: ENVELOPE + chain(size // 17),
    "ended chain": lambda size: ENVELOPE + bytes.fromhex("30800c0030003080") * (size // 12) + bytes(size // 12 * 4),
    "chain without ends": lambda size: ENVELOPE + bytes.fromhex("30800c0030003080") * (size // 8),
    "levels": lambda size: ENVELOPE + b"\x30\x80" * (size // 2),
    "segments": lambda size: ENVELOPE + element(0x30, b"\x2c\x80" + b"\x24\x80" * (size // 2)),
    "empty": lambda size: ENVELOPE + element(0x30, b"\x30\x00" * (size // 2)),
    "numbers": lambda size: ENVELOPE + element(0x30, b"\x02\x00" * (size // 2)),
    "envelopes": lambda size: (ENVELOPE + b"\x30\x00") * (size // 6),
    "headers": lambda size: ENVELOPE * (size // 4),
}
DOCUMENTS = {
    "empty records": lambda size: b'{"children":[' + b"{}," * (size // 3) + b"{}]}",
    "nested": lambda size: b'{"children":[' * (size // 16) + b"]}" * (size // 16),
    "not closed": lambda size: b'{"children":[' * (size // 13),
    "digits": lambda size: b"1" * size,
}
LINES = [b"x\n", b"1\n", b"{}\n", b"00\n", b"3000\n", b"0402acdc\n", b'{"name":0}\n']


def calls(size):
    """What the program is called with, and the input."""
    for name, shape in SHAPES.items():
        octets = shape(size)
        for verb in READING:
            yield name, [verb[0], "namevalue_s_t", *verb[1:]], octets
        for verb in (["find"], ["dump"], ["check"]):
            yield name, verb, octets
    for name, shape in DOCUMENTS.items():
        yield name, ["encode", "namevalue_s_t"], shape(size)


def smallest(record, crowded=None, many=b"", long_form=False):
    """The smallest encoding of a record, with `many` in one of its lists."""
    made = b""
    for field in records[record]["fields"]:
        kind = field["kind"]
        if field["name"] == crowded:
            made += element(0x30, many)
        elif kind.startswith("list") or kind == "slots":
            made += element(0x30, b"", long_form)
        elif kind == "nested":
            made += smallest(field["record"], long_form=long_form)
        elif not kind.startswith("optional"):
            tag = 2 if kind in ("integer", "version") else 0x0C if kind == "text" else 4
            made += element(tag, b"", long_form)
    return element(0x30, made, long_form)


def lists(size):
    """Every list of every record, with the smallest elements in it, in the library's form or not, and with none that fits."""
    for record in records.values():
        for field in record["fields"]:
            if not field["kind"].startswith("list") and field["kind"] != "slots":
                continue
            plain = {"list_of_texts": 0x0C, "list_of_integers": 2}.get(field["kind"])
            elements = [b"\x30\x00"]
            for long_form in (False, True):
                elements.append(smallest(field["record"], long_form=long_form) if plain is None
                                else element(plain, b"", long_form))
            for one in elements:
                octets = ENVELOPE + smallest(record["name"], field["name"], one * (size // len(one)))
                for verb in READING:
                    yield field["name"], [verb[0], record["name"], *verb[1:]], octets


failures = 0


def fail(name, arguments, octets, what):
    global failures
    failures += 1
    print(f"FAILED: {name}: zrasn {' '.join(arguments)} < {octets[:12].hex()} ({len(octets)} octets): {what}")


def run(arguments, octets, stack=None):
    """The exit code, the octets of both outputs, and those of memory."""
    def limit():
        if stack:
            resource.setrlimit(resource.RLIMIT_STACK, (stack, stack))
    with tempfile.TemporaryFile() as given, tempfile.TemporaryFile() as said:
        given.write(octets)
        given.seek(0)
        child = subprocess.Popen([program, *arguments], stdin=given, stdout=said, stderr=said, preexec_fn=limit)
        _, status, used = os.wait4(child.pid, 0)
        child.returncode = os.waitstatus_to_exitcode(status)
        return child.returncode, said.seek(0, os.SEEK_END), used.ru_maxrss * 1024


def check(name, arguments, octets, lines=0, least_memory=None):
    code, said, memory = run(arguments, octets, least_memory and 256 << 10)
    if code not in (0, 1, 4):
        fail(name, arguments, octets, f"exit code {code}")
    if said > 100 * len(octets) + 65536 + 512 * lines:
        fail(name, arguments, octets, f"{said} octets are said")
    most = 48 * len(octets) + (4 << 20) + (2 * said if "--json" in arguments else 0)
    if least_memory and memory - least_memory > most:
        fail(name, arguments, octets, f"{memory - least_memory} octets of memory")


def left_out(name, verb, option):
    """What is left out is counted, and shown when asked for."""
    octets = SHAPES[name](60000)
    shown, whole = (subprocess.run([program, verb, "namevalue_s_t", *more], input=octets, capture_output=True)
                    for more in ([], [option]))
    told = re.search(rf"(\d+) (lines more|of them not shown) \({option} ".encode(), shown.stdout[-200:] + shown.stderr)
    if told is None or shown.stdout.count(b"\n") + int(told[1]) != whole.stdout.count(b"\n"):
        fail(name, [verb, "namevalue_s_t"], octets, f"not as many lines are left out as it tells: {told}")


def instructions(arguments, octets):
    with tempfile.TemporaryDirectory() as folder:
        file = Path(folder) / "in"
        file.write_bytes(octets)
        told = subprocess.run(["valgrind", "--tool=callgrind", "--callgrind-out-file=/dev/null", program, *arguments, file],
                              stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True).stderr
        return int(re.search(r"Collected : (\d+)", told)[1])


if mode == "instructions":
    start, worst = instructions(["records", "uuid_t"], b""), 0
    few, many = 5000, 40000  # octets
    all_calls = [*calls(few), *calls(many)]
    with ThreadPoolExecutor(os.cpu_count()) as pool:
        counts = list(pool.map(lambda call: instructions(*call[1:]) - start, all_calls))
    half = len(counts) // 2
    for (name, arguments, octets), least, most in zip(all_calls[half:], counts[:half], counts[half:]):
        # How the form of the input is recognised takes more or less, as its first octets may be text or not.
        growth = most / max(least, 20 * few)
        worst = max(worst, growth)
        if growth > 2.1 ** math.log2(many / few):
            fail(name, arguments, octets, f"{growth:.2f} times the instructions of an eighth of them")
    print(f"The program's verbs: 8 times the octets take at most {worst:.2f} times the instructions, in {half} calls.")
else:
    records = {record["name"]: record for record in json.loads(
        subprocess.run([program, "records", "--json"], check=True, capture_output=True).stdout)}
    for name, arguments, octets in lists(12000):
        check(name, arguments, octets)
    for line in LINES:
        for verb in ("encode", "decode", "check", "roundtrip"):
            check("lines", [verb, "yvmap_pobj_to_pop_s_t", "--lines"], line * 2000, lines=2000)
    least = run(["records"], b"")[2] if mode == "all" else None
    for name, arguments, octets in calls(300000 if mode == "all" else 30000):
        check(name, arguments, octets, least_memory=least)
    left_out("levels", "dump", "--whole")
    left_out("chain", "check", "--all")
sys.exit(1 if failures else 0)
