#include "asn1/record/tree.h"

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "asn1/asnbase/collections.h"
#include "asn1/envelope.h"
#include "asn1/record/members.h"
#include "asn1/record/value_objects.h"

namespace zr {

namespace {

constexpr const char memory_error[] = "ASN: Memory error";
constexpr const char optional_memory_error[] = "ASN: Out of memory";

// The objects of a binding know their class by their field.
template <class Object>
Object& as(zr_asn_object* object) {
    return *static_cast<Object*>(object);
}

zr_asn_object* object_of_field(zr_asnbase& binding, const record_type& type, const field& field) {
    return binding.get_child(static_cast<unsigned int>(&field - type.fields));
}

// The list of a field that holds a list or slots.
zr_asn_sequence& list_of(zr_asn_object* object, const field& field) {
    if (field.held != holding::slots) return as<zr_asn_sequence>(object);
    return as<zr_asn_sequence>(as<zr_asn_composite>(object).get_child(0));
}

// Makes an element in the list's mode and hands it to the list.
zr_asn_object* add_element(zr_asn_composite& list, const record_type& type, const field& field) {
    std::unique_ptr<zr_asn_object> element(field.make_element(list.get_secure()));
    if (element == nullptr || list.register_child(element.get()) != 0) throw_out_of_memory(memory_error, type.module);
    return element.release();
}

// Moves one structure and what it contains into a tree. `depth` counts the records that enclose it: records that
// contain themselves nest as deep as the data does, and the tree does not follow them beyond max_depth.
class setter {
public:
    void set(zr_asnbase& binding, const record_type& type, const void* structure);

private:
    void set_value(zr_asn_object* object, const field& field, const void* structure, const void* value);
    void set_elements(zr_asn_object* object, const record_type& type, const field& field, const void* structure);

