// make_vectors VALUES DIRECTORY: writes the conformance vectors, a file for each record: octets, what they say, and
// what a plain and a strict decode answer. The values and their octets are those of tests/vectors, which the library
// took no part in; the odd and the refused octets are made of the typical value by the rules below.
#include <algorithm>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "asn1/envelope.h"
#include "asn1/record/decoding.h"
#include "base/file_output.h"
#include "base/library.h"
#include "json/base/envelope.h"
#include "json/base/hex.h"
#include "json/base/record_holder.h"
#include "json/ber/deviations.h"
#include "json/document/record_writer.h"
#include "json/document/string_writer.h"

namespace zr::tool {

namespace {

using octets = std::vector<unsigned char>;

octets operator+(octets left, const octets& right) {
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

// A value of an encoding that the library writes: one identifier octet, and its contents or the values inside.
struct element {
    unsigned char identifier = 0;
    octets contents;
    std::vector<element> inside;

    bool is_constructed() const { return (identifier & 0x20) != 0; }
};

// With so many more octets of length than are needed (X.690 8.1.3.5).
octets with_length(unsigned char identifier, const octets& contents, size_t more_length_octets = 0) {
    octets length;
    for (size_t rest = contents.size(); rest != 0; rest >>= 8)
        length.insert(length.begin(), static_cast<unsigned char>(rest));
    if (length.empty()) length.push_back(0);
    const size_t shortest = contents.size() < 0x80 ? 1 : 1 + length.size();
    if (shortest + more_length_octets > 1) {
        length.insert(length.begin(), shortest + more_length_octets - 1 - length.size(), 0);
        length.insert(length.begin(), static_cast<unsigned char>(0x80 | length.size()));
    }
    return octets{identifier} + length + contents;
}

octets contents_of(const element& value);
octets written(const element& value) { return with_length(value.identifier, contents_of(value)); }
octets contents_of(const element& value) {
    if (!value.is_constructed()) return value.contents;
    octets all;
    for (const element& each : value.inside)
        all = std::move(all) + written(each);
    return all;
}

element parsed(const unsigned char*& at, const unsigned char* end) {
    if (end - at < 2) throw std::runtime_error("a vector ends early");
    element value;
    value.identifier = *at++;
    size_t length = *at++;
    if (length >= 0x80) {
        size_t count = length & 0x7F;
        for (length = 0; count != 0 && at != end; --count)
            length = length << 8 | *at++;
    }
    if (length > static_cast<size_t>(end - at)) throw std::runtime_error("a vector ends early");
    const unsigned char* const stop = at + length;
    if (!value.is_constructed()) value.contents.assign(at, stop);
    while (value.is_constructed() && at != stop)
        value.inside.push_back(parsed(at, stop));
    at = stop;
    return value;
}

// The first value of one of the tags, in the order of the octets; null when there is none.
element* first_of(element& value, std::initializer_list<unsigned char> identifiers) {
    if (std::find(identifiers.begin(), identifiers.end(), value.identifier) != identifiers.end()) return &value;
    for (element& each : value.inside)
        if (element* found = first_of(each, identifiers)) return found;
    return nullptr;
}

constexpr unsigned char integer_tag = 0x02, octets_tag = 0x04, null_tag = 0x05, text_tag = 0x0C;
const octets header = {envelope_header_octets, envelope_version, 0xAC, 0xDC};

// A rule makes other octets of a value; nothing where the record has no value that it is about.
struct rule {
    const char* name;
    std::optional<octets> (*make)(element value);
};

template <class Change>
std::optional<octets> changed(element& value, std::initializer_list<unsigned char> identifiers, Change&& change) {
    element* const found = first_of(value, identifiers);
    if (found == nullptr) return std::nullopt;
    change(*found);
    return header + written(value);
}

const rule rules[] = {
    {"longer_length",
     [](element value) { return std::optional(header + with_length(value.identifier, contents_of(value), 1)); }},
    {"indefinite_length",
     [](element value) {
         return std::optional(header + octets{value.identifier, 0x80} + contents_of(value) + octets{0, 0});
     }},
    {"no_end_of_contents",
     [](element value) {
         return std::optional(header + octets{value.identifier, 0x80} + contents_of(value) + octets{0, 1});
     }},
    {"octet_behind", [](element value) { return std::optional(header + written(value) + octets{0}); }},
    {"longer_header",
     [](element value) {
         return std::optional(octets{5, envelope_version, 0xAC, 0xDC, 0} + written(value));
     }},
    {"longer_integer",
     [](element value) {
         return changed(value, {integer_tag}, [](element& number) {
             const bool negative = !number.contents.empty() && (number.contents[0] & 0x80) != 0;
             number.contents.insert(number.contents.begin(), negative ? 0xFF : 0);
         });
     }},
    {"integer_of_33_bits",
     [](element value) {
         return changed(value, {integer_tag}, [](element& number) { number.contents = {1, 0, 0, 0, 0}; });
     }},
    {"segments",
     [](element value) {
         return changed(value, {text_tag, octets_tag}, [](element& text) {
             text.inside = {{octets_tag, {}, {}}, {octets_tag, text.contents, {}}};
             text.identifier |= 0x20;
         });
     }},
    {"text_with_zero_octet",
     [](element value) { return changed(value, {text_tag}, [](element& text) {
                             text.contents = {'a', 0, 'b'};
                         }); }},
    {"text_not_utf8",
     [](element value) { return changed(value, {text_tag}, [](element& text) {
                             text.contents = {'a', 0xFF};
                         }); }},
    {"truncated",
     [](element value) {
         octets all = header + written(value);
         all.pop_back();
         return std::optional(all);
     }},
    {"header_alone", [](element) { return std::optional(header); }},
    {"no_header", [](element value) { return std::optional(written(value)); }},
    {"another_version",
     [](element value) {
         return std::optional(octets{4, envelope_version + 1, 0xAC, 0xDC} + written(value));
     }},
    {"no_sequence",
     [](element value) {
         value.identifier = 0x31;
         return std::optional(header + written(value));
     }},
    {"another_first_member",
     [](element value) {
         value.inside.front() = {null_tag, {}, {}};
         return std::optional(header + written(value));
     }},
    {"one_member_more",
     [](element value) {
         value.inside.push_back({null_tag, {}, {}});
         return std::optional(header + written(value));
     }},
    {"one_member_less",
     [](element value) {
         value.inside.pop_back();
         return std::optional(header + written(value));
     }},
    {"member_longer_than_record",
     [](element value) {
         octets inside = contents_of(value);
         inside[1] = 0x7F;
         inside.resize(std::min<size_t>(inside.size(), 0x40));
         return std::optional(header + with_length(value.identifier, inside));
     }},
};

// Writes the vectors of one record.
class vector_file {
public:
    vector_file(const record_type& type, const std::string& file) : type_(type), out_(file) {
        out_.write(std::string("{\"record\": \"") + type.name + "\", \"module\": \"" + type.module +
                   "\", \"vectors\": [");
    }

    void add(const std::string& name, const octets& in) {
        out_.write(std::string(any_ ? "," : "") + "\n  {\"name\": \"" + name + "\", \"octets\": \"");
        any_ = true;
        out_.write_hex(in.data(), in.size());
        out_.write("\",\n   \"plain\": ");
        record_holder record(type_);
        const bool accepted = write_verdict(in, record.get(), false);
        out_.write(",\n   \"strict\": ");
        record_holder other(type_);
        write_verdict(in, other.get(), true);
        if (accepted) {
            out_.write(",\n   \"deviations\": [");
            const char* between = "";
            const size_t header_size = envelope_header_size(in.data(), in.size());
            find_deviations(in.data(), in.size(), header_size, type_, record.get(), [&](const deviation& found) {
                out_.write(between + std::string("\"") + found.key + "\"");
                between = ", ";
            });
            out_.write("],\n   \"value\": ");
            write_json(out_, type_, record.get(), json_layout::one_line, secret_values::shown);
        }
        out_.put('}');
    }

    void close() {
        out_.write("\n]}\n");
        out_.close();
    }

private:
    bool write_verdict(const octets& in, void* record, bool strict) {
        zr::decode_options options;
        options.strict = strict;
        decode_report report;
        const int status = type_.decode(in.data(), in.size(), record, options, report);
        out_.write(std::string("{\"accepted\": ") + (status == 0 ? "true" : "false") +
                   ", \"status\": " + std::to_string(status) + ", \"name\": \"" + report.name() + "\", \"reason\": \"" +
                   report.reason() + "\", ");
        if (status == 0) {
            out_.write("\"consumed\": " + std::to_string(report.consumed) + "}");
        } else {
            out_.write("\"offset\": " + std::to_string(report.offset) + ", \"path\": ");
            write_json_string(out_, report.path);
            out_.put('}');
        }
        return status == 0;
    }

    const record_type& type_;
    file_output out_;
    bool any_ = false;
};

struct named_octets {
    std::string name;
    octets in;
};

octets from_hex(const std::string& digits) {
    octets made;
    for (size_t i = 0; i + 1 < digits.size(); i += 2)
        made.push_back(static_cast<unsigned char>(hex_digit(digits[i]) << 4 | hex_digit(digits[i + 1])));
    return made;
}

// The values of a file of tests/vectors: a comment names the sort, then come record, value and octets, a line each.
void read_values(const std::filesystem::path& path, std::map<std::string, std::vector<named_octets>>& values) {
    std::ifstream file(path);
    std::string sort, record;
    size_t lines = 0;
    for (std::string line; std::getline(file, line);) {
        if (line.empty()) continue;
        if (line[0] == '#') {
            sort = line.substr(std::min<size_t>(line.size(), 2));
            lines = 0;
        } else if (++lines == 1) {
            record = line;
        } else if (lines == 3) {
            std::vector<named_octets>& of_record = values[record];
            const auto same = std::count_if(of_record.begin(), of_record.end(), [&](const named_octets& other) {
                return other.name.compare(0, sort.size(), sort) == 0;
            });
            of_record.push_back({same == 0 ? sort : sort + "_" + std::to_string(same + 1), header + from_hex(line)});
        }
    }
}

void make_vectors(const std::filesystem::path& from, const std::filesystem::path& to) {
    std::map<std::string, std::vector<named_octets>> values;
    for (const auto& entry : std::filesystem::directory_iterator(from))
        if (entry.path().extension() == ".txt") read_values(entry.path(), values);
    std::filesystem::create_directories(to);
    for (const record_module* module : modules()) {
        for (const record_type* type : *module) {
            const std::vector<named_octets>& of_record = values[type->name];
            const auto typical = std::find_if(of_record.begin(), of_record.end(),
                                              [](const named_octets& each) { return each.name == "typical"; });
            if (typical == of_record.end()) throw std::runtime_error(std::string("no typical value of ") + type->name);
            vector_file file(*type, (to / (std::string(type->name) + ".json")).string());
            for (const named_octets& each : of_record)
                file.add(each.name, each.in);
            const unsigned char* at = typical->in.data() + header.size();
            const element value = parsed(at, typical->in.data() + typical->in.size());
            for (const rule& each : rules)
                if (const std::optional<octets> made = each.make(value)) file.add(each.name, *made);
            file.close();
        }
    }
}

}  // namespace

}  // namespace zr::tool

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fputs("usage: make_vectors VALUES DIRECTORY\n", stderr);
        return 2;
    }
    try {
        zr::tool::make_vectors(argv[1], argv[2]);
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "make_vectors: %s\n", error.what());
    } catch (const zr::tool::output_error& error) {
        std::fprintf(stderr, "make_vectors: %s\n", error.message.c_str());
    }
    return 1;
}
