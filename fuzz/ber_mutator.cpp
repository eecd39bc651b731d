// What libFuzzer does to the inputs of targets that read a record behind two octets that pick it: most changes keep the
// octets BER, so that they reach what lies behind the first headers.
#include <algorithm>
#include <stdexcept>

#include "support/ber_rewriter.h"

extern "C" size_t LLVMFuzzerMutate(uint8_t* data, size_t size, size_t most);
extern "C" size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t most, unsigned int seed);
extern "C" size_t LLVMFuzzerCustomCrossOver(const uint8_t* data, size_t size, const uint8_t* other, size_t other_size,
                                            uint8_t* out, size_t most, unsigned int seed);

namespace {

using namespace zr_test;

constexpr size_t picks = 2;

std::vector<ber_value*> constructed_values(ber_value& value) {
    std::vector<ber_value*> found;
    if (!value.constructed()) return found;
    found.push_back(&value);
    for (size_t i = 0; i < found.size(); ++i)
        for (ber_value& inside : found[i]->inside)
            if (inside.constructed()) found.push_back(&inside);
    return found;
}

// One change of the elements in some constructed value; `donor` is what others are taken from.
void change(ber_value& value, ber_value donor, std::mt19937& random) {
    std::vector<ber_value*> places = constructed_values(value);
    if (places.empty()) return;
    std::vector<ber_value>& inside = places[random() % places.size()]->inside;
    const auto at = inside.begin() + static_cast<long>(random() % (inside.size() + 1));
    switch (random() % 6) {
        case 0:
            if (at != inside.end()) inside.erase(at);
            break;
        case 1: {  // an element again, many times at most
            if (at == inside.end()) break;
            const ber_value copy = *at;
            inside.insert(at, random() % 8 == 0 ? random() % 200 : 1, copy);
            break;
        }
        case 2:
            if (inside.size() > 1) std::swap(inside[random() % inside.size()], inside[random() % inside.size()]);
            break;
        case 3: {  // an element from elsewhere, which may be the whole: then it recurses
            std::vector<ber_value*> others = constructed_values(donor);
            if (others.empty()) break;
            const ber_value taken = *others[random() % others.size()];
            if (at != inside.end() && random() % 2 == 0)
                *at = taken;
            else
                inside.insert(at, taken);
            break;
        }
        case 4: {
            static constexpr unsigned char identifiers[] = {0x02, 0x04, 0x05, 0x0C, 0x24, 0x2C, 0x30, 0x1F, 0xA0};
            if (at != inside.end()) at->identifier = identifiers[random() % std::size(identifiers)];
            break;
        }
        default: {  // other contents
            if (at == inside.end() || at->constructed()) break;
            octets& contents = at->contents;
            const size_t length = contents.size();
            contents.resize(length + 64);
            contents.resize(LLVMFuzzerMutate(contents.data(), length, contents.size()));
            break;
        }
    }
}

size_t write(const octets& ber, const uint8_t* head, uint8_t* out, size_t most) {
    const size_t length = std::min(ber.size(), most - picks);
    std::copy_n(head, picks, out);
    std::copy_n(ber.begin(), length, out + picks);
    return picks + length;
}

}  // namespace

extern "C" size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t most, unsigned int seed) {
    std::mt19937 random(seed);
    if (size <= picks || random() % 5 == 0) return LLVMFuzzerMutate(data, size, most);
    try {
        ber_value value = parse_ber(octets(data + picks, data + size), true);
        for (unsigned long changes = 1 + random() % 3; changes != 0; --changes)
            change(value, value, random);
        const rewriting forms{random() % 4 == 0, random() % 4 == 0, random() % 4 == 0, random() % 16 == 0};
        return write(rewrite_ber(value, random, forms), data, data, most);
    } catch (const std::invalid_argument&) {
        return LLVMFuzzerMutate(data, size, most);
    }
}

extern "C" size_t LLVMFuzzerCustomCrossOver(const uint8_t* data, size_t size, const uint8_t* other, size_t other_size,
                                            uint8_t* out, size_t most, unsigned int seed) {
    if (size <= picks || other_size <= picks || most <= picks) return 0;
    std::mt19937 random(seed);
    try {
        ber_value value = parse_ber(octets(data + picks, data + size), true);
        change(value, parse_ber(octets(other + picks, other + other_size), true), random);
        return write(rewrite_ber(value, random, {false, false, false, false}), data, out, most);
    } catch (const std::invalid_argument&) {
        return 0;
    }
}
