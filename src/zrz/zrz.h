// libzrz: texts between the local code set and UTF-8.
//
// The local code set is that of the calling thread's locale (uselocale, else setlocale), as nl_langinfo(CODESET) names
// it; like the C library this demands that it contains ASCII. Nothing is kept from one conversion to the next, so
// threads need not know of each other.
//
// A text is converted whole or not at all: what has no counterpart is never left out or replaced. The conversions throw
// zr_asn_exception (275063211) with a message that names the direction, or zr_asn_memexception when memory ends.
#pragma once

#include <cstddef>

#include "asn1/status.h"

namespace zr {

// const_text shows octets that it does not own.
class ZR_API const_text {
public:
    // Shows `length` octets.
    const_text(const char* chars, size_t length) : chars_(chars), length_(length) {}
    // The first octet.
    const char* getChars() const { return chars_; }
    // In octets.
    size_t getLength() const { return length_; }

private:
    const char* chars_;
    size_t length_;
};

}  // namespace zr

// A constant text in the local code set. The caller's octets must outlive it and what is converted from it.
class ZR_API ZLCConstString_5_1 : public zr::const_text {
public:
    // A C string; null counts as empty. The second form takes `length` octets, zero octets among them.
    explicit ZLCConstString_5_1(const char* chars);
    ZLCConstString_5_1(const char* chars, size_t length) : const_text(chars, length) {}
};

// A constant text in UTF-8. The caller's octets must outlive it and what is converted from it.
class ZR_API ZUTF8ConstString_5_1 : public zr::const_text {
public:
    // A C string; null counts as empty. The second form takes `length` octets, zero octets among them.
    explicit ZUTF8ConstString_5_1(const char* chars);
    ZUTF8ConstString_5_1(const char* chars, size_t length) : const_text(chars, length) {}
};

// The result of a conversion. When there was nothing to convert (ASCII, or a local code set that is UTF-8 itself) it
// shows the octets of its source instead of a copy, and no zero octet follows them unless one follows the source's.
class ZR_API ZAbstractMutableString_5_1 {
public:
    ZAbstractMutableString_5_1(const ZAbstractMutableString_5_1&) = delete;
    ZAbstractMutableString_5_1& operator=(const ZAbstractMutableString_5_1&) = delete;

    // The first octet.
    const char* getChars() const { return chars_; }
    // In octets, without the terminating zero.
    size_t getLength() const { return length_; }

protected:
    // Shows octets that it does not own.
    ZAbstractMutableString_5_1(const char* chars, size_t length) : chars_(chars), length_(length) {}
    ~ZAbstractMutableString_5_1();
    // Takes over `owned`, a block from malloc.
    void adopt(char* owned, size_t length);

private:
    const char* chars_;
    size_t length_;
    char* owned_ = nullptr;
};

// A text of the local code set, converted to UTF-8.
class ZR_API ZUTF8String_5_1 : public ZAbstractMutableString_5_1 {
public:
    // Converts.
    explicit ZUTF8String_5_1(const ZLCConstString_5_1& local);
};

// A text in UTF-8, converted to the local code set.
class ZR_API ZLCString_5_1 : public ZAbstractMutableString_5_1 {
public:
    // Converts.
    explicit ZLCString_5_1(const ZUTF8ConstString_5_1& utf8);
};
