#include <iconv.h>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include "asn1/record/members.h"
#include "asn1/zrasnapi.h"
#include "bench/acl/workload.h"
#include "bench/attrlist/workload.h"
#include "bench/audit/workload.h"
#include "bench/counts/odd_forms.h"
#include "bench/decision/workload.h"
#include "bench/harness/peer.h"
#include "bench/objects/workload.h"
#include "bench/uuid/workload.h"
#include "bench/values/values.h"

namespace bench {
namespace {

void check(bool holds, const std::string& what) {
    if (holds) return;
    std::fprintf(stderr, "%s does not do what it should\n", what.c_str());
    std::exit(1);
}

template <class S>
struct forms {
    int (*encode)(zr_asn_buffer_t& out, S& in);
    int (*decode)(zr_asn_buffer_t& in, S& out);
};
template <class S>
constexpr forms<S> plain = {zrAsnEncodeObj, zrAsnDecodeObj};
template <class S>
constexpr forms<S> local = {zrAsnEncodeObjLCS, zrAsnDecodeObjLCS};

template <class S>
std::string encoding_of(const forms<S>& by, S& record) {
    zr_asn_buffer_t out{};
    if (by.encode(out, record) != 0) return {};
    std::string encoding(reinterpret_cast<const char*>(out.data), out.length);
    zr_asn_buffer_free(out);
    return encoding;
}

// The cases of a record in a locale of the thread: null for the process's.
template <class S>
struct cases_of_record {
    std::vector<timed_case>& cases;
    std::string workload;

