#include "json/ber/nested_scanner.h"

#include "json/base/envelope.h"
#include "json/ber/asn1_types.h"
#include "json/ber/value.h"

namespace zr::json {

namespace {

// Whether the octets are one SEQUENCE or SET in which nothing is wrong, of at least so many elements, itself included.
bool is_whole(const unsigned char* data, size_t size, size_t least) {
    constexpr unsigned char constructed = 0x20;
    if (size < 2 || (data[0] != (constructed | tag_sequence) && data[0] != (constructed | tag_set))) return false;
    ber_scanner scanner(data, size);
    size_t count = 0;
    for (ber_item item; scanner.next(item);) {
        if (item.kind == ber_kind::end_of_contents) continue;
        if (item.kind != ber_kind::element || item.damage != ber_damage::none || (item.depth == 0 && count != 0) ||
            wrong_contents(item, data + item.offset + item.header) != nullptr)
            return false;
        ++count;
    }
    return count >= least;
}

}  // namespace

bool nested_scanner::next(ber_item& item) {
    for (; !open_.back().scanner.next(item); open_.pop_back())
        if (open_.size() == 1) return false;
    item.offset += open_.back().offset;
    item.depth += open_.back().depth;
    inside_ = open_.size() != 1;
    return true;
}

nested_scanner::found nested_scanner::enter(const ber_item& item) {
    if (!item.is_universal(tag_octet_string) || item.constructed || item.damage != ber_damage::none ||
        open_.size() > most_nested)
        return found::nothing;
    const size_t begin = item.offset + item.header;
    const size_t header = has_header(data_ + begin, item.length) ? envelope_header_octets : 0;
    if (!is_whole(data_ + begin + header, item.length - header, header != 0 ? 1 : 2)) return found::nothing;
    open_.push_back({ber_scanner(data_ + begin + header, item.length - header), begin + header, item.depth + 1});
    return header != 0 ? found::envelope : found::ber;
}

}  // namespace zr::json
