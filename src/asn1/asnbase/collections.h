// SEQUENCE OF, and C arrays with empty places.
//
// What the collections do is the same for every element type, so it stands once in the two bases in namespace zr; the
// templates decide only which class an element is.
#pragma once

#include <new>

#include "asn1/asnbase/choice.h"
#include "asn1/asnbase/composite.h"
#include "asn1/asnbase/primitive.h"

namespace zr {

// element_list is a SEQUENCE OF that owns its elements. Use it through zr_asn_sequenceof.
class ZR_API element_list : public zr_asn_sequence {
public:
    // Without an element and with empty not permitted: absent. Otherwise present.
    int check_valid(int deep) override;
    // emptyi destroys the elements and keeps the table. It does not re-evaluate presence, so a present list stays
    // present; empty() does.
    int emptyi() override;
    ~element_list() override;
    // An optional list does not permit empty, so that without elements it is absent. That stays so when the list is
    // made mandatory again.
    int set_optional(int optional) override;

    // delete_child destroys the element at `index` and closes the gap; 275063196 when there is none.
    virtual int delete_child(unsigned int index);

protected:
    // Makes an element on the heap in the mode given; null when memory ends.
    using maker = zr_asn_object* (*)(security_t mode);
    // As many elements as there are.
    static constexpr unsigned int keep_all = ~0U;

    explicit element_list(security_t secure);
    // With room for so many elements from the start.
    element_list(unsigned int capacity, security_t secure);

    // read_elements reads contents octets into new elements. The first `kept` stay; those behind are read into one
    // that is destroyed at the end. Returns the status of the element that fails, the ones before it stay; 275063204
    // for an element that reads as nothing at all, of which there would be no end.
    int read_elements(zr_r_buffer_t& input, unsigned int len, maker make, unsigned int kept = keep_all);
    // Both make an element and register it at the end or the front; null when memory ends.
    zr_asn_object* append_element(maker make);
    zr_asn_object* prepend_element(maker make);

private:
    void destroy_elements();
};

// element_array stands for its only child, a list: it delegates to it. Use it through zr_asn_arrayof.
class ZR_API element_array : public zr_asn_composite {
public:
    int decode_value(zr_r_buffer_t& input, unsigned int len) override;
    int encode_value(zr_buffer_t& output) const override;
    unsigned int get_child_count() const override;
    int encoding_primitive_permitted() const override;
    int encoding_constructed_permitted() const override;
    int encoding_indefinite_permitted() const override;
    int is_constructed() const override;
    int is_indefinite_length() const override;
    int is_polymorphic() const override;
    int should_generate_constructed() const override;
    // Throws a plain text (const char*).
    int set_tag(unsigned int tag) override;
    int is_optional() const override;
    int is_defaultable() const override;
    int is_encoding_valid() const override;
    zr_asn_object* get_default_value() const override;
    int is_default_value() const override;
    int is_present() const override;
    ~element_array() override;
    int asnread(zr_r_buffer_t& input) override;
    int asnwrite(zr_buffer_t& output) const override;
    int set_optional(int optional) override;
    int set_empty_permitted(int permitted) override;
    int check_encode_flags(int valid) const override;
    int check_encode_flags() const override;

protected:
    explicit element_array(security_t secure);

private:
    // The list that the derived class registers in its constructor.
    element_list& list() const { return static_cast<element_list&>(*get_child(0)); }
};

}  // namespace zr

// zr_asn_sequenceof is ASN.1 SEQUENCE OF (X.690 8.10) T. It makes its elements itself, in its own mode, and owns them
// until they are deleted, the list is emptied or destroyed; it owns elements from elsewhere (made with new) once they
// are registered. A new list is empty and present.
//
// T derives from zr_asn_object and has a constructor T(security_t). It may be incomplete where the list is declared, so
// a record can hold a list of itself.
template <class T>
class ZR_API zr_asn_sequenceof : public zr::element_list {
public:
    explicit zr_asn_sequenceof(security_t secure) : element_list(secure) {}
    // Room for `capacity` elements from the start; see zr_asn_composite for the flags that this form leaves at 0.
    zr_asn_sequenceof(unsigned int capacity, security_t secure) : element_list(capacity, secure) {}

    int decode_value(zr_r_buffer_t& input, unsigned int len) override { return read_elements(input, len, make); }

    // add_child appends a new element, which the list owns; null when memory ends.
    virtual T* add_child() { return static_cast<T*>(append_element(make)); }
    // add_child_before puts it first. In a full table it replaces the first element, which is destroyed
    // (zr_asn_composite::register_child_before).
    virtual T* add_child_before() { return static_cast<T*>(prepend_element(make)); }

    // The element at `index`; null beyond the last.
    T* get_child(unsigned int index) const { return static_cast<T*>(zr_asn_composite::get_child(index)); }
    T* operator[](unsigned int index) const { return get_child(index); }

protected:
    // A new element; null when memory ends.
    static zr_asn_object* make(security_t mode) { return new (std::nothrow) T(mode); }
};

// zr_asn_arrayof carries a C array of pointers in which some may be null: a SEQUENCE OF whose every element is a CHOICE
// between NULL, an empty place, and T. Its elements are those of inner_list(). Tag and class of the array itself are 0
// and never written.
template <class T>
class ZR_API zr_asn_arrayof : public zr::element_array {
public:
    // One place: alternative 0 is NULL, 1 the value.
    class ZR_API cherce : public zr_asn_choice {
    public:
        explicit cherce(security_t secure) : zr_asn_choice(secure), null_(zr_normal), value_(zr_normal) {
            null_.set_value_valid();
            register_child(&null_);
            register_child(&value_);
        }
        ~cherce() override = default;

        // The value, whether it is selected or not.
        T& value() { return value_; }

    private:
        zr_asn_null null_;
        T value_;
    };

    explicit zr_asn_arrayof(security_t secure) : element_array(secure), inner_list_(zr_normal) {
        register_child(&inner_list_);
    }
    ~zr_asn_arrayof() override = default;

    // The places.
    zr_asn_sequenceof<cherce>& inner_list() { return inner_list_; }
    const zr_asn_sequenceof<cherce>& inner_list() const { return inner_list_; }

    // keep_positions limits how many positions reading stores; those behind are read and checked like the others, and
    // cost no memory.
    void keep_positions(unsigned int count) { inner_list_.kept = count; }

private:
    struct positions : zr_asn_sequenceof<cherce> {
        using zr_asn_sequenceof<cherce>::zr_asn_sequenceof;
        int decode_value(zr_r_buffer_t& input, unsigned int len) override {
            return this->read_elements(input, len, positions::make, kept);
        }

        unsigned int kept = zr::element_list::keep_all;
    };

    positions inner_list_;
};
