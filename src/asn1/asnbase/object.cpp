#include "asn1/asnbase/object.h"

#include <cstring>

#include "asn1/asn1.h"

namespace zr {

int read_identifier(zr_r_buffer_t& input, ber_header& header) {
    // The second slot takes what zrAsnGetType stores behind the cursor for high tag numbers.
    unsigned char* slots[2] = {input.current(), nullptr};
    unsigned int remaining = input.remaining();
    const int status = zrAsnGetType(slots, &remaining, &header.tag, &header.constructed, &header.cls);
    if (status == 0) input.move_to(slots[0], remaining);
    return status;
}

int read_length(zr_r_buffer_t& input, bool& definite, unsigned int& length) {
    unsigned char* position = input.current();
    unsigned int remaining = input.remaining();
    unsigned int is_definite = 1;
    const int status = zrAsnGetLength(&position, &remaining, &is_definite, &length);
    if (status == 0) input.move_to(position, remaining);
    definite = is_definite != 0;
    return status;
}

}  // namespace zr

zr_asn_object::zr_asn_object(security_t secure) : cache_(secure) { zr_asn_object::invalidate_value(zr_invalidate_all); }

zr_asn_object::zr_asn_object(const zr_asn_object& other) : cache_(other.secure_) {
    zr::throw_unsupported("Can't copy asn_objects");
}

zr_asn_object& zr_asn_object::operator=(const zr_asn_object&) { zr::throw_unsupported("Can't assign asn_objects"); }

zr_asn_object::~zr_asn_object() {
    delete default_;
    default_ = nullptr;
    set_type_name("Deleted");
    // Nobody may read a destroyed object, so the compiler would leave that out: make it believe that somebody does.
    __asm__ volatile("" : : "r"(type_name_) : "memory");
}

void zr_asn_object::permit_forms(int primitive, int constructed, int indefinite) {
    primitive_permitted_ = primitive;
    constructed_permitted_ = constructed;
    indefinite_permitted_ = indefinite;
}

int zr_asn_object::check_valid(int) { return 0; }

void zr_asn_object::invalidate_encoding() const {
    encoding_valid_ = 0;
    if (parent_ != nullptr && parent_->clearing_ == clearing::no) parent_->invalidate_encoding();
}

// Containers may answer for what they contain, so a change may concern every one that encloses this object.
void zr_asn_object::note_loss() {
    zr_asn_object* member = this;
    for (zr_asn_object* container = parent_; container != nullptr; container = container->parent_) {
        if (member->slot_ < container->losses_before_) container->keep_change_of(*member);
        if (container->clearing_ != clearing::no) {
            container->clearing_ = clearing::changed;
            break;
        }
        member = container;
    }
}

void zr_asn_object::note_gain() {
    zr_asn_object* member = this;
    for (zr_asn_object* container = parent_; container != nullptr; container = container->parent_) {
        if (member->slot_ < container->gains_before_) container->keep_change_of(*member);
        member = container;
    }
}

int zr_asn_object::invalidate_value(invalidate_t extent) {
    if (present_ != 0) note_loss();
    present_ = 0;
    invalidate_encoding();
    if (extent != zr_invalidate_quiet && parent_ != nullptr) parent_->check_valid(0);
    return 0;
}

int zr_asn_object::set_value_valid() {
    if (present_ == 0) note_gain();
    present_ = 1;
    if (parent_ != nullptr) parent_->check_valid(0);
    return 0;
}

int zr_asn_object::check_type(unsigned int tag, int cls) const { return tag == tag_ && cls == class_ ? 1 : 0; }

int zr_asn_object::set_default_value(zr_asn_object* value) {
    note_loss();
    defaultable_ = 0;
    invalidate_encoding();
    if (value != default_) delete default_;
    default_ = value;
    if (value == nullptr) return 0;
    value->set_parent(this);
    defaultable_ = 1;
    return 0;
}

int zr_asn_object::get_encoding(zr_buffer_t& output) const {
    const int status = get_encoding();
    return status != 0 ? status : output.append(cache_);
}

