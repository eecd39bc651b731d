// The access-control list by hand.
#include "bench/acl/workload.h"
#include "bench/handwritten/peer.h"
#include "bench/handwritten/records.h"

namespace bench {

template <class Sink>
BENCH_INLINE void put(Sink& to, const acl_permset_s_t& permset) {
    if (!to.room(permset.count * integer_room + 2 * header_room)) return;
    const auto end = to.here();
    for (size_t i = permset.count; i != 0; --i)
        to.integer(permset.perms[i - 1]);
    to.header(tag_sequence, end);
    to.header(tag_sequence, end);
}

// A few permissions are read before their number is known; only more than those are counted first.
BENCH_INLINE bool get(reader& from, acl_permset_s_t& permset) {
    reader in, elements;
    int32_t first[32];
    size_t number, rest = 0;
    if (!from.contents(tag_sequence, in) || !in.contents(tag_sequence, elements) || !in.at_end() ||
        !elements.integers(first, 32, number) || (!elements.at_end() && !elements.count_values(rest)))
        return false;
    if (number == 0) return true;
    permset.perms = static_cast<int32_t*>(std::malloc((number + rest) * sizeof(int32_t)));
    if (permset.perms == nullptr) return false;
    copy(reinterpret_cast<unsigned char*>(permset.perms), first, number * sizeof(int32_t));
    permset.count = static_cast<uint32_t>(number + rest);
    return rest == 0 || elements.integers(permset.perms + number, rest, rest);
}

template <class Sink>
BENCH_INLINE void put(Sink& to, const acl_entry_s_t& entry) {
    const auto end = to.here();
    put(to, entry.id);
    if (!to.room(integer_room)) return;
    to.integer(entry.int_a);
    put(to, entry.permset);
    if (to.room(header_room)) to.header(tag_sequence, end);
}

BENCH_INLINE bool get(reader& from, acl_entry_s_t& entry) {
    reader in;
    return from.contents(tag_sequence, in) && get(in, entry.permset) && in.integer(entry.int_a) && get(in, entry.id) &&
           in.at_end();
}

template <class Visitor>
BENCH_INLINE void blocks(Visitor& visit, acl_entry_s_t& entry) {
    visit.block(entry.permset.perms);
    blocks(visit, entry.id);
}

template <class Sink>
BENCH_INLINE void put(Sink& to, const acl_ext_s_t& acl) {
    const auto end = to.here();
    put(to, acl.ext);
    put_list(to, acl.entries, acl.count);
    const measured name(acl.name);
    if (!to.room(name.length + 2 * header_room)) return;
    to.text(name);
    to.header(tag_sequence, end);
}

BENCH_INLINE bool get(reader& from, acl_ext_s_t& acl) {
    reader in;
    return from.contents(tag_sequence, in) && in.text(acl.name) && get_list(in, acl.count, acl.entries) &&
           get(in, acl.ext) && in.at_end();
}

template <class Visitor>
BENCH_INLINE void blocks(Visitor& visit, acl_ext_s_t& acl) {
    visit.block(acl.name);
    list_blocks(visit, acl.count, acl.entries);
    blocks(visit, acl.ext);
}

static const handwritten_peers<acl_workload, encode_once<scratch_octets, acl_ext_s_t>> peers;

}  // namespace bench
