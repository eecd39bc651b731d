// The entry points of a record for texts in the local code set. What decides is the record in UTF-8 or, for encoding,
// with the texts as they are: it is written and read as by the plain entry points, and the texts of the encoding are
// converted on the way where that changes them.
#include <cstdlib>
#include <cstring>
#include <memory>

#include "asn1/asnbase/buffer.h"
#include "asn1/codec/encoding.h"
#include "asn1/codec/local_forms.h"
#include "asn1/codec/transcode.h"
#include "asn1/codec/walk.h"
#include "asn1/codec/wipe.h"
#include "asn1/envelope.h"

namespace zr {

namespace {

bool texts_stay(const record_codec& codec, const unsigned char* at, const unsigned char* end) {
    return text_conversion::keeps_ascii && codec.texts_are_ascii(at, end);
}

// Gives an envelope to the caller with its texts in UTF-8.
class converted_to_utf8 final : public encoding_target {
public:
    converted_to_utf8(zr_asn_buffer_t& out, const record_codec& codec, text_conversion& conversion)
        : out_(out), codec_(codec), conversion_(conversion) {}

    void take(const unsigned char* envelope, size_t length) override {
        if (!convert(envelope, length)) out_.take(envelope, length);
    }
    void take(block owner, size_t room, unsigned char* envelope, size_t length) override {
        if (!convert(envelope, length)) return out_.take(std::move(owner), room, envelope, length);
        if (codec_.has_secrets) wipe(owner.get(), room);
    }

private:
    // False when the envelope stays as it is.
    bool convert(const unsigned char* envelope, size_t length) {
        const unsigned char* const contents = envelope + envelope_header_octets;
        const unsigned char* const end = envelope + length;
        if (texts_stay(codec_, contents, end)) return false;
        transcoder texts(conversion_, codec_.has_secrets);
        if (!texts.convert(contents, end)) return false;
        const uint64_t octets = texts.length() + envelope_header_octets;
        block made = allocate_encoding(octets);
        unsigned char* const start = made.get();
        writer sink(start + octets, start);
        texts.write(sink);
        write_envelope_header(sink, envelope[1]);
        out_.take(std::move(made), static_cast<size_t>(octets), start, static_cast<size_t>(octets));
        return true;
    }

    handed_out out_;
    const record_codec& codec_;
    text_conversion& conversion_;
};

// Goes through a structure that cannot be encoded and finds a text that cannot be converted before what was found.
struct text_judge {
    using place_in_one = walk_place<const void, const void>;
    text_conversion& conversion;

    bool values(const place_in_one& at) const {
        if (at.field.value != value_kind::text) return true;
        const uint32_t count = place_count(at.field, at.first);
        for (uint32_t i = 0; i < count; ++i) {
            const char* text = text_in(place_at(at.field, at.first, i));
            conversion.convert(text, std::strlen(text));
        }
        return true;
    }
    bool begin(const place_in_one& at, uint32_t& count) const {
        count = place_count(at.field, at.first);
        return true;
    }
    bool enter(const place_in_one& at, uint32_t i, const void*& first, const void*&) const {
        first = value_at(at.field, at.first, i);
        return first != nullptr || at.field.held != holding::pointer_list;
    }
    bool end(const place_in_one&) const { return true; }
};

// Converts the texts of a structure that were read with marks. Nothing behind the beginning of a list with too many
// elements is looked at.
struct text_converter {
    using place_in_one = walk_place<void, void>;
    text_conversion& conversion;
    const uncounted_list& uncounted;
    uint32_t& text_at;