int zr_asn_object::get_encoding() const {
    if (is_encoding_valid() != 0) return 0;
    cache_.clear();
    int status = zr_err_value_absent;
    if (is_present() != 0) {
        status = encode_value(cache_);
    } else if (const zr_asn_object* value = get_default_value()) {
        status = value->get_encoding(cache_);
    }
    if (status != 0) return status;
    encoding_valid_ = 1;
    return 0;
}

int zr_asn_object::emptyi() { return 0; }

unsigned int zr_asn_object::get_child_count() const { throw "get_child_count() invoked on non-composite object"; }

int zr_asn_object::encoding_primitive_permitted() const { return primitive_permitted_; }
int zr_asn_object::encoding_constructed_permitted() const { return constructed_permitted_; }
int zr_asn_object::encoding_indefinite_permitted() const { return indefinite_permitted_; }
int zr_asn_object::is_constructed() const { return constructed_; }
int zr_asn_object::is_indefinite_length() const { return indefinite_; }
int zr_asn_object::is_polymorphic() const { return 0; }
int zr_asn_object::should_generate_constructed() const { return generate_constructed_; }

int zr_asn_object::set_class(int cls) {
    class_ = cls;
    if (is_encoding_valid() != 0) invalidate_encoding();
    return 0;
}

int zr_asn_object::set_tag(unsigned int tag) {
    tag_ = tag;
    if (is_encoding_valid() != 0) invalidate_encoding();
    return 0;
}

int zr_asn_object::display(zr_buffer_t& output) const {
    if (is_present() != 0) {
        output.append("OBJECT(tag=");
        output.append_int(static_cast<int32_t>(tag_));
        output.append(", class=");
        output.append_int(class_);
        return output.append(")");
    }
    const zr_asn_object* value = is_defaultable() != 0 ? get_default_value() : nullptr;
    if (value == nullptr) return zr_err_value_absent;
    output.append("Default:");
    return value->display(output);
}

int zr_asn_object::empty() {
    emptyi();
    invalidate_value(zr_invalidate_all);
    check_valid(0);
    return 0;
}

int zr_asn_object::normalize() { return 0; }
int zr_asn_object::is_optional() const { return optional_; }
int zr_asn_object::is_defaultable() const { return defaultable_; }
int zr_asn_object::is_encoding_valid() const { return encoding_valid_; }
zr_asn_object* zr_asn_object::get_default_value() const { return default_; }

int zr_asn_object::is_default_value() const {
    if (is_defaultable() == 0) return 0;
    if (is_present() == 0) return 1;
    const zr_asn_object* value = get_default_value();
    if (value == nullptr || get_encoding() != 0) return 0;
    zr_buffer_t default_contents(secure_);
    if (value->get_encoding(default_contents) != 0) return 0;
    return cache_ == default_contents ? 1 : 0;
}

int zr_asn_object::is_valid(int) const {
    return is_present() != 0 || is_defaultable() != 0 || is_optional() != 0 ? 1 : 0;
}

int zr_asn_object::is_present() const { return present_; }

void zr_asn_object::set_secure(security_t secure) {
    secure_ = secure;
    cache_.set_security(secure);
}

int zr_asn_object::asnread(zr_r_buffer_t& input) {
    int status = 0;
    {
        zr::cursor_guard guard(input);
        invalidate_value(zr_invalidate_all);
        constructed_ = 0;
        indefinite_ = 0;
        if (preread_ != nullptr) preread_(this, input);
        try {
            status = read_element(input, guard);
        } catch (...) {
            invalidate_value(zr_invalidate_all);
            throw;
        }
    }
    if (postread_ != nullptr) postread_(this, input, status);
    return status;
}

