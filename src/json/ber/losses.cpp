#include "json/ber/losses.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "json/base/envelope.h"
#include "json/base/text.h"
#include "json/ber/deviations.h"
#include "json/ber/mismatch.h"
#include "json/ber/scanner.h"

namespace zr::json {

namespace {

// Whether a record may hold texts that are stored with their zero octet.
bool holds_stored_text(const record_type& type) {
    return std::any_of(type.begin(), type.end(), [&](const field& member) {
        return member.value == value_kind::stored_text ||
               (member.record != nullptr && member.record != &type && holds_stored_text(*member.record));
    });
}

// Whether such a text is read shorter than it is: at a zero octet before the last, or when it is of one octet.
bool is_cut(const unsigned char* text, size_t length) {
    if (length == 0) return false;
    const void* zero = std::memchr(text, 0, length);
    return zero == nullptr ? length == 1 : zero != text + length - 1;
}

// Whether a text of an encoding that was accepted may be cut by a zero octet, or the record may end before its length
// says so: true also where only a walk that knows all forms can tell. `stored`: OCTET STRINGs may be texts.
bool needs_walk(const unsigned char* at, const unsigned char* end, bool stored) {
    while (end - at >= 2) {
        const unsigned char identifier = at[0];
        const bool constructed = (identifier & 0x20) != 0;
        size_t length = at[1];
        at += 2;
        if ((identifier & 0x1F) == 0x1F || identifier == 0x2C || (stored && identifier == 0x24)) return true;
        if (length >= 0x80) {
            size_t octets = length & 0x7F;
            if (octets == 0 && constructed) continue;
            if (octets == 0 || octets > 4 || octets > static_cast<size_t>(end - at)) return true;
            for (length = 0; octets != 0; --octets)
                length = length << 8 | *at++;
        }
        if (constructed) continue;
        if (length > static_cast<size_t>(end - at)) return true;
        if (identifier == 0x0C && length != 0 && std::memchr(at, 0, length) != nullptr) return true;
        if (stored && identifier == 0x04 && is_cut(at, length)) return true;
        at += length;
    }
    return false;
}

}  // namespace

void find_losses(const unsigned char* data, size_t size, size_t header, const record_type& type, void* contents,
                 const std::function<void(const loss&)>& report) {
    ber_item record;
    ber_scanner(data + header, size - header).next(record);
    size_t end =
        header + (record.indefinite ? record_end(data + header, size - header, type) : record.header + record.length);
    if (needs_walk(data + header, data + end, holds_stored_text(type))) {
        find_deviations(data, end, header, type, contents, [&](const deviation& found) {
            if (found.kind == deviation_kind::cut_text) report({found.offset, found.path, found.what});
        });
        if (!record.indefinite) end = header + record_end(data + header, size - header, type);
    }
    if (end == size) return;
    std::string what = counted(size - end, "octet") + " behind the record";
    if (has_header(data + end, size - end) || lacks_header(data + end, size - end)) what += ", as of another one";
    report({end, {}, what + ": not decoded"});
}

}  // namespace zr::json
