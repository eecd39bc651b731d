// What the value types share: reading a value with its default, and making a default.
#pragma once

#include <memory>
#include <new>

#include "asn1/asnbase/object.h"

namespace zr {

// read_value answers from the present object with `own`, else from its DEFAULT with `from_default`; 275063200 without
// either. A default of a foreign class has no such value: 275063200 too.
template <class T, class Own, class FromDefault>
int read_value(const T& object, Own&& own, FromDefault&& from_default) {
    if (object.is_present() != 0) return own();
    if (object.is_defaultable() == 0) return zr_err_value_absent;
    const auto* standard = dynamic_cast<const T*>(object.get_default_value());
    return standard != nullptr ? from_default(*standard) : zr_err_value_absent;
}

// install_default makes a T (mode normal) with the owner's tag and class, lets `fill` give it its value, and installs
// it as the owner's DEFAULT. Returns 0, or the status of `fill` with the owner as it was.
template <class T, class Fill>
int install_default(zr_asn_object& owner, Fill&& fill) {
    std::unique_ptr<T> made(new (std::nothrow) T(zr_normal));
    if (made == nullptr) throw_out_of_memory("Out of memory in asn_object::set_default_value");
    made->set_tag(owner.get_tag());
    made->set_class(owner.get_class());
    if (int status = fill(*made)) return status;
    return owner.zr_asn_object::set_default_value(made.release());
}

}  // namespace zr
