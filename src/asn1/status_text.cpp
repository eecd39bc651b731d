#include "asn1/status_text.h"

#include <cstddef>

#include "asn1/status.h"

namespace zr {

namespace {

#define ZR_STATUS(name, text) \
    { name, #name, text }
constexpr status_row rows[] = {
    ZR_STATUS(zr_ok, "success"),
    ZR_STATUS(zr_err_out_of_memory, "memory is exhausted, or the data is too large or nested too deep for the library"),
    ZR_STATUS(zr_err_bad_envelope, "the envelope header is missing, short, or of another version"),
    ZR_STATUS(zr_err_unsupported, "an operation was called that must never be"),
    ZR_STATUS(zr_err_data_ends_early, "the octets end inside an element, or before a mandatory member"),
    ZR_STATUS(zr_err_integer_too_long, "an integer that does not fit 32 bits"),
    ZR_STATUS(zr_err_empty_contents, "no contents where a value is needed"),
    ZR_STATUS(zr_err_bad_contents, "contents of a wrong length for the type, or end-of-contents octets missing"),
    ZR_STATUS(zr_err_bad_argument, "an index out of range, or a missing argument"),
    ZR_STATUS(zr_err_indefinite_length, "an indefinite length where the type permits none"),
    ZR_STATUS(zr_err_constructed_form, "the constructed form where the type permits none"),
    ZR_STATUS(zr_err_primitive_form, "the primitive form where the type permits none"),
    ZR_STATUS(zr_err_value_absent, "neither a value nor a default"),
    ZR_STATUS(zr_err_bad_bitstring, "malformed contents of a BIT STRING"),
    ZR_STATUS(zr_err_bad_bitstring_segment, "unused bits in a segment of a BIT STRING before the last"),
    ZR_STATUS(zr_err_no_match, "the identifier of something else than the member that is due"),
    ZR_STATUS(zr_err_trailing_data, "octets left over inside a SEQUENCE"),
    ZR_STATUS(zr_err_bad_alternative, "a CHOICE has no alternative of that index"),
    ZR_STATUS(zr_err_nothing_selected, "a CHOICE without a selected alternative is to be written"),
    ZR_STATUS(zr_err_syntax_bound, "raw access to an ANY that is bound to a syntax"),
    ZR_STATUS(zr_err_too_many_digits, "a number too large for its digits"),
    ZR_STATUS(zr_err_conversion, "a character without a form in the other code set"),
    ZR_STATUS(zr_err_code_set, "a code set that the string does not accept"),
};
#undef ZR_STATUS

const status_row* find(int status) {
    for (const status_row& row : rows)
        if (row.status == status) return &row;
    return nullptr;
}

}  // namespace

status_rows statuses() { return {rows, sizeof(rows) / sizeof(rows[0])}; }

const char* status_name(int status) {
    const status_row* row = find(status);
    return row != nullptr ? row->name : "unknown";
}

const char* status_key(int status) {
    constexpr size_t of_success = sizeof("zr_") - 1;
    constexpr size_t of_failure = sizeof("zr_err_") - 1;
    const status_row* row = find(status);
    if (row == nullptr) return "unknown";
    return row->name + (status == zr_ok ? of_success : of_failure);
}

const char* status_text(int status) {
    const status_row* row = find(status);
    return row != nullptr ? row->text : "unknown status";
}

}  // namespace zr
