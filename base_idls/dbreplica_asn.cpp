#include "base_idls/dbreplica_asn.h"

#include "asn1/codec/define_record.h"

ZR_DEFINE_MODULE(dbreplica_asn,
                 dbr_get_db_in_s_t,
                 dbr_get_db_out_s_t);
