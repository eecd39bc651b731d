#include "asn1/asnbase/buffer.h"

#include <string.h>

#include <cstdio>
#include <cstdlib>
#include <functional>

#include "asn1/platform.h"
#include "asn1/status.h"

namespace zr {

void wipe(void* block, size_t octets) { overwrite(block, octets); }

}  // namespace zr

namespace {

constexpr const char out_of_memory[] = "Out of memory in buffer_t::extend";

// chunk without its upper bound, for sums that pass 32 bits.
uint64_t chunk_octets(uint64_t octets) { return (octets & ~uint64_t{63}) + (octets > 64 ? 960 : 64); }

// All digits or none.
int append_digits(zr_buffer_t& buffer, unsigned int value, unsigned int unit) {
    if (value >= unit * 10) return zr_err_too_many_digits;
    const unsigned int before = buffer.length();
    try {
        for (; unit != 0; unit /= 10)
            buffer.append('0' + value / unit % 10);
    } catch (...) {
        buffer.truncate(before);
        throw;
    }
    return 0;
}

}  // namespace

void* zr_memory_funcs_t::malloc(unsigned int octets) const {
    if (use_plain != 0) return plain_malloc(octets);
    if (use_context != 0) return context_malloc(context, octets);
    return std::malloc(octets);
}

void zr_memory_funcs_t::free(void* block) const {
    if (use_plain != 0) return plain_free(block);
    if (use_context != 0) return context_free(context, block);
    std::free(block);
}

void* zr_memory_funcs_t::realloc(void* block, unsigned int octets) const {
    if (use_plain != 0) return plain_realloc(block, octets);
    if (use_context != 0) return context_realloc(context, block, octets);
    return std::realloc(block, octets);
}

void* zr_memory_funcs_t::calloc(unsigned int count, unsigned int octets) const {
    if (use_plain != 0) return plain_calloc(count, octets);
    if (use_context != 0) return context_calloc(context, count, octets);
    return std::calloc(count, octets);
}

zr_r_buffer_t& zr_r_buffer_t::operator=(const zr_r_buffer_t& other) {
    origin_ = other.origin_;
    origin_length_ = other.origin_length_;
    depth_ = other.depth_;
    move_to(other.current_, other.remaining_);
    return *this;
}

void zr_r_buffer_t::set(unsigned char* octets, unsigned int count) {
    origin_ = octets;
    origin_length_ = count;
    move_to(octets, count);
}

void zr_r_buffer_t::reset() { move_to(origin_, origin_length_); }

bool zr_r_buffer_t::operator==(const zr_r_buffer_t& other) const {
    return remaining_ == other.remaining_ && (remaining_ == 0 || memcmp(current_, other.current_, remaining_) == 0);
}

zr_buffer_t::zr_buffer_t(zr_memory_funcs_t memory) : memory_(memory) {}
zr_buffer_t::zr_buffer_t(security_t security) : security_(security) {}
zr_buffer_t::zr_buffer_t(zr_memory_funcs_t memory, security_t security) : memory_(memory), security_(security) {}
zr_buffer_t::zr_buffer_t(unsigned int size, security_t security) : security_(security) { extend(size); }
zr_buffer_t::zr_buffer_t(unsigned int size, zr_memory_funcs_t memory) : memory_(memory) { extend(size); }
zr_buffer_t::zr_buffer_t(unsigned int size, zr_memory_funcs_t memory, security_t security)
    : memory_(memory), security_(security) {
    extend(size);
}

zr_buffer_t::zr_buffer_t(const zr_buffer_t& other)
    : zr_r_buffer_t(), memory_(other.memory_), security_(other.security_) {
    fill_octet_ = other.fill_octet_;
    depth_ = other.depth_;
    append(other);
}

zr_buffer_t& zr_buffer_t::operator=(const zr_buffer_t& other) {
    if (this == &other) return *this;
    zr_buffer_t copy(other);
    release();
    data_ = copy.data_;
    capacity_ = copy.capacity_;
    memory_ = copy.memory_;
    security_ = copy.security_;
    zr_r_buffer_t::operator=(copy);
    copy.data_ = nullptr;
    return *this;
}

zr_buffer_t::~zr_buffer_t() { release(); }

void zr_buffer_t::release() {
    if (data_ == nullptr) return;
    if (security_ == zr_secure) zr::wipe(data_, capacity_);
    memory_.free(data_);
    data_ = nullptr;
}

// Whether an octet lies in the block.
bool zr_buffer_t::owns(const unsigned char* octet) const {
    const std::less<const unsigned char*> before;
    return data_ != nullptr && !before(octet, data_) && before(octet, data_ + capacity_);
}

