#include "asn1/record/binding.h"

#include <cstdlib>
#include <cstring>

#include "asn1/asnutils.h"

namespace zr {

namespace {

// The value of a C integer of the given type; one of 32 unsigned bits as the same bits signed.
int32_t load_integer(const void* from, integer_type type) {
    switch (type.octets) {
        case 1: {
            uint8_t value = 0;
            std::memcpy(&value, from, sizeof value);
            return type.is_signed ? static_cast<int8_t>(value) : value;
        }
        case 2: {
            uint16_t value = 0;
            std::memcpy(&value, from, sizeof value);
            return type.is_signed ? static_cast<int16_t>(value) : value;
        }
        default: {
            int32_t value = 0;
            std::memcpy(&value, from, sizeof value);
            return value;
        }
    }
}

// Stores the low bits that fit.
void store_integer(void* to, integer_type type, int32_t value) {
    const auto octet = static_cast<uint8_t>(value);
    const auto half = static_cast<uint16_t>(value);
    switch (type.octets) {
        case 1:
            std::memcpy(to, &octet, sizeof octet);
            break;
        case 2:
            std::memcpy(to, &half, sizeof half);
            break;
        default:
            std::memcpy(to, &value, sizeof value);
            break;
    }
}

}  // namespace

void register_field(zr_asnbase& binding, field_kind kind, zr_asn_object& object) {
    switch (kind) {
        case field_kind::integer:
        case field_kind::octets:
        case field_kind::fixed_octets:
        case field_kind::nested:
            break;
    }
    binding.register_child(&object);
}

void set_fields(zr_asnbase& binding, const record_type& type, void* structure) {
    for (const field& field : type) {
        zr_asn_object* object = binding.get_child(static_cast<unsigned int>(&field - type.fields));
        switch (field.kind) {
            case field_kind::integer:
                static_cast<zrasn_integer*>(object)->set_value(
                    long{load_integer(&place<unsigned char>(structure, field.offset), field.integer)});
                break;
            case field_kind::octets: {
                const auto* data = place<unsigned char*>(structure, field.offset);
                const auto length = place<uint32_t>(structure, field.count_offset);
                static_cast<zrasn_octetstring*>(object)->set_value(data, data != nullptr ? length : 0);
                break;
            }
            case field_kind::fixed_octets:
                static_cast<zrasn_octetstring*>(object)->set_value(&place<unsigned char>(structure, field.offset),
                                                                   field.size);
                break;
            case field_kind::nested:
                set_fields(*static_cast<zr_asnbase*>(object), *field.nested,
                           &place<unsigned char>(structure, field.offset));
                break;
        }
    }
}

void get_fields(zr_asnbase& binding, const record_type& type, void* structure) {
    std::memset(structure, 0, type.size);
    for (const field& field : type) {
        zr_asn_object* object = binding.get_child(static_cast<unsigned int>(&field - type.fields));
        switch (field.kind) {
            case field_kind::integer:
                store_integer(&place<unsigned char>(structure, field.offset), field.integer,
                              static_cast<int32_t>(zr_intvalue(*static_cast<zrasn_integer*>(object))));
                break;
            case field_kind::octets: {
                unsigned long length = 0;
                auto& data = place<unsigned char*>(structure, field.offset);
                if (static_cast<zrasn_octetstring*>(object)->get_value(data, length) != 0)
                    throw_out_of_memory("ASN: Memory error", type.module);
                place<uint32_t>(structure, field.count_offset) = static_cast<uint32_t>(length);
                break;
            }
            case field_kind::fixed_octets:
                static_cast<zrasn_octetstring*>(object)->get_value(static_cast<unsigned long>(field.size),
                                                                   &place<unsigned char>(structure, field.offset));
                break;
            case field_kind::nested:
                get_fields(*static_cast<zr_asnbase*>(object), *field.nested,
                           &place<unsigned char>(structure, field.offset));
                break;
        }
    }
}

void free_fields(const record_type& type, void* structure) {
    for (const field& field : type) {
        switch (field.kind) {
            case field_kind::integer:
            case field_kind::fixed_octets:
                break;
            case field_kind::octets: {
                auto& data = place<unsigned char*>(structure, field.offset);
                std::free(data);
                data = nullptr;
                place<uint32_t>(structure, field.count_offset) = 0;
                break;
            }
            case field_kind::nested:
                free_fields(*field.nested, &place<unsigned char>(structure, field.offset));
                break;
        }
    }
}

}  // namespace zr
