// zrasn/c.h: octets, structures and JSON, each to each other.
#include <cstdlib>
#include <cstring>
#include <memory>

#include "json/base/record_holder.h"
#include "json/c/call.h"
#include "json/document/record_writer.h"
#include "zrasn/guard.h"

namespace zr::json {
namespace {

input_octets input(const void* octets, size_t size) { return {static_cast<const unsigned char*>(octets), size}; }

int write(call& call, const record_type& type, const void* structure, char** json, size_t* length, size_t consumed) {
    text_output out(call.most_text());
    write_json(out, type, structure, call.is_indented() ? json_layout::indented : json_layout::one_line,
               call.secrets());
    return give(call, out, json, length, consumed);
}

int read(call& call, const record_type& type, const input_octets& json, void* structure) {
    const decode_limits limits = call.decoding().limits;
    if (json.size > limits.octets && limits.octets != UINT32_MAX)
        return call.refuse(zr_err_out_of_memory, "limit_octets", "the text is longer than the limit");
    json_error error;
    return read_json(json.text(), type, structure, error, limits) ? static_cast<int>(zr_ok) : call.refuse(error);
}

// Hands over the octets of the structure.
int encode(call& call, const record_type& type, const void* structure, unsigned char** octets, size_t* size) {
    encoding made;
    const int status = type.encode(made.out(), structure, static_cast<int>(call.version()));
    if (status != zr_ok) return call.refuse(status);
    zr_asn_buffer_t buffer = made.release();
    if (call.is_bare()) {
        buffer.length -= static_cast<unsigned>(envelope_header_octets);
        std::memmove(buffer.data, buffer.data + envelope_header_octets, buffer.length);
    }
    *octets = buffer.data;
    *size = buffer.length;
    return call.succeed();
}

// Hands over a structure that `fill` fills.
template <class Fill>
int make_structure(const record_type& type, void** structure, Fill&& fill) {
    record_holder made(type);
    const int status = fill(made.get());
    if (status == zr_ok) *structure = made.release();
    return status;
}

}  // namespace
}  // namespace zr::json

using namespace zr::json;

int zrasn_to_json(const zrasn_record* record, const void* octets, size_t size, const zrasn_options* options,
                  char** json, size_t* length, zrasn_report* report) {
    call call(options, report);
    const bool complete = clear_text(json, length) && record != nullptr && (octets != nullptr || size == 0);
    return call.run(complete, [&] {
        record_holder held(type_of(record));
        size_t consumed = 0;
        const int status = call_decode(call, type_of(record), input(octets, size), held.get(), consumed);
        return status != 0 ? status : write(call, type_of(record), held.get(), json, length, consumed);
    });
}

int zrasn_from_json(const zrasn_record* record, const char* json, size_t length, const zrasn_options* options,
                    unsigned char** octets, size_t* size, zrasn_report* report) {
    call call(options, report);
    const bool complete = clear_text(octets, size) && record != nullptr && (json != nullptr || length == 0);
    return call.run(complete, [&] {
        record_holder held(type_of(record));
        const int status = read(call, type_of(record), input(json, length), held.get());
        return status != 0 ? status : encode(call, type_of(record), held.get(), octets, size);
    });
}

int zrasn_structure_to_json(const zrasn_record* record, const void* structure, const zrasn_options* options,
                            char** json, size_t* length, zrasn_report* report) {
    call call(options, report);
    return call.run(clear_text(json, length) && record != nullptr && structure != nullptr,
                    [&] { return write(call, type_of(record), structure, json, length, 0); });
}

int zrasn_json_to_structure(const zrasn_record* record, const char* json, size_t length, const zrasn_options* options,
                            void** structure, zrasn_report* report) {
    call call(options, report);
    const bool complete = clear(structure) && record != nullptr && (json != nullptr || length == 0);
    return call.run(complete, [&] {
        return make_structure(type_of(record), structure, [&](void* made) {
            const int status = read(call, type_of(record), input(json, length), made);
            return status != 0 ? status : call.succeed();
        });
    });
}

int zrasn_decode(const zrasn_record* record, const void* octets, size_t size, const zrasn_options* options,
                 void** structure, zrasn_report* report) {
    call call(options, report);
    size_t consumed = 0;
    const bool complete = clear(structure) && record != nullptr && (octets != nullptr || size == 0);
    return call.run(complete, [&] {
        return make_structure(type_of(record), structure, [&](void* made) {
            const int status = call_decode(call, type_of(record), input(octets, size), made, consumed);
            return status != 0 ? status : call.succeed(consumed);
        });
    });
}

int zrasn_encode(const zrasn_record* record, const void* structure, const zrasn_options* options,
                 unsigned char** octets, size_t* size, zrasn_report* report) {
    call call(options, report);
    return call.run(clear_text(octets, size) && record != nullptr && structure != nullptr,
                    [&] { return encode(call, type_of(record), structure, octets, size); });
}

void zrasn_structure_free(const zrasn_record* record, void* structure) {
    if (record == nullptr || structure == nullptr) return;
    type_of(record).free(structure);
    std::free(structure);
}
