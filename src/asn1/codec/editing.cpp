#include "asn1/record/editing.h"

#include <cstdlib>
#include <cstring>

#include "asn1/codec/copy_packed.h"
#include "asn1/codec/wipe.h"
#include "asn1/record/members.h"

namespace zr {

namespace {

// Releases what a place holds; what it says then means nothing.
void release_place(const field& field, void* where) {
    if (field.value == value_kind::record) {
        void* const structure = is_by_pointer(field) ? place<void*>(where, 0) : where;
        if (structure != nullptr) field.record->free(structure);
        if (is_by_pointer(field)) std::free(structure);
    } else if (has_block(field.value)) {
        void* const block = place<void*>(where, 0);
        if (field.secret) wipe_block(block);
        std::free(block);
    }
}

// A value that is made but in no structure yet: it is released, unless it is put into a place.
class made_value {
public:
    explicit made_value(const field& field) : field_(field) {}
    ~made_value() {
        if (owned_) release();
        if (where_ != room_) std::free(where_);
    }
    made_value(const made_value&) = delete;
    made_value& operator=(const made_value&) = delete;

    // The status says why there is none.
    int make(const new_value& from) {
        where_ = field_.place_octets <= sizeof room_ ? room_ : std::malloc(field_.place_octets);
        if (where_ == nullptr) return zr_err_out_of_memory;
        std::memset(where_, 0, field_.place_octets);
        handed_over_ = from.handed_over;
        const int status = fill(from);
        owned_ = status == 0;
        return status;
    }
    void put(void* to) {
        std::memcpy(to, where_, field_.place_octets);
        owned_ = false;
    }

private:
    int fill(const new_value& from) {
        switch (field_.value) {
            case value_kind::integer:
                std::memcpy(where_, from.at, field_.place_octets);
                return 0;
            case value_kind::text:
            case value_kind::stored_text:
                if (from.length != 0 && std::memchr(from.at, 0, from.length) != nullptr) return zr_err_bad_argument;
                return fill_block(from, 1);
            case value_kind::octets:
                return from.length != 0 ? fill_block(from, 0) : 0;
            case value_kind::record:
                return fill_record(from);
            case value_kind::fixed_octets:
            case value_kind::version:
                break;
        }
        return zr_err_bad_argument;
    }
    int fill_block(const new_value& from, size_t terminator) {
        if (from.length >= UINT32_MAX) return zr_err_out_of_memory;
        auto* const block = static_cast<char*>(std::malloc(from.length + terminator));
        if (block == nullptr) return zr_err_out_of_memory;
        if (from.length != 0) std::memcpy(block, from.at, from.length);
        if (terminator != 0) block[from.length] = '\0';
        place<char*>(where_, 0) = block;
        return 0;
    }
    int fill_record(const new_value& from) {
        void* structure = where_;
        if (is_by_pointer(field_)) {
            structure = std::calloc(1, field_.record->size);
            if (structure == nullptr) return zr_err_out_of_memory;
            place<void*>(where_, 0) = structure;
        }
        if (from.handed_over) {
            std::memcpy(structure, from.at, field_.record->size);
        } else if (!copy_quietly(*field_.record, from.at, structure)) {
            release();
            return zr_err_out_of_memory;
        }
        return 0;
    }

    // Blocks that were handed over are still the caller's.
    void release() {
        if (!handed_over_)
            release_place(field_, where_);
        else if (is_by_pointer(field_))
            std::free(place<void*>(where_, 0));
    }

