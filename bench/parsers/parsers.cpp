// parsers FILE: megabytes a second at which JSON parsers go through a document and touch each value, with nothing made
// of it: nlohmann-json's and RapidJSON's events, RapidJSON with and without the look at UTF-8, and simdjson, which
// needs the whole document in memory. The fastest of some turns counts.
#include <rapidjson/reader.h>
#include <simdjson.h>

#include <chrono>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <string>

namespace {

// Counts events, so that no parser may leave one out.
struct counting : nlohmann::json_sax<nlohmann::json> {
    size_t events = 0;
    bool null() override { return ++events != 0; }
    bool boolean(bool) override { return ++events != 0; }
    bool number_integer(number_integer_t) override { return ++events != 0; }
    bool number_unsigned(number_unsigned_t) override { return ++events != 0; }
    bool number_float(number_float_t, const string_t&) override { return ++events != 0; }
    bool string(string_t&) override { return ++events != 0; }
    bool binary(binary_t&) override { return ++events != 0; }
    bool start_object(size_t) override { return ++events != 0; }
    bool key(string_t&) override { return ++events != 0; }
    bool end_object() override { return ++events != 0; }
    bool start_array(size_t) override { return ++events != 0; }
    bool end_array() override { return ++events != 0; }
    bool parse_error(size_t, const std::string&, const nlohmann::json::exception&) override { return false; }
};

struct counting_handler : rapidjson::BaseReaderHandler<rapidjson::UTF8<>, counting_handler> {
    size_t events = 0;
    bool Default() { return ++events != 0; }
};

template <unsigned Flags>
size_t by_rapidjson(const std::string& document) {
    rapidjson::Reader reader;
    rapidjson::StringStream in(document.c_str());
    counting_handler handler;
    return reader.Parse<Flags | rapidjson::kParseIterativeFlag>(in, handler) ? handler.events : 0;
}

size_t count_values(simdjson::ondemand::value value) {
    size_t events = 1;
    switch (value.type()) {
        case simdjson::ondemand::json_type::array:
            for (simdjson::ondemand::value element : value.get_array())
                events += count_values(element);
            return events + 1;
        case simdjson::ondemand::json_type::object:
            for (auto member : value.get_object())
                events += (member.unescaped_key().value().size() != SIZE_MAX) + count_values(member.value());
            return events + 1;
        case simdjson::ondemand::json_type::string:
            return events + (value.get_string().value().size() == SIZE_MAX);
        case simdjson::ondemand::json_type::number:
            static_cast<void>(value.get_number().value());
            return events;
        default:
            return events;
    }
}

size_t by_simdjson(const simdjson::padded_string& document) {
    simdjson::ondemand::parser parser;
    simdjson::ondemand::document parsed = parser.iterate(document);
    return count_values(parsed);
}

template <class Parse>
size_t row(const char* name, size_t octets, const Parse& parse) {
    double least = 1e9;
    size_t events = 0;
    for (int turn = 0; turn != 5; ++turn) {
        const auto begin = std::chrono::steady_clock::now();
        events = parse();
        least = std::min(least, std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count());
    }
    std::printf("%-40s %6.0f MB/s %10zu events\n", name, static_cast<double>(octets) / least / 1e6, events);
    return events;
}

}  // namespace

int main(int, char** arguments) {
    std::ifstream file(arguments[1]);
    const std::string document{std::istreambuf_iterator<char>(file), {}};
    const simdjson::padded_string padded(document);
    const size_t octets = document.size();
    const size_t events = row("nlohmann-json, events", octets, [&] {
        counting handler;
        return nlohmann::json::sax_parse(document, &handler) ? handler.events : 0;
    });
    bool alike = events == row("RapidJSON, events, UTF-8 looked at", octets,
                               [&] { return by_rapidjson<rapidjson::kParseValidateEncodingFlag>(document); });
    alike &= events == row("RapidJSON, events", octets, [&] { return by_rapidjson<0>(document); });
    alike &= events == row("simdjson, whole document", octets, [&] { return by_simdjson(padded); });
    if (!alike) std::fprintf(stderr, "parsers: they count differently\n");
    return alike ? 0 : 1;
}
