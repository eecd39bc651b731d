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

octet_position quick_octets(octet_position at, octet_position end, unsigned char*& data, uint32_t& length,
                            const char* file) {
    octet_position stop = nullptr;
    at = quick_contents(at, end, id_octet_string, stop);
    if (at == nullptr || at == stop) return at;
    const auto count = static_cast<size_t>(stop - at);
    auto* block = static_cast<unsigned char*>(std::malloc(count));
    if (__builtin_expect(block == nullptr, 0)) throw_memory_error(file);
    data = block;
    length = static_cast<uint32_t>(count);
    copy_octets(block, at, count);
    return stop;
}

}  // namespace zr
