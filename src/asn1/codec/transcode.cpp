#include "asn1/codec/transcode.h"

#include <algorithm>
#include <cstdlib>

#include "asn1/ascii.h"
#include "asn1/asnbase/buffer.h"
#include "asn1/codec/work_list.h"

namespace zr {

octet_stack::~octet_stack() {
    while (last_ != &first_)
        drop_last_chunk();
    if (secret_) wipe(&first_, sizeof first_);
}

void octet_stack::drop_last_chunk() {
    chunk* const dropped = last_;
    last_ = dropped->before;
    if (secret_) wipe(dropped, sizeof *dropped);
    std::free(dropped);
}

void octet_stack::push_in_parts(const void* octets, size_t count) {
    const auto* from = static_cast<const unsigned char*>(octets);
    while (count != 0) {
        if (last_->used == sizeof last_->octets) {
            auto* made = static_cast<chunk*>(std::malloc(sizeof(chunk)));
            if (made == nullptr) throw_out_of_memory("Out of memory in buffer_t::extend");
            made->before = last_;
            made->used = 0;
            last_ = made;
        }
        const size_t part = std::min(count, sizeof last_->octets - last_->used);
        std::memcpy(last_->octets + last_->used, from, part);
        last_->used += static_cast<uint32_t>(part);
        from += part;
        count -= part;
    }
}

// Seven bits to an octet. The lowest come last, and each octet says with its high bit whether more lie before it.
void octet_stack::push_long_number(uint64_t number) {
    unsigned char octets[10];
    unsigned char* at = octets + sizeof octets;
    do {
        *--at = static_cast<unsigned char>((number & 0x7F) | (number >= 0x80 ? 0x80 : 0));
        number >>= 7;
    } while (number != 0);
    push(at, static_cast<size_t>(octets + sizeof octets - at));
}

uint64_t octet_stack::pop_long_number() {
    uint64_t number = 0;
    for (unsigned int shift = 0;; shift += 7) {
        while (last_->used == 0)
            drop_last_chunk();
        const unsigned char octet = last_->octets[--last_->used];
        number |= uint64_t{octet & 0x7Fu} << shift;
        if ((octet & 0x80) == 0) return number;
    }
}

void octet_stack::pop_parts_to(writer& sink, size_t count) {
    while (count != 0) {
        while (last_->used == 0)
            drop_last_chunk();
        const size_t part = std::min<size_t>(count, last_->used);
        last_->used -= static_cast<uint32_t>(part);
        sink.octets(last_->octets + last_->used, part);
        count -= part;
    }
}

// Whether an identifier of one octet says a universal type in the primitive form (X.690 8.1.2). Which of them a record
// has is for its reader to judge.
constexpr bool is_primitive(unsigned char identifier) { return identifier < 0x1F; }

// Octets that the identifier of a text may be or end with, in any form that is read (X.690 8.1.2): the tag number of
// UTF8String in the low five bits.
struct text_identifiers {
    static constexpr unsigned char tag_bits = 0x1F;
    static uint64_t marked(uint64_t eight) {
        const uint64_t other_bits = (eight & eight_times(tag_bits)) ^ eight_times(id_utf8_string);
        return ~(other_bits + eight_times(0x7F)) & high_bits_of_eight;
    }
#ifdef __SSE2__
    static __m128i marked(__m128i sixteen) {
        return _mm_cmpeq_epi8(_mm_and_si128(sixteen, _mm_set1_epi8(tag_bits)), _mm_set1_epi8(id_utf8_string));
    }
#endif
};

// Steps over primitive values with lengths of one octet that are no texts.
static octet_position pass_short_values(octet_position at, octet_position stop) {
    while (stop - at >= 2 && is_primitive(at[0]) && at[0] != id_utf8_string && at[1] < 0x80 && at[1] <= stop - at - 2)
        at += 2 + at[1];
    return at;
}

// Twice the distance, and 1 for a SEQUENCE, which lies before the last place; a text lies behind it.
void transcoder::keep_place(octet_position at, bool is_sequence) {
    const auto distance = static_cast<uint64_t>(is_sequence ? place_ - at : at - place_);
    changes_.push_number(distance << 1 | (is_sequence ? 1 : 0));
    place_ = at;
}

// Converts a text, and tells by how many octets its value grows.
int64_t transcoder::convert_text(octet_position at, octet_position contents, octet_position stop) {
    const auto converted =
        conversion_.convert(reinterpret_cast<const char*>(contents), static_cast<size_t>(stop - contents));
    const size_t count = converted.getLength();
    if (count > UINT32_MAX) throw_out_of_memory("Out of memory in buffer_t::extend");
    changes_.push(converted.getChars(), count);
    changes_.push_number(count);
    keep_place(at, false);
    return static_cast<int64_t>(with_header(count)) - (stop - at);
}

// A SEQUENCE is stepped over where no text or nothing but ASCII lies in it, whatever else it is: its octets stay as
// they are, and what they are worth is judged where they are read.
bool transcoder::convert(octet_position at, octet_position end) {
    struct level {
        octet_position at;
        octet_position stop;
        int64_t grown;    // the contents, by so many octets
        uint32_t header;  // its octets
        bool changed;
    };
    static_assert(sizeof(level) <= 32, "levels are cheap");
    first_ = place_ = at;
    ascii_parts is_ascii_part(end);
    parts_without<text_identifiers> has_no_texts(end);
    const auto is_kept = [&](octet_position contents, octet_position stop) {
        return text_conversion::keeps_ascii && is_ascii_part(contents, stop);
    };
    work_list<level> open;
    octet_position stop = nullptr;
    const auto enter = [&](octet_position contents) {
        open.push({at, stop, 0, static_cast<uint32_t>(contents - at), false}, "src/asn1/codec/transcode");
        at = contents;
    };
    const octet_position root = quick_contents(at, end, id_sequence, stop);
    if (root == nullptr) return false;
    enter(root);
    for (;;) {
        level& inside = open.top();
        at = pass_short_values(at, inside.stop);
        if (at != inside.stop) {
            const unsigned char identifier = at[0];
            const octet_position found = quick_contents(at, inside.stop, identifier, stop);
            if (found == nullptr || (identifier != id_sequence && !is_primitive(identifier))) return false;
            if (identifier == id_sequence && !has_no_texts(found, stop) && !is_kept(found, stop)) {
                enter(found);
                continue;
            }
            if (identifier == id_utf8_string && found != stop && !is_kept(found, stop)) {
                inside.grown += convert_text(at, found, stop);
                inside.changed = true;
            }
            at = stop;
            continue;
        }
        const level closed = inside;
        open.pop();
        const auto old = static_cast<uint64_t>(closed.stop - closed.at);
        uint64_t length = old;
        if (closed.changed) {
            keep_place(closed.at, true);
            length = with_header(static_cast<uint64_t>(closed.stop - (closed.at + closed.header) + closed.grown));
        }
        if (open.empty()) {
            stop_ = closed.stop;
            length_ = length;
            return true;
        }
        if (closed.changed) {
            open.top().grown += static_cast<int64_t>(length - old);
            open.top().changed = true;
        }
    }
}

void transcoder::write(writer& sink) {
    struct level {
        octet_position at;
        uint32_t header;  // its octets
        uint32_t behind;  // octets that lie behind the SEQUENCE
    };
    const auto last = sink.position();
    work_list<level> open;
    octet_position next = stop_;
    const auto copy_from = [&](octet_position from) {
        sink.octets(from, static_cast<size_t>(next - from));
        next = from;
    };
    for (;;) {
        // What comes next from behind: the header of the SEQUENCE that is open, unless a change lies in it.
        const bool changes_inside = !changes_.empty() && (open.empty() || place_ > open.top().at);
        if (!changes_inside) {
            if (open.empty()) break;
            const level written = open.top();
            open.pop();
            copy_from(written.at + written.header);
            sink.header(id_sequence, sink.since(last) - written.behind);
            next = written.at;
            continue;
        }
        const octet_position at = place_;
        const uint64_t number = changes_.pop_number();
        const auto distance = static_cast<size_t>(number >> 1);
        octet_position stop = nullptr;
        const octet_position contents = quick_contents(at, stop_, at[0], stop);
        copy_from(stop);
        if ((number & 1) != 0) {
            place_ = at + distance;
            open.push({at, static_cast<uint32_t>(contents - at), static_cast<uint32_t>(sink.since(last))},
                      "src/asn1/codec/transcode");
        } else {
            place_ = at - distance;
            const auto count = static_cast<size_t>(changes_.pop_number());
            changes_.pop_to(sink, count);
            sink.header(id_utf8_string, count);
            next = at;
        }
    }
    copy_from(first_);
}

}  // namespace zr
