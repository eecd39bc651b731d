#include "support/records.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>

#include "asn1/record/members.h"
#include "asn1/record/operations.h"

namespace zr_test {

using zr::field;
using zr::holding;
using zr::place;
using zr::record_type;
using zr::value_kind;

void* zeroed(size_t octets) {
    void* block = std::calloc(octets == 0 ? 1 : octets, 1);
    if (block == nullptr) throw std::bad_alloc();
    return block;
}

std::vector<const record_type*> all_records() {
    std::vector<const record_type*> records;
    for (const zr::record_module* module : zr::modules())
        records.insert(records.end(), module->begin(), module->end());
    return records;
}

structure::structure(const record_type& type) : type_(type), block_(zeroed(type.size)) {}

structure::~structure() {
    type_.free(block_);
    std::free(block_);
}

char* copy_text(const std::string& text) {
    char* copy = static_cast<char*>(zeroed(text.size() + 1));
    std::copy(text.begin(), text.end(), copy);
    return copy;
}

namespace {

class filler {
public:
    filler(std::mt19937& random, const limits& limits) : random_(random), limits_(limits), left_(limits.octets) {}

    void fill(const record_type& type, void* contents, unsigned depth) {
        for (const field& field : type) {
            spend(2);
            if (zr::is_list(field.held)) {
                fill_list(type, field, contents, depth);
            } else if (field.held == holding::slots) {
                fill_slots(field, contents, depth);
            } else if (field.held != holding::optional || below(2) != 0) {
                fill_value(field, contents, zr::place_at(field, contents, 0), depth);
            }
        }
    }

private:
    void fill_value(const field& field, void* contents, void* where, unsigned depth) {
        switch (field.value) {
            case value_kind::integer:
                zr::store_integer(where, field.integer, number());
                break;
            case value_kind::version:
                break;
            case value_kind::text:
            case value_kind::stored_text:
                place<char*>(where, 0) = text();
                break;
            case value_kind::octets:
                place<char*>(where, 0) = octets(field, contents);
                break;
            case value_kind::fixed_octets:
                for (uint32_t i = 0; i < field.size; ++i)
                    place<unsigned char>(where, i) = octet();
                break;
            case value_kind::record:
                if (zr::is_by_pointer(field)) where = place<void*>(where, 0) = zeroed(field.record->size);
                fill(*field.record, where, depth);
                break;
        }
    }

    uint32_t below(uint32_t bound) { return static_cast<uint32_t>(random_() % bound); }
    unsigned char octet() { return static_cast<unsigned char>(random_()); }
    void spend(size_t octets) { left_ -= std::min(left_, octets); }

    // Half of the numbers lie next to a power of two.
    int32_t number() {
        uint32_t bits = static_cast<uint32_t>(random_());
        if (below(2) != 0) bits = static_cast<uint32_t>(uint64_t{1} << below(33)) + below(3) - 1;
        return static_cast<int32_t>(below(2) != 0 ? bits : ~bits);
    }

    size_t length() {
        static constexpr size_t steps[] = {128, 256, 65536};
        size_t wanted = below(8) != 0 ? below(12) : steps[below(3)] + below(5) - 3;
        if (wanted > left_ / 2) wanted = std::min<size_t>(below(12), left_);
        spend(wanted);
        return wanted;
    }

    char* text() {
        if (below(8) == 0) return nullptr;
        std::string made(length(), 0);
        for (char& c : made)
            c = static_cast<char>(1 + below(limits_.ascii ? 127 : 255));
        return copy_text(made);
    }

    char* octets(const field& field, void* contents) {
        if (below(8) == 0) {
            zr::store_count(field, contents, below(3));
            return nullptr;
        }
        std::string made(length(), 0);
        if (made.empty() && field.held == holding::optional)
            return nullptr;  // of length 0 it would not be the record's
        for (char& c : made)
            c = static_cast<char>(octet());
        zr::store_count(field, contents, static_cast<uint32_t>(made.size()));
        return copy_text(made);
    }

    void fill_slots(const field& field, void* contents, unsigned depth) {
        const uint32_t one_in = 1 + below(3) * below(20);
        const uint32_t end = below(4) == 0 ? 0 : below(field.size + 1);
        for (uint32_t i = 0; i < end; ++i)
            if (below(one_in) == 0 && left_ != 0) fill_value(field, contents, zr::place_at(field, contents, i), depth);
    }

    void fill_list(const record_type& type, const field& field, void* contents, unsigned depth) {
        size_t count = below(3) * below(3);
        if (below(16) == 0) count = below(2) != 0 ? 126 + below(4) : 254 + below(4);
        if (field.record == &type) {
            if (depth <= 1) count = 0;
            --depth;
            if (depth > 8 && count == 0) count = 1;
        }
        count = std::min(count, left_ / 8);
        zr::store_count(field, contents, static_cast<uint32_t>(count));
        if (count == 0) {
            if (below(4) == 0) zr::store_count(field, contents, 3);  // without an array
            return;
        }
        place<void*>(contents, field.offset) = zeroed(count * field.place_octets);
        for (uint32_t i = 0; i < count; ++i) {
            spend(2);
            fill_value(field, contents, zr::place_at(field, contents, i), depth);
        }
    }

    std::mt19937& random_;
    const limits& limits_;
    size_t left_;
};

}  // namespace

void fill(const record_type& type, void* contents, std::mt19937& random, const limits& limits) {
    filler(random, limits).fill(type, contents, limits.depth);
}

std::string difference(const record_type& type, const void* left, const void* right) {
    int order = 0;
    if (int status = zr::order_records(type, left, right, order)) return "status " + std::to_string(status);
    return order == 0 ? "" : order < 0 ? "the first comes before the second" : "the second comes before the first";
}

std::string leftover(const record_type& type, const void* contents) {
    for (const field& field : type) {
        if (field.held == holding::one && field.value == value_kind::record) {
            const std::string inside = leftover(*field.record, zr::value_at(field, contents));
            if (!inside.empty()) return field.name + ("." + inside);
        }
        if (field.count_name != nullptr && zr::stored_count(field, contents) != 0) return field.count_name;
        const bool holds_blocks = field.held != holding::one || zr::has_block(field.value);
        for (uint32_t i = 0; holds_blocks && i < std::max(field.size, 1u); ++i)
            if (place<void*>(contents, field.offset + i * sizeof(void*)) != nullptr) return field.name;
    }
    return "";
}

std::vector<char**> texts_of(const record_type& type, void* contents) {
    std::vector<char**> texts;
    for (const field& field : type) {
        for (uint32_t i = 0; i < zr::place_count(field, contents); ++i) {
            void* value = zr::value_at(field, contents, i);
            if (field.value == value_kind::text) texts.push_back(&place<char*>(value, 0));
            if (field.value != value_kind::record || value == nullptr) continue;
            const std::vector<char**> inside = texts_of(*field.record, value);
            texts.insert(texts.end(), inside.begin(), inside.end());
        }
    }
    return texts;
}

}  // namespace zr_test
