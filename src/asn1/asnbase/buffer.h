// Read cursors and growable output buffers.
#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "asn1/export.h"

// The mode that every object and buffer is built with.
enum security_t : int {
    zr_normal = 0,
    zr_secure = 1,          // buffers and values are overwritten with zeros before their storage is released or moved
    zr_local_code_set = 2,  // texts cross the interface in the process's local code set; storage as with zr_normal
};

// Replaceable allocation, copied by value into every buffer that is given one. All zero means the C library's
// functions. The plain functions count when `use_plain` is not 0, else the context functions when `use_context` is not
// 0; a chosen function must not be null.
struct ZR_API zr_memory_funcs_t {
    int use_plain;  // the plain functions count
    // All as the C library's functions of those names.
    void* (*plain_malloc)(size_t octets);
    void (*plain_free)(void* block);
    void* (*plain_realloc)(void* block, size_t octets);
    void* (*plain_calloc)(size_t count, size_t octets);
    int use_context;  // the context functions count, if the plain ones do not
    // The same with the context before the others.
    void* (*context_malloc)(void* context, size_t octets);
    void (*context_free)(void* context, void* block);
    void* (*context_realloc)(void* context, void* block, size_t octets);
    void* (*context_calloc)(void* context, size_t count, size_t octets);
    void* context;  // what those are given

    // All give what the chosen functions answer.
    void* malloc(unsigned int octets) const;
    void free(void* block) const;
    void* realloc(void* block, unsigned int octets) const;
    void* calloc(unsigned int count, unsigned int octets) const;
};

namespace zr {

// Overwrites `octets` octets with zeros in a way that no compiler removes.
ZR_API void wipe(void* block, size_t octets);

}  // namespace zr

// No cursor is deleted by a pointer to its base: the base class has no virtual destructor, which is part of its layout.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

// zr_r_buffer_t is a read cursor over octets that it does not own. Readers move the current position and lower the
// remaining count together; the origin never moves.
class ZR_API zr_r_buffer_t {
public:
    zr_r_buffer_t() = default;
    // A cursor at the first of `count` octets.
    zr_r_buffer_t(unsigned char* octets, unsigned int count)
        : origin_(octets), origin_length_(count), current_(octets), remaining_(count) {}
    // A copy keeps the fill octet and the nesting depth; an assignment takes the depth, not the fill octet.
    zr_r_buffer_t(const zr_r_buffer_t&) = default;
    zr_r_buffer_t& operator=(const zr_r_buffer_t& other);

    // set places the cursor at the start of other octets; reset returns it to its origin.
    virtual void set(unsigned char* octets, unsigned int count);
    virtual void reset();

    // True when both cursors have the same octets left.
    bool operator==(const zr_r_buffer_t& other) const;

    // Both: the next octet, and how many there are from there on.
    unsigned char* current() const { return current_; }
    unsigned int remaining() const { return remaining_; }

    // The octet that the code set converters read in place of one that is missing at the end of the input.
    unsigned char fill_octet() const { return fill_octet_; }
    void set_fill_octet(unsigned char octet) { fill_octet_ = octet; }

    // take moves the cursor past `count` octets and points `octets` at the first. When fewer remain it moves nothing.
    [[nodiscard]] bool take(unsigned int count, unsigned char*& octets) {
        if (count > remaining_) return false;
        octets = current_;
        move_to(current_ + count, remaining_ - count);
        return true;
    }
    // limit makes the cursor end `count` octets from here. When fewer remain it changes nothing and answers false.
    [[nodiscard]] bool limit(unsigned int count) {
        if (count > remaining_) return false;
        remaining_ = count;
        return true;
    }
    // move_to puts the cursor at a position in its octets with `remaining` of them left.
    void move_to(unsigned char* position, unsigned int remaining) {
        current_ = position;
        remaining_ = remaining;
    }

    // How many composites enclose the position; what reads nested composites counts it, so that hostile input cannot
    // exhaust the stack.
    unsigned int depth() const { return depth_; }
    void set_depth(unsigned int depth) { depth_ = static_cast<uint16_t>(depth); }

protected:
    unsigned char* origin_ = nullptr;
    uint32_t origin_length_ = 0;
    uint8_t fill_octet_ = 0;
    uint16_t depth_ = 0;
    unsigned char* current_ = nullptr;
    uint32_t remaining_ = 0;
};

