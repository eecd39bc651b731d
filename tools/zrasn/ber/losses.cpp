#include "ber/losses.h"

#include <cstdint>
#include <cstring>

#include "base/envelope.h"
#include "base/text.h"
#include "ber/deviations.h"
#include "ber/mismatch.h"

namespace zr::tool {

namespace {

// Whether a text of an encoding that was accepted may hold a zero octet: true also where only a walk that knows all
// forms can tell.
bool may_cut_text(const unsigned char* at, const unsigned char* end) {
    while (end - at >= 2) {
        const unsigned char identifier = at[0];
        const bool constructed = (identifier & 0x20) != 0;
        size_t length = at[1];
        at += 2;
        if ((identifier & 0x1F) == 0x1F || identifier == 0x2C) return true;
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
        at += length;
    }
    return false;
}

}  // namespace

void find_losses(const unsigned char* data, size_t size, size_t header, const record_type& type, void* contents,
                 const std::function<void(const loss&)>& report) {
    const size_t end = header + record_end(data + header, size - header);
    if (may_cut_text(data + header, data + end))
        find_deviations(data, end, header, type, contents, [&](const deviation& found) {
            if (found.kind == deviation_kind::cut_text) report({found.offset, found.path, found.what});
        });
    if (end == size) return;
    std::string what = counted(size - end, "octet") + " behind the record";
    if (has_header(data + end, size - end) || lacks_header(data + end, size - end)) what += ", as of another one";
    report({end, {}, what + ": not decoded"});
}

}  // namespace zr::tool
