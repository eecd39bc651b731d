// Uses the record that docs/adding-a-record.md adds.
#include <cstdio>
#include <cstring>

#include "asn1/record/registry.h"
#include "base_idls/pobj_asn.h"

static int failed(const char* what) {
    std::fprintf(stderr, "%s\n", what);
    return 1;
}

int main() {
    unsigned int records = 0;
    for (const zr::record_module* module : zr::modules())
        records += module->record_count;
    const zr::record_type* type = zr::find_record("note_s_t");
    if (records < 66 || type == nullptr || type != zr::find_record("asn_note_t")) return failed("not in the registry");
    if (type->field_count != 2 || std::strcmp(type->module, "pobj_asn") != 0) return failed("registered otherwise");

    char text[] = "to be read";
    int32_t marks[] = {1, -2, 300};
    note_s_t note{text, 3, marks};
    zr_asn_buffer_t octets{};
    if (zrAsnEncodeObj(octets, note) != 0) return failed("not encoded");
    const unsigned char expected[] =
        "\x04\x02\xAC\xDC\x30\x18\x0C\x0Ato be read\x30\x0A\x02\x01\x01\x02\x01\xFE\x02\x02\x01\x2C";
    if (octets.length != sizeof expected - 1 || std::memcmp(octets.data, expected, octets.length) != 0)
        return failed("encoded otherwise");

    note_s_t copy{};
    if (type->decode(octets, &copy) != 0) return failed("not decoded");
    const bool same =
        std::strcmp(copy.text, text) == 0 && copy.count == 3 && std::memcmp(copy.marks, marks, sizeof marks) == 0;
    zrAsnFreeObj(copy);
    zr_asn_buffer_free(octets);
    return same ? 0 : failed("decoded otherwise");
}
