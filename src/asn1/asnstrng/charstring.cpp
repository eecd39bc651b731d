#include "asn1/asnstrng/charstring.h"

#include <cstring>

#include "asn1/ascii.h"
#include "asn1/asnstrng/chains.h"
#include "asn1/asnstrng/converters.h"

namespace {

// A cursor over a C string; null counts as empty.
zr_r_buffer_t cursor_over(char* text) {
    const size_t octets = text != nullptr ? std::strlen(text) : 0;
    if (octets > UINT32_MAX) zr::throw_out_of_memory("Out of memory in buffer_t::extend");
    return {reinterpret_cast<unsigned char*>(text), static_cast<unsigned int>(octets)};
}

}  // namespace

zr_asn_charstring::zr_asn_charstring(security_t secure) : zr_asn_octetstring(secure) { set_type_name("CHARstring"); }
zr_asn_charstring::~zr_asn_charstring() = default;

void zr_asn_charstring::set_kind(const char* type_name, unsigned int codeset) {
    set_type_name(type_name);
    set_codeset(codeset);
}

int zr_asn_charstring::set_tag(unsigned int tag) { return set_codeset(tag); }
int zr_asn_charstring::is_polymorphic() const { return 1; }

int zr_asn_charstring::check_accepted_codeset(unsigned int) const { return 0; }
int zr_asn_charstring::check_preferred_codeset(unsigned int codeset) const { return check_accepted_codeset(codeset); }

int zr_asn_charstring::set_codeset(unsigned int codeset) {
    if (check_accepted_codeset(codeset) == 0) return zr_err_code_set;
    invalidate_encoding();
    codeset_ = codeset;
    zr_asn_object::set_tag(codeset);
    return 0;
}

unsigned int zr_asn_charstring::get_codeset() const { return codeset_; }

int zr_asn_charstring::set_value_uninterpreted(const char* data, unsigned int len) {
    second_.assign(reinterpret_cast<const unsigned char*>(data), data != nullptr ? len : 0);
    invalidate_value(zr_invalidate_all);
    return set_value_valid();
}

int zr_asn_charstring::set_value_uninterpreted(zr_r_buffer_t& text) {
    return set_value_uninterpreted(reinterpret_cast<const char*>(text.current()), text.remaining());
}

int zr_asn_charstring::store(unsigned int codeset, zr_r_buffer_t& text) {
    set_value_uninterpreted(text);
    // Of an accepted code set: only a class that prefers what it does not accept keeps the one it had.
    static_cast<void>(set_codeset(codeset));
    return 0;
}

int zr_asn_charstring::store_if_accepted(unsigned int codeset, zr_r_buffer_t& text) {
    return check_accepted_codeset(codeset) != 0 ? store(codeset, text) : zr_err_code_set;
}

int zr_asn_charstring::set_value_printable(char* text) {
    zr_r_buffer_t octets = cursor_over(text);
    return set_value_printable(octets);
}
int zr_asn_charstring::set_value_visible(char* text) {
    zr_r_buffer_t octets = cursor_over(text);
    return set_value_visible(octets);
}
int zr_asn_charstring::set_value_T61(char* text) {
    zr_r_buffer_t octets = cursor_over(text);
    return set_value_T61(octets);
}
int zr_asn_charstring::set_value_UTF8(char* text) {
    zr_r_buffer_t octets = cursor_over(text);
    return set_value_UTF8(octets);
}

int zr_asn_charstring::set_value_BMP(unsigned short* text) {
    uint64_t octets = 0;
    if (text != nullptr)
        for (const unsigned short* unit = text; *unit != 0; ++unit)
            octets += 2;
    if (octets > UINT32_MAX) zr::throw_out_of_memory("Out of memory in buffer_t::extend");
    zr_r_buffer_t cursor(reinterpret_cast<unsigned char*>(text), static_cast<unsigned int>(octets));
    return set_value_BMP(cursor);
}

int zr_asn_charstring::set_value_Univ(unsigned int*) {
    zr_r_buffer_t nothing;
    return set_value_Univ(nothing);
}

