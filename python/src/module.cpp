// The module zrasn._zrasn: what the package zrasn does in C++. Its state is made when it is imported and does not
// change while it lives, so that any number of threads may call it.
#include <cstdlib>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>

#include "arguments.h"
#include "asn1/record/decoding.h"
#include "asn1/record/packed_blocks.h"
#include "framing.h"
#include "from_python.h"
#include "json/base/record_holder.h"
#include "json/base/suggest.h"
#include "json/c/call.h"
#include "plans.h"
#include "to_python.h"
#include "zrasn/guard.h"

namespace zr::python {
namespace {

struct module_state {
    plans records;
    reference error;   // zrasn.Error
    reference secret;  // zrasn.Secret
    reference hidden;  // "***"
    reference loads;   // json.loads
};

// The interpreter keeps the pointer; it is null until the module is ready.
module_state*& state_of(PyObject* module) { return *static_cast<module_state**>(PyModule_GetState(module)); }

// Runs the body of a function; no C++ exception leaves.
template <class Body>
PyObject* guarded(Body&& body) {
    try {
        return body();
    } catch (const python_error&) {
        return nullptr;
    } catch (const std::bad_alloc&) {
        return PyErr_NoMemory();
    } catch (const std::length_error&) {
        return PyErr_NoMemory();
    }
}

// Throws zrasn.Error with what a call found; `has_offset` tells whether octets were read.
[[noreturn]] void raise(const module_state& state, const zrasn_report& report, bool has_offset) {
    const reference offset(has_offset ? or_throw(PyLong_FromSize_t(report.offset)) : shared(Py_None));
    const reference error(PyObject_CallFunction(state.error.get(), "sissOsn", report.message, report.status,
                                                report.name, report.reason, offset.get(), report.path,
                                                static_cast<Py_ssize_t>(report.missing)));
    if (error) PyErr_SetObject(state.error.get(), error.get());
    throw python_error();
}

const record_plan& plan_of(const module_state& state, PyObject* name) {
    const record_plan* found = state.records.find(name);
    if (found != nullptr) return *found;
    if (!PyUnicode_Check(name)) {
        PyErr_Format(PyExc_TypeError, "the name of a record is a str, not %s", Py_TYPE(name)->tp_name);
        throw python_error();
    }
    const char* text = PyUnicode_AsUTF8(name);
    if (text == nullptr) throw python_error();
    const std::string hint = json::record_suggestion(text);
    PyErr_Format(PyExc_LookupError, "there is no record %R%s", name, hint.c_str());
    throw python_error();
}
const zrasn_record* as_c(const record_plan* plan) {
    return plan != nullptr ? reinterpret_cast<const zrasn_record*>(plan->type) : nullptr;
}

// The options that a call names, of those that decode and its like have.
zrasn_options options_of(const arguments& given) {
    zrasn_options options = ZRASN_OPTIONS_INIT;
    given.by_name([&](PyObject* name, PyObject* value) { return take_option(name, value, options); });
    return options;
}

secret_texts secrets_of(const module_state& state, const zrasn_options& options) {
    return {state.hidden.get(), options.show_secrets != 0 ? state.secret.get() : nullptr};
}

// Decodes by way of the C interface, which reports more and takes longer.
reference decode_reported(const module_state& state, const record_plan& plan, const octets_argument& octets,
                          const zrasn_options& options) {
    zrasn_report report = ZRASN_REPORT_INIT;
    void* structure = nullptr;
    int status = 0;
    {
        const without_lock others(octets.size());
        status = zrasn_decode(as_c(&plan), octets.data(), octets.size(), &options, &structure, &report);
    }
    if (status != 0) raise(state, report, true);
    const auto release = [&](void* held) { zrasn_structure_free(as_c(&plan), held); };
    const std::unique_ptr<void, decltype(release)> held(structure, release);
    return to_python(plan, structure, secrets_of(state, options));
}

reference decode_octets(const module_state& state, const record_plan& plan, const octets_argument& octets,
                        const zrasn_options& options) {
    if (options.bare != 0) return decode_reported(state, plan, octets, options);
    const std::unique_ptr<void, decltype(&std::free)> structure(std::calloc(1, plan.type->size), &std::free);
    if (structure == nullptr) throw std::bad_alloc();
    packed_blocks blocks;
    decode_report report;
    int status = 0;
    {
        const without_lock others(octets.size());
        status = plan.type->decode_packed(octets.data(), octets.size(), structure.get(), blocks,
                                          zr::json::decoding_of(options), report);
    }
    if (status != 0) return decode_reported(state, plan, octets, options);
    return to_python(plan, structure.get(), secrets_of(state, options));
}

PyObject* decode(PyObject* module, PyObject* const* values, Py_ssize_t count, PyObject* names) {
    return guarded([&] {
        const module_state& state = *state_of(module);
        const arguments given("decode", values, count, names);
        given.expect(2, 2);
        const zrasn_options options = options_of(given);
        const record_plan& plan = plan_of(state, given.at(0));
        return decode_octets(state, plan, octets_argument(given.at(1)), options).release();
    });
}

// The options of encode and from_json.
zrasn_options encoding_options(const arguments& given) {
    zrasn_options options = ZRASN_OPTIONS_INIT;
    given.by_name([&](PyObject* name, PyObject* value) {
        return (is_name(name, "bare") || is_name(name, "version")) && take_option(name, value, options);
    });
    return options;
}

// The octets that a function of zrasn/c.h makes.
template <class Make>
PyObject* made_octets(const module_state& state, size_t work, Make&& make) {
    zrasn_report report = ZRASN_REPORT_INIT;
    unsigned char* octets = nullptr;
    size_t size = 0;
    {
        const without_lock others(work);
        make(&octets, &size, &report);
    }
    const std::unique_ptr<unsigned char, decltype(&zrasn_free)> held(octets, &zrasn_free);
    if (report.status != 0) raise(state, report, false);
    return PyBytes_FromStringAndSize(reinterpret_cast<const char*>(octets), static_cast<Py_ssize_t>(size));
}

PyObject* encode(PyObject* module, PyObject* const* values, Py_ssize_t count, PyObject* names) {
    return guarded([&] {
        const module_state& state = *state_of(module);
        const arguments given("encode", values, count, names);
        given.expect(2, 2);
        const zrasn_options options = encoding_options(given);
        const record_plan& plan = plan_of(state, given.at(0));
        json::record_holder structure(*plan.type);
        value_error error;
        size_t work = 0;
        if (!from_python(plan, given.at(1), structure.get(), error, work)) {
            zrasn_report report = ZRASN_REPORT_INIT;
            report.status = ZRASN_BAD_JSON;
            report.name = zrasn_status_name(ZRASN_BAD_JSON);
            report.reason = error.is_redacted ? "hidden_secret" : "bad_json";
            error.path.copy(report.path, sizeof(report.path) - 1);
            error.message.copy(report.message, sizeof(report.message) - 1);
            raise(state, report, false);
        }
        return made_octets(state, work, [&](unsigned char** octets, size_t* size, zrasn_report* report) {
            zrasn_encode(as_c(&plan), structure.get(), &options, octets, size, report);
        });
    });
}

PyObject* from_json(PyObject* module, PyObject* const* values, Py_ssize_t count, PyObject* names) {
    return guarded([&] {
        const module_state& state = *state_of(module);
        const arguments given("from_json", values, count, names);
        given.expect(2, 2);
        const zrasn_options options = encoding_options(given);
        const record_plan& plan = plan_of(state, given.at(0));
        Py_ssize_t length = 0;
        const char* const json = PyUnicode_AsUTF8AndSize(given.at(1), &length);
        if (json == nullptr) throw python_error();
        const auto work = static_cast<size_t>(length);
        return made_octets(state, work, [&](unsigned char** octets, size_t* size, zrasn_report* report) {
            zrasn_from_json(as_c(&plan), json, work, &options, octets, size, report);
        });
    });
}

PyObject* records(PyObject* module, PyObject*) {
    return guarded([&] {
        const auto& all = state_of(module)->records.all();
        reference names(or_throw(PyList_New(static_cast<Py_ssize_t>(all.size()))));
        for (size_t i = 0; i < all.size(); ++i)
            PyList_SET_ITEM(names.get(), static_cast<Py_ssize_t>(i),
                            or_throw(PyUnicode_FromString(all[i]->type->name)));
        return names.release();
    });
}

// A text that a function of zrasn/c.h makes, as a str or as what its JSON says.
enum class answer { text, value };
template <class Make>
PyObject* made_text(const module_state& state, answer form, bool has_offset, size_t work, Make&& make) {
    zrasn_report report = ZRASN_REPORT_INIT;
    char* text = nullptr;
    size_t length = 0;
    int status = 0;
    {
        const without_lock others(work);
        status = make(&text, &length, &report);
    }
    const std::unique_ptr<char, decltype(&zrasn_free)> held(text, &zrasn_free);
    if (status != 0) {
        report.status = status;  // functions without a report have a status alone
        if (report.name == nullptr) report.name = report.reason = zrasn_status_name(status);
        raise(state, report, has_offset);
    }
    reference whole(or_throw(PyUnicode_DecodeUTF8(text, static_cast<Py_ssize_t>(length), nullptr)));
    return form == answer::text ? whole.release() : PyObject_CallOneArg(state.loads.get(), whole.get());
}

// The record by position `index`, or null for all where it is missing or None.
const record_plan* optional_plan(const module_state& state, const arguments& given, Py_ssize_t index) {
    PyObject* const name = given.at(index);
    return name != nullptr && name != Py_None ? &plan_of(state, name) : nullptr;
}

using describer = int(const zrasn_record*, char**, size_t*);
template <describer* function, answer form>
PyObject* described(PyObject* module, PyObject* const* values, Py_ssize_t count) {
    return guarded([&] {
        const module_state& state = *state_of(module);
        const arguments given("a description", values, count, nullptr);
        given.expect(0, 1);
        const record_plan* plan = optional_plan(state, given, 0);
        return made_text(state, form, false, 0, [&](char** text, size_t* length, zrasn_report*) {
            return function(as_c(plan), text, length);
        });
    });
}

PyObject* sample(PyObject* module, PyObject* const* values, Py_ssize_t count, PyObject* names) {
    return guarded([&] {
        const module_state& state = *state_of(module);
        const arguments given("sample", values, count, names);
        given.expect(1, 1);
        uint64_t seed = 0;
        int filled = 0;
        given.by_name([&](PyObject* name, PyObject* value) {
            if (is_name(name, "seed")) return seed = number(value), true;
            if (is_name(name, "filled")) return filled = truth(value), true;
            return false;
        });
        const record_plan& plan = plan_of(state, given.at(0));
        return made_text(state, answer::value, false, 0, [&](char** text, size_t* length, zrasn_report*) {
            return zrasn_sample(as_c(&plan), seed, filled, text, length);
        });
    });
}

PyObject* identify(PyObject* module, PyObject* const* values, Py_ssize_t count, PyObject* names) {
    return guarded([&] {
        const module_state& state = *state_of(module);
        const arguments given("identify", values, count, names);
        given.expect(1, 1);
        const zrasn_options options = options_of(given);
        const octets_argument octets(given.at(0));
        return made_text(
            state, answer::value, true, octets.size(), [&](char** text, size_t* length, zrasn_report* report) {
                return zrasn_identify(octets.data(), octets.size(), nullptr, 0, &options, text, length, report);
            });
    });
}

// check(record, octets), walk(octets, record=None) and to_json(record, octets).
using looker = int(const zrasn_record*, const void*, size_t, const zrasn_options*, char**, size_t*, zrasn_report*);
template <looker* function, Py_ssize_t record_at, Py_ssize_t least, answer form>
PyObject* look(PyObject* module, PyObject* const* values, Py_ssize_t count, PyObject* names) {
    return guarded([&] {
        const module_state& state = *state_of(module);
        const arguments given("a look at octets", values, count, names);
        given.expect(least, 2);
        const zrasn_options options = options_of(given);
        const record_plan* plan = optional_plan(state, given, record_at);
        const octets_argument octets(given.at(1 - record_at));
        return made_text(state, form, true, octets.size(), [&](char** text, size_t* length, zrasn_report* report) {
            return function(as_c(plan), octets.data(), octets.size(), &options, text, length, report);
        });
    });
}

// cut(octets, prefix, little, most): a list of (offset, size) of at most so many envelopes, where the next one would
// begin, and how many octets are missing there at least, 0 where the octets end, -1 where no envelope begins.
PyObject* cut(PyObject*, PyObject* const* values, Py_ssize_t count) {
    return guarded([&] {
        const arguments given("cut", values, count, nullptr);
        given.expect(4, 4);
        const octets_argument octets(given.at(0), lock::kept);
        const piece_form form{static_cast<unsigned>(number(given.at(1))), truth(given.at(2)) != 0};
        const uint64_t most = number(given.at(3));
        reference pieces(or_throw(PyList_New(0)));
        size_t at = 0;
        Py_ssize_t missing = 0;
        for (uint64_t i = 0; i < most && at != octets.size(); ++i) {
            const piece next = next_piece(octets.data() + at, octets.size() - at, form);
            if (next.state != framing::complete) {
                missing = next.state == framing::never ? -1 : static_cast<Py_ssize_t>(next.missing);
                break;
            }
            const reference pair(or_throw(
                Py_BuildValue("nn", static_cast<Py_ssize_t>(at + next.begin), static_cast<Py_ssize_t>(next.size))));
            or_throw(PyList_Append(pieces.get(), pair.get()));
            at += next.begin + next.size;
        }
        return Py_BuildValue("Onn", pieces.get(), static_cast<Py_ssize_t>(at), missing);
    });
}

// The interpreter casts what it has: functions of several shapes stand in one table.
template <class Function>
PyCFunction as_method(Function* function) {
    return reinterpret_cast<PyCFunction>(reinterpret_cast<void (*)()>(function));
}

PyMethodDef methods[] = {
    {"decode", as_method(decode), METH_FASTCALL | METH_KEYWORDS,
     PyDoc_STR("decode(record, octets, *, strict=False, bare=False, version=2, show_secrets=False, most_octets=0,\n"
               "       most_heap=0, most_elements=0, most_depth=0)\n--\n\n"
               "The record that the octets begin with, as json.loads would give its JSON.\n\n"
               "strict refuses all that the library would not write; bare octets have no envelope's header.\n"
               "Secrets are '***', or zrasn.Secret when they are shown. A limit of 0 is none. Raises zrasn.Error.")},
    {"encode", as_method(encode), METH_FASTCALL | METH_KEYWORDS,
     PyDoc_STR("encode(record, value, *, bare=False, version=2)\n--\n\n"
               "The octets of a record, given as decode gives it. Members that are left out are empty or 0. Where the\n"
               "JSON has hexadecimal digits, bytes will do too. Raises zrasn.Error.")},
    {"to_json", as_method(look<zrasn_to_json, 0, 2, answer::text>), METH_FASTCALL | METH_KEYWORDS,
     PyDoc_STR("to_json(record, octets, **options)\n--\n\nThe record as JSON on one line.")},
    {"from_json", as_method(from_json), METH_FASTCALL | METH_KEYWORDS,
     PyDoc_STR(
         "from_json(record, json, *, bare=False, version=2)\n--\n\nThe octets of a record that is given as JSON.")},
    {"identify", as_method(identify), METH_FASTCALL | METH_KEYWORDS,
     PyDoc_STR("identify(octets, **options)\n--\n\n"
               "Which records the octets may be: {'fitting': [names], 'nearest': [where each of them stops to fit]}.")},
    {"check", as_method(look<zrasn_check, 0, 2, answer::value>), METH_FASTCALL | METH_KEYWORDS,
     PyDoc_STR("check(record, octets, **options)\n--\n\n"
               "Where an encoding that is accepted is not the one that the library writes.")},
    {"walk", as_method(look<zrasn_walk, 1, 1, answer::value>), METH_FASTCALL | METH_KEYWORDS,
     PyDoc_STR("walk(octets, record=None, **options)\n--\n\n"
               "The elements of any BER as a tree, with the record's names where there is a record.")},
    {"records", records, METH_NOARGS, PyDoc_STR("records()\n--\n\nThe names of all records.")},
    {"describe", as_method(described<zrasn_describe, answer::value>), METH_FASTCALL,
     PyDoc_STR("describe(record=None, /)\n--\n\nThe fields of a record, or of all.")},
    {"schema", as_method(described<zrasn_schema, answer::text>), METH_FASTCALL,
     PyDoc_STR("schema(record=None, /)\n--\n\nA record, or all, as an ASN.1 module (X.680).")},
    {"json_schema", as_method(described<zrasn_json_schema, answer::value>), METH_FASTCALL,
     PyDoc_STR("json_schema(record=None, /)\n--\n\nThe JSON Schema (2020-12) of what decode gives and encode takes.")},
    {"sample", as_method(sample), METH_FASTCALL | METH_KEYWORDS,
     PyDoc_STR("sample(record, *, seed=0, filled=False)\n--\n\n"
               "A value of the record: with seed 0 the smallest, or filled the one of the pages; others are drawn.")},
    {"cut", as_method(cut), METH_FASTCALL, PyDoc_STR("For zrasn.stream and zrasn.archive.")},
    {nullptr, nullptr, 0, nullptr},
};

reference attribute_of(const char* module, const char* name) {
    const reference imported(or_throw(PyImport_ImportModule(module)));
    return reference(or_throw(PyObject_GetAttrString(imported.get(), name)));
}

int execute(PyObject* module) {
    const reference done(guarded([&] {
        auto state = std::make_unique<module_state>();
        state->error = attribute_of("zrasn.error", "Error");
        state->secret = attribute_of("zrasn.secret", "Secret");
        state->loads = attribute_of("json", "loads");
        state->hidden = reference(or_throw(PyUnicode_InternFromString("***")));
        state_of(module) = state.release();
        return shared(Py_None);
    }));
    return done ? 0 : -1;
}

int traverse(PyObject* module, visitproc visit, void* arg) {
    const module_state* state = state_of(module);
    if (state == nullptr) return 0;
    Py_VISIT(state->error.get());
    Py_VISIT(state->secret.get());
    Py_VISIT(state->loads.get());
    return state->records.visit_objects(visit, arg);
}

void release(void* module) { delete std::exchange(state_of(static_cast<PyObject*>(module)), nullptr); }

PyModuleDef_Slot slots[] = {
    {Py_mod_exec, reinterpret_cast<void*>(execute)},
    {0, nullptr},
};

PyModuleDef definition = {
    PyModuleDef_HEAD_INIT,
    "zrasn._zrasn",
    PyDoc_STR("What the package zrasn does in C++."),
    sizeof(module_state*),
    methods,
    slots,
    traverse,
    nullptr,
    release,
};

}  // namespace
}  // namespace zr::python

PyMODINIT_FUNC PyInit__zrasn() { return PyModuleDef_Init(&zr::python::definition); }
