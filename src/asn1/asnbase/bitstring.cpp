#include "asn1/asnbase/bitstring.h"

#include "asn1/asnbase/default_value.h"
#include "asn1/asnbase/octetstring.h"

namespace {

// Contents that are gathered from segments, of which each may be made of segments itself. A level is what a BIT STRING
// object of its own would be: `bits_field` is that of the innermost open one. The enclosing ones need none: they were
// 0, or no segment would have begun.
class bit_gatherer : public zr::segment_sink {
public:
    explicit bit_gatherer(zr_buffer_t& octets) : octets_(octets) {}

    // What the complete segments of the whole have brought: octets, and the bits_field that the last of them leaves.
    unsigned int complete_octets() const { return complete_octets_; }
    uint8_t complete_bits_field() const { return complete_bits_field_; }

    int on_begin() override { return bits_field_ != 0 ? zr_err_bad_bitstring_segment : 0; }

    int on_open() override {
        any_ = false;
        return 0;
    }

    int on_segment(const unsigned char* contents, unsigned int len) override {
        uint8_t unused = 0;
        if (int status = append(contents, len, octets_, unused)) return status;
        count(unused);
        return 0;
    }

    int on_close(bool outermost) override {
        if (!any_) return zr_err_bad_bitstring;
        clear_unused(octets_, bits_field_);
        if (!outermost) count(bits_field_);
        return 0;
    }

    void on_complete() override {
        complete_octets_ = octets_.length();
        complete_bits_field_ = bits_field_;
    }

    // Primitive contents: the octet that counts the unused bits, then the bits.
    static int append(const unsigned char* contents, unsigned int len, zr_buffer_t& octets, uint8_t& unused) {
        if (len == 0 || contents[0] > 7 || (len == 1 && contents[0] != 0)) return zr_err_bad_bitstring;
        unused = contents[0];
        octets.append(contents + 1, len - 1);
        clear_unused(octets, unused);
        return 0;
    }

private:
    static void clear_unused(zr_buffer_t& octets, uint8_t unused) {
        if (unused == 0) return;
        unsigned char& last = octets.current()[octets.length() - 1];
        last = static_cast<unsigned char>(last & 0xFF << unused);
    }

    // A segment that is complete adds as many bits as its get_value reports, which takes its unused bits for used ones.
    void count(uint8_t reported) {
        bits_field_ = static_cast<uint8_t>((8 - reported) % 8);
        any_ = true;
    }

    zr_buffer_t& octets_;
    uint8_t bits_field_ = 0;
    bool any_ = false;
    unsigned int complete_octets_ = 0;
    uint8_t complete_bits_field_ = 0;
};

}  // namespace

zr_asn_bitstring::zr_asn_bitstring(security_t secure) : zr_asn_primitive(secure), octets_(secure), mode_(secure) {
    set_identity(secure, 3, "BITSTRING");
    permit_forms(1, 1, 1);
}

zr_asn_bitstring::~zr_asn_bitstring() = default;

int zr_asn_bitstring::set_value(const unsigned char* data, unsigned int nbits) {
    const unsigned int whole = nbits / 8;
    const unsigned int rest = nbits % 8;
    octets_.assign(data, whole + (rest != 0 ? 1 : 0));
    if (rest != 0) octets_.current()[whole] &= static_cast<unsigned char>(0xFF00 >> rest);
    bits_field_ = static_cast<uint8_t>(rest);
    invalidate_encoding();
    return set_value_valid();
}

int zr_asn_bitstring::get_value(unsigned char*& data, unsigned int& nbits) const {
    return zr::read_value(
        *this,
        [&] {
            data = octets_.current();
            nbits = octets_.length() * 8 - (bits_field_ != 0 ? 8 - bits_field_ : 0);
            return zr_ok;
        },
        [&](const zr_asn_bitstring& standard) { return standard.get_value(data, nbits); });
}

int zr_asn_bitstring::set_default_value(zr_asn_object* value) { return zr_asn_object::set_default_value(value); }

