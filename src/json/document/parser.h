// parse_events: parse_json for a receiver whose `on` the compiler sees, over RapidJSON's iterative reader, which no
// other file of the library knows. Where it stops, explain_fault says why.
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <new>
#include <string>

// Its names are not those of another part of the program that has it too, and texts may be longer than 32 bits can
// count.
#define RAPIDJSON_NAMESPACE zr_rapidjson
#define RAPIDJSON_NAMESPACE_BEGIN namespace zr_rapidjson {
#define RAPIDJSON_NAMESPACE_END }
#define RAPIDJSON_NO_SIZETYPEDEFINE
#define RAPIDJSON_ASSERT(holds) static_cast<void>(0)  // that a string is shorter than 4 GiB, among others
namespace zr_rapidjson {
using SizeType = std::size_t;
}
#include <rapidjson/reader.h>

#include "asn1/load.h"
#include "json/base/text.h"
#include "json/document/events.h"
#include "json/document/fault.h"

namespace zr::json {

// Memory that ends is std::bad_alloc.
class throwing_allocator {
public:
    void* Malloc(size_t size) { return Realloc(nullptr, 0, size); }
    void* Realloc(void* block, size_t, size_t size) {
        if (size == 0) {
            std::free(block);
            return nullptr;
        }
        void* const grown = std::realloc(block, size);
        if (grown == nullptr) throw std::bad_alloc();
        return grown;
    }
    static void Free(void* block) { std::free(block); }
};

inline constexpr uint64_t ones = 0x0101010101010101;

// How many octets stand before the first that is marked by its highest bit; on a big-endian machine perhaps none where
// there are some.
inline size_t before_mark(uint64_t marks) {
    if (marks == 0) return 8;
    return __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__ ? static_cast<size_t>(__builtin_ctzll(marks)) / 8 : 0;
}

// Of 8 characters: how many stand before the first that ends a string, begins an escape or may not stand in one.
inline size_t plain_count(const char* eight) {
    const uint64_t word = load<uint64_t>(eight);
    const uint64_t quotes = word ^ ones * '"', escapes = word ^ ones * '\\';
    // An octet that is less than what is subtracted gets its highest bit, and may give it to those above it.
    return before_mark(((word - ones * 0x20) | (quotes - ones) | (escapes - ones)) & ~word & ones * 0x80);
}

// Of 8 characters: how many spaces they begin with.
inline size_t space_count(const char* eight) {
    const uint64_t others = load<uint64_t>(eight) ^ ones * ' ';
    return before_mark((((others & ones * 0x7F) + ones * 0x7F) | others) & ones * 0x80);
}

inline bool is_blank(char c) { return c <= ' ' && (c == ' ' || c == '\n' || c == '\r' || c == '\t'); }

// text_stream is a stream as RapidJSON's for texts that it may overwrite, but leaves the text as it is: a string
// without escapes is given where it stands, any other is put together beside it.
class text_stream {
public:
    using Ch = char;

    explicit text_stream(std::string_view text) : begin_(text.data()), at_(begin_), end_(begin_ + text.size()) {}

    // Behind the end there are zero octets.
    Ch Peek() const { return at_ != end_ ? *at_ : '\0'; }
    Ch Take() { return at_ != end_ ? *at_++ : '\0'; }
    size_t Tell() const { return static_cast<size_t>(at_ - begin_); }

    // What is put from here on is a string; of one that begins, what needs no look is put at once. (For a number, which
    // has ended here, nothing is put.)
    Ch* PutBegin() {
        start_ = at_;
        is_copied_ = false;
        if (start_[-1] == '"')
            for (size_t count = 8; count == 8 && end_ - at_ >= 8; at_ += count)
                count = plain_count(at_);
        put_ = at_;
        return nullptr;
    }
    // Puts a character; the first that is not the one taken last belongs to an escape.
    void Put(Ch c) {
        if (!is_copied_ && put_ + 1 == at_) {
            ++put_;
            return;
        }
        if (!is_copied_) copy_.assign(start_, put_);
        is_copied_ = true;
        copy_ += c;
    }
    size_t PutEnd(Ch*) { return is_copied_ ? copy_.size() : static_cast<size_t>(put_ - start_); }

    // The string that was put last, of so many octets, and where its first quote stands.
    std::string_view string(size_t length) const { return {is_copied_ ? copy_.data() : start_, length}; }
    bool has_escapes() const { return is_copied_; }
    size_t string_start() const { return static_cast<size_t>(start_ - begin_) - 1; }
    void skip(size_t count) { at_ += count; }
    // Lines are mostly indented by some spaces.
    void skip_blanks() {
        while (at_ != end_ && is_blank(*at_)) {
            const bool new_line = *at_++ == '\n';
            for (size_t count = 8; new_line && count == 8 && end_ - at_ >= 8; at_ += count)
                count = space_count(at_);
        }
    }

private:
    const char* const begin_;
    const char* at_;
    const char* const end_;
    const char* start_ = nullptr;  // of the string that is being put
    const char* put_ = nullptr;    // behind what is put of it, where it stands
    bool is_copied_ = false;
    std::string copy_;
};

}  // namespace zr::json

