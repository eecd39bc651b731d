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

void octet_stack::push(const void* octets, size_t count) {
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
void octet_stack::push_number(uint64_t number) {
    unsigned char octets[10];
    unsigned char* at = octets + sizeof octets;
    do {
        *--at = static_cast<unsigned char>((number & 0x7F) | (number >= 0x80 ? 0x80 : 0));
        number >>= 7;
    } while (number != 0);
    push(at, static_cast<size_t>(octets + sizeof octets - at));
}

uint64_t octet_stack::pop_number() {
    uint64_t number = 0;
    for (unsigned int shift = 0;; shift += 7) {
        while (last_->used == 0)
            drop_last_chunk();
        const unsigned char octet = last_->octets[--last_->used];
        number |= uint64_t{octet & 0x7Fu} << shift;
        if ((octet & 0x80) == 0) return number;
    }
}

void octet_stack::pop_to(writer& sink, size_t count) {
    while (count != 0) {
        while (last_->used == 0)
            drop_last_chunk();
        const size_t part = std::min<size_t>(count, last_->used);
        last_->used -= static_cast<uint32_t>(part);
        sink.octets(last_->octets + last_->used, part);
        count -= part;
    }
}

bool transcoder::read_header(uint32_t at, uint32_t end, header& value) const {
    if (at == end) return false;
    octet_position stop = nullptr;
    value.identifier = octets_[at];
    const octet_position contents = quick_contents(octets_ + at, octets_ + end, value.identifier, stop);
    if (contents == nullptr) return false;
    value.contents = static_cast<uint32_t>(contents - octets_);
    value.stop = static_cast<uint32_t>(stop - octets_);
    return true;
}

// Whether an identifier of one octet says a universal type in the primitive form (X.690 8.1.2). Which of them a record
// has is for its reader to judge.
constexpr bool is_primitive(unsigned char identifier) { return identifier < 0x1F; }

// Twice the distance, and 1 for a SEQUENCE, which lies before the last place; a text lies behind it.
void transcoder::keep_place(uint32_t at, bool is_sequence) {
    const uint64_t distance = is_sequence ? place_ - at : at - place_;
    changes_.push_number(distance << 1 | (is_sequence ? 1 : 0));
    place_ = at;
}

// Converts a text, and tells by how many octets its value grows. False when it stays as it is.
bool transcoder::convert_text(uint32_t at, const header& value, int64_t& grown) {
    const auto* chars = reinterpret_cast<const char*>(octets_ + value.contents);
    const size_t length = value.stop - value.contents;
    if (length == 0 || (text_conversion::keeps_ascii && is_ascii(chars, length))) return false;
    const auto converted = conversion_.convert(chars, length);
    const size_t count = converted.getLength();
    if (count > UINT32_MAX) throw_out_of_memory("Out of memory in buffer_t::extend");
    changes_.push(converted.getChars(), count);
    changes_.push_number(count);
    keep_place(at, false);
    grown = static_cast<int64_t>(with_header(count)) - static_cast<int64_t>(value.stop - at);
    return true;
}

bool transcoder::convert(octet_position at, octet_position end) {
    struct level {
        uint32_t at;
        header value;
        bool changed;
        int64_t grown;  // the contents, by so many octets
    };
    octets_ = at;
    const auto all = static_cast<uint32_t>(end - at);
    work_list<level> open;
    uint32_t next = 0;
    do {
        header value{};
        if (!read_header(next, open.empty() ? all : open.top().value.stop, value)) return false;
        if (value.identifier == id_sequence) {
            open.push({next, value, false, 0}, "src/asn1/codec/transcode");
            next = value.contents;
        } else if (open.empty()) {
            return false;
        } else {
            int64_t grown = 0;
            if (value.identifier == id_utf8_string) {
                if (convert_text(next, value, grown)) open.top().changed = true;
                open.top().grown += grown;
            } else if (!is_primitive(value.identifier)) {
                return false;
            }
            next = value.stop;
        }
        while (!open.empty() && next == open.top().value.stop) {
            const level closed = open.top();
            open.pop();
            const uint32_t old = closed.value.stop - closed.at;
            uint64_t length = old;
            if (closed.changed) {
                keep_place(closed.at, true);
                const int64_t contents = closed.value.stop - closed.value.contents + closed.grown;
                length = with_header(static_cast<uint64_t>(contents));
            }
            if (open.empty()) {
                stop_ = closed.value.stop;
                length_ = length;
            } else {
                open.top().grown += static_cast<int64_t>(length) - old;
                open.top().changed = open.top().changed || closed.changed;
            }
        }
    } while (!open.empty());
    return true;
}

void transcoder::write(writer& sink) {
    struct level {
        uint32_t at;
        uint32_t contents;
        uint32_t behind;  // octets that lie behind the SEQUENCE
    };
    const auto last = sink.position();
    work_list<level> open;
    uint32_t next = stop_;
    const auto copy_from = [&](uint32_t from) {
        sink.octets(octets_ + from, next - from);
        next = from;
    };
    for (;;) {
        // What comes next from behind: the header of the SEQUENCE that is open, unless a change lies in it.
        const bool changes_inside = !changes_.empty() && (open.empty() || place_ >= open.top().contents);
        if (!changes_inside) {
            if (open.empty()) break;
            const level written = open.top();
            open.pop();
            copy_from(written.contents);
            sink.header(id_sequence, sink.since(last) - written.behind);
            next = written.at;
            continue;
        }
        const uint32_t at = place_;
        const uint64_t number = changes_.pop_number();
        const auto distance = static_cast<uint32_t>(number >> 1);
        header value{};
        read_header(at, stop_, value);
        if ((number & 1) != 0) {
            place_ = at + distance;
            copy_from(value.stop);
            open.push({at, value.contents, static_cast<uint32_t>(sink.since(last))}, "src/asn1/codec/transcode");
        } else {
            place_ = at - distance;
            copy_from(value.stop);
            const auto count = static_cast<size_t>(changes_.pop_number());
            changes_.pop_to(sink, count);
            sink.header(id_utf8_string, count);
            next = at;
        }
    }
    copy_from(0);
}

}  // namespace zr
