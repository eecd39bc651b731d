// zrasn/c.h: the library, its statuses and its records.
#include <cstdlib>
#include <string>

#include "asn1/status_text.h"
#include "json/c/call.h"

using namespace zr;

const char* zrasn_version(void) { return ZRASN_VERSION; }

const char* zrasn_status_name(int status) { return status == ZRASN_BAD_JSON ? "zrasn_bad_json" : status_name(status); }
const char* zrasn_status_text(int status) {
    return status == ZRASN_BAD_JSON ? "the text is no JSON of the record" : status_text(status);
}

void zrasn_free(void* block) { std::free(block); }

size_t zrasn_record_count(void) {
    size_t count = 0;
    for (const record_module* module : modules())
        count += module->record_count;
    return count;
}

const zrasn_record* zrasn_record_at(size_t index) {
    for (const record_module* module : modules()) {
        if (index < module->record_count) return json::as_c(module->records[index]);
        index -= module->record_count;
    }
    return nullptr;
}

const zrasn_record* zrasn_record_find(const char* name) {
    if (name == nullptr) return nullptr;
    const std::string_view wanted = name;
    const record_type* found = find_record(wanted);
    constexpr size_t longest = 256;  // no record's name has as many characters
    if (found != nullptr || wanted.size() > longest) return json::as_c(found);
    for (const std::string_view ending : {"_s_t", "_t"}) {
        char whole[longest + 4];
        wanted.copy(whole, longest);
        ending.copy(whole + wanted.size(), 4);
        found = find_record({whole, wanted.size() + ending.size()});
        if (found != nullptr) break;
    }
    return json::as_c(found);
}

const char* zrasn_record_name(const zrasn_record* record) { return json::type_of(record).name; }
const char* zrasn_record_binding(const zrasn_record* record) { return json::type_of(record).binding; }
const char* zrasn_record_module(const zrasn_record* record) { return json::type_of(record).module; }
size_t zrasn_record_size(const zrasn_record* record) { return json::type_of(record).size; }
int zrasn_record_has_secrets(const zrasn_record* record) { return json::has_secrets(json::type_of(record)) ? 1 : 0; }