template <>
inline void zr_rapidjson::SkipWhitespace(zr::json::text_stream& stream) {
    stream.skip_blanks();
}

namespace zr::json {

constexpr bool is_of_number(char c) {
    return (c >= '0' && c <= '9') || c == '-' || c == '+' || c == '.' || c == 'e' || c == 'E';
}

// Whether a number is too large for any type, and so refused as none. (RapidJSON tells of exponents only.)
inline bool is_endless(std::string_view number) {
    constexpr size_t least = 5;  // 1e999
    constexpr size_t most_digits = 300;
    bool possible = number.size() >= most_digits;
    if (number.size() >= least)
        for (char c : number)
            possible |= c > '9';  // an exponent
    return possible && !std::isfinite(std::strtod(std::string(number).c_str(), nullptr));
}

// adapter hands the events on, each with its place. It stops where the receiver does, and where the text is JSON for
// the reader but not here.
template <class Receiver>
class adapter {
public:
    adapter(std::string_view text, const text_stream& stream, Receiver& receiver)
        : text_(text), stream_(stream), receiver_(receiver) {}

    bool Null() { return word(json_kind::null, 4); }
    bool Bool(bool flag) { return word(json_kind::boolean, flag ? 4 : 5); }
    bool RawNumber(const char*, size_t length, bool) {
        const size_t at = stream_.Tell() - length;
        if (is_endless(text_.substr(at, length))) return refuse();
        return give({json_kind::number, at, number_at(at, length)});
    }
    bool String(const char*, size_t length, bool) { return quoted(json_kind::string, length); }
    bool Key(const char*, size_t length, bool) { return quoted(json_kind::key, length); }
    // Brackets are not taken yet.
    bool StartObject() { return bracket(json_kind::begin_object); }
    bool EndObject(size_t) { return bracket(json_kind::end_object); }
    bool StartArray() { return bracket(json_kind::begin_array); }
    bool EndArray(size_t) { return bracket(json_kind::end_array); }
    // Numbers come as they are written.
    bool Int(int) { return refuse(); }
    bool Uint(unsigned) { return refuse(); }
    bool Int64(int64_t) { return refuse(); }
    bool Uint64(uint64_t) { return refuse(); }
    bool Double(double) { return refuse(); }

    // The number at the offset has an exponent that the reader does not take, as 0e999 has.
    void give_large(size_t at) {
        const std::string_view digits = number_at(at, 0);
        if (!is_endless(digits)) give({json_kind::number, at, digits});
    }

    // Whether the receiver has stopped, and not the reader.
    bool has_stopped() const { return stopped_; }

private:
    [[gnu::always_inline]] bool give(const json_event& event) {
        stopped_ = !receiver_.on(event);
        return !stopped_;
    }
    bool refuse() { return false; }
    // All that looks like a part of the number, though the reader takes it for the beginning of something else.
    std::string_view number_at(size_t at, size_t length) const {
        while (at + length != text_.size() && is_of_number(text_[at + length]))
            ++length;
        return text_.substr(at, length);
    }
    bool word(json_kind kind, size_t count) {
        const size_t at = stream_.Tell() - count;
        return give({kind, at, text_.substr(at, count)});
    }
    bool bracket(json_kind kind) {
        const size_t at = stream_.Tell();
        return give({kind, at, {text_.data() + at, 1}});
    }
    // An escape may say the second half of a character without the first.
    bool quoted(json_kind kind, size_t length) {
        const std::string_view text = stream_.string(length);
        if (stream_.has_escapes() && !is_utf8(text)) return refuse();
        return give({kind, stream_.string_start(), text});
    }

    const std::string_view text_;
    const text_stream& stream_;
    Receiver& receiver_;
    bool stopped_ = false;
};

// As parse_json does.
template <class Receiver>
bool parse_events(std::string_view text, Receiver& receiver, json_fault& fault) {
    const std::string_view readable = text.substr(0, utf8_size(text));
    text_stream stream(readable);
    if (readable.substr(0, 3) == "\xEF\xBB\xBF") stream.skip(3);
    adapter<Receiver> events(readable, stream, receiver);
    zr_rapidjson::GenericReader<zr_rapidjson::UTF8<>, zr_rapidjson::UTF8<>, throwing_allocator> reader;
    constexpr unsigned flags =
        zr_rapidjson::kParseIterativeFlag | zr_rapidjson::kParseInsituFlag | zr_rapidjson::kParseNumbersAsStringsFlag;
    const zr_rapidjson::ParseResult result = reader.Parse<flags>(stream, events);
    if (result.Code() == zr_rapidjson::kParseErrorNumberTooBig) events.give_large(result.Offset());
    if (events.has_stopped()) return false;
    if (!result.IsError() && stream.Tell() == text.size()) return true;
    fault = explain_fault(text, stream.Tell());
    return false;
}

}  // namespace zr::json
