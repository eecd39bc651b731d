#include "json/ber/deviations.h"

#include <algorithm>
#include <cstring>
#include <string_view>
#include <vector>

#include "asn1/status.h"
#include "asn1/zrasnapi.h"
#include "json/base/envelope.h"
#include "json/base/text.h"
#include "json/ber/record_guide.h"
#include "json/ber/scanner.h"

namespace zr::json {

namespace {

using role = record_place::role;

// The number that the library reads from the contents of an INTEGER, and the contents that it writes for it.
struct integer_forms {
    int64_t read;
    unsigned char written[4];
    size_t written_size;
};
integer_forms forms_of(const unsigned char* contents, size_t size, integer_type type) {
    uint32_t bits = 0;
    if (size <= 4 || contents[0] == 0) {
        for (size_t i = 0; i < size; ++i)
            bits |= uint32_t{contents[i]} << ((size - 1 - i) * 8 % 32);
        if (size != 0 && size < 4 && (contents[0] & 0x80) != 0) bits |= ~uint32_t{0} << (size * 8);
    }
    const unsigned unused = 32 - 8u * type.octets;
    const uint32_t high = bits << unused;
    integer_forms forms{};
    forms.read = type.is_signed ? int64_t{static_cast<int32_t>(high) >> unused} : int64_t{high >> unused};
    const auto value = static_cast<int32_t>(forms.read);  // unsigned ones go out as the signed number of their bits
    size_t count = 4;
    while (count > 1 && (value >> (8 * count - 9) == 0 || value >> (8 * count - 9) == -1))
        --count;
    forms.written_size = count;
    for (size_t i = 0; i < count; ++i)
        forms.written[i] = static_cast<unsigned char>(value >> 8 * (count - 1 - i));
    return forms;
}

// Whether octets that are not written so are the number that is written all the same, with more octets of its sign.
bool is_same_number(const unsigned char* octets, size_t size, const integer_forms& forms) {
    if (size < forms.written_size) return false;
    const unsigned char sign = (forms.written[0] & 0x80) != 0 ? 0xFF : 0;
    const unsigned char* const end = octets + size - forms.written_size;
    return std::all_of(octets, end, [sign](unsigned char octet) { return octet == sign; }) &&
           std::equal(end, octets + size, forms.written);
}

std::string digits_of(const unsigned char* octets, size_t count) {
    static constexpr char digits[] = "0123456789abcdef";
    constexpr size_t most = 12;
    std::string text;
    for (size_t i = 0; i < std::min(count, most); ++i) {
        text += digits[octets[i] >> 4];
        text += digits[octets[i] & 15];
    }
    return count > most ? text + " ..." : text;
}

// deviation_walk compares the form of an encoding that fits the record with what the library writes.
class deviation_walk {
public:
    deviation_walk(const unsigned char* data, size_t size, const record_type& type,
                   const std::function<void(const deviation&)>& report)
        : data_(data), size_(size), type_(type), guide_(&type), report_(report) {}

