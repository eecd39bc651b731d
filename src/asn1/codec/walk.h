// Going through a structure in the order of its fields, to any depth; or through two of the same record side by side.
#pragma once

#include "asn1/codec/work_list.h"
#include "asn1/record/members.h"

namespace zr {

// Where a walk is: at a field of two structures. The second may be null throughout.
template <class First, class Second>
struct walk_place {
    const record_type& type;
    const zr::field& field;
    First* first;
    Second* second;
};

// walk_records asks the visitor, and stops when it answers false (begin answers nothing):
//
//   values(place)         at a field that holds no records
//   begin(place, count)   at one that holds records, for the number of places to go through
//   enter(place, i, first, second)  at place i of them, for the structures to go into: null to pass over it
//   end(place)            behind the last
//
// Throws zr_asn_memexception when there is no memory for the open levels, and what the visitor throws.
template <class First, class Second, class Visitor>
void walk_records(const record_type& root, First* first, Second* second, Visitor&& visitor) {
    struct level {
        const record_type* type;
        First* first;
        Second* second;
        uint32_t count;  // of the field's places
        uint32_t element;
        uint16_t next;  // field
        bool begun;     // with the field
    };
    static_assert(sizeof(level) <= 48, "levels are cheap");
    work_list<level> open;
    open.push({&root, first, second, 0, 0, 0, false}, root.module);
    while (!open.empty()) {
        level& top = open.top();
        if (top.next == top.type->field_count) {
            open.pop();
            continue;
        }
        const walk_place<First, Second> at{*top.type, top.type->fields[top.next], top.first, top.second};
        if (at.field.value != value_kind::record) {
            if (!visitor.values(at)) return;
            ++top.next;
        } else if (!top.begun) {
            visitor.begin(at, top.count);
            top.begun = true;
            top.element = 0;
        } else if (top.element == top.count) {
            if (!visitor.end(at)) return;
            top.begun = false;
            ++top.next;
        } else {
            First* inner_first = nullptr;
            Second* inner_second = nullptr;
            if (!visitor.enter(at, top.element++, inner_first, inner_second)) return;
            if (inner_first != nullptr)
                open.push({at.field.record, inner_first, inner_second, 0, 0, 0, false}, at.type.module);
        }
    }
}

}  // namespace zr
