// Any octets, and any text, for the functions of zrasn/c.h: what they make is JSON that ends where they say, what is
// refused has a reason and leaves nothing, limits hold, and what goes out comes back.
//
// The first two octets pick the record, the third what is asked for; the others are what is read.
#include <cstring>
#include <string>
#include <string_view>

#include "json/document/events.h"
#include "pick_record.h"
#include "require.h"
#include "zrasn/json.h"

namespace {

using namespace zr_test;

// Takes all JSON.
struct any_json final : zr::json::json_events {
    bool on(const zr::json::json_event&) override { return true; }
};

struct asked {
    zr::json_options options;
    zr::json_report report;
    const zr::record_type& type;
    const void* octets;
    size_t size;
};

// A function's text, or nothing where it refuses.
template <class Function>
std::string text_of(Function&& function, asked& to) {
    zr::json_text text;
    std::memset(to.report.path, 'x', sizeof to.report.path);
    const int status = text.fill(function);
    require(status == to.report.status, "the report has another status");
    require(to.report.name != nullptr && *to.report.reason != 0, "no reason");
    require(std::memchr(to.report.path, 0, sizeof to.report.path) != nullptr, "a path without an end");
    require((status == 0) == (*to.report.message == 0), "a refusal has a message, and nothing else");
    require(status == 0 || text.view().empty(), "a refusal has made something");
    if (status != 0) return {};
    any_json all;
    zr::json::json_fault fault;
    require(zr::json::parse_json(text.view(), all, fault), "what is made is no JSON");
    return std::string(text.view());
}

void look(asked& to) {
    const zrasn_record* const record = zr::as_c(to.type);
    const auto with = [&](auto* function) {
        return text_of(
            [&](char** text, size_t* length) {
                return function(record, to.octets, to.size, &to.options, text, length, &to.report);
            },
            to);
    };
    const std::string tree = with(zrasn_walk);
    require(!tree.empty(), "a walk is refused");
    const size_t most = to.options.most_text != 0 ? to.options.most_text : SIZE_MAX;
    require(tree.size() / 64 < most + 100 * 64, "a walk passes its limit");
    with(zrasn_check);
    text_of(
        [&](char** text, size_t* length) {
            return zrasn_identify(to.octets, to.size, &record, 1, &to.options, text, length, &to.report);
        },
        to);
    to.options.show_secrets = 1;
    const std::string json = with(zrasn_to_json);
    if (json.empty()) return;
    require(json.size() <= most, "a text passes its limit");
    zr::encoding octets, again;
    require(zr::from_json(to.type, json, octets, zr::json_options(), to.report) == 0, "what was made is refused");
    zr::json_text back;
    zr::json_options shown;
    shown.show_secrets = 1;
    shown.indent = to.options.indent;
    require(zr::to_json(to.type, octets.data(), octets.size(), back, shown, to.report) == 0,
            "what is written is refused");
    require(back.view() == json, "it comes back as something else");
    if (to.options.strict == 0 || to.options.bare != 0) return;
    require(octets.size() == to.report.consumed && std::memcmp(octets.data(), to.octets, octets.size()) == 0,
            "strict octets are written otherwise");
}

void read(asked& to) {
    const std::string_view text(static_cast<const char*>(to.octets), to.size);
    zr::encoding octets;
    const int status = zr::from_json(to.type, text, octets, to.options, to.report);
    require((status == 0) == (octets.size() != 0), "octets of what was refused, or none");
    if (status != 0) {
        require(to.report.offset <= to.size && (status != ZRASN_BAD_JSON || to.report.line != 0), "no place");
        return;
    }
    to.octets = octets.data();
    to.size = octets.size();
    to.options = zr::json_options();
    look(to);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 3) return 0;
    asked to{{}, {}, pick_record(data), data + 3, size - 3};
    const unsigned ask = data[2];
    to.options.strict = ask & 1;
    to.options.bare = ask >> 1 & 1;
    to.options.indent = ask >> 2 & 1;
    if ((ask & 8) != 0) to.options.most_text = 200;
    if ((ask & 16) != 0) to.options.most_elements = to.options.most_depth = 3;
    if ((ask & 32) != 0) to.options.most_heap = 100;
    const silence kept;
    (ask & 64) != 0 ? read(to) : look(to);
    return 0;
}
