#include "asn1/codec/quick_reader.h"

#include <algorithm>
#include <cstring>

#include "asn1/ascii.h"
#include "asn1/asnbase/object.h"
#include "asn1/codec/local_texts.h"
#include "asn1/codec/value_reader.h"
#include "asn1/utf8.h"

namespace zr {

namespace {

// Where a general reader has ended, which returned `status`. Some odd identifiers count octets that are not there: what
// they leave is less than there seems to be, which only a general reader can go on with.
octet_position position_of(const input& in, octet_position end, int status) {
    return status == 0 && in.end == end ? in.at : nullptr;
}

// The same, where a block was made.
template <class Block>
octet_position position_of(const input& in, octet_position end, int status, Block*& made) {
    const octet_position at = position_of(in, end, status);
    if (at == nullptr) {
        std::free(made);
        made = nullptr;
    }
    return at;
}

}  // namespace

found_contents odd_contents(octet_position at, octet_position end, unsigned char identifier) {
    input in{at, end};
    if (at[0] != identifier || (identifier & 0x1F) == 0x1F || !step_into_definite(in)) return {nullptr, nullptr};
    return {in.at, in.end};
}

namespace {

// The contents of a primitive value of any definite length; null where there are none.
found_contents any_contents(octet_position at, octet_position end, unsigned char identifier) {
    octet_position stop = nullptr;
    const octet_position contents = quick_contents(at, end, identifier, stop);
    return {contents, stop};
}

// Where the contents of a string lie: in one piece, or in segments that are no segments themselves (X.690 8.7.3).
struct one_piece {
    octet_position at;
    octet_position behind;

    size_t octets() const { return static_cast<size_t>(behind - at); }
    void copy(unsigned char* to) const { copy_octets(to, at, octets()); }
    template <class Take>
    void each(const Take& take) const {
        take(*this);
    }
};
class segments {
public:
    segments(octet_position at, octet_position end, unsigned char identifier) {
        constexpr unsigned char constructed = 0x20, length_is_indefinite = 0x80;
        if (end - at < 2 || at[0] != (identifier | constructed)) return;
        const bool is_indefinite = at[1] == length_is_indefinite;
        limit_ = end;
        first_ = is_indefinite ? at + 2 : quick_contents(at, end, at[0], limit_);
        const auto add = [&](one_piece segment) { octets_ += segment.octets(); };
        for (at = first_; at != nullptr; at = pass(at, limit_, add)) {
            if (is_indefinite ? limit_ - at < 2 || at[0] != 0 || at[1] != 0 : at != limit_) continue;
            stop_ = at;
            behind = is_indefinite ? at + 2 : at;
            return;
        }
    }

    size_t octets() const { return octets_; }
    void copy(unsigned char* to) const {
        each([&](one_piece segment) {
            segment.copy(to);
            to += segment.octets();
        });
    }
    template <class Take>
    void each(const Take& take) const {
        for (octet_position at = first_; at != stop_;)
            at = pass(at, limit_, take);
    }

    octet_position behind = nullptr;  // null for any other form

private:
    template <class Take>
    static octet_position pass(octet_position at, octet_position end, const Take& take) {
        octet_position stop = nullptr;
        const octet_position contents = quick_contents<other_forms::none>(at, end, id_octet_string, stop);
        if (contents != nullptr) take(one_piece{contents, stop});
        return stop;
    }

