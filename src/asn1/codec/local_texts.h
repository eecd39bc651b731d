// How the codec converts texts between the local code set and UTF-8. With our own libzrz the local code set is looked
// at once in a call; where the site has a libzrz of its own, every text that is not empty goes through its classes.
#pragma once

#ifndef ZRASN_FOREIGN_ZRZ
#include "zrz/text_conversion.h"
#else
#include <optional>

#include "zrz/zrz.h"

namespace zr {

enum class text_direction : unsigned char { local_to_utf8, utf8_to_local };

class text_conversion {
public:
    // What the classes do with the blocks of secret texts is theirs.
    explicit text_conversion(text_direction direction, bool = false) : direction_(direction) {}

    struct result {
        const char* getChars() const { return chars; }
        size_t getLength() const { return length; }
        const char* chars;
        size_t length;
    };

    static constexpr bool changes_nothing() { return false; }
    static constexpr bool keeps_ascii = false;

    // What it gives holds until the next call or, if the classes show their source, as long as that.
    result convert(const char* chars, size_t length) {
        if (length == 0) return {chars, 0};
        if (direction_ == text_direction::local_to_utf8) {
            utf8_.emplace(ZLCConstString_5_1(chars, length));
            return {utf8_->getChars(), utf8_->getLength()};
        }
        local_.emplace(ZUTF8ConstString_5_1(chars, length));
        return {local_->getChars(), local_->getLength()};
    }

private:
    text_direction direction_;
    std::optional<ZUTF8String_5_1> utf8_;
    std::optional<ZLCString_5_1> local_;
};

}  // namespace zr
#endif

namespace zr {

// Puts a converted text in the place of one whose malloc block has `room` octets besides the zero octet: into that
// block, or where it is longer into another one. Null when there is no memory for that.
void replace_text(char*& text, size_t room, const text_conversion::result& converted);

}  // namespace zr
