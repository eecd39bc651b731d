#include "asn1/asnbase/composite.h"

#include <cstdlib>
#include <cstring>

namespace {

constexpr const char register_out_of_memory[] = "Out of memory in asn_composite::register_child";

// By how many entries a full table of `count` grows. Falling back to 512 from 34816 entries on is kept.
uint64_t table_increment(uint32_t count) {
    if (count == 0) return 32;
    uint32_t steps = count / 2048;
    if (steps == 0 || steps >= 17) steps = 1;
    return uint64_t{steps} * 512;
}

}  // namespace

namespace zr {

int contents_cursor::open(unsigned int len) {
    if (depth() >= max_depth) throw_out_of_memory("Too many nested levels in asn_composite");
    set_depth(depth() + 1);
    return indefinite_ || limit(len) ? 0 : zr_err_data_ends_early;
}

}  // namespace zr

zr_asn_composite::zr_asn_composite(security_t secure) : zr_asn_object(secure) {
    secure_ = secure;
    permit_forms(0, 1, 1);
    constructed_ = 1;
    generate_constructed_ = 1;
}

zr_asn_composite::zr_asn_composite(unsigned int capacity, security_t secure)
    : zr_asn_object(secure), capacity_(capacity) {
    secure_ = secure;
    permit_forms(0, 1, 0);
    if (capacity == 0) return;
    children_ = static_cast<zr_asn_object**>(std::calloc(capacity, sizeof *children_));
    if (children_ == nullptr) zr::throw_out_of_memory("Out of memory in asn_composite::asn_composite");
}

zr_asn_composite::~zr_asn_composite() { std::free(children_); }

// Resizes the table to `increment` entries beyond those in use.
void zr_asn_composite::grow(uint64_t increment) {
    const uint64_t capacity = count_ + increment;
    if (capacity > UINT32_MAX || capacity > SIZE_MAX / sizeof *children_)
        zr::throw_out_of_memory(register_out_of_memory);
    void* table = std::realloc(children_, static_cast<size_t>(capacity) * sizeof *children_);
    if (table == nullptr) zr::throw_out_of_memory(register_out_of_memory);
    children_ = static_cast<zr_asn_object**>(table);
    capacity_ = static_cast<uint32_t>(capacity);
}

// Mode 1 is not taken away by another one that is handed down.
inline void zr_asn_composite::hand_mode_to(zr_asn_object& child) const {
    if (secure_ == zr_secure || child.secure_ != zr_secure) child.set_secure(secure_);
}

void zr_asn_composite::adopt(zr_asn_object* child, uint32_t slot) {
    child->set_parent(this);
    child->slot_ = slot;
    child->changed_ = false;
    if (secure_ != zr_normal) hand_mode_to(*child);
    invalidate_encoding();
}

int zr_asn_composite::register_child(zr_asn_object* child) {
    if (child == nullptr) return zr_err_bad_argument;
    if (count_ >= capacity_) grow(table_increment(count_));
    children_[count_] = child;
    adopt(child, count_++);
    check_valid(0);
    return 0;
}

int zr_asn_composite::register_child_before(zr_asn_object* child) {
    if (child == nullptr) return zr_err_bad_argument;
    if (count_ == 0 || count_ >= capacity_) {
        // Kept: a full table grows without moving its entries, so the new child replaces the first.
        grow(512);
        children_[count_] = nullptr;
    } else {
        std::memmove(children_ + 1, children_, count_ * sizeof *children_);
    }
    children_[0] = child;
    ++count_;
    forget_checks();
    adopt(child, 0);
    return 0;
}

int zr_asn_composite::get_empty_permitted() { return empty_permitted_; }

void zr_asn_composite::remove_child(unsigned int index) {
    --count_;
    std::memmove(children_ + index, children_ + index + 1, (count_ - index) * sizeof *children_);
    children_[count_] = nullptr;
    forget_checks();
}

void zr_asn_composite::forget_children() {
    for (uint32_t i = 0; i < count_; ++i)
        children_[i] = nullptr;
    count_ = 0;
    forget_checks();
}

