#include "asn1/asn1.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "asn1/status.h"

namespace {

// Enough when `wanted` octets are left: the one comparison of a content length with what remains.
int check_remaining(const unsigned int* remaining, unsigned int wanted) {
    return *remaining < wanted ? zr_err_data_ends_early : 0;
}

void consume(unsigned char** cursor, unsigned int* remaining, unsigned int octets) {
    *cursor += octets;
    *remaining -= octets;
}

// A copy of `len` octets in a malloc block; null when memory is out.
unsigned char* copy_block(const unsigned char* octets, unsigned int len) {
    auto* block = static_cast<unsigned char*>(std::malloc(len));
    if (block != nullptr && len != 0) std::memcpy(block, octets, len);
    return block;
}

}  // namespace

extern "C" {

int zrAsnGetType(unsigned char** cursor, unsigned int* remaining, unsigned int* tag, unsigned int* constructed,
                 unsigned int* tagClass) {
    if (*remaining == 0) return zr_err_data_ends_early;
    const unsigned char* at = *cursor;
    const unsigned int identifier = *at;
    unsigned int number = identifier & 0x1F;
    if (number < 31) {
        consume(cursor, remaining, 1);
    } else {
        // Kept as callers know it: the number starts with the identifier octet's own low bits and ends before its last
        // octet, and the position goes to the slot after *cursor.
        unsigned int left = *remaining - 1;
        number = 0;
        do {
            if (left == 0) return zr_err_data_ends_early;
            number = (number << 7) + (*at & 0x7Fu);
            ++at;
            --left;
        } while ((*at & 0x80) != 0);
        cursor[1] = const_cast<unsigned char*>(at);
        *remaining = left;
    }
    *tag = number;
    *constructed = (identifier >> 5) & 1;
    *tagClass = identifier >> 6;
    return 0;
}

int zrAsnGetLength(unsigned char** cursor, unsigned int* remaining, unsigned int* definite, unsigned int* length) {
    if (*remaining == 0) return zr_err_data_ends_early;
    *definite = 1;
    const unsigned int first = **cursor;
    if (first < 0x80) {
        *length = first;
        consume(cursor, remaining, 1);
        return 0;
    }
    *length = 0;
    if (first == 0x80) {
        *definite = 0;
        consume(cursor, remaining, 1);
        return 0;
    }
    const unsigned int count = first & 0x7F;
    const unsigned char* octets = *cursor + 1;
    for (unsigned int i = 0; i < count; ++i) {
        if (i >= *remaining - 1) return zr_err_data_ends_early;
        *length = (*length << 8) + octets[i];
    }
    consume(cursor, remaining, 1 + count);
    return 0;
}

int zrAsnGetNullValue(unsigned char**, unsigned int*, unsigned int) { return 0; }

int zrAsnGetBitstringValue(unsigned char** cursor, unsigned int* remaining, unsigned int len, unsigned char** out,
                           unsigned int* bitCount) {
    if (len > 4) return zr_err_integer_too_long;
    if (len == 0) return zr_err_empty_contents;
    if (int status = check_remaining(remaining, len)) return status;
    const unsigned int unused = **cursor;
    if (unused > 7 || (len == 1 && unused != 0)) return zr_err_bad_contents;
    unsigned char* block = copy_block(*cursor + 1, len - 1);
    *out = block;
    if (block == nullptr) return zr_err_out_of_memory;
    *out = block + (len - 1);
    *bitCount = (len - 1) * 8 - unused;
    if (unused != 0) {
        unsigned char& last = (*cursor)[len - 1];
        last = static_cast<unsigned char>(last & (0xFFu << unused));
    }
    consume(cursor, remaining, len);
    return 0;
}

int zrAsnGetOIDValue(unsigned char** cursor, unsigned int* remaining, unsigned int len, zr_asn_buffer_t* out) {
    if (out == nullptr) return zr_err_bad_argument;
    if (len == 0) return zr_err_empty_contents;
    if (int status = check_remaining(remaining, len)) return status;
    out->data = copy_block(*cursor, len);
    if (out->data == nullptr) return zr_err_out_of_memory;
    out->length = len;
    consume(cursor, remaining, len);
    return 0;
}

int zrAsnGetOctetstringValue(unsigned char** cursor, unsigned int* remaining, unsigned int len, unsigned char** out,
                             unsigned int* outLength) {
    if (len == 0) return zr_err_empty_contents;
    if (int status = check_remaining(remaining, len)) return status;
    *out = copy_block(*cursor, len);
    if (*out == nullptr) return zr_err_out_of_memory;
    *outLength = len;
    consume(cursor, remaining, len);
    return 0;
}

}  // extern "C"

int zrAsnGetIntegerValue(unsigned char** cursor, unsigned int* remaining, unsigned int len, long* value) {
    if (len > 4) return zr_err_integer_too_long;
    if (int status = check_remaining(remaining, len)) return status;
    uint32_t bits = *remaining != 0 && (**cursor & 0x80) != 0 ? 0xFFFFFFFFu : 0;
    for (unsigned int i = 0; i < len; ++i)
        bits = (bits << 8) + (*cursor)[i];
    *value = static_cast<int32_t>(bits);
    consume(cursor, remaining, len);
    return 0;
}

int zrAsnGetIntegerValue(unsigned char** cursor, unsigned int* remaining, unsigned int len, unsigned char** out,
                         unsigned int* outLength, int littleEndian) {
    if (len > 4) return zr_err_integer_too_long;
    if (len == 0) return zr_err_empty_contents;
    if (int status = check_remaining(remaining, len)) return status;
    unsigned char* block = copy_block(*cursor, len);
    *out = block;
    if (block == nullptr) return zr_err_out_of_memory;
    *outLength = len;
    if (littleEndian == 0) {
        *out = block + len;
    } else {
        // These readings step the caller's pointer backwards, out of the block; only the first octet has a place in
        // it. With 1 and more than one octet the slot used is not the caller's variable at all: nothing is stored.
        const bool in_callers_slot = littleEndian != 1 || len == 1;
        std::memset(block + (in_callers_slot ? 1 : 0), 0, len - (in_callers_slot ? 1 : 0));
        if (in_callers_slot) *out = reinterpret_cast<unsigned char*>(reinterpret_cast<uintptr_t>(block) - len);
    }
    consume(cursor, remaining, len);
    return 0;
}

int zrAsnGetLongIntegerValueBigEndian(unsigned char** cursor, unsigned int* remaining, unsigned int len,
                                      unsigned char** out, unsigned int* outLength) {
    return zrAsnGetIntegerValue(cursor, remaining, len, out, outLength, 0);
}

int zrAsnGetLongIntegerValueLittleEndian(unsigned char** cursor, unsigned int* remaining, unsigned int len,
                                         unsigned char** out, unsigned int* outLength) {
    return zrAsnGetIntegerValue(cursor, remaining, len, out, outLength, 1);
}

int zrAsnGetCharstringValue(unsigned char** cursor, unsigned int* remaining, unsigned int len, char*) {
    if (len == 0) return zr_err_empty_contents;
    if (int status = check_remaining(remaining, len)) return status;
    // The scratch block is nobody's: only its failure can be seen. Volatile keeps the compiler from assuming that an
    // unused allocation succeeds.
    char* volatile scratch = len == UINT32_MAX ? nullptr : static_cast<char*>(std::malloc(size_t{len} + 1));
    if (scratch == nullptr) return zr_err_out_of_memory;
    std::free(scratch);
    (*cursor)[len] = 0;
    consume(cursor, remaining, len);
    return 0;
}
