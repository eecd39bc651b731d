// The same functions as in words.h with SSE2, which every 64-bit x86 has: a third of the instructions. Nothing stands
// here for other machines. Only words.h includes this, behind its own.
#pragma once

#include "asn1/asnstrng/words.h"

#if defined(__SSE2__) && UINTPTR_MAX == UINT64_MAX
#include <emmintrin.h>

namespace zr {

inline __m128i load_vector(const unsigned char* at) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(at)); }
inline void store_vector(unsigned char* at, __m128i value) { _mm_storeu_si128(reinterpret_cast<__m128i*>(at), value); }
inline word left_of(__m128i value) { return most_significant_first(static_cast<word>(_mm_cvtsi128_si64(value))); }

// The last octet of each of eight characters; in `fit`, FF for those whose other octets are zero and 0 for the others.
template <unsigned int Lane>
word load_last_octets(const unsigned char* at, word& fit) {
    const __m128i zero = _mm_setzero_si128();
    const __m128i first = load_vector(at);
    __m128i last = _mm_srli_epi16(first, 8);
    __m128i fits = _mm_cmpeq_epi16(_mm_slli_epi16(first, 8), zero);
    if constexpr (Lane == 32) {
        const __m128i second = load_vector(at + 16);
        last = _mm_packs_epi32(_mm_srli_epi32(first, 24), _mm_srli_epi32(second, 24));
        fits = _mm_packs_epi32(_mm_cmpeq_epi32(_mm_slli_epi32(first, 8), zero),
                               _mm_cmpeq_epi32(_mm_slli_epi32(second, 8), zero));
    }
    fit = left_of(_mm_packs_epi16(fits, fits));
    return left_of(_mm_packus_epi16(last, last));
}

template <>
inline word load_octets<16>(const unsigned char* at) {
    word fit = 0;
    const word octets = load_last_octets<16>(at, fit);
    return octets | ~fit;
}
template <>
inline word load_octets<32>(const unsigned char* at) {
    word fit = 0;
    const word octets = load_last_octets<32>(at, fit);
    return octets | ~fit;
}
template <>
inline word load_fitting<16, 8>(const unsigned char* at, bool& fit) {
    word fits = 0;
    const word octets = load_last_octets<16>(at, fits);
    fit = fits == ~word{0};
    return octets;
}
template <>
inline word load_fitting<32, 8>(const unsigned char* at, bool& fit) {
    word fits = 0;
    const word octets = load_last_octets<32>(at, fits);
    fit = fits == ~word{0};
    return octets;
}

inline __m128i vector_of(word value) {
    return _mm_cvtsi64_si128(static_cast<long long>(most_significant_first(value)));
}
template <>
inline void store_characters<16, 8>(unsigned char* at, word value) {
    store_vector(at, _mm_unpacklo_epi8(_mm_setzero_si128(), vector_of(value)));
}
template <>
inline void store_characters<32, 16>(unsigned char* at, word value) {
    store_vector(at, _mm_unpacklo_epi16(_mm_setzero_si128(), vector_of(value)));
}
template <>
inline void store_characters<32, 8>(unsigned char* at, word value) {
    const __m128i zero = _mm_setzero_si128();
    const __m128i pairs = _mm_unpacklo_epi8(zero, vector_of(value));
    store_vector(at, _mm_unpacklo_epi16(zero, pairs));
    store_vector(at + 16, _mm_unpackhi_epi16(zero, pairs));
}

}  // namespace zr
#endif
