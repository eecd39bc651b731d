// The audit event by hand. It recurses along the tree of elements, down to a limit when it decodes.
#include "bench/audit/workload.h"
#include "bench/handwritten/peer.h"

namespace bench {

template <class Sink>
BENCH_INLINE void put(Sink& to, const ejauditattribute_s_t& attribute) {
    const measured name(attribute.name);
    if (!to.room(name.length + attribute.length + 3 * header_room)) return;
    const auto end = to.here();
    to.octets(attribute.data, attribute.length);
    to.text(name);
    to.header(tag_sequence, end);
}

BENCH_INLINE bool get(reader& from, ejauditattribute_s_t& attribute) {
    reader in;
    return from.contents(tag_sequence, in) && in.text(attribute.name) && in.octets(attribute.length, attribute.data) &&
           in.at_end();
}

template <class Visitor>
BENCH_INLINE void blocks(Visitor& visit, ejauditattribute_s_t& attribute) {
    visit.block(attribute.name);
    visit.block(attribute.data);
}

template <class Sink>
typename Sink::mark put_element(Sink to, const ejauditelement_s_t& element);

template <class Sink>
BENCH_INLINE void put(Sink& to, const ejauditelement_s_t& element) {
    to.go_on(put_element(to, element));
}

template <class Sink>
typename Sink::mark put_element(Sink to, const ejauditelement_s_t& element) {
    const auto end = to.here();
    put_list(to, element.elements, element.element_count);
    put_list(to, element.attrs, element.attr_count);
    const measured name(element.name);
    if (!to.room(name.length + element.length + 3 * header_room)) return to.here();
    to.octets(element.data, element.length);
    to.text(name);
    to.header(tag_sequence, end);
    return to.here();
}

constexpr unsigned most_levels = 1000;

static bool get_contents(reader in, ejauditelement_s_t& element, unsigned levels);

BENCH_INLINE bool get(reader& from, ejauditelement_s_t& element, unsigned levels) {
    reader in;
    return from.contents(tag_sequence, in) && get_contents(in, element, levels);
}

static bool get_contents(reader in, ejauditelement_s_t& element, unsigned levels) {
    return levels != 0 && in.text(element.name) && in.octets(element.length, element.data) &&
           get_list(in, element.attr_count, element.attrs) &&
           get_list(in, element.element_count, element.elements, levels - 1) && in.at_end();
}

template <class Visitor>
void blocks(Visitor& visit, ejauditelement_s_t& element) {
    visit.block(element.name);
    visit.block(element.data);
    list_blocks(visit, element.attr_count, element.attrs);
    list_blocks(visit, element.element_count, element.elements);
}

template <class Sink>
BENCH_INLINE void put(Sink& to, const ejauditevent_s_t& event) {
    const auto end = to.here();
    put_list(to, event.elements, event.element_count);
    const measured name(event.name);
    if (!to.room(2 * integer_room + name.length + 2 * header_room)) return;
    to.integer(event.int_b);
    to.text(name);
    to.integer(event.int_a);
    to.header(tag_sequence, end);
}

BENCH_INLINE bool get(reader& from, ejauditevent_s_t& event) {
    reader in;
    return from.contents(tag_sequence, in) && in.integer(event.int_a) && in.text(event.name) &&
           in.integer(event.int_b) && get_list(in, event.element_count, event.elements, most_levels) && in.at_end();
}

template <class Visitor>
BENCH_INLINE void blocks(Visitor& visit, ejauditevent_s_t& event) {
    visit.block(event.name);
    list_blocks(visit, event.element_count, event.elements);
}

static const handwritten_peers<audit_workload, encode_once<scratch_octets, ejauditevent_s_t>> peers;

}  // namespace bench
