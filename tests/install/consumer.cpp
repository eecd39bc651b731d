// A program of somebody else's: knows the library only by its public headers.
#include <cstdio>
#include <cstring>

#include "asn1/zrasnapi.h"
#include "asn1/zrasnutf8.h"
#include "zrasn/decode.h"
#include "zrasn/records.h"
#include "zrz/zrz.h"

#ifdef __cpp_exceptions
// A text that has no form in UTF-8 is refused with an exception that crosses from one library into the other and from
// there into this program.
static bool refuses_what_is_not_ascii() {
    char text[] = "\xE9";
    zrasnUTF8String field(zr_local_code_set);
    try {
        field.set_value(text);
    } catch (const zr_asn_exception& exception) {
        return exception.code == zr_err_conversion;
    }
    return false;
}
#endif

int main() {
#ifdef __cpp_exceptions
    if (!refuses_what_is_not_ascii()) return 1;
#endif
    uuid_t in = {0xffffffff, 0x8000, 0x7f, 0, 0xff, {1, 2, 3, 4, 5, 6}};
    uuid_t out = {};
    zr_asn_buffer_t encoded = {};
    if (zrAsnEncodeObj(encoded, in) != 0) return 1;
    int status = zrAsnDecodeObj(encoded, out);
    bool same = in.time_low == out.time_low && in.time_mid == out.time_mid &&
                in.time_hi_and_version == out.time_hi_and_version &&
                in.clock_seq_hi_and_reserved == out.clock_seq_hi_and_reserved &&
                in.clock_seq_low == out.clock_seq_low && std::memcmp(in.node, out.node, sizeof in.node) == 0;
    zrAsnFreeObj(out);
    zr::packed<uuid_t> packed;
    same = same && packed.decode(encoded) == 0 && packed->node[5] == 6;
    zr_asn_buffer_free(encoded);

    // An object of the runtime, and a record with blocks.
    asn_attrlist_t tree(zr_normal);
    char name[] = "name";
    attr_s_t attr{};
    attr.name = name;
    attrlist_s_t list{};
    list.attr_count = 1;
    list.attrs = &attr;
    zr::encoding octets;
    zr::decoded<attrlist_s_t> back;
    same = same && tree.encode_obj(list, octets.out(), 2) == 0 && zrAsnDecodeObj(octets.in(), back.out()) == 0 &&
           std::strcmp(back->attrs[0].name, name) == 0;
    std::puts(same ? "same" : "different");
    return status == 0 && same ? 0 : 1;
}
