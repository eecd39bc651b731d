#include "to_python.h"

#include <cstring>
#include <string_view>

#include "json/base/members.h"
#include "json/document/uuid_text.h"

namespace zr::python {

namespace {

reference uuid_of(const void* structure) {
    reference text(or_throw(PyUnicode_New(json::uuid_text_size, 127)));
    char digits[json::uuid_text_size];
    json::format_uuid(structure, digits);
    std::memcpy(PyUnicode_1BYTE_DATA(text.get()), digits, sizeof(digits));
    return text;
}

reference hex_of(const void* octets, size_t count) {
    if (count > PY_SSIZE_T_MAX / 2) throw std::bad_alloc();
    reference text(or_throw(PyUnicode_New(static_cast<Py_ssize_t>(count * 2), 127)));
    if (count == 0) return text;
    unsigned char* to = PyUnicode_1BYTE_DATA(text.get());
    for (size_t i = 0; i < count; ++i) {
        const unsigned char octet = static_cast<const unsigned char*>(octets)[i];
        *to++ = static_cast<unsigned char>("0123456789abcdef"[octet >> 4]);
        *to++ = static_cast<unsigned char>("0123456789abcdef"[octet & 15]);
    }
    return text;
}

reference as_secret(reference text, PyObject* type) {
    if (type == nullptr) return text;
    return reference(or_throw(PyObject_CallOneArg(type, text.get())));
}

// Text in UTF-8, or {"hex": "..."} where it is none. A null `secret` type leaves it a plain one.
reference text_of(std::string_view text, PyObject* secret) {
    reference decoded(PyUnicode_DecodeUTF8(text.data(), static_cast<Py_ssize_t>(text.size()), nullptr));
    if (decoded) return as_secret(std::move(decoded), secret);
    if (PyErr_ExceptionMatches(PyExc_UnicodeDecodeError) == 0) throw python_error();
    PyErr_Clear();
    const reference digits = as_secret(hex_of(text.data(), text.size()), secret);
    reference made(or_throw(PyDict_New()));
    or_throw(PyDict_SetItemString(made.get(), "hex", digits.get()));
    return made;
}

class maker {
public:
    explicit maker(const secret_texts& secrets) : secrets_(secrets) { stack_.reserve(8); }

    reference make(const record_plan& plan, const void* structure) {
        if (plan.is_uuid) return uuid_of(structure);
        reference whole = open(plan, structure);
        while (!stack_.empty()) {
            frame& top = stack_.back();
            if (top.list != nullptr)
                add_element(top);
            else if (top.next != top.plan->members.size())
                add_member(top);
            else
                stack_.pop_back();
        }
        return whole;
    }

private:
    // A record that is open. The dict and the list lie within the whole, which keeps them.
    struct frame {
        const record_plan* plan;
        const void* structure;
        PyObject* dict;
        size_t next;       // member
        PyObject* list;    // of the member before it, while elements are missing; else null
        uint32_t element;  // of the list: next one
        uint32_t count;    // of the list
    };

    // The dict of a record that the loop fills.
    reference open(const record_plan& plan, const void* structure) {
        reference dict(or_throw(PyDict_Copy(plan.blank.get())));
        stack_.push_back({&plan, structure, dict.get(), 0, nullptr, 0, 0});
        return dict;
    }

    reference value(const member_plan& of, const void* structure, uint32_t index) {
        const field& member = *of.member;
        const void* where = value_at(member, structure, index);
        if (member.secret && secrets_.type == nullptr) return reference(shared(secrets_.hidden));
        if (member.value == value_kind::record) {
            if (where == nullptr) return reference(shared(Py_None));
            return of.record->is_uuid ? uuid_of(where) : open(*of.record, where);
        }
        PyObject* const secret = member.secret ? secrets_.type : nullptr;
        switch (member.value) {
            case value_kind::integer:
                return reference(or_throw(PyLong_FromLongLong(json::number_at(where, member.integer))));
            case value_kind::text:
            case value_kind::stored_text:
                return text_of(text_in(where), secret);
            case value_kind::octets:
                if (where == nullptr) return as_secret(hex_of(nullptr, 0), secret);
                return as_secret(hex_of(place<const void*>(where, 0), octets_length(member, structure)), secret);
            case value_kind::fixed_octets:
                return as_secret(hex_of(where, member.size), secret);
            case value_kind::version:
            case value_kind::record:
                break;
        }
        return reference(shared(Py_None));
    }

    // Opening a record moves the stack: `top` is not used behind it.
    void add_member(frame& top) {
        const member_plan& of = top.plan->members[top.next++];
        PyObject* const dict = top.dict;
        if (!json::is_sequence_of(*of.member)) {
            const reference made = value(of, top.structure, 0);
            return or_throw(PyDict_SetItem(dict, of.key.get(), made.get()));
        }
        const uint32_t count = used_places(*of.member, top.structure);
        const reference list(or_throw(PyList_New(static_cast<Py_ssize_t>(count))));
        or_throw(PyDict_SetItem(dict, of.key.get(), list.get()));
        if (count == 0) return;
        top.list = list.get();
        top.element = 0;
        top.count = count;
    }

    void add_element(frame& top) {
        const member_plan& of = top.plan->members[top.next - 1];
        PyObject* const list = top.list;
        const uint32_t at = top.element++;
        if (top.element == top.count) top.list = nullptr;
        PyList_SET_ITEM(list, static_cast<Py_ssize_t>(at), value(of, top.structure, at).release());
    }

    const secret_texts& secrets_;
    std::vector<frame> stack_;
};

}  // namespace

reference to_python(const record_plan& plan, const void* structure, const secret_texts& secrets) {
    return maker(secrets).make(plan, structure);
}

}  // namespace zr::python
