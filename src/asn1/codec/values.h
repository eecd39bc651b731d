// What the codec does with one value of each kind: a kind of value is a specialisation of value_codec here, for what
// templates unroll, and a case in each function of values.cpp, for what walks a table.
#pragma once

#include <cstdlib>
#include <cstring>

#include "asn1/codec/quick_reader.h"
#include "asn1/codec/shape.h"
#include "asn1/codec/value_reader.h"
#include "asn1/codec/writer.h"

namespace zr {

// What becomes of the members of a released structure: pointers null and counts 0, or, in a block that is itself
// released, whatever they are.
enum class members_after { cleared, any };

// A record as a value (asn1/codec/runs.h, encode.h, decode.h, release.h).
template <class S, size_t First, size_t... I>
uint64_t measure_run(const S& in, size_t*& length, std::index_sequence<I...>);
template <class Sink, class S, size_t First, size_t... I>
void write_measured(Sink& sink, const S& in, const size_t*& length, std::index_sequence<I...>);
template <class S, class... Blocks>
octet_position read_record(octet_position at, octet_position end, S& out, Blocks... blocks);
template <members_after After, class S>
void release(S& structure);
template <class S>
constexpr size_t strings_in_leaf();
template <class S>
constexpr size_t most_octets_in_leaf();
template <class S>
constexpr size_t min_octets();
template <class S>
constexpr uint32_t typical_octets();

inline size_t text_length(const char* text) { return text != nullptr ? std::strlen(text) : 0; }

// Of a field F of the kind, in a structure S that holds one value of it:
//
//   least, most, typical  octets of an encoding: the fewest that are accepted, the most besides those of strings, about
//                         how many
//   strings               how many lengths of strings measure gives
//   measure               gives the lengths of strings, moves `length` on behind them and returns their sum
//   write                 writes the value, for which there is room; `length` is behind the measured lengths of the
//   value
//                         and moves before them
//   read                  reads the value in the library's own form and returns where it ends; null for any other form
//   release               frees the blocks of the value in a place
template <value_kind Kind>
struct value_codec;

// Whether an integer of 32 bits can be stored in a member.
template <class T>
ZR_INLINE bool fits(int32_t value) {
    return static_cast<int32_t>(static_cast<T>(value)) == value;
}

template <>
struct value_codec<value_kind::integer> {
    static constexpr bool holds_blocks = false;
    template <class F>
    static constexpr size_t least = 2;  // one without contents is accepted
    template <class F>
    static constexpr size_t most = max_integer;
    template <class F>
    static constexpr uint32_t typical = 4;
    template <class F>
    static constexpr size_t strings = 0;

    template <class F, class S>
    ZR_INLINE static uint64_t measure(const S&, size_t*&) {
        return 0;
    }
    template <class F, class Sink, class S>
    ZR_INLINE static void write(Sink& sink, const S& in, const size_t*&) {
        sink.integer(static_cast<int32_t>(member_of<F>(in)));
    }
    template <class F, class S, class... Blocks>
    ZR_INLINE static octet_position read(octet_position at, octet_position end, S& out, Blocks...) {
        using T = typename F::value_type;
        int32_t value = 0;
        at = quick_integer<Blocks...>(at, end, value);
        member_of<F>(out) = static_cast<T>(value);
        return is_strict<Blocks...> && !fits<T>(value) ? nullptr : at;
    }
    template <members_after After, class T>
    ZR_INLINE static void release(T&) {}
};

template <>
struct value_codec<value_kind::version> {
    static constexpr bool holds_blocks = false;
    template <class F>
    static constexpr size_t least = 2;
    template <class F>
    static constexpr size_t most = max_integer;  // the writer stores four octets
    template <class F>
    static constexpr uint32_t typical = 3;
    template <class F>
    static constexpr size_t strings = 0;

    template <class F, class S>
    ZR_INLINE static uint64_t measure(const S&, size_t*&) {
        return 0;
    }
    template <class F, class Sink, class S>
    ZR_INLINE static void write(Sink& sink, const S&, const size_t*&) {
        sink.integer(1);
    }
    template <class F, class S, class... Blocks>
    ZR_INLINE static octet_position read(octet_position at, octet_position end, S&, Blocks...) {
        int32_t any = 0;
        at = quick_integer<Blocks...>(at, end, any);
        return is_strict<Blocks...> && any != 1 ? nullptr : at;
    }
    template <members_after After, class T>
    ZR_INLINE static void release(T&) {}
};

template <>
struct value_codec<value_kind::text> {
    static constexpr bool holds_blocks = true;
    template <class F>
    static constexpr size_t least = 2;
    template <class F>
    static constexpr size_t most = max_header;
    template <class F>
    static constexpr uint32_t typical = 16;
    template <class F>
    static constexpr size_t strings = 1;

