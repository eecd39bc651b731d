#include "asn1/codec/quick_reader.h"

#include <cstdlib>

#include "asn1/codec/value_reader.h"

namespace zr {

octet_position quick_text(octet_position at, octet_position end, char*& text) {
    octet_position stop = nullptr;
    at = quick_contents(at, end, id_utf8_string, stop);
    if (at == nullptr) return nullptr;
    const auto length = static_cast<size_t>(stop - at);
    auto* block = static_cast<char*>(std::malloc(length + 1));
    text = block;
    if (__builtin_expect(block != nullptr, 1)) {
        copy_octets(reinterpret_cast<unsigned char*>(block), at, length);
        block[length] = 0;
    }
    return stop;
}

octet_position quick_stored_text(octet_position at, octet_position end, char*& text) {
    octet_position stop = nullptr;
    at = quick_contents(at, end, id_octet_string, stop);
    if (at == nullptr) return nullptr;
    const auto stored = static_cast<size_t>(stop - at);
    const size_t length = stored < 2 ? 0 : stored;
    auto* block = static_cast<char*>(std::malloc(length + 1));
    if (__builtin_expect(block == nullptr, 0)) throw_stored_text_memory_error();
    text = block;
    copy_octets(reinterpret_cast<unsigned char*>(block), at, length);
    block[length] = 0;
    return stop;
}

namespace {

// `no_memory` throws.
template <class NoMemory>
ZR_INLINE octet_position read_octets(octet_position at, octet_position end, unsigned char*& data, uint32_t& length,
                                     const NoMemory& no_memory) {
    octet_position stop = nullptr;
    at = quick_contents(at, end, id_octet_string, stop);
    if (at == nullptr || at == stop) return at;
    const auto count = static_cast<size_t>(stop - at);
    auto* block = static_cast<unsigned char*>(std::malloc(count));
    if (__builtin_expect(block == nullptr, 0)) no_memory();
    data = block;
    length = static_cast<uint32_t>(count);
    copy_octets(block, at, count);
    return stop;
}

}  // namespace

octet_position quick_octets(octet_position at, octet_position end, unsigned char*& data, uint32_t& length,
                            const char* file) {
    return read_octets(at, end, data, length, [file] { throw_memory_error(file); });
}

octet_position quick_optional_octets(octet_position at, octet_position end, unsigned char*& data, uint32_t& length) {
    return read_octets(at, end, data, length, throw_body_memory_error);
}

}  // namespace zr
