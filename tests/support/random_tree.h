// Random trees of all the runtime's types, for tests: what a tree is made of (shape), objects with random values, new
// ones that hold what others hold, and changes.
#pragma once

#include <memory>
#include <random>
#include <string>
#include <vector>

#include "asn1/asnbase.h"
#include "support/ber.h"

namespace zr_test {

enum class kind { boolean, integer, octets, null, bits, named, any, sequence, choice, integers, records, array };

struct shape {
    kind type;
    int cls = 0;  // with `tag` when not universal
    unsigned int tag = 0;
    bool optional = false;
    bool defaulted = false;           // boolean and integer: DEFAULT 1
    std::vector<shape> members = {};  // sequence, choice; none for lists
};

// A record that contains a list of itself.
struct record : zr_asn_sequence {
    explicit record(security_t mode) : zr_asn_sequence(mode), number(mode), flag(mode), name(mode), inner(mode) {
        flag.set_class(2);
        flag.set_tag(1);
        flag.set_optional(1);
        register_child(&number);
        register_child(&flag);
        register_child(&name);
        register_child(&inner);
    }
    zr_asn_integer number;
    zr_asn_boolean flag;
    zr_asn_octetstring name;
    zr_asn_sequenceof<record> inner;
};

using integer_list = zr_asn_sequenceof<zr_asn_integer>;
using record_list = zr_asn_sequenceof<record>;
using integer_array = zr_asn_arrayof<zr_asn_integer>;

inline bool is_leaf(kind type) { return type < kind::sequence; }
inline bool is_list(kind type) { return type >= kind::integers; }

inline const shape& element_shape(kind list) {
    static const shape integer{kind::integer, 0, 0, false, false, {}};
    static const shape place{kind::choice, 0, 0, false, false, {{kind::null}, {kind::integer}}};
    static const shape one{
        kind::sequence, 0,     0,
        false,          false, {{kind::integer}, {kind::boolean, 2, 1, true}, {kind::octets}, {kind::records}}};
    return list == kind::integers ? integer : list == kind::array ? place : one;
}

inline const shape& member_shape(const shape& form, size_t at) {
    return is_list(form.type) ? element_shape(form.type) : form.members[at];
}

// What stands behind an object: an array's list for the array.
inline zr_asn_composite& children(zr_asn_object& object, kind type) {
    return type == kind::array ? static_cast<integer_array&>(object).inner_list()
                               : static_cast<zr_asn_composite&>(object);
}

// Calls `use` with the list of its own type.
template <class Use>
auto with_list(zr_asn_object& object, kind type, Use&& use) {
    if (type == kind::integers) return use(static_cast<integer_list&>(object));
    if (type == kind::records) return use(static_cast<record_list&>(object));
    return use(static_cast<integer_array&>(object).inner_list());
}

class random_tree {
public:
    explicit random_tree(unsigned int seed) : random_(seed), form_(make_sequence(0, true)) {}

    size_t below(size_t n) { return random_() % n; }

    // Objects without values, with random ones of which nothing that is mandatory is missing, and with those that other
    // objects of the tree hold. They live as long as the tree.
    zr_asn_object& make_objects() { return *make_objects(form_); }
    zr_asn_object& make_complete() {
        zr_asn_object& made = make_objects();
        fill(form_, made, true, 0);
        return made;
    }
    zr_asn_object& make_copy(zr_asn_object& from) {
        zr_asn_object& made = make_objects();
        copy(form_, from, made);
        return made;
    }

    // One change somewhere in the objects. Says what it was.
    std::string change(zr_asn_object& object) { return change(form_, object, 0); }

private:
    // Not NULL as an alternative: a CHOICE that is cleared as a part of something stays absent with it selected, and in
    // new objects it is present.
    shape make_leaf(bool selectable) {
        shape made{static_cast<kind>(below(selectable ? 6 : 7))};
        if (selectable && made.type == kind::null) made.type = kind::boolean;
        if (selectable || below(2) == 0) tag(made);
        if (!selectable && made.cls != 0 && made.type != kind::null && made.type != kind::any) {
            made.optional = below(3) == 0;
            made.defaulted = !made.optional && made.type <= kind::integer && below(3) == 0;
        }
        return made;
    }

    void tag(shape& made) {
        if (next_tag_ > 30) return;
        made.cls = 2;
        made.tag = next_tag_++;
    }

    // The first member of what may be cleared as a whole is a mandatory leaf: else it would be present again at once
    // in new objects and not in old ones.
    shape make_sequence(int depth, bool lists) {
        shape made{kind::sequence};
        shape first{kind::boolean};
        if (!lists) made.members.push_back(first);
        for (size_t count = 1 + below(5); count != 0 && next_tag_ < 20; --count) {
            const size_t what = depth < 3 ? below(8) : 0;
            if (what < 3) {
                made.members.push_back(make_leaf(false));
            } else if (what < 5 && lists) {
                shape list{static_cast<kind>(static_cast<size_t>(kind::integers) + below(3))};
                if (list.type != kind::array) tag(list);
                made.members.push_back(list);
            } else {
                const bool optional = below(3) == 0;
                made.members.push_back(what == 7 ? make_choice(depth + 1)
                                                 : make_sequence(depth + 1, lists && !optional));
                made.members.back().optional = optional;
            }
        }
        if (made.members.empty()) made.members.push_back(first);
        if (depth != 0) tag(made);
        return made;
    }

