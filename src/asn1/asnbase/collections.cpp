#include "asn1/asnbase/collections.h"

#include <memory>

namespace zr {

element_list::element_list(security_t secure) : zr_asn_sequence(secure) {
    set_type_name("SEQUENCEOF");
    zr_asn_object::set_value_valid();
}

element_list::element_list(unsigned int capacity, security_t secure) : zr_asn_sequence(capacity, secure) {
    set_type_name("SEQUENCEOF");
    zr_asn_object::set_value_valid();
}

// What encloses the list may be gone already: nothing is reported to it.
element_list::~element_list() { destroy_elements(); }

void element_list::destroy_elements() {
    const unsigned int count = zr_asn_composite::get_child_count();
    for (unsigned int i = 0; i < count; ++i)
        delete zr_asn_composite::get_child(i);
    forget_children();
}

int element_list::check_valid(int) {
    if (zr_asn_composite::get_child_count() == 0 && get_empty_permitted() == 0)
        return invalidate_value(zr_invalidate_own);
    if (const int present = is_present()) {
        if (parent_ == nullptr) return present;
        if (const int enclosing = parent_->is_present()) return enclosing;
    }
    return set_value_valid();
}

int element_list::emptyi() {
    destroy_elements();
    invalidate_encoding();
    return 0;
}

int element_list::set_optional(int optional) {
    if (optional != 0) set_empty_permitted(0);
    return zr_asn_object::set_optional(optional);
}

int element_list::delete_child(unsigned int index) {
    const std::unique_ptr<zr_asn_object> element(zr_asn_composite::get_child(index));
    if (element == nullptr) return zr_err_bad_argument;
    remove_child(index);
    invalidate_encoding();
    return 0;
}

int element_list::read_elements(zr_r_buffer_t& input, unsigned int len, maker make, unsigned int kept) {
    contents_cursor contents(input, is_indefinite_length() != 0);
    if (int status = contents.open(len)) return status;
    empty();
    std::unique_ptr<zr_asn_object> element;
    while (!contents.at_end()) {
        if (element == nullptr) element.reset(make(get_secure()));
        if (element == nullptr)
            throw_out_of_memory("Out of memory in asn_sequenceof:decode_value", "src/asn1/asnbase.h");
        const unsigned int remaining = contents.remaining();
        if (int status = element->asnread(contents)) return status;
        if (contents.remaining() == remaining) return zr_err_no_match;
        if (zr_asn_composite::get_child_count() >= kept) continue;
        if (register_child(element.get()) == 0) static_cast<void>(element.release());
        element.reset();
    }
    contents.close(input, len);
    return 0;
}

zr_asn_object* element_list::append_element(maker make) {
    std::unique_ptr<zr_asn_object> element(make(get_secure()));
    if (element == nullptr) return nullptr;
    try {
        if (register_child(element.get()) != 0) return nullptr;
    } catch (const zr_asn_memexception&) {
        return nullptr;
    }
    return element.release();
}

zr_asn_object* element_list::prepend_element(maker make) {
    std::unique_ptr<zr_asn_object> element(make(get_secure()));
    if (element == nullptr) return nullptr;
    // Registering at the front of a full table overwrites the first entry; the list owned it.
    const bool full = zr_asn_composite::get_child_count() == get_child_capacity();
    std::unique_ptr<zr_asn_object> displaced(full ? zr_asn_composite::get_child(0) : nullptr);
    try {
        if (register_child_before(element.get()) == 0) return element.release();
    } catch (const zr_asn_memexception&) {
        // Nothing was registered.
    }
    static_cast<void>(displaced.release());
    return nullptr;
}

element_array::element_array(security_t secure) : zr_asn_composite(secure) { set_identity(secure, 0, "SARRAYOF"); }

element_array::~element_array() = default;

int element_array::decode_value(zr_r_buffer_t& input, unsigned int len) { return list().decode_value(input, len); }
int element_array::encode_value(zr_buffer_t& output) const { return list().zr_asn_sequence::encode_value(output); }
unsigned int element_array::get_child_count() const { return list().get_child_count(); }
int element_array::encoding_primitive_permitted() const { return list().encoding_primitive_permitted(); }
int element_array::encoding_constructed_permitted() const { return list().encoding_constructed_permitted(); }
int element_array::encoding_indefinite_permitted() const { return list().encoding_indefinite_permitted(); }
int element_array::is_constructed() const { return list().is_constructed(); }
int element_array::is_indefinite_length() const { return list().is_indefinite_length(); }
int element_array::is_polymorphic() const { return 1; }
int element_array::should_generate_constructed() const { return list().should_generate_constructed(); }

int element_array::set_tag(unsigned int) { throw "Attempt to change tag of ASN.1 CHOICE object"; }

int element_array::is_optional() const { return list().is_optional(); }
int element_array::is_defaultable() const { return list().is_defaultable(); }
int element_array::is_encoding_valid() const { return list().is_encoding_valid(); }
zr_asn_object* element_array::get_default_value() const { return list().get_default_value(); }
int element_array::is_default_value() const { return list().is_default_value(); }
int element_array::is_present() const { return list().is_present(); }
int element_array::asnread(zr_r_buffer_t& input) { return list().zr_asn_object::asnread(input); }
int element_array::asnwrite(zr_buffer_t& output) const { return list().zr_asn_object::asnwrite(output); }

int element_array::set_optional(int optional) {
    zr_asn_object::set_optional(optional);
    return list().set_optional(optional);
}

int element_array::set_empty_permitted(int permitted) {
    zr_asn_composite::set_empty_permitted(permitted);
    return list().set_empty_permitted(permitted);
}

int element_array::check_encode_flags(int valid) const { return list().check_encode_flags(valid); }
int element_array::check_encode_flags() const { return list().check_encode_flags(); }

}  // namespace zr
