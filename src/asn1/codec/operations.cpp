#include "asn1/record/operations.h"

#include <cstdlib>

#include "asn1/codec/values.h"
#include "asn1/codec/work_list.h"
#include "asn1/record/members.h"

namespace zr {

namespace {

// Two structures of a record that are gone through side by side: of a copy the one that is made is the second.
template <class Second>
struct pair_level {
    const record_type* type;
    const void* first;
    Second* second;
    uint32_t element;  // of the field: the place that is next
    uint16_t next;     // the field that is next
};

void* make_zeroed(size_t count, size_t octets, const record_type& type) {
    void* made = std::calloc(count, octets);
    if (made == nullptr) throw_memory_error(type.module);
    return made;
}

// Makes the array of a list, all zero and counted: whatever comes after, it can be released.
void copy_array(const record_type& type, const field& field, const void* from, void* to) {
    const uint32_t count = place_count(field, from);
    if (count == 0) return;
    place<void*>(to, field.offset) = make_zeroed(count, field.place_octets, type);
    store_count(field, to, count);
}

// Copies the values of a field of no records.
void copy_values(const record_type& type, const field& field, const void* from, void* to) {
    const uint32_t count = place_count(field, from);
    for (uint32_t i = 0; i < count; ++i)
        copy_value(field, from, place_at(field, from, i), to, place_at(field, to, i), type.module);
}

void copy_levels(const record_type& root, const void* from, void* to) {
    work_list<pair_level<void>> open;
    open.push({&root, from, to, 0, 0}, root.module);
    while (!open.empty()) {
        auto& top = open.top();
        const record_type& type = *top.type;
        if (top.next == type.field_count) {
            open.pop();
            continue;
        }
        const field& field = type.fields[top.next];
        if (top.element == 0 && is_list(field.held)) copy_array(type, field, top.first, top.second);
        if (field.value != value_kind::record) copy_values(type, field, top.first, top.second);
        if (field.value != value_kind::record || top.element == place_count(field, top.first)) {
            top.element = 0;
            ++top.next;
            continue;
        }
        const uint32_t i = top.element++;
        const void* value = value_at(field, top.first, i);
        if (value == nullptr) {
            if (field.held == holding::pointer_list) throw_memory_error(type.module);
            continue;
        }
        void* where = place_at(field, top.second, i);
        if (is_by_pointer(field)) where = place<void*>(where, 0) = make_zeroed(1, field.record->size, type);
        open.push({field.record, value, where, 0, 0}, type.module);
    }
}

int order_counts(uint32_t left, uint32_t right) { return left < right ? -1 : left > right ? 1 : 0; }

// The same of two fields of no records.
int order_fields(const field& field, const void* left, const void* right) {
    const uint32_t left_count = place_count(field, left);
    const uint32_t right_count = place_count(field, right);
    for (uint32_t i = 0; i < left_count && i < right_count; ++i)
        if (int order = order_values(field, left, place_at(field, left, i), right, place_at(field, right, i)))
            return order;
    return order_counts(left_count, right_count);
}

int order_levels(const record_type& root, const void* left, const void* right) {
    work_list<pair_level<const void>> open;
    open.push({&root, left, right, 0, 0}, root.module);
    while (!open.empty()) {
        auto& top = open.top();
        const record_type& type = *top.type;
        if (top.next == type.field_count) {
            open.pop();
            continue;
        }
        const field& field = type.fields[top.next];
        int order = 0;
        if (field.value != value_kind::record) {
            order = order_fields(field, top.first, top.second);
            ++top.next;
        } else if (top.element == place_count(field, top.first) || top.element == place_count(field, top.second)) {
            order = order_counts(place_count(field, top.first), place_count(field, top.second));
            top.element = 0;
            ++top.next;
        } else {
            const uint32_t i = top.element++;
            const void* one = value_at(field, top.first, i);
            const void* other = value_at(field, top.second, i);
            if (field.held == holding::pointer_list && (one == nullptr || other == nullptr))
                throw_memory_error(type.module);
            order = order_counts(one != nullptr, other != nullptr);
            if (order == 0 && one != nullptr) open.push({field.record, one, other, 0, 0}, type.module);
        }
        if (order != 0) return order;
    }
    return 0;
}

}  // namespace

int copy_record(const record_type& type, const void* from, void* to) {
    std::memset(to, 0, type.size);
    const int status = guarded([&] {
        copy_levels(type, from, to);
        return 0;
    });
    if (status != 0) {
        type.free(to);
        std::memset(to, 0, type.size);
    }
    return status;
}

int order_records(const record_type& type, const void* left, const void* right, int& order) {
    return guarded([&] {
        order = order_levels(type, left, right);
        return 0;
    });
}

}  // namespace zr
