// zrasn/c.h: what records are.
#include <vector>

#include "json/c/call.h"
#include "json/describe/asn1_module.h"
#include "json/describe/fields.h"
#include "json/describe/json_schema.h"
#include "json/describe/sample.h"

namespace zr::json {
namespace {

// Hands over the text that `write` writes.
template <class Write>
int describe(bool complete, char** text, size_t* length, Write&& write) {
    call call(nullptr, nullptr);
    return call.run(clear_text(text, length) && complete, [&] {
        text_output out;
        write(out);
        return give(call, out, text, length);
    });
}

std::vector<const record_type*> records_of(const zrasn_record* record) {
    if (record == nullptr) return {};
    return {&type_of(record)};
}

}  // namespace
}  // namespace zr::json

using namespace zr::json;

int zrasn_describe(const zrasn_record* record, char** json, size_t* length) {
    return describe(true, json, length, [&](text_output& out) {
        if (record != nullptr)
            write_fields(out, type_of(record));
        else
            write_all_fields(out);
    });
}

int zrasn_schema(const zrasn_record* record, char** text, size_t* length) {
    return describe(true, text, length, [&](text_output& out) { write_asn1_module(out, {}, records_of(record)); });
}

int zrasn_json_schema(const zrasn_record* record, char** json, size_t* length) {
    return describe(true, json, length, [&](text_output& out) { write_json_schema(out, records_of(record)); });
}

int zrasn_sample(const zrasn_record* record, uint64_t seed, int filled, char** json, size_t* length) {
    return describe(record != nullptr, json, length,
                    [&](text_output& out) { out.write(sample_json(type_of(record), seed, filled != 0)); });
}
