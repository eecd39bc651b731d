#include "plans.h"

#include <string>

#include "json/document/uuid_text.h"

namespace zr::python {

namespace {

bool is_same_text(PyObject* left, PyObject* right) {
    return PyUnicode_GET_LENGTH(left) == PyUnicode_GET_LENGTH(right) && PyUnicode_Compare(left, right) == 0;
}

std::unique_ptr<record_plan> make_plan(const record_type& type,
                                       const std::vector<std::unique_ptr<record_plan>>& before) {
    auto plan = std::make_unique<record_plan>();
    plan->type = &type;
    plan->is_uuid = json::is_uuid(type);
    plan->blank = reference(or_throw(PyDict_New()));
    for (const field& member : type) {
        if (!has_member(member.value)) continue;
        const record_plan* record = member.record == &type ? plan.get() : nullptr;
        for (const auto& other : before)
            if (other->type == member.record) record = other.get();
        reference key(or_throw(PyUnicode_InternFromString(member.name)));
        or_throw(PyDict_SetItem(plan->blank.get(), key.get(), Py_None));
        plan->members.push_back({&member, std::move(key), record});
    }
    return plan;
}

std::string_view without(std::string_view name, std::string_view ending) {
    const size_t front = name.size() - ending.size();
    return name.size() > ending.size() && name.substr(front) == ending ? name.substr(0, front) : "";
}

}  // namespace

const member_plan* record_plan::find(PyObject* key, size_t expected) const {
    const size_t count = members.size();
    for (size_t i = 0, at = expected; i < count; ++i, ++at) {
        if (at >= count) at = 0;
        if (members[at].key.get() == key) return &members[at];
    }
    for (const member_plan& member : members)
        if (is_same_text(member.key.get(), key)) return &member;
    return nullptr;
}

// The short forms come last: a whole name goes first, and of two records with one short form the first.
plans::plans() : by_name_(or_throw(PyDict_New())) {
    for (const record_module* module : modules())
        for (const record_type* type : *module)
            all_.push_back(make_plan(*type, all_));
    for (size_t i = 0; i < all_.size(); ++i) {
        add_name(all_[i]->type->name, i);
        add_name(all_[i]->type->binding, i);
    }
    for (std::string_view ending : {"_s_t", "_t"})
        for (size_t i = 0; i < all_.size(); ++i) {
            add_name(without(all_[i]->type->name, ending), i);
            add_name(without(all_[i]->type->binding, ending), i);
        }
}

void plans::add_name(std::string_view name, size_t index) {
    if (name.empty()) return;
    const reference key(or_throw(PyUnicode_FromStringAndSize(name.data(), static_cast<Py_ssize_t>(name.size()))));
    const reference value(or_throw(PyLong_FromSize_t(index)));
    PyDict_SetDefault(by_name_.get(), key.get(), value.get());
    if (PyErr_Occurred() != nullptr) throw python_error();
}

const record_plan* plans::find(PyObject* name) const {
    if (!PyUnicode_CheckExact(name)) return nullptr;  // another type may have a hash of its own
    PyObject* const found = PyDict_GetItem(by_name_.get(), name);
    return found != nullptr ? all_[PyLong_AsSize_t(found)].get() : nullptr;
}

int plans::visit_objects(visitproc visit, void* arg) const {
    Py_VISIT(by_name_.get());
    for (const auto& plan : all_)
        Py_VISIT(plan->blank.get());
    return 0;
}

}  // namespace zr::python