    void run(size_t header, void* contents) {
        if (header != 0 && header != envelope_header_octets)
            report("longer_header", 0, "a header of " + counted(header, "octet") + ", 4 are written");
        ber_scanner scanner(data_ + header, size_ - header);
        size_t end = size_;
        for (ber_item item; scanner.next(item);) {
            item.offset += header;
            leave_slots(item.depth);
            leave_segments(item.depth);
            if (item.depth == 0 && item.offset != header) break;
            guide_.leave(item.depth, [](size_t, const field&) {});
            if (item.kind == ber_kind::end_of_contents && item.depth == 1) end = item.offset + 2;
            if (item.kind != ber_kind::element) continue;
            if (item.depth == 0 && !item.indefinite) end = item.offset + item.header + item.length;
            const record_place place = guide_.visit(item);
            if (place.what == role::none || place.what >= role::unexpected)
                return report("odd_identifier", item.offset,
                              "an identifier that only the library reads as one of this record");
            element(item, place);
        }
        leave_slots(0);
        leave_segments(0);
        compare(contents, header, end);
        if (end == size_) return;
        guide_.leave(0, [](size_t, const field&) {});
        report("octets_behind", end, counted(size_ - end, "octet") + " after the record");
    }

private:
    void element(const ber_item& item, const record_place& place) {
        if (item.identifier_size > item.shortest_identifier())
            report("longer_identifier", item.offset,
                   "an identifier of " + counted(item.identifier_size, "octet") + ", " +
                       std::to_string(item.shortest_identifier()) + " would do");
        const size_t length_at = item.offset + item.identifier_size;
        if (item.indefinite)
            report("indefinite_length", length_at, "an indefinite length");
        else if (item.length_size() > item.shortest_length())
            report("longer_length", length_at,
                   "a length of " + counted(item.length_size(), "octet") + ", " +
                       std::to_string(item.shortest_length()) + " would do");
        in_slots(item, place);
        const bool is_string = place.what == role::segment || place.member != nullptr;
        if (!is_string || place.record != nullptr || place.is_list()) return;
        if (!item.constructed) return contents(item, place);
        report("segments", item.offset, "a string in segments");
        if (is_text(*place.member) && !in_segments_) {
            in_segments_ = true;
            segments_ = {item.depth, item.offset, guide_.path(), {}, 0, place.member->value == value_kind::stored_text};
        }
    }

    void contents(const ber_item& item, const record_place& place) {
        const field& member = *place.member;
        const size_t at = item.offset + item.header;
        const unsigned char* octets = data_ + at;
        if (place.is_integer()) {
            const integer_forms forms = forms_of(octets, item.length, member.integer);
            if (item.length == forms.written_size && std::memcmp(octets, forms.written, item.length) == 0) return;
            report(is_same_number(octets, item.length, forms) ? "longer_integer" : "changed_integer", at,
                   (item.length == 0 ? "no octets" : "the octets " + digits_of(octets, item.length)) + ", read as " +
                       std::to_string(forms.read) + " and written as " + digits_of(forms.written, forms.written_size));
        } else if (member.value == value_kind::version) {
            if (item.length == 1 && octets[0] == 1) return;
            report("other_version", at,
                   (item.length == 0 ? "no octets" : "the octets " + digits_of(octets, item.length)) +
                       " as version, which is written as 01");
        } else if (is_text(member)) {
            text({reinterpret_cast<const char*>(octets), item.length}, at, member.value == value_kind::stored_text);
        } else if (member.held == holding::optional && place.what != role::segment && item.length == 0) {
            report("empty_optional", item.offset, "an empty value, which is read as absent");
        } else if (member.value == value_kind::fixed_octets && place.what != role::segment &&
                   item.length != member.size) {
            report("other_size", item.offset,
                   counted(item.length, "octet") + " where " + std::to_string(member.size) +
                       " are written; the rest is " + (item.length < member.size ? "zero" : "dropped"));
        }
    }

