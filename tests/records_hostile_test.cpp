// Encodings that someone has damaged: each is refused with a status and nothing changed, or decodes to a structure; on
// every way the same.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "support/allocations.h"
#include "support/hex.h"
#include "support/routes.h"
#include "support/thinned.h"

namespace zr_test {
namespace {

// One decode of octets that nobody vouches for. `fault` tells what must not be.
class hostile_decode {
public:
    hostile_decode(const zr::record_type& type, const allocations& watched) : watched_(watched), out_(type) {}
    ~hostile_decode() { clear(); }

    int run(const route& way, zr_asn_buffer_t in) {
        clear();
        const size_t before = watched_.live();
        std::memset(out_.get(), 0x5A, type().size);
        status_ = way.decode(type(), in, out_.get());
        held_ = watched_.live() - before;
        if (status_ == 0) return 0;
        if (held_ != 0) fault = "blocks were leaked";
        if (status_ < zr_err_bad_envelope || status_ > zr_err_code_set) fault = "status " + std::to_string(status_);
        const auto* octets = static_cast<const unsigned char*>(out_.get());
        for (size_t i = 0; i < type().size; ++i)
            if (octets[i] != 0x5A) fault = "the structure was touched";
        return status_;
    }

    structure& out() { return out_; }
    std::string fault;

private:
    const zr::record_type& type() const { return out_.type(); }

    void clear() {
        if (status_ == 0) {
            const size_t before = watched_.live();
            const std::string left = leftover_of_free(out_);
            if (!left.empty()) fault = "not released: " + left;
            if (before - watched_.live() != held_) fault = "blocks were leaked";
        }
        status_ = -1;
        std::memset(out_.get(), 0, type().size);
    }

