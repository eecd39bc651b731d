// Decoding octets from outside: the same ways as those of the entry points, with limits and a report, and without a
// word on standard error.
#include <algorithm>
#include <cstring>

#include "asn1/asnbase/buffer.h"
#include "asn1/codec/copy_packed.h"
#include "asn1/codec/encoding.h"
#include "asn1/codec/local_forms.h"
#include "asn1/codec/writer.h"
#include "asn1/framing.h"
#include "asn1/utf8.h"

namespace zr {

namespace {

// No structure takes more blocks than so many octets for each octet that is read, and no element or level less than
// two.
constexpr size_t most_heap_of_octet = 32;
constexpr size_t least_element = 2;

// Whether octets that are so few cannot pass the limits.
bool are_out_of_reach(const decode_limits& limits, size_t length) {
    return limits.heap / most_heap_of_octet >= length && limits.elements >= length / least_element &&
           limits.depth >= length / least_element;
}

// Says where an octet lies: the path of what holds it.
void locate(const record_type& type, input in, size_t offset, refusal& found) {
    unfinished read(type);
    general_reading reading;
    reading.found = &found;
    reading.locate = static_cast<uint32_t>(offset);
    try {
        static_cast<void>(read_any_form(type, in, read.get(), reading));
    } catch (const zr_asn_exception&) {
        found.path[0] = '\0';
    }
    found.offset = static_cast<uint32_t>(offset);
    found.left = static_cast<uint32_t>(in.left() - std::min(offset, in.left()));
}

// Compares what was read with what the library writes: value by value, since a value of another length changes the
// lengths of all around it.
class comparing final : public encoding_target {
public:
    comparing(input read, bool secret) : read_(read), secret_(secret) {}

    void take(const unsigned char* envelope, size_t length) override {
        const unsigned char* const contents = envelope + envelope_header_octets;
        const size_t count = length - envelope_header_octets;
        if (count == read_.left() && std::memcmp(read_.at, contents, count) == 0) return;
        other = first_other({contents, contents + count});
    }
    void take(block owner, size_t room, unsigned char* envelope, size_t length) override {
        take(envelope, length);
        if (secret_) wipe(owner.get(), room);
    }

    octet_position other = nullptr;  // the first value that differs in more than what it holds

private:
    octet_position first_other(input written) const {
        octet_position at = read_.at;
        while (at != read_.end && written.at != written.end && at[0] == written.at[0]) {
            octet_position stop = nullptr;
            octet_position written_stop = nullptr;
            const octet_position contents = quick_contents(at, read_.end, at[0], stop);
            const octet_position expected = quick_contents(written.at, written.end, at[0], written_stop);
            if (contents == nullptr || expected == nullptr) return at;
            const auto length = static_cast<size_t>(stop - contents);
            if (static_cast<uint64_t>(stop - at) != with_header(length)) return at;
            if (at[0] == id_sequence) {
                at = contents;
                written.at = expected;
                continue;
            }
            if (written_stop - expected != stop - contents || std::memcmp(contents, expected, length) != 0) return at;
            at = stop;
            written.at = written_stop;
        }
        return at;
    }

