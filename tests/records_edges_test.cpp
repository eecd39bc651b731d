// Structures and encodings at the edges of what records can hold: null elements, more elements than a count can tell,
// more positions than slots, nesting of any depth.
#include <gtest/gtest.h>
#include <pthread.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <string_view>
#include <utility>

#include "asn1/codec/define_record.h"
#include "asn1/codec/encoding.h"
#include "asn1/codec/writer.h"
#include "asn1/record/decoding.h"
#include "asn1/record/members.h"
#include "asn1/record/operations.h"
#include "asn1/record/packed_blocks.h"
#include "base_idls/aclidl_asn.h"
#include "base_idls/actionidl_asn.h"
#include "base_idls/ejauditidl_asn.h"
#include "base_idls/namevalue_asn.h"
#include "base_idls/principal_asn.h"
#include "base_idls/yvobj_asn.h"
#include "support/allocations.h"
#include "support/ber.h"
#include "support/caught_stderr.h"
#include "support/routes.h"
#include "support/thread_locale.h"

// Lists whose counts have 16 bits.
struct few_numbers_t {
    uint16_t count;
    int32_t* numbers;
};
ZR_RECORD(few, few_numbers_t, asn_few_numbers_t, zr::list(ZR_M(count), ZR_M(numbers)));
struct few_names_t {
    uint16_t count;
    char** names;
};
ZR_RECORD(few, few_names_t, asn_few_names_t, zr::list(ZR_M(count), ZR_M(names)));
ZR_DEFINE_MODULE(few, few_numbers_t, few_names_t);

