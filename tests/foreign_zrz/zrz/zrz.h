// A libzrz that has the five classes with their constructors, getChars and getLength, and nothing else. Its local code
// set is like no other: each ASCII letter is the one behind it in the alphabet (behind z comes a), a plus sign is two
// of them, and the octet FF does not exist.
#pragma once

#include <cstddef>
#include <string>

class some_text {
public:
    some_text() = default;
    some_text(const char* chars, size_t length) : text(chars, length) {}
    const char* getChars() const { return text.data(); }
    size_t getLength() const { return text.size(); }

protected:
    std::string text;
};

struct ZLCConstString_5_1 : some_text {
    using some_text::some_text;
};
struct ZUTF8ConstString_5_1 : some_text {
    using some_text::some_text;
};
struct ZAbstractMutableString_5_1 : some_text {
    ZAbstractMutableString_5_1() = default;
    ZAbstractMutableString_5_1(const ZAbstractMutableString_5_1&) = delete;
};
struct ZUTF8String_5_1 : ZAbstractMutableString_5_1 {
    explicit ZUTF8String_5_1(const ZLCConstString_5_1& local);
};
struct ZLCString_5_1 : ZAbstractMutableString_5_1 {
    explicit ZLCString_5_1(const ZUTF8ConstString_5_1& utf8);
};
