// Python.h, and a reference to an object that is given back by itself.
#pragma once

#define PY_SSIZE_T_CLEAN
#include <Python.h>

#include <utility>

namespace zr::python {

// reference owns one count of an object, or nothing. Moves, does not copy.
class reference {
public:
    reference() = default;
    explicit reference(PyObject* owned) : object_(owned) {}
    reference(reference&& other) noexcept : object_(other.release()) {}
    reference& operator=(reference&& other) noexcept {
        std::swap(object_, other.object_);
        return *this;
    }
    reference(const reference&) = delete;
    reference& operator=(const reference&) = delete;
    ~reference() { Py_XDECREF(object_); }

    PyObject* get() const { return object_; }
    PyObject* release() { return std::exchange(object_, nullptr); }
    explicit operator bool() const { return object_ != nullptr; }

private:
    PyObject* object_ = nullptr;
};

// A count more of an object.
inline PyObject* shared(PyObject* object) {
    Py_INCREF(object);
    return object;
}

// python_error is thrown where Python has an exception set: whoever catches it returns null to the interpreter.
struct python_error {};

inline PyObject* or_throw(PyObject* made) {
    if (made == nullptr) throw python_error();
    return made;
}
inline void or_throw(int failed) {
    if (failed != 0) throw python_error();
}

// without_lock lets other threads of Python run while it lives, if there is work enough for them to gain by it. Nothing
// of Python may be touched meanwhile.
class without_lock {
public:
    static constexpr size_t worth_it = 2048;  // octets of work, as with Python's own hashlib

    explicit without_lock(size_t octets) : state_(octets >= worth_it ? PyEval_SaveThread() : nullptr) {}
    ~without_lock() {
        if (state_ != nullptr) PyEval_RestoreThread(state_);
    }
    without_lock(const without_lock&) = delete;
    without_lock& operator=(const without_lock&) = delete;

private:
    PyThreadState* state_;
};

}  // namespace zr::python
