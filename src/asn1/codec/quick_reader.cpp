#include "asn1/codec/quick_reader.h"

#include "asn1/asnbase/object.h"
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

found_integer odd_integer(octet_position at, octet_position end) {
    // A length of more octets than needed is what is odd most often.
    octet_position stop = nullptr;
    if (const octet_position contents = quick_contents(at, end, id_integer, stop)) {
        int32_t value = 0;
        if (contents != stop && !fold_integer(contents, static_cast<size_t>(stop - contents), value)) value = 0;
        return {stop, value};
    }
    input in{at, end};
    int32_t value = 0;
    const int status = read_integer(in, value);
    return {position_of(in, end, status), value};
}

octet_position odd_fixed_octets(octet_position at, octet_position end, unsigned char* to, uint32_t size) {
    input in{at, end};
    const int status = read_fixed_octets(in, to, size);
    return position_of(in, end, status);
}

namespace {

// What becomes of contents that were found; null where a strict reader refuses them.

template <class... Blocks>
ZR_INLINE octet_position store_text(octet_position contents, octet_position stop, char*& text, Blocks... blocks) {
    const auto length = static_cast<size_t>(stop - contents);
    if (is_strict<Blocks...> && !is_text(contents, length)) return nullptr;
    auto* block = static_cast<char*>(allocate<1>(length + 1, blocks...));
    text = block;
    if (__builtin_expect(block != nullptr, 1)) {
        copy_octets(reinterpret_cast<unsigned char*>(block), contents, length);
        block[length] = 0;
    } else if constexpr (sizeof...(Blocks) != 0) {
        throw_memory_error(asnbase_file);
    }
    return stop;
}

template <class... Blocks>
ZR_INLINE octet_position store_stored_text(octet_position contents, octet_position stop, char*& text,
                                           Blocks... blocks) {
    const auto stored = static_cast<size_t>(stop - contents);
    if (is_strict<Blocks...> && (stored == 0 || std::memchr(contents, 0, stored) != stop - 1)) return nullptr;
    const size_t length = stored < 2 ? 0 : stored;
    auto* block = static_cast<char*>(allocate<1>(length + 1, blocks...));
    if (__builtin_expect(block == nullptr, 0)) throw_stored_text_memory_error();
    text = block;
    copy_octets(reinterpret_cast<unsigned char*>(block), contents, length);
    block[length] = 0;
    return stop;
}

// `no_memory` throws.
template <class NoMemory, class... Blocks>
ZR_INLINE octet_position store_octets(octet_position contents, octet_position stop, unsigned char*& data,
                                      uint32_t& length, const NoMemory& no_memory, Blocks... blocks) {
    if (contents == stop) return stop;
    const auto count = static_cast<size_t>(stop - contents);
    auto* block = static_cast<unsigned char*>(allocate<1>(count, blocks...));
    if (__builtin_expect(block == nullptr, 0)) no_memory();
    data = block;
    length = static_cast<uint32_t>(count);
    copy_octets(block, contents, count);
    return stop;
}

// Strings in other forms; in packed structures those are left to the general way.
[[gnu::noinline, gnu::cold]] octet_position odd_text(octet_position at, octet_position end, char*& text) {
    if (const found_contents found = odd_contents(at, end, id_utf8_string); found.at != nullptr)
        return store_text(found.at, found.stop, text);
    input in{at, end};
    const int status = read_text(in, text);
    return position_of(in, end, status, text);
}
template <class Blocks>
octet_position odd_text(octet_position, octet_position, char*&, Blocks) {
    return nullptr;
}

[[gnu::noinline, gnu::cold]] octet_position odd_stored_text(octet_position at, octet_position end, char*& text) {
    if (const found_contents found = odd_contents(at, end, id_octet_string); found.at != nullptr)
        return store_stored_text(found.at, found.stop, text);
    input in{at, end};
    const int status = read_stored_text(in, text);
    return position_of(in, end, status, text);
}
template <class Blocks>
octet_position odd_stored_text(octet_position, octet_position, char*&, Blocks) {
    return nullptr;
}

template <class NoMemory>
[[gnu::noinline, gnu::cold]] octet_position odd_octets(octet_position at, octet_position end, unsigned char*& data,
                                                       uint32_t& length, NoMemory no_memory) {
    if (const found_contents found = odd_contents(at, end, id_octet_string); found.at != nullptr)
        return store_octets(found.at, found.stop, data, length, no_memory);
    input in{at, end};
    const int status = read_octets(in, data, length);
    if (status == zr_err_out_of_memory) no_memory();
    return position_of(in, end, status, data);
}
template <class NoMemory, class Blocks>
octet_position odd_octets(octet_position, octet_position, unsigned char*&, uint32_t&, NoMemory, Blocks) {
    return nullptr;
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
    return store_text(contents, stop, text, blocks...);
}

template <class... Blocks>
octet_position quick_stored_text(octet_position at, octet_position end, char*& text, Blocks... blocks) {
    octet_position stop = nullptr;
    const octet_position contents = string_contents<Blocks...>(at, end, id_octet_string, stop);
    if (__builtin_expect(contents == nullptr, 0)) return odd_stored_text(at, end, text, blocks...);
    return store_stored_text(contents, stop, text, blocks...);
}

template <class... Blocks>
octet_position quick_octets(octet_position at, octet_position end, unsigned char*& data, uint32_t& length,
                            const char* file, Blocks... blocks) {
    const auto no_memory = [file] { throw_memory_error(file); };
    octet_position stop = nullptr;
    const octet_position contents = string_contents<Blocks...>(at, end, id_octet_string, stop);
    if (__builtin_expect(contents == nullptr, 0)) return odd_octets(at, end, data, length, no_memory, blocks...);
    return store_octets(contents, stop, data, length, no_memory, blocks...);
}

template <class... Blocks>
octet_position quick_optional_octets(octet_position at, octet_position end, unsigned char*& data, uint32_t& length,
                                     Blocks... blocks) {
    octet_position stop = nullptr;
    const octet_position contents = string_contents<Blocks...>(at, end, id_octet_string, stop);
    if (__builtin_expect(contents == nullptr, 0))
        return odd_octets(at, end, data, length, throw_body_memory_error, blocks...);
    if (is_strict<Blocks...> && contents == stop) return nullptr;  // it is not written
    return store_octets(contents, stop, data, length, throw_body_memory_error, blocks...);
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

}  // namespace zr
