// Structures of any record, made, filled, compared and released by the registry's tables of fields: what tests do with
// one record they do with all.
#pragma once

#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "asn1/record/registry.h"

namespace zr_test {

// All records of the registry, in its order.
std::vector<const zr::record_type*> all_records();

// structure owns one zeroed structure of a record and releases its contents with it. Every pointer inside it is a block
// from malloc, in what tests fill as in what a decode does.
class structure {
public:
    explicit structure(const zr::record_type& type);
    ~structure();
    structure(const structure&) = delete;
    structure& operator=(const structure&) = delete;

    const zr::record_type& type() const { return type_; }
    void* get() { return block_; }
    template <class S>
    S& as() {
        return *static_cast<S*>(block_);
    }

private:
    const zr::record_type& type_;
    void* block_;
};

// What random structures may hold.
struct limits {
    size_t octets = 2000;  // of the encoding, roughly
    unsigned depth = 4;    // levels of a record that contains itself
    bool ascii = false;    // texts of ASCII only; else of any octets but zero
};

// fill gives a zeroed structure random contents: lengths and numbers around the places where encodings change, null and
// empty texts, null arrays whatever the count says, null slots before filled ones.
void fill(const zr::record_type& type, void* contents, std::mt19937& random, const limits& limits = {});

// difference says in which order two structures come, or what the comparison answers; empty when they are equal.
std::string difference(const zr::record_type& type, const void* left, const void* right);

// leftover names the first pointer that is not null or count that is not 0; empty when a structure holds nothing.
std::string leftover(const zr::record_type& type, const void* contents);

// The text members of a structure and of all it contains, in the order of their encodings.
std::vector<char**> texts_of(const zr::record_type& type, void* contents);

// Zeroed blocks from malloc, which never fail: of so many octets, and of a text with a terminating zero.
void* zeroed(size_t octets);
char* copy_text(const std::string& text);

}  // namespace zr_test
