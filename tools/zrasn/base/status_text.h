// What the library's statuses are called and mean: the library itself holds no texts for them.
#pragma once

namespace zr::tool {

struct status_row {
    int status;
    const char* name;  // of the constant in asn1/status.h
    const char* text;  // one sentence's worth, without a full stop
};

// All statuses, 0 first, ascending.
struct status_rows {
    const status_row* rows;
    unsigned count;
    const status_row* begin() const { return rows; }
    const status_row* end() const { return rows + count; }
};
status_rows statuses();

// "unknown" and "unknown status" for any other number.
const char* status_name(int status);
const char* status_text(int status);

}  // namespace zr::tool
