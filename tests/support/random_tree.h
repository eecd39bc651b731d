// Random trees of all the runtime's types, for tests: what a tree is made of (shape), what it holds (value), objects
// made from both, and changes that are made to a value and to objects that hold it.
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

struct value {
    bool present = false;  // leaves
    long number = 0;
    std::vector<unsigned char> octets;  // octets, bits, named; any: the whole element
    unsigned int bits = 0;
    int selected = -1;
    std::vector<value> members;  // also the elements of lists
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

    // A value for the tree; a complete one lacks nothing that is mandatory.
    value make_value(bool complete) { return make_value(form_, complete, 0); }

    // Objects without values; they live as long as the tree.
    zr_asn_object& make_objects() { return *make_objects(form_); }

    zr_asn_object& make_objects(const value& held) {
        zr_asn_object& made = make_objects();
        assign(form_, held, made);
        return made;
    }

    // What a tree that held `before` holds when it has read the encoding of `held`: OCTET STRINGs are written empty
    // then, and what is equal to its DEFAULT or an alternative not selected is absent.
    value as_read(const value& held, const value& before) const {
        value read = held;
        lose(form_, read, before);
        return read;
    }

    // One change somewhere in the objects, and the same in the value. Says what it was.
    std::string change(value& held, zr_asn_object& object) { return change(form_, held, object, 0); }

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

    std::vector<unsigned char> make_octets() {
        std::vector<unsigned char> octets(below(8) != 0 ? below(5) : 120 + below(200));
        for (auto& octet : octets)
            octet = static_cast<unsigned char>(random_());
        return octets;
    }

    void fill_leaf(const shape& form, value& held) {
        held.present = true;
        held.number = static_cast<int32_t>(random_() >> below(32));
        if (form.type == kind::boolean) held.number &= 1;
        held.octets = make_octets();
        held.bits = static_cast<unsigned int>(held.octets.size() * 8);
        if (held.bits != 0) held.bits -= static_cast<unsigned int>(below(8));
        if (form.type == kind::any) {
            held.octets.resize(below(100));
            held.octets.insert(held.octets.begin(), {0xC5, static_cast<unsigned char>(held.octets.size())});
            if (below(2) == 0)
                held.octets.insert(held.octets.begin(), {0x64, static_cast<unsigned char>(held.octets.size())});
        }
    }