    shape make_choice(int depth) {
        shape made{kind::choice};
        for (size_t count = 1 + below(4); count != 0; --count) {
            const size_t what = depth < 3 ? below(6) : 2;
            made.members.push_back(what == 0   ? make_choice(depth + 1)
                                   : what == 1 ? make_sequence(depth + 1, false)
                                               : make_leaf(true));
        }
        return made;
    }

    template <class T>
    static zr_asn_object* make() {
        return new T(zr_normal);
    }

    zr_asn_object* make_objects(const shape& form) {
        static constexpr zr_asn_object* (*makers[])() = {
            // in the order of `kind`
            make<zr_asn_boolean>,   make<zr_asn_integer>,   make<zr_asn_octetstring>, make<zr_asn_null>,
            make<zr_asn_bitstring>, make<zr_asn_namedbits>, make<zr_asn_any>,         make<zr_asn_sequence>,
            make<zr_asn_choice>,    make<integer_list>,     make<record_list>,        make<integer_array>};
        zr_asn_object* made = makers[static_cast<size_t>(form.type)]();
        pool_.emplace_back(made);
        if (form.cls != 0) {
            made->set_class(form.cls);
            made->set_tag(form.tag);
        }
        for (const shape& member : form.members)
            static_cast<zr_asn_composite*>(made)->register_child(make_objects(member));
        if (form.optional) made->set_optional(1);
        if (form.defaulted && form.type == kind::boolean) static_cast<zr_asn_boolean*>(made)->set_default_value(1);
        if (form.defaulted && form.type == kind::integer) static_cast<zr_asn_integer*>(made)->set_default_value(1L);
        return made;
    }

    std::vector<unsigned char> make_octets() {
        std::vector<unsigned char> octets(below(8) != 0 ? below(5) : 120 + below(200));
        for (auto& octet : octets)
            octet = static_cast<unsigned char>(random_());
        return octets;
    }

    // Setters that do not tell the enclosing caches are followed by that.
    static void tell_parent(const zr_asn_object& object) {
        if (object.get_parent() != nullptr) object.get_parent()->invalidate_encoding();
    }

    static void set_named(zr_asn_namedbits& object, const unsigned char* octets, size_t length) {
        object.set_bit(0, 0);
        for (unsigned int n = 0; n < 8 * length; ++n)
            object.set_bit(n, octets[n / 8] >> (7 - n % 8) & 1);
    }

    void fill_leaf(const shape& form, zr_asn_object& object) {
        std::vector<unsigned char> octets = make_octets();
        const auto length = static_cast<unsigned int>(octets.size());
        const auto number = static_cast<int32_t>(random_() >> below(32));
        const unsigned int unused = length != 0 ? static_cast<unsigned int>(below(8)) : 0;
        if (form.type == kind::boolean) static_cast<zr_asn_boolean&>(object).set_value(number & 1);
        if (form.type == kind::integer) static_cast<zr_asn_integer&>(object).set_value(static_cast<long>(number));
        if (form.type == kind::octets) static_cast<zr_asn_octetstring&>(object).set_value(octets.data(), length);
        if (form.type == kind::bits)
            static_cast<zr_asn_bitstring&>(object).set_value(octets.data(), 8 * length - unused);
        if (form.type == kind::named) {
            object.invalidate_value(zr_invalidate_all);
            set_named(static_cast<zr_asn_namedbits&>(object), octets.data(), length);
        }
        if (form.type == kind::any) {
            octets.resize(below(100));
            octets.insert(octets.begin(), {0xC5, static_cast<unsigned char>(octets.size())});
            if (below(2) == 0) octets.insert(octets.begin(), {0x64, static_cast<unsigned char>(octets.size())});
            read_from(object, octets);
        }
        tell_parent(object);
    }

    void fill(const shape& form, zr_asn_object& object, bool complete, int depth) {
        if (is_leaf(form.type)) {
            const bool may_lack = !complete || form.optional || form.defaulted;
            if (!may_lack || below(complete ? 2 : 12) != 0) fill_leaf(form, object);
        } else if (is_list(form.type)) {
            for (size_t count = depth < 5 ? below(4) : 0; count != 0; --count)
                add(form, object, false, complete, depth);
        } else if (!complete || !form.optional || below(2) == 0) {
            for (unsigned int i = 0; i < form.members.size(); ++i)
                fill(form.members[i], *children(object, form.type).get_child(i), complete, depth + 1);
            if (form.type == kind::choice && (complete || below(8) != 0)) select(form, object);
        }
    }

