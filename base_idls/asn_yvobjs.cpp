#include "base_idls/asn_yvobjs.h"

#include "asn1/codec/define_record.h"

ZR_DEFINE_MODULE_OF_CLASSES(asn_yvobjs,
                            yvobj_update_s_t,
                            yvobj_update_list_s_t,
                            cert_request_in);
