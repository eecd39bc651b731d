// zrasn/c.h: what octets are.
#include "json/base/envelope.h"
#include "json/base/record_holder.h"
#include "json/c/call.h"
#include "json/describe/findings.h"
#include "json/describe/tree.h"

namespace zr::json {
namespace {

// Decodes octets with a header or without one.
int decode_any(call& call, const record_type& type, const input_octets& octets, void* structure, size_t& consumed) {
    const size_t before = lacks_header(octets.data, octets.size) ? envelope_header_octets : 0;
    const decode_report report = decode_report_of(type, octets.data, octets.size, structure, call.decoding());
    if (report.status != zr_ok) return call.refuse(report, octets, before);
    consumed = report.consumed - before;
    return zr_ok;
}

int identify(call& call, const input_octets& octets, const std::vector<const record_type*>& among, char** json,
             size_t* length) {
    const size_t header = envelope_header_size(octets.data, octets.size);
    const record_match match = match_records(octets.data + header, octets.size - header, among);
    // Where no record matters, any of them tells why.
    record_holder any(*among.front());
    size_t consumed = 0;
    const int status = decode_any(call, *among.front(), octets, any.get(), consumed);
    if (status == zr_err_bad_envelope || match.is_no_sequence) return status;
    text_output out(call.most_text());
    write_match(out, match, octets.data + header, octets.size - header, header);
    return give(call, out, json, length);
}

}  // namespace
}  // namespace zr::json

using namespace zr::json;

int zrasn_identify(const void* octets, size_t size, const zrasn_record* const* among, size_t count,
                   const zrasn_options* options, char** json, size_t* length, zrasn_report* report) {
    call call(options, report);
    const bool complete =
        clear_text(json, length) && (octets != nullptr || size == 0) && (among == nullptr || count != 0);
    return call.run(complete, [&] {
        std::vector<const zr::record_type*> types;
        for (size_t i = 0; among != nullptr && i != count; ++i) {
            if (among[i] == nullptr) return call.refuse(zr_err_bad_argument);
            types.push_back(&type_of(among[i]));
        }
        return identify(call, {static_cast<const unsigned char*>(octets), size},
                        among != nullptr ? types : known_records(), json, length);
    });
}

int zrasn_check(const zrasn_record* record, const void* octets, size_t size, const zrasn_options* options, char** json,
                size_t* length, zrasn_report* report) {
    call call(options, report);
    const bool complete = clear_text(json, length) && record != nullptr && (octets != nullptr || size == 0);
    return call.run(complete, [&] {
        const input_octets in{static_cast<const unsigned char*>(octets), size};
        record_holder held(type_of(record));
        size_t consumed = 0;
        if (const int status = decode_any(call, type_of(record), in, held.get(), consumed); status != 0) return status;
        text_output out;
        write_deviations(out, in.data, in.size, type_of(record), held.get(), call.most_shown());
        return give(call, out, json, length, consumed);
    });
}

int zrasn_walk(const zrasn_record* record, const void* octets, size_t size, const zrasn_options* options, char** json,
               size_t* length, zrasn_report* report) {
    call call(options, report);
    return call.run(clear_text(json, length) && (octets != nullptr || size == 0), [&] {
        tree_options tree;
        if (record != nullptr) tree.record = &type_of(record);
        tree.secrets = call.secrets();
        if (call.most_depth() != 0) tree.most_levels = call.most_depth();
        tree.most_text = call.most_shown();
        text_output out;
        write_tree(out, static_cast<const unsigned char*>(octets), size, tree);
        return give(call, out, json, length);
    });
}
