// The root of every ASN.1 value: identifier, presence, defaults, cached contents, BER reading and writing.
#pragma once

#include <cstring>

#include "asn1/asnbase/buffer.h"
#include "asn1/status.h"

class zr_asn_object;

namespace zr {

// An identifier and length as asnread reads them.
struct ber_header {
    unsigned int tag;
    unsigned int constructed;
    unsigned int cls;
};

// read_identifier and read_length are the raw readers on a cursor; a failed one does not move it.
int read_identifier(zr_r_buffer_t& input, ber_header& header);
int read_length(zr_r_buffer_t& input, bool& definite, unsigned int& length);

// Puts a cursor back where it was unless commit() is called.
class cursor_guard {
public:
    explicit cursor_guard(zr_r_buffer_t& cursor)
        : cursor_(cursor), position_(cursor.current()), remaining_(cursor.remaining()) {}
    ~cursor_guard() {
        if (!committed_) restore();
    }
    cursor_guard(const cursor_guard&) = delete;
    cursor_guard& operator=(const cursor_guard&) = delete;
    void restore() { cursor_.move_to(position_, remaining_); }
    void commit() { committed_ = true; }

private:
    zr_r_buffer_t& cursor_;
    unsigned char* position_;
    unsigned int remaining_;
    bool committed_ = false;
};

}  // namespace zr

// How far invalidate_value goes.
enum invalidate_t : int {
    zr_invalidate_quiet = 0,  // clears without telling the parent; composites clear their children too
    zr_invalidate_own = 1,    // clears and lets the parent re-evaluate itself; the children of a composite stay
    zr_invalidate_all = 2,    // clears, children too, and lets the parent re-evaluate itself
};

// Called at the start of asnread.
using zr_asn_preread_hook = void (*)(zr_asn_object* object, zr_r_buffer_t& input);
// Called at each exit of asnread with the status that it returns, but not when it ends in an exception.
using zr_asn_postread_hook = void (*)(zr_asn_object* object, zr_r_buffer_t& input, int status);

// zr_asn_object reads and writes itself in BER (X.690): minimal definite lengths on output; on input definite or
// indefinite lengths and primitive or constructed forms, as each type permits.
//
// An object is present (holds a value) or absent. It keeps the encoding of its contents in a cache that is valid or
// stale; any change marks every enclosing cache stale, where the operation does not say otherwise. A parent never owns
// its members; an object owns its DEFAULT value object. Objects are used by one thread at a time; even encoding writes
// the caches.
//
// Operations return a status of asn1/status.h unless they say otherwise. All may throw zr_asn_memexception.
//
// The order of the virtual operations is part of the interface.
class ZR_API zr_asn_object {
public:
    explicit zr_asn_object(security_t secure);
    // Objects are never copied: both throw zr_asn_unsupportederror.
    zr_asn_object(const zr_asn_object& other);
    zr_asn_object& operator=(const zr_asn_object& other);

    // decode_value reads contents octets: `input` stands at the first, `len` is the definite length, or 0 when the
    // length is indefinite (it then reads up to, not including, the end-of-contents octets). It moves the cursor past
    // what it consumed and stores the value.
    virtual int decode_value(zr_r_buffer_t& input, unsigned int len) = 0;
    // encode_value appends the contents octets: no identifier, no length.
    virtual int encode_value(zr_buffer_t& output) const = 0;
    // check_valid lets a container recompute its own presence from its members; nothing here. The result has no
    // meaning to callers.
    virtual int check_valid(int deep);
    // invalidate_encoding marks this cache and every enclosing one stale.
    virtual void invalidate_encoding() const;
    // invalidate_value makes the object absent and its encoding stale. Returns 0.
    virtual int invalidate_value(invalidate_t extent);
    // set_value_valid makes the object present and lets the parent re-evaluate itself. Returns 0.
    virtual int set_value_valid();
    // check_type answers 1 when an identifier read is this object's.
    virtual int check_type(unsigned int tag, int cls) const;
    // set_default_value installs `value` as the DEFAULT and owns it from then on (a heap object; null clears).
    virtual int set_default_value(zr_asn_object* value);
    // get_encoding brings the cache up to date, and in its first form appends it. 275063200 without value or default.
    virtual int get_encoding(zr_buffer_t& output) const;
    virtual int get_encoding() const;
    // emptyi drops what a list holds, here nothing; empty calls it. Returns 0.
    virtual int emptyi();
    // Throws a plain text (const char*): only composites have children.
    virtual unsigned int get_child_count() const;
    // Whether input may have each of these forms: 1 or 0.
    virtual int encoding_primitive_permitted() const;
    virtual int encoding_constructed_permitted() const;
    virtual int encoding_indefinite_permitted() const;
    // is_constructed and is_indefinite_length: the form that was last read, 1 or 0.
    virtual int is_constructed() const;
    virtual int is_indefinite_length() const;
    // is_polymorphic: whether the identifier depends on the value, 1 or 0.
    virtual int is_polymorphic() const;
    // should_generate_constructed: whether the identifier is written with the constructed bit, 1 or 0.
    virtual int should_generate_constructed() const;
    // set_class (0 universal, 1 application, 2 context-specific, 3 private) and set_tag store the identifier; a valid
    // encoding becomes stale.
    virtual int set_class(int cls);
    virtual int set_tag(unsigned int tag);
    // display appends a debugging text; 275063200 without value or default.
    virtual int display(zr_buffer_t& output) const;
    // empty makes the object absent and drops what it holds. Returns 0.
    virtual int empty();
    // normalize does nothing here; composites ask each of their members. Returns 0.
    virtual int normalize();
    // is_optional, is_defaultable (there is a DEFAULT) and is_encoding_valid answer 1 or 0.
    virtual int is_optional() const;
    virtual int is_defaultable() const;
    virtual int is_encoding_valid() const;
    // The DEFAULT, which the object owns; null when there is none.
    virtual zr_asn_object* get_default_value() const;
    // is_default_value answers 1 when the contents encode as the DEFAULT's do, or the value is absent and has a
    // DEFAULT.
    virtual int is_default_value() const;
    // is_present: holds a value; is_valid: present, defaultable or optional. 1 or 0.
    virtual int is_valid(int deep) const;
    virtual int is_present() const;
    virtual ~zr_asn_object();
    // set_secure changes the mode of the object and of what it holds.
    virtual void set_secure(security_t secure);
    // asnread reads one element. 0 also when an optional or defaultable object finds no or another identifier: it is
    // absent then. On failure the object is absent and the cursor where it was, except after missing end-of-contents
    // octets (275063195), where it stays behind the contents.
    virtual int asnread(zr_r_buffer_t& input);
    // asnwrite appends the element, or nothing when it is absent and optional, or equal to its DEFAULT. On failure
    // `output` is as it was.
    virtual int asnwrite(zr_buffer_t& output) const;
    // Compares the complete encodings.
    virtual bool operator==(const zr_asn_object& other) const;
    // set_optional makes it OPTIONAL, or not. Returns 0.
    virtual int set_optional(int optional);
    // set_empty_permitted tells a composite whether it may be present without a present member; nothing here. Returns
    // 0.
    virtual int set_empty_permitted(int permitted);
    // check_encode_flags answers 1 when the caches of the tree are consistent; its first form also demands that this
    // one's validity is `valid`.
    virtual int check_encode_flags(int valid) const;
    virtual int check_encode_flags() const;
    // display_state_flags appends one line on the object's state, indented by `indent` spaces; composites add their
    // members.
    virtual int display_state_flags(zr_buffer_t& output, int indent) const;

