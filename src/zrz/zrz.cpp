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
#include "zrz/latin1.h"
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

// What converts, one of the C library's converters unless the code set is ISO 8859-1, and the block that it converts
// into.
class zr::text_conversion::converter {
public:
    converter(const char* local, bool to_utf8, bool secret)
        : to_utf8_(to_utf8), secret_(secret), is_latin1_(zr::is_latin1(local)) {
        if (is_latin1_) return;
        cd_ = to_utf8 ? iconv_open(utf8_name, local) : iconv_open(local, utf8_name);
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

    // Whether it may leave tag characters out.
    bool drops_tags() const { return !to_utf8_ && !is_latin1_; }

    // Converts all of `text`. What it gives is this object's; a zero octet follows it.
    const_text run(const const_text& text) {
        used_ = 0;
        if (is_latin1_) {
            convert_latin1(text);
        } else {
            convert_by_steps(text);
        }
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
    static iconv_t no_descriptor() { return reinterpret_cast<iconv_t>(intptr_t{-1}); }
    bool is_open() const { return cd_ != no_descriptor(); }

    // Makes a block of at least so many octets, of which none counts yet.
    void make_room(size_t octets) {
        if (capacity_ < octets) grow(octets);
    }

    void convert_latin1(const const_text& text) {
        constexpr size_t spare = 256;  // so much that short texts may double
        static_assert(spare > spare / 2 + latin1_slack);
        const size_t length = text.getLength();
        const auto* from = reinterpret_cast<const unsigned char*>(text.getChars());
        const size_t most = to_utf8_ && length > spare / 2 ? utf8_octets_of_latin1(from, length) : length;
        if (most > SIZE_MAX - spare) throw_no_memory();
        make_room(most + spare);
        auto* to = reinterpret_cast<unsigned char*>(block_);
        const unsigned char* end = to_utf8_ ? latin1_to_utf8(from, length, to) : utf8_to_latin1(from, length, to);
        if (end == nullptr) throw_unconvertible(to_utf8_);
        used_ = static_cast<size_t>(end - to);
    }

    void convert_by_steps(const const_text& text) {
        make_room(text.getLength() + text.getLength() / 2 + 32);
        char* next = const_cast<char*>(text.getChars());  // iconv only reads it
        size_t left = text.getLength();
        step(&next, &left);
        // Code sets with combined characters hold the last one back until they are told that none follows. That also
        // brings the converter back to its initial state.
        step(nullptr, nullptr);
    }

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
        if (used_ == 0) give_back();
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
        capacity_ = 0;
    }

    bool to_utf8_;
    bool secret_;
    bool is_latin1_;
    iconv_t cd_ = no_descriptor();
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
    if (there_->drops_tags() && has_tag_characters(text)) {
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
