// Attributes by name: the list that extends most records.
//
//     if (const attr_s_t* owner = zr::find_attribute(acl.ext, "owner")) use(*owner);
//     if (int status = zr::set_attribute(acl.ext, "owner", 4, "payroll")) return status;
//     zr::remove_attribute(acl.ext, "draft");
//
// What zrasn/edit.h says of structures and failures holds here too. A null name is an empty one.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>

#include "base_idls/attrlist_asn.h"
#include "zrasn/edit.h"

namespace zr {

// Whether the attribute has the name; a null one is empty.
inline bool has_name(const attr_s_t& attr, std::string_view name) noexcept {
    return name == (attr.name != nullptr ? attr.name : "");
}

// The first attribute of the name; null when there is none.
inline const attr_s_t* find_attribute(const attrlist_s_t& list, std::string_view name) noexcept {
    for (const attr_s_t& attr : elements(list, &attrlist_s_t::attrs))
        if (has_name(attr, name)) return &attr;
    return nullptr;
}
inline attr_s_t* find_attribute(attrlist_s_t& list, std::string_view name) noexcept {
    return const_cast<attr_s_t*>(find_attribute(std::as_const(list), name));
}

// Removes the attributes of the name from element `from` on. Returns how many there were.
inline size_t remove_attribute(attrlist_s_t& list, std::string_view name, size_t from = 0) noexcept {
    size_t removed = 0;
    for (size_t i = element_count(list, &attrlist_s_t::attrs); i-- > from;)
        if (has_name(list.attrs[i], name)) removed += erase(list, &attrlist_s_t::attrs, i) == 0 ? 1 : 0;
    return removed;
}

// The list has this attribute and no other of its name: it takes the place of the first, or comes behind the last.
[[nodiscard]] inline int set_attribute(attrlist_s_t& list, decoded<attr_s_t>&& attr) noexcept {
    const std::string_view name = attr->name != nullptr ? attr->name : "";
    const attr_s_t* const first = find_attribute(std::as_const(list), name);
    if (first == nullptr) return append(list, &attrlist_s_t::attrs, std::move(attr));
    const auto at = static_cast<size_t>(first - list.attrs);
    if (int status = set(list, &attrlist_s_t::attrs, at, std::move(attr))) return status;
    remove_attribute(list, list.attrs[at].name != nullptr ? list.attrs[at].name : "", at + 1);
    return 0;
}

// The same of one with one value: a text and the number that says of what type it is.
[[nodiscard]] inline int set_attribute(attrlist_s_t& list, std::string_view name, int32_t type,
                                       std::string_view text) noexcept {
    decoded<value_s_t> value;
    decoded<attr_s_t> attr;
    value->type = type;
    int status = set_text(value.edit(), &value_s_t::str, text);
    if (status == 0) status = set_text(attr.edit(), &attr_s_t::name, name);
    if (status == 0) status = append(attr.edit(), &attr_s_t::values, std::move(value));
    return status != 0 ? status : set_attribute(list, std::move(attr));
}

}  // namespace zr
