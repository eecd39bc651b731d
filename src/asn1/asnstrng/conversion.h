// A conversion is a source, which reads characters of one code set, and a target, which writes them in another.
//
// Most characters of most texts are ASCII and the same in both: these go by words. A source loads a word of characters
// and marks (see words.h) those it does not read as the octet that stands for them in the word; a target marks those
// that it does not write as that octet with zeros before it. What is marked, and what is left at the end, goes
// character by character.
#pragma once

#include <type_traits>

#include "asn1/asnstrng/repertoire.h"
#include "asn1/asnstrng/t61.h"
#include "asn1/asnstrng/text_writer.h"
#include "asn1/status.h"

namespace zr {

// What is left of a text, and the octet that stands for those missing behind it.
struct text_rest {
    const unsigned char* at;
    size_t left;
    unsigned char fill;
    const unsigned char* begin;  // of the whole text

    size_t passed() const { return static_cast<size_t>(at - begin); }
    void skip(size_t octets) {
        at += octets;
        left -= octets;
    }
    void back(size_t octets) {
        at -= octets;
        left += octets;
    }
};

// Sources. `width` is the least number of octets that a character has, `most` the greatest. `read` gives the next
// character and the number of its octets, 0 when it is malformed; where `whole` is false the text may end within it.
// `count` tells how many characters there are, at least about.

template <unsigned int Octets>
struct fixed_width_source {
    static constexpr unsigned int width = Octets;
    static constexpr unsigned int most = Octets;
    [[gnu::always_inline]] static unsigned int read(const text_rest& text, uint32_t& value, bool whole) {
        if (whole || text.left >= Octets) {
            value = load_unit<Octets>(text.at);
            return Octets;
        }
        for (unsigned int i = 0; i < Octets; ++i)
            value = value << 8 | (i < text.left ? text.at[i] : text.fill);
        return static_cast<unsigned int>(text.left);
    }
    static word marks(word characters) { return Octets == 1 ? 0 : characters; }
    static uint64_t count(const text_rest& text) { return (uint64_t{text.left} + Octets - 1) / Octets; }
};
using ia5_source = fixed_width_source<1>;
using bmp_source = fixed_width_source<2>;
using universal_source = fixed_width_source<4>;

// Deliberately permissive: the octets behind the lead octet are not checked, nor is the value.
struct utf8_source {
    static constexpr unsigned int width = 1;
    static constexpr unsigned int most = 6;
    [[gnu::always_inline]] static unsigned int read(const text_rest& text, uint32_t& value, bool whole) {
        const uint32_t lead = text.at[0];
        value = lead;
        if (lead < 0x80) return 1;
        if (lead < 0xC0 || lead > 0xFD) return 0;
        if (lead < 0xE0) return follow<1>(text, value = lead - 0xC0, whole);
        if (lead < 0xF0) return follow<2>(text, value = lead - 0xE0, whole);
        if (lead < 0xF8) return follow<3>(text, value = lead - 0xF0, whole);
        if (lead < 0xFC) return follow<4>(text, value = lead - 0xF8, whole);
        return follow<5>(text, value = lead - 0xFC, whole);
    }
    static word marks(word characters) { return characters; }
    // All octets but those from 80 to BF.
    static uint64_t count(const text_rest& text) {
        const unsigned char* at = text.at;
        uint64_t characters = text.left;
        if (characters <= 32) return characters;
        for (size_t left = text.left; left >= word_octets; left -= word_octets, at += word_octets) {
            const word loaded = load_word(at);
            const word following = (loaded >> 7 & ~(loaded >> 6)) & in_lanes<8>(1);
            characters -= following * in_lanes<8>(1) >> (word_bits - 8);
        }
        return characters;
    }

private:
    // Adds what the octets behind the lead octet hold; the number of all.
    template <unsigned int Count>
    [[gnu::always_inline]] static unsigned int follow(const text_rest& text, uint32_t& value, bool whole) {
        if (!whole && text.left <= Count) return follow_cut(text.at, text.left, text.fill, Count, value);
        add<Count>(text.at, value);
        return Count + 1;
    }
    template <unsigned int Count>
    [[gnu::always_inline]] static void add(const unsigned char* at, uint32_t& value) {
        if constexpr (Count > 1) add<Count - 1>(at, value);
        value = (value << 6) + at[Count] - 0x80;
    }
    // Where the text ends within the character.
    [[gnu::noinline]] static unsigned int follow_cut(const unsigned char* at, size_t left, unsigned char fill,
                                                     unsigned int count, uint32_t& value) {
        for (unsigned int i = 1; i <= count; ++i)
            value = (value << 6) + (i < left ? at[i] : fill) - 0x80;
        return static_cast<unsigned int>(left);
    }
};

struct t61_source {
    static constexpr unsigned int width = 1;
    static constexpr unsigned int most = 2;
    // An accent at the end is dropped: it gives 0, which is no character of T.61.
    [[gnu::always_inline]] static unsigned int read(const text_rest& text, uint32_t& value, bool whole) {
        const unsigned int octet = text.at[0];
        if (!is_t61_accent(octet)) {
            value = t61_to_bmp[octet];
            return value != 0 ? 1 : 0;
        }
        if (!whole && text.left == 1) return 1;
        value = t61_compositions[octet - first_accent][text.at[1]];
        return value != 0 ? 2 : 0;
    }
    static word marks(word characters) { return not_same_from_t61(characters); }
    static uint64_t count(const text_rest& text) { return text.left; }
};

// Targets. `width` is the number of octets that an ASCII character has, `most` the greatest of any. `put` writes a
// character and gives the place behind it, null when it has no form; there is room for `length` octets, and
// where it is `ample` for more, of which zeros may be written.

template <unsigned int Octets>
struct fixed_width_target {
    static constexpr unsigned int width = Octets;
    static constexpr unsigned int most = Octets;
    static unsigned int length(uint32_t) { return Octets; }
    [[gnu::always_inline]] static unsigned char* put(unsigned char* at, uint32_t value, bool) {
        if (Octets < 4 && value >> (8 * Octets % 32) != 0) return nullptr;
        store_unit<Octets>(at, value);
        return at + Octets;
    }
    static word marks(word) { return 0; }
};
using octet_target = fixed_width_target<1>;
using bmp_target = fixed_width_target<2>;
using universal_target = fixed_width_target<4>;

struct utf8_target {
    static constexpr unsigned int width = 1;
    static constexpr unsigned int most = 6;
    [[gnu::noinline]] static unsigned int length(uint32_t value) {
        constexpr uint32_t first_of_more[] = {0x80, 0x800, 0x10000, 0x200000, 0x4000000};
        unsigned int octets = 1;
        for (const uint32_t first : first_of_more)
            octets += value >= first ? 1 : 0;
        return octets;
    }
    [[gnu::always_inline]] static unsigned char* put(unsigned char* at, uint32_t value, bool ample) {
        if (ample && value < 0x800) {  // the same without a branch
            const uint32_t two = value >= 0x80 ? 1 : 0;
            at[0] = static_cast<unsigned char>(value ^ ((value ^ (0xC0 + (value >> 6))) & (0 - two)));
            at[1] = static_cast<unsigned char>((0x80 + (value & 0x3F)) & (0 - two));
            return at + 1 + two;
        }
        if (value < 0x80) {
            *at = static_cast<unsigned char>(value);
            return at + 1;
        }
        if (value < 0x800) return follow<1>(at, 0xC0 + (value >> 6), value);
        if (value < 0x10000) return follow<2>(at, 0xE0 + (value >> 12), value);
        // The lead octet keeps bits 18 and 19 only, so bit 20 is lost: kept so.
        if (value <= 0x1FFFFF) return follow<3>(at, 0xF0 + ((value & 0xFC000) >> 18), value);
        if (value <= 0x3FFFFFF) return follow<4>(at, 0xF8 + (value >> 24), value);
        if (value <= 0x7FFFFFFF) return follow<5>(at, 0xFC + (value >> 30), value);
        return at;  // what is beyond six octets is skipped
    }
    static word marks(word characters) { return characters; }

private:
    template <unsigned int Count>
    [[gnu::always_inline]] static unsigned char* follow(unsigned char* at, uint32_t lead, uint32_t value) {
        at[Count] = static_cast<unsigned char>(0x80 + (value & 0x3F));
        if constexpr (Count > 1) {
            follow<Count - 1>(at, lead, value >> 6);
        } else {
            at[0] = static_cast<unsigned char>(lead);
        }
        return at + Count + 1;
    }
};

struct t61_target {
    static constexpr unsigned int width = 1;
    static constexpr unsigned int most = 2;
    static unsigned int length(uint32_t value) { return value <= 0xFF && ia5_to_t61[value] > 0xFF ? 2 : 1; }
    [[gnu::always_inline]] static unsigned char* put(unsigned char* at, uint32_t value, bool) {
        const unsigned int octets = value <= 0xFF ? ia5_to_t61[value] : 0;
        if (octets == 0) return nullptr;
        if (octets > 0xFF) *at++ = static_cast<unsigned char>(octets >> 8);
        *at++ = static_cast<unsigned char>(octets);
        return at;
    }
    static word marks(word characters) { return not_same_to_t61(characters); }
};

// The printable repertoire, and the visible one.
struct printable_target : octet_target {
    [[gnu::always_inline]] static unsigned char* put(unsigned char* at, uint32_t value, bool) {
        return value <= 0xFF && printableStringCharacterIA5_table[value] != 0 ? octet_target::put(at, value, true)
                                                                              : nullptr;
    }
    static word marks(word characters) { return not_printable(characters); }
};

// Takes as many characters from the left of the word as are not marked, `most` at most.
template <class Source, class Target>
[[gnu::always_inline]] inline void convert_part(word characters, word marks, unsigned int most, text_rest& text,
                                                text_writer& writer) {
    const unsigned int unmarked = marks != 0 ? octets_before(marks) : word_octets;
    const unsigned int same = unmarked < most ? unmarked : most;
    // The others are to leave no trace in the buffer.
    characters &= ~(~word{0} >> 4 * same >> 4 * same);
    store_characters<8 * Target::width, 8>(writer.at(), characters);
    text.skip(same * Source::width);
    writer.end_at(writer.at() + same * Target::width);
}

// Takes characters by words. The number that should then go one by one, before words are tried again: one where few of
// a word are marked.
template <class Source, class Target>
[[gnu::always_inline]] inline unsigned int convert_words(text_rest& text, text_writer& writer) {
    const auto marks_of = [](word characters) {
        return (Source::marks(characters) | Target::marks(characters)) & high_bits;
    };
    constexpr size_t octets = word_octets * Source::width;
    while (text.left >= octets) {
        const word characters = load_octets<8 * Source::width>(text.at);
        const word marks = marks_of(characters);
        if (marks != 0) {
            if (number_of(marks) >= 3 || !writer.has_room(word_octets * Target::width)) return word_octets;
            convert_part<Source, Target>(characters, marks, word_octets, text, writer);
            return 1;
        }
        writer.make_room(word_octets * Target::width);
        store_characters<8 * Target::width, 8>(writer.at(), characters);
        text.skip(octets);
        writer.end_at(writer.at() + word_octets * Target::width);
    }
    // Of the last word of the text, which begins before what is left of it, the characters that are left.
    const auto left = static_cast<unsigned int>(text.left / Source::width);
    const size_t before = octets - left * Source::width;
    if (left != 0 && text.passed() >= before && writer.has_room(word_octets * Target::width)) {
        const word last = load_octets<8 * Source::width>(text.at - before) << 8 * (word_octets - left);
        convert_part<Source, Target>(last, marks_of(last), left, text, writer);
    }
    return word_octets;
}

// The same from characters of 2 or 4 octets into others of 1, 2 or 4: all that have a form go by words.
template <unsigned int From, unsigned int To>
[[gnu::always_inline]] inline unsigned int convert_lanes(text_rest& text, text_writer& writer) {
    constexpr unsigned int at_once = word_octets / (From < To ? From : To);
    while (text.left >= From) {
        if (text.left < at_once * From) {
            // The last ones together with some that have been taken already, which become what they are.
            const size_t again = at_once - text.left / From;
            if (text.passed() < again * From) break;
            text.back(again * From);
            writer.end_at(writer.at() - again * To);
        }
        if constexpr (From < To) {
            writer.make_room(at_once * To);
            store_characters<8 * To, 8 * From>(writer.at(), load_word(text.at));
        } else {
            bool fit = true;
            const word characters = load_fitting<8 * From, 8 * To>(text.at, fit);
            if (!fit) break;
            writer.make_room(at_once * To);
            store_word(writer.at(), characters);
        }
        text.skip(at_once * From);
        writer.end_at(writer.at() + at_once * To);
    }
    return at_once;
}

// What a failed conversion leaves of the text in the output.
enum class on_failure { reset, keep };

// Takes so many characters one by one: there are enough octets left and there is enough room for any such. False when
// one is malformed or has no form.
template <class Source, class Target>
[[gnu::always_inline]] inline bool convert_amply(text_rest& text, text_writer& writer, unsigned int characters) {
    for (; characters != 0; --characters) {
        uint32_t value = 0;
        const unsigned int octets = Source::read(text, value, true);
        if (octets == 0) return false;
        unsigned char* end = Target::put(writer.at(), value, true);
        if (end == nullptr) return false;
        text.skip(octets);
        writer.end_at(end);
    }
    return true;
}
// The same where neither is known; it stops where the text ends.
template <class Source, class Target>
[[gnu::always_inline]] inline bool convert_carefully(text_rest& text, text_writer& writer, unsigned int characters) {
    for (; characters != 0 && text.left != 0; --characters) {
        uint32_t value = 0;
        const unsigned int octets = Source::read(text, value, false);
        if (octets == 0) return false;
        text.skip(octets);
        if (std::is_same_v<Source, t61_source> && value == 0) return true;
        if (!writer.has_room(Target::most)) writer.make_room(Target::length(value));
        unsigned char* end = Target::put(writer.at(), value, false);
        if (end == nullptr) return false;
        writer.end_at(end);
    }
    return true;
}

template <class Source, class Target>
int convert(const zr_r_buffer_t& in, zr_buffer_t& out, on_failure failure = on_failure::reset) {
    text_rest text{in.current(), in.remaining(), in.fill_octet(), in.current()};
    text_writer writer(out, Source::count(text) * Target::width);
    bool converted = true;
    while (converted && text.left != 0) {
        unsigned int singly = 0;
        if constexpr (Source::width > 1 && std::is_same_v<Target, fixed_width_target<Target::width>>) {
            singly = convert_lanes<Source::width, Target::width>(text, writer);
        } else {
            singly = convert_words<Source, Target>(text, writer);
        }
        const bool ample = text.left >= word_octets * Source::most && writer.has_room(word_octets * Target::most);
        converted = ample ? convert_amply<Source, Target>(text, writer, singly)
                          : convert_carefully<Source, Target>(text, writer, singly);
    }
    writer.finish();
    if (converted) return 0;
    if (failure == on_failure::reset) writer.reset();
    return zr_err_conversion;
}

}  // namespace zr
