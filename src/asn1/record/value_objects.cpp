#include "asn1/record/value_objects.h"

#include "asn1/asn_yvobjs.h"
#include "asn1/asnutils.h"
#include "asn1/record/members.h"

namespace zr {

namespace {

// The objects of a binding know their class by their field.
template <class Object>
Object& as(zr_asn_object& object) {
    return static_cast<Object&>(object);
}

}  // namespace

void set_object(zr_asn_object& object, const field& field, const void* structure, const void* value) {
    switch (field.value) {
        case value_kind::integer:
            as<zr_asn_integer>(object).set_value(long{load_integer(value, field.integer)});
            break;
        case value_kind::version:
            if (object.is_present() == 0) as<zr_asn_integer>(object).set_value(1);
            break;
        case value_kind::text:
            as<zrasnUTF8String>(object).set_value(const_cast<char*>(text_in(value)));
            break;
        case value_kind::stored_text:
            static_cast<void>(
                zr_set_strvalue(as<zr_asn_octetstring>(object), place<char*>(const_cast<void*>(value), 0)));
            break;
        case value_kind::octets:
            as<zr_asn_octetstring>(object).set_value(place<unsigned char*>(value, 0), octets_length(field, structure));
            break;
        case value_kind::fixed_octets:
            as<zr_asn_octetstring>(object).set_value(static_cast<const unsigned char*>(value), field.size);
            break;
        case value_kind::record:
            break;
    }
}

void get_object(zr_asn_object& object, const field& field, void* structure, void* where, const char* module) {
    switch (field.value) {
        case value_kind::integer:
            store_integer(where, field.integer, static_cast<int32_t>(zr_intvalue(as<zr_asn_integer>(object))));
            break;
        case value_kind::version:
            break;
        case value_kind::text:
            static_cast<void>(as<zrasnUTF8String>(object).get_value(place<char*>(where, 0)));
            break;
        case value_kind::stored_text:
            static_cast<void>(zr_get_strvalue(as<zr_asn_octetstring>(object), place<char*>(where, 0)));
            break;
        case value_kind::octets: {
            unsigned long length = 0;
            if (field.held == holding::optional) {
                static_cast<void>(zr_asn_cert_request_in::get_obj_body(as<zr_asn_octetstring>(object), length,
                                                                       place<unsigned char*>(where, 0)));
            } else if (as<zrasn_octetstring>(object).get_value(place<unsigned char*>(where, 0), length) != 0) {
                throw_out_of_memory("ASN: Memory error", module);
            }
            store_count(field, structure, static_cast<uint32_t>(length));
            break;
        }
        case value_kind::fixed_octets:
            as<zrasn_octetstring>(object).get_value(static_cast<unsigned long>(field.size),
                                                    static_cast<unsigned char*>(where));
            break;
        case value_kind::record:
            break;
    }
}

}  // namespace zr
