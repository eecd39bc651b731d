// Decoding a structure whose texts are to be in the local code set: by a local reader or, octets in another form, by
// the general one, which marks texts for a walk that converts them.
#include <cstdlib>
#include <cstring>

#include "asn1/codec/local_forms.h"
#include "asn1/codec/walk.h"
#include "asn1/codec/wipe.h"
#include "asn1/envelope.h"

namespace zr {

namespace {

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
        for (uint32_t i = 0; i < count; ++i) {
            auto*& text = place<char*>(place_at(at.field, at.first, i), 0);
            if (text == nullptr) continue;  // it found no memory
            const auto mark = load<text_mark>(text);
            if (mark.at > uncounted.at) return false;
            text_at = mark.at;
            const auto converted = conversion.convert(text + sizeof mark, mark.length);
            replace_text(text, sizeof mark + mark.length - 1, converted);
        }
        return true;
    }
    void begin(const place_in_one& at, uint32_t& count) const { count = place_count(at.field, at.first); }
    bool enter(const place_in_one& at, uint32_t i, void*& first, void*&) const {
        first = value_at(at.field, at.first, i);
        return true;
    }
    bool end(const place_in_one&) const { return true; }
};

// Null when the general reader has to judge the octets: also where a text cannot be converted, because they may be
// refused for another reason.
octet_position read_quickly(unfinished& made, text_conversion& conversion, input in) {
    try {
        return made.read_local(in.at, in.end, conversion);
    } catch (const zr_asn_exception& exception) {
        if (exception.code != zr_err_conversion) throw;
        made.clear();
        return nullptr;
    }
}

}  // namespace

void replace_text(char*& text, size_t room, const text_conversion::result& converted) {
    const size_t length = converted.getLength();
    if (length <= room) {
        std::memmove(text, converted.getChars(), length);
    } else {
        auto* made = length < SIZE_MAX ? static_cast<char*>(std::malloc(length + 1)) : nullptr;
        if (made != nullptr) std::memcpy(made, converted.getChars(), length);
        wipe_block(text);  // it may be a secret
        std::free(text);
        text = made;
    }
    if (text != nullptr) text[length] = '\0';
}

int read_local_texts(const record_type& type, input in, unfinished& made, text_conversion& conversion,
                     general_reading& reading, uint32_t& text_at) {
    if (reading.limits == nullptr) {
        reading.behind = read_quickly(made, conversion, in);
        if (reading.behind != nullptr) return 0;
        definite_form definite(type.codec->has_secrets);
        if (definite.write(in.at, in.end, type.module) && read_quickly(made, conversion, definite.copy()) != nullptr) {
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

int record_type::decode_lcs(const zr_asn_buffer_t& in, void* out) const {
    if (!codec->has_texts()) return decode(in, out);
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
