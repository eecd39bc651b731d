#include "own_record.h"

#include "asn1/codec/define_record.h"

ZR_DEFINE_MODULE(shelves, corner_t, note_t, shelf_t);
