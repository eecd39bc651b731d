#include "asn1/record/general_decoder.h"

#include <cstdlib>
#include <cstring>
#include <memory>

#include "asn1/record/integers.h"
#include "asn1/record/quick_reader.h"
#include "asn1/record/work_list.h"

namespace zr {

namespace {

// Values in the library's own form are many among others too.
bool step(input& in, octet_position behind) {
    if (behind == nullptr) return false;
    in.at = behind;
    return true;
}
int read_any_integer(input& in, int32_t& value) {
    return step(in, quick_integer(in.at, in.end, value)) ? 0 : read_integer(in, value);
}
int read_any_text(input& in, char*& text) {
    return step(in, quick_text(in.at, in.end, text)) ? 0 : read_text(in, text);
}
int read_any_octets(input& in, unsigned char*& data, uint32_t& length, const char* file) {
    if (step(in, quick_octets(in.at, in.end, data, length, file))) return 0;
    const int status = read_octets(in, data, length);
    if (status == zr_err_out_of_memory) throw_memory_error(file);
    return status;
}

void* make_zeroed(const record_type& type) { return std::calloc(1, type.size); }

// A list that is being read. Its array is made for the elements that their headers promise, but for no more than the
// octets can hold, and grows when there are more.
class list_reader {
public:
    list_reader(const record_type& owner, const field& field, void* structure)
        : owner_(&owner), field_(&field), structure_(structure) {}

    void make_room(const input& in, const scope& entered) {
        if (entered.indefinite || in.at == in.end) return;
        const size_t most = in.left() / (field_->nested != nullptr ? field_->nested->min_octets : 2) + 1;
        const size_t counted = count_elements(in.at, in.end);
        resize(counted < most ? counted : most);
    }
    // The place of a new element, counted and all zero; null when the count cannot hold it.
    unsigned char* add() {
        const size_t count = size();
        if (count == (field_->count.octets == 2 ? UINT16_MAX : UINT32_MAX)) return nullptr;
        if (count == capacity_) resize(capacity_ < 4 ? 8 : capacity_ * 2);
        const size_t octets = field_->element_octets();
        unsigned char* element = array() + count * octets;
        std::memset(element, 0, octets);
        store_integer(count_member(), field_->count, static_cast<int32_t>(count + 1));
        return element;
    }
    // The structure of a new element, in the array or in a block of its own; null when the count cannot hold it.
    void* add_record() {
        unsigned char* element = add();
        if (element == nullptr || field_->kind == field_kind::list_of_records) return element;
        void* made = make_zeroed(*field_->nested);
        if (made == nullptr) throw_memory_error(owner_->module);
        return place<void*>(element, 0) = made;
    }
    // Gives back what growing has left over.
    void finish() {
        if (size() == capacity_) return;
        void* shrunk = std::realloc(array(), size() * field_->element_octets());
        if (shrunk != nullptr) array() = static_cast<unsigned char*>(shrunk);
    }

private:
    unsigned char*& array() const { return place<unsigned char*>(structure_, field_->offset); }
    void* count_member() const { return &place<unsigned char>(structure_, field_->count_offset); }
    size_t size() const { return static_cast<uint32_t>(load_integer(count_member(), field_->count)); }

    void resize(size_t capacity) {
        const size_t octets = field_->element_octets();
        void* block = capacity <= SIZE_MAX / octets ? std::realloc(array(), capacity * octets) : nullptr;
        if (block == nullptr) throw_memory_error(owner_->module);
        array() = static_cast<unsigned char*>(block);
        capacity_ = capacity;
    }

