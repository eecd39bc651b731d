// The hand-written coder of lists of objects.
#pragma once

#include "base_idls/yvobj_asn.h"
#include "bench/handwritten/records.h"

namespace bench {

template <class Sink>
BENCH_INLINE void put(Sink& to, const yvobj_t& object) {
    const measured name(object.name);
    if (!to.room(name.length + 2 * integer_room + object.body_length + 3 * header_room)) return;
    const auto end = to.here();
    to.octets(object.body, object.body_length);
    to.integer(object.int_b);
    to.integer(object.int_a);
    to.text(name);
    to.header(tag_sequence, end);
}

BENCH_INLINE bool get(reader& from, yvobj_t& object) {
    reader in;
    return from.contents(tag_sequence, in) && in.text(object.name) && in.integer(object.int_a) &&
           in.integer(object.int_b) && in.octets(object.body_length, object.body) && in.at_end();
}

template <class Visitor>
BENCH_INLINE void blocks(Visitor& visit, yvobj_t& object) {
    visit.block(object.name);
    visit.block(object.body);
}

template <class Sink>
BENCH_INLINE void put(Sink& to, const yvobj_list_s_t& list) {
    const auto end = to.here();
    put(to, list.ext);
    put_list(to, list.objs, list.count);
    if (to.room(header_room)) to.header(tag_sequence, end);
}

BENCH_INLINE bool get(reader& from, yvobj_list_s_t& list) {
    reader in;
    return from.contents(tag_sequence, in) && get_list(in, list.count, list.objs) && get(in, list.ext) && in.at_end();
}

template <class Visitor>
BENCH_INLINE void blocks(Visitor& visit, yvobj_list_s_t& list) {
    list_blocks(visit, list.count, list.objs);
    blocks(visit, list.ext);
}

}  // namespace bench