    value make_value(const shape& form, bool complete, int depth) {
        value held;
        if (is_leaf(form.type)) {
            const bool may_lack = !complete || form.optional || form.defaulted;
            if (!may_lack || below(complete ? 2 : 12) != 0) fill_leaf(form, held);
        } else if (is_list(form.type)) {
            for (size_t count = depth < 5 ? below(4) : 0; count != 0; --count)
                held.members.push_back(make_value(element_shape(form.type), complete, depth + 1));
        } else {
            for (const shape& member : form.members)
                held.members.push_back(make_value(member, complete, depth + 1));
            if (form.type == kind::choice && (complete || below(8) != 0))
                held.selected = static_cast<int>(below(form.members.size()));
            if (complete && form.optional && below(2) == 0) forget(form, held);
        }
        return held;
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

    static void assign(const shape& form, const value& held, zr_asn_object& object) {
        if (is_leaf(form.type)) {
            if (held.present) set_leaf(form, held, object);
            return;
        }
        for (unsigned int i = 0; i < held.members.size(); ++i) {
            if (is_list(form.type)) with_list(object, form.type, [](auto& list) { list.add_child(); });
            assign(member_shape(form, i), held.members[i], *children(object, form.type).get_child(i));
        }
        if (held.selected >= 0) static_cast<zr_asn_choice&>(object).select(static_cast<unsigned int>(held.selected));
    }

    // Setters that do not tell the enclosing caches are followed by that.
    static void set_leaf(const shape& form, const value& held, zr_asn_object& object) {
        const auto length = static_cast<unsigned int>(held.octets.size());
        if (form.type == kind::boolean) static_cast<zr_asn_boolean&>(object).set_value(static_cast<int>(held.number));
        if (form.type == kind::integer) static_cast<zr_asn_integer&>(object).set_value(held.number);
        if (form.type == kind::octets) static_cast<zr_asn_octetstring&>(object).set_value(held.octets.data(), length);
        if (form.type == kind::bits) static_cast<zr_asn_bitstring&>(object).set_value(held.octets.data(), held.bits);
        if (form.type == kind::any) read_from(object, held.octets);
        if (form.type == kind::named) {
            static_cast<zr_asn_namedbits&>(object).set_bit(0, 0);
            for (unsigned int n = 0; n < 8 * length; ++n)
                static_cast<zr_asn_namedbits&>(object).set_bit(n, held.octets[n / 8] >> (7 - n % 8) & 1);
        }
        const bool tells = form.type != kind::integer && form.type != kind::octets;
        if (!tells && object.get_parent() != nullptr) object.get_parent()->invalidate_encoding();
    }

    static void forget(const shape& form, value& held) {
        held.present = false;
        for (size_t i = 0; i < held.members.size(); ++i)
            forget(member_shape(form, i), held.members[i]);
    }

    // A CHOICE that was tried in vain has nothing selected.
    static void unselect(const shape& form, value& held) {
        if (form.type != kind::choice) return;
        held.selected = -1;
        for (size_t i = 0; i < held.members.size(); ++i)
            unselect(form.members[i], held.members[i]);
    }

    // Whether a complete value is written at all.
    static bool is_written(const shape& form, const value& held) {
        if (is_list(form.type) || form.type == kind::null) return true;
        if (is_leaf(form.type)) return held.present && !(form.defaulted && held.number == 1);
        const auto selected = static_cast<size_t>(held.selected);
        if (form.type == kind::choice)
            return held.selected >= 0 && is_written(form.members[selected], held.members[selected]);
        for (size_t i = 0; i < form.members.size(); ++i) {
            const shape& member = form.members[i];
            if (!member.optional && !member.defaulted && !is_written(member, held.members[i])) return false;
        }
        return true;
    }

    static void lose(const shape& form, value& held, const value& before) {
        if (!is_written(form, held)) {
            held = before;
            unselect(form, held);
            return forget(form, held);
        }
        if (form.type == kind::octets) held.octets.clear();
        if (form.type == kind::bits && held.bits % 8 != 0) {
            // Written as used bits, read as unused ones.
            held.octets.resize((held.bits + 7) / 8);
            held.octets.back() &= static_cast<unsigned char>(0xFF << held.bits % 8);
        }
        for (size_t i = 0; i < held.members.size(); ++i) {
            value& member = held.members[i];
            if (is_list(form.type)) {
                lose(element_shape(form.type), member, value(member));
            } else if (form.type == kind::choice && held.selected != static_cast<int>(i)) {
                // The alternatives before the one that fits were tried, those behind it keep what they had selected.
                member = before.members[i];
                if (held.selected > static_cast<int>(i)) unselect(form.members[i], member);
                forget(form.members[i], member);
            } else {
                lose(form.members[i], member, before.members[i]);
            }
        }
    }

    std::string change(const shape& form, value& held, zr_asn_object& object, int depth) {
        if (is_leaf(form.type)) return change_leaf(form, held, object);
        const auto count = static_cast<unsigned int>(held.members.size());
        if (is_list(form.type) && (count == 0 || below(2) == 0)) return change_list(form, held, object, depth);
        if (form.type == kind::choice && below(3) == 0) {
            held.selected = static_cast<int>(below(form.members.size()));
            static_cast<zr_asn_choice&>(object).select(static_cast<unsigned int>(held.selected));
            return "select " + std::to_string(held.selected);
        }
        const auto at = static_cast<unsigned int>(below(count));
        zr_asn_object& member = *children(object, form.type).get_child(at);
        return std::to_string(at) + "." + change(member_shape(form, at), held.members[at], member, depth + 1);
    }

    std::string change_leaf(const shape& form, value& held, zr_asn_object& object) {
        if (form.type == kind::null) return "null";
        if (below(5) == 0) {
            held = value{};
            object.invalidate_value(zr_invalidate_all);
            return "cleared";
        }
        if (form.type == kind::named && held.present && below(2) == 0) {
            const size_t n = below(8 * held.octets.size() + 1);
            const bool bit = below(2) != 0;
            static_cast<zr_asn_namedbits&>(object).set_bit(static_cast<unsigned int>(n), bit ? 1 : 0);
            if (n / 8 >= held.octets.size()) held.octets.resize(n / 8 + 1);
            unsigned char& octet = held.octets[n / 8];
            const int mask = 0x80 >> n % 8;
            octet = static_cast<unsigned char>(bit ? octet | mask : octet & ~mask);
            return "bit " + std::to_string(n);
        }
        fill_leaf(form, held);
        if (form.type == kind::named) object.invalidate_value(zr_invalidate_all);
        set_leaf(form, held, object);
        return "set";
    }

    std::string change_list(const shape& form, value& held, zr_asn_object& object, int depth) {
        const size_t count = held.members.size();
        const size_t what = count == 0 ? 0 : below(count < 6 ? 6 : 4);
        if (what == 1) {
            held.members.clear();
            with_list(object, form.type, [&](auto& list) { return below(2) == 0 ? list.emptyi() : list.empty(); });
            return "emptied";
        }
        if (what == 2 || what == 3) {
            const size_t at = below(count);
            held.members.erase(held.members.begin() + static_cast<ptrdiff_t>(at));
            with_list(object, form.type, [&](auto& list) { return list.delete_child(static_cast<unsigned int>(at)); });
            return "deleted " + std::to_string(at);
        }
        const bool first = what == 4;
        const value added = make_value(element_shape(form.type), false, depth + 1);
        with_list(object, form.type, [&](auto& list) {
            assign(element_shape(form.type), added, first ? *list.add_child_before() : *list.add_child());
        });
        held.members.insert(first ? held.members.begin() : held.members.end(), added);
        return first ? "added first" : "added";
    }

    std::mt19937 random_;
    unsigned int next_tag_ = 0;
    shape form_;
    std::vector<std::unique_ptr<zr_asn_object>> pool_;
};

}  // namespace zr_test
