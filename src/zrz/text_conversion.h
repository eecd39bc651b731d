// Many texts in one call: one look at the local code set, one converter. This header is not installed; where the site
// has a libzrz of its own, texts go through the classes of zrz/zrz.h instead (asn1/codec/local_texts.h).
#pragma once

#include "zrz/zrz.h"

namespace zr {

enum class text_direction : unsigned char { local_to_utf8, utf8_to_local };

// text_conversion converts texts that a thread gives it one after the other, all between UTF-8 and the local code set
// that the thread has when the object is made. The locale must not be changed while the object is in use.
class text_conversion {
public:
    // Of secret texts nothing stays in a block that is given back.
    ZR_API explicit text_conversion(text_direction direction, bool secret = false);
    ZR_API ~text_conversion();
    text_conversion(const text_conversion&) = delete;
    text_conversion& operator=(const text_conversion&) = delete;

    // Whether the local code set is UTF-8 itself.
    bool changes_nothing() const { return code_set_ == nullptr; }
    // Whether ASCII texts stay as they are.
    static constexpr bool keeps_ascii = true;

    using result = const_text;
    // convert converts one text, from the converter's initial state. What it gives holds until the next call or, when
    // there was nothing to convert, as long as the octets given. Throws as the classes of zrz/zrz.h do.
    ZR_API result convert(const char* chars, size_t length);

private:
    const char* code_set_;  // null for UTF-8
    text_direction direction_;
    bool secret_;
    class converter;
    converter* there_ = nullptr;
    converter* back_ = nullptr;
    converter* make_converter(bool to_utf8) const;

    friend class ::ZUTF8String_5_1;
    friend class ::ZLCString_5_1;
    char* release();
};

}  // namespace zr
