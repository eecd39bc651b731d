#!/usr/bin/env python3
"""short_errors.py ROOT COMPILER [FLAG...]: what the compiler says about a wrong list of fields, and about a wrong call of
an entry point, names the mistake and is short.

A row: the mistake in words, the source, what the message must hold, and the most lines that it may take. Lines are those
of g++ or clang++, whichever prints more, and a few to spare.
"""
import subprocess
import sys

ROOT, COMPILER = sys.argv[1], sys.argv[2:]

# Before a list stands the head of a module's source; "members | fields" make the structure s_t and its description.
LISTS = """#include "asn1/codec/define_record.h"
#include "base_idls/zrnbase_asn.h"
struct plain_t { int32_t a; };
"""
NOT_ALL = "each member of S belongs to one field"
WRONG_LISTS = [
    ("a text that is an int", "int32_t a; | zr::text(ZR_M(a))", "zr::text takes a char*", 15),
    ("an integer of 64 bits", "int64_t a; | zr::integer(ZR_M(a))", "zr::integer takes", 15),
    ("octets, data before length", "uint32_t n; unsigned char* d; | zr::octets(ZR_M(d), ZR_M(n))",
     "zr::octets takes", 25),
    ("fixed octets of another size", "uint16_t a[4]; | zr::fixed_octets(ZR_M(a))", "zr::fixed_octets takes", 25),
    ("a signed count", "int n; char** a; | zr::list(ZR_M(n), ZR_M(a))", "zr::list takes a count", 15),
    ("a list of 16-bit integers", "uint32_t n; int16_t* a; | zr::list(ZR_M(n), ZR_M(a))", "zr::list takes an array", 15),
    ("a record without a list", "plain_t a; | zr::nested(ZR_M(a))", "described before", 15),
    ("a list of such records", "uint32_t n; plain_t* a; | zr::list(ZR_M(n), ZR_M(a))", "described before", 15),
    ("an optional record by value", "uuid_t a; | zr::optional_nested(ZR_M(a))", "zr::optional_nested takes", 15),
    ("slots of values", "uuid_t a[4]; | zr::slots(ZR_M(a))", "zr::slots takes", 25),
    ("a member left out", "char* a; char* b; | zr::text(ZR_M(a))", NOT_ALL, 15),
    ("a member doubled", "char* a; char* b; | zr::text(ZR_M(a)), zr::text(ZR_M(b)), zr::text(ZR_M(b))", NOT_ALL, 15),
    ("a member in place of another", "char* a; char* b; | zr::text(ZR_M(a)), zr::text(ZR_M(a))", NOT_ALL, 15),
    ("members in another order", "char* a; char* b; | zr::text(ZR_M(b)), zr::text(ZR_M(a))", NOT_ALL, 15),
    ("a member without a builder", "char* a; | ZR_M(a)", "without a builder", 20),
    ("a secret without a builder", "char* a; | zr::secret(ZR_M(a))", "without a builder", 20),
    ("a list of itself before the end",
     "uint32_t n; s_t* l; int32_t a; | zr::list(ZR_M(n), ZR_M(l)), zr::integer(ZR_M(a))", "must be its last field", 20),
]

# Before a call stand all records and the guards.
CALLS = """#include "zrasn/decode.h"
#include "asn1/record/operations.h"
#include "zrasn/records.h"
struct plain_t { int32_t a; };
struct derived_t : attrlist_s_t {};
[[maybe_unused]] static int f(zr_asn_buffer_t& buffer, attrlist_s_t& list, const attrlist_s_t& constant, plain_t& plain,
                              zr::encoding& octets, zr::decoded<attrlist_s_t>& guard, zr::packed<attrlist_s_t>& packed) {
"""
ENCODE, DECODE, FREE = "zrAsnEncodeObj takes", "zrAsnDecodeObj takes", "zrAsnFreeObj takes"
WRONG_CALLS = [
    ("encoding no record", "zrAsnEncodeObj(buffer, plain)", ENCODE, 15),
    ("encoding a number", "zrAsnEncodeObj(buffer, 3)", ENCODE, 15),
    ("encoding a pointer", "zrAsnEncodeObj(buffer, &list)", ENCODE, 15),
    ("encoding, the wrong way round", "zrAsnEncodeObj(list, buffer)", ENCODE, 15),
    ("encoding into nothing", "zrAsnEncodeObj(list)", ENCODE, 15),
    ("encoding a guard", "zrAsnEncodeObj(octets, guard)", ENCODE, 25),
    ("decoding into no record", "zrAsnDecodeObj(buffer, plain)", DECODE, 15),
    ("decoding into a guard's value", "zrAsnDecodeObj(octets.in(), *guard)", DECODE, 15),
    ("decoding with a version", "zrAsnDecodeObj(buffer, list, 2)", DECODE, 15),
    ("decoding no record, local code set", "zrAsnDecodeObjLCS(buffer, plain)", "zrAsnDecodeObjLCS takes", 15),
    ("encoding no record, local code set", "zrAsnEncodeObjLCS(buffer, plain)", "zrAsnEncodeObjLCS takes", 15),
    ("releasing what is const", "zrAsnFreeObj(constant)", FREE, 15),
    ("releasing a part of a packed record", "zrAsnFreeObj(*packed)", FREE, 15),
    ("releasing no record", "zrAsnFreeObj(plain)", FREE, 15),
    ("releasing a pointer", "zrAsnFreeObj(&list)", FREE, 15),
    ("a guard of no record", "zr::decoded<plain_t>()", FREE, 20),
    ("copying no record", "zr::copy(plain, plain)", "plain_t", 15),
]


def rows():
    for mistake, row, word, most in WRONG_LISTS:
        members, fields = row.split(" | ")
        yield mistake, (f"{LISTS}struct s_t {{ {members} }};\nZR_RECORD(m, s_t, asn_s_t, {fields});\n"
                        "ZR_DEFINE_MODULE(m, s_t);\n"), word, most
    for mistake, call, word, most in WRONG_CALLS:
        yield mistake, f"{CALLS}    static_cast<void>({call});\n    return 0;\n}}\n", word, most


def message(source):
    command = [*COMPILER, "-std=c++17", "-fsyntax-only", "-I", f"{ROOT}/src", "-I", ROOT, "-x", "c++", "-"]
    done = subprocess.run(command, input=source, text=True, capture_output=True)
    return None if done.returncode == 0 else done.stderr


status = 0
RIGHT_CALLS = """    derived_t derived{};
    if (zrAsnEncodeObj(octets.out(), constant) != 0 || zrAsnDecodeObj(octets.in(), guard.out()) != 0) return 1;
    return zrAsnEncodeObj(buffer, derived);
}
"""
for head in (LISTS, CALLS + RIGHT_CALLS):
    if (said := message(head)) is not None:
        sys.exit(f"without a mistake:\n{said}")
for mistake, source, word, most in rows():
    said = message(source)
    lines = 0 if said is None else len(said.splitlines())
    if said is None or word not in said or lines > most:
        status = 1
        print(f"{mistake}: " + ("compiles" if said is None else
                                f"{lines} lines, at most {most} are wanted, with \"{word}\":\n{said}"))
sys.exit(status)
