// Schema module asn_yvobjs: the records of the type-code interface, which have no entry points of their own. Their
// structures and binding classes are those of asn1/asn_yvobjs.h.
#pragma once

#include "asn1/asn_yvobjs.h"
#include "asn1/record/record.h"

ZR_RECORD_OF_CLASS(asn_yvobjs, yvobj_update_s_t, zr_asn_yvobj_update_t,
                   zr::version(),
                   zr::integer(ZR_M(int_a)),
                   zr::stored_text(ZR_M(name)),
                   zr::integer(ZR_M(int_b)));

ZR_RECORD_OF_CLASS(asn_yvobjs, yvobj_update_list_s_t, zr_asn_yvobj_update_list_t,
                   zr::version(),
                   zr::list(ZR_M(count), ZR_M(updates)));

ZR_RECORD_OF_CLASS(asn_yvobjs, cert_request_in, zr_asn_cert_request_in,
                   zr::version(),
                   zr::stored_text(ZR_M(str_a)),
                   zr::stored_text(ZR_M(str_b)),
                   zr::optional_octets(ZR_M(body_length), ZR_M(body)));