    void add_encoding(const char* way, const forms<S>& by, S& record, locale_t in_use) const {
        uselocale(in_use);
        const size_t octets = encoding_of(by, record).size();
        uselocale(LC_GLOBAL_LOCALE);
        check(octets != 0, workload + ", " + way);
        add(std::string(way) + "/encode", octets, in_use, [by, &record](size_t times) {
            for (; times != 0; --times) {
                zr_asn_buffer_t out{};
                if (by.encode(out, record) != 0) std::abort();
                keep(out.data);
                zr_asn_buffer_free(out);
            }
        });
    }
    // `canonical` is what an encode makes of the values in `encoding`.
    void add_decoding(const char* way, const forms<S>& by, const std::string& encoding, const std::string& canonical,
                      locale_t in_use) const {
        const auto in = [](const std::string& octets) {
            return zr_asn_buffer_t{static_cast<unsigned>(octets.size()),
                                   reinterpret_cast<unsigned char*>(const_cast<char*>(octets.data()))};
        };
        uselocale(in_use);
        zr_asn_buffer_t octets = in(encoding);
        S value{};
        check(by.decode(octets, value) == 0 && encoding_of(by, value) == canonical, workload + ", " + way);
        zrAsnFreeObj(value);
        uselocale(LC_GLOBAL_LOCALE);
        add(std::string(way) + "/decode", encoding.size(), in_use, [by, encoding, in](size_t times) {
            zr_asn_buffer_t buffer = in(encoding);
            for (; times != 0; --times) {
                S made{};
                if (by.decode(buffer, made) != 0) std::abort();
                keep(&made);
                zrAsnFreeObj(made);
            }
        });
    }
    void add(const std::string& what, size_t octets, locale_t in_use, std::function<void(size_t)> run) const {
        cases.push_back({workload + "/" + what, static_cast<double>(octets), 1, [in_use] { uselocale(in_use); },
                         std::move(run), [] { uselocale(LC_GLOBAL_LOCALE); }});
    }
};

template <class Take>
void each_text(const zr::record_type& type, void* structure, const Take& take) {
    for (const zr::field& field : type) {
        for (uint32_t i = 0; i < zr::place_count(field, structure); ++i) {
            void* value = zr::value_at(field, structure, i);
            if (field.value == zr::value_kind::text) take(*static_cast<char**>(value));
            if (field.value == zr::value_kind::record && value != nullptr) each_text(*field.record, value, take);
        }
    }
}

// One opening and closing of a converter, and one pass over the texts.
std::function<void(size_t)> pass_of_iconv(const char* to, const char* from, const std::vector<std::string>& texts) {
    return [=](size_t times) {
        char converted[1024];
        for (; times != 0; --times) {
            const iconv_t open = iconv_open(to, from);
            for (const std::string& text : texts) {
                auto* in = const_cast<char*>(text.data());
                char* out = converted;
                size_t left = text.size(), room = sizeof converted;
                if (iconv(open, &in, &left, &out, &room) != 0) std::abort();
                keep(converted);
            }
            iconv_close(open);
        }
    };
}

struct locales {
    locale_t utf8, latin1;
};

template <class Workload>
void add_local_forms(std::vector<timed_case>& all, const locales& known) {
    using S = typename Workload::structure;
    const cases_of_record<S> cases{all, Workload::name};
    S& record = sample<Workload>();
    const std::string encoding = encoding_of(plain<S>, record);
    cases.add_encoding("LCS in UTF-8", local<S>, record, known.utf8);
    cases.add_decoding("LCS in UTF-8", local<S>, encoding, encoding, known.utf8);
    cases.add_encoding("LCS, ASCII texts", local<S>, record, known.latin1);
    cases.add_decoding("LCS, ASCII texts", local<S>, encoding, encoding, known.latin1);

    static builder made_by;
    static S other = Workload::make(made_by);
    std::vector<std::string> texts, utf8_texts;
    each_text(zr::record<S>::type, &other, [&](char* text) {
        const size_t length = text != nullptr ? std::strlen(text) : 0;
        for (size_t i = length / 2 % 10; i < length; i += 10)
            text[i] = '\xE9';
        texts.emplace_back(text != nullptr ? text : "");
        utf8_texts.emplace_back();
        for (const char c : texts.back())
            utf8_texts.back() += c == '\xE9' ? std::string("\xC3\xA9") : std::string(1, c);
    });
    cases.add_encoding("LCS, other texts", local<S>, other, known.latin1);
    uselocale(known.latin1);
    const std::string other_encoding = encoding_of(local<S>, other);
    uselocale(LC_GLOBAL_LOCALE);
    cases.add_decoding("LCS, other texts", local<S>, other_encoding, other_encoding, known.latin1);
    cases.add("iconv/encode", encoding.size(), LC_GLOBAL_LOCALE, pass_of_iconv("UTF-8", "ISO-8859-1", texts));
    cases.add("iconv/decode", encoding.size(), LC_GLOBAL_LOCALE, pass_of_iconv("ISO-8859-1", "UTF-8", utf8_texts));
}

template <class Workload>
void add_odd_forms(std::vector<timed_case>& all) {
    using S = typename Workload::structure;
    const cases_of_record<S> cases{all, Workload::name};
    const std::string encoding = encoding_of(plain<S>, sample<Workload>());
    const auto add = [&](const char* way, const form_chooser& choose) {
        const std::string_view contents = std::string_view(encoding).substr(envelope_length);
        cases.add_decoding(way, plain<S>, encoding.substr(0, envelope_length) + in_other_forms(contents, choose),
                           encoding, LC_GLOBAL_LOCALE);
    };
    constexpr unsigned char sequence = 0x30, utf8_string = 0x0C, octet_string = 0x04;
    add("indefinite lengths",
        [](unsigned char found) { return found == sequence ? form::indefinite_length : form::shortest; });
    add("long lengths", [](unsigned char) { return form::long_length; });
    add("segments", [](unsigned char found) {
        return found == utf8_string || found == octet_string ? form::short_segments : form::shortest;
    });
}

template <class... Workloads>
void add_all(std::vector<timed_case>& cases) {
    (add_odd_forms<Workloads>(cases), ...);
    // What is looked for in LOCPATH is looked for nowhere else.
    locales known{newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr), nullptr};
    setenv("LOCPATH", ZR_BENCH_LOCALES, 1);
    known.latin1 = newlocale(LC_CTYPE_MASK, "latin1", nullptr);
    if (known.utf8 == nullptr || known.latin1 == nullptr) {
        std::fprintf(stderr, "The forms for the local code set are skipped: no locale C.UTF-8, or no latin1 in %s\n",
                     ZR_BENCH_LOCALES);
        return;
    }
    (add_local_forms<Workloads>(cases, known), ...);
}

}  // namespace

std::vector<timed_case> other_form_cases() {
    std::vector<timed_case> cases;
    add_all<uuid_workload, attrlist_workload, decision_workload, acl_workload, audit_workload, objects_workload>(cases);
    return cases;
}

}  // namespace bench
