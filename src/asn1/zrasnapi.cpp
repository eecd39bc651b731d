#include "asn1/zrasnapi.h"

#include <cstdlib>
#include <cstring>

#include "asn1/asn_yvobjs.h"

namespace {

constexpr int unknown_type = -1;

enum operation { op_encode, op_decode, op_free };

// A value that is being decoded: nothing of it is left behind unless it is handed on.
template <class Record, class Value>
struct decoded_value {
    Value value{};

    decoded_value() = default;
    decoded_value(const decoded_value&) = delete;
    decoded_value& operator=(const decoded_value&) = delete;
    ~decoded_value() { Record::free_obj(value); }
};

template <class Record, class Value>
int run_record(operation op, int version, Value& value, zr_asn_buffer_t& buffer) {
    if (op == op_free) {
        Record::free_obj(value);
        return 0;
    }
    Record record(zr_normal);
    if (op == op_encode) {
        // Without memory for all of the value no part of it is written.
        if (int status = record.set_value(value); status == zr_err_out_of_memory) return status;
        return zr_asnbase::saveEncoding(record, version, buffer);
    }
    if (int status = zr_asnbase::loadObject(record, version, buffer)) return status;
    decoded_value<Record, Value> made;
    if (int status = record.get_value(made.value)) return status;
    value = made.value;
    made.value = {};
    return 0;
}

int run_integer(operation op, int version, void* untyped, zr_asn_buffer_t& buffer) {
    if (op == op_free) return 0;  // the pointer is not looked at
    auto& value = *static_cast<zrasn_integer_value*>(untyped);
    zr_asn_integer integer(zr_normal);
    if (op == op_encode) {
        static_cast<void>(integer.set_value(long{value}));
        return zr_asnbase::saveEncoding(integer, version, buffer);
    }
    if (int status = zr_asnbase::loadObject(integer, version, buffer)) return status;
    long content = 0;
    const int status = integer.get_value(content);
    value = static_cast<zrasn_integer_value>(content);
    return status;
}

int main_func(operation op, int version, void* value, unsigned int type, zr_asn_buffer_t& buffer) try {
    switch (type) {
        case zrasn_type_cert_request:
            return run_record<zr_asn_cert_request_in>(op, version, *static_cast<cert_request_in*>(value), buffer);
        case zrasn_type_update_list:
            return run_record<zr_asn_yvobj_update_list_t>(op, version, *static_cast<yvobj_update_list_s_t*>(value),
                                                          buffer);
        case zrasn_type_integer:
            return run_integer(op, version, value, buffer);
        default:
            return unknown_type;
    }
} catch (const zr_asn_exception& exception) {
    return zr::report_exception(exception);
} catch (...) {
    return zr_err_out_of_memory;
}

// The octets of the value that a type code names.
size_t value_octets(unsigned int type) {
    switch (type) {
        case zrasn_type_cert_request:
            return sizeof(cert_request_in);
        case zrasn_type_update_list:
            return sizeof(yvobj_update_list_s_t);
        case zrasn_type_integer:
            return sizeof(zrasn_integer_value);
        default:
            return 0;
    }
}

}  // namespace

int zrasn_encode_obj(int version, void* value, unsigned int type, zr_asn_buffer_t& out) {
    return main_func(op_encode, version, value, type, out);
}

int zrasn_decode_obj(int version, zr_asn_buffer_t& in, unsigned int type, void* value) {
    const int status = main_func(op_decode, version, value, type, in);
    if (zr::clears_structure(status)) std::memset(value, 0, value_octets(type));
    return status;
}

int zrasn_obj_free(int version, unsigned int type, void* value) {
    zr_asn_buffer_t none{};
    return main_func(op_free, version, value, type, none);
}

int zrasn_version(const zr_asn_buffer_t& in, unsigned int& flag) { return zr_asnbase::get_encoded_version(in, flag); }

void zr_asn_buffer_free(zr_asn_buffer_t& buffer) { std::free(buffer.data); }

void zr_asn_buffer_copy(const zr_asn_buffer_t& src, zr_asn_buffer_t& dst, unsigned int& status) {
    dst = {0, nullptr};
    status = 0;
    if (src.length == 0 || src.data == nullptr) return;
    dst.length = src.length;
    dst.data = static_cast<unsigned char*>(std::malloc(src.length));
    if (dst.data == nullptr) {
        status = zr_err_out_of_memory;
        return;
    }
    std::memcpy(dst.data, src.data, src.length);
}
