#include "base_idls/aznserver_asn.h"

#include "asn1/codec/define_record.h"

ZR_DEFINE_MODULE(aznserver_asn,
                 aznserver_init_s_t,
                 aznadmin_getobject_in_s_t,
                 aznadmin_getobject_out_s_t,
                 aznadmin_getobjectlist_in_s_t,
                 aznadmin_getobjectlist_out_s_t,
                 aznadmin_performtask_in_s_t,
                 aznadmin_performtask_out_s_t,
                 aznadmin_gettasklist_in_s_t,
                 aznadmin_gettasklist_out_s_t);
