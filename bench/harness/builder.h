// Builds the structures that are measured: the same ones on every machine and in every run.
#pragma once

#include <cstdint>
#include <cstring>
#include <memory>
#include <vector>

namespace bench {

// builder makes texts, byte strings and arrays, each in a block of its own from the heap, as a caller's are, and owns
// them. Their contents come from a generator with a fixed start.
class builder {
public:
    // number gives a number below `limit`.
    uint32_t number(uint32_t limit) {
        state_ ^= state_ << 13;
        state_ ^= state_ >> 7;
        state_ ^= state_ << 17;
        return static_cast<uint32_t>((state_ >> 16) % limit);
    }
    uint32_t between(uint32_t least, uint32_t most) { return least + number(most - least + 1); }

    char* text(uint32_t least, uint32_t most) {
        const uint32_t length = between(least, most);
        char* made = array<char>(length + 1);
        for (uint32_t i = 0; i < length; ++i)
            made[i] = "abcdefghijklmnopqrstuvwxyz0123456789-/."[number(39)];
        return made;
    }
    char* text(const char* contents) {
        return static_cast<char*>(std::memcpy(array<char>(std::strlen(contents) + 1), contents, std::strlen(contents)));
    }
    unsigned char* octets(uint32_t length) {
        unsigned char* made = array<unsigned char>(length);
        for (uint32_t i = 0; i < length; ++i)
            made[i] = static_cast<unsigned char>(number(256));
        return made;
    }
    template <class T>
    T* array(size_t count) {
        owned_.emplace_back(new unsigned char[count * sizeof(T)]());
        return reinterpret_cast<T*>(owned_.back().get());
    }

private:
    uint64_t state_ = 0x9E3779B97F4A7C15;
    std::vector<std::unique_ptr<unsigned char[]>> owned_;
};

}  // namespace bench
