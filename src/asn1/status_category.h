// Statuses as std::error_code: a call's status goes into it, and comparisons with std::errc tell of what sort it is.
//
//     if (int status = zrAsnDecodeObj(in, out)) throw std::system_error(zr::error_code(status));
#pragma once

#include <system_error>

#include "asn1/status.h"

namespace zr {

// The category "zrasn". Its messages are those of status_text. A code is equal to the condition
//   std::errc::not_enough_memory      for 275062885,
//   std::errc::not_supported          for 275063191,
//   std::errc::invalid_argument       for 275063196 and 275063207,
//   std::errc::illegal_byte_sequence  for 275063211,
//   std::errc::bad_message            for what the readers say of octets,
// and else to none but its own number. The object lives as long as the process.
[[nodiscard]] ZR_API const std::error_category& status_category() noexcept;

// A status as a call returns it.
[[nodiscard]] inline std::error_code error_code(int status) noexcept { return {status, status_category()}; }

}  // namespace zr

// Makes `std::error_code code = zr_err_no_match` and `code == zr_err_no_match` mean what they say.
[[nodiscard]] inline std::error_code make_error_code(zr_asn_status status) noexcept { return zr::error_code(status); }

template <>
struct std::is_error_code_enum<zr_asn_status> : std::true_type {};