int zr_asn_charstring::set_value_printable(zr_r_buffer_t& text) { return store_if_accepted(zr_printable, text); }
int zr_asn_charstring::set_value_visible(zr_r_buffer_t& text) { return store_if_accepted(zr_visible, text); }
int zr_asn_charstring::set_value_T61(zr_r_buffer_t& text) { return store_if_accepted(zr_t61, text); }
int zr_asn_charstring::set_value_BMP(zr_r_buffer_t& text) { return store_if_accepted(zr_bmp, text); }
int zr_asn_charstring::set_value_Univ(zr_r_buffer_t& text) { return store_if_accepted(zr_universal, text); }
int zr_asn_charstring::set_value_UTF8(zr_r_buffer_t& text) { return store_if_accepted(zr_utf8, text); }

// The first candidate that is preferred, else the first that is accepted, and can hold the text; `chosen` gets the text
// in it. 0 when there is none.
unsigned int zr_asn_charstring::choose(const zr_code_set (&candidates)[7], const zr_r_buffer_t& ia5,
                                       zr_buffer_t& chosen) const {
    for (const zr_code_set candidate : candidates)
        if (check_preferred_codeset(candidate) != 0 && zr::convert_text(zr_ia5, ia5, candidate, chosen) == 0)
            return candidate;
    for (const zr_code_set candidate : candidates)
        if (check_preferred_codeset(candidate) == 0 && check_accepted_codeset(candidate) != 0 &&
            zr::convert_text(zr_ia5, ia5, candidate, chosen) == 0)
            return candidate;
    return 0;
}

int zr_asn_charstring::set_value_C(char* text) {
    constexpr zr_code_set candidates[] = {zr_printable, zr_t61, zr_visible, zr_ia5, zr_bmp, zr_utf8, zr_universal};
    zr_r_buffer_t local = cursor_over(text);
    // Local2IA5_table maps ASCII to itself and has nothing else.
    if (!zr::is_ascii(local.current(), local.remaining())) return zr_err_conversion;
    zr_buffer_t chosen(mode_);
    auto codeset = static_cast<unsigned int>(preferred_codeset_);
    if (codeset == 0 || zr::convert_text(zr_ia5, local, codeset, chosen) != 0)
        codeset = choose(candidates, local, chosen);
    return codeset != 0 ? store(codeset, chosen) : zr_err_conversion;
}

int zr_asn_charstring::set_value_IA5(char* text, int interpret) {
    zr_r_buffer_t octets = cursor_over(text);
    return set_value_IA5(octets, interpret);
}

int zr_asn_charstring::set_value_IA5(zr_r_buffer_t& text, int interpret) {
    constexpr zr_code_set candidates[] = {zr_printable, zr_t61, zr_visible, zr_ia5, zr_utf8, zr_bmp, zr_universal};
    if (interpret == 0) return store_if_accepted(zr_ia5, text);
    zr_buffer_t converted(mode_);
    switch (preferred_codeset_) {
        case zr_printable:
        case zr_visible:
            // Whether or not the characters are in the repertoire, and as printable either way: kept so.
            return set_value_printable(text);
        case zr_ia5:
            return store_if_accepted(zr_ia5, text);
        case zr_t61:
            if (IA52T61(text, converted) == 0) return set_value_T61(converted);
            break;
        case zr_utf8:
            IA52UTF8(text, converted);
            return set_value_UTF8(converted);
        case zr_universal:
            IA52U(text, converted);
            return set_value_Univ(converted);
        case zr_bmp:
            IA52BMP(text, converted);
            return set_value_BMP(converted);
        default:
            break;
    }
    const unsigned int codeset = choose(candidates, text, converted);
    return codeset != 0 ? store(codeset, converted) : zr_err_code_set;
}

int zr_asn_charstring::find_text(text_source& source) const {
    if (is_present() != 0) {
        source = {second_, codeset_};
        return 0;
    }
    if (is_defaultable() == 0) return zr_err_value_absent;
    const auto* standard = dynamic_cast<const zr_asn_charstring*>(get_default_value());
    if (standard != nullptr) {
        source = {standard->second_, standard->codeset_};
    } else {
        source = {zr_r_buffer_t(), codeset_};
    }
    return 0;
}

