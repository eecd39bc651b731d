#include "asn1/zrasnutf8.h"

#include <cstdlib>
#include <cstring>

#include "asn1/asnbase/default_value.h"
#include "zrz/zrz.h"

namespace {

int store_text(zr_asn_octetstring& object, const char* octets, size_t count) {
    if (count > UINT32_MAX) zr::throw_out_of_memory("Out of memory in buffer_t::extend");
    return object.set_value(reinterpret_cast<const unsigned char*>(octets), static_cast<unsigned int>(count));
}

int hand_out(const char* octets, size_t count, char*& text) {
    auto* copy = count < SIZE_MAX ? static_cast<char*>(std::malloc(count + 1)) : nullptr;
    if (copy == nullptr) return zr_err_out_of_memory;
    if (count != 0) std::memcpy(copy, octets, count);
    copy[count] = '\0';
    text = copy;
    return 0;
}

}  // namespace

zrasnUTF8String::zrasnUTF8String(security_t secure) : zr_asn_UTF8String(secure) { set_type_name("zrUTF8string"); }
zrasnUTF8String::~zrasnUTF8String() = default;

int zrasnUTF8String::set_default_value(zr_asn_object* value) { return zr_asn_UTF8String::set_default_value(value); }

int zrasnUTF8String::set_value(char* text) {
    const size_t count = text != nullptr ? std::strlen(text) : 0;
    if (secure_ != zr_local_code_set || count == 0) return store_text(*this, text, count);
    const ZLCConstString_5_1 local(text, count);
    const ZUTF8String_5_1 utf8(local);
    return store_text(*this, utf8.getChars(), utf8.getLength());
}

int zrasnUTF8String::set_value(unsigned char* text) { return set_value(reinterpret_cast<char*>(text)); }

int zrasnUTF8String::get_value(char*& text) {
    text = nullptr;
    unsigned char* octets = nullptr;
    unsigned int count = 0;
    // An absent value reads as an empty text.
    if (zr_asn_octetstring::get_value(octets, count) != 0) count = 0;
    const char* stored = reinterpret_cast<const char*>(octets);
    if (secure_ != zr_local_code_set || count == 0) return hand_out(stored, count, text);
    const ZUTF8ConstString_5_1 utf8(stored, count);
    const ZLCString_5_1 local(utf8);
    return hand_out(local.getChars(), local.getLength(), text);
}

int zrasnUTF8String::get_value(unsigned char*& text) {
    char* copy = nullptr;
    text = nullptr;
    const int status = get_value(copy);
    text = reinterpret_cast<unsigned char*>(copy);
    return status;
}

int zrasnUTF8String::set_default_value() {
    return zr::install_default<zr_asn_UTF8String>(*this, [](zr_asn_UTF8String& made) {
        char empty_text[] = "";
        return made.set_value_UTF8(empty_text);
    });
}