    const field& field_;
    void* where_ = nullptr;
    bool owned_ = false;
    bool handed_over_ = false;
    alignas(std::max_align_t) unsigned char room_[256];
};

// Makes room for one more element. Where the block has none left it grows by half, so that n elements that are appended
// cost n steps. False when there is no memory; the array is then as it was.
bool make_room_for_one_more(const field& field, void* structure, uint32_t count) {
    void* const array = first_place(field, structure);
    const size_t needed = (size_t{count} + 1) * field.place_octets;
    if (needed / field.place_octets != size_t{count} + 1) return false;
    if (block_room(array) >= needed) return true;
    void* const grown = std::realloc(array, array != nullptr && needed < SIZE_MAX / 2 ? needed + needed / 2 : needed);
    if (grown == nullptr) return false;
    place<void*>(structure, field.offset) = grown;
    return true;
}

int insert_element(const field& field, void* structure, size_t index, const new_value& value) {
    const uint32_t count = place_count(field, structure);
    if (index == behind_the_last) index = count;
    if (index > count) return zr_err_bad_argument;
    if (count == most_count(field)) return zr_err_out_of_memory;
    made_value made(field);
    if (int status = made.make(value)) return status;
    if (!make_room_for_one_more(field, structure, count)) return zr_err_out_of_memory;
    store_count(field, structure, count + 1);
    void* const where = place_at(field, structure, static_cast<uint32_t>(index));
    std::memmove(static_cast<unsigned char*>(where) + field.place_octets, where, (count - index) * field.place_octets);
    made.put(where);
    return 0;
}

void erase_elements(const field& field, void* structure, uint32_t index, uint32_t count) {
    const uint32_t all = place_count(field, structure);
    for (uint32_t i = index + count; i-- != index;)
        release_place(field, place_at(field, structure, i));
    void* const where = place_at(field, structure, index);
    std::memmove(where, static_cast<unsigned char*>(where) + size_t{count} * field.place_octets,
                 size_t{all - index - count} * field.place_octets);
    store_count(field, structure, all - count);
    if (all != count) return;
    std::free(first_place(field, structure));
    place<void*>(structure, field.offset) = nullptr;
}

// Releases a value that lies in no list, and leaves the place empty.
void empty_place(const field& field, void* structure, uint32_t index) {
    void* const where = place_at(field, structure, index);
    // Optional octets of length 0 are absent, and what the pointer may say is not the structure's.
    const bool absent =
        field.held == holding::optional && !is_by_pointer(field) && octets_length(field, structure) == 0;
    if (!absent) release_place(field, where);
    std::memset(where, 0, field.place_octets);
    if (field.count_name != nullptr) store_count(field, structure, 0);
}

}  // namespace

const field* find_field(const record_type& type, size_t member) noexcept {
    for (const field& each : type)
        if (has_member(each.value) && each.offset == member) return &each;
    return nullptr;
}

int set_value(const record_type& type, size_t member, void* structure, size_t index, const new_value& value) noexcept {
    const field* const field = find_field(type, member);
    if (field == nullptr || index >= place_count(*field, structure)) return zr_err_bad_argument;
    made_value made(*field);
    if (int status = made.make(value)) return status;
    const auto at = static_cast<uint32_t>(index);
    if (is_list(field->held)) {
        release_place(*field, place_at(*field, structure, at));
    } else {
        empty_place(*field, structure, at);
        if (field->count_name != nullptr) store_count(*field, structure, static_cast<uint32_t>(value.length));
    }
    made.put(place_at(*field, structure, at));
    return 0;
}

int insert_value(const record_type& type, size_t member, void* structure, size_t index,
                 const new_value& value) noexcept {
    const field* const field = find_field(type, member);
    if (field == nullptr) return zr_err_bad_argument;
    if (is_list(field->held)) return insert_element(*field, structure, index, value);
    if (field->held != holding::slots || index != behind_the_last) return zr_err_bad_argument;
    const uint32_t used = used_places(*field, structure);
    return used != field->size ? set_value(type, member, structure, used, value) : zr_err_out_of_memory;
}

int erase_values(const record_type& type, size_t member, void* structure, size_t index, size_t count) noexcept {
    const field* const field = find_field(type, member);
    if (field == nullptr || field->held == holding::one) return zr_err_bad_argument;
    const uint32_t all = place_count(*field, structure);
    if (index > all || count > all - index) return zr_err_bad_argument;
    const auto first = static_cast<uint32_t>(index);
    if (is_list(field->held)) {
        if (count != 0) erase_elements(*field, structure, first, static_cast<uint32_t>(count));
    } else {
        for (uint32_t i = 0; i < count; ++i)
            empty_place(*field, structure, first + i);
    }
    return 0;
}

}  // namespace zr
