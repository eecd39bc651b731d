// Any BER, element by element, damaged or not (X.690, 8.1).
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace zr::json {

enum class ber_kind : uint8_t {
    element,          // a header that could be read to its end
    end_of_contents,  // 00 00 that ends an indefinite length
    missing_end,      // an indefinite length that ends without 00 00, at `offset`; no octets
    unreadable,       // `length` octets from `offset` up to the end of the enclosing element
};

enum class ber_damage : uint8_t {
    none,
    tag_too_large,  // element: the tag number needs more than 64 bits; `tag` is 0
    too_long,       // element: it claims `declared` octets, `length` are there, up to the end of what encloses it
    indefinite_primitive,  // element: an indefinite length in the primitive form
    stray_end,             // element: 00 00 where no indefinite length is open
    false_end,             // element: the tag of end-of-contents octets, which are none
    identifier_cut,        // unreadable
    length_cut,            // unreadable
    length_reserved,       // unreadable: the length octet ff
    no_length,             // unreadable: contents of an indefinite length in the primitive form
};

// What is wrong, in words; empty for none.
const char* damage_text(ber_damage damage);

struct ber_item {
    ber_kind kind = ber_kind::element;
    ber_damage damage = ber_damage::none;
    unsigned char cls = 0;  // 0 universal, 1 application, 2 context-specific, 3 private
    bool constructed = false;
    bool indefinite = false;
    bool closed = false;                // constructed, but its octets are not looked into: see too_long
    bool in_cut = false;                // what encloses it is too long; so an element that is too long too is no news
    unsigned char identifier_size = 0;  // octets; 255 stands for 255 and more
    uint64_t tag = 0;
    size_t offset = 0;      // of the identifier
    size_t header = 0;      // octets of identifier and length
    size_t length = 0;      // octets of contents that are there; unknown, and 0, when indefinite
    uint64_t declared = 0;  // octets of contents that the length tells; UINT64_MAX for more than 64 bits can tell
    size_t depth = 0;       // elements that enclose it

    // Whether the next items lie inside, one level deeper.
    bool opens() const { return kind == ber_kind::element && (constructed || indefinite) && !closed; }
    bool is_universal(uint64_t number) const { return kind == ber_kind::element && cls == 0 && tag == number; }
    // The header that X.690, 10.1 asks for: octets of the shortest identifier and length.
    size_t shortest_identifier() const;
    size_t shortest_length() const;
    size_t length_size() const { return header - identifier_size; }
};

// ber_scanner walks the octets from front to back and goes into everything constructed. It copies nothing, looks at
// headers only, and keeps the ends of open elements in a block of its own: a million levels take 16 MB of it.
class ber_scanner {
public:
    ber_scanner(const unsigned char* data, size_t size) : data_(data) { open_.push_back({size, to_the_last}); }

    // The next item; false behind the last. What is damaged is given as far as it can be read, and the walk goes on
    // behind it, or behind the innermost enclosing element whose end is known. A constructed element that is too long
    // is entered when the octets end with it, as they do when an input was cut off, or when all in it can be read; else
    // its length is wrong, and its octets are taken as its contents without a look into them.
    bool next(ber_item& item);

private:
    // What is told of an open level, in bits. Its length is indefinite, of an element in the constructed or primitive
    // form; no definite length ends before all octets do; it is too long itself, or what encloses it is; its
    // end-of-contents octets are not missed, since something too long has taken them.
    enum : unsigned char { by_end_of_contents = 1, has_no_length = 2, to_the_last = 4, cut = 8, excused = 16 };
    static constexpr unsigned char is_indefinite = by_end_of_contents | has_no_length;
    struct level {
        size_t end;  // of an indefinite length: of what encloses it
        unsigned char flags;
    };

    bool unreadable(ber_item& item, ber_damage damage);
    bool read_element(ber_item& item);
    void open_too_long(ber_item& item);

    const unsigned char* data_;
    size_t at_ = 0;
    std::vector<level> open_;
};

}  // namespace zr::json