    unsigned int depth_ = 0;
};

void setter::set(zr_asnbase& binding, const record_type& type, const void* structure) {
    if (++depth_ > max_depth) throw_out_of_memory("Too many nested levels in asn_composite");
    // The setters of INTEGER and OCTET STRING leave the caches around them as they are.
    binding.invalidate_encoding();
    for (const field& field : type) {
        zr_asn_object* object = object_of_field(binding, type, field);
        switch (field.held) {
            case holding::one:
            case holding::optional:
                if (const void* value = value_at(field, structure)) {
                    set_value(object, field, structure, value);
                } else {
                    object->invalidate_value(zr_invalidate_all);
                }
                break;
            case holding::list:
            case holding::pointer_list:
            case holding::slots:
                set_elements(object, type, field, structure);
                break;
        }
    }
    --depth_;
}

void setter::set_value(zr_asn_object* object, const field& field, const void* structure, const void* value) {
    if (field.value == value_kind::record) return set(as<zr_asnbase>(object), *field.record, value);
    set_object(*object, field, structure, value);
}

// Empty slots before the last used one are written as NULL, so that the positions survive; a null element in an array
// of pointers is an error.
void setter::set_elements(zr_asn_object* object, const record_type& type, const field& field, const void* structure) {
    zr_asn_sequence& list = list_of(object, field);
    list.emptyi();
    list.set_value_valid();
    const uint32_t count = used_places(field, structure);
    for (uint32_t i = 0; i < count; ++i) {
        const void* value = value_at(field, structure, i);
        if (value == nullptr && field.held != holding::slots) throw_out_of_memory(memory_error, type.module);
        zr_asn_object* element = add_element(list, type, field);
        if (field.held == holding::slots) {
            auto& choice = as<zr_asn_choice>(element);
            choice.select(value != nullptr ? 1 : 0);
            if (value == nullptr) continue;
            element = choice.get_child(1);
        }
        set_value(element, field, structure, value);
    }
}

// A record's structure in a block of its own, which holds nothing when it goes.
struct structure_deleter {
    const record_type* type;
    void operator()(void* structure) const {
        type->free(structure);
        std::free(structure);
    }
};

void get_allocated(zr_asn_object* object, const record_type& type, void*& slot, const char* message,
                   const record_type& owner) {
    std::unique_ptr<void, structure_deleter> made(std::calloc(1, type.size), {&type});
    if (made == nullptr) throw_out_of_memory(message, owner.module);
    get_fields(as<zr_asnbase>(object), type, made.get());
    slot = made.release();
}

// Fills the value in a place.
void get_value(zr_asn_object* object, const record_type& type, const field& field, void* structure, void* where) {
    if (field.value != value_kind::record) return get_object(*object, field, structure, where, type.module);
    if (!is_by_pointer(field)) return get_fields(as<zr_asnbase>(object), *field.record, where);
    get_allocated(object, *field.record, place<void*>(where, 0),
                  field.held == holding::optional ? optional_memory_error : memory_error, type);
}

// Releases a structure that could not be filled.
class fill_guard {
public:
    fill_guard(const field& field, void* where) : field_(field), where_(where) {}
    fill_guard(const fill_guard&) = delete;
    fill_guard& operator=(const fill_guard&) = delete;
    ~fill_guard() {
        if (where_ != nullptr && field_.value == value_kind::record && field_.held == holding::list)
            field_.record->free(where_);
    }
    void commit() { where_ = nullptr; }

private:
    const field& field_;
    void* where_;
};

// The count is raised behind each complete element, so that it always tells how many are there.
void get_list(const zr_asn_composite& list, const record_type& type, const field& field, void* structure) {
    const unsigned int count = list.get_child_count();
    if (count == 0) return;
    void* array = count <= most_count(field) ? std::calloc(count, field.place_octets) : nullptr;
    if (array == nullptr) throw_out_of_memory(memory_error, type.module);
    place<void*>(structure, field.offset) = array;
    for (unsigned int i = 0; i < count; ++i) {
        zr_asn_object* object = list.get_child(i);
        if (object == nullptr) throw_out_of_memory(memory_error, type.module);
        void* where = place_at(field, structure, i);
        fill_guard filling(field, where);
        get_value(object, type, field, structure, where);
        filling.commit();
        store_count(field, structure, i + 1);
    }
}

void get_slots(const zr_asn_composite& list, const record_type& type, const field& field, void* structure) {
    for (uint32_t i = 0; i < field.size; ++i) {
        zr_asn_object* object = list.get_child(i);
        if (object == nullptr) break;
        auto& choice = as<zr_asn_choice>(object);
        if (choice.selected() == 1)
            get_value(choice.get_child(1), type, field, structure, place_at(field, structure, i));
    }
}

// Prepares the object of a field and registers it with the binding.
void register_field(zr_asnbase& binding, holding held, zr_asn_object& object) {
    switch (held) {
        case holding::list:
        case holding::pointer_list:
            object.set_tag(16);
            object.set_class(0);
            object.set_value_valid();
            break;
        case holding::optional:
            object.set_optional(1);
            // A record whose members are all lists is present as soon as it is made.
            object.invalidate_value(zr_invalidate_all);
            break;
        case holding::one:
        case holding::slots:
            break;
    }
    binding.register_child(&object);
}

// The value objects of the first fields, which go when they are not to stay.
class made_objects {
public:
    made_objects(const record_type& type, unsigned char* room) : type_(type), room_(room) {}
    made_objects(const made_objects&) = delete;
    made_objects& operator=(const made_objects&) = delete;
    // They have one base class each, at their beginning.
    ~made_objects() {
        while (count_-- != 0)
            reinterpret_cast<zr_asn_object*>(room_ + type_.fields[count_].object_offset)->~zr_asn_object();
    }
    void count(uint32_t made) { count_ = made; }

private:
    const record_type& type_;
    unsigned char* room_;
    uint32_t count_ = 0;
};

std::unique_ptr<zr_asnbase> make_binding(const record_type& type, security_t mode) {
    std::unique_ptr<zr_asnbase> binding(static_cast<zr_asnbase*>(type.make_binding(mode)));
    if (binding == nullptr) throw_out_of_memory(memory_error, type.module);
    return binding;
}

}  // namespace

void make_objects(zr_asnbase& binding, const record_type& type, unsigned char* room) {
    made_objects made(type, room);
    for (uint32_t i = 0; i < type.field_count; ++i) {
        zr_asn_object* object = type.fields[i].make_object_at(room + type.fields[i].object_offset);
        made.count(i + 1);
        register_field(binding, type.fields[i].held, *object);
    }
    made.count(0);
}

void destroy_objects(const record_type& type, unsigned char* room) { made_objects(type, room).count(type.field_count); }

void set_fields(zr_asnbase& binding, const record_type& type, const void* structure) {
    setter().set(binding, type, structure);
}

void get_fields(zr_asnbase& binding, const record_type& type, void* structure) {
    std::memset(structure, 0, type.size);
    for (const field& field : type) {
        zr_asn_object* object = object_of_field(binding, type, field);
        switch (field.held) {
            case holding::one:
                get_value(object, type, field, structure, place_at(field, structure, 0));
                break;
            case holding::optional:
                if (object->is_present() != 0) get_value(object, type, field, structure, place_at(field, structure, 0));
                break;
            case holding::list:
            case holding::pointer_list:
                get_list(list_of(object, field), type, field, structure);
                break;
            case holding::slots:
                get_slots(list_of(object, field), type, field, structure);
                break;
        }
    }
}

int encode_fields(zr_asnbase& binding, const record_type& type, const void* in, zr_asn_buffer_t& out, int version) {
    return guarded([&] {
        set_fields(binding, type, in);
        return zr_asnbase::saveEncoding(binding, version, out);
    });
}

int decode_fields(zr_asnbase& binding, const record_type& type, void* out, const zr_asn_buffer_t& in, int version) {
    return guarded([&] {
        zr_asn_buffer_t buffer = in;
        if (int status = zr_asnbase::loadObject(binding, version, buffer)) return status;
        get_fields(binding, type, out);
        return 0;
    });
}

int encode_tree(const record_type& type, security_t mode, zr_asn_buffer_t& out, const void* in) {
    return guarded([&] { return encode_fields(*make_binding(type, mode), type, in, out, envelope_version); });
}

int decode_tree(const record_type& type, security_t mode, const zr_asn_buffer_t& in, void* out) {
    alignas(std::max_align_t) unsigned char made[max_structure] = {};
    const int status =
        guarded([&] { return decode_fields(*make_binding(type, mode), type, made, in, envelope_version); });
    if (status == 0) {
        std::memcpy(out, made, type.size);
        return 0;
    }
    type.free(made);
    if (clears_structure(status)) std::memset(out, 0, type.size);
    return status;
}

}  // namespace zr
