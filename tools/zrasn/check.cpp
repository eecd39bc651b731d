// check: whether an encoding fits a record, and where it deviates from what the library writes.
#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "asn1/asnbase/status.h"
#include "asn1/zrasnapi.h"
#include "ber.h"
#include "decode_octets.h"
#include "input.h"
#include "locate.h"
#include "output.h"
#include "record_guide.h"
#include "record_holder.h"
#include "refusal.h"
#include "verbs.h"

namespace zr::tool {

namespace {

using role = record_place::role;

std::string counted(uint64_t count, const char* what) {
    return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

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

size_t header_of(const octets_input& in) { return envelope_header_size(in.data(), in.size()); }

// deviation_walk compares the form of an encoding that fits the record with what the library writes.
class deviation_walk {
public:
    // The lines go to `out`; to nobody when it is null.
    deviation_walk(const octets_input& in, const record_type& type, output* out) : in_(in), guide_(&type), out_(out) {}

    // The number of deviations; none means that the library writes these octets.
    uint64_t run(const record_type& type, void* contents) {
        const size_t header = header_of(in_);
        if (header != 0 && header != 4) report(0, "a header of " + counted(header, "octet") + ", 4 are written");
        ber_scanner scanner(in_.data() + header, in_.size() - header);
        size_t end = in_.size();
        for (ber_item item; scanner.next(item);) {
            item.offset += header;
            leave_slots(item.depth);
            if (item.depth == 0 && item.offset != header) break;
            guide_.leave(item.depth, [](size_t, const field&) {});
            if (item.kind == ber_kind::end_of_contents && item.depth == 1) end = item.offset + 2;
            if (item.kind != ber_kind::element) continue;
            if (item.depth == 0 && !item.indefinite) end = item.offset + item.header + item.length;
            element(item, guide_.visit(item));
        }
        leave_slots(0);
        compare(type, contents, header, end);
        if (end != in_.size()) {
            guide_.leave(0, [](size_t, const field&) {});
            report(end, counted(in_.size() - end, "octet") + " after the record");
        }
        return count_;
    }

private:
    void element(const ber_item& item, const record_place& place) {
        if (item.identifier_size > item.shortest_identifier())
            report(item.offset, "an identifier of " + counted(item.identifier_size, "octet") + ", " +
                                    std::to_string(item.shortest_identifier()) + " would do");
        const size_t length_at = item.offset + item.identifier_size;
        if (item.indefinite)
            report(length_at, "an indefinite length");
        else if (item.length_size() > item.shortest_length())
            report(length_at, "a length of " + counted(item.length_size(), "octet") + ", " +
                                  std::to_string(item.shortest_length()) + " would do");
        in_slots(item, place);
        const bool is_string = place.what == role::segment || place.member != nullptr;
        if (!is_string || place.record != nullptr || place.is_list()) return;
        if (item.constructed)
            report(item.offset, "a string in segments");
        else
            contents(item, place);
    }

    void contents(const ber_item& item, const record_place& place) {
        const field& member = *place.member;
        const size_t at = item.offset + item.header;
        const unsigned char* octets = in_.data() + at;
        if (place.is_integer()) {
            const integer_forms forms = forms_of(octets, item.length, member.integer);
            if (item.length == forms.written_size && std::memcmp(octets, forms.written, item.length) == 0) return;
            report(at, (item.length == 0 ? "no octets" : "the octets " + digits_of(octets, item.length)) +
                           ", read as " + std::to_string(forms.read) + " and written as " +
                           digits_of(forms.written, forms.written_size));
        } else if (member.kind == field_kind::text || member.kind == field_kind::list_of_texts) {
            if (item.length == 0) return;
            const void* zero = std::memchr(octets, 0, item.length);
            if (zero != nullptr) report(in_offset(zero), "a zero octet in a text, which is read up to there");
        } else if (member.kind == field_kind::fixed_octets && place.what == role::member &&
                   item.length != member.size) {
            report(item.offset, counted(item.length, "octet") + " where " + std::to_string(member.size) +
                                    " are written; the rest is " + (item.length < member.size ? "zero" : "dropped"));
        }
    }

    size_t in_offset(const void* place) const {
        return static_cast<size_t>(static_cast<const unsigned char*>(place) - in_.data());
    }

    // Empty slots behind the last used one are not written, and there are only so many.
    void in_slots(const ber_item& item, const record_place& place) {
        if (place.what != role::element || place.member->kind != field_kind::slots) return;
        if (place.index >= place.member->size)
            report(item.offset, "read and dropped: there are " + counted(place.member->size, "slot"));
        const bool open = !slots_.empty() && slots_.back().depth == item.depth;
        if (place.record != nullptr) {
            if (open) slots_.pop_back();
        } else if (!open && place.index < place.member->size) {
            slots_.push_back({item.depth, item.offset, guide_.path()});
        }
    }
    void leave_slots(size_t depth) {
        for (; !slots_.empty() && slots_.back().depth > depth; slots_.pop_back())
            report(slots_.back().offset, "empty slots behind the last used one", slots_.back().path);
    }

    // What the walk does not know of shows here.
    void compare(const record_type& type, void* contents, size_t begin, size_t end) {
        zr_asn_buffer_t written{0, nullptr};
        if (type.functions.encode(written, contents) != zr_ok) return report(begin, "the library cannot write this");
        constexpr size_t header = 4;
        const unsigned char* octets = written.data + header;
        const size_t count = std::min<size_t>(end - begin, written.length - header);
        const auto differs =
            static_cast<size_t>(std::mismatch(octets, octets + count, in_.data() + begin).first - octets);
        if (count_ == 0 && (end - begin != written.length - header || differs != count))
            report(begin + differs, "the library writes other octets from here");
        zr_asn_buffer_free(written);
    }

    void report(size_t offset, const std::string& what) { report(offset, what, out_ != nullptr ? guide_.path() : ""); }
    void report(size_t offset, const std::string& what, const std::string& path) {
        ++count_;
        if (out_ == nullptr) return;
        out_->write(in_.label());
        out_->write(":" + std::to_string(offset) + ": ");
        if (!path.empty()) out_->write(path + ": ");
        out_->write(what);
        out_->put('\n');
    }

    struct trailing_slots {
        size_t depth;
        size_t offset;
        std::string path;
    };

    const octets_input& in_;
    record_guide guide_;
    output* out_;
    uint64_t count_ = 0;
    std::vector<trailing_slots> slots_;
};

int decode(const octets_input& in, const record_type& type, record_holder& record) {
    return decode_octets(type, in.data(), in.size(), record.get());
}

int refuse(const octets_input& in, const record_type& type, int status, color_mode color) {
    print_refusal(in, type, explain(in.data(), in.size(), type, status), color);
    return exit_refused;
}

// One line on a record that fits; true when the octets are the library's own.
bool report_fit(const octets_input& in, const record_type& type, record_holder& record, output& out, bool with_places) {
    const uint64_t count = deviation_walk(in, type, with_places ? &out : nullptr).run(type, record.get());
    out.write(
        in.label() + ": fits " + type.name + ", " +
        (count == 0 ? "as the library writes it" : counted(count, "deviation") + " from what the library writes"));
    out.write(header_of(in) == 0 ? " (no envelope header)\n" : "\n");
    return count == 0;
}

int check_one(const octets_input& in, const record_type& type, color_mode color) {
    record_holder record(type);
    const int status = decode(in, type, record);
    if (status != zr_ok) return refuse(in, type, status, color);
    output out("");
    const bool exact = report_fit(in, type, record, out, true);
    out.close();
    return exact ? exit_good : exit_refused;
}

// Without a record: all whose shape fits, or the one that fits furthest.
int check_all(const octets_input& in, color_mode color) {
    std::vector<const record_type*> fitting;
    const record_type* nearest = nullptr;
    size_t furthest = 0;
    for (const record_module* module : modules()) {
        for (const record_type* type : *module) {
            mismatch found;
            const size_t header = header_of(in);
            if (!locate_mismatch(in.data() + header, in.size() - header, *type, found)) {
                fitting.push_back(type);
            } else if (nearest == nullptr || found.offset > furthest) {
                nearest = type;
                furthest = found.offset;
            }
        }
    }
    if (fitting.size() == 1) return check_one(in, *fitting.front(), color);
    if (fitting.empty()) {
        record_holder record(*nearest);
        return refuse(in, *nearest, decode(in, *nearest, record), color);
    }
    output out("");
    bool exact = false;
    for (const record_type* type : fitting) {
        record_holder record(*type);
        const int status = decode(in, *type, record);
        if (status != zr_ok) return refuse(in, *type, status, color);
        exact = report_fit(in, *type, record, out, false) || exact;
    }
    out.close();
    return exact ? exit_good : exit_refused;
}

}  // namespace

int run_check(const check_options& options) {
    const octets_input in = read_input(options.file, options.from);
    return options.record != nullptr ? check_one(in, *options.record, options.color) : check_all(in, options.color);
}

}  // namespace zr::tool
