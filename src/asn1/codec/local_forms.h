// Reading a record with texts in the local code set.
#pragma once

#include "asn1/codec/local_texts.h"
#include "asn1/codec/unfinished.h"

namespace zr {

// read_local_texts fills `made`, which is empty. Returns 0 or a status; throws zr_asn_memexception, and
// zr_asn_exception (275063211) for the text whose value lies at `text_at`. The octets are judged whole before any text
// is.
int read_local_texts(const record_type& type, input in, unfinished& made, text_conversion& conversion,
                     general_reading& reading, uint32_t& text_at);

}  // namespace zr