    bool values(const place_in_one& at) const {
        if (at.field.value != value_kind::text) return true;
        const uint32_t count = place_count(at.field, at.first);
        for (uint32_t i = 0; i < count; ++i)
            if (!convert(at, place<char*>(place_at(at.field, at.first, i), 0))) return false;
        return true;
    }
    bool begin(const place_in_one& at, uint32_t& count) const {
        count = place_count(at.field, at.first);
        return true;
    }
    bool enter(const place_in_one& at, uint32_t i, void*& first, void*&) const {
        first = value_at(at.field, at.first, i);
        return true;
    }
    bool end(const place_in_one&) const { return true; }

private:
    bool convert(const place_in_one& at, char*& text) const {
        if (text == nullptr) return true;  // it found no memory
        text_mark mark{};
        std::memcpy(&mark, text, sizeof mark);
        if (mark.at > uncounted.at) return false;
        text_at = mark.at;
        const auto converted = conversion.convert(text + sizeof mark, mark.length);
        const size_t length = converted.getLength();
        if (length < sizeof mark + mark.length) {
            std::memmove(text, converted.getChars(), length);
        } else {
            auto* made = length < SIZE_MAX ? static_cast<char*>(std::malloc(length + 1)) : nullptr;
            if (made != nullptr) std::memcpy(made, converted.getChars(), length);
            if (at.field.secret) wipe_block(text);
            std::free(text);
            text = made;
        }
        if (text != nullptr) text[length] = '\0';
        return true;
    }
};

// Reads octets in the form that the library writes, and returns where they end; null when the general way has to judge
// them.
octet_position read_quickly(unfinished& made, const record_codec& codec, text_conversion& conversion, input in) {
    if (texts_stay(codec, in.at, in.end)) return made.read_quickly(in.at, in.end);
    transcoder texts(conversion, codec.has_secrets);
    try {
        if (!texts.convert(in.at, in.end)) return nullptr;
    } catch (const zr_asn_exception& exception) {
        if (exception.code != zr_err_conversion) throw;
        return nullptr;  // the octets may be refused for another reason
    }
    // A writer stores a few octets before those that count: there has to be room for an envelope's header.
    const block octets = allocate_encoding(texts.length() + envelope_header_octets);
    const unsigned char* const first = octets.get() + envelope_header_octets;
    unsigned char* const stop = octets.get() + envelope_header_octets + texts.length();
    writer sink(stop, octets.get());
    texts.write(sink);
    const octet_position behind = made.read_quickly(first, stop);
    if (codec.has_secrets) wipe(octets.get(), static_cast<size_t>(stop - octets.get()));
    return behind != nullptr ? in.at + texts.converted() : nullptr;
}

}  // namespace

int read_local_texts(const record_type& type, input in, unfinished& made, text_conversion& conversion,
                     general_reading& reading, uint32_t& text_at) {
    if (reading.limits == nullptr) {
        reading.behind = read_quickly(made, *type.codec, conversion, in);
        if (reading.behind != nullptr) return 0;
        definite_form definite(type.codec->has_secrets);
        if (definite.write(in.at, in.end, type.module) &&
            read_quickly(made, *type.codec, conversion, definite.copy()) != nullptr) {
            reading.behind = definite.behind();
            return 0;
        }
    }
    reading.marks_texts = true;
    if (int status = read_any_form(type, in, made.get(), reading)) return status;
    walk_records<void, void>(type, made.get(), nullptr, text_converter{conversion, reading.uncounted, text_at});
    if (reading.uncounted.module != nullptr) throw_memory_error(reading.uncounted.module);
    return 0;
}

int record_type::encode_lcs(zr_asn_buffer_t& out, const void* in) const {
    if (codec->texts_are_ascii == nullptr) return encode(out, in);
    text_conversion conversion(text_direction::local_to_utf8, codec->has_secrets);
    if (conversion.changes_nothing()) return encode(out, in);
    return guarded([&] {
        try {
            converted_to_utf8 target(out, *codec, conversion);
            write_encoding(*this, in, envelope_version, target);
        } catch (const zr_asn_memexception&) {
            walk_records<const void, const void>(*this, in, nullptr, text_judge{conversion});
            throw;
        }
        return 0;
    });
}

int record_type::decode_lcs(const zr_asn_buffer_t& in, void* out) const {
    if (codec->texts_are_ascii == nullptr) return decode(in, out);
    text_conversion conversion(text_direction::utf8_to_local, codec->has_secrets);
    if (conversion.changes_nothing()) return decode(in, out);
    const unsigned char* contents = nullptr;
    if (int status = open_envelope(in, envelope_version, contents)) return status;
    const unsigned char* const end = in.data + in.length;
    const int status = guarded([&] {
        unfinished made(*this);
        general_reading reading;
        uint32_t text_at = 0;
        if (int read = read_local_texts(*this, {contents, end}, made, conversion, reading, text_at)) return read;
        made.hand_on(out);
        return 0;
    });
    if (clears_structure(status)) std::memset(out, 0, size);
    return status;
}

}  // namespace zr
