#include "json/ber/element_words.h"

#include "json/base/text.h"
#include "json/ber/asn1_types.h"

namespace zr::json {

namespace {

using role = record_place::role;

// The number as which a uint32_t is read.
void write_unsigned(output& out, const ber_item& item, const field& member, const unsigned char* contents) {
    if (member.integer.is_signed || member.integer.octets != 4 || item.length > 4 || *contents < 0x80) return;
    uint32_t value = ~uint32_t{0};
    for (size_t i = 0; i < item.length; ++i)
        value = value << 8 | contents[i];
    out.write(" (");
    write_number(out, value);
    out.write(" as uint32_t)");
}

}  // namespace

std::string type_words(const ber_item& item, const record_place& place) {
    const bool too_large = item.damage == ber_damage::tag_too_large;
    const char* name = item.cls == 0 && !too_large ? universal_type(item.tag).name : nullptr;
    std::string words = name != nullptr ? name : class_of(item.cls).bracket;
    if (name == nullptr) words += too_large ? "?]" : std::to_string(item.tag) + "]";
    if (place.is_list()) words += " OF";
    return words;
}

void write_element_value(output& out, const ber_item& item, const record_place& place, const unsigned char* contents,
                         value_size size) {
    if (item.opens() || item.length == 0) return;
    write_value(out, item, contents, size);
    if (place.is_integer() && item.damage == ber_damage::none) write_unsigned(out, item, *place.member, contents);
}

std::string damage_words(const ber_item& item, const unsigned char* contents) {
    if (item.damage == ber_damage::too_long) {
        if (item.in_cut) return {};
        if (item.declared != UINT64_MAX)
            return "the contents run over the end by " + counted(item.declared - item.length, "octet");
        return "the length is too large to tell, " + counted(item.length, "octet") +
               (item.length == 1 ? " is there" : " are there");
    }
    if (item.damage != ber_damage::none) return damage_text(item.damage);
    const char* const wrong = wrong_contents(item, contents);
    return wrong != nullptr ? wrong : "";
}

std::string misfit_words(const ber_item& item, const record_place& place) {
    if (place.what < role::unexpected) return {};
    if (place.what == role::unexpected_element) return std::string("no element of ") + place.member->name;
    if (place.member != nullptr) return std::string("not ") + place.member->name + " (" + type_of(*place.member) + ")";
    return item.depth == 0 ? "not a SEQUENCE, as a record is" : "more than the record has members";
}

bool secret_guard::hides(const ber_item& item, const record_place& place) {
    if (record_ == nullptr) return false;
    if (item.depth > hidden_depth_) return true;
    const bool unknown = place.what != role::record && place.member == nullptr && has_secrets(*record_);
    const bool hidden = unknown || (place.member != nullptr && place.member->secret);
    hidden_depth_ = hidden ? item.depth : SIZE_MAX;
    return hidden;
}

}  // namespace zr::json