    octet_position first_ = nullptr;
    octet_position stop_ = nullptr;
    octet_position limit_ = nullptr;  // the same for every walk: what lies behind a header decides how it is read
    size_t octets_ = 0;
};

}  // namespace

found_integer odd_integer(octet_position at, octet_position end) {
    // A length of more octets than needed is what is odd most often.
    octet_position stop = nullptr;
    const octet_position contents = quick_contents<other_forms::none>(at, end, id_integer, stop);
    const auto count = static_cast<size_t>(stop - contents);
    if (count - 1 < 4) return {stop, short_integer(stop, count).value()};
    const found_contents found = any_contents(at, end, id_integer);
    if (found.at != nullptr) {
        int32_t value = 0;
        if (found.at != found.stop && !fold_integer(found.at, static_cast<size_t>(found.stop - found.at), value))
            value = 0;
        return {found.stop, value};
    }
    input in{at, end};
    int32_t value = 0;
    const int status = read_integer(in, value);
    return {position_of(in, end, status), value};
}

octet_position odd_fixed_octets(octet_position at, octet_position end, unsigned char* to, uint32_t size) {
    const auto store = [&](const auto& contents) {
        unsigned char* const stop = to + size;
        contents.each([&](one_piece piece) {
            const size_t count = std::min(piece.octets(), static_cast<size_t>(stop - to));
            copy_octets(to, piece.at, count);
            to += count;
        });
        std::memset(to, 0, static_cast<size_t>(stop - to));
        return contents.behind;
    };
    if (const found_contents found = any_contents(at, end, id_octet_string); found.at != nullptr)
        return store(one_piece{found.at, found.stop});
    if (const segments found(at, end, id_octet_string); found.behind != nullptr) return store(found);
    input in{at, end};
    const int status = read_fixed_octets(in, to, size);
    return position_of(in, end, status);
}

namespace {

template <class... Blocks>
constexpr bool comes_from_malloc = sizeof...(Blocks) == 0 || is_local<Blocks...>;

ZR_INLINE void to_local_code_set(char*& text, size_t length, local_blocks local) {
    if (!text_conversion::keeps_ascii || !is_ascii(text, length))
        replace_text(text, length, local.conversion->convert(text, length));
}

// What becomes of contents that were found; null where a strict reader refuses them.

template <class Contents, class... Blocks>
ZR_INLINE octet_position store_text(const Contents& contents, char*& text, Blocks... blocks) {
    const size_t length = contents.octets();
    if constexpr (is_strict<Blocks...>) {
        if (!is_text(contents.at, length)) return nullptr;
    }
    auto* block = static_cast<char*>(allocate<1>(length + 1, blocks...));
    text = block;
    if (__builtin_expect(block != nullptr, 1)) {
        contents.copy(reinterpret_cast<unsigned char*>(block));
        block[length] = 0;
        if constexpr (is_local<Blocks...>) to_local_code_set(text, length, blocks...);
    } else if constexpr (!comes_from_malloc<Blocks...>) {
        throw_memory_error(asnbase_file);
    }
    return contents.behind;
}

template <class Contents, class... Blocks>
ZR_INLINE octet_position store_stored_text(const Contents& contents, char*& text, Blocks... blocks) {
    const size_t stored = contents.octets();
    if constexpr (is_strict<Blocks...>) {
        if (stored == 0 || std::memchr(contents.at, 0, stored) != contents.behind - 1) return nullptr;
    }
    const bool is_empty = stored < 2;
    const size_t length = is_empty ? 0 : stored;
    auto* block = static_cast<char*>(allocate<1>(length + 1, blocks...));
    if (__builtin_expect(block == nullptr, 0)) throw_stored_text_memory_error();
    text = block;
    if (!is_empty) contents.copy(reinterpret_cast<unsigned char*>(block));
    block[length] = 0;
    return contents.behind;
}

// `no_memory` throws.
template <class Contents, class NoMemory, class... Blocks>
ZR_INLINE octet_position store_octets(const Contents& contents, unsigned char*& data, uint32_t& length,
                                      const NoMemory& no_memory, Blocks... blocks) {
    const size_t count = contents.octets();
    if (count == 0) return contents.behind;
    auto* block = static_cast<unsigned char*>(allocate<1>(count, blocks...));
    if (__builtin_expect(block == nullptr, 0)) no_memory();
    data = block;
    length = static_cast<uint32_t>(count);
    contents.copy(block);
    return contents.behind;
}

// Strings in other forms: `store` stores what is found. Any form that this does not know is read by `read`, or gives
// null where blocks do not come from malloc.
template <class Store, class Read, class... Blocks>
ZR_INLINE octet_position odd_string(octet_position at, octet_position end, unsigned char identifier, const Store& store,
                                    const Read& read, Blocks...) {
    if constexpr (!is_strict<Blocks...>) {
        if (const found_contents found = any_contents(at, end, identifier); found.at != nullptr)
            return store(one_piece{found.at, found.stop});
        if (const segments found(at, end, identifier); found.behind != nullptr) return store(found);
        if constexpr (comes_from_malloc<Blocks...>) return read(input{at, end});
    }
    return nullptr;
}

template <class... Blocks>
[[gnu::noinline, gnu::cold]] octet_position odd_text(octet_position at, octet_position end, char*& text,
                                                     Blocks... blocks) {
    return odd_string(
        at, end, id_utf8_string, [&](const auto& contents) { return store_text(contents, text, blocks...); },
        [&](input in) -> octet_position {
            // How long such a text is, with what lies behind a zero octet, only its octets tell.
            if constexpr (is_local<Blocks...>) return nullptr;
            const int status = read_text(in, text);
            return position_of(in, end, status, text);
        },
        blocks...);
}

template <class... Blocks>
[[gnu::noinline, gnu::cold]] octet_position odd_stored_text(octet_position at, octet_position end, char*& text,
                                                            Blocks... blocks) {
    return odd_string(
        at, end, id_octet_string, [&](const auto& contents) { return store_stored_text(contents, text, blocks...); },
        [&](input in) {
            const int status = read_stored_text(in, text);
            return position_of(in, end, status, text);
        },
        blocks...);
}

template <class NoMemory, class... Blocks>
[[gnu::noinline, gnu::cold]] octet_position odd_octets(octet_position at, octet_position end, unsigned char*& data,
                                                       uint32_t& length, NoMemory no_memory, Blocks... blocks) {
    return odd_string(
        at, end, id_octet_string,
        [&](const auto& contents) { return store_octets(contents, data, length, no_memory, blocks...); },
        [&](input in) {
            const int status = read_octets(in, data, length);
            if (status == zr_err_out_of_memory) no_memory();
            return position_of(in, end, status, data);
        },
        blocks...);
}

// The header of a string: null for other forms.
template <class... Blocks>
ZR_INLINE octet_position string_contents(octet_position at, octet_position end, unsigned char identifier,
                                         octet_position& stop) {
    constexpr other_forms others = is_strict<Blocks...> ? other_forms::strictly_none : other_forms::none;
    return quick_contents<others>(at, end, identifier, stop);
}

}  // namespace

template <class... Blocks>
octet_position quick_text(octet_position at, octet_position end, char*& text, Blocks... blocks) {
    octet_position stop = nullptr;
    const octet_position contents = string_contents<Blocks...>(at, end, id_utf8_string, stop);
    if (__builtin_expect(contents == nullptr, 0)) return odd_text(at, end, text, blocks...);
    return store_text(one_piece{contents, stop}, text, blocks...);
}

template <class... Blocks>
octet_position quick_stored_text(octet_position at, octet_position end, char*& text, Blocks... blocks) {
    octet_position stop = nullptr;
    const octet_position contents = string_contents<Blocks...>(at, end, id_octet_string, stop);
    if (__builtin_expect(contents == nullptr, 0)) return odd_stored_text(at, end, text, blocks...);
    return store_stored_text(one_piece{contents, stop}, text, blocks...);
}

template <class... Blocks>
octet_position quick_octets(octet_position at, octet_position end, unsigned char*& data, uint32_t& length,
                            const char* file, Blocks... blocks) {
    const auto no_memory = [file] { throw_memory_error(file); };
    octet_position stop = nullptr;
    const octet_position contents = string_contents<Blocks...>(at, end, id_octet_string, stop);
    if (__builtin_expect(contents == nullptr, 0)) return odd_octets(at, end, data, length, no_memory, blocks...);
    return store_octets(one_piece{contents, stop}, data, length, no_memory, blocks...);
}

template <class... Blocks>
octet_position quick_optional_octets(octet_position at, octet_position end, unsigned char*& data, uint32_t& length,
                                     Blocks... blocks) {
    octet_position stop = nullptr;
    const octet_position contents = string_contents<Blocks...>(at, end, id_octet_string, stop);
    if (__builtin_expect(contents == nullptr, 0))
        return odd_octets(at, end, data, length, throw_body_memory_error, blocks...);
    if (is_strict<Blocks...> && contents == stop) return nullptr;  // it is not written
    return store_octets(one_piece{contents, stop}, data, length, throw_body_memory_error, blocks...);
}

template octet_position quick_text(octet_position, octet_position, char*&);
template octet_position quick_stored_text(octet_position, octet_position, char*&);
template octet_position quick_octets(octet_position, octet_position, unsigned char*&, uint32_t&, const char*);
template octet_position quick_optional_octets(octet_position, octet_position, unsigned char*&, uint32_t&);
template octet_position quick_text(octet_position, octet_position, char*&, packed_blocks*);
template octet_position quick_stored_text(octet_position, octet_position, char*&, packed_blocks*);
template octet_position quick_octets(octet_position, octet_position, unsigned char*&, uint32_t&, const char*,
                                     packed_blocks*);
template octet_position quick_optional_octets(octet_position, octet_position, unsigned char*&, uint32_t&,
                                              packed_blocks*);
template octet_position quick_text(octet_position, octet_position, char*&, strict_blocks);
template octet_position quick_stored_text(octet_position, octet_position, char*&, strict_blocks);
template octet_position quick_octets(octet_position, octet_position, unsigned char*&, uint32_t&, const char*,
                                     strict_blocks);
template octet_position quick_optional_octets(octet_position, octet_position, unsigned char*&, uint32_t&,
                                              strict_blocks);
template octet_position quick_text(octet_position, octet_position, char*&, local_blocks);
template octet_position quick_stored_text(octet_position, octet_position, char*&, local_blocks);
template octet_position quick_octets(octet_position, octet_position, unsigned char*&, uint32_t&, const char*,
                                     local_blocks);
template octet_position quick_optional_octets(octet_position, octet_position, unsigned char*&, uint32_t&, local_blocks);

}  // namespace zr
