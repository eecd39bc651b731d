// The hand-written records: object updates and the certificate request. They cross the type-code interface
// (asn1/zrasnapi.h) and have no entry points of their own.
//
// Each begins with a version INTEGER 1 that no structure member carries. The version read is not compared with 1; an
// object that has read another one writes that again.
//
// set_value and get_value return 0 or a status. A list element that cannot be made or an array that finds no memory is
// the status 275062885. Exceptions of the runtime below (zr_asn_memexception) pass through.
//
// What get_value puts into a structure comes from malloc; free_obj releases it, not the structure itself, after a
// get_value that failed too, and leaves pointers null and counts 0.
#pragma once

#include <cstdint>

#include "asn1/asnbase/collections.h"
#include "asn1/asnbase/octetstring.h"
#include "asn1/zrasnbase.h"

// yvobj_update_s_t is one update of an object. The integers are opaque here.
struct yvobj_update_s_t {
    int32_t int_a;
    char* name;
    int32_t int_b;
};

// yvobj_update_list_s_t is `count` updates.
struct yvobj_update_list_s_t {
    uint32_t count;
    yvobj_update_s_t* updates;
};

// cert_request_in asks for a certificate. The texts are opaque here; body is null and body_length 0 when there is none.
struct cert_request_in {
    char* str_a;
    char* str_b;
    uint32_t body_length;
    unsigned char* body;
};

// SEQUENCE { version INTEGER, int_a INTEGER, name OCTET STRING, int_b INTEGER }. Texts are stored with their
// terminating zero octet here and in cert_request_in; null counts as empty.
class ZR_API zr_asn_yvobj_update_t : public zr_asnbase {
public:
    explicit zr_asn_yvobj_update_t(security_t mode);

    // set_value takes the members of `in`; get_value gives them.
    int set_value(yvobj_update_s_t& in);
    // get_value clears `out` first.
    int get_value(yvobj_update_s_t& out);
    // free_obj releases what get_value allocated.
    static void free_obj(yvobj_update_s_t& s);

private:
    zr_asn_integer version_;
    zr_asn_integer int_a_;
    zr_asn_octetstring name_;
    zr_asn_integer int_b_;
};

// SEQUENCE { version INTEGER, updates SEQUENCE OF update }.
class ZR_API zr_asn_yvobj_update_list_t : public zr_v37_asnbase {
public:
    explicit zr_asn_yvobj_update_list_t(security_t mode);

    // set_value takes null `updates` as an empty list whatever the count says. After a failure the object holds no
    // value, so that half a list is never written.
    int set_value(yvobj_update_list_s_t& in);
    // get_value sets `count` to the full number before anything is filled. When element k fails, those from k on are
    // zero; when there is no memory for the array, `updates` is null.
    int get_value(yvobj_update_list_s_t& out);
    // free_obj releases what get_value allocated.
    static void free_obj(yvobj_update_list_s_t& s);

private:
    zr_asn_sequenceof<zr_asn_yvobj_update_t> updates_;
};

// SEQUENCE { version INTEGER, str_a OCTET STRING, str_b OCTET STRING, body OCTET STRING OPTIONAL }.
class ZR_API zr_asn_cert_request_in : public zr_v37_asnbase {
public:
    explicit zr_asn_cert_request_in(security_t mode);

    // A body that is null or of length 0 is absent.
    int set_value(cert_request_in& in);
    // get_value clears `out` first.
    int get_value(cert_request_in& out);
    // `body` is released only when body_length is not 0.
    // free_obj releases what get_value allocated.
    static void free_obj(cert_request_in& s);

    // get_obj_body gives a malloc copy of the octets of `object`, which the caller frees; null and 0 when there are
    // none. Returns 0; throws zr_asn_memexception ("Out of memory get_obj_body()") with `data` null.
    static int get_obj_body(zr_asn_octetstring& object, unsigned long& length, unsigned char*& data);

private:
    zr_asn_octetstring str_a_;
    zr_asn_octetstring str_b_;
    zr_asn_octetstring body_;
};
