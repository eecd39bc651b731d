#include "asn1/asn_yvobjs.h"

#include <cstdlib>
#include <cstring>

#include "asn1/asnutils.h"

namespace {

constexpr long record_version = 1;

// The version of an object that has one, because it has read it, stays.
int keep_version(zr_asn_integer& version) { return version.is_present() != 0 ? 0 : version.set_value(record_version); }

template <class T>
void free_block(T*& block) {
    std::free(block);
    block = nullptr;
}

}  // namespace

zr_asn_yvobj_update_t::zr_asn_yvobj_update_t(security_t mode)
    : zr_asnbase(mode), version_(zr_normal), int_a_(zr_normal), name_(zr_normal), int_b_(zr_normal) {
    set_type_name("yvobj_update");
    register_child(&version_);
    register_child(&int_a_);
    register_child(&name_);
    register_child(&int_b_);
    version_.set_value(record_version);
}

int zr_asn_yvobj_update_t::set_value(yvobj_update_s_t& in) {
    invalidate_encoding();  // the members' setters leave it as it is
    if (int status = keep_version(version_)) return status;
    if (int status = int_a_.set_value(long{in.int_a})) return status;
    if (int status = zr_set_strvalue(name_, in.name)) return status;
    return int_b_.set_value(long{in.int_b});
}

int zr_asn_yvobj_update_t::get_value(yvobj_update_s_t& out) {
    out = {};
    out.int_a = static_cast<int32_t>(zr_intvalue(int_a_));
    out.int_b = static_cast<int32_t>(zr_intvalue(int_b_));
    return zr_get_strvalue(name_, out.name);
}

void zr_asn_yvobj_update_t::free_obj(yvobj_update_s_t& s) { free_block(s.name); }

zr_asn_yvobj_update_list_t::zr_asn_yvobj_update_list_t(security_t mode) : zr_v37_asnbase(mode), updates_(zr_normal) {
    set_type_name("yvobj_update_list");
    updates_.set_value_valid();
    register_child(&updates_);
}

int zr_asn_yvobj_update_list_t::set_value(yvobj_update_list_s_t& in) {
    if (int status = keep_version(version_)) return status;
    updates_.emptyi();
    updates_.set_value_valid();
    const uint32_t count = in.updates != nullptr ? in.count : 0;
    for (uint32_t i = 0; i < count; ++i) {
        zr_asn_yvobj_update_t* element = nullptr;
        try {
            element = updates_.add_child();
        } catch (const zr_asn_memexception&) {
            element = nullptr;  // an element that could not be made complete
        }
        const int status = element != nullptr ? element->set_value(in.updates[i]) : zr_err_out_of_memory;
        if (status != 0) {
            updates_.invalidate_value(zr_invalidate_own);
            return status;
        }
    }
    return 0;
}

int zr_asn_yvobj_update_list_t::get_value(yvobj_update_list_s_t& out) {
    out = {updates_.get_child_count(), nullptr};
    if (out.count == 0) return 0;
    out.updates = static_cast<yvobj_update_s_t*>(std::calloc(out.count, sizeof *out.updates));
    if (out.updates == nullptr) return zr_err_out_of_memory;
    for (uint32_t i = 0; i < out.count; ++i) {
        zr_asn_yvobj_update_t* element = updates_.get_child(i);
        if (element == nullptr) return zr_err_out_of_memory;
        if (int status = element->get_value(out.updates[i])) return status;
    }
    return 0;
}

void zr_asn_yvobj_update_list_t::free_obj(yvobj_update_list_s_t& s) {
    for (uint32_t i = 0; s.updates != nullptr && i < s.count; ++i)
        zr_asn_yvobj_update_t::free_obj(s.updates[i]);
    free_block(s.updates);
    s.count = 0;
}

zr_asn_cert_request_in::zr_asn_cert_request_in(security_t mode)
    : zr_v37_asnbase(mode), str_a_(zr_normal), str_b_(zr_normal), body_(zr_normal) {
    set_type_name("cert_request_in");
    body_.set_optional(1);
    register_child(&str_a_);
    register_child(&str_b_);
    register_child(&body_);
}

int zr_asn_cert_request_in::set_value(cert_request_in& in) {
    invalidate_encoding();  // the members' setters leave it as it is
    if (int status = keep_version(version_)) return status;
    if (int status = zr_set_strvalue(str_a_, in.str_a)) return status;
    if (int status = zr_set_strvalue(str_b_, in.str_b)) return status;
    if (in.body_length == 0 || in.body == nullptr) return body_.empty();
    return body_.set_value(in.body, in.body_length);
}

int zr_asn_cert_request_in::get_value(cert_request_in& out) {
    out = {};
    if (int status = zr_get_strvalue(str_a_, out.str_a)) return status;
    if (int status = zr_get_strvalue(str_b_, out.str_b)) return status;
    unsigned long length = 0;
    const int status = get_obj_body(body_, length, out.body);
    out.body_length = static_cast<uint32_t>(length);
    return status;
}

void zr_asn_cert_request_in::free_obj(cert_request_in& s) {
    free_block(s.str_a);
    free_block(s.str_b);
    if (s.body_length != 0) free_block(s.body);
    s.body = nullptr;
    s.body_length = 0;
}

int zr_asn_cert_request_in::get_obj_body(zr_asn_octetstring& object, unsigned long& length, unsigned char*& data) {
    unsigned char* octets = nullptr;
    unsigned int count = 0;
    if (object.get_value(octets, count) != 0) count = 0;  // an absent one has no octets
    data = nullptr;
    length = count;
    if (count == 0) return 0;
    data = static_cast<unsigned char*>(std::malloc(count));
    if (data == nullptr) zr::throw_out_of_memory("Out of memory get_obj_body()", "src/asn1/asn_yvobjs");
    std::memcpy(data, octets, count);
    return 0;
}
