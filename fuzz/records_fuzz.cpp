// Any octets as any record: the entry points and the object tree give the same status and the same structure; what
// decodes encodes, on both ways to the same octets, and those decode to the same structure again. Nothing is lost.
//
// The first two octets pick the record, the others are its encoding without the envelope.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "pick_record.h"
#include "support/allocations.h"
#include "support/routes.h"

namespace {

using namespace zr_test;

FILE* const printed = stderr;

void require(bool holds, const char* what) {
    if (holds) return;
    std::fprintf(printed, "records_fuzz: %s\n", what);
    std::abort();
}

// A structure that starts with octets of no meaning: a decode that is refused leaves them.
class target {
public:
    target(const zr::record_type& type, const route& way, zr_asn_buffer_t in) : out_(type) {
        std::memset(out_.get(), 0x5A, type.size);
        status = way.decode(type, in, out_.get());
        if (status == 0) return;
        const auto* octets = static_cast<const unsigned char*>(out_.get());
        const bool untouched = std::all_of(octets, octets + type.size, [](unsigned char c) { return c == 0x5A; });
        require(untouched || status == zr_err_out_of_memory, "a refused decode changed the structure");
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

void check(const zr::record_type& type, zr_asn_buffer_t in) {
    target direct(type, entry_points, in);
    target tree(type, object_tree, in);
    // The object tree does not follow every depth.
    if (tree.status == zr_err_out_of_memory) return;
    require(direct.status == tree.status, "different statuses");
    if (direct.status != 0) return;
    require(unlike(direct, tree).empty(), "different structures");

    zr_asn_buffer_t first{};
    zr_asn_buffer_t other{};
    require(entry_points.encode(type, first, direct.out().get()) == 0, "what decodes does not encode");
    require(object_tree.encode(type, other, tree.out().get()) == 0, "what decodes does not encode as a tree");
    const auto same = [](zr_asn_buffer_t a, zr_asn_buffer_t b) {
        return a.length == b.length && std::memcmp(a.data, b.data, a.length) == 0;
    };
    require(same(first, other), "different encodings");
    zr_asn_buffer_free(other);

    target again(type, entry_points, first);
    require(again.status == 0, "what was encoded does not decode");
    require(unlike(direct, again).empty(), "the structure changes on its way");
    require(entry_points.encode(type, other, again.out().get()) == 0, "what was decoded twice does not encode");
    require(same(first, other), "the second encoding differs");
    zr_asn_buffer_free(first);
    zr_asn_buffer_free(other);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static FILE* const nowhere = std::fopen("/dev/null", "w");
    static allocations watched;
    if (size < 2 || nowhere == nullptr) return 0;

    const zr::record_type& type = pick_record(data[0] << 8u | data[1]);
    const size_t before = watched.live();
    stderr = nowhere;
    {
        envelope in(octets(data + 2, data + size));
        check(type, in.buffer());
    }
    stderr = printed;
    require(watched.live() == before, "blocks are lost");
    return 0;
}
