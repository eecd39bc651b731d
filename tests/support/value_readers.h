// The raw readers of values as a table: what is the same for all and where they differ.
#pragma once

#include <cstdint>
#include <cstdlib>

#include "asn1/asn1.h"

namespace zr_test {

// What a value reader gives. `block` is where its block starts, wherever the reader left the caller's pointer.
struct outputs {
    long value = 77;
    unsigned char* pointer = nullptr;
    unsigned int count = 77;
};

using reader_function = int (*)(unsigned char** cursor, unsigned int* remaining, unsigned int len, outputs& out);

template <int (*Read)(unsigned char**, unsigned int*, unsigned int, unsigned char**, unsigned int*)>
constexpr reader_function block =
    [](auto** c, auto* r, auto len, outputs& o) { return Read(c, r, len, &o.pointer, &o.count); };
template <int Flag>
constexpr reader_function flagged =
    [](auto** c, auto* r, auto len, outputs& o) { return zrAsnGetIntegerValue(c, r, len, &o.pointer, &o.count, Flag); };
inline int read_number(unsigned char** cursor, unsigned int* remaining, unsigned int len, outputs& out) {
    return zrAsnGetIntegerValue(cursor, remaining, len, &out.value);
}
inline int read_oid(unsigned char** cursor, unsigned int* remaining, unsigned int len, outputs& out) {
    zr_asn_buffer_t value{out.count, out.pointer};
    const int status = zrAsnGetOIDValue(cursor, remaining, len, &value);
    out.count = value.length;
    out.pointer = value.data;
    return status;
}
inline int read_text(unsigned char** cursor, unsigned int* remaining, unsigned int len, outputs&) {
    return zrAsnGetCharstringValue(cursor, remaining, len, nullptr);
}

// How far behind its block's start a reader leaves the pointer, and what it counts.
inline long start(unsigned int) { return 0; }
inline long end(unsigned int len) { return len; }
inline long last(unsigned int len) { return static_cast<long>(len) - 1; }
inline long before(unsigned int len) { return len == 1 ? -1 : 0; }
inline long far_before(unsigned int len) { return -static_cast<long>(len); }
inline unsigned int same(unsigned int len) { return len; }
inline unsigned int bits(unsigned int len) { return (len - 1) * 8; }
inline unsigned int none(unsigned int) { return 77; }

inline void* block_of(unsigned char* pointer, long behind) {
    return reinterpret_cast<void*>(reinterpret_cast<uintptr_t>(pointer) - static_cast<uintptr_t>(behind));
}

struct value_reader {
    const char* name;
    reader_function call;
    bool limited;         // to four octets
    bool value_required;  // an empty content is refused
    bool block;           // hands out a block
    long (*behind)(unsigned int len);
    unsigned int (*count)(unsigned int len);
};
const value_reader value_readers[] = {
    {"integer", read_number, true, false, false, start, none},
    {"block", flagged<0>, true, true, true, end, same},
    {"block, flag 1", flagged<1>, true, true, true, before, same},
    {"block, flag -1", flagged<-1>, true, true, true, far_before, same},
    {"bit string", block<zrAsnGetBitstringValue>, true, true, true, last, bits},
    {"oid", read_oid, false, true, true, start, same},
    {"octet string", block<zrAsnGetOctetstringValue>, false, true, true, start, same},
    {"text", read_text, false, true, false, start, none},
    {"big-endian", block<zrAsnGetLongIntegerValueBigEndian>, true, true, true, end, same},
    {"little-endian", block<zrAsnGetLongIntegerValueLittleEndian>, true, true, true, before, same},
};

}  // namespace zr_test