    input read_;
    bool secret_;
};

// The first text that is not UTF-8 in octets that the library could have written; null when there is none.
octet_position find_other_text(octet_position at, octet_position end) {
    while (at != end) {
        octet_position stop = nullptr;
        const octet_position contents = quick_contents(at, end, at[0], stop);
        if (contents == nullptr) return nullptr;
        if (at[0] == id_utf8_string && !is_utf8(contents, static_cast<size_t>(stop - contents))) return at;
        at = at[0] == id_sequence ? contents : stop;
    }
    return nullptr;
}

// Judges octets that a strict reader did not take: whether an encode gives back the octets of a structure, `behind`
// them nothing follows and all texts are UTF-8; and if not, where.
int judge_strictly(const record_type& type, const void* made, input in, octet_position behind, refusal& found) {
    if (behind != in.end) {
        found.offset = static_cast<uint32_t>(behind - in.at);
        found.left = static_cast<uint32_t>(in.end - behind);
        found.expected = expectation::end_of_sequence;
        return zr_err_trailing_data;
    }
    comparing octets(in, type.codec->has_secrets);
    write_encoding(type, made, envelope_version, octets);
    octet_position other = octets.other;
    if (other == nullptr) {
        if (!type.codec->has_texts()) return 0;
        other = find_other_text(in.at, in.end);
        if (other == nullptr) return 0;
    }
    locate(type, in, static_cast<size_t>(other - in.at), found);
    found.expected = expectation::canonical_form;
    return zr_err_bad_contents;
}

int read_plainly(const record_type& type, input in, unfinished& made, general_reading& reading) {
    if (reading.limits == nullptr) {
        reading.behind = made.read_quickly(in.at, in.end);
        if (reading.behind != nullptr) return 0;
    }
    if (int status = read_any_form(type, in, made.get(), reading)) return status;
    return reading.uncounted.module != nullptr ? static_cast<int>(zr_err_out_of_memory) : 0;
}

int read(const record_type& type, input in, unfinished& made, const decode_options& options, decode_report& report) {
    general_reading reading;
    reading.found = &report;
    if (!are_out_of_reach(options.limits, in.left())) reading.limits = &options.limits;
    const bool converts = options.local_texts && type.codec->has_texts();
    int status = 0;
    if (options.strict && reading.limits == nullptr && made.read_strictly(in.at, in.end)) {
        reading.behind = in.end;
    } else if (!converts || options.strict) {
        status = read_plainly(type, in, made, reading);
        if (status == 0 && options.strict) status = judge_strictly(type, made.get(), in, reading.behind, report);
    }
    if (status == 0 && converts) {
        made.clear();
        text_conversion conversion(text_direction::utf8_to_local, type.codec->has_secrets);
        uint32_t text_at = 0;
        try {
            status = read_local_texts(type, in, made, conversion, reading, text_at);
        } catch (const zr_asn_exception& exception) {
            if (exception.code != zr_err_conversion) throw;
            locate(type, in, text_at, report);
            throw;
        }
    }
    report.passed = reading.passed;
    if (reading.behind != nullptr) report.consumed = static_cast<size_t>(reading.behind - in.at);
    return status;
}

// Reads a record into packed blocks: at once in the form that the library writes, else by way of a structure of its
// own.
int read_packed(const record_type& type, input in, void* out, packed_blocks& blocks, const decode_options& options,
                decode_report& report) {
    // About as many octets as structures take for one that is read, and a half more.
    if (type.codec->has_secrets) blocks.keep_secret();
    blocks.start(in.left() * 2 + 64);
    const bool converts = options.local_texts && type.codec->has_texts();
    if (!converts && are_out_of_reach(options.limits, in.left())) {
        const octet_position behind = options.strict
                                          ? type.codec->read_strictly(in.at, in.end, out, strict_blocks{&blocks})
                                          : type.codec->read_packed(in.at, in.end, out, &blocks);
        if (behind != nullptr && (behind == in.end || !options.strict)) {
            report.consumed = static_cast<size_t>(behind - in.at);
            return 0;
        }
        std::memset(out, 0, type.size);
        blocks.clear();
        definite_form definite(type.codec->has_secrets);
        if (!options.strict && definite.write(in.at, in.end, type.module)) {
            if (type.codec->read_packed(definite.copy().at, definite.copy().end, out, &blocks) != nullptr) {
                report.consumed = static_cast<size_t>(definite.behind() - in.at);
                return 0;
            }
            std::memset(out, 0, type.size);
            blocks.clear();
        }
    }
    unfinished made(type);
    if (int status = read(type, in, made, options, report)) return status;
    copy_packed(type, made.get(), out, blocks);
    return 0;
}

// Opens the envelope, lets `read` read what it holds, and finishes the report.
template <class Read>
int decode_envelope(const void* octets, size_t length, const decode_options& options, decode_report& report,
                    const Read& read) {
    report.clear();
    const auto* const data = static_cast<const unsigned char*>(octets);
    if (length > options.limits.octets || length > UINT32_MAX) {
        report.passed = decode_limit::octets;
        return report.status = zr_err_out_of_memory;
    }
    const unsigned char* contents = data;
    const zr_asn_buffer_t in{static_cast<unsigned int>(length), const_cast<unsigned char*>(data)};
    int status = open_envelope(in, options.version, contents);
    const auto header = static_cast<uint32_t>(status == 0 ? contents - data : 0);
    if (status == 0 && options.strict && header != envelope_header_octets) status = zr_err_bad_envelope;
    if (status == 0) {
        try {
            status = read(input{contents, data + length});
        } catch (const zr_asn_exception& exception) {
            status = static_cast<int>(exception.code);
        }
        report.offset += header;
        report.consumed += header;
    }
    report.status = status;
    if (status == 0) return 0;
    report.consumed = 0;
    if (report.offset < length) report.found = data[report.offset];
    if (status == zr_err_data_ends_early || status == zr_err_bad_envelope) {
        size_t missing = 0;
        if (envelope_length(octets, length, options.limits.octets, missing) == framing::incomplete)
            report.missing = missing;
    }
    return status;
}

}  // namespace

int record_type::decode(const void* octets, size_t length, void* out, const decode_options& options,
                        decode_report& report) const {
    const int status = decode_envelope(octets, length, options, report, [&](input in) {
        unfinished made(*this);
        const int read = zr::read(*this, in, made, options, report);
        if (read == 0) made.hand_on(out);
        return read;
    });
    if (clears_structure(status)) std::memset(out, 0, size);
    return status;
}

int record_type::decode_packed(const void* octets, size_t length, void* out, packed_blocks& blocks,
                               const decode_options& options, decode_report& report) const {
    std::memset(out, 0, size);
    const int status = decode_envelope(octets, length, options, report,
                                       [&](input in) { return read_packed(*this, in, out, blocks, options, report); });
    if (status != 0) {
        std::memset(out, 0, size);
        blocks.clear();
    }
    return status;
}

}  // namespace zr
