// Schema module dbreplica_asn: queries of a database replica.
#pragma once

#include "asn1/record/record.h"

// dbr_get_db_in_s_t asks for the replica's state.
struct dbr_get_db_in_s_t {
    int32_t int_a;
};
ZR_RECORD(dbreplica_asn, dbr_get_db_in_s_t, asn_dbr_get_db_in_t,
          zr::integer(ZR_M(int_a)));

// dbr_get_db_out_s_t is the reply to dbr_get_db_in_s_t.
struct dbr_get_db_out_s_t {
    int32_t int_a;
    int32_t int_b;
    int32_t int_c;
};
ZR_RECORD(dbreplica_asn, dbr_get_db_out_s_t, asn_dbr_get_db_out_t,
          zr::integer(ZR_M(int_a)),
          zr::integer(ZR_M(int_b)),
          zr::integer(ZR_M(int_c)));
