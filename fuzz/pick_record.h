// Which record an input of a fuzz target is about.
#pragma once

#include <cstdint>
#include <vector>

#include "support/records.h"

namespace zr_test {

// Seeds pick a record by a hash of its name (FNV-1a) in two octets, so that they stay with it when there are more; any
// other number picks some record.
inline const zr::record_type& pick_record(const uint8_t* number) {
    static const auto table = [] {
        const std::vector<const zr::record_type*> records = all_records();
        std::vector<const zr::record_type*> picked(0x10000);
        for (size_t i = 0; i < picked.size(); ++i)
            picked[i] = records[i % records.size()];
        for (const zr::record_type* type : records) {
            uint32_t hash = 0x811C9DC5;
            for (const char* c = type->name; *c != 0; ++c)
                hash = (hash ^ static_cast<unsigned char>(*c)) * 0x01000193;
            picked[(hash >> 16) ^ (hash & 0xFFFF)] = type;
        }
        return picked;
    }();
    return *table[number[0] << 8u | number[1]];
}

// The record of the encoding behind an input's first two octets. Each target that ber_mutator.cpp makes inputs for
// says it.
const zr::record_type& record_of(const uint8_t* head);

}  // namespace zr_test