int zr_asn_charstring::convert_to(unsigned int target, zr_buffer_t& out) const {
    text_source source{};
    if (int status = find_text(source)) return status;
    return zr::convert_text(source.codeset, source.text, target, out);
}

int zr_asn_charstring::convert_in_place(unsigned int target) {
    text_source source{};
    if (int status = find_text(source)) return status;
    if (source.codeset == target) return 0;
    if (check_accepted_codeset(target) == 0) return zr_err_code_set;
    const bool restricts = target == zr_printable || target == zr_visible;
    if (restricts && source.text.remaining() == 0 && (source.codeset == zr_utf8 || source.codeset == zr_ia5)) return 0;

    zr_buffer_t converted(mode_);
    int status = 0;
    if (target == zr_universal && source.codeset == zr_utf8) {
        status = BMP2U(source.text, converted);  // UTF-8 octets read as BMP units: kept so
    } else if (target == zr_ia5 && source.codeset == zr_visible) {
        status = converted.append(source.text);  // only in place
    } else {
        status = zr::convert_text(source.codeset, source.text, target, converted);
    }
    if (status != 0) return status;
    second_.assign(converted.current(), converted.remaining());
    // A text made visible is named printable, one made UTF-8 is named universal: kept so.
    if (target == zr_visible) target = zr_printable;
    if (target == zr_utf8) target = zr_universal;
    return set_codeset(target);
}

int zr_asn_charstring::convert2IA5() { return convert_in_place(zr_ia5); }
int zr_asn_charstring::convert2printable() { return convert_in_place(zr_printable); }
int zr_asn_charstring::convert2visible() { return convert_in_place(zr_visible); }
int zr_asn_charstring::convert2T61() { return convert_in_place(zr_t61); }
int zr_asn_charstring::convert2BMP() { return convert_in_place(zr_bmp); }
int zr_asn_charstring::convert2Univ() { return convert_in_place(zr_universal); }
int zr_asn_charstring::convert2UTF8() { return convert_in_place(zr_utf8); }

int zr_asn_charstring::convert2IA5(zr_buffer_t& out) const { return convert_to(zr_ia5, out); }
int zr_asn_charstring::convert2printable(zr_buffer_t& out) const { return convert_to(zr_printable, out); }
int zr_asn_charstring::convert2visible(zr_buffer_t& out) const { return convert_to(zr_visible, out); }
int zr_asn_charstring::convert2T61(zr_buffer_t& out) const { return convert_to(zr_t61, out); }
int zr_asn_charstring::convert2BMP(zr_buffer_t& out) const { return convert_to(zr_bmp, out); }
int zr_asn_charstring::convert2Univ(zr_buffer_t& out) const { return convert_to(zr_universal, out); }
int zr_asn_charstring::convert2UTF8(zr_buffer_t& out) const { return convert_to(zr_utf8, out); }

int zr_asn_charstring::get_value_IA5(zr_buffer_t& out) const { return convert2IA5(out); }
int zr_asn_charstring::get_value_printable(zr_buffer_t& out) const { return convert2printable(out); }
int zr_asn_charstring::get_value_visible(zr_buffer_t& out) const { return convert2visible(out); }
int zr_asn_charstring::get_value_T61(zr_buffer_t& out) const { return convert2T61(out); }
int zr_asn_charstring::get_value_BMP(zr_buffer_t& out) const { return convert2BMP(out); }
int zr_asn_charstring::get_value_Univ(zr_buffer_t& out) const { return convert2Univ(out); }
int zr_asn_charstring::get_value_UTF8(zr_buffer_t& out) const { return convert2UTF8(out); }

int zr_asn_charstring::get_value_C(zr_buffer_t& out, char replacement) const {
    if (int status = convert2IA5(out)) return status;
    unsigned char* octets = out.current();
    if (zr::is_ascii(octets, out.length())) return 0;  // IA52Local_table maps it to itself
    for (unsigned int i = 0; i < out.length(); ++i) {
        const int32_t mapped = IA52Local_table[octets[i]];
        if (mapped < 0 && replacement == 0) {
            out.truncate(0);
            return zr_err_conversion;
        }
        octets[i] = static_cast<unsigned char>(mapped < 0 ? replacement : mapped);
    }
    return 0;
}
