// Some members of the encodings of one record: whether they have certain values, and as JSON.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "json/base/output.h"
#include "json/base/secrets.h"
#include "json/base/text_output.h"
#include "json/ber/member_path.h"
#include "json/ber/member_walk.h"
#include "json/document/pen.h"

namespace zr::json {

// selection goes by the headers of an encoding (member_walk), so that what no path leads to costs nothing, and is not
// judged. It takes the octets that the library writes, without an envelope's header; of others it says that the whole
// record is to be decoded, and encoded again.
class selection {
public:
    selection(const record_type& type, secret_values secrets) : type_(type), secrets_(secrets) {}
    selection(const selection&) = delete;
    selection& operator=(const selection&) = delete;

    // These take "PATH" and "PATH=VALUE", where VALUE is what JSON has, without quotes. False when that cannot be:
    // `message` says why. Secrets are only compared when they are shown.
    bool select(std::string_view path, std::string& message);
    bool require(std::string_view condition, std::string& message);

    bool has_conditions() const { return !wanted_.empty(); }
    bool selects() const { return !selected_.empty(); }

    enum class answer { no, yes, other_form };
    // Whether all conditions hold: of a path without an index into a list for any of its elements.
    answer holds(const unsigned char* data, size_t size);
    // Writes the chosen members, those of several elements in an array that has only these; `yes` when it has. In
    // other_form what was written is to be thrown away.
    answer write(output& out, const unsigned char* data, size_t size, json_layout layout);

private:
    const record_type& type_;
    const secret_values secrets_;
    std::vector<member_path> selected_, conditions_;
    std::vector<std::string> wanted_;  // of each condition: the value, a text as it is, others as JSON
    text_output value_;                // of the element that is compared
    std::vector<bool> met_;            // which conditions the record that is looked at meets; kept for its block
    member_walk select_walk_{type_, selected_}, condition_walk_{type_, conditions_};
};

}  // namespace zr::json
