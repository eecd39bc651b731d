// Any octets for what the command-line program looks at them with: the walk over BER gives every octet once, whatever
// they are; find_mismatch refuses what the decode refuses, with its status; an encoding without deviations is the
// library's; and where the walk over headers takes all members of an encoding, it writes the JSON that decode writes.
//
// The first two octets pick the record, the others are its encoding without the envelope.

#include "asn1/status.h"
#include "json/ber/deviations.h"
#include "json/ber/mismatch.h"
#include "json/ber/record_guide.h"
#include "json/ber/scanner.h"
#include "json/document/record_writer.h"
#include "json/document/selection.h"
#include "pick_record.h"
#include "require.h"
#include "support/routes.h"

namespace {

using namespace zr_test;
using zr::json::ber_damage;
using zr::json::ber_item;
using zr::json::ber_kind;

void walk(const zr::record_type& type, const octets& ber) {
    zr::json::ber_scanner scanner(ber.data(), ber.size());
    zr::json::record_guide guide(&type);
    size_t at = 0;
    for (ber_item item; scanner.next(item);) {
        require(item.offset == at, "the walk leaves octets out, or gives them twice");
        if (item.kind != ber_kind::missing_end) at += item.opens() ? item.header : item.header + item.length;
        guide.leave(item.depth, [](size_t, const zr::field&) {});
        if (item.kind == ber_kind::element) guide.visit(item);
    }
    require(at == ber.size(), "the walk ends early");
    require(guide.path().size() < 4096, "a long path is not cut");
}

// Whether an accepted record has identifiers that wrap around to the tag that is due, or may have them in what a length
// that wraps around hides. Its end may lie before one that a length gives, and the record alone is no longer whole.
bool wraps(const octets& ber) {
    zr::json::ber_scanner scanner(ber.data(), ber.size());
    for (ber_item item; scanner.next(item);)
        if (item.identifier_size > 1 || item.kind == ber_kind::unreadable || item.damage == ber_damage::too_long)
            return true;
    return false;
}

void compare(const zr::record_type& type, const octets& ber) {
    structure decoded(type);
    const int status = decode(entry_points, ber, decoded);
    zr::json::mismatch found;
    const bool refused = zr::json::find_mismatch(ber.data(), ber.size(), type, found);
    require(refused == (status != 0), "find_mismatch and decode disagree");
    require(!refused || found.status == status, "find_mismatch has another status");
    if (refused) return;
    bool any = false;
    zr::json::find_deviations(ber.data(), ber.size(), 0, type, decoded.get(), [&any](const zr::json::deviation& other) {
        any = any || other.kind != zr::json::deviation_kind::not_utf8;
    });
    if (!wraps(ber)) {
        const auto end = static_cast<long>(zr::json::record_end(ber.data(), ber.size(), type));
        structure alone(type);
        require(decode(entry_points, octets(ber.begin(), ber.begin() + end), alone) == 0, "the record ends elsewhere");
    }
    require(any == (encode(entry_points, decoded).ber != ber),
            "deviations where there are none, or none where there are");
}

void choose(const zr::record_type& type, const octets& ber) {
    zr::json::selection all(type, zr::json::secret_values::shown);
    std::string message;
    for (const zr::field& member : type)
        if (zr::has_member(member.value)) require(all.select(member.name, message), "a member cannot be selected");
    zr::json::text_output chosen, whole;
    const auto layout = zr::json::json_layout::one_line;
    if (all.write(chosen, ber.data(), ber.size(), layout) != zr::json::selection::answer::yes) return;
    structure decoded(type);
    require(decode(entry_points, ber, decoded) == 0, "the walk over headers takes what decode refuses");
    zr::json::write_json(whole, type, decoded.get(), layout, zr::json::secret_values::shown);
    // As a whole a UUID is no object.
    require(chosen.text() == whole.text() || whole.text()[0] == '"', "the walk over headers gives another value");
}

}  // namespace

const zr::record_type& zr_test::record_of(const uint8_t* head) { return pick_record(head); }

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 2) return 0;
    const zr::record_type& type = record_of(data);
    const octets ber(data + 2, data + size);
    const silence kept;
    walk(type, ber);
    if (ber.empty()) return 0;  // an envelope holds an octet at least
    compare(type, ber);
    choose(type, ber);
    return 0;
}
