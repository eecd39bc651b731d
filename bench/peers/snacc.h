// The ASN.1 compiler snacc with its arena ("nibble memory"), which is emptied after each record, and its buffers of a
// fixed size.
#pragma once

#include <csetjmp>
#include <cstdio>

extern "C" {
#include <asn-incl.h>
#include <records.h>
}

#include "bench/peers/ber_codec.h"

namespace bench {

constexpr const char* snacc = "snacc";

template <class T, AsnLen (*Encode)(SBuf*, T*), void (*Decode)(SBuf*, T*, AsnLen*, jmp_buf)>
struct snacc_codec : ber_codec<snacc_codec<T, Encode, Decode>> {
    using base = ber_codec<snacc_codec<T, Encode, Decode>>;
    using base::release;
    using value = T;

    static bool encode(heap_block& block, T& record) {
        SBuf buffer;
        SBufInit(&buffer, reinterpret_cast<char*>(scratch()), scratch_size);
        SBufResetInWriteRvsMode(&buffer);
        Encode(&buffer, &record);
        return !SBufWriteError(&buffer) &&
               copy_to_heap(block, SBufDataPtr(&buffer), static_cast<size_t>(SBufDataLen(&buffer)));
    }
    static bool decode(octets in, T& record) {
        static const bool ready = (InitNibbleMem(scratch_size, scratch_size), true);
        SBuf buffer;
        char* data = const_cast<char*>(reinterpret_cast<const char*>(in.data));
        SBufInstallData(&buffer, data, static_cast<long>(in.length));
        AsnLen consumed = 0;
        jmp_buf failed;
        if (!ready || setjmp(failed) != 0) return false;
        Decode(&buffer, &record, &consumed, failed);
        return true;
    }
    static void release(T&) { ResetNibbleMem(); }
};

}  // namespace bench
