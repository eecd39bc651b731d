// Any octets for the interface that names a record by a number: it answers as the binding classes do, and what it reads
// it writes to octets that read the same. The first octet picks the code, the second the version.

#include "asn1/zrasnapi.h"
#include "pick_record.h"
#include "require.h"
#include "support/routes.h"

namespace {

using namespace zr_test;

void check_record(const zr::record_type& type, unsigned int code, const octets& ber) {
    envelope in(ber);
    zr_asn_buffer_t buffer = in.buffer();
    structure direct(type), by_class(type);
    const int status = zrasn_decode_obj(zr::envelope_version, buffer, code, direct.get());
    require(status == object_tree.decode(type, buffer, by_class.get()), "another status");
    require(difference(type, direct.get(), by_class.get()).empty(), "another structure");
    require(status == 0 || leftover(type, direct.get()).empty(), "a refused decode leaves something");
    if (status != 0) return;
    zr_asn_buffer_t out{}, other{};
    require(zrasn_encode_obj(zr::envelope_version, direct.get(), code, out) == 0, "what decodes does not encode");
    require(object_tree.encode(type, other, by_class.get()) == 0, "what decodes does not encode by its class");
    require(octets(out.data, out.data + out.length) == octets(other.data, other.data + other.length),
            "another encoding");
    zr_asn_buffer_free(out);
    zr_asn_buffer_free(other);
    require(zrasn_obj_free(zr::envelope_version, code, direct.get()) == 0 && leftover(type, direct.get()).empty(),
            "something is not released");
}

void check_integer(int version, zr_asn_buffer_t in) {
    zrasn_integer_value value = 0x5A5A;
    const int status = zrasn_decode_obj(version, in, zrasn_type_integer, &value);
    require(status == 0 || value == (status == zr_err_integer_too_long ? 0 : 0x5A5A), "a refused INTEGER is stored");
    if (status != 0) return;
    zr_asn_buffer_t out{};
    require(zrasn_encode_obj(version, &value, zrasn_type_integer, out) == 0, "an INTEGER does not encode");
    zrasn_integer_value again = ~value;
    require(zrasn_decode_obj(version, out, zrasn_type_integer, &again) == 0 && again == value, "another INTEGER");
    zr_asn_buffer_free(out);
}

}  // namespace

const zr::record_type& zr_test::record_of(const uint8_t* head) {
    return *zr::find_record(head[0] % 4 == 1 ? "yvobj_update_list_s_t" : "cert_request_in");
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 3) return 0;
    const silence kept;
    const octets ber(data + 2, data + size);
    envelope whole(ber);
    zr_asn_buffer_t in = whole.buffer();
    unsigned int flag = 2;
    static_cast<void>(zrasn_version(in, flag));
    require(flag == 0, "an envelope without its version");
    switch (data[0] % 4) {
        case 0:
            check_record(*zr::find_record("cert_request_in"), zrasn_type_cert_request, ber);
            break;
        case 1:
            check_record(*zr::find_record("yvobj_update_list_s_t"), zrasn_type_update_list, ber);
            break;
        case 2:
            check_integer(data[1] % 4, in);
            break;
        default:
            require(zrasn_decode_obj(2, in, 256u + data[1] / 128u, whole.all().data()) == -1,
                    "an unknown code is known");
            break;
    }
    return 0;
}