    // All of these: the object that encloses this one, or null; class and tag (X.690 8.1.2); the mode; the type's name.
    void set_parent(zr_asn_object* parent) { parent_ = parent; }
    zr_asn_object* get_parent() const { return parent_; }
    int get_class() const { return class_; }
    unsigned int get_tag() const { return tag_; }
    security_t get_secure() const { return secure_; }
    const char* get_type_name() const { return type_name_; }

    // write_type appends the identifier octets (X.690 8.1.2). Returns 0.
    int write_type(zr_buffer_t& output) const;
    // write_length appends the length of the cached contents (X.690 8.1.3); 275063195 when they are stale.
    int write_length(zr_buffer_t& output) const;

    // Both: what asnread calls before it reads, and when it has; null for nothing.
    void set_preread(zr_asn_preread_hook hook) { preread_ = hook; }
    void set_postread(zr_asn_postread_hook hook) { postread_ = hook; }

protected:
    // What every concrete constructor states: mode, universal class, tag, type name (cut to 16 characters). Inline, so
    // that a literal name costs a few stores.
    void set_identity(security_t secure, unsigned int tag, const char* type_name) {
        secure_ = secure;
        class_ = 0;
        tag_ = tag;
        set_type_name(type_name);
    }
    // set_type_name cuts to 16 characters.
    void set_type_name(const char* type_name) {
        constexpr size_t most = sizeof type_name_ - 1;
        const size_t length = std::strlen(type_name);
        std::memset(type_name_, 0, sizeof type_name_);
        std::memcpy(type_name_, type_name, length < most ? length : most);
    }
    // permit_forms says which forms input may have, 1 or 0 each.
    void permit_forms(int primitive, int constructed, int indefinite);

    // Whether nothing encloses this object, or what does is present by its own flag.
    bool enclosing_present() const { return parent_ == nullptr || parent_->present_ != 0; }

    mutable zr_buffer_t cache_;
    zr_asn_object* parent_ = nullptr;
    zr_asn_object* default_ = nullptr;
    int optional_ = 0;
    int defaultable_ = 0;
    int present_ = 0;
    mutable int encoding_valid_ = 0;
    security_t secure_ = zr_normal;
    int constructed_ = 0;
    int indefinite_ = 0;
    int generate_constructed_ = 0;
    int class_ = 0;
    uint32_t tag_ = 0;
    int primitive_permitted_ = 0;
    int constructed_permitted_ = 0;
    int indefinite_permitted_ = 0;
    zr_asn_preread_hook preread_ = nullptr;
    zr_asn_postread_hook postread_ = nullptr;
    char type_name_[17] = "OBJECT";

    // Both tell every container around this object of its change: it may have become invalid, or it has become present.
    // They keep what they know of their other members until they look again (zr_asn_composite::check_valid).
    void note_loss();
    void note_gain();

private:
    friend class zr_asn_composite;

    static constexpr uint32_t no_slot = ~uint32_t{0};

    // For the container that this object is a member of: the member's place in its table, whether it has changed since
    // the container looked, the place of the next one that has, and whether it then counted as present.
    uint32_t slot_ = no_slot;
    uint32_t next_changed_ = no_slot;
    bool changed_ = false;
    bool counted_ = false;
    // While a container clears its members they do not pass on what happens to them: it tells those around it once, so
    // that clearing a tree costs one step for each of its objects.
    enum class clearing : uint8_t { no, yes, changed } clearing_ = clearing::no;
    // What a composite wants to hear of: losses of the members before the one place, gains of those before the other.
    uint32_t losses_before_ = 0;
    uint32_t gains_before_ = 0;

    void keep_change_of(zr_asn_object& member);
    int read_element(zr_r_buffer_t& input, zr::cursor_guard& guard);
};
