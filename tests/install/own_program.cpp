// Uses records that the library does not know: every operation on them, their octets, and a registry of their own.
#include <cstdio>
#include <cstring>

#include "asn1/record/operations.h"
#include "own_record.h"
#include "zrasn/decode.h"

// The octets of the note below.
#define NOTE                                                                                                   \
    "\x30\x31\x30\x17\x02\x01\x01\x02\x01\x02\x02\x01\x03\x02\x01\x04\x02\x01\x05\x04\x06\x06\x07\x08\x09\x0A" \
    "\x0B\x0C\x0A\x74\x6F\x20\x62\x65\x20\x72\x65\x61\x64\x30\x0A\x02\x01\x01\x02\x01\xFE\x02\x02\x01\x2C"

static int failed(const char* what) {
    std::fprintf(stderr, "own record: %s\n", what);
    return 1;
}

// The entry points: encode, decode, and both for the local code set, which is ASCII here.
template <class S>
static int goes_out_and_back(const S& in, const unsigned char* expected, size_t length) {
    zr::encoding octets;
    if (zrAsnEncodeObj(octets.out(), in) != 0) return failed("not encoded");
    if (octets.size() != length || std::memcmp(octets.data(), expected, length) != 0) {
        for (unsigned i = 0; i < octets.size(); ++i)
            std::fprintf(stderr, "%02X", octets.data()[i]);
        return failed("encoded otherwise");
    }
    zr::decoded<S> back;
    bool same = false;
    if (zrAsnDecodeObj(octets.in(), back.out()) != 0) return failed("not decoded");
    if (zr::equal(in, *back, same) != 0 || !same) return failed("decoded otherwise");

    zr::encoding local;
    if (zrAsnEncodeObjLCS(local.out(), in) != 0 || local.size() != length)
        return failed("not encoded from local texts");
    if (zrAsnDecodeObjLCS(local.in(), back.out()) != 0 || zr::equal(in, *back, same) != 0 || !same)
        return failed("not decoded to local texts");

    zr::decode_options options;
    options.strict = true;
    zr::decode_report report;
    if (zr::decode(octets.data(), octets.size(), back.out(), options, report) != 0 || report.consumed != length)
        return failed("not decoded as octets from outside");
    zr::packed<S> packed;
    if (packed.decode(octets.data(), octets.size(), options, report) != 0) return failed("not decoded into one block");
    if (zr::equal(in, *packed, same) != 0 || !same) return failed("decoded into one block otherwise");

    // By the name alone, without the type.
    const zr::record_type* type = zr::find_record(own_modules(), zr::record<S>::name);
    if (type != &zr::record<S>::type || zr::find_record(zr::record<S>::name) != nullptr)
        return failed("not registered");
    zr::refusal found;
    if (type->examine(octets.data() + 4, length - 4, found) != 0) return failed("its encoding is refused");
    if (type->examine(octets.data() + 4, length - 5, found) != zr_err_data_ends_early)
        return failed("cut octets are not refused");

    // The tree of objects gives the same octets.
    zr::binding<S> tree(zr_normal);
    zr::encoding again;
    if (tree.encode_obj(in, again.out(), 2) != 0 || again.size() != length ||
        std::memcmp(again.data(), expected, length) != 0)
        return failed("the binding encodes otherwise");
    if (tree.decode_obj(back.out(), again.in(), 2) != 0 || zr::equal(in, *back, same) != 0 || !same)
        return failed("the binding decodes otherwise");
    return 0;
}

int main() {
    const corner_t corner{-2, {0xAA, 0xBB}};
    const unsigned char corner_octets[] = "\x04\x02\xAC\xDC\x30\x07\x02\x01\xFE\x04\x02\xAA\xBB";
    if (goes_out_and_back(corner, corner_octets, sizeof corner_octets - 1) != 0) return 1;

    char text[] = "to be read", key[] = "key", stamp[] = "st";
    int32_t marks[] = {1, -2, 300};
    unsigned char cover[] = {0xC0}, lock[] = {0xD0, 0xD1};
    char* names[] = {key, stamp};
    note_t note{{1, 2, 3, 4, 5, {6, 7, 8, 9, 10, 11}}, text, 3, marks};
    note_t* loose[] = {&note};
    shelf_t inner{};
    inner.room = -1;
    shelf_t shelf{&note, 7, key, stamp, corner, 1, cover, 2, lock, 2, names, {nullptr, &note}, 1, loose, 1, &inner};
    const unsigned char shelf_octets[] =
        "\x04\x02\xAC\xDC\x30\x81\xEC\x02\x01\x01" NOTE
        "\x02\x01\x07\x0C\x03\x6B\x65\x79\x04\x03\x73\x74\x00\x30\x07\x02\x01\xFE\x04\x02\xAA\xBB\x04\x01\xC0\x04\x02"
        "\xD0\xD1\x30\x09\x0C\x03\x6B\x65\x79\x0C\x02\x73\x74\x30\x35\x05\x00" NOTE "\x30\x33" NOTE
        "\x30\x20\x30\x1E\x02\x01\x01\x02\x01\xFF\x0C\x00\x04\x01\x00\x30\x07\x02\x01\x00\x04\x02\x00\x00\x04\x00\x30"
        "\x00\x30\x00\x30\x00\x30\x00";
    if (goes_out_and_back(shelf, shelf_octets, sizeof shelf_octets - 1) != 0) return 1;

    zr::decoded<shelf_t> copy;
    if (zr::copy(shelf, copy.out()) != 0) return failed("not copied");
    ++copy->shelves[0].room;
    int order = 0;
    if (zr::order(shelf, *copy, order) != 0 || order >= 0) return failed("a copy that was changed is not behind");
    std::puts("own record");
    return 0;
}