    // One text, or a segment of one.
    void text(std::string_view octets, size_t at, bool stored) {
        const size_t zero = octets.find('\0');
        if (zero != octets.npos && !stored) cut(at + zero);
        if (!in_segments_) return whole_text(octets, at, at + zero, stored);
        if (zero != octets.npos && segments_.text.find('\0') == std::string::npos) segments_.zero_at = at + zero;
        segments_.text += octets;  // a character may begin in one and end in the next
    }
    void leave_segments(size_t depth) {
        if (!in_segments_ || segments_.depth < depth) return;
        whole_text(segments_.text, segments_.offset, segments_.zero_at, segments_.stored);
        in_segments_ = false;
    }
    // `zero_at` is where the first zero octet lies, if there is one.
    void whole_text(std::string_view octets, size_t at, size_t zero_at, bool stored) {
        if (stored) {
            const size_t zero = octets.find('\0');
            if (octets.size() == 1 && zero != 0)
                return report_text(deviation_kind::cut_text, "cut_text", at,
                                   "a text of one octet, which is read as empty");
            if (zero == octets.npos)
                report_text(deviation_kind::form, "no_zero_octet", at,
                            "a text without the zero octet that is written behind it");
            else if (zero + 1 != octets.size())
                cut(zero_at);
            if (!octets.empty() && octets.back() == '\0') octets.remove_suffix(1);
        }
        const size_t good = utf8_size(octets);
        if (good != octets.size())
            report_text(deviation_kind::not_utf8, "not_utf8", in_segments_ ? at : at + good,
                        "a text that is not UTF-8");
    }
    void cut(size_t zero_at) {
        report_text(deviation_kind::cut_text, "cut_text", zero_at, "a zero octet in a text, which is read up to there");
    }
    void report_text(deviation_kind kind, const char* key, size_t offset, const std::string& what) {
        report(kind, key, offset, what, in_segments_ ? segments_.path : guide_.path());
    }

    // Empty slots behind the last used one are not written, and there are only so many.
    void in_slots(const ber_item& item, const record_place& place) {
        if (place.what != role::element || place.member->held != holding::slots) return;
        if (place.index >= place.member->size)
            report("dropped_slot", item.offset, "read and dropped: there are " + counted(place.member->size, "slot"));
        const bool open = !slots_.empty() && slots_.back().depth == item.depth;
        if (place.record != nullptr) {
            if (open) slots_.pop_back();
        } else if (!open && place.index < place.member->size) {
            slots_.push_back({item.depth, item.offset, guide_.path()});
        }
    }
    void leave_slots(size_t depth) {
        for (; !slots_.empty() && slots_.back().depth > depth; slots_.pop_back())
            report("empty_slots", slots_.back().offset, "empty slots behind the last used one", slots_.back().path);
    }

    // What the walk does not know of shows here.
    void compare(void* contents, size_t begin, size_t end) {
        zr_asn_buffer_t written{0, nullptr};
        if (type_.encode(written, contents) != zr_ok)
            return report("cannot_be_written", begin, "the library cannot write this");
        constexpr size_t header = envelope_header_octets;
        const unsigned char* octets = written.data + header;
        const size_t count = std::min<size_t>(end - begin, written.length - header);
        const auto differs = static_cast<size_t>(std::mismatch(octets, octets + count, data_ + begin).first - octets);
        if (!any_ && (end - begin != written.length - header || differs != count))
            report("other_octets", begin + differs, "the library writes other octets from here");
        zr_asn_buffer_free(written);
    }

    void report(const char* key, size_t offset, const std::string& what) { report(key, offset, what, guide_.path()); }
    void report(const char* key, size_t offset, const std::string& what, const std::string& path) {
        report(deviation_kind::form, key, offset, what, path);
    }
    void report(deviation_kind kind, const char* key, size_t offset, const std::string& what, const std::string& path) {
        any_ = any_ || kind != deviation_kind::not_utf8;
        report_({kind, key, offset, path, what});
    }

    struct segmented_text {
        size_t depth;
        size_t offset;
        std::string path;
        std::string text;  // of the segments so far
        size_t zero_at;    // the first zero octet in it
        bool stored;       // with a zero octet behind it
    };
    struct trailing_slots {
        size_t depth;
        size_t offset;
        std::string path;
    };

    const unsigned char* data_;
    size_t size_;
    const record_type& type_;
    record_guide guide_;
    const std::function<void(const deviation&)>& report_;
    bool any_ = false;  // form that the library does not write
    bool in_segments_ = false;
    segmented_text segments_{};
    std::vector<trailing_slots> slots_;
};

}  // namespace

void find_deviations(const unsigned char* data, size_t size, size_t header, const record_type& type, void* contents,
                     const std::function<void(const deviation&)>& report) {
    deviation_walk(data, size, type, report).run(header, contents);
}

}  // namespace zr::json
