#!/usr/bin/env python3
"""schemas.py LIBRARY: the JSON Schema of each record is one, accepts every sample, and refuses what is none."""
import ctypes
import json
import sys

try:
    import jsonschema
except ImportError:
    sys.exit(0)
lib = ctypes.CDLL(sys.argv[1])
lib.zrasn_record_at.restype = lib.zrasn_record_count.restype = ctypes.c_void_p
lib.zrasn_record_name.restype = ctypes.c_char_p


def made(function, *arguments):
    text, length = ctypes.c_char_p(), ctypes.c_size_t()
    assert function(*arguments, ctypes.byref(text), ctypes.byref(length)) == 0
    value = json.loads(text.value)
    lib.zrasn_free(text)
    return value


def accepts(schema, value):
    return jsonschema.Draft202012Validator(schema).is_valid(value)


count = lib.zrasn_record_count()
assert count >= 65
for record in (ctypes.c_void_p(lib.zrasn_record_at(ctypes.c_size_t(i))) for i in range(count)):
    name = lib.zrasn_record_name(record).decode()
    schema = made(lib.zrasn_json_schema, record)
    jsonschema.Draft202012Validator.check_schema(schema)
    for seed in range(4):
        for filled in (0, 1):
            value = made(lib.zrasn_sample, record, ctypes.c_uint64(seed), filled)
            assert accepts(schema, value), f"{name}: {value}"
    fields = made(lib.zrasn_describe, record)["fields"]
    if name != "uuid_t":
        wrong = [{"none": 1}] + [{f["name"]: "***"} for f in fields if f.get("secret")]
        wrong += [{f["name"]: 2**32} for f in fields if f["kind"] == "integer"]
        wrong += [{f["name"]: "a\0b"} for f in fields if f["kind"] == "text"]
        wrong += [{f["name"]: None} for f in fields if f["kind"] != "version" and not f["kind"].startswith("optional")]
        assert not [value for value in wrong if accepts(schema, value)], name
print(f"{count} schemas")