    std::string select(const shape& form, zr_asn_object& object) {
        const auto selected = static_cast<unsigned int>(below(form.members.size()));
        static_cast<zr_asn_choice&>(object).select(selected);
        return "select " + std::to_string(selected);
    }

    void add(const shape& form, zr_asn_object& object, bool first, bool complete, int depth) {
        with_list(object, form.type, [&](auto& list) {
            fill(element_shape(form.type), first ? *list.add_child_before() : *list.add_child(), complete, depth + 1);
        });
    }

    template <class T, class... Parts>
    static void copy_value(zr_asn_object& from, zr_asn_object& to, Parts... parts) {
        if (static_cast<T&>(from).get_value(parts...) == 0) static_cast<T&>(to).set_value(parts...);
    }

    static void copy_leaf(const shape& form, zr_asn_object& from, zr_asn_object& to) {
        unsigned char* data = nullptr;
        unsigned int count = 0;
        if (form.type == kind::boolean) copy_value<zr_asn_boolean>(from, to, 0);
        if (form.type == kind::integer) copy_value<zr_asn_integer>(from, to, 0L);
        if (form.type == kind::octets) {
            copy_value<zr_asn_octetstring>(from, to, data, count);
            // What it has only read an OCTET STRING does not write.
            if (from.is_encoding_valid() == 0) static_cast<zr_asn_octetstring&>(to).set_value(data, 0);
        }
        if (form.type == kind::bits) copy_value<zr_asn_bitstring>(from, to, data, count);
        if (form.type == kind::named && static_cast<zr_asn_namedbits&>(from).get_value(data, count) == 0)
            set_named(static_cast<zr_asn_namedbits&>(to), data, (count + 7) / 8);
        if (form.type == kind::any) read(to, written(from));
        tell_parent(to);
    }

    static void copy(const shape& form, zr_asn_object& from, zr_asn_object& to) {
        if (is_leaf(form.type)) {
            if (from.is_present() != 0) copy_leaf(form, from, to);
            return;
        }
        for (unsigned int i = 0; i < children(from, form.type).get_child_count(); ++i) {
            if (is_list(form.type)) with_list(to, form.type, [](auto& list) { list.add_child(); });
            copy(member_shape(form, i), *children(from, form.type).get_child(i), *children(to, form.type).get_child(i));
        }
        if (form.type != kind::choice) return;
        const int selected = static_cast<zr_asn_choice&>(from).selected();
        if (selected >= 0) static_cast<zr_asn_choice&>(to).select(static_cast<unsigned int>(selected));
    }

    std::string change(const shape& form, zr_asn_object& object, int depth) {
        if (is_leaf(form.type)) return change_leaf(form, object);
        const unsigned int count = children(object, form.type).get_child_count();
        if (is_list(form.type) && (count == 0 || below(2) == 0)) return change_list(form, object, depth);
        if (form.type == kind::choice && below(3) == 0) return select(form, object);
        const auto at = static_cast<unsigned int>(below(count));
        return std::to_string(at) + "." +
               change(member_shape(form, at), *children(object, form.type).get_child(at), depth + 1);
    }

    std::string change_leaf(const shape& form, zr_asn_object& object) {
        if (form.type == kind::null) return "null";
        if (below(5) == 0) {
            object.invalidate_value(zr_invalidate_all);
            return "cleared";
        }
        if (form.type == kind::named && object.is_present() != 0 && below(2) == 0) {
            auto& bits = static_cast<zr_asn_namedbits&>(object);
            unsigned char* data = nullptr;
            unsigned int count = 0;
            static_cast<void>(bits.get_value(data, count));
            const auto n = static_cast<unsigned int>(below(count + 9));
            bits.set_bit(n, below(2) != 0 ? 1 : 0);
            return "bit " + std::to_string(n);
        }
        fill_leaf(form, object);
        return "set";
    }

    std::string change_list(const shape& form, zr_asn_object& object, int depth) {
        const unsigned int count = children(object, form.type).get_child_count();
        const size_t what = count == 0 ? 0 : below(count < 6 ? 6 : 4);
        if (what == 1) {
            with_list(object, form.type, [&](auto& list) { return below(2) == 0 ? list.emptyi() : list.empty(); });
            return "emptied";
        }
        if (what == 2 || what == 3) {
            const auto at = static_cast<unsigned int>(below(count));
            with_list(object, form.type, [&](auto& list) { return list.delete_child(at); });
            return "deleted " + std::to_string(at);
        }
        add(form, object, what == 4, false, depth);
        return what == 4 ? "added first" : "added";
    }

    std::mt19937 random_;
    unsigned int next_tag_ = 0;
    shape form_;
    std::vector<std::unique_ptr<zr_asn_object>> pool_;
};

}  // namespace zr_test
