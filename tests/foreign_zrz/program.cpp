// The forms for texts in the local code set, with a libzrz whose local code set is like no other (zrz/zrz.h): every
// text that is not empty goes through its classes, and on all ways alike.
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "base_idls/attrlist_asn.h"
#include "base_idls/zrnbase_asn.h"
#include "support/caught_stderr.h"
#include "support/hex.h"
#include "support/routes.h"
#include "zrasn/decode.h"

extern size_t texts_converted;  // by the foreign library

namespace {

using namespace zr_test;

void require(bool holds, const std::string& what) {
    if (holds) return;
    std::printf("%s\n", what.c_str());
    std::exit(1);
}

constexpr route decode_call = {"zr::decode", local_entry_points.encode,
                               [](const zr::record_type& type, zr_asn_buffer_t& in, void* out) {
                                   zr::decode_options options;
                                   options.local_texts = true;
                                   zr::decode_report report;
                                   return type.decode(in.data, in.length, out, options, report);
                               }};

// One attribute with a value, nested two lists deep.
octets attribute(const octets& name, const octets& value) {
    const octets values = element(0x30, element(0x30, element(2, {4}) + value + element(4, {'d'})));
    return element(0x30, element(0x30, element(0x30, name + values)));
}
octets text(const std::string& chars) { return element(0x0C, octets(chars.begin(), chars.end())); }

void check_texts() {
    const octets segments = bytes("2c 80 04 02 61 7a 24 04 04 02 5a 2b 00 00");  // "az" "Z+"
    const struct {
        const char* what;
        octets name, value;
        std::string local_name, local_value;
        size_t texts;
        int status;
        bool is_canonical;
    } rows[] = {
        {"letters", text("hugo"), text("Zaz 1\xC3\xA9"), "ivhp", "Aba 1\xC3\xA9", 2, 0, true},
        {"of other lengths", text("a+b"), text("++"), "b++c", "++++", 2, 0, true},
        {"empty ones", text(""), text(""), "", "", 0, 0, true},
        {"segments", segments, text("b"), "baA++", "c", 2, 0, false},
        {"zero octets", text(std::string("a\0b", 3)), text("b"), std::string("b\0c", 3), "c", 2, 0, false},
        {"no such octet", text("a"), text("b\xFF"), "", "", 0, zr_err_conversion, false},
        {"no such octet, and the octets end early", text("\xFF"), bytes("0c 05 61"), "", "", 0, zr_err_data_ends_early,
         false},
        {"no such octet in segments", bytes("2c 06 04 01 61 04 01 ff"), text("a"), "", "", 0, zr_err_conversion, false},
    };
    for (const auto& row : rows) {
        const octets ber = attribute(row.name, row.value);
        for (const route& way : {local_entry_points, local_object_tree, decode_call}) {
            const std::string what = std::string(row.what) + " by " + way.name;
            structure out(zr::record<attrlist_s_t>::type);
            std::memset(out.get(), 0x5A, out.type().size);
            caught_stderr printed;
            texts_converted = 0;
            require(decode(way, ber, out) == row.status, what + ": status");
            const bool prints = row.status == zr_err_conversion && way.decode != decode_call.decode;
            require(printed.take().empty() != prints, what + ": message");
            if (row.status != 0) {
                const octets after(zr::record<attrlist_s_t>::type.size, row.status == zr_err_conversion ? 0 : 0x5A);
                require(std::memcmp(out.get(), after.data(), after.size()) == 0, what + ": structure");
                std::memset(out.get(), 0, after.size());
                continue;
            }
            require(texts_converted >= row.texts && (row.texts != 0 || texts_converted == 0), what + ": conversions");
            const attr_s_t& attr = out.as<attrlist_s_t>().attrs[0];
            require(std::memcmp(attr.name, row.local_name.c_str(), row.local_name.size() + 1) == 0, what + ": name");
            require(attr.values[0].str == row.local_value, what + ": value");
            if (row.is_canonical) require(encode(way, out).ber == ber, what + ": encode");
        }
    }
}

// A record without texts asks for nothing.
void check_uuid() {
    uuid_t id{1, 2, 3, 4, 5, {6}}, back{};
    zr_asn_buffer_t out{};
    texts_converted = 0;
    require(zrAsnEncodeObjLCS(out, id) == 0 && zrAsnDecodeObjLCS(out, back) == 0, "uuid");
    require(back.time_mid == 2 && texts_converted == 0, "uuid: conversions");
    zr_asn_buffer_free(out);
}

// What any octets and structures give, on all ways.
void check_all_records() {
    std::mt19937 random(61);
    size_t good = 0, refused = 0;
    for (const zr::record_type* type : all_records()) {
        for (unsigned i = 0; i < 60; ++i) {
            structure original(*type), expected(*type);
            fill(*type, original.get(), random, {300, 4, i % 4 != 0});
            caught_stderr printed;
            const encoded tree = encode(local_object_tree, original);
            const std::string message = printed.take();
            const encoded other = encode(local_entry_points, original);
            require(other.status == tree.status && other.ber == tree.ber, std::string(type->name) + ": encode");
            require(message.empty() == printed.take().empty(), std::string(type->name) + ": message of encode");
            octets ber = encode(entry_points, original).ber;
            if (i % 3 == 0) ber = rewrite_ber(parse_ber(ber), random);
            if (i % 7 == 0) ber[random() % ber.size()] ^= static_cast<unsigned char>(random());
            const int status = decode(local_object_tree, ber, expected);
            const std::string refusal = printed.take();
            for (const route& way : {local_entry_points, decode_call}) {
                const std::string what = std::string(type->name) + " by " + way.name + ": " + hex(ber);
                structure out(*type);
                require(decode(way, ber, out) == status, what);
                require(difference(*type, out.get(), expected.get()).empty(), what);
            }
            require(printed.take() == refusal, std::string(type->name) + ": message of decode");
            ++(status == 0 ? good : refused);
        }
    }
    require(good > 1500 && refused > 300, "too few of a kind");
}

}  // namespace

int main() {
    check_texts();
    check_uuid();
    check_all_records();
    std::printf("texts go through the foreign library\n");
}
