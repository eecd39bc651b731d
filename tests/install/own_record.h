// Records of somebody else's program: a note, and a shelf of notes and of further shelves.
#pragma once

#include "asn1/record/record.h"
#include "base_idls/zrnbase_asn.h"

// clang-format off
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
    uint32_t shelf_count;
    shelf_t* shelves;
};
ZR_RECORD(shelves, shelf_t, asn_own_shelf_t,
          zr::optional_nested(ZR_M(label)),
          zr::integer(ZR_M(room)),
          zr::list(ZR_M(shelf_count), ZR_M(shelves)));
// clang-format on