namespace {

bool counts(const zr_asn_object& child) { return child.is_present() != 0 || child.is_defaultable() != 0; }

}  // namespace

// Of a composite: remembers that a member among those checked changes.
void zr_asn_object::keep_change_of(zr_asn_object& member) {
    auto& composite = static_cast<zr_asn_composite&>(*this);
    if (composite.children_[member.slot_] != &member) {
        composite.forget_checks();
    } else if (!member.changed_) {
        member.changed_ = true;
        member.next_changed_ = composite.first_changed_;
        composite.first_changed_ = member.slot_;
    }
}

void zr_asn_composite::forget_checks() {
    losses_before_ = gains_before_ = 0;
    counting_ = 0;
    first_changed_ = no_slot;
}

void zr_asn_composite::count(zr_asn_object& child, uint32_t slot) {
    // One that was registered twice counts once, and what is another composite's by now is not marked.
    const bool own = child.parent_ == this;
    const bool now = (!own || child.slot_ == slot) && counts(child);
    if (own) child.counted_ = now;
    counting_ += now ? 1 : 0;
}

// Whether every child is valid. Each change of a child costs one question, so that setting or reading n members costs n
// steps in any order.
bool zr_asn_composite::children_valid() {
    while (first_changed_ < losses_before_) {
        const uint32_t slot = first_changed_;
        zr_asn_object* child = children_[slot];
        if (child == nullptr || !child->changed_) {
            forget_checks();  // one of them has been registered with another composite
            break;
        }
        first_changed_ = child->next_changed_;
        child->changed_ = false;
        if (child->is_valid(0) == 0) {
            keep_change_of(*child);
            return false;
        }
        if (empty_permitted_ != 0) continue;
        counting_ -= child->counted_ ? 1 : 0;
        count(*child, slot);
    }
    for (uint32_t& next = losses_before_; next < count_; ++next) {
        zr_asn_object* child = children_[next];
        if (child == nullptr) continue;
        // Children before it may have come or gone.
        if (child->slot_ != next && child->parent_ == this && get_child(child->slot_) != child) child->slot_ = next;
        if (child->is_valid(0) == 0) return false;
        child->changed_ = false;
        if (empty_permitted_ != 0) continue;
        count(*child, next);
        gains_before_ = next + 1;
    }
    return true;
}

bool zr_asn_composite::children_valid_now(int deep) const {
    for (uint32_t i = 0; i < count_; ++i)
        if (children_[i] != nullptr && children_[i]->is_valid(deep) == 0) return false;
    return true;
}

// Whether a child is present or has a default; all are valid.
bool zr_asn_composite::any_counts(int deep) const {
    if (deep == 0 && empty_permitted_ == 0) return counting_ != 0;
    for (uint32_t i = 0; i < count_; ++i)
        if (children_[i] != nullptr && counts(*children_[i])) return true;
    return false;
}

int zr_asn_composite::check_valid(int deep) {
    if (clearing_ != clearing::no) return 0;  // invalidate_value re-evaluates once, when all children are cleared
    if (count_ == 0 && get_empty_permitted() == 0) return invalidate_value(zr_invalidate_own);
    const bool valid = deep == 0 ? children_valid() : children_valid_now(deep);
    if (!valid) return is_present() != 0 ? invalidate_value(zr_invalidate_own) : 0;
    if (get_empty_permitted() == 0 && !any_counts(deep)) return invalidate_value(zr_invalidate_own);
    // Nothing changes any more: this keeps the propagation finite.
    if (is_present() != 0 && present_ != 0 && enclosing_present()) return 0;
    return set_value_valid();
}

int zr_asn_composite::invalidate_value(invalidate_t extent) {
    if (extent != zr_invalidate_own) {
        forget_checks();
        clearing_ = clearing::yes;
        for (uint32_t i = 0; i < count_; ++i) {
            if (children_[i] != nullptr) children_[i]->invalidate_value(zr_invalidate_quiet);
        }
        const bool changed = clearing_ == clearing::changed;
        clearing_ = clearing::no;
        if (changed) note_loss();
    }
    return zr_asn_object::invalidate_value(zr_invalidate_own);
}