// zr_buffer_t is a growable block of octets that it owns. What it holds is what remains to be read from it as a cursor:
// it can be passed wherever a cursor is read, and be written again after that. Octets already read are no part of it.
// Octets of others that `set` has put the cursor on count as held too; they are copied into the block by the first
// append or detach, until which they must live. Cursors copied from a buffer end with its next append.
//
// When the room behind the octets held ends, they move to the front of the block if at least as many were read as are
// held; otherwise the block grows. Reading and appending in turns thus moves about one octet for each one appended.
// Growing throws zr_asn_memexception ("Out of memory in buffer_t::extend") when memory ends or 2^32-1 octets are
// passed, and the buffer then holds what it held.
//
// A secure buffer (mode 1) leaves none of its octets in any block that it releases, nor where it moved them away from.
class ZR_API zr_buffer_t : public zr_r_buffer_t {
public:
    // Empty, with room for `size` octets, in the mode, with blocks from those functions.
    explicit zr_buffer_t(zr_memory_funcs_t memory);
    explicit zr_buffer_t(security_t security);
    zr_buffer_t(zr_memory_funcs_t memory, security_t security);
    zr_buffer_t(unsigned int size, security_t security);
    zr_buffer_t(unsigned int size, zr_memory_funcs_t memory);
    zr_buffer_t(unsigned int size, zr_memory_funcs_t memory, security_t security);
    // Copies own a block of their own, from the source's memory functions and in its mode.
    zr_buffer_t(const zr_buffer_t& other);
    zr_buffer_t& operator=(const zr_buffer_t& other);
    virtual ~zr_buffer_t();

    // extend grows the capacity to chunk(capacity + n). The cursor keeps its place in the block.
    void extend(unsigned int n);

    // append adds octets behind those held; each form returns 0. The octets may lie in this buffer, also among those
    // already read. A null text counts as empty; the terminating zero of a text is not appended.
    int append(unsigned char octet) {
        if (full()) make_room(1, 64);
        current_[remaining_++] = octet;
        return 0;
    }
    // Any other integer stands for the octet of its low eight bits.
    template <class Integer, std::enable_if_t<std::is_integral_v<Integer>, int> = 0>
    int append(Integer octet) {
        return append(static_cast<unsigned char>(octet));
    }
    int append(const unsigned char* octets, unsigned int count);
    int append(const char* text);
    int append(const zr_r_buffer_t& octets);
    // append_int adds `value` as decimal text.
    int append_int(long value);

    // assign replaces the octets held by others, which may lie in this buffer. Returns 0.
    int assign(const unsigned char* octets, unsigned int count);

    // clear forgets the octets held and keeps the storage, which a secure buffer overwrites with zeros. Returns 0.
    int clear();

    // rewrite forgets the octets held so that others can be appended that are read from `source`: like clear, unless
    // `source` stands on octets of this buffer. These then stay for it to read, and what is appended, from the front of
    // the block on, must never be more than `source` has passed.
    void rewrite(const zr_r_buffer_t& source);

    // detach hands the storage to the caller: `octets` gets the block (null when there is none), which begins with the
    // octets held, `count` their number. The caller releases it with the allocator that this buffer uses. The buffer is
    // empty then and can be used again.
    void detach(unsigned char*& octets, unsigned int& count);

    // terminate puts one zero octet behind the octets held without counting it.
    void terminate();

    // truncate forgets the octets held behind the first `count`; no effect when there are fewer.
    void truncate(unsigned int count) {
        if (count < remaining_) remaining_ = count;
    }

    // fits tells whether `count` more octets have room behind those held, without a move.
    bool fits(unsigned int count) const { return in_block() && count <= capacity_ - offset() - remaining_; }
    // make_room makes so many fit that do not; where the block must grow for it, extend(step) does it, which is to be
    // enough.
    void make_room(unsigned int count, unsigned int step);

    // data() is the block; the octets held begin at current(), which is the same while nothing has been read.
    unsigned char* data() const { return data_; }
    // length() octets are held, and the block has room for capacity().
    unsigned int length() const { return remaining_; }
    unsigned int capacity() const { return capacity_; }
    // The mode; set_security does not touch what is held.
    security_t security() const { return security_; }
    void set_security(security_t security) { security_ = security; }

private:
    // How far into the block the cursor stands; beyond the capacity when it stands on octets of others.
    uintptr_t offset() const { return reinterpret_cast<uintptr_t>(current_) - reinterpret_cast<uintptr_t>(data_); }
    bool full() const { return offset() > capacity_ || remaining_ >= capacity_ - offset(); }  // not fits(1)
    bool in_block() const { return offset() <= capacity_ && remaining_ <= capacity_ - offset(); }
    bool owns(const unsigned char* octet) const;
    bool must_grow(unsigned int count) const;
    void release();

    unsigned char* data_ = nullptr;
    zr_memory_funcs_t memory_{};
    uint32_t capacity_ = 0;
    security_t security_ = zr_normal;
};

// chunk is the capacity given to a request of `octets`: 64 or 128 up to 64, and 897 to 960 octets of headroom above.
// Encodings are built by many small appends, so two steps cover most records. At the top of the range it gives 2^32-1.
ZR_API unsigned int chunk(unsigned int octets);

// write1d, write2d, write4d append `value` as exactly 1, 2 or 4 decimal digits, zero-padded. Return 0, or 275063210
// with nothing appended when it needs more.
ZR_API int write1d(zr_buffer_t& buffer, unsigned int value);
ZR_API int write2d(zr_buffer_t& buffer, unsigned int value);
ZR_API int write4d(zr_buffer_t& buffer, unsigned int value);

// check_EOC answers 1 when the next two octets are the end-of-contents octets 00 00 (X.690 8.1.5), else 0.
ZR_API int check_EOC(zr_r_buffer_t cursor);

#pragma GCC diagnostic pop
