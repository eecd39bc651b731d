// Status codes and exceptions of the library. A status is an unsigned 32-bit value carried in an int; 0 is success.
#pragma once

#include "asn1/export.h"

// Who raises each is named first. What they are called and mean, asn1/status_text.h tells.
enum zr_asn_status : int {
    zr_ok = 0,
    zr_err_out_of_memory = 275062885,      // buffers, composites, records: memory exhausted
    zr_err_bad_envelope = 275063190,       // envelope: header missing, short, of another version, or leading outside
    zr_err_unsupported = 275063191,        // copying an object; CHOICE encode_value and decode_value
    zr_err_data_ends_early = 275063192,    // readers: identifier, length or contents run past the data
    zr_err_integer_too_long = 275063193,   // INTEGER: contents that do not fit 32 bits; a long outside 32 bits
    zr_err_empty_contents = 275063194,     // raw readers: no contents where a value is required
    zr_err_bad_contents = 275063195,       // contents length wrong for the type; end-of-contents octets missing;
                                           // a length asked for while the encoding is stale
    zr_err_bad_argument = 275063196,       // index out of range; missing argument
    zr_err_indefinite_length = 275063197,  // asnread: indefinite length where the type permits none
    zr_err_constructed_form = 275063198,   // asnread: constructed form where the type permits none
    zr_err_primitive_form = 275063199,     // asnread: primitive form where the type permits none
    zr_err_value_absent = 275063200,       // neither value nor default
    zr_err_bad_bitstring = 275063202,      // BIT STRING: malformed contents
    zr_err_bad_bitstring_segment = 275063203,  // BIT STRING: unused bits in a segment before the last
    zr_err_no_match = 275063204,               // identifier of another field; no CHOICE alternative fits
    zr_err_trailing_data = 275063205,          // SEQUENCE: octets left over inside a definite length
    zr_err_bad_alternative = 275063207,        // CHOICE select: index out of range
    zr_err_nothing_selected = 275063208,       // CHOICE asnwrite: no alternative selected
    zr_err_syntax_bound = 275063209,           // ANY: raw access while a syntax object is bound
    zr_err_too_many_digits = 275063210,        // write1d, write2d, write4d: number too large for the digits
    zr_err_conversion = 275063211,             // code sets: character not representable
    zr_err_code_set = 275063212,               // character strings: code set not accepted
};

// zr_asn_exception is thrown by value and caught at the library's boundary, which prints
// "Exception: %s [%8.8x] in %s at line %d\n" (message, code, file, line) to standard error, or gives it to the sink
// that zr::set_message_sink has set, and returns the code. `file` and `message` point to constant texts.
struct ZR_API zr_asn_exception {
    // Keeps the pointers, not copies of the texts.
    zr_asn_exception(const char* source_file, int source_line, const char* text, unsigned int status)
        : file(source_file), line(source_line), message(text), code(status) {}

    const char* file;     // the source that threw it
    int line;             // in that source
    const char* message;  // in English, for the line that is printed
    unsigned int code;    // the status
};

// Memory is exhausted, or input nests deeper than the object tree follows: code 275062885.
struct ZR_API zr_asn_memexception : zr_asn_exception {
    using zr_asn_exception::zr_asn_exception;
};

// An operation was called that must never be: code 275063191.
struct ZR_API zr_asn_unsupportederror : zr_asn_exception {
    using zr_asn_exception::zr_asn_exception;
};

namespace zr {

// Whether the structure of an entry point's decode is all zero after this status: what was converted or allocated on
// the way is gone. After every other status but 0 it is, octet for octet, as the caller gave it.
constexpr bool clears_structure(int status) { return status == zr_err_out_of_memory || status == zr_err_conversion; }

// The source file that exceptions of the runtime name.
constexpr const char asnbase_file[] = "src/asn1/asnbase";

// Throws zr_asn_memexception for the calling line.
[[noreturn]] ZR_API void throw_out_of_memory(const char* message, const char* file = asnbase_file,
                                             int line = __builtin_LINE());

// Throws zr_asn_unsupportederror for the calling line.
[[noreturn]] ZR_API void throw_unsupported(const char* message, int line = __builtin_LINE());

// Gives the exception to the message sink and gives its code: what every boundary function does with one.
ZR_API int report_exception(const zr_asn_exception& exception);

// The message sink is called for each exception that a boundary function turns into a status, on the calling thread; it
// must not throw. Unless it is replaced it is print_exception.
using message_sink = void (*)(const zr_asn_exception& exception);

// Prints the exception's line to standard error.
ZR_API void print_exception(const zr_asn_exception& exception);

// Replaces the sink of the process, for all threads; null stands for print_exception. Returns the one before. It may be
// called at any time: a call that fails at the same moment goes to the one or to the other.
ZR_API message_sink set_message_sink(message_sink sink) noexcept;

#ifdef __cpp_exceptions
// guarded runs `body`, a callable that returns a status; a zr_asn_exception is reported and its code returned. Any
// other exception passes through.
template <class Body>
int guarded(Body&& body) {
    try {
        return body();
    } catch (const zr_asn_exception& exception) {
        return report_exception(exception);
    }
}
#endif

}  // namespace zr
