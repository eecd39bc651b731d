// A libzrz that has the five classes with their constructors, getChars and getLength, and nothing else. Its local code
// set is like no other: each ASCII letter is the one behind it in the alphabet (behind z comes a), a plus sign is two
// of them, and the octet FF does not exist.
#pragma once

#include <cstddef>
#include <string>

class ZLCConstString_5_1 {
public:
    ZLCConstString_5_1(const char* chars, size_t length) : text(chars, length) {}
    const char* getChars() const { return text.data(); }
    size_t getLength() const { return text.size(); }

private:
    const std::string text;
};

class ZUTF8ConstString_5_1 {
public:
    ZUTF8ConstString_5_1(const char* chars, size_t length) : text(chars, length) {}
    const char* getChars() const { return text.data(); }
    size_t getLength() const { return text.size(); }

private:
    const std::string text;
};

class ZAbstractMutableString_5_1 {
public:
    ZAbstractMutableString_5_1(const ZAbstractMutableString_5_1&) = delete;
    const char* getChars() const { return text.data(); }
    size_t getLength() const { return text.size(); }

protected:
    ZAbstractMutableString_5_1() = default;
    std::string text;
};

class ZUTF8String_5_1 : public ZAbstractMutableString_5_1 {
public:
    explicit ZUTF8String_5_1(const ZLCConstString_5_1& local);
};

class ZLCString_5_1 : public ZAbstractMutableString_5_1 {
public:
    explicit ZLCString_5_1(const ZUTF8ConstString_5_1& utf8);
};
