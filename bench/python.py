#!/usr/bin/env python3
"""python.py [SECONDS]: what it costs in Python to make the dict of a record: from its JSON by json.loads, from its octets by
zrasn.decode, and from its octets by pyasn1 (Debian's python3-pyasn1) with the same schema. Prints a table for docs/python.md.

    PYTHONPATH=build/release/python /usr/bin/python3 bench/python.py

The three take turns, each for SECONDS in all (0.5), and the fastest turn counts.
"""
import json
import sys
import time

import zrasn
from pyasn1.codec.ber import decoder
from pyasn1.codec.der import encoder
from pyasn1.type import char, namedtype, univ

RECORDS = ["uuid_t", "sec_id_t", "attrlist_s_t", "acl_ext_s_t", "acl_entry_s_t", "pop_s_t", "yvprincipal_s_t",
           "ejauditevent_s_t"]
FIELDS = {record["name"]: record["fields"] for record in zrasn.describe()}


def asn1_type(record, depth=4):
    """The record as pyasn1 has it; one that contains itself has so many levels."""
    members = []
    for field in FIELDS[record]:
        kind, inside = field["kind"], field.get("record")
        if inside == record and depth == 0:
            element = univ.Any()
        elif inside:
            element = asn1_type(inside, depth - (inside == record))
        elif "octets" in kind or kind == "stored_text":
            element = univ.OctetString()
        else:
            element = char.UTF8String() if "text" in kind else univ.Integer()
        if kind == "slots":
            element = univ.Choice(componentType=namedtype.NamedTypes(
                namedtype.NamedType("none", univ.Null()), namedtype.NamedType("value", element)))
        if kind == "slots" or kind.startswith("list"):
            element = univ.SequenceOf(componentType=element)
        optional = namedtype.OptionalNamedType if kind.startswith("optional") else namedtype.NamedType
        members.append(optional(field["name"], element))
    return univ.Sequence(componentType=namedtype.NamedTypes(*members))


def samples(record):
    return (zrasn.encode(record, zrasn.sample(record, seed=seed, filled=True)) for seed in range(1000))


def goes_round(octets, schema):
    """Whether pyasn1 reads all of it and writes the same; it writes -2147483648 in an octet more than it takes."""
    value, rest = decoder.decode(octets[4:], asn1Spec=schema)
    return not rest and encoder.encode(value) == octets[4:]


def microseconds(call, seconds):
    count, taken = 1, 0.0
    while True:
        start = time.perf_counter()
        for _ in range(count):
            call()
        taken = time.perf_counter() - start
        if taken >= seconds:
            return taken / count * 1e6
        count = max(count + 1, int(count * seconds / max(taken, 1e-7)))


def main():
    seconds = float(sys.argv[1]) if len(sys.argv) > 1 else 0.5
    print("| Record | Octets | JSON | `json.loads` | `zrasn.decode` | pyasn1 | loads : decode | pyasn1 : decode |")
    print("|---|--:|--:|--:|--:|--:|--:|--:|")
    for record in [name for name in RECORDS if name in FIELDS]:
        schema = asn1_type(record)
        octets = next(filled for filled in samples(record) if goes_round(filled, schema))
        text = zrasn.to_json(record, octets)
        assert zrasn.decode(record, octets) == json.loads(text), record
        calls = [lambda: json.loads(text), lambda: zrasn.decode(record, octets),
                 lambda: decoder.decode(octets[4:], asn1Spec=schema)]
        loads, decode, peer = (min(times) for times in zip(
            *[[microseconds(call, seconds / 5) for call in calls] for _ in range(5)]))
        print(f"| `{record}` | {len(octets)} | {len(text)} | {loads:.2f} µs | {decode:.2f} µs | {peer:.0f} µs "
              f"| {loads / decode:.1f} | {peer / decode:.0f} |")


main()