void zr_buffer_t::extend(unsigned int n) {
    const uint64_t wanted = chunk_octets(uint64_t{capacity_} + n);
    if (wanted > UINT32_MAX) zr::throw_out_of_memory(out_of_memory);
    const auto capacity = static_cast<uint32_t>(wanted);
    const bool inside = in_block();
    const uintptr_t read = offset();
    const bool origin_inside = inside || owns(origin_);
    unsigned char* block = nullptr;
    if (security_ == zr_secure) {
        // Never realloc: the allocator could leave a copy behind.
        block = static_cast<unsigned char*>(memory_.malloc(capacity));
        if (block == nullptr) zr::throw_out_of_memory(out_of_memory);
        if (data_ != nullptr) memcpy(block, data_, capacity_);
        release();
    } else {
        block = static_cast<unsigned char*>(memory_.realloc(data_, capacity));
        if (block == nullptr) zr::throw_out_of_memory(out_of_memory);
    }
    data_ = block;
    capacity_ = capacity;
    // A cursor on octets of others stays there.
    if (inside) current_ = block + read;
    if (!origin_inside) return;
    origin_ = block;
    origin_length_ = capacity;
}

// Whether only a larger block has room for `count` octets behind those held, which lie in the block: when fewer were
// read than are held, moving them would cost more than appending has paid for.
bool zr_buffer_t::must_grow(unsigned int count) const {
    if (!in_block()) return false;
    return offset() < remaining_ || uint64_t{remaining_} + count > capacity_;
}

void zr_buffer_t::make_room(unsigned int count, unsigned int step) {
    if (current_ == data_ || must_grow(count)) return extend(step);
    // Octets of others may be more than the block has room for.
    const uint64_t needed = uint64_t{remaining_} + count;
    if (needed > UINT32_MAX) zr::throw_out_of_memory(out_of_memory);
    if (needed > capacity_) extend(static_cast<unsigned int>(needed - capacity_));
    assign(current_, remaining_);
}

int zr_buffer_t::append(const unsigned char* octets, unsigned int count) {
    if (count == 0) return 0;
    if (!fits(count)) {
        const bool own = owns(octets);
        if (own && !must_grow(count)) {
            // Those held will move over them.
            zr_buffer_t aside(memory_, security_);
            aside.append(octets, count);
            return append(aside);
        }
        const size_t offset = own ? static_cast<size_t>(octets - data_) : 0;
        make_room(count, count);
        if (own) octets = data_ + offset;
    }
    // There is room: make_room makes it or throws.
    memmove(current_ + remaining_, octets, count);  // NOLINT(clang-analyzer-core.NonNullParamChecker)
    remaining_ += count;
    return 0;
}

int zr_buffer_t::assign(const unsigned char* octets, unsigned int count) {
    // More octets than the block has do not lie in it. Growing comes first: when memory ends nothing has changed.
    if (count > capacity_) extend(count);
    if (count != 0) memmove(data_, octets, count);
    zr_r_buffer_t::set(data_, count);
    origin_length_ = capacity_;
    if (security_ == zr_secure && data_ != nullptr) zr::wipe(data_ + count, capacity_ - count);
    return 0;
}

int zr_buffer_t::append(const char* text) {
    if (text == nullptr) return 0;
    const size_t count = strlen(text);
    if (count > UINT32_MAX) zr::throw_out_of_memory(out_of_memory);
    return append(reinterpret_cast<const unsigned char*>(text), static_cast<unsigned int>(count));
}

int zr_buffer_t::append(const zr_r_buffer_t& octets) { return append(octets.current(), octets.remaining()); }

int zr_buffer_t::append_int(long value) {
    char text[24];
    std::snprintf(text, sizeof text, "%ld", value);
    return append(text);
}

int zr_buffer_t::clear() {
    move_to(data_, 0);
    if (security_ == zr_secure && data_ != nullptr) zr::wipe(data_, capacity_);
    return 0;
}

void zr_buffer_t::rewrite(const zr_r_buffer_t& source) {
    if (!owns(source.current())) {
        clear();
    } else {
        move_to(data_, 0);
    }
}

void zr_buffer_t::detach(unsigned char*& octets, unsigned int& count) {
    if (current_ != data_) assign(current_, remaining_);
    octets = data_;
    count = remaining_;
    data_ = origin_ = nullptr;
    capacity_ = origin_length_ = 0;
    clear();
}

void zr_buffer_t::terminate() {
    if (!fits(1)) make_room(1, 1);
    current_[remaining_] = 0;
}

unsigned int chunk(unsigned int octets) {
    const uint64_t capacity = chunk_octets(octets);
    return capacity > UINT32_MAX ? UINT32_MAX : static_cast<unsigned int>(capacity);
}

int write1d(zr_buffer_t& buffer, unsigned int value) { return append_digits(buffer, value, 1); }
int write2d(zr_buffer_t& buffer, unsigned int value) { return append_digits(buffer, value, 10); }
int write4d(zr_buffer_t& buffer, unsigned int value) { return append_digits(buffer, value, 1000); }

int check_EOC(zr_r_buffer_t cursor) {
    return cursor.remaining() >= 2 && cursor.current()[0] == 0 && cursor.current()[1] == 0 ? 1 : 0;
}
