// Where octets go that a verb has made.
#pragma once

#include "base/file_output.h"
#include "base/library.h"
#include "zrasn/guard.h"

namespace zr::tool {

// Writes an encoding as it is, or as text: in hexadecimal digits on a terminal.
inline void write_octets(file_output& out, const encoding& octets, bool hex, bool base64) {
    if (base64) {
        write_base64(out, octets.data(), octets.size());
    } else if (hex || out.is_terminal()) {
        out.write_hex(octets.data(), octets.size());
        out.put('\n');
    } else {
        out.write(octets.data(), octets.size());
    }
}

}  // namespace zr::tool
