// What a status is called and means, statuses as std::error_code, and where the library's own words go:
//
//     std::error_code code = zr::error_code(zrAsnDecodeObj(in, out));
//     if (code == std::errc::bad_message) log(zr::status_key(code.value()), code.message());
//
//     zr::set_message_sink([](const zr_asn_exception& exception) {
//         syslog(LOG_ERR, "%s (%08x)", exception.message, exception.code);
//     });
#pragma once

#include "asn1/status.h"
#include "asn1/status_category.h"
#include "asn1/status_text.h"
