// Any octets as any record: the entry points and the object tree give the same status and the same structure, also with
// texts in the local code set, which is ASCII here; what decodes encodes, on both ways to the same octets, and those
// decode to the same structure again. Packed, strict and limited decodes differ only in what was asked for. Nothing is
// lost, and no call takes more heap or stack than it may.
//
// The first two octets pick the record, the others are its encoding without the envelope.
#include <algorithm>
#include <cstring>

#include "asn1/record/decoding.h"
#include "asn1/record/packed_blocks.h"
#include "asn1/utf8.h"
#include "bounds.h"
#include "pick_record.h"
#include "require.h"
#include "support/allocations.h"
#include "support/routes.h"

namespace {

using namespace zr_test;

allocations& watched() {
    static allocations watching;
    return watching;
}

// What any call may take of heap besides what is in proportion to its octets. The promise is 64 KiB, which decodes of
// this size would hardly reach: the most are 32 slots, whose records take 280 octets for ten of the encoding, in blocks
// that double. An encode does, where the length is guessed wrongly, and so does a strict decode, which writes what it
// read.
constexpr size_t fixed_part = 0x6000;
constexpr size_t fixed_part_of_encodes = 0x10000;

// Accesses to memory stand for time. The dearest inputs found make some 400 for an octet; a cost that grows faster than
// the octets do passes 600 long before 400 octets.
void require_linear(const taken& took, size_t octets) {
    require(took.accesses <= 600 * octets + 20000, "more accesses to memory than the octets allow");
}

template <class Call>
int decode_bounded(size_t octets, const Call& call, size_t fixed = fixed_part) {
    taken took{};
    const int status = measured(watched(), took, call);
    require(took.heap <= 32 * octets + fixed, "more heap than the octets allow");
    require_linear(took, octets);
    return status;
}

// The object tree keeps no bounds.
bool keeps_bounds(const route& way) { return &way == &entry_points || &way == &local_entry_points; }

int decode_by(const route& way, const zr::record_type& type, zr_asn_buffer_t in, void* out) {
    if (!keeps_bounds(way)) return way.decode(type, in, out);
    return decode_bounded(in.length, [&] { return way.decode(type, in, out); });
}

// A record has at most one open level for two octets of its encoding.
int encode_by(const route& way, const zr::record_type& type, zr_asn_buffer_t& out, void* in) {
    if (!keeps_bounds(way)) return way.encode(type, out, in);
    taken took{};
    const int status = measured(watched(), took, [&] { return way.encode(type, out, in); });
    const size_t most =
        (&way == &entry_points ? 2 : 4) * size_t{out.length} + 48 * size_t{out.length} / 2 + fixed_part_of_encodes;
    require(took.heap <= most, "more heap than the encoding allows");
    require_linear(took, out.length);
    return status;
}

// A structure that starts with octets of no meaning: a decode that is refused leaves them.
class target {
public:
    target(const zr::record_type& type, const route& way, zr_asn_buffer_t in) : out_(type) {
        std::memset(out_.get(), 0x5A, type.size);
        status = decode_by(way, type, in, out_.get());
        if (status == 0) return;
        const auto* octets = static_cast<const unsigned char*>(out_.get());
        const bool untouched = std::all_of(octets, octets + type.size, [](unsigned char c) { return c == 0x5A; });
        require(untouched || zr::clears_structure(status), "a refused decode changed the structure");
        if (untouched) std::memset(out_.get(), 0, type.size);
    }
    ~target() { require(leftover_of_free(out_).empty(), "free leaves something"); }

