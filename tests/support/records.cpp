#include "support/records.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>

#include "asn1/record/integers.h"
#include "asn1/record/shape.h"

namespace zr_test {

using zr::field;
using zr::field_kind;
using zr::place;
using zr::record_type;

void* zeroed(size_t octets) {
    void* block = std::calloc(octets == 0 ? 1 : octets, 1);
    if (block == nullptr) throw std::bad_alloc();
    return block;
}

namespace {

uint32_t stored_count(const field& field, void* contents) {
    return static_cast<uint32_t>(zr::load_integer(&place<char>(contents, field.count_offset), field.count));
}

void store_count(const field& field, void* contents, uint32_t count) {
    zr::store_integer(&place<char>(contents, field.count_offset), field.count, static_cast<int32_t>(count));
}

// How many elements or octets there are: none without an array, whatever the count says.
uint32_t count_of(const field& field, void* contents) {
    return place<void*>(contents, field.offset) != nullptr ? stored_count(field, contents) : 0;
}

// Whether the structures that a field holds are blocks of their own.
bool holds_pointers(field_kind kind) {
    return kind == field_kind::optional_nested || kind == field_kind::slots || kind == field_kind::list_of_pointers;
}

// visit_nested calls visit(record, structure) for each structure that a field of `contents` holds.
template <class Visit>
void visit_nested(const field& field, void* contents, Visit&& visit) {
    if (field.nested == nullptr) return;
    char* member = &place<char>(contents, field.offset);
    size_t count = field.kind == field_kind::slots ? field.size : 1;
    if (zr::is_list(field.kind)) {
        count = count_of(field, contents);
        member = place<char*>(member, 0);
    }
    for (size_t i = 0; i < count; ++i) {
        void* element = member + i * field.element_octets();
        if (holds_pointers(field.kind)) element = place<void*>(element, 0);
        if (element != nullptr) visit(*field.nested, element);
    }
}

// What the elements of a list are as members of their own.
field_kind element_kind(field_kind list) {
    if (list == field_kind::list_of_texts) return field_kind::text;
    if (list == field_kind::list_of_integers) return field_kind::integer;
    return list == field_kind::list_of_records ? field_kind::nested : field_kind::optional_nested;
}

}  // namespace

std::vector<const record_type*> all_records() {
    std::vector<const record_type*> records;
    for (const zr::record_module* module : zr::modules())
        records.insert(records.end(), module->begin(), module->end());
    return records;
}

void release(const record_type& type, void* contents) {
    for (const field& field : type) {
        visit_nested(field, contents, [&](const record_type& nested, void* structure) {
            release(nested, structure);
            if (holds_pointers(field.kind)) std::free(structure);
        });
        void* member = &place<char>(contents, field.offset);
        if (field.kind == field_kind::list_of_texts)
            for (size_t i = 0; i < count_of(field, contents); ++i)
                std::free(place<char**>(member, 0)[i]);
        const bool counted = zr::is_list(field.kind) || field.kind == field_kind::octets;
        if (counted) store_count(field, contents, 0);
        if (counted || field.kind == field_kind::text) std::free(std::exchange(place<void*>(member, 0), nullptr));
        if (field.kind == field_kind::optional_nested || field.kind == field_kind::slots)
            std::memset(member, 0, std::max(field.size, 1u) * sizeof(void*));
    }
}

structure::structure(const record_type& type) : type_(type), block_(zeroed(type.size)) {}

structure::~structure() {
    release(type_, block_);
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
            void* member = &place<char>(contents, field.offset);
            spend(2);
            if (zr::is_list(field.kind)) {
                fill_list(type, field, contents, depth);
            } else if (field.kind == field_kind::octets) {
                place<char*>(member, 0) = octets(field, contents);
            } else if (field.kind == field_kind::slots) {
                fill_slots(field, member, depth);
            } else if (field.kind != field_kind::optional_nested || below(2) != 0) {
                fill_one(field, field.kind, member, depth);
            }
        }
    }

private:
    void fill_one(const field& field, field_kind kind, void* member, unsigned depth) {
        if (kind == field_kind::integer) zr::store_integer(member, field.integer, number());
        if (kind == field_kind::text) place<char*>(member, 0) = text();
        if (kind == field_kind::nested) fill(*field.nested, member, depth);
        if (kind == field_kind::optional_nested) place<void*>(member, 0) = made(*field.nested, depth);
        for (uint32_t i = 0; kind == field_kind::fixed_octets && i < field.size; ++i)
            place<unsigned char>(member, i) = octet();
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

    void* made(const record_type& type, unsigned depth) {
        void* contents = zeroed(type.size);
        fill(type, contents, depth);
        return contents;
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
            store_count(field, contents, below(3));
            return nullptr;
        }
        std::string made(length(), 0);
        for (char& c : made)
            c = static_cast<char>(octet());
        store_count(field, contents, static_cast<uint32_t>(made.size()));
        return copy_text(made);
    }

    void fill_slots(const field& field, void* member, unsigned depth) {
        const uint32_t one_in = 1 + below(3) * below(20);
        const uint32_t end = below(4) == 0 ? 0 : below(field.size + 1);
        for (uint32_t i = 0; i < end; ++i)
            if (below(one_in) == 0 && left_ != 0) place<void*>(member, i * sizeof(void*)) = made(*field.nested, depth);
    }

    void fill_list(const record_type& type, const field& field, void* contents, unsigned depth) {
        size_t count = below(3) * below(3);
        if (below(16) == 0) count = below(2) != 0 ? 126 + below(4) : 254 + below(4);
        if (field.nested == &type) {
            if (depth <= 1) count = 0;
            --depth;
            if (depth > 8 && count == 0) count = 1;
        }
        count = std::min(count, left_ / 8);
        store_count(field, contents, static_cast<uint32_t>(count));
        if (count == 0) {
            if (below(4) == 0) store_count(field, contents, 3);  // without an array
            return;
        }
        auto* elements = static_cast<char*>(zeroed(count * field.element_octets()));
        place<char*>(contents, field.offset) = elements;
        for (size_t i = 0; i < count; ++i, elements += field.element_octets()) {
            spend(2);
            fill_one(field, element_kind(field.kind), elements, depth);
        }
    }

    std::mt19937& random_;
    const limits& limits_;
    size_t left_;
};

