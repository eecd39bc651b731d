#include "asn1/record/operations.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>

#include "asn1/codec/copy_packed.h"
#include "asn1/codec/values.h"
#include "asn1/codec/walk.h"

namespace zr {

namespace {

// Copies the first structure into the second, which is zero. Blocks come from malloc, or if there are `blocks` from
// those.
struct copier {
    using place_of_both = walk_place<const void, void>;
    packed_blocks* blocks;

    bool values(const place_of_both& at) const {
        make_array(at);
        const uint32_t count = place_count(at.field, at.first);
        for (uint32_t i = 0; i < count; ++i)
            copy_value(at.field, at.first, place_at(at.field, at.first, i), at.second, place_at(at.field, at.second, i),
                       blocks, at.type.module);
        return true;
    }
    void begin(const place_of_both& at, uint32_t& count) const {
        make_array(at);
        count = place_count(at.field, at.first);
    }
    bool enter(const place_of_both& at, uint32_t i, const void*& first, void*& second) const {
        first = value_at(at.field, at.first, i);
        if (first == nullptr) {
            if (at.field.held == holding::pointer_list) throw_memory_error(at.type.module);
            return true;
        }
        second = place_at(at.field, at.second, i);
        if (is_by_pointer(at.field)) second = place<void*>(second, 0) = make_zeroed(1, at.field.record->size, at.type);
        return true;
    }
    bool end(const place_of_both&) const { return true; }

private:
    void* make_zeroed(size_t count, size_t octets, const record_type& type) const {
        void* made = nullptr;
        if (blocks == nullptr) {
            made = std::calloc(count, octets);
        } else if (count <= SIZE_MAX / octets) {
            made = allocate<alignof(std::max_align_t)>(count * octets, blocks);
            if (made != nullptr) std::memset(made, 0, count * octets);
        }
        if (made == nullptr) throw_memory_error(type.module);
        return made;
    }
    // Makes the array of a list, all zero and counted: whatever comes after, it can be released.
    void make_array(const place_of_both& at) const {
        const uint32_t count = is_list(at.field.held) ? place_count(at.field, at.first) : 0;
        if (count == 0) return;
        place<void*>(at.second, at.field.offset) = make_zeroed(count, at.field.place_octets, at.type);
        store_count(at.field, at.second, count);
    }
};

int order_counts(uint32_t left, uint32_t right) { return left < right ? -1 : left > right ? 1 : 0; }

// Adds up the octets of the blocks of a structure, each as long as it may get by alignment.
struct measurer {
    using place_in_one = walk_place<const void, const void>;

    bool values(const place_in_one& at) {
        const uint32_t count = add_array(at);
        if (at.field.value == value_kind::octets) {
            octets += octets_length(at.field, at.first);
        } else if (at.field.value == value_kind::text || at.field.value == value_kind::stored_text) {
            for (uint32_t i = 0; i < count; ++i)
                octets += std::strlen(text_in(place_at(at.field, at.first, i))) + 1;
        }
        return true;
    }
    void begin(const place_in_one& at, uint32_t& count) { count = add_array(at); }
    bool enter(const place_in_one& at, uint32_t i, const void*& first, const void*&) {
        first = value_at(at.field, at.first, i);
        if (first != nullptr && is_by_pointer(at.field)) octets += at.field.record->size + alignof(std::max_align_t);
        return true;
    }
    bool end(const place_in_one&) const { return true; }

    size_t octets = 0;

private:
    uint32_t add_array(const place_in_one& at) {
        const uint32_t count = place_count(at.field, at.first);
        if (is_list(at.field.held) && count != 0)
            octets += size_t{count} * at.field.place_octets + alignof(std::max_align_t);
        return count;
    }
};

// Finds the first difference.
struct comparer {
    using place_of_both = walk_place<const void, const void>;

    bool values(const place_of_both& at) {
        const field& field = at.field;
        const uint32_t left = place_count(field, at.first);
        const uint32_t right = place_count(field, at.second);
        for (uint32_t i = 0; order == 0 && i < left && i < right; ++i)
            order =
                order_values(field, at.first, place_at(field, at.first, i), at.second, place_at(field, at.second, i));
        if (order == 0) order = order_counts(left, right);
        return order == 0;
    }
    void begin(const place_of_both& at, uint32_t& count) const {
        count = std::min(place_count(at.field, at.first), place_count(at.field, at.second));
    }
    bool enter(const place_of_both& at, uint32_t i, const void*& first, const void*& second) {
        first = value_at(at.field, at.first, i);
        second = value_at(at.field, at.second, i);
        if (at.field.held == holding::pointer_list && (first == nullptr || second == nullptr))
            throw_memory_error(at.type.module);
        order = order_counts(first != nullptr, second != nullptr);
        return order == 0;
    }
    bool end(const place_of_both& at) {
        order = order_counts(place_count(at.field, at.first), place_count(at.field, at.second));
        return order == 0;
    }

    int order = 0;
};

}  // namespace

void copy_packed(const record_type& type, const void* from, void* to, packed_blocks& blocks) {
    // The room is measured first: a structure of its own lies beside what is made here.
    measurer needed;
    walk_records<const void, const void>(type, from, nullptr, needed);
    blocks.start(needed.octets);
    walk_records(type, from, to, copier{&blocks});
}

namespace {

// Throws zr_asn_memexception, and leaves `to` all zero then.
void copy_into_blocks(const record_type& type, const void* from, void* to) {
    std::memset(to, 0, type.size);
    try {
        walk_records(type, from, to, copier{nullptr});
    } catch (const zr_asn_exception&) {
        type.free(to);
        std::memset(to, 0, type.size);
        throw;
    }
}

}  // namespace

bool copy_quietly(const record_type& type, const void* from, void* to) {
    try {
        copy_into_blocks(type, from, to);
        return true;
    } catch (const zr_asn_exception&) {
        return false;
    }
}

int copy_record(const record_type& type, const void* from, void* to) {
    return guarded([&] {
        copy_into_blocks(type, from, to);
        return 0;
    });
}

int order_records(const record_type& type, const void* left, const void* right, int& order) {
    return guarded([&] {
        comparer compared;
        walk_records(type, left, right, compared);
        order = compared.order;
        return 0;
    });
}

}  // namespace zr
