// What a function of the module is called with.
#pragma once

#include <cstdint>

#include "reference.h"
#include "zrasn/c.h"

namespace zr::python {

// octets_argument reads any object that has octets. Those of an object that may change are copied when there is enough
// work to let other threads run, unless the caller keeps the lock.
enum class lock { let_go, kept };
class octets_argument {
public:
    // Throws python_error.
    explicit octets_argument(PyObject* object, lock lock = lock::let_go) {
        or_throw(PyObject_GetBuffer(object, &view_, PyBUF_SIMPLE));
        if (lock == lock::kept || PyBytes_CheckExact(object) || static_cast<size_t>(view_.len) < without_lock::worth_it)
            return;
        copy_ = reference(PyBytes_FromStringAndSize(static_cast<const char*>(view_.buf), view_.len));
        if (!copy_) fail();
    }
    ~octets_argument() { PyBuffer_Release(&view_); }
    octets_argument(const octets_argument&) = delete;
    octets_argument& operator=(const octets_argument&) = delete;

    const unsigned char* data() const {
        const void* at = copy_ ? PyBytes_AS_STRING(copy_.get()) : view_.buf;
        return static_cast<const unsigned char*>(at);
    }
    size_t size() const { return static_cast<size_t>(view_.len); }

private:
    [[noreturn]] void fail() {
        PyBuffer_Release(&view_);
        throw python_error();
    }

    Py_buffer view_{};
    reference copy_;
};

// arguments takes a call of the kind METH_FASTCALL | METH_KEYWORDS apart: first those by position, of which some may be
// missing, then the options by name. All throw python_error.
class arguments {
public:
    arguments(const char* function, PyObject* const* values, Py_ssize_t count, PyObject* names)
        : function_(function), values_(values), count_(count), names_(names) {}

    // Refuses fewer than `least` or more than `most` by position.
    void expect(Py_ssize_t least, Py_ssize_t most) const {
        if (count_ >= least && count_ <= most) return;
        PyErr_Format(PyExc_TypeError, "%s() takes %zd to %zd arguments by position, %zd were given", function_, least,
                     most, count_);
        throw python_error();
    }
    // By position; null where there is none.
    PyObject* at(Py_ssize_t index) const { return index < count_ ? values_[index] : nullptr; }

    // Calls take(name, value) for each argument by name; false of it refuses the name.
    template <class Take>
    void by_name(Take&& take) const {
        const Py_ssize_t named = names_ != nullptr ? PyTuple_GET_SIZE(names_) : 0;
        for (Py_ssize_t i = 0; i < named; ++i) {
            PyObject* const name = PyTuple_GET_ITEM(names_, i);
            if (take(name, values_[count_ + i])) continue;
            PyErr_Format(PyExc_TypeError, "%s() has no argument %R", function_, name);
            throw python_error();
        }
    }

private:
    const char* function_;
    PyObject* const* values_;
    Py_ssize_t count_;
    PyObject* names_;
};

inline bool is_name(PyObject* name, const char* text) { return PyUnicode_CompareWithASCIIString(name, text) == 0; }
inline int truth(PyObject* value) {
    const int found = PyObject_IsTrue(value);
    if (found < 0) throw python_error();
    return found;
}
inline uint64_t number(PyObject* value) {
    const unsigned long long found = PyLong_AsUnsignedLongLong(value);
    if (PyErr_Occurred() != nullptr) throw python_error();
    return found;
}

// Takes over one of the options that decode and its like have; false where it is none.
inline bool take_option(PyObject* name, PyObject* value, zrasn_options& options) {
    if (is_name(name, "strict")) return options.strict = truth(value), true;
    if (is_name(name, "bare")) return options.bare = truth(value), true;
    if (is_name(name, "show_secrets")) return options.show_secrets = truth(value), true;
    if (is_name(name, "version")) {
        const uint64_t version = number(value) & 0xFF;
        return options.version = version != 0 ? static_cast<int>(version) : 256, true;
    }
    if (is_name(name, "most_octets")) return options.most_octets = number(value), true;
    if (is_name(name, "most_heap")) return options.most_heap = number(value), true;
    if (is_name(name, "most_elements")) return options.most_elements = number(value), true;
    if (is_name(name, "most_depth")) return options.most_depth = number(value), true;
    return false;
}

}  // namespace zr::python
