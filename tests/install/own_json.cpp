// Records that the library does not know as JSON: there and back, what octets are, checks, a secret that stays one.
#include <cstdio>
#include <cstring>

#include "own_record.h"
#include "zrasn/json.h"

static int failed(const char* what, const zr::json_report& report) {
    std::fprintf(stderr, "own JSON: %s: %s: %s\n", what, report.path, report.message);
    return 1;
}

int main() {
    zr::json_options options;
    zr::json_report report;
    zr::json_text text;
    const zr::record_type& shelf = zr::record<shelf_t>::type;
    for (uint64_t seed = 0; seed != 20; ++seed) {
        zr::json_text sample;
        if (sample.fill([&](char** made, size_t* length) {
                return zrasn_sample(zr::as_c(shelf), seed / 2, seed % 2, made, length);
            }) != 0)
            return failed("no sample", report);
        zr::encoding octets, again;
        zr::decoded<shelf_t> structure;
        options.show_secrets = 1;
        if (zr::from_json(shelf, sample.view(), octets, options, report) != 0) return failed("no octets", report);
        if (zr::from_json(sample.view(), structure.out(), options, report) != 0) return failed("no structure", report);
        if (zrAsnEncodeObj(again.out(), *structure) != 0 || again.size() != octets.size() ||
            std::memcmp(again.data(), octets.data(), again.size()) != 0)
            return failed("other octets", report);
        if (zr::to_json(*structure, text, options) != 0) return failed("no JSON", report);
        zr::json_text other;
        if (zr::to_json(shelf, octets.data(), octets.size(), other, options, report) != 0 ||
            other.view() != text.view())
            return failed("other JSON", report);
        options.show_secrets = 0;
        if (zr::to_json(shelf, octets.data(), octets.size(), text, options, report) != 0 ||
            text.view().find("\"key\":\"***\"") == text.view().npos)
            return failed("a secret is shown", report);
        if (zr::check(shelf, octets.data(), octets.size(), text, options, report) != 0 ||
            text.view() != "{\"deviations\":[],\"count\":0}")
            return failed("deviations", report);
        if (zr::identify(own_modules(), octets.data(), octets.size(), text, options, report) != 0 ||
            text.view().find("shelf_t") == text.view().npos)
            return failed("not found", report);
    }
    zr::decoded<corner_t> corner;
    if (zr::from_json("{\"row\": 1, \"mark\": \"0\"}", corner.out(), options, report) != ZRASN_BAD_JSON ||
        std::strcmp(report.path, "mark") != 0 || report.column != 20)
        return failed("not refused", report);
    std::puts("own JSON");
    return 0;
}
