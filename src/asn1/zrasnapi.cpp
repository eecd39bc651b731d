#include "asn1/zrasnapi.h"

#include <cstdlib>
#include <cstring>

#include "asn1/asnbase/buffer.h"
#include "asn1/codec/entry_points.h"
#include "base_idls/asn_yvobjs.h"

namespace {

constexpr int unknown_type = -1;

enum operation { op_encode, op_decode, op_free };

// The record's classes answer an array that finds no memory with the status alone; the codec says it with an exception
// that names the record's module, and all others name a source file.
template <class Call>
int unless_array(const zr::record_type& type, const Call& call) {
    try {
        return call();
    } catch (const zr_asn_exception& exception) {
        if (std::strcmp(exception.file, type.module) != 0) throw;
        return static_cast<int>(exception.code);
    }
}

int run_record(operation op, int version, const zr::record_type& type, void* value, zr_asn_buffer_t& buffer) {
    switch (op) {
        case op_encode:
            return zr::encode_record(type, buffer, value, version);
        case op_decode:
            return unless_array(type, [&] { return zr::decode_record(type, buffer, value, version); });
        case op_free:
            type.free(value);
            break;
    }
    return 0;
}

int run_integer(operation op, int version, void* value, zr_asn_buffer_t& buffer) {
    if (op == op_free) return 0;  // the pointer is not looked at
    auto& integer = *static_cast<zrasn_integer_value*>(value);
    return op == op_encode ? zr::encode_integer(buffer, integer, version)
                           : zr::decode_integer(buffer, integer, version);
}

int main_func(operation op, int version, void* value, unsigned int type, zr_asn_buffer_t& buffer) try {
    switch (type) {
        case zrasn_type_cert_request:
            return run_record(op, version, zr::record<cert_request_in>::type, value, buffer);
        case zrasn_type_update_list:
            return run_record(op, version, zr::record<yvobj_update_list_s_t>::type, value, buffer);
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

void zr_asn_buffer_wipe(zr_asn_buffer_t& buffer) {
    if (buffer.data != nullptr) zr::wipe(buffer.data, buffer.length);
}

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