    template <class F, class S>
    ZR_INLINE static uint64_t measure(const S& in, size_t*& length) {
        return *length++ = text_length(member_of<F>(in));
    }
    template <class F, class Sink, class S>
    ZR_INLINE static void write(Sink& sink, const S& in, const size_t*& length) {
        sink.string(id_utf8_string, member_of<F>(in), *--length);
    }
    template <class F, class S, class... Blocks>
    ZR_INLINE static octet_position read(octet_position at, octet_position end, S& out, Blocks... blocks) {
        return quick_text(at, end, member_of<F>(out), blocks...);
    }
    template <members_after After, class T>
    ZR_INLINE static void release(T& block) {
        std::free(block);
        if constexpr (After == members_after::cleared) block = nullptr;
    }
};

template <>
struct value_codec<value_kind::stored_text> : value_codec<value_kind::text> {
    template <class F, class S>
    ZR_INLINE static uint64_t measure(const S& in, size_t*& length) {
        return *length++ = text_length(member_of<F>(in)) + 1;
    }
    template <class F, class Sink, class S>
    ZR_INLINE static void write(Sink& sink, const S& in, const size_t*& length) {
        const char* text = member_of<F>(in);
        sink.string(id_octet_string, text != nullptr ? text : "", *--length);
    }
    template <class F, class S, class... Blocks>
    ZR_INLINE static octet_position read(octet_position at, octet_position end, S& out, Blocks... blocks) {
        return quick_stored_text(at, end, member_of<F>(out), blocks...);
    }
};

template <>
struct value_codec<value_kind::octets> {
    static constexpr bool holds_blocks = true;
    template <class F>
    static constexpr size_t least = 2;
    template <class F>
    static constexpr size_t most = max_header;
    template <class F>
    static constexpr uint32_t typical = 2;  // and what the guess finds
    template <class F>
    static constexpr size_t strings = 1;

    template <class F, class S>
    ZR_INLINE static uint64_t measure(const S& in, size_t*& length) {
        return *length++ = octets_length<F>(in);
    }
    template <class F, class Sink, class S>
    ZR_INLINE static void write(Sink& sink, const S& in, const size_t*& length) {
        const size_t octets = *--length;
        if constexpr (F::held == holding::optional) {
            if (octets == 0) return;
        }
        sink.string(id_octet_string, member_of<F>(in), octets);
    }
    template <class F, class S, class... Blocks>
    ZR_INLINE static octet_position read(octet_position at, octet_position end, S& out, Blocks... blocks) {
        if constexpr (F::held == holding::optional) {
            return quick_optional_octets(at, end, member_of<F>(out), count_of<F>(out), blocks...);
        } else {
            return quick_octets(at, end, member_of<F>(out), count_of<F>(out), record<S>::module, blocks...);
        }
    }
    template <members_after After, class T>
    ZR_INLINE static void release(T& block) {
        value_codec<value_kind::text>::release<After>(block);
    }
};

template <>
struct value_codec<value_kind::fixed_octets> {
    static constexpr bool holds_blocks = false;
    template <class F>
    static constexpr size_t least = 2;  // another number of octets is accepted
    template <class F>
    static constexpr size_t most = max_header + F::size;
    template <class F>
    static constexpr uint32_t typical = 2 + F::size;
    template <class F>
    static constexpr size_t strings = 0;

    template <class F, class S>
    ZR_INLINE static uint64_t measure(const S&, size_t*&) {
        return 0;
    }
    template <class F, class Sink, class S>
    ZR_INLINE static void write(Sink& sink, const S& in, const size_t*&) {
        sink.string(id_octet_string, member_of<F>(in), F::size);
    }
    template <class F, class S, class... Blocks>
    ZR_INLINE static octet_position read(octet_position at, octet_position end, S& out, Blocks...) {
        return quick_fixed_octets<F::size, Blocks...>(at, end, member_of<F>(out));
    }
    template <members_after After, class T>
    ZR_INLINE static void release(T&) {}
};

template <>
struct value_codec<value_kind::record> {
    static constexpr bool holds_blocks = true;
    template <class F>
    static constexpr size_t least = min_octets<typename F::value_type>();
    template <class F>
    static constexpr size_t most = most_octets_in_leaf<typename F::value_type>();
    template <class F>
    static constexpr uint32_t typical = typical_octets<typename F::value_type>();
    template <class F>
    static constexpr size_t strings = strings_in_leaf<typename F::value_type>();

    template <class F, class S>
    ZR_INLINE static uint64_t measure(const S& in, size_t*& length) {
        using R = typename F::value_type;
        return measure_run<R, 0>(member_of<F>(in), length, field_indices<R>());
    }
    template <class F, class Sink, class S>
    ZR_INLINE static void write(Sink& sink, const S& in, const size_t*& length) {
        using R = typename F::value_type;
        const auto end = sink.position();
        write_measured<Sink, R, 0>(sink, member_of<F>(in), length, field_indices<R>());
        sink.header(id_sequence, sink.since(end));
    }
    template <class F, class S, class... Blocks>
    ZR_INLINE static octet_position read(octet_position at, octet_position end, S& out, Blocks... blocks) {
        return read_record(at, end, member_of<F>(out), blocks...);
    }
    template <members_after After, class S>
    ZR_INLINE static void release(S& structure) {
        zr::release<After>(structure);
    }
};

template <class F>
using codec_of_value = value_codec<F::value>;

// The same of a field in a table, in a structure at `where`, for every kind but records, which are gone through by
// levels.

// The universal tag that a value has in an encoding (X.680 8.4).
unsigned char tag_of_value(value_kind value);
// Reads a value in any form into its place: 0 or the status of the object tree, and `tag` the universal tag that was
// expected. Throws zr_asn_memexception for `module`.
int read_value(input& in, const field& field, void* structure, void* where, unsigned char& tag, const char* module);
// Gives away what read_value has made in a place of no structure.
void drop_value(const field& field, void* where);
// Copies the value in a place into another place, which is zero. Blocks come from malloc; or if there are `blocks` from
// those, and then what is copied was read before. Throws zr_asn_memexception for `module`.
void copy_value(const field& field, const void* from, const void* from_where, void* to, void* to_where,
                packed_blocks* blocks, const char* module);
// Less than 0, 0 or greater than 0, as the value of the one structure comes before that of the other.
int order_values(const field& field, const void* left, const void* left_where, const void* right,
                 const void* right_where);
// About how many octets the value takes.
uint64_t guess_value_octets(const field& field, const void* structure, const void* where);

}  // namespace zr
