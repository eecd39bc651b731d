// Constructed types: an ordered table of members, and the SEQUENCE made of them.
#pragma once

#include "asn1/asnbase/object.h"

// zr_asn_composite keeps an ordered table of children and derives its own presence from theirs: it becomes present as
// soon as every mandatory child holds a value, and absent as soon as one loses it. Children are registered once; the
// composite never owns them, and they must outlive it or be members of the same object.
//
// A child class that overrides is_valid or is_present must report every loss through invalidate_value. A child that
// outlives its composite must not be used before set_parent(nullptr), or before it is registered with another.
class ZR_API zr_asn_composite : public zr_asn_object {
public:
    // Constructed form, definite and indefinite lengths, an empty composite permitted.
    explicit zr_asn_composite(security_t secure);
    // Room for `capacity` children from the start ("Out of memory in asn_composite::asn_composite"). Unlike the other
    // constructor it leaves "generate constructed" and "indefinite permitted" at 0: its identifier is written without
    // the constructed bit and indefinite lengths are refused, unless the owner sets those flags. Kept so.
    zr_asn_composite(unsigned int capacity, security_t secure);

    int check_valid(int deep) override;
    int invalidate_value(invalidate_t extent) override;
    int emptyi() override;
    unsigned int get_child_count() const override;
    int display(zr_buffer_t& output) const override;
    int normalize() override;
    int is_valid(int deep) const override;
    ~zr_asn_composite() override;
    // A mode other than normal is handed down to the children, here and when they are registered; one that is secure
    // stays so.
    void set_secure(security_t secure) override;
    int set_empty_permitted(int permitted) override;
    int check_encode_flags(int valid) const override;
    int check_encode_flags() const override;
    int display_state_flags(zr_buffer_t& output, int indent) const override;

    // register_child appends `child` and becomes its parent. Returns 0, or 275063196 for a null child; throws
    // zr_asn_memexception ("Out of memory in asn_composite::register_child") and leaves the table as it was.
    virtual int register_child(zr_asn_object* child);
    // register_child_before puts `child` first. In a full table that is not empty it takes the place of the first
    // child, and the last place stays empty (null): use it with spare room or on an empty table. It does not
    // re-evaluate presence.
    virtual int register_child_before(zr_asn_object* child);
    // Whether it may be present without a present member: what set_empty_permitted was told.
    virtual int get_empty_permitted();

    // The child at `index`; null beyond the last.
    zr_asn_object* get_child(unsigned int index) const { return index < count_ ? children_[index] : nullptr; }
    zr_asn_object* operator[](unsigned int index) const { return get_child(index); }
    // How many children fit before the table grows.
    unsigned int get_child_capacity() const { return capacity_; }

protected:
    // For composites that own their children: remove_child closes the gap it leaves, forget_children keeps the table's
    // storage. Neither destroys anything.
    void remove_child(unsigned int index);
    void forget_children();

private:
    friend class zr_asn_object;

    void grow(uint64_t increment);
    void adopt(zr_asn_object* child, uint32_t slot);
    void hand_mode_to(zr_asn_object& child) const;
    bool children_valid();
    bool children_valid_now(int deep) const;
    bool any_counts(int deep) const;
    void count(zr_asn_object& child, uint32_t slot);
    void forget_checks();

    int empty_permitted_ = 1;
    uint32_t count_ = 0;
    uint32_t capacity_ = 0;
    zr_asn_object** children_ = nullptr;

    // What is known of the children before the place losses_before_: they are valid, but for those that have changed
    // since, which form a list that begins at `first_changed_`. Where empty is not permitted `counting_` of them count
    // as present, and gains of theirs are heard of too.
    uint32_t first_changed_ = no_slot;
    uint32_t counting_ = 0;
};

// zr_asn_sequence is ASN.1 SEQUENCE (X.690 8.9): its children's encodings in table order. On input every child is read
// in table order; 275063205 when octets are left inside a definite length.
class ZR_API zr_asn_sequence : public zr_asn_composite {
public:
    // Without members; the second form with room for `capacity` of them from the start.
    explicit zr_asn_sequence(security_t secure);
    zr_asn_sequence(unsigned int capacity, security_t secure);

    int decode_value(zr_r_buffer_t& input, unsigned int len) override;
    int encode_value(zr_buffer_t& output) const override;
    ~zr_asn_sequence() override;
};

namespace zr {

// How deep composites may nest in what is decoded into an object tree.
constexpr unsigned int max_depth = 2000;

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"  // as in asn1/asnbase/buffer.h

// contents_cursor is the cursor over the contents of a constructed value, made from the cursor that stands at its first
// octet: limited to `len` octets when the length is definite, one level deeper. open() answers 0 or 275063192; it
// throws zr_asn_memexception beyond max_depth. close() moves `input` past the contents.
class contents_cursor : public zr_r_buffer_t {
public:
    contents_cursor(const zr_r_buffer_t& input, bool indefinite) : zr_r_buffer_t(input), indefinite_(indefinite) {}
    [[nodiscard]] int open(unsigned int len);
    bool at_end() const { return indefinite_ ? check_EOC(*this) != 0 : remaining() == 0; }
    void close(zr_r_buffer_t& input, unsigned int len) const {
        input.move_to(current(), indefinite_ ? remaining() : input.remaining() - len);
    }

private:
    bool indefinite_;
};

#pragma GCC diagnostic pop

}  // namespace zr
