// Scope guards for C++ callers: what an entry point allocates is released when the guard's scope ends.
//
//     zr::encoding octets;
//     if (int status = zrAsnEncodeObj(octets.out(), list)) return status;
//     zr::decoded<attrlist_s_t> copy;
//     if (int status = zrAsnDecodeObj(octets.in(), copy.out())) return status;
//     use(copy->attr_count);
//
// Guards can be moved, not copied; one that was moved from is empty. Nothing here throws.
#pragma once

#include "asn1/zrasnapi.h"

namespace zr {

// encoding owns the block of a public buffer and releases it with zr_asn_buffer_free.
class encoding {
public:
    encoding() = default;
    // Takes over a buffer that the caller owns.
    explicit encoding(const zr_asn_buffer_t& owned) noexcept : buffer_(owned) {}
    encoding(encoding&& other) noexcept : buffer_(other.release()) {}
    encoding& operator=(encoding&& other) noexcept {
        if (this != &other) out() = other.release();
        return *this;
    }
    encoding(const encoding&) = delete;
    encoding& operator=(const encoding&) = delete;
    ~encoding() { zr_asn_buffer_free(buffer_); }

    // The buffer for an entry point to fill: what it held is released first.
    zr_asn_buffer_t& out() noexcept {
        zr_asn_buffer_free(buffer_);
        return buffer_ = {};
    }
    // The buffer for an entry point to read.
    zr_asn_buffer_t& in() noexcept { return buffer_; }

    // Both: the octets, and how many they are.
    const unsigned char* data() const noexcept { return buffer_.data; }
    unsigned int size() const noexcept { return buffer_.length; }

    // Hands the block to the caller, who releases it.
    zr_asn_buffer_t release() noexcept {
        const zr_asn_buffer_t owned = buffer_;
        buffer_ = {};
        return owned;
    }

private:
    zr_asn_buffer_t buffer_{};
};

// decoded<S> owns what a decode allocated inside a structure S, and releases it with zrAsnFreeObj. S is any structure
// that has the entry points. All members are zero at the start, and after a decode into out() that failed, whatever its
// status.
template <class S>
class decoded {
public:
    decoded() = default;
    decoded(decoded&& other) noexcept : value_(other.release()) {}
    decoded& operator=(decoded&& other) noexcept {
        if (this != &other) out() = other.release();
        return *this;
    }
    decoded(const decoded&) = delete;
    decoded& operator=(const decoded&) = delete;
    ~decoded() { zrAsnFreeObj(value_); }

    // The structure for an entry point to fill: what it held is released first.
    S& out() noexcept {
        zrAsnFreeObj(value_);
        return value_ = S{};
    }

    // Only to read: a decode is given out(), or what the structure held would be lost.
    const S& operator*() const noexcept { return value_; }
    // To change members of it.
    S* operator->() noexcept { return &value_; }
    // To read them.
    const S* operator->() const noexcept { return &value_; }

    // To change what is held (zrasn/edit.h).
    S& edit() noexcept { return value_; }

    // Hands the contents to the caller, who releases them with zrAsnFreeObj.
    S release() noexcept {
        const S owned = value_;
        value_ = S{};
        return owned;
    }

private:
    S value_{};
};

}  // namespace zr
