// What the statuses are called and mean.
#pragma once

#include "asn1/export.h"

namespace zr {

// A status with its name and meaning.
struct status_row {
    int status;        // 0 or one of asn1/status.h
    const char* name;  // of the constant in asn1/status.h
    const char* text;  // one sentence's worth, without a full stop
};

// All statuses, 0 first, ascending.
struct status_rows {
    const status_row* rows;  // ascending
    unsigned count;          // of the rows
    const status_row* begin() const { return rows; }
    const status_row* end() const { return rows + count; }
};
ZR_API status_rows statuses();

// Both: "unknown" and "unknown status" for any other number.
ZR_API const char* status_name(int status);
ZR_API const char* status_text(int status);

// The name without "zr_" and "err_", such as "no_match"; "ok" for 0. Keys never change.
ZR_API const char* status_key(int status);

}  // namespace zr
