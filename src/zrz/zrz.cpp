#include "zrz/zrz.h"

#include <errno.h>
#include <iconv.h>
#include <langinfo.h>
#include <strings.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace {

constexpr const char source_file[] = "src/zrz/zrz";
constexpr const char utf8_name[] = "UTF-8";

size_t length_of(const char* chars) { return chars != nullptr ? std::strlen(chars) : 0; }

[[noreturn]] void throw_out_of_memory(int line = __builtin_LINE()) {
    throw zr_asn_memexception(source_file, line, "Out of memory in text conversion", zr_err_out_of_memory);
}

[[noreturn]] void throw_unconvertible(bool to_utf8, int line = __builtin_LINE()) {
    throw zr_asn_exception(source_file, line,
                           to_utf8 ? "Text cannot be converted from the local code set to UTF-8"
                                   : "Text cannot be converted from UTF-8 to the local code set",
                           zr_err_conversion);
}

bool is_ascii(const zr::const_text& text) {
    const char* chars = text.getChars();
    size_t left = text.getLength();
    for (; left >= sizeof(uint64_t); left -= sizeof(uint64_t), chars += sizeof(uint64_t)) {
        uint64_t octets = 0;
        std::memcpy(&octets, chars, sizeof octets);
        if ((octets & 0x8080808080808080u) != 0) return false;
    }
    for (; left != 0; --left, ++chars)
        if ((static_cast<unsigned char>(*chars) & 0x80) != 0) return false;
    return true;
}

// The name of the local code set, or null when `text` is the same in it and in UTF-8.
const char* code_set_to_convert(const zr::const_text& text) {
    const char* local = nl_langinfo(CODESET);
    if (strcasecmp(local, utf8_name) == 0 || strcasecmp(local, "UTF8") == 0) return nullptr;
    return is_ascii(text) ? nullptr : local;
}

// One conversion, from construction to destruction.
class conversion {
public:
    conversion(const char* local, bool to_utf8)
        : to_utf8_(to_utf8), cd_(to_utf8 ? iconv_open(utf8_name, local) : iconv_open(local, utf8_name)) {
        if (is_open()) return;
        if (errno == ENOMEM) throw_out_of_memory();
        throw_unconvertible(to_utf8_);
    }
    ~conversion() {
        if (is_open()) iconv_close(cd_);
        std::free(block_);
    }
    conversion(const conversion&) = delete;
    conversion& operator=(const conversion&) = delete;

    // Converts all of `text`; release() hands out the block, which has a terminating zero.
    void run(const zr::const_text& text) {
        grow(text.getLength() + text.getLength() / 2 + 32);
        char* next = const_cast<char*>(text.getChars());  // iconv only reads it
        size_t left = text.getLength();
        step(&next, &left);
        // Code sets with combined characters hold the last one back until they are told that none follows.
        step(nullptr, nullptr);
        block_[used_] = '\0';
    }
    size_t length() const { return used_; }
    const char* chars() const { return block_; }
    char* release() {
        char* block = block_;
        block_ = nullptr;
        return block;
    }

private:
    bool is_open() const { return reinterpret_cast<intptr_t>(cd_) != -1; }

    void step(char** next, size_t* left) {
        for (;;) {
            char* end = block_ + used_;
            size_t room = capacity_ - used_ - 1;
            const size_t result = iconv(cd_, next, left, &end, &room);
            used_ = static_cast<size_t>(end - block_);
            if (result == 0) return;
            // A count above 0 is of characters that only resemble the original.
            if (result != static_cast<size_t>(-1) || errno != E2BIG) throw_unconvertible(to_utf8_);
            grow(capacity_ * 2);
        }
    }

    void grow(size_t capacity) {
        void* grown = capacity > capacity_ ? std::realloc(block_, capacity) : nullptr;
        if (grown == nullptr) throw_out_of_memory();
        block_ = static_cast<char*>(grown);
        capacity_ = capacity;
    }

    bool to_utf8_;
    iconv_t cd_;
    char* block_ = nullptr;
    size_t capacity_ = 0;
    size_t used_ = 0;
};

// Whether UTF-8 contains one of the tag characters U+E0000 to U+E007F.
bool has_tag_characters(const zr::const_text& text) {
    const char* const end = text.getChars() + text.getLength();
    const char* at = text.getChars();
    while ((at = static_cast<const char*>(std::memchr(at, '\xF3', static_cast<size_t>(end - at)))) != nullptr) {
        if (end - at >= 3 && at[1] == '\xA0' && (at[2] == '\x80' || at[2] == '\x81')) return true;
        ++at;
    }
    return false;
}

}  // namespace

ZLCConstString_5_1::ZLCConstString_5_1(const char* chars) : const_text(chars, length_of(chars)) {}
ZUTF8ConstString_5_1::ZUTF8ConstString_5_1(const char* chars) : const_text(chars, length_of(chars)) {}

ZAbstractMutableString_5_1::~ZAbstractMutableString_5_1() { std::free(owned_); }

void ZAbstractMutableString_5_1::adopt(char* owned, size_t length) {
    std::free(owned_);
    chars_ = owned_ = owned;
    length_ = length;
}

ZUTF8String_5_1::ZUTF8String_5_1(const ZLCConstString_5_1& local)
    : ZAbstractMutableString_5_1(local.getChars(), local.getLength()) {
    const char* code_set = code_set_to_convert(local);
    if (code_set == nullptr) return;
    conversion converted(code_set, true);
    converted.run(local);
    const size_t length = converted.length();
    adopt(converted.release(), length);
}

ZLCString_5_1::ZLCString_5_1(const ZUTF8ConstString_5_1& utf8)
    : ZAbstractMutableString_5_1(utf8.getChars(), utf8.getLength()) {
    const char* code_set = code_set_to_convert(utf8);
    if (code_set == nullptr) return;
    conversion converted(code_set, false);
    converted.run(utf8);
    const size_t length = converted.length();
    if (has_tag_characters(utf8)) {
        // The C library leaves these out of code sets that lack them and does not say so; the way back shows it.
        conversion back(code_set, true);
        back.run(zr::const_text(converted.chars(), length));
        if (back.length() != utf8.getLength() || std::memcmp(back.chars(), utf8.getChars(), back.length()) != 0)
            throw_unconvertible(false);
    }
    adopt(converted.release(), length);
}
