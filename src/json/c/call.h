// What all functions of zrasn/c.h do: options and the report are looked at, and no exception leaves.
#pragma once

#include <new>
#include <stdexcept>
#include <string_view>

#include "asn1/record/decoding.h"
#include "asn1/record/registry.h"
#include "asn1/status.h"
#include "json/base/secrets.h"
#include "json/base/text_output.h"
#include "json/document/record_reader.h"
#include "zrasn/c.h"

namespace zr::json {

inline const record_type& type_of(const zrasn_record* record) { return *reinterpret_cast<const record_type*>(record); }
inline const zrasn_record* as_c(const record_type* type) { return reinterpret_cast<const zrasn_record*>(type); }

// Octets or a text that a caller gives.
struct input_octets {
    const unsigned char* data;
    size_t size;

    std::string_view text() const { return {reinterpret_cast<const char*>(data), size}; }
};

// Both: nothing is made yet. False where there is no place for what is to be made.
template <class T>
bool clear(T** made) {
    if (made != nullptr) *made = nullptr;
    return made != nullptr;
}
template <class T>
bool clear_text(T** text, size_t* length) {
    if (length != nullptr) *length = 0;
    return clear(text) && length != nullptr;
}

// Options in the library's words. Where a limit is 0 there is none.
decode_options decoding_of(const zrasn_options& asked);

// call is one call: what it was asked for, and the report that it fills.
class call {
public:
    call(const zrasn_options* options, zrasn_report* report);

    decode_options decoding() const { return decoding_of(asked_); }
    secret_values secrets() const { return asked_.show_secrets != 0 ? secret_values::shown : secret_values::hidden; }
    unsigned version() const { return static_cast<unsigned>(decoding().version) & 0xFF; }
    bool is_bare() const { return asked_.bare != 0; }
    bool is_indented() const { return asked_.indent != 0; }
    size_t most_depth() const { return asked_.most_depth; }
    // Of a text that is refused when it is longer, and of one from which something is left out then.
    size_t most_text() const { return asked_.most_text != 0 ? asked_.most_text : SIZE_MAX; }
    size_t most_shown() const { return asked_.most_text != 0 ? asked_.most_text : size_t{64} << 20; }

    // Runs the body, which answers a status, unless the call was refused before or `complete` is false: then arguments
    // are missing.
    template <class Body>
    int run(bool complete, Body&& body) {
        if (refused_ || !complete) return refuse(zr_err_bad_argument);
        try {
            return body();
        } catch (const std::bad_alloc&) {
            return refuse(zr_err_out_of_memory);
        } catch (const std::length_error&) {
            return refuse(zr_err_out_of_memory);
        } catch (const text_too_long&) {
            return refuse(zr_err_out_of_memory, "limit_text", "the text that is made is longer than the limit");
        }
    }

    // Each gives the status that it fills the report with. A reason and a message that are null follow from the status.
    int succeed(size_t consumed = 0);
    int refuse(int status, const char* reason = nullptr, const char* message = nullptr);
    // What a decode of the octets has said; its offsets count `before` octets too many.
    int refuse(const decode_report& found, const input_octets& octets, size_t before);
    int refuse(const json_error& found);

private:
    zrasn_report& start(int status);

    zrasn_options asked_{};
    zrasn_report unseen_{};  // for a caller who gave none
    zrasn_report* report_;
    bool refused_ = false;
};

// Hands a text over.
int give(call& call, text_output& out, char** text, size_t* length, size_t consumed = 0);

// call_decode decodes octets, or octets alone when they are bare, into a zeroed structure.
int call_decode(call& call, const record_type& type, const input_octets& octets, void* structure, size_t& consumed);

}  // namespace zr::json
