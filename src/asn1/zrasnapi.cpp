#include "asn1/zrasnapi.h"

#include <cstdlib>
#include <cstring>

#include "asn1/zrasnbase.h"

int zrasn_version(const zr_asn_buffer_t& in, unsigned int& flag) { return zr_asnbase::get_encoded_version(in, flag); }

void zr_asn_buffer_free(zr_asn_buffer_t& buffer) { std::free(buffer.data); }

void zr_asn_buffer_copy(const zr_asn_buffer_t& src, zr_asn_buffer_t& dst, unsigned int& status) {
    dst = {0, nullptr};
    status = 0;
    if (src.length == 0 || src.data == nullptr) return;
    dst.length = src.length;
    dst.data = static_cast<unsigned char*>(std::malloc(src.length));
    if (dst.data == nullptr) {
        status = zr_err_out_of_memory;
        return;
    }
    std::memcpy(dst.data, src.data, src.length);
}
