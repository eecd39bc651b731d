#include "asn1/status_category.h"

#include <new>
#include <string>

#include "asn1/status_text.h"

namespace zr {

namespace {

class categories final : public std::error_category {
public:
    const char* name() const noexcept override { return "zrasn"; }
    std::string message(int status) const override { return status_text(status); }
    std::error_condition default_error_condition(int status) const noexcept override {
        switch (status) {
            case zr_err_out_of_memory:
                return std::errc::not_enough_memory;
            case zr_err_unsupported:
                return std::errc::not_supported;
            case zr_err_bad_argument:
            case zr_err_bad_alternative:
                return std::errc::invalid_argument;
            case zr_err_conversion:
                return std::errc::illegal_byte_sequence;
            case zr_err_bad_envelope:
            case zr_err_data_ends_early:
            case zr_err_integer_too_long:
            case zr_err_empty_contents:
            case zr_err_bad_contents:
            case zr_err_indefinite_length:
            case zr_err_constructed_form:
            case zr_err_primitive_form:
            case zr_err_bad_bitstring:
            case zr_err_bad_bitstring_segment:
            case zr_err_no_match:
            case zr_err_trailing_data:
                return std::errc::bad_message;
            default:
                return {status, *this};
        }
    }
};

}  // namespace

const std::error_category& status_category() noexcept {
    // Is never destroyed, so that a code may be used while the process ends.
    alignas(categories) static unsigned char room[sizeof(categories)];
    static const categories* const only = new (room) categories;
    return *only;
}

}  // namespace zr