int zr_asn_bitstring::set_default_value(const unsigned char* data, unsigned int nbits) {
    return zr::install_default<zr_asn_bitstring>(*this,
                                                 [&](zr_asn_bitstring& made) { return made.set_value(data, nbits); });
}

void zr_asn_bitstring::set_secure(security_t secure) {
    mode_ = secure;
    octets_.set_security(secure);
    zr_asn_object::set_secure(secure);
}

int zr_asn_bitstring::encode_value(zr_buffer_t& output) const {
    output.append(bits_field_);
    return output.append(octets_);
}

int zr_asn_bitstring::decode_value(zr_r_buffer_t& input, unsigned int len) {
    octets_.rewrite(input);
    bits_field_ = 0;
    if (is_constructed() != 0) {
        bit_gatherer gatherer(octets_);
        const int status = zr::walk_segments(input, is_indefinite_length() != 0, len, 3, gatherer);
        octets_.truncate(gatherer.complete_octets());
        bits_field_ = gatherer.complete_bits_field();
        if (status != 0) return status;
    } else {
        zr::cursor_guard guard(input);
        unsigned char* contents = nullptr;
        if (!input.take(len, contents)) return zr_err_data_ends_early;
        if (int status = bit_gatherer::append(contents, len, octets_, bits_field_)) return status;
        guard.commit();
    }
    invalidate_encoding();
    return set_value_valid();
}

int zr_asn_bitstring::read_bit(unsigned int n, int& value) const {
    return zr::read_value(
        *this,
        [&] {
            value = n / 8 < octets_.length() ? octets_.current()[n / 8] >> (7 - n % 8) & 1 : 0;
            return zr_ok;
        },
        [&](const zr_asn_bitstring& standard) { return standard.read_bit(n, value); });
}

zr_asn_namedbits::~zr_asn_namedbits() = default;

int zr_asn_namedbits::get_bit(unsigned int n, int& value) const { return read_bit(n, value); }

int zr_asn_namedbits::set_bit(unsigned int n, int value) {
    if (is_present() == 0) {
        octets_.clear();
        bits_field_ = 0;
    }
    const unsigned int octet = n / 8;
    const auto mask = static_cast<unsigned char>(0x80 >> n % 8);
    if (value != 0) {
        const auto unused = static_cast<uint8_t>(7 - n % 8);
        if (octets_.length() <= octet) {
            // One growth for all the octets up to the bit.
            constexpr unsigned int step = 1024;
            static constexpr unsigned char zeros[step] = {};
            unsigned int missing = octet + 1 - octets_.length();
            if (!octets_.fits(missing)) octets_.make_room(missing, missing);
            for (; missing > step; missing -= step)
                octets_.append(zeros, step);
            octets_.append(zeros, missing);
            bits_field_ = unused;
        } else if (bits_field_ > unused) {
            bits_field_ = unused;
        }
        octets_.current()[octet] |= mask;
    } else if (octet < octets_.length()) {
        octets_.current()[octet] &= static_cast<unsigned char>(~mask);
    }
    invalidate_value(zr_invalidate_all);
    return set_value_valid();
}

int zr_asn_namedbits::asnwrite(zr_buffer_t& output) const {
    const bool present = is_present() != 0;
    const bool defaultable = is_defaultable() != 0;
    if (is_optional() != 0 && !present) return 0;
    if (defaultable && is_default_value() != 0) return 0;
    if (!present && !defaultable) return zr_err_value_absent;

    const unsigned int before = octets_.length();
    const uint8_t bits_before = bits_field_;
    unsigned int count = before;
    while (count != 0 && octets_.current()[count - 1] == 0)
        --count;
    if (count != before) {
        octets_.truncate(count);
        bits_field_ = 0;
    }
    if (count != 0) {
        const unsigned int last = octets_.current()[count - 1];
        for (uint8_t unused = 7; unused != 0; --unused) {
            if (unused == 2 || (last & ((1U << unused) - 1)) != 0) continue;
            bits_field_ = unused;
            break;
        }
    }
    if (count != before || bits_field_ != bits_before) encoding_valid_ = 0;
    return zr_asn_object::asnwrite(output);
}