    structure& out() { return out_; }
    int status;

private:
    structure out_;
};

std::string unlike(target& left, target& right) {
    return difference(left.out().type(), left.out().get(), right.out().get());
}

bool same(zr_asn_buffer_t a, zr_asn_buffer_t b) {
    return a.length == b.length && (a.length == 0 || std::memcmp(a.data, b.data, a.length) == 0);
}

// Two ways to read octets and to write what was read.
void check_alike(const zr::record_type& type, const route& way, const route& by_tree, zr_asn_buffer_t in) {
    target direct(type, way, in);
    target tree(type, by_tree, in);
    // The object tree does not follow every depth.
    if (tree.status == zr_err_out_of_memory) return;
    require(direct.status == tree.status, "different statuses");
    if (direct.status != 0) return;
    require(unlike(direct, tree).empty(), "different structures");
    zr_asn_buffer_t first{};
    zr_asn_buffer_t other{};
    require(encode_by(way, type, first, direct.out().get()) == 0, "what decodes does not encode");
    require(by_tree.encode(type, other, tree.out().get()) == 0, "what decodes does not encode as a tree");
    require(same(first, other), "different encodings");
    zr_asn_buffer_free(first);
    zr_asn_buffer_free(other);
}

void check_decode_call(const zr::record_type& type, zr_asn_buffer_t in, target& direct, zr_asn_buffer_t written) {
    const auto call = [&](structure& out, const zr::decode_options& options, zr::decode_report& report) {
        const auto decode = [&] { return type.decode(in.data, in.length, out.get(), options, report); };
        const int status = decode_bounded(in.length, decode, options.strict ? fixed_part_of_encodes : fixed_part);
        require(status == report.status, "two statuses");
        require((report.status == 0) == (report.consumed != 0), "consumed without success, or the reverse");
        return report.status;
    };
    zr::decode_report report;
    {
        structure packed(type);
        zr::packed_blocks blocks;
        const int status = decode_bounded(
            in.length, [&] { return type.decode_packed(in.data, in.length, packed.get(), blocks, {}, report); });
        require(status == direct.status, "packed has another status");
        require(difference(type, packed.get(), direct.out().get()).empty(), "packed holds something else");
        std::memset(packed.get(), 0, type.size);
    }
    {
        zr::decode_options options;
        options.strict = true;
        structure strict(type);
        const auto texts = texts_of(type, direct.out().get());
        const bool is_utf8 = std::all_of(texts.begin(), texts.end(), [](char** text) {
            return *text == nullptr || zr::is_utf8(reinterpret_cast<unsigned char*>(*text), std::strlen(*text));
        });
        const bool expected = direct.status == 0 && is_utf8 && same(in, written);
        require((call(strict, options, report) == 0) == expected, "strict is too strict, or not enough");
        if (expected)
            require(difference(type, strict.get(), direct.out().get()).empty(), "strict gives something else");
    }
    // Limits that depend on the input alone.
    std::minstd_rand random(in.length * 251 + in.data[in.length - 1]);
    zr::decode_limits limits;
    for (size_t* limit : {&limits.octets, &limits.heap, &limits.elements, &limits.depth})
        if (random() % 4 == 0) *limit = random() % (limit == &limits.heap ? 1024 : 2 + random() % 64);
    zr::decode_options options;
    options.limits = limits;
    structure limited(type);
    call(limited, options, report);
    require((report.passed == zr::decode_limit::octets) == (in.length > limits.octets), "the limit of octets");
    if (report.passed != zr::decode_limit::none) {
        require(report.status == zr_err_out_of_memory && limits.most(report.passed) != SIZE_MAX, "no such limit");
        require(leftover(type, limited.get()).empty(), "a limited decode leaves something");
        return;
    }
    require(report.status == direct.status, "a limit that was not passed changes the status");
    require(difference(type, limited.get(), direct.out().get()).empty(), "a limit changes the structure");
}

void check(const zr::record_type& type, zr_asn_buffer_t in) {
    check_alike(type, entry_points, object_tree, in);
    check_alike(type, local_entry_points, local_object_tree, in);
    target direct(type, entry_points, in);
    zr_asn_buffer_t first{};
    zr_asn_buffer_t other{};
    if (direct.status == 0) {
        require(encode_by(entry_points, type, first, direct.out().get()) == 0, "what decodes does not encode");
        target again(type, entry_points, first);
        require(again.status == 0, "what was encoded does not decode");
        require(unlike(direct, again).empty(), "the structure changes on its way");
        require(entry_points.encode(type, other, again.out().get()) == 0, "what was decoded twice does not encode");
        require(same(first, other), "the second encoding differs");
    }
    check_decode_call(type, in, direct, first);
    zr_asn_buffer_free(first);
    zr_asn_buffer_free(other);
}

}  // namespace

const zr::record_type& zr_test::record_of(const uint8_t* head) { return pick_record(head); }

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 2) return 0;

    const zr::record_type& type = record_of(data);
    const size_t before = watched().live();
    {
        const silence kept;
        envelope in(octets(data + 2, data + size));
        check(type, in.buffer());
    }
    require(watched().live() == before, "blocks are lost");
    return 0;
}
