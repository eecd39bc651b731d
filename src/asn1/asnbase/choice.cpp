#include "asn1/asnbase/choice.h"

zr_asn_choice::zr_asn_choice(security_t secure) : zr_asn_composite(secure) { set_identity(secure, 0, "CHOICE"); }

zr_asn_choice::~zr_asn_choice() = default;

// The selected alternative, or null.
zr_asn_object* zr_asn_choice::alternative() const {
    return selected_ < 0 ? nullptr : get_child(static_cast<unsigned int>(selected_));
}

int zr_asn_choice::decode_value(zr_r_buffer_t&, unsigned int) {
    zr::throw_unsupported("Error: asn_choice::decode_value called");
}

int zr_asn_choice::encode_value(zr_buffer_t&) const { zr::throw_unsupported("Error: asn_choice::encode_value called"); }

int zr_asn_choice::check_valid(int deep) {
    const zr_asn_object* chosen = alternative();
    if (chosen == nullptr) return 0;
    const bool present = is_present() != 0;
    if (chosen->is_valid(deep) != 0) return present ? 0 : set_value_valid();
    return present ? invalidate_value(zr_invalidate_own) : 0;
}

int zr_asn_choice::is_polymorphic() const { return 1; }

int zr_asn_choice::set_tag(unsigned int) { throw "Attempt to change tag of ASN.1 CHOICE object"; }

int zr_asn_choice::set_tag_unchecked(unsigned int tag) { return zr_asn_object::set_tag(tag); }

int zr_asn_choice::normalize() {
    zr_asn_object* chosen = alternative();
    return chosen != nullptr ? chosen->normalize() : 0;
}

int zr_asn_choice::is_encoding_valid() const {
    const zr_asn_object* chosen = alternative();
    return chosen != nullptr ? chosen->is_encoding_valid() : 0;
}

int zr_asn_choice::is_default_value() const {
    if (is_defaultable() == 0) return 0;
    if (is_present() == 0) return 1;
    const zr_asn_object* chosen = alternative();
    const zr_asn_object* standard = get_default_value();
    if (chosen == nullptr || standard == nullptr) return 0;
    zr_buffer_t own(secure_);
    zr_buffer_t defaults(secure_);
    if (chosen->asnwrite(own) != 0 || standard->asnwrite(defaults) != 0) return 0;
    return own == defaults ? 1 : 0;
}

int zr_asn_choice::asnread(zr_r_buffer_t& input) {
    int status = 0;
    {
        zr::cursor_guard guard(input);
        if (preread_ != nullptr) preread_(this, input);
        selected_ = -1;
        invalidate_value(zr_invalidate_all);
        zr::cursor_guard start(input);
        const unsigned int count = zr_asn_composite::get_child_count();
        for (unsigned int i = 0; i < count && selected_ < 0; ++i) {
            zr_asn_object* candidate = get_child(i);
            if (candidate == nullptr) continue;
            start.restore();
            if (candidate->asnread(input) == 0) selected_ = static_cast<int>(i);
        }
        if (selected_ >= 0) {
            start.commit();
            guard.commit();
            set_value_valid();
        } else if (count == 0 || (is_optional() == 0 && is_defaultable() == 0)) {
            status = zr_err_no_match;
        }
    }
    if (postread_ != nullptr) postread_(this, input, status);
    return status;
}

int zr_asn_choice::asnwrite(zr_buffer_t& output) const {
    if (is_optional() != 0 && is_present() == 0) return 0;
    if (is_defaultable() != 0 && is_default_value() != 0) return 0;
    const zr_asn_object* chosen = alternative();
    return chosen != nullptr ? chosen->asnwrite(output) : zr_err_nothing_selected;
}

int zr_asn_choice::select(unsigned int index) {
    if (index >= zr_asn_composite::get_child_count()) return zr_err_bad_alternative;
    if (static_cast<int>(index) == selected_) return 0;
    selected_ = static_cast<int>(index);
    invalidate_encoding();
    check_valid(1);
    return 0;
}

int zr_asn_choice::check_encode_flags(int valid) const { return zr_asn_composite::check_encode_flags(valid); }

int zr_asn_choice::check_encode_flags() const {
    if (is_encoding_valid() == 0) return 1;
    const zr_asn_object* chosen = alternative();
    return chosen != nullptr ? chosen->check_encode_flags(1) : 0;
}

int zr_asn_choice::display_state_flags(zr_buffer_t& output, int indent) const {
    // The object's own line; the composite would list the alternatives too.
    zr_asn_object::display_state_flags(output, indent);  // NOLINT(bugprone-parent-virtual-call)
    const unsigned int count = zr_asn_composite::get_child_count();
    for (unsigned int i = 0; i < count; ++i) {
        const zr_asn_object* shown = get_child(i);
        if (shown == nullptr) continue;
        if (static_cast<int>(i) == selected_) {
            for (int spaces = 0; indent >= 0 && spaces <= indent; ++spaces)
                output.append(static_cast<unsigned char>(' '));
            output.append("SELECTED:\n");
        }
        shown->display_state_flags(output, indent + 2);
    }
    return 0;
}
