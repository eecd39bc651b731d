// The public (length, data) pair in which encodings cross the library's interfaces.
#pragma once

// zr_asn_buffer_t holds `length` octets at `data`. A block that the library hands out comes from malloc and belongs to
// the receiver, who releases it with zr_asn_buffer_free (asn1/zrasnapi.h). The library never frees or changes a buffer
// that it is given as input.
struct zr_asn_buffer_t {
    unsigned int length;  // in octets
    unsigned char* data;  // null when there are none
};
