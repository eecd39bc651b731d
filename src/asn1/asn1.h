// Raw BER readers (X.690 clause 8): walk an encoding by hand, without the object tree.
//
// Every reader takes the caller's read position `cursor` and the count of octets left from there, `remaining`. A
// successful call moves *cursor over what it consumed and lowers *remaining by the same amount; a failed one moves
// neither. Value readers take the content length that zrAsnGetLength gave. None looks at the tag: the caller has read
// it and chooses the reader. Blocks handed out come from malloc; the caller frees them.
//
// Each returns 0 or one of
//   275063192  the input ends before the item does      275063193  integer or bit string longer than 4 octets
//   275063194  content length 0 where a value is needed  275063195  bad count of unused bits
//   275063196  no output structure                       275062885  malloc failed
// and writes no output when it fails, except where stated. No reader throws or prints.
#pragma once

#include "asn1/export.h"
#include "asn1/zr_asn_buffer.h"

extern "C" {

// zrAsnGetType reads one identifier: *tag its number, *constructed 0 or 1, *tagClass 0 universal, 1 application,
// 2 context-specific, 3 private.
// Tags of 31 and above (the high-tag-number form) are not read as X.690 8.1.2.4 has it: the identifier octet itself
// takes part in the number, the last octet of the number does not, and the new position goes to cursor[1] while
// *cursor stays. `cursor` must therefore be the first of TWO writable slots wherever the input may hold such a tag.
[[nodiscard]] ZR_API int zrAsnGetType(unsigned char** cursor, unsigned int* remaining, unsigned int* tag,
                                      unsigned int* constructed, unsigned int* tagClass);

// zrAsnGetLength reads one length. The indefinite form 80 gives *definite 0 and *length 0; all others *definite 1.
// Of a length of more than four octets the leading ones are shifted out. The length is not compared with *remaining.
// When the input ends inside the length, *definite and *length have been written already.
[[nodiscard]] ZR_API int zrAsnGetLength(unsigned char** cursor, unsigned int* remaining, unsigned int* definite,
                                        unsigned int* length);

// zrAsnGetNullValue returns 0 and does nothing: no argument is read, nothing is consumed.
ZR_API int zrAsnGetNullValue(unsigned char** cursor, unsigned int* remaining, unsigned int len);

// zrAsnGetBitstringValue copies the data octets of a BIT STRING of at most 24 bits. On return *out points one past
// the block, which starts at *out - (len - 1); *bitCount is the number of bits. The unused low bits of the last octet
// are cleared in the caller's input, not in the copy.
[[nodiscard]] ZR_API int zrAsnGetBitstringValue(unsigned char** cursor, unsigned int* remaining, unsigned int len,
                                                unsigned char** out, unsigned int* bitCount);

// zrAsnGetOIDValue copies the contents octets of an OBJECT IDENTIFIER as they are; the arcs are not decoded.
[[nodiscard]] ZR_API int zrAsnGetOIDValue(unsigned char** cursor, unsigned int* remaining, unsigned int len,
                                          zr_asn_buffer_t* out);

// zrAsnGetOctetstringValue copies the contents of an OCTET STRING; an empty one is refused (275063194).
[[nodiscard]] ZR_API int zrAsnGetOctetstringValue(unsigned char** cursor, unsigned int* remaining, unsigned int len,
                                                  unsigned char** out, unsigned int* outLength);
}

// zrAsnGetIntegerValue reads a two's-complement content of at most 4 octets. A `len` of 0 is accepted and gives -1
// when the octet at *cursor has its top bit set, else 0 (0 when nothing remains).
[[nodiscard]] ZR_API int zrAsnGetIntegerValue(unsigned char** cursor, unsigned int* remaining, unsigned int len,
                                              long* value);

// The block form of zrAsnGetIntegerValue gives a copy of the 1 to 4 content octets.
// `littleEndian` 0: the octets in order; on return *out points one past the block, which starts at *out - *outLength.
// Any other value stores at most the first octet, at the block's start: with 1 it is stored, and *out moved one octet
// before the block, only when `len` is 1, otherwise *out is the block's start; with all others *out ends `len` octets
// before the block. What is not stored is zero. Use the big-endian form.
[[nodiscard]] ZR_API int zrAsnGetIntegerValue(unsigned char** cursor, unsigned int* remaining, unsigned int len,
                                              unsigned char** out, unsigned int* outLength, int littleEndian);

// zrAsnGetIntegerValue's block form with littleEndian 0.
[[nodiscard]] ZR_API int zrAsnGetLongIntegerValueBigEndian(unsigned char** cursor, unsigned int* remaining,
                                                           unsigned int len, unsigned char** out,
                                                           unsigned int* outLength);

// zrAsnGetIntegerValue's block form with littleEndian 1.
[[nodiscard]] ZR_API int zrAsnGetLongIntegerValueLittleEndian(unsigned char** cursor, unsigned int* remaining,
                                                              unsigned int len, unsigned char** out,
                                                              unsigned int* outLength);

// zrAsnGetCharstringValue ends a text in place: it writes a NUL to (*cursor)[len], over the octet that follows the
// text (usually the next identifier), so that the caller reads a C string at its old position. One writable octet
// must follow the text even at the end of the input. `out` is not used. A scratch block of len + 1 octets is
// allocated and released (275062885 when that fails).
[[nodiscard]] ZR_API int zrAsnGetCharstringValue(unsigned char** cursor, unsigned int* remaining, unsigned int len,
                                                 char* out);
