#include "json/document/events.h"
#include "json/document/parser.h"

namespace zr::json {

bool parse_json(std::string_view text, json_events& receiver, json_fault& fault) {
    return parse_events(text, receiver, fault);
}

}  // namespace zr::json
