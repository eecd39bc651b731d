// CHOICE.
#pragma once

#include "asn1/asnbase/composite.h"

// zr_asn_choice is ASN.1 CHOICE (X.690 8.13): its registered children are the alternatives, of which at most one is
// selected. It has no identifier of its own: the selected alternative's encoding stands in its place. Tag and class are
// 0 until they are set.
//
// On input the alternatives are tried in the order of registration and the first that reads wins, so none of them
// should be optional: it would win by being absent.
class ZR_API zr_asn_choice : public zr_asn_composite {
public:
    explicit zr_asn_choice(security_t secure);

    // Never called: both throw zr_asn_unsupportederror.
    int decode_value(zr_r_buffer_t& input, unsigned int len) override;
    int encode_value(zr_buffer_t& output) const override;
    // Present as long as the selected alternative is valid; without one nothing changes.
    int check_valid(int deep) override;
    int is_polymorphic() const override;
    // Throws a plain text (const char*).
    int set_tag(unsigned int tag) override;
    int normalize() override;
    int is_encoding_valid() const override;
    // Compares complete encodings, identifier and length included: alternatives differ by these.
    int is_default_value() const override;
    ~zr_asn_choice() override;
    // 275063204 when no alternative reads, whatever their own statuses; 0 and absent if the CHOICE is optional or
    // defaultable (one without alternatives is refused all the same).
    int asnread(zr_r_buffer_t& input) override;
    // 275063208 when nothing is selected.
    int asnwrite(zr_buffer_t& output) const override;
    int check_encode_flags(int valid) const override;
    int check_encode_flags() const override;
    int display_state_flags(zr_buffer_t& output, int indent) const override;

    // set_tag_unchecked records a tag, which is never written.
    virtual int set_tag_unchecked(unsigned int tag);

    // select makes the alternative at `index` the selected one; its value is set separately, before or after. The
    // selection survives invalidate_value. 275063207 when there is no such alternative.
    int select(unsigned int index);
    // The selected alternative's index; -1 for none.
    int selected() const { return selected_; }

private:
    zr_asn_object* alternative() const;

    int selected_ = -1;
};
