// exhaustive bodies N | elements N: every record meets all bodies of up to N octets, or all trees of up to N elements
// that it does not refuse before their end, over an alphabet of headers and contents. The entry points and the object
// tree must give the same status and the same structure. The octets end at a page that nobody may touch.
#include <sys/mman.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include "support/hex.h"
#include "support/routes.h"

namespace {

using namespace zr_test;

// A page, and behind it one that cannot be read or written.
class guarded_page {
public:
    guarded_page() {
        const auto page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
        void* const both = mmap(nullptr, 2 * page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (both == MAP_FAILED) std::abort();
        end_ = static_cast<unsigned char*>(both) + page;
        if (mprotect(end_, page, PROT_NONE) != 0) std::abort();
    }

    // The envelope of a body, whose last octet is the page's.
    zr_asn_buffer_t envelope(const unsigned char* body, size_t length) {
        static constexpr unsigned char header[] = {4, 2, 0xAC, 0xDC};
        unsigned char* const at = end_ - length - sizeof header;
        std::memcpy(at, header, sizeof header);
        if (length != 0) std::memcpy(at + sizeof header, body, length);
        return {static_cast<unsigned int>(length + sizeof header), at};
    }

private:
    unsigned char* end_;
};

// One record on both ways. The tree's binding is made once: one that was used answers like a new one.
class both_ways {
public:
    both_ways(const zr::record_type& type, guarded_page& page)
        : type_(type),
          page_(page),
          direct_(type),
          tree_(type),
          own_(class_of(type)),
          binding_(own_ != nullptr ? nullptr : static_cast<zr_asnbase*>(type.make_binding(zr_normal))) {}

    // The status of both ways.
    int decode(const unsigned char* body, size_t length) {
        zr_asn_buffer_t in = page_.envelope(body, length);
        ++count;
        const int status = type_.decode(in, direct_.get());
        const int expected = own_ != nullptr
                                 ? own_->decode(type_, in, tree_.get())
                                 : zr::decode_fields(*binding_, type_, tree_.get(), in, zr::envelope_version);
        if (status != expected)
            fail(body, length, "statuses " + std::to_string(status) + ", " + std::to_string(expected));
        if (status == 0) {
            ++decoded;
            const std::string unlike = difference(type_, direct_.get(), tree_.get());
            if (!unlike.empty()) fail(body, length, unlike);
            type_.free(direct_.get());
            type_.free(tree_.get());
        }
        return status;
    }

    size_t count = 0;
    size_t decoded = 0;

private:
    void fail(const unsigned char* body, size_t length, const std::string& what) {
        std::printf("%s: %s: %s\n", type_.name, hex(octets(body, body + length)).c_str(), what.c_str());
        std::exit(1);
    }

    const zr::record_type& type_;
    guarded_page& page_;
    structure direct_;
    structure tree_;
    const route* own_;
    std::unique_ptr<zr_asnbase> binding_;
};

void all_bodies(both_ways& ways, size_t most) {
    for (size_t length = 1; length <= most; ++length) {
        unsigned char body[8] = {};
        size_t at = 0;
        do {
            ways.decode(body, length);
            for (at = length; at != 0 && ++body[at - 1] == 0; --at)
                continue;
        } while (at != 0);
    }
}

// What a tree is put together from, each in the place of every element. Constructed ones that stay open are ended by
// end-of-contents octets, which do not count as an element.
const octets alphabet[] = {
    {2, 0},
    {2, 1, 0xFF},
    {2, 2, 0, 1},
    {2, 0x81, 1, 5},
    {2, 5, 0, 0, 0, 0, 1},
    {5, 0},
    {4, 0},
    {4, 2, 0, 0x7F},
    {0x24, 2, 4, 0},
    {12, 0},
    {12, 1, 'a'},
    {12, 2, 0, 0xC3},
    {0x2C, 3, 12, 1, 'b'},
    {0x2C, 0x80, 12, 1, 'c', 0, 0},
    {0x30, 0},
    {0x30, 0x80},
    {0x30, 2, 5, 0},
};
const octets end_of_contents = {0, 0};

void all_elements(both_ways& ways, octets& before, size_t left, size_t open) {
    const auto with = [&](const octets& next, size_t still_left, size_t then_open) {
        const size_t length = before.size();
        before.insert(before.end(), next.begin(), next.end());
        // Only what may wait for more octets, elements or an end, is worth more.
        const int status = ways.decode(before.data(), before.size());
        if (then_open != 0 && (status == zr_err_data_ends_early || status == zr_err_bad_contents))
            all_elements(ways, before, still_left, then_open);
        before.resize(length);
    };
    with(end_of_contents, left, open - 1);
    if (left == 0) return;
    for (const octets& next : alphabet)
        with(next, left - 1, open + (next.back() == 0x80 ? 1 : 0));
}

}  // namespace

int main(int argc, char** argv) {
    const std::string what = argc == 3 ? argv[1] : "";
    const size_t most = argc == 3 ? std::strtoul(argv[2], nullptr, 10) : 0;
    if ((what != "bodies" && what != "elements") || most == 0 || most > 8) {
        std::fprintf(stderr, "exhaustive bodies N | elements N, N from 1 to 8\n");
        return 2;
    }
    stderr = std::fopen("/dev/null", "w");
    if (stderr == nullptr) return 1;
    guarded_page page;
    size_t count = 0;
    size_t decoded = 0;
    for (const zr::record_type* type : all_records()) {
        both_ways ways(*type, page);
        if (what == "bodies") {
            all_bodies(ways, most);
        } else {
            octets head = {0x30, 0x80};
            all_elements(ways, head, most, 1);
        }
        count += ways.count;
        decoded += ways.decoded;
    }
    std::printf("%zu %s of up to %zu, %zu of them decoded\n", count, what.c_str(), most, decoded);
    return decoded == 0 && what == "elements" ? 1 : 0;
}
