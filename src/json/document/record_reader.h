// JSON to the structure of a record (docs/tool.md states the form).
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "asn1/record/decoding.h"
#include "asn1/record/registry.h"

namespace zr::json {

// Where JSON was refused, and why.
struct json_error {
    size_t offset = 0;    // octets before the place in the text
    size_t line = 1;      // counted from 1
    size_t column = 1;    // characters, counted from 1
    std::string path;     // of the member, such as "attrs[3].name"; empty for the record itself
    std::string message;  // "found ..., expected ..."; fit for a terminal
    // Why, where the message alone is not to tell: the limit that was passed, or "***" in place of a secret.
    decode_limit passed = decode_limit::none;
    bool is_redacted = false;
};

// read_json fills a zeroed structure, with blocks from malloc that the record's free function releases, after a refusal
// too. True on success. Works with a stack of its own, so that any depth will do. Throws std::bad_alloc. Of the limits
// that of octets is not asked.
bool read_json(std::string_view text, const record_type& type, void* structure, json_error& error,
               const decode_limits& limits = {});

}  // namespace zr::json
