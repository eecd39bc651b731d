#include "asn1/codec/definite_form.h"

#include <algorithm>
#include <cstring>

#include "asn1/asnbase/buffer.h"
#include "asn1/codec/work_list.h"

namespace zr {

namespace {

constexpr unsigned char length_is_indefinite = 0x80;
constexpr unsigned char length_of_four_octets = 0x84;
constexpr size_t definite_header = 6;

// The headers of SEQUENCE with an indefinite length, or what looks like one in other values: the next from a place on.
class indefinite_finder {
public:
    indefinite_finder(octet_position at, octet_position end) : next_(at), end_(end) { find(at); }

    // Whether one lies between the two; asked with rising places.
    bool lies_between(octet_position at, octet_position stop) {
        if (next_ < at) find(at);
        return stop - next_ >= 2;
    }

private:
    void find(octet_position at) {
        for (; end_ - at >= 2; ++at) {
            const void* found = std::memchr(at + 1, length_is_indefinite, static_cast<size_t>(end_ - at - 1));
            if (found == nullptr) break;
            at = static_cast<octet_position>(found) - 1;
            next_ = at;
            if (at[0] == id_sequence) return;
        }
        next_ = end_;
    }

    octet_position next_;
    octet_position end_;
};

// A SEQUENCE that has been entered.
struct open_sequence {
    uint32_t header;  // where its header is in the copy
    uint32_t limit;   // where it ends, or at the latest, in the original octets
    bool indefinite;
};

}  // namespace

definite_form::~definite_form() {
    if (secret_ && copy_ != nullptr) wipe(copy_, room_);
    std::free(copy_);
}

bool definite_form::reserve(size_t more) {
    if (more <= room_ - length_) return true;
    const size_t grown_room = std::max(room_ + room_ / 2, length_ + more);
    if (grown_room > UINT32_MAX) return false;
    auto* grown = static_cast<unsigned char*>(std::malloc(grown_room));
    if (grown == nullptr) return false;
    if (copy_ != nullptr) std::memcpy(grown, copy_, length_);
    if (secret_ && copy_ != nullptr) wipe(copy_, room_);
    std::free(copy_);
    copy_ = grown;
    room_ = grown_room;
    return true;
}

// Copies octets; behind them is room for a header.
bool definite_form::append(octet_position at, octet_position stop) {
    const auto count = static_cast<size_t>(stop - at);
    if (!reserve(count + definite_header)) return false;
    copy_octets(copy_ + length_, at, count);
    length_ += count;
    return true;
}

bool definite_form::write(octet_position at, octet_position end, const char* file) {
    const octet_position start = at;
    const auto all = static_cast<size_t>(end - start);
    indefinite_finder indefinite(at, end);
    if (all > UINT32_MAX / 2 || !indefinite.lies_between(at, end) || !reserve(all + all / 4 + definite_header))
        return false;
    work_list<open_sequence> open;
    octet_position copied = at;  // what lies before it is in the copy
    octet_position limit = end;  // of what is open
    do {
        if (limit - at < 2) return false;
        octet_position stop = nullptr;
        if (at[0] == id_sequence) {
            const bool is_indefinite = at[1] == length_is_indefinite;
            const octet_position contents = is_indefinite ? at + 2 : quick_contents(at, limit, id_sequence, stop);
            if (contents == nullptr) return false;
            if (is_indefinite || indefinite.lies_between(contents, stop)) {
                if (!append(copied, at)) return false;
                if (!is_indefinite) limit = stop;
                open.push({static_cast<uint32_t>(length_), static_cast<uint32_t>(limit - start), is_indefinite}, file);
                length_ += definite_header;
                at = copied = contents;
            } else {
                at = stop;
            }
        } else if (at[1] != length_is_indefinite) {
            if (quick_contents(at, limit, at[0], stop) == nullptr) return false;
            at = stop;
        } else {
            input in{at, limit};
            if (!skip_string(in) || in.end != limit) return false;
            at = in.at;
        }
        // What ends here.
        while (!open.empty()) {
            const open_sequence& top = open.top();
            const bool ends = top.indefinite ? limit - at >= 2 && at[0] == 0 && at[1] == 0 : at == limit;
            if (!ends) break;
            if (!append(copied, at)) return false;
            if (top.indefinite) at += 2;
            copied = at;
            unsigned char* const header = copy_ + top.header;
            const uint32_t length = __builtin_bswap32(static_cast<uint32_t>(length_ - top.header - definite_header));
            header[0] = id_sequence;
            header[1] = length_of_four_octets;
            std::memcpy(header + 2, &length, sizeof length);
            open.pop();
            limit = open.empty() ? end : start + open.top().limit;
        }
    } while (!open.empty());
    behind_ = at;
    return length_ != 0;
}

}  // namespace zr
