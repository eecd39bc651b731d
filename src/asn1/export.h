// The export marks. The library is built with hidden visibility; what carries ZR_API is its public interface. In the
// static library, whose users are compiled with ZRASN_STATIC, that is hidden too: what is linked with it exports none
// of it.
// A DLL, whose marks are others, exports all names, as linkers do where none is marked.
//
// ZR_CODEC_API marks what the source of a module calls (asn1/codec/define_record.h), which may lie in another program.
// In the library, which is compiled with ZRASN_BUILDING, calls of it are calls of its own.
#pragma once

#if defined(ZRASN_STATIC) || defined(_WIN32)
#define ZR_API
#define ZR_CODEC_API
#else
#define ZR_API __attribute__((visibility("default")))
#ifdef ZRASN_BUILDING
#define ZR_CODEC_API __attribute__((visibility("protected")))
#else
#define ZR_CODEC_API ZR_API
#endif
#endif
