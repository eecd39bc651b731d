// Where an encoding that is accepted is not the one that the library writes.
#pragma once

#include <cstddef>
#include <functional>
#include <string>

#include "asn1/record/registry.h"

namespace zr::json {

// What another form means for the value: nothing; a text ends before its octets do; or a text is none in UTF-8, which
// the library neither notices nor changes.
enum class deviation_kind { form, cut_text, not_utf8 };

struct deviation {
    deviation_kind kind;
    const char* key;   // of what sort it is, such as "longer_length": keys never change (docs/tool.md lists them)
    size_t offset;     // from the front of the input, header included
    std::string path;  // of the member; empty for the record itself
    std::string what;  // such as "a length of 3 octets, 1 would do"
};

// find_deviations reports all deviations of an encoding that decodes as `type` into `contents`, in the order in which
// they show: longer identifiers and lengths, indefinite lengths, strings in segments, longer integers and numbers that
// the member cannot hold, zero octets in texts and texts that are not UTF-8, empty slots at the end, octets behind the
// record. None: the library writes these octets. The first `header` octets are the envelope's header; 0 when there is
// none.
void find_deviations(const unsigned char* data, size_t size, size_t header, const record_type& type, void* contents,
                     const std::function<void(const deviation&)>& report);

}  // namespace zr::json
