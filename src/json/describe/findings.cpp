#include "json/describe/findings.h"

#include <string>

#include "json/base/envelope.h"
#include "json/ber/deviations.h"
#include "json/document/string_writer.h"

namespace zr::json {

void write_match(output& out, const record_match& match, const unsigned char* data, size_t size, size_t header) {
    const char* separator = "";
    out.write("{\"fitting\":[");
    for (const record_type* type : match.fitting) {
        out.write(separator + ("\"" + std::string(type->name) + "\""));
        separator = ",";
    }
    out.write("],\"nearest\":[");
    separator = "";
    for (const record_type* type : match.nearest) {
        mismatch found;
        find_mismatch(data, size, *type, found);
        out.write(separator + ("{\"record\":\"" + std::string(type->name)) + "\",\"offset\":" +
                  std::to_string(header + found.offset) + ",\"path\":\"" + found.path + "\",\"message\":");
        write_json_string(out, "found " + found.found + ", expected " + found.expected);
        out.put('}');
        separator = ",";
    }
    out.write("]}");
}

void write_deviations(text_output& out, const unsigned char* data, size_t size, const record_type& type, void* contents,
                      size_t most_text) {
    uint64_t count = 0, left_out = 0;
    out.write("{\"deviations\":[");
    find_deviations(data, size, envelope_header_size(data, size), type, contents, [&](const deviation& found) {
        if (out.size() >= most_text) {
            ++left_out;
        } else {
            if (count != 0) out.put(',');
            out.write("{\"key\":\"" + std::string(found.key) + "\",\"offset\":" + std::to_string(found.offset) +
                      ",\"path\":\"" + found.path + "\",\"what\":");
            write_json_string(out, found.what);
            out.put('}');
        }
        ++count;
    });
    out.write("],\"count\":" + std::to_string(count));
    if (left_out != 0) out.write(",\"hidden\":" + std::to_string(left_out));
    out.put('}');
}

}  // namespace zr::json
