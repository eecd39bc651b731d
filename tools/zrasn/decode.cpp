// decode: envelopes to JSON.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "asn1/asnbase/status.h"
#include "asn1/zrasnapi.h"
#include "decode_octets.h"
#include "input.h"
#include "json_writer.h"
#include "lines.h"
#include "output.h"
#include "record_holder.h"
#include "refusal.h"
#include "text_decoder.h"
#include "verbs.h"

namespace zr::tool {

namespace {

constexpr unsigned char standard_header[] = {4, 2, 0xAC, 0xDC};

}  // namespace

int decode_octets(const record_type& type, const unsigned char* data, size_t size, void* contents) {
    if (size > UINT32_MAX - sizeof(standard_header)) return zr_err_out_of_memory;
    std::unique_ptr<unsigned char[]> whole;
    zr_asn_buffer_t in{static_cast<unsigned int>(size), const_cast<unsigned char*>(data)};  // which is only read
    if (lacks_header(data, size)) {
        whole.reset(new unsigned char[size + sizeof(standard_header)]);
        std::memcpy(whole.get(), standard_header, sizeof(standard_header));
        std::memcpy(whole.get() + sizeof(standard_header), data, size);
        in = {static_cast<unsigned int>(size + sizeof(standard_header)), whole.get()};
    }
    return type.decode(in, contents);
}

namespace {

// The octets of a line of text; false and what is wrong when it is none.
bool octets_of(std::string_view line, input_form form, std::vector<unsigned char>& octets, line_refusal& refusal) {
    text_decoder decoder(form);
    octets.resize(line.size());
    const char* at = line.data();
    octets.resize(decoder.decode(at, at + line.size(), octets.data(), octets.size()));
    if (!decoder.refused() && decoder.finish()) return true;
    refusal = {0, static_cast<uint64_t>(at - line.data()), {}, decoder.problem()};
    return false;
}

int decode_lines(const decode_options& options) {
    const record_type& type = *options.record;
    line_reader lines(options.file);
    output out(options.output);
    line_progress progress;
    std::vector<unsigned char> octets;
    for (std::string_view line; lines.next(line);) {
        line_refusal wrong{};
        bool good = octets_of(line, options.from, octets, wrong);
        refusal refused;
        if (good) {
            record_holder record(type);
            const int status = decode_octets(type, octets.data(), octets.size(), record.get());
            good = status == zr_ok;
            if (good) {
                write_json(out, type, record.get(), json_layout::one_line);
                out.put('\n');
                progress.accepted();
            } else {
                refused = explain(octets.data(), octets.size(), type, status);
                wrong = {refused.status, refused.offset, refused.path, refused.message};
            }
        }
        if (!good) {
            const std::string message = "line " + std::to_string(lines.number()) + ": " + std::string(wrong.message);
            wrong.message = message;
            write_line_refusal(out, wrong);
            progress.refused();
        }
        if (out.is_terminal()) out.flush();
    }
    out.close();
    return progress.any_refused() ? exit_refused : exit_good;
}

}  // namespace

int run_decode(const decode_options& options) {
    if (options.lines) return decode_lines(options);
    const octets_input in = read_input(options.file, options.from);
    const record_type& type = *options.record;
    record_holder record(type);
    const int status = decode_octets(type, in.data(), in.size(), record.get());
    if (status != zr_ok) {
        print_refusal(in, type, explain(in.data(), in.size(), type, status), options.color);
        return exit_refused;
    }
    output out(options.output);
    write_json(out, type, record.get(), options.compact ? json_layout::one_line : json_layout::indented);
    out.put('\n');
    out.close();
    return exit_good;
}

}  // namespace zr::tool
