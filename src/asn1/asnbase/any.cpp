#include "asn1/asnbase/any.h"

zr_asn_any::zr_asn_any(security_t secure) : zr_asn_object(secure), raw_(secure) {
    set_identity(secure, 0, "ANY");
    permit_forms(1, 1, 0);
}

zr_asn_any::~zr_asn_any() = default;

int zr_asn_any::decode_value(zr_r_buffer_t& input, unsigned int len) {
    if (syntax_ != nullptr) return zr_err_syntax_bound;
    invalidate_value(zr_invalidate_all);
    raw_.rewrite(input);
    unsigned char* octets = nullptr;
    if (!input.take(len, octets)) return zr_err_data_ends_early;
    return raw_.append(octets, len);
}

int zr_asn_any::encode_value(zr_buffer_t& output) const {
    return syntax_ != nullptr ? zr_err_syntax_bound : output.append(raw_);
}

int zr_asn_any::check_valid(int) {
    if (syntax_ == nullptr) return 0;
    const bool valid = syntax_->is_valid(0) != 0;
    const bool present = is_present() != 0;
    if (valid != present) return 0;
    return valid ? invalidate_value(zr_invalidate_all) : set_value_valid();
}

int zr_asn_any::invalidate_value(invalidate_t extent) { return zr_asn_object::invalidate_value(extent); }

int zr_asn_any::check_type(unsigned int, int) const { return 1; }

void zr_asn_any::set_secure(security_t secure) {
    zr_asn_object::set_secure(secure);
    raw_.set_security(secure);
    if (secure == zr_secure && syntax_ != nullptr) syntax_->set_secure(zr_secure);
}

int zr_asn_any::asnread(zr_r_buffer_t& input) {
    if (preread_ != nullptr) preread_(this, input);
    if (preparse_ != nullptr) {
        if (int status = preparse_(this)) return status;
    }
    int status = 0;
    if (syntax_ != nullptr) {
        status = syntax_->asnread(input);
    } else {
        status = zr_asn_object::asnread(input);
        // Writing reproduces the identifier.
        if (status == 0) generate_constructed_ = constructed_;
    }
    if (postread_ != nullptr) postread_(this, input, status);
    return status;
}

int zr_asn_any::asnwrite(zr_buffer_t& output) const {
    if (preencode_ != nullptr) {
        // The hook may bind another syntax object: that is what it is for.
        if (int status = preencode_(const_cast<zr_asn_any*>(this))) return status;
    }
    return syntax_ != nullptr ? syntax_->asnwrite(output) : zr_asn_object::asnwrite(output);
}

int zr_asn_any::set_syntax(zr_asn_object* syntax) {
    if (syntax_ != nullptr) {
        syntax_->set_parent(nullptr);
        syntax_->invalidate_value(zr_invalidate_all);
    }
    syntax_ = syntax;
    invalidate_encoding();
    if (syntax == nullptr) return 0;
    syntax->set_parent(this);
    check_valid(0);
    if (secure_ == zr_secure) syntax->set_secure(zr_secure);
    return 0;
}

int zr_asn_any::set_value(const unsigned char* octets, unsigned int len) {
    if (syntax_ != nullptr) return zr_err_syntax_bound;
    raw_.assign(octets, len);
    return set_value_valid();
}

int zr_asn_any::get_value(unsigned char*& octets, unsigned int& len) const {
    if (syntax_ != nullptr) return zr_err_syntax_bound;
    if (is_present() == 0 && is_defaultable() == 0) return zr_err_value_absent;
    octets = raw_.current();
    len = raw_.length();
    return 0;
}
