// Decoding octets from a network or a file:
//
//     zr::decoded<attrlist_s_t> list;
//     zr::decode_options options;
//     options.strict = true;
//     options.limits.elements = 10000;
//     zr::decode_report report;
//     if (zr::decode(octets, length, list.out(), options, report) != 0) drop(report.name(), report.offset,
//     report.path);
//
// How long an envelope is, before all of it has come, tells zr::envelope_framing (asn1/framing.h).
#pragma once

#include "asn1/framing.h"
#include "asn1/record/decoding.h"
#include "asn1/record/packed_blocks.h"
#include "asn1/record/record.h"
#include "zrasn/guard.h"

namespace zr {

// decode fills `out` from the envelope that the octets begin with, whatever they are. Returns 0 or the status, which
// the report has too. `out` is then as after zrAsnDecodeObj: all zero after 275062885 and 275063211, else as it was.
template <class S>
[[nodiscard]] status_of<S> decode(const void* octets, size_t length, S& out, const decode_options& options,
                                  decode_report& report) {
    return record<S>::type.decode(octets, length, &out, options, report);
}

// packed<S> decodes records into one block of its own, or a few where they turn out large: for receivers that read a
// record and forget it. Decoding costs about half of what zrAsnDecodeObj and zrAsnFreeObj cost together, and nothing
// inside is released by itself: the structure is given out const, and nothing of it outlives the next decode, clear,
// release or the object. Moves, does not copy; one that was moved from is empty.
template <class S>
class packed {
public:
    packed() = default;
    packed(packed&& other) noexcept : value_(other.value_), blocks_(static_cast<packed_blocks&&>(other.blocks_)) {
        other.value_ = S{};
    }
    packed& operator=(packed&& other) noexcept {
        if (this == &other) return *this;
        value_ = other.value_;
        other.value_ = S{};
        blocks_ = static_cast<packed_blocks&&>(other.blocks_);
        return *this;
    }
    packed(const packed&) = delete;
    packed& operator=(const packed&) = delete;
    ~packed() = default;

    // Replaces what is held. The statuses are those of zrAsnDecodeObj, but memory that ends is always 275062885; after
    // a failure nothing is held. The longest block is kept for the next decode, which takes no other if it suffices.
    [[nodiscard]] int decode(const void* octets, size_t length, const decode_options& options, decode_report& report) {
        return record<S>::type.decode_packed(octets, length, &value_, blocks_, options, report);
    }
    [[nodiscard]] int decode(const zr_asn_buffer_t& in) {
        decode_report report;
        return decode(in.data, in.length, decode_options(), report);
    }

    // What was decoded; all zero when nothing is held.
    const S& operator*() const noexcept { return value_; }
    const S* operator->() const noexcept { return &value_; }

    // Both hold nothing any more; clear keeps the longest block for the next decode.
    void clear() noexcept {
        value_ = S{};
        blocks_.clear();
    }
    void release() noexcept {
        value_ = S{};
        blocks_.release();
    }

private:
    S value_{};
    packed_blocks blocks_;
};

}  // namespace zr
