#include "from_python.h"

#include <cstring>
#include <string_view>
#include <unordered_set>
#include <utility>

#include "json/base/path.h"
#include "json/base/secrets.h"
#include "json/base/suggest.h"
#include "json/base/text.h"
#include "json/document/place.h"
#include "json/document/scalars.h"
#include "json/document/uuid_text.h"

namespace zr::python {

namespace {

using json::in_quotes;
using json::json_kind;
using json::json_place;
using json::member_filler;
using takes = json_place::takes;

// Says why a value does not fit; the reader adds the path.
struct no_fit {
    std::string message;
    bool is_redacted = false;
};

std::string type_words(PyObject* value) {
    if (value == Py_None) return "None";
    if (PyBool_Check(value)) return value == Py_True ? "True" : "False";
    if (PyUnicode_Check(value)) return "a string";
    if (PyLong_Check(value)) return "a number";
    if (PyDict_Check(value)) return "a dict";
    if (PyList_Check(value) || PyTuple_Check(value)) return "a list";
    return "a value of the type " + in_quotes(Py_TYPE(value)->tp_name);
}

[[noreturn]] void refuse(std::string_view found, const json_place& at) {
    std::string message = "found ";
    message.append(found).append(", expected ").append(json::describe(at));
    throw no_fit{std::move(message)};
}

// The text of a str as UTF-8; false for one that has none, because it holds half of a character.
bool read_utf8(PyObject* text, std::string_view& octets) {
    Py_ssize_t size = 0;
    const char* data = PyUnicode_AsUTF8AndSize(text, &size);
    if (data == nullptr) {
        const bool no_memory = PyErr_ExceptionMatches(PyExc_MemoryError) != 0;
        PyErr_Clear();
        if (no_memory) throw std::bad_alloc();
        return false;
    }
    octets = {data, static_cast<size_t>(size)};
    return true;
}

std::string hex_of(PyObject* bytes) {
    const auto* data = reinterpret_cast<const unsigned char*>(PyBytes_AS_STRING(bytes));
    const auto size = static_cast<size_t>(PyBytes_GET_SIZE(bytes));
    std::string digits(size * 2, 0);
    for (size_t i = 0; i < size; ++i) {
        digits[i * 2] = "0123456789abcdef"[data[i] >> 4];
        digits[i * 2 + 1] = "0123456789abcdef"[data[i] & 15];
    }
    return digits;
}

class reader {
public:
    explicit reader(size_t& work) : work_(work) { stack_.reserve(8); }

    void read(const record_plan& plan, PyObject* value, void* structure) {
        const json_place at = json::place_of_record(*plan.type);
        if (at.what == takes::uuid) return read_uuid(value, at, [&] { return structure; });
        if (!PyDict_Check(value)) refuse(type_words(value), at);
        open(plan, value, structure);
        while (!stack_.empty()) {
            frame& top = stack_.back();
            if (top.list != nullptr)
                read_element(top);
            else if (!read_member(top))
                close();
        }
    }

    // Of the value that is being read.
    std::string path() const {
        json::path_builder path;
        for (const frame& open : stack_) {
            if (open.current == nullptr) continue;
            path.member(open.current->member->name);
            if (open.list != nullptr) path.element(static_cast<uint64_t>(open.element));
        }
        return path.text();
    }

private:
    // A dict that is open, and the member of it that is being read.
    struct frame {
        const record_plan* plan;
        void* structure;
        PyObject* dict;
        Py_ssize_t at;  // of PyDict_Next
        const member_plan* current;
        member_filler filler;  // of the member, when it is a list
        PyObject* list;        // its value, or null
        Py_ssize_t element;    // of the list: the one that is being read
        bool in_element;       // a dict in the list is open
    };

    // Only a record that contains itself can hold a dict that does.
    void open(const record_plan& plan, PyObject* dict, void* structure) {
        if (plan.type->contains_itself() && !open_.insert(dict).second)
            throw no_fit{"found a dict that contains itself, expected an end"};
        stack_.push_back({&plan, structure, dict, 0, nullptr, {}, nullptr, 0, false});
    }
    void close() {
        if (stack_.back().plan->type->contains_itself()) open_.erase(stack_.back().dict);
        stack_.pop_back();
    }

    // False behind the last one.
    bool read_member(frame& top) {
        PyObject *key, *value;
        const size_t expected =
            top.current == nullptr ? 0 : static_cast<size_t>(top.current - top.plan->members.data()) + 1;
        if (PyDict_Next(top.dict, &top.at, &key, &value) == 0) return false;
        top.current = nullptr;  // the path is the dict's
        const member_plan* found = PyUnicode_Check(key) ? top.plan->find(key, expected) : nullptr;
        if (found == nullptr) refuse_key(*top.plan->type, key);
        top.current = found;
        const json_place at = json::place_of_member(*found->member);
        if (at.what != takes::array) {
            member_filler filler(*found->member, top.structure);
            read_value(*found, value, at, filler);
            return true;
        }
        if (!PyList_Check(value) && !PyTuple_Check(value)) refuse(type_words(value), at);
        top.filler = member_filler(*found->member, top.structure);
        top.list = value;
        top.element = 0;
        top.in_element = false;
        return true;
    }

