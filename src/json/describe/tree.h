// Any BER as a tree in JSON.
#pragma once

#include <cstddef>

#include "asn1/record/registry.h"
#include "json/base/secrets.h"
#include "json/base/text_output.h"
#include "json/ber/value.h"

namespace zr::json {

struct tree_options {
    const record_type* record = nullptr;  // whose members are named
    secret_values secrets = secret_values::hidden;
    size_t most_levels = 64;      // that are shown
    size_t most_text = SIZE_MAX;  // octets of the text from which on nothing more is shown, but closed
    value_size values = value_size::cut;
};

// Writes what zrasn_walk in zrasn/c.h tells. What is shown is no longer than most_text and 4096 octets for each level.
void write_tree(text_output& out, const unsigned char* data, size_t size, const tree_options& options);

}  // namespace zr::json
