#include "bench/scaling/scaling.h"

#include <cstdlib>
#include <memory>

#include "asn1/zrasnapi.h"
#include "base_idls/aclidl_asn.h"
#include "bench/handwritten/blocks.h"
#include "bench/harness/peer.h"
#include "bench/objects/handwritten.h"
#include "bench/objects/workload.h"
#include "bench/scaling/chains.h"

namespace bench {
namespace {

// Objects with 256-octet bodies, `size` octets of them all together.
struct octets_grow {
    using structure = yvobj_list_s_t;
    static constexpr const char* name = "octets";
    static std::vector<size_t> sizes() { return {1000, 10000, 100000, 1000000, 10000000, 100000000}; }

    static yvobj_list_s_t make(builder& make, size_t size) {
        return make_objects(make, static_cast<uint32_t>(size / 306));
    }
    template <class Visitor>
    static void visit(Visitor& visitor, yvobj_list_s_t& list) {
        blocks(visitor, list);
    }
};

struct texts_grow {
    using structure = yvobj_name_list_s_t;
    static constexpr const char* name = "texts";
    static std::vector<size_t> sizes() { return {16, 128, 1024, 8192, 65536, 524288, 4000000}; }

    static yvobj_name_list_s_t make(builder& make, size_t size) {
        yvobj_name_list_s_t list{static_cast<uint32_t>(size), make.array<char*>(size), {}};
        for (size_t i = 0; i < size; ++i)
            list.names[i] = make.text(8, 24);
        return list;
    }
    template <class Visitor>
    static void visit(Visitor& visitor, yvobj_name_list_s_t& list) {
        visitor.enter(list.names);
        for (uint32_t i = 0; i < list.count; ++i)
            visitor.block(list.names[i]);
        visitor.leave(list.names);
    }
};

struct integers_grow {
    using structure = acl_permset_s_t;
    static constexpr const char* name = "integers";
    static std::vector<size_t> sizes() { return texts_grow::sizes(); }

    static acl_permset_s_t make(builder& make, size_t size) {
        acl_permset_s_t set{static_cast<uint32_t>(size), make.array<int32_t>(size)};
        for (size_t i = 0; i < size; ++i)
            set.perms[i] = static_cast<int32_t>(make.number(1u << 15));
        return set;
    }
    template <class Visitor>
    static void visit(Visitor& visitor, acl_permset_s_t& set) {
        visitor.block(set.perms);
    }
};

struct levels_by_array {
    using structure = ejauditelement_s_t;
    static constexpr const char* name = "levels (audit element)";
    static std::vector<size_t> sizes() { return {4, 32, 256, 2048, 16384, 131072, 1000000}; }

    static ejauditelement_s_t make(builder& make, size_t size) { return make_element_chain(make, size); }
    // Outer levels are released first.
    template <class Visitor>
    static void visit(Visitor& visitor, ejauditelement_s_t& outermost) {
        for (ejauditelement_s_t* element = &outermost; element != nullptr; element = element->elements) {
            visitor.block(element->name);
            visitor.block(element->data);
            visitor.block(element->elements);
        }
    }
};

struct levels_by_pointer {
    using structure = namevalue_s_t;
    static constexpr const char* name = "levels (name-value node)";
    static std::vector<size_t> sizes() { return levels_by_array::sizes(); }

    static namevalue_s_t make(builder& make, size_t size) { return make_node_chain(make, size); }
    template <class Visitor>
    static void visit(Visitor& visitor, namevalue_s_t& outermost) {
        for (namevalue_s_t* node = &outermost;; node = node->children[0]) {
            visitor.block(node->name);
            visitor.block(node->values);
            visitor.block(node->values[0]);
            if (node->child_count == 0) break;
            visitor.block(node->children);
            visitor.block(node->children[0]);
        }
    }
};

// The record of one scenario at one size, its encoding, and its blocks.
template <class Scenario>
struct sized {
    using structure = typename Scenario::structure;

