// The extended-decision request by hand.
#include "bench/decision/workload.h"
#include "bench/handwritten/peer.h"
#include "bench/handwritten/records.h"

namespace bench {

template <class Sink>
BENCH_INLINE void put(Sink& to, const sec_id_pa_t& pa) {
    const auto end = to.here();
    put_list(to, pa.ids, pa.count);
    put(to, pa.id);
    if (to.room(header_room)) to.header(tag_sequence, end);
}

static bool get(reader& from, sec_id_pa_t& pa) {
    reader in;
    return from.contents(tag_sequence, in) && get(in, pa.id) && get_list(in, pa.count, pa.ids) && in.at_end();
}

template <class Visitor>
BENCH_INLINE void blocks(Visitor& visit, sec_id_pa_t& pa) {
    blocks(visit, pa.id);
    list_blocks(visit, pa.count, pa.ids);
}

template <class Sink>
BENCH_INLINE void put(Sink& to, const yvprincipal_s_t& principal) {
    const auto end = to.here();
    if (principal.ext != nullptr) put(to, *principal.ext);
    if (!to.room(integer_room)) return;
    to.integer(principal.int_b);
    if (principal.pa != nullptr) put(to, *principal.pa);
    if (!to.room(integer_room + header_room)) return;
    to.integer(principal.int_a);
    to.header(tag_sequence, end);
}

// The optional record `from` begins with, in a block of its own.
template <class T>
BENCH_INLINE bool get_optional(reader& from, T*& record) {
    if (!from.next_is(tag_sequence)) return true;
    record = static_cast<T*>(std::malloc(sizeof(T)));
    if (record == nullptr) return false;
    *record = T();
    return get(from, *record);
}

BENCH_INLINE bool get(reader& from, yvprincipal_s_t& principal) {
    reader in;
    return from.contents(tag_sequence, in) && in.integer(principal.int_a) && get_optional(in, principal.pa) &&
           in.integer(principal.int_b) && get_optional(in, principal.ext) && in.at_end();
}

template <class Visitor>
BENCH_INLINE void blocks(Visitor& visit, yvprincipal_s_t& principal) {
    visit.enter(principal.pa);
    if (principal.pa != nullptr) blocks(visit, *principal.pa);
    visit.leave(principal.pa);
    visit.enter(principal.ext);
    if (principal.ext != nullptr) blocks(visit, *principal.ext);
    visit.leave(principal.ext);
}

template <class Sink>
BENCH_INLINE void put(Sink& to, const yvprincipal_chain_s_t& chain) {
    const auto end = to.here();
    for (size_t i = chain.count; i != 0; --i)
        put(to, *chain.principals[i - 1]);
    const measured name(chain.name);
    if (!to.room(name.length + 3 * header_room)) return;
    to.header(tag_sequence, end);
    to.text(name);
    to.header(tag_sequence, end);
}

BENCH_INLINE bool get(reader& from, yvprincipal_chain_s_t& chain) {
    reader in, elements;
    size_t number;
    if (!from.contents(tag_sequence, in) || !in.text(chain.name) || !in.contents(tag_sequence, elements) ||
        !in.at_end() || !elements.count_values(number))
        return false;
    if (number == 0) return true;
    chain.principals = static_cast<yvprincipal_s_t**>(std::malloc(number * sizeof(yvprincipal_s_t*)));
    if (chain.principals == nullptr) return false;
    for (size_t i = 0; i < number; ++i) {
        auto* element = static_cast<yvprincipal_s_t*>(std::malloc(sizeof(yvprincipal_s_t)));
        if (element == nullptr) return false;
        *element = yvprincipal_s_t();
        chain.principals[i] = element;
        chain.count = static_cast<uint32_t>(i + 1);
        if (!get(elements, *element)) return false;
    }
    return true;
}

template <class Visitor>
BENCH_INLINE void blocks(Visitor& visit, yvprincipal_chain_s_t& chain) {
    visit.block(chain.name);
    visit.enter(chain.principals);
    for (size_t i = 0; i < chain.count; ++i) {
        visit.enter(chain.principals[i]);
        blocks(visit, *chain.principals[i]);
        visit.leave(chain.principals[i]);
    }
    visit.leave(chain.principals);
}

template <class Sink>
BENCH_INLINE void put(Sink& to, const azn_decision_ext_in_s_t& request) {
    const auto end = to.here();
    put(to, request.ext2);
    put(to, request.ext);
    const measured str_a(request.str_a), str_b(request.str_b);
    if (!to.room(str_a.length + str_b.length + 2 * header_room)) return;
    to.text(str_b);
    to.text(str_a);
    put(to, request.chain);
    if (to.room(header_room)) to.header(tag_sequence, end);
}

BENCH_INLINE bool get(reader& from, azn_decision_ext_in_s_t& request) {
    reader in;
    return from.contents(tag_sequence, in) && get(in, request.chain) && in.text(request.str_a) &&
           in.text(request.str_b) && get(in, request.ext) && get(in, request.ext2) && in.at_end();
}

template <class Visitor>
BENCH_INLINE void blocks(Visitor& visit, azn_decision_ext_in_s_t& request) {
    blocks(visit, request.chain);
    visit.block(request.str_a);
    visit.block(request.str_b);
    blocks(visit, request.ext);
    blocks(visit, request.ext2);
}

static const handwritten_peers<decision_workload, encode_once<scratch_octets, azn_decision_ext_in_s_t>> peers;

}  // namespace bench
