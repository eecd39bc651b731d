// Uses records that the library does not know: every operation on them, and their octets.
#include <cstdio>
#include <cstring>

#include "asn1/record/operations.h"
#include "own_record.h"
#include "zrasn/guard.h"

static int failed(const char* what) {
    std::fprintf(stderr, "own record: %s\n", what);
    return 1;
}

int main() {
    char text[] = "to be read";
    int32_t marks[] = {1, -2, 300};
    note_t note{{1, 2, 3, 4, 5, {6, 7, 8, 9, 10, 11}}, text, 3, marks};
    shelf_t inner[] = {{nullptr, 0, 0, nullptr}, {&note, -1, 0, nullptr}};
    shelf_t shelf{nullptr, 7, 2, inner};

    zr::encoding octets;
    if (zrAsnEncodeObj(octets.out(), shelf) != 0) return failed("not encoded");
    const unsigned char expected[] =
        "\x04\x02\xAC\xDC\x30\x46\x02\x01\x07\x30\x41\x30\x05\x02\x01\x00\x30\x00\x30\x38\x30\x31\x30\x17\x02\x01\x01"
        "\x02\x01\x02\x02\x01\x03\x02\x01\x04\x02\x01\x05\x04\x06\x06\x07\x08\x09\x0A\x0B\x0C\x0Ato be read\x30\x0A\x02"
        "\x01\x01\x02\x01\xFE\x02\x02\x01\x2C\x02\x01\xFF\x30\x00";
    if (octets.size() != sizeof expected - 1 || std::memcmp(octets.data(), expected, octets.size()) != 0)
        return failed("encoded otherwise");

    zr::decoded<shelf_t> back;
    bool same = false;
    if (zrAsnDecodeObj(octets.in(), back.out()) != 0) return failed("not decoded");
    if (zr::equal(shelf, *back, same) != 0 || !same) return failed("decoded otherwise");

    zr::decoded<shelf_t> copy;
    if (zr::copy(*back, copy.out()) != 0) return failed("not copied");
    ++copy->shelves[1].label->marks[2];
    int order = 0;
    if (zr::order(*back, *copy, order) != 0 || order >= 0) return failed("a copy that was changed is not behind");

    octets.in().length -= 1;
    if (zrAsnDecodeObj(octets.in(), back.out()) != zr_err_data_ends_early) return failed("cut octets are not refused");
    std::puts("own record");
    return 0;
}