int zr_asn_composite::emptyi() {
    for (uint32_t i = 0; i < count_; ++i) {
        if (children_[i] == nullptr) continue;
        if (int status = children_[i]->emptyi()) return status;
    }
    return 0;
}

unsigned int zr_asn_composite::get_child_count() const { return count_; }

int zr_asn_composite::display(zr_buffer_t& output) const {
    output.append("COMPOSITE-OBJECT(tag=");
    output.append_int(static_cast<int32_t>(tag_));
    output.append(", class=");
    output.append_int(class_);
    output.append(") {");  // never closed: kept
    for (uint32_t i = 0; i < count_; ++i) {
        if (children_[i] == nullptr) continue;
        if (int status = children_[i]->display(output)) return status;
    }
    return 0;
}

int zr_asn_composite::normalize() {
    for (uint32_t i = 0; i < count_; ++i) {
        if (children_[i] == nullptr) continue;
        if (int status = children_[i]->normalize()) return status;
    }
    return 0;
}

int zr_asn_composite::is_valid(int deep) const {
    if (deep != 0) {
        for (uint32_t i = 0; i < count_; ++i) {
            if (children_[i] != nullptr) children_[i]->check_valid(deep);
        }
        // Re-evaluating presence is part of this question.
        const_cast<zr_asn_composite*>(this)->check_valid(0);
    }
    return zr_asn_object::is_valid(deep);
}

void zr_asn_composite::set_secure(security_t secure) {
    zr_asn_object::set_secure(secure);
    if (secure == zr_normal) return;
    for (uint32_t i = 0; i < count_; ++i) {
        if (children_[i] != nullptr) hand_mode_to(*children_[i]);
    }
}

int zr_asn_composite::set_empty_permitted(int permitted) {
    empty_permitted_ = permitted;
    forget_checks();
    check_valid(0);
    return 0;
}

int zr_asn_composite::check_encode_flags(int valid) const { return zr_asn_object::check_encode_flags(valid); }

int zr_asn_composite::check_encode_flags() const {
    if (is_encoding_valid() == 0) return 1;
    for (uint32_t i = 0; i < count_; ++i) {
        const zr_asn_object* child = children_[i];
        if (child == nullptr || (child->is_present() == 0 && child->is_optional() != 0)) continue;
        if (child->check_encode_flags(1) == 0) return 0;
    }
    return 1;
}

int zr_asn_composite::display_state_flags(zr_buffer_t& output, int indent) const {
    zr_asn_object::display_state_flags(output, indent);
    for (uint32_t i = 0; i < count_; ++i) {
        if (children_[i] != nullptr) children_[i]->display_state_flags(output, indent + 2);
    }
    return 0;
}

zr_asn_sequence::zr_asn_sequence(security_t secure) : zr_asn_composite(secure) { set_identity(secure, 16, "SEQUENCE"); }

zr_asn_sequence::zr_asn_sequence(unsigned int capacity, security_t secure) : zr_asn_composite(capacity, secure) {
    set_identity(secure, 16, "SEQUENCE");
}

zr_asn_sequence::~zr_asn_sequence() = default;

int zr_asn_sequence::decode_value(zr_r_buffer_t& input, unsigned int len) {
    const bool indefinite = is_indefinite_length() != 0;
    zr::contents_cursor contents(input, indefinite);
    if (int status = contents.open(len)) return status;
    const unsigned int count = zr_asn_composite::get_child_count();
    for (unsigned int i = 0; i < count; ++i) {
        zr_asn_object* child = get_child(i);
        if (child == nullptr) continue;
        if (int status = child->asnread(contents)) return status;
    }
    if (!indefinite && contents.remaining() != 0) return zr_err_trailing_data;
    contents.close(input, len);
    return 0;
}

int zr_asn_sequence::encode_value(zr_buffer_t& output) const {
    const unsigned int count = zr_asn_composite::get_child_count();
    for (unsigned int i = 0; i < count; ++i) {
        const zr_asn_object* child = get_child(i);
        if (child == nullptr) continue;
        if (int status = child->asnwrite(output)) return status;
    }
    return 0;
}