    void read_element(frame& top) {
        if (std::exchange(top.in_element, false)) ++top.element;
        const member_plan& of = *top.current;
        for (; top.element < PySequence_Fast_GET_SIZE(top.list); ++top.element) {
            PyObject* const value = PySequence_Fast_GET_ITEM(top.list, top.element);
            const json_place at = json::place_of_element(*of.member, top.filler.count());
            if (at.what == takes::nothing) refuse("one element more", at);
            if (at.what == takes::object && value != Py_None) {
                top.in_element = true;
                return read_value(of, value, at, top.filler);  // the stack has moved
            }
            read_value(of, value, at, top.filler);
        }
        top.list = nullptr;
    }

    void read_value(const member_plan& of, PyObject* value, const json_place& at, member_filler& to) {
        if (value == Py_None && at.or_null) return to.add_nothing();
        switch (at.what) {
            case takes::scalar:
                return read_scalar(*of.member, value, at, to);
            case takes::uuid:
                return read_uuid(value, at, [&] { return to.add_record(); });
            case takes::object:
                if (!PyDict_Check(value)) refuse(type_words(value), at);
                return open(*of.record, value, to.add_record());
            case takes::array:
            case takes::nothing:
                break;
        }
        refuse(type_words(value), at);
    }

    template <class Add>
    void read_uuid(PyObject* value, const json_place& at, Add&& add) {
        std::string_view text;
        uuid_t id{};
        if (!PyUnicode_Check(value)) refuse(type_words(value), at);
        if (!read_utf8(value, text)) refuse("half of a character", at);
        if (!json::parse_uuid(text, id)) refuse(in_quotes(text), at);
        std::memcpy(add(), &id, sizeof(id));
    }

    // Numbers, texts and octets become what JSON would have of them: the rules of both are the same ones.
    void read_scalar(const field& member, PyObject* value, const json_place& at, member_filler& to) {
        if (PyBool_Check(value)) refuse(member.secret ? "something else" : type_words(value), at);
        if (PyLong_Check(value)) return read_number(value, at, to);
        if (PyFloat_Check(value) && !member.secret) {
            char* const digits = PyOS_double_to_string(PyFloat_AS_DOUBLE(value), 'r', 0, Py_DTSF_ADD_DOT_0, nullptr);
            const std::string text = digits != nullptr ? digits : "";
            PyMem_Free(digits);
            refuse(text, at);
        }
        if (PyUnicode_Check(value)) {
            std::string_view text;
            if (!read_utf8(value, text)) refuse("half of a character", at);
            return take({json_kind::string, 0, text}, to, false);
        }
        if (PyBytes_Check(value)) return take({json_kind::string, 0, hex_of(value)}, to, json::has_hex_form(member));
        if (PyDict_Check(value) && json::has_hex_form(member)) return read_hex_form(value, at, to);
        refuse(member.secret ? "something else" : type_words(value), at);
    }

    void read_number(PyObject* value, const json_place& at, member_filler& to) {
        int beyond = 0;
        const long long number = PyLong_AsLongLongAndOverflow(value, &beyond);
        if (beyond != 0 && !to.member().secret) refuse("a number of more than 64 bits, which is out of range", at);
        take({json_kind::number, 0, std::to_string(number)}, to, false);
    }

    // {"hex": "..."}.
    void read_hex_form(PyObject* dict, const json_place& at, member_filler& to) {
        PyObject *key, *value;
        Py_ssize_t next = 0;
        std::string_view name, digits;
        const bool is_one = PyDict_Size(dict) == 1 && PyDict_Next(dict, &next, &key, &value) != 0 &&
                            PyUnicode_Check(key) && read_utf8(key, name) && name == "hex" && PyUnicode_Check(value) &&
                            read_utf8(value, digits);
        if (!is_one) refuse("a dict", at);
        take({json_kind::string, 0, digits}, to, true);
    }

    void take(const json::json_event& event, member_filler& to, bool as_hex) {
        work_ += event.text.size();
        const bool redacted = to.member().secret && !as_hex && event.text == json::not_shown;
        std::string message;
        const bool taken = as_hex ? json::read_hex_form(event, to, message) : json::read_scalar(event, to, message);
        if (!taken) throw no_fit{std::move(message), redacted};
    }

    [[noreturn]] static void refuse_key(const record_type& type, PyObject* key) {
        std::string_view name;
        if (!PyUnicode_Check(key) || !read_utf8(key, name))
            throw no_fit{"found a key that is no text, expected the name of a member of " + std::string(type.name)};
        std::vector<std::string_view> names;
        for (const field& field : type) {
            if (field.count_name != nullptr && name == field.count_name)
                throw no_fit{"found a key " + in_quotes(name) + ", expected none: it follows from \"" + field.name +
                             "\""};
            if (has_member(field.value)) names.push_back(field.name);
        }
        throw no_fit{"found a key " + in_quotes(name) + ", expected one of " + type.name +
                     json::suggestion(name, names)};
    }

    size_t& work_;
    std::vector<frame> stack_;
    std::unordered_set<PyObject*> open_;  // dicts of records that contain themselves
};

}  // namespace

bool from_python(const record_plan& plan, PyObject* value, void* structure, value_error& error, size_t& work) {
    work = 0;
    reader reading(work);
    try {
        reading.read(plan, value, structure);
        return true;
    } catch (no_fit& found) {
        error = {reading.path(), std::move(found.message), found.is_redacted};
        return false;
    }
}

}  // namespace zr::python
