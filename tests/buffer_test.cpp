// Buffers and cursors: growth, ownership, memory tables, and that secure buffers leave nothing behind.
#include "asn1/asnbase/buffer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <map>
#include <random>
#include <tuple>

#include "asn1/asnbase/status.h"
#include "support/allocations.h"
#include "support/hex.h"
#include "support/thrown.h"

namespace zr_test {
namespace {

const unsigned char* octets_of(const std::string& text) { return reinterpret_cast<const unsigned char*>(text.data()); }

std::string text_of(const zr_buffer_t& buffer) {
    return {reinterpret_cast<const char*>(buffer.current()), buffer.length()};
}

// A heap of its own behind a memory table. It shows whether a block that is given back still holds an octet.
struct heap {
    std::map<void*, size_t> blocks;
    std::string calls;  // m, f, r, c in order
    int unwiped = 0;
    bool exhausted = false;

    void* make(char call, size_t octets) {
        calls += call;
        if (exhausted) return nullptr;
        void* block = std::calloc(1, octets);
        blocks[block] = octets;
        return block;
    }
    void drop(char call, void* block) {
        calls += call;
        if (block == nullptr) return;
        const auto* octets = static_cast<unsigned char*>(block);
        if (std::any_of(octets, octets + blocks.at(block), [](unsigned char octet) { return octet != 0; })) ++unwiped;
        blocks.erase(block);
        std::free(block);
    }
    void* resize(void* block, size_t octets) {
        void* made = make('r', octets);
        if (made == nullptr || block == nullptr) return made;
        std::memcpy(made, block, std::min(octets, blocks.at(block)));
        drop('f', block);
        return made;
    }
    static heap& at(void* context) { return *static_cast<heap*>(context); }
    zr_memory_funcs_t table() {
        zr_memory_funcs_t made{};
        made.use_context = 1;
        made.context_malloc = [](void* c, size_t n) { return at(c).make('m', n); };
        made.context_free = [](void* c, void* p) { at(c).drop('f', p); };
        made.context_realloc = [](void* c, void* p, size_t n) { return at(c).resize(p, n); };
        made.context_calloc = [](void* c, size_t n, size_t m) { return at(c).make('c', n * m); };
        made.context = this;
        return made;
    }
};

TEST(buffer, chunk) {
    const std::map<unsigned int, unsigned int> chunks = {
        {0, 64},     {1, 64},     {63, 64},     {64, 128},    {65, 1024},
        {127, 1024}, {128, 1088}, {1000, 1920}, {1024, 1984}, {0xFFFFFC3F, 0xFFFFFFC0}};
    for (const auto& [length, capacity] : chunks)
        EXPECT_EQ(chunk(length), capacity) << length;
}

TEST(buffer, growth) {
    for (const security_t security : {zr_normal, zr_secure, zr_local_code_set}) {
        zr_buffer_t one(security);
        for (unsigned int length = 0; length < 130; ++length) {
            EXPECT_EQ(one.capacity(), length == 0 ? 0 : length <= 128 ? 128 : chunk(128 + 64));
            one.append(static_cast<unsigned char>('x'));
        }
        for (const unsigned int count : {0u, 1u, 63u, 64u, 65u, 1000u}) {
            zr_buffer_t many(security);
            many.append(octets_of(std::string(count, 'y')), count);
            EXPECT_EQ(many.capacity(), count == 0 ? 0 : chunk(count));
            EXPECT_EQ(zr_buffer_t(count, security).capacity(), chunk(count));
        }
    }
}

// Every operation against a string, in every mode and with every way to memory; in half of the rounds the buffer is
// read, too, and set to octets of others.
TEST(buffer, random_operations) {
    heap own;
    const zr_memory_funcs_t tables[] = {{}, own.table()};
    allocations watch;
    for (unsigned int seed = 0; seed < 800; ++seed) {
        std::mt19937 random(seed);
        const auto below = [&](unsigned int n) { return static_cast<unsigned int>(random() % n); };
        const security_t security = seed % 2 == 0 ? zr_secure : zr_normal;
        const bool reads = seed / 4 % 2 != 0;
        zr_buffer_t buffer(tables[seed / 2 % 2], security);
        std::string expected;
        std::string others;  // of a set, until they are copied
        for (int step = 0; step < 60; ++step) {
            const std::string more(below(200), static_cast<char>('a' + below(26)));
            const unsigned int what = below(reads ? 15 : 10);
            if (what < 3) expected += more;
            const auto stands_on_others = [&] {
                const unsigned char* const begin = octets_of(others);
                return buffer.current() >= begin && buffer.current() <= begin + others.size();
            };
            const bool foreign = stands_on_others();
            switch (what) {
                case 0:
                    buffer.append(octets_of(more), static_cast<unsigned int>(more.size()));
                    break;
                case 1:
                    buffer.append(more.c_str());
                    break;
                case 2:
                    for (const char c : more)
                        buffer.append(static_cast<unsigned char>(c));
                    break;
                case 3:  // itself
                    if (expected.size() > 5000) break;
                    buffer.append(buffer);
                    expected += expected;
                    break;
                case 4: {  // from inside itself
                    // Those read before them included.
                    const unsigned char* start = foreign ? buffer.current() : buffer.data();
                    const auto all = static_cast<unsigned int>(buffer.current() - start) + buffer.length();
                    const unsigned int from = below(all + 1);
                    const unsigned int part = below(all - from + 1);
                    if (part != 0) expected.append(reinterpret_cast<const char*>(start) + from, part);
                    buffer.append(start + from, part);
                    break;
                }
                case 5: {
                    zr_buffer_t copy(buffer), assigned(security);
                    copy.append("!");
                    assigned.append("old");
                    assigned = copy;
                    EXPECT_EQ(text_of(assigned), expected + "!");
                    EXPECT_TRUE(assigned == copy);
                    EXPECT_EQ(assigned.security(), buffer.security());
                    assigned.truncate(assigned.length() - 1);
                    buffer = assigned;
                    break;
                }
                case 6:
                    buffer.append_int(static_cast<int>(random()));
                    expected = text_of(buffer);
                    break;
                case 7:
                    buffer.terminate();
                    EXPECT_EQ(buffer.current()[buffer.length()], 0);
                    break;
                case 8: {
                    if (below(4) != 0) break;
                    const unsigned int capacity = buffer.capacity();
                    EXPECT_EQ(buffer.clear(), 0);
                    EXPECT_EQ(buffer.capacity(), capacity);
                    for (unsigned int i = 0; security == zr_secure && i < capacity; ++i)
                        ASSERT_EQ(buffer.data()[i], 0);
                    expected.clear();
                    break;
                }
                case 9: {
                    if (below(4) != 0) break;
                    unsigned char* data = nullptr;
                    unsigned int length = 0;
                    buffer.detach(data, length);
                    ASSERT_EQ(hex(data, length), hex(expected.data(), expected.size()));
                    EXPECT_EQ(buffer.capacity(), 0u);
                    EXPECT_EQ(buffer.length(), 0u);
                    buffer.reset();
                    EXPECT_EQ(buffer.length(), 0u);
                    if (data != nullptr) std::memset(data, 0, length);
                    tables[seed / 2 % 2].free(data);
                    expected.clear();
                    break;
                }
                case 10:
                    if (foreign || below(4) != 0) break;
                    others = more;
                    expected = more;
                    buffer.set(reinterpret_cast<unsigned char*>(others.data()), static_cast<unsigned int>(more.size()));
                    break;
                case 11: {
                    const auto distance = buffer.current() - buffer.data();
                    buffer.extend(below(100));
                    if (!foreign) {
                        EXPECT_EQ(buffer.current() - buffer.data(), distance);
                    }
                    break;
                }
                default: {
                    unsigned char* read = nullptr;
                    const unsigned int count = what == 12 ? buffer.length() : below(buffer.length() + 1);
                    ASSERT_TRUE(buffer.take(count, read));
                    expected.erase(0, count);
                }
            }
            ASSERT_EQ(text_of(buffer), expected) << "seed " << seed << " step " << step << " what " << what;
            if (!reads) {
                ASSERT_EQ(buffer.current(), buffer.data());
            }
            // What has been copied is nobody's business any more.
            if (!stands_on_others()) std::fill(others.begin(), others.end(), '?');
        }
    }
    EXPECT_TRUE(own.blocks.empty());
    EXPECT_LE(watch.live(), 1u);  // the text of the heap's calls
}

TEST(buffer, memory_tables) {
    // The plain functions go before the context functions, and each operation has its own.
    static std::string plain_calls;
    heap own;
    zr_memory_funcs_t both = own.table();
    both.plain_malloc = [](size_t n) { return plain_calls += 'm', std::malloc(n); };
    both.plain_free = [](void* p) { plain_calls += 'f', std::free(p); };
    both.plain_realloc = [](void* p, size_t n) { return plain_calls += 'r', std::realloc(p, n); };
    both.plain_calloc = [](size_t n, size_t m) { return plain_calls += 'c', std::calloc(n, m); };
    for (const int plain : {0, 1}) {
        both.use_plain = plain;
        void* block = both.malloc(8);
        block = both.realloc(block, 16);
        both.free(block);
        both.free(both.calloc(2, 4));
    }
    EXPECT_EQ(plain_calls, "mrfcf");
    EXPECT_EQ(own.calls, "mrffcf");  // its realloc frees too
    zr_buffer_t buffer(own.table());
    buffer.append("x");
    EXPECT_EQ(own.blocks.size(), 1u);
}

// Reading and appending in turns, with so many octets kept back, moves about one octet for each that is appended. What
// was moved away from is zero in a secure buffer.
TEST(buffer, reading_and_appending_in_turns) {
    for (const security_t security : {zr_normal, zr_secure}) {
        for (const auto& [backlog, most] :
             {std::pair(0u, 100u), {10u, 100u}, {1000u, 1u}, {5000u, 3000u}, {127u, 1u}}) {
            std::mt19937 random(backlog);
            zr_buffer_t buffer(security);
            uint64_t appended = 0, moved = 0;
            while (appended < 300000) {
                const unsigned int count = 1 + static_cast<unsigned int>(random() % most);
                const auto read = buffer.current() - buffer.data();
                const unsigned int held = buffer.length(), capacity = buffer.capacity();
                buffer.append(octets_of(std::string(count, '#')), count);
                appended += count;
                if (buffer.capacity() != capacity || buffer.current() - buffer.data() != read) moved += held;
                if (security == zr_secure && read != 0 && buffer.current() == buffer.data()) {
                    unsigned char* const end = buffer.data() + buffer.capacity();
                    ASSERT_EQ(std::count(buffer.data() + buffer.length(), end, '#'), 0);
                }
                unsigned char* octets = nullptr;
                if (buffer.length() <= backlog) continue;
                EXPECT_TRUE(buffer.take(buffer.length() - backlog, octets));
            }
            EXPECT_LE(moved, appended + appended / 4) << backlog;
            EXPECT_LE(buffer.capacity(), 3 * (backlog + most) + 2048) << backlog;
        }
    }
}

TEST(buffer, secure_octets_are_gone_from_every_block) {
    const std::string secret(100, '#');
    for (const security_t security : {zr_secure, zr_normal, zr_local_code_set}) {
        heap own;
        {
            zr_buffer_t buffer(16, own.table(), security);
            for (int i = 0; i < 30; ++i)
                buffer.append(secret.c_str());  // grows
            zr_buffer_t copy(buffer);
            copy = buffer;
            buffer.clear();
            buffer.append(secret.c_str());
            buffer.truncate(3);
            buffer = copy;
        }
        EXPECT_TRUE(own.blocks.empty());
        EXPECT_EQ(own.unwiped == 0, security == zr_secure);
        EXPECT_EQ(own.calls.find('r') == std::string::npos, security == zr_secure);
    }
    // And through the C library, as objects use it.
    const secret_search search({"####"});
    {
        zr_buffer_t buffer(zr_secure);
        for (int i = 0; i < 3000; ++i)
            buffer.append(static_cast<unsigned char>('#'));
    }
    EXPECT_EQ(search.found(), 0u);
}

// `change` fails with the exception of exhausted memory and leaves the buffer as it was.
template <class Change>
void expect_refused(zr_buffer_t& buffer, Change&& change) {
    const auto state = [&buffer] {
        return std::tuple(text_of(buffer), buffer.data(), buffer.current(), buffer.capacity());
    };
    const auto before = state();
    EXPECT_EQ(thrown(change), "memory 275062885: Out of memory in buffer_t::extend in src/asn1/asnbase");
    EXPECT_EQ(state(), before);
}

TEST(buffer, exhausted_memory_changes_nothing) {
    for (const security_t security : {zr_normal, zr_secure}) {
        heap own;
        zr_buffer_t buffer(own.table(), security);
        const std::string text(128, 'x');
        for (const bool filled : {false, true}) {
            own.exhausted = false;
            if (filled) buffer.append(text.c_str());
            while (buffer.length() < buffer.capacity())
                buffer.append("z");
            own.exhausted = true;
            zr_buffer_t other(zr_normal);
            other.append("other");
            expect_refused(buffer, [&] { buffer.append(static_cast<unsigned char>('y')); });
            expect_refused(buffer, [&] { buffer.append(octets_of(text), 9); });
            expect_refused(buffer, [&] { buffer.append("y"); });
            expect_refused(buffer, [&] { buffer.append(other); });
            expect_refused(buffer, [&] { buffer.append_int(7); });
            expect_refused(buffer, [&] { buffer.extend(0); });
            expect_refused(buffer, [&] { buffer.terminate(); });
            for (const unsigned int digits : {2u, 4u}) {  // all or none
                if (buffer.length() != 0) buffer.truncate(buffer.length() - 1);
                expect_refused(buffer, [&] { (digits == 2 ? write2d : write4d)(buffer, 77); });
            }
            std::string foreign(2000, 'f');
            zr_buffer_t set(own.table(), security);
            set.set(reinterpret_cast<unsigned char*>(foreign.data()), 2000);
            unsigned char* data = nullptr;
            unsigned int length = 0;
            expect_refused(set, [&] { set.append(octets_of(text), 9); });
            expect_refused(set, [&] { set.detach(data, length); });
            expect_refused(set, [&] { set.assign(octets_of(text), 9); });
            if (filled) expect_refused(buffer, [&] { zr_buffer_t copy(buffer); });
            if (filled) expect_refused(other, [&] { other = buffer; });
        }
        EXPECT_THROW(zr_buffer_t(8, own.table(), security), zr_asn_memexception);
        own.exhausted = false;
    }
}

TEST(buffer, sums_beyond_32_bits) {
    // A heap that promises any size: only the sums can refuse.
    static unsigned char block[256];
    zr_memory_funcs_t generous{};
    generous.use_plain = 1;
    generous.plain_malloc = [](size_t) -> void* { return block; };
    generous.plain_realloc = [](void*, size_t) -> void* { return block; };
    generous.plain_free = [](void*) {};
    zr_buffer_t buffer(0xFFFFFC3F, generous);
    EXPECT_EQ(buffer.capacity(), 0xFFFFFFC0u);
    expect_refused(buffer, [&] { buffer.extend(0); });
    buffer.append("x");
    expect_refused(buffer, [&] { buffer.append(block, 0xFFFFFFC0); });
    expect_refused(buffer, [&] { buffer.append(block, 0xFFFFFFFF); });
    zr_buffer_t empty(zr_normal);
    expect_refused(empty, [&] { empty.extend(0xFFFFFC40); });
    expect_refused(empty, [&] { empty.extend(0xFFFFFFFF); });
    EXPECT_THROW(zr_buffer_t(0xFFFFFFFF, zr_secure), zr_asn_memexception);
}

TEST(buffer, digits) {
    const struct {
        int (*write)(zr_buffer_t&, unsigned int);
        unsigned int value;
        const char* text;  // behind what is there; nothing more when it is refused
    } table[] = {{write1d, 0, "<0"},    {write1d, 9, "<9"},    {write1d, 10, "<"},        {write2d, 7, "<07"},
                 {write2d, 99, "<99"},  {write2d, 100, "<"},   {write4d, 30, "<0030"},    {write4d, 9999, "<9999"},
                 {write4d, 10000, "<"}, {write4d, 0, "<0000"}, {write1d, 0xFFFFFFFF, "<"}};
    for (const auto& row : table) {
        zr_buffer_t buffer(zr_normal);
        buffer.append("<");
        EXPECT_EQ(row.write(buffer, row.value), row.text[1] == 0 ? 275063210 : 0) << row.value;
        EXPECT_EQ(text_of(buffer), row.text);
    }
    zr_buffer_t buffer(zr_normal);
    buffer.append(static_cast<const char*>(nullptr));
    EXPECT_EQ(buffer.append_int(-2147483647L - 1), 0);
    EXPECT_EQ(text_of(buffer), "-2147483648");
}

TEST(buffer, cursors) {
    unsigned char first[] = {1, 2, 0, 0}, second[] = {9, 2, 0, 0};
    zr_r_buffer_t cursor(first, 4);
    zr_r_buffer_t other;
    EXPECT_TRUE(other == zr_r_buffer_t(second, 0));
    EXPECT_FALSE(cursor == other);
    cursor.set_fill_octet(7);
    cursor.set_depth(3);
    const zr_r_buffer_t copy(cursor);
    EXPECT_EQ(copy.fill_octet(), 7);
    EXPECT_EQ(copy.depth(), 3u);
    other = cursor;
    EXPECT_EQ(other.fill_octet(), 0);
    EXPECT_EQ(other.depth(), 3u);
    EXPECT_TRUE(other == cursor);

    unsigned char* octets = nullptr;
    EXPECT_FALSE(cursor.take(5, octets));
    EXPECT_FALSE(cursor.limit(5));
    EXPECT_TRUE(cursor.take(1, octets));
    EXPECT_EQ(octets, first);
    other.set(second, 4);
    EXPECT_FALSE(cursor == other);
    EXPECT_TRUE(other.take(1, octets));
    EXPECT_TRUE(cursor == other);  // other octets at another place, equal from here on
    cursor.reset();
    EXPECT_EQ(cursor.current(), first);
    EXPECT_EQ(cursor.remaining(), 4u);
    cursor.set(second + 1, 2);  // a new origin
    cursor.move_to(second + 3, 0);
    cursor.reset();
    EXPECT_EQ(cursor.current(), second + 1);
    EXPECT_EQ(cursor.remaining(), 2u);

    zr_buffer_t buffer(zr_normal);  // of a buffer the origin is its storage, all of it
    buffer.append("abc");
    EXPECT_TRUE(buffer.take(3, octets));
    buffer.reset();
    EXPECT_EQ(buffer.current(), buffer.data());
    EXPECT_EQ(buffer.remaining(), buffer.capacity());
    EXPECT_TRUE(buffer.take(buffer.remaining(), octets));
    const unsigned int distance = buffer.capacity();
    buffer.extend(1);  // all of a full one was read: the cursor keeps its distance
    EXPECT_EQ(buffer.current() - buffer.data(), distance);
    buffer.clear();
    buffer.append(0);  // a literal is an octet, whatever its type
    buffer.append('a');
    buffer.append(0x141);
    EXPECT_EQ(hex(buffer.current(), buffer.length()), "00 61 41");
    buffer.set(second + 1, 1);
    buffer.append("x");
    buffer.reset();  // copied: its own storage again
    EXPECT_EQ(buffer.current(), buffer.data());

    for (unsigned int from = 0; from < 4; ++from)
        EXPECT_EQ(check_EOC(zr_r_buffer_t(first + from, 4 - from)), from == 2 ? 1 : 0);
    EXPECT_EQ(check_EOC(zr_r_buffer_t(first + 2, 0)), 0);
}

}  // namespace
}  // namespace zr_test
