// Members marked secret: passwords and the like are shown only when asked for.
#pragma once

#include "asn1/record/record_type.h"

namespace zr::json {

enum class secret_values { hidden, shown };

// What stands for a secret that is not shown.
constexpr char not_shown[] = "***";

// Whether a record, or one that it contains, has a secret member: then the octets of its encodings are not shown
// either.
inline bool has_secrets(const record_type& type) {
    for (const field& member : type) {
        if (member.secret) return true;
        if (member.record != nullptr && member.record != &type && has_secrets(*member.record)) return true;
    }
    return false;
}

}  // namespace zr::json
