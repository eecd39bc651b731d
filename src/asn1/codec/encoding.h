// Where an encoding is written: on the stack, in a block of about its size, or in one of exactly its size.
#pragma once

#include <cstdlib>
#include <memory>

#include "asn1/record/record_type.h"

namespace zr {

struct block_deleter {
    void operator()(unsigned char* block) const { std::free(block); }
};
using block = std::unique_ptr<unsigned char, block_deleter>;

// What is small enough for the stack: of a thread's 64 KiB little is left to its caller otherwise.
constexpr size_t stack_octets = 8192;
// Up to there the block is a guess longer than its contents, and has 64 KiB at most, however wrong the guess is; what
// is above is worth counting first.
constexpr size_t most_guessed = 65536 / 5 * 4;

// Throws zr_asn_memexception, also for more octets than an encoding can have.
block allocate_encoding(uint64_t length);

// What becomes of an envelope that is written.
class encoding_target {
public:
    // An envelope that lies in memory of the caller's.
    virtual void take(const unsigned char* envelope, size_t length) = 0;
    // One that lies somewhere in a block, which has `room` octets.
    virtual void take(block owner, size_t room, unsigned char* envelope, size_t length) = 0;

protected:
    ~encoding_target() = default;
};

// write_encoding writes the envelope of a structure and hands it on, once. Throws zr_asn_memexception. That of a record
// with secrets is written nowhere but in a block of exactly its size.
void write_encoding(const record_type& type, const void* in, int version, encoding_target& target);

// Gives a copy of an envelope in a malloc block to the caller of an entry point. Throws zr_asn_memexception.
void hand_out_copied(zr_asn_buffer_t& out, const unsigned char* envelope, size_t length);

// The target that gives the envelope to the caller of an entry point, in a block that is hardly longer.
class handed_out final : public encoding_target {
public:
    explicit handed_out(zr_asn_buffer_t& out) : out_(out) {}
    void take(const unsigned char* envelope, size_t length) override;
    void take(block owner, size_t room, unsigned char* envelope, size_t length) override;

private:
    zr_asn_buffer_t& out_;
};

}  // namespace zr
