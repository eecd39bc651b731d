"""Records of an authorization and policy service: ASN.1 BER octets to dicts and back.

    >>> import zrasn
    >>> octets = zrasn.encode("sec_id", {"uuid": "6ba7b810-9dad-11d1-80b4-00c04fd430c8", "name": "ada"})
    >>> zrasn.decode("sec_id", octets)["name"]
    'ada'

A record is named by its structure or binding class ("acl_ext_s_t", "asn_acl_ext_t"), or short ("acl_ext"). Its dict is
what json.loads makes of its JSON, as `zrasn decode` prints it.
"""
from zrasn._zrasn import (check, decode, describe, encode, from_json, identify, json_schema, records, sample, schema,
                          to_json, walk)
from zrasn.error import Error
from zrasn.secret import Secret
from zrasn.stream import decode_stream, stream

__all__ = [
    "Error", "Secret", "check", "decode", "decode_stream", "describe", "encode", "from_json", "identify", "json_schema",
    "records", "sample", "schema", "stream", "to_json", "walk",
]
