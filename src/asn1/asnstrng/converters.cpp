#include "asn1/asnstrng/converters.h"

#include "asn1/asnstrng/repertoire.h"
#include "asn1/asnstrng/text_writer.h"
#include "asn1/status.h"

namespace {

// Sources: each reads the next character of a text, whose octets it asks of `octets`. False when it is malformed.

template <unsigned int Octets>
struct fixed_width {
    static bool next(zr::octet_reader& octets, uint32_t& value) {
        value = octets.next();
        for (unsigned int i = 1; i < Octets; ++i)
            value = value << 8 | octets.next();
        return true;
    }
};
using ia5_source = fixed_width<1>;
using bmp_source = fixed_width<2>;
using universal_source = fixed_width<4>;

// Deliberately permissive: the octets behind the lead octet are not checked, nor is the value.
struct utf8_source {
    static bool next(zr::octet_reader& octets, uint32_t& value) {
        const uint32_t lead = octets.next();
        value = lead;
        if (lead < 0x80) return true;
        if (lead < 0xC0 || lead > 0xFD) return false;
        if (lead < 0xE0) return follow(octets, 1, value = lead - 0xC0);
        if (lead < 0xF0) return follow(octets, 2, value = lead - 0xE0);
        if (lead < 0xF8) return follow(octets, 3, value = lead - 0xF0);
        if (lead < 0xFC) return follow(octets, 4, value = lead - 0xF8);
        return follow(octets, 5, value = lead - 0xFC);
    }

private:
    static bool follow(zr::octet_reader& octets, unsigned int count, uint32_t& value) {
        for (; count != 0; --count)
            value = (value << 6) + octets.next() - 0x80;
        return true;
    }
};

// Targets: each writes one character. False when it has no form there.

template <unsigned int Octets>
struct fixed_width_target {
    static bool put(zr::text_writer& out, uint32_t value) {
        if (Octets < 4 && value >> (8 * Octets % 32) != 0) return false;
        for (unsigned int i = Octets; i != 0; --i)
            out.put(value >> (8 * (i - 1)));
        return true;
    }
};
using octet_target = fixed_width_target<1>;
using bmp_target = fixed_width_target<2>;
using universal_target = fixed_width_target<4>;

struct utf8_target {
    static bool put(zr::text_writer& out, uint32_t value) {
        if (value < 0x80) {
            out.put(value);
        } else if (value < 0x800) {
            follow(out, 1, 0xC0 + (value >> 6), value);
        } else if (value < 0x10000) {
            follow(out, 2, 0xE0 + (value >> 12), value);
        } else if (value <= 0x1FFFFF) {
            // The lead octet keeps bits 18 and 19 only, so bit 20 is lost: kept so.
            follow(out, 3, 0xF0 + ((value & 0xFC000) >> 18), value);
        } else if (value <= 0x3FFFFFF) {
            follow(out, 4, 0xF8 + (value >> 24), value);
        } else if (value <= 0x7FFFFFFF) {
            follow(out, 5, 0xFC + (value >> 30), value);
        }
        return true;  // what is beyond six octets is skipped
    }

private:
    static void follow(zr::text_writer& out, unsigned int count, uint32_t lead, uint32_t value) {
        out.put(lead);
        while (count-- != 0)
            out.put(0x80 + (value >> (6 * count) & 0x3F));
    }
};

// What a failed conversion leaves of the text in the output.
enum class on_failure { reset, keep };

template <class Source, class Target>
int convert(const zr_r_buffer_t& in, zr_buffer_t& out, on_failure failure = on_failure::reset) {
    zr::octet_reader octets(in);
    zr::text_writer writer(out);
    while (!octets.at_end()) {
        uint32_t value = 0;
        if (Source::next(octets, value) && Target::put(writer, value)) continue;
        if (failure == on_failure::reset) writer.reset();
        return zr_err_conversion;
    }
    return 0;
}

int replace_checked(const zr_r_buffer_t& in, zr_buffer_t& out, const zr_character_table& repertoire) {
    if (!zr::all_in(in, repertoire)) return zr_err_conversion;
    out.clear();
    return out.append(in);
}

}  // namespace

int IA52UTF8(zr_r_buffer_t in, zr_buffer_t& out) { return convert<ia5_source, utf8_target>(in, out); }
int BMP2UTF8(zr_r_buffer_t in, zr_buffer_t& out) { return convert<bmp_source, utf8_target>(in, out); }
int U2UTF8(zr_r_buffer_t in, zr_buffer_t& out) { return convert<universal_source, utf8_target>(in, out); }

int UTF82U(zr_r_buffer_t in, zr_buffer_t& out) {
    return convert<utf8_source, universal_target>(in, out, on_failure::keep);
}
int UTF82BMP(zr_r_buffer_t in, zr_buffer_t& out) { return convert<utf8_source, bmp_target>(in, out, on_failure::keep); }
int UTF82IA5(zr_r_buffer_t in, zr_buffer_t& out) {
    return convert<utf8_source, octet_target>(in, out, on_failure::keep);
}

int U2BMP(const zr_r_buffer_t& in, zr_buffer_t& out) { return convert<universal_source, bmp_target>(in, out); }
int U2IA5(const zr_r_buffer_t& in, zr_buffer_t& out) { return convert<universal_source, octet_target>(in, out); }
int BMP2U(const zr_r_buffer_t& in, zr_buffer_t& out) { return convert<bmp_source, universal_target>(in, out); }
int BMP2IA5(const zr_r_buffer_t& in, zr_buffer_t& out) { return convert<bmp_source, octet_target>(in, out); }
int IA52BMP(const zr_r_buffer_t& in, zr_buffer_t& out) { return convert<ia5_source, bmp_target>(in, out); }
int IA52U(const zr_r_buffer_t& in, zr_buffer_t& out) { return convert<ia5_source, universal_target>(in, out); }

int IA52P(const zr_r_buffer_t& in, zr_buffer_t& out) {
    return replace_checked(in, out, printableStringCharacterIA5_table);
}
int IA52V(const zr_r_buffer_t& in, zr_buffer_t& out) {
    return replace_checked(in, out, visibleStringCharacterIA5_table);
}

int P2IA5(const zr_r_buffer_t& in, zr_buffer_t& out) {
    out.clear();
    return out.append(in);
}
int V2IA5(const zr_r_buffer_t& in, zr_buffer_t& out) { return P2IA5(in, out); }
