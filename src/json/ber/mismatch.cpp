#include "json/ber/mismatch.h"

#include <utility>

#include "asn1/status.h"
#include "json/base/envelope.h"
#include "json/base/hex.h"
#include "json/base/record_holder.h"
#include "json/base/text.h"
#include "json/ber/asn1_types.h"
#include "json/ber/scanner.h"

namespace zr::json {

namespace {

// An element by its identifier: "a constructed form of an INTEGER (22)".
std::string describe(unsigned char identifier) {
    const unsigned cls = identifier >> 6, tag = identifier & 0x1F;
    const std::string octet = " (" + hex_text(&identifier, 1) + ")";
    if (cls == 0 && tag == tag_end_of_contents) return "end-of-contents octets" + octet;
    const asn1_type& type = universal_type(tag);
    if (cls != 0 || tag == 0x1F || type.name == nullptr)
        return "an element with " + with_article(class_of(cls).name) + " tag" + octet;
    const bool other_form = (identifier & 0x20) != 0 && type.form != asn1_form::constructed;
    return (other_form ? "a constructed form of " : "") + with_article(type.name) + octet;
}

using words = std::pair<std::string, std::string>;  // what was found, what was expected

// Where an element was expected.
words element_words(const refusal& at, const unsigned char* data) {
    const auto wanted = static_cast<unsigned char>(at.tag == tag_sequence ? sequence_identifier : at.tag);
    const std::string expected = describe(wanted);
    if (at.left == 0) return {"the end of the data", expected};
    const std::string found = describe(data[at.offset]);
    int status = at.status;
    if (status == zr_err_no_match && data[at.offset] == wanted) {  // said of a slot, whatever is wrong inside
        ber_item item;
        ber_scanner(data + at.offset, at.left).next(item);
        if (item.damage != ber_damage::none) status = zr_err_data_ends_early;
    }
    switch (status) {
        case zr_err_data_ends_early:
            return {found + " that is longer than the " + counted(at.left, "octet") + " left here",
                    "one that ends within them"};
        case zr_err_constructed_form:
            return {found, expected + " in the primitive form"};
        case zr_err_primitive_form:
            return {found + " in the primitive form", expected};
        case zr_err_indefinite_length:
            return {found + " of indefinite length", "a definite length"};
        case zr_err_integer_too_long:
            return {found + " of too many octets", "at most 32 bits"};
        case zr_err_bad_contents:
            return {found + " with contents of a wrong form", expected};
        default:
            return {found, expected};
    }
}

words words_of(const refusal& at, const unsigned char* data) {
    const std::string here = at.left == 0 ? "no more octets" : describe(data[at.offset]);
    switch (at.expected) {
        case expectation::end_of_sequence:
            return {counted(at.left, "octet") + " more: " + here, "the end of the SEQUENCE"};
        case expectation::end_of_contents:
            return {here, "end-of-contents octets (00 00)"};
        case expectation::fewer_elements:
            return {"more than 65535 elements", "as many as " + std::string(at.count_name) + " can count"};
        case expectation::canonical_form:
            return {here, "the form that the library writes"};
        case expectation::value:
            break;
    }
    return element_words(at, data);
}

}  // namespace

bool find_mismatch(const unsigned char* data, size_t size, const record_type& type, mismatch& found) {
    refusal refused;
    if (type.examine(data, size, refused) == 0) return false;
    words told = words_of(refused, data);
    found = {refused.offset, refused.status, refused.path, std::move(told.first), std::move(told.second)};
    return true;
}

std::string refusal_words(const refusal& at, const unsigned char* data) {
    const words told = words_of(at, data);
    return "found " + told.first + ", expected " + told.second;
}

size_t record_end(const unsigned char* data, size_t size, const record_type& type) {
    record_holder record(type);
    return decode_report_of(type, data, size, record.get()).consumed - envelope_header_octets;
}

}  // namespace zr::json
