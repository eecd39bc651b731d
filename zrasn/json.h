// Records as JSON in C++: what zrasn/c.h does, for structures and for records of a program's own. Needs libzrasn_json.
//
//     zr::json_text text;
//     zr::json_report report;
//     if (zr::to_json(note, text) != 0) return;
//     if (zr::from_json(text.view(), copy.out(), {}, report) != 0)
//         complain(report.line, report.column, report.path, report.message);
//
// The functions return 0 or a status, as those of zrasn/c.h do, and throw nothing. What they fill is empty after a
// refusal.
#pragma once

#include <string_view>
#include <vector>

#include "asn1/record/record.h"
#include "asn1/record/registry.h"
#include "zrasn/c.h"
#include "zrasn/guard.h"

namespace zr {

// A record as zrasn/c.h takes it: also one that the library does not know.
inline const zrasn_record* as_c(const record_type& type) { return reinterpret_cast<const zrasn_record*>(&type); }

// What is asked for, and what was found: all as at the start.
struct json_options : zrasn_options {
    json_options() : zrasn_options ZRASN_OPTIONS_INIT {}
};
struct json_report : zrasn_report {
    json_report() : zrasn_report ZRASN_REPORT_INIT {}
};

// json_text owns a text that the library has made. Moves, does not copy; one that was moved from is empty.
class json_text {
public:
    json_text() = default;
    json_text(json_text&& other) noexcept { swap(other); }
    json_text& operator=(json_text&& other) noexcept {
        swap(other);
        return *this;
    }
    json_text(const json_text&) = delete;
    json_text& operator=(const json_text&) = delete;
    ~json_text() { zrasn_free(text_); }

    // Both: the text, empty when there is none.
    std::string_view view() const { return {text_ != nullptr ? text_ : "", length_}; }
    const char* c_str() const { return text_ != nullptr ? text_ : ""; }

    // Runs a function of zrasn/c.h on the place of a text and of its length; what was held is released first.
    template <class Function>
    int fill(Function&& function) {
        zrasn_free(text_);
        return function(&text_, &length_);
    }

private:
    void swap(json_text& other) noexcept {
        char* const text = text_;
        const size_t length = length_;
        text_ = other.text_;
        length_ = other.length_;
        other.text_ = text;
        other.length_ = length;
    }

    char* text_ = nullptr;
    size_t length_ = 0;
};

// A structure to JSON.
template <class S>
[[nodiscard]] status_of<S> to_json(const S& structure, json_text& json, const json_options& options = {}) {
    return json.fill([&](char** text, size_t* length) {
        return zrasn_structure_to_json(as_c(record<S>::type), &structure, &options, text, length, nullptr);
    });
}
// JSON to a structure, which gets what zrAsnFreeObj releases; what it held before is not released.
template <class S>
[[nodiscard]] status_of<S> from_json(std::string_view json, S& structure, const json_options& options,
                                     json_report& report) {
    void* made = nullptr;
    const int status =
        zrasn_json_to_structure(as_c(record<S>::type), json.data(), json.size(), &options, &made, &report);
    structure = status == 0 ? *static_cast<const S*>(made) : S{};
    zrasn_free(made);
    return status;
}

// Octets to JSON, of a record by its type.
[[nodiscard]] inline int to_json(const record_type& type, const void* octets, size_t size, json_text& json,
                                 const json_options& options, json_report& report) {
    return json.fill([&](char** text, size_t* length) {
        return zrasn_to_json(as_c(type), octets, size, &options, text, length, &report);
    });
}
// JSON to octets, of a record by its type.
[[nodiscard]] inline int from_json(const record_type& type, std::string_view json, encoding& octets,
                                   const json_options& options, json_report& report) {
    unsigned char* made = nullptr;
    size_t size = 0;
    const int status = zrasn_from_json(as_c(type), json.data(), json.size(), &options, &made, &size, &report);
    octets = encoding({static_cast<unsigned>(size), made});
    return status;
}

// Which records of these modules octets may be (zrasn_identify).
[[nodiscard]] inline int identify(module_list among, const void* octets, size_t size, json_text& json,
                                  const json_options& options, json_report& report) {
    std::vector<const zrasn_record*> records;
    for (const record_module* module : among)
        for (const record_type* type : *module)
            records.push_back(as_c(*type));
    return json.fill([&](char** text, size_t* length) {
        return zrasn_identify(octets, size, records.data(), records.size(), &options, text, length, &report);
    });
}

// Where an encoding is not the one that the library writes (zrasn_check).
[[nodiscard]] inline int check(const record_type& type, const void* octets, size_t size, json_text& json,
                               const json_options& options, json_report& report) {
    return json.fill([&](char** text, size_t* length) {
        return zrasn_check(as_c(type), octets, size, &options, text, length, &report);
    });
}

}  // namespace zr
