#include "asn1/asnstrng/string_types.h"

zr_asn_ia5String::zr_asn_ia5String(security_t secure) : zr_asn_charstring(secure) { set_kind("IA5string", zr_ia5); }
zr_asn_printableString::zr_asn_printableString(security_t secure) : zr_asn_charstring(secure) {
    set_kind("PRINTABLEstring", zr_printable);
}
zr_asn_visibleString::zr_asn_visibleString(security_t secure) : zr_asn_charstring(secure) {
    set_kind("VISIBLEstring", zr_visible);
}
zr_asn_teletexString::zr_asn_teletexString(security_t secure) : zr_asn_charstring(secure) {
    set_kind("TELETEXstring", zr_t61);
}
zr_asn_bmpString::zr_asn_bmpString(security_t secure) : zr_asn_charstring(secure) { set_kind("BMPstring", zr_bmp); }
zr_asn_universalString::zr_asn_universalString(security_t secure) : zr_asn_charstring(secure) {
    set_kind("UNIVERSALstring", zr_universal);
}
zr_asn_UTF8String::zr_asn_UTF8String(security_t secure) : zr_asn_charstring(secure) { set_kind("UTF8string", zr_utf8); }
zr_asn_directoryString::zr_asn_directoryString(security_t secure) : zr_asn_charstring(secure) {
    set_kind("DIRECTORYstring", zr_printable);
}

zr_asn_ia5String::~zr_asn_ia5String() = default;
zr_asn_printableString::~zr_asn_printableString() = default;
zr_asn_visibleString::~zr_asn_visibleString() = default;
zr_asn_teletexString::~zr_asn_teletexString() = default;
zr_asn_bmpString::~zr_asn_bmpString() = default;
zr_asn_universalString::~zr_asn_universalString() = default;
zr_asn_UTF8String::~zr_asn_UTF8String() = default;
zr_asn_directoryString::~zr_asn_directoryString() = default;

int zr_asn_directoryString::check_type(unsigned int tag, int cls) const {
    return cls == get_class() && tag != zr_visible && check_accepted_codeset(tag) != 0 ? 1 : 0;
}

int zr_asn_directoryString::check_accepted_codeset(unsigned int codeset) const {
    switch (codeset) {
        case zr_utf8:
        case zr_printable:
        case zr_t61:
        case zr_ia5:
        case zr_visible:
        case zr_universal:
        case zr_bmp:
            return 1;
        default:
            return 0;
    }
}

int zr_asn_directoryString::check_preferred_codeset(unsigned int codeset) const {
    return codeset == zr_utf8 || codeset == zr_printable || codeset == zr_t61 || codeset == zr_universal ? 1 : 0;
}

int zr_asn_directoryString::set_preferred_codeset(unsigned int codeset) {
    if (convert2printable() == 0) return 0;
    switch (codeset) {
        case zr_utf8:
        case zr_t61:
        case zr_universal:
        case zr_bmp:
            break;
        default:
            return -1;
    }
    const int status = convert_in_place(codeset);
    if (status == 0) preferred_codeset_ = static_cast<int32_t>(codeset);
    return status;
}

int zr_asn_directoryString::normalize() {
    constexpr zr_code_set order[] = {zr_printable, zr_t61, zr_visible, zr_ia5, zr_utf8, zr_bmp};
    if (is_present() == 0 && is_defaultable() == 0) return zr_err_value_absent;
    if (preferred_codeset_ != 0 && convert_in_place(static_cast<unsigned int>(preferred_codeset_)) == 0) return 0;
    for (const zr_code_set codeset : order)
        if (check_preferred_codeset(codeset) != 0 && convert_in_place(codeset) == 0) return 0;
    // Universal is preferred, and holds every text: the classes derived from this one may say otherwise.
    if (check_preferred_codeset(zr_universal) == 0) {
        for (const zr_code_set codeset : order)
            if (convert_in_place(codeset) == 0) return 0;
    }
    return convert2Univ();
}
