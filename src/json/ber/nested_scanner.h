// Any BER, and the BER inside of its OCTET STRINGs.
#pragma once

#include <cstddef>
#include <vector>

#include "json/ber/scanner.h"

namespace zr::json {

// nested_scanner walks as ber_scanner does, and goes into OCTET STRINGs where it is told to: what is inside comes next,
// as if the string were constructed. Offsets count from `data`. To look for BER costs a look at each header in it, so
// that all together each header is looked at twice at most, whatever holds what.
class nested_scanner {
public:
    nested_scanner(const unsigned char* data, size_t begin, size_t end) : data_(data) {
        open_.push_back({ber_scanner(data + begin, end - begin), begin, 0});
    }

    bool next(ber_item& item);
    // Whether the item given last is from inside of an OCTET STRING.
    bool is_inside() const { return inside_; }

    enum class found { nothing, ber, envelope };
    // Goes into the element given last, if it is an OCTET STRING that is one undamaged SEQUENCE or SET, not empty, or
    // an envelope with one. Strings inside of `most_nested` others are left alone.
    found enter(const ber_item& item);

private:
    static constexpr size_t most_nested = 32;
    struct level {
        ber_scanner scanner;
        size_t offset;  // what its offsets and depths are more, counted from the outermost
        size_t depth;
    };

    const unsigned char* data_;
    std::vector<level> open_;
    bool inside_ = false;
};

}  // namespace zr::json
