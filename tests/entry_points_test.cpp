// The five entry points of each record are those of its type in the registry. The records are listed by the sources
// that define them: here each list makes rows of a table.
#include <gtest/gtest.h>

#include <algorithm>
#include <utility>

#include "asn1/codec/define_record.h"
#include "support/hex.h"
#include "support/routes.h"
#include "support/thread_locale.h"

namespace zr_test {
namespace {

struct entry_points_of_record {
    const zr::record_type* type;
    route plain, local;
    void (*free)(void*);
};

template <class S>
entry_points_of_record row_of() {
    return {&zr::record<S>::type,
            {"plain",
             [](const zr::record_type&, zr_asn_buffer_t& out, void* in) {
                 return zrAsnEncodeObj(out, *static_cast<S*>(in));
             },
             [](const zr::record_type&, zr_asn_buffer_t& in, void* out) {
                 return zrAsnDecodeObj(in, *static_cast<S*>(out));
             }},
            {"LCS",
             [](const zr::record_type&, zr_asn_buffer_t& out, void* in) {
                 return zrAsnEncodeObjLCS(out, *static_cast<S*>(in));
             },
             [](const zr::record_type&, zr_asn_buffer_t& in, void* out) {
                 return zrAsnDecodeObjLCS(in, *static_cast<S*>(out));
             }},
            [](void* structure) { zrAsnFreeObj(*static_cast<S*>(structure)); }};
}

std::vector<entry_points_of_record>& table() {
    static std::vector<entry_points_of_record> rows;
    return rows;
}

template <class... S>
bool add_rows() {
    (table().push_back(row_of<S>()), ...);
    return true;
}

}  // namespace
}  // namespace zr_test

#undef ZR_DEFINE_MODULE
#define ZR_DEFINE_MODULE(module, ...) \
    [[maybe_unused]] static const bool zr_rows_of_##module = zr_test::add_rows<__VA_ARGS__>()

// NOLINTBEGIN(bugprone-suspicious-include)
#include "base_idls/RemoteLog_asn.cpp"
#include "base_idls/aclidl_asn.cpp"
#include "base_idls/actionidl_asn.cpp"
#include "base_idls/attrlist_asn.cpp"
#include "base_idls/azn_remote_authn_asn.cpp"
#include "base_idls/azn_remote_authz_asn.cpp"
#include "base_idls/azn_remote_creds_mod_asn.cpp"
#include "base_idls/azn_remote_entitlements_asn.cpp"
#include "base_idls/aznserver_asn.cpp"
#include "base_idls/dbreplica_asn.cpp"
#include "base_idls/ejauditidl_asn.cpp"
#include "base_idls/namevalue_asn.cpp"
#include "base_idls/pobj_asn.cpp"
#include "base_idls/principal_asn.cpp"
#include "base_idls/yvaclobjs_asn.cpp"
#include "base_idls/yvobj_asn.cpp"
#include "base_idls/yvobj_base_asn.cpp"
#include "base_idls/yvpopobjs_asn.cpp"
#include "base_idls/yvsvr_enc_asn.cpp"
#include "base_idls/zrnbase_asn.cpp"
// NOLINTEND(bugprone-suspicious-include)

#undef ZR_DEFINE_MODULE

namespace zr_test {
namespace {

TEST(entry_points, are_those_of_the_registry) {
    const thread_locale in_use("latin1");
    const octets bad = {4, 2, 0xAC, 0xDD, 0x30, 0};
    std::mt19937 random(41);
    for (const auto& row : table()) {
        const zr::record_type& type = *row.type;
        SCOPED_TRACE(type.name);
        for (int i = 0; i < 4; ++i) {
            structure original(type);
            fill(type, original.get(), random, {200, 3, true});
            for (char** text : texts_of(type, original.get()))
                if (*text != nullptr && **text != 0) **text = '\xE9';  // two octets in UTF-8
            for (const auto& [own, by_type] : {std::pair{row.plain, entry_points}, {row.local, local_entry_points}}) {
                const encoded made = encode(own, original), expected = encode(by_type, original);
                ASSERT_EQ(made.status, expected.status) << own.name;
                EXPECT_EQ(hex(made.ber), hex(expected.ber)) << own.name;
                structure out(type), other(type);
                ASSERT_EQ(decode(own, expected.ber, out), decode(by_type, expected.ber, other)) << own.name;
                EXPECT_EQ(difference(type, out.get(), other.get()), "") << own.name;
                row.free(out.get());
                EXPECT_EQ(leftover(type, out.get()), "") << own.name;
                octets refused = bad;
                zr_asn_buffer_t in{static_cast<unsigned int>(refused.size()), refused.data()};
                EXPECT_EQ(own.decode(type, in, out.get()), zr_err_bad_envelope) << own.name;
            }
        }
    }
}

TEST(entry_points, of_every_record) {
    std::vector<const zr::record_type*> listed;
    for (const auto& row : table())
        listed.push_back(row.type);
    for (const zr::record_type* type : all_records()) {
        // What has a class of its own has no entry points.
        const long times = class_of(*type) != nullptr ? 0 : 1;
        EXPECT_EQ(std::count(listed.begin(), listed.end(), type), times) << type->name;
    }
}

}  // namespace
}  // namespace zr_test