    const record_type* owner_;
    const field* field_;
    void* structure_;
    size_t capacity_ = 0;
};

int read_record(const record_type& type, input& in, void* out);

int read_element(const field& field, input& in, list_reader& list) {
    if (field.nested != nullptr) {
        void* element = list.add_record();
        return element != nullptr ? read_record(*field.nested, in, element) : beyond_structure;
    }
    unsigned char* element = list.add();
    if (element == nullptr) return beyond_structure;
    if (field.kind == field_kind::list_of_texts) return read_any_text(in, place<char*>(element, 0));
    int32_t value = 0;
    const int status = read_any_integer(in, value);
    store_integer(element, field.integer, value);
    return status;
}

int read_list(const record_type& type, const field& field, input& in, void* out) {
    scope entered{};
    if (int status = enter_sequence(in, entered)) return status;
    list_reader list(type, field, out);
    list.make_room(in, entered);
    while (!at_end(in, entered)) {
        if (int status = read_element(field, in, list)) return status;
    }
    list.finish();
    return leave_sequence(in, entered);
}

// A structure that is read and dropped.
struct release_block {
    const record_type* type;
    void operator()(void* block) const {
        type->codec.release(block);
        std::free(block);
    }
};

// Positions behind the last slot are read and checked like the others, and dropped.
int read_slots(const record_type& type, const field& field, input& in, void* out) {
    scope entered{};
    if (int status = enter_sequence(in, entered)) return status;
    for (uint32_t i = 0; !at_end(in, entered); ++i) {
        // An indefinite length may run out of octets: what is not there is no NULL, and no record.
        if (in.at != in.end && in.at[0] != id_sequence && skip_null(in)) continue;
        void* made = make_zeroed(*field.nested);
        if (made == nullptr) throw_memory_error(type.module);
        std::unique_ptr<void, release_block> dropped(made, {field.nested});
        if (i < field.size) place<void*>(out, field.offset + i * sizeof(void*)) = dropped.release();
        const int status = read_record(*field.nested, in, made);
        // A position that reads as neither NULL nor the record fits no alternative, whatever its own status.
        if (status != 0) return status == beyond_structure ? status : zr_err_no_match;
    }
    return leave_sequence(in, entered);
}

int read_field(const record_type& type, const field& field, input& in, void* out) {
    unsigned char* member = &place<unsigned char>(out, field.offset);
    switch (field.kind) {
        case field_kind::integer: {
            int32_t value = 0;
            const int status = read_any_integer(in, value);
            store_integer(member, field.integer, value);
            return status;
        }
        case field_kind::text:
            return read_any_text(in, place<char*>(member, 0));
        case field_kind::octets:
            return read_any_octets(in, place<unsigned char*>(member, 0), place<uint32_t>(out, field.count_offset),
                                   type.module);
        case field_kind::fixed_octets:
            return read_fixed_octets(in, member, field.size);
        case field_kind::nested:
            return read_record(*field.nested, in, member);
        case field_kind::optional_nested: {
            if (!next_is_sequence(in)) return 0;
            void* made = make_zeroed(*field.nested);
            if (made == nullptr) throw_optional_memory_error(type.module);
            place<void*>(member, 0) = made;
            return read_record(*field.nested, in, made);
        }
        case field_kind::slots:
            return read_slots(type, field, in, out);
        default:
            return read_list(type, field, in, out);
    }
}

int read_fields(const record_type& type, uint32_t count, input& in, void* out) {
    for (uint32_t i = 0; i < count; ++i)
        if (int status = read_field(type, type.fields[i], in, out)) return status;
    return 0;
}

// A record that contains itself: each open level keeps its place on a work list.
int read_nested_records(const record_type& type, input& in, void* root) {
    struct level {
        scope node_scope;
        scope list_scope;
        list_reader list;
    };
    const uint32_t own = type.field_count - 1;
    work_list<level> open;
    for (void* node = root;;) {
        scope node_scope{};
        scope list_scope{};
        if (int status = enter_sequence(in, node_scope)) return status;
        if (int status = read_fields(type, own, in, node)) return status;
        if (int status = enter_sequence(in, list_scope)) return status;
        list_reader list(type, type.fields[own], node);
        list.make_room(in, list_scope);
        open.push({node_scope, list_scope, list}, type.module);
        // Close what ends here, up to a list with another element.
        while (at_end(in, open.top().list_scope)) {
            level& ended = open.top();
            ended.list.finish();
            if (int status = leave_sequence(in, ended.list_scope)) return status;
            if (int status = leave_sequence(in, ended.node_scope)) return status;
            open.pop();
            if (open.empty()) return 0;
        }
        node = open.top().list.add_record();
        if (node == nullptr) return beyond_structure;
    }
}

// Recurses only as deep as the records' descriptions nest.
int read_record(const record_type& type, input& in, void* out) {
    if (type.is_leaf) {
        if (step(in, type.codec.read(in.at, in.end, out))) return 0;
        type.codec.release(out);
        std::memset(out, 0, type.size);
    }
    if (type.contains_itself()) return read_nested_records(type, in, out);
    scope entered{};
    if (int status = enter_sequence(in, entered)) return status;
    if (int status = read_fields(type, type.field_count, in, out)) return status;
    return leave_sequence(in, entered);
}

}  // namespace

int read_any_form(const record_type& type, input& in, void* out) { return read_record(type, in, out); }

}  // namespace zr