// Compares and, when the answer is no, writes the way to the difference.
class comparison {
public:
    bool equal(const record_type& type, void* left, void* right) {
        for (const field& field : type) {
            if (equal(field, left, right)) continue;
            way_ = field.name + (way_.empty() || way_[0] == '[' ? way_ : "." + way_);
            return false;
        }
        return true;
    }
    const std::string& way() const { return way_; }

private:
    static const char* text_at(void* member) {
        const char* text = place<const char*>(member, 0);
        return text != nullptr ? text : "";
    }

    bool equal(const field& field, void* left, void* right) {
        void* member = &place<char>(left, field.offset);
        void* other = &place<char>(right, field.offset);
        if (field.kind == field_kind::slots)
            return equal_elements(field, field.size, static_cast<char*>(member), static_cast<char*>(other));
        if (!zr::is_list(field.kind) && field.kind != field_kind::octets)
            return equal_one(field, field.kind, member, other);
        const uint32_t count = count_of(field, left);
        if (count != count_of(field, right)) return false;
        if (zr::is_list(field.kind))
            return equal_elements(field, count, place<char*>(member, 0), place<char*>(other, 0));
        return count == 0 || std::memcmp(place<void*>(member, 0), place<void*>(other, 0), count) == 0;
    }

    bool equal_one(const field& field, field_kind kind, void* left, void* right) {
        if (kind == field_kind::integer) return std::memcmp(left, right, field.integer.octets) == 0;
        if (kind == field_kind::fixed_octets) return std::memcmp(left, right, field.size) == 0;
        if (kind == field_kind::text) return std::strcmp(text_at(left), text_at(right)) == 0;
        if (kind == field_kind::nested) return equal(*field.nested, left, right);
        void* inside = place<void*>(left, 0);
        void* other = place<void*>(right, 0);
        return inside == nullptr || other == nullptr ? inside == other : equal(*field.nested, inside, other);
    }

    bool equal_elements(const field& field, size_t count, char* left, char* right) {
        for (size_t i = 0; i < count; ++i) {
            const size_t at = i * field.element_octets();
            if (equal_one(field, element_kind(field.kind), left + at, right + at)) continue;
            way_ = "[" + std::to_string(i) + "]" + (way_.empty() ? "" : "." + way_);
            return false;
        }
        return true;
    }

    std::string way_;
};

}  // namespace

void fill(const record_type& type, void* contents, std::mt19937& random, const limits& limits) {
    filler(random, limits).fill(type, contents, limits.depth);
}

std::string difference(const record_type& type, const void* left, const void* right) {
    comparison compared;
    compared.equal(type, const_cast<void*>(left), const_cast<void*>(right));
    return compared.way();
}

std::string leftover(const record_type& type, const void* contents) {
    void* start = const_cast<void*>(contents);
    for (const field& field : type) {
        if (field.kind == field_kind::nested) {
            const std::string inside = leftover(*field.nested, &place<char>(start, field.offset));
            if (!inside.empty()) return field.name + ("." + inside);
            continue;
        }
        if (field.kind == field_kind::integer || field.kind == field_kind::fixed_octets) continue;
        if (field.count_name != nullptr && stored_count(field, start) != 0) return field.count_name;
        for (uint32_t i = 0; i < std::max(field.size, 1u); ++i)
            if (place<void*>(start, field.offset + i * sizeof(void*)) != nullptr) return field.name;
    }
    return "";
}

std::vector<char**> texts_of(const record_type& type, void* contents) {
    std::vector<char**> texts;
    for (const field& field : type) {
        if (field.kind == field_kind::text) texts.push_back(&place<char*>(contents, field.offset));
        if (field.kind == field_kind::list_of_texts)
            for (size_t i = 0; i < count_of(field, contents); ++i)
                texts.push_back(place<char**>(contents, field.offset) + i);
        visit_nested(field, contents, [&](const record_type& nested, void* structure) {
            const std::vector<char**> inside = texts_of(nested, structure);
            texts.insert(texts.end(), inside.begin(), inside.end());
        });
    }
    return texts;
}

}  // namespace zr_test