namespace zr_test {
namespace {

using zr::field;
using zr::holding;
using zr::place;

// Encoding refuses it, releasing passes over it.
TEST(records, a_null_element_in_an_array_of_pointers) {
    size_t found = 0;
    for (const zr::record_type* type : all_records()) {
        for (const field& field : *type) {
            if (field.held != holding::pointer_list) continue;
            ++found;
            for (const route& way : routes) {
                SCOPED_TRACE(type->name + std::string(", ") + way.name);
                const std::string line = "Exception: ASN: Memory error [10652065] in " + std::string(type->module);
                allocations watched;
                structure original(*type);
                auto** elements = static_cast<void**>(zeroed(4 * sizeof(void*)));
                elements[0] = zeroed(field.record->size);
                elements[2] = zeroed(field.record->size);
                place<void**>(original.get(), field.offset) = elements;
                zr::store_count(field, original.get(), 4);
                caught_stderr printed;
                zr_asn_buffer_t out{7, nullptr};
                EXPECT_EQ(way.encode(*type, out, original.get()), zr_err_out_of_memory);
                EXPECT_EQ(out.length, 7u);
                EXPECT_EQ(printed.take().substr(0, line.size()), line);
                EXPECT_EQ(zr::copy_record(*type, original.get(), structure(*type).get()), zr_err_out_of_memory);
                EXPECT_EQ(printed.take().substr(0, line.size()), line);
                int order = 0;
                EXPECT_EQ(zr::order_records(*type, original.get(), original.get(), order), zr_err_out_of_memory);
                EXPECT_EQ(printed.take().substr(0, line.size()), line);
                {
                    void* filled[] = {elements[0], elements[0], elements[2], elements[2]};
                    structure other(*type);
                    place<void**>(other.get(), field.offset) = filled;
                    zr::store_count(field, other.get(), 4);
                    EXPECT_EQ(zr::order_records(*type, other.get(), original.get(), order), zr_err_out_of_memory);
                    std::memset(other.get(), 0, type->size);
                }
                EXPECT_EQ(printed.take().substr(0, line.size()), line);
                EXPECT_EQ(watched.live(), 4u) << "the structure, its array and two elements";
                EXPECT_EQ(leftover_of_free(original), "");
                EXPECT_EQ(watched.live(), 1u);
            }
        }
    }
    EXPECT_EQ(found, 3u);
}

// Lengths take more octets from 128, 256, 65536 on, and the block for an encoding is made in another way from some
// sizes on: the octets of every length around a power of two.
TEST(records, lengths_around_powers_of_two) {
    const octets contents(140000, 0x41);
    for (size_t step = 64; step <= 131072; step *= 2) {
        for (size_t length = step - 40; length < step + 8; ++length) {
            const octets body(contents.begin(), contents.begin() + static_cast<long>(length));
            structure original(*zr::find_record("ejauditattribute_s_t"));
            original.as<ejauditattribute_s_t>().data = static_cast<unsigned char*>(zeroed(length));
            std::memcpy(original.as<ejauditattribute_s_t>().data, body.data(), length);
            original.as<ejauditattribute_s_t>().length = static_cast<uint32_t>(length);
            const octets expected = element(0x30, octets{0x0C, 0} + element(0x04, body));
            for (const route& way : routes) {
                ASSERT_TRUE(encode(way, original).ber == expected) << way.name << ", " << length;
                structure copy(original.type());
                ASSERT_EQ(decode(way, expected, copy), 0);
                ASSERT_EQ(difference(original.type(), original.get(), copy.get()), "") << way.name << ", " << length;
            }
        }
    }
}

// The room for an encoding ends before any header, value or empty slot: it then goes into another block.
TEST(records, rooms_that_end_anywhere) {
    const thread_locale in_use("latin1");
    constexpr size_t room = zr::stack_octets;  // a shorter one is written there
    const field* slots = zr::find_record("yvaction_groups_s_t")->fields;
    ASSERT_EQ(slots->held, holding::slots);
    for (size_t length = room - 100; length < room + 10; ++length) {
        const std::string text(length, 'a');
        structure chain(*zr::find_record("namevalue_s_t")), groups(*zr::find_record("yvaction_groups_s_t"));
        auto* node = &chain.as<namevalue_s_t>();
        for (int level = 0; level < 2; ++level) {
            node->child_count = 1;
            node->children = static_cast<namevalue_s_t**>(zeroed(sizeof(namevalue_s_t*)));
            node = node->children[0] = static_cast<namevalue_s_t*>(zeroed(sizeof *node));
        }
        node->name = copy_text(text);
        auto* group = static_cast<yvaction_group_s_t*>(zeroed(sizeof(yvaction_group_s_t)));
        group->name = copy_text(text);
        *static_cast<void**>(zr::place_at(*slots, groups.get(), 31)) = group;
        for (structure* original : {&chain, &groups}) {
            const octets expected = encode(object_tree, *original).ber;
            for (const route& way : {entry_points, local_entry_points})
                ASSERT_TRUE(encode(way, *original).ber == expected) << way.name << ", " << length;
        }
    }
}

// A writer has room for as many octets as lie before it in its block, and for none more.
TEST(records, a_writer_stays_in_its_block) {
    unsigned char block[16] = {};
    for (size_t free = 0; free <= sizeof block; ++free) {
        for (size_t wanted = 0; wanted <= sizeof block + 1; ++wanted) {
            zr::writer sink(block + free, block);
            EXPECT_EQ(sink.room(wanted), wanted <= free);
            EXPECT_EQ(sink.failed(), wanted > free);
        }
    }
}

// Where an encoding is written hangs on a guess from the middle element of each list: however good it is the octets are
// the same, nothing is lost, and no block is handed out that is much too long.
TEST(records, encodings_of_any_size_and_guess) {
    const struct {
        size_t count, middle, others;  // texts, and their lengths
        size_t made;                   // requests of the allocator
    } rows[] = {
        {10, 20, 20, 1},      // short
        {1000, 20, 20, 2},    // a block of the guessed size, which is cut
        {100000, 20, 20, 1},  // counted first
        {1000, 0, 60, 1},     // long, though it looked short
        {1000, 10, 60, 2},    // longer than guessed
        {1000, 16, 6, 2},     // far shorter than guessed
        {80, 600, 0, 2},
    };
    for (const auto& row : rows) {
        structure original(*zr::find_record("yvobj_name_list_s_t"));
        auto& list = original.as<yvobj_name_list_s_t>();
        list.count = static_cast<uint32_t>(row.count);
        list.names = static_cast<char**>(zeroed(row.count * sizeof(char*)));
        for (size_t i = 0; i < row.count; ++i)
            list.names[i] = copy_text(std::string(i == row.count / 2 ? row.middle : row.others, 'n'));
        const octets expected = encode(object_tree, original).ber;
        for (size_t failing = 0; failing <= row.made; ++failing) {
            SCOPED_TRACE(std::to_string(expected.size()) + " octets, failing " + std::to_string(failing));
            caught_stderr printed;
            allocations watched;
            watched.fail_allocation(failing);
            zr_asn_buffer_t out{0, nullptr};
            const int status = original.type().encode(out, original.get());
            watched.fail_allocation(0);
            const size_t made = watched.made();
            size_t held = 0;
            const bool same = status != 0 || octets(out.data + 4, out.data + out.length) == expected;
            watched.on_release([](void* size, const void*, size_t all) { *static_cast<size_t*>(size) = all; }, &held);
            if (status == 0) zr_asn_buffer_free(out);
            watched.on_release(nullptr, nullptr);
            const size_t lost = watched.live();
            // A block that cannot be cut is handed out as it is.
            const bool uncut = failing == 2 && row.others <= row.middle;
            EXPECT_EQ(status, failing == 0 || uncut ? 0 : zr_err_out_of_memory);
            EXPECT_TRUE(same);
            EXPECT_EQ(lost, 0u);
            if (failing != 0) continue;
            EXPECT_EQ(made, row.made);
            EXPECT_LE(held, expected.size() + 4 + std::max<size_t>(256, expected.size() / 50));
        }
    }
}

// Short lists are encoded on the stack, longer ones into a block as long as guessed, what does not fit there or is
// longer still into one as long as counted: the limits lie at 8 KiB and 64 KiB.
TEST(records, lists_of_integers_of_every_width_and_any_length) {
    constexpr int32_t values[] = {0,      127,     -128,     128,     -129,     32767,     -32768,   32768,
                                  -32769, 8388607, -8388608, 8388608, -8388609, INT32_MAX, INT32_MIN};
    std::vector<octets> encodings;
    for (const int32_t value : values) {
        zr_asn_integer integer(zr_normal);
        integer.set_value(static_cast<long>(value));
        encodings.push_back(bytes(written(integer)));
    }
    for (const size_t count : {1u, 2u, 3u, 4u, 5u, 1500u, 2500u, 20000u, 20001u, 20002u, 20003u}) {
        for (size_t first = 0; first <= std::size(values); ++first) {
            const bool all_widths = first == std::size(values);
            SCOPED_TRACE(std::to_string(count) + " integers like " +
                         (all_widths ? "all" : std::to_string(values[first])));
            structure original(*zr::find_record("acl_permset_s_t"));
            auto& list = original.as<acl_permset_s_t>();
            list = {static_cast<uint32_t>(count), static_cast<int32_t*>(zeroed(count * sizeof(int32_t)))};
            octets contents;
            for (size_t i = 0; i < count; ++i) {
                const size_t which = all_widths ? i % std::size(values) : first;
                list.perms[i] = values[which];
                contents.insert(contents.end(), encodings[which].begin(), encodings[which].end());
            }
            const octets expected = element(0x30, element(0x30, contents));
            ASSERT_TRUE(encode(entry_points, original).ber == expected);
            structure copy(original.type());
            ASSERT_EQ(decode(entry_points, expected, copy), 0);
            ASSERT_EQ(difference(original.type(), original.get(), copy.get()), "");
        }
    }
}

octets times(size_t count, const octets& part) {
    octets all;
    for (; count != 0; --count)
        all.insert(all.end(), part.begin(), part.end());
    return all;
}

// Behind integers stand elements that are none, of fewer octets than one takes.
TEST(records, lists_that_go_on_otherwise) {
    const zr::record_type& type = *zr::find_record("acl_permset_s_t");
    for (const octets& other : {octets{2, 0}, octets{5, 0}, octets{2}, octets{2, 9, 1}}) {
        for (const size_t count : {1u, 31u, 32u, 33u, 100u}) {
            const octets ber = element(0x30, element(0x30, times(count, {2, 1, 5}) + times(90, other)));
            structure direct(type), tree(type);
            EXPECT_EQ(decode(entry_points, ber, direct), decode(object_tree, ber, tree)) << hex(other) << count;
            EXPECT_EQ(difference(type, direct.get(), tree.get()), "");
        }
    }
}

// What a decode with a report says of a list, and what is said without a structure.
void expect_reported(const zr::record_type& type, const octets& ber, int status) {
    zr::refusal found;
    EXPECT_EQ(type.examine(ber.data(), ber.size(), found), status);
    EXPECT_STREQ(found.count_name, status == zr_err_out_of_memory ? "count" : "");
    structure out(type);
    const octets whole = envelope(ber).all();
    zr::decode_report report;
    EXPECT_EQ(type.decode(whole.data(), whole.size(), out.get(), {}, report), status);
    EXPECT_STREQ(report.reason(), status == 0 ? "ok" : status == zr_err_out_of_memory ? "list_too_long" : "no_match");
}

// Beyond the count elements are read and checked like the others, and dropped.
TEST(records, values_beyond_the_count_are_refused) {
    const struct {
        const zr::record_type& type;
        octets element;
    } lists[] = {{zr::record<few_numbers_t>::type, {0x02, 1, 5}}, {zr::record<few_names_t>::type, {0x0C, 1, 0x41}}};
    for (const auto& list : lists) {
        for (const uint32_t count : {65535u, 65536u, 65537u}) {
            for (const bool is_odd_at_the_end : {false, true}) {
                octets elements = times(count, list.element);
                if (is_odd_at_the_end) elements = elements + octets{0x30, 0};
                const octets ber = element(0x30, element(0x30, elements));
                const int expected = is_odd_at_the_end ? zr_err_no_match : count == 65535 ? 0 : zr_err_out_of_memory;
                caught_stderr printed;
                allocations watched;
                structure copy(list.type);
                EXPECT_EQ(decode(entry_points, ber, copy), expected);
                EXPECT_EQ(leftover_of_free(copy), "");
                expect_reported(list.type, ber, expected);
                EXPECT_EQ(watched.live(), 1u) << "besides the structure itself";
            }
        }
    }
}

// A structure without blocks is read on its own way where the octets are the library's, and refused like others.
TEST(records, flat_structures_are_refused_like_others) {
    for (const char* ber : {"30 00", "30 03 02 01", "02 01 05", "30 03 04 01 05"}) {
        envelope in(bytes(ber));
        zr_asn_buffer_t buffer = in.buffer();
        uuid_t typed, other;
        std::memset(&typed, 0x5A, sizeof typed);
        std::memset(&other, 0x5A, sizeof other);
        const int status = zr::record<uuid_t>::type.decode(buffer, &other);
        EXPECT_NE(status, 0);
        EXPECT_EQ(zrAsnDecodeObj(buffer, typed), status) << ber;
        EXPECT_EQ(std::memcmp(&typed, &other, sizeof typed), 0) << ber;
    }
}

// What was found before counts no more, also when memory ends. Of a long path the middle is left out.
TEST(records, examined_without_a_structure) {
    const octets bad = bytes("30 0a 30 08 30 06 0c 02 41 42 02 00");
    zr::refusal found;
    const zr::record_type& list = *zr::find_record("attrlist_s_t");
    EXPECT_EQ(list.examine(bad.data(), bad.size(), found), zr_err_no_match);
    EXPECT_STREQ(found.path, "attrs[0].values");
    EXPECT_EQ(found.offset, 10u);
    {
        caught_stderr printed;
        allocations watched;
        watched.fail_allocation(1);
        EXPECT_EQ(list.examine(bad.data(), bad.size(), found), zr_err_out_of_memory);
    }
    EXPECT_STREQ(found.path, "");
    EXPECT_EQ(found.offset, 0u);
    octets chain = bytes("30 02 02 00");
    std::string half = "children[0]";
    for (int i = 0; i < 30; ++i)
        chain = element(0x30, octets{0x0C, 0, 0x30, 0} + element(0x30, chain));
    while (half.size() < 140)
        half += ".children[0]";
    EXPECT_EQ(zr::find_record("namevalue_s_t")->examine(chain.data(), chain.size(), found), zr_err_no_match);
    EXPECT_EQ(found.path, half + " ... " + half + ".name");
}

// Octets that look like a record and its end, where a reader comes that takes 80 for the length of a string.
TEST(records, a_segment_that_holds_what_looks_like_an_end) {
    const octets contents = times(125, {0x41}) + bytes("30 80 00 00 04 02 00 00");
    const octets ber = bytes("30 80 0c 00 24 80") + element(0x04, contents) + octets(4);
    for (const route& way : routes) {
        structure out(*zr::find_record("ejauditattribute_s_t"));
        ASSERT_EQ(decode(way, ber, out), 0);
        const auto& made = out.as<ejauditattribute_s_t>();
        EXPECT_EQ(octets(made.data, made.data + made.length), contents) << way.name;
    }
}

// sec_id_pa_t counts in 16 bits.
TEST(records, identities_beyond_the_count_are_refused) {
    structure one(*zr::find_record("sec_id_t"));
    const octets identity = encode(entry_points, one).ber;
    for (const uint32_t count : {65535u, 65536u}) {
        octets list;
        for (uint32_t i = 0; i < count; ++i)
            list.insert(list.end(), identity.begin(), identity.end());
        const octets ber = element(0x30, identity + element(0x30, list));
        for (const route& way : routes) {
            SCOPED_TRACE(way.name + std::string(", ") + std::to_string(count));
            allocations watched;
            caught_stderr printed;
            structure copy(*zr::find_record("sec_id_pa_t"));
            ASSERT_EQ(decode(way, ber, copy), count <= 65535 ? 0 : zr_err_out_of_memory);
            if (count <= 65535) {
                EXPECT_EQ(copy.as<sec_id_pa_t>().count, count);
                EXPECT_EQ(encode(way, copy).ber, ber);
            } else {
                const std::string line = "Exception: ASN: Memory error [10652065] in principal_asn at line ";
                EXPECT_EQ(printed.take().substr(0, line.size()), line);
            }
            EXPECT_EQ(leftover_of_free(copy), "");
            expect_reported(copy.type(), ber, count <= 65535 ? 0 : zr_err_out_of_memory);
            EXPECT_EQ(watched.live(), 1u) << "besides the structure itself";
        }
    }
}

// The positions of an array: behind the last slot they are read and checked like the others, and dropped.
TEST(records, positions_beyond_the_slots) {
    const octets null{0x05, 0x00};
    const octets empty_ext{0x30, 2, 0x30, 0};
    const struct {
        const char* name;
        octets fields_before;
    } arrays[] = {{"yvaction_group_s_t", {0x0C, 0}}, {"yvaction_groups_s_t", {}}};
    for (const auto& array : arrays) {
        const zr::record_type& type = *zr::find_record(array.name);
        const field* slots = type.fields;
        while (slots->held != holding::slots)
            ++slots;
        ASSERT_EQ(slots->size, 32u);
        structure slot(*slots->record);
        const octets filled = encode(entry_points, slot).ber;
        const auto repeated = [](size_t count, const octets& part) {
            octets all;
            while (count-- != 0)
                all = all + part;
            return all;
        };
        const octets bad_record = element(0x30, octets{0x05, 0x00});
        const struct {
            const char* what;
            octets positions;
            int status;
            int first, last;  // of the slots that are filled
        } rows[] = {
            {"none", {}, 0, 0, -1},
            {"a NULL without a length", {0x05}, zr_err_no_match, 0, -1},
            {"a NULL with contents", {0x05, 1, 0}, zr_err_no_match, 0, -1},
            {"the sixth", repeated(5, null) + filled, 0, 5, 5},
            {"the last", repeated(31, null) + filled, 0, 31, 31},
            {"all empty", repeated(40, null), 0, 0, -1},
            {"all", repeated(32, filled), 0, 0, 31},
            {"one too many", repeated(32, null) + filled, 0, 0, -1},
            {"many more", repeated(200, filled), 0, 0, 31},
            {"a malformed one", repeated(3, null) + bad_record, zr_err_no_match, 0, -1},
            {"a malformed one beyond", repeated(32, filled) + bad_record, zr_err_no_match, 0, -1},
            {"a NULL with contents beyond", repeated(40, null) + octets{0x05, 1, 0}, zr_err_no_match, 0, -1},
            {"an INTEGER beyond", repeated(33, filled) + octets{2, 1, 0}, zr_err_no_match, 0, -1},
            {"one that ends early beyond", repeated(33, null) + octets{0x30, 9}, zr_err_no_match, 0, -1},
            {"half a header beyond", repeated(33, null) + octets{0x30}, zr_err_no_match, 0, -1},
        };
        for (const auto& row : rows) {
            const octets ber = element(0x30, array.fields_before + element(0x30, row.positions) + empty_ext);
            for (const route& way : routes) {
                SCOPED_TRACE(array.name + std::string(", ") + way.name + ": " + row.what);
                allocations watched;
                structure copy(type);
                ASSERT_EQ(decode(way, ber, copy), row.status);
                for (int i = 0; i < 32; ++i) {
                    const void* value = zr::value_at(*slots, copy.get(), static_cast<uint32_t>(i));
                    EXPECT_EQ(value != nullptr, row.first <= i && i <= row.last) << i;
                }
                EXPECT_EQ(leftover_of_free(copy), "");
                EXPECT_EQ(watched.live(), 1u) << "besides the structure itself";
            }
        }
    }
}

// Records that contain themselves, and the list of which each makes a chain: every level is the only element of the one
// above.
const field* list_of_itself(const zr::record_type& type) {
    for (const field& field : type)
        if (field.record == &type) return &field;
    return nullptr;
}

std::vector<const zr::record_type*> deep_records() {
    std::vector<const zr::record_type*> found;
    for (const zr::record_type* type : all_records())
        if (list_of_itself(*type) != nullptr) found.push_back(type);
    EXPECT_EQ(found.size(), 2u);
    return found;
}

void make_chain(structure& top, size_t levels) {
    const field& list = *list_of_itself(top.type());
    for (void* level = top.get(); --levels != 0; level = zr::value_at(list, level, 0)) {
        void* element = zeroed(top.type().size);
        if (list.held == holding::pointer_list) {
            auto** array = static_cast<void**>(zeroed(sizeof(void*)));
            *array = std::exchange(element, array);
        }
        place<void*>(level, list.offset) = element;
        zr::store_count(list, level, 1);
    }
}

size_t levels_of(structure& top) {
    const field& list = *list_of_itself(top.type());
    size_t levels = 1;
    for (void* level = top.get(); zr::stored_count(list, level) == 1; level = zr::value_at(list, level, 0))
        ++levels;
    return levels;
}

// The object tree follows 2,000 records outwards and 2,000 nested SEQUENCEs, two for each record, inwards.
TEST(deep_records, the_object_tree_refuses_what_it_does_not_follow) {
    constexpr int refused = zr_err_out_of_memory;
    const struct {
        size_t levels;
        int encode_status, decode_status;
    } rows[] = {
        {1000, 0, 0}, {1001, 0, refused}, {2000, 0, refused}, {2001, refused, refused}, {5000, refused, refused}};
    for (const zr::record_type* type : deep_records()) {
        for (const auto& row : rows) {
            SCOPED_TRACE(type->name + (" " + std::to_string(row.levels)));
            allocations watched;
            {
                caught_stderr printed;
                structure original(*type), copy(*type);
                make_chain(original, row.levels);
                const encoded direct = encode(entry_points, original);
                const encoded tree = encode(object_tree, original);
                EXPECT_EQ(direct.status, 0);
                EXPECT_EQ(tree.status, row.encode_status);
                EXPECT_TRUE(tree.status != 0 || tree.ber == direct.ber);
                EXPECT_EQ(decode(object_tree, direct.ber, copy), row.decode_status);
                EXPECT_EQ(levels_of(copy), row.decode_status == 0 ? row.levels : 1u);
                const std::string_view line =
                    "Exception: Too many nested levels in asn_composite [10652065] in src/asn1/asnbase";
                EXPECT_EQ(printed.take().substr(0, line.size()), row.decode_status != 0 ? line : "");
            }
            EXPECT_EQ(watched.live(), 0u);
        }
    }
}

// What the thread of the next test does with a record; its answer is empty when all is well.
void* run_deep(void* record) {
    constexpr size_t levels = 1000000;
    const auto answer = [](const char* text) { return const_cast<char*>(text); };
    const auto& type = *static_cast<const zr::record_type*>(record);
    structure original(type), copy(type);
    make_chain(original, levels);
    zr_asn_buffer_t out{};
    if (type.encode(out, original.get()) != 0) return answer("encoding failed");
    int order = 1;
    if (zr::copy_record(type, original.get(), copy.get()) != 0) return answer("no copy");
    if (zr::order_records(type, original.get(), copy.get(), order) != 0 || order != 0) return answer("another copy");
    type.free(copy.get());
    zr_asn_buffer_t local{};
    if (type.encode_lcs(local, original.get()) != 0 || local.length != out.length) return answer("LCS encoding failed");
    zr_asn_buffer_free(local);
    type.free(original.get());
    // The innermost record as it is, with a string in the constructed form, and ending too early; on every way.
    unsigned char* const innermost = out.data + out.length - 6;
    zr::decode_options options;
    zr::decode_report report;
    for (const bool odd : {false, true}) {
        if (odd) innermost[0] |= 0x20;
        for (const bool local_texts : {false, true}) {
            const int status = local_texts ? type.decode_lcs(out, copy.get()) : type.decode(out, copy.get());
            if (status != 0) return answer("decoding failed");
            if (levels_of(copy) != levels) return answer("levels are missing");
            type.free(copy.get());
            if (levels_of(copy) != 1) return answer("levels are left");
        }
        options.strict = !odd;
        zr::packed_blocks blocks;
        if (type.decode_packed(out.data, out.length, copy.get(), blocks, options, report) != 0)
            return answer("packed decoding failed");
        if (levels_of(copy) != levels) return answer("packed levels are missing");
        std::memset(copy.get(), 0, type.size);
    }
    innermost[5] = 1;
    const int status = type.decode(out, copy.get());
    zr_asn_buffer_free(out);
    return answer(status == zr_err_data_ends_early && levels_of(copy) == 1 ? "" : "a bad octet is accepted");
}

TEST(deep_records, a_million_levels_on_a_small_stack) {
    pthread_attr_t attributes;
    ASSERT_EQ(pthread_attr_init(&attributes), 0);
    // On some architectures no thread may have less than 128 KiB.
    ASSERT_EQ(pthread_attr_setstacksize(&attributes, std::max<size_t>(64 * 1024, PTHREAD_STACK_MIN)), 0);
    for (const zr::record_type* type : deep_records()) {
        pthread_t thread{};
        ASSERT_EQ(pthread_create(&thread, &attributes, run_deep, const_cast<zr::record_type*>(type)), 0);
        void* answer = nullptr;
        ASSERT_EQ(pthread_join(thread, &answer), 0);
        EXPECT_STREQ(static_cast<const char*>(answer), "") << type->name;
    }
    pthread_attr_destroy(&attributes);
}

}  // namespace
}  // namespace zr_test
