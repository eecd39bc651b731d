#include "asn1/record/direct.h"

#include <cstdlib>

namespace zr {

int open_envelope(const zr_asn_buffer_t& in, input& contents) {
    const unsigned char* data = in.data;
    if (data == nullptr || in.length <= 4 || data[1] != envelope_version || data[2] != 0xAC || data[3] != 0xDC)
        return zr_err_bad_envelope;
    const unsigned int skip = data[0];
    if (skip == 0 || skip > in.length) return zr_err_bad_envelope;
    contents = {data + skip, data + in.length};
    return 0;
}

unsigned char* allocate_encoding(uint64_t length) {
    void* block = length <= UINT32_MAX ? std::malloc(static_cast<size_t>(length)) : nullptr;
    if (block == nullptr) throw_out_of_memory("Out of memory in buffer_t::extend");
    return static_cast<unsigned char*>(block);
}

}  // namespace zr
