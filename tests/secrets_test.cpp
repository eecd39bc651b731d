// Members marked secret: no octet of them is found in a block that is released or moved, nor on the stack that a call
// has used.
#include <gtest/gtest.h>
#include <pthread.h>

#include <cstdlib>
#include <cstring>
#include <functional>
#include <vector>

#include "asn1/codec/copy.h"
#include "base_idls/attrlist_asn.h"
#include "base_idls/azn_remote_authn_asn.h"
#include "support/allocations.h"
#include "support/caught_stderr.h"
#include "support/hex.h"
#include "support/routes.h"
#include "support/thread_locale.h"
#include "zrasn/decode.h"

namespace zr_test {
namespace {

const zr::record_type& password = zr::record<azn_util_password_in_s_t>::type;
const std::string secret = "sesame open the door";
// So many octets of it in a row are a trace. Without optimisation a few at a time pass over the stack.
#ifdef __OPTIMIZE__
constexpr size_t trace = 8;
#else
constexpr size_t trace = 20;
#endif

// Calls the body further down the stack than the end of a thread reaches, which would overwrite what it leaves.
[[gnu::noinline]] void call_below(const std::function<void()>& body) {
    char above[16384];
    asm volatile("" : : "r"(above) : "memory");
    body();
    asm volatile("" : : "r"(above) : "memory");
}

// Runs the body on a stack of its own and answers whether there is a trace of the secret afterwards.
bool leaves_on_stack(const std::function<void()>& body) {
    std::vector<char> stack(256 * 1024);
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    EXPECT_EQ(pthread_attr_setstack(&attributes, stack.data(), stack.size()), 0);
    pthread_t thread{};
    const auto run = [](void* context) -> void* {
        call_below(*static_cast<const std::function<void()>*>(context));
        return nullptr;
    };
    EXPECT_EQ(pthread_create(&thread, &attributes, run, const_cast<std::function<void()>*>(&body)), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
    const std::string_view left(stack.data(), stack.size());
    for (size_t at = 0; at + trace <= secret.size(); ++at)
        if (left.find(std::string_view(secret).substr(at, trace)) != left.npos) return true;
    return false;
}

#ifdef __OPTIMIZE__
// What is copied a few octets at a time goes through registers only.
TEST(secrets, are_copied_without_a_trace) {
    const std::string text = secret + secret + secret + secret;
    std::vector<unsigned char> copy(text.size());
    for (size_t length = 0; length <= text.size(); ++length) {
        EXPECT_FALSE(leaves_on_stack([&] { zr::copy_octets(copy.data(), text.data(), length); })) << length;
        EXPECT_FALSE(leaves_on_stack([&] { zr::copy_varied(copy.data(), text.data(), length); })) << length;
        EXPECT_EQ(std::memcmp(copy.data(), text.data(), length), 0);
    }
    EXPECT_TRUE(leaves_on_stack([&] {
        char local[trace];
        std::memcpy(local, text.data(), sizeof local);
        asm volatile("" : : "r"(local) : "memory");
    }));
}
#endif

// The search sees what the library releases.
TEST(secrets, are_found_where_no_member_is_marked) {
    const octets text(secret.begin(), secret.end());
    envelope in(element(0x30, element(0x0C, text) + bytes("30 00")));
    const zr_asn_buffer_t buffer = in.buffer();
    const secret_search search({secret});
    attr_s_t out{};
    EXPECT_EQ(zr::record<attr_s_t>::type.decode(buffer, &out), 0);
    EXPECT_EQ(search.found(), 0u);
    zr::record<attr_s_t>::type.free(&out);
    EXPECT_EQ(search.found(), 1u);
}

TEST(secrets, leave_no_trace) {
    // Letters of two octets in UTF-8, so that the texts are converted; one so long that it grows where it is converted.
    std::string letters;
    for (int i = 0; i < 60; ++i)
        letters += "\xC3\xBF";
    for (const std::string& tail : {std::string(), std::string("\xC3\xA9"), letters.substr(0, 20), letters,
                                    std::string(5000, '-') + "\xC3\xA9", std::string("\0 and more", 10)}) {
        const auto text = [&](unsigned char identifier) {
            octets contents(secret.begin(), secret.end());
            contents.insert(contents.end(), tail.begin(), tail.end());
            if (identifier == 0x2C) contents = element(0x04, contents) + element(0x04, {});
            return element(identifier, contents);
        };
        for (const unsigned char identifier : octets{0x0C, 0x2C}) {
            envelope whole(element(0x30, text(identifier) + text(identifier)));
            envelope indefinite(octets{0x30, 0x80} + text(identifier) + text(identifier) + octets{0, 0});
            envelope cut(element(0x30, text(identifier) + octets{0x0C, 0x05}));
            SCOPED_TRACE(std::to_string(tail.size()) + " octets behind it, " + std::to_string(identifier));
            const auto body = [&](const char* locale) {
                const thread_locale in_use(locale);
                caught_stderr printed;
                const secret_search search({secret});
                azn_util_password_in_s_t out{};
                for (envelope* in : {&whole, &indefinite, &cut}) {
                    const int expected = in != &cut ? 0 : static_cast<int>(zr_err_data_ends_early);
                    const zr_asn_buffer_t buffer = in->buffer();
                    for (const bool local : {false, true}) {
                        EXPECT_EQ(local ? password.decode_lcs(buffer, &out) : password.decode(buffer, &out), expected);
                        zr_asn_buffer_t written{};
                        EXPECT_EQ(local ? password.encode_lcs(written, &out) : password.encode(written, &out), 0);
                        zr_asn_buffer_wipe(written);
                        zr_asn_buffer_free(written);
                        password.free(&out);
                        for (const bool strict : {false, true}) {
                            zr::decode_options options;
                            options.local_texts = local;
                            options.strict = strict;
                            zr::decode_report report;
                            static_cast<void>(password.decode(buffer.data, buffer.length, &out, options, report));
                            password.free(&out);
                            zr::packed<azn_util_password_in_s_t> packed;
                            static_cast<void>(packed.decode(buffer.data, buffer.length, options, report));
                            static_cast<void>(packed.decode(buffer.data, buffer.length, options, report));
                        }
                    }
                }
                EXPECT_EQ(search.found(), 0u);
            };
            // With the C library's converter and without, into texts that are shorter, and longer.
            for (const char* locale : {"euc_jp", "latin1", "gb18030"})
                EXPECT_FALSE(leaves_on_stack([&] { body(locale); })) << locale;
        }
    }
}

}  // namespace
}  // namespace zr_test
