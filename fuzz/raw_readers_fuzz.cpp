// The raw readers. The first octet picks the reader of values; the rest is walked element by element.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <vector>

#include "support/value_readers.h"

namespace {

using zr_test::value_reader;
using zr_test::value_readers;

void require(bool holds) {
    if (!holds) std::abort();
}

// The octets, with one writable one behind them, and where the caller stands.
struct walk {
    std::vector<unsigned char> octets;
    unsigned char* slots[2];  // the second is for high tag numbers
    unsigned int remaining;

    bool inside(const unsigned char* position) const {
        return position >= octets.data() && position < octets.data() + octets.size();
    }
};

// Reads one value of `len` octets. What the reader hands out is checked and released: it consists of the octets that
// were there, some of them as zeros, but for the first one of a bit string.
int read_value(walk& at, const value_reader& reader, unsigned int len) {
    const std::vector<unsigned char> before(at.slots[0], at.slots[0] + at.remaining);
    zr_test::outputs out;
    const int status = reader.call(at.slots, &at.remaining, len, out);
    require(out.value >= INT32_MIN && out.value <= INT32_MAX);
    require(status == 0 || out.pointer == nullptr);
    if (status != 0) return status;
    require(len <= before.size() && (len <= 4 || !reader.limited) && (len != 0 || !reader.value_required));
    if (!reader.block) return 0;
    const bool of_bits = reader.count == zr_test::bits;
    require(out.count == reader.count(len) - (of_bits ? before[0] : 0));
    auto* octets = static_cast<unsigned char*>(zr_test::block_of(out.pointer, reader.behind(len)));
    for (unsigned int i = of_bits ? 1 : 0; i < len; ++i, ++octets)
        require(*octets == before[i] || (*octets == 0 && reader.behind(1) < 0));
    std::free(octets - (of_bits ? len - 1 : len));
    return 0;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) return 0;
    walk at{{data + 1, data + size}, {nullptr, nullptr}, static_cast<unsigned int>(size - 1)};
    at.octets.push_back(0x5A);
    at.octets.shrink_to_fit();
    at.slots[0] = at.octets.data();
    const unsigned char* const end = at.octets.data() + size - 1;
    for (unsigned int step = 0;; ++step) {
        unsigned int tag = 0, constructed = 0, cls = 0, definite = 0, len = 0;
        const unsigned char* before = at.slots[0];
        const unsigned int left = at.remaining;
        at.slots[1] = nullptr;
        const auto unmoved = [&] { require(at.slots[0] == before && at.remaining == left); };
        if (zrAsnGetType(at.slots, &at.remaining, &tag, &constructed, &cls) != 0) {
            unmoved();
            require(at.slots[1] == nullptr);
            break;
        }
        require(constructed <= 1 && cls <= 3 && at.remaining < left);
        if (at.slots[1] != nullptr) {  // a high tag number: go on where it ends
            require(at.slots[0] == before && at.inside(at.slots[1]) && at.slots[1] < end);
            at.slots[0] = at.slots[1];
        }
        require(at.slots[0] + at.remaining <= end);
        before = at.slots[0];
        const unsigned int before_length = at.remaining;
        if (zrAsnGetLength(at.slots, &at.remaining, &definite, &len) != 0) {
            require(at.slots[0] == before && at.remaining == before_length);
            break;
        }
        require(definite == 1 || len == 0);
        require(at.slots[0] - before == static_cast<long>(before_length - at.remaining));
        if (constructed != 0) continue;  // walk the inside
        before = at.slots[0];
        const unsigned int before_value = at.remaining;
        if (read_value(at, value_readers[(data[0] + step) % std::size(value_readers)], len) != 0) {
            require(at.slots[0] == before && at.remaining == before_value);
            break;
        }
        require(at.slots[0] - before == static_cast<long>(len) && before_value - at.remaining == len);
    }
    return 0;
}
