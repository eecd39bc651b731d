// Random structures of any record: every way to encode one gives the same octets or refuses it, and leaves it as it is;
// the octets decode to the same values. The first two octets pick the record, the third how much it holds, the others
// the values.
#include <cstdio>
#include <cstdlib>

#include "asn1/codec/encoding.h"
#include "asn1/record/decoding.h"
#include "asn1/record/members.h"
#include "pick_record.h"
#include "require.h"
#include "support/allocations.h"
#include "support/routes.h"

namespace {

using namespace zr_test;

// Nothing of a structure may be null or counted wrongly but what the library passes over: lists without an array, whose
// count does not matter, and null elements of lists of pointers, which are refused.
bool spoil(structure& original, std::mt19937& random) {
    bool refused = false;
    for (const zr::field& field : original.type()) {
        if (!zr::is_list(field.held) || random() % 4 != 0) continue;
        auto& array = zr::place<void*>(original.get(), field.offset);
        if (array == nullptr) {
            zr::store_count(field, original.get(), static_cast<uint32_t>(random() % 3) * 1000);
        } else if (field.held == zr::holding::pointer_list && zr::stored_count(field, original.get()) != 0) {
            auto& element = static_cast<void**>(array)[random() % zr::stored_count(field, original.get())];
            if (element == nullptr) continue;
            field.record->free(element);
            std::free(element);
            element = nullptr;
            refused = true;
        }
    }
    return refused;
}

// Gives a text the length with which the encoding is longer than the room that it is written to first, by no more than
// it was long: that room ends before any of its values.
void fill_room(structure& original, std::mt19937& random) {
    constexpr size_t room = zr::stack_octets;
    const std::vector<char**> texts = texts_of(original.type(), original.get());
    if (texts.empty()) return;
    const size_t length = encode(entry_points, original).ber.size();
    if (length >= room) return;
    char*& text = *texts[random() % texts.size()];
    std::free(text);
    text = copy_text(std::string(room - length + random() % (length + 8), 'a'));
}

void check(const zr::record_type& type, size_t most, std::mt19937& random) {
    structure original(type);
    fill(type, original.get(), random, {most, 1 + static_cast<unsigned>(random() % 20), true});
    if (random() % 8 == 0) fill_room(original, random);
    const bool refused = spoil(original, random);
    const encoded direct = encode(entry_points, original);
    require((direct.status != 0) == refused, "a null element is passed over, or something else refused", type.name);
    for (const route& way : {object_tree, local_entry_points, local_object_tree}) {
        const encoded other = encode(way, original);
        require(other.status == direct.status && other.ber == direct.ber, way.name, type.name);
    }
    if (refused) return;
    structure copy(type);
    require(decode(entry_points, direct.ber, copy) == 0, "what was encoded does not decode", type.name);
    require(encode(entry_points, copy).ber == direct.ber, "what was decoded encodes otherwise", type.name);
    envelope in(direct.ber);
    zr::decode_report report;
    zr::decode_options options;
    options.strict = true;
    structure strict(type);
    require(type.decode(in.buffer().data, in.buffer().length, strict.get(), options, report) == 0,
            "strict refuses what the library writes", type.name);
    require(difference(type, strict.get(), copy.get()).empty(), "strict gives something else", type.name);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static allocations watched;
    if (size < 3) return 0;
    std::seed_seq seeds(data, data + size);
    std::mt19937 random(seeds);
    const zr::record_type& type = pick_record(data);
    const size_t before = watched.live();
    {
        const silence kept;
        // Few are large: one of those takes as long as thousands of others.
        check(type, size_t{1} << (data[2] == 0xFF ? 10 : data[2] % 6), random);
    }
    require(watched.live() == before, "blocks are lost", type.name);
    return 0;
}