    const allocations& watched_;
    structure out_;
    int status_ = -1;  // of the decode that out_ comes from
    size_t held_ = 0;  // blocks in out_
};

// What is decoded must also encode, both ways to the same octets.
std::string compare(hostile_decode& left, hostile_decode& right) {
    const std::string way = difference(left.out().type(), left.out().get(), right.out().get());
    if (!way.empty()) return "differ in " + way;
    const encoded one = encode(entry_points, left.out());
    const encoded other = encode(object_tree, right.out());
    return one.status != 0 || other.status != 0 || one.ber != other.ber ? "encode differently" : "";
}

// The largest of some random structures whose encodings fit `octets`.
octets sample(const zr::record_type& type, std::mt19937& random, size_t most) {
    octets best;
    for (int i = 0; i < 50; ++i) {
        structure original(type);
        fill(type, original.get(), random, {most, 3, false});
        const octets ber = encode(entry_points, original).ber;
        if (ber.size() <= most && ber.size() > best.size()) best = ber;
    }
    return best;
}

// The entry points meet all 255 other values of each octet, the object tree, which is slower, those that mean
// something where they stand.
TEST(hostile, every_single_octet_changed) {
    constexpr unsigned char telling[] = {0x00, 0x01, 0x02, 0x04, 0x05, 0x0C, 0x1F,
                                         0x24, 0x2C, 0x30, 0x80, 0x81, 0x84, 0xFF};
    std::mt19937 random(11);
    allocations watched;
    size_t decoded = 0;
    for (const zr::record_type* type : all_records()) {
        const octets ber = sample(*type, random, 160);
        envelope in(ber);
        const zr_asn_buffer_t buffer = in.buffer();
        hostile_decode direct(*type, watched), tree(*type, watched);
        for (size_t at = 0; at < in.all().size(); ++at) {
            unsigned char& octet = in.all()[at];
            const unsigned char kept = octet;
            const auto check = [&](int value, bool both) {
                octet = static_cast<unsigned char>(value);
                const int status = direct.run(entry_points, buffer);
                decoded += status == 0;
                if (both) {
                    if (tree.run(object_tree, buffer) != status) direct.fault = "the object tree answers otherwise";
                    if (status == 0 && direct.fault.empty()) direct.fault = compare(direct, tree);
                }
                ASSERT_EQ(direct.fault + tree.fault, "")
                    << type->name << ", octet " << at << ": " << hex(in.all()) << " instead of " << hex(&kept, 1);
            };
            for (size_t change = 1 + at % one_in(8); change < 256 && !HasFatalFailure(); change += one_in(8))
                check(kept ^ static_cast<int>(change), false);
            for (const unsigned char value : telling)
                if (!HasFatalFailure()) check(value, true);
            if (HasFatalFailure()) return;
            octet = kept;
        }
    }
    EXPECT_GT(decoded, 100000u / one_in(8));
}

TEST(hostile, every_truncation) {
    std::mt19937 random(12);
    allocations watched;
    for (const zr::record_type* type : all_records()) {
        const octets definite = sample(*type, random, 300);
        const octets indefinite = rewrite_ber(parse_ber(definite), random);
        for (const octets& ber : {definite, indefinite}) {
            const octets whole = envelope(ber).all();
            for (size_t length = 0; length < whole.size(); ++length) {
                octets cut(whole.begin(), whole.begin() + static_cast<long>(length));
                cut.shrink_to_fit();
                for (const route& way : routes) {
                    hostile_decode decode(*type, watched);
                    const int status = decode.run(way, {static_cast<unsigned int>(length), cut.data()});
                    ASSERT_EQ(decode.fault, "") << way.name << " " << type->name << ": " << hex(cut);
                    if (length <= 4 || &ber == &definite) {
                        ASSERT_EQ(status, length <= 4 ? zr_err_bad_envelope : zr_err_data_ends_early);
                    }
                    ASSERT_NE(status, 0) << way.name << " " << type->name << ": " << hex(cut);
                }
            }
        }
    }
}

// Octets replaced, inserted, dropped and doubled, also by forms that the readers give a meaning beyond BER.
octets mutate(octets ber, std::mt19937& random) {
    // clang-format off
    static const char* const forms[] = {
        "80", "00 00", "30 80", "24 80", "2c 80 04 80 00 00", "1f 80 80 80 80 82", "1f 80 80 80 80 84",
        "1f 80 80 80 80 8c", "3f 80 80 80 80 90", "04 80 00 00", "84 00 00 00 05", "85 01 00 00 00 02",
        "84 ff ff ff ff", "05 00", "05 81 00", "02 00", "02 05 00 ff ff ff ff", "02 06 00 00 00 00 00 07", "ff"
    };
    // clang-format on
    const auto place = [&] { return ber.begin() + static_cast<long>(random() % (ber.size() + 1)); };
    for (size_t changes = 1 + random() % 3; changes != 0; --changes) {
        const octets form = bytes(forms[random() % std::size(forms)]);
        auto from = place();
        auto to = place();
        if (to < from) std::swap(from, to);
        if (to - from > 40) to = from + random() % 40;
        const octets part(from, to);
        const unsigned long what = random() % 6;
        if (what == 0 && from != ber.end()) *from = static_cast<unsigned char>(random());
        if (what == 1) ber.insert(from, form.begin(), form.end());
        if (what == 2)
            std::copy_n(form.begin(), std::min<ptrdiff_t>(static_cast<ptrdiff_t>(form.size()), ber.end() - from), from);
        if (what == 3) ber.erase(from, to);
        if (what == 4) ber.insert(place(), part.begin(), part.end());
        if (what == 5 && from != ber.end()) ++*from;
    }
    return ber;
}

TEST(hostile, entry_points_and_object_tree_answer_alike) {
    std::mt19937 random(13);
    allocations watched;
    size_t decoded = 0, refused = 0;
    for (const zr::record_type* type : all_records()) {
        hostile_decode direct(*type, watched), tree(*type, watched);
        for (size_t i = 0; i < 1500 / one_in(4); ++i) {
            structure original(*type);
            fill(*type, original.get(), random, {200, 6, false});
            octets ber = rewrite_ber(parse_ber(encode(entry_points, original).ber), random,
                                     {i % 3 != 0, i % 4 < 2, i % 5 < 2, i % 2 == 0});
            if (i % 3 != 0) ber = mutate(ber, random);
            envelope in(ber);
            const int status = direct.run(entry_points, in.buffer());
            const int expected = tree.run(object_tree, in.buffer());
            ASSERT_EQ(status, expected) << type->name << ": " << hex(ber);
            ASSERT_EQ(direct.fault + tree.fault, "") << type->name << ": " << hex(ber);
            ++(status == 0 ? decoded : refused);
            ASSERT_EQ(status == 0 ? compare(direct, tree) : "", "") << type->name << ": " << hex(ber);
        }
    }
    EXPECT_GT(decoded, 20000 / one_in(4));
    EXPECT_GT(refused, 20000 / one_in(4));
}

}  // namespace
}  // namespace zr_test