int zr_asn_object::read_element(zr_r_buffer_t& input, zr::cursor_guard& guard) {
    zr::ber_header header{};
    int status = zr::read_identifier(input, header);
    if (status == 0 && check_type(header.tag, static_cast<int>(header.cls)) == 0) status = zr_err_no_match;
    if (status != 0) return is_optional() != 0 || is_defaultable() != 0 ? 0 : status;

    set_tag(header.tag);
    set_class(static_cast<int>(header.cls));
    constructed_ = static_cast<int>(header.constructed);
    if (header.constructed != 0 && encoding_constructed_permitted() == 0) return zr_err_constructed_form;
    if (header.constructed == 0 && encoding_primitive_permitted() == 0) return zr_err_primitive_form;

    bool definite = true;
    unsigned int length = 0;
    status = zr::read_length(input, definite, length);
    if (status != 0) return status;
    indefinite_ = definite ? 0 : 1;
    if (!definite && encoding_indefinite_permitted() == 0) return zr_err_indefinite_length;
    if (length > input.remaining()) return zr_err_data_ends_early;

    status = decode_value(input, length);
    if (status != 0) {
        invalidate_value(zr_invalidate_all);
        return status;
    }
    guard.commit();
    if (!definite) {
        if (check_EOC(input) == 0) {
            invalidate_value(zr_invalidate_all);
            return zr_err_bad_contents;
        }
        input.move_to(input.current() + 2, input.remaining() - 2);
    }
    set_value_valid();
    return 0;
}

int zr_asn_object::asnwrite(zr_buffer_t& output) const {
    const unsigned int written = output.length();
    const bool present = is_present() != 0;
    if (is_optional() != 0 && !present) return 0;
    const bool defaultable = is_defaultable() != 0;
    if (defaultable && is_default_value() != 0) return 0;
    if (!present && !defaultable) return zr_err_value_absent;
    int status = 0;
    try {
        write_type(output);
        status = get_encoding();
        if (status == 0) status = write_length(output);
        if (status == 0) output.append(cache_);
    } catch (...) {
        output.truncate(written);
        throw;
    }
    if (status != 0) output.truncate(written);
    return status;
}

bool zr_asn_object::operator==(const zr_asn_object& other) const {
    // Statuses do not count: what cannot be written is equal to what writes nothing.
    zr_buffer_t own(secure_);
    zr_buffer_t others(other.secure_);
    static_cast<void>(asnwrite(own));
    static_cast<void>(other.asnwrite(others));
    return own == others;
}

int zr_asn_object::set_optional(int optional) {
    note_loss();
    optional_ = optional;
    invalidate_encoding();
    return 0;
}

int zr_asn_object::set_empty_permitted(int) { return 0; }

int zr_asn_object::check_encode_flags(int valid) const {
    return is_encoding_valid() != valid ? 0 : check_encode_flags();
}

int zr_asn_object::check_encode_flags() const { return 1; }

int zr_asn_object::display_state_flags(zr_buffer_t& output, int indent) const {
    const auto flag = [&](const char* name, int value) {
        output.append(name);
        output.append(value != 0 ? "Y" : "N");
    };
    for (int i = 0; i < indent; ++i)
        output.append(static_cast<unsigned char>(' '));
    output.append(type_name_);
    flag("(valid=", is_valid(0));
    flag(", present=", is_present());
    flag(", optional=", is_optional());
    flag(", defaultable=", is_defaultable());
    flag(", enc_valid=", is_encoding_valid());
    return output.append(")\n");
}

int zr_asn_object::write_type(zr_buffer_t& output) const {
    constexpr unsigned char class_bits[] = {0x00, 0x40, 0x80, 0xC0};
    unsigned int lead = class_ >= 0 && class_ <= 3 ? class_bits[class_] : 0;
    if (should_generate_constructed() != 0) lead |= 0x20;
    if (tag_ <= 30) return output.append(static_cast<unsigned char>(lead | tag_));
    output.append(static_cast<unsigned char>(lead | 0x1F));
    for (unsigned int shift = 28; shift != 0; shift -= 7) {
        if (tag_ >> shift != 0) output.append(static_cast<unsigned char>(0x80 | (tag_ >> shift & 0x7F)));
    }
    return output.append(static_cast<unsigned char>(tag_ & 0x7F));
}

int zr_asn_object::write_length(zr_buffer_t& output) const {
    if (is_encoding_valid() == 0) return zr_err_bad_contents;
    const unsigned int length = cache_.length();
    if (length <= 127) return output.append(static_cast<unsigned char>(length));
    unsigned int octets = 1;
    while (octets < 4 && length >> (8 * octets) != 0)
        ++octets;
    output.append(static_cast<unsigned char>(0x80 | octets));
    while (octets-- != 0)
        output.append(static_cast<unsigned char>(length >> (8 * octets)));
    return 0;
}
