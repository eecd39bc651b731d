// Records of somebody else's program: a corner without blocks, a note, and a shelf that holds values of every kind in
// every way that records may.
#pragma once

#include "asn1/record/record.h"
#include "asn1/record/registry.h"
#include "base_idls/zrnbase_asn.h"

// clang-format off
struct corner_t {
    int32_t row;
    uint8_t mark[2];
};
ZR_RECORD(shelves, corner_t, asn_own_corner_t,
          zr::integer(ZR_M(row)),
          zr::fixed_octets(ZR_M(mark)));

struct note_t {
    uuid_t id;
    char* text;
    uint16_t mark_count;
    int32_t* marks;
};
ZR_RECORD(shelves, note_t, asn_own_note_t,
          zr::nested(ZR_M(id)),
          zr::text(ZR_M(text)),
          zr::list(ZR_M(mark_count), ZR_M(marks)));

struct shelf_t {
    note_t* label;
    int32_t room;
    char* key;
    char* stamp;
    corner_t corner;
    uint32_t cover_length;
    unsigned char* cover;
    uint32_t lock_length;
    unsigned char* lock;
    uint32_t name_count;
    char** names;
    note_t* pins[2];
    uint32_t loose_count;
    note_t** loose;
    uint32_t shelf_count;
    shelf_t* shelves;
};
ZR_RECORD(shelves, shelf_t, asn_own_shelf_t,
          zr::version(),
          zr::optional_nested(ZR_M(label)),
          zr::integer(ZR_M(room)),
          zr::secret(zr::text(ZR_M(key))),
          zr::stored_text(ZR_M(stamp)),
          zr::nested(ZR_M(corner)),
          zr::octets(ZR_M(cover_length), ZR_M(cover)),
          zr::optional_octets(ZR_M(lock_length), ZR_M(lock)),
          zr::list(ZR_M(name_count), ZR_M(names)),
          zr::slots(ZR_M(pins)),
          zr::list(ZR_M(loose_count), ZR_M(loose)),
          zr::list(ZR_M(shelf_count), ZR_M(shelves)));
// clang-format on

// The records of this program, to walk and to search by name.
extern const zr::record_module zr_module_shelves;
inline zr::module_list own_modules() {
    static constexpr const zr::record_module* list[] = {&zr_module_shelves};
    return {list, 1};
}
