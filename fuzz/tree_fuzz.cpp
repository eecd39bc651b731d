// The object tree. What it takes from any octets it writes again in one form, which reads back as itself; and an object
// that has been used answers like a new one.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "asn1/asnbase.h"
#include "asn1/zrasnbase.h"

namespace {

void require(bool holds) {
    if (!holds) std::abort();
}

// One member of every kind, in every role.
struct record : zr_asn_sequence {
    explicit record(security_t mode, int levels = 1) : zr_asn_sequence(mode) {
        flag.set_default_value(1);
        text.set_optional(1);
        bits.set_optional(1);
        list.set_tag(1);
        list.set_class(2);
        list.set_optional(1);
        choice.set_optional(1);
        other.set_tag(3);
        other.set_class(2);
        choice.register_child(&other);
        choice.register_child(&octets);
        for (zr_asn_object* member : members())
            register_child(member);
        if (levels == 0) return;
        inner = new record(mode, levels - 1);
        inner->set_optional(1);
        register_child(inner);
    }
    ~record() override { delete inner; }

    std::vector<zr_asn_object*> members() { return {&number, &flag, &text, &bits, &null, &list, &choice}; }

    // Reading does not keep the contents of OCTET STRINGs for writing: set them.
    void keep_octets() {
        for (zr_asn_octetstring* object : {&text, &octets}) {
            unsigned char* data = nullptr;
            unsigned int length = 0;
            if (object->is_present() == 0) continue;
            require(object->get_value(data, length) == 0 && data[length] == 0);
            const std::vector<unsigned char> copy(data, data + length);
            object->set_value(copy.data(), length);
        }
        if (inner != nullptr) inner->keep_octets();
    }

    zr_asn_integer number{zr_normal};
    zr_asn_boolean flag{zr_normal};
    zr_asn_octetstring text{zr_normal};
    zr_asn_bitstring bits{zr_normal};
    zr_asn_null null{zr_normal};
    zr_asn_sequenceof<zr_asn_integer> list{zr_normal};
    zr_asn_choice choice{zr_normal};
    zr_asn_integer other{zr_normal};
    zr_asn_octetstring octets{zr_normal};
    record* inner = nullptr;
};

struct answer {
    int status;
    size_t consumed;
    std::string written;
    bool operator==(const answer& o) const {
        return status == o.status && consumed == o.consumed && written == o.written;
    }
};

answer read(record& object, const std::vector<unsigned char>& octets) {
    zr_r_buffer_t cursor(const_cast<unsigned char*>(octets.data()), static_cast<unsigned int>(octets.size()));
    answer got{object.asnread(cursor), octets.size() - cursor.remaining(), {}};
    require(cursor.remaining() <= octets.size());
    require(object.is_present() == (got.status == 0 ? 1 : 0));
    if (got.status != 0) {
        // Only missing end-of-contents octets leave the cursor elsewhere.
        require(got.consumed == 0 || got.status == zr_err_bad_contents);
        for (zr_asn_object* member : object.members())
            require(member == &object.null || member->is_present() == 0);
        return got;
    }
    object.keep_octets();
    zr_buffer_t output(zr_normal);
    require(object.asnwrite(output) == 0);
    got.written.assign(reinterpret_cast<char*>(output.data()), output.length());
    return got;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::vector<unsigned char> octets(data, data + size);
    record used(zr_normal), secure(zr_secure);
    const answer first = read(used, octets);
    require(read(secure, octets) == first);
    require(read(used, octets) == first);
    if (first.status != 0) return 0;
    const std::vector<unsigned char> one_form(first.written.begin(), first.written.end());
    const answer again = read(used, one_form);
    require(again.status == 0 && again.consumed == one_form.size() && again.written == first.written);
    return 0;
}
