// What libFuzzer does to the inputs of targets that read a record behind two octets that pick it: most changes keep the
// octets BER, so that they reach what lies behind the first headers. Every fourth input begins anew, as a random
// structure of some record, and elements come from such a structure.
#include <algorithm>
#include <stdexcept>

#include "pick_record.h"
#include "support/routes.h"

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
    switch (random() % 8) {
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
            if (random() % 2 == 0) {  // of a length at which encodings change
                static constexpr unsigned char lengths[] = {0, 1, 2, 3, 4, 5, 6, 8, 16, 20, 33, 127, 128, 129};
                contents.resize(lengths[random() % (random() % 2 == 0 ? std::size(lengths) : 6)]);
                const bool ascii = random() % 2 == 0;
                for (unsigned char& octet : contents)
                    octet = static_cast<unsigned char>(ascii ? 1 + random() % 127 : random());
                break;
            }
            const size_t length = contents.size();
            contents.resize(length + 64);
            contents.resize(LLVMFuzzerMutate(contents.data(), length, contents.size()));
            break;
        }
    }
}

// A random structure of the record that `head` picks, as the library writes it; of several the first that fits.
octets sample(const uint8_t* head, std::mt19937& random, size_t most) {
    octets ber;
    for (int attempts = 0; attempts < 4 && (ber.empty() || ber.size() > most); ++attempts) {
        structure original(record_of(head));
        fill(original.type(), original.get(), random,
             {random() % 256, 1 + static_cast<unsigned>(random() % 4), random() % 2 == 0});
        ber = encode(entry_points, original).ber;
    }
    return ber;
}

// The first `left` octets of a value, with lengths that agree; what is left of them is taken off.
octets cut(const ber_value& value, std::mt19937& random, size_t& left) {
    octets whole = rewrite_ber(value, random, {false, false, false, false});
    const size_t header = whole[1] < 0x80 ? 2 : 2 + whole[1] % 0x80;
    if (whole.size() <= left || !value.constructed() || left <= header) {
        whole.resize(std::min(whole.size(), left));
        left -= whole.size();
        return whole;
    }
    left -= header;
    octets contents;
    for (auto inside = value.inside.begin(); left != 0; ++inside)
        contents = contents + cut(*inside, random, left);
    return element(value.identifier, contents);
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
    const bool anew = most > 16 && random() % 4 == 0;
    if (anew) {
        data[0] = static_cast<uint8_t>(random());
        data[1] = static_cast<uint8_t>(random());
    }
    if (!anew && (size <= picks || random() % 5 == 0)) return LLVMFuzzerMutate(data, size, most);
    try {
        const octets before = anew ? sample(data, random, most - picks) : octets(data + picks, data + size);
        ber_value value = parse_ber(before, true);
        // A reader has a branch for each member: one change in what else is right reaches it.
        for (unsigned long changes = (anew ? 0 : 1) + random() % 3; changes != 0; --changes)
            change(value, random() % 4 == 0 ? parse_ber(sample(data, random, most - picks), true) : value, random);
        rewriting forms{false, false, false, false};
        if (random() % 2 == 0) forms = {random() % 2 == 0, random() % 2 == 0, random() % 2 == 0, random() % 8 == 0};
        octets after = rewrite_ber(value, random, forms);
        if (random() % 4 == 0) {
            after[random() % after.size()] = static_cast<unsigned char>(random());
        } else if (random() % 4 == 0) {
            size_t left = 1 + random() % after.size();
            after = cut(value, random, left);
        }
        return write(after, data, data, most);
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
