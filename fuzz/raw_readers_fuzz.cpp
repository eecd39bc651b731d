// The raw readers. The first octet picks the reader of values; the rest is walked element by element.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "asn1/asn1.h"
#include "asn1/status.h"

namespace {

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

// Reads one value of `len` octets. What the reader hands out is checked and released.
int read_value(walk& at, unsigned int reader, unsigned int len) {
    const std::vector<unsigned char> before(at.slots[0], at.slots[0] + at.remaining);
    unsigned char* out = nullptr;
    unsigned int count = 0;
    long value = 0;
    zr_asn_buffer_t oid{0, nullptr};
    int status = 0;
    switch (reader % 8) {
        case 0:
            status = zrAsnGetIntegerValue(at.slots, &at.remaining, len, &value);
            require(value >= INT32_MIN && value <= INT32_MAX);
            break;
        case 1:
        case 2:
        case 3: {
            const int flag = static_cast<int>(reader % 8) - 1;
            status = zrAsnGetIntegerValue(at.slots, &at.remaining, len, &out, &count, flag);
            if (status != 0) break;
            const long moved = flag == 0 ? len : flag != 1 ? -static_cast<long>(len) : len == 1 ? -1 : 0;
            auto* block =
                reinterpret_cast<unsigned char*>(reinterpret_cast<uintptr_t>(out) - static_cast<uintptr_t>(moved));
            require(count == len);
            for (unsigned int i = 0; i < len; ++i)
                require(block[i] == before[i] || (flag != 0 && block[i] == 0));
            std::free(block);
            break;
        }
        case 4:
            status = zrAsnGetBitstringValue(at.slots, &at.remaining, len, &out, &count);
            if (status != 0) break;
            require(count <= 24 && count + before[0] == (len - 1) * 8);
            for (unsigned int i = 1; i < len; ++i)
                require((out - (len - 1))[i - 1] == before[i]);
            std::free(out - (len - 1));
            break;
        case 5:
            status = zrAsnGetOIDValue(at.slots, &at.remaining, len, &oid);
            require((status == 0) == (oid.length == len && len != 0 && len <= before.size()));
            for (unsigned int i = 0; i < oid.length; ++i)
                require(oid.data[i] == before[i]);
            std::free(oid.data);
            break;
        case 6:
            status = zrAsnGetOctetstringValue(at.slots, &at.remaining, len, &out, &count);
            require((status == 0) == (count == len && len != 0 && len <= before.size()));
            for (unsigned int i = 0; i < count; ++i)
                require(out[i] == before[i]);
            std::free(out);
            break;
        default:
            status = zrAsnGetCharstringValue(at.slots, &at.remaining, len, nullptr);
            require(status != 0 || at.slots[0][0] == 0);
            break;
    }
    return status;
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
        if (read_value(at, data[0] + step, len) != 0) {
            require(at.slots[0] == before && at.remaining == before_value);
            break;
        }
        require(at.slots[0] - before == static_cast<long>(len) && before_value - at.remaining == len);
    }
    return 0;
}
