// Schema module aznserver_asn: requests to the authorization server's administration interface, and its replies.
#pragma once

#include "base_idls/principal_asn.h"
#include "base_idls/yvsvr_enc_asn.h"

// aznserver_init_s_t initialises the authorization server.
struct aznserver_init_s_t {
    char* str_a;
    int32_t int_a;
    int32_t int_b;
    int32_t int_c;
    int32_t int_d;
    uint32_t count;
    aznadmsvc_s_t* svcs;
    attrlist_s_t ext;
};
ZR_RECORD(aznserver_asn, aznserver_init_s_t, asn_aznserver_init_t,
          zr::text(ZR_M(str_a)),
          zr::integer(ZR_M(int_a)),
          zr::integer(ZR_M(int_b)),
          zr::integer(ZR_M(int_c)),
          zr::integer(ZR_M(int_d)),
          zr::list(ZR_M(count), ZR_M(svcs)),
          zr::nested(ZR_M(ext)));

// aznadmin_getobject_in_s_t asks for an object.
struct aznadmin_getobject_in_s_t {
    yvprincipal_chain_s_t chain;
    char* str_a;
    char* str_b;
    char* str_c;
    attrlist_s_t ext;
};
ZR_RECORD(aznserver_asn, aznadmin_getobject_in_s_t, asn_aznadmin_getobject_in_t,
          zr::nested(ZR_M(chain)),
          zr::text(ZR_M(str_a)),
          zr::text(ZR_M(str_b)),
          zr::text(ZR_M(str_c)),
          zr::nested(ZR_M(ext)));

// aznadmin_getobject_out_s_t is the reply to aznadmin_getobject_in_s_t.
struct aznadmin_getobject_out_s_t {
    attrlist_s_t ext;
    int32_t int_a;
};
ZR_RECORD(aznserver_asn, aznadmin_getobject_out_s_t, asn_aznadmin_getobject_out_t,
          zr::nested(ZR_M(ext)),
          zr::integer(ZR_M(int_a)));

// aznadmin_getobjectlist_in_s_t asks for a list of objects.
struct aznadmin_getobjectlist_in_s_t {
    yvprincipal_chain_s_t chain;
    char* str_a;
    char* str_b;
    char* str_c;
    attrlist_s_t ext;
};
ZR_RECORD(aznserver_asn, aznadmin_getobjectlist_in_s_t, asn_aznadmin_getobjectlist_in_t,
          zr::nested(ZR_M(chain)),
          zr::text(ZR_M(str_a)),
          zr::text(ZR_M(str_b)),
          zr::text(ZR_M(str_c)),
          zr::nested(ZR_M(ext)));

// aznadmin_getobjectlist_out_s_t is the reply to aznadmin_getobjectlist_in_s_t.
struct aznadmin_getobjectlist_out_s_t {
    attrlist_s_t ext;
    int32_t int_a;
};
ZR_RECORD(aznserver_asn, aznadmin_getobjectlist_out_s_t, asn_aznadmin_getobjectlist_out_t,
          zr::nested(ZR_M(ext)),
          zr::integer(ZR_M(int_a)));

// aznadmin_performtask_in_s_t asks for a task to be performed.
struct aznadmin_performtask_in_s_t {
    yvprincipal_chain_s_t chain;
    char* str_a;
    char* str_b;
    attrlist_s_t ext;
};
ZR_RECORD(aznserver_asn, aznadmin_performtask_in_s_t, asn_aznadmin_performtask_in_t,
          zr::nested(ZR_M(chain)),
          zr::text(ZR_M(str_a)),
          zr::text(ZR_M(str_b)),
          zr::nested(ZR_M(ext)));

// aznadmin_performtask_out_s_t is the reply to aznadmin_performtask_in_s_t.
struct aznadmin_performtask_out_s_t {
    attrlist_s_t ext;
    int32_t int_a;
};
ZR_RECORD(aznserver_asn, aznadmin_performtask_out_s_t, asn_aznadmin_performtask_out_t,
          zr::nested(ZR_M(ext)),
          zr::integer(ZR_M(int_a)));

// aznadmin_gettasklist_in_s_t asks for the list of tasks.
struct aznadmin_gettasklist_in_s_t {
    yvprincipal_chain_s_t chain;
    char* str_a;
    attrlist_s_t ext;
};
ZR_RECORD(aznserver_asn, aznadmin_gettasklist_in_s_t, asn_aznadmin_gettasklist_in_t,
          zr::nested(ZR_M(chain)),
          zr::text(ZR_M(str_a)),
          zr::nested(ZR_M(ext)));

// aznadmin_gettasklist_out_s_t is the reply to aznadmin_gettasklist_in_s_t.
struct aznadmin_gettasklist_out_s_t {
    attrlist_s_t ext;
    int32_t int_a;
};
ZR_RECORD(aznserver_asn, aznadmin_gettasklist_out_s_t, asn_aznadmin_gettasklist_out_t,
          zr::nested(ZR_M(ext)),
          zr::integer(ZR_M(int_a)));
