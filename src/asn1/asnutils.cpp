#include "asn1/asnutils.h"

#include <cstdlib>
#include <cstring>

int zr_set_strvalue(zr_asn_octetstring& object, unsigned char* text) {
    static const unsigned char empty[] = {0};
    const unsigned char* octets = text != nullptr ? text : empty;
    const size_t count = std::strlen(reinterpret_cast<const char*>(octets)) + 1;
    if (count > UINT32_MAX) zr::throw_out_of_memory("Out of memory in buffer_t::extend");
    return object.set_value(octets, static_cast<unsigned int>(count));
}

int zr_set_strvalue(zr_asn_octetstring& object, char* text) {
    return zr_set_strvalue(object, reinterpret_cast<unsigned char*>(text));
}

int zr_get_strvalue(const zr_asn_octetstring& object, unsigned char*& text) {
    text = nullptr;
    unsigned char* octets = nullptr;
    unsigned int count = 0;
    // An absent value reads as an empty text.
    if (object.get_value(octets, count) != 0 || count < 2) count = 0;
    auto* copy = count < UINT32_MAX ? static_cast<unsigned char*>(std::malloc(size_t{count} + 1)) : nullptr;
    if (copy == nullptr) zr::throw_out_of_memory("Out of memory get_strvalue()", "src/asn1/asnutils");
    if (count != 0) std::memcpy(copy, octets, count);
    copy[count] = 0;
    text = copy;
    return 0;
}

int zr_get_strvalue(const zr_asn_octetstring& object, char*& text) {
    unsigned char* copy = nullptr;
    text = nullptr;
    const int status = zr_get_strvalue(object, copy);
    text = reinterpret_cast<char*>(copy);
    return status;
}

long zr_intvalue(zr_asn_integer& object) {
    long value = 0;
    // Without a value that fits, 0 stands: callers cannot tell.
    static_cast<void>(object.get_value(value));
    return value;
}

void zr_free_strings(int count, char** strings) {
    if (strings == nullptr) return;
    for (int i = 0; i < count; ++i)
        std::free(strings[i]);
    std::free(strings);
}
