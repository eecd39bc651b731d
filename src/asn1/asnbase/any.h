// ANY.
#pragma once

#include "asn1/asnbase/object.h"

class zr_asn_any;

// Called just before an ANY is read or written, so that its owner can choose the syntax object at the last moment. A
// status other than 0 ends the operation and is returned by it.
using zr_asn_any_hook = int (*)(zr_asn_any* any);

// zr_asn_any is ASN.1 ANY. Raw, it holds the contents octets of whatever element was read, with the identifier that was
// seen; indefinite lengths are refused. Bound to a syntax object, which it does not own, that object reads and writes
// in its place, and the raw accessors return 275063209. Tag and class are 0 until they are read or set.
//
// The presence of a bound ANY is the reverse of its syntax object's validity, kept so: it becomes absent as soon as the
// syntax object holds a value and present when that is lost. An owner whose SEQUENCE is to be present marks the ANY
// optional, or calls set_value_valid on it once the syntax object has its value.
class ZR_API zr_asn_any : public zr_asn_object {
public:
    explicit zr_asn_any(security_t secure);

    int decode_value(zr_r_buffer_t& input, unsigned int len) override;
    int encode_value(zr_buffer_t& output) const override;
    int check_valid(int deep) override;
    // Keeps the raw value until the next read or set_value.
    int invalidate_value(invalidate_t extent) override;
    // Every identifier is accepted.
    int check_type(unsigned int tag, int cls) const override;
    ~zr_asn_any() override;
    // Hands mode 1 alone on to the syntax object.
    void set_secure(security_t secure) override;
    // In raw form the preread and postread hooks run twice: kept so. No postread hook runs when the preparse hook
    // refuses.
    int asnread(zr_r_buffer_t& input) override;
    int asnwrite(zr_buffer_t& output) const override;

    // set_syntax binds `syntax`, which must outlive the binding, and clears what was bound before; null unbinds. A
    // syntax object that is still bound when the ANY is gone points at it: before it is used again (it may be
    // destroyed) it needs set_parent(nullptr) or another parent.
    int set_syntax(zr_asn_object* syntax);
    zr_asn_object* get_syntax() const { return syntax_; }
    // Both hooks are null for nothing.
    void set_preparse(zr_asn_any_hook hook) { preparse_ = hook; }
    void set_preencode(zr_asn_any_hook hook) { preencode_ = hook; }

    // set_value takes contents octets. It does not make the encoding stale, kept so: an owner that sets an ANY again
    // after encoding it calls invalidate_encoding.
    int set_value(const unsigned char* octets, unsigned int len);
    // get_value points at the raw value, which the object owns; 275063200 when absent without a default.
    int get_value(unsigned char*& octets, unsigned int& len) const;

private:
    zr_buffer_t raw_;
    zr_asn_object* syntax_ = nullptr;
    zr_asn_any_hook preparse_ = nullptr;
    zr_asn_any_hook preencode_ = nullptr;
};
