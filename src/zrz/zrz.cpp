#include "zrz/zrz.h"

#include <errno.h>
#include <iconv.h>
#include <langinfo.h>
#include <strings.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>

#include "asn1/ascii.h"
#include "asn1/platform.h"
#include "zrz/text_conversion.h"

namespace {

constexpr const char source_file[] = "src/zrz/zrz";
constexpr const char utf8_name[] = "UTF-8";

size_t length_of(const char* chars) { return chars != nullptr ? std::strlen(chars) : 0; }

[[noreturn]] void throw_no_memory(int line = __builtin_LINE()) {
    throw zr_asn_memexception(source_file, line, "Out of memory in text conversion", zr_err_out_of_memory);
}

[[noreturn]] void throw_unconvertible(bool to_utf8, int line = __builtin_LINE()) {
    throw zr_asn_exception(source_file, line,
                           to_utf8 ? "Text cannot be converted from the local code set to UTF-8"
                                   : "Text cannot be converted from UTF-8 to the local code set",
                           zr_err_conversion);
}

// The name of the calling thread's local code set, or null when that is UTF-8.
const char* local_code_set() {
    const char* local = nl_langinfo(CODESET);
    return strcasecmp(local, utf8_name) == 0 || strcasecmp(local, "UTF8") == 0 ? nullptr : local;
}

// Whether UTF-8 contains one of the tag characters U+E0000 to U+E007F.
bool has_tag_characters(const zr::const_text& text) {
    const char* const end = text.getChars() + text.getLength();
    const char* at = text.getChars();
    while ((at = static_cast<const char*>(std::memchr(at, 0xF3, static_cast<size_t>(end - at)))) != nullptr) {
        if (end - at >= 3 && at[1] == '\xA0' && (at[2] == '\x80' || at[2] == '\x81')) return true;
        ++at;
    }
    return false;
}

}  // namespace

// One of the C library's converters, and the block that it converts into.
class zr::text_conversion::converter {
public:
    converter(const char* local, bool to_utf8, bool secret)
        : to_utf8_(to_utf8),
          secret_(secret),
          cd_(to_utf8 ? iconv_open(utf8_name, local) : iconv_open(local, utf8_name)) {
        if (is_open()) return;
        if (errno == ENOMEM) throw_no_memory();
        throw_unconvertible(to_utf8_);
    }
    ~converter() {
        if (is_open()) iconv_close(cd_);
        give_back();
    }
    converter(const converter&) = delete;
    converter& operator=(const converter&) = delete;

    // Converts all of `text`. What it gives is this object's; a zero octet follows it.
    const_text run(const const_text& text) {
        used_ = 0;
        const size_t likely = text.getLength() + text.getLength() / 2 + 32;
        if (capacity_ < likely) grow(likely);
        char* next = const_cast<char*>(text.getChars());  // iconv only reads it
        size_t left = text.getLength();
        step(&next, &left);
        // Code sets with combined characters hold the last one back until they are told that none follows. That also
        // brings the converter back to its initial state.
        step(nullptr, nullptr);
        // The block is there: grow makes it or throws.
        block_[used_] = '\0';  // NOLINT(clang-analyzer-core.NullDereference)
        return {block_, used_};
    }
    // Hands out the block.
    char* release() {
        char* block = block_;
        block_ = nullptr;
        capacity_ = 0;
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
        auto* grown = capacity > capacity_ ? static_cast<char*>(std::malloc(capacity)) : nullptr;
        if (grown == nullptr) throw_no_memory();
        if (used_ != 0) std::memcpy(grown, block_, used_);
        give_back();
        block_ = grown;
        capacity_ = capacity;
    }
    void give_back() {
        if (secret_ && block_ != nullptr) zr::overwrite(block_, capacity_);
        std::free(block_);
        block_ = nullptr;
    }

    bool to_utf8_;
    bool secret_;
    iconv_t cd_;
    char* block_ = nullptr;
    size_t capacity_ = 0;
    size_t used_ = 0;
};

zr::text_conversion::text_conversion(text_direction direction, bool secret)
    : code_set_(local_code_set()), direction_(direction), secret_(secret) {}

zr::text_conversion::~text_conversion() {
    delete there_;
    delete back_;
}

zr::const_text zr::text_conversion::convert(const char* chars, size_t length) {
    const const_text text(chars, length);
    if (changes_nothing() || is_ascii(chars, length)) return text;
    const bool to_utf8 = direction_ == text_direction::local_to_utf8;
    if (there_ == nullptr) there_ = make_converter(to_utf8);
    const const_text converted = there_->run(text);
    if (!to_utf8 && has_tag_characters(text)) {
        // The C library leaves these out of code sets that lack them and does not say so; the way back shows it.
        if (back_ == nullptr) back_ = make_converter(true);
        const const_text again = back_->run(converted);
        if (again.getLength() != length || std::memcmp(again.getChars(), chars, length) != 0)
            throw_unconvertible(false);
    }
    return converted;
}

char* zr::text_conversion::release() { return there_->release(); }

zr::text_conversion::converter* zr::text_conversion::make_converter(bool to_utf8) const {
    auto* made = new (std::nothrow) converter(code_set_, to_utf8, secret_);
    if (made == nullptr) throw_no_memory();
    return made;
}

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
    zr::text_conversion conversion(zr::text_direction::local_to_utf8);
    const zr::const_text utf8 = conversion.convert(local.getChars(), local.getLength());
    if (utf8.getChars() != local.getChars()) adopt(conversion.release(), utf8.getLength());
}

ZLCString_5_1::ZLCString_5_1(const ZUTF8ConstString_5_1& utf8)
    : ZAbstractMutableString_5_1(utf8.getChars(), utf8.getLength()) {
    zr::text_conversion conversion(zr::text_direction::utf8_to_local);
    const zr::const_text local = conversion.convert(utf8.getChars(), utf8.getLength());
    if (local.getChars() != utf8.getChars()) adopt(conversion.release(), local.getLength());
}
