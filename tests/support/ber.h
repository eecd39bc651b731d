// Octets into objects and back, as tables of tests write them.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "asn1/asnbase.h"
#include "support/hex.h"

namespace zr_test {

// input is a cursor over a block of exactly the octets given, so that a sanitizer sees the first one read beyond.
class input : public zr_r_buffer_t {
public:
    explicit input(std::string_view text) : input(bytes(text)) {}
    explicit input(const std::vector<unsigned char>& octets) : octets_(octets.begin(), octets.end()) {
        set(octets_.data(), static_cast<unsigned int>(octets_.size()));
    }
    input(const input&) = delete;
    input& operator=(const input&) = delete;

    // How far the cursor has moved; -1 when position and count do not agree.
    long consumed() const {
        const auto moved = current() - octets_.data();
        return static_cast<size_t>(moved) + remaining() == octets_.size() ? static_cast<long>(moved) : -1;
    }

private:
    std::vector<unsigned char> octets_;
};

inline std::string hex(const zr_r_buffer_t& octets) { return hex(octets.current(), octets.remaining()); }

// What asnwrite gives: octets, or its status as text.
inline std::string written(const zr_asn_object& object) {
    zr_buffer_t output(zr_normal);
    const int status = object.asnwrite(output);
    return status != 0 ? std::to_string(status) : hex(output);
}

// What asnread answers for the octets.
inline int read(zr_asn_object& object, std::string_view text) {
    input octets(text);
    return object.asnread(octets);
}

// What asnread answers for the octets, and how far it moves the cursor.
struct outcome {
    int status;
    long consumed;
};

inline outcome read_from(zr_asn_object& object, const std::vector<unsigned char>& octets) {
    input cursor(octets);
    const int status = object.asnread(cursor);
    return {status, cursor.consumed()};
}

inline outcome read_from(zr_asn_object& object, std::string_view text) { return read_from(object, bytes(text)); }

// The octets that an object holds, each of so many of its units, or the status as text.
template <class T>
std::string contents(const T& object, unsigned int unit = 1) {
    unsigned char* octets = nullptr;
    unsigned int count = 0;
    const int status = object.get_value(octets, count);
    return status != 0 ? std::to_string(status) : hex(octets, (count + unit - 1) / unit);
}

}  // namespace zr_test
