// Identifier octets of the universal types that records are made of (X.690 8.1.2).
#pragma once

namespace zr {

constexpr unsigned char id_integer = 0x02;
constexpr unsigned char id_octet_string = 0x04;
constexpr unsigned char id_null = 0x05;
constexpr unsigned char id_utf8_string = 0x0C;
constexpr unsigned char id_sequence = 0x30;

}  // namespace zr
