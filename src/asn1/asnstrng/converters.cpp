#include "asn1/asnstrng/converters.h"

#include "asn1/asnstrng/conversion.h"

using namespace zr;

int IA52UTF8(zr_r_buffer_t in, zr_buffer_t& out) { return convert<ia5_source, utf8_target>(in, out); }
int BMP2UTF8(zr_r_buffer_t in, zr_buffer_t& out) { return convert<bmp_source, utf8_target>(in, out); }
int U2UTF8(zr_r_buffer_t in, zr_buffer_t& out) { return convert<universal_source, utf8_target>(in, out); }

int UTF82U(zr_r_buffer_t in, zr_buffer_t& out) {
    return convert<utf8_source, universal_target>(in, out, on_failure::keep);
}
int UTF82BMP(zr_r_buffer_t in, zr_buffer_t& out) { return convert<utf8_source, bmp_target>(in, out, on_failure::keep); }
int UTF82IA5(zr_r_buffer_t in, zr_buffer_t& out) {
    return convert<utf8_source, octet_target>(in, out, on_failure::keep);
}

int U2BMP(const zr_r_buffer_t& in, zr_buffer_t& out) { return convert<universal_source, bmp_target>(in, out); }
int U2IA5(const zr_r_buffer_t& in, zr_buffer_t& out) { return convert<universal_source, octet_target>(in, out); }
int BMP2U(const zr_r_buffer_t& in, zr_buffer_t& out) { return convert<bmp_source, universal_target>(in, out); }
int BMP2IA5(const zr_r_buffer_t& in, zr_buffer_t& out) { return convert<bmp_source, octet_target>(in, out); }
int IA52BMP(const zr_r_buffer_t& in, zr_buffer_t& out) { return convert<ia5_source, bmp_target>(in, out); }
int IA52U(const zr_r_buffer_t& in, zr_buffer_t& out) { return convert<ia5_source, universal_target>(in, out); }

int IA52P(const zr_r_buffer_t& in, zr_buffer_t& out) { return all_printable(in) ? P2IA5(in, out) : zr_err_conversion; }
int IA52V(const zr_r_buffer_t& in, zr_buffer_t& out) { return IA52P(in, out); }

int P2IA5(const zr_r_buffer_t& in, zr_buffer_t& out) {
    out.clear();
    return out.append(in);
}
int V2IA5(const zr_r_buffer_t& in, zr_buffer_t& out) { return P2IA5(in, out); }

int T612BMP(const zr_r_buffer_t& in, zr_buffer_t& out) { return convert<t61_source, bmp_target>(in, out); }
int T612IA5(const zr_r_buffer_t& in, zr_buffer_t& out) { return convert<t61_source, octet_target>(in, out); }
int IA52T61(const zr_r_buffer_t& in, zr_buffer_t& out) { return convert<ia5_source, t61_target>(in, out); }