    explicit sized(size_t size) : size_made(size), record(Scenario::make(owner, size)) {
        structure decoded{};
        if (zrAsnEncodeObj(encoding, record) != 0 || zrAsnDecodeObj(encoding, decoded) != 0) std::abort();
        Scenario::visit(floor, decoded);
        zrAsnFreeObj(decoded);
    }
    ~sized() { zr_asn_buffer_free(encoding); }
    sized(const sized&) = delete;
    sized& operator=(const sized&) = delete;

    // One at a time is kept: a large one takes long to make and much memory.
    static sized& of(size_t size) {
        static std::unique_ptr<sized> made;
        if (made == nullptr || made->size_made != size) {
            made.reset();
            made = std::make_unique<sized>(size);
        }
        return *made;
    }

    size_t size_made;
    builder owner;
    structure record;
    zr_asn_buffer_t encoding{};
    floor_of floor;
};

template <class Scenario>
void library_encode(sized<Scenario>& at) {
    zr_asn_buffer_t out{};
    if (zrAsnEncodeObj(out, at.record) != 0) std::abort();
    keep(out.data);
    zr_asn_buffer_free(out);
}
template <class Scenario>
void library_decode(sized<Scenario>& at) {
    typename Scenario::structure out{};
    if (zrAsnDecodeObj(at.encoding, out) != 0) std::abort();
    keep(&out);
    zrAsnFreeObj(out);
}
template <class Scenario>
void read_blocks(sized<Scenario>& at) {
    toucher visitor;
    Scenario::visit(visitor, at.record);
    keep(&visitor.sum());
}
template <class Scenario>
void floor_encode(sized<Scenario>& at) {
    allocate_once(at.encoding.length);
}
template <class Scenario>
void floor_decode(sized<Scenario>& at) {
    at.floor.run();
}
void hand_encode(sized<octets_grow>& at) {
    zr_asn_buffer_t out{};
    encode_twice(out, at.record);
    keep(out.data);
    std::free(out.data);
}
void hand_decode(sized<octets_grow>& at) {
    yvobj_list_s_t out{};
    decode(at.encoding, out);
    keep(&out);
    release(out);
}

template <class Scenario>
using operation = void (*)(sized<Scenario>&);

template <class Scenario>
void add(std::vector<timed_case>& cases, size_t size, const std::string& name, operation<Scenario> run) {
    cases.push_back({std::string(Scenario::name) + " " + std::to_string(size) + "/" + name, static_cast<double>(size),
                     1, [size] { sized<Scenario>::of(size); },
                     [size, run](size_t times) {
                         sized<Scenario>& at = sized<Scenario>::of(size);
                         for (; times != 0; --times)
                             run(at);
                     },
                     [] {}});
}

template <class Scenario>
void add(std::vector<timed_case>& cases) {
    for (const size_t size : Scenario::sizes()) {
        add<Scenario>(cases, size, "zrasn/encode", library_encode<Scenario>);
        add<Scenario>(cases, size, "zrasn/decode", library_decode<Scenario>);
        if constexpr (std::is_same_v<Scenario, octets_grow>) {
            add<Scenario>(cases, size, "hand-written/encode", hand_encode);
            add<Scenario>(cases, size, "hand-written/decode", hand_decode);
        }
        add<Scenario>(cases, size, "reading/encode", read_blocks<Scenario>);
        add<Scenario>(cases, size, "floor/encode", floor_encode<Scenario>);
        add<Scenario>(cases, size, "floor/decode", floor_decode<Scenario>);
    }
}

}  // namespace

std::vector<timed_case> scaling_cases() {
    std::vector<timed_case> cases;
    add<octets_grow>(cases);
    add<texts_grow>(cases);
    add<integers_grow>(cases);
    add<levels_by_array>(cases);
    add<levels_by_pointer>(cases);
    return cases;
}

}  // namespace bench
