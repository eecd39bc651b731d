#include "asn1/record/tree.h"

#include <cstdlib>
#include <cstring>
#include <memory>

#include "asn1/asnbase/collections.h"
#include "asn1/asnutils.h"
#include "asn1/record/integers.h"
#include "asn1/zrasnutf8.h"

namespace zr {

namespace {

constexpr const char memory_error[] = "ASN: Memory error";

// The field objects of a binding know their kind by their place in the list.
template <class Object>
Object& as(zr_asn_object* object) {
    return *static_cast<Object*>(object);
}

// Moves one structure and what it contains. `depth` counts the records that enclose it: records that contain
// themselves nest as deep as the data does, and the tree does not follow them beyond max_depth.
class setter {
public:
    void set(zr_asnbase& binding, const record_type& type, void* structure);

private:
    void set_list(zr_asn_object* list, const record_type& type, const field& field, void* structure);
    void set_slots(zr_asn_object* array, const record_type& type, const field& field, void* structure);

    unsigned int depth_ = 0;
};

// Makes an element in the list's mode and hands it to the list.
zr_asn_object* add_element(zr_asn_composite& list, const record_type& type, const field& field) {
    zr_asn_object* element = field.make_element(list.get_secure());
    if (element == nullptr) throw_out_of_memory(memory_error, type.module);
    try {
        if (list.register_child(element) != 0) throw_out_of_memory(memory_error, type.module);
    } catch (...) {
        delete element;
        throw;
    }
    return element;
}

// The list inside an array with slots.
zr_asn_sequence& inner_list(zr_asn_object* array) {
    return as<zr_asn_sequence>(as<zr_asn_composite>(array).get_child(0));
}

void setter::set(zr_asnbase& binding, const record_type& type, void* structure) {
    if (++depth_ > max_depth) throw_out_of_memory("Too many nested levels in asn_composite");
    // The setters of INTEGER and OCTET STRING leave the caches around them as they are.
    binding.invalidate_encoding();
    for (const field& field : type) {
        zr_asn_object* object = binding.get_child(static_cast<unsigned int>(&field - type.fields));
        void* member = &place<unsigned char>(structure, field.offset);
        switch (field.kind) {
            case field_kind::integer:
                as<zrasn_integer>(object).set_value(long{load_integer(member, field.integer)});
                break;
            case field_kind::text:
                as<zrasnUTF8String>(object).set_value(place<char*>(member, 0));
                break;
            case field_kind::octets: {
                const auto* data = place<unsigned char*>(member, 0);
                const auto length = place<uint32_t>(structure, field.count_offset);
                as<zrasn_octetstring>(object).set_value(data, data != nullptr ? length : 0);
                break;
            }
            case field_kind::fixed_octets:
                as<zrasn_octetstring>(object).set_value(&place<unsigned char>(member, 0), field.size);
                break;
            case field_kind::nested:
                set(as<zr_asnbase>(object), *field.nested, member);
                break;
            case field_kind::optional_nested:
                if (void* nested = place<void*>(member, 0)) {
                    set(as<zr_asnbase>(object), *field.nested, nested);
                } else {
                    object->invalidate_value(zr_invalidate_all);
                }
                break;
            case field_kind::list_of_records:
            case field_kind::list_of_pointers:
            case field_kind::list_of_texts:
            case field_kind::list_of_integers:
                set_list(object, type, field, structure);
                break;
            case field_kind::slots:
                set_slots(object, type, field, structure);
                break;
        }
    }
    --depth_;
}

void setter::set_list(zr_asn_object* object, const record_type& type, const field& field, void* structure) {
    auto& list = as<zr_asn_sequence>(object);
    list.emptyi();
    list.set_value_valid();
    unsigned char* elements = place<unsigned char*>(structure, field.offset);
    if (elements == nullptr) return;
    const auto count =
        static_cast<uint32_t>(load_integer(&place<unsigned char>(structure, field.count_offset), field.count));
    for (size_t i = 0; i < count; ++i) {
        void* nested = nullptr;
        if (field.kind == field_kind::list_of_records) nested = elements + i * field.nested->size;
        if (field.kind == field_kind::list_of_pointers) {
            nested = place<void*>(elements, i * sizeof(void*));
            if (nested == nullptr) throw_out_of_memory(memory_error, type.module);
        }
        zr_asn_object* element = add_element(list, type, field);
        if (nested != nullptr) {
            set(as<zr_asnbase>(element), *field.nested, nested);
        } else if (field.kind == field_kind::list_of_texts) {
            as<zrasnUTF8String>(element).set_value(place<char*>(elements, i * sizeof(char*)));
        } else {
            as<zrasn_integer>(element).set_value(
                long{load_integer(elements + i * field.integer.octets, field.integer)});
        }
    }
}

// Empty slots before the last used one are written as NULL, so that the positions survive.
void setter::set_slots(zr_asn_object* array, const record_type& type, const field& field, void* structure) {
    zr_asn_sequence& list = inner_list(array);
    list.emptyi();
    list.set_value_valid();
    for (uint32_t i = 0; i < field.size; ++i) {
        void* nested = place<void*>(structure, field.offset + i * sizeof(void*));
        if (nested == nullptr) continue;
        while (list.get_child_count() < i)
            as<zr_asn_choice>(add_element(list, type, field)).select(0);
        auto& choice = as<zr_asn_choice>(add_element(list, type, field));
        choice.select(1);
        set(as<zr_asnbase>(choice.get_child(1)), *field.nested, nested);
    }
}

void* allocate(size_t count, size_t octets, const char* message, const record_type& type) {
    void* block = std::calloc(count, octets);
    if (block == nullptr) throw_out_of_memory(message, type.module);
    return block;
}

// Fills a structure of the caller's, or releases what it has filled when it fails.
void get_element(zr_asn_object* object, const record_type& type, void* structure) {
    try {
        get_fields(as<zr_asnbase>(object), type, structure);
    } catch (...) {
        free_fields(type, structure);
        throw;
    }
}

// The same for a structure in a block of its own, which `slot` gets.
void get_allocated(zr_asn_object* object, const record_type& type, void*& slot, const char* message,
                   const record_type& owner) {
    slot = allocate(1, type.size, message, owner);
    try {
        get_fields(as<zr_asnbase>(object), type, slot);
    } catch (...) {
        free_fields(type, slot);
        std::free(slot);
        slot = nullptr;
        throw;
    }
}

// The count is raised behind each complete element, so that it always tells how many are there.
void get_list(const zr_asn_composite& list, const record_type& type, const field& field, void* structure) {
    const unsigned int count = list.get_child_count();
    if (count == 0) return;
    if (field.count.octets == 2 && count > UINT16_MAX) throw_out_of_memory(memory_error, type.module);
    const size_t octets = field.element_octets();
    auto* elements = static_cast<unsigned char*>(allocate(count, octets, memory_error, type));
    place<unsigned char*>(structure, field.offset) = elements;
    for (unsigned int i = 0; i < count; ++i, elements += octets) {
        zr_asn_object* object = list.get_child(i);
        if (object == nullptr) throw_out_of_memory(memory_error, type.module);
        switch (field.kind) {
            case field_kind::list_of_texts:
                // A text that finds no memory stays null.
                static_cast<void>(as<zrasnUTF8String>(object).get_value(place<char*>(elements, 0)));
                break;
            case field_kind::list_of_integers:
                store_integer(elements, field.integer, static_cast<int32_t>(zr_intvalue(as<zrasn_integer>(object))));
                break;
            case field_kind::list_of_pointers:
                get_allocated(object, *field.nested, place<void*>(elements, 0), memory_error, type);
                break;
            default:
                get_element(object, *field.nested, elements);
                break;
        }
        store_integer(&place<unsigned char>(structure, field.count_offset), field.count, static_cast<int32_t>(i + 1));
    }
}

void get_slots(zr_asn_object* array, const record_type& type, const field& field, void* structure) {
    const zr_asn_sequence& list = inner_list(array);
    for (uint32_t i = 0; i < field.size; ++i) {
        zr_asn_object* object = list.get_child(i);
        if (object == nullptr) break;
        auto& choice = as<zr_asn_choice>(object);
        if (choice.selected() == 1)
            get_allocated(choice.get_child(1), *field.nested, place<void*>(structure, field.offset + i * sizeof(void*)),
                          memory_error, type);
    }
}

void free_block(void*& block) {
    std::free(block);
    block = nullptr;
}

void free_allocated(const record_type& type, void*& slot) {
    if (slot != nullptr) free_fields(type, slot);
    free_block(slot);
}

void free_list(const field& field, void* structure) {
    auto* elements = place<unsigned char*>(structure, field.offset);
    const auto count =
        static_cast<uint32_t>(load_integer(&place<unsigned char>(structure, field.count_offset), field.count));
    const size_t octets = field.element_octets();
    for (size_t i = 0; elements != nullptr && i < count; ++i) {
        unsigned char* element = elements + i * octets;
        if (field.kind == field_kind::list_of_texts) free_block(place<void*>(element, 0));
        if (field.kind == field_kind::list_of_pointers) free_allocated(*field.nested, place<void*>(element, 0));
        if (field.kind == field_kind::list_of_records) free_fields(*field.nested, element);
    }
    free_block(place<void*>(structure, field.offset));
    store_integer(&place<unsigned char>(structure, field.count_offset), field.count, 0);
}

// Prepares the object of a field of `kind` and registers it with the binding.
void register_field(zr_asnbase& binding, field_kind kind, zr_asn_object& object) {
    switch (kind) {
        case field_kind::list_of_records:
        case field_kind::list_of_pointers:
        case field_kind::list_of_texts:
        case field_kind::list_of_integers:
            object.set_tag(16);
            object.set_class(0);
            object.set_value_valid();
            break;
        case field_kind::optional_nested:
            object.set_optional(1);
            // A record whose members are all lists is present as soon as it is made.
            object.invalidate_value(zr_invalidate_all);
            break;
        case field_kind::integer:
        case field_kind::text:
        case field_kind::octets:
        case field_kind::fixed_octets:
        case field_kind::nested:
        case field_kind::slots:
            break;
    }
    binding.register_child(&object);
}

// The value objects have one base class each, at their beginning.
void destroy_first_objects(const record_type& type, uint32_t count, unsigned char* room) {
    while (count-- != 0)
        reinterpret_cast<zr_asn_object*>(room + type.fields[count].object_offset)->~zr_asn_object();
}

}  // namespace

void make_objects(zr_asnbase& binding, const record_type& type, unsigned char* room) {
    uint32_t made = 0;
    try {
        for (const field& field : type) {
            zr_asn_object* object = field.make_object_at(room + field.object_offset);
            ++made;
            register_field(binding, field.kind, *object);
        }
    } catch (...) {
        destroy_first_objects(type, made, room);
        throw;
    }
}

void destroy_objects(const record_type& type, unsigned char* room) {
    destroy_first_objects(type, type.field_count, room);
}

void set_fields(zr_asnbase& binding, const record_type& type, void* structure) {
    setter().set(binding, type, structure);
}

void get_fields(zr_asnbase& binding, const record_type& type, void* structure) {
    std::memset(structure, 0, type.size);
    for (const field& field : type) {
        zr_asn_object* object = binding.get_child(static_cast<unsigned int>(&field - type.fields));
        void* member = &place<unsigned char>(structure, field.offset);
        switch (field.kind) {
            case field_kind::integer:
                store_integer(member, field.integer, static_cast<int32_t>(zr_intvalue(as<zrasn_integer>(object))));
                break;
            case field_kind::text:
                // A text that finds no memory stays null, and that is no failure.
                static_cast<void>(as<zrasnUTF8String>(object).get_value(place<char*>(member, 0)));
                break;
            case field_kind::octets: {
                unsigned long length = 0;
                if (as<zrasn_octetstring>(object).get_value(place<unsigned char*>(member, 0), length) != 0)
                    throw_out_of_memory(memory_error, type.module);
                place<uint32_t>(structure, field.count_offset) = static_cast<uint32_t>(length);
                break;
            }
            case field_kind::fixed_octets:
                as<zrasn_octetstring>(object).get_value(static_cast<unsigned long>(field.size),
                                                        &place<unsigned char>(member, 0));
                break;
            case field_kind::nested:
                get_fields(as<zr_asnbase>(object), *field.nested, member);
                break;
            case field_kind::optional_nested:
                if (object->is_present() != 0)
                    get_allocated(object, *field.nested, place<void*>(member, 0), "ASN: Out of memory", type);
                break;
            case field_kind::list_of_records:
            case field_kind::list_of_pointers:
            case field_kind::list_of_texts:
            case field_kind::list_of_integers:
                get_list(as<zr_asn_sequence>(object), type, field, structure);
                break;
            case field_kind::slots:
                get_slots(object, type, field, structure);
                break;
        }
    }
}

void free_fields(const record_type& type, void* structure) {
    for (const field& field : type) {
        void* member = &place<unsigned char>(structure, field.offset);
        switch (field.kind) {
            case field_kind::integer:
            case field_kind::fixed_octets:
                break;
            case field_kind::octets:
                place<uint32_t>(structure, field.count_offset) = 0;
                free_block(place<void*>(member, 0));
                break;
            case field_kind::text:
                free_block(place<void*>(member, 0));
                break;
            case field_kind::nested:
                free_fields(*field.nested, member);
                break;
            case field_kind::optional_nested:
                free_allocated(*field.nested, place<void*>(member, 0));
                break;
            case field_kind::list_of_records:
            case field_kind::list_of_pointers:
            case field_kind::list_of_texts:
            case field_kind::list_of_integers:
                free_list(field, structure);
                break;
            case field_kind::slots:
                for (uint32_t i = 0; i < field.size; ++i)
                    free_allocated(*field.nested, place<void*>(member, i * sizeof(void*)));
                break;
        }
    }
}

namespace {

std::unique_ptr<zr_asnbase> make_binding(const record_type& type, security_t mode) {
    std::unique_ptr<zr_asnbase> binding(static_cast<zr_asnbase*>(type.codec.make_binding(mode)));
    if (binding == nullptr) throw_out_of_memory(memory_error, type.module);
    return binding;
}

}  // namespace

int encode_fields(zr_asnbase& binding, const record_type& type, void* in, zr_asn_buffer_t& out, int version) {
    return guarded([&] {
        set_fields(binding, type, in);
        return zr_asnbase::saveEncoding(binding, version, out);
    });
}

int decode_fields(zr_asnbase& binding, const record_type& type, void* out, zr_asn_buffer_t& in, int version) {
    return guarded([&] {
        if (int status = zr_asnbase::loadObject(binding, version, in)) return status;
        get_fields(binding, type, out);
        return 0;
    });
}

int encode_tree(const record_type& type, security_t mode, zr_asn_buffer_t& out, void* in) {
    return guarded([&] { return encode_fields(*make_binding(type, mode), type, in, out, envelope_version); });
}

int decode_tree(const record_type& type, security_t mode, zr_asn_buffer_t& in, void* out) {
    alignas(std::max_align_t) unsigned char made[max_structure] = {};
    const int status =
        guarded([&] { return decode_fields(*make_binding(type, mode), type, made, in, envelope_version); });
    if (status == 0) {
        std::memcpy(out, made, type.size);
        return 0;
    }
    free_fields(type, made);
    if (clears_structure(status)) std::memset(out, 0, type.size);
    return status;
}

}  // namespace zr
