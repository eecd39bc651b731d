// Conversions between code sets, named source-to-target: UTF8, BMP, U (universal), IA5 (octets, taken as ISO 8859-1),
// P (printable), V (visible), T61.
//
// Each appends the text at the cursor, which it does not move, to `out`, which must not be the buffer that is read. 0,
// or 275063211 when a character has no form in the target. "Reset" below: `out` is then as it was; "kept": the
// characters before it stay. Octets missing from the last character are taken from the cursor's fill octet.
#pragma once

#include "asn1/asnbase/buffer.h"

ZR_API int IA52UTF8(zr_r_buffer_t in, zr_buffer_t& out);  // never fails
ZR_API int BMP2UTF8(zr_r_buffer_t in, zr_buffer_t& out);  // never fails; surrogates as they stand, three octets each
// U2UTF8 gives up to six octets a character and never fails: values from 80000000 are skipped.
ZR_API int U2UTF8(zr_r_buffer_t in, zr_buffer_t& out);

// The UTF-8 decoder refuses lead octets 80 to BF, FE and FF only: what follows a lead octet is not checked, nor are
// overlong forms and surrogates. Values are unsigned modulo 2^32.
ZR_API int UTF82U(zr_r_buffer_t in, zr_buffer_t& out);    // kept
ZR_API int UTF82BMP(zr_r_buffer_t in, zr_buffer_t& out);  // kept; values above FFFF fail
ZR_API int UTF82IA5(zr_r_buffer_t in, zr_buffer_t& out);  // kept; values above FF fail

ZR_API int U2BMP(const zr_r_buffer_t& in, zr_buffer_t& out);    // reset; values above FFFF fail
ZR_API int U2IA5(const zr_r_buffer_t& in, zr_buffer_t& out);    // reset; values above FF fail
ZR_API int BMP2U(const zr_r_buffer_t& in, zr_buffer_t& out);    // never fails
ZR_API int BMP2IA5(const zr_r_buffer_t& in, zr_buffer_t& out);  // reset; values above FF fail
ZR_API int IA52BMP(const zr_r_buffer_t& in, zr_buffer_t& out);  // never fails
ZR_API int IA52U(const zr_r_buffer_t& in, zr_buffer_t& out);    // never fails

// These four replace what `out` held. The first two fail, with `out` untouched, when an octet is not in the
// repertoire; the others never fail.
ZR_API int IA52P(const zr_r_buffer_t& in, zr_buffer_t& out);
ZR_API int IA52V(const zr_r_buffer_t& in, zr_buffer_t& out);
ZR_API int P2IA5(const zr_r_buffer_t& in, zr_buffer_t& out);
ZR_API int V2IA5(const zr_r_buffer_t& in, zr_buffer_t& out);

ZR_API int T612BMP(const zr_r_buffer_t& in, zr_buffer_t& out);  // reset
ZR_API int T612IA5(const zr_r_buffer_t& in, zr_buffer_t& out);  // reset; by way of BMP
ZR_API int IA52T61(const zr_r_buffer_t& in, zr_buffer_t& out);  // reset
