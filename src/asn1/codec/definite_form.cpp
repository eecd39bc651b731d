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
// A header and the few octets between it and the next are copied as so many.
constexpr size_t copied_at_once = 32;

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

// Gives the copy, which ends at `to`, room for `more` octets, a header and a few that are copied too many. Returns
// where it ends then; null when there is no room.
unsigned char* definite_form::grow(unsigned char* to, size_t more) {
    const auto length = static_cast<size_t>(to - copy_);
    const size_t room = std::max(room_ + room_ / 2, length + more + copied_at_once);
    if (room > UINT32_MAX) return nullptr;
    auto* grown = static_cast<unsigned char*>(std::malloc(room));
    if (grown == nullptr) return nullptr;
    std::memcpy(grown, copy_, length);
    release();
    copy_ = grown;
    room_ = room;
    return grown + length;
}

void definite_form::release() {
    if (secret_) wipe(copy_, room_);
    if (copy_ != first_) std::free(copy_);
}

bool definite_form::write(octet_position at, octet_position end, const char* file) {
    const octet_position start = at;
    const auto all = static_cast<size_t>(end - start);
    indefinite_finder indefinite(at, end);
    if (all > UINT32_MAX / 2 || !indefinite.lies_between(at, end)) return false;
    if (all > sizeof first_ / 4 * 3 && grow(copy_, all + all / 4) == nullptr) return false;
    unsigned char* to = copy_;
    unsigned char* room_end = copy_ + room_;
    octet_position copied = at;  // what lies before it is in the copy
    // Copies what has been passed.
    const auto append = [&](octet_position stop) __attribute__((always_inline)) {
        const auto count = static_cast<size_t>(stop - copied);
        if (__builtin_expect(static_cast<size_t>(room_end - to) < count + copied_at_once, 0)) {
            to = grow(to, count);
            if (to == nullptr) return false;
            room_end = copy_ + room_;
        }
        if (count <= copied_at_once - definite_header && static_cast<size_t>(end - copied) >= copied_at_once) {
            copy_fixed<copied_at_once>(to, copied);
        } else {
            copy_octets(to, copied, count);
        }
        to += count;
        return true;
    };
    work_list<open_sequence> around;
    open_sequence open{0, static_cast<uint32_t>(all), false};  // what is being read: first of all, all octets
    octet_position limit = end;
    for (;;) {
        auto left = static_cast<size_t>(limit - at);
        // Most values are primitive and short.
        while (left > 2 && at[0] != id_sequence && at[0] != 0 && at[1] <= left - 2 && at[1] < 0x80) {
            left -= 2 + at[1];
            at += 2 + at[1];
        }
        if (open.indefinite ? left >= 2 && at[0] == 0 && at[1] == 0 : left == 0) {
            if (around.empty() || !append(at)) return false;
            unsigned char* const header = copy_ + open.header;
            const uint32_t length = most_significant_first(static_cast<uint32_t>(to - header - definite_header));
            header[0] = id_sequence;
            header[1] = length_of_four_octets;
            store(header + 2, length);
            if (open.indefinite) at += 2;
            copied = at;
            open = around.top();
            around.pop();
            if (around.empty()) break;
            limit = start + open.limit;
            continue;
        }
        if (left < 2) return false;
        octet_position stop = nullptr;
        if (at[0] != id_sequence) {
            if (at[1] != length_is_indefinite) {
                if (quick_contents(at, limit, at[0], stop) == nullptr) return false;
                at = stop;
            } else {
                input in{at, limit};
                if (!skip_string(in) || in.end != limit) return false;
                at = in.at;
            }
        } else {
            const bool is_indefinite = at[1] == length_is_indefinite;
            const octet_position contents = is_indefinite ? at + 2 : quick_contents(at, limit, id_sequence, stop);
            if (contents == nullptr) return false;
            if (is_indefinite || indefinite.lies_between(contents, stop)) {
                if (!append(at)) return false;
                around.push(open, file);
                if (!is_indefinite) limit = stop;
                open = {static_cast<uint32_t>(to - copy_), static_cast<uint32_t>(limit - start), is_indefinite};
                to += definite_header;
                at = copied = contents;
            } else {
                at = stop;
            }
        }
        if (around.empty()) return false;  // the record neither has an indefinite length nor holds one
    }
    length_ = static_cast<size_t>(to - copy_);
    behind_ = at;
    return true;
}

}  // namespace zr
