// The hand-written coders of records that several workloads contain: UUIDs, identities and attribute lists.
#pragma once

#include "base_idls/attrlist_asn.h"
#include "base_idls/principal_asn.h"
#include "bench/handwritten/blocks.h"
#include "bench/handwritten/decode.h"
#include "bench/handwritten/encode.h"

namespace bench {

constexpr size_t uuid_room = header_room + 5 * integer_room + header_room + sizeof uuid_t::node;

template <class Sink>
BENCH_INLINE void put(Sink& to, const uuid_t& uuid) {
    if (!to.room(uuid_room)) return;
    const auto end = to.here();
    to.octets(uuid.node, sizeof uuid.node);
    to.integer(uuid.clock_seq_low);
    to.integer(uuid.clock_seq_hi_and_reserved);
    to.integer(uuid.time_hi_and_version);
    to.integer(uuid.time_mid);
    to.integer(static_cast<int32_t>(uuid.time_low));
    to.header(tag_sequence, end);
}

// The UUID is as it was when it is refused. Its members are written once and not read: a wider read of what was just
// written in parts would have to wait.
BENCH_INLINE bool get(reader& from, uuid_t& uuid) {
    reader in;
    int32_t low, mid, high, clock_high, clock_low;
    uint8_t node[sizeof uuid.node];
    if (!from.contents(tag_sequence, in) || !in.integer(low) || !in.integer(mid) || !in.integer(high) ||
        !in.integer(clock_high) || !in.integer(clock_low) || !in.octets(node) || !in.at_end())
        return false;
    uuid.time_low = static_cast<uint32_t>(low);
    uuid.time_mid = static_cast<uint16_t>(mid);
    uuid.time_hi_and_version = static_cast<uint16_t>(high);
    uuid.clock_seq_hi_and_reserved = static_cast<uint8_t>(clock_high);
    uuid.clock_seq_low = static_cast<uint8_t>(clock_low);
    std::memcpy(uuid.node, node, sizeof node);
    return true;
}

template <class Visitor>
BENCH_INLINE void blocks(Visitor&, uuid_t&) {}

template <class Sink>
BENCH_INLINE void put(Sink& to, const sec_id_t& id) {
    const measured name(id.name);
    if (!to.room(uuid_room + name.length + 2 * header_room)) return;
    const auto end = to.here();
    to.text(name);
    put(to, id.uuid);
    to.header(tag_sequence, end);
}

BENCH_INLINE bool get(reader& from, sec_id_t& id) {
    reader in;
    return from.contents(tag_sequence, in) && get(in, id.uuid) && in.text(id.name) && in.at_end();
}

template <class Visitor>
BENCH_INLINE void blocks(Visitor& visit, sec_id_t& id) {
    visit.block(id.name);
}

template <class Sink>
BENCH_INLINE void put(Sink& to, const value_s_t& value) {
    const measured str(value.str);
    if (!to.room(str.length + value.length + 3 * header_room + integer_room)) return;
    const auto end = to.here();
    to.octets(value.data, value.length);
    to.text(str);
    to.integer(value.type);
    to.header(tag_sequence, end);
}

BENCH_INLINE bool get(reader& from, value_s_t& value) {
    reader in;
    return from.contents(tag_sequence, in) && in.integer(value.type) && in.text(value.str) &&
           in.octets(value.length, value.data) && in.at_end();
}

template <class Visitor>
BENCH_INLINE void blocks(Visitor& visit, value_s_t& value) {
    visit.block(value.str);
    visit.block(value.data);
}

template <class Sink>
BENCH_INLINE void put(Sink& to, const attr_s_t& attr) {
    const auto end = to.here();
    put_list(to, attr.values, attr.value_count);
    const measured name(attr.name);
    if (!to.room(name.length + 2 * header_room)) return;
    to.text(name);
    to.header(tag_sequence, end);
}

BENCH_INLINE bool get(reader& from, attr_s_t& attr) {
    reader in;
    return from.contents(tag_sequence, in) && in.text(attr.name) && get_list(in, attr.value_count, attr.values) &&
           in.at_end();
}

template <class Visitor>
BENCH_INLINE void blocks(Visitor& visit, attr_s_t& attr) {
    visit.block(attr.name);
    list_blocks(visit, attr.value_count, attr.values);
}

// Requests hold several lists, so these are calls.
template <class Sink>
[[gnu::noinline]] typename Sink::mark put_attributes(Sink to, const attrlist_s_t& list) {
    const auto end = to.here();
    put_list(to, list.attrs, list.attr_count);
    if (to.room(header_room)) to.header(tag_sequence, end);
    return to.here();
}

template <class Sink>
BENCH_INLINE void put(Sink& to, const attrlist_s_t& list) {
    to.go_on(put_attributes(to, list));
}

inline bool get_contents(reader in, attrlist_s_t& list) {
    return get_list(in, list.attr_count, list.attrs) && in.at_end();
}

BENCH_INLINE bool get(reader& from, attrlist_s_t& list) {
    reader in;
    return from.contents(tag_sequence, in) && get_contents(in, list);
}

template <class Visitor>
void blocks(Visitor& visit, attrlist_s_t& list) {
    list_blocks(visit, list.attr_count, list.attrs);
}

}  // namespace bench
