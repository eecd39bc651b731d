#include "support/ber_rewriter.h"

#include <algorithm>
#include <stdexcept>

namespace zr_test {

octets operator+(octets left, const octets& right) {
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

namespace {

ber_value parse_value(const unsigned char*& at, const unsigned char* end, bool indefinite) {
    const auto take = [&] {
        if (at == end) throw std::invalid_argument("an encoding that ends early");
        return *at++;
    };
    ber_value value;
    value.identifier = take();
    size_t length = take();
    if (length > 0x80) {
        size_t count = length & 0x7F;
        for (length = 0; count != 0; --count)
            length = length << 8 | take();
    } else if (length == 0x80) {
        if (!indefinite || !value.constructed()) throw std::invalid_argument("an indefinite length");
        while (end - at < 2 || at[0] != 0 || at[1] != 0)
            value.inside.push_back(parse_value(at, end, indefinite));
        at += 2;
        return value;
    }
    if (length > static_cast<size_t>(end - at)) throw std::invalid_argument("a length beyond the end");
    const unsigned char* behind = at + length;
    if (value.constructed()) {
        while (at != behind)
            value.inside.push_back(parse_value(at, behind, indefinite));
    } else {
        value.contents.assign(at, behind);
        at = behind;
    }
    return value;
}

octets length_octets(size_t length, size_t surplus = 0) {
    octets written;
    if (length >= 0x80 || surplus != 0) {
        for (size_t rest = length; rest != 0; rest >>= 8)
            written.insert(written.begin(), static_cast<unsigned char>(rest));
        written.insert(written.begin(), surplus, 0);
        if (written.empty()) written.push_back(0);
        written.insert(written.begin(), static_cast<unsigned char>(0x80 | written.size()));
    } else {
        written.push_back(static_cast<unsigned char>(length));
    }
    return written;
}

class rewriter {
public:
    rewriter(std::mt19937& random, const rewriting& permitted) : random_(random), permitted_(permitted) {}

    // `uncounted` grows by the octets that the enclosing lengths must count beyond those that are there.
    octets write(const ber_value& value, size_t& uncounted) {
        const bool string = value.identifier == 0x04 || value.identifier == 0x0C;
        if (permitted_.wrapped_tags && string && one_in(20)) {
            uncounted += 7;
            return wrapped(value.identifier);
        }
        if (!value.constructed()) {
            if (permitted_.segments && string && one_in(3))
                return write_constructed(value.identifier | 0x20, segments(value.contents, 4), uncounted);
            return octets{value.identifier} + length(value.contents.size()) + value.contents;
        }
        return write_constructed(value.identifier, value.inside, uncounted);
    }

private:
    bool one_in(unsigned int n) { return random_() % n == 0; }

    octets length(size_t length) {
        const bool longer = permitted_.long_lengths && one_in(4);
        return length_octets(length, longer ? (one_in(8) ? 100 : 1 + random_() % 5) : 0);
    }

    octets write_constructed(unsigned int identifier, const std::vector<ber_value>& inside, size_t& uncounted) {
        octets contents;
        size_t surplus = 0;
        for (const ber_value& value : inside)
            contents = std::move(contents) + write(value, surplus);
        uncounted += surplus;
        const octets lead{static_cast<unsigned char>(identifier)};
        if (permitted_.indefinite_lengths && one_in(3)) return lead + octets{0x80} + contents + octets{0, 0};
        return lead + length(contents.size() + surplus) + contents;
    }

    // The parts of a string, each an OCTET STRING (X.690 8.23.5.2), some of them in parts again.
    std::vector<ber_value> segments(const octets& contents, int depth) {
        std::vector<ber_value> parts;
        for (size_t at = 0; at < contents.size() || one_in(4);) {
            const size_t count = std::min<size_t>(contents.size() - at, random_() % (contents.size() / 2 + 2));
            ber_value part;
            part.identifier = 0x04;
            part.contents.assign(contents.begin() + static_cast<long>(at),
                                 contents.begin() + static_cast<long>(at + count));
            at += count;
            if (depth > 0 && one_in(4)) {
                part.identifier = 0x24;
                part.inside = segments(part.contents, depth - 1);
            }
            parts.push_back(part);
        }
        return parts;
    }

    // The identifier octets are read once more as a length of 31 and the contents behind it.
    octets wrapped(unsigned char identifier) {
        octets written{0x1F, 0x80, 0x80, 0x80, 0x80, static_cast<unsigned char>(0x80 | identifier)};
        while (written.size() != 32)
            written.push_back(static_cast<unsigned char>(random_() % 128));
        return written;
    }

    std::mt19937& random_;
    const rewriting& permitted_;
};

}  // namespace

ber_value parse_ber(const octets& encoding, bool indefinite) {
    const unsigned char* at = encoding.data();
    const unsigned char* end = at + encoding.size();
    ber_value value = parse_value(at, end, indefinite);
    if (at != end) throw std::invalid_argument("octets behind the encoding");
    return value;
}

octets element(unsigned char identifier, const octets& contents) {
    return octets{identifier} + length_octets(contents.size()) + contents;
}

octets rewrite_ber(const ber_value& value, std::mt19937& random, const rewriting& permitted) {
    size_t uncounted = 0;
    octets written = rewriter(random, permitted).write(value, uncounted);
    written.insert(written.end(), uncounted, 0);
    return written;
}

}  // namespace zr_test
