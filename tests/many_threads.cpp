// many_threads THREADS ROUNDS: what every record's entry points answer is the same on all threads at once, in different
// locales, also where they share the structure that is encoded. A program without a test framework: under the
// sanitizers for threads and for memory that was never written it consists of our code alone.
#include <locale.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <thread>
#include <vector>

#include "asn1/record/decoding.h"
#include "asn1/record/packed_blocks.h"
#include "support/routes.h"

namespace {

using namespace zr_test;

void require(bool holds, const zr::record_type& type, const char* what) {
    if (holds) return;
    std::fprintf(stderr, "%s: %s\n", type.name, what);
    std::abort();
}

// A structure that all threads encode, and its octets.
struct shared {
    explicit shared(const zr::record_type& type, std::mt19937& random) : filled(type) {
        fill(type, filled.get(), random, {300, 4, true});
        ber = encode(entry_points, filled).ber;
    }
    structure filled;
    octets ber;
};

void decode_all_ways(const shared& record) {
    const zr::record_type& type = record.filled.type();
    envelope in(record.ber);
    const zr_asn_buffer_t buffer = in.buffer();
    for (const route& way : {entry_points, local_entry_points}) {
        structure out(type);
        zr_asn_buffer_t octets = buffer;
        require(way.decode(type, octets, out.get()) == 0, type, "does not decode");
        require(encode(way, out).ber == record.ber, type, "decodes to something else");
    }
    zr::decode_report report;
    zr::decode_options options;
    options.strict = true;
    zr::packed_blocks blocks;
    structure packed(type);
    require(type.decode_packed(buffer.data, buffer.length, packed.get(), blocks, options, report) == 0, type,
            "is refused by strict");
    require(encode(entry_points, packed).ber == record.ber, type, "is something else when packed");
    std::memset(packed.get(), 0, type.size);
    // Damaged octets: any answer, the same for the direct codec and the object tree.
    octets damaged = record.ber;
    for (size_t at = 0; at < damaged.size(); at += 1 + damaged.size() / 16) {
        damaged[at] ^= 0x11;
        structure direct(type), tree(type);
        require(decode(entry_points, damaged, direct) == decode(object_tree, damaged, tree), type, "other statuses");
        require(difference(type, direct.get(), tree.get()).empty(), type, "other structures");
        damaged[at] ^= 0x11;
    }
}

void run(std::vector<std::unique_ptr<shared>>& records, const char* locale, size_t rounds) {
    const locale_t in_use = newlocale(LC_ALL_MASK, locale, nullptr);
    if (in_use == nullptr) std::abort();
    uselocale(in_use);
    for (size_t round = 0; round < rounds; ++round) {
        for (const auto& record : records) {
            require(encode(entry_points, record->filled).ber == record->ber, record->filled.type(),
                    "encodes otherwise");
            require(encode(local_entry_points, record->filled).ber == record->ber, record->filled.type(),
                    "encodes otherwise in its locale");
            decode_all_ways(*record);
        }
    }
    uselocale(LC_GLOBAL_LOCALE);
    freelocale(in_use);
}

}  // namespace

int main(int argc, char** argv) {
    const size_t count = argc == 3 ? std::strtoul(argv[1], nullptr, 10) : 0;
    const size_t rounds = argc == 3 ? std::strtoul(argv[2], nullptr, 10) : 0;
    if (count == 0 || rounds == 0) {
        std::fprintf(stderr, "many_threads THREADS ROUNDS\n");
        return 2;
    }
    FILE* const printed = stderr;
    stderr = std::fopen("/dev/null", "w");
    if (stderr == nullptr) return 1;
    setenv("LOCPATH", ZR_TEST_LOCALES, 1);
    std::mt19937 random(71);
    std::vector<std::unique_ptr<shared>> records;
    for (const zr::record_type* type : all_records())
        for (int i = 0; i < 3; ++i)
            records.push_back(std::make_unique<shared>(*type, random));
    std::vector<std::thread> threads;
    static constexpr const char* locales[] = {"latin1", "utf8"};
    for (size_t i = 0; i < count; ++i)
        threads.emplace_back([&records, i, rounds] { run(records, locales[i % std::size(locales)], rounds); });
    for (std::thread& thread : threads)
        thread.join();
    stderr = printed;
    std::printf("%zu records, %zu times on each of %zu threads\n", records.size(), rounds, count);
    return 0;
}
