#include "asn1/asnbase/primitive.h"

#include "asn1/asnbase/default_value.h"
#include "asn1/ber.h"

zr_asn_integer::zr_asn_integer(security_t secure) : zr_asn_primitive(secure), second_(secure), mode_(secure) {
    set_identity(secure, 2, "INTEGER");
    permit_forms(1, 0, 0);
}

zr_asn_integer::~zr_asn_integer() {
    if (mode_ == zr_secure) zr::wipe(&value_, sizeof value_);
}

int zr_asn_integer::set_value(long value) {
    if (value < INT32_MIN || (value > INT32_MAX && static_cast<unsigned long>(value) > UINT32_MAX))
        return zr_err_integer_too_long;
    const auto bits = static_cast<uint32_t>(value);
    const int sign = static_cast<int32_t>(bits) < 0 ? -1 : 0;
    // The shortest two's complement: drop leading octets that only repeat the sign.
    int octets = 4;
    while (octets > 1 && static_cast<int32_t>(bits << (8 * (4 - octets))) >> 23 == sign)
        --octets;
    // Without memory everything stays as it is.
    if (cache_.capacity() == 0) cache_.extend(64);
    cache_.clear();
    while (octets-- != 0)
        cache_.append(bits >> (8 * octets));
    value_ = static_cast<int32_t>(bits);
    exact_ = 1;
    encoding_valid_ = 1;
    return set_value_valid();
}

int zr_asn_integer::set_value(const unsigned char* octets, unsigned int len) {
    cache_.assign(octets, len);
    value_ = 0;
    update_int_val();
    encoding_valid_ = 1;
    return set_value_valid();
}

int zr_asn_integer::get_value(long& value) const {
    return zr::read_value(
        *this,
        [&] {
            if (exact_ == 0) return zr_err_integer_too_long;
            value = value_;
            return zr_ok;
        },
        [&](const zr_asn_integer& standard) { return standard.get_value(value); });
}

int zr_asn_integer::get_value(unsigned char*& octets, unsigned int& len) const {
    return zr::read_value(
        *this,
        [&] {
            octets = cache_.current();
            len = cache_.length();
            return zr_ok;
        },
        [&](const zr_asn_integer& standard) { return standard.get_value(octets, len); });
}

int zr_asn_integer::set_default_value(zr_asn_object* value) { return zr_asn_object::set_default_value(value); }

int zr_asn_integer::set_default_value(long value) {
    return zr::install_default<zr_asn_integer>(*this, [&](zr_asn_integer& made) { return made.set_value(value); });
}

int zr_asn_integer::set_default_value(const unsigned char* octets, unsigned int len) {
    return zr::install_default<zr_asn_integer>(*this,
                                               [&](zr_asn_integer& made) { return made.set_value(octets, len); });
}

void zr_asn_integer::set_secure(security_t secure) {
    mode_ = secure;
    second_.set_security(secure);
    zr_asn_object::set_secure(secure);
}

void zr_asn_integer::update_int_val() { exact_ = zr::fold_integer(cache_.current(), cache_.length(), value_) ? 1 : 0; }

int zr_asn_integer::decode_value(zr_r_buffer_t& input, unsigned int len) {
    cache_.rewrite(input);
    exact_ = 0;
    unsigned char* octets = nullptr;
    if (!input.take(len, octets)) return zr_err_data_ends_early;
    cache_.append(octets, len);
    update_int_val();
    encoding_valid_ = 1;
    return set_value_valid();
}

int zr_asn_integer::encode_value(zr_buffer_t&) const { return 0; }

zr_asn_boolean::zr_asn_boolean(security_t secure) : zr_asn_primitive(secure) {
    set_identity(secure, 1, "BOOLEAN");
    permit_forms(1, 0, 0);
}

zr_asn_boolean::~zr_asn_boolean() {
    if (secure_ == zr_secure) zr::wipe(&value_, sizeof value_);
}

int zr_asn_boolean::set_value(int value) {
    value_ = value;
    invalidate_encoding();
    return set_value_valid();
}

int zr_asn_boolean::get_value(int& value) const {
    return zr::read_value(
        *this,
        [&] {
            value = value_;
            return zr_ok;
        },
        [&](const zr_asn_boolean& standard) { return standard.get_value(value); });
}

int zr_asn_boolean::set_default_value(zr_asn_object* value) { return zr_asn_object::set_default_value(value); }

int zr_asn_boolean::set_default_value(int value) {
    return zr::install_default<zr_asn_boolean>(*this, [&](zr_asn_boolean& made) { return made.set_value(value); });
}

int zr_asn_boolean::decode_value(zr_r_buffer_t& input, unsigned int len) {
    invalidate_value(zr_invalidate_all);
    unsigned char* octet = nullptr;
    if (len != 1) return zr_err_bad_contents;
    if (!input.take(1, octet)) return zr_err_data_ends_early;
    value_ = *octet != 0 ? 1 : 0;
    return set_value_valid();
}

int zr_asn_boolean::encode_value(zr_buffer_t& output) const {
    return output.append(static_cast<unsigned char>(value_ != 0 ? 0xFF : 0x00));
}

zr_asn_null::zr_asn_null(security_t secure) : zr_asn_primitive(secure) {
    set_identity(secure, 5, "NULL");
    permit_forms(1, 0, 0);
}

zr_asn_null::~zr_asn_null() = default;

int zr_asn_null::decode_value(zr_r_buffer_t&, unsigned int len) { return len != 0 ? zr_err_bad_contents : 0; }
int zr_asn_null::encode_value(zr_buffer_t&) const { return 0; }
int zr_asn_null::is_valid(int) const { return 1; }
int zr_asn_null::is_present() const { return 1; }

zr_asn_nothing::zr_asn_nothing(security_t secure) : zr_asn_primitive(secure) { secure_ = secure; }
zr_asn_nothing::~zr_asn_nothing() = default;

int zr_asn_nothing::decode_value(zr_r_buffer_t&, unsigned int) { return 0; }
int zr_asn_nothing::encode_value(zr_buffer_t&) const { return 0; }
int zr_asn_nothing::is_valid(int) const { return 1; }
int zr_asn_nothing::is_present() const { return 1; }
int zr_asn_nothing::asnread(zr_r_buffer_t&) { return 0; }
int zr_asn_nothing::asnwrite(zr_buffer_t&) const { return 0; }
